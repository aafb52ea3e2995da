#pragma once
// What a form may ask of the program around it: messages and the pointer,
// the platform's services, the shared settings, folders, and new forms of a
// kind. The frame is the one implementation; a form never sees the frame
// itself, so forms stay independent of it and of each other.

#include <span>
#include <string>

#include "kit/exchange.h"
#include "kit/form_kind.h"
#include "kit/settings.h"
#include "platform/image.h"
#include "platform/services.h"

namespace keldo {

class Form;

// Factory result codes: 0, or the negated run-time error number.
constexpr int kOutOfMemoryCode = -7;

class FormContext {
 public:
  virtual ~FormContext() = default;

  virtual platform::Services& services() = 0;
  virtual FrameSettings& settings() = 0;
  // The graphs handed between forms by Copy graph and Paste graph; they
  // outlive the forms that put them there.
  virtual GraphExchange& exchange() = 0;

  // --- messages and the pointer ---------------------------------------------
  // A catalogue message in a critical box, with the full stop appended.
  virtual void ShowError(int number) = 0;
  virtual void ShowCritical(const std::string& text) = 0;
  virtual void ShowMessage(const std::string& text) = 0;
  virtual void ShowBusy() = 0;
  virtual void ShowBusyArrow() = 0;
  virtual void ShowIdle() = 0;
  virtual void Beep() = 0;
  // Help in one of the named help files; reports 22 when it cannot be shown.
  virtual void GetHelp(const std::string& helpFile, const std::string& topic) = 0;
  // The quick help box; its "&Help" opens the full topic.
  virtual void QuickHelp(const std::string& title, const std::string& text, const std::string& helpFile,
                         const std::string& topic) = 0;

  // --- folders ----------------------------------------------------------------
  // A folder under the program's folder: Folder("Data") is PROGRAM/Data.
  virtual std::string Folder(const std::string& name) const = 0;
  // Where a file dialog opens: the folder it last left, or the fallback
  // under the program's folder; and the folder to keep after it.
  virtual std::string DialogFolder(int index, const std::string& fallback) const = 0;
  virtual void RememberDialogFolder(int index, const std::string& chosenPath) = 0;
  // The folder of the sound buffer files, created when missing.
  virtual std::string SoundBufferFolder() = 0;
  // Where the workshop's compressed files and decoded matrices go:
  // "Compress/Data" under the program's folder, or the same under a
  // per-user data folder when that cannot be written.
  virtual std::string CompressFolder() = 0;

  // --- forms ------------------------------------------------------------------
  // The kinds of form there are, one row each.
  virtual std::span<const FormKindInfo> Kinds() const = 0;
  // Creates, numbers, places and shows a form of the kind; null with a
  // negative code (-7 out of memory) on failure.
  virtual Form* NewForm(FormKind kind, int& code) = 0;
  // Reports 72 for -7 and 73 for any other negative code.
  virtual void ReportFactoryFailure(int code) = 0;
  // Closes a form unless it refuses.
  virtual bool CloseForm(Form& form) = 0;
  // Whether the form is one of the open forms (not closed since).
  virtual bool IsOpenForm(const Form* form) const = 0;
  // "Open form": the file dialog, then a new form of the kind the filter
  // names, loaded; the new form, or null when nothing was opened.
  virtual Form* OpenTheForm() = 0;
  // The form's window as the screen shows it, frame and caption included;
  // empty when there is no window to draw (the form's pictures then stand
  // in for it where a picture of the whole form is wanted).
  virtual platform::RgbImage CaptureWindow(Form& /*form*/) { return {}; }
};

}  // namespace keldo
