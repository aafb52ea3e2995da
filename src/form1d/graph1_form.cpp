#include "form1d/graph1_form.h"

#include <algorithm>
#include <cmath>

#include "kit/focus.h"
#include "kit/form_context.h"
#include "common/number_text.h"
#include "form1d/graph1_menu.h"
#include "formula/formula_text.h"

namespace keldo::form1d {
namespace {

// The formula box of one-dimensional formulas.
const FormulaBoxKind kFormulaBox{"cmdFormula",
                                 {"Formula files (*.uf1)|*.uf1", ".uf1"},
                                 "Help on one-dimensional formulas",
                                 &FrameSettings::formulas1d,
                                 formula::ToFormulaText,
                                 formula::FromAnsiText};

constexpr int kPointChoices[] = {64, 128, 256, 512, 1024, 2048, 4096, 8192, 16384, 32768, 65536};

std::string PointsItem(int n) { return "mnu" + std::to_string(n); }

// The commands that need a graph, enabled by the first one filed.
const std::vector<std::string>& GraphCommands() {
  static const std::vector<std::string> kNames = {
      "mnuClip",         "mnuStatistics",     "mnuSpectrogram",  "mnuScalogram",      "mnuRemoveGraph",
      "mnuPopUpRemoveGraph", "mnuEnergyGraph", "mnuEnergyAnalysis", "mnuArrangeDecrMag", "mnuArrangeDecrMags",
      "mnuEraseScreen",  "mnuSeries",         "mnuTransforms",   "mnuConvolve",       "mnuNorm",
      "mnuDerivative",   "mnuIntegral",       "mnuCopyGraph",    "mnuCopyToClipboard", "mnuSaveGraph",
      "mnuTrace",        "mnuFiltering",      "mnuPrintGraph",   "mnuPrintGraphs",    "mnuOpenSave(3)",
      "mnuOpenSave(4)",  "mnuOpenSave(5)",    "mnuOpenSave(6)",  "mnuAudioPlay",      "mnuHistogram",
      "mnuHistogramPoPup", "mnuDownSample",   "mnuInterpolate",  "mnuQuantize(0)",    "mnuQuantize(1)",
      "mnuQuantize(2)",  "mnuQuantize(3)",    "mnuQuantize(4)",  "mnuQuantize(5)"};
  return kNames;
}

// The commands that need two graphs.
const std::vector<std::string>& PairCommands() {
  static const std::vector<std::string> kNames = {"mnuConvolution", "mnuPaircorrelation", "mnuNormDifference",
                                                  "mnuScalarProduct"};
  return kNames;
}

int RoundHalfEven(double v) {
  const double r = std::nearbyint(v);
  if (!(r > -1e9)) return -1000000000;
  if (!(r < 1e9)) return 1000000000;
  return static_cast<int>(r);
}

}  // namespace

Graph1Form::Graph1Form(FormContext& context) : Form(context, FormKind::Graph1), formulaBox_(*this, kFormulaBox) {
  trace_.SetIndex(n_ / 2, n_);
  BuildControls();
  Reallocate();
  ChangePointsMenu(n_);
  UpdateLimitTips();
  SetupSideBox();
  SetAxisLabels();
  formulaBox_.Initialize();
  const std::string& lineStyle = context_.settings().captions["LabLineStyle"];
  if (lineStyle == "Y" || lineStyle == "N") dots_ = lineStyle == "Y";
  SetMenuViewStyle();
  ResetMenu();
}

void Graph1Form::BuildControls() {
  SetMenu(BuildMenu(Graph1MenuBar(), controls_));
  SetPopupMenu(BuildMenu(Graph1PopupMenu(), controls_));
  controls_.Add("NumPoints", ControlKind::Label, std::to_string(n_));
  controls_.Add("Formula", ControlKind::Text, "");
  controls_.Add("EndRValue", ControlKind::Text, ".5");
  controls_.AddOption("IntervalType1", "[-L,L]", "IntervalType", true);
  controls_.AddOption("IntervalType2", "[0,L]", "IntervalType");
  Control& go = controls_.Add("GoButton(0)", ControlKind::Button, "&Plot");
  go.tip = "Draws a graph of the formula.";
  go.enabled = false;
  controls_.Add("chkAutoFit", ControlKind::Check, "Auto fit").value = 1;
  controls_.Add("GraphCaption", ControlKind::Label, "");
  controls_.Add("AnalysisLabel", ControlKind::Label, "");
  for (const char* name : {"wavlevels", "WavSerLev", "HighestMag", "WSerNumTerms"})
    controls_.Add(name, ControlKind::Text, "");
  BuildSideBoxControls();
  BindCommands();
  DisableItemsWithoutHandler();
  controls_.SetEnabled("mnuPoints", true);
}

// ------------------------------------------------------------ graph store

void Graph1Form::Reallocate() { store_.Size(Row(), store_.capacity, false); }

void Graph1Form::Extend(int slots) { store_.Grow(slots); }

void Graph1Form::SetPoints(int n) {
  if (n == n_) return;
  soundReady8_ = soundReady16_ = false;
  graphCount_ = 0;
  ResetMenu();
  n_ = n;
  if (context_.exchange().oneDimensional.holdsGraph) controls_.SetEnabled("mnuPasteGraph", true);
  Reallocate();
  controls_.SetText("NumPoints", std::to_string(n));
  ChangePointsMenu(n);
  trace_.SetIndex(n / 2, n);
  step_ = (intervalRight_ - intervalLeft_) / n;
  UpdateLimitTips();
  Touch();
}

void Graph1Form::UpdateLimitTips() {
  const int levels = log2N_;
  for (const char* name : {"wavlevels", "WavSerLev"}) {
    Control& c = controls_[name];
    c.tip = "Integer between 1 and" + StrInt(levels) + ".";
    c.text = std::to_string(levels);
  }
  controls_["HighestMag"].tip = "Integer between 0 and" + StrInt(n_) + ".";
  controls_["WSerNumTerms"].tip = "Integer from 0 to" + StrInt(n_) + ".";
}

void Graph1Form::ChangePointsMenu(int n) {
  for (int choice : kPointChoices) controls_[PointsItem(choice)].value = choice == n ? 1 : 0;
  int log2 = 0;
  while ((1 << log2) < n && log2 < 16) ++log2;
  log2N_ = log2;
}

void Graph1Form::UpDateFnData(int count, const std::vector<double>& y, double a, double b, double h, bool reallocate) {
  if (reallocate) SetPoints(count);
  else Extend(graphCount_ + 1);
  const std::size_t slot = static_cast<std::size_t>(graphCount_);
  double* row = store_.Row(graphCount_);
  const int last = std::min(count, n_);
  double peak = 0.0;
  for (int i = 0; i <= last && i < static_cast<int>(y.size()); ++i) {
    row[i] = y[static_cast<std::size_t>(i)];
    peak = std::max(peak, std::fabs(row[i]));
  }
  store_.peak[slot] = peak;
  store_.a[slot] = a;
  store_.b[slot] = b;
  store_.h[slot] = h;
  ++graphCount_;
  controls_.SetText("EndRValue", PlainNumber(b));
  ResetMenu();
  Touch();
}

void Graph1Form::RemoveGraph(int g) {
  if (g > graphCount_) {
    if (graphCount_ > 0) --graphCount_;
    return;
  }
  store_.Remove(g - 1, graphCount_, static_cast<std::size_t>(n_) + 1);
  --graphCount_;
  Touch();
}

void Graph1Form::RemoveTheGraph() {
  std::string text = controls_.Text("TxtAnGr1");
  const int g = RoundHalfEven(VALU(text));
  if (g > graphCount_) {
    context_.ShowError(1);
    return;
  }
  if (g < 1) {
    context_.ShowError(3);
    return;
  }
  RemoveGraph(g);
  ResetMenu();
  RedrawGraphs(2);
  if (graphCount_ > 0) RequestFocus(controls_, "TxtAnGr1");
}

void Graph1Form::ClearGraphs() {
  graphCount_ = 0;
  store_.values.assign(store_.values.size(), 0.0);
  ResetMenu();
  Touch();
}

void Graph1Form::EnableCommand(const std::string& name, bool on) { controls_.SetEnabled(name, on && CommandBuilt(name)); }

void Graph1Form::ResetMenu() {
  if (graphCount_ == 0) {
    EnableCommand("mnuPasteGraph", context_.exchange().oneDimensional.holdsGraph);
    for (const std::string& name : GraphCommands()) EnableCommand(name, false);
    for (const std::string& name : PairCommands()) EnableCommand(name, false);
  } else if (graphCount_ == 1) {
    for (const std::string& name : GraphCommands()) EnableCommand(name, true);
    EnableCommand("mnuDownSample", n_ > 64);
    EnableCommand("mnuInterpolate", n_ < 65536);
    for (const std::string& name : PairCommands()) EnableCommand(name, false);
  } else if (graphCount_ == 2) {
    for (const std::string& name : PairCommands()) EnableCommand(name, true);
  }
  Touch();
}

void Graph1Form::ChangeWindow(const std::string& text, std::string& result) {
  std::string parts[4];
  std::size_t start = 0;
  for (int k = 0; k < 4; ++k) {
    const std::size_t comma = text.find(',', start);
    if (comma == std::string::npos) {
      parts[k] = start <= text.size() ? text.substr(start) : std::string();
      start = text.size() + 1;
    } else {
      parts[k] = text.substr(start, comma - start);
      start = comma + 1;
    }
  }
  const double xl = VALU(parts[0]), xr = VALU(parts[1]), yb = VALU(parts[2]), yt = VALU(parts[3]);
  winLeft_ = xl;
  winRight_ = xr;
  if (!(xl < xr)) {
    result = "L";
    return;
  }
  if (!(yb < yt)) {
    result = "R";
    return;
  }
  winBottom_ = yb;
  winTop_ = yt;
  RedrawGraphs(2);
  result.clear();
}

int Graph1Form::TestNewIntervals(const std::string& xl, const std::string& xr, const std::string& yb,
                                 const std::string& yt) {
  const double l = VALU(xl), r = VALU(xr), b = VALU(yb), t = VALU(yt);
  if (!(r > l)) {
    context_.ShowError(4);
    RequestFocus(controls_, "txtXinterval");
    return -1;
  }
  if (!(t > b)) {
    context_.ShowError(5);
    RequestFocus(controls_, "txtYinterval");
    return -1;
  }
  return 0;
}

void Graph1Form::ResetAxes() { RedrawGraphs(2); }

void Graph1Form::SetIntervalChoice(double a) {
  controls_.SetFromUser(a == 0.0 ? "IntervalType2" : "IntervalType1", "1");
}

void Graph1Form::SetIntervalData(int g) {
  if (g >= 0 && g < static_cast<int>(store_.b.size())) controls_.SetText("EndRValue", PlainNumber(store_.b[static_cast<std::size_t>(g)]));
}

std::vector<GraphSummary> Graph1Form::Graphs() const {
  std::vector<GraphSummary> out;
  for (int g = 0; g < graphCount_; ++g) {
    const std::size_t s = static_cast<std::size_t>(g);
    GraphSummary summary{store_.a[s], store_.b[s], store_.h[s], store_.peak[s], {}, 0, {}};
    const double* first = GraphValues(g);
    summary.values.assign(first, first + n_ + 1);
    out.push_back(std::move(summary));
  }
  return out;
}

// --------------------------------------------------------------- graphing

void Graph1Form::RestorePlotButton() {
  Control& go = controls_["GoButton(0)"];
  go.text = "&Plot";
  go.tip = "Draws a graph of the formula.";
  // Ready for the next formula.
  RequestFocus(controls_, "Formula");
  Touch();
}

void Graph1Form::PlotTheGraph() {
  if (plotting_) {
    plotting_ = false;  // Stop
    return;
  }
  std::string endText = controls_.Text("EndRValue");
  const double b = VALU(endText);
  const double oldLeft = intervalLeft_, oldRight = intervalRight_;
  const bool symmetric = controls_["IntervalType1"].value == 1;
  intervalRight_ = b;
  intervalLeft_ = symmetric ? -b : 0.0;
  const std::string typed = controls_.Text("Formula");
  formula_.order = 0;
  formula_.formType = 0;
  std::string command;
  compiler_.COMPILE(formula::kModeTyped, typed, command);
  if (command == formula::kErrorResult) {
    intervalLeft_ = oldLeft;
    intervalRight_ = oldRight;
    context_.ShowError(23);
    RequestFocus(controls_, "Formula");
    return;
  }
  std::string error = "N";
  PlotGraph(error, command, b);
  RestorePlotButton();
  if (error != "E") formulaBox_.Update(typed);
  if (error == "E") {
    controls_.SetText("Formula", typed);
    intervalLeft_ = oldLeft;
    intervalRight_ = oldRight;
    RequestFocus(controls_, "Formula");
  }
  step_ = (intervalRight_ - intervalLeft_) / n_;
}

void Graph1Form::PlotGraph(std::string& error, const std::string& command, double b) {
  const bool symmetric = controls_["IntervalType1"].value == 1;
  const double a = symmetric ? -b : 0.0;
  const double h = (b - a) / n_;
  Extend(graphCount_ + 1);
  const std::size_t slot = static_cast<std::size_t>(graphCount_);
  store_.a[slot] = a;
  store_.b[slot] = b;
  store_.h[slot] = h;
  std::vector<double> y(static_cast<std::size_t>(n_) + 1 + kSlack, 0.0);
  USERFN(n_ + 1, a, b, h, y, error, command);
}

namespace {

// Draws nothing itself: it counts the points done, so that a view can show
// the graph while it grows, and lets events run at each refresh.
class LiveSink final : public formula::PlotSink {
 public:
  LiveSink(Graph1Form::LiveGraph& live, Form& form, platform::EventLoop& loop, const bool& plotting)
      : live_(live), form_(form), loop_(loop), plotting_(plotting) {}
  void Point(double, double, bool) override { ++live_.count; }
  bool Refresh() override {
    form_.Touch();
    loop_.Yield();
    return plotting_;
  }

 private:
  Graph1Form::LiveGraph& live_;
  Form& form_;
  platform::EventLoop& loop_;
  const bool& plotting_;
};

}  // namespace

void Graph1Form::USERFN(int count, double a, double b, double h, std::vector<double>& y, std::string& error,
                        const std::string& command) {
  const std::array<int, 6> savedLower = formula_.lower, savedUpper = formula_.upper;
  if (formula_.order > 0) {
    error = "N";
    if (formula_.formType == 0) {
      error = "Y";
    } else {
      const formula::CompiledFormula saved = formula_.compiled;
      compiler_.GIVAL(error, command);
      formula_.compiled = saved;
      if (formula_.valueFault == -12) {
        // An initial value that cannot be computed would fail on every try.
        formula_.valueFault = 0;
        context_.ShowError(23);
        error = "E";
        return;
      }
    }
  }
  formula_.lower = savedLower;
  formula_.upper = savedUpper;
  formula::UserFunctionRun run = formula::RunOver(formula_, a, h, count);
  run.dots = dots_;
  run.graphs = FormulaGraphs();
  run.random = context_.services().random;
  if (run.random != nullptr) run.random->SeedFromClock();

  plotting_ = true;
  Control& go = controls_["GoButton(0)"];
  go.text = "&Stop";
  go.tip = "Stops the graphing.";
  // A key press stops the plot while it runs.
  RequestFocus(controls_, "GoButton(0)");
  live_ = LiveGraph{y.data(), 0, a, h, graphCount_};
  Touch();
  LiveSink sink(live_, *this, *context_.services().eventLoop, plotting_);
  const formula::UserFunctionResult result = formula::RunUserFunction(run, y, sink);
  live_ = LiveGraph{};
  if (result.fault != formula::kNoFault) {
    plotting_ = false;
    context_.ShowCritical(result.fault == formula::kOverflow ? "Overflow.  " : "Run Error.  ");
    error = "E";
    Touch();
    return;
  }
  if (result.stopped) {
    plotting_ = false;
    Touch();
    return;
  }
  controls_.SetText("GraphCaption", formula_.formType == 1 ? formula::ErrorCaption(result.mte, result.cte)
                                                           : std::string("User defined function."));
  UpDateFnData(count - 1, y, a, b, h, false);
  plotting_ = false;
  if (controls_["chkAutoFit"].value == 1) NewWindow();
  RestorePlotButton();
}

// ------------------------------------------------------------ formula host

std::optional<std::string> Graph1Form::FormulaPrompt(const std::string& prompt, const std::string& title) {
  return context_.services().dialogs->InputBox({prompt, title, ""});
}

void Graph1Form::FormulaError(int number) { context_.ShowError(number); }

platform::Random* Graph1Form::FormulaRandom() { return context_.services().random; }

const formula::GraphTable* Graph1Form::FormulaGraphs() {
  graphTable_.points = n_;
  for (int g = 0; g < 5; ++g) {
    formula::GraphSlot& slot = graphTable_.entries[static_cast<std::size_t>(g)];
    if (g <= store_.capacity) {
      slot.values = GraphValues(g);
      slot.a = store_.a[static_cast<std::size_t>(g)];
      slot.b = store_.b[static_cast<std::size_t>(g)];
      slot.h = store_.h[static_cast<std::size_t>(g)];
    } else {
      slot = formula::GraphSlot{};
    }
  }
  return &graphTable_;
}

std::unique_ptr<Form> MakeGraph1Form(FormContext& context) { return std::make_unique<Graph1Form>(context); }

}  // namespace keldo::form1d
