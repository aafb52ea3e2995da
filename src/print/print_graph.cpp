#include "print/print_graph.h"

#include <vector>

#include "kit/form.h"
#include "kit/form_context.h"
#include "print/graph_image.h"
#include "print/paper_surface.h"

namespace keldo::print {
namespace {

constexpr const char* kFontFamily = "Helvetica";
// SetPrinterFonts: 1 the axis labels, 2 the caption.
constexpr double kLabelPoints = 9.0;
constexpr double kCaptionPoints = 12.0;
// The label offsets of 30 and 60 printer units (twips), in inches.
constexpr double kSmallOffset = 30.0 / 1440.0;
constexpr double kLargeOffset = 60.0 / 1440.0;
// The size the form is told it paints at: a printer's dots per inch.
constexpr double kPaintDotsPerInch = 300.0;

// An approximate text width in inches, for centring: Helvetica's mean
// advance is about half an em.
double TextWidth(const std::string& text, double points) { return 0.5 * points / 72.0 * static_cast<double>(text.size()); }

// Whether a check of the box is set; a check the kind does not have counts as set.
bool Checked(const ControlModel& controls, const char* name) {
  if (!name || !*name) return true;
  const Control* c = controls.Find(name);
  return !c || c->value != 0;
}

void PrintLabels(platform::Printer& printer, const Picture& p, const PaperBox& box, const ControlModel& controls,
                 const PrintBoxNames& names) {
  const double points = kLabelPoints, height = points / 72.0;
  if (Checked(controls, names.lowerCheck)) {
    for (std::size_t k = 0; k < 5; ++k) {
      const std::string& text = p.bottomLabels[k];
      if (text.empty()) continue;
      const double x = box.left + (box.right - box.left) * static_cast<double>(k) / 4.0;
      printer.Text(x - TextWidth(text, points) / 2.0, box.bottom + kLargeOffset + height, text);
    }
  }
  if (Checked(controls, names.rightCheck)) {
    for (std::size_t k = 0; k < 5; ++k) {
      const std::string& text = p.leftLabels[k];
      if (text.empty()) continue;
      const double y = box.top + (box.bottom - box.top) * static_cast<double>(k) / 4.0;
      printer.Text(box.right + kLargeOffset, y + height / 2.0 - kSmallOffset, text);
    }
  }
}

std::string CaptionOf(const Form& form, const Picture& p) {
  if (!p.caption.empty()) return p.caption;
  const Control* caption = form.controls().Find("GraphCaption");
  if (caption && !caption->text.empty()) return caption->text;
  return form.Caption();
}

}  // namespace

PrintWindow WindowOf(const Form& form, int picture) {
  const std::vector<Picture> pictures = form.Pictures();
  if (picture < 0 || picture >= static_cast<int>(pictures.size())) return {0.0, 0.0, 0.0, 0.0};
  const platform::UserScale& s = pictures[static_cast<std::size_t>(picture)].scale;
  return {s.left, s.right, s.bottom, s.top};
}

bool PrintTheGraph(Form& form, int picture, const PrintBoxNames& names) {
  FormContext& context = form.context();
  ControlModel& controls = form.controls();
  platform::Printer& printer = *context.services().printer;
  const std::vector<Picture> pictures = form.Pictures();
  if (picture < 0 || picture >= static_cast<int>(pictures.size())) {
    context.ShowError(34);
    return false;
  }
  const PrintWindow window = WindowOf(form, picture);
  const platform::PageSize page = printer.Page();
  // SetPrinterScale.
  const auto rectangle = SetPrinterScale(controls.Text(names.position), window, page.width / page.height);
  if (!rectangle) {
    context.ShowError(24);
    return false;
  }
  const PaperColour mode = Checked(controls, names.colourOption) ? PaperColour::Colour : PaperColour::Monochrome;
  if (mode == PaperColour::Colour && !printer.SupportsColour()) {
    context.ShowError(40);
    return false;
  }
  controls.SetText("LabPrinting", "Printing...");
  if (!printer.IsOpen() && !printer.Begin("KELDO")) {
    controls.SetText("LabPrinting", "");
    context.ShowError(34);
    return false;
  }
  const Picture& p = pictures[static_cast<std::size_t>(picture)];
  const PagePlace place = PlaceOnPage(*rectangle, window);
  const PaperBox box{place.left * page.width, place.top * page.height, place.right * page.width,
                     place.bottom * page.height};
  // PrintAxes and PrintAllGraphs: the form draws its picture on the page.
  PrinterTarget target(printer);
  PaperSurface surface(target, box, static_cast<int>((box.right - box.left) * kPaintDotsPerInch),
                       static_cast<int>((box.bottom - box.top) * kPaintDotsPerInch), mode,
                       GridDotStepsOf(rectangle->size));
  form.Paint(picture, surface);
  if (Checked(controls, names.captionCheck)) {
    printer.SetFont(kFontFamily, kCaptionPoints);
    const std::string caption = CaptionOf(form, p);
    const double y = box.bottom + kLargeOffset + 2.6 * kLabelPoints / 72.0 + kCaptionPoints / 72.0;
    printer.Text((box.left + box.right) / 2.0 - TextWidth(caption, kCaptionPoints) / 2.0, y, caption);
  }
  printer.SetFont(kFontFamily, kLabelPoints);
  PrintLabels(printer, p, box, controls, names);
  controls.SetText("LabPrinting", "");
  return true;
}

void EjectThePaper(FormContext& context) {
  platform::Printer& printer = *context.services().printer;
  if (printer.IsOpen()) printer.End();
}

void PressPrintButton(Form& form, int picture, int index, const PrintBoxNames& names) {
  switch (static_cast<PrintButton>(index)) {
    case PrintButton::Print:
      PrintTheGraph(form, picture, names);
      break;
    case PrintButton::PrintAndEject:
      if (PrintTheGraph(form, picture, names)) EjectThePaper(form.context());
      break;
    case PrintButton::Eject:
      EjectThePaper(form.context());
      break;
    case PrintButton::SaveToFile:
      SaveThePrintedGraphToFile(form, picture);
      break;
  }
  form.Touch();
}

}  // namespace keldo::print
