#include "timefreq/scalogram_form.h"

#include <algorithm>
#include <cmath>
#include <new>

#include "common/number_text.h"
#include "common/text.h"
#include "formula/formula_text.h"
#include "kit/focus.h"
#include "kit/form_context.h"
#include "kit/menu_table.h"
#include "platform/event_loop.h"
#include "platform/services.h"
#include "timefreq/timefreq_menus.h"
#include "wavelet/scalogram_view.h"

namespace keldo::timefreq {
namespace {

const FormulaBoxKind kFormulaBox{"cmdFormula",
                                 {"Formula files (*.uf2)|*.uf2", ".uf2"},
                                 "Help on two-dimensional formulas",
                                 &FrameSettings::formulas2d,
                                 formula::ToFormulaText,
                                 formula::FromAnsiText};

// The Go buttons by box: 0 threshold, 1 formula, 2 redraw, 3 compute,
// 4 inversion; the play box has the fifth.
constexpr int kGoThreshold = 0;
constexpr int kGoFormula = 1;
constexpr int kGoCompute = 3;
constexpr int kGoInvert = 4;
constexpr int kGoPlay = 5;

constexpr const char* kFieldNames[] = {"txtScalogram(0)", "txtScalogram(1)", "txtScalogram(2)", "txtScalogram(3)"};


}  // namespace

ScalogramForm::ScalogramForm(FormContext& context)
    : TimeFreqForm(context, FormKind::Scalogram, kFormulaBox, {kGoFormula, kGoPlay}) {
  BuildControls();
  BindCommands();
  formulaBox_.Initialize();
  AddCommonFileHandlers();
  DisableItemsWithoutHandler();
}

void ScalogramForm::BuildControls() {
  SetMenu(BuildMenu(ScalogramMenuBar(), controls_));
  SetPopupMenu(BuildMenu(ScalogramPopupMenu(), controls_));
  controls_.SetVisible("mnuHelpSideBox", false);
  controls_["mnuViewCursor"].value = 1;
  for (int k = 0; k < kScalogramPanels; ++k)
    controls_.Add(IndexedName("PicSideBox", k), ControlKind::Panel).visible = false;
  // The compute box.
  controls_.Add(kFieldNames[0], ControlKind::Text, "8").tip = "The number of octaves, 1 to 256.";
  controls_.Add(kFieldNames[1], ControlKind::Text, "16").tip =
      "Voices per octave: octaves times voices at most 256.";
  controls_.Add(kFieldNames[2], ControlKind::Text, "1").tip = "The width of the wavelet, positive.";
  controls_.Add(kFieldNames[3], ControlKind::Text, "1").tip = "The frequency of the Gabor wavelets, positive.";
  Control& wavelets = controls_.Add("WavScgType", ControlKind::List, std::string(wavelet::ScalWaveletLabels()[0]));
  for (std::string_view label : wavelet::ScalWaveletLabels()) wavelets.items.emplace_back(label);
  wavelets.value = 0;
  controls_.Add("LabStatus", ControlKind::Label, "");
  Control& compute = controls_.Add(IndexedName("GoButton", kGoCompute), ControlKind::Button, "Compute");
  compute.tip = "Computes the scalogram of the signal.";
  kScalogramDisplayBox.AddControls(controls_);
  // The threshold box.
  controls_.Add("LabMaximum", ControlKind::Label, "Maximum = 0");
  controls_.Add("txtThreshold", ControlKind::Text, "0").tip = "Cells of smaller magnitude are set to 0.";
  Control& threshold = controls_.Add(IndexedName("GoButton", kGoThreshold), ControlKind::Button, "&Threshold");
  threshold.tip = "Sets to 0 every cell whose magnitude is below the threshold.";
  AddFormulaControls("A formula of x (time), y (scale) and g1 (magnitude).",
                     "Gives each cell the formula's value as its magnitude.");
  // The inversion box.
  controls_.Add("LabelInvert", ControlKind::Label, "Invert Scalogram");
  const char* methods[] = {"Wavelet superposition", "Wavelets and scaling functions", "Damped trigonometric"};
  for (int k = 1; k <= 3; ++k) controls_.AddOption(IndexedName("OpInvert", k), methods[k - 1], "OpInvert", k == 2);
  Control& invert = controls_.Add(IndexedName("GoButton", kGoInvert), ControlKind::Button, "&Invert");
  invert.tip = "Turns the scalogram back into a signal in a new form.";
  AddPlayControls();
  AddReportControls();
  // The read-out and the axes.
  controls_.Add("labSigValues", ControlKind::Label, "No scalogram values.");
  for (int k = 0; k < 5; ++k) {
    controls_.Add(IndexedName("LabScale", k), ControlKind::Label, "");
    controls_.Add(IndexedName("LabTime", k), ControlKind::Label, "");
  }
  // A new form takes the last display type and the last fields of the
  // first wavelet.
  kScalogramDisplayBox.Select(controls_, context_.settings().scalDispType, 0);
  FieldsFromSettings(1);
}

std::span<const SideBoxRow<ScalogramForm>> ScalogramForm::SideBoxTable() {
  using S = ScalogramForm;
  static const SideBoxRow<S> kRows[] = {
      // The computation serves the event loop itself, so that its Go button
      // can stop it.
      {{"mnuScalogram", "Scalogram", "Scalogram", kScgPanelCompute, kGoCompute}, nullptr, &S::ComputeGo},
      {{"mnuDisplayStyle", "DisplayStyle", "Display style", kScgPanelDisplay, 2}, nullptr, &S::RedrawScalogram},
      {{"mnuDisplayStylePopUp", "DisplayStyle", "Display style", kScgPanelDisplay, 2}, nullptr,
       &S::RedrawScalogram},
      {{"mnuThreshold", "Threshold", "Threshold", kScgPanelThreshold, kGoThreshold}, &S::OpenThreshold,
       &S::ThresholdScalogram},
      {{"mnuThresholdPopUp", "Threshold", "Threshold", kScgPanelThreshold, kGoThreshold}, &S::OpenThreshold,
       &S::ThresholdScalogram},
      {{"mnuPlot", "Formula", "Formula", kScgPanelFormula, kGoFormula}, &S::OpenFormula, &S::PlotTheGraph},
      {{"mnuPlotGraph", "Formula", "Formula", kScgPanelFormula, kGoFormula}, &S::OpenFormula, &S::PlotTheGraph},
      {{"mnuInvert", "Invert", "Invert", kScgPanelInvert, kGoInvert}, nullptr, &S::InvertTheScalogram, true},
      {{"mnuInvertPopUp", "Invert", "Invert", kScgPanelInvert, kGoInvert}, nullptr, &S::InvertTheScalogram, true},
      {{"mnuAudio", "Play Signal", "Play Signal", kScgPanelPlay, kGoPlay}, nullptr, &S::PlaySignal},
      {{"mnuInformation", "Information", "Information", kScgPanelInformation, -1}, nullptr, nullptr},
      {{"mnuModificationReport", "Modifications", "Modifications", kScgPanelModifications, -1}, nullptr, nullptr},
  };
  return kRows;
}

void ScalogramForm::BindCommands() {
  BindSideBoxes(*this, SideBoxTable(), kScalogramPanels);
  BindCommonCommands("mnuHelpScalogram", "KELDSCGR.HLP");
  OnMenu("mnuChBgdFgd", [this](int) { ChangeBackground(); });
}

// ------------------------------------------------------------ named calls

void ScalogramForm::SetSignalValues(const std::vector<double>& values, int points, double a, double b, double dt) {
  StoreSignal(values, points, a, b, dt);
  audio_ = signal_;
  present_ = false;
  SetScaleAxisLabels();
  Touch();
}

void ScalogramForm::AudioSettings(const std::string& rate, const std::string& volume, bool sixteenBits) {
  SetAudioTexts(rate, volume, sixteenBits);
}

void ScalogramForm::ShowScalogramBox() { RunMenu("mnuScalogram"); }

void ScalogramForm::SetTrueAudioSignal(const std::vector<double>& samples) {
  if (!samples.empty()) audio_ = samples;
}

void ScalogramForm::SetScalogramFields(int wavelet, const std::string& octaves, const std::string& voices,
                                       const std::string& width, const std::string& frequency) {
  Control& list = controls_["WavScgType"];
  if (wavelet >= 1 && wavelet <= static_cast<int>(list.items.size()))
    controls_.SetFromUser("WavScgType", list.items[static_cast<std::size_t>(wavelet - 1)]);
  const std::string* texts[] = {&octaves, &voices, &width, &frequency};
  for (int k = 0; k < 4; ++k) controls_.SetText(kFieldNames[k], Trim(*texts[k]));
}

int ScalogramForm::WaveletNumber() const {
  wavelet::ScalWavelet w = wavelet::ScalWavelet::MexicanHat;
  wavelet::ScalWaveletOfLabel(controls_.Text("WavScgType"), w);
  return static_cast<int>(w);
}

void ScalogramForm::FieldsFromSettings(int wavelet) {
  const auto& params = context_.settings().scalogramParams;
  if (wavelet < 1 || wavelet > 5) return;
  for (int k = 0; k < 4; ++k) {
    const std::string& text = params[static_cast<std::size_t>(k)][static_cast<std::size_t>(wavelet)];
    if (!text.empty()) controls_.SetText(kFieldNames[k], text);
  }
}

void ScalogramForm::FieldsToSettings(int wavelet) {
  auto& params = context_.settings().scalogramParams;
  if (wavelet < 1 || wavelet > 5) return;
  for (int k = 0; k < 4; ++k)
    params[static_cast<std::size_t>(k)][static_cast<std::size_t>(wavelet)] = controls_.Text(kFieldNames[k]);
}

bool ScalogramForm::ComputeTheScalogram() { return Compute(false); }

void ScalogramForm::ComputeGo() {
  if (computing_) {
    stopRequested_ = true;
    return;
  }
  Compute(false);
}

bool ScalogramForm::QueryClose() {
  if (!computing_) return TimeFreqForm::QueryClose();
  context_.Beep();
  return false;
}

// -------------------------------------------------------------- computing

bool ScalogramForm::ReadSetup(wavelet::ScalogramSetup& setup) {
  setup.a = a_;
  setup.b = b_;
  wavelet::ScalWaveletOfLabel(controls_.Text("WavScgType"), setup.wavelet);
  // A field that is no number fails the first test of its own.
  int octaves = 0, voices = 0;
  if (!WholeNumber(compiler_.VALU(controls_.Text(kFieldNames[0])), octaves)) octaves = 0;
  if (!WholeNumber(compiler_.VALU(controls_.Text(kFieldNames[1])), voices)) voices = 0;
  double width = compiler_.VALU(controls_.Text(kFieldNames[2]));
  if (!std::isfinite(width)) width = 0.0;
  double freq = 1.0;
  // The frequency is read by the Gabor wavelets alone.
  if (static_cast<int>(setup.wavelet) > 2) {
    freq = compiler_.VALU(controls_.Text(kFieldNames[3]));
    if (!std::isfinite(freq)) freq = 0.0;
  }
  const wavelet::ScalogramProblem problem =
      wavelet::CheckScalogramParameters(octaves, voices, width, freq, setup.wavelet);
  if (problem.message != 0) {
    context_.ShowError(problem.message);
    // The offending box takes the focus: octaves, voices, width, frequency.
    if (problem.field != wavelet::ScalogramField::None)
      RequestFocus(controls_, kFieldNames[static_cast<int>(problem.field) - 1]);
    return false;
  }
  setup.octaves = octaves;
  setup.voices = voices;
  setup.width = width;
  setup.freq = freq;
  return true;
}

wavelet::ScalogramStatus ScalogramForm::Run(const wavelet::ScalogramSetup& setup, wavelet::Scalogram& into) {
  // Every fourth row lets the user interface run; a Stop pressed meanwhile
  // ends the computation there.
  const auto onRow = [this](int) {
    Touch();
    if (platform::EventLoop* loop = context_.services().eventLoop) loop->Yield();
    return stopRequested_ ? wavelet::ScalogramProgress::Stop : wavelet::ScalogramProgress::Continue;
  };
  controls_.SetText("LabStatus", "Computing scalogram...");
  try {
    return wavelet::IsRealWavelet(setup.wavelet)
               ? wavelet::ComputeRealScalogram(signal_.data(), n_, setup, onRow, into)
               : wavelet::ComputeComplexScalogram(signal_.data(), n_, setup, onRow, into);
  } catch (const std::bad_alloc&) {
    into = wavelet::Scalogram{};
    return wavelet::ScalogramStatus::NoMemory;
  }
}

bool ScalogramForm::Compute(bool keepList) {
  if (signal_.empty()) {
    context_.Beep();
    return false;
  }
  wavelet::ScalogramSetup setup;
  if (!ReadSetup(setup)) return false;
  context_.ShowBusy();
  controls_.SetText("LabStatus", "Initializing memory...");
  Control& go = controls_[IndexedName("GoButton", kGoCompute)];
  go.text = "Stop";
  go.tip = "Stops the computation.";
  if (!keepList) {
    modifications_.Reset();
    ShowReport();
  }
  computing_ = true;
  stopRequested_ = false;
  Touch();
  // The rows go into a second pair of matrices, so that a stop leaves the
  // former scalogram as it was; without the memory for both, into the one
  // in use, which a stop then clears.
  wavelet::ScalogramStatus status = Run(setup, work_);
  bool inPlace = false;
  if (status == wavelet::ScalogramStatus::NoMemory && !scalogram_.re.empty()) {
    work_ = wavelet::Scalogram{};
    present_ = false;
    inPlace = true;
    status = Run(setup, scalogram_);
  }
  computing_ = false;
  go.text = "Compute";
  go.tip = "Computes the scalogram of the signal.";
  controls_.SetText("LabStatus", "");
  if (status == wavelet::ScalogramStatus::Stopped) {
    if (inPlace) present_ = false;
    context_.ShowIdle();
    Touch();
    return false;
  }
  if (status == wavelet::ScalogramStatus::NoMemory) {
    scalogram_ = wavelet::Scalogram{};
    present_ = false;
    context_.ShowIdle();
    context_.ShowError(69);
    Touch();
    return false;
  }
  if (!inPlace) std::swap(scalogram_, work_);
  setup_ = setup;
  present_ = true;
  controls_.SetText("LabStatus", "Plotting scalogram...");
  ReplayModifications();
  UpdateDisplay();
  SetDataValues();
  SetScaleAxisLabels();
  FieldsToSettings(static_cast<int>(setup.wavelet));
  controls_.SetText("LabStatus", "");
  context_.ShowIdle();
  Touch();
  return true;
}

bool ScalogramForm::IsStopButton(int k) const {
  return (k == kGoCompute && computing_) || TimeFreqForm::IsStopButton(k);
}

bool ScalogramForm::StopWork() {
  if (computing_) {
    stopRequested_ = true;
    return true;
  }
  return TimeFreqForm::StopWork();
}

void ScalogramForm::ReplayModifications() {
  for (const ModificationList::Entry& entry : modifications_.Entries()) {
    if (entry.kind == ModificationList::Kind::Threshold) {
      const double value = compiler_.VALU(entry.text);
      if (value >= 0) wavelet::ThresholdScalogram(scalogram_, value);
    } else {
      ReplayFormula(entry.text, Cells());
    }
  }
}

CellMatrix ScalogramForm::Cells() {
  CellMatrix cells;
  cells.re = scalogram_.re.data();
  cells.im = scalogram_.complex ? scalogram_.im.data() : nullptr;
  cells.rows = scalogram_.shape.nscales + 1;
  cells.columns = scalogram_.shape.n + 1;
  cells.dx = dt_;
  cells.x = [a = a_, dx = dt_](int column) { return a + column * dx; };
  // y is the row's scale s(r); the low-pass row 0 has the scale 0.
  cells.y = [v = setup_.voices](int row) { return row == 0 ? 0.0 : wavelet::ScaleOfRow(row, v); };
  return cells;
}

void ScalogramForm::SetDataValues() {
  const std::string wavelet = controls_.Text("WavScgType");
  std::string text = "Wavelet type\r\n" + wavelet + "\r\nOctaves: " + std::to_string(setup_.octaves) +
                     "\r\nVoices: " + std::to_string(setup_.voices) + "\r\nWidth: " + PlainNumber(setup_.width);
  if (static_cast<int>(setup_.wavelet) > 2) text += "\r\nFrequency: " + PlainNumber(setup_.freq);
  controls_.SetText("txtInformation", text);
}

// ---------------------------------------------------------------- display

void ScalogramForm::UpdateDisplay() {
  if (!present_) return;
  const auto mode = static_cast<fourier::MagnitudeMode>(kScalogramDisplayBox.MagnitudeMode(controls_));
  if (scalogram_.complex) wavelet::GetScalGrImageArrayComp(scalogram_, mode, levels_, phase_, scalogramMax_);
  else wavelet::GetScalGrImageArray(scalogram_, mode, levels_, scalogramMax_);
  controls_.SetText("LabMaximum", "Maximum = " + PlainNumber(scalogramMax_));
  context_.settings().scalDispType = static_cast<int>(mode);
}

void ScalogramForm::RedrawScalogram() {
  UpdateDisplay();
  Touch();
}

void ScalogramForm::ChangeBackground() {
  darkBackground_ = !darkBackground_;
  Touch();
}

double ScalogramForm::RowOctave(int row) const {
  const int v = std::max(setup_.voices, 1);
  return static_cast<double>(row - 1) / v;
}

void ScalogramForm::SetScaleAxisLabels() {
  // The scale axis in octaves, 2^0 at the bottom; the time axis in the
  // signal's units.
  const int octaves = present_ ? setup_.octaves : 0;
  for (int k = 0; k < 5; ++k) {
    controls_.SetText(IndexedName("LabScale", k), k == 0 ? "2^0" : "2^" + FormatLabel(octaves * k / 4.0));
    controls_.SetText(IndexedName("LabTime", k), FormatLabel(a_ + (b_ - a_) * k / 4.0));
  }
}

std::vector<Picture> ScalogramForm::Pictures() const {
  Picture image;
  image.row = 0;
  const int v = std::max(setup_.voices, 1);
  const int rows = present_ ? scalogram_.shape.nscales : 0;
  // Row r is centred on its octave (r - 1)/v; row 0 lies below octave 0.
  image.scale = {a_, (rows - 0.5) / v, b_, -1.5 / v};
  for (int k = 0; k < 5; ++k) {
    image.bottomLabels[static_cast<std::size_t>(k)] = controls_.Text(IndexedName("LabTime", k));
    image.leftLabels[static_cast<std::size_t>(k)] = controls_.Text(IndexedName("LabScale", 4 - k));
  }
  return {image, SignalPicture(1)};
}

void ScalogramForm::Paint(int picture, platform::Surface& surface) const {
  if (picture != 0) {
    PaintSignal(surface, SignalPicture(1), kScalogramDisplayBox.SignalAsDots(controls_));
    return;
  }
  const platform::Rgb background = darkBackground_ ? platform::kBlack : platform::kWhite;
  surface.Clear(background);
  if (present_ && !levels_.empty()) PaintImage(surface, background);
  scanLine_.Draw(surface);
}

void ScalogramForm::PaintImage(platform::Surface& surface, platform::Rgb background) const {
  const wavelet::ScalogramShape& s = scalogram_.shape;
  const bool phaseView = scalogram_.complex && kScalogramDisplayBox.ShowsPhase(controls_);
  const std::vector<std::int16_t>& levels = phaseView ? phase_ : levels_;
  // At most one image column a surface pixel: a long signal shows every
  // k-th column.
  const int columns = static_cast<int>(s.Columns());
  const int width = std::clamp(surface.PixelWidth(), 1, columns);
  platform::RgbImage image(width, s.nscales + 1, background);
  for (int r = 0; r <= s.nscales; ++r)
    for (int p = 0; p < width; ++p) {
      const auto c = static_cast<std::size_t>(static_cast<long long>(p) * columns / width);
      int level = levels[static_cast<std::size_t>(r) * s.Columns() + c];
      // In the complex magnitude view a level of 255 paints nothing.
      if (scalogram_.complex && !phaseView && level >= 255) continue;
      if (darkBackground_) level = 255 - level;
      image.Set(p, s.nscales - r, Grey(level));
    }
  surface.DrawImage(image);
}

double ScalogramForm::CellMagnitude(int row, int column) const {
  const double re = scalogram_.Re(row, column);
  return scalogram_.complex ? std::hypot(re, scalogram_.Im(row, column)) : re;
}

bool ScalogramForm::CellAt(double x, double y, int& column, int& row) const {
  if (!present_ || dt_ <= 0) return false;
  const int v = std::max(setup_.voices, 1);
  column = static_cast<int>(std::floor((x - a_) / dt_ + 0.5));
  row = static_cast<int>(std::floor(y * v + 0.5)) + 1;
  return column >= 0 && column <= scalogram_.shape.n && row >= 0 && row <= scalogram_.shape.nscales;
}

bool ScalogramForm::TracksPointer() const { return controls_.Find("mnuViewCursor")->value != 0; }

bool ScalogramForm::PictureMouse(int picture, MouseAction action, double x, double y, MouseButton) {
  if (picture != 0) return false;
  int column = 0, row = 0;
  if (CellAt(x, y, column, row)) {
    pointerColumn_ = column;
    pointerRow_ = row;
    const std::string scale = row == 0 ? "low pass" : "s = " + FormatLabel(wavelet::ScaleOfRow(row, setup_.voices));
    const std::string value = (scalogram_.complex ? ", |z| = " : ", z = ") + FormatLabel(CellMagnitude(row, column));
    const std::string text = "t = " + FormatLabel(a_ + column * dt_) + ", " + scale + value;
    controls_.SetText("labSigValues", text);
    if (TracksPointer()) cursorText_ = text;
  } else {
    if (action != MouseAction::Move) pointerRow_ = -1;
    controls_.SetText("labSigValues", "No scalogram values.");
    cursorText_.clear();
  }
  return true;
}

void ScalogramForm::ControlChanged(const std::string& name) {
  if (kScalogramDisplayBox.Redraws(name)) RedrawScalogram();
  // Each wavelet brings back the fields it was last computed with.
  if (name == "WavScgType") FieldsFromSettings(WaveletNumber());
}

std::array<double, 4> ScalogramForm::Window() const {
  return {a_, b_, 0.0, static_cast<double>(present_ ? setup_.octaves : 0)};
}

// ----------------------------------------------------------- modification

void ScalogramForm::OpenThreshold(const SideBoxCommand&) {
  controls_.SetText("LabMaximum", "Maximum = " + PlainNumber(scalogramMax_));
}

void ScalogramForm::ThresholdScalogram() {
  if (!present_ || computing_) {
    context_.Beep();
    return;
  }
  std::string text = controls_.Text("txtThreshold");
  std::string evaluated = text;
  const double value = compiler_.VALU(evaluated);
  if (evaluated == "N!N" || !std::isfinite(value)) {
    context_.ShowError(10);
    return;
  }
  if (value < 0) {
    context_.ShowError(11);
    return;
  }
  wavelet::ThresholdScalogram(scalogram_, value);
  ListThreshold(text);
  RedrawScalogram();
}

void ScalogramForm::OpenFormula(const SideBoxCommand&) { formulaBox_.Enable(true); }

void ScalogramForm::PlotTheGraph() {
  if (!present_ || computing_) {
    context_.Beep();
    return;
  }
  PlotFormula(Cells());
  RedrawScalogram();
}

void ScalogramForm::RestoreTheForm() {
  if (signal_.empty() || computing_) {
    context_.Beep();
    return;
  }
  Compute(false);
}

std::unique_ptr<Form> MakeScalogramForm(FormContext& context) { return std::make_unique<ScalogramForm>(context); }

}  // namespace keldo::timefreq
