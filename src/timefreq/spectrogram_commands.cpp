// The spectrogram's commands that send results elsewhere: inversion and Gabor
// denoising, slices and the signal to one-dimensional forms, playback, the
// .spg form file, and what a dump shows.

#include <algorithm>
#include <climits>
#include <cmath>

#include "common/file_io.h"
#include "common/number_text.h"
#include "kit/form_context.h"
#include "kit/form_file.h"
#include "kit/slices.h"
#include "platform/audio.h"
#include "platform/services.h"
#include "timefreq/spectrogram_form.h"
#include "timefreq/spg_file.h"
#include "wavefile/wave_control.h"

namespace keldo::timefreq {
namespace {

const FormFileKind kFormFile{"Spectrograph (*.spg)|*.spg", ".spg", {"mnuSave"}, 66};

int SelectedIndex(const ControlModel& controls, const std::string& base, int count) {
  for (int k = 0; k < count; ++k)
    if (const Control* c = controls.Find(IndexedName(base, k)); c && c->value) return k;
  return 0;
}

}  // namespace

// -------------------------------------------------------------- inversion

void SpectrogramForm::InvertTheSpectrogram() {
  if (!present_) {
    context_.Beep();
    return;
  }
  // The options list "each filter", "sum of filter squares", "summed filters".
  static constexpr fourier::InversionMethod kMethods[] = {fourier::InversionMethod::EachFilter,
                                                          fourier::InversionMethod::SumOfSquares,
                                                          fourier::InversionMethod::SummedFilters};
  const int k = SelectedIndex(controls_, "OpInversion", 3);
  context_.ShowBusy();
  std::vector<double> result;
  const bool inverted = fourier::InvertSpectrogram(spectrum_, WindowKind(), kMethods[k], result);
  context_.ShowIdle();
  if (!inverted) {
    context_.ShowError(70);
    return;
  }
  SendToNewForm(result, a_, b_, "");
}

void SpectrogramForm::DenoiseOption() {
  RunMenu("mnuPlot");
  if (!present_) return;
  const double level = fourier::GetStandardDeviation(spectrum_, WindowKind());
  controls_.SetText("Formula",
                    fourier::GaborDenoiseFormula(WindowKind(), level, spectrum_.shape.nrows, spectrum_.shape.winlen));
  Touch();
}

// ------------------------------------------------------------------ slices

void SpectrogramForm::CopyVerticalSlice() {
  if (!present_ || pointerRow_ < 0) {
    context_.Beep();
    return;
  }
  // All frequencies at the time of the pointer's column.
  const fourier::SpectrogramShape& s = spectrum_.shape;
  std::vector<double> values(static_cast<std::size_t>(s.nrows) + 1);
  for (int r = 0; r <= s.nrows; ++r)
    values[static_cast<std::size_t>(r)] = std::hypot(spectrum_.Re(r, pointerColumn_), spectrum_.Im(r, pointerColumn_));
  SendSlice(values, 0.0, s.nrows * Frequency(),
                "Vertical slice\r\nTime: " + FormatLabel(TimeOfColumn(pointerColumn_)));
}

void SpectrogramForm::CopyHorizontalSlice() {
  if (!present_ || pointerRow_ < 0) {
    context_.Beep();
    return;
  }
  // One frequency, the pointer's row, over time.
  const fourier::SpectrogramShape& s = spectrum_.shape;
  std::vector<double> values(static_cast<std::size_t>(s.ncols));
  for (int c = 1; c <= s.ncols; ++c)
    values[static_cast<std::size_t>(c - 1)] = std::hypot(spectrum_.Re(pointerRow_, c), spectrum_.Im(pointerRow_, c));
  SendSlice(values, TimeOfColumn(1), TimeOfColumn(s.ncols),
                "Horizontal slice\r\nFrequency: " + FormatLabel(pointerRow_ * Frequency()));
}

// ---------------------------------------------------------------- playback

void SpectrogramForm::PlaySignal() { PlaySamples(signal_); }

// ------------------------------------------------------------------- files

SpgFile SpectrogramForm::ToFile() const {
  SpgFile f;
  f.caption = Caption();
  f.left = a_;
  f.right = b_;
  f.dt = dt_;
  f.rows = spectrum_.shape.nrows;
  f.winlenPart = spectrum_.shape.winlen / 2;
  f.step = spectrum_.shape.step;
  f.samplingValue = Val(controls_.Text("TxtSound(1)"));
  f.displayMaximum = static_cast<std::int32_t>(std::clamp(spectrogramMax_, 0.0, static_cast<double>(INT_MAX)));
  f.displayMode = static_cast<std::int16_t>(kDisplayBox.MagnitudeMode(controls_));
  f.displayChoice = static_cast<std::int16_t>(kDisplayBox.ShowsPhase(controls_) ? 1 : 0);
  f.flag = present_ ? 'Y' : 'N';
  const Control* filter = controls_.Find("SpecFilter");
  f.filterIndex = static_cast<std::int16_t>(filter ? filter->value : 0);
  f.df = present_ ? Frequency() : 0.0;
  f.signal = signal_;
  f.modifications = modifications_.Stored();
  f.report = controls_.Text("txtModReport");
  f.information = controls_.Text("txtInformation");
  return f;
}

void SpectrogramForm::SaveTheForm(int asKnown) {
  if (!present_) {
    context_.Beep();
    return;
  }
  SaveTheFormFile(*this, fileName_, asKnown == 0, kFormFile,
                  [this](const std::string& path) { return WriteFileBytes(path, WriteSpgFile(ToFile())); });
}

bool SpectrogramForm::ReadFrom(const SpgFile& f) {
  SetSignalValues(f.signal, static_cast<int>(f.signal.size()) - 1, f.left, f.right, f.dt);
  controls_.SetText("SpSetting(0)", std::to_string(2 * f.winlenPart));
  controls_.SetText("SpSetting(1)", std::to_string(f.step));
  Control& filter = controls_["SpecFilter"];
  if (f.filterIndex >= 0 && f.filterIndex < static_cast<int>(filter.items.size()))
    controls_.SetFromUser("SpecFilter", filter.items[static_cast<std::size_t>(f.filterIndex)]);
  kDisplayBox.Select(controls_, f.displayMode, f.displayChoice);
  if (f.samplingValue > 0) controls_.SetText("TxtSound(1)", PlainNumber(f.samplingValue));
  if (!modifications_.SetStored(f.modifications)) return false;
  modifications_.SetReport(f.report);
  controls_.SetText("txtModReport", f.report);
  windowName_.clear();
  if (!Compute(true)) return false;
  controls_.SetText("txtInformation", f.information.empty() ? controls_.Text("txtInformation") : f.information);
  return true;
}

bool SpectrogramForm::LoadForm(const std::string& path, const std::string& title) {
  return LoadFormFile(path, title, [this](const std::vector<std::uint8_t>& bytes) {
    const auto file = ReadSpgFile(bytes);
    return file && ReadFrom(*file);
  });
}

// ------------------------------------------------------------------- dump

std::vector<GraphSummary> SpectrogramForm::Graphs() const {
  std::vector<GraphSummary> out{SignalSummary()};
  if (!present_) return out;
  const fourier::SpectrogramShape& s = spectrum_.shape;
  const auto matrix = [&](const char* name, std::vector<double> values) {
    return MatrixSummary(name, std::move(values), s.nrows + 1, static_cast<double>(s.step) * dt_);
  };
  GraphSummary real = matrix("real", spectrum_.re);
  real.fields.push_back({"winlen", "", {static_cast<double>(s.winlen)}, {}});
  real.fields.push_back({"step", "", {static_cast<double>(s.step)}, {}});
  real.fields.push_back({"window", windowName_, {}, {}});
  real.fields.push_back({"modifications", "", {}, modifications_.All()});
  out.push_back(std::move(real));
  out.push_back(matrix("imag", spectrum_.im));
  const std::vector<std::int16_t>& levels = kDisplayBox.ShowsPhase(controls_) ? phase_ : magnitude_;
  out.push_back(matrix("display", std::vector<double>(levels.begin(), levels.end())));
  return out;
}

}  // namespace keldo::timefreq
