#pragma once
// Runs a script against a frame with headless services, as a person would
// drive the desktop program. What a person would see goes to `out`, one line
// each; a line that is not understood stops the run with status 2 and
// "line N: reason" on `err`.

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

namespace keldo {
class Frame;
class Form;
namespace platform {
class HeadlessPlatform;
}
}  // namespace keldo

namespace keldo::script {

// Draws a form (or the frame when form is null) as the desktop program
// does and saves it as PNG; false on failure.
using Screenshotter = std::function<bool(Frame& frame, Form* form, const std::string& path)>;

struct RunOptions {
  bool strict = false;  // stop with status 1 at the first message box
};

class Runner {
 public:
  Runner(Frame& frame, platform::HeadlessPlatform& platform, std::ostream& out, std::ostream& err);
  void SetScreenshotter(Screenshotter shooter) { screenshotter_ = std::move(shooter); }
  // Sees the JSON of every dump line, in order, wherever the line sends it.
  void SetDumpObserver(std::function<void(const std::string&)> observer) { dumpObserver_ = std::move(observer); }
  // Every line a person would have seen goes through here.
  void Print(const std::string& line);

  // 0 all understood, 1 strict stop at a message, 2 a line not understood.
  int Run(const std::string& text, const RunOptions& options);

 private:
  // Runs one line; false with a reason when it is not understood.
  bool Execute(const std::vector<std::string>& words, std::string& reason);
  bool RunMenuCommand(const std::vector<std::string>& words, std::string& reason);
  bool RunSet(const std::vector<std::string>& words, std::string& reason);
  bool RunNew(const std::vector<std::string>& words, std::string& reason);
  bool RunOpen(const std::vector<std::string>& words, std::string& reason);
  bool RunForm(const std::vector<std::string>& words, std::string& reason);
  bool RunDump(const std::vector<std::string>& words, std::string& reason);
  // During a long command the event loop delivers the next event line.
  void DeliverQueuedEvent();

  Frame& frame_;
  platform::HeadlessPlatform& platform_;
  std::ostream& out_;
  std::ostream& err_;
  Screenshotter screenshotter_;
  std::function<void(const std::string&)> dumpObserver_;
  std::vector<std::string> messages_;
  std::vector<std::string> lines_;
  std::size_t next_ = 0;
  int messageBoxes_ = 0;
  bool failed_ = false;
  std::string failure_;
  std::size_t failureLine_ = 0;
};

}  // namespace keldo::script
