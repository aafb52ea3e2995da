#pragma once
// Message and input boxes of the window system. Both are modal.

#include <optional>
#include <string>

namespace keldo::platform {

enum class MessageIcon { None, Critical, Information, Question };

struct MessageRequest {
  std::string text;
  std::string title;            // empty: the application's title
  MessageIcon icon = MessageIcon::Critical;
  int catalogueNumber = 0;      // the catalogue row shown, 0 when the text is the caller's own
  bool fromCatalogue = false;
};

struct InputRequest {
  std::string prompt;
  std::string title;
  std::string defaultText;
};

class Dialogs {
 public:
  virtual ~Dialogs() = default;
  // One OK button, modal.
  virtual void ShowMessage(const MessageRequest& request) = 0;
  // The typed text, or nothing when the user cancels.
  virtual std::optional<std::string> InputBox(const InputRequest& request) = 0;
  // The small modal quick-help box: a text, a "&Help" button and a close
  // button. True when "&Help" was pressed.
  virtual bool QuickHelp(const std::string& title, const std::string& text) = 0;
  // A yes/no question; true for yes.
  virtual bool AskYesNo(const std::string& text, const std::string& title) = 0;
};

}  // namespace keldo::platform
