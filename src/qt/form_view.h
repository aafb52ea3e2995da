#pragma once
// The window of one child form: its pictures, the side box and the rows the
// form's layout table declares, bound to the form's controls. It draws the
// form's state and turns input into the form's commands; it computes nothing
// itself and knows no kind of form.

#include <QWidget>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "kit/form.h"

class QGroupBox;
class QVBoxLayout;

namespace keldo::qt {

class PanelBuilder;
class PlotWidget;

class FormView final : public QWidget {
  Q_OBJECT
 public:
  FormView(Form& form, QWidget* parent = nullptr);
  ~FormView() override;
  Form& form() { return form_; }
  // Re-reads the form's state when its revision moved.
  void Sync();
  // On activation: the form's focus field takes the focus while its button
  // is enabled (the formula box while plotting is open).
  void FocusFormulaIfPlotting();
  QSize sizeHint() const override { return {860, 560}; }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void BuildSideBox(QWidget* parent, QVBoxLayout* column);
  // Presses a named button of the form if it is enabled.
  void Press(const std::string& name);
  void PressGo();

  Form& form_;
  std::unique_ptr<PanelBuilder> builder_;
  PlotWidget* plot_ = nullptr;
  QGroupBox* side_ = nullptr;
  std::vector<std::pair<int, QWidget*>> panels_;
  unsigned long long shown_ = ~0ull;
  // The form's focus requests already carried out (kit/focus.h).
  int focusSeen_ = 0;
};

}  // namespace keldo::qt
