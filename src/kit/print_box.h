#pragma once
// Printing as the forms see it. The "Print Graph" box and the form print
// dialog PrnForm are controls and panels of the form that prints, like any
// side box of the kit; the commands behind their buttons (the print layout,
// the page, the saved graph pictures) belong to the print library below the
// forms, which the composition root installs here. A form reaches printing
// only through these calls.

#include <functional>
#include <string>
#include <vector>

#include "kit/controls.h"
#include "kit/layout.h"

namespace keldo {

class Form;

// The box key a form file keeps for the Print Graph box, and its topic.
inline constexpr const char* kPrintGraphKey = "PrGr";
inline constexpr const char* kPrintGraphTopic = "Print graph";

// The names a kind gives the print box's controls. An empty name leaves that
// control out: no label check prints the labels always, no colour option
// prints in colour.
struct PrintBoxNames {
  const char* position;      // the position list
  const char* buttons;       // the four buttons, indexed 0..3
  const char* captionCheck;  // prints the caption
  const char* lowerCheck;    // prints the labels under the graph
  const char* rightCheck;    // prints the labels beside it
  const char* colourOption;  // chosen: colour; else monochrome (its group's other member)
  const char* monoOption;
};

// The one-dimensional form's box.
inline constexpr PrintBoxNames kGraphPrintBox{"PrinterSpecs", "cmdPrnt",         "chkPrLab(0)",
                                              "chkPrLab(1)",  "chkPrLab(2)",     "MonoOrColor(0)",
                                              "MonoOrColor(1)"};
// The two-dimensional form's box: the position list PrnParameters, one
// label check, the pictures in their colours.
inline constexpr PrintBoxNames kImagePrintBox{"PrnParameters", "cmdPrint", "ChkPrLabel", "", "", "", ""};

// The positions the print box offers, in the order of its list.
const std::vector<std::string>& PrinterPositionList();

// Adds the box's controls; the position list starts at "(A), Medium, top,
// left" and every label check is set.
void AddPrintGraphControls(ControlModel& controls, const PrintBoxNames& names = kGraphPrintBox);
// The panel of the box; `extra` goes first (a graph number field).
LayoutNode PrintGraphPanel(const PrintBoxNames& names = kGraphPrintBox, std::vector<LayoutNode> extra = {});

// The buttons of the box by index.
enum class PrintButton { Print = 0, PrintAndEject = 1, Eject = 2, SaveToFile = 3 };

// The form print dialog: the caption printed under the picture
// (txtFormCaption), the picture's corner in inches (TopCorner, LeftCorner),
// the destination (OpPrinter, OpClipboard, OpFile) and the buttons cmdPrint,
// cmdPrintAndEject, cmdEject and cmdCancel.
void AddPrintFormControls(ControlModel& controls);
LayoutNode PrintFormPanel();
// Fills the dialog as it opens: the form's caption when none is typed.
void OpenPrintForm(Form& form);

// Reads a numeric field as every field of the form is read; sets failed
// when the text is not a number.
using ValueReader = std::function<double(const std::string& text, bool& failed)>;

// The commands behind the boxes, from the print library.
class PrintCalls {
 public:
  virtual ~PrintCalls() = default;
  // A press of button `index` of a form's print box, for picture `picture`:
  // Print, Print and Eject, Eject, or Save Printout to File (which asks
  // for the path).
  virtual void PressPrintButton(Form& form, int picture, int index, const PrintBoxNames& names) = 0;
  // The picture as printed to a .bmp file and its "_labels.tex" file; false
  // after a message.
  virtual bool SavePrintGraphToFile(Form& form, int picture, const std::string& path, const std::string& title) = 0;
  // A button of the form print dialog by name; false when `name` is none
  // of them. The result word goes to the frame's LabPrintForm.
  virtual bool PressPrintFormButton(Form& form, const std::string& name, const ValueReader& readValue) = 0;
  // Prints the form to a destination word: "P", "PE", "Clipboard", "File".
  virtual void PrintTheForm(Form& form, const std::string& destination, const ValueReader& readValue) = 0;
};

// The installed print library; one that does nothing until one is installed.
PrintCalls& Printing();
// Installs the print library for every form; the calls must outlive them.
void InstallPrinting(PrintCalls& calls);

}  // namespace keldo
