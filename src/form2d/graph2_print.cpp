// Printing from the two-dimensional form: the print box PrnParameters for
// the graph under the pop-up menu (its layout and buttons come from the
// print library), the graph image saved with its TeX labels, and the form
// print dialog.

#include <cmath>

#include "common/number_text.h"
#include "form2d/graph2_form.h"
#include "print/form_print.h"
#include "print/graph_image.h"
#include "print/print_graph.h"

namespace keldo::form2d {

void Graph2Form::BuildPrintControls() {
  controls_.Add("txtPrGraph", ControlKind::Text, "1").tip = "The number of the graph to print.";
  print::AddPrintGraphControls(controls_, print::kImagePrintBox);
  print::AddPrintFormControls(controls_);
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

void Graph2Form::OpenPrintForm(const SideBoxCommand&) { print::OpenPrintForm(*this); }

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
  const auto button = static_cast<print::PrintButton>(index);
  if (button == print::PrintButton::Eject) {
    print::PressPrintButton(*this, 0, index, print::kImagePrintBox);
    return;
  }
  const int picture = PrintedPicture();
  if (picture < 0) return;
  if (button == print::PrintButton::SaveToFile) SaveGraphImageToFile();
  else print::PressPrintButton(*this, picture, index, print::kImagePrintBox);
}

void Graph2Form::SaveGraphImageToFile() {
  const int picture = PrintedPicture();
  if (picture >= 0) print::SaveThePrintedGraphToFile(*this, picture);
}

bool Graph2Form::SavePrintGraphImageToFile(const std::string& path, const std::string& title) {
  const int picture = PrintedPicture();
  return picture >= 0 && print::SavePrintGraphToFile(*this, picture, path, title);
}

void Graph2Form::PressPrintFormButton(const std::string& name) {
  if (VisiblePanel() != kPanelPrintForm) return;
  ClearSideBox();
  print::PressPrintFormButton(*this, name, [this](const std::string& text, bool& failed) {
    return Value(text, failed);
  });
}

}  // namespace keldo::form2d
