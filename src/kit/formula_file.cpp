#include "kit/formula_file.h"

#include <cstdint>
#include <vector>

#include "common/file_io.h"
#include "kit/form_context.h"
#include "kit/settings.h"
#include "platform/file_dialog.h"
#include "platform/services.h"

namespace keldo {
namespace {

// The dialog of the formula file buttons, at folder 6 or "Formulas".
std::optional<platform::FileDialogResult> FormulaFileDialog(FormContext& context, const FormulaFileKind& kind,
                                                            platform::FileDialogMode mode) {
  const bool open = mode == platform::FileDialogMode::Open;
  return context.services().fileDialog->Run({mode, open ? "Load formula" : "Save formula", kind.filter, 1,
                                           open ? platform::kFlagFileMustExist : platform::kFlagOverwritePrompt,
                                           open ? "" : kind.extension,
                                           context.DialogFolder(kFolderFormulas, "Formulas")});
}

}  // namespace

std::optional<std::string> LoadFormulaFile(FormContext& context, const FormulaFileKind& kind) {
  const auto chosen = FormulaFileDialog(context, kind, platform::FileDialogMode::Open);
  if (!chosen) return std::nullopt;
  std::vector<std::uint8_t> bytes;
  if (!ReadFileBytes(chosen->path, bytes)) {
    context.ShowError(20);
    return std::nullopt;
  }
  context.RememberDialogFolder(kFolderFormulas, chosen->path);
  return std::string(bytes.begin(), bytes.end());
}

void SaveFormulaFile(FormContext& context, const FormulaFileKind& kind, const std::string& bytes) {
  const auto chosen = FormulaFileDialog(context, kind, platform::FileDialogMode::Save);
  if (!chosen) return;
  if (!WriteFileBytes(chosen->path, std::vector<std::uint8_t>(bytes.begin(), bytes.end()))) {
    context.ShowError(36);
    return;
  }
  context.RememberDialogFolder(kFolderFormulas, chosen->path);
}

}  // namespace keldo
