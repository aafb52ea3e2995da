#pragma once
// Menus are written as flat tables: one row per item with its depth, control
// name and caption. BuildMenu turns a table into a menu tree and adds a Menu
// control per item.

#include <algorithm>
#include <array>
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

// One table from several, in order, so that rows several kinds share are
// written once.
template <std::size_t... N>
constexpr auto JoinRows(const std::array<MenuRow, N>&... parts) {
  std::array<MenuRow, (N + ...)> out{};
  std::size_t k = 0;
  ((std::copy(parts.begin(), parts.end(), out.begin() + static_cast<std::ptrdiff_t>(k)), k += N), ...);
  return out;
}

// The File menu's items that make a new form of each kind, in the order of
// the index the handlers read.
inline constexpr std::array<MenuRow, 4> kNewFormRows{{{1, "mnuNew(0)", "New &1 Dim"},
                                                      {1, "mnuNew(1)", "New &2 Dim"},
                                                      {1, "mnuNew(2)", "New &Audio editor"},
                                                      {1, "mnuNew(3)", "New Image processor"}}};
// The View menu's window arrangement.
inline constexpr std::array<MenuRow, 4> kArrangeWindowRows{{{1, "mnuArrangeWindows", "&Arrange windows"},
                                                            {2, "mnuCascade", "&Cascade"},
                                                            {2, "mnuTile", "&Tile"},
                                                            {2, "mnuArrange", "&Arrange"}}};

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
