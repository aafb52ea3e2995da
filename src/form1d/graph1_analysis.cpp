// The measuring commands of the one-dimensional form: the arithmetic of the
// kit's measuring box over the form's window (norms, differences, integrals,
// scalar products, statistics), and the derivative, histogram, energy,
// rearrangement and quantization.

#include <array>
#include <cmath>
#include <memory>

#include "analysis/measures.h"
#include "kit/form_context.h"
#include "kit/measuring_box.h"
#include "common/number_text.h"
#include "form1d/graph1_form.h"

namespace keldo::form1d {
namespace {

const std::vector<std::string>& QuantLevels() {
  static const std::vector<std::string> kLevels = {
      "6-bit (64 levels)",     "7-bit (128 levels)",    "8-bit (256 levels)",    "9-bit (512 levels)",
      "10-bit (1024 levels)",  "11-bit (2048 levels)",  "12-bit (4096 levels)",  "13-bit (8192 levels)",
      "14-bit (16384 levels)", "15-bit (32768 levels)", "16-bit (65536 levels)"};
  return kLevels;
}

analysis::NormKind NormKindOf(MeasureNorm kind) {
  return kind == MeasureNorm::Sup ? analysis::NormKind::Sup
         : kind == MeasureNorm::Var ? analysis::NormKind::Var
                                    : analysis::NormKind::Power;
}

// The measures of the analysis and statistics boxes: over the samples of a
// graph inside the form's window, the second graph of two read with the
// first one's indices.
class WindowMeasures final : public MeasureSource {
 public:
  WindowMeasures(Graph1Form& form, const GraphNumberReader& read) : form_(form), read_(read) {}

  int Graph(const std::string& field, const GraphNumberRules& rules) override {
    return read_(field, form_.GraphCount(), rules);
  }
  double Number(const std::string& text) override { return form_.VALU(text); }
  bool Compatible(int, int) override { return true; }
  double Integral(int g) override { return analysis::Integral(Of(g), Inside(g)); }
  double ScalarProduct(int g, int g2) override {
    return analysis::ScalarProduct(Of(g), form_.GraphValues(g2), Inside(g));
  }
  double Norm(int g, int minus, MeasureNorm kind, double p) override {
    return analysis::NormOf(Of(g), minus < 0 ? nullptr : form_.GraphValues(minus), Inside(g), NormKindOf(kind), p);
  }
  double Normalized(int g, double norm, double p) override {
    return norm / analysis::ROOT(form_.GraphRight(g) - form_.GraphLeft(g), p);
  }
  // Relative to the second graph's norm.
  double Relative(int g, int g2, double difference, MeasureNorm kind, double p, bool& divisionByZero) override {
    const analysis::Sampled second{form_.GraphValues(g2), form_.Points(), form_.GraphLeft(g), form_.GraphStep(g)};
    char flag = 'N';
    const double value =
        analysis::RNorm(difference, analysis::NormOf(second, nullptr, Inside(g), NormKindOf(kind), p), flag);
    divisionByZero = flag == 'Z';
    return value;
  }
  std::string SignalToNoise(int, int) override { return ""; }
  // Fewer than two samples in the window report 55.
  int Statistics(int g, std::string& report) override {
    analysis::Statistics stats;
    if (!analysis::ComputeStatistics(Of(g), Inside(g), stats)) return 55;
    report = analysis::StatisticsReport(stats);
    return 0;
  }

 private:
  analysis::Sampled Of(int g) const {
    return {form_.GraphValues(g), form_.Points(), form_.GraphLeft(g), form_.GraphStep(g)};
  }
  std::vector<bool> Inside(int g) const {
    const std::array<double, 4> window = form_.Window();
    return analysis::InWindow(Of(g), window[0], window[1]);
  }

  Graph1Form& form_;
  const GraphNumberReader& read_;
};

}  // namespace

const MeasuringBoxStyle kMeasuringBox{"Graph:",
                                      {"Sup norm", "Var-Norm", "Power norm.  Power:"},
                                      "ChkNormalized",
                                      "Normalized",
                                      "",
                                      false,
                                      false,
                                      false,
                                      true,
                                      GraphNumberRules{},
                                      AnyBadNumber(1, NumberReading::Evaluated),
                                      "Remarks(1)"};

void Graph1Form::BuildAnalysisControls() {
  AddMeasuringControls(controls_, kMeasuringBox);
  measures_ = std::make_unique<WindowMeasures>(*this, graphNumber_);
  Control& levels = controls_.Add("ComboQuantLevel", ControlKind::List, "8-bit (256 levels)");
  levels.items = QuantLevels();
  levels.value = 2;
  controls_.Add("chkHistGram(0)", ControlKind::Check, "Include sign bit").value = 1;
  controls_.Add("chkHistGram(1)", ControlKind::Check, "Include zero values.");
  controls_.Add("chkEPerc", ControlKind::Check, "Percentage");
}

bool Graph1Form::PerformMeasurement(const std::string& title) {
  if (IsMeasure(title)) {
    RunMeasure(*this, *measures_, title, kMeasuringBox);
    return true;
  }
  const bool one = title == "Derivative" || title == "Histogram" || title == "Energy graph" ||
                   title == "Sort magnitudes" || title == "Quantize (8-bit)" || title == "Quantize (16-bit)";
  if (!one) return false;
  const int g = graphNumber_("TxtAnGr1", graphCount_);
  if (g < 0) return true;
  const analysis::Sampled s{GraphValues(g), n_, GraphLeft(g), GraphStep(g)};
  if (title == "Derivative") {
    const std::vector<double> z = analysis::Derivative(s);
    UpDateFnData(n_, z, GraphLeft(g), GraphRight(g), GraphStep(g), false);
    // A value outside the window's height where x is inside refits it.
    const std::vector<bool> inside = analysis::InWindow(s, winLeft_, winRight_);
    bool fits = true;
    for (int i = 0; i <= n_; ++i)
      if (inside[static_cast<std::size_t>(i)] && (z[static_cast<std::size_t>(i)] > winTop_ || z[static_cast<std::size_t>(i)] < winBottom_))
        fits = false;
    DisplayOneGraph();
    if (!fits) NewWindow();
  } else if (title == "Histogram") {
    const int levels = 1 << (controls_["ComboQuantLevel"].value + 6);
    const bool signBit = controls_["chkHistGram(0)"].value != 0;
    double entropy = 0.0, max = 0.0;
    std::vector<double> h = analysis::Histogram(s, levels, signBit, controls_["chkHistGram(1)"].value != 0, entropy, max);
    const double a = signBit ? -max : 0.0;
    Graph1Result result = Graph1Result::Of(levels, std::move(h), a, max, (max - a) / levels);
    result.remarks = "Histogram\r\nEntropy: " + PlainNumber(entropy);
    NewResultForm(result);
  } else if (title == "Energy graph") {
    FileNewGraph(analysis::EnergyGraph(s, controls_["chkEPerc"].value != 0), GraphLeft(g), GraphRight(g), GraphStep(g));
  } else if (title == "Sort magnitudes") {
    FileNewGraph(analysis::NonIncreasingRearrangement(s), GraphLeft(g), GraphRight(g), GraphStep(g));
  } else {
    FileNewGraph(analysis::QuantizeXBit(s, title == "Quantize (8-bit)" ? 8 : 16), GraphLeft(g), GraphRight(g),
                 GraphStep(g));
  }
  return true;
}

}  // namespace keldo::form1d
