#pragma once
// The quantization parameters of the threshold series, shown in a side box
// in place of a dialog: set 0 for the uniform threshold, set 1 for the
// multiple thresholds, kept by a form as three strings of "|"-ended fields
// (the one in use, the uniform memory, the multiple memory).

#include <array>
#include <string>
#include <vector>

#include "kit/controls.h"
#include "kit/layout.h"

namespace keldo {

using QuantStrings = std::array<std::string, 3>;

// The initial strings of a form.
QuantStrings DefaultQuantStrings();
// The fields of one string, split at "|", at least six.
std::vector<std::string> QuantFields(const std::string& text);

void AddQuantizationControls(ControlModel& controls);
// Fills the box from a form's strings.
void FillQuantizationControls(ControlModel& controls, const QuantStrings& strings);
// The strings the box describes.
QuantStrings QuantizationStrings(ControlModel& controls);
// The panel of the box.
LayoutNode QuantizationPanel();

}  // namespace keldo
