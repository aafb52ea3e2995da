#pragma once
// Menus are written as flat tables: one row per item with its depth, control
// name and caption. BuildMenu turns a table into a menu tree and adds a Menu
// control per item.

#include <span>
#include <string>
#include <vector>

#include "kit/controls.h"

namespace keldo {

struct MenuRow {
  int depth;            // 0 for a title on the menu bar
  const char* name;     // control name, "-" for a separator
  const char* caption;  // exact caption, "&" before the access key
};

std::vector<MenuNode> BuildMenu(std::span<const MenuRow> rows, ControlModel& controls);

// Calls fn(name) for every item under the given nodes, depth first.
template <typename Fn>
void ForEachMenuItem(const std::vector<MenuNode>& nodes, Fn&& fn) {
  for (const MenuNode& n : nodes) {
    if (n.IsSeparator()) continue;
    fn(n.name);
    ForEachMenuItem(n.children, fn);
  }
}

}  // namespace keldo
