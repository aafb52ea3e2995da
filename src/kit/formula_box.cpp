#include "kit/formula_box.h"

#include <optional>

#include "kit/controls.h"
#include "kit/form.h"
#include "kit/form_context.h"

namespace keldo {

void FormulaBox::AddControls() {
  const std::string extension = kind_.file.extension;
  const std::string captions[5] = {"Previous", "Next", "Load", "Save", "Help"};
  const std::string tips[5] = {"Previous formula", "Next formula", "Load a formula file (*" + extension + ")",
                               "Save the formula to a file (*" + extension + ")", kind_.helpTip};
  for (int k = 0; k < 5; ++k) {
    Control& button = form_.controls().Add(IndexedName(kind_.buttons, k), ControlKind::Button, captions[k]);
    button.tip = tips[k];
    button.enabled = false;
  }
}

void FormulaBox::Enable(bool on) {
  for (int k = 0; k < 5; ++k) form_.controls().SetEnabled(IndexedName(kind_.buttons, k), on);
}

void FormulaBox::Press(int index) {
  switch (index) {
    case 0: Previous(); break;
    case 1: Next(); break;
    case 2: Load(); break;
    case 3: Save(); break;
    case 4: form_.FormulaHelp(""); break;
    default: break;
  }
}

void FormulaBox::Initialize() { history_.Initialize(form_.context().settings().*kind_.list); }

void FormulaBox::Update(const std::string& formula) {
  history_.Update(form_.context().settings().*kind_.list, formula);
}

void FormulaBox::ShowFormula(const std::string& text) {
  form_.controls().SetText("Formula", text);
  form_.Touch();
}

void FormulaBox::Previous() { ShowFormula(history_.Previous()); }

void FormulaBox::Next() { ShowFormula(history_.Next()); }

void FormulaBox::Load() {
  const std::optional<std::string> bytes = LoadFormulaFile(form_.context(), kind_.file);
  if (bytes) ShowFormula(kind_.fromFile(*bytes));
}

void FormulaBox::Save() {
  SaveFormulaFile(form_.context(), kind_.file, kind_.toFile(form_.controls().Text("Formula")) + "\r\n");
}

std::vector<std::string> FormulaBox::PlottedForFile() const {
  std::vector<std::string> stored;
  for (const std::string& formula : Plotted()) stored.push_back(kind_.toFile(formula));
  return stored;
}

void FormulaBox::UpdateFromFile(const std::vector<std::string>& stored) {
  for (const std::string& bytes : stored) Update(kind_.fromFile(bytes));
}

}  // namespace keldo
