#include "qt/qt_services.h"

#include <algorithm>
#include <cstdlib>

#include <QApplication>
#include <QAudioFormat>
#include <QCoreApplication>
#include <QAudioSink>
#include <QBuffer>
#include <QClipboard>
#include <QDateTime>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QInputDialog>
#include <QMediaDevices>
#include <QMessageBox>
#include <QPainter>
#include <QDir>
#include <QPen>
#include <QPrintDialog>
#include <QPrinter>
#include <QPrinterInfo>
#include <QPushButton>
#include <QScreen>
#include <QStringList>
#include <QTimer>

#include "platform/headless/simple_images.h"
#include "platform/help_index.h"
#include "qt/help_window.h"
#include "qt/session_recorder.h"

namespace keldo::qt {
namespace {

QString Q(const std::string& s) { return QString::fromStdString(s); }

// "Caption|*.a|Caption|*.b" becomes Qt's "Caption (*.a);;Caption (*.b)",
// keeping a caption that already names its pattern.
QStringList ToQtFilters(const std::string& filter) {
  const QStringList parts = Q(filter).split('|');
  QStringList out;
  for (int i = 0; i + 1 < parts.size(); i += 2) {
    const QString caption = parts[i];
    const QString pattern = QString(parts[i + 1]).replace(';', ' ');
    out << (caption.contains('(') ? caption : caption + " (" + pattern + ")");
  }
  return out;
}

}  // namespace

void QtDialogs::ShowMessage(const platform::MessageRequest& request) {
  QMessageBox box(parent_);
  box.setWindowTitle(request.title.empty() ? QStringLiteral("KELDO") : Q(request.title));
  box.setText(Q(request.text));
  switch (request.icon) {
    case platform::MessageIcon::Critical: box.setIcon(QMessageBox::Critical); break;
    case platform::MessageIcon::Information: box.setIcon(QMessageBox::Information); break;
    case platform::MessageIcon::Question: box.setIcon(QMessageBox::Question); break;
    case platform::MessageIcon::None: break;
  }
  box.setStandardButtons(QMessageBox::Ok);
  box.exec();
}

std::optional<std::string> QtDialogs::InputBox(const platform::InputRequest& request) {
  bool ok = false;
  const QString text = QInputDialog::getText(parent_, Q(request.title), Q(request.prompt), QLineEdit::Normal,
                                             Q(request.defaultText), &ok);
  std::optional<std::string> answer;
  if (ok) answer = text.toStdString();
  if (auto* recorder = SessionRecorder::Active()) recorder->InputAnswered(answer);
  return answer;
}

bool QtDialogs::AskYesNo(const std::string& text, const std::string& title) {
  const bool yes = QMessageBox::question(parent_, Q(title), Q(text)) == QMessageBox::Yes;
  if (auto* recorder = SessionRecorder::Active()) recorder->InputAnswered(std::string(yes ? "yes" : "no"));
  return yes;
}

bool QtDialogs::QuickHelp(const std::string& title, const std::string& text) {
  QMessageBox box(parent_);
  box.setWindowTitle(Q(title));
  box.setText(Q(text));
  box.setIcon(QMessageBox::Information);
  QPushButton* help = box.addButton(QStringLiteral("&Help"), QMessageBox::HelpRole);
  box.addButton(QStringLiteral("&Close"), QMessageBox::RejectRole);
  box.exec();
  return box.clickedButton() == help;
}

void QtPointer::SetShape(platform::PointerShape shape) {
  if (shape == shape_) return;
  if (shape_ != platform::PointerShape::Default) QApplication::restoreOverrideCursor();
  shape_ = shape;
  if (shape == platform::PointerShape::Hourglass) QApplication::setOverrideCursor(Qt::WaitCursor);
  if (shape == platform::PointerShape::ArrowHourglass) QApplication::setOverrideCursor(Qt::BusyCursor);
}

void QtBeeper::Beep() { QApplication::beep(); }

void QtEventLoop::Yield() {
  if (auto* recorder = SessionRecorder::Active()) recorder->Yielded();
  QApplication::processEvents();
}

std::optional<platform::FileDialogResult> QtFileDialog::Run(const platform::FileDialogRequest& request) {
  QFileDialog dialog(parent_, Q(request.title), Q(request.initialFolder));
  const QStringList filters = ToQtFilters(request.filter);
  dialog.setNameFilters(filters);
  if (request.filterIndex >= 1 && request.filterIndex <= filters.size())
    dialog.selectNameFilter(filters[request.filterIndex - 1]);
  if (request.mode == platform::FileDialogMode::Save) {
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    QString ext = Q(request.defaultExtension);
    if (ext.startsWith('.')) ext.remove(0, 1);
    dialog.setDefaultSuffix(ext);
    if (!(request.flags & platform::kFlagOverwritePrompt)) dialog.setOption(QFileDialog::DontConfirmOverwrite);
  } else {
    dialog.setAcceptMode(QFileDialog::AcceptOpen);
    dialog.setFileMode(QFileDialog::ExistingFile);
  }
  if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) {
    if (auto* recorder = SessionRecorder::Active()) recorder->FileAnswered(std::nullopt);
    return std::nullopt;
  }
  if (auto* recorder = SessionRecorder::Active()) recorder->FileAnswered(dialog.selectedFiles().first().toStdString());
  platform::FileDialogResult result;
  result.path = dialog.selectedFiles().first().toStdString();
  result.title = QFileInfo(dialog.selectedFiles().first()).fileName().toStdString();
  result.filterIndex = static_cast<int>(filters.indexOf(dialog.selectedNameFilter())) + 1;
  if (result.filterIndex < 1) result.filterIndex = 1;
  return result;
}

QtAudio::QtAudio() = default;
QtAudio::~QtAudio() { Stop(); }

bool QtAudio::Play(const std::vector<std::int16_t>& samples, int sampleRate) {
  Stop();
  const QAudioDevice device = QMediaDevices::defaultAudioOutput();
  if (device.isNull() || sampleRate <= 0) return false;
  QAudioFormat format;
  format.setSampleRate(sampleRate);
  format.setChannelCount(1);
  format.setSampleFormat(QAudioFormat::Int16);
  if (!device.isFormatSupported(format)) return false;
  buffer_ = std::make_unique<QBuffer>();
  buffer_->setData(reinterpret_cast<const char*>(samples.data()),
                   static_cast<qsizetype>(samples.size() * sizeof(std::int16_t)));
  buffer_->open(QIODevice::ReadOnly);
  sink_ = std::make_unique<QAudioSink>(device, format);
  sink_->start(buffer_.get());
  return sink_->error() == QAudio::NoError;
}

void QtAudio::Stop() {
  ++soundNumber_;
  if (sink_) sink_->stop();
  sink_.reset();
  buffer_.reset();
}

void QtAudio::WaitUntilDone() {
  // The sink reads the buffer on its own; events run until it has drained.
  while (sink_ && buffer_ && buffer_->pos() < buffer_->size() && sink_->state() != QAudio::StoppedState)
    QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
}

bool QtAudio::IsPlaying() const { return sink_ && sink_->state() == QAudio::ActiveState; }

long long QtAudio::Position() const { return buffer_ ? buffer_->pos() / 2 : 0; }

QtTimers::~QtTimers() {
  for (auto& [id, timer] : timers_) delete timer;
}

int QtTimers::Start(int intervalMs, std::function<void()> tick) {
  auto* timer = new QTimer;
  timer->setTimerType(Qt::PreciseTimer);
  QObject::connect(timer, &QTimer::timeout, [tick = std::move(tick)] {
    tick();
    if (auto* recorder = SessionRecorder::Active()) recorder->TimerTicked();
  });
  timer->start(intervalMs < 1 ? 1 : intervalMs);
  timers_[++lastId_] = timer;
  return lastId_;
}

void QtTimers::Stop(int id) {
  const auto found = timers_.find(id);
  if (found == timers_.end()) return;
  found->second->stop();
  // A tick may stop its own timer: the timer goes when its tick has returned.
  found->second->deleteLater();
  timers_.erase(found);
}

struct QtPrinter::State {
  QPrinter printer{QPrinter::HighResolution};
  QPainter painter;
  bool open = false;
  double dpi() const { return printer.resolution(); }
  // Inches of the page rectangle's top-left corner to device pixels.
  QPointF At(double x, double y) const { return QPointF(x * dpi(), y * dpi()); }
};

QtPrinter::QtPrinter() : state_(std::make_unique<State>()) {
  state_->printer.setPageOrientation(QPageLayout::Landscape);
}
QtPrinter::~QtPrinter() {
  if (state_->open) state_->painter.end();
}

// Where a page goes when it cannot go to a printer: the file named by
// KELDO_PRINT_PDF, or keldo-print.pdf in the home folder.
static QString PdfFallbackPath() {
  if (const char* path = std::getenv("KELDO_PRINT_PDF")) return QString::fromLocal8Bit(path);
  return QDir::home().filePath("keldo-print.pdf");
}

bool QtPrinter::Begin(const std::string& documentName) {
  QPrinter& printer = state_->printer;
  printer.setDocName(Q(documentName));
  printer.setPageOrientation(QPageLayout::Landscape);
  // No window system (offscreen runs), a chosen file, or no printer at all:
  // the document goes to a PDF file, and the person is told where.
  const bool offscreen = QGuiApplication::platformName() == "offscreen";
  const bool noPrinter = QPrinterInfo::availablePrinterNames().isEmpty();
  if (offscreen || noPrinter || std::getenv("KELDO_PRINT_PDF")) {
    printer.setOutputFormat(QPrinter::PdfFormat);
    printer.setOutputFileName(PdfFallbackPath());
    if (!offscreen)
      QMessageBox::information(QApplication::activeWindow(), "KELDO",
                               (noPrinter ? "No printer was found. " : QString()) +
                                   "The page is printed to the PDF file " + printer.outputFileName() + ".");
  } else {
    // The system's dialog, which also offers printing to a PDF file.
    QPrintDialog dialog(&printer, QApplication::activeWindow());
    if (dialog.exec() != QDialog::Accepted) return false;
  }
  if (!printer.isValid()) return false;
  state_->open = state_->painter.begin(&printer);
  return state_->open;
}

bool QtPrinter::IsOpen() const { return state_->open; }

platform::PageSize QtPrinter::Page() const {
  const QRectF r = state_->printer.pageLayout().paintRect(QPageLayout::Inch);
  if (r.width() <= 0 || r.height() <= 0) return {};
  return {r.width(), r.height()};
}

bool QtPrinter::SupportsColour() const {
  const QPrinter& printer = state_->printer;
  if (printer.outputFormat() == QPrinter::PdfFormat) return true;
  const QPrinterInfo info(printer);
  // A printer the system cannot describe is taken to print in colour.
  if (info.isNull()) return true;
  return info.supportedColorModes().contains(QPrinter::Color);
}

void QtPrinter::NewPage() {
  if (state_->open) state_->printer.newPage();
}

void QtPrinter::SetFont(const std::string& family, double points) {
  if (!state_->open) return;
  QFont font(Q(family));
  font.setPointSizeF(points);
  state_->painter.setFont(font);
}

void QtPrinter::Line(double x1, double y1, double x2, double y2, platform::Rgb color) {
  if (!state_->open) return;
  state_->painter.setPen(QPen(QColor::fromRgb(color), 0));
  state_->painter.drawLine(state_->At(x1, y1), state_->At(x2, y2));
}

void QtPrinter::Dot(double x, double y, platform::Rgb color) {
  if (!state_->open) return;
  const double side = std::max(1.0, state_->dpi() / 100.0);
  const QPointF c = state_->At(x, y);
  state_->painter.fillRect(QRectF(c.x() - side / 2, c.y() - side / 2, side, side), QColor::fromRgb(color));
}

void QtPrinter::Text(double x, double y, const std::string& text) {
  if (!state_->open) return;
  state_->painter.setPen(Qt::black);
  state_->painter.drawText(state_->At(x, y), QString::fromLatin1(text.data(), static_cast<int>(text.size())));
}

void QtPrinter::Picture(double x, double y, double width, double height, const platform::RgbImage& image) {
  if (!state_->open) return;
  const double d = state_->dpi();
  state_->painter.drawImage(QRectF(x * d, y * d, width * d, height * d), ToQImage(image));
}

bool QtPrinter::End() {
  if (!state_->open) return false;
  state_->open = false;
  return state_->painter.end();
}

std::string QtClipboard::Text() const { return QGuiApplication::clipboard()->text().toStdString(); }
void QtClipboard::SetText(const std::string& text) { QGuiApplication::clipboard()->setText(Q(text)); }
void QtClipboard::SetImage(const platform::RgbImage& image) { QGuiApplication::clipboard()->setImage(ToQImage(image)); }

void QtRandom::Seed(std::uint64_t seed) { state_ = seed ? seed : 0x9E3779B97F4A7C15ull; }
void QtRandom::SeedFromClock() { Seed(static_cast<std::uint64_t>(QDateTime::currentMSecsSinceEpoch())); }

double QtRandom::Next() {
  // splitmix64: 53 random bits into [0, 1).
  std::uint64_t z = (state_ += 0x9E3779B97F4A7C15ull);
  z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
  z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
  z ^= z >> 31;
  return static_cast<double>(z >> 11) * (1.0 / 9007199254740992.0);
}

QtHelp::QtHelp(std::string docsFolder) : docs_(std::move(docsFolder)) {}
QtHelp::~QtHelp() { delete window_.data(); }

HelpWindow* QtHelp::Window() const { return window_.data(); }

bool QtHelp::ShowPage(const std::string& page) {
  if (!QFileInfo::exists(Q(page))) return false;
  if (!window_) window_ = new HelpWindow(Q(docs_));
  window_->ShowPage(Q(page));
  return true;
}

bool QtHelp::ShowTopic(const std::string& helpFile, const std::string& keyword) {
  const auto page = platform::HelpIndex::Load(docs_).Find(helpFile, keyword);
  if (!page) return ShowContents(helpFile);
  return ShowPage(*page);
}

bool QtHelp::ShowContents(const std::string& helpFile) {
  const auto page = platform::HelpIndex::Load(docs_).Contents(helpFile);
  return page && ShowPage(*page);
}

platform::ScreenSize QtScreen::Size() const {
  const QScreen* screen = QGuiApplication::primaryScreen();
  if (!screen) return {};
  const QRect r = screen->availableGeometry();
  return {r.width(), r.height()};
}

QtPlatform::QtPlatform(const std::string& docsFolder) : help(docsFolder) {
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

void QtPlatform::SetParent(QWidget* parent) {
  dialogs.SetParent(parent);
  fileDialog.SetParent(parent);
}

}  // namespace keldo::qt
