#include "qt/form_view.h"

#include <QCheckBox>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QImage>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPainter>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTimer>
#include <QVBoxLayout>

#include "form1d/graph1_form.h"
#include "qt/menu_builder.h"
#include "qt/painter_surface.h"

namespace keldo::qt {
namespace {

QString Q(const std::string& s) { return QString::fromStdString(s); }

form1d::Graph1Form* AsGraph1(Form& form) { return dynamic_cast<form1d::Graph1Form*>(&form); }

// Margins around the plot box that hold the axis labels, in pixels.
constexpr int kLabelLeft = 64;
constexpr int kLabelBottom = 24;
constexpr int kMarginTop = 10;
constexpr int kMarginRight = 28;

}  // namespace

// The plot box: the picture the form draws, the axis labels around it and
// the cursor read-out. The picture is kept until the form changes, so that
// a resize or a read-out redraws only what moved.
class PlotWidget final : public QWidget {
 public:
  PlotWidget(Form& form, QWidget* parent) : QWidget(parent), form_(form) {
    setMinimumSize(360, 240);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMouseTracking(true);
    setFocusPolicy(Qt::ClickFocus);
    setCursor(Qt::CrossCursor);
    setObjectName("GraphBox");
  }

  QRect PlotRect() const { return rect().adjusted(kLabelLeft, kMarginTop, -kMarginRight, -kLabelBottom); }

 protected:
  void paintEvent(QPaintEvent*) override {
    QPainter p(this);
    p.fillRect(rect(), palette().window());
    const QRect plot = PlotRect();
    auto* graphs = AsGraph1(form_);
    if (!graphs) {
      p.fillRect(plot, Qt::black);
      p.setPen(QColor(0xC0, 0xC0, 0xC0));
      p.drawText(plot, Qt::AlignCenter, Q(form_.Caption()));
      return;
    }
    const qreal ratio = devicePixelRatioF();
    if (cacheRevision_ != form_.Revision() || cache_.size() != plot.size() * ratio) {
      cache_ = QImage(plot.size() * ratio, QImage::Format_RGB32);
      cache_.setDevicePixelRatio(ratio);
      QPainter cp(&cache_);
      cp.scale(1.0 / ratio, 1.0 / ratio);
      PainterSurface surface(cp, QRect(QPoint(0, 0), plot.size() * ratio));
      graphs->Paint(surface);
      cacheRevision_ = form_.Revision();
    }
    p.drawImage(plot.topLeft(), cache_);
    DrawLabels(p, plot);
    const std::string& readout = graphs->CursorText();
    if (!readout.empty() && plot.contains(pointer_)) {
      p.setPen(graphs->Style().background == 'W' ? Qt::black : Qt::white);
      p.drawText(pointer_ + QPoint(8, -6), Q(readout));
    }
  }

  void mousePressEvent(QMouseEvent* event) override {
    if (!AsGraph1(form_)) return;
    const MouseButton button = event->button() == Qt::RightButton ? MouseButton::Right : MouseButton::Left;
    SendMouse(MouseAction::Down, event->position(), button);
    if (button == MouseButton::Right) ShowPopup(event->globalPosition().toPoint());
  }

  void mouseMoveEvent(QMouseEvent* event) override {
    pointer_ = event->position().toPoint();
    const Control* readout = form_.controls().Find("mnuDisplayCursorCoordinates");
    if (readout && readout->value) SendMouse(MouseAction::Move, event->position(), MouseButton::None);
  }

  void mouseReleaseEvent(QMouseEvent* event) override {
    if (AsGraph1(form_)) SendMouse(MouseAction::Up, event->position(), MouseButton::Left);
  }

  void leaveEvent(QEvent*) override {
    pointer_ = QPoint(-1, -1);
    update();
  }

 private:
  void SendMouse(MouseAction action, QPointF pixel, MouseButton button) {
    const auto w = form_.Window();
    const platform::UserScale scale{w[0], w[3], w[1], w[2]};
    const qreal ratio = devicePixelRatioF();
    const QRect plot = PlotRect();
    const QPointF device = (pixel - QPointF(plot.topLeft())) * ratio;
    const QPointF user = PainterSurface::ToUser(scale, QRect(QPoint(0, 0), plot.size() * ratio), device);
    form_.Mouse(action, user.x(), user.y(), button);
    if (auto* view = qobject_cast<FormView*>(parentWidget())) view->Sync();
    update();
  }

  void ShowPopup(QPoint global) {
    if (form_.PopupMenu().empty()) return;
    QMenu menu(this);
    FillMenu(&menu, form_.PopupMenu().front().children, &form_.controls(), [this](const std::string& name) {
      std::string base;
      int index = -1;
      SplitIndexedName(name, base, index);
      form_.RunMenu(base, index);
      if (auto* view = qobject_cast<FormView*>(parentWidget())) view->Sync();
    });
    menu.exec(global);
  }

  void DrawLabels(QPainter& p, QRect plot) {
    const ControlModel& c = form_.controls();
    auto text = [&](int k) { return Q(c.Text(IndexedName("AxisLab", k))); };
    p.setPen(palette().windowText().color());
    const int y = plot.bottom() + 4;
    const int xs[5] = {plot.left(), plot.left() + plot.width() / 4, plot.center().x(),
                       plot.left() + 3 * plot.width() / 4, plot.right()};
    const int xLabels[5] = {0, 1, 2, 3, 9};
    for (int k = 0; k < 5; ++k)
      p.drawText(QRect(xs[k] - 40, y, 80, kLabelBottom - 4), Qt::AlignHCenter | Qt::AlignTop, text(xLabels[k]));
    const int ys[5] = {plot.top(), plot.top() + plot.height() / 4, plot.center().y(),
                       plot.top() + 3 * plot.height() / 4, plot.bottom()};
    const int yLabels[5] = {5, 6, 7, 8, 4};
    for (int k = 0; k < 5; ++k)
      p.drawText(QRect(0, ys[k] - 9, kLabelLeft - 6, 18), Qt::AlignRight | Qt::AlignVCenter, text(yLabels[k]));
  }

  Form& form_;
  QImage cache_;
  unsigned long long cacheRevision_ = ~0ull;
  QPoint pointer_{-1, -1};
};

FormView::FormView(Form& form, QWidget* parent) : QWidget(parent), form_(form) {
  // The plot and the side box side by side; the caption under the plot; the
  // formula row across the whole width.
  auto* grid = new QGridLayout(this);
  grid->setContentsMargins(4, 4, 4, 4);
  grid->setColumnStretch(0, 1);
  grid->setRowStretch(0, 1);
  plot_ = new PlotWidget(form_, this);
  grid->addWidget(plot_, 0, 0);
  if (form_.controls().Has("GraphCaption")) {
    caption_ = BindLabel(this, "GraphCaption");
    caption_->setMinimumHeight(18);
    grid->addWidget(caption_, 1, 0);
  }
  if (form_.controls().Has("PicSideBox(0)")) {
    auto* sideColumn = new QVBoxLayout;
    BuildSideBox(this, sideColumn);
    grid->addLayout(sideColumn, 0, 1, 2, 1);
  }
  if (form_.controls().Has("Formula")) {
    auto* left = new QVBoxLayout;
    BuildFormulaRow(left);
    grid->addLayout(left, 2, 0, 1, 2);
  }
  setWindowTitle(Q(form_.Caption()));
  // A plot changes the form between menu commands: show it as it grows.
  auto* timer = new QTimer(this);
  connect(timer, &QTimer::timeout, this, &FormView::Sync);
  timer->start(40);
  Sync();
}

void FormView::BuildFormulaRow(QVBoxLayout* left) {
  auto* row = new QHBoxLayout;
  auto* label = new QLabel(tr("&Formula:"), this);
  row->addWidget(label);
  formula_ = BindText(this, "Formula");
  formula_->setToolTip(tr("A formula in X; Enter plots it when the Graphing box is open. F1: help."));
  formula_->installEventFilter(this);
  label->setBuddy(formula_);
  row->addWidget(formula_, 1);
  connect(formula_, &QLineEdit::returnPressed, this, [this] { Press("GoButton(0)"); });
  formula_->setMinimumWidth(240);
  for (int k = 0; k < 5; ++k) {
    QWidget* button = BindButton(this, IndexedName("cmdFormula", k));
    button->setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed);
    row->addWidget(button);
  }
  left->addLayout(row);
}

QWidget* FormView::Panel(int number) {
  auto* panel = new QWidget(side_);
  panels_.emplace_back(number, panel);
  return panel;
}

QFormLayout* FormView::TitledPanel(int number, const std::string& titleControl, QWidget*& panel) {
  panel = Panel(number);
  auto* layout = new QFormLayout(panel);
  QLabel* title = BindLabel(panel, titleControl);
  title->setStyleSheet("font-weight: bold");
  layout->addRow(title);
  return layout;
}

void FormView::BuildSideBox(QWidget* parent, QVBoxLayout* column) {
  side_ = new QGroupBox(parent);
  side_->setMinimumWidth(220);
  side_->setMaximumWidth(330);
  auto* box = new QVBoxLayout(side_);
  column->addWidget(side_);
  column->addStretch(1);

  // Graphing.
  QWidget* graph = Panel(form1d::kPanelGraph);
  auto* gl = new QFormLayout(graph);
  gl->addRow(tr("L ="), BindText(graph, "EndRValue"));
  gl->addRow(QString(), BindOption(graph, "IntervalType1"));
  gl->addRow(QString(), BindOption(graph, "IntervalType2"));
  gl->addRow(QString(), BindCheck(graph, "chkAutoFit"));
  gl->addRow(BindButton(graph, "GoButton(0)"));

  // The one-graph commands.
  QWidget* analysis = nullptr;
  QFormLayout* al = TitledPanel(form1d::kPanelAnalysis, "AnalysisLabel", analysis);
  al->addRow(tr("Graph:"), BindText(analysis, "TxtAnGr1"));
  // Fields that only some commands read; the model says which are shown.
  const auto shown = [this](QWidget* w, QWidget* label, const std::string& name) {
    bindings_.push_back({name, w, [w, label](const Control& c) {
                           w->setVisible(c.visible);
                           if (label) label->setVisible(c.visible);
                         }});
  };
  auto* second = new QLabel(tr("Graph 2:"), analysis);
  QWidget* secondField = BindText(analysis, "TxtAnGr2");
  al->addRow(second, secondField);
  shown(secondField, second, "TxtAnGr2");
  for (const char* name : {"OptSupNorm", "OpVarNorm"}) {
    QWidget* o = BindOption(analysis, name);
    al->addRow(o);
    shown(o, nullptr, name);
  }
  QWidget* power = BindOption(analysis, "OptPowerNorm");
  QWidget* powerField = BindText(analysis, "NormPower");
  al->addRow(power, powerField);
  shown(power, nullptr, "OptPowerNorm");
  shown(powerField, nullptr, "NormPower");
  for (const char* name : {"ChkNormalized", "AbsNorm", "RelNorm", "chkHistGram(0)", "chkHistGram(1)", "chkEPerc"}) {
    const std::string n = name;
    QWidget* w = n.rfind("chk", 0) == 0 || n.rfind("Chk", 0) == 0 ? BindCheck(analysis, n) : BindOption(analysis, n);
    al->addRow(w);
    shown(w, nullptr, n);
  }
  auto* levels = new QLabel(tr("Quantization:"), analysis);
  QWidget* levelList = BindList(analysis, "ComboQuantLevel");
  al->addRow(levels, levelList);
  shown(levelList, levels, "ComboQuantLevel");
  al->addRow(BindButton(analysis, "GoButton(5)"));
  QLabel* result = BindLabel(analysis, "AnalysisText");
  al->addRow(result);
  shown(result, nullptr, "AnalysisText");

  // Calculator.
  QWidget* calc = Panel(form1d::kPanelCalculator);
  auto* cl = new QFormLayout(calc);
  cl->addRow(tr("Formula:"), BindText(calc, "CalcFormula"));
  cl->addRow(BindButton(calc, "GoButton(6)"));
  auto* value = BindText(calc, "Remarks(2)");
  value->setReadOnly(true);
  cl->addRow(tr("Value:"), value);

  // Display style.
  QWidget* style = Panel(form1d::kPanelDisplayStyle);
  auto* sl = new QVBoxLayout(style);
  auto* intervals = new QFormLayout;
  intervals->addRow(tr("X interval:"), BindText(style, "txtXinterval"));
  intervals->addRow(tr("Y interval:"), BindText(style, "txtYinterval"));
  sl->addLayout(intervals);
  const std::pair<QString, std::vector<int>> groups[] = {
      {tr("Grid"), {0, 1, 2}}, {tr("Plot"), {3, 4}}, {tr("Background"), {5, 6}}};
  for (const auto& [caption, members] : groups) {
    auto* group = new QGroupBox(caption, style);
    auto* gv = new QVBoxLayout(group);
    for (int k : members) gv->addWidget(BindOption(group, IndexedName("OpDispStyle", k)));
    sl->addWidget(group);
  }
  sl->addWidget(BindButton(style, "GoButton(8)"));

  // Remarks.
  QWidget* remarks = Panel(form1d::kPanelRemarks);
  auto* rl = new QVBoxLayout(remarks);
  rl->setContentsMargins(0, 0, 0, 0);
  rl->addWidget(BindMultiLine(remarks, "Remarks(0)", false));

  // Trace.
  QWidget* trace = Panel(form1d::kPanelTrace);
  auto* tl = new QVBoxLayout(trace);
  for (int k = 0; k < 5; ++k) {
    auto* frame = new QGroupBox(trace);
    auto* fl = new QVBoxLayout(frame);
    fl->addWidget(BindLabel(frame, IndexedName("LabTr", k)));
    const std::string name = IndexedName("FrTrace", k);
    bindings_.push_back({name, frame, [frame](const Control& c) {
                           frame->setTitle(Q(c.text));
                           frame->setVisible(c.visible);
                         }});
    tl->addWidget(frame);
  }
  auto* moves = new QGridLayout;
  for (int k = 0; k < 7; ++k) {
    auto* button = static_cast<QPushButton*>(BindButton(trace, IndexedName("cmdMove", k)));
    button->setMinimumWidth(24);
    // The two middle arrows on each side keep moving while held.
    if (k == 1 || k == 5) {
      button->setAutoRepeat(true);
      button->setAutoRepeatInterval(40);
    }
    moves->addWidget(button, 0, k);
  }
  tl->addLayout(moves);

  BuildFourierPanels();
  BuildWaveletPanels();
  for (auto& [number, panel] : panels_) box->addWidget(panel);
  box->addStretch(1);
}

QLineEdit* FormView::BindText(QWidget* parent, const std::string& name) {
  auto* edit = new QLineEdit(parent);
  edit->setObjectName(Q(name));
  edit->setToolTip(Q(form_.controls()[name].tip));
  connect(edit, &QLineEdit::textEdited, this,
          [this, name](const QString& t) { form_.controls().SetText(name, t.toStdString()); });
  if (name != "Formula") connect(edit, &QLineEdit::returnPressed, this, &FormView::PressGo);
  bindings_.push_back({name, edit, [edit](const Control& c) {
                         const QString text = Q(c.text);
                         if (edit->text() != text) edit->setText(text);
                         edit->setEnabled(c.enabled);
                       }});
  return edit;
}

QWidget* FormView::BindMultiLine(QWidget* parent, const std::string& name, bool readOnly) {
  auto* edit = new QPlainTextEdit(parent);
  edit->setObjectName(Q(name));
  edit->setReadOnly(readOnly);
  edit->setTabChangesFocus(true);
  connect(edit, &QPlainTextEdit::textChanged, this, [this, edit, name] {
    form_.controls().SetText(name, edit->toPlainText().toStdString());
  });
  bindings_.push_back({name, edit, [edit](const Control& c) {
                         const QString text = Q(c.text);
                         if (edit->toPlainText() != text) edit->setPlainText(text);
                       }});
  return edit;
}

QLabel* FormView::BindLabel(QWidget* parent, const std::string& name) {
  auto* label = new QLabel(parent);
  label->setObjectName(Q(name));
  label->setWordWrap(true);
  label->setTextInteractionFlags(Qt::TextSelectableByMouse);
  bindings_.push_back({name, label, [label](const Control& c) {
                         const QString text = Q(c.text).replace("\r\n", "\n");
                         if (label->text() != text) label->setText(text);
                       }});
  return label;
}

QWidget* FormView::BindOption(QWidget* parent, const std::string& name) {
  auto* option = new QRadioButton(Q(form_.controls()[name].text), parent);
  option->setObjectName(Q(name));
  // The model keeps the groups exclusive; several groups share one parent.
  option->setAutoExclusive(false);
  connect(option, &QRadioButton::clicked, this, [this, name] {
    form_.controls().SetFromUser(name, "1");
    form_.Touch();
    Sync();
  });
  bindings_.push_back({name, option, [option](const Control& c) {
                         option->setChecked(c.value != 0);
                         option->setEnabled(c.enabled);
                       }});
  return option;
}

QWidget* FormView::BindCheck(QWidget* parent, const std::string& name) {
  auto* check = new QCheckBox(Q(form_.controls()[name].text), parent);
  check->setObjectName(Q(name));
  connect(check, &QCheckBox::toggled, this,
          [this, name](bool on) { form_.controls().SetFromUser(name, on ? "1" : "0"); });
  bindings_.push_back({name, check, [check](const Control& c) {
                         check->setChecked(c.value != 0);
                         check->setEnabled(c.enabled);
                       }});
  return check;
}

QWidget* FormView::BindButton(QWidget* parent, const std::string& name) {
  auto* button = new QPushButton(parent);
  button->setObjectName(Q(name));
  connect(button, &QPushButton::clicked, this, [this, name] { Press(name); });
  bindings_.push_back({name, button, [button](const Control& c) {
                         button->setText(Q(c.text));
                         button->setToolTip(Q(c.tip));
                         button->setEnabled(c.enabled);
                       }});
  return button;
}

QWidget* FormView::BindList(QWidget* parent, const std::string& name) {
  auto* list = new QComboBox(parent);
  list->setObjectName(Q(name));
  for (const std::string& item : form_.controls()[name].items) list->addItem(Q(item));
  connect(list, &QComboBox::activated, this, [this, list, name](int) {
    form_.controls().SetFromUser(name, list->currentText().toStdString());
    form_.ControlChanged(name);
    form_.Touch();
    Sync();
  });
  bindings_.push_back({name, list, [list](const Control& c) {
                         if (list->currentText() != Q(c.text)) list->setCurrentText(Q(c.text));
                         list->setEnabled(c.enabled);
                       }});
  return list;
}

QLabel* FormView::BindCaption(QWidget* parent, const std::string& name) {
  auto* label = new QLabel(parent);
  bindings_.push_back({name, label, [label](const Control& c) {
                         label->setText(Q(c.text));
                         label->setVisible(c.visible);
                       }});
  return label;
}

void FormView::BuildFourierPanels() {
  if (!form_.controls().Has("FTReal")) return;
  // A row of a form layout whose field may be hidden by the model.
  const auto hideable = [this](QFormLayout* layout, QWidget* label, QWidget* field, const std::string& name) {
    layout->addRow(label, field);
    bindings_.push_back({name, field, [label, field](const Control& c) {
                           field->setVisible(c.visible);
                           if (label) label->setVisible(c.visible);
                         }});
  };
  const auto optionRow = [this](QWidget* parent, QBoxLayout* into, std::initializer_list<const char*> names) {
    auto* row = new QHBoxLayout;
    for (const char* n : names) row->addWidget(BindOption(parent, n));
    row->addStretch(1);
    into->addLayout(row);
  };

  // Fourier transform.
  QWidget* ft = Panel(form1d::kPanelFourierTransform);
  auto* fl = new QVBoxLayout(ft);
  optionRow(ft, fl, {"FTReal", "FTComplex"});
  auto* numbers = new QFormLayout;
  numbers->addRow(tr("Graph:"), BindText(ft, "FTGraph"));
  numbers->addRow(tr("Real part:"), BindText(ft, "RealPart"));
  numbers->addRow(tr("Imag. part:"), BindText(ft, "ImagPart"));
  fl->addLayout(numbers);
  optionRow(ft, fl, {"TrOp1", "TrOp2", "TrOp3"});
  auto* intervals = new QGridLayout;
  const char* kIntervals[4] = {"FTIntOp1", "FTIntOp2", "FTIntOp3", "FTIntOp4"};
  for (int k = 0; k < 4; ++k) intervals->addWidget(BindOption(ft, kIntervals[k]), k / 2, k % 2);
  fl->addLayout(intervals);
  auto* exponent = new QHBoxLayout;
  exponent->addWidget(new QLabel(tr("Exponent sign:"), ft));
  exponent->addWidget(BindOption(ft, "PosExponent"));
  exponent->addWidget(BindOption(ft, "NegExponent"));
  exponent->addStretch(1);
  fl->addLayout(exponent);
  auto* window = new QFormLayout;
  window->addRow(tr("Filter:"), BindList(ft, "TrFilter(0)"));
  fl->addLayout(window);
  fl->addWidget(BindCheck(ft, "chkFPerEA(1)"));
  fl->addWidget(BindButton(ft, "GoButton(2)"));

  // Sine and cosine transforms.
  QWidget* trig = nullptr;
  QFormLayout* tl = TitledPanel(form1d::kPanelTrigTransform, "LabFTrigTran", trig);
  tl->addRow(tr("Graph:"), BindText(trig, "GraphFTrigTran"));
  tl->addRow(tr("Filter:"), BindList(trig, "TrFilter(1)"));
  tl->addRow(BindButton(trig, "GoButton(3)"));

  // Series.
  QWidget* series = nullptr;
  QFormLayout* sl = TitledPanel(form1d::kPanelSeries, "LblPlotSeries", series);
  sl->addRow(tr("Graph:"), BindText(series, "LblSeriesGraph"));
  sl->addRow(tr("Harmonics:"), BindText(series, "TxtHarmonics"));
  sl->addRow(BindOption(series, "OptionUnfiltered"));
  sl->addRow(BindOption(series, "OptionFiltered"), BindList(series, "FreqFilter"));
  hideable(sl, BindCaption(series, "LabFiltParam1"), BindText(series, "FiltParam1"), "FiltParam1");
  hideable(sl, BindCaption(series, "LabFiltParam2"), BindText(series, "FiltParam2"), "FiltParam2");
  hideable(sl, nullptr, BindText(series, "FilterFormula"), "FilterFormula");
  sl->addRow(BindCheck(series, "chkFPerEA(0)"));
  sl->addRow(BindButton(series, "GoButton(1)"));

  // Convolution and correlation.
  QWidget* conv = nullptr;
  QFormLayout* cl = TitledPanel(form1d::kPanelConvolve, "LabConvolve", conv);
  cl->addRow(tr("Graph1:"), BindText(conv, "ConvGr1"));
  auto* secondLabel = new QLabel(tr("Graph2:"), conv);
  hideable(cl, secondLabel, BindText(conv, "ConvGr2"), "ConvGr2");
  cl->addRow(BindCheck(conv, "ConvChk(0)"));
  cl->addRow(BindCheck(conv, "ConvChk(1)"));
  cl->addRow(BindButton(conv, "GoButton(4)"));

  // Filtering.
  QWidget* filtering = Panel(form1d::kPanelFiltering);
  auto* gl = new QVBoxLayout(filtering);
  for (const char* side : {"Data", "Filter"}) {
    const bool data = std::string(side) == "Data";
    auto* group = new QGroupBox(data ? tr("Data") : tr("Filter"), filtering);
    auto* gv = new QFormLayout(group);
    const std::string option = data ? "OpFData" : "OpFilt", field = data ? "FDataNum" : "FiltNum";
    gv->addRow(BindOption(group, IndexedName(option, 0)), BindText(group, IndexedName(field, 0)));
    gv->addRow(BindOption(group, IndexedName(option, 1)));
    gv->addRow(tr("Real:"), BindText(group, IndexedName(field, 1)));
    gv->addRow(tr("Imag:"), BindText(group, IndexedName(field, 2)));
    gl->addWidget(group);
  }
  gl->addWidget(BindButton(filtering, "GoButton(9)"));
}

void FormView::BuildWaveletPanels() {
  if (!form_.controls().Has("labWavelet")) return;
  QWidget* wave = nullptr;
  QFormLayout* wl = TitledPanel(form1d::kPanelWavelet, "labWavelet", wave);
  wl->addRow(tr("Graph"), BindText(wave, "WavGraph"));
  // Levels: the transform's box or the series' box, whichever is shown.
  for (const char* name : {"wavlevels", "WavSerLev"}) {
    auto* label = new QLabel(tr("Levels:"), wave);
    QLineEdit* edit = BindText(wave, name);
    wl->addRow(label, edit);
    bindings_.push_back({name, edit, [label, edit](const Control& c) {
                           edit->setVisible(c.visible);
                           label->setVisible(c.visible);
                         }});
  }
  wl->addRow(BindOption(wave, "WavTypeDaub"), BindText(wave, "DaubOrder"));
  wl->addRow(QString(), BindCheck(wave, "chkSymDaub"));
  wl->addRow(BindOption(wave, "WavTypeCoif"), BindText(wave, "CoifOrder"));
  auto* haar = BindOption(wave, "WavTypeHaar");
  bindings_.push_back({"WavTypeHaar", haar, [haar](const Control& c) {
                         static_cast<QRadioButton*>(haar)->setText(Q(c.text));
                       }});
  wl->addRow(haar);
  wl->addRow(BindOption(wave, "WavTypeOther"), BindList(wave, "WaveletFilter"));
  auto* inverse = BindCheck(wave, "chkWavInvTr");
  bindings_.push_back({"chkWavInvTr", inverse, [inverse](const Control& c) {
                         static_cast<QCheckBox*>(inverse)->setText(Q(c.text));
                       }});
  wl->addRow(inverse);
  const std::pair<const char*, const char*> series[] = {{"SerTypeAscend", "WSerNumTerms"},
                                                        {"SerTypeMagnitude", "HighestMag"},
                                                        {"SerTypeEnergy", "EnerPerc"}};
  for (const auto& [option, field] : series) {
    QWidget* o = BindOption(wave, option);
    QLineEdit* f = BindText(wave, field);
    wl->addRow(o, f);
    bindings_.push_back({field, f, [o, f](const Control& c) {
                           o->setVisible(c.visible);
                           f->setVisible(c.visible);
                         }});
  }
  QWidget* threshold = BindOption(wave, "SerTypeThreshold");
  QWidget* edit = BindButton(wave, "GoButton(10)");
  wl->addRow(threshold, edit);
  bindings_.push_back({"GoButton(10)", edit, [threshold, edit](const Control& c) {
                         threshold->setVisible(c.visible);
                         edit->setVisible(c.visible);
                       }});
  wl->addRow(BindButton(wave, "GoButton(7)"));
  auto* report = BindLabel(wave, "Remarks(1)");
  wl->addRow(report);
  // The limited fields offer their quick help on F1 and on a mouse press.
  for (const char* name : {"wavlevels", "WavSerLev", "HighestMag", "WSerNumTerms", "EnerPerc"})
    if (QWidget* w = wave->findChild<QWidget*>(name)) w->installEventFilter(this);

  // The quantization settings of the threshold series.
  QWidget* quant = Panel(form1d::kPanelQuantization);
  auto* ql = new QVBoxLayout(quant);
  auto* heading = new QLabel(tr("Quantization parameters"), quant);
  heading->setStyleSheet("font-weight: bold");
  ql->addWidget(heading);
  for (int k = 0; k < 2; ++k) {
    auto* group = new QGroupBox(quant);
    auto* gv = new QFormLayout(group);
    gv->addRow(BindOption(group, IndexedName("OpMethod", k)));
    gv->addRow(BindText(group, IndexedName("TxtThreshold", k)));
    gv->addRow(BindCheck(group, IndexedName("chkQuantize", k)));
    gv->addRow(BindCheck(group, IndexedName("chkDifferences", k)));
    gv->addRow(BindCheck(group, IndexedName("chkSignBit", k)));
    ql->addWidget(group);
  }
  auto* mapRow = new QFormLayout;
  mapRow->addRow(tr("Significance map:"), BindCheck(quant, "chkSigMap"));
  ql->addLayout(mapRow);
  auto* buttons = new QHBoxLayout;
  buttons->addWidget(BindButton(quant, "cmdApply"));
  buttons->addWidget(BindButton(quant, "cmdCancel"));
  ql->addLayout(buttons);

  // Interpolation.
  QWidget* up = nullptr;
  QFormLayout* ul = TitledPanel(form1d::kPanelInterpolate, "AnalysisLabel", up);
  ul->addRow(tr("Graph:"), BindText(up, "TxtGraphStat"));
  ul->addRow(BindButton(up, "GoButton(11)"));
  ul->addRow(BindLabel(up, "Remarks(1)"));

  // Playing graphs as sound.
  QWidget* audio = Panel(form1d::kPanelAudio);
  auto* pl = new QFormLayout(audio);
  pl->addRow(tr("Graphs:"), BindText(audio, "TxtSound(0)"));
  pl->addRow(tr("Rate (Hz):"), BindText(audio, "TxtSound(1)"));
  pl->addRow(tr("Volume:"), BindText(audio, "TxtSound(2)"));
  pl->addRow(BindOption(audio, "OpBitRate(0)"), BindOption(audio, "OpBitRate(1)"));
  pl->addRow(BindButton(audio, "cmdSound(0)"), BindButton(audio, "cmdSound(1)"));
}

bool FormView::eventFilter(QObject* watched, QEvent* event) {
  if (auto* field = qobject_cast<QLineEdit*>(watched); field && field != formula_) {
    const bool f1 = event->type() == QEvent::KeyPress && static_cast<QKeyEvent*>(event)->key() == Qt::Key_F1;
    const bool press = event->type() == QEvent::MouseButtonPress;
    if (f1 || press) {
      if (auto* graphs = AsGraph1(form_)) graphs->FieldQuickHelp(field->objectName().toStdString());
      if (f1) return true;
    }
  }
  if (watched == formula_ && event->type() == QEvent::KeyPress &&
      static_cast<QKeyEvent*>(event)->key() == Qt::Key_F1) {
    if (auto* graphs = AsGraph1(form_)) graphs->FormulaHelp(formula_->selectedText().toStdString());
    formula_->setFocus();
    return true;
  }
  return QWidget::eventFilter(watched, event);
}

void FormView::FocusFormulaIfPlotting() {
  const Control* go = form_.controls().Find("GoButton(0)");
  if (formula_ && go && go->enabled) formula_->setFocus();
}

void FormView::Press(const std::string& name) {
  const Control* c = form_.controls().Find(name);
  if (!c || !c->enabled) return;
  form_.Click(name);
  Sync();
}

void FormView::PressGo() {
  form_.Go();
  Sync();
}

void FormView::Sync() {
  if (shown_ == form_.Revision()) return;
  shown_ = form_.Revision();
  setWindowTitle(Q(form_.Caption()));
  ControlModel& model = form_.controls();
  for (const Binding& b : bindings_)
    if (const Control* c = model.Find(b.name)) b.show(*c);
  if (side_) {
    bool open = false;
    for (auto& [number, panel] : panels_) {
      const bool shown = model[IndexedName("PicSideBox", number)].visible;
      panel->setVisible(shown);
      open = open || shown;
    }
    const std::string topic = model.Text("mnuHelpSideBox");
    side_->setTitle(Q(topic.size() > 9 ? topic.substr(9) : topic));
    side_->setVisible(open);
  }
  plot_->update();
}

}  // namespace keldo::qt
