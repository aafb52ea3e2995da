#pragma once
// The measuring boxes of the graph forms: the norm of one graph, the norm of
// the difference of two, the integral and the scalar product, over the part
// of the graphs that the form's window shows; and the statistics report of
// one graph.
//
// The box owns its fields and texts. It reads the graph numbers (TxtAnGr1,
// TxtAnGr2), the norm (OptSupNorm, OpVarNorm, OptPowerNorm with NormPower,
// and OpSNR where the style has it), the normalize check, and Absolute or
// Relative (AbsNorm, RelNorm); it composes the label and writes into
// AnalysisText either "label\r\nvalue" or one of the reports
//
//   "<label> error.  Division by zero"   a relative difference against a
//                                        graph whose norm is 0
//   "<label> error.  Overflow"           a value that is not finite
//
// with the labels "Integral", "Scalar product", "Sup-Norm", "Var-Norm",
// "<p>-Norm", "Normalized <p>-Norm" and "[Relative ]<norm> difference".
// The arithmetic is the form's, through a MeasureSource over its window.

#include <array>
#include <string>
#include <vector>

#include "kit/controls.h"
#include "kit/graph_number.h"
#include "kit/layout.h"

namespace keldo {

class Form;

enum class MeasureNorm { Sup, Var, Power };

// What a form measures with. Graphs are 0-based; every measure looks only at
// the samples inside the form's window of the first graph named.
class MeasureSource {
 public:
  virtual ~MeasureSource() = default;
  // The graph a number field names; -1 after the form reported why.
  virtual int Graph(const std::string& field, const GraphNumberRules& rules) = 0;
  // The value of a number field's text, as the form evaluates numbers.
  virtual double Number(const std::string& text) = 0;
  // Whether g and g2 may be measured together; false after a report.
  virtual bool Compatible(int g, int g2) = 0;
  virtual double Integral(int g) = 0;
  virtual double ScalarProduct(int g, int g2) = 0;
  // The norm of graph g, or of g minus graph `minus` when that is 0 or more.
  virtual double Norm(int g, int minus, MeasureNorm kind, double p) = 0;
  // A power norm of g divided by the same norm of 1 over g's domain.
  virtual double Normalized(int g, double norm, double p) = 0;
  // A norm of the difference of g and g2 over the same norm of the graph the
  // form compares with; `divisionByZero` when that norm is 0.
  virtual double Relative(int g, int g2, double difference, MeasureNorm kind, double p, bool& divisionByZero) = 0;
  // The signal-to-noise text of g against g2 (a box with the SNR option).
  virtual std::string SignalToNoise(int g, int g2) = 0;
  // The statistics report of graph g: 0 with the report, -1 when there is
  // nothing to show, or the message to give.
  virtual int Statistics(int g, std::string& report) = 0;
};

// Where the forms' boxes differ.
struct MeasuringBoxStyle {
  const char* firstGraphCaption;               // the caption of TxtAnGr1 on the panel
  std::array<const char*, 3> normCaptions;     // OptSupNorm, OpVarNorm, OptPowerNorm
  const char* normalizeName;                   // the normalize check box
  const char* normalizeCaption;
  const char* normalizeTip;                    // "" for none
  bool signalToNoise = false;                  // OpSNR, "SNR", beside the norms of a difference
  bool overflowOfEveryMeasure = false;         // or of the norm differences alone
  bool progressTexts = false;                  // "Computing..." while the measure runs
  bool resultOfMeasuresOnly = false;           // the panel serves other commands: AnalysisText shows for measures
  GraphNumberRules measureGraphs{};            // TxtAnGr1 and TxtAnGr2
  GraphNumberRules statisticsGraph{};          // TxtGraphStat
  const char* statisticsOutput = "";           // the control the statistics report goes to
};

// "Norm", "Norm difference", "Integral" and "Scalar product".
bool IsMeasure(const std::string& title);

// The box's controls: TxtAnGr2, the norms and their power, the normalize
// check, Absolute and Relative, AnalysisText. TxtAnGr1 and the Go button
// are the form's, as other commands share them.
void AddMeasuringControls(ControlModel& controls, const MeasuringBoxStyle& style);
// The panel's rows from TxtAnGr1 to RelNorm, for the form to set between
// its title and its Go button.
std::vector<LayoutNode> MeasuringFields(const MeasuringBoxStyle& style);
// Shows the fields the command `title` reads and hides the rest of the box.
// A box with the SNR option takes the power norm for "Norm" when SNR was on.
void ShowMeasuringFields(ControlModel& controls, const std::string& title, const MeasuringBoxStyle& style);

// Runs the measure `title` and shows its result or report.
void RunMeasure(Form& form, MeasureSource& source, const std::string& title, const MeasuringBoxStyle& style);
// The statistics of the graph in TxtGraphStat into the style's output.
void RunStatistics(Form& form, MeasureSource& source, const MeasuringBoxStyle& style);

}  // namespace keldo
