#pragma once
// The frame's window: a multiple-document area holding the forms. The menu
// bar shows the frame's menu when no form is active, else the active form's.

#include <QMainWindow>
#include <QPointer>
#include <map>

#include "app/frame.h"

class QMdiArea;
class QMdiSubWindow;

namespace keldo::qt {

class FormView;

class MainWindow final : public QMainWindow, public FrameListener {
  Q_OBJECT
 public:
  explicit MainWindow(Frame& frame, QWidget* parent = nullptr);
  ~MainWindow() override;

  void FormCreated(Form& form) override;
  void FormClosed(Form& form) override;
  void CurrentFormChanged(Form* form) override;

  QMdiArea* Area() const { return area_; }
  FormView* ViewOf(Form& form) const;
  // Rebuilds the menu bar for the active form (or the frame).
  void RebuildMenus();

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  void RunMenu(Form* form, const std::string& name);
  void SubWindowActivated(QMdiSubWindow* window);
  void SyncViews();

  Frame& frame_;
  QMdiArea* area_;
  std::map<Form*, QPointer<QMdiSubWindow>> windows_;
  Form* menuOwner_ = nullptr;
  bool menuBuilt_ = false;
  bool closingForm_ = false;
};

}  // namespace keldo::qt
