#pragma once
// The window of one child form: it draws the form's state and turns input
// into the form's commands. It computes nothing itself.

#include <QWidget>

#include <functional>
#include <string>
#include <vector>

#include "kit/form.h"

class QFormLayout;
class QGroupBox;
class QLabel;
class QLineEdit;
class QVBoxLayout;

namespace keldo::qt {

class PlotWidget;

class FormView final : public QWidget {
  Q_OBJECT
 public:
  FormView(Form& form, QWidget* parent = nullptr);
  Form& form() { return form_; }
  // Re-reads the form's state when its revision moved.
  void Sync();
  // On activation: the formula box takes the focus while plotting is open.
  void FocusFormulaIfPlotting();
  QSize sizeHint() const override { return {860, 560}; }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  // A widget that shows one control of the model.
  struct Binding {
    std::string name;
    QWidget* widget;
    std::function<void(const Control&)> show;
  };
  void BuildFormulaRow(QVBoxLayout* left);
  void BuildSideBox(QWidget* parent, QVBoxLayout* column);
  QWidget* Panel(int number);
  // A panel whose first row is the bold caption of a label control.
  QFormLayout* TitledPanel(int number, const std::string& titleControl, QWidget*& panel);
  // Widgets bound to controls by name: typing or clicking updates the model.
  QLineEdit* BindText(QWidget* parent, const std::string& name);
  QWidget* BindMultiLine(QWidget* parent, const std::string& name, bool readOnly);
  QLabel* BindLabel(QWidget* parent, const std::string& name);
  QWidget* BindOption(QWidget* parent, const std::string& name);
  QWidget* BindCheck(QWidget* parent, const std::string& name);
  QWidget* BindButton(QWidget* parent, const std::string& name);
  QWidget* BindList(QWidget* parent, const std::string& name);
  // A label that follows a label control, shown and hidden with it.
  QLabel* BindCaption(QWidget* parent, const std::string& name);
  void BuildFourierPanels();
  void BuildWaveletPanels();
  // Presses a named button of the form if it is enabled.
  void Press(const std::string& name);
  void PressGo();

  Form& form_;
  PlotWidget* plot_ = nullptr;
  QLineEdit* formula_ = nullptr;
  QGroupBox* side_ = nullptr;
  QLabel* caption_ = nullptr;
  std::vector<std::pair<int, QWidget*>> panels_;
  std::vector<Binding> bindings_;
  unsigned long long shown_ = ~0ull;
};

}  // namespace keldo::qt
