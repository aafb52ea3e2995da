#include "script/runner.h"

#include <cstdlib>
#include <charconv>
#include <cmath>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>

#include "kit/form.h"
#include "app/frame.h"
#include "common/text.h"
#include "platform/headless/headless_services.h"
#include "script/dump.h"
#include "script/script_parser.h"

namespace keldo::script {
namespace {

std::string JoinFrom(const std::vector<std::string>& words, std::size_t first) {
  std::string out;
  for (std::size_t i = first; i < words.size(); ++i) out += (i > first ? " " : "") + words[i];
  return out;
}

bool ParseInt(const std::string& text, int& value) {
  if (text.empty() || text.size() > 9) return false;
  for (char c : text)
    if (c < '0' || c > '9') return false;
  value = std::atoi(text.c_str());
  return true;
}

bool ParseDouble(const std::string& text, double& value) {
  if (text.empty()) return false;
  const char* first = text.data() + (text[0] == '+' ? 1 : 0);
  const auto [end, ec] = std::from_chars(first, text.data() + text.size(), value);
  return ec == std::errc() && end == text.data() + text.size() && std::isfinite(value);
}

bool ReadWholeFile(const std::string& path, std::string& text) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return false;
  text.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  return true;
}

// A timer that never switches itself off stops holding up `wait` after
// this many ticks past the end of the sound (it stays running).
constexpr long long kMostTicksAfterSound = 100000;

// Commands that stand for a person's input, which a long command may meet
// while it yields to the event loop.
bool IsEventCommand(const std::string& word) {
  return word == "click" || word == "mouse" || word == "popup" || word == "caption";
}

}  // namespace

Runner::Runner(Frame& frame, platform::HeadlessPlatform& platform, std::ostream& out, std::ostream& err)
    : frame_(frame), platform_(platform), out_(out), err_(err) {
  platform_.eventLoop.SetHook([this] { DeliverQueuedEvent(); });
}

void Runner::Print(const std::string& line) {
  std::string shown = line;
  for (char& c : shown)
    if (c == '\n' || c == '\r') c = ' ';
  out_ << shown << '\n';
  out_.flush();
  if (shown.rfind("message", 0) == 0) {
    messages_.push_back(shown);
    ++messageBoxes_;
  }
}

int Runner::Run(const std::string& text, const RunOptions& options) {
  lines_ = SplitLines(text);
  next_ = 0;
  while (next_ < lines_.size()) {
    const std::size_t lineNumber = next_ + 1;
    const ParsedLine parsed = ParseLine(lines_[next_++]);
    std::string reason = parsed.error;
    if (reason.empty() && !parsed.words.empty()) Execute(parsed.words, reason);
    frame_.CollectClosedForms();
    if (failed_) {
      err_ << "line " << failureLine_ << ": " << failure_ << '\n';
      return 2;
    }
    if (!reason.empty()) {
      err_ << "line " << lineNumber << ": " << reason << '\n';
      return 2;
    }
    if (options.strict && messageBoxes_ > 0) return 1;
    if (frame_.ExitRequested()) break;
  }
  return 0;
}

void Runner::DeliverQueuedEvent() {
  if (next_ >= lines_.size() || failed_) return;
  const ParsedLine parsed = ParseLine(lines_[next_]);
  if (!parsed.error.empty() || parsed.words.empty() || !IsEventCommand(parsed.words[0])) return;
  const std::size_t lineNumber = ++next_;
  std::string reason;
  if (!Execute(parsed.words, reason)) {
    failed_ = true;
    failure_ = reason;
    failureLine_ = lineNumber;
  }
}

bool Runner::Execute(const std::vector<std::string>& words, std::string& reason) {
  const std::string& cmd = words[0];
  Form* form = frame_.Current();
  auto needForm = [&]() {
    if (!form) reason = "no form is open";
    return form != nullptr;
  };
  if (cmd == "new") return RunNew(words, reason);
  if (cmd == "open") return RunOpen(words, reason);
  if (cmd == "form") return RunForm(words, reason);
  if (cmd == "menu") return RunMenuCommand(words, reason);
  if (cmd == "set") return RunSet(words, reason);
  if (cmd == "dump") return RunDump(words, reason);
  if (cmd == "go") {
    if (!needForm()) return false;
    if (!form->Go()) reason = "no side box with a Go button is open";
    return reason.empty();
  }
  if (cmd == "click") {
    if (words.size() != 2) { reason = "click takes one control name"; return false; }
    if (!needForm()) return false;
    if (!form->Click(words[1])) reason = "unknown button " + words[1];
    return reason.empty();
  }
  if (cmd == "answer") {
    if (words.size() < 2) { reason = "answer needs a text or cancel"; return false; }
    if (words.size() == 2 && words[1] == "cancel")
      platform_.dialogs.QueueAnswer(std::nullopt);
    else
      platform_.dialogs.QueueAnswer(JoinFrom(words, 1));
    return true;
  }
  if (cmd == "file") {
    if (words.size() != 2) { reason = "file takes one path or cancel"; return false; }
    if (words[1] == "cancel")
      platform_.fileDialog.QueueAnswer(std::nullopt);
    else
      platform_.fileDialog.QueueAnswer(words[1]);
    return true;
  }
  if (cmd == "clipboard") {
    if (words.size() < 2) { reason = "clipboard needs a text or @PATH"; return false; }
    const std::string value = JoinFrom(words, 1);
    if (words.size() == 2 && value.size() > 1 && value[0] == '@') {
      std::string text;
      if (!ReadWholeFile(value.substr(1), text)) { reason = "cannot read " + value.substr(1); return false; }
      platform_.clipboard.SetText(text);
    } else {
      platform_.clipboard.SetText(value);
    }
    return true;
  }
  if (cmd == "caption") {
    if (!needForm()) return false;
    double k = 0.0;
    const std::size_t pictures = form->Pictures().size();
    if (words.size() != 2 || !ParseDouble(words[1], k) || k != std::floor(k) || k < 0 ||
        k >= static_cast<double>(pictures)) {
      reason = pictures == 0 ? std::string("this form has no picture with a caption")
                             : "caption takes the number of a picture of the form, from 0 to " +
                                   std::to_string(pictures - 1);
      return false;
    }
    form->PictureCaptionActivated(static_cast<int>(k));
    return true;
  }
  if (cmd == "mouse" || cmd == "popup") {
    if (!needForm()) return false;
    if (cmd == "popup") {
      if (words.size() != 2) { reason = "popup takes one menu item name"; return false; }
      std::string base;
      int index = -1;
      SplitIndexedName(words[1], base, index);
      if (!form->RunMenu(base, index)) reason = "unknown menu item " + words[1];
      return reason.empty();
    }
    // A last word @K aims at picture K of the form, in its own coordinates.
    int picture = -1;
    std::vector<std::string> args = words;
    if (args.size() > 1 && args.back().size() > 1 && args.back()[0] == '@') {
      double k = 0.0;
      if (!ParseDouble(args.back().substr(1), k) || k != std::floor(k) || k < 0 ||
          k >= static_cast<double>(form->Pictures().size())) {
        reason = "no picture " + args.back().substr(1) + " on this form";
        return false;
      }
      picture = static_cast<int>(k);
      args.pop_back();
    }
    if (args.size() < 4 || args.size() > 5) { reason = "mouse takes down, move or up, X, Y and a button"; return false; }
    MouseAction action;
    if (args[1] == "down") action = MouseAction::Down;
    else if (args[1] == "move") action = MouseAction::Move;
    else if (args[1] == "up") action = MouseAction::Up;
    else { reason = "mouse takes down, move or up, not " + args[1]; return false; }
    double x = 0.0, y = 0.0;
    if (!ParseDouble(args[2], x) || !ParseDouble(args[3], y)) { reason = "mouse needs two numbers"; return false; }
    MouseButton button = MouseButton::Left;
    if (args.size() == 5) {
      if (args[4] == "right") button = MouseButton::Right;
      else if (args[4] != "left") { reason = "the button is left or right, not " + args[4]; return false; }
    }
    if (action == MouseAction::Move && args.size() == 4) button = MouseButton::None;
    const bool reached = picture >= 0 ? form->PictureMouse(picture, action, x, y, button) : form->Mouse(action, x, y, button);
    if (!reached) reason = "this form has no plot to point at";
    return reason.empty();
  }
  if (cmd == "screenshot") {
    if (words.size() != 2) { reason = "screenshot takes one path"; return false; }
    if (!screenshotter_) { reason = "screenshots need the Qt build"; return false; }
    if (!screenshotter_(frame_, form, words[1])) reason = "cannot write " + words[1];
    return reason.empty();
  }
  if (cmd == "wait") {
    // The timers tick through the rest of the sound, the sound ends, and
    // the timers still running go on until they switch themselves off.
    platform_.timers.Advance(platform_.audio.RemainingMilliseconds());
    platform_.audio.Finish();
    platform_.timers.RunUntilStopped(kMostTicksAfterSound);
    return true;
  }
  reason = "unknown command " + cmd;
  return false;
}

bool Runner::RunNew(const std::vector<std::string>& words, std::string& reason) {
  if (words.size() != 2) { reason = "new takes one kind: 1d, 2d, audio or imageproc"; return false; }
  const FormKindInfo* kind = frame_.KindOfWord(words[1]);
  if (!kind) {
    reason = "unknown form kind " + words[1];
    return false;
  }
  int code = 0;
  if (!frame_.NewForm(kind->kind, code)) frame_.ReportFactoryFailure(code);
  return true;
}

bool Runner::RunOpen(const std::vector<std::string>& words, std::string& reason) {
  if (words.size() != 2) { reason = "open takes one path"; return false; }
  const std::string& path = words[1];
  const auto dot = path.find_last_of('.');
  const std::string ext = dot == std::string::npos ? "" : ToLower(path.substr(dot));
  // A form file opens into its kind; a data file into a new form of the kind
  // that reads it.
  for (const FormKindInfo& kind : frame_.Kinds()) {
    if (!kind.formExtension.empty() && ext == kind.formExtension) {
      frame_.OpenFormFile(kind.kind, path, GetFileTitle(path));
      return true;
    }
  }
  for (const FormKindInfo& kind : frame_.Kinds()) {
    for (std::string_view e : kind.dataFiles) {
      if (ext == e) {
        frame_.OpenDataFile(kind.kind, path);
        return true;
      }
    }
  }
  reason = "unknown file kind " + path;
  return false;
}

bool Runner::RunForm(const std::vector<std::string>& words, std::string& reason) {
  if (words.size() != 2) { reason = "form takes a number or last"; return false; }
  const auto& created = frame_.CreatedForms();
  if (words[1] == "last") {
    for (auto it = created.rbegin(); it != created.rend(); ++it) {
      if (*it) {
        frame_.SetCurrent(*it);
        return true;
      }
    }
    reason = "no form is open";
    return false;
  }
  int n = 0;
  if (!ParseInt(words[1], n) || n < 1 || n > static_cast<int>(created.size()) || !created[n - 1]) {
    reason = "no form " + words[1];
    return false;
  }
  frame_.SetCurrent(created[n - 1]);
  return true;
}

bool Runner::RunMenuCommand(const std::vector<std::string>& words, std::string& reason) {
  if (words.size() < 2 || words.size() > 3) { reason = "menu takes a name and an optional index"; return false; }
  int index = -1;
  if (words.size() == 3 && !ParseInt(words[2], index)) { reason = "bad menu index " + words[2]; return false; }
  std::string base = words[1];
  if (index < 0) SplitIndexedName(words[1], base, index);
  Form* form = frame_.Current();
  const bool known = form ? form->RunMenu(base, index) : frame_.RunMenu(IndexedName(base, index));
  if (!known) reason = "unknown menu item " + IndexedName(base, index);
  return known;
}

bool Runner::RunSet(const std::vector<std::string>& words, std::string& reason) {
  if (words.size() < 3) { reason = "set takes a control name and a value"; return false; }
  Form* form = frame_.Current();
  if (!form) { reason = "no form is open"; return false; }
  const std::string value = JoinFrom(words, 2);
  ControlModel& controls = form->controls();
  const Control* c = controls.Find(words[1]);
  if (!c || c->kind == ControlKind::Menu || c->kind == ControlKind::Button) {
    reason = "unknown control " + words[1];
    return false;
  }
  if (!controls.SetFromUser(words[1], value)) {
    reason = "control " + words[1] + " cannot take " + value;
    return false;
  }
  form->ControlChanged(words[1]);
  form->Touch();
  return true;
}

bool Runner::RunDump(const std::vector<std::string>& words, std::string& reason) {
  // dump [PATH] [brief]
  const bool brief = words.size() >= 2 && words.back() == "brief";
  const std::size_t pathWords = words.size() - 1 - (brief ? 1 : 0);
  if (pathWords > 1) { reason = "dump takes an optional path"; return false; }
  const std::string json = DumpJson(frame_, frame_.Current(), messages_, platform_.clipboard.Text(),
                                    brief ? MatrixValues::Brief : MatrixValues::Full);
  messages_.clear();
  if (dumpObserver_) dumpObserver_(json);
  if (pathWords == 1) {
    std::ofstream file(words[1], std::ios::binary);
    file << json;
    if (!file) { reason = "cannot write " + words[1]; return false; }
  } else {
    out_ << json;
    out_.flush();
  }
  return true;
}

}  // namespace keldo::script
