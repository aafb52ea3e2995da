#pragma once
// Where the keyboard focus goes after a command: the box whose value a
// message refused, or a box a command filled in for the user to check. The
// request is a control of the form's own model, "ActiveControl", whose text
// names the control to focus and whose value counts the requests, so that a
// view that saw the last one moves the focus once for each new one. A form
// without any request has no such control.

#include <string>

#include "kit/controls.h"

namespace keldo {

inline constexpr const char* kActiveControl = "ActiveControl";

void RequestFocus(ControlModel& controls, const std::string& name);

// The control last asked for, empty for none.
const std::string& FocusRequested(const ControlModel& controls);
// How many requests there have been.
int FocusRequests(const ControlModel& controls);

}  // namespace keldo
