#pragma once
#include <span>
#include "kit/menu_table.h"
namespace keldo::form2d {
// The menu bar of the two-dimensional form, with its exact captions.
std::span<const MenuRow> Graph2MenuBar();
// The pop-up menu of a picture.
std::span<const MenuRow> Graph2PopupMenu();
}  // namespace keldo::form2d
