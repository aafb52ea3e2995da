#pragma once
// The platform services on Qt: message boxes, input boxes, pointer, beep,
// event loop, file dialogs, imaging, audio, printer, clipboard, random
// numbers, help, screen and surfaces.

#include <QPointer>
#include <QWidget>
#include <map>
#include <memory>

#include "qt/qt_imaging.h"
#include "platform/services.h"
#include "qt/qt_surface.h"

class QAudioSink;
class QBuffer;
class QTimer;

namespace keldo::qt {

class HelpWindow;

class QtDialogs final : public platform::Dialogs {
 public:
  void SetParent(QWidget* parent) { parent_ = parent; }
  void ShowMessage(const platform::MessageRequest& request) override;
  std::optional<std::string> InputBox(const platform::InputRequest& request) override;
  bool AskYesNo(const std::string& text, const std::string& title) override;
  bool QuickHelp(const std::string& title, const std::string& text) override;

 private:
  QPointer<QWidget> parent_;
};

class QtPointer final : public platform::Pointer {
 public:
  void SetShape(platform::PointerShape shape) override;
  platform::PointerShape Shape() const override { return shape_; }

 private:
  platform::PointerShape shape_ = platform::PointerShape::Default;
};

class QtBeeper final : public platform::Beeper {
 public:
  void Beep() override;
};

class QtEventLoop final : public platform::EventLoop {
 public:
  void Yield() override;
};

class QtFileDialog final : public platform::FileDialog {
 public:
  void SetParent(QWidget* parent) { parent_ = parent; }
  std::optional<platform::FileDialogResult> Run(const platform::FileDialogRequest& request) override;

 private:
  QPointer<QWidget> parent_;
};


class QtAudio final : public platform::Audio {
 public:
  QtAudio();
  ~QtAudio() override;
  bool Play(const std::vector<std::int16_t>& samples, int sampleRate) override;
  void Stop() override;
  bool IsPlaying() const override;
  long long Position() const override;
  void WaitUntilDone() override;
  long long SoundNumber() const override { return soundNumber_; }

 private:
  long long soundNumber_ = 0;
  std::unique_ptr<QAudioSink> sink_;
  std::unique_ptr<QBuffer> buffer_;
  QByteArray* bytes_ = nullptr;
};

class QtPrinter final : public platform::Printer {
 public:
  QtPrinter();
  ~QtPrinter() override;
  bool Begin(const std::string& documentName) override;
  bool IsOpen() const override;
  platform::PageSize Page() const override;
  bool SupportsColour() const override;
  void NewPage() override;
  void SetFont(const std::string& family, double points) override;
  void Line(double x1, double y1, double x2, double y2, platform::Rgb color) override;
  void Dot(double x, double y, platform::Rgb color) override;
  void Text(double x, double y, const std::string& text) override;
  void Picture(double x, double y, double width, double height, const platform::RgbImage& image) override;
  bool End() override;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

class QtClipboard final : public platform::Clipboard {
 public:
  std::string Text() const override;
  void SetText(const std::string& text) override;
  void SetImage(const platform::RgbImage& image) override;
};

class QtRandom final : public platform::Random {
 public:
  void Seed(std::uint64_t seed) override;
  void SeedFromClock() override;
  double Next() override;

 private:
  std::uint64_t state_ = 0x9E3779B97F4A7C15ull;
};

class QtHelp final : public platform::Help {
 public:
  explicit QtHelp(std::string docsFolder);
  ~QtHelp() override;
  bool ShowTopic(const std::string& helpFile, const std::string& keyword) override;
  bool ShowContents(const std::string& helpFile) override;
  HelpWindow* Window() const;

 private:
  bool ShowPage(const std::string& page);
  std::string docs_;
  mutable QPointer<HelpWindow> window_;
};

// One QTimer per running timer, ticking on the event loop.
class QtTimers final : public platform::Timers {
 public:
  ~QtTimers() override;
  int Start(int intervalMs, std::function<void()> tick) override;
  void Stop(int id) override;

 private:
  std::map<int, QTimer*> timers_;
  int lastId_ = 0;
};

class QtScreen final : public platform::Screen {
 public:
  platform::ScreenSize Size() const override;
};

class QtPlatform {
 public:
  explicit QtPlatform(const std::string& docsFolder);
  platform::Services& services() { return services_; }
  void SetParent(QWidget* parent);

  QtDialogs dialogs;
  QtPointer pointer;
  QtBeeper beeper;
  QtEventLoop eventLoop;
  QtFileDialog fileDialog;
  QtImaging imaging;
  QtAudio audio;
  QtPrinter printer;
  QtClipboard clipboard;
  QtRandom random;
  QtHelp help;
  QtScreen screen;
  QtSurfaceFactory surfaces;
  QtTimers timers;

 private:
  platform::Services services_;
};

}  // namespace keldo::qt
