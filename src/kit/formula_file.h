#pragma once
// The formula buttons' files: one formula as text, chosen in the file dialog
// at the formula folder, which is remembered. A form converts the text to
// and from its controls; the filter and extension name its kind of file.

#include <optional>
#include <string>

namespace keldo {

class FormContext;

struct FormulaFileKind {
  const char* filter;     // "Formula files (*.uf1)|*.uf1"
  const char* extension;  // ".uf1"
};

// The bytes of the chosen file; nothing when the dialog was cancelled or,
// after reporting 20, when the file cannot be read.
std::optional<std::string> LoadFormulaFile(FormContext& context, const FormulaFileKind& kind);
// Writes the bytes to the chosen file; reports 36 when it cannot.
void SaveFormulaFile(FormContext& context, const FormulaFileKind& kind, const std::string& bytes);

}  // namespace keldo
