#include "qt/menu_builder.h"

namespace keldo::qt {

void SyncAction(QAction* action, const ControlModel& model) {
  const std::string name = action->data().toString().toStdString();
  const Control* c = model.Find(name);
  if (!c) return;
  action->setText(QString::fromStdString(c->text));
  action->setEnabled(c->enabled);
  action->setVisible(c->visible);
  if (action->isCheckable()) action->setChecked(c->value != 0);
}

void FillMenu(QMenu* menu, const std::vector<MenuNode>& nodes, ControlModel* model, const MenuCallback& run) {
  for (const MenuNode& node : nodes) {
    if (node.IsSeparator()) {
      menu->addSeparator();
      continue;
    }
    const Control* c = model->Find(node.name);
    const QString caption = c ? QString::fromStdString(c->text) : QString();
    if (!node.children.empty()) {
      QMenu* sub = menu->addMenu(caption);
      sub->menuAction()->setData(QString::fromStdString(node.name));
      FillMenu(sub, node.children, model, run);
      continue;
    }
    QAction* action = menu->addAction(caption);
    action->setData(QString::fromStdString(node.name));
    action->setCheckable(c && c->value != 0);
    const std::string name = node.name;
    QObject::connect(action, &QAction::triggered, menu, [run, name] { run(name); });
  }
  QObject::connect(menu, &QMenu::aboutToShow, menu, [menu, model] {
    for (QAction* a : menu->actions())
      if (!a->isSeparator()) SyncAction(a, *model);
  });
}

}  // namespace keldo::qt
