#pragma once
// The menu bar and the context menu of the one-dimensional form.

#include <span>

#include "kit/menu_table.h"

namespace keldo::form1d {

std::span<const MenuRow> Graph1MenuBar();
std::span<const MenuRow> Graph1PopupMenu();

}  // namespace keldo::form1d
