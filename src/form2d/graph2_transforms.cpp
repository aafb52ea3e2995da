// The two-dimensional form's transforms and series: Fourier transform and
// series, wavelet and packet transforms and series with their threshold
// settings, convolution and correlation, and filtering by multiplication.

#include <cmath>

#include "common/number_text.h"
#include "common/text.h"
#include "form2d/graph2_form.h"
#include "fourier/fourier2d.h"
#include "kit/form_context.h"
#include "kit/quantization_box.h"
#include "wavelet/wavelet2d.h"

namespace keldo::form2d {
namespace {

// The captions of the convolution box, which also pick its command.
constexpr const char* kConvolveTitles[3] = {"Convolution", "Autocorrelation", "Pair correlation"};

}  // namespace

void Graph2Form::BuildTransformControls() {
  // Fourier transform.
  controls_.AddOption("FTReal", "Real", "FTData", true).tip = "The data are one real graph.";
  controls_.AddOption("FTComplex", "Complex", "FTData").tip = "The data are a real and an imaginary graph.";
  controls_.Add("FTGraph", ControlKind::Text, "1").tip = "The number of the graph.";
  controls_.Add("RealPart", ControlKind::Text, "1").tip = "Specify real part of signal.";
  controls_.Add("ImagPart", ControlKind::Text, "2").tip = "Specify imaginary part of signal.";
  controls_.AddOption("TrOpRI", "Real/Imag", "TrOp", true).tip = "The real and imaginary parts, as two graphs.";
  controls_.AddOption("TrOpPs", "Power sp", "TrOp").tip = "The power spectrum, as one graph.";
  controls_.AddOption("NegExponent", "-", "Exponent", true).tip = "exp(-2 pi i x y)";
  controls_.AddOption("PosExponent", "+", "Exponent").tip = "exp(+2 pi i x y)";
  Control& go3 = controls_.Add("GoButton(3)", ControlKind::Button, "&Transform");
  go3.tip = "Computes the transform.";
  // Fourier series.
  controls_.Add("LblPlotSeries", ControlKind::Label, "Fourier series");
  controls_.Add("LblSeriesGraph", ControlKind::Text, "1").tip = "The number of the graph.";
  controls_.AddOption("OpSerType(0)", "Unfiltered", "OpSerType", true);
  controls_.AddOption("OpSerType(1)", "Filter:", "OpSerType");
  Control& filters = controls_.Add("FreqFilter", ControlKind::List, "hanning");
  filters.items = fourier::Filter2DNames();
  controls_.Add("LabFiltParam", ControlKind::Label, "Damping power:").visible = false;
  controls_.Add("Parameter", ControlKind::Text, "1").visible = false;
  controls_.AddOption("OpSum(0)", "Spherical", "OpSum", true);
  controls_.AddOption("OpSum(1)", "Rectangular", "OpSum");
  const std::string half = std::to_string(n_ / 2);
  for (int k = 0; k < 3; ++k) controls_.Add(IndexedName("Harmonic", k), ControlKind::Text, half);
  Control& go8 = controls_.Add("GoButton(8)", ControlKind::Button, "&Compute");
  go8.tip = "Computes the series.";
  // Wavelets.
  controls_.Add("labWavelet", ControlKind::Label, "Wavelet transform");
  controls_.Add("WavGraph", ControlKind::Text, "1").tip = "The number of the graph.";
  controls_.Add("wavlevels", ControlKind::Text, "1");
  const std::pair<const char*, const char*> kTypes[] = {
      {"WavTypeDaub", "Daubechies"}, {"WavTypeCoif", "Coiflets"}, {"WavTypeHaar", "Haar"}, {"WavTypeOther", "Other"}};
  for (const auto& [name, caption] : kTypes)
    controls_.AddOption(name, caption, "WavType", std::string(name) == "WavTypeDaub");
  controls_.Add("DaubOrder", ControlKind::Text, "4").tip = "Even integer from 4 to 20.";
  controls_.Add("CoifOrder", ControlKind::Text, "6").tip = "Multiple of 6 from 6 to 30.";
  Control& list = controls_.Add("WaveletFilter", ControlKind::List, "Daub 9/7");
  list.items = wavelet::WaveletFilterLabels();
  controls_.Add("chkSymDaub", ControlKind::Check, "Symmetric");
  controls_.Add("chkWavInvTr", ControlKind::Check, "Inverse");
  Control& go0 = controls_.Add("GoButton(0)", ControlKind::Button, "Edit settings");
  go0.tip = "Click on this button to view/change threshold settings.";
  Control& go5 = controls_.Add("GoButton(5)", ControlKind::Button, "&Compute");
  go5.tip = "Computes the transform or the series.";
  controls_.Add("WavReport", ControlKind::Label, "");
  AddQuantizationControls(controls_);
  BuildDenoiseControls();
  // Convolution and correlation.
  controls_.Add("LabConvolve", ControlKind::Label, kConvolveTitles[0]);
  controls_.Add("ConvGr1", ControlKind::Text, "1").tip = "The number of the first graph.";
  controls_.Add("ConvGr2", ControlKind::Text, "2").tip = "The number of the second graph.";
  controls_.Add("ConvChk(0)", ControlKind::Check, "Divide by area.");
  controls_.Add("ConvChk(1)", ControlKind::Check, "Normalize");
  Control& go4 = controls_.Add("GoButton(4)", ControlKind::Button, "&Compute");
  go4.tip = "Computes the result as a new graph.";
  // Filtering.
  for (const char* group : {"OpFData", "OpFilter"}) {
    controls_.AddOption(IndexedName(group, 0), "Real", group, true);
    controls_.AddOption(IndexedName(group, 1), "Complex", group);
  }
  const char* numbers[2] = {"FDataNum", "FiltNum"};
  for (const char* name : numbers)
    for (int k = 0; k < 3; ++k)
      controls_.Add(IndexedName(name, k), ControlKind::Text, std::to_string(k == 2 ? 2 : 1)).tip =
          "The number of the graph.";
  Control& go6 = controls_.Add("GoButton(6)", ControlKind::Button, "&Filter");
  go6.tip = "Multiplies the data by the filter.";
  SetTransformTips();
}

void Graph2Form::SetTransformTips() {
  controls_["wavlevels"].tip = "Integer from 1 to " + std::to_string(log2N_) + ".";
  const std::string half = "Integer from 0 to " + std::to_string(n_ / 2) + ".";
  for (int k = 0; k < 3; ++k) controls_[IndexedName("Harmonic", k)].tip = half;
}

std::vector<float> Graph2Form::CopyOfGraph(int g) const {
  const float* values = store_.Row(g);
  return std::vector<float>(values, values + Stride() * static_cast<std::size_t>(n_ + 1));
}

// --------------------------------------------------------------- Fourier

void Graph2Form::OpenFourierTransform(const SideBoxCommand&) {
  controls_.SetVisible("GoButton(3)", true);
  Touch();
}

bool Graph2Form::GetTransformParameters(bool& complex, bool& negative, bool& power) {
  const bool data = controls_["FTReal"].value || controls_["FTComplex"].value;
  const bool output = controls_["TrOpRI"].value || controls_["TrOpPs"].value;
  const bool sign = controls_["NegExponent"].value || controls_["PosExponent"].value;
  if (!data || !output || !sign) {
    context_.Beep();
    return false;
  }
  complex = controls_["FTComplex"].value != 0;
  negative = controls_["NegExponent"].value != 0;
  power = controls_["TrOpPs"].value != 0;
  return true;
}

bool Graph2Form::PowerOfTwoGrid() {
  // A picture loaded at a side outside the menu can be shown and measured,
  // but the transforms need a power of two.
  if ((n_ & (n_ - 1)) == 0) return true;
  context_.Beep();
  return false;
}

void Graph2Form::FourierTransform() {
  if (!PowerOfTwoGrid()) return;
  bool complex = false, negative = false, power = false;
  if (!GetTransformParameters(complex, negative, power)) return;
  const int real = graphNumber_(complex ? "RealPart" : "FTGraph", graphCount_, AnyBadNumber(complex ? 0 : 3));
  if (real < 0) return;
  const int imaginary = complex ? graphNumber_("ImagPart", graphCount_, AnyBadNumber(0)) : -1;
  if (complex && imaginary < 0) return;
  context_.ShowBusy();
  std::vector<float> re = CopyOfGraph(real);
  std::vector<float> im = complex ? CopyOfGraph(imaginary) : std::vector<float>(re.size(), 0.0f);
  const fourier::Plane a{re.data(), Stride()}, b{im.data(), Stride()};
  const auto negate = [&] {
    for (float& v : im) v = -v;
  };
  if (negative) negate();
  const float width = GraphRight(real) - GraphLeft(real);
  if (complex) fourier::Fourier2DComplex(n_, width, a, b);
  else fourier::Fourier2DReal(n_, width, a, b);
  fourier::WrapEdges(n_, a);
  fourier::WrapEdges(n_, b);
  if (negative) negate();
  const float right = static_cast<float>(n_) / (2 * width);
  const float step = 1 / width;
  if (power) {
    for (std::size_t k = 0; k < re.size(); ++k) re[k] = re[k] * re[k] + im[k] * im[k];
    DisplayFunction(n_, re.data(), Stride(), -right, right, step);
  } else {
    DisplayTwoGraphs(n_, re.data(), im.data(), Stride(), -right, right, step);
  }
  context_.ShowIdle();
}

void Graph2Form::OpenFourierSeries(const SideBoxCommand&) {
  controls_.SetText("LblPlotSeries", "Fourier series");
  SetFilterParameters();
  Touch();
}

void Graph2Form::SetFilterParameters() {
  const std::string& name = controls_.Text("FreqFilter");
  std::string caption, tip;
  if (name == "Diffraction") {
    caption = "Diffrac const:";
    tip = "Non-negative number.";
  } else if (name == "Kaiser") {
    caption = "Damping const:";
    tip = "Positive number.";
  } else if (name == "Riesz" || name == "Diffusion") {
    caption = "Damping power:";
    tip = "Non-negative number.";
  } else if (name == "Poisson") {
    caption = "Damping power:";
    tip = "Number between 0 and 1.";
  }
  const bool shown = !caption.empty();
  controls_.SetVisible("LabFiltParam", shown);
  controls_.SetVisible("Parameter", shown);
  if (shown) {
    controls_.SetText("LabFiltParam", caption);
    controls_["Parameter"].tip = tip;
  }
}

void Graph2Form::PerformFourierSeries() {
  if (!PowerOfTwoGrid()) return;
  // Sine and cosine series have no two-dimensional form.
  if (controls_.Text("LblPlotSeries") != "Fourier series") return;
  const int g = graphNumber_("LblSeriesGraph", graphCount_, AnyBadNumber(3));
  if (g < 0) return;
  fourier::Series2DSetup s;
  const auto harmonic = [&](int k, int limit, int& out) {
    bool failed = false;
    const double h = std::nearbyint(Value(controls_.Text(IndexedName("Harmonic", k)), failed));
    if (failed || !(h >= 0 && h <= limit)) {
      context_.ShowError(29);
      return false;
    }
    out = static_cast<int>(h);
    return true;
  };
  if (controls_["OpSum(0)"].value) {
    s.sum = fourier::Series2DSetup::Sum::Spherical;
    if (!harmonic(0, n_ / 2, s.harmonic)) return;
  } else if (controls_["OpSum(1)"].value) {
    s.sum = fourier::Series2DSetup::Sum::Rectangular;
    if (!harmonic(1, n_, s.columnLimit) || !harmonic(2, n_, s.rowLimit)) return;
  }
  if (controls_["OpSerType(1)"].value && s.sum != fourier::Series2DSetup::Sum::None) {
    s.filter = controls_.Text("FreqFilter");
    bool failed = false;
    s.parameter = Value(controls_.Text("Parameter"), failed);
    if (failed) s.parameter = std::nan("");
  }
  s.left = GraphLeft(g);
  s.right = GraphRight(g);
  context_.ShowBusy();
  std::vector<float> out;
  int message = 0;
  const fourier::Plane source{const_cast<float*>(store_.Row(g)), Stride()};
  const bool done = fourier::FourierSeries2D(n_, source, s, out, Stride(), message);
  context_.ShowIdle();
  if (!done) {
    if (message != 0) context_.ShowError(message);
    return;
  }
  DisplayFunction(n_, out.data(), Stride(), GraphLeft(g), GraphRight(g), GraphStep(g));
}

// ---------------------------------------------------------------- wavelets

void Graph2Form::OpenWavelet(const SideBoxCommand& box) {
  const std::string title = box.topic;
  controls_.SetText("labWavelet", title);
  const bool packet = title.find("packet") != std::string::npos;
  const bool series = title.find("series") != std::string::npos;
  const bool denoise = title == "Denoise";
  controls_["WavTypeHaar"].text = packet ? "Walsh" : "Haar";
  controls_.SetVisible("chkWavInvTr", !series && !denoise);
  controls_.SetVisible("GoButton(0)", series);
  controls_.SetVisible("WavReport", series || denoise);
  ShowDenoiseControls(denoise);
  // The denoiser leaves its button reading "Plot"; the other commands compute.
  if (!denoise && !denoising_) controls_["GoButton(5)"].text = "&Compute";
  controls_.SetText("WavReport", "");
  Touch();
}

void Graph2Form::PerformWaveletAnalysis() {
  if (!PowerOfTwoGrid()) return;
  const std::string& title = controls_.Text("labWavelet");
  if (title == "Wavelet series") WaveletSeries(false);
  else if (title == "Wavelet packet series") WaveletSeries(true);
  else if (title == "Wavelet transform") WaveletTransform(false);
  else if (title == "Wavelet packet transform") WaveletTransform(true);
  else if (title == "Denoise" && !denoising_) DenoiseImage();
}

bool Graph2Form::WaveletChecks(int& graph, wavelet::WaveletChoice& choice, int& levels) {
  graph = graphNumber_("WavGraph", graphCount_, AnyBadNumber(3));
  if (graph < 0) return false;
  int family = 0;
  if (controls_["WavTypeDaub"].value) family = 1;
  else if (controls_["WavTypeCoif"].value) family = 3;
  else if (controls_["WavTypeHaar"].value) family = 2;
  else if (controls_["WavTypeOther"].value) family = 4;
  bool failed = false;
  const double l = family == 0 ? 0.0 : Value(controls_.Text("wavlevels"), failed);
  const int message = wavelet::CheckWaveletChoice(
      family, failed ? 0.0 : l, log2N_, controls_["chkSymDaub"].value != 0,
      [&] {
        bool bad = false;
        const double order = Value(controls_.Text(family == 1 ? "DaubOrder" : "CoifOrder"), bad);
        return bad ? 0.0 : order;
      },
      controls_.Text("WaveletFilter"), choice, levels);
  if (message != 0) {
    context_.ShowError(message);
    return false;
  }
  return true;
}

void Graph2Form::WaveletTransform(bool packet) {
  int g = 0, levels = 0;
  wavelet::WaveletChoice choice;
  if (!WaveletChecks(g, choice, levels)) return;
  const bool inverse = controls_["chkWavInvTr"].value != 0;
  context_.ShowBusy();
  std::vector<float> x = CopyOfGraph(g);
  const wavelet::MatrixView view{x.data(), Stride()};
  if (inverse) wavelet::InverseTransform2D(choice, packet, n_, view, levels);
  else wavelet::Transform2D(choice, packet, n_, view, levels);
  context_.ShowIdle();
  const std::array<std::string, 9> carried = {"wavlevels",   "DaubOrder",   "CoifOrder",
                                              "WaveletFilter", "WavTypeDaub", "WavTypeCoif",
                                              "WavTypeHaar", "WavTypeOther", "chkSymDaub"};
  const bool symmetric = controls_["chkSymDaub"].value != 0;
  Graph2Form* form = DisplayFunction(n_, x.data(), Stride(), GraphLeft(g), GraphRight(g), GraphStep(g));
  if (!form) return;
  form->SetLinRegValue(inverse ? n_ : n_ >> levels, form->graphCount_ - 1);
  if (form != this) {
    // A new form is prepared for the way back: the same wavelet, and
    // "Inverse" ticked after a forward transform.
    for (const std::string& name : carried) {
      form->controls_[name].value = controls_[name].value;
      form->controls_[name].text = controls_[name].text;
    }
    form->controls_["chkWavInvTr"].value = inverse ? 0 : 1;
    form->RunHandler(packet ? "mnuWaveletPacketTransform" : "mnuWaveletTransform");
  }
  if (symmetric) form->controls_["chkSymDaub"].value = 1;
  form->Touch();
}

bool Graph2Form::ReadThresholds(int levels, wavelet::Threshold2DSetup& s, std::string& text) {
  const auto fields = QuantFields(quantParams_[0]);
  text = fields[1];
  for (char& c : text)
    if (c == ',') c = ':';
  const bool multiple = fields[0] == "1";
  s.quantize = fields[2] == "Q";
  s.signBit = fields[4] == "B";
  s.map = fields[5] == "S";
  s.trendSide = n_ >> levels;
  bool failed = false;
  if (multiple) {
    const std::size_t colon = text.find(':');
    const std::string first = text.substr(0, colon);
    const std::string second = colon == std::string::npos ? "" : text.substr(colon + 1);
    bool failed2 = false;
    s.first = Value(first, failed);
    s.second = Value(second, failed2);
    if (failed || failed2 || !(s.first >= 0) || !(s.second >= 0)) {
      context_.ShowError(19);
      return false;
    }
  } else {
    s.first = Value(text, failed);
    s.second = -1.0;
    if (failed || !(s.first >= 0 && s.first <= 1)) {
      context_.ShowError(19);
      return false;
    }
  }
  if (s.quantize && (s.first == 0 || s.second == 0)) {
    context_.ShowError(35);
    return false;
  }
  return true;
}

void Graph2Form::WaveletSeries(bool packet) {
  controls_.SetText("WavReport", "");
  int g = 0, levels = 0;
  wavelet::WaveletChoice choice;
  if (!WaveletChecks(g, choice, levels)) return;
  wavelet::Threshold2DSetup setup;
  std::string text;
  if (!ReadThresholds(levels, setup, text)) return;
  context_.ShowBusy();
  std::vector<float> x = CopyOfGraph(g);
  const wavelet::MatrixView view{x.data(), Stride()};
  wavelet::Transform2D(choice, packet, n_, view, levels);
  wavelet::Threshold2DResult r = wavelet::ApplyThresholds2D(n_, view, setup);
  wavelet::InverseTransform2D(choice, packet, n_, view, levels);
  context_.ShowIdle();
  const double area = static_cast<double>(n_) * n_;
  const std::string percent = FormatDecimals(100.0 * r.count / area, 1);
  std::string report = std::to_string(r.count);
  if (setup.quantize) {
    report += " coefficients used,\r\n" + percent + "%.\r\n" + (setup.second >= 0 ? "Thresholds: " : "Threshold: ") +
              text + "\r\nBits per pixel: " + FormatDecimals(r.bitsPerPixel, 2);
  } else {
    report += " coefficients used.\r\n" + percent + "% out of possible " + std::to_string(n_ * n_) + ".";
  }
  controls_.SetText("WavReport", report);
  if (!setup.map) {
    DisplayFunction(n_, x.data(), Stride(), GraphLeft(g), GraphRight(g), GraphStep(g));
    return;
  }
  Graph2Form* form = DisplayTwoGraphs(n_, x.data(), r.map.data(), Stride(), GraphLeft(g), GraphRight(g), GraphStep(g));
  if (form) form->SetGrColorMethod(form->graphCount_ - 1, setup.signBit ? kGrey : kColor);
}

void Graph2Form::SetQuantizationParameters() {
  FillQuantizationControls(controls_, quantParams_);
  ShowPanel(kPanelQuantization);
  Touch();
}

void Graph2Form::TransferInfo() { quantParams_ = QuantizationStrings(controls_); }

// ------------------------------------------------------------ convolution

void Graph2Form::OpenConvolve(const SideBoxCommand& box) {
  controls_.SetText("LabConvolve", box.topic);
  controls_.SetVisible("ConvGr2", std::string(box.topic) != kConvolveTitles[1]);
  Touch();
}

void Graph2Form::PerformConvolution() {
  if (!PowerOfTwoGrid()) return;
  const std::string& title = controls_.Text("LabConvolve");
  const bool autocorrelation = title == kConvolveTitles[1];
  const bool pair = title == kConvolveTitles[2];
  const int first = graphNumber_("ConvGr1", graphCount_, AnyBadNumber(pair ? 0 : 3));
  if (first < 0) return;
  const int second = autocorrelation ? first : graphNumber_("ConvGr2", graphCount_, AnyBadNumber(pair ? 0 : 3));
  if (second < 0) return;
  const float width = GraphRight(first) - GraphLeft(first);
  const fourier::Plane f{const_cast<float*>(store_.Row(first)), Stride()};
  const fourier::Plane h{const_cast<float*>(store_.Row(second)), Stride()};
  double divisor = 1.0;
  std::vector<float> out;
  if (autocorrelation) {
    const double sum = fourier::SumOfSquares2D(n_, f);
    if (sum == 0.0) {
      context_.Beep();
      return;
    }
    context_.ShowBusy();
    fourier::AutoCorrelation2D(n_, width, f, out, Stride());
    if (controls_["ConvChk(1)"].value) divisor = sum;
  } else {
    context_.ShowBusy();
    fourier::Convolution2D(n_, width, f, h, pair, out, Stride());
    if (pair && controls_["ConvChk(1)"].value) {
      const auto norm = [&](const fourier::Plane& p) {
        const double s = fourier::SumOfSquares2D(n_, p);
        return s > 0 ? std::sqrt(s) : 1.0;
      };
      divisor = norm(f) * norm(h);
    }
  }
  if (controls_["ConvChk(0)"].value) {
    const float area = width * width;
    for (float& v : out) v /= area;
  }
  if (divisor != 1.0)
    for (float& v : out) v = static_cast<float>(v / divisor);
  context_.ShowIdle();
  DisplayFunction(n_, out.data(), Stride(), GraphLeft(first), GraphRight(first), GraphStep(first));
}

// -------------------------------------------------------------- filtering

void Graph2Form::OpenFiltering(const SideBoxCommand&) { Touch(); }

void Graph2Form::PerformFiltering() {
  if (!PowerOfTwoGrid()) return;
  const bool complexData = controls_["OpFData(1)"].value != 0;
  const bool complexFilter = controls_["OpFilter(1)"].value != 0;
  // The graphs: one number for real, real and imaginary numbers for complex.
  const auto pick = [&](const char* field, bool complex, int& re, int& im, int message) {
    re = graphNumber_(IndexedName(field, complex ? 1 : 0), graphCount_, AnyBadNumber(message));
    if (re < 0) return false;
    im = complex ? graphNumber_(IndexedName(field, 2), graphCount_, AnyBadNumber(message)) : -1;
    return !complex || im >= 0;
  };
  int dataRe = 0, dataIm = 0, filtRe = 0, filtIm = 0;
  if (!pick("FDataNum", complexData, dataRe, dataIm, complexData ? 27 : 25)) return;
  if (!pick("FiltNum", complexFilter, filtRe, filtIm, complexFilter ? 28 : 26)) return;
  const std::size_t size = Stride() * static_cast<std::size_t>(n_ + 1);
  std::vector<float> re(size, 0.0f), im(size, 0.0f);
  const float* a = store_.Row(dataRe);
  const float* b = complexData ? store_.Row(dataIm) : nullptr;
  const float* c = store_.Row(filtRe);
  const float* d = complexFilter ? store_.Row(filtIm) : nullptr;
  for (int i = 0; i <= n_; ++i)
    for (int j = 0; j <= n_; ++j) {
      const std::size_t k = static_cast<std::size_t>(i) * Stride() + static_cast<std::size_t>(j);
      const float p = a[k], q = b ? b[k] : 0.0f, r = c[k], s = d ? d[k] : 0.0f;
      re[k] = p * r - q * s;
      im[k] = p * s + q * r;
    }
  if (!complexData && !complexFilter)
    DisplayFunction(n_, re.data(), Stride(), GraphLeft(dataRe), GraphRight(dataRe), GraphStep(dataRe));
  else
    DisplayTwoGraphs(n_, re.data(), im.data(), Stride(), GraphLeft(dataRe), GraphRight(dataRe), GraphStep(dataRe));
}

}  // namespace keldo::form2d
