#pragma once
#include <span>
#include "kit/menu_table.h"
namespace keldo::workshop {
// The menu bar of the image compression workshop.
std::span<const MenuRow> WorkshopMenuBar();
}  // namespace keldo::workshop
