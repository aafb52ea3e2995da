#pragma once
// The spectrogram form: the short-time Fourier transform of a signal handed
// over by a one-dimensional form, shown as a grey image of magnitude or
// phase above the signal. Thresholds and formulas change the spectrum and
// are written to the modification list, so that a saved form (.spg) holds
// only the signal and that list; slices and the inverted signal go to new
// one-dimensional forms.

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "fourier/spectrogram.h"
#include "kit/named_calls.h"
#include "kit/spectrum_display_box.h"
#include "timefreq/timefreq_form.h"

namespace keldo::timefreq {

struct SpgFile;

// The display box: magnitude or phase as OpMagPhase, redrawn by GoButton(1).
inline constexpr SpectrumDisplayBox kDisplayBox{"OpMagPhase", 1};

// Side-box panels (PicSideBox) by number.
enum SpectrogramPanel : int {
  kPanelCompute = 0,
  kPanelDisplay = 1,
  kPanelThreshold = 2,
  kPanelFormula = 3,
  kPanelInvert = 4,
  kPanelPlay = 5,
  kPanelInformation = 6,
  kPanelModifications = 7,
  kSpectrogramPanels = 8,
};

class SpectrogramForm final : public TimeFreqForm, public SpectrogramCalls {
 public:
  static constexpr FormKind kKind = FormKind::Spectrogram;

  explicit SpectrogramForm(FormContext& context);

  // The named calls of the one-dimensional form.
  void SetSignalValues(const std::vector<double>& values, int points, double a, double b, double dt) override;
  void AudioSettings(const std::string& rate, const std::string& volume, bool sixteenBits) override;
  void ShowSpecgramBox() override;
  bool ComputeTheSpectrogram() override;
  void DenoiseOption() override;

  // The valid window length of the box for this signal, or -1.
  int CheckWindowLength();
  // Redraws from the spectrum in the display box's mode.
  void RedrawSpectrogram();
  void ThresholdSpectrogram();
  // The formula box's Plot: the formula of x (time), y (frequency) and g1
  // (the cell's magnitude) becomes each cell's magnitude, its phase kept.
  void PlotTheGraph();
  // Recomputes from the signal; the list is back to "B".
  void RestoreTheForm() override;
  void InvertTheSpectrogram();
  void CopyVerticalSlice() override;
  void CopyHorizontalSlice() override;
  void PlaySignal();
  // "Percussion scalogram": the pulse train of the columns' power in a new
  // one-dimensional form that keeps this signal to play, and its scalogram
  // with the settings the pulses' rate gives.
  void ComputePercScalgrm();

  // Files: SaveTheForm(0) asks for a name, 1 uses the form's own.
  void SaveTheForm(int asKnown) override;
  bool LoadForm(const std::string& path, const std::string& title) override;
  bool CanLoadForms() const override { return true; }

  bool Present() const { return present_; }
  const fourier::Spectrum& Spectrum() const { return spectrum_; }

  // The plot face: the spectrogram above, the signal below.
  std::vector<Picture> Pictures() const override;
  void Paint(int picture, platform::Surface& surface) const override;
  bool PictureMouse(int picture, MouseAction action, double x, double y, MouseButton button) override;
  // A script's pointer is on the spectrogram, in time and frequency.
  bool Mouse(MouseAction action, double x, double y, MouseButton button) override {
    return PictureMouse(0, action, x, y, button);
  }
  bool TracksPointer() const override;
  const std::string& CursorText() const override { return cursorText_; }
  const FormLayout& Layout() const override;
  void ControlChanged(const std::string& name) override;

  int Points() const override { return n_; }
  std::array<double, 4> Window() const override;
  std::vector<GraphSummary> Graphs() const override;

 private:
  void BuildControls();
  void BindCommands();
  static std::span<const SideBoxRow<SpectrogramForm>> SideBoxTable();
  void OpenThreshold(const SideBoxCommand& box);
  void OpenFormula(const SideBoxCommand& box);
  void ComputeGo();
  // Validates the box and computes; `keepList` replays the list a loaded
  // form brought instead of starting it again.
  bool Compute(bool keepList);
  // Replays the modification list on a fresh spectrum.
  void ReplayModifications();
  // The spectrum's cells for a formula: x the column's time, y the row's
  // frequency.
  CellMatrix Cells();
  void UpdateDisplay();
  void SetDataValues();
  void SetAxisLabels();
  // The cell under a point of the image: column 1..ncols and row 0..nrows;
  // false outside it or with no spectrum.
  bool CellAt(double x, double y, int& column, int& row) const;
  double TimeOfColumn(int column) const;
  double Frequency() const;  // df
  bool ReadFrom(const SpgFile& file);
  SpgFile ToFile() const;
  fourier::SpecWindow WindowKind() const;

  // The spectrum and how it is shown.
  fourier::Spectrum spectrum_;
  bool present_ = false;
  std::vector<std::int16_t> magnitude_, phase_;
  double spectrogramMax_ = 0.0;
  std::string windowName_;
  int pointerColumn_ = 0, pointerRow_ = -1;
};

std::unique_ptr<Form> MakeSpectrogramForm(FormContext& context);

}  // namespace keldo::timefreq
