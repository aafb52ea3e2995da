#pragma once
// Draws any panel of a layout table and binds each widget to the control of
// its name: typing, clicking and choosing update the model, and Show brings
// every widget back in line with it.

#include <QString>

#include <functional>
#include <string>
#include <vector>

#include "kit/form.h"

class QBoxLayout;
class QFormLayout;
class QGridLayout;
class QLabel;
class QLayout;
class QObject;
class QWidget;

namespace keldo::qt {

class PanelBuilder {
 public:
  struct Actions {
    std::function<void(const std::string&)> press;  // a button, if enabled
    std::function<void()> go;                       // Enter in a field
    std::function<void()> changed;                  // the model changed
    QObject* fieldFilter = nullptr;                 // sees F1 and presses on text fields
  };
  PanelBuilder(Form& form, Actions actions) : form_(form), actions_(std::move(actions)) {}

  // Lays out `node` on `owner`, which must not have a layout yet.
  void Build(const LayoutNode& node, QWidget* owner);
  // A layout for a container node, its widgets made with `owner` as parent.
  QLayout* MakeLayout(const LayoutNode& node, QWidget* owner);
  // A label that shows a label control.
  QLabel* BindLabel(QWidget* parent, const std::string& name, bool bold = false);
  // The text field, among those built, that takes help on formulas; or null.
  QWidget* FormulaBox() const { return formulaBox_; }
  // The widget of a control, or null when none was built.
  QWidget* WidgetOf(const std::string& name) const;
  // Brings every widget in line with the model.
  void Show(const ControlModel& model) const;

 private:
  struct Binding {
    std::string name;
    QWidget* widget;
    std::function<void(const Control&)> show;
  };
  // The widget of an Item or Field, chosen by the control's kind.
  QWidget* MakeWidget(const LayoutNode& node, QWidget* owner);
  QWidget* MakeBox(const LayoutNode& node, QWidget* owner);
  void AddToRows(QFormLayout* rows, const LayoutNode& child, QWidget* owner);
  void AddToBox(QBoxLayout* box, const LayoutNode& child, QWidget* owner, QWidget*& lastText);
  void Bind(const std::string& name, QWidget* widget, std::function<void(const Control&)> show);
  QString TipOf(const LayoutNode& node, const Control& c) const;

  Form& form_;
  Actions actions_;
  std::vector<Binding> bindings_;
  QWidget* formulaBox_ = nullptr;
};

}  // namespace keldo::qt
