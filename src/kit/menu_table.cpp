#include "kit/menu_table.h"

#include <stdexcept>

namespace keldo {

std::vector<MenuNode> BuildMenu(std::span<const MenuRow> rows, ControlModel& controls) {
  std::vector<MenuNode> bar;
  // path[d] is the node at depth d that the next deeper row goes under.
  std::vector<MenuNode*> path;
  for (const MenuRow& row : rows) {
    if (row.depth < 0 || static_cast<std::size_t>(row.depth) > path.size())
      throw std::logic_error("menu table skips a level");
    path.resize(static_cast<std::size_t>(row.depth));
    std::vector<MenuNode>& siblings = row.depth == 0 ? bar : path.back()->children;
    const std::string name = std::string(row.name) == "-" ? std::string() : row.name;
    siblings.push_back(MenuNode{name, {}});
    if (!name.empty()) controls.Add(name, ControlKind::Menu, row.caption);
    path.push_back(&siblings.back());
  }
  return bar;
}

}  // namespace keldo
