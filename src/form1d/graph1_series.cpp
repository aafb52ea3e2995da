// Series, convolution and the "Filtering" command of the one-dimensional
// form: their side boxes, the reading and checking of their fields, and the
// new graphs they file.

#include <cmath>

#include "kit/focus.h"
#include "kit/form_context.h"
#include "common/number_text.h"
#include "form1d/graph1_form.h"
#include "fourier/convolve.h"
#include "fourier/series.h"

namespace keldo::form1d {
namespace {

constexpr const char* kSeriesTitles[4] = {"", "Fourier series", "Sine series", "Cosine series"};
constexpr const char* kConvolveTitles[4] = {"", "Convolution", "Autocorrelation", "Pair correlation"};

// The labels of the parameter fields for each frequency filter.
struct ParameterLabels {
  const char* filter;
  const char* first;
  const char* firstTip;
  const char* second;
};

constexpr ParameterLabels kParameterLabels[] = {
    {"Riesz", "     Damping power:", "Non-negative number.", nullptr},
    {"Poisson", "      Damping ratio:", "Number between 0 and 1.", nullptr},
    {"Kaiser", "  Damping constant:", "Positive number.", nullptr},
    {"Cos", "    Wave constant:", "Non-negative number.", "    Time constant:"},
    {"Sinc", "    Wave constant:", "Non-negative number.", "    Time constant:"},
    {"Heat", "  Diffusion constant:", "Non-negative number.", "    Time constant:"},
    {"FresnelCos", "    Wave constant:", "Non-negative number.", "    Time constant:"},
    {"FresnelSin", "    Wave constant:", "Non-negative number.", "    Time constant:"},
    {"Diffraction", "    Wave constant:", "Non-negative number.", "    Time constant:"},
    {"Energy percentage", "           Percentage:", "Number between 0 and 1.", nullptr},
    {"Threshold", "             Threshold:", "Number between 0 and 1.", nullptr},
};

// A filter code: -100 stops the command, 399 diffraction, 801 selection.
constexpr int kStop = -100;

}  // namespace

void Graph1Form::BuildSeriesControls() {
  controls_.Add("LblPlotSeries", ControlKind::Label, "Fourier series");
  controls_.Add("LblSeriesGraph", ControlKind::Text, "1").tip = "The number of the graph.";
  controls_.Add("TxtHarmonics", ControlKind::Text, "8").tip = "Integer between 0 and 128.";
  controls_.AddOption("OptionUnfiltered", "Unfiltered", "SeriesFilter", true).tip =
      "Uses Fourier coefficients without modification.";
  controls_.AddOption("OptionFiltered", "Filter:", "SeriesFilter").tip =
      "Uses Fourier coefficients that are modified by a filter function.";
  Control& list = controls_.Add("FreqFilter", ControlKind::List, "hanning");
  list.items = fourier::FrequencyFilterNames();
  list.value = 3;
  controls_.Add("chkFPerEA(0)", ControlKind::Check, "Periodic, endpoint averaged").tip =
      "If checked, starting and final values of signal are averaged.";
  controls_.Add("LabFiltParam1", ControlKind::Label, "");
  controls_.Add("LabFiltParam2", ControlKind::Label, "");
  controls_.Add("FiltParam1", ControlKind::Text, "1");
  controls_.Add("FiltParam2", ControlKind::Text, "1");
  controls_.Add("FilterFormula", ControlKind::Text, "1-x").tip = "Enter formula.";
  // The animated filters are not in the list: their fields stay hidden.
  controls_.Add("LabAnimationData", ControlKind::Label, "Start, End, Frames:").visible = false;
  controls_.Add("AnimationData", ControlKind::Text, "0,1,32").visible = false;
  Control& go1 = controls_.Add("GoButton(1)", ControlKind::Button, "&Compute");
  go1.tip = "Computes the partial sum as a new graph.";
  // Convolution and correlation.
  controls_.Add("LabConvolve", ControlKind::Label, "Convolution");
  controls_.Add("ConvGr1", ControlKind::Text, "1").tip = "The number of the first graph.";
  controls_.Add("ConvGr2", ControlKind::Text, "2").tip = "The number of the second graph.";
  controls_.Add("ConvChk(0)", ControlKind::Check, "Normalize");
  controls_.Add("ConvChk(1)", ControlKind::Check, "Divide by interval length.");
  Control& go4 = controls_.Add("GoButton(4)", ControlKind::Button, "&Compute");
  go4.tip = "Computes the result as a new graph.";
  SetFilterParameters();
}

void Graph1Form::OpenConvolve(const SideBoxCommand& box) {
  controls_.SetText("LabConvolve", box.topic);
  controls_.SetVisible("ConvGr2", std::string(box.topic) != kConvolveTitles[2]);
}

void Graph1Form::ConvolveGo() {
  const std::string& title = controls_.Text("LabConvolve");
  Convolve(title == "Autocorrelation" ? 2 : title == "Pair correlation" ? 3 : 1);
}

void Graph1Form::SeriesGo() {
  const std::string& title = controls_.Text("LblPlotSeries");
  FourierSeries(title == "Sine series" ? 2 : title == "Cosine series" ? 3 : 1);
}

void Graph1Form::OpenSeries(const SideBoxCommand& box) {
  int kind = 1;
  while (kind < 3 && box.topic != std::string(kSeriesTitles[kind])) ++kind;
  controls_.SetText("LblPlotSeries", kSeriesTitles[kind]);
  PresetGraphField("LblSeriesGraph");
  const int most = fourier::MaxHarmonic(static_cast<fourier::SeriesKind>(kind), n_);
  controls_["TxtHarmonics"].tip = "Integer between 0 and" + StrInt(most) + ".";
  SetFilterParameters();
}

void Graph1Form::SetFilterParameters() {
  const std::string& name = controls_.Text("FreqFilter");
  const ParameterLabels* labels = nullptr;
  for (const ParameterLabels& row : kParameterLabels)
    if (name == row.filter) labels = &row;
  controls_.SetVisible("FiltParam1", labels != nullptr);
  controls_.SetVisible("LabFiltParam1", labels != nullptr);
  controls_.SetVisible("FiltParam2", labels && labels->second);
  controls_.SetVisible("LabFiltParam2", labels && labels->second);
  controls_.SetVisible("FilterFormula", name == "User" || name == "Energy percentage" || name == "Threshold");
  if (labels) {
    controls_.SetText("LabFiltParam1", labels->first);
    controls_["FiltParam1"].tip = labels->firstTip;
    if (labels->second) {
      controls_.SetText("LabFiltParam2", labels->second);
      controls_["FiltParam2"].tip = "Non-negative number.";
    }
  }
  Touch();
}

int Graph1Form::ResetFilterForm(int message) {
  context_.ShowError(message);
  RequestFocus(controls_, "FiltParam1");
  return kStop;
}

int Graph1Form::FREQFILT(fourier::SeriesKind kind, int h, double b, double* x, double* y,
                          fourier::SeriesFilter& filter) {
  const std::string name = controls_.Text("FreqFilter");
  fourier::FilterParameters prm;
  prm.b = b;
  prm.p = VALU(controls_.Text("FiltParam1"));
  prm.q = VALU(controls_.Text("FiltParam2"));
  using Mode = fourier::SeriesFilter::Mode;
  if (name == "Riesz" && !(prm.p >= 0)) return ResetFilterForm(8);
  if (name == "Poisson" && !(prm.p >= 0 && prm.p < 1)) return ResetFilterForm(7);
  if (name == "Kaiser" && !(prm.p > 0)) return ResetFilterForm(9);
  const bool waves = name == "Cos" || name == "Sinc" || name == "Heat" || name == "FresnelCos" || name == "FresnelSin" ||
                     name == "Diffraction";
  if (waves && !(prm.p >= 0)) return ResetFilterForm(8);
  if (waves && !(prm.q >= 0)) {
    ResetFilterForm(8);
    RequestFocus(controls_, "FiltParam2");
    return kStop;
  }
  if (name == "Diffraction") {
    filter.mode = Mode::Diffraction;
    fourier::FilterWeights("FresnelCos", h, prm, filter.weights);
    fourier::FilterWeights("FresnelSin", h, prm, filter.sineWeights);
    return 399;
  }
  if (name == "Highest magnitude" || name == "Energy percentage" || name == "Threshold") {
    filter.mode = Mode::Selects;
    const int n = n_;
    filter.select = [=, this](double* cx, double* cy, fourier::SelectionReport& report) {
      if (name == "Highest magnitude") {
        fourier::FSerHighMag(kind, n, h, cx, cy);
        return true;
      }
      if (name == "Energy percentage") {
        if (fourier::FSerEnerPerc(kind, n, prm.p, cx, cy, report)) return true;
        context_.ShowError(18);
        return false;
      }
      if (fourier::FSerThreshold(kind, n, prm.p, cx, cy, report)) return true;
      context_.ShowError(19);
      return false;
    };
    (void)x;
    (void)y;
    return 801;
  }
  if (name == "User") {
    if (!UserFilter(h, filter.weights)) return kStop;
    filter.mode = Mode::Weights;
    return 0;
  }
  if (fourier::FilterWeights(name, h, prm, filter.weights)) {
    filter.mode = Mode::Weights;
    return 0;
  }
  context_.ShowMessage("Filter not available yet");
  controls_.SetFromUser("OptionUnfiltered", "1");
  return kStop;
}

bool Graph1Form::UserFilter(int h, std::vector<double>& w) {
  // The formula is compiled over [0, 1]; the form's interval comes back.
  const double left = intervalLeft_, right = intervalRight_;
  intervalLeft_ = 0.0;
  intervalRight_ = 1.0;
  formula_.order = 0;
  formula_.formType = 0;
  std::string command;
  compiler_.COMPILE(formula::kModeTyped, controls_.Text("FilterFormula"), command);
  intervalLeft_ = left;
  intervalRight_ = right;
  if (command == formula::kErrorResult) {
    context_.ShowError(23);
    RequestFocus(controls_, "FilterFormula");
    return false;
  }
  formula::UserFunctionRun run = formula::RunOver(formula_, 0.0, 1.0 / h, h + 1);
  run.graphs = FormulaGraphs();
  run.random = context_.services().random;
  formula::PlotSink quiet;
  std::vector<double> values(static_cast<std::size_t>(h) + 11, 0.0);
  const formula::UserFunctionResult result = formula::RunUserFunction(run, values, quiet);
  if (result.fault != formula::kNoFault) {
    RequestFocus(controls_, "FilterFormula");
    return false;
  }
  w.assign(values.begin(), values.begin() + h + 1);
  return true;
}

void Graph1Form::FourierSeries(int kind) {
  const auto seriesKind = static_cast<fourier::SeriesKind>(kind);
  const int g = graphNumber_("LblSeriesGraph", graphCount_);
  if (g < 0) return;
  const double h = std::nearbyint(VALU(controls_.Text("TxtHarmonics")));
  const int most = fourier::MaxHarmonic(seriesKind, n_);
  if (!(h >= 0 && h <= most)) {
    context_.ShowError(29);
    return;
  }
  const int harmonics = static_cast<int>(h);
  fourier::SeriesFilter filter;
  if (controls_["OptionFiltered"].value) {
    const int code = FREQFILT(seriesKind, harmonics, GraphRight(g), nullptr, nullptr, filter);
    if (code == kStop) return;
  }
  for (double w : filter.weights)
    if (!std::isfinite(w)) {
      // The weights of u = k/H divide by zero when H is 0.
      context_.ShowCritical("Run Error.  ");
      return;
    }
  context_.ShowBusy();
  const fourier::SeriesResult r = fourier::FourierSeriesOf(n_, GraphValues(g), seriesKind, harmonics,
                                                           controls_["chkFPerEA(0)"].value != 0, filter);
  context_.ShowIdle();
  if (!r.ok) return;
  if (!r.report.formulaText.empty()) controls_.SetText("FilterFormula", r.report.formulaText);
  if (!r.report.harmonicsText.empty()) controls_.SetText("TxtHarmonics", r.report.harmonicsText);
  FileNewGraph(r.values, GraphLeft(g), GraphRight(g), GraphStep(g));
}

void Graph1Form::FileNewGraph(const std::vector<double>& values, double a, double b, double h) {
  UpDateFnData(n_, values, a, b, h, false);
  DisplayOneGraph();
  NewWindow();
}

void Graph1Form::Convolve(int kind) {
  const int first = graphNumber_("ConvGr1", graphCount_);
  if (first < 0) return;
  const int second = kind == 2 ? first : graphNumber_("ConvGr2", graphCount_);
  if (second < 0) return;
  // The first graph decides where the origin goes; for two graphs the
  // second one's interval gives the step, the length and the result's place.
  const int source = kind == 2 ? first : second;
  fourier::ConvolveSetup setup;
  setup.kind = kind;
  setup.normalize = controls_["ConvChk(0)"].value != 0;
  setup.divideByLength = controls_["ConvChk(1)"].value != 0;
  setup.symmetric = GraphLeft(first) < 0;
  setup.dx = GraphStep(source);
  setup.length = GraphRight(source) - GraphLeft(source);
  context_.ShowBusy();
  const std::vector<double> r = fourier::ConvolveGraphs(n_, GraphValues(first), GraphValues(second), setup);
  context_.ShowIdle();
  FileNewGraph(r, GraphLeft(source), GraphRight(source), GraphStep(source));
}

}  // namespace keldo::form1d

namespace keldo::form1d {

void Graph1Form::BuildFilteringControls() {
  const char* kLabels[3] = {"Graph:", "Real:", "Imag:"};
  for (int k = 0; k < 3; ++k) {
    controls_.Add(IndexedName("FDataNum", k), ControlKind::Text, k == 2 ? "2" : "1").tip = kLabels[k];
    controls_.Add(IndexedName("FiltNum", k), ControlKind::Text, k == 2 ? "3" : "2").tip = kLabels[k];
  }
  const char* kKinds[2] = {"Real", "Complex"};
  for (int k = 0; k < 2; ++k) {
    controls_.AddOption(IndexedName("OpFData", k), kKinds[k], "OpFData", k == 0);
    controls_.AddOption(IndexedName("OpFilt", k), kKinds[k], "OpFilt", k == 0);
  }
  Control& go9 = controls_.Add("GoButton(9)", ControlKind::Button, "&Filter");
  go9.tip = "Multiplies the data by the filter, point by point.";
}

void Graph1Form::OpenFiltering(const SideBoxCommand&) {
  const std::string tip = "Positive integer less than" + StrInt(graphCount_ + 1);
  for (int k = 0; k < 3; ++k) {
    controls_[IndexedName("FDataNum", k)].tip = tip;
    controls_[IndexedName("FiltNum", k)].tip = tip;
  }
}

void Graph1Form::Filtering() {
  const bool complexData = controls_["OpFData(1)"].value != 0;
  const bool complexFilter = controls_["OpFilt(1)"].value != 0;
  // A graph number from a field, or -1 when it is out of range.
  const auto number = [&](const std::string& field) {
    const double g = std::nearbyint(Val(controls_.Text(field)));
    return g >= 1 && g <= graphCount_ ? static_cast<int>(g) - 1 : -1;
  };
  const int d0 = number(complexData ? "FDataNum(1)" : "FDataNum(0)");
  const int d1 = complexData ? number("FDataNum(2)") : d0;
  if (d0 < 0 || d1 < 0) {
    context_.ShowError(complexData ? 27 : 25);
    return;
  }
  const int f0 = number(complexFilter ? "FiltNum(1)" : "FiltNum(0)");
  const int f1 = complexFilter ? number("FiltNum(2)") : f0;
  if (f0 < 0 || f1 < 0) {
    context_.ShowError(complexFilter ? 28 : 26);
    return;
  }
  const std::size_t count = static_cast<std::size_t>(n_) + 1;
  std::vector<double> re(count), im(count);
  const double *dr = GraphValues(d0), *di = GraphValues(d1), *fr = GraphValues(f0), *fi = GraphValues(f1);
  for (std::size_t i = 0; i < count; ++i) {
    if (complexData && complexFilter) {
      re[i] = dr[i] * fr[i] - di[i] * fi[i];
      im[i] = dr[i] * fi[i] + di[i] * fr[i];
    } else if (complexData) {
      re[i] = dr[i] * fr[i];
      im[i] = di[i] * fr[i];
    } else if (complexFilter) {
      re[i] = dr[i] * fr[i];
      im[i] = dr[i] * fi[i];
    } else {
      re[i] = dr[i] * fr[i];
    }
  }
  const double a = GraphLeft(d0), b = GraphRight(d0), h = GraphStep(d0);
  FileNewGraph(re, a, b, h);
  if (complexData || complexFilter) FileNewGraph(im, a, b, h);
}

}  // namespace keldo::form1d
