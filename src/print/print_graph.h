#pragma once
// The commands of the "Print Graph" box that every form with a graph
// shares (its controls and panel are the kit's): the picture is drawn by
// the form's own Paint onto the page, so one layout serves every kind of
// form.

#include <string>

#include "kit/print_box.h"
#include "print/print_positions.h"

namespace keldo {
class Form;
class FormContext;
}  // namespace keldo

namespace keldo::print {

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
