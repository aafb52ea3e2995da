#pragma once
// The window of one child form: it draws the form's state and turns input
// into the form's commands. It computes nothing itself.

#include <QWidget>

#include <map>
#include <string>

#include "app/form.h"

class QCheckBox;
class QGroupBox;
class QHBoxLayout;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;

namespace keldo::qt {

class PlotWidget;

class FormView final : public QWidget {
  Q_OBJECT
 public:
  FormView(Form& form, QWidget* parent = nullptr);
  Form& form() { return form_; }
  // Re-reads the form's state when its revision moved.
  void Sync();
  QSize sizeHint() const override { return {760, 520}; }

 signals:
  void MenuRequested(const QString& controlName);

 private:
  void BuildSideBox(QHBoxLayout* columns);
  // Presses a named button of the form if it is enabled.
  void Press(const std::string& name);

  Form& form_;
  PlotWidget* plot_ = nullptr;
  QLineEdit* formula_ = nullptr;
  QGroupBox* side_ = nullptr;
  QLabel* caption_ = nullptr;
  QPushButton* go_ = nullptr;
  std::map<std::string, QLineEdit*> texts_;
  std::map<std::string, QRadioButton*> options_;
  std::map<std::string, QCheckBox*> checks_;
  std::map<std::string, QPushButton*> buttons_;
  unsigned long long shown_ = ~0ull;
};

}  // namespace keldo::qt
