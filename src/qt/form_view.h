#pragma once
// The window of one child form: it draws the form's state and turns input
// into the form's commands. It computes nothing itself.

#include <QWidget>

#include "app/form.h"

class QLineEdit;

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
  Form& form_;
  PlotWidget* plot_ = nullptr;
  QLineEdit* formula_ = nullptr;
  unsigned long long shown_ = ~0ull;
};

}  // namespace keldo::qt
