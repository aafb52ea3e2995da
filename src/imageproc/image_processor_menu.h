#pragma once
#include <span>
#include "kit/menu_table.h"
namespace keldo::imageproc {
// The menu bar of the image processor.
std::span<const MenuRow> ImageProcessorMenuBar();
}  // namespace keldo::imageproc
