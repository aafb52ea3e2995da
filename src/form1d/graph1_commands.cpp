// The side box of the one-dimensional form and the flow of its commands: a
// menu item opens a panel, the panel's Go button runs the command.

#include <algorithm>

#include "kit/focus.h"
#include "kit/form_context.h"
#include "kit/measuring_box.h"
#include "kit/print_box.h"
#include "kit/quantization_box.h"
#include "common/number_text.h"
#include "form1d/graph1_form.h"

namespace keldo::form1d {
namespace {

// The words the quick help box of a limited field shows.
struct QuickHelpRow {
  const char* field;
  const char* words;
};

constexpr QuickHelpRow kQuickHelp[] = {
    {"EnerPerc", "The energy fraction"},
    {"HighestMag", "The number of coefficients"},
    {"wavlevels", "The number of levels"},
    {"WavSerLev", "The number of levels"},
    {"WSerNumTerms", "WSerNumTerms"},
};

constexpr const char* kDisplayOptions[7] = {"Graph paper", "Axes", "Blank", "Lines", "Dots", "White", "Black"};
constexpr const char* kMoveCaptions[7] = {"|<", "<<", "<", "o", ">", ">>", ">|"};
constexpr const char* kMoveTips[7] = {"Far left",  "Move left while held",  "One step left", "Centre",
                                      "One step right", "Move right while held", "Far right"};

Control& AddButton(ControlModel& c, const std::string& name, const std::string& caption, const std::string& tip) {
  Control& b = c.Add(name, ControlKind::Button, caption);
  b.tip = tip;
  return b;
}

}  // namespace

void Graph1Form::BuildSideBoxControls() {
  for (int k = 0; k < kPanelCount; ++k) controls_.Add(IndexedName("PicSideBox", k), ControlKind::Panel).visible = false;
  formulaBox_.AddControls();
  for (int k = 0; k < 10; ++k) controls_.Add(IndexedName("AxisLab", k), ControlKind::Label);
  for (const char* name : {"XLeft", "XRight", "YLeft", "YRight"}) controls_.Add(name, ControlKind::Text);
  controls_.Add("EnerPerc", ControlKind::Text, "");
  controls_.Add("TxtAnGr1", ControlKind::Text, "1").tip = "The number of the graph, counted from 1.";
  // Display style.
  controls_.Add("txtXinterval", ControlKind::Text).tip = "Left and right ends of the window, comma-separated.";
  controls_.Add("txtYinterval", ControlKind::Text).tip = "Bottom and top of the window, comma-separated.";
  // Graph paper, dots and black to begin with.
  for (int k = 0; k < 7; ++k)
    controls_.AddOption(IndexedName("OpDispStyle", k), kDisplayOptions[k],
                        k < 3 ? "OpDispGrid" : k < 5 ? "OpDispLine" : "OpDispBack", k == 0 || k == 4 || k == 6);
  AddButton(controls_, "GoButton(8)", "Apply", "Redraws the graphs in the style and window chosen.");
  AddButton(controls_, "GoButton(5)", "&Apply", "Applies the command to the graph.");
  // Calculator and remarks.
  controls_.Add("CalcFormula", ControlKind::Text).tip = "A formula of numbers, as in a formula field.";
  AddButton(controls_, "GoButton(6)", "&Compute", "Computes the value of the formula.");
  for (int k = 0; k < 3; ++k) controls_.Add(IndexedName("Remarks", k), ControlKind::Text);
  // Trace.
  for (int k = 0; k < 5; ++k) {
    controls_.Add(IndexedName("FrTrace", k), ControlKind::Label, "Graph " + std::to_string(k + 1)).visible = false;
    controls_.Add(IndexedName("LabTr", k), ControlKind::Label);
  }
  for (int k = 0; k < 7; ++k) AddButton(controls_, IndexedName("cmdMove", k), kMoveCaptions[k], kMoveTips[k]);
  // The print box, whose settings a form file keeps, and the form print dialog.
  AddPrintGraphControls(controls_);
  AddPrintFormControls(controls_);
}

void Graph1Form::BindCommands() {
  AddCommonFileHandlers();
  BuildFourierControls();
  BuildSeriesControls();
  BuildFilteringControls();
  BuildWaveletControls();
  BuildAnalysisControls();
  BuildSoundControls();
  BindSideBoxes(*this, SideBoxTable(), kPanelCount);
  BindButtons();
  OnMenu("mnuPasteGraph", [this](int) { PasteTheGraph(); });
  OnMenu("mnuPasteFromClipboard", [this](int) { PasteFromTheClipboard(); });
  OnMenu("mnuZoom", [this](int) { ZoomEnlarge(1); });
  OnMenu("mnuEnlarge", [this](int) { ZoomEnlarge(2); });
  OnMenu("mnuDisplayCursorCoordinates", [this](int) {
    Control& item = controls_["mnuDisplayCursorCoordinates"];
    item.value = item.value ? 0 : 1;
    if (!item.value) trace_.ClearReadout();
  });
  OnMenu("mnuEraseScreen", [this](int) { ClearGraphs(); });
  OnMenu("mnuClearSideBox", [this](int) { ClearSideBox(); });
  OnMenu("mnuOpenSave(0)", [this](int) { OpenTheForm(); });
  OnMenu("mnuOpenSave(2)", [this](int) { LoadTheGraph(1); });
  OnMenu("mnuLoadGraph", [this](int) { LoadTheGraph(1); });
  OnMenu("mnuOpenSave(3)", [this](int) { SaveTheForm(0); });
  OnMenu("mnuOpenSave(4)", [this](int) { SaveTheForm(1); });
  OnMenu("mnuKELDOHelp", [this](int) { context_.GetHelp("KELDOX.HLP", ""); });
  OnMenu("mnuHelpSideBox", [this](int) {
    const std::string& caption = controls_.Text("mnuHelpSideBox");
    context_.GetHelp("KELDOX.HLP", caption.size() > 9 ? caption.substr(9) : "");
  });
  for (int n = kMinPoints; n <= kMaxPoints; n *= 2) OnMenu("mnu" + std::to_string(n), [this, n](int) { SetPoints(n); });
}

// ------------------------------------------------------------- side box

std::span<const SideBoxRow<Graph1Form>> Graph1Form::SideBoxTable() {
  using G = Graph1Form;
  // Rows that share a key open the same box again; the first one is restored.
  static const SideBoxRow<G> kRows[] = {
      {{"mnuPlotGraph", "Graph", "Graphing", kPanelGraph, 0}, nullptr, &G::PlotTheGraph},
      {{"mnuFourierSeries", "FSer", "Fourier series", kPanelSeries, 1}, &G::OpenSeries, &G::SeriesGo},
      {{"mnuSineSeries", "SineSer", "Sine series", kPanelSeries, 1}, &G::OpenSeries, &G::SeriesGo},
      {{"mnuCosineSeries", "CSer", "Cosine series", kPanelSeries, 1}, &G::OpenSeries, &G::SeriesGo},
      {{"mnuFourierTransform", "FTran", "Fourier transform", kPanelFourierTransform, 2}, &G::OpenFourierTransform,
       &G::FourierTransform},
      {{"mnuSineTransform", "STran", "Sine transform", kPanelTrigTransform, 3}, &G::OpenTrigTransform, &G::TrigGo},
      {{"mnuCosineTransform", "CTran", "Cosine transform", kPanelTrigTransform, 3}, &G::OpenTrigTransform,
       &G::TrigGo},
      {{"mnuConvolution", "Conv", "Convolution", kPanelConvolve, 4}, &G::OpenConvolve, &G::ConvolveGo},
      {{"mnuAutocorrelation", "AutoCor", "Autocorrelation", kPanelConvolve, 4}, &G::OpenConvolve, &G::ConvolveGo},
      {{"mnuPaircorrelation", "PairCorr", "Pair correlation", kPanelConvolve, 4}, &G::OpenConvolve, &G::ConvolveGo},
      {{"mnuWaveletSeries", "WSer", "Wavelet series", kPanelWavelet, 7}, &G::OpenWavelet, &G::WaveletGo},
      {{"mnuWaveletPacketSeries", "WPSer", "Wavelet packet series", kPanelWavelet, 7}, &G::OpenWavelet,
       &G::WaveletGo},
      {{"mnuWaveletTransform", "WTran", "Wavelet transform", kPanelWavelet, 7}, &G::OpenWavelet, &G::WaveletGo},
      {{"mnuWaveletPacketTransform", "WPTran", "Wavelet packet transform", kPanelWavelet, 7}, &G::OpenWavelet,
       &G::WaveletGo},
      {{"mnuFiltering", "Filter", "Filtering", kPanelFiltering, 9}, &G::OpenFiltering, &G::Filtering},
      {{"mnuNorm", "Norm", "Norm", kPanelAnalysis, 5}, &G::OpenMeasure, &G::PerformAnalysis},
      {{"mnuNormDifference", "NormDiff", "Norm difference", kPanelAnalysis, 5}, &G::OpenMeasure, &G::PerformAnalysis},
      {{"mnuIntegral", "Integral", "Integral", kPanelAnalysis, 5}, &G::OpenMeasure, &G::PerformAnalysis},
      {{"mnuDerivative", "Deriv", "Derivative", kPanelAnalysis, 5}, &G::OpenMeasure, &G::PerformAnalysis},
      {{"mnuScalarProduct", "ScProd", "Scalar product", kPanelAnalysis, 5}, &G::OpenMeasure, &G::PerformAnalysis},
      {{"mnuCalculator", "Calc", "Calculator", kPanelCalculator, 6}, nullptr, &G::Calculate},
      {{"mnuQuantize(0)", "QuantBit", "Quantize (8-bit)", kPanelAnalysis, 5}, &G::OpenAnalysis, &G::PerformAnalysis},
      {{"mnuQuantize(1)", "QuantBit", "Quantize (16-bit)", kPanelAnalysis, 5}, &G::OpenAnalysis, &G::PerformAnalysis},
      {{"mnuQuantize(3)", "DenoiseWavelet", "Denoise (Wavelet)", kPanelWavelet, 7}, &G::OpenWavelet, &G::WaveletGo},
      {{"mnuQuantize(4)", "MedianDenoise", "Median denoise", kPanelAnalysis, 5}, &G::OpenAnalysis,
       &G::PerformAnalysis},
      {{"mnuQuantize(5)", "AdaptiveMedianDenoise", "Adaptive median denoise", kPanelAnalysis, 5}, &G::OpenAnalysis,
       &G::PerformAnalysis},
      {{"mnuDownSample", "DownSamp", "Down sample", kPanelAnalysis, 5}, &G::OpenAnalysis, &G::PerformAnalysis},
      {{"mnuAudioPlay", "AudioPlay", "Audio", kPanelAudio, -1}, &G::OpenAudio, nullptr},
      {{"mnuRemarks", "Rem", "Remarks", kPanelRemarks, -1}, nullptr, nullptr},
      {{"mnuRemoveGraph", "", "Remove graph", kPanelAnalysis, 5}, &G::OpenAnalysis, &G::PerformAnalysis},
      {{"mnuPopUpRemoveGraph", "", "Remove graph", kPanelAnalysis, 5}, &G::OpenAnalysis, &G::PerformAnalysis},
      {{"mnuClip", "", "Clip graph", kPanelAnalysis, 5}, &G::OpenAnalysis, &G::PerformAnalysis},
      {{"mnuCopyGraph", "", "Copy graph", kPanelAnalysis, 5}, &G::OpenAnalysis, &G::PerformAnalysis},
      {{"mnuCopyToClipboard", "", "Copy graph to clipboard", kPanelAnalysis, 5}, &G::OpenAnalysis,
       &G::PerformAnalysis},
      {{"mnuOpenSave(5)", "", "Save graph", kPanelAnalysis, 5}, &G::OpenAnalysis, &G::PerformAnalysis},
      {{"mnuSaveGraphFile", "", "Save graph", kPanelAnalysis, 5}, &G::OpenAnalysis, &G::PerformAnalysis},
      {{"mnuOpenSave(6)", "", "Save sound file", kPanelAnalysis, 5}, &G::OpenAnalysis, &G::PerformAnalysis},
      {{"mnuSaveSoundFile", "", "Save sound file", kPanelAnalysis, 5}, &G::OpenAnalysis, &G::PerformAnalysis},
      {{"mnuHistogram", "", "Histogram", kPanelAnalysis, 5}, &G::OpenAnalysis, &G::PerformAnalysis},
      {{"mnuHistogramPoPup", "", "Histogram", kPanelAnalysis, 5}, &G::OpenAnalysis, &G::PerformAnalysis},
      {{"mnuEnergyAnalysis", "", "Energy graph", kPanelAnalysis, 5}, &G::OpenAnalysis, &G::PerformAnalysis},
      {{"mnuEnergyGraph", "", "Energy graph", kPanelAnalysis, 5}, &G::OpenAnalysis, &G::PerformAnalysis},
      {{"mnuArrangeDecrMags", "", "Sort magnitudes", kPanelAnalysis, 5}, &G::OpenAnalysis, &G::PerformAnalysis},
      {{"mnuArrangeDecrMag", "", "Sort magnitudes", kPanelAnalysis, 5}, &G::OpenAnalysis, &G::PerformAnalysis},
      {{"mnuStatistics", "", "Statistics", kPanelInterpolate, 11}, &G::OpenStatistics, &G::InterpolateGo},
      {{"mnuSpectrogram", "", "Spectrogram", kPanelInterpolate, 11}, &G::OpenInterpolate, &G::InterpolateGo},
      {{"mnuQuantize(2)", "", "Denoise (Gabor)", kPanelInterpolate, 11}, &G::OpenInterpolate, &G::InterpolateGo},
      {{"mnuScalogram", "", "Scalogram", kPanelInterpolate, 11}, &G::OpenInterpolate, &G::InterpolateGo},
      {{"mnuInterpolateMethod(0)", "", "Haar Interpolate", kPanelInterpolate, 11}, &G::OpenInterpolate,
       &G::InterpolateGo},
      {{"mnuInterpolateMethod(1)", "", "D-D 4,2 Interpolate", kPanelInterpolate, 11}, &G::OpenInterpolate,
       &G::InterpolateGo},
      {{"mnuWindow2", "", "Display style", kPanelDisplayStyle, 8}, &G::OpenDisplayStyle, &G::ResetDisplay},
      {{"mnuDisplayStyle", "", "Display style", kPanelDisplayStyle, 8}, &G::OpenDisplayStyle, &G::ResetDisplay},
      {{"mnuTrace", "", "Trace", kPanelTrace, -1}, &G::OpenTrace, nullptr},
      {{"mnuPrintGraph", kPrintGraphKey, kPrintGraphTopic, kPanelPrint, -1}, nullptr, nullptr},
      {{"mnuPrintGraphs", kPrintGraphKey, kPrintGraphTopic, kPanelPrint, -1}, nullptr, nullptr},
      {{"mnuPrintForm", "", "Print form", kPanelPrintForm, -1}, &G::OpenPrintForm, nullptr},
  };
  return kRows;
}

void Graph1Form::BindButtons() {
  OnButton("GoButton(10)", [this](int) { SetQuantizationParameters(); });
  OnButton("cmdApply", [this](int) {
    TransferInfo();
    ShowPanel(kPanelWavelet);
  });
  // Cancel closes the form print dialog when it is the box shown, else the
  // quantization settings.
  OnButton("cmdCancel", [this](int) {
    if (VisiblePanel() == kPanelPrintForm) PressPrintFormButton("cmdCancel");
    else ShowPanel(kPanelWavelet);
  });
  OnButton("cmdPrnt", [this](int index) { Printing().PressPrintButton(*this, 0, index, kGraphPrintBox); });
  for (const char* name : {"cmdPrint", "cmdPrintAndEject", "cmdEject"})
    OnButton(name, [this, name](int) { PressPrintFormButton(name); });
  OnButton("cmdFormula", [this](int index) { formulaBox_.Press(index); });
  OnButton("cmdMove", [this](int index) {
    if (graphCount_ == 0) return;
    switch (index) {
      case 0: SetTraceValue(0); break;
      case 1: case 2: MoveCrossHairLeft(); break;
      case 3: SetTraceValue(n_ / 2); break;
      case 4: case 5: MoveCrossHairRight(); break;
      case 6: SetTraceValue(n_); break;
      default: break;
    }
  });
}

// ------------------------------------------------------------- side box

void Graph1Form::SetupSideBox() {
  for (int k = 0; k < kPanelCount; ++k) controls_.SetVisible(IndexedName("PicSideBox", k), false);
  ForgetSideBox();
  controls_.SetVisible("mnuHelpSideBox", false);
}

void Graph1Form::InitializeSideBox() {
  controls_.SetVisible("PicSideBox(0)", true);
  controls_.SetEnabled("GoButton(0)", false);
  formulaBox_.Enable(false);
  for (int k = 1; k < kPanelCount; ++k) controls_.SetVisible(IndexedName("PicSideBox", k), false);
  const std::string key = SideBoxKey();
  ForgetSideBox();
  SetSideBoxKey(key);
}

void Graph1Form::ClearSideBox() {
  InitializeSideBox();
  ForgetSideBox();
  controls_.SetVisible("mnuHelpSideBox", false);
  controls_.SetVisible("PicSideBox(0)", false);
  Touch();
}

void Graph1Form::SideBoxOpening(int panel) {
  InitializeSideBox();
  if (panel == kPanelGraph) {
    controls_.SetEnabled("GoButton(0)", true);
    formulaBox_.Enable(true);
    RequestFocus(controls_, "Formula");
  }
}

void Graph1Form::OpenAnalysis(const SideBoxCommand& box) {
  const std::string title = box.topic;
  controls_.SetText("AnalysisLabel", title);
  PresetGraphNumber();
  // The fields each command reads.
  ShowMeasuringFields(controls_, title, kMeasuringBox);
  const bool histogram = title == "Histogram";
  controls_.SetVisible("ComboQuantLevel", histogram);
  controls_.SetVisible("chkHistGram(0)", histogram);
  controls_.SetVisible("chkHistGram(1)", histogram);
  controls_.SetVisible("chkEPerc", title == "Energy graph");
}

void Graph1Form::OpenMeasure(const SideBoxCommand& box) {
  OpenAnalysis(box);
  controls_.SetText("AnalysisText", "");
}

void Graph1Form::PerformAnalysis() {
  const std::string& title = controls_.Text("AnalysisLabel");
  if (PerformMeasurement(title)) return;
  if (title == "Remove graph") RemoveTheGraph();
  else if (title == "Copy graph") CopyTheGraph();
  else if (title == "Copy graph to clipboard") CopyTheGraphToClipboard();
  else if (title == "Clip graph") ClipTheGraph();
  else if (title == "Save graph") SaveTheGraph();
  else if (title == "Save sound file") SaveTheSoundFile();
  else if (title == "Down sample") DownsampleCommand();
  else if (title == "Median denoise") MedianCommand(false);
  else if (title == "Adaptive median denoise") MedianCommand(true);
}

void Graph1Form::Calculate() {
  std::string text = controls_.Text("CalcFormula");
  const double value = VALU(text);
  if (text == "N!N") {
    formula_.valueFault = 0;
    context_.ShowError(52);
    return;
  }
  controls_.SetText("Remarks(2)", PlainNumber(value));
  Touch();
}

void Graph1Form::SetRemarks(const std::string& text) {
  controls_.SetText("Remarks(0)", text);
  Touch();
}

void Graph1Form::OpenTrace(const SideBoxCommand&) {
  try {
    InitializeTrace();
    UpDateTrace();
  } catch (...) {
    context_.ShowError(54);
  }
}

bool Graph1Form::FieldHelp(const std::string& name) {
  for (const QuickHelpRow& row : kQuickHelp) {
    if (name != row.field) continue;
    const std::string& topic = controls_.Text("mnuHelpSideBox");
    context_.QuickHelp(row.words, controls_[name].tip, "KELDOX.HLP", topic.size() > 9 ? topic.substr(9) : "");
    return true;
  }
  return false;
}

void Graph1Form::FormulaHelp(const std::string& selected) {
  context_.GetHelp("KELDOX.HLP", selected.empty() ? "One-dimensional formulas" : selected);
  RequestFocus(controls_, "Formula");
}

// ------------------------------------------------------------ Go and buttons

bool Graph1Form::IsStopButton(int k) const { return (k == 0 && plotting_) || (k == 7 && denoising_); }

bool Graph1Form::StopWork() {
  if (plotting_) {
    PlotTheGraph();  // the Stop of a running plot
    return true;
  }
  if (denoising_) {
    denoising_ = false;  // Stop during an averaged denoise
    return true;
  }
  return false;
}

void Graph1Form::TrigGo() { FourierTrigTransform(controls_.Text("LabFTrigTran") == "Sine transform" ? 5 : 6); }

void Graph1Form::OpenFourierTransform(const SideBoxCommand&) { PresetGraphField("FTGraph"); }

void Graph1Form::OpenTrigTransform(const SideBoxCommand& box) {
  controls_.SetText("LabFTrigTran", box.topic);
  PresetGraphField("GraphFTrigTran");
}

bool Graph1Form::QueryClose() {
  if (plotting_ || denoising_) {
    context_.Beep();
    return false;
  }
  // Closing shuts the 8-bit sound control.
  if (context_.services().audio->IsPlaying()) StopSound();
  return true;
}

void Graph1Form::ControlChanged(const std::string& name) {
  if (QuantizationControlChanged(controls_, name)) return;
  if (name == "FreqFilter") SetFilterParameters();
  if (name == "chkSymDaub")
    controls_["DaubOrder"].tip =
        controls_["chkSymDaub"].value ? "Even integer between 8 and 20." : "Even integer between 4 and 20.";
}

void Graph1Form::Activated() {
  formulaBox_.Initialize();
  if (controls_["GoButton(0)"].enabled) RequestFocus(controls_, "Formula");
  EnableCommand("mnuPasteGraph", context_.exchange().oneDimensional.holdsGraph);
  Touch();
}

}  // namespace keldo::form1d
