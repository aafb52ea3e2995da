// The plot window of the one-dimensional form: the window and its fit, the
// axis labels, the display style, and the picture itself.

#include <algorithm>
#include <cmath>

#include "kit/form_context.h"
#include "common/number_text.h"
#include "form1d/graph1_form.h"
#include "formula/formula_text.h"

namespace keldo::form1d {
namespace {

// The window must leave the surface this many distinct steps across.
constexpr double kSmallestRelativeSpan = 1e-13;
constexpr double kLargestCoordinate = 1e300;

bool SpanFits(double lo, double hi) {
  if (!std::isfinite(lo) || !std::isfinite(hi) || !(hi > lo)) return false;
  if (std::fabs(lo) > kLargestCoordinate || std::fabs(hi) > kLargestCoordinate) return false;
  const double span = hi - lo;
  return std::isfinite(span) && span > kSmallestRelativeSpan * std::max(std::fabs(lo), std::fabs(hi));
}

}  // namespace

double Graph1Form::MAXW() const {
  double hi = 0.0;
  for (int g = 0; g <= graphCount_ && g < static_cast<int>(store_.b.size()); ++g) hi = std::max(hi, store_.b[static_cast<std::size_t>(g)]);
  return hi;
}

double Graph1Form::MINW() const {
  double lo = 0.0;
  for (int g = 0; g <= graphCount_ && g < static_cast<int>(store_.a.size()); ++g) lo = std::min(lo, store_.a[static_cast<std::size_t>(g)]);
  return lo;
}

double Graph1Form::FUNCMAX() const {
  double f = 0.01;
  for (int g = 0; g <= graphCount_ && g < static_cast<int>(store_.peak.size()); ++g)
    f = std::max(f, store_.peak[static_cast<std::size_t>(g)]);
  f *= 1.5;
  if (f > 0.5) f = std::floor(f) + 1.0;
  return f;
}

bool Graph1Form::WindowTest(const PlotWindow& w) const {
  return SpanFits(w.left, w.right) && SpanFits(w.bottom, w.top);
}

void Graph1Form::SetWindow(const PlotWindow& w) {
  winLeft_ = w.left;
  winRight_ = w.right;
  winBottom_ = w.bottom;
  winTop_ = w.top;
}

void Graph1Form::SetAxisLabels() {
  const std::array<std::string, 10> labels = AxisLabelTexts(PlotWin());
  for (int k = 0; k < 10; ++k) controls_.SetText(IndexedName("AxisLab", k), labels[static_cast<std::size_t>(k)]);
  controls_.SetText("XLeft", PlainNumber(winLeft_));
  controls_.SetText("XRight", PlainNumber(winRight_));
  controls_.SetText("YLeft", PlainNumber(winBottom_));
  controls_.SetText("YRight", PlainNumber(winTop_));
  Touch();
}

void Graph1Form::RedrawGraphs(int mode) {
  if (mode == 0) {
    // Two numbers in each field; the guard keeps the scan inside the text.
    std::string x = controls_.Text("txtXinterval") + ",,Z", y = controls_.Text("txtYinterval") + ",,Z";
    std::size_t px = 0, py = 0;
    const std::string xl = formula::NextToken(px, x, ","), xr = formula::NextToken(px, x, ",");
    const std::string yb = formula::NextToken(py, y, ","), yt = formula::NextToken(py, y, ",");
    if (TestNewIntervals(xl, xr, yb, yt) != 0) return;
    const PlotWindow w{VALU(xl), VALU(xr), VALU(yb), VALU(yt)};
    if (!WindowTest(w)) return;
    SetWindow(w);
    SetAxisLabels();
  } else if (mode == 1) {
    const double hi = MAXW(), lo = MINW(), f = FUNCMAX();
    if (winLeft_ <= lo && winRight_ >= hi && winBottom_ <= -f && winTop_ >= f) return;
    const PlotWindow fitted{lo, hi, -f, f};
    if (!WindowTest(fitted)) return;
    SetWindow(fitted);
    SetAxisLabels();
  }
  Touch();
}

void Graph1Form::NewWindow() {
  if (plotting_) {
    context_.Beep();
    return;
  }
  if (graphCount_ > 0) RedrawGraphs(1);
}

void Graph1Form::NewView() { RedrawGraphs(1); }

void Graph1Form::DisplayGraphs(int last) {
  FrameSettings& settings = context_.settings();
  if (settings.captions["LabAutoFit"] == "Y") NewView();
  const std::string& lineStyle = settings.captions["LabLineStyle"];
  if (lineStyle == "Y" || lineStyle == "N") dots_ = lineStyle == "Y";
  SetMenuViewStyle();
  SetIntervalData(last);
  Touch();
}

void Graph1Form::DisplayOneGraph() { Touch(); }

void Graph1Form::SetMenuViewStyle() {
  controls_.SetFromUser(dots_ ? "OpDispStyle(4)" : "OpDispStyle(3)", "1");
}

void Graph1Form::ResetDisplay() {
  if (controls_["OpDispStyle(0)"].value) grid_ = kGraphPaper;
  else if (controls_["OpDispStyle(1)"].value) grid_ = kAxes;
  else if (controls_["OpDispStyle(2)"].value) grid_ = kNoGrid;
  if (controls_["OpDispStyle(3)"].value) dots_ = false;
  else if (controls_["OpDispStyle(4)"].value) dots_ = true;
  context_.settings().captions["LabLineStyle"].assign(1, dots_ ? 'Y' : 'N');
  if (controls_["OpDispStyle(5)"].value) background_ = kWhiteBackground;
  else if (controls_["OpDispStyle(6)"].value) background_ = kBlackBackground;
  RedrawGraphs(0);
  Touch();
}

void Graph1Form::OpenDisplayStyle(const SideBoxCommand&) {
  controls_.SetText("txtXinterval", controls_.Text("XLeft") + "," + controls_.Text("XRight"));
  controls_.SetText("txtYinterval", controls_.Text("YLeft") + "," + controls_.Text("YRight"));
  controls_.SetFromUser(grid_ == kAxes ? "OpDispStyle(1)" : grid_ == kNoGrid ? "OpDispStyle(2)" : "OpDispStyle(0)", "1");
  SetMenuViewStyle();
  controls_.SetFromUser(background_ == kWhiteBackground ? "OpDispStyle(5)" : "OpDispStyle(6)", "1");
}

void Graph1Form::Paint(platform::Surface& surface) const {
  // A window read from a file may be one no surface can show: the plot then
  // stays empty until a proper window is set.
  if (!WindowTest(PlotWin())) {
    surface.Clear(BackgroundColour(background_));
    return;
  }
  std::vector<GraphTrace> traces;
  traces.reserve(static_cast<std::size_t>(graphCount_) + 1);
  for (int g = 0; g < graphCount_; ++g)
    traces.push_back({GraphValues(g), n_ + 1, GraphLeft(g), GraphStep(g), g});
  if (live_.values && live_.count > 0) traces.push_back({live_.values, live_.count, live_.a, live_.h, live_.colourIndex});
  std::vector<Crosshair> crosshairs;
  if (VisiblePanel() == kPanelTrace) {
    for (int g = 0; g < std::min(graphCount_, 5); ++g)
      crosshairs.push_back({GraphLeft(g) + trace_.Index() * GraphStep(g), GraphValues(g)[trace_.Index()]});
  }
  DrawPlot(surface, Style(), PlotWin(), traces, crosshairs);
}

}  // namespace keldo::form1d
