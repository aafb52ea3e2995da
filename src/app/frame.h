#pragma once
// The frame KELDO: the one parent window. It owns the shared settings, creates
// and numbers the child forms, and is the one way forms reach each other.

#include <array>
#include <functional>
#include <memory>
#include <span>
#include <string_view>
#include <string>
#include <vector>

#include "kit/controls.h"
#include "kit/exchange.h"
#include "kit/form.h"
#include "kit/form_context.h"
#include "kit/form_kind.h"
#include "kit/settings.h"
#include "platform/services.h"

namespace keldo {

// Told of forms coming and going, so that a view can follow.
class FrameListener {
 public:
  virtual ~FrameListener() = default;
  virtual void FormCreated(Form& form) = 0;
  virtual void FormClosed(Form& form) = 0;
  virtual void CurrentFormChanged(Form* form) = 0;
};

class Frame final : public FormContext {
 public:
  Frame(platform::Services& services, std::string programFolder);
  ~Frame() override;

  platform::Services& services() override { return services_; }
  FrameSettings& settings() override { return settings_; }
  GraphExchange& exchange() override { return exchange_; }
  const std::string& programFolder() const { return programFolder_; }
  std::string Folder(const std::string& name) const override;
  std::string DialogFolder(int index, const std::string& fallback) const override;
  void RememberDialogFolder(int index, const std::string& chosenPath) override;
  std::string SoundBufferFolder() override;
  std::string CompressFolder() override;

  // --- registry and factories ---------------------------------------------
  // Takes the table of kinds (one row each) and builds the File menu's New
  // and open items from it.
  void InstallKinds(std::span<const FormKindInfo> kinds);
  std::span<const FormKindInfo> Kinds() const override { return kinds_; }
  // The row of a kind, or null when it is not installed.
  const FormKindInfo* KindInfo(FormKind kind) const { return FindKind(kinds_, kind); }
  // The row whose script word is `word` (any case), or null.
  const FormKindInfo* KindOfWord(std::string_view word) const;
  // Replaces the maker of a kind (tests make forms of their own this way).
  void RegisterKind(FormKind kind, FormMaker maker);
  bool HasKind(FormKind kind) const;
  // Creates, numbers, places and shows a form of the kind. The code is 0 on
  // success and negative on failure (-7 out of memory), when null is returned.
  Form* NewForm(FormKind kind, int& code) override;
  void ReportFactoryFailure(int code) override;

  // Closes a form unless it refuses; lowers the cascade position.
  bool CloseForm(Form& form) override;
  bool IsOpenForm(const Form* form) const override;
  // Destroys forms closed since the last call. Called between commands, so
  // that a form may close itself from its own menu handler.
  void CollectClosedForms() { closed_.clear(); }
  // Every form created so far in creation order; closed ones are null.
  const std::vector<Form*>& CreatedForms() const { return created_; }
  std::vector<Form*> OpenForms() const;
  Form* Current() const { return current_; }
  void SetCurrent(Form* form);

  int CascadePosition() const { return cascade_; }
  int CreatedCount(FormKind kind) const { return counts_[static_cast<int>(kind)]; }

  // --- start-up and commands ------------------------------------------------
  void DeclareVariables();
  // The command line: a quoted path to a .kd1 or .kd2 file.
  void Process(const std::string& commandLine);
  // "Open form": the file dialog, then the form kind by the filter chosen.
  Form* OpenTheForm() override;
  // The front end draws a form's window for CaptureWindow; none by default.
  void SetWindowCapturer(std::function<platform::RgbImage(Form&)> capturer) { windowCapturer_ = std::move(capturer); }
  platform::RgbImage CaptureWindow(Form& form) override {
    return windowCapturer_ ? windowCapturer_(form) : platform::RgbImage{};
  }
  // Loads a form file into a new form of the kind; reports 72/73 on failure.
  Form* OpenFormFile(FormKind kind, const std::string& path, const std::string& title);
  // Reads a data file into a new form of the kind; a failed read leaves no
  // form behind.
  Form* OpenDataFile(FormKind kind, const std::string& path);

  // --- messages and pointer ---------------------------------------------------
  void ShowError(int number) override;
  void ShowCritical(const std::string& text) override;
  void ShowMessage(const std::string& text) override;
  void ShowBusy() override;
  void ShowBusyArrow() override;
  void ShowIdle() override;
  void Beep() override;
  // Opens help in one of the named help files ("KELDOX.HLP"); reports 22 when
  // it cannot be shown. An empty topic opens the contents.
  void GetHelp(const std::string& helpFile, const std::string& topic) override;
  // The quick help box: "&Help" stores "Y" in the labHelp caption, which
  // then opens the full topic in the help file.
  void QuickHelp(const std::string& title, const std::string& text, const std::string& helpFile,
                 const std::string& topic) override;

  // --- the frame's own menu -------------------------------------------------
  ControlModel& controls() { return controls_; }
  const std::vector<MenuNode>& MenuBar() const { return menuBar_; }
  bool RunMenu(const std::string& name);
  // Set by "E&xit"; the desktop program quits when it turns true.
  bool ExitRequested() const { return exitRequested_; }
  // The about box's lines.
  static std::vector<std::string> AboutText();

  void SetListener(FrameListener* listener) { listener_ = listener; }

 private:
  void BuildMenu();
  // A new form of the kind filled by `load`; when it fails, the form is
  // closed again and the message (if not 0) or 72 for want of memory shown.
  Form* LoadIntoNewForm(FormKind kind, const std::function<bool(Form&)>& load, int failureMessage);

  platform::Services& services_;
  std::string programFolder_;
  FrameSettings settings_;
  GraphExchange exchange_;
  std::vector<FormKindInfo> kinds_;
  std::array<int, kFormKinds> counts_{};
  int cascade_ = 0;
  std::vector<std::unique_ptr<Form>> owned_;
  std::vector<Form*> created_;
  std::vector<std::unique_ptr<Form>> closed_;
  Form* current_ = nullptr;
  FrameListener* listener_ = nullptr;
  ControlModel controls_;
  std::vector<MenuNode> menuBar_;
  bool exitRequested_ = false;
  std::string soundFolder_, soundFolderSetting_;
  std::function<platform::RgbImage(Form&)> windowCapturer_;
};

// The last backslash- or slash-separated part of a path.
std::string GetFileTitle(const std::string& path);

}  // namespace keldo
