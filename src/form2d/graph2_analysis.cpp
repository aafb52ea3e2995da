// The two-dimensional form's measures and resampling: norms, differences,
// integrals and scalar products over the view window, statistics and the
// histogram, 8-bit quantizing, down sampling and the two interpolations,
// and the graph clipboard with its clip of a zoomed part.

#include <algorithm>
#include <cmath>

#include "analysis/measures.h"
#include "common/number_text.h"
#include "form2d/graph2_form.h"
#include "form2d/image_files.h"
#include "kit/form_context.h"
#include "kit/graph_clipboard.h"
#include "kit/measuring_box.h"
#include "kit/named_calls.h"
#include "kit/typed_forms.h"
#include "wavelet/wavelet2d.h"

namespace keldo::form2d {
namespace {

const std::vector<std::string>& QuantLevels() {
  static const std::vector<std::string> kLevels = {
      "6-bit (64 levels)",    "7-bit (128 levels)",   "8-bit (256 levels)",   "9-bit (512 levels)",
      "10-bit (1024 levels)", "11-bit (2048 levels)", "12-bit (4096 levels)", "13-bit (8192 levels)",
      "14-bit (16384 levels)", "15-bit (32768 levels)"};
  return kLevels;
}

analysis::NormKind NormKindOf(MeasureNorm kind) {
  return kind == MeasureNorm::Sup ? analysis::NormKind::Sup
         : kind == MeasureNorm::Var ? analysis::NormKind::Var
                                    : analysis::NormKind::Power;
}

// The measures of the analysis and statistics boxes: over the samples of a
// graph inside its view window, the second graph of two read with the same
// indices.
class ViewWindowMeasures final : public MeasureSource {
 public:
  ViewWindowMeasures(Graph2Form& form, const GraphNumberReader& read) : form_(form), read_(read) {}

  int Graph(const std::string& field, const GraphNumberRules& rules) override {
    return read_(field, form_.NumGraphsPlotted(), rules);
  }
  double Number(const std::string& text) override {
    bool failed = false;
    return form_.Value(text, failed);
  }
  // Two graphs over other domains report 2.
  bool Compatible(int g, int g2) override {
    if (form_.GraphLeft(g) == form_.GraphLeft(g2) && form_.GraphRight(g) == form_.GraphRight(g2) &&
        form_.GraphStep(g) == form_.GraphStep(g2))
      return true;
    form_.context().ShowError(2);
    return false;
  }
  double Integral(int g) override { return analysis::PlaneIntegral(form_.PlaneOf(g), form_.ViewWindowRange(g)); }
  double ScalarProduct(int g, int g2) override {
    return analysis::PlaneScalarProduct(form_.PlaneOf(g), form_.GraphValues(g2), form_.ViewWindowRange(g));
  }
  double Norm(int g, int minus, MeasureNorm kind, double p) override {
    return analysis::PlaneNorm(form_.PlaneOf(g), minus < 0 ? nullptr : form_.GraphValues(minus),
                               form_.ViewWindowRange(g), NormKindOf(kind), p);
  }
  // Over the norm of 1 on the square.
  double Normalized(int g, double norm, double p) override {
    const double side = static_cast<double>(form_.GraphRight(g)) - form_.GraphLeft(g);
    return norm / analysis::ROOT(side * side, p);
  }
  // Relative to the first graph's norm.
  double Relative(int g, int, double difference, MeasureNorm kind, double p, bool& divisionByZero) override {
    char flag = 'N';
    const double value = analysis::RNorm(
        difference, analysis::PlaneNorm(form_.PlaneOf(g), nullptr, form_.ViewWindowRange(g), NormKindOf(kind), p),
        flag);
    divisionByZero = flag == 'Z';
    return value;
  }
  std::string SignalToNoise(int g, int g2) override {
    double signal = 0.0, noise = 0.0;
    analysis::PlaneSignalAndNoise(form_.PlaneOf(g), form_.GraphValues(g2), form_.ViewWindowRange(g), signal, noise);
    return analysis::SafeSNR(signal, noise);
  }
  // Nothing to show for fewer than two samples; 55 when they overflow.
  int Statistics(int g, std::string& report) override {
    const std::vector<double> values = analysis::PlaneValues(form_.PlaneOf(g), form_.ViewWindowRange(g));
    analysis::Statistics stats;
    if (!analysis::StatisticsOf(values, stats)) return -1;
    if (!std::isfinite(stats.variance) || !std::isfinite(stats.mean)) return 55;
    report = analysis::StatisticsReport(stats, "Samples used = ");
    return 0;
  }

 private:
  Graph2Form& form_;
  const GraphNumberReader& read_;
};

}  // namespace

const MeasuringBoxStyle kMeasuringBox{"Graph 1:",
                                      {"Sup-Norm", "Var-Norm", "Power Norm.  Power:"},
                                      "ChkNormalize",
                                      "Normalize",
                                      "Divides by the same norm of 1 over the square.",
                                      true,
                                      true,
                                      true,
                                      false,
                                      kEvaluatedGraph,
                                      kEvaluatedGraph,
                                      "txtStats"};

void Graph2Form::BuildAnalysisControls() {
  controls_.Add("AnalysisLabel", ControlKind::Label, "Norm");
  controls_.Add("TxtAnGr1", ControlKind::Text, "1").tip = "The number of the graph.";
  AddMeasuringControls(controls_, kMeasuringBox);
  measures_ = std::make_unique<ViewWindowMeasures>(*this, graphNumber_);
  Control& go7 = controls_.Add("GoButton(7)", ControlKind::Button, "&Compute");
  go7.tip = "Computes the measure over the view window.";
  controls_.Add("txtStats", ControlKind::Text, "").visible = false;
  // The histogram.
  controls_.Add("LabHistogram", ControlKind::Label, "Histogram:  Graph 1");
  Control& levels = controls_.Add("ComboQuantLevel", ControlKind::List, "8-bit (256 levels)");
  levels.items = QuantLevels();
  levels.value = 2;
  controls_.Add("chkHistGram(0)", ControlKind::Check, "Include sign bit").value = 1;
  controls_.Add("chkHistGram(1)", ControlKind::Check, "Include zero values.");
  Control& go10 = controls_.Add("GoButton(10)", ControlKind::Button, "&Plot");
  go10.tip = "Plots the histogram in a new one-dimensional form.";
}

analysis::Plane Graph2Form::PlaneOf(int g) const {
  const auto s = static_cast<std::size_t>(g);
  return analysis::Plane{store_.Row(g), Stride(), n_, store_.a[s], store_.h[s]};
}

analysis::PlaneRange Graph2Form::ViewWindowRange(int g) const {
  const GraphLook& look = looks_[static_cast<std::size_t>(g)];
  return analysis::InPlaneWindow(PlaneOf(g), look.viewXLeft, look.viewXRight, look.viewYLow, look.viewYHigh);
}

int Graph2Form::HeldPopUpGraph() {
  if (popUpGraph_ >= 0 && popUpGraph_ < graphCount_) return popUpGraph_;
  context_.ShowError(1);
  return -1;
}

// ------------------------------------------------------------- measures

void Graph2Form::OpenAnalysis(const SideBoxCommand& box) {
  const std::string title = box.topic;
  controls_.SetText("AnalysisLabel", title);
  ShowMeasuringFields(controls_, title, kMeasuringBox);
  controls_.SetText("AnalysisText", "");
  Touch();
}

void Graph2Form::PerformAnalysis() {
  const std::string title = controls_.Text("AnalysisLabel");
  if (IsMeasure(title)) RunMeasure(*this, *measures_, title, kMeasuringBox);
  else if (title == "Denoise (median)") DenoiseMedian();
  else if (title == "Denoise (adaptive median)") DenoiseAdaptiveMedian();
}

// ---------------------------------------------------- the image box's commands

void Graph2Form::OpenImageCommand(const SideBoxCommand& box) {
  // The title names the command that Go runs; the zoom's fields step aside.
  const std::string title = box.topic;
  const bool statistics = title == "Statistics";
  controls_.SetText("Label(16)", title);
  controls_.SetText("GoButton(11)", statistics ? "Compute" : "Select");
  controls_["GoButton(11)"].tip = statistics ? "Computes the statistics of the graph over its view window."
                                             : "Makes the new graph from the graph indicated.";
  for (int k = 0; k < 2; ++k) controls_.SetVisible(IndexedName("txtZoomCoord", k), false);
  controls_.SetVisible("GoButton(12)", false);
  controls_.SetVisible("GoButton(13)", false);
  controls_.SetVisible("txtStats", statistics);
  controls_.SetVisible("TxtGraphStat", statistics || graphCount_ > 1);
  if (!statistics) controls_.SetText("TxtGraphStat", std::to_string(std::min(popUpGraph_, graphCount_ - 1) + 1));
  const char* key = statistics ? "Stats"
                    : title == "Down sample" ? "DownSample"
                    : title == "Quantize (8-bit image)" ? "Quant8Bit"
                    : "Interpolate";
  SetSideBoxKey(key);
  Touch();
}

void Graph2Form::ImageGo() {
  const std::string title = controls_.Text("Label(16)");
  if (title == "Image zoom") Zoom();
  else if (title == "Statistics") RunStatistics(*this, *measures_, kMeasuringBox);
  else if (title == "Down sample") Downsample();
  else if (title == "Quantize (8-bit image)") Quantize8Bit();
  else if (title == "Haar Interpolate") Interpolate(false);
  else if (title == "D-D 4,2 Interpolate") Interpolate(true);
}

void Graph2Form::Quantize8Bit() {
  const int g = graphNumber_("TxtGraphStat", graphCount_, kImageCommandGraph);
  if (g < 0) return;
  const float* in = store_.Row(g);
  std::vector<float> out(Stride() * static_cast<std::size_t>(n_ + 1), 0.0f);
  for (int i = 0; i <= n_; ++i)
    for (int j = 0; j <= n_; ++j) {
      const std::size_t at = static_cast<std::size_t>(i) * Stride() + static_cast<std::size_t>(j);
      const float v = in[at];
      // Halves go to the even neighbour.
      out[at] = v >= 255.0f ? 255.0f : v < 0.0f ? 0.0f : std::nearbyint(v);
    }
  const auto s = static_cast<std::size_t>(g);
  DisplayFunction(n_, out.data(), Stride(), store_.a[s], store_.b[s], store_.h[s]);
}

Graph2Form* Graph2Form::FormOfSide(int points) {
  Graph2Form* form = NewResultForm(points);
  if (form && form->Points() != points) {
    // Sides outside the menu, such as 32, are set on the new form itself.
    form->SetPoints(points);
    form->InitializeDrawWidths();
  }
  return form;
}

void Graph2Form::Downsample() {
  const int g = graphNumber_("TxtGraphStat", graphCount_, kImageCommandGraph);
  if (g < 0) return;
  const int m = n_ / 2;
  if (m < kMinFilePoints) {
    context_.Beep();
    return;
  }
  const auto stride = static_cast<std::size_t>(m) + 1;
  std::vector<float> out(stride * stride);
  const float* in = store_.Row(g);
  for (int i = 0; i <= m; ++i)
    for (int j = 0; j <= m; ++j)
      out[static_cast<std::size_t>(i) * stride + static_cast<std::size_t>(j)] =
          in[static_cast<std::size_t>(2 * i) * Stride() + static_cast<std::size_t>(2 * j)];
  const auto s = static_cast<std::size_t>(g);
  Graph2Form* form = FormOfSide(m);
  if (form) form->DisplayFunction(m, out.data(), stride, store_.a[s], store_.b[s], 2 * store_.h[s]);
}

void Graph2Form::Interpolate(bool dd42) {
  const int g = graphNumber_("TxtGraphStat", graphCount_, kImageCommandGraph);
  if (g < 0) return;
  // The menu's sizes end at 2048, and a side must be a power of two.
  if (2 * n_ > kMaxPoints || !PowerOfTwoGrid()) {
    if (2 * n_ > kMaxPoints) context_.Beep();
    return;
  }
  const int m = 2 * n_;
  const auto stride = static_cast<std::size_t>(m) + 2;
  std::vector<float> work(stride * stride, 0.0f);
  const float* in = store_.Row(g);
  // The graph is the trend of one inverse level; twice its values keep the
  // grey levels, each sample spreading over four.
  for (int i = 0; i < n_; ++i)
    for (int j = 0; j < n_; ++j)
      work[static_cast<std::size_t>(i) * stride + static_cast<std::size_t>(j)] =
          2.0f * in[static_cast<std::size_t>(i) * Stride() + static_cast<std::size_t>(j)];
  wavelet::WaveletChoice choice;
  if (dd42) {
    choice.family = 4;
    choice.code = wavelet::GetOtherType("DD 11/7 (4,2)");
  } else {
    choice.family = 2;
    choice.code = -1;
  }
  wavelet::InverseTransform2D(choice, false, m, wavelet::MatrixView{work.data(), stride}, 1);
  const auto s = static_cast<std::size_t>(g);
  Graph2Form* form = FormOfSide(m);
  if (form) form->DisplayFunction(m, work.data(), stride, store_.a[s], store_.b[s], store_.h[s] / 2);
}

// ------------------------------------------------------------- histogram

void Graph2Form::OpenHistogram(const SideBoxCommand&) {
  SetSideBoxKey("Histogram");
  controls_.SetText("LabHistogram", "Histogram:  Graph " + std::to_string(popUpGraph_ + 1));
  Touch();
}

void Graph2Form::PerformHistogram() {
  const int g = HeldPopUpGraph();
  if (g < 0) return;
  const analysis::Plane plane = PlaneOf(g);
  const std::vector<double> values = analysis::PlaneValues(plane, analysis::PlaneRange{0, n_, 0, n_});
  const int levels = 1 << (controls_["ComboQuantLevel"].value + 6);
  const bool signBit = controls_["chkHistGram(0)"].value != 0;
  double entropy = 0.0, max = 0.0;
  std::vector<double> h =
      analysis::FrequencyHistogramOf(values, levels, signBit, controls_["chkHistGram(1)"].value != 0, entropy, max);
  const int bins = static_cast<int>(h.size()) - 1;
  const double a = signBit ? -max : 0.0;
  OneDimensionalResult result = OneDimensionalResult::Of(bins, std::move(h), a, max, max / levels);
  result.remarks = "Histogram\r\nEntropy: " + PlainNumber(entropy);
  if (auto* form = NewFormFor<OneDimensionalReceiver>(context_, FormKind::Graph1)) form->ShowResult(result);
}

// ------------------------------------------------------ graph clipboard

void Graph2Form::CopyTheGraph() {
  const int g = HeldPopUpGraph();
  if (g < 0) return;
  const auto s = static_cast<std::size_t>(g);
  const GraphLook& look = looks_[s];
  GraphExchangeArea2D& area = context_.exchange().twoDimensional;
  area.points = n_;
  area.left = store_.a[s];
  area.right = store_.b[s];
  area.step = store_.h[s];
  area.threshold = look.threshold;
  area.viewXLeft = look.viewXLeft;
  area.viewXRight = look.viewXRight;
  area.viewYLow = look.viewYLow;
  area.viewYHigh = look.viewYHigh;
  area.drawWidths = look.drawWidths;
  area.linReg = look.linReg;
  area.intensity.assign(1, look.intensity);
  area.colorMethod.assign(1, look.colorMethod);
  area.thresholdText = look.thresholdText;
  area.values = PackedSamples(g);
  area.holdsGraph = true;
  controls_.SetEnabled("mnuPasteGraph", true);
  Touch();
}

void Graph2Form::PasteTheGraph() {
  const GraphExchangeArea2D& area = context_.exchange().twoDimensional;
  if (!area.holdsGraph) {
    context_.Beep();
    return;
  }
  switch (WherePasted(area.points, n_, graphCount_, graphCount_ == kMaxGraphs)) {
    case PasteTarget::NewForm:
      if (Graph2Form* form = FormOfSide(area.points)) form->PasteTheGraph();
      return;
    case PasteTarget::ThisFormResized:
      SetPoints(area.points);
      break;
    case PasteTarget::ThisForm:
      break;
  }
  const int g = graphCount_;
  const auto s = static_cast<std::size_t>(g);
  UpDateFnData2(area.points, area.values.data(), static_cast<std::size_t>(area.points) + 1, area.left, area.right,
                area.step);
  // Filing reset the window to the domain: the zoom comes back here.
  GraphLook& look = looks_[s];
  look.viewXLeft = area.viewXLeft;
  look.viewXRight = area.viewXRight;
  look.viewYLow = area.viewYLow;
  look.viewYHigh = area.viewYHigh;
  look.drawWidths = area.drawWidths;
  look.threshold = area.threshold;
  look.thresholdText = area.thresholdText;
  look.linReg = area.linReg;
  if (!area.colorMethod.empty()) look.colorMethod = static_cast<ColorMethod>(area.colorMethod[0]);
  if (!area.intensity.empty()) look.intensity = static_cast<Intensity>(area.intensity[0]);
  if (graphCount_ < kMaxGraphs) controls_.SetEnabled("mnuPasteGraph", true);
  if (viewSize_ == 'L') {
    ResetGraphStyleMenu(g);
    SetGraphStyleForm(g + 1);
    currentGraph_ = g;
    PlotGraphLarge(g);
  } else {
    PlotJustOneSmallGraph(g, false);
  }
  Touch();
}

void Graph2Form::ClipTheGraph() {
  const int g = HeldPopUpGraph();
  if (g < 0) return;
  const auto s = static_cast<std::size_t>(g);
  const GraphLook& look = looks_[s];
  const double across = std::nearbyint(static_cast<double>(n_) / std::max(1, look.drawWidths));
  int side = 64;
  while (side < across && side < 1024) side *= 2;
  const ImageGraph image = Image(g);
  const ViewRange r = FillRange(image);
  const auto stride = static_cast<std::size_t>(side) + 1;
  std::vector<float> out(stride * stride, 0.0f);
  const float* in = store_.Row(g);
  for (int i = 0; i <= side && r.i0 + i <= n_; ++i)
    for (int j = 0; j <= side && r.j0 + j <= n_; ++j)
      out[static_cast<std::size_t>(i) * stride + static_cast<std::size_t>(j)] =
          in[static_cast<std::size_t>(r.i0 + i) * Stride() + static_cast<std::size_t>(r.j0 + j)];
  const float step = store_.h[s];
  const float left = look.viewXLeft;
  Graph2Form* form = FormOfSide(side);
  if (form) form->DisplayFunction(side, out.data(), stride, left, left + static_cast<float>(side) * step, step);
}

}  // namespace keldo::form2d
