#pragma once
// The scalogram form: the continuous wavelet transform of a signal handed
// over by a one-dimensional form, on a grid of octaves and voices, shown as
// an image with the scale growing upward above the signal. Thresholds and
// formulas change the rows and are written to the modification list, so
// that a saved form (.scg) holds only the signal, the settings and that
// list; slices and the inverted signal go to new one-dimensional forms.

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "fourier/spectrogram.h"
#include "kit/named_calls.h"
#include "kit/spectrum_display_box.h"
#include "timefreq/timefreq_form.h"
#include "wavelet/scalogram.h"

namespace keldo::timefreq {

struct ScgFile;

// The display box: magnitude or phase as OpView, redrawn by GoButton(2).
inline constexpr SpectrumDisplayBox kScalogramDisplayBox{"OpView", 2};

// Side-box panels (PicSideBox) by number.
enum ScalogramPanel : int {
  kScgPanelCompute = 0,
  kScgPanelDisplay = 1,
  kScgPanelThreshold = 2,
  kScgPanelFormula = 3,
  kScgPanelInvert = 4,
  kScgPanelPlay = 5,
  kScgPanelInformation = 6,
  kScgPanelModifications = 7,
  kScalogramPanels = 8,
};

class ScalogramForm final : public TimeFreqForm, public ScalogramCalls {
 public:
  static constexpr FormKind kKind = FormKind::Scalogram;

  explicit ScalogramForm(FormContext& context);

  // The named calls.
  void SetSignalValues(const std::vector<double>& values, int points, double a, double b, double dt) override;
  void AudioSettings(const std::string& rate, const std::string& volume, bool sixteenBits) override;
  void ShowScalogramBox() override;
  void SetTrueAudioSignal(const std::vector<double>& samples) override;
  void SetScalogramFields(int wavelet, const std::string& octaves, const std::string& voices,
                          const std::string& width, const std::string& frequency) override;
  bool ComputeTheScalogram() override;

  void ThresholdScalogram();
  // The formula box's Plot: the formula of x (time), y (scale) and g1 (the
  // cell's magnitude) becomes each cell's magnitude, its sign or phase kept.
  void PlotTheGraph();
  void RedrawScalogram();
  // Recomputes from the signal; the list is back to "B".
  void RestoreTheForm() override;
  void InvertTheScalogram();
  void CopyVerticalSlice() override;
  void CopyHorizontalSlice() override;
  void PlaySignal();
  void ChangeBackground();

  // Files: SaveTheForm(0) asks for a name, 1 uses the form's own.
  void SaveTheForm(int asKnown) override;
  bool LoadForm(const std::string& path, const std::string& title) override;
  bool CanLoadForms() const override { return true; }

  bool Present() const { return present_; }
  bool Computing() const { return computing_; }
  const wavelet::Scalogram& Matrices() const { return scalogram_; }
  const wavelet::ScalogramSetup& Setup() const { return setup_; }
  const std::vector<double>& AudioSignal() const { return audio_; }

  // The plot face: the scalogram above, the signal below.
  std::vector<Picture> Pictures() const override;
  void Paint(int picture, platform::Surface& surface) const override;
  bool PictureMouse(int picture, MouseAction action, double x, double y, MouseButton button) override;
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
  // A running computation refuses the close, with a beep.
  bool QueryClose() override;

 private:
  void BuildControls();
  void BindCommands();
  static std::span<const SideBoxRow<ScalogramForm>> SideBoxTable();
  void OpenThreshold(const SideBoxCommand& box);
  void OpenFormula(const SideBoxCommand& box);
  void ComputeGo();
  bool StopWork() override;
  bool IsStopButton(int k) const override;
  // Validates the box and computes; `keepList` replays the list a loaded
  // form brought instead of starting it again.
  bool Compute(bool keepList);
  // The box's fields read and checked; false after the message.
  bool ReadSetup(wavelet::ScalogramSetup& setup);
  // Runs the transform into `into`; the row callback serves the event loop.
  wavelet::ScalogramStatus Run(const wavelet::ScalogramSetup& setup, wavelet::Scalogram& into);
  void ReplayModifications();
  CellMatrix Cells();
  void UpdateDisplay();
  void PaintImage(platform::Surface& surface, platform::Rgb background) const;
  void SetDataValues();
  void SetScaleAxisLabels();
  // The frame keeps the last fields of each wavelet.
  void FieldsFromSettings(int wavelet);
  void FieldsToSettings(int wavelet);
  int WaveletNumber() const;
  // The cell under a point of the image, column 0..N and row 0..nscales.
  bool CellAt(double x, double y, int& column, int& row) const;
  // The picture's y of a row: the octave (r - 1)/v.
  double RowOctave(int row) const;
  double CellMagnitude(int row, int column) const;
  bool ReadFrom(const ScgFile& file);
  ScgFile ToFile() const;

  wavelet::ScalogramSetup setup_;
  wavelet::Scalogram scalogram_, work_;
  bool present_ = false;
  bool computing_ = false;
  bool stopRequested_ = false;
  std::vector<std::int16_t> levels_, phase_;
  double scalogramMax_ = 0.0;
  bool darkBackground_ = false;
  // The sound the form plays: the signal, or the one handed over.
  std::vector<double> audio_;
  int pointerColumn_ = 0, pointerRow_ = -1;
};

std::unique_ptr<Form> MakeScalogramForm(FormContext& context);

}  // namespace keldo::timefreq
