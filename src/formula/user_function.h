#pragma once
// Runs a compiled formula over a grid: a plain formula point by point, or a
// differential equation by a fourth-order Runge-Kutta step. The caller draws
// through the sink and decides, at each refresh, whether to go on.

#include <string>
#include <vector>

#include "formula/compiler.h"
#include "formula/eval.h"

namespace keldo::formula {

class PlotSink {
 public:
  virtual ~PlotSink() = default;
  // Lines mode only: the point before the first one, so that the first
  // segment has a start.
  virtual void Prime(double x, double y) { (void)x; (void)y; }
  // One computed point; `dot` tells dots from lines.
  virtual void Point(double x, double y, bool dot) { (void)x; (void)y; (void)dot; }
  // Every refresh interval: show what was drawn, let events run. False
  // stops the run.
  virtual bool Refresh() { return true; }
};

struct UserFunctionRun {
  const FormulaState* state = nullptr;  // program, form type, order, noise terms
  std::array<int, 12> bounds{};         // lower bounds of I J K N P Q, then upper
  std::array<double, 11> initialValues{};
  double a = 0.0, h = 0.0;
  int count = 0;                        // points computed: N + 1
  bool dots = true;
  int refresh = 1;                      // points between refreshes
  const GraphTable* graphs = nullptr;
  platform::Random* random = nullptr;
  const int* abortField = nullptr;
};

struct UserFunctionResult {
  int fault = kNoFault;  // run-time error number, 0 when none
  bool stopped = false;  // the sink asked to stop
  double mte = 0.0, cte = 0.0;
};

// A run of the state's formula over count points from a in steps of h, with
// the state's bounds and initial values and the refresh interval of a plot.
UserFunctionRun RunOver(const FormulaState& state, double a, double h, int count);

// The refresh interval of a plot: (N+1)/32, at least 1.
int RefreshInterval(int count);

// Fills y[0..count-1]; y must hold count + 10 values.
UserFunctionResult RunUserFunction(const UserFunctionRun& run, std::vector<double>& y, PlotSink& sink);

// The caption of a differential equation's graph: "MTE:" m ", CTE:" c.
std::string ErrorCaption(double mte, double cte);

}  // namespace keldo::formula
