// Evaluating formulas over a plot grid: our compiled formulas against
// muparser on the same expressions, point for point. Every case runs
// 65537 points over [-1, 1] (N = 65536, h = 2/N) and reports points per
// second. Before timing, both sides are evaluated at a few points and the
// case is refused if they disagree, so that the two sides are known to
// compute the same thing.
#include <benchmark/benchmark.h>
#include <muParser.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "formula/compiler.h"
#include "formula_shapes.h"
#include "formula/eval.h"
#include "formula/user_function.h"

namespace {

namespace formula = keldo::formula;

constexpr int kIntervals = 65536;
constexpr int kPoints = kIntervals + 1;
constexpr double kLeft = -1.0;
constexpr double kStep = 2.0 / kIntervals;

double PointAt(int i) { return kLeft + i * kStep; }

// A form of N points with one stored graph, which G1( reads; prompts are
// cancelled and messages dropped, since none of the benchmarked formulas
// asks for anything.
class BenchHost final : public formula::FormulaHost {
 public:
  int FormulaPoints() const override { return kIntervals; }
  int FormulaGraphCount() const override { return 1; }
  double FormulaIntervalLength() const override { return 2.0; }
  std::optional<std::string> FormulaPrompt(const std::string&, const std::string&) override { return std::nullopt; }
  void FormulaError(int number) override { lastError = number; }
  keldo::platform::Random* FormulaRandom() override { return nullptr; }
  const formula::GraphTable* FormulaGraphs() override { return &graphs; }

  int lastError = 0;
  formula::GraphTable graphs = StoredGraph();

  // sin(5x) + x/2 at the N + 1 points of [-1, 1].
  static formula::GraphTable StoredGraph() {
    static const std::vector<double> values = [] {
      std::vector<double> v(kPoints + 10);
      for (int i = 0; i < kPoints; ++i) v[static_cast<std::size_t>(i)] = std::sin(5 * PointAt(i)) + PointAt(i) / 2;
      return v;
    }();
    formula::GraphTable table;
    table.points = kIntervals;
    table.entries[0] = {values.data(), kLeft, kLeft + 2.0, kStep};
    return table;
  }
};

// The same stored graph for muparser: g1(x) reads it as G1( does.
double YardstickG1(double x) {
  static const formula::GraphTable table = BenchHost::StoredGraph();
  return formula::GFUNC1(x, table.entries[0], table.points);
}

// One compiled formula of ours with an evaluator ready to run it.
struct OurFormula {
  BenchHost host;
  formula::FormulaState state;
  formula::Compiler compiler{state, host};
  formula::Evaluator ev;
  std::string command;

  // Compiles as the plot command does; false when the compiler refused it.
  bool Compile(const std::string& text) {
    state.order = 0;
    state.formType = 0;
    compiler.COMPILE(formula::kModeTyped, text, command);
    return command != formula::kErrorResult;
  }

  void PrepareEvaluator() {
    formula::BindEvaluator(ev, state);
    ev.dx = kStep;
    ev.graphs = &host.graphs;
    ev.Prepare();
  }
};

// muparser with one variable x.
struct Yardstick {
  mu::Parser parser;
  double x = 0.0;

  // False (with the message in `error`) when muparser refused the text.
  bool Set(const std::string& text, std::string& error) {
    try {
      parser.DefineVar("x", &x);
      parser.DefineFun("g1", YardstickG1);
      parser.SetExpr(text);
      x = 0.0;
      parser.Eval();
    } catch (const mu::Parser::exception_type& e) {
      error = "muparser: " + std::string(e.GetMsg());
      return false;
    }
    return true;
  }
  double At(double at) {
    x = at;
    return parser.Eval();
  }
};

struct Case {
  const char* name;
  std::string ours;
  std::string yardstick;
};

// sin(1*x)/1+sin(2*x)/2+...+sin(20*x)/20, the sum written out.
std::string SineSumWrittenOut() {
  std::string text;
  for (int i = 1; i <= 20; ++i) {
    if (i > 1) text += '+';
    text += "sin(" + std::to_string(i) + "*x)/" + std::to_string(i);
  }
  return text;
}

// Each shape with the same formula in muparser's language.
const std::array<Case, 6>& Cases() {
  static const std::array<Case, 6> cases = [] {
    const std::array<std::string, 6> yardsticks = {
        "3*x^4-2*x^3+x^2-5*x+7",
        "sin(x)*cos(2*x)+tan(x/3)-atan(x)+exp(-x^2)",
        "((((((x+1)*2-3)/4+5)*6-7)/8+9)*x)",
        "(-0.5<x)&&(x<=0.5)",
        SineSumWrittenOut(),
        "exp(-x^2/2)*g1(x)+sin(3*x)",
    };
    std::array<Case, 6> all;
    for (std::size_t k = 0; k < all.size(); ++k)
      all[k] = {keldo::bench::kFormulaShapes[k].name, keldo::bench::kFormulaShapes[k].formula, yardsticks[k]};
    return all;
  }();
  return cases;
}

// Grid points where both sides are compared: the ends, the middle, the
// inequality's two edges, and a few points in between.
constexpr std::array<int, 9> kCheckPoints = {0, 1, 12345, 16384, 32768, 40000, 49152, 65535, 65536};

bool Agree(double a, double b) {
  if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && std::isnan(b);
  const double scale = std::max({1.0, std::fabs(a), std::fabs(b)});
  return std::fabs(a - b) <= 1e-9 * scale;
}

// Compiles both sides of a case and compares them on the check points;
// an empty string when they agree, else what went wrong.
std::string CheckCase(const Case& c, OurFormula& ours, Yardstick& yard) {
  if (!ours.Compile(c.ours)) return "our compiler refused \"" + c.ours + "\"";
  ours.PrepareEvaluator();
  std::string error;
  if (!yard.Set(c.yardstick, error)) return error;
  for (int i : kCheckPoints) {
    const double x = PointAt(i);
    const double mine = ours.ev.Eval(i, x);
    if (ours.ev.fault() != formula::kNoFault)
      return "our evaluator faulted (" + std::to_string(ours.ev.fault()) + ") at x=" + std::to_string(x);
    const double theirs = yard.At(x);
    if (!Agree(mine, theirs)) {
      char text[200];
      std::snprintf(text, sizeof text, "sides disagree at x=%.17g: ours %.17g, muparser %.17g", x, mine, theirs);
      return text;
    }
  }
  return {};
}

// Times one side of a pair: both sides are checked to agree first, then
// `fill` computes the whole grid, x into y, on every iteration.
template <class Fill>
void RunSide(benchmark::State& st, const Case& c, Fill fill) {
  OurFormula ours;
  Yardstick yard;
  const std::string problem = CheckCase(c, ours, yard);
  if (!problem.empty()) {
    st.SkipWithError(problem.c_str());
    return;
  }
  std::vector<double> x(kPoints), y(kPoints);
  for (int i = 0; i < kPoints; ++i) x[static_cast<std::size_t>(i)] = PointAt(i);
  for (auto _ : st) {
    fill(ours, yard, x, y);
    benchmark::DoNotOptimize(y.data());
    benchmark::ClobberMemory();
  }
  st.SetItemsProcessed(st.iterations() * kPoints);
}

// Ours as the plot command runs it: a block of points at a time where the
// formula allows, else point by point.
void RunOurs(benchmark::State& st, const Case& c) {
  bool blocks = false;
  RunSide(st, c, [&](OurFormula& ours, Yardstick&, const std::vector<double>& x, std::vector<double>& y) {
    blocks = ours.ev.RunsInBlocks();
    if (blocks) {
      ours.ev.EvalRun(x.data(), kPoints, y.data());
      return;
    }
    for (int i = 0; i < kPoints; ++i) y[static_cast<std::size_t>(i)] = ours.ev.Eval(i, x[static_cast<std::size_t>(i)]);
  });
  st.SetLabel(blocks ? "in blocks" : "point by point");
}

void RunYardstick(benchmark::State& st, const Case& c) {
  RunSide(st, c, [](OurFormula&, Yardstick& yard, const std::vector<double>& x, std::vector<double>& y) {
    for (int i = 0; i < kPoints; ++i) y[static_cast<std::size_t>(i)] = yard.At(x[static_cast<std::size_t>(i)]);
  });
}

void BM_Polynomial_ours(benchmark::State& st) { RunOurs(st, Cases()[0]); }
void BM_Polynomial_yardstick(benchmark::State& st) { RunYardstick(st, Cases()[0]); }
void BM_Trig_ours(benchmark::State& st) { RunOurs(st, Cases()[1]); }
void BM_Trig_yardstick(benchmark::State& st) { RunYardstick(st, Cases()[1]); }
void BM_Nested_ours(benchmark::State& st) { RunOurs(st, Cases()[2]); }
void BM_Nested_yardstick(benchmark::State& st) { RunYardstick(st, Cases()[2]); }
void BM_ChainedInequality_ours(benchmark::State& st) { RunOurs(st, Cases()[3]); }
void BM_ChainedInequality_yardstick(benchmark::State& st) { RunYardstick(st, Cases()[3]); }
void BM_SumI_ours(benchmark::State& st) { RunOurs(st, Cases()[4]); }
void BM_SumI_yardstick(benchmark::State& st) { RunYardstick(st, Cases()[4]); }
void BM_GraphReference_ours(benchmark::State& st) { RunOurs(st, Cases()[5]); }
void BM_GraphReference_yardstick(benchmark::State& st) { RunYardstick(st, Cases()[5]); }

// Does nothing with the points: only the computation is timed.
class NullSink final : public formula::PlotSink {};

// y'' = -y with y(-1) = 1, y'(-1) = 0 by the Runge-Kutta run of the plot
// command. The exact solution is cos(x + 1). The order comes from the
// highest state the formula reads (Y alone is Y0, order 1), so ORDER=2
// raises it: the formula is then the second derivative.
void BM_Diff2_ours(benchmark::State& st) {
  BenchHost host;
  formula::FormulaState state;
  formula::Compiler compiler{state, host};
  state.order = 0;
  state.formType = 0;
  std::string command;
  compiler.COMPILE(formula::kModeTyped, "-Y\\DIFF\\Y0=1\\Y1=0\\ORDER=2", command);
  if (command == formula::kErrorResult) {
    st.SkipWithError("our compiler refused the differential equation");
    return;
  }
  if (state.formType != 1 || state.order < 1) {
    st.SkipWithError("the differential equation did not compile as one");
    return;
  }
  // Reading the initial values compiles them, so the program is kept aside.
  const formula::CompiledFormula saved = state.compiled;
  const std::array<int, 6> savedLower = state.lower, savedUpper = state.upper;
  std::string error = "N";
  compiler.GIVAL(error, command);
  state.compiled = saved;
  state.lower = savedLower;
  state.upper = savedUpper;
  if (state.valueFault == -12) {
    st.SkipWithError("an initial value could not be computed");
    return;
  }
  if (state.order != 2) {
    st.SkipWithError("the differential equation is not of order 2");
    return;
  }

  formula::UserFunctionRun run = formula::RunOver(state, kLeft, kStep, kPoints);
  run.graphs = &host.graphs;

  NullSink sink;
  std::vector<double> y(static_cast<std::size_t>(kPoints) + 10, 0.0);
  const formula::UserFunctionResult check = formula::RunUserFunction(run, y, sink);
  if (check.fault != formula::kNoFault || check.stopped) {
    st.SkipWithError("the differential equation failed to run");
    return;
  }
  const double last = y[static_cast<std::size_t>(kIntervals)];
  if (std::fabs(last - std::cos(2.0)) > 1e-9) {
    char text[160];
    std::snprintf(text, sizeof text, "y(1) = %.17g, expected cos(2) = %.17g", last, std::cos(2.0));
    st.SkipWithError(text);
    return;
  }

  for (auto _ : st) {
    const formula::UserFunctionResult result = formula::RunUserFunction(run, y, sink);
    benchmark::DoNotOptimize(result);
    benchmark::DoNotOptimize(y.data());
    benchmark::ClobberMemory();
  }
  st.SetItemsProcessed(st.iterations() * kPoints);
}

BENCHMARK(BM_Polynomial_ours)->Name("BM_Polynomial/ours");
BENCHMARK(BM_Polynomial_yardstick)->Name("BM_Polynomial/yardstick");
BENCHMARK(BM_Trig_ours)->Name("BM_Trig/ours");
BENCHMARK(BM_Trig_yardstick)->Name("BM_Trig/yardstick");
BENCHMARK(BM_Nested_ours)->Name("BM_Nested/ours");
BENCHMARK(BM_Nested_yardstick)->Name("BM_Nested/yardstick");
BENCHMARK(BM_ChainedInequality_ours)->Name("BM_ChainedInequality/ours");
BENCHMARK(BM_ChainedInequality_yardstick)->Name("BM_ChainedInequality/yardstick");
BENCHMARK(BM_SumI_ours)->Name("BM_SumI/ours");
BENCHMARK(BM_SumI_yardstick)->Name("BM_SumI/yardstick");
BENCHMARK(BM_GraphReference_ours)->Name("BM_GraphReference/ours");
BENCHMARK(BM_GraphReference_yardstick)->Name("BM_GraphReference/yardstick");
BENCHMARK(BM_Diff2_ours)->Name("BM_Diff2/ours");

}  // namespace

BENCHMARK_MAIN();
