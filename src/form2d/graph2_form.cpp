// The two-dimensional form's store and view model: the grid and its graphs,
// filing results (a fifth opens a new form), deleting and erasing, the menu
// states by the number of graphs, and the large and small views.

#include "form2d/graph2_form.h"
#include "form2d/image_files.h"

#include <algorithm>
#include <cmath>

#include "common/number_text.h"
#include "common/text.h"
#include "form2d/graph2_menu.h"
#include "formula/formula_text.h"
#include "kit/focus.h"
#include "kit/form_context.h"
#include "kit/menu_table.h"
#include "kit/quantization_box.h"
#include "kit/save_options_box.h"
#include "kit/typed_forms.h"
#include "platform/dialogs.h"
#include "platform/services.h"

namespace keldo::form2d {
namespace {

// The formula box of formulas of x and y.
const FormulaBoxKind kFormulaBox{"cmdGraph",
                                 {"Formula files (*.uf2)|*.uf2", ".uf2"},
                                 "Help on two-dimensional formulas",
                                 &FrameSettings::formulas2d,
                                 formula::ToFormulaText,
                                 formula::FromAnsiText};

int Log2(int n) {
  int k = 0;
  while ((1 << k) < n) ++k;
  return k;
}

bool ValidPoints(int n) { return n >= kMinPoints && n <= kMaxPoints && (n & (n - 1)) == 0; }

}  // namespace

Graph2Form::Graph2Form(FormContext& context) : Form(context, FormKind::Graph2), formulaBox_(*this, kFormulaBox) {
  // N comes from the frame, so that a new form starts like the last one.
  const int framePoints = static_cast<int>(Val(context_.settings().captions["Points"]));
  n_ = ValidPoints(framePoints) ? framePoints : kDefaultPoints;
  log2N_ = Log2(n_);
  cursorCol_ = cursorRow_ = n_ / 2;
  formula_.twoDimensional = true;
  formula_.noiseTerms = 64;
  formulaBox_.Initialize();
  BuildControls();
  store_.Size(Stride() * Stride(), kMaxGraphs, false);
  store_.a[0] = plotLeft_;
  store_.b[0] = plotRight_;
  store_.h[0] = (plotRight_ - plotLeft_) / static_cast<float>(n_);
  for (GraphLook& look : looks_) look.linReg = n_;
  pixels_.Reset(n_);
  for (int k = 0; k <= kMaxGraphs; ++k) Box(k) = platform::RgbImage(k == kMaxGraphs ? kLargeSide + 1 : kSmallSide + 1,
                                                                     k == kMaxGraphs ? kLargeSide + 1 : kSmallSide + 1,
                                                                     platform::kBlack);
  ChangePointsMenu(n_);
  BindCommands();
  DisableItemsWithoutHandler();
  controls_.SetEnabled("mnuPasteGraph", context_.exchange().twoDimensional.holdsGraph);
  ResetMenu();
  for (int k = 0; k < kMaxGraphs; ++k) SetSmallLabels(k);
  SetAxisLabels(plotLeft_, plotRight_, plotLow_, plotHigh_);
}

void Graph2Form::BuildControls() {
  SetMenu(BuildMenu(Graph2MenuBar(), controls_));
  SetPopupMenu(BuildMenu(Graph2PopupMenu(), controls_));
  controls_.SetVisible("mnuHelpSideBox", false);
  controls_["mnuSmall"].value = 1;
  for (int k = 0; k < kPanelCount; ++k) controls_.Add(IndexedName("PicSideBox", k), ControlKind::Panel).visible = false;
  controls_.Add("NumPoints", ControlKind::Label, std::to_string(n_));
  // The formula box.
  controls_.Add("Formula", ControlKind::Text, "");
  controls_.Add("LabSquare", ControlKind::Label, "Square: [-L,L] X [-L,L].");
  controls_.Add("EndRValue", ControlKind::Text, ".5").tip = "The L of the square.";
  Control& go1 = controls_.Add("GoButton(1)", ControlKind::Button, "&Plot");
  go1.tip = "Draws the formula as an image.";
  controls_.Add("PercentDone", ControlKind::Label, "0% done.").visible = false;
  formulaBox_.AddControls();
  // The graph style box.
  controls_.Add("labGraphStyle", ControlKind::Label, "Graph 1");
  controls_.AddOption("optColor", "Color (+/-)", "ColorMethod");
  controls_.AddOption("optGrey", "Grey (+)", "ColorMethod", true);
  controls_.AddOption("opGreyPm", "Grey (+/-)", "ColorMethod");
  controls_.AddOption("optLinear", "Linear", "Intensity", true);
  controls_.AddOption("optLog", "Log", "Intensity");
  controls_.AddOption("OpWaveLog", "LinLog:", "Intensity");
  controls_.Add("txtLinReg", ControlKind::Text, std::to_string(n_)).tip =
      "The side of the lower-left block shown linearly.";
  controls_.Add("LabThreshold", ControlKind::Label, "Threshold:");
  controls_.Add("TxtThreshold", ControlKind::Text, "0").tip = "A non-negative number.";
  Control& go2 = controls_.Add("GoButton(2)", ControlKind::Button, "&Apply");
  go2.tip = "Redraws the graph in the style chosen.";
  // The image box: zoom and restore.
  controls_.Add("Label(16)", ControlKind::Label, "Image zoom");
  controls_.Add("TxtGraphStat", ControlKind::Text, "1").tip = "The number of the graph.";
  for (int k = 0; k < 2; ++k) controls_.Add(IndexedName("txtZoomCoord", k), ControlKind::Text, std::to_string(n_ / 2));
  Control& go11 = controls_.Add("GoButton(11)", ControlKind::Button, "Zoom");
  go11.tip = "Zooms on indicated graph.";
  Control& go12 = controls_.Add("GoButton(12)", ControlKind::Button, "Restore");
  go12.tip = "Restores the full image of the graph.";
  Control& go13 = controls_.Add("GoButton(13)", ControlKind::Button, "Restore all");
  go13.tip = "Restores the full images of all graphs.";
  // Trace.
  for (int k = 0; k < kMaxGraphs; ++k) {
    controls_.Add(IndexedName("FrTrace", k), ControlKind::Label, "Graph " + std::to_string(k + 1)).visible = false;
    controls_.Add(IndexedName("LabTrace", k), ControlKind::Label);
  }
  const std::pair<const char*, const char*> moves[8] = {
      {"cmdMoveLeft", "<<"}, {"cmdMoveOnceLeft", "<"},  {"cmdMoveOnceRight", ">"}, {"cmdMoveRight", ">>"},
      {"cmdMoveDown", "vv"}, {"cmdMoveOnceDown", "v"}, {"cmdMoveOnceUp", "^"},     {"cmdMoveUp", "^^"}};
  for (const auto& [name, caption] : moves) controls_.Add(name, ControlKind::Button, caption);
  controls_.Add("Remarks", ControlKind::Text, "");
  // The calculator.
  controls_.Add("CalcFormula", ControlKind::Text).tip = "A formula of numbers, as in a formula field.";
  Control& go9 = controls_.Add("GoButton(9)", ControlKind::Button, "&Compute");
  go9.tip = "Computes the value of the formula.";
  controls_.Add("TxtCalculation", ControlKind::Text);
  BuildTransformControls();
  BuildAnalysisControls();
  AddSaveOptionsControls(controls_);
  BuildPrintControls();
  // The pictures: selectors of the large view, captions and axis labels.
  controls_.Add("FrGraphs", ControlKind::Label, "Graphs").visible = false;
  for (int k = 0; k < kMaxGraphs; ++k)
    controls_.AddOption(IndexedName("OpGraph", k), std::to_string(k + 1), "OpGraph", k == 0).visible = false;
  controls_.Add("LabGraph", ControlKind::Label);
  for (int k = 0; k < kMaxGraphs; ++k) controls_.Add(IndexedName("LabGraphSm", k), ControlKind::Label);
  for (int k = 0; k < 6; ++k) controls_.Add(IndexedName("GrLbl", k), ControlKind::Label);
  for (int g = 1; g <= kMaxGraphs; ++g) {
    const std::string s = std::to_string(g);
    for (const std::string& name : {(g == 1 ? "XintLeft" : "XIntLeft") + s, (g == 4 ? "XMId" : "XMid") + s,
                                    (g == 1 ? "XintRight" : "XIntRight") + s, "YIntLeft" + s, "YMid" + s,
                                    "YIntRight" + s})
      controls_.Add(name, ControlKind::Label);
  }
}

std::span<const SideBoxRow<Graph2Form>> Graph2Form::SideBoxTable() {
  using G = Graph2Form;
  // Rows that share a key open the same box again; the first one is restored.
  // The transforms run paced: the window keeps painting during them.
  static const SideBoxRow<G> kRows[] = {
      {{"mnuPlot", "Graph", "Graphing", kPanelGraph, 1}, &G::OpenGraphing, &G::PlotTheGraph2},
      {{"mnuChangeGraphStyle", "GrStyle", "Graph style", kPanelGraphStyle, 2}, &G::OpenGraphStyle,
       &G::ChangeGraphStyle},
      {{"mnuViewZoom", "", "Image zoom", kPanelImage, 11}, &G::OpenImageZoom, &G::ImageGo},
      {{"mnuZoom", "", "Image zoom", kPanelImage, 11}, &G::OpenImageZoom, &G::ImageGo},
      {{"mnuStatistics", "", "Statistics", kPanelImage, 11}, &G::OpenImageCommand, &G::ImageGo},
      {{"mnuDownSample", "", "Down sample", kPanelImage, 11}, &G::OpenImageCommand, &G::ImageGo},
      {{"mnuQuantize8Bit", "", "Quantize (8-bit image)", kPanelImage, 11}, &G::OpenImageCommand, &G::ImageGo},
      {{"mnuInterpolateMethod(0)", "", "Haar Interpolate", kPanelImage, 11}, &G::OpenImageCommand, &G::ImageGo,
       true},
      {{"mnuInterpolateMethod(1)", "", "D-D 4,2 Interpolate", kPanelImage, 11}, &G::OpenImageCommand, &G::ImageGo,
       true},
      {{"mnuNormDifference", "NormDiff", "Norm difference", kPanelAnalysis, 7}, &G::OpenAnalysis,
       &G::PerformAnalysis},
      {{"mnuNorm", "Norm", "Norm", kPanelAnalysis, 7}, &G::OpenAnalysis, &G::PerformAnalysis},
      {{"mnuIntegral", "Integral", "Integral", kPanelAnalysis, 7}, &G::OpenAnalysis, &G::PerformAnalysis},
      {{"mnuScalarProduct", "ScProd", "Scalar product", kPanelAnalysis, 7}, &G::OpenAnalysis, &G::PerformAnalysis},
      {{"mnuDenoiseMedian", "", "Denoise (median)", kPanelAnalysis, 7}, &G::OpenAnalysis, &G::PerformAnalysis},
      {{"mnuDenoiseAdaptiveMedian", "", "Denoise (adaptive median)", kPanelAnalysis, 7}, &G::OpenAnalysis,
       &G::PerformAnalysis},
      {{"mnuHistogram", "", "Histogram", kPanelHistogram, 10}, &G::OpenHistogram, &G::PerformHistogram},
      {{"mnuSaveOptions", "", "Options for saving images", kPanelSaveOptions, -1}, &G::OpenSaveOptionsBox, nullptr},
      {{"mnuPrintGraph", "", "Print graph", kPanelPrint, -1}, &G::OpenPrintGraph, nullptr},
      {{"mnuPrintGraphs", "", "Print graph", kPanelPrint, -1}, &G::OpenPrintGraph, nullptr},
      {{"mnuPrintForm", "", "Print form", kPanelPrintForm, -1}, &G::OpenPrintForm, nullptr},
      {{"mnuRemarks", "Rem", "Remarks", kPanelRemarks, -1}, nullptr, nullptr},
      {{"mnuCalculator", "Calc", "Calculator", kPanelCalculator, 9}, nullptr, &G::PerformCalculation},
      {{"mnuTrace", "", "Trace", kPanelTrace, -1}, &G::OpenTrace, nullptr},
      {{"mnuFourierTransform", "FTran", "Fourier transform", kPanelFourierTransform, 3}, &G::OpenFourierTransform,
       &G::FourierTransform, true},
      {{"mnuFourierSeries", "FSer", "Fourier series", kPanelFourierSeries, 8}, &G::OpenFourierSeries,
       &G::PerformFourierSeries, true},
      {{"mnuWaveletTransform", "WTran", "Wavelet transform", kPanelWavelet, 5}, &G::OpenWavelet,
       &G::PerformWaveletAnalysis, true},
      {{"mnuWaveletPacketTransform", "WTran", "Wavelet packet transform", kPanelWavelet, 5}, &G::OpenWavelet,
       &G::PerformWaveletAnalysis, true},
      {{"mnuWaveletSeries", "WSer", "Wavelet series", kPanelWavelet, 5}, &G::OpenWavelet, &G::PerformWaveletAnalysis, true},
      {{"mnuWaveletPacketSeries", "WPSer", "Wavelet packet series", kPanelWavelet, 5}, &G::OpenWavelet,
       &G::PerformWaveletAnalysis, true},
      // Not paced: the denoiser serves the event loop between its passes,
      // and its Go button stops it.
      {{"mnuDenoiseWavelet", "Denoise", "Denoise", kPanelWavelet, 5}, &G::OpenWavelet, &G::PerformWaveletAnalysis},
      {{"mnuConvolution", "Conv", "Convolution", kPanelConvolve, 4}, &G::OpenConvolve, &G::PerformConvolution, true},
      {{"mnuAutocorrelation", "AutoCor", "Autocorrelation", kPanelConvolve, 4}, &G::OpenConvolve,
       &G::PerformConvolution, true},
      {{"mnuPaircorrelation", "PairCorr", "Pair correlation", kPanelConvolve, 4}, &G::OpenConvolve,
       &G::PerformConvolution, true},
      {{"mnuFiltering", "Filter", "Filtering", kPanelFilter, 6}, &G::OpenFiltering, &G::PerformFiltering, true},
  };
  return kRows;
}

void Graph2Form::BindCommands() {
  AddCommonFileHandlers();
  BindSideBoxes(*this, SideBoxTable(), kPanelCount);
  for (int n = kMinPoints; n <= kMaxPoints; n *= 2) OnMenu("mnu" + std::to_string(n), [this, n](int) { SetPoints(n); });
  OnMenu("mnuEraseGraphs", [this](int) { EraseAllGraphs(); });
  OnMenu("mnuOpenSave(0)", [this](int) { OpenTheForm(); });
  OnMenu("mnuOpenSave(1)", [this](int) { LoadTheGraph(2); });
  OnMenu("mnuOpenSave(2)", [this](int) { LoadTheGraph(1); });
  OnMenu("mnuSaveFormAs", [this](int) { SaveTheForm(0); });
  OnMenu("mnuSaveForm", [this](int) { SaveTheForm(1); });
  OnMenu("mnuLoadImage", [this](int) { LoadTheGraph(2); });
  OnMenu("mnuLoadGraph", [this](int) { LoadTheGraph(1); });
  OnMenu("mnuSaveImage", [this](int) { SaveTheGraph(2); });
  OnMenu("mnuSaveGraph", [this](int) { SaveTheGraph(1); });
  OnMenu("mnuLarge", [this](int) { ChangeToLargeGraph(true); });
  OnMenu("mnuSmall", [this](int) { ChangeToSmallGraphs(); });
  OnMenu("mnuChangeViewSize", [this](int) {
    if (viewSize_ == 'S') ChangeToLargeGraph(false);
    else ChangeToSmallGraphs();
  });
  OnMenu("mnuRefresh", [this](int) { Touch(); });
  OnMenu("mnuKELDOHelp", [this](int) { context_.GetHelp("KELDOX2.HLP", ""); });
  OnMenu("mnuHelpSideBox", [this](int) {
    const std::string& caption = controls_.Text("mnuHelpSideBox");
    context_.GetHelp("KELDOX2.HLP", caption.size() > 9 ? caption.substr(9) : "");
  });
  OnMenu("mnuClearSideBox", [this](int) { ClearSideBox(); });
  OnMenu("mnuEndTrace", [this](int) {
    ClearSideBox();
    Touch();
  });
  OnMenu("mnuRestoreFullImage", [this](int) { RestoreImage(popUpGraph_); });
  OnMenu("mnuCopyGraph", [this](int) { CopyTheGraph(); });
  OnMenu("mnuPasteGraph", [this](int) { PasteTheGraph(); });
  OnMenu("mnuClip", [this](int) { ClipTheGraph(); });
  OnMenu("mnuWorkshop", [this](int) {
    int code = 0;
    if (!context_.NewForm(FormKind::Workshop, code)) context_.ReportFactoryFailure(code);
  });
  OnMenu("mnuDeleteGraph", [this](int) {
    if (popUpGraph_ < graphCount_) DeleteGraph(popUpGraph_);
  });
  OnMenu("mnuDisplayCursorCoordinates", [this](int) {
    Control& item = controls_["mnuDisplayCursorCoordinates"];
    item.value = item.value ? 0 : 1;
    if (!item.value) cursorText_.clear();
  });
  OnButton("GoButton(12)", [this](int) {
    std::string text = controls_.Text("TxtGraphStat");
    RestoreImage(static_cast<int>(std::nearbyint(Val(text))) - 1);
  });
  OnButton("GoButton(13)", [this](int) { RestoreAll(); });
  OnButton("GoButton(0)", [this](int) { SetQuantizationParameters(); });
  // Apply and Cancel serve the quantization box and the save options box.
  OnButton("cmdApply", [this](int) {
    if (VisiblePanel() == kPanelSaveOptions) {
      const SaveOptionsCheck check = ApplySaveOptions(controls_, context_.settings());
      if (check.message > 0) context_.ShowError(check.message);
      else if (check.message < 0) context_.Beep();
      else ClearSideBox();
      return;
    }
    TransferInfo();
    ShowPanel(kPanelWavelet);
    RequestFocus(controls_, "GoButton(5)");
  });
  OnButton("cmdCancel", [this](int) {
    if (VisiblePanel() == kPanelPrintForm) {
      PressPrintFormButton("cmdCancel");
      return;
    }
    if (VisiblePanel() == kPanelSaveOptions) {
      CancelSaveOptions(controls_, context_.settings());
      ClearSideBox();
      return;
    }
    ShowPanel(kPanelWavelet);
    RequestFocus(controls_, "GoButton(5)");
  });
  OnButton("cmdGraph", [this](int index) { formulaBox_.Press(index); });
  BindPrintCommands();
  const std::pair<const char*, std::pair<int, int>> moves[8] = {
      {"cmdMoveLeft", {-1, 0}},  {"cmdMoveOnceLeft", {-1, 0}}, {"cmdMoveOnceRight", {1, 0}}, {"cmdMoveRight", {1, 0}},
      {"cmdMoveDown", {0, -1}},  {"cmdMoveOnceDown", {0, -1}}, {"cmdMoveOnceUp", {0, 1}},    {"cmdMoveUp", {0, 1}}};
  for (const auto& [name, step] : moves)
    OnButton(name, [this, step = step](int) { MoveCursor(step.first, step.second); });
}

void Graph2Form::PerformCalculation() {
  std::string text = controls_.Text("CalcFormula");
  const double value = compiler_.VALU(text);
  if (text == formula::kValueFailure) {
    formula_.valueFault = 0;
    context_.ShowError(52);
    RequestFocus(controls_, "CalcFormula");
    return;
  }
  controls_.SetText("TxtCalculation", PlainNumber(value));
  Touch();
}

void Graph2Form::ControlChanged(const std::string& name) {
  if (QuantizationControlChanged(controls_, name) || SaveOptionsControlChanged(controls_, name)) return;
  std::string base;
  int index = -1;
  SplitIndexedName(name, base, index);
  if (base == "OpGraph" && controls_[name].value) SelectGraph(index);
  if (name == "FreqFilter") SetFilterParameters();
}

double Graph2Form::Value(const std::string& text, bool& failed) {
  std::string copy = text;
  const double value = compiler_.VALU(copy);
  failed = copy == formula::kValueFailure;
  if (failed) formula_.valueFault = 0;
  return value;
}

std::optional<std::string> Graph2Form::FormulaPrompt(const std::string& prompt, const std::string& title) {
  return context_.services().dialogs->InputBox({prompt, title, ""});
}

platform::Random* Graph2Form::FormulaRandom() { return context_.services().random; }

void Graph2Form::FormulaError(int number) { context_.ShowError(number); }

// ------------------------------------------------------------------ store

void Graph2Form::ChangePointsMenu(int points) {
  for (int n = kMinPoints; n <= kMaxPoints; n *= 2) controls_["mnu" + std::to_string(n)].value = n == points ? 1 : 0;
  log2N_ = Log2(points);
  context_.settings().captions["Points"] = std::to_string(points);
  context_.settings().captions["PowerTwo"] = std::to_string(log2N_);
}

void Graph2Form::SetPoints(int points) {
  // Any side a file can bring; the menu offers the powers of two.
  if (points == n_ || points < kMinFilePoints || points > kMaxFilePoints) return;
  graphCount_ = 0;
  ResetMenu();
  n_ = points;
  store_.Size(Stride() * Stride(), kMaxGraphs, false);
  pixels_.Reset(n_);
  store_.a[0] = plotLeft_;
  store_.b[0] = plotRight_;
  store_.h[0] = (plotRight_ - plotLeft_) / static_cast<float>(points);
  controls_.SetText("txtLinReg", std::to_string(points));
  for (GraphLook& look : looks_) look.linReg = points;
  // Paste stays while a graph waits on the clipboard, whatever the side.
  controls_.SetEnabled("mnuPasteGraph", context_.exchange().twoDimensional.holdsGraph);
  controls_.SetText("NumPoints", std::to_string(points));
  ChangePointsMenu(points);
  SetTransformTips();
  cursorCol_ = cursorRow_ = points / 2;
  for (int k = 0; k < 2; ++k) controls_.SetText(IndexedName("txtZoomCoord", k), std::to_string(points / 2));
  context_.settings().captions["LabTrSet"] = "Y";
  InitializeDrawWidths();
  Touch();
}

void Graph2Form::UpDateFnData2(int points, const float* values, std::size_t stride, float left, float right,
                               float step) {
  const int g = graphCount_;
  if (g >= kMaxGraphs) return;
  float* row = store_.Row(g);
  const int last = std::min(points, n_);
  float m = 0.0f;
  for (int i = 0; i <= last; ++i)
    for (int j = 0; j <= last; ++j) {
      const float v = values[static_cast<std::size_t>(i) * stride + static_cast<std::size_t>(j)];
      row[static_cast<std::size_t>(i) * Stride() + static_cast<std::size_t>(j)] = v;
      m = std::max(m, std::fabs(v));
    }
  const auto s = static_cast<std::size_t>(g);
  store_.peak[s] = m;
  store_.a[s] = left;
  store_.b[s] = right;
  store_.h[s] = step;
  GraphLook& look = looks_[s];
  look.viewXLeft = look.viewYLow = left;
  look.viewXRight = look.viewYHigh = right;
  graphCount_ = g + 1;
  controls_.SetText("EndRValue", PlainNumber(right));
  ResetMenu();
  Touch();
}

Graph2Form* Graph2Form::NewResultForm(int points) {
  context_.settings().captions["Points"] = std::to_string(points);
  int code = 0;
  Graph2Form* form = NewFormOf<Graph2Form>(context_, code);
  if (!form) {
    context_.ReportFactoryFailure(code);
    return nullptr;
  }
  form->InitializeSideBox();
  form->ShowPanel(kPanelGraph);
  form->InitializeGraph();
  form->SetViewParameters(viewSize_, defColorMethod_, defIntensity_, quantParams_);
  form->InitializeDrawWidths();
  return form;
}

Graph2Form* Graph2Form::DisplayFunction(int points, const float* values, std::size_t stride, float left,
                                        float right, float step) {
  Graph2Form* target = this;
  if (graphCount_ == kMaxGraphs) {
    target = NewResultForm(points);
    if (!target) return nullptr;
    const int linReg = looks_[static_cast<std::size_t>(graphCount_ - 1)].linReg;
    target->UpDateFnData2(points, values, stride, left, right, step);
    target->looks_[0].linReg = linReg;
  } else {
    UpDateFnData2(points, values, stride, left, right, step);
  }
  if (target->viewSize_ == 'L') target->PlotOneGraph(points + 1, left);
  else target->PlotOneSmallGraph(points + 1, left);
  return target;
}

Graph2Form* Graph2Form::DisplayTwoGraphs(int points, const float* first, const float* second, std::size_t stride,
                                         float left, float right, float step) {
  // A pair is never split over two forms.
  Graph2Form* target = this;
  if (graphCount_ >= 3) {
    target = NewResultForm(points);
    if (!target) return nullptr;
  }
  for (const float* values : {first, second}) {
    target->UpDateFnData2(points, values, stride, left, right, step);
    if (target->viewSize_ == 'L') target->PlotOneGraph(points + 1, left);
    else target->PlotOneSmallGraph(points + 1, left);
  }
  return target;
}

void Graph2Form::DeleteGraph(int d) {
  if (d < 0 || d >= graphCount_) return;
  // Captions and threshold texts stay with their slot.
  for (int k = d; k <= graphCount_ - 2; ++k) {
    GraphLook& to = looks_[static_cast<std::size_t>(k)];
    const GraphLook& from = looks_[static_cast<std::size_t>(k + 1)];
    const std::string caption = to.caption, thresholdText = to.thresholdText;
    to = from;
    to.caption = caption;
    to.thresholdText = thresholdText;
  }
  const auto samples = static_cast<std::size_t>(n_ + 1) * Stride();
  store_.Remove(d, graphCount_, samples);
  if (d == 3) looks_[3].drawWidths = 1;
  --graphCount_;
  if (graphCount_ == 0) {
    InitializeDrawWidths();
    currentGraph_ = 0;
  }
  if (viewSize_ == 'L') {
    Box(kMaxGraphs) = platform::RgbImage(kLargeSide + 1, kLargeSide + 1, platform::kBlack);
    if (graphCount_ > 0) {
      ResetGraphStyleMenu(d);
      RefreshGraph(d == 0 ? 0 : d - 1);
    }
  } else {
    Box(popUpGraph_) = platform::RgbImage(kSmallSide + 1, kSmallSide + 1, platform::kBlack);
    for (int k = d; k < graphCount_; ++k) PlotJustOneSmallGraph(k, true);
    for (int k = graphCount_; k < kMaxGraphs; ++k)
      Box(k) = platform::RgbImage(kSmallSide + 1, kSmallSide + 1, platform::kBlack);
  }
  ResetMenu();
  Touch();
}

void Graph2Form::EraseAllGraphs() {
  // SetPoints clears only for a new N: pass through another one.
  const int n = n_;
  if (n != 64) {
    SetPoints(64);
    SetPoints(n);
  } else {
    SetPoints(128);
    SetPoints(64);
  }
  currentGraph_ = 0;
  for (int k = 0; k <= kMaxGraphs; ++k) Box(k).pixels.assign(Box(k).pixels.size(), platform::kBlack);
  Touch();
}

void Graph2Form::ResetMenu() {
  const auto enable = [this](std::initializer_list<const char*> names, bool on) {
    for (const char* name : names)
      if (CommandBuilt(name)) controls_.SetEnabled(name, on);
  };
  switch (graphCount_) {
    case 0:
      enable({"mnuClip", "mnuTransform", "mnuSeries", "mnuEraseGraphs", "mnuTrace", "mnuFiltering", "mnuNorm",
              "mnuNormDifference", "mnuIntegral", "mnuConvolve", "mnuPaircorrelation", "mnuScalarProduct",
              "mnuSaveFormAs", "mnuSaveForm", "mnuSaveGraphImage", "mnuStatistics", "mnuDownSample", "mnuViewZoom",
              "mnuInterpolate", "mnuQuantize8Bit", "mnuDenoiseWavelet", "mnuDenoiseMedian",
              "mnuDenoiseAdaptiveMedian"},
             false);
      break;
    case 1:
      enable({"mnuClip", "mnuTransform", "mnuSeries", "mnuConvolve", "mnuAutocorrelation", "mnuEraseGraphs",
              "mnuTrace", "mnuFiltering", "mnuNorm", "mnuIntegral", "mnuSaveFormAs", "mnuSaveGraphImage",
              "mnuStatistics", "mnuQuantize8Bit", "mnuDownSample", "mnuInterpolate", "mnuViewZoom", "mnuDenoiseWavelet",
              "mnuDenoiseMedian", "mnuDenoiseAdaptiveMedian"},
             true);
      enable({"mnuPaircorrelation", "mnuConvolution", "mnuNormDifference", "mnuScalarProduct"}, false);
      break;
    case 2: enable({"mnuConvolution", "mnuPaircorrelation", "mnuNormDifference", "mnuScalarProduct"}, true); break;
    // A full form has no room for a pasted graph, but a graph on the
    // clipboard still goes to a new form: Paste stays while one waits.
    case 4: controls_.SetEnabled("mnuPasteGraph", context_.exchange().twoDimensional.holdsGraph); break;
    default: break;
  }
  if (viewSize_ == 'L') ResetGraphStyleMenu(currentGraph_ - 1 >= 1 ? currentGraph_ - 1 : currentGraph_);
}

// ------------------------------------------------------------ view model

void Graph2Form::ChangeToLargeGraph(bool fromMenu) {
  if (viewSize_ == 'L') {
    context_.Beep();
    return;
  }
  viewSize_ = 'L';
  controls_.SetText("mnuChangeViewSize", "View small graphs");
  controls_["mnuLarge"].value = 1;
  controls_["mnuSmall"].value = 0;
  if (fromMenu) ShowGraphSelectors(true);
  if (graphCount_ == 0) {
    InitializeDrawWidths();
  } else if (fromMenu) {
    ResetGraphStyleMenu(graphCount_ - 1);
    currentGraph_ = graphCount_ - 1;
    PlotGraphLarge(currentGraph_);
  } else {
    ResetGraphStyleMenu(popUpGraph_);
    currentGraph_ = popUpGraph_;
    RefreshGraph(popUpGraph_);
  }
  Touch();
}

void Graph2Form::ChangeToSmallGraphs() {
  if (viewSize_ != 'L') {
    context_.Beep();
    return;
  }
  viewSize_ = 'S';
  controls_.SetText("mnuChangeViewSize", "View large graph");
  controls_["mnuLarge"].value = 0;
  controls_["mnuSmall"].value = 1;
  ShowGraphSelectors(false);
  for (int k = 0; k < kMaxGraphs; ++k) Box(k) = platform::RgbImage(kSmallSide + 1, kSmallSide + 1, platform::kBlack);
  if (graphCount_ > 0) PlotAllSmallGraphs();
  Touch();
}

void Graph2Form::ShowGraphSelectors(bool on) {
  controls_.SetVisible("FrGraphs", on);
  for (int k = 0; k < kMaxGraphs; ++k) controls_.SetVisible(IndexedName("OpGraph", k), on);
}

void Graph2Form::RefreshGraph(int g) {
  controls_.SetFromUser(IndexedName("OpGraph", g), "1");
  SelectGraph(g);
}

void Graph2Form::SelectGraph(int k, bool replot) {
  if (k < 0 || k >= kMaxGraphs) return;
  controls_.SetFromUser(IndexedName("OpGraph", k), "1");
  if (controls_.Text("Label(16)") == "Image zoom" && VisiblePanel() == kPanelImage)
    controls_.SetText("TxtGraphStat", std::to_string(k + 1));
  ResetGraphStyleMenu(k);
  if (VisiblePanel() == kPanelGraphStyle) SetGraphStyleForm(k + 1);
  if (k >= graphCount_) {
    controls_.SetText("LabGraph", looks_[static_cast<std::size_t>(k)].caption);
    Box(kMaxGraphs) = platform::RgbImage(kLargeSide + 1, kLargeSide + 1, platform::kBlack);
  } else {
    currentGraph_ = k;
    popUpGraph_ = k;
    if (replot && viewSize_ == 'L') PlotGraphLarge(k);
  }
  Touch();
}

// ------------------------------------------------------------- side box

void Graph2Form::InitializeSideBox() {
  for (int k = 0; k < kPanelCount; ++k) controls_.SetVisible(IndexedName("PicSideBox", k), false);
  const std::string key = SideBoxKey();
  ForgetSideBox();
  SetSideBoxKey(key);
}

void Graph2Form::SideBoxOpening(int) { InitializeSideBox(); }

void Graph2Form::OpenSaveOptionsBox(const SideBoxCommand&) {
  OpenSaveOptions(controls_, context_.settings());
  Touch();
}

void Graph2Form::OpenGraphing(const SideBoxCommand&) {
  controls_.SetVisible("GoButton(1)", true);
  formulaBox_.Enable(true);
  RequestFocus(controls_, "Formula");
}

void Graph2Form::InitializeGraph() {
  SetSideBoxKey("Graph");
  controls_.SetVisible("GoButton(1)", true);
  ShowPanel(kPanelGraph);
  RequestFocus(controls_, "Formula");
}

void Graph2Form::RestoreSideBoxFromKey(const std::string& key) {
  SetSideBoxKey(key);
  RestoreSideBox();
}

void Graph2Form::RestoreOtherKey(const std::string& key) {
  // "GrStyle1" to "GrStyle4" open the graph style box of that graph; any
  // other key clears the side box.
  if (key.size() == 8 && key.compare(0, 7, "GrStyle") == 0 && key[7] >= '1' && key[7] <= '4') {
    popUpGraph_ = key[7] - '1';
    RunHandler("mnuChangeGraphStyle");
    return;
  }
  ClearSideBox();
}

void Graph2Form::ClearSideBox() {
  ShowPanel(-1);
  ForgetSideBox();
  controls_.SetVisible("mnuHelpSideBox", false);
  Touch();
}

bool Graph2Form::QueryClose() {
  if (plotting_ || denoising_) {
    context_.Beep();
    return false;
  }
  return true;
}

void Graph2Form::Activated() {
  formulaBox_.Initialize();
  if (controls_["GoButton(1)"].visible) RequestFocus(controls_, "Formula");
  controls_.SetEnabled("mnuPasteGraph", context_.exchange().twoDimensional.holdsGraph);
  Touch();
}

void Graph2Form::FormulaHelp(const std::string& selected) {
  context_.GetHelp("KELDOX2.HLP", selected.empty() ? "Two-dimensional formulas" : selected);
  RequestFocus(controls_, "Formula");
}

std::vector<GraphSummary> Graph2Form::Graphs() const {
  std::vector<GraphSummary> out;
  for (int g = 0; g < graphCount_; ++g) {
    const auto s = static_cast<std::size_t>(g);
    GraphSummary summary{store_.a[s], store_.b[s], store_.h[s], store_.peak[s], {}, 0, {}};
    summary.rows = n_ + 1;
    summary.values.reserve(static_cast<std::size_t>(n_ + 1) * static_cast<std::size_t>(n_ + 1));
    for (int i = 0; i <= n_; ++i)
      for (int j = 0; j <= n_; ++j) summary.values.push_back(store_.Row(g)[static_cast<std::size_t>(i) * Stride() + j]);
    const GraphLook& look = looks_[s];
    summary.fields = {{"colorMethod", std::string(1, look.colorMethod), {}},
                      {"intensity", std::string(1, look.intensity), {}},
                      {"threshold", "", {look.threshold}},
                      {"thresholdText", look.thresholdText, {}},
                      {"caption", look.caption, {}},
                      {"linReg", "", {static_cast<double>(look.linReg)}},
                      {"drawWidths", "", {static_cast<double>(look.drawWidths)}},
                      {"view", "", {look.viewXLeft, look.viewXRight, look.viewYLow, look.viewYHigh}}};
    out.push_back(std::move(summary));
  }
  return out;
}

std::unique_ptr<Form> MakeGraph2Form(FormContext& context) { return std::make_unique<Graph2Form>(context); }

}  // namespace keldo::form2d
