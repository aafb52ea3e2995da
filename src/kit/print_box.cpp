#include "kit/print_box.h"

#include "kit/form.h"

namespace keldo {
namespace {

const char* const kButtonCaptions[4] = {"Print", "Print and Eject", "Eject", "Save Printout to File"};
const char* const kButtonTips[4] = {
    "Prints the graph and leaves the page in the printer, for more graphs on the same sheet.",
    "Prints the graph and ejects the page.", "Ejects the page.",
    "Saves the graph as printed to a .bmp file, with its axis labels in a TeX file."};

// Printing before a library is installed: nothing happens.
class NoPrinting final : public PrintCalls {
 public:
  void PressPrintButton(Form&, int, int, const PrintBoxNames&) override {}
  bool SavePrintGraphToFile(Form&, int, const std::string&, const std::string&) override { return false; }
  bool PressPrintFormButton(Form&, const std::string&, const ValueReader&) override { return false; }
  void PrintTheForm(Form&, const std::string&, const ValueReader&) override {}
};

PrintCalls*& Installed() {
  static NoPrinting none;
  static PrintCalls* calls = &none;
  return calls;
}

}  // namespace

const std::vector<std::string>& PrinterPositionList() {
  static const std::vector<std::string> kList = {
      "(A), Medium, top, left",    "(B), Medium, top, right",    "(a), Small, top, left",
      "(b), Small, top, right",    "(c), Small, center, left",   "(d), Small, center, right",
      "Small, top, center",        "(C), Medium, center, left",  "(D), Medium, center, right",
      "Medium, center, center",    "Large, center, center",      "(1) Large, top, center",
      "(2) Large, bottom, center", "1: Large, top, left",        "2: Large, top, right"};
  return kList;
}

void AddPrintGraphControls(ControlModel& controls, const PrintBoxNames& names) {
  Control& specs = controls.Add(names.position, ControlKind::List, PrinterPositionList().front());
  specs.items = PrinterPositionList();
  specs.value = 0;
  specs.tip = "Where the graph goes on the page, and its size.";
  if (*names.captionCheck)
    controls.Add(names.captionCheck, ControlKind::Check, *names.lowerCheck ? "Caption" : "Print marker label").value = 1;
  if (*names.lowerCheck) controls.Add(names.lowerCheck, ControlKind::Check, "Lower Labels").value = 1;
  if (*names.rightCheck) controls.Add(names.rightCheck, ControlKind::Check, "Right labels").value = 1;
  if (*names.colourOption) {
    controls.AddOption(names.colourOption, "Color", "MonoOrColor", true);
    controls.AddOption(names.monoOption, "Monochrome ", "MonoOrColor");
  }
  for (int k = 0; k < 4; ++k)
    controls.Add(IndexedName(names.buttons, k), ControlKind::Button, kButtonCaptions[k]).tip = kButtonTips[k];
  controls.Add("LabPrinting", ControlKind::Label, "");
}

LayoutNode PrintGraphPanel(const PrintBoxNames& names, std::vector<LayoutNode> extra) {
  using namespace layout;
  std::vector<LayoutNode> items;
  for (LayoutNode& node : extra) items.push_back(std::move(node));
  items.push_back(Item(names.position));
  std::vector<LayoutNode> checks;
  for (const char* name : {names.captionCheck, names.lowerCheck, names.rightCheck})
    if (*name) checks.push_back(Item(name));
  if (!checks.empty()) items.push_back(Group("Labels", Column(std::move(checks))));
  if (*names.colourOption) items.push_back(Group("Colors", Column({Item(names.colourOption), Item(names.monoOption)})));
  for (int k = 0; k < 4; ++k) items.push_back(Item(IndexedName(names.buttons, k)));
  items.push_back(Item("LabPrinting"));
  items.push_back(Stretch());
  return Column(std::move(items));
}

void AddPrintFormControls(ControlModel& controls) {
  controls.Add("txtFormCaption", ControlKind::Text, "").tip = "Printed under the picture of the form.";
  controls.Add("TopCorner", ControlKind::Text, "1").tip = "Inches from the top of the page.";
  controls.Add("LeftCorner", ControlKind::Text, "1").tip = "Inches from the left of the page.";
  controls.AddOption("OpPrinter", "Send to &Printer", "PrnFormDestination", true);
  controls.AddOption("OpClipboard", "Copy to &Clipboard", "PrnFormDestination");
  controls.AddOption("OpFile", "Save to &File", "PrnFormDestination");
  controls.Add("cmdPrint", ControlKind::Button, "Print").tip = "Prints the form and leaves the page in the printer.";
  controls.Add("cmdPrintAndEject", ControlKind::Button, "Print and Eject").tip = "Prints the form and ejects the page.";
  controls.Add("cmdEject", ControlKind::Button, "Eject").tip = "Ejects the page.";
  // A form whose quantization box has a Cancel button shares it.
  if (!controls.Has("cmdCancel")) controls.Add("cmdCancel", ControlKind::Button, "Cancel").tip = "Closes the box.";
}

LayoutNode PrintFormPanel() {
  using namespace layout;
  return Column({Rows({Field("Caption:", "txtFormCaption"), Field("Inches down:", "TopCorner"),
                       Field("Inches left:", "LeftCorner")}),
                 Group("Destination", Column({Item("OpPrinter"), Item("OpClipboard"), Item("OpFile")})),
                 Item("cmdPrint"), Item("cmdPrintAndEject"), Item("cmdEject"), Item("cmdCancel"), Stretch()});
}

void OpenPrintForm(Form& form) {
  ControlModel& c = form.controls();
  if (c.Text("txtFormCaption").empty()) c.SetText("txtFormCaption", form.Caption());
}

PrintCalls& Printing() { return *Installed(); }

void InstallPrinting(PrintCalls& calls) { Installed() = &calls; }

}  // namespace keldo
