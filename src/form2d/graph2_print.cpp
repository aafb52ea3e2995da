// Printing from the two-dimensional form: the print box PrnParameters for
// the graph under the pop-up menu, the graph image saved with its TeX
// labels, and the form print dialog; the kit has their controls and panels,
// the print library runs their commands.

#include <cmath>

#include "common/number_text.h"
#include "form2d/graph2_form.h"
#include "kit/print_box.h"

namespace keldo::form2d {

void Graph2Form::BuildPrintControls() {
  controls_.Add("txtPrGraph", ControlKind::Text, "1").tip = "The number of the graph to print.";
  AddPrintGraphControls(controls_, kImagePrintBox);
  AddPrintFormControls(controls_);
}

void Graph2Form::BindPrintCommands() {
  // cmdPrint(0..3) are the print box's buttons; the bare cmdPrint is the
  // form print dialog's.
  for (int k = 0; k < 4; ++k)
    OnButton(IndexedName("cmdPrint", k), [this, k](int) { PressPrintButton(k); });
  for (const char* name : {"cmdPrint", "cmdPrintAndEject", "cmdEject"})
    OnButton(name, [this, name](int) { PressPrintFormButton(name); });
}

void Graph2Form::OpenPrintGraph(const SideBoxCommand&) {
  const int g = viewSize_ == 'L' ? currentGraph_ : popUpGraph_;
  controls_.SetText("txtPrGraph", std::to_string(g + 1));
}

void Graph2Form::OpenPrintForm(const SideBoxCommand&) { keldo::OpenPrintForm(*this); }

int Graph2Form::PictureOfGraph(int g) const {
  if (viewSize_ == 'L') return g == currentGraph_ ? 0 : -1;
  return g;
}

// The picture of the graph in txtPrGraph; -1 after reporting 3 when the
// field names no graph that is shown.
int Graph2Form::PrintedPicture() {
  bool failed = false;
  const double number = Value(controls_.Text("txtPrGraph"), failed);
  const int g = failed || !std::isfinite(number) ? -1 : static_cast<int>(std::lround(number)) - 1;
  const int picture = g >= 0 && g < graphCount_ ? PictureOfGraph(g) : -1;
  if (picture < 0) context_.ShowError(3);
  return picture;
}

void Graph2Form::PressPrintButton(int index) {
  if (VisiblePanel() != kPanelPrint) return;
  const auto button = static_cast<PrintButton>(index);
  if (button == PrintButton::Eject) {
    Printing().PressPrintButton(*this, 0, index, kImagePrintBox);
    return;
  }
  const int picture = PrintedPicture();
  if (picture < 0) return;
  if (button == PrintButton::SaveToFile) SaveGraphImageToFile();
  else Printing().PressPrintButton(*this, picture, index, kImagePrintBox);
}

void Graph2Form::SaveGraphImageToFile() {
  const int picture = PrintedPicture();
  // The box's own Save Printout to File asks for the path.
  if (picture >= 0) Printing().PressPrintButton(*this, picture, static_cast<int>(PrintButton::SaveToFile), kImagePrintBox);
}

bool Graph2Form::SavePrintGraphImageToFile(const std::string& path, const std::string& title) {
  const int picture = PrintedPicture();
  return picture >= 0 && Printing().SavePrintGraphToFile(*this, picture, path, title);
}

void Graph2Form::PressPrintFormButton(const std::string& name) {
  if (VisiblePanel() != kPanelPrintForm) return;
  ClearSideBox();
  Printing().PressPrintFormButton(*this, name, [this](const std::string& text, bool& failed) {
    return Value(text, failed);
  });
}

}  // namespace keldo::form2d
