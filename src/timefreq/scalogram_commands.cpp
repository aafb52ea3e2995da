// The scalogram's commands that send results elsewhere: the inversions,
// slices and the signal to one-dimensional forms, playback, the .scg form
// file, and what a dump shows.

#include <algorithm>
#include <cmath>
#include <numeric>

#include "common/file_io.h"
#include "common/number_text.h"
#include "kit/form_context.h"
#include "kit/form_file.h"
#include "timefreq/scalogram_form.h"
#include "timefreq/scg_file.h"
#include "wavelet/scalogram_view.h"

namespace keldo::timefreq {
namespace {

const FormFileKind kFormFile{"Scalogram (*.scg)|*.scg", ".scg", {"mnuSave"}, 65};

int Chosen(const ControlModel& controls, const std::string& base, int first, int last, int otherwise) {
  for (int k = first; k <= last; ++k)
    if (const Control* c = controls.Find(IndexedName(base, k)); c && c->value) return k;
  return otherwise;
}

}  // namespace

// -------------------------------------------------------------- inversion

void ScalogramForm::InvertTheScalogram() {
  if (!present_ || computing_) {
    context_.Beep();
    return;
  }
  const auto method = static_cast<wavelet::ScalInversion>(Chosen(controls_, "OpInvert", 1, 3, 2));
  context_.ShowBusy();
  std::vector<double> result;
  const bool inverted = wavelet::InvertScalogram(scalogram_, setup_, method, result);
  context_.ShowIdle();
  if (!inverted) {
    context_.ShowError(69);
    return;
  }
  SendToNewForm(result, a_, b_, "");
}

// ------------------------------------------------------------------ slices

void ScalogramForm::CopyVerticalSlice() {
  if (!present_ || pointerRow_ < 0) {
    context_.Beep();
    return;
  }
  // Every row at the time of the pointer's column, from the low-pass row
  // up, over the rows' octaves.
  const int rows = scalogram_.shape.nscales;
  std::vector<double> values(static_cast<std::size_t>(rows) + 1);
  for (int r = 0; r <= rows; ++r) values[static_cast<std::size_t>(r)] = CellMagnitude(r, pointerColumn_);
  SendSlice(values, RowOctave(0), RowOctave(rows),
                "Vertical slice\r\nTime: " + FormatLabel(a_ + pointerColumn_ * dt_));
}

void ScalogramForm::CopyHorizontalSlice() {
  if (!present_ || pointerRow_ < 0) {
    context_.Beep();
    return;
  }
  // One row, the pointer's scale, over the signal's time.
  std::vector<double> values(scalogram_.shape.Columns());
  for (int c = 0; c <= scalogram_.shape.n; ++c) values[static_cast<std::size_t>(c)] = CellMagnitude(pointerRow_, c);
  const std::string scale =
      pointerRow_ == 0 ? std::string("low pass") : FormatLabel(wavelet::ScaleOfRow(pointerRow_, setup_.voices));
  SendSlice(values, a_, b_, "Horizontal slice\r\nScale: " + scale);
}

// ---------------------------------------------------------------- playback

void ScalogramForm::PlaySignal() {
  // The sound handed over plays true, whatever the scale of the signal.
  PlaySamples(audio_.empty() ? signal_ : audio_);
}

// ------------------------------------------------------------------- files

ScgFile ScalogramForm::ToFile() const {
  ScgFile f;
  f.caption = Caption();
  const int view = kScalogramDisplayBox.ShowsPhase(controls_) ? 1 : 0;
  f.displayFlags = {static_cast<std::int16_t>(view == 0), static_cast<std::int16_t>(view == 1)};
  f.left = a_;
  f.right = b_;
  f.dx = dt_;
  f.wavelet = static_cast<char>('0' + static_cast<int>(setup_.wavelet));
  f.octaves = setup_.octaves;
  f.width = setup_.width;
  f.voices = setup_.voices;
  f.frequency = setup_.freq;
  f.signalMean = signal_.empty() ? 0.0
                                 : std::accumulate(signal_.begin(), signal_.end(), 0.0) /
                                       static_cast<double>(signal_.size());
  f.rows = setup_.octaves * setup_.voices;
  f.columns = n_;
  f.reference = scalogramMax_;
  f.mode = static_cast<std::int16_t>(kScalogramDisplayBox.MagnitudeMode(controls_));
  const bool dots = kScalogramDisplayBox.SignalAsDots(controls_);
  f.signalFlags = {static_cast<std::int16_t>(dots), static_cast<std::int16_t>(!dots)};
  f.view = static_cast<std::int16_t>(view);
  f.sampling = Val(controls_.Text("TxtSound(1)"));
  f.displayKind = 'G';
  f.signal = signal_;
  f.modifications = modifications_.Stored();
  f.report = controls_.Text("txtModReport");
  f.information = controls_.Text("txtInformation");
  return f;
}

void ScalogramForm::SaveTheForm(int asKnown) {
  if (!present_ || computing_) {
    context_.Beep();
    return;
  }
  SaveTheFormFile(*this, fileName_, asKnown == 0, kFormFile,
                  [this](const std::string& path) { return WriteFileBytes(path, WriteScgFile(ToFile())); });
}

bool ScalogramForm::ReadFrom(const ScgFile& f) {
  SetSignalValues(f.signal, static_cast<int>(f.signal.size()) - 1, f.left, f.right, f.dx);
  SetScalogramFields(f.wavelet - '0', std::to_string(f.octaves), std::to_string(f.voices), PlainNumber(f.width),
                     PlainNumber(f.frequency));
  kScalogramDisplayBox.Select(controls_, f.mode, f.view);
  if (f.signalFlags[0] != 0) controls_.SetFromUser("OpSignalDisplay(0)", "1");
  else if (f.signalFlags[1] != 0) controls_.SetFromUser("OpSignalDisplay(1)", "1");
  if (f.sampling > 0) controls_.SetText("TxtSound(1)", PlainNumber(f.sampling));
  if (!modifications_.SetStored(f.modifications)) return false;
  modifications_.SetReport(f.report);
  controls_.SetText("txtModReport", f.report);
  if (!Compute(true)) return false;
  if (!f.information.empty()) controls_.SetText("txtInformation", f.information);
  return true;
}

bool ScalogramForm::LoadForm(const std::string& path, const std::string& title) {
  return LoadFormFile(path, title, [this](const std::vector<std::uint8_t>& bytes) {
    const auto file = ReadScgFile(bytes);
    return file && ReadFrom(*file);
  });
}

// ------------------------------------------------------------------- dump

std::vector<GraphSummary> ScalogramForm::Graphs() const {
  std::vector<GraphSummary> out{SignalSummary()};
  if (!present_) return out;
  const wavelet::ScalogramShape& s = scalogram_.shape;
  const auto matrix = [&](const char* name, std::vector<double> values) {
    return MatrixSummary(name, std::move(values), s.nscales + 1, dt_);
  };
  GraphSummary real = matrix("real", scalogram_.re);
  real.fields.push_back({"octaves", "", {static_cast<double>(setup_.octaves)}, {}});
  real.fields.push_back({"voices", "", {static_cast<double>(setup_.voices)}, {}});
  real.fields.push_back({"width", "", {setup_.width}, {}});
  real.fields.push_back({"frequency", "", {setup_.freq}, {}});
  real.fields.push_back(
      {"wavelet", std::string(wavelet::ScalWaveletLabels()[static_cast<std::size_t>(setup_.wavelet) - 1]), {}, {}});
  real.fields.push_back({"modifications", "", {}, modifications_.All()});
  out.push_back(std::move(real));
  if (scalogram_.complex) out.push_back(matrix("imag", scalogram_.im));
  const bool phaseView = scalogram_.complex && kScalogramDisplayBox.ShowsPhase(controls_);
  const std::vector<std::int16_t>& levels = phaseView ? phase_ : levels_;
  out.push_back(matrix("display", std::vector<double>(levels.begin(), levels.end())));
  return out;
}

}  // namespace keldo::timefreq
