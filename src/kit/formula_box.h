#pragma once
// The formula box of a graph form: the row of five buttons beside the
// formula field (Previous, Next, Load, Save, Help) and the formulas they
// step through.
//
// Previous and Next walk the list of formulas that all forms of the kind
// share (the frame keeps it; a form takes a copy as it becomes active) and
// put the formula they reach into the field "Formula", an empty text after
// the last one. Load and Save read and write one formula in a file of the
// kind's extension; a file holds the one-byte text of the formula language,
// converted to and from the field's text by the kind's two functions. Help
// asks the form for help on formulas. A formula the form plots, or finds in
// a form file it reads, is filed by Update.

#include <string>
#include <string_view>
#include <vector>

#include "kit/formula_file.h"
#include "kit/formula_history.h"
#include "kit/settings.h"

namespace keldo {

class Form;

struct FormulaBoxKind {
  const char* buttons;   // the buttons' base name: buttons(0) to buttons(4)
  FormulaFileKind file;  // the formula files
  const char* helpTip;   // the tool tip of Help
  FormulaList FrameSettings::*list;  // the list the kind's forms share
  std::string (*toFile)(std::string_view text);
  std::string (*fromFile)(std::string_view bytes);
};

class FormulaBox {
 public:
  FormulaBox(Form& form, const FormulaBoxKind& kind) : form_(form), kind_(kind) {}

  // The five buttons, disabled until the graphing box opens.
  void AddControls();
  void Enable(bool on);
  // Button k of the row.
  void Press(int index);

  // Takes the shared list as it stands now.
  void Initialize();
  // Files a formula the form plotted or read.
  void Update(const std::string& formula);
  void Previous();
  void Next();
  void Load();
  void Save();

  // What the form plotted, oldest first; as a form file keeps it, and back.
  const std::vector<std::string>& Plotted() const { return history_.Plotted(); }
  std::vector<std::string> PlottedForFile() const;
  void UpdateFromFile(const std::vector<std::string>& stored);

 private:
  void ShowFormula(const std::string& text);

  Form& form_;
  const FormulaBoxKind& kind_;
  FormulaHistory history_;
};

}  // namespace keldo
