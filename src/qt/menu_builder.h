#pragma once
// Builds Qt menus from a form's menu model. Captions, enabled, visible and
// ticked states are read from the control model each time a menu opens.

#include <QMenu>
#include <functional>
#include <vector>

#include "kit/controls.h"

namespace keldo::qt {

using MenuCallback = std::function<void(const std::string& controlName)>;

void FillMenu(QMenu* menu, const std::vector<MenuNode>& nodes, ControlModel* model, const MenuCallback& run);
// Brings an action's caption and flags up to date with its control.
void SyncAction(QAction* action, const ControlModel& model);

}  // namespace keldo::qt
