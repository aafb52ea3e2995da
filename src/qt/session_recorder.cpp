#include "qt/session_recorder.h"

#include <charconv>
#include <iostream>
#include <utility>

#include "app/frame.h"

namespace keldo::qt {
namespace {

SessionRecorder* active = nullptr;

// A script line holds no line break; a text with one cannot be written.
bool OneLine(const std::string& text) { return text.find_first_of("\r\n") == std::string::npos; }

// The lines a replay hands to a running command as events.
bool IsEventLine(const std::string& line) {
  for (const char* word : {"click ", "mouse ", "popup ", "caption "})
    if (line.rfind(word, 0) == 0) return true;
  return false;
}

}  // namespace

SessionRecorder::SessionRecorder(Frame& frame, const std::string& path)
    : frame_(frame), path_(path), out_(path, std::ios::binary | std::ios::trunc), good_(static_cast<bool>(out_)) {
  if (!good_) std::cerr << "keldo: cannot record the session to " << path << "; going on without a recording\n";
  scriptCurrent_ = frame_.Current();
  active = this;
}

SessionRecorder::~SessionRecorder() {
  FlushFields();
  if (active == this) active = nullptr;
}

SessionRecorder* SessionRecorder::Active() { return active; }

std::string SessionRecorder::Quote(const std::string& word) {
  if (!word.empty() && word.find_first_of(" \t\"#") == std::string::npos) return word;
  std::string out = "\"";
  for (char c : word) {
    if (c == '"') out += '"';
    out += c;
  }
  return out + '"';
}

std::string SessionRecorder::Number(double value) {
  char text[32];
  const auto result = std::to_chars(text, text + sizeof text, value);
  return std::string(text, result.ptr);
}

int SessionRecorder::NumberOf(const Form* form) const {
  const std::vector<Form*>& created = frame_.CreatedForms();
  for (std::size_t k = 0; k < created.size(); ++k)
    if (created[k] == form) return static_cast<int>(k) + 1;
  return 0;
}

void SessionRecorder::WriteLine(const std::string& line) {
  if (!good_) return;
  if (timersTicked_ || (endedAfterYield_ && IsEventLine(line))) out_ << "wait\n";
  timersTicked_ = false;
  endedAfterYield_ = false;
  out_ << line << '\n';
  out_.flush();
  if (!out_) {
    good_ = false;
    std::cerr << "keldo: cannot write the recording " << path_ << "; going on without it\n";
  }
}

void SessionRecorder::WriteFor(Form* form, int number, const std::string& line) {
  if (form && form != scriptCurrent_) {
    if (number == 0) return;  // the form closed before its line was written
    WriteLine("form " + std::to_string(number));
    scriptCurrent_ = form;
  }
  WriteLine(line);
}

void SessionRecorder::FlushFields() {
  std::vector<Pending> fields = std::move(pending_);
  pending_.clear();
  for (const Pending& field : fields)
    if (OneLine(field.text)) WriteFor(field.form, NumberOf(field.form), "set " + field.name + " " + Quote(field.text));
}

void SessionRecorder::WriteAction(Action& action) {
  for (const std::string& answer : action.answers) WriteLine(answer);
  WriteFor(action.form, action.number, action.line);
  action.written = true;
}

void SessionRecorder::Begin(Form* form, std::string line) {
  FlushFields();
  // An action that comes while another runs reaches the runner as an event
  // during that command: the command's line goes first.
  for (Action& outer : running_)
    if (!outer.written) WriteAction(outer);
  running_.push_back({form, form ? NumberOf(form) : 0, std::move(line), {}, false});
}

void SessionRecorder::End() {
  if (running_.empty()) return;
  Action action = std::move(running_.back());
  running_.pop_back();
  if (!action.written) WriteAction(action);
  // A command that made a form made it current, in a replay as here.
  if (running_.empty()) {
    scriptCurrent_ = frame_.Current();
    if (yieldedInCommand_) endedAfterYield_ = true;
    yieldedInCommand_ = false;
  }
}

void SessionRecorder::FieldTyped(Form& form, const std::string& name, const std::string& text) {
  for (Pending& field : pending_) {
    if (field.form == &form && field.name == name) {
      field.text = text;
      return;
    }
  }
  pending_.push_back({&form, name, text});
}

void SessionRecorder::FieldCommitted(Form& form, const std::string& name) {
  for (const Pending& field : pending_)
    if (field.form == &form && field.name == name) {
      FlushFields();
      return;
    }
}

std::string SessionRecorder::PointerLine(const Form& form, int picture, MouseAction action, double x, double y,
                                         MouseButton button) {
  // The form's own pointer routing where it reaches the picture; otherwise
  // the picture named, in its own coordinates.
  double sx = 0.0, sy = 0.0;
  const bool routed = form.ScriptPoint(picture, x, y, sx, sy);
  if (!routed) {
    sx = x;
    sy = y;
  }
  std::string line = "mouse ";
  line += action == MouseAction::Down ? "down" : action == MouseAction::Move ? "move" : "up";
  line += " " + Number(sx) + " " + Number(sy);
  if (action == MouseAction::Down) line += button == MouseButton::Right ? " right" : " left";
  if (!routed) line += " @" + std::to_string(picture);
  return line;
}

void SessionRecorder::FileAnswered(const std::optional<std::string>& path) {
  const std::string line = path ? (OneLine(*path) ? "file " + Quote(*path) : "file cancel") : "file cancel";
  if (!running_.empty() && !running_.back().written)
    running_.back().answers.push_back(line);
  else
    WriteLine(line);
}

void SessionRecorder::InputAnswered(const std::optional<std::string>& text) {
  const std::string line = text && OneLine(*text) ? "answer " + Quote(*text) : "answer cancel";
  if (!running_.empty() && !running_.back().written)
    running_.back().answers.push_back(line);
  else
    WriteLine(line);
}

RecordedAction::RecordedAction(Form* form, std::string line) : recorder_(SessionRecorder::Active()) {
  if (recorder_) recorder_->Begin(form, std::move(line));
}

RecordedAction::~RecordedAction() {
  if (recorder_) recorder_->End();
}

}  // namespace keldo::qt
