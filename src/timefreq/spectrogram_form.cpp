#include "timefreq/spectrogram_form.h"

#include <algorithm>
#include <cmath>
#include <new>

#include "common/file_io.h"
#include "common/number_text.h"
#include "formula/eval.h"
#include "formula/formula_text.h"
#include "kit/form_context.h"
#include "kit/form_file.h"
#include "kit/menu_table.h"
#include "platform/dialogs.h"
#include "platform/event_loop.h"
#include "platform/services.h"
#include "timefreq/spg_file.h"
#include "timefreq/timefreq_menus.h"

namespace keldo::timefreq {
namespace {

constexpr const char* kWindowLengthTips[] = {
    "Enter 16.",
    "Enter 16, or 32.",
    "Enter 16, 32, or 64.",
    "Enter 16, 32, 64, or 128.",
    "Enter 16, 32, 64, 128, or 256.",
    "Enter 16, 32, 64, 128, 256, or 512.",
    "Enter 16, 32, 64, 128, 256, 512, or 1024.",
    "Enter 16, 32, 64, 128, 256, 512, 1024, or 2048.",
};

const FormulaBoxKind kFormulaBox{"cmdFormula",
                                 {"Formula files (*.uf2)|*.uf2", ".uf2"},
                                 "Help on two-dimensional formulas",
                                 &FrameSettings::formulas2d,
                                 formula::ToFormulaText,
                                 formula::FromAnsiText};

const FormFileKind kFormFile{"Spectrograph (*.spg)|*.spg", ".spg", {"mnuSave"}, 66};

// The largest window length a signal of n intervals allows.
int MaximumWindowLength(int n) {
  if (n <= 64) return 32;
  if (n <= 256) return 64;
  if (n <= 1024) return 128;
  if (n <= 4096) return 256;
  if (n <= 16384) return 512;
  return 1024;
}

int Log2(int n) {
  int k = 0;
  while ((1 << k) < n) ++k;
  return k;
}

// A number field read as VB's CInt reads it: rounded, halves to even.
bool WholeNumber(double v, int& out) {
  if (!std::isfinite(v) || v < -2147483648.0 || v > 2147483647.0) return false;
  out = static_cast<int>(std::nearbyint(v));
  return true;
}

platform::Rgb Grey(int level) {
  const int g = std::clamp(level, 0, 255);
  return platform::MakeRgb(g, g, g);
}

}  // namespace

SpectrogramForm::SpectrogramForm(FormContext& context)
    : Form(context, FormKind::Spectrogram), formulaBox_(*this, kFormulaBox) {
  formula_.twoDimensional = true;
  formula_.noiseTerms = 64;
  BuildControls();
  BindCommands();
  formulaBox_.Initialize();
  AddCommonFileHandlers();
  DisableItemsWithoutHandler();
}

void SpectrogramForm::BuildControls() {
  SetMenu(BuildMenu(SpectrogramMenuBar(), controls_));
  SetPopupMenu(BuildMenu(SpectrogramPopupMenu(), controls_));
  controls_.SetVisible("mnuHelpSideBox", false);
  controls_["mnuViewCursor"].value = 1;
  for (int k = 0; k < kSpectrogramPanels; ++k)
    controls_.Add(IndexedName("PicSideBox", k), ControlKind::Panel).visible = false;
  // The compute box.
  controls_.Add("SpSetting(0)", ControlKind::Text, "128").tip = kWindowLengthTips[3];
  controls_.Add("SpSetting(1)", ControlKind::Text, "32").tip = "The shift between windows, 1 to the window length.";
  Control& filter = controls_.Add("SpecFilter", ControlKind::List, "Hamming");
  for (fourier::SpecWindow w : {fourier::SpecWindow::Blackman, fourier::SpecWindow::Gauss,
                                fourier::SpecWindow::Hamming, fourier::SpecWindow::Hanning, fourier::SpecWindow::Boxcar})
    filter.items.emplace_back(fourier::SpecWindowName(w));
  filter.value = 2;
  Control& go0 = controls_.Add("GoButton(0)", ControlKind::Button, "&Compute");
  go0.tip = "Computes the spectrogram of the signal.";
  kDisplayBox.AddControls(controls_);
  // The threshold box.
  controls_.Add("LabMaximum", ControlKind::Label, "Maximum = 0");
  controls_.Add("txtThreshold", ControlKind::Text, "0").tip = "Cells of smaller magnitude are set to 0.";
  Control& go2 = controls_.Add("GoButton(2)", ControlKind::Button, "&Threshold");
  go2.tip = "Sets to 0 every cell whose magnitude is below the threshold.";
  // The formula box.
  controls_.Add("Formula", ControlKind::Text, "").tip = "A formula of x (time), y (frequency) and g1 (magnitude).";
  Control& go3 = controls_.Add("GoButton(3)", ControlKind::Button, "&Plot");
  go3.tip = "Gives each cell the formula's value as its magnitude.";
  controls_.Add("PercentDone", ControlKind::Label, "0% done.").visible = false;
  formulaBox_.AddControls();
  // The inversion box.
  controls_.Add("LabelInvert", ControlKind::Label, "Invert Spectrograph");
  const char* methods[] = {"Division by each filter", "Division by sum of filter squares",
                           "Division by summed filters"};
  for (int k = 0; k < 3; ++k) controls_.AddOption(IndexedName("OpInversion", k), methods[k], "OpInversion", k == 2);
  Control& go4 = controls_.Add("GoButton(4)", ControlKind::Button, "&Invert");
  go4.tip = "Turns the spectrogram back into a signal in a new form.";
  // The play box.
  controls_.Add("TxtSound(1)", ControlKind::Text, "8000").tip = "The sampling rate, 441 to 44100 Hz.";
  controls_.Add("TxtSound(2)", ControlKind::Text, "1").tip = "The volume: the signal's values are multiplied by it.";
  controls_.AddOption("OpBitRate(0)", "8 bits", "OpBitRate");
  controls_.AddOption("OpBitRate(1)", "16 bits", "OpBitRate", true);
  Control& go5 = controls_.Add("GoButton(5)", ControlKind::Button, "&Play");
  go5.tip = "Plays the signal.";
  // Information and modifications.
  controls_.Add("txtInformation", ControlKind::Text, "");
  controls_.Add("txtModReport", ControlKind::Text, "");
  // The read-out and the axes.
  controls_.Add("labSigValues", ControlKind::Label, "No spectrogram values.");
  for (int k = 0; k < 5; ++k) {
    controls_.Add(IndexedName("LabFreq", k), ControlKind::Label, "");
    controls_.Add(IndexedName("LabTime", k), ControlKind::Label, "");
  }
}

std::span<const SideBoxRow<SpectrogramForm>> SpectrogramForm::SideBoxTable() {
  using S = SpectrogramForm;
  static const SideBoxRow<S> kRows[] = {
      {{"mnuSpectrogram", "Spectrogram", "Spectrogram", kPanelCompute, 0}, nullptr, &S::ComputeGo, true},
      {{"mnuDisplayStyle", "DisplayStyle", "Display style", kPanelDisplay, 1}, nullptr, &S::RedrawSpectrogram},
      {{"mnuDisplayStylePopUp", "DisplayStyle", "Display style", kPanelDisplay, 1}, nullptr, &S::RedrawSpectrogram},
      {{"mnuThreshold", "Threshold", "Threshold", kPanelThreshold, 2}, &S::OpenThreshold, &S::ThresholdSpectrogram},
      {{"mnuThresholdPopUp", "Threshold", "Threshold", kPanelThreshold, 2}, &S::OpenThreshold,
       &S::ThresholdSpectrogram},
      {{"mnuPlot", "Formula", "Formula", kPanelFormula, 3}, &S::OpenFormula, &S::PlotTheGraph},
      {{"mnuPlotGraph", "Formula", "Formula", kPanelFormula, 3}, &S::OpenFormula, &S::PlotTheGraph},
      {{"mnuInvert", "Invert", "Invert", kPanelInvert, 4}, nullptr, &S::InvertTheSpectrogram, true},
      {{"mnuInvertPopUp", "Invert", "Invert", kPanelInvert, 4}, nullptr, &S::InvertTheSpectrogram, true},
      {{"mnuAudio", "Play Signal", "Play Signal", kPanelPlay, 5}, nullptr, &S::PlaySignal},
      {{"mnuInformation", "Information", "Information", kPanelInformation, -1}, nullptr, nullptr},
      {{"mnuModificationReport", "Modifications", "Modifications", kPanelModifications, -1}, nullptr, nullptr},
  };
  return kRows;
}

void SpectrogramForm::BindCommands() {
  BindSideBoxes(*this, SideBoxTable(), kSpectrogramPanels);
  OnMenu("mnuRestore", [this](int) { RestoreTheGraph(); });
  OnMenu("mnuRestorePopUp", [this](int) { RestoreTheGraph(); });
  OnMenu("mnuSave", [this](int) { SaveTheForm(1); });
  OnMenu("mnuSaveAs", [this](int) { SaveTheForm(0); });
  OnMenu("mnuOpen", [this](int) { context_.OpenTheForm(); });
  OnMenu("mnuVerticalSlice", [this](int) { CopyVerticalSlice(); });
  OnMenu("mnuHorizontalSlice", [this](int) { CopyHorizontalSlice(); });
  OnMenu("mnuCopySignal", [this](int) { CopyTheSignal(); });
  OnMenu("mnuViewCursor", [this](int) {
    Control& item = controls_["mnuViewCursor"];
    item.value = item.value ? 0 : 1;
    if (!item.value) cursorText_.clear();
  });
  // Gabor denoising of the signal shown: the threshold formula from the
  // noise estimate, ready to plot and invert.
  OnMenu("mnuDenoise", [this](int) {
    if (present_) DenoiseOption();
    else context_.Beep();
  });
  // The spectrogram alone, without the signal under it.
  OnMenu("mnuViewOnly", [this](int) {
    Control& item = controls_["mnuViewOnly"];
    item.value = item.value ? 0 : 1;
  });
  OnMenu("mnuHelpSpectrogram", [this](int) { context_.GetHelp("KELDSPGR.HLP", ""); });
  OnMenu("mnuHelpSideBox", [this](int) {
    const std::string& caption = controls_.Text("mnuHelpSideBox");
    context_.GetHelp("KELDSPGR.HLP", caption.size() > 9 ? caption.substr(9) : "");
  });
  OnButton("cmdFormula", [this](int index) { formulaBox_.Press(index); });
  controls_.SetEnabled("mnuSave", false);
}

// ------------------------------------------------------------ named calls

void SpectrogramForm::SetSignalValues(const std::vector<double>& values, int points, double a, double b, double dt) {
  n_ = points;
  signal_.assign(values.begin(), values.begin() + std::min<std::ptrdiff_t>(points + 1, static_cast<std::ptrdiff_t>(values.size())));
  signal_.resize(static_cast<std::size_t>(points) + 1, 0.0);
  a_ = a;
  b_ = b;
  dt_ = dt;
  const int maximum = MaximumWindowLength(points);
  controls_["SpSetting(0)"].tip = kWindowLengthTips[std::clamp(Log2(maximum) - 4, 0, 7)];
  // A first window as long as the signal allows, stepping a quarter of it.
  controls_.SetText("SpSetting(0)", std::to_string(maximum));
  controls_.SetText("SpSetting(1)", std::to_string(std::max(1, maximum / 4)));
  present_ = false;
  SetAxisLabels();
  Touch();
}

void SpectrogramForm::AudioSettings(const std::string& rate, const std::string& volume, bool sixteenBits) {
  controls_.SetText("TxtSound(1)", rate);
  controls_.SetText("TxtSound(2)", volume);
  if (sixteenBits) controls_.SetFromUser("OpBitRate(1)", "1");
}

void SpectrogramForm::ShowSpecgramBox() { RunMenu("mnuSpectrogram"); }

int SpectrogramForm::CheckWindowLength() {
  const int maximum = MaximumWindowLength(n_);
  int value = 0;
  if (!WholeNumber(compiler_.VALU(controls_.Text("SpSetting(0)")), value)) return -1;
  if (value < 1 || value > maximum) return -1;
  for (int w = 64; w <= 2048; w *= 2)
    if (value == w) return value;
  return -1;
}

void SpectrogramForm::ComputeGo() { Compute(false); }

bool SpectrogramForm::ComputeTheSpectrogram() { return Compute(false); }

bool SpectrogramForm::Compute(bool keepList) {
  const int winlen = CheckWindowLength();
  if (winlen < 0) {
    context_.ShowError(56);
    return false;
  }
  int step = 0;
  if (!WholeNumber(compiler_.VALU(controls_.Text("SpSetting(1)")), step) || step < 1 || step > winlen) {
    context_.ShowError(57);
    return false;
  }
  const fourier::SpectrogramShape shape = fourier::SpectrogramShape::Of(n_, winlen, step);
  if (!keepList) {
    modifications_.Reset();
    controls_.SetText("txtModReport", "");
  }
  windowName_ = controls_.Text("SpecFilter");
  context_.ShowBusy();
  bool computed = false;
  try {
    computed = fourier::ComputeSpectrograph(signal_.data(), shape, WindowKind(), spectrum_);
  } catch (const std::bad_alloc&) {
    computed = false;
  }
  if (!computed) {
    spectrum_ = fourier::Spectrum{};
    present_ = false;
    context_.ShowIdle();
    context_.ShowError(70);
    Touch();
    return false;
  }
  present_ = true;
  ReplayModifications();
  UpdateDisplay();
  SetDataValues();
  SetAxisLabels();
  context_.ShowIdle();
  Touch();
  return true;
}

void SpectrogramForm::ReplayModifications() {
  for (const ModificationList::Entry& entry : modifications_.Entries()) {
    if (entry.kind == ModificationList::Kind::Threshold) {
      const double value = compiler_.VALU(entry.text);
      if (value >= 0) fourier::ThresholdSpectrum(spectrum_, value);
    } else {
      ApplyFormula(entry.text, false);
    }
  }
}

fourier::SpecWindow SpectrogramForm::WindowKind() const {
  fourier::SpecWindow kind = fourier::SpecWindow::Hamming;
  fourier::SpecWindowOfName(windowName_.empty() ? controls_.Text("SpecFilter") : windowName_, kind);
  return kind;
}

double SpectrogramForm::Frequency() const {
  const int rows = spectrum_.shape.nrows > 0 ? spectrum_.shape.nrows : 1;
  return 1.0 / dt_ / 2.0 / rows;
}

double SpectrogramForm::TimeOfColumn(int column) const {
  return a_ + static_cast<double>(column - 1) * spectrum_.shape.step * dt_;
}

void SpectrogramForm::SetDataValues() {
  const fourier::SpectrogramShape& s = spectrum_.shape;
  controls_.SetText("txtInformation", "Filter: " + windowName_ + "\r\nWindow length: " + std::to_string(s.winlen) +
                                          "\r\nShift: " + std::to_string(s.step));
}

// ---------------------------------------------------------------- display

void SpectrogramForm::UpdateDisplay() {
  if (!present_) return;
  const auto mode = static_cast<fourier::MagnitudeMode>(kDisplayBox.MagnitudeMode(controls_));
  fourier::GetImageArray(spectrum_, mode, magnitude_, phase_, spectrogramMax_);
  controls_.SetText("LabMaximum", "Maximum = " + PlainNumber(spectrogramMax_));
}

void SpectrogramForm::RedrawSpectrogram() {
  UpdateDisplay();
  Touch();
}

void SpectrogramForm::SetAxisLabels() {
  const double fmax = 1.0 / (2.0 * dt_);
  for (int k = 0; k < 5; ++k) {
    controls_.SetText(IndexedName("LabFreq", k), FormatLabel(fmax * k / 4.0));
    controls_.SetText(IndexedName("LabTime", k), FormatLabel(a_ + (b_ - a_) * k / 4.0));
  }
}

std::vector<Picture> SpectrogramForm::Pictures() const {
  Picture image;
  image.row = 0;
  const double fmax = 1.0 / (2.0 * dt_);
  image.scale = {a_, fmax, b_, 0.0};
  for (int k = 0; k < 5; ++k) {
    image.bottomLabels[static_cast<std::size_t>(k)] = controls_.Text(IndexedName("LabTime", k));
    image.leftLabels[static_cast<std::size_t>(k)] = controls_.Text(IndexedName("LabFreq", 4 - k));
  }
  if (controls_.Find("mnuViewOnly")->value != 0) return {image};
  Picture signal;
  signal.row = 1;
  double low = 0.0, high = 0.0;
  for (double v : signal_) {
    low = std::min(low, v);
    high = std::max(high, v);
  }
  if (high <= low) high = low + 1.0;
  signal.scale = {a_, high, b_, low};
  signal.leftLabels = {FormatLabel(high), "", FormatLabel((high + low) / 2.0), "", FormatLabel(low)};
  return {image, signal};
}

void SpectrogramForm::Paint(int picture, platform::Surface& surface) const {
  if (picture == 0) {
    surface.Clear(platform::kWhite);
    // While the signal plays, the scan line over the image.
    if (!present_) {
      scanLine_.Draw(surface);
      return;
    }
    const fourier::SpectrogramShape& s = spectrum_.shape;
    const bool phaseView = kDisplayBox.ShowsPhase(controls_);
    const std::vector<std::int16_t>& levels = phaseView ? phase_ : magnitude_;
    // Row 0, the zero frequency, at the bottom; each cell a block of pixels.
    platform::RgbImage image(s.ncols, s.nrows + 1, platform::kWhite);
    for (int r = 0; r <= s.nrows; ++r)
      for (int c = 1; c <= s.ncols; ++c) {
        const int level = levels[static_cast<std::size_t>(r) * static_cast<std::size_t>(s.ncols) + static_cast<std::size_t>(c - 1)];
        // In the magnitude view a level of 255 paints nothing.
        if (!phaseView && level >= 255) continue;
        image.Set(c - 1, s.nrows - r, Grey(level));
      }
    surface.DrawImage(image);
    scanLine_.Draw(surface);
    return;
  }
  surface.Clear(platform::kBlack);
  if (signal_.empty()) return;
  const std::vector<Picture> pictures = Pictures();
  if (pictures.size() < 2) return;
  surface.SetScale(pictures[1].scale);
  const bool dots = kDisplayBox.SignalAsDots(controls_);
  const platform::Rgb colour = platform::MakeRgb(0, 255, 0);
  if (dots) {
    std::vector<platform::UserPoint> points(signal_.size());
    for (std::size_t i = 0; i < signal_.size(); ++i) points[i] = {a_ + static_cast<double>(i) * dt_, signal_[i]};
    surface.Pixels(points, colour);
  } else {
    std::vector<platform::UserSegment> segments;
    segments.reserve(signal_.size());
    for (std::size_t i = 1; i < signal_.size(); ++i)
      segments.push_back({a_ + static_cast<double>(i - 1) * dt_, signal_[i - 1], a_ + static_cast<double>(i) * dt_, signal_[i]});
    surface.Lines(segments, colour);
  }
  // The time axis.
  surface.Line(a_, 0.0, b_, 0.0, platform::kWhite);
}

bool SpectrogramForm::CellAt(double x, double y, int& column, int& row) const {
  if (!present_) return false;
  const fourier::SpectrogramShape& s = spectrum_.shape;
  const double colWidth = static_cast<double>(s.step) * dt_;
  const double df = Frequency();
  column = static_cast<int>(std::floor((x - a_) / colWidth + 0.5)) + 1;
  row = static_cast<int>(std::floor(y / df + 0.5));
  return column >= 1 && column <= s.ncols && row >= 0 && row <= s.nrows;
}

bool SpectrogramForm::TracksPointer() const { return controls_.Find("mnuViewCursor")->value != 0; }

bool SpectrogramForm::PictureMouse(int picture, MouseAction action, double x, double y, MouseButton) {
  if (picture != 0) return false;
  int column = 0, row = 0;
  if (CellAt(x, y, column, row)) {
    pointerColumn_ = column;
    pointerRow_ = row;
    const double re = spectrum_.Re(row, column), im = spectrum_.Im(row, column);
    const std::string text = "t = " + FormatLabel(TimeOfColumn(column)) + ", f = " + FormatLabel(row * Frequency()) +
                             ", |S| = " + FormatLabel(std::sqrt(re * re + im * im));
    controls_.SetText("labSigValues", text);
    if (TracksPointer()) cursorText_ = text;
  } else {
    if (action != MouseAction::Move) pointerRow_ = -1;
    controls_.SetText("labSigValues", "No spectrogram values.");
    cursorText_.clear();
  }
  return true;
}

void SpectrogramForm::ControlChanged(const std::string& name) {
  if (kDisplayBox.Redraws(name)) RedrawSpectrogram();
}

std::array<double, 4> SpectrogramForm::Window() const { return {a_, b_, 0.0, 1.0 / (2.0 * dt_)}; }

// ----------------------------------------------------------- modification

void SpectrogramForm::OpenThreshold(const SideBoxCommand&) {
  controls_.SetText("LabMaximum", "Maximum = " + PlainNumber(spectrogramMax_));
}

void SpectrogramForm::ThresholdSpectrogram() {
  if (!present_) {
    context_.Beep();
    return;
  }
  const std::string text = controls_.Text("txtThreshold");
  const double value = compiler_.VALU(text);
  if (!(value >= 0)) {
    context_.ShowError(64);
    return;
  }
  fourier::ThresholdSpectrum(spectrum_, value);
  modifications_.AddThreshold(text);
  controls_.SetText("txtModReport", modifications_.Report());
  RedrawSpectrogram();
}

void SpectrogramForm::OpenFormula(const SideBoxCommand&) { formulaBox_.Enable(true); }

bool SpectrogramForm::IsStopButton(int k) const { return k == 3 && plotting_; }

bool SpectrogramForm::StopWork() {
  if (!plotting_) return false;
  plotting_ = false;
  return true;
}

void SpectrogramForm::PlotTheGraph() {
  if (!present_) {
    context_.Beep();
    return;
  }
  const std::string typed = controls_.Text("Formula");
  if (ApplyFormula(typed, true)) {
    modifications_.AddFormula(typed);
    controls_.SetText("txtModReport", modifications_.Report());
    formulaBox_.Update(typed);
  }
  RedrawSpectrogram();
}

bool SpectrogramForm::ApplyFormula(const std::string& text, bool paced) {
  formula_.order = 0;
  formula_.formType = 0;
  std::string command;
  compiler_.COMPILE(formula::kModeTyped, text, command);
  if (command.rfind(formula::kErrorResult, 0) == 0) {
    context_.ShowError(23);
    return false;
  }
  const fourier::SpectrogramShape& s = spectrum_.shape;
  const auto cols = static_cast<std::size_t>(s.ncols);
  // g1 is each cell's magnitude, 1 for a cell of zeros.
  std::vector<float> magnitude(spectrum_.re.size());
  for (std::size_t k = 0; k < magnitude.size(); ++k) {
    const double m = std::sqrt(spectrum_.re[k] * spectrum_.re[k] + spectrum_.im[k] * spectrum_.im[k]);
    magnitude[k] = static_cast<float>(m == 0.0 ? 1.0 : m);
  }
  formula::Evaluator ev;
  formula::BindEvaluator(ev, formula_);
  ev.dx = static_cast<double>(s.step) * dt_;
  ev.random = context_.services().random;
  ev.planes[0] = magnitude.data();
  ev.planeStride = cols;
  std::vector<double> row(cols + 10, 0.0);
  ev.computed = row.data();
  ev.computedSize = s.ncols;
  ev.Prepare();
  const double df = Frequency();
  plotting_ = paced;
  Control& go = controls_["GoButton(3)"];
  if (paced) {
    go.text = "&Stop";
    go.tip = "Stops the graphing.";
    controls_.SetText("PercentDone", "0% done.");
    controls_.SetVisible("PercentDone", true);
    context_.ShowBusyArrow();
  }
  bool finished = true;
  for (int i = 0; i <= s.nrows && finished; ++i) {
    const double y = i * df;
    for (int j = 1; j <= s.ncols; ++j) {
      const std::size_t at = static_cast<std::size_t>(i) * cols + static_cast<std::size_t>(j - 1);
      const double m = std::sqrt(spectrum_.re[at] * spectrum_.re[at] + spectrum_.im[at] * spectrum_.im[at]);
      const double r = ev.Eval2(j - 1, i, TimeOfColumn(j), y);
      if (ev.fault() != formula::kNoFault) {
        context_.ShowCritical(ev.fault() == formula::kOverflow ? "Overflow.  " : "Run Error.  ");
        finished = false;
        break;
      }
      const double divisor = m == 0.0 ? 1.0 : m;
      spectrum_.re[at] = spectrum_.re[at] / divisor * r;
      spectrum_.im[at] = spectrum_.im[at] / divisor * r;
      row[static_cast<std::size_t>(j - 1)] = r;
    }
    if (!paced || i % 4 != 0) continue;
    controls_.SetText("PercentDone", std::to_string(i * 100 / (s.nrows + 1)) + "% done.");
    Touch();
    if (platform::EventLoop* loop = context_.services().eventLoop) loop->Yield();
    // A stop leaves the rows done so far modified.
    if (!plotting_) finished = false;
  }
  if (paced) {
    go.text = "&Plot";
    go.tip = "Gives each cell the formula's value as its magnitude.";
    controls_.SetVisible("PercentDone", false);
    context_.ShowIdle();
  }
  plotting_ = false;
  return finished;
}

void SpectrogramForm::RestoreTheGraph() {
  if (signal_.empty()) return;
  Compute(false);
}

std::optional<std::string> SpectrogramForm::FormulaPrompt(const std::string& prompt, const std::string& title) {
  return context_.services().dialogs->InputBox({prompt, title, ""});
}

void SpectrogramForm::FormulaError(int number) { context_.ShowError(number); }

platform::Random* SpectrogramForm::FormulaRandom() { return context_.services().random; }

bool SpectrogramForm::QueryClose() {
  if (!plotting_) return true;
  context_.Beep();
  return false;
}

std::unique_ptr<Form> MakeSpectrogramForm(FormContext& context) { return std::make_unique<SpectrogramForm>(context); }

}  // namespace keldo::timefreq
