// The wavelet commands of the one-dimensional form: transforms and series
// (plain and packet), denoising, median denoising, down-sampling and
// interpolation, with their shared side box and checks.

#include <cmath>

#include "kit/form_context.h"
#include "common/number_text.h"
#include "common/text.h"
#include "form1d/graph1_form.h"
#include "kit/quantization_box.h"
#include "formula/formula_text.h"
#include "wavelet/series.h"

namespace keldo::form1d {

void Graph1Form::BuildWaveletControls() {
  controls_.Add("labWavelet", ControlKind::Label, "Wavelet transform");
  controls_.Add("WavGraph", ControlKind::Text, "1").tip = "The number of the graph.";
  const std::pair<const char*, const char*> kTypes[] = {
      {"WavTypeDaub", "Daubechies"}, {"WavTypeCoif", "Coiflets"}, {"WavTypeHaar", "Haar"}, {"WavTypeOther", "Other"}};
  for (const auto& [name, caption] : kTypes)
    controls_.AddOption(name, caption, "WavType", std::string(name) == "WavTypeDaub");
  controls_.Add("DaubOrder", ControlKind::Text, "4").tip = "Even integer between 4 and 20.";
  controls_.Add("CoifOrder", ControlKind::Text, "6").tip = "Multiple of 6 between 6 and 30.";
  Control& list = controls_.Add("WaveletFilter", ControlKind::List, "Daub 9/7");
  list.items = wavelet::WaveletFilterLabels();
  controls_.Add("chkSymDaub", ControlKind::Check, "Symmetric");
  controls_.Add("chkWavInvTr", ControlKind::Check, "Inverse");
  const std::pair<const char*, const char*> kSeries[] = {{"SerTypeAscend", "Ascending, terms:"},
                                                         {"SerTypeMagnitude", "Highest mag. coefficients:"},
                                                         {"SerTypeEnergy", "Energy fraction:"},
                                                         {"SerTypeThreshold", "Threshold"}};
  for (const auto& [name, caption] : kSeries)
    controls_.AddOption(name, caption, "SerType", std::string(name) == "SerTypeMagnitude");
  controls_["EnerPerc"].tip = "Number between 0 and 1.";
  controls_.SetText("EnerPerc", ".99");
  controls_.SetText("HighestMag", "32");
  controls_.SetText("WSerNumTerms", "32");
  Control& go7 = controls_.Add("GoButton(7)", ControlKind::Button, "&Plot");
  go7.tip = "Computes the transform or the series.";
  Control& go10 = controls_.Add("GoButton(10)", ControlKind::Button, "Edit settings");
  go10.tip = "Click on this button to view/change threshold settings.";
  BuildQuantizationControls();
  // Median denoising, down-sampling and interpolation.
  controls_.Add("TxtGraphStat", ControlKind::Text, "1").tip = "The number of the graph.";
  Control& go11 = controls_.Add("GoButton(11)", ControlKind::Button, "Select");
  go11.tip = "Doubles the number of points of the graph into a new form.";
}

void Graph1Form::OpenInterpolate(const SideBoxCommand& box) {
  controls_.SetText("AnalysisLabel", box.topic);
  PresetGraphField("TxtGraphStat");
}

void Graph1Form::OpenStatistics(const SideBoxCommand& box) {
  OpenInterpolate(box);
  controls_.SetText("Remarks(1)", "");
}

void Graph1Form::InterpolateGo() {
  const std::string& title = controls_.Text("AnalysisLabel");
  if (title == "Statistics") RunStatistics(*this, *measures_, kMeasuringBox);
  else if (title == "Spectrogram" || title == "Denoise (Gabor)") ComputeSpectrogram(title == "Denoise (Gabor)");
  else if (title == "Scalogram") ComputeScalogram();
  else InterpolateCommand(title == "D-D 4,2 Interpolate");
}

void Graph1Form::WaveletGo() {
  const std::string& title = controls_.Text("labWavelet");
  if (title == "Wavelet series" || title == "Wavelet packet series") WaveletSeries(title != "Wavelet series");
  else if (title == "Denoise (Wavelet)") DenoiseSignal();
  else WaveletTransform(title != "Wavelet transform");
}

void Graph1Form::BuildQuantizationControls() { AddQuantizationControls(controls_); }

void Graph1Form::SetQuantizationParameters() {
  FillQuantizationControls(controls_, quantParams_);
  ShowPanel(kPanelQuantization);
  Touch();
}

void Graph1Form::TransferInfo() { SetQuantParams(QuantizationStrings(controls_)); }

void Graph1Form::OpenWavelet(const SideBoxCommand& box) {
  const std::string title = box.topic;
  controls_.SetText("labWavelet", title);
  PresetGraphField("WavGraph");
  const bool packet = title.find("packet") != std::string::npos;
  controls_["WavTypeHaar"].text = packet ? "Walsh" : "Haar";
  controls_["chkWavInvTr"].text = title == "Denoise (Wavelet)" ? "Avg." : "Inverse";
  const bool series = title.find("series") != std::string::npos;
  for (const char* name : {"SerTypeAscend", "SerTypeMagnitude", "SerTypeEnergy", "SerTypeThreshold", "WSerNumTerms",
                           "HighestMag", "EnerPerc", "GoButton(10)", "WavSerLev"})
    controls_.SetVisible(name, series);
  controls_.SetVisible("wavlevels", !series);
  controls_.SetText("Remarks(1)", "");
  Touch();
}

bool Graph1Form::WaveletChecks(bool series, int& graph, wavelet::WaveletChoice& choice, int& levels) {
  graph = graphNumber_("WavGraph", graphCount_);
  if (graph < 0) return false;
  int family = 0;
  if (controls_["WavTypeDaub"].value) family = 1;
  else if (controls_["WavTypeHaar"].value) family = 2;
  else if (controls_["WavTypeCoif"].value) family = 3;
  else if (controls_["WavTypeOther"].value) family = 4;
  const double l = family == 0 ? 0.0 : VALU(controls_.Text(series ? "WavSerLev" : "wavlevels"));
  const int message = wavelet::CheckWaveletChoice(
      family, l, log2N_, controls_["chkSymDaub"].value != 0,
      [&] { return VALU(controls_.Text(family == 1 ? "DaubOrder" : "CoifOrder")); }, controls_.Text("WaveletFilter"),
      choice, levels);
  if (message != 0) {
    context_.ShowError(message);
    return false;
  }
  return true;
}

void Graph1Form::WaveletTransform(bool packet) {
  int g = 0, levels = 0;
  wavelet::WaveletChoice choice;
  if (!WaveletChecks(false, g, choice, levels)) return;
  std::vector<double> x(GraphValues(g), GraphValues(g) + n_ + 1);
  x.resize(static_cast<std::size_t>(n_) + 5, 0.0);
  const bool inverse = controls_["chkWavInvTr"].value != 0;
  context_.ShowBusy();
  if (inverse) wavelet::InverseTransform(choice, packet, n_, x.data(), log2N_, levels);
  else wavelet::ForwardTransform(choice, packet, n_, x.data(), levels);
  context_.ShowIdle();
  x.resize(static_cast<std::size_t>(n_) + 1);
  Graph1Result result = Graph1Result::Of(n_, std::move(x), GraphLeft(g), GraphRight(g), GraphStep(g));
  result.setInterval = true;
  Graph1Form* form = NewResultForm(result);
  if (!form) return;
  // The result is ready for the inverse: the same choices, "Inverse" set.
  for (const char* name : {"wavlevels", "DaubOrder", "CoifOrder", "WaveletFilter", "WavTypeDaub", "WavTypeCoif",
                           "WavTypeHaar", "WavTypeOther", "chkSymDaub"}) {
    form->controls_[name].value = controls_[name].value;
    form->controls_[name].text = controls_[name].text;
  }
  form->controls_["chkWavInvTr"].value = 1;
  form->RunHandler(packet ? "mnuWaveletPacketTransform" : "mnuWaveletTransform");
  form->controls_["chkWavInvTr"].value = 1;
}

void Graph1Form::WaveletSeries(bool packet) {
  int g = 0, levels = 0;
  wavelet::WaveletChoice choice;
  if (!WaveletChecks(true, g, choice, levels)) return;
  int type = 0;
  if (controls_["SerTypeMagnitude"].value) type = 1;
  else if (controls_["SerTypeEnergy"].value) type = 2;
  else if (controls_["SerTypeThreshold"].value) type = 3;
  else if (controls_["SerTypeAscend"].value) type = 4;
  if (type == 0) {
    context_.ShowError(16);
    return;
  }
  // Every field is read and checked before the transform.
  int count = 0;
  double energy = 0.0;
  wavelet::ThresholdSetup thresholds;
  if (type == 1 || type == 4) {
    const double c = std::nearbyint(VALU(controls_.Text(type == 1 ? "HighestMag" : "WSerNumTerms")));
    if (!(c >= 0 && c <= n_)) {
      context_.ShowError(type == 1 ? 17 : 30);
      return;
    }
    count = static_cast<int>(c);
  } else if (type == 2) {
    energy = VALU(controls_.Text("EnerPerc"));
    if (!(1 - energy >= 0 && 1 - energy <= 1)) {
      context_.ShowError(18);
      return;
    }
  } else if (!ReadThresholds(levels, thresholds)) {
    return;
  }
  std::vector<double> x(GraphValues(g), GraphValues(g) + n_ + 1);
  x.resize(static_cast<std::size_t>(n_) + 5, 0.0);
  context_.ShowBusy();
  wavelet::ForwardTransform(choice, packet, n_, x.data(), levels);
  std::string report;
  wavelet::ThresholdResult quantized;
  if (type == 1) wavelet::KeepHighest(n_, x.data(), count);
  if (type == 4) wavelet::KeepFirst(n_, x.data(), count);
  if (type == 2) report = std::to_string(wavelet::KeepEnergy(n_, x.data(), energy)) + " coefficients used.";
  if (type == 3) {
    quantized = wavelet::ApplyThresholds(n_, x.data(), thresholds);
    report = ThresholdReport(quantized, thresholds);
  }
  wavelet::InverseTransform(choice, packet, n_, x.data(), log2N_, levels);
  context_.ShowIdle();
  x.resize(static_cast<std::size_t>(n_) + 1);
  x[static_cast<std::size_t>(n_)] = GraphValues(g)[n_];
  const double a = GraphLeft(g), b = GraphRight(g), h = GraphStep(g);
  FileNewGraph(x, a, b, h);
  if (!quantized.map.empty()) FileNewGraph(quantized.map, a, b, h);
  if (!report.empty()) controls_.SetText("Remarks(1)", report);
}

bool Graph1Form::ReadThresholds(int levels, wavelet::ThresholdSetup& setup) {
  // The quantization string in use: method | threshold | Q | D | B | S |
  std::vector<std::string> fields;
  std::size_t start = 0;
  const std::string& params = quantParams_[0];
  for (std::size_t bar = params.find('|'); bar != std::string::npos; bar = params.find('|', start)) {
    fields.push_back(params.substr(start, bar - start));
    start = bar + 1;
  }
  fields.resize(6);
  std::string text = fields[1];
  for (char& c : text)
    if (c == ',') c = ':';
  const std::size_t colon = text.find(':');
  setup.quantize = fields[2] == "Q";
  setup.signBit = fields[4] == "B";
  setup.map = fields[5] == "S";
  setup.levels = levels;
  setup.trendLength = n_ >> levels;
  setup.first = VALU(colon == std::string::npos ? text : text.substr(0, colon));
  setup.second = colon == std::string::npos ? -1.0 : VALU(text.substr(colon + 1));
  const auto proper = [&](double t) {
    if (t == 0.0 && setup.quantize) {
      context_.ShowError(35);
      return false;
    }
    if (t < 0 || t > 1) {
      context_.ShowError(19);
      return false;
    }
    return true;
  };
  return proper(setup.first) && (colon == std::string::npos || proper(setup.second));
}

std::string Graph1Form::ThresholdReport(const wavelet::ThresholdResult& r, const wavelet::ThresholdSetup& s) const {
  std::string report = std::to_string(r.count) + " coefficients used, " + FormatDecimals(100.0 * r.count / n_, 1) +
                       "% of " + std::to_string(n_) + ".";
  if (s.quantize) {
    report += s.second >= 0 ? "\r\nThresholds: " + PlainNumber(s.first) + ", " + PlainNumber(s.second)
                            : "\r\nThreshold: " + PlainNumber(s.first);
    report += "\r\nBits per point: " + FormatDecimals(r.bitsPerPoint, 2);
  }
  return report;
}

void Graph1Form::DenoiseSignal() {
  int g = 0, levels = 0;
  wavelet::WaveletChoice choice;
  if (!WaveletChecks(false, g, choice, levels)) return;
  std::vector<double> y(GraphValues(g), GraphValues(g) + n_ + 1);
  std::vector<double> x(y);
  x.resize(static_cast<std::size_t>(n_) + 5, 0.0);
  wavelet::ForwardTransform(choice, false, n_, x.data(), levels);
  const double sigma = wavelet::NoiseSigma(n_, x.data());
  const double t = std::sqrt(2 * std::log(static_cast<double>(n_))) * sigma;
  if (controls_["chkWavInvTr"].value == 0) {
    wavelet::SoftThreshold(x.data(), n_ >> levels, n_ - 1, t);
    wavelet::InverseTransform(choice, false, n_, x.data(), log2N_, levels);
    std::copy(x.begin(), x.begin() + n_, y.begin());
  } else {
    // Averaged over 127 shifts: Go reads "Stop" and the check shows the
    // percent done; a Stop ends the run with nothing added.
    Control& go = controls_["GoButton(7)"];
    Control& check = controls_["chkWavInvTr"];
    denoising_ = true;
    go.text = "Stop";
    const bool done = wavelet::DenoiseAveraged(choice, n_, log2N_, levels, t, y, [&](int percent) {
      check.text = std::to_string(percent) + "%";
      Touch();
      context_.services().eventLoop->Yield();
      return denoising_;
    });
    denoising_ = false;
    go.text = "&Plot";
    check.text = "Avg.";
    Touch();
    if (!done) return;
  }
  y[static_cast<std::size_t>(n_)] = GraphValues(g)[n_];
  FileNewGraph(y, GraphLeft(g), GraphRight(g), GraphStep(g));
  controls_.SetText("Remarks(1)", "Threshold: " + PlainNumber(t));
}

void Graph1Form::MedianCommand(bool adaptive) {
  const int g = graphNumber_("TxtAnGr1", graphCount_, kOneGraphCommand);
  if (g < 0) return;
  FileNewGraph(wavelet::MedianDenoise(n_, GraphValues(g), adaptive), GraphLeft(g), GraphRight(g), GraphStep(g));
}

void Graph1Form::DownsampleCommand() {
  const int g = graphNumber_("TxtAnGr1", graphCount_, kOneGraphCommand);
  if (g < 0) return;
  const std::vector<double> z = wavelet::Downsample(n_, GraphValues(g));
  ResizedResult(z, n_ / 2, g);
}

void Graph1Form::InterpolateCommand(bool ddScheme) {
  const int g = graphNumber_("TxtGraphStat", graphCount_);
  if (g < 0) return;
  if (2 * n_ > kMaxPoints) {
    context_.ShowError(73);
    return;
  }
  const std::vector<double> z = ddScheme ? wavelet::DD4and2Interpolate(n_, log2N_, GraphValues(g))
                                         : wavelet::HaarInterpolate(n_, log2N_, GraphValues(g));
  ResizedResult(z, 2 * n_, g);
}

void Graph1Form::ResizedResult(const std::vector<double>& z, int points, int g) {
  Graph1Result result = Graph1Result::Of(points, z, GraphLeft(g), GraphRight(g), (GraphRight(g) - GraphLeft(g)) / points);
  result.setInterval = true;
  NewResultForm(result);
}

}  // namespace keldo::form1d
