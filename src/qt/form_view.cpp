#include "qt/form_view.h"

#include <QCheckBox>
#include <QContextMenuEvent>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPainter>
#include <QPushButton>
#include <QRadioButton>
#include <QTimer>
#include <QVBoxLayout>

#include <cmath>

#include "common/number_text.h"
#include "form1d/graph1_form.h"
#include "qt/menu_builder.h"

namespace keldo::qt {
namespace {

QString Q(const std::string& s) { return QString::fromStdString(s); }

QColor ToQColor(std::uint32_t rgb) { return QColor((rgb >> 16) & 255, (rgb >> 8) & 255, rgb & 255); }

// Colour entry 3 of the sixteen-colour table: the axes and graph paper.
const QColor kPaper(0, 128, 128);

}  // namespace

// The plot box: graph paper over the form's window, the stored graphs in
// their colours, the graph being computed, and the axis labels.
class PlotWidget final : public QWidget {
 public:
  explicit PlotWidget(Form& form, QWidget* parent) : QWidget(parent), form_(form) {
    setMinimumSize(320, 240);
    setAttribute(Qt::WA_OpaquePaintEvent);
  }

 protected:
  void paintEvent(QPaintEvent*) override {
    QPainter p(this);
    p.fillRect(rect(), palette().window());
    const QRect plot = rect().adjusted(56, 16, -16, -36);
    p.fillRect(plot, Qt::black);
    auto* graphs = dynamic_cast<form1d::Graph1Form*>(&form_);
    if (!graphs) {
      p.setPen(QColor(0xC0, 0xC0, 0xC0));
      p.drawText(plot, Qt::AlignCenter, Q(form_.Caption()));
      return;
    }
    const auto w = form_.Window();
    double left = w[0], right = w[1], bottom = w[2], top = w[3];
    if (!(right > left)) { left = -0.5; right = 0.5; }
    if (!(top > bottom)) { bottom = -1; top = 1; }
    const auto px = [&](double x) { return plot.left() + (x - left) / (right - left) * plot.width(); };
    const auto py = [&](double y) { return plot.bottom() - (y - bottom) / (top - bottom) * plot.height(); };

    // Graph paper: the edges, and dotted lines at the eighths.
    p.setPen(kPaper);
    p.drawRect(plot);
    for (int k = 1; k < 8; ++k) {
      const double gx = plot.left() + k * plot.width() / 8.0;
      const double gy = plot.top() + k * plot.height() / 8.0;
      for (int j = 0; j <= 128; ++j) {
        p.drawPoint(QPointF(gx, plot.top() + j * plot.height() / 128.0));
        p.drawPoint(QPointF(plot.left() + j * plot.width() / 128.0, gy));
      }
    }

    p.save();
    p.setClipRect(plot.adjusted(1, 1, -1, -1));
    p.setRenderHint(QPainter::Antialiasing, !graphs->DotsMode());
    const int n = graphs->Points();
    const auto drawGraph = [&](const double* v, int count, double a, double h, int colourIndex) {
      p.setPen(QPen(ToQColor(form1d::GraphColour(colourIndex)), 1.2));
      if (graphs->DotsMode()) {
        for (int i = 0; i < count; ++i) {
          const double y = v[i];
          if (y >= bottom && y <= top) p.drawPoint(QPointF(px(a + i * h), py(y)));
        }
        return;
      }
      for (int i = 0; i + 1 < count; ++i) {
        const double y1 = v[i], y2 = v[i + 1];
        if ((y1 > top && y2 > top) || (y1 < bottom && y2 < bottom)) continue;
        p.drawLine(QPointF(px(a + i * h), py(y1)), QPointF(px(a + (i + 1) * h), py(y2)));
      }
    };
    for (int g = 0; g < graphs->GraphCount(); ++g)
      drawGraph(graphs->GraphValues(g), n + 1, graphs->GraphLeft(g), graphs->GraphStep(g), g);
    const auto live = graphs->Live();
    if (live.values && live.count > 0) drawGraph(live.values, live.count, live.a, live.h, live.colourIndex);
    p.restore();

    p.setPen(palette().windowText().color());
    const auto label = [](double v) { return Q(FormatLabel(v)); };
    p.drawText(QRect(plot.left() - 30, plot.bottom() + 4, 60, 18), Qt::AlignCenter, label(left));
    p.drawText(QRect(plot.center().x() - 30, plot.bottom() + 4, 60, 18), Qt::AlignCenter, label((left + right) / 2));
    p.drawText(QRect(plot.right() - 30, plot.bottom() + 4, 60, 18), Qt::AlignCenter, label(right));
    p.drawText(QRect(0, plot.bottom() - 9, plot.left() - 4, 18), Qt::AlignRight | Qt::AlignVCenter, label(bottom));
    p.drawText(QRect(0, plot.center().y() - 9, plot.left() - 4, 18), Qt::AlignRight | Qt::AlignVCenter,
               label((bottom + top) / 2));
    p.drawText(QRect(0, plot.top() - 9, plot.left() - 4, 18), Qt::AlignRight | Qt::AlignVCenter, label(top));
  }

  void contextMenuEvent(QContextMenuEvent* event) override {
    if (form_.PopupMenu().empty()) return;
    QMenu menu(this);
    FillMenu(&menu, form_.PopupMenu().front().children, &form_.controls(), [this](const std::string& name) {
      std::string base;
      int index = -1;
      SplitIndexedName(name, base, index);
      form_.RunMenu(base, index);
      if (auto* view = qobject_cast<FormView*>(parentWidget())) view->Sync();
    });
    menu.exec(event->globalPos());
  }

 private:
  Form& form_;
};

FormView::FormView(Form& form, QWidget* parent) : QWidget(parent), form_(form) {
  auto* columns = new QHBoxLayout(this);
  columns->setContentsMargins(4, 4, 4, 4);
  auto* left = new QVBoxLayout;
  columns->addLayout(left, 1);
  plot_ = new PlotWidget(form_, this);
  left->addWidget(plot_, 1);
  ControlModel& model = form_.controls();
  if (model.Has("Formula")) {
    auto* row = new QHBoxLayout;
    row->addWidget(new QLabel(tr("Formula:"), this));
    formula_ = new QLineEdit(this);
    formula_->setObjectName("Formula");
    formula_->setToolTip(tr("Type a formula; Enter plots it when the Graphing box is open."));
    row->addWidget(formula_, 1);
    left->addLayout(row);
    connect(formula_, &QLineEdit::textEdited, this, [this](const QString& text) {
      form_.controls().SetText("Formula", text.toStdString());
    });
    connect(formula_, &QLineEdit::returnPressed, this, [this] { Press("GoButton(0)"); });
  }
  if (model.Has("GoButton(0)")) BuildSideBox(columns);
  setWindowTitle(Q(form_.Caption()));
  // A plot changes the form between menu commands: show it as it grows.
  auto* timer = new QTimer(this);
  connect(timer, &QTimer::timeout, this, &FormView::Sync);
  timer->start(40);
  Sync();
}

void FormView::BuildSideBox(QHBoxLayout* columns) {
  side_ = new QGroupBox(this);
  side_->setMinimumWidth(200);
  side_->setMaximumWidth(240);
  auto* box = new QVBoxLayout(side_);
  auto* form = new QFormLayout;
  box->addLayout(form);
  auto addText = [&](const std::string& name, const QString& label) {
    auto* edit = new QLineEdit(side_);
    edit->setObjectName(Q(name));
    form->addRow(label, edit);
    connect(edit, &QLineEdit::textEdited, this,
            [this, name](const QString& t) { form_.controls().SetText(name, t.toStdString()); });
    connect(edit, &QLineEdit::returnPressed, this, [this] {
      if (go_) Press(go_->objectName().toStdString());
    });
    texts_[name] = edit;
    return edit;
  };
  addText("EndRValue", tr("L ="))->setToolTip(tr("The right end of the interval; a formula may stand here."));
  for (const char* name : {"IntervalType1", "IntervalType2"}) {
    auto* option = new QRadioButton(Q(form_.controls()[name].text), side_);
    const std::string n = name;
    connect(option, &QRadioButton::toggled, this, [this, n](bool on) {
      if (on) form_.controls().SetFromUser(n, "1");
    });
    form->addRow(QString(), option);
    options_[n] = option;
  }
  auto* fit = new QCheckBox(tr("Auto fit"), side_);
  connect(fit, &QCheckBox::toggled, this,
          [this](bool on) { form_.controls().SetFromUser("chkAutoFit", on ? "1" : "0"); });
  form->addRow(QString(), fit);
  checks_["chkAutoFit"] = fit;
  addText("TxtAnGr1", tr("Graph number:"))->setToolTip(tr("The number of the graph, counted from 1."));
  for (const char* name : {"GoButton(0)", "GoButton(5)"}) {
    auto* button = new QPushButton(side_);
    button->setObjectName(name);
    const std::string n = name;
    connect(button, &QPushButton::clicked, this, [this, n] { Press(n); });
    box->addWidget(button);
    buttons_[n] = button;
  }
  caption_ = new QLabel(side_);
  caption_->setWordWrap(true);
  box->addWidget(caption_);
  box->addStretch(1);
  columns->addWidget(side_);
}

void FormView::Press(const std::string& name) {
  const Control* c = form_.controls().Find(name);
  if (!c || !c->enabled) return;
  form_.Click(name);
  Sync();
}

void FormView::Sync() {
  if (shown_ == form_.Revision()) return;
  shown_ = form_.Revision();
  setWindowTitle(Q(form_.Caption()));
  ControlModel& model = form_.controls();
  if (formula_) {
    const QString text = Q(model.Text("Formula"));
    if (formula_->text() != text) formula_->setText(text);
  }
  if (side_) {
    const std::string topic = model.Text("mnuHelpSideBox");
    const bool open = model["mnuHelpSideBox"].visible;
    side_->setVisible(open);
    side_->setTitle(Q(topic.size() > 9 ? topic.substr(9) : topic));
    const bool graphing = model["GoButton(0)"].enabled;
    for (auto& [name, edit] : texts_) {
      const QString text = Q(model.Text(name));
      if (edit->text() != text) edit->setText(text);
      const bool shown = name == "TxtAnGr1" ? !graphing : graphing;
      edit->setVisible(shown);
      if (auto* label = qobject_cast<QFormLayout*>(edit->parentWidget()->layout()->itemAt(0)->layout()))
        if (QWidget* l = label->labelForField(edit)) l->setVisible(shown);
    }
    for (auto& [name, option] : options_) {
      option->setChecked(model[name].value != 0);
      option->setVisible(graphing);
    }
    for (auto& [name, check] : checks_) {
      check->setChecked(model[name].value != 0);
      check->setVisible(graphing);
    }
    go_ = nullptr;
    for (auto& [name, button] : buttons_) {
      const Control& c = model[name];
      button->setText(Q(c.text));
      button->setToolTip(Q(c.tip));
      button->setEnabled(c.enabled);
      button->setVisible(c.enabled);
      if (c.enabled) go_ = button;
    }
    caption_->setText(Q(model.Text("GraphCaption")));
    caption_->setVisible(graphing);
  }
  plot_->update();
}

}  // namespace keldo::qt
