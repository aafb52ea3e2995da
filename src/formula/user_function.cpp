#include "formula/user_function.h"

#include <algorithm>
#include <cmath>

#include "common/number_text.h"

namespace keldo::formula {

int RefreshInterval(int count) { return count / 32 < 1 ? 1 : count / 32; }

UserFunctionRun RunOver(const FormulaState& state, double a, double h, int count) {
  UserFunctionRun run;
  run.state = &state;
  run.bounds = BoundsOf(state);
  run.initialValues = state.initialValues;
  run.a = a;
  run.h = h;
  run.count = count;
  run.refresh = RefreshInterval(count);
  return run;
}

std::string ErrorCaption(double mte, double cte) { return "MTE:" + PlainNumber(mte) + ", CTE:" + PlainNumber(cte); }

namespace {

UserFunctionResult RunPlain(const UserFunctionRun& run, Evaluator& ev, std::vector<double>& y, PlotSink& sink) {
  UserFunctionResult result;
  const int n = run.count - 1;
  if (!run.dots) {
    const double first = ev.Eval(0, run.a);
    if (ev.fault() != kNoFault) {
      result.fault = ev.fault();
      return result;
    }
    sink.Prime(run.a, first);
  }
  // Where the formula allows, a block of points is computed at once and
  // then drawn point by point; the points of a block after a stop or a
  // fault are computed and never used, which changes nothing, as no point
  // depends on another.
  bool blocks = ev.RunsInBlocks();
  double xs[Evaluator::kBlock];
  int computed = 0;  // points of y computed so far
  for (int i = 0; i <= n; ++i) {
    const double x = run.a + i * run.h;
    if (blocks && i == computed) {
      const int size = std::min(Evaluator::kBlock, n + 1 - i);
      for (int k = 0; k < size; ++k) xs[k] = run.a + (i + k) * run.h;
      const int fine = ev.EvalRun(xs, size, y.data() + i);
      if (fine < 0) blocks = false;  // not while the bounds stand, but then point by point
      else computed = i + fine;
    }
    if (!blocks) {
      y[static_cast<std::size_t>(i)] = ev.Eval(i, x);
      if (ev.fault() != kNoFault) {
        result.fault = ev.fault();
        return result;
      }
    } else if (i == computed) {  // the point of the block's first fault
      result.fault = ev.fault();
      return result;
    }
    sink.Point(x, y[static_cast<std::size_t>(i)], run.dots);
    if ((i + 1) % run.refresh == 0 && !sink.Refresh()) {
      result.stopped = true;
      return result;
    }
  }
  return result;
}

UserFunctionResult RunEquation(const UserFunctionRun& run, Evaluator& ev, std::vector<double>& y, PlotSink& sink) {
  UserFunctionResult result;
  const int n = run.count - 1;
  const int m = run.state->order < 1 ? 1 : (run.state->order > 10 ? 10 : run.state->order);
  const double h = run.h, h2 = h / 2.0, h6 = h / 6.0;
  std::array<double, 11> state = run.initialValues;
  std::array<double, 11> s0{}, s2{}, s3{}, s4{}, p2{}, p3{}, p4{};
  double g2 = 0, g3 = 0, g4 = 0;
  ev.state = state.data();
  const auto f = [&](double x) {
    const double v = ev.Eval(0, x);
    return v;
  };
  double x = run.a;
  y[0] = state[0];
  sink.Point(x, y[0], true);
  for (int i = 1; i <= n; ++i) {
    s0 = state;
    for (int k = m - 2; k >= 0; --k) s2[k] = s0[k] + h2 * state[k + 1];
    const double f1 = f(x);
    if (ev.fault() != kNoFault) break;
    s2[m - 1] = s0[m - 1] + h2 * f1;
    state = s2;
    for (int k = m - 2; k >= 0; --k) s3[k] = s0[k] + h2 * s2[k + 1];
    const double f2 = f(x + h2);
    if (ev.fault() != kNoFault) break;
    s3[m - 1] = s0[m - 1] + h2 * f2;
    state = s3;
    for (int k = m - 2; k >= 0; --k) s4[k] = s0[k] + h * s3[k + 1];
    const double f3 = f(x + h2);
    if (ev.fault() != kNoFault) break;
    s4[m - 1] = s0[m - 1] + h * f3;
    state = s4;
    for (int k = m - 2; k >= 0; --k) state[k] = s0[k] + h6 * (s0[k + 1] + 2.0 * s2[k + 1] + 2.0 * s3[k + 1] + s4[k + 1]);
    const double f4 = f(x + h);
    if (ev.fault() != kNoFault) break;
    state[m - 1] = s0[m - 1] + h6 * (f1 + 2.0 * f2 + 2.0 * f3 + f4);
    y[static_cast<std::size_t>(i)] = state[0];
    if (i >= 2) {
      double sum = 0.0;
      for (int k = 0; k <= m - 2; ++k) {
        const double e = -p2[k] + 2.0 * p3[k] - p4[k] - 2.0 * s0[k] + 3.0 * s2[k] - s4[k];
        sum += e * e;
      }
      const double last = -g2 + 2.0 * g3 - g4 - 2.0 * f1 + 3.0 * f2 - f4;
      sum += last * last;
      double e = GetRelVal(std::sqrt(sum) * h / 72.0, y[static_cast<std::size_t>(i)], 0.0);
      if (i == 2) e *= 2.0;
      if (!std::isfinite(e)) {
        result.fault = std::isnan(e) ? kInvalidCall : kOverflow;
        return result;
      }
      result.cte += e;
      if (e > result.mte) result.mte = e;
    }
    if (!std::isfinite(state[0])) {
      result.fault = std::isnan(state[0]) ? kInvalidCall : kOverflow;
      return result;
    }
    x += h;
    p2 = s2;
    p3 = s3;
    p4 = s4;
    g2 = f2;
    g3 = f3;
    g4 = f4;
    sink.Point(x, y[static_cast<std::size_t>(i)], true);
    if ((i + 1) % run.refresh == 0 && !sink.Refresh()) {
      result.stopped = true;
      return result;
    }
  }
  if (ev.fault() != kNoFault) result.fault = ev.fault();
  return result;
}

}  // namespace

UserFunctionResult RunUserFunction(const UserFunctionRun& run, std::vector<double>& y, PlotSink& sink) {
  if (y.size() < static_cast<std::size_t>(run.count) + 10) y.assign(static_cast<std::size_t>(run.count) + 10, 0.0);
  Evaluator ev;
  BindEvaluator(ev, *run.state);
  ev.dx = run.h;
  ev.computed = y.data();
  ev.computedSize = static_cast<int>(y.size());
  ev.bounds = run.bounds;
  ev.random = run.random;
  ev.graphs = run.graphs;
  ev.abortField = run.abortField;
  ev.state = run.initialValues.data();
  ev.Prepare();
  if (run.state->formType == 1) return RunEquation(run, ev, y, sink);
  return RunPlain(run, ev, y, sink);
}

}  // namespace keldo::formula
