#pragma once
// The "Print Graph" box that every form with a graph shares: the position
// list PrinterSpecs, the label checks chkPrLab, colour or monochrome
// (MonoOrColor), the buttons cmdPrnt(0..3) and the status LabPrinting; and
// the commands behind them. A form adds the controls and the panel, and
// sends its cmdPrnt presses here with the picture to print; the picture is
// drawn by the form's own Paint onto the page, so one layout serves every
// kind of form.

#include <string>
#include <vector>

#include "kit/controls.h"
#include "kit/layout.h"
#include "print/print_positions.h"

namespace keldo {
class Form;
class FormContext;
}  // namespace keldo

namespace keldo::print {

// The box key a form file keeps for the box.
inline constexpr const char* kPrintGraphKey = "PrGr";
inline constexpr const char* kPrintGraphTopic = "Print graph";

// The names a kind gives the box's controls. An empty name leaves that
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

// Adds the box's controls; the position list starts at "(A), Medium, top,
// left" and every label check is set.
void AddPrintGraphControls(ControlModel& controls, const PrintBoxNames& names = kGraphPrintBox);
// The panel of the box; `extra` goes under the heading (a graph number field).
LayoutNode PrintGraphPanel(const PrintBoxNames& names = kGraphPrintBox, std::vector<LayoutNode> extra = {});

// What the buttons of the box do, by index: 0 Print, 1 Print and Eject,
// 2 Eject, 3 Save Printout to File.
enum class PrintButton { Print = 0, PrintAndEject = 1, Eject = 2, SaveToFile = 3 };

// A press of cmdPrnt(index) on a form's box, for picture `picture`.
void PressPrintButton(Form& form, int picture, int index, const PrintBoxNames& names = kGraphPrintBox);

// Prints the picture at the box's position onto the open page, opening a
// document first if none is open; reports 24 for a position the scale
// routine does not know, 34 when the printer cannot start. False after a
// report; nothing is printed then.
bool PrintTheGraph(Form& form, int picture, const PrintBoxNames& names = kGraphPrintBox);
// Ends the printer's document, so that the sheet comes out. Nothing happens
// when no document is open.
void EjectThePaper(FormContext& context);

// The window a picture shows, from its scale.
PrintWindow WindowOf(const Form& form, int picture);

}  // namespace keldo::print
