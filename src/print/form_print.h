#pragma once
// The commands of the form print dialog PrnForm (its controls and panel are
// the kit's). The button pressed leaves its result word in the frame's
// LabPrintForm: "C" cancel, "P" print, "PE" print and eject, "Clipboard",
// "File".

#include <string>

#include "kit/print_box.h"
#include "platform/image.h"

namespace keldo {
class Form;
}

namespace keldo::print {

// The buttons of the dialog by name; false when `name` is none of them.
// After any of them the caller closes the panel.
bool PressPrintFormButton(Form& form, const std::string& name, const ValueReader& readValue);

// PrintTheForm: the destination word of LabPrintForm ("P", "PE",
// "Clipboard", "File"; "C" does nothing). Reports 32 when the picture file
// cannot be saved and 33 when the form cannot be printed.
void PrintTheForm(Form& form, const std::string& destination, const ValueReader& readValue);

// The form as a picture: its window as the front end draws it, or, where
// there is no window to draw, its pictures as the window draws them, in
// their cells.
platform::RgbImage CaptureForm(Form& form);

}  // namespace keldo::print
