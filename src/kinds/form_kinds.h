#pragma once
// The table of the kinds of form, one row each, and its installation in the
// frame.

#include <span>

#include "kit/form_kind.h"

namespace keldo {
class Frame;
// Every kind: its words, files, New item and maker.
std::span<const FormKindInfo> FormKinds();
// Gives the frame the table.
void InstallFormKinds(Frame& frame);
}  // namespace keldo
