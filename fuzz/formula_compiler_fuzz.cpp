// Any text through the formula compiler, as a typed formula and as a value:
// it must end, never crash, and the linked tape, point by point and in
// blocks of points, must agree with the walk over the program bit for bit,
// faults included. Built with KELDO_FUZZ_PLANE
// (target formula_compiler2) it does the same in the plane's language, where
// every finite value must be single precision.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "formula/compiler.h"
#include "formula/eval.h"

namespace {

class FuzzHost final : public keldo::formula::FormulaHost {
 public:
  int answers = 0;
  int FormulaPoints() const override { return 64; }
  int FormulaGraphCount() const override { return 2; }
  double FormulaIntervalLength() const override { return 1.0; }
  std::optional<std::string> FormulaPrompt(const std::string&, const std::string&) override {
    if (++answers > 3) return std::nullopt;
    return std::string("2");
  }
  void FormulaError(int) override {}
  keldo::platform::Random* FormulaRandom() override { return nullptr; }
  const keldo::formula::GraphTable* FormulaGraphs() override { return &graphs; }
  keldo::formula::GraphTable graphs;
};

// The words one Eval may run through restarts of its sums. The sanitizers
// walk well under two million words a second, and an input runs six or
// eight Evals, so that this bound keeps a whole input near a quarter of a
// second under the time-out of one, even on a loaded machine.
constexpr long long kEvalWords = 50000;

// How many of the sample points an input evaluates: each point walks the
// whole program twice, and a program of tens of thousands of words (a
// short text whose parameters grow it) walks slowly under the sanitizers.
int PointsFor(const keldo::formula::FormulaState& state, int points) {
  const long long words = static_cast<long long>(state.compiled.program.size()) + 1;
  return static_cast<int>(std::clamp<long long>(kEvalWords / words, 1, points));
}

// The span of the sums a program runs, capped: a budget keeps one input short.
long long SumSpan(const keldo::formula::FormulaState& state) {
  long long budget = 1;
  for (std::size_t s = 0; s < 6; ++s) {
    const long long span = static_cast<long long>(state.upper[s]) - state.lower[s] + 1;
    budget *= std::max(1LL, std::min(1000LL, span));
  }
  return budget;
}

// The same text as a formula of x and y, over a small plane with a graph.
void PlaneRun(const std::string& text) {
  FuzzHost host;
  keldo::formula::FormulaState state;
  state.twoDimensional = true;
  state.noiseTerms = 64;
  keldo::formula::Compiler compiler(state, host);
  compiler.valueWorkBudget = 100000;
  std::string value = text;
  compiler.VALU(value);
  std::string command;
  compiler.COMPILE(keldo::formula::kModeTyped, text, command);
  if (command == keldo::formula::kErrorResult || SumSpan(state) > 20000) return;
  static const float plane[9 * 9] = {0.5f, -1.25f, 3.0f, 0.0f, 7.5f};
  keldo::formula::Evaluator fast, slow;
  for (keldo::formula::Evaluator* ev : {&fast, &slow}) {
    keldo::formula::BindEvaluator(*ev, state);
    ev->dx = 0.125;
    ev->planes[0] = plane;
    ev->planeStride = 9;
    ev->restartBudget = std::max<long long>(1, kEvalWords / static_cast<long long>(state.compiled.program.size() + 1));
  }
  slow.useTape = false;
  fast.Prepare();
  slow.Prepare();
  const int points = PointsFor(state, 3);
  for (int p = 0; p < points; ++p) {
    const int k = 4 * p;
    const double v = fast.Eval2(k, 8 - k, -0.5 + k * 0.125, 0.5 - k * 0.125);
    const double w = slow.Eval2(k, 8 - k, -0.5 + k * 0.125, 0.5 - k * 0.125);
    // The tape and the walk agree bit for bit, and a finite plane value is
    // single precision.
    if (fast.fault() != slow.fault() || std::memcmp(&v, &w, sizeof v) != 0) std::abort();
    if (fast.fault() == keldo::formula::kNoFault && std::isfinite(v) && static_cast<double>(static_cast<float>(v)) != v)
      std::abort();
  }
  // A row of the plane in blocks gives what the walk gives column by column,
  // up to and with the first fault.
  if (fast.RunsInBlocks()) {
    const int count = PointsFor(state, 9);
    double xs[9], out[9];
    for (int j = 0; j < count; ++j) xs[j] = -0.5 + j * 0.125;
    const double y = 0.125;
    const int fine = fast.EvalRun2(2, 0, xs, y, count, out);
    int expected = count;
    for (int j = 0; j < count; ++j) {
      const double w = slow.Eval2(j, 2, xs[j], y);
      if (slow.fault() != keldo::formula::kNoFault) {
        expected = j;
        if (fast.fault() != slow.fault()) std::abort();
        break;
      }
      if (std::memcmp(&out[j], &w, sizeof w) != 0) std::abort();
    }
    if (fine != expected) std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > 400) return 0;
  const std::string text(reinterpret_cast<const char*>(data), size);
  static const double kGraph[65] = {};
  FuzzHost host;
  host.graphs.points = 64;
  host.graphs.entries[0] = {kGraph, -0.5, 0.5, 1.0 / 64};
  host.graphs.entries[1] = {kGraph, 0.0, 1.0, 1.0 / 64};
  keldo::formula::FormulaState state;
  keldo::formula::Compiler compiler(state, host);
  // The sanitizers run the machine some fifty times slower than a release
  // build; the number field's work bound shrinks with them, so that a long
  // sum is judged as the release program judges it, within the time-out.
  compiler.valueWorkBudget = 100000;
#ifdef KELDO_FUZZ_PLANE
  PlaneRun(text);
  return 0;
#endif
  std::string value = text;
  compiler.VALU(value);
  std::string command;
  compiler.COMPILE(keldo::formula::kModeTyped, text, command);
  if (command == keldo::formula::kErrorResult) return 0;
  // Sums may run long; a budget keeps one input short.
  if (SumSpan(state) > 20000) return 0;
  keldo::formula::Evaluator fast, slow;
  for (keldo::formula::Evaluator* ev : {&fast, &slow}) {
    keldo::formula::BindEvaluator(*ev, state);
    ev->dx = 1.0 / 64;
    ev->graphs = &host.graphs;
    ev->restartBudget = std::max<long long>(1, kEvalWords / static_cast<long long>(state.compiled.program.size() + 1));
  }
  slow.useTape = false;
  fast.Prepare();
  slow.Prepare();
  static const double kPoints[] = {-0.5, 0.0, 0.25, 1.0};
  const int points = PointsFor(state, 4);
  for (int p = 0; p < points; ++p) {
    const double x = kPoints[p];
    const double f = fast.Eval(3, x), s = slow.Eval(3, x);
    if (fast.fault() != slow.fault() || std::memcmp(&f, &s, sizeof f) != 0) std::abort();
  }
  // A run of points in blocks (two blocks, the second short) gives what the
  // walk gives point by point, up to and with the first fault.
  if (fast.RunsInBlocks()) {
    constexpr int kRun = keldo::formula::Evaluator::kBlock + 6;
    const int count = PointsFor(state, kRun);
    double xs[kRun], out[kRun];
    for (int k = 0; k < count; ++k) xs[k] = -0.5 + k / 64.0;
    const int fine = fast.EvalRun(xs, count, out);
    int expected = count;
    for (int k = 0; k < count; ++k) {
      const double s = slow.Eval(k, xs[k]);
      if (slow.fault() != keldo::formula::kNoFault) {
        expected = k;
        if (fast.fault() != slow.fault() || out[k] != 0.0) std::abort();
        break;
      }
      if (std::memcmp(&out[k], &s, sizeof s) != 0) std::abort();
    }
    if (fine != expected) std::abort();
  } else if (fast.EvalRun(kPoints, 1, nullptr) != -1) {
    std::abort();
  }
  return 0;
}
