#pragma once
// The one-dimensional form: several graphs over one sampling grid of N
// intervals (N+1 samples), shown in one plot window, and the formula that
// makes new ones.

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "app/form.h"
#include "formula/compiler.h"
#include "formula/user_function.h"

namespace keldo::form1d {

constexpr int kMinPoints = 64;
constexpr int kMaxPoints = 65536;
constexpr int kDefaultPoints = 1024;
constexpr int kSlack = 10;  // samples of slack after point N in every row

// Clips the segment (x1,y1)-(x2,y2), x2 - x1 = dx, to the window's y range in
// place. A segment wholly above the top gets both y values top + 1, wholly
// below bottom - 1, so that the caller can skip it.
void GETBVTV(double& x1, double& x2, double& y1, double& y2, double dx, double bottom, double top);

// The colour of graph g: bright green, cyan, red, magenta, yellow, white.
std::uint32_t GraphColour(int g);

class Graph1Form final : public Form, private formula::FormulaHost {
 public:
  explicit Graph1Form(Frame& frame);

  // The graph store.
  void SetPoints(int n);
  void ChangePointsMenu(int n);
  void UpDateFnData(int count, const std::vector<double>& y, double a, double b, double h, bool reallocate);
  void RemoveGraph(int g);
  void RemoveTheGraph();
  void ClearGraphs();
  void ResetMenu();
  int NumGraphsPlotted() const { return graphCount_; }
  // "xl,xr,yb,yt": result "L" or "R" on a bad pair, empty on success.
  void ChangeWindow(const std::string& text, std::string& result);
  // -1 after reporting 4 or 5, 0 when the window is proper.
  int TestNewIntervals(const std::string& xl, const std::string& xr, const std::string& yb, const std::string& yt);
  void ResetAxes();
  void SetIntervalChoice(double a);
  void SetIntervalData(int g);

  // Graphing.
  void PlotTheGraph();
  void RestorePlotButton();
  void NewWindow();
  void RedrawGraphs(int mode);
  bool Plotting() const { return plotting_ != 'N'; }

  formula::FormulaState& FormulaFields() { return formula_; }
  formula::Compiler& compiler() { return compiler_; }
  double VALU(std::string& text) { return compiler_.VALU(text); }
  double VALU(const std::string& text) { return compiler_.VALU(text); }

  int GraphCount() const { return graphCount_; }
  int Log2Points() const { return log2N_; }
  const double* GraphValues(int g) const { return values_.data() + Row() * static_cast<std::size_t>(g); }
  double GraphLeft(int g) const { return a_[static_cast<std::size_t>(g)]; }
  double GraphRight(int g) const { return b_[static_cast<std::size_t>(g)]; }
  double GraphStep(int g) const { return h_[static_cast<std::size_t>(g)]; }
  bool DotsMode() const { return dots_ == 'Y'; }
  // The graph being computed, for a view to draw while a plot runs.
  struct LiveGraph {
    const double* values = nullptr;
    int count = 0;
    double a = 0.0, h = 0.0;
    int colourIndex = 0;
  };
  LiveGraph Live() const { return live_; }

  int Points() const override { return n_; }
  std::array<double, 4> Window() const override { return {winLeft_, winRight_, winBottom_, winTop_}; }
  std::vector<GraphSummary> Graphs() const override;
  bool Go() override;
  bool Click(const std::string& name) override;
  bool QueryClose() override;

 private:
  // FormulaHost
  int FormulaPoints() const override { return n_; }
  int FormulaGraphCount() const override { return graphCount_; }
  double FormulaIntervalLength() const override { return intervalRight_ - intervalLeft_; }
  std::optional<std::string> FormulaPrompt(const std::string& prompt, const std::string& title) override;
  void FormulaError(int number) override;
  platform::Random* FormulaRandom() override;
  const formula::GraphTable* FormulaGraphs() override;

  void BuildControls();
  // Sizes the value rows and per-graph arrays to the capacity, keeping or
  // clearing what they hold.
  void SizeStore(bool keep);
  void Reallocate();
  void Extend(int slots);
  std::size_t Row() const { return static_cast<std::size_t>(n_) + 1 + kSlack; }
  void PlotGraph(std::string& error, const std::string& command, double b);
  void USERFN(int count, double a, double b, double h, std::vector<double>& y, std::string& error,
              const std::string& command);
  void OpenSideBox(const std::string& key, const std::string& topic, int goIndex);
  void SetAnalysisForm(const std::string& title);
  void PerformAnalysis();
  void UpdateLimitTips();
  double MAXW() const;
  double MINW() const;
  double FUNCMAX() const;

  int n_ = kDefaultPoints;
  int log2N_ = 10;
  int graphCount_ = 0;
  int capacity_ = 4;
  std::vector<double> values_;  // (capacity+1) rows of N+1+kSlack samples
  std::vector<double> a_, b_, h_, peak_;
  double winLeft_ = -0.5, winRight_ = 0.5, winBottom_ = 0.0, winTop_ = 0.0;
  double intervalLeft_ = -0.5, intervalRight_ = 0.5;
  double step_ = 1.0 / kDefaultPoints;
  int tracePosition_ = kDefaultPoints / 2;
  char dots_ = 'Y';
  char plotting_ = 'N';
  bool exchangeHasGraph_ = false;
  std::string sideBoxKey_;
  int goIndex_ = -1;

  formula::FormulaState formula_;
  formula::Compiler compiler_{formula_, *this};
  formula::GraphTable graphTable_;
  LiveGraph live_;
};

std::unique_ptr<Form> MakeGraph1Form(Frame& frame);

}  // namespace keldo::form1d
