#include "qt/main_window.h"

#include <QApplication>
#include <QCloseEvent>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QStatusBar>
#include <utility>

#include "qt/form_view.h"
#include "qt/menu_builder.h"
#include "qt/qt_surface.h"
#include "qt/session_recorder.h"

namespace keldo::qt {
namespace {

// Closing a form's window asks the form; a refused close keeps it open.
class FormSubWindow final : public QMdiSubWindow {
 public:
  FormSubWindow(Frame& frame, Form& form) : frame_(frame), form_(&form) {}
  void Detach() { form_ = nullptr; }

 protected:
  void closeEvent(QCloseEvent* event) override {
    if (!form_) {
      event->accept();
      return;
    }
    Form* form = form_;
    // The title bar's close button does what the form's Close item does: the
    // File menu's mnuClose, or mnuCloseForm on the audio editor, whose
    // mnuClose clears it.
    const ControlModel& controls = std::as_const(*form).controls();
    const RecordedAction recorded(form, controls.Has("mnuCloseForm") ? "menu mnuCloseForm"
                                        : controls.Has("mnuClose")   ? "menu mnuClose"
                                                                     : "# a window closed by its title bar");
    if (frame_.CloseForm(*form)) {
      frame_.CollectClosedForms();
      event->accept();
    } else {
      event->ignore();
    }
  }

 private:
  Frame& frame_;
  Form* form_;
};

}  // namespace

MainWindow::MainWindow(Frame& frame, QWidget* parent) : QMainWindow(parent), frame_(frame), area_(new QMdiArea(this)) {
  setWindowTitle(QStringLiteral("KELDO"));
  setCentralWidget(area_);
  area_->setBackground(QColor(0x70, 0x80, 0x90));
  resize(1100, 780);
  statusBar()->showMessage(tr("Ready"));
  connect(area_, &QMdiArea::subWindowActivated, this, &MainWindow::SubWindowActivated);
  frame_.SetListener(this);
  // A printed form is its window as it stands on the screen, frame and
  // caption included.
  frame_.SetWindowCapturer([this](Form& form) {
    const auto it = windows_.find(&form);
    if (it == windows_.end() || !it->second) return platform::RgbImage{};
    return FromQImage(it->second->grab().toImage());
  });
  RebuildMenus();
}

MainWindow::~MainWindow() {
  // The area closes its windows while it is destroyed and would report the
  // activations to this half-destroyed window.
  disconnect(area_, nullptr, this, nullptr);
  frame_.SetListener(nullptr);
  frame_.SetWindowCapturer(nullptr);
}

FormView* MainWindow::ViewOf(Form& form) const {
  const auto it = windows_.find(&form);
  if (it == windows_.end() || !it->second) return nullptr;
  return qobject_cast<FormView*>(it->second->widget());
}

void MainWindow::FormCreated(Form& form) {
  auto* view = new FormView(form);
  auto* sub = new FormSubWindow(frame_, form);
  sub->setWidget(view);
  sub->setAttribute(Qt::WA_DeleteOnClose);
  area_->addSubWindow(sub);
  windows_[&form] = sub;
  sub->resize(view->sizeHint());
  sub->move(form.left, form.top);
  if (form.maximized)
    sub->showMaximized();
  else
    sub->show();
  area_->setActiveSubWindow(sub);
  RebuildMenus();
}

void MainWindow::FormClosed(Form& form) {
  const auto it = windows_.find(&form);
  if (it == windows_.end()) return;
  QPointer<QMdiSubWindow> sub = it->second;
  windows_.erase(it);
  if (menuOwner_ == &form) menuOwner_ = nullptr;
  if (sub) {
    static_cast<FormSubWindow*>(sub.data())->Detach();
    if (!closingForm_) sub->close();
  }
}

void MainWindow::CurrentFormChanged(Form* form) {
  if (form) {
    const auto it = windows_.find(form);
    if (it != windows_.end() && it->second && area_->activeSubWindow() != it->second)
      area_->setActiveSubWindow(it->second);
  }
  RebuildMenus();
}

void MainWindow::SubWindowActivated(QMdiSubWindow* window) {
  if (!window) {
    if (area_->subWindowList().isEmpty()) frame_.SetCurrent(nullptr);
    RebuildMenus();
    return;
  }
  for (const auto& [form, sub] : windows_) {
    if (sub == window) {
      frame_.SetCurrent(form);
      form->Activated();
      if (FormView* view = ViewOf(*form)) view->FocusFormulaIfPlotting();
      break;
    }
  }
  RebuildMenus();
}

void MainWindow::RebuildMenus() {
  Form* owner = frame_.Current();
  if (menuBuilt_ && owner == menuOwner_) return;
  menuOwner_ = owner;
  menuBuilt_ = true;
  QMenuBar* bar = menuBar();
  bar->clear();
  ControlModel* model = owner ? &owner->controls() : &frame_.controls();
  const std::vector<MenuNode>& nodes = owner ? owner->MenuBar() : frame_.MenuBar();
  for (const MenuNode& title : nodes) {
    const Control* c = model->Find(title.name);
    QMenu* menu = bar->addMenu(QString::fromStdString(c ? c->text : title.name));
    menu->menuAction()->setData(QString::fromStdString(title.name));
    FillMenu(menu, title.children, model, [this, owner](const std::string& name) { RunMenu(owner, name); });
  }
}

void MainWindow::RunMenu(Form* form, const std::string& name) {
  // The form may have closed since the menu was built.
  const auto open = frame_.OpenForms();
  if (form && std::find(open.begin(), open.end(), form) == open.end()) return;
  const RecordedAction recorded(form, "menu " + name);
  if (form) {
    std::string base;
    int index = -1;
    SplitIndexedName(name, base, index);
    form->RunMenu(base, index);
  } else {
    frame_.RunMenu(name);
  }
  frame_.CollectClosedForms();
  SyncViews();
  if (frame_.ExitRequested()) QApplication::quit();
}

void MainWindow::SyncViews() {
  for (const auto& [form, sub] : windows_)
    if (sub)
      if (auto* view = qobject_cast<FormView*>(sub->widget())) view->Sync();
}

void MainWindow::closeEvent(QCloseEvent* event) { event->accept(); }

}  // namespace keldo::qt
