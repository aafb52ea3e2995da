// Printing from the one-dimensional form: the "Print Graph" box and the
// form print dialog, whose controls and panels are the kit's and whose
// commands the print library runs.

#include "form1d/graph1_form.h"
#include "kit/print_box.h"

namespace keldo::form1d {

void Graph1Form::OpenPrintForm(const SideBoxCommand&) { keldo::OpenPrintForm(*this); }

double Graph1Form::ReadPrintValue(const std::string& text, bool& failed) {
  std::string copy = text;
  const double value = VALU(copy);
  failed = copy == formula::kValueFailure;
  if (failed) formula_.valueFault = 0;
  return value;
}

void Graph1Form::PressPrintFormButton(const std::string& name) {
  if (VisiblePanel() != kPanelPrintForm) return;
  ClearSideBox();
  Printing().PressPrintFormButton(*this, name, [this](const std::string& text, bool& failed) {
    return ReadPrintValue(text, failed);
  });
}

}  // namespace keldo::form1d
