// The side box of the one-dimensional form and the flow of its commands: a
// menu item opens a panel, the panel's Go button runs the command.

#include <algorithm>

#include "kit/form_context.h"
#include "common/number_text.h"
#include "form1d/graph1_form.h"

namespace keldo::form1d {
namespace {

// The stored side box key and the menu item that opens that box again.
struct SideBoxKeyRow {
  const char* key;
  const char* menuItem;
};

constexpr SideBoxKeyRow kSideBoxKeys[] = {
    {"Graph", "mnuPlotGraph"},
    {"FSer", "mnuFourierSeries"},
    {"SineSer", "mnuSineSeries"},
    {"CSer", "mnuCosineSeries"},
    {"FTran", "mnuFourierTransform"},
    {"STran", "mnuSineTransform"},
    {"CTran", "mnuCosineTransform"},
    {"Conv", "mnuConvolution"},
    {"AutoCor", "mnuAutocorrelation"},
    {"PairCorr", "mnuPaircorrelation"},
    {"WSer", "mnuWaveletSeries"},
    {"WPSer", "mnuWaveletPacketSeries"},
    {"WTran", "mnuWaveletTransform"},
    {"WPTran", "mnuWaveletPacketTransform"},
    {"Filter", "mnuFiltering"},
    {"Norm", "mnuNorm"},
    {"NormDiff", "mnuNormDifference"},
    {"Integral", "mnuIntegral"},
    {"Deriv", "mnuDerivative"},
    {"ScProd", "mnuScalarProduct"},
    {"Calc", "mnuCalculator"},
    {"QuantBit", "mnuQuantize(0)"},
    {"DenoiseWavelet", "mnuQuantize(3)"},
    {"MedianDenoise", "mnuQuantize(4)"},
    {"AdaptiveMedianDenoise", "mnuQuantize(5)"},
    {"DownSamp", "mnuDownSample"},
    {"AudioPlay", "mnuAudioPlay"},
    {"Rem", "mnuRemarks"},
    {"PrGr", "mnuPrintGraph"},
};

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
constexpr const char* kFormulaCaptions[5] = {"Previous", "Next", "Load", "Save", "Help"};
constexpr const char* kFormulaTips[5] = {"Previous formula", "Next formula", "Load a formula file (*.uf1)",
                                         "Save the formula to a file (*.uf1)", "Help on one-dimensional formulas"};

Control& AddButton(ControlModel& c, const std::string& name, const std::string& caption, const std::string& tip) {
  Control& b = c.Add(name, ControlKind::Button, caption);
  b.tip = tip;
  return b;
}

}  // namespace

void Graph1Form::BuildSideBoxControls() {
  for (int k = 0; k < kPanelCount; ++k) controls_.Add(IndexedName("PicSideBox", k), ControlKind::Panel).visible = false;
  for (int k = 0; k < 5; ++k)
    AddButton(controls_, IndexedName("cmdFormula", k), kFormulaCaptions[k], kFormulaTips[k]).enabled = false;
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
  // The print settings a form file keeps.
  controls_.Add("PrinterSpecs", ControlKind::Text, "(A), Medium, top, left");
  const char* printLabels[3] = {"Caption", "Lower Labels", "Right labels"};
  for (int k = 0; k < 3; ++k) controls_.Add(IndexedName("chkPrLab", k), ControlKind::Check, printLabels[k]).value = 1;
  controls_.AddOption("MonoOrColor(0)", "Color", "MonoOrColor", true);
  controls_.AddOption("MonoOrColor(1)", "Monochrome ", "MonoOrColor");
}

void Graph1Form::BindCommands() {
  AddCommonFileHandlers();
  BuildFourierControls();
  BuildSeriesControls();
  BuildFilteringControls();
  BuildWaveletControls();
  BuildAnalysisControls();
  BuildSoundControls();
  OnMenu("mnuPlotGraph", [this](int) { OpenSideBox("Graph", "Graphing", 0, kPanelGraph); });
  OnMenu("mnuRemoveGraph", [this](int) { SetAnalysisForm("Remove graph"); });
  OnMenu("mnuPopUpRemoveGraph", [this](int) { SetAnalysisForm("Remove graph"); });
  OnMenu("mnuClip", [this](int) { SetAnalysisForm("Clip graph"); });
  OnMenu("mnuCopyGraph", [this](int) { SetAnalysisForm("Copy graph"); });
  OnMenu("mnuCopyToClipboard", [this](int) { SetAnalysisForm("Copy graph to clipboard"); });
  OnMenu("mnuOpenSave(5)", [this](int) { SetAnalysisForm("Save graph"); });
  OnMenu("mnuSaveGraphFile", [this](int) { SetAnalysisForm("Save graph"); });
  OnMenu("mnuPasteGraph", [this](int) { PasteTheGraph(); });
  OnMenu("mnuPasteFromClipboard", [this](int) { PasteFromTheClipboard(); });
  OnMenu("mnuZoom", [this](int) { ZoomEnlarge(1); });
  OnMenu("mnuEnlarge", [this](int) { ZoomEnlarge(2); });
  OnMenu("mnuWindow2", [this](int) { DisplayStyleBox(); });
  OnMenu("mnuDisplayStyle", [this](int) { DisplayStyleBox(); });
  OnMenu("mnuDisplayCursorCoordinates", [this](int) {
    Control& item = controls_["mnuDisplayCursorCoordinates"];
    item.value = item.value ? 0 : 1;
    if (!item.value) cursorText_.clear();
  });
  OnMenu("mnuTrace", [this](int) { TraceBox(); });
  OnMenu("mnuRemarks", [this](int) { Remarks(); });
  OnMenu("mnuCalculator", [this](int) { CalculatorBox(); });
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

void Graph1Form::SetupSideBox() {
  for (int k = 0; k < kPanelCount; ++k) controls_.SetVisible(IndexedName("PicSideBox", k), false);
  sideBoxKey_.clear();
  goIndex_ = -1;
  controls_.SetVisible("mnuHelpSideBox", false);
}

void Graph1Form::InitializeSideBox() {
  controls_.SetVisible("PicSideBox(0)", true);
  controls_.SetEnabled("GoButton(0)", false);
  for (int k : {2, 3, 0, 1, 4}) controls_.SetEnabled(IndexedName("cmdFormula", k), false);
  for (int k = 1; k < kPanelCount; ++k) controls_.SetVisible(IndexedName("PicSideBox", k), false);
  goIndex_ = -1;
}

void Graph1Form::ClearSideBox() {
  InitializeSideBox();
  sideBoxKey_.clear();
  controls_.SetVisible("mnuHelpSideBox", false);
  controls_.SetVisible("PicSideBox(0)", false);
  Touch();
}

void Graph1Form::RestoreSideBox() {
  for (const SideBoxKeyRow& row : kSideBoxKeys) {
    if (sideBoxKey_ != row.key) continue;
    // The handler runs whatever the item's state, as the load calls it.
    if (CommandBuilt(row.menuItem)) RunHandler(row.menuItem);
    return;
  }
}

void Graph1Form::SetSideBoxHelp(const std::string& topic) {
  controls_.SetText("mnuHelpSideBox", "Help for " + topic);
  controls_.SetVisible("mnuHelpSideBox", true);
}

void Graph1Form::ShowPanel(int panel) {
  for (int k = 0; k < kPanelCount; ++k) controls_.SetVisible(IndexedName("PicSideBox", k), k == panel);
}

int Graph1Form::VisiblePanel() const {
  for (int k = 0; k < kPanelCount; ++k)
    if (controls_.Find(IndexedName("PicSideBox", k))->visible) return k;
  return -1;
}

void Graph1Form::OpenSideBox(const std::string& key, const std::string& topic, int goIndex, int panel) {
  InitializeSideBox();
  ShowPanel(panel);
  sideBoxKey_ = key;
  goIndex_ = goIndex;
  if (panel == kPanelGraph) {
    controls_.SetEnabled("GoButton(0)", true);
    for (int k = 0; k < 5; ++k) controls_.SetEnabled(IndexedName("cmdFormula", k), true);
  }
  SetSideBoxHelp(topic);
  Touch();
}

void Graph1Form::SetAnalysisForm(const std::string& title) {
  controls_.SetText("AnalysisLabel", title);
  OpenSideBox("", title, 5, kPanelAnalysis);
  PresetGraphNumber();
  // The fields each command reads.
  const bool norm = title == "Norm", difference = title == "Norm difference";
  const bool measured = norm || difference || title == "Integral" || title == "Scalar product";
  controls_.SetVisible("TxtAnGr2", difference || title == "Scalar product");
  for (const char* name : {"OptSupNorm", "OpVarNorm", "OptPowerNorm", "NormPower"})
    controls_.SetVisible(name, norm || difference);
  controls_.SetVisible("ChkNormalized", norm);
  controls_.SetVisible("AbsNorm", difference);
  controls_.SetVisible("RelNorm", difference);
  controls_.SetVisible("AnalysisText", measured);
  const bool histogram = title == "Histogram";
  controls_.SetVisible("ComboQuantLevel", histogram);
  controls_.SetVisible("chkHistGram(0)", histogram);
  controls_.SetVisible("chkHistGram(1)", histogram);
  controls_.SetVisible("chkEPerc", title == "Energy graph");
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

void Graph1Form::CalculatorBox() { OpenSideBox("Calc", "Calculator", 6, kPanelCalculator); }

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

void Graph1Form::Remarks() { OpenSideBox("Rem", "Remarks", -1, kPanelRemarks); }

void Graph1Form::SetRemarks(const std::string& text) {
  controls_.SetText("Remarks(0)", text);
  Touch();
}

void Graph1Form::TraceBox() {
  OpenSideBox("", "Trace", -1, kPanelTrace);
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
}

// ------------------------------------------------------------ Go and buttons

bool Graph1Form::Go() {
  if (plotting_ != 'N') {
    PlotTheGraph();
    return true;
  }
  if (denoising_) {
    denoising_ = false;  // Stop during an averaged denoise
    return true;
  }
  switch (goIndex_) {
    case 0: PlotTheGraph(); return true;
    case 1: {
      const std::string& title = controls_.Text("LblPlotSeries");
      FourierSeries(title == "Sine series" ? 2 : title == "Cosine series" ? 3 : 1);
      return true;
    }
    case 2: FourierTransform(); return true;
    case 3: FourierTrigTransform(controls_.Text("LabFTrigTran") == "Sine transform" ? 5 : 6); return true;
    case 4: {
      const std::string& title = controls_.Text("LabConvolve");
      Convolve(title == "Autocorrelation" ? 2 : title == "Pair correlation" ? 3 : 1);
      return true;
    }
    case 5: PerformAnalysis(); return true;
    case 6: Calculate(); return true;
    case 7: {
      const std::string& title = controls_.Text("labWavelet");
      if (title == "Wavelet series" || title == "Wavelet packet series") WaveletSeries(title != "Wavelet series");
      else if (title == "Denoise (Wavelet)") DenoiseSignal();
      else WaveletTransform(title != "Wavelet transform");
      return true;
    }
    case 8: ResetDisplay(); return true;
    case 9: Filtering(); return true;
    case 10: SetQuantizationParameters(); return true;
    case 11: {
      const std::string& title = controls_.Text("AnalysisLabel");
      if (title == "Statistics") StatisticsCommand();
      else InterpolateCommand(title == "D-D 4,2 Interpolate");
      return true;
    }
    default: return false;
  }
}

bool Graph1Form::Click(const std::string& name) {
  const Control* c = controls_.Find(name);
  if (!c || c->kind != ControlKind::Button) return false;
  if (!c->enabled || !c->visible) return true;
  std::string base;
  int index = -1;
  SplitIndexedName(name, base, index);
  if (name == "GoButton(10)") {
    SetQuantizationParameters();
  } else if (name == "cmdSound(0)") {
    PlayGraph();
  } else if (name == "cmdSound(1)") {
    StopSound();
  } else if (name == "cmdApply" || name == "cmdCancel") {
    if (name == "cmdApply") TransferInfo();
    ShowPanel(kPanelWavelet);
  } else if (base == "GoButton") {
    if (index == goIndex_ || (index == 0 && plotting_ != 'N') || (index == 7 && denoising_)) Go();
  } else if (base == "cmdFormula") {
    switch (index) {
      case 0: PreviousFormula(); break;
      case 1: NextFormula(); break;
      case 2: LoadFormulaFile(); break;
      case 3: SaveFormulaFile(); break;
      case 4: FormulaHelp(""); break;
      default: break;
    }
  } else if (base == "cmdMove" && graphCount_ > 0) {
    switch (index) {
      case 0: SetTraceValue(0); break;
      case 1: case 2: MoveCrossHairLeft(); break;
      case 3: SetTraceValue(n_ / 2); break;
      case 4: case 5: MoveCrossHairRight(); break;
      case 6: SetTraceValue(n_); break;
      default: break;
    }
  }
  Touch();
  return true;
}

bool Graph1Form::QueryClose() {
  if (plotting_ != 'N' || denoising_) {
    context_.Beep();
    return false;
  }
  // Closing shuts the 8-bit sound control.
  if (context_.services().audio->IsPlaying()) StopSound();
  return true;
}

void Graph1Form::ControlChanged(const std::string& name) {
  if (name == "FreqFilter") SetFilterParameters();
  if (name == "chkSymDaub")
    controls_["DaubOrder"].tip =
        controls_["chkSymDaub"].value ? "Even integer between 8 and 20." : "Even integer between 4 and 20.";
}

void Graph1Form::Activated() {
  InitializeFormulas();
  EnableCommand("mnuPasteGraph", context_.exchange().oneDimensional.holdsGraph);
  Touch();
}

}  // namespace keldo::form1d
