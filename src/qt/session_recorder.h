#pragma once
// Writes what a person does in the desktop program as keldo-run lines, one
// line each, flushed as it is written: a file cut off anywhere replays up to
// its last whole line.
//
// The views call it at each action they turn into a form command. An action
// is written after it has run, with the dialog and input-box answers it took
// in front of it (`file`, `answer`), as the runner wants them queued before
// the command that asks. Typing in a text box is kept until the field is
// committed (Enter, leaving the box) or until any other action, and then
// written as one `set`. Before a line for a form other than the one the
// script has as current, a `form N` line makes it current.
//
// A file that cannot be opened or written is reported once on stderr and the
// session goes on unrecorded.

#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "kit/form.h"

namespace keldo {
class Frame;
}

namespace keldo::qt {

class SessionRecorder {
 public:
  SessionRecorder(Frame& frame, const std::string& path);
  ~SessionRecorder();
  SessionRecorder(const SessionRecorder&) = delete;
  SessionRecorder& operator=(const SessionRecorder&) = delete;

  // The recorder the views report to; null when none records.
  static SessionRecorder* Active();
  bool Recording() const { return good_; }

  // An action of a person: its script line runs on `form` (null: the frame's
  // menu). Begin before calling the form, End after; actions met while one
  // runs (Stop during a long command) are written after its line.
  void Begin(Form* form, std::string line);
  void End();

  // A text box typed into; the text is written when the field is committed.
  void FieldTyped(Form& form, const std::string& name, const std::string& text);
  void FieldCommitted(Form& form, const std::string& name);
  // A check box, option button or list chosen: written at once.
  void ControlChosen(Form& form, const std::string& name, const std::string& value);
  // A platform timer ticked (playback, a scan line): a replay lets its
  // timers run to their end (`wait`) before the next line.
  void TimerTicked() { timersTicked_ = true; }
  // A command let events run while it worked (the event loop's Yield). A
  // replay hands the click, mouse, popup and caption lines that follow such
  // a command to it while it runs, so a pointer action that came after it
  // ended is written after a `wait`.
  void Yielded() {
    if (!running_.empty()) yieldedInCommand_ = true;
  }
  // The answers of a file dialog and of an input or yes/no box.
  void FileAnswered(const std::optional<std::string>& path);
  void InputAnswered(const std::optional<std::string>& text);

  // A word as the runner reads it back: quoted when it holds a blank, a
  // quote or a "#", or is empty.
  static std::string Quote(const std::string& word);
  // A number that reads back to the same double.
  static std::string Number(double value);
  // The `mouse` line of the pointer on picture `picture` at (x, y) in that
  // picture's coordinates; a comment when a script cannot point there.
  static std::string PointerLine(const Form& form, int picture, MouseAction action, double x, double y,
                                 MouseButton button);

 private:
  struct Pending {
    Form* form;
    std::string name;
    std::string text;
  };
  struct Action {
    Form* form;
    int number;  // the form's place, taken before the action may close it
    std::string line;
    std::vector<std::string> answers;
    bool written = false;
  };
  // Writes the typed fields not yet written, each after the `form` line it needs.
  void FlushFields();
  void WriteAction(Action& action);
  void WriteFor(Form* form, int number, const std::string& line);
  void WriteLine(const std::string& line);
  // The place of a form among those created, 1-based; 0 when it is gone.
  int NumberOf(const Form* form) const;

  Frame& frame_;
  std::string path_;
  std::ofstream out_;
  bool good_ = false;
  // The form a replay has as current after the lines written so far.
  Form* scriptCurrent_ = nullptr;
  bool timersTicked_ = false;
  // The running command yielded; a command that yielded has ended and no
  // line has been written since.
  bool yieldedInCommand_ = false;
  bool endedAfterYield_ = false;
  std::vector<Pending> pending_;
  std::vector<Action> running_;
};

// Begins an action on construction and ends it on destruction, when a
// recorder is active.
class RecordedAction {
 public:
  RecordedAction(Form* form, std::string line);
  ~RecordedAction();
  RecordedAction(const RecordedAction&) = delete;
  RecordedAction& operator=(const RecordedAction&) = delete;

 private:
  SessionRecorder* recorder_;
};

}  // namespace keldo::qt
