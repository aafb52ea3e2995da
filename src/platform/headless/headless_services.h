#pragma once
// Headless implementations of every platform service. They need no window
// system: message boxes and beeps become printed lines, input boxes and file
// dialogs take queued answers, the clipboard is a string, surfaces are
// RasterSurfaces, audio plays instantly into a record.

#include <cstdlib>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "platform/headless/raster_surface.h"
#include "platform/services.h"

namespace keldo::platform {

// Receives each line a person would have seen: "message 23: Improper formula.",
// "message: TEXT", "prompt: TEXT", "beep".
using LineSink = std::function<void(const std::string&)>;

class HeadlessDialogs final : public Dialogs {
 public:
  explicit HeadlessDialogs(LineSink sink) : sink_(std::move(sink)) {}
  void ShowMessage(const MessageRequest& request) override;
  std::optional<std::string> InputBox(const InputRequest& request) override;
  bool AskYesNo(const std::string& text, const std::string& title) override;
  // Prints "message: TEXT"; a queued answer "Help" presses the Help button,
  // any other queued answer (or none) closes the box.
  bool QuickHelp(const std::string& title, const std::string& text) override;

  // An empty optional queues a cancel.
  void QueueAnswer(std::optional<std::string> answer) { answers_.push_back(std::move(answer)); }
  const std::vector<MessageRequest>& Shown() const { return shown_; }
  std::vector<MessageRequest> TakeShown();

 private:
  LineSink sink_;
  std::deque<std::optional<std::string>> answers_;
  std::vector<MessageRequest> shown_;
};

class HeadlessPointer final : public Pointer {
 public:
  void SetShape(PointerShape shape) override { shape_ = shape; }
  PointerShape Shape() const override { return shape_; }

 private:
  PointerShape shape_ = PointerShape::Default;
};

class HeadlessBeeper final : public Beeper {
 public:
  explicit HeadlessBeeper(LineSink sink) : sink_(std::move(sink)) {}
  void Beep() override;
  int Count() const { return count_; }

 private:
  LineSink sink_;
  int count_ = 0;
};

// Yield runs the hook, which a script runner uses to deliver queued events.
class HeadlessEventLoop final : public EventLoop {
 public:
  void Yield() override;
  void SetHook(std::function<void()> hook) { hook_ = std::move(hook); }
  long long Count() const { return count_; }

 private:
  std::function<void()> hook_;
  long long count_ = 0;
  bool inHook_ = false;
};

class HeadlessFileDialog final : public FileDialog {
 public:
  std::optional<FileDialogResult> Run(const FileDialogRequest& request) override;
  // An empty optional queues a cancel. The filter index of the answer is the
  // filter whose pattern matches the path's extension, else the request's.
  void QueueAnswer(std::optional<std::string> path) { answers_.push_back(std::move(path)); }
  const std::vector<FileDialogRequest>& Requests() const { return requests_; }

 private:
  std::deque<std::optional<std::string>> answers_;
  std::vector<FileDialogRequest> requests_;
};

// Reads and writes PGM (P2, P5) and uncompressed 24-bit BMP by itself.
class HeadlessImaging final : public Imaging {
 public:
  std::optional<RgbImage> Load(const std::string& path) override;
  bool Save(const std::string& path, const RgbImage& image, const ImageSaveOptions& options) override;
};

class HeadlessAudio final : public Audio {
 public:
  bool Play(const std::vector<std::int16_t>& samples, int sampleRate) override;
  void Stop() override {
    playing_ = false;
    ++soundNumber_;
  }
  bool IsPlaying() const override { return playing_; }
  long long Position() const override { return position_; }
  // Runs the current sound to its end.
  void Finish();
  // Moves the current sound on by a number of samples, as the time of
  // playing them would; at its end it stops as by Finish.
  void Advance(long long samples);
  void WaitUntilDone() override { Finish(); }
  long long SoundNumber() const override { return soundNumber_; }
  // Milliseconds of the current sound still to play, rounded up; 0 when
  // nothing plays.
  long long RemainingMilliseconds() const;
  // What was played last, and the file it is also written to (a 16-bit mono
  // wave file; none when the path is empty). KELDO_AUDIO_OUT gives the path.
  const std::vector<std::int16_t>& LastSamples() const { return last_; }
  int LastRate() const { return lastRate_; }
  void SetOutputFile(std::string path) { outputFile_ = std::move(path); }
  void SetDeviceAvailable(bool available) { available_ = available; }
  int PlayCount() const { return plays_; }

 private:
  bool available_ = true;
  bool playing_ = false;
  std::vector<std::int16_t> last_;
  int lastRate_ = 0;
  std::string outputFile_ = std::getenv("KELDO_AUDIO_OUT") ? std::getenv("KELDO_AUDIO_OUT") : "";
  long long position_ = 0;
  long long length_ = 0;
  int plays_ = 0;
  long long soundNumber_ = 0;
};

// Timers on a clock of their own that moves only when told: Advance runs
// the ticks that fall due, in the order of their times (timers due at the
// same time in the order they were started). Nothing ticks by itself.
class HeadlessTimers final : public Timers {
 public:
  int Start(int intervalMs, std::function<void()> tick) override;
  void Stop(int id) override;
  // Moves the clock on by `ms`, running every tick due by then.
  void Advance(long long ms);
  // Runs the next ticks in time order, moving the clock to each, until no
  // timer runs or `most` ticks have run; returns how many ran.
  long long RunUntilStopped(long long most);
  long long Now() const { return now_; }
  int Running() const { return static_cast<int>(timers_.size()); }
  long long Ticks() const { return ticks_; }

 private:
  struct Timer {
    int id;
    long long interval;
    long long due;
    std::function<void()> tick;
  };
  // The timer due first, or null when none runs.
  Timer* Next();
  void Fire(Timer& timer);
  std::vector<Timer> timers_;  // in the order they were started
  long long now_ = 0;
  long long ticks_ = 0;
  int lastId_ = 0;
};

struct PrintedItem {
  std::string kind;  // "page", "line", "dot", "text", "picture", "font"
  std::string text;
  double x1 = 0, y1 = 0, x2 = 0, y2 = 0;
  Rgb color = kBlack;
};

class PdfDocument;

// Records what is printed, item by item, and writes each finished document
// as a PDF file when an output path is set: by SetOutputPath, or by the
// environment variable KELDO_PRINT_PDF. The first document of a run goes to
// the path itself, the next ones to NAME_2.pdf, NAME_3.pdf ... beside it.
class HeadlessPrinter final : public Printer {
 public:
  HeadlessPrinter();
  ~HeadlessPrinter() override;
  bool Begin(const std::string& documentName) override;
  bool IsOpen() const override { return open_; }
  PageSize Page() const override { return page_; }
  void NewPage() override;
  void SetFont(const std::string& family, double points) override;
  void Line(double x1, double y1, double x2, double y2, Rgb color) override;
  void Dot(double x, double y, Rgb color) override;
  void Text(double x, double y, const std::string& text) override;
  void Picture(double x, double y, double width, double height, const RgbImage& image) override;
  bool End() override;
  const std::vector<PrintedItem>& Items() const { return items_; }
  int Documents() const { return documents_; }
  // Where the next finished document is written; empty writes none.
  void SetOutputPath(const std::string& path) { outputPath_ = path; }
  // The file the last finished document went to, empty when none was written.
  const std::string& LastDocumentPath() const { return lastPath_; }
  // A printer that refuses to begin, as a machine without one.
  void SetAvailable(bool available) { available_ = available; }
  // A printer that prints only in black and grey.
  void SetColour(bool colour) { colour_ = colour; }
  bool SupportsColour() const override { return colour_; }

 private:
  std::vector<PrintedItem> items_;
  int documents_ = 0;
  bool open_ = false;
  bool available_ = true;
  bool colour_ = true;
  PageSize page_;
  std::string outputPath_;
  std::string lastPath_;
  std::unique_ptr<PdfDocument> pdf_;
};

class HeadlessClipboard final : public Clipboard {
 public:
  std::string Text() const override { return text_; }
  void SetText(const std::string& text) override { text_ = text; }
  void SetImage(const RgbImage& image) override { image_ = image; text_.clear(); }
  const RgbImage& Image() const { return image_; }

 private:
  std::string text_;
  RgbImage image_;
};

// A Mersenne twister; a fixed seed gives a repeatable run.
class HeadlessRandom final : public Random {
 public:
  void Seed(std::uint64_t seed) override { engine_.seed(seed); }
  void SeedFromClock() override;
  double Next() override;

 private:
  std::mt19937_64 engine_{12345};
};

// Records the pages asked for; the page is found through the help index.
class HeadlessHelp final : public Help {
 public:
  explicit HeadlessHelp(std::string docsFolder) : docs_(std::move(docsFolder)) {}
  bool ShowTopic(const std::string& helpFile, const std::string& keyword) override;
  bool ShowContents(const std::string& helpFile) override;
  // Path of the last page shown, empty before any.
  const std::string& LastPage() const { return lastPage_; }

 private:
  std::string docs_;
  std::string lastPage_;
};

class HeadlessScreen final : public Screen {
 public:
  ScreenSize Size() const override { return size_; }
  void SetSize(ScreenSize size) { size_ = size; }

 private:
  ScreenSize size_{1280, 1024};
};

class HeadlessSurfaceFactory final : public SurfaceFactory {
 public:
  std::unique_ptr<Surface> Create(int pixelWidth, int pixelHeight) override {
    return std::make_unique<RasterSurface>(pixelWidth, pixelHeight);
  }
};

// All of the above, wired into one Services record.
class HeadlessPlatform {
 public:
  HeadlessPlatform(LineSink sink, std::string docsFolder);
  Services& services() { return services_; }

  HeadlessDialogs dialogs;
  HeadlessPointer pointer;
  HeadlessBeeper beeper;
  HeadlessEventLoop eventLoop;
  HeadlessFileDialog fileDialog;
  HeadlessImaging imaging;
  HeadlessAudio audio;
  HeadlessPrinter printer;
  HeadlessClipboard clipboard;
  HeadlessRandom random;
  HeadlessHelp help;
  HeadlessScreen screen;
  HeadlessSurfaceFactory surfaces;
  HeadlessTimers timers;

 private:
  Services services_;
};

}  // namespace keldo::platform
