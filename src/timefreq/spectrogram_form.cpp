#include "timefreq/spectrogram_form.h"

#include <algorithm>
#include <cmath>
#include <new>

#include "common/file_io.h"
#include "common/number_text.h"
#include "formula/eval.h"
#include "formula/formula_text.h"
#include "kit/focus.h"
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


}  // namespace

SpectrogramForm::SpectrogramForm(FormContext& context)
    : TimeFreqForm(context, FormKind::Spectrogram, kFormulaBox, {3, 5}) {
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
  AddFormulaControls("A formula of x (time), y (frequency) and g1 (magnitude).",
                     "Gives each cell the formula's value as its magnitude.");
  // The inversion box.
  controls_.Add("LabelInvert", ControlKind::Label, "Invert Spectrograph");
  const char* methods[] = {"Division by each filter", "Division by sum of filter squares",
                           "Division by summed filters"};
  for (int k = 0; k < 3; ++k) controls_.AddOption(IndexedName("OpInversion", k), methods[k], "OpInversion", k == 2);
  Control& go4 = controls_.Add("GoButton(4)", ControlKind::Button, "&Invert");
  go4.tip = "Turns the spectrogram back into a signal in a new form.";
  AddPlayControls();
  AddReportControls();
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
  BindCommonCommands("mnuHelpSpectrogram", "KELDSPGR.HLP");
  OnMenu("mnuPercussion", [this](int) { ComputePercScalgrm(); });
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
}

// ------------------------------------------------------------ named calls

void SpectrogramForm::SetSignalValues(const std::vector<double>& values, int points, double a, double b, double dt) {
  StoreSignal(values, points, a, b, dt);
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
  SetAudioTexts(rate, volume, sixteenBits);
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
    RequestFocus(controls_, "SpSetting(0)");
    return false;
  }
  int step = 0;
  if (!WholeNumber(compiler_.VALU(controls_.Text("SpSetting(1)")), step) || step < 1 || step > winlen) {
    context_.ShowError(57);
    RequestFocus(controls_, "SpSetting(1)");
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
      ReplayFormula(entry.text, Cells());
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
  return {image, SignalPicture(1)};
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
  PaintSignal(surface, SignalPicture(1), kDisplayBox.SignalAsDots(controls_));
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
    RequestFocus(controls_, "txtThreshold");
    return;
  }
  fourier::ThresholdSpectrum(spectrum_, value);
  ListThreshold(text);
  RedrawSpectrogram();
}

void SpectrogramForm::OpenFormula(const SideBoxCommand&) { formulaBox_.Enable(true); }

void SpectrogramForm::PlotTheGraph() {
  if (!present_) {
    context_.Beep();
    return;
  }
  PlotFormula(Cells());
  RedrawSpectrogram();
}

CellMatrix SpectrogramForm::Cells() {
  const fourier::SpectrogramShape& s = spectrum_.shape;
  CellMatrix cells;
  cells.re = spectrum_.re.data();
  cells.im = spectrum_.im.data();
  cells.rows = s.nrows + 1;
  cells.columns = s.ncols;
  cells.dx = static_cast<double>(s.step) * dt_;
  cells.x = [this](int column) { return TimeOfColumn(column + 1); };
  cells.y = [df = Frequency()](int row) { return row * df; };
  return cells;
}

void SpectrogramForm::RestoreTheForm() {
  if (signal_.empty()) return;
  Compute(false);
}

std::unique_ptr<Form> MakeSpectrogramForm(FormContext& context) { return std::make_unique<SpectrogramForm>(context); }

}  // namespace keldo::timefreq
