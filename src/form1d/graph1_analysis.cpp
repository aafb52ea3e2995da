// The measuring commands of the one-dimensional form: norms, differences,
// integrals, scalar products, the derivative, statistics, histogram, energy,
// rearrangement and quantization.

#include <cmath>

#include "analysis/measures.h"
#include "kit/form_context.h"
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

}  // namespace

void Graph1Form::BuildAnalysisControls() {
  controls_.Add("TxtAnGr2", ControlKind::Text, "2").tip = "The number of the second graph.";
  const std::pair<const char*, const char*> norms[] = {
      {"OptSupNorm", "Sup norm"}, {"OpVarNorm", "Var-Norm"}, {"OptPowerNorm", "Power norm.  Power:"}};
  for (const auto& [name, caption] : norms)
    controls_.AddOption(name, caption, "NormKind", std::string(name) == "OptPowerNorm");
  controls_.Add("NormPower", ControlKind::Text, "2").tip = "The power p of the norm, 1 or more.";
  controls_.Add("ChkNormalized", ControlKind::Check, "Normalized");
  controls_.AddOption("AbsNorm", "Absolute", "NormDifference", true);
  controls_.AddOption("RelNorm", "Relative", "NormDifference");
  controls_.Add("AnalysisText", ControlKind::Text, "");
  Control& levels = controls_.Add("ComboQuantLevel", ControlKind::List, "8-bit (256 levels)");
  levels.items = QuantLevels();
  levels.value = 2;
  controls_.Add("chkHistGram(0)", ControlKind::Check, "Include sign bit").value = 1;
  controls_.Add("chkHistGram(1)", ControlKind::Check, "Include zero values.");
  controls_.Add("chkEPerc", ControlKind::Check, "Percentage");

}

bool Graph1Form::PerformMeasurement(const std::string& title) {
  if (title == "Norm" || title == "Norm difference" || title == "Integral" || title == "Scalar product") {
    Measure(title);
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

void Graph1Form::Measure(const std::string& title) {
  const int g = graphNumber_("TxtAnGr1", graphCount_);
  if (g < 0) return;
  const bool two = title == "Norm difference" || title == "Scalar product";
  const int g2 = two ? graphNumber_("TxtAnGr2", graphCount_) : g;
  if (g2 < 0) return;
  const analysis::Sampled s{GraphValues(g), n_, GraphLeft(g), GraphStep(g)};
  const std::vector<bool> inside = analysis::InWindow(s, winLeft_, winRight_);
  std::string label;
  double value = 0.0;
  if (title == "Integral") {
    label = "Integral";
    value = analysis::Integral(s, inside);
  } else if (title == "Scalar product") {
    label = "Scalar product";
    value = analysis::ScalarProduct(s, GraphValues(g2), inside);
  } else {
    analysis::NormKind kind = analysis::NormKind::Power;
    const double p = VALU(controls_.Text("NormPower"));
    if (controls_["OptSupNorm"].value) {
      kind = analysis::NormKind::Sup;
      label = "Sup-Norm";
    } else if (controls_["OpVarNorm"].value) {
      kind = analysis::NormKind::Var;
      label = "Var-Norm";
    } else {
      label = PlainNumber(p) + "-Norm";
    }
    if (title == "Norm") {
      value = analysis::NormOf(s, nullptr, inside, kind, p);
      if (kind == analysis::NormKind::Power && controls_["ChkNormalized"].value) {
        value /= analysis::ROOT(GraphRight(g) - GraphLeft(g), p);
        label = "Normalized " + label;
      }
    } else {
      label += " difference";
      value = analysis::NormOf(s, GraphValues(g2), inside, kind, p);
      if (controls_["RelNorm"].value) {
        label = "Relative " + label;
        const analysis::Sampled s2{GraphValues(g2), n_, GraphLeft(g), GraphStep(g)};
        char flag = 'N';
        value = analysis::RNorm(value, analysis::NormOf(s2, nullptr, inside, kind, p), flag);
        if (flag == 'Z') {
          controls_.SetText("AnalysisText", label + " error.  Division by zero");
          Touch();
          return;
        }
      }
      if (!std::isfinite(value)) {
        controls_.SetText("AnalysisText", label + " error.  Overflow");
        Touch();
        return;
      }
    }
  }
  controls_.SetText("AnalysisText", label + "\r\n" + PlainNumber(value));
  Touch();
}

void Graph1Form::StatisticsCommand() {
  // Any number that names no graph reports 1.
  const int g = graphNumber_("TxtGraphStat", graphCount_, AnyBadNumber(1, NumberReading::Evaluated));
  if (g < 0) return;
  const analysis::Sampled s{GraphValues(g), n_, GraphLeft(g), GraphStep(g)};
  analysis::Statistics stats;
  if (!analysis::ComputeStatistics(s, analysis::InWindow(s, winLeft_, winRight_), stats)) {
    context_.ShowError(55);
    return;
  }
  controls_.SetText("Remarks(1)", analysis::StatisticsReport(stats));
  Touch();
}

}  // namespace keldo::form1d
