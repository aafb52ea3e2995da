#pragma once
// What the time-frequency forms share: the signal a one-dimensional form
// hands over, the play box, the information and modification boxes, the
// formula box that reshapes a matrix of cells (each cell's magnitude
// replaced by the formula's value, its phase or sign kept), and the new
// one-dimensional forms that receive slices and inverted signals.

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "formula/compiler.h"
#include "kit/form.h"
#include "kit/formula_box.h"
#include "kit/layout.h"
#include "kit/modification_list.h"
#include "kit/scan_line.h"
#include "kit/slices.h"

namespace keldo::timefreq {

// A number field read as a whole number, as VB's CInt reads it: rounded,
// halves to even; false for a value that is no number or out of range.
bool WholeNumber(double v, int& out);
// The grey of a display level, held to 0..255.
platform::Rgb Grey(int level);

// A matrix a formula reshapes: `rows` rows of `columns` cells, row by row;
// `im` is null for a real matrix, whose sign stands for the phase. The
// formula sees x = x(column), y = y(row) and g1, the cell's magnitude.
struct CellMatrix {
  double* re = nullptr;
  double* im = nullptr;
  int rows = 0, columns = 0;
  std::function<double(int column)> x;
  std::function<double(int row)> y;
  double dx = 0.0;  // the x step between columns
};

class TimeFreqForm : public Form, protected formula::FormulaHost {
 public:
  const std::vector<double>& Signal() const { return signal_; }
  const ModificationList& Modifications() const { return modifications_; }
  // The line that walks over the picture while the sound plays.
  const ScanLine& PlayScanLine() const { return scanLine_; }
  bool QueryClose() override;

  // The panels both forms lay out alike: the play box, a box of one
  // read-only text, and the formula row under the pictures.
  static LayoutNode PlayPanel(int playButton);
  static LayoutNode TextPanel(const char* name);
  static LayoutNode FormulaRow(const char* caption, int formulaButton);

 protected:
  // `playButton` is the Go button of the play box; `formulaButton` that of
  // the formula box, which reads "&Stop" while a formula runs.
  struct Buttons {
    int formula;
    int play;
  };
  TimeFreqForm(FormContext& context, FormKind kind, const FormulaBoxKind& formulas, Buttons buttons);

  // The controls of the play box (TxtSound(1), TxtSound(2), OpBitRate and
  // its Go button), of the formula box and of the two report boxes.
  void AddPlayControls();
  void AddFormulaControls(const std::string& fieldTip, const std::string& goTip);
  void AddReportControls();

  // The commands both forms bind alike: Restore (menu and pop-up), Save and
  // Save As, Open, the slices and the signal to new forms, the cursor
  // read-out, the form's help item and the side box's help, in `helpFile`,
  // and the formula box's buttons.
  void BindCommonCommands(const char* helpItem, const char* helpFile);
  virtual void RestoreTheForm() = 0;
  virtual void SaveTheForm(int asKnown) = 0;
  virtual void CopyVerticalSlice() = 0;
  virtual void CopyHorizontalSlice() = 0;
  // LoadForm's frame: the file's bytes through `read` (false for a file
  // that is no form of the kind), then the form takes the file's name.
  bool LoadFormFile(const std::string& path, const std::string& title,
                    const std::function<bool(const std::vector<std::uint8_t>&)>& read);
  // A matrix of a dump: `rows` rows of the values over [a, b], columns h
  // apart, with its name.
  GraphSummary MatrixSummary(const char* name, std::vector<double> values, int rows, double h) const;

  // The signal sig[0..points] over [a, b] in steps dt.
  void StoreSignal(const std::vector<double>& values, int points, double a, double b, double dt);
  // The audio box's three settings.
  void SetAudioTexts(const std::string& rate, const std::string& volume, bool sixteenBits);
  AudioTexts Audio() const;
  // Plays samples with the box's rate, volume and bits, and starts the
  // scan line; false after a message (a bad volume or rate, no sound
  // device).
  bool PlaySamples(const std::vector<double>& samples);
  // A new one-dimensional form with the values over [a, b] and this form's
  // audio settings; false after a message.
  bool SendToNewForm(const std::vector<double>& values, double a, double b, const std::string& remarks);
  // A slice to the form the slices of this form go to (a new one the first
  // time); false after a message.
  bool SendSlice(const std::vector<double>& values, double a, double b, const std::string& remarks);

  // The formula box's Plot: compiles the field's text and reshapes the
  // cells, paced with the Stop button and "% done."; on success the list
  // and the report grow by the formula. False after "Improper formula" or
  // a fault, or on a stop (the rows done so far stay reshaped).
  bool PlotFormula(const CellMatrix& cells);
  // The same for a formula of the list being replayed: not paced, not
  // listed again.
  bool ReplayFormula(const std::string& text, const CellMatrix& cells);
  // A threshold entry in the list and the report.
  void ListThreshold(const std::string& text);
  void ShowReport();
  void CopyTheSignal();
  // Prints the whole form on a sheet of its own.
  void PrintFormPage();
  // The signal's picture in row `row` of the form, on the time scale of
  // [a, b], and its drawing as dots or lines with the time axis.
  Picture SignalPicture(int row) const;
  void PaintSignal(platform::Surface& surface, const Picture& picture, bool dots) const;
  // The signal's graph of a dump, with the scan line's positions.
  GraphSummary SignalSummary() const;


  bool IsStopButton(int k) const override;
  bool StopWork() override;

  // FormulaHost
  int FormulaPoints() const override { return n_; }
  int FormulaGraphCount() const override { return 1; }
  double FormulaIntervalLength() const override { return b_ - a_; }
  std::optional<std::string> FormulaPrompt(const std::string& prompt, const std::string& title) override;
  void FormulaError(int number) override;
  platform::Random* FormulaRandom() override;
  const formula::GraphTable* FormulaGraphs() override { return nullptr; }

  // The signal.
  std::vector<double> signal_;
  int n_ = 0;
  double a_ = 0.0, b_ = 1.0, dt_ = 1.0;
  ModificationList modifications_;
  std::string fileName_;
  std::string cursorText_;
  bool plotting_ = false;
  formula::FormulaState formula_;
  formula::Compiler compiler_{formula_, *this};
  FormulaBox formulaBox_;
  ScanLine scanLine_{context_.services(), [this] { Touch(); }};
  SliceTarget slices_;

 private:
  bool Reshape(const std::string& text, const CellMatrix& cells, bool paced);
  Buttons buttons_;
  std::string formulaGoTip_;
};

}  // namespace keldo::timefreq
