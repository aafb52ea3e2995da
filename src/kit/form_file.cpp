#include "kit/form_file.h"

#include "kit/form.h"
#include "kit/form_context.h"
#include "kit/settings.h"
#include "platform/file_dialog.h"
#include "platform/services.h"

namespace keldo {

std::optional<std::string> SaveFormFile(FormContext& context, const std::string& knownPath, bool askForName,
                                        const char* filter, const char* extension,
                                        const std::function<bool(const std::string&)>& write, int failureMessage) {
  std::string path = knownPath;
  if (askForName || path.empty()) {
    const auto chosen = context.services().fileDialog->Run({platform::FileDialogMode::Save, "Save form", filter, 1,
                                                          platform::kFlagsSaveDialog, extension,
                                                          context.DialogFolder(kFolderForms, "figures")});
    if (!chosen) return std::nullopt;
    path = chosen->path;
  }
  context.ShowBusy();
  const bool saved = write(path);
  context.ShowIdle();
  if (!saved) {
    context.ShowError(failureMessage);
    return std::nullopt;
  }
  return path;
}

bool SaveTheFormFile(Form& form, std::string& fileName, bool askForName, const FormFileKind& kind,
                     const std::function<bool(const std::string&)>& write) {
  const std::optional<std::string> path =
      SaveFormFile(form.context(), fileName, askForName, kind.filter, kind.extension, write, kind.failureMessage);
  if (!path) return false;
  fileName = *path;
  for (const std::string& item : kind.namedItems) form.controls().SetEnabled(item, true);
  form.Touch();
  return true;
}

}  // namespace keldo
