#pragma once
// The form print dialog PrnForm, as a panel of the form it prints: the
// caption to print under the picture (txtFormCaption), the corner of the
// picture on the page in inches (TopCorner, LeftCorner), the destination
// (OpPrinter, OpClipboard, OpFile) and the buttons cmdPrint,
// cmdPrintAndEject, cmdEject and cmdCancel. The button pressed leaves its
// result word in the frame's LabPrintForm: "C" cancel, "P" print, "PE"
// print and eject, "Clipboard", "File".

#include <functional>
#include <string>

#include "kit/controls.h"
#include "kit/layout.h"
#include "platform/image.h"

namespace keldo {
class Form;
}

namespace keldo::print {

// Reads a numeric field as every field of the form is read; sets failed
// when the text is not a number.
using ValueReader = std::function<double(const std::string& text, bool& failed)>;

void AddPrintFormControls(ControlModel& controls);
LayoutNode PrintFormPanel();
// Fills the dialog as it opens: the form's caption, and the corners kept.
void OpenPrintForm(Form& form);

// The buttons of the dialog by name; false when `name` is none of them.
// After any of them the caller closes the panel.
bool PressPrintFormButton(Form& form, const std::string& name, const ValueReader& readValue);

// PrintTheForm: the destination word of LabPrintForm ("P", "PE",
// "Clipboard", "File"; "C" does nothing). Reports 32 when the picture file
// cannot be saved and 33 when the form cannot be printed.
void PrintTheForm(Form& form, const std::string& destination, const ValueReader& readValue);

// The form as a picture: its pictures drawn as the window draws them, in
// their cells.
platform::RgbImage CaptureForm(Form& form);

}  // namespace keldo::print
