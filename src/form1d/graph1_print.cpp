// Printing from the one-dimensional form: the "Print Graph" box (its
// controls, panel and buttons come from the print library) and the form
// print dialog.

#include "form1d/graph1_form.h"
#include "print/form_print.h"

namespace keldo::form1d {

void Graph1Form::OpenPrintForm(const SideBoxCommand&) { print::OpenPrintForm(*this); }

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
  print::PressPrintFormButton(*this, name, [this](const std::string& text, bool& failed) {
    return ReadPrintValue(text, failed);
  });
}

}  // namespace keldo::form1d
