#include "qt/form_view.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QTimer>
#include <QVBoxLayout>
#include <utility>

#include "kit/focus.h"
#include "qt/panel_builder.h"
#include "qt/plot_widget.h"
#include "qt/session_recorder.h"

namespace keldo::qt {
namespace {

QString Q(const std::string& s) { return QString::fromStdString(s); }

}  // namespace

FormView::FormView(Form& form, QWidget* parent)
    : QWidget(parent), form_(form), focusSeen_(FocusRequests(std::as_const(form).controls())) {
  builder_ = std::make_unique<PanelBuilder>(
      form_, PanelBuilder::Actions{[this](const std::string& name) { Press(name); }, [this] { PressGo(); },
                                   [this] { Sync(); }, this});
  const FormLayout& layout = form_.Layout();
  // The pictures and the side box side by side; the caption under the
  // pictures; the bottom row across the whole width.
  auto* grid = new QGridLayout(this);
  grid->setContentsMargins(4, 4, 4, 4);
  grid->setColumnStretch(0, 1);
  grid->setRowStretch(0, 1);
  plot_ = new PlotWidget(form_, [this] { Sync(); }, this);
  grid->addWidget(plot_, 0, 0);
  if (!layout.captionControl.empty() && form_.controls().Has(layout.captionControl)) {
    QLabel* caption = builder_->BindLabel(this, layout.captionControl);
    caption->setMinimumHeight(18);
    grid->addWidget(caption, 1, 0);
  }
  if (!layout.sideBox.empty()) {
    auto* sideColumn = new QVBoxLayout;
    BuildSideBox(this, sideColumn);
    grid->addLayout(sideColumn, 0, 1, 2, 1);
  }
  if (!layout.bottom.children.empty()) {
    auto* bottom = new QVBoxLayout;
    bottom->addLayout(builder_->MakeLayout(layout.bottom, this));
    grid->addLayout(bottom, 2, 0, 1, 2);
  }
  // A form without pictures (the workshop) gives their room to its bottom
  // row, its report.
  if (form_.Pictures().empty()) {
    plot_->hide();
    grid->setRowStretch(0, 0);
    grid->setRowStretch(2, 1);
  }
  setWindowTitle(Q(form_.Caption()));
  // A plot changes the form between menu commands: show it as it grows.
  auto* timer = new QTimer(this);
  connect(timer, &QTimer::timeout, this, &FormView::Sync);
  timer->start(40);
  Sync();
}

FormView::~FormView() = default;

void FormView::BuildSideBox(QWidget* parent, QVBoxLayout* column) {
  side_ = new QGroupBox(parent);
  side_->setMinimumWidth(220);
  side_->setMaximumWidth(330);
  auto* box = new QVBoxLayout(side_);
  column->addWidget(side_);
  column->addStretch(1);
  for (const PanelLayout& panel : form_.Layout().sideBox) {
    auto* widget = new QWidget(side_);
    builder_->Build(panel.body, widget);
    panels_.emplace_back(panel.number, widget);
    box->addWidget(widget);
  }
  box->addStretch(1);
}

bool FormView::eventFilter(QObject* watched, QEvent* event) {
  QWidget* formula = builder_->FormulaBox();
  const bool f1 = event->type() == QEvent::KeyPress && static_cast<QKeyEvent*>(event)->key() == Qt::Key_F1;
  if (auto* field = qobject_cast<QLineEdit*>(watched); field && field != formula) {
    if (f1 || event->type() == QEvent::MouseButtonPress) {
      const bool helped = form_.FieldHelp(field->objectName().toStdString());
      if (f1 && helped) return true;
    }
  }
  if (watched == formula && f1) {
    auto* box = static_cast<QLineEdit*>(formula);
    form_.FormulaHelp(box->selectedText().toStdString());
    box->setFocus();
    return true;
  }
  return QWidget::eventFilter(watched, event);
}

void FormView::FocusFormulaIfPlotting() {
  const FormLayout& layout = form_.Layout();
  if (layout.focusField.empty()) return;
  const Control* button = std::as_const(form_).controls().Find(layout.focusWhileEnabled);
  QWidget* field = builder_->WidgetOf(layout.focusField);
  if (field && button && button->enabled) field->setFocus();
}

void FormView::Press(const std::string& name) {
  const Control* c = std::as_const(form_).controls().Find(name);
  if (!c || !c->enabled) return;
  const RecordedAction recorded(&form_, "click " + name);
  form_.Click(name);
  Sync();
}

void FormView::PressGo() {
  const RecordedAction recorded(&form_, "go");
  form_.Go();
  Sync();
}

void FormView::Sync() {
  if (shown_ == form_.Revision()) return;
  shown_ = form_.Revision();
  setWindowTitle(Q(form_.Caption()));
  const ControlModel& model = form_.controls();
  builder_->Show(model);
  // A new focus request: the box it names takes the keyboard, its text
  // selected for typing over.
  if (const int requests = FocusRequests(model); requests != focusSeen_) {
    focusSeen_ = requests;
    if (QWidget* widget = builder_->WidgetOf(FocusRequested(model))) {
      widget->setFocus(Qt::OtherFocusReason);
      if (auto* line = qobject_cast<QLineEdit*>(widget)) line->selectAll();
    }
  }
  if (side_) {
    bool open = false;
    for (auto& [number, panel] : panels_) {
      const Control* c = model.Find(IndexedName("PicSideBox", number));
      const bool shown = c && c->visible;
      panel->setVisible(shown);
      open = open || shown;
    }
    const FormLayout& layout = form_.Layout();
    const std::string title = model.Has(layout.titleControl) ? model.Text(layout.titleControl) : "";
    side_->setTitle(Q(title.size() > layout.titleSkip ? title.substr(layout.titleSkip) : title));
    side_->setVisible(open);
  }
  plot_->update();
}

}  // namespace keldo::qt
