#include "platform/headless/headless_services.h"

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "common/file_io.h"
#include "platform/headless/pdf_document.h"
#include "platform/headless/simple_images.h"
#include "platform/help_index.h"

namespace keldo::platform {

void HeadlessDialogs::ShowMessage(const MessageRequest& request) {
  shown_.push_back(request);
  if (!sink_) return;
  if (request.fromCatalogue)
    sink_("message " + std::to_string(request.catalogueNumber) + ": " + request.text);
  else
    sink_("message: " + request.text);
}

std::optional<std::string> HeadlessDialogs::InputBox(const InputRequest& request) {
  if (sink_) sink_("prompt: " + request.prompt);
  if (answers_.empty()) return std::nullopt;
  auto answer = std::move(answers_.front());
  answers_.pop_front();
  return answer;
}

bool HeadlessDialogs::AskYesNo(const std::string& text, const std::string& title) {
  const auto answer = InputBox({text, title, ""});
  return answer && !answer->empty() && (answer->front() == 'y' || answer->front() == 'Y');
}

bool HeadlessDialogs::QuickHelp(const std::string& title, const std::string& text) {
  ShowMessage({text, title, MessageIcon::Information, 0, false});
  if (answers_.empty()) return false;
  const auto answer = std::move(answers_.front());
  answers_.pop_front();
  return answer && *answer == "Help";
}

std::vector<MessageRequest> HeadlessDialogs::TakeShown() {
  std::vector<MessageRequest> out;
  out.swap(shown_);
  return out;
}

void HeadlessBeeper::Beep() {
  ++count_;
  if (sink_) sink_("beep");
}

void HeadlessEventLoop::Yield() {
  ++count_;
  if (hook_ && !inHook_) {
    inHook_ = true;
    hook_();
    inHook_ = false;
  }
}

namespace {

std::string LowerExtension(const std::string& path) {
  std::string ext = std::filesystem::path(path).extension().string();
  for (char& c : ext) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return ext;
}

// The 1-based index of the filter whose pattern names this extension, or 0.
int FilterIndexFor(const std::string& filter, const std::string& ext) {
  int index = 0;
  std::size_t pos = 0;
  bool isPattern = false;
  while (pos <= filter.size()) {
    const std::size_t bar = filter.find('|', pos);
    const std::string part = filter.substr(pos, bar == std::string::npos ? std::string::npos : bar - pos);
    if (isPattern) {
      ++index;
      std::string lower = part;
      for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
      if (!ext.empty() && lower.find("*" + ext) != std::string::npos) return index;
      if (lower == "*.*") return index;
    }
    isPattern = !isPattern;
    if (bar == std::string::npos) break;
    pos = bar + 1;
  }
  return 0;
}

}  // namespace

std::optional<FileDialogResult> HeadlessFileDialog::Run(const FileDialogRequest& request) {
  requests_.push_back(request);
  if (answers_.empty()) return std::nullopt;
  auto answer = std::move(answers_.front());
  answers_.pop_front();
  if (!answer) return std::nullopt;
  FileDialogResult result;
  result.path = *answer;
  if (request.mode == FileDialogMode::Save && !request.defaultExtension.empty() &&
      std::filesystem::path(result.path).extension().empty()) {
    std::string ext = request.defaultExtension;
    if (ext.front() != '.') ext.insert(ext.begin(), '.');
    result.path += ext;
  }
  result.title = std::filesystem::path(result.path).filename().string();
  const int matched = FilterIndexFor(request.filter, LowerExtension(result.path));
  result.filterIndex = matched > 0 ? matched : request.filterIndex;
  return result;
}

std::optional<RgbImage> HeadlessImaging::Load(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return std::nullopt;
  const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  const std::string ext = LowerExtension(path);
  if (ext == ".bmp" || ext == ".dib") return DecodeBmp(bytes);
  if (ext == ".pgm") return DecodePgm(bytes);
  return std::nullopt;
}

bool HeadlessImaging::Save(const std::string& path, const RgbImage& image, const ImageSaveOptions&) {
  const std::string ext = LowerExtension(path);
  std::string bytes;
  if (ext == ".bmp" || ext == ".dib")
    bytes = EncodeBmp(image);
  else if (ext == ".pgm")
    bytes = EncodePgm(image);
  else
    return false;
  std::ofstream out(path, std::ios::binary);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  return static_cast<bool>(out);
}

namespace {

// A 16-bit mono PCM wave file, written by hand: a tool for tests only.
void WriteWave(const std::string& path, const std::vector<std::int16_t>& samples, int rate) {
  std::ofstream out(path, std::ios::binary);
  const auto u32 = [&](std::uint32_t v) {
    for (int k = 0; k < 4; ++k) out.put(static_cast<char>(v >> (8 * k)));
  };
  const auto u16 = [&](std::uint16_t v) {
    out.put(static_cast<char>(v & 255));
    out.put(static_cast<char>(v >> 8));
  };
  const std::uint32_t data = static_cast<std::uint32_t>(samples.size() * 2);
  out.write("RIFF", 4);
  u32(36 + data);
  out.write("WAVEfmt ", 8);
  u32(16);
  u16(1);
  u16(1);
  u32(static_cast<std::uint32_t>(rate));
  u32(static_cast<std::uint32_t>(rate) * 2);
  u16(2);
  u16(16);
  out.write("data", 4);
  u32(data);
  for (std::int16_t s : samples) u16(static_cast<std::uint16_t>(s));
}

}  // namespace

bool HeadlessAudio::Play(const std::vector<std::int16_t>& samples, int sampleRate) {
  if (!available_ || sampleRate <= 0) return false;
  ++plays_;
  last_ = samples;
  lastRate_ = sampleRate;
  if (!outputFile_.empty()) WriteWave(outputFile_, samples, sampleRate);
  playing_ = !samples.empty();
  position_ = 0;
  length_ = static_cast<long long>(samples.size());
  ++soundNumber_;
  return true;
}

void HeadlessAudio::Advance(long long samples) {
  if (!playing_) return;
  position_ += samples > 0 ? samples : 0;
  if (position_ >= length_) Finish();
}

void HeadlessAudio::Finish() {
  position_ = length_;
  playing_ = false;
}

long long HeadlessAudio::RemainingMilliseconds() const {
  if (!playing_ || lastRate_ <= 0) return 0;
  const long long left = length_ - position_;
  return (left * 1000 + lastRate_ - 1) / lastRate_;
}

int HeadlessTimers::Start(int intervalMs, std::function<void()> tick) {
  const long long interval = intervalMs < 1 ? 1 : intervalMs;
  timers_.push_back({++lastId_, interval, now_ + interval, std::move(tick)});
  return lastId_;
}

void HeadlessTimers::Stop(int id) {
  std::erase_if(timers_, [id](const Timer& t) { return t.id == id; });
}

HeadlessTimers::Timer* HeadlessTimers::Next() {
  Timer* next = nullptr;
  for (Timer& t : timers_)
    if (!next || t.due < next->due) next = &t;
  return next;
}

void HeadlessTimers::Fire(Timer& timer) {
  now_ = timer.due;
  timer.due += timer.interval;
  ++ticks_;
  // The tick may stop this timer or start others, which moves the list: it
  // runs from a copy.
  const std::function<void()> tick = timer.tick;
  tick();
}

void HeadlessTimers::Advance(long long ms) {
  const long long end = now_ + (ms > 0 ? ms : 0);
  for (Timer* t = Next(); t && t->due <= end; t = Next()) Fire(*t);
  now_ = end;
}

long long HeadlessTimers::RunUntilStopped(long long most) {
  long long ran = 0;
  for (Timer* t = Next(); t && ran < most; t = Next(), ++ran) Fire(*t);
  return ran;
}

HeadlessPrinter::HeadlessPrinter() {
  if (const char* path = std::getenv("KELDO_PRINT_PDF")) outputPath_ = path;
}

HeadlessPrinter::~HeadlessPrinter() = default;

bool HeadlessPrinter::Begin(const std::string& documentName) {
  if (!available_) return false;
  if (open_) return true;  // the document that is open goes on
  open_ = true;
  pdf_ = std::make_unique<PdfDocument>(page_);
  items_.push_back({"page", documentName, 0, 0, 0, 0});
  return true;
}

void HeadlessPrinter::NewPage() {
  items_.push_back({"page", "", 0, 0, 0, 0});
  if (pdf_) pdf_->NewPage();
}

void HeadlessPrinter::SetFont(const std::string& family, double points) {
  items_.push_back({"font", family, points, 0, 0, 0});
  if (pdf_) pdf_->SetFont(points);
}

void HeadlessPrinter::Line(double x1, double y1, double x2, double y2, Rgb color) {
  items_.push_back({"line", "", x1, y1, x2, y2, color});
  if (pdf_) pdf_->Line(x1, y1, x2, y2, color);
}

void HeadlessPrinter::Dot(double x, double y, Rgb color) {
  items_.push_back({"dot", "", x, y, x, y, color});
  if (pdf_) pdf_->Dot(x, y, color);
}

void HeadlessPrinter::Text(double x, double y, const std::string& text) {
  items_.push_back({"text", text, x, y, 0, 0});
  if (pdf_) pdf_->Text(x, y, text);
}

void HeadlessPrinter::Picture(double x, double y, double width, double height, const RgbImage& image) {
  items_.push_back({"picture", "", x, y, x + width, y + height});
  if (pdf_) pdf_->Picture(x, y, width, height, image);
}

bool HeadlessPrinter::End() {
  if (!open_) return false;
  open_ = false;
  ++documents_;
  const std::unique_ptr<PdfDocument> pdf = std::move(pdf_);
  if (outputPath_.empty() || !pdf) return true;
  std::string path = outputPath_;
  if (documents_ > 1) {
    const std::size_t dot = path.rfind('.');
    const std::size_t slash = path.find_last_of("/\\");
    const bool hasExtension = dot != std::string::npos && (slash == std::string::npos || dot > slash);
    const std::string suffix = "_" + std::to_string(documents_);
    path = hasExtension ? path.substr(0, dot) + suffix + path.substr(dot) : path + suffix;
  }
  const std::string bytes = pdf->Bytes();
  if (!WriteFileBytes(path, std::vector<std::uint8_t>(bytes.begin(), bytes.end()))) return false;
  lastPath_ = path;
  return true;
}

void HeadlessRandom::SeedFromClock() {
  engine_.seed(static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count()));
}

double HeadlessRandom::Next() { return std::generate_canonical<double, 53>(engine_); }

bool HeadlessHelp::ShowTopic(const std::string& helpFile, const std::string& keyword) {
  const auto page = HelpIndex::Load(docs_).Find(helpFile, keyword);
  if (!page) {
    // An unknown keyword opens the file's contents, as a help viewer would.
    return ShowContents(helpFile);
  }
  lastPage_ = *page;
  return true;
}

bool HeadlessHelp::ShowContents(const std::string& helpFile) {
  const auto page = HelpIndex::Load(docs_).Contents(helpFile);
  if (!page || !std::filesystem::exists(*page)) return false;
  lastPage_ = *page;
  return true;
}

HeadlessPlatform::HeadlessPlatform(LineSink sink, std::string docsFolder)
    : dialogs(sink), beeper(sink), help(std::move(docsFolder)) {
  services_.dialogs = &dialogs;
  services_.pointer = &pointer;
  services_.beeper = &beeper;
  services_.eventLoop = &eventLoop;
  services_.fileDialog = &fileDialog;
  services_.imaging = &imaging;
  services_.audio = &audio;
  services_.printer = &printer;
  services_.clipboard = &clipboard;
  services_.random = &random;
  services_.help = &help;
  services_.screen = &screen;
  services_.surfaces = &surfaces;
  services_.timers = &timers;
}

}  // namespace keldo::platform
