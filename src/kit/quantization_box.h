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

// What the thresholds of set k mean as the box stands: the bits per sample
// when quantizing, the fractions of the largest magnitude otherwise, or a
// hint when the text is too short to read.
std::string ThresholdToolTip(ControlModel& controls, int k);
// Keeps the tool tips of the threshold fields current after a control of
// the box changed: choosing a method shows its hint, a threshold text or a
// tick its meaning. False when `name` is not a control of the box.
bool QuantizationControlChanged(ControlModel& controls, const std::string& name);

}  // namespace keldo
