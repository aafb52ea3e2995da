// The two-dimensional form: plotting a formula of x and y over the grid at
// N = 512 and 2048, against the one-dimensional machine evaluating the same
// formula (with x for y) as often, so that the ratio is the cost of the
// plane's single precision and grid; and one full redraw of the four small
// pictures and the large one at N = 2048 against the 16 ms budget of a frame.

#include <benchmark/benchmark.h>

#include <chrono>
#include <string>

#include "app/frame.h"
#include "form2d/graph2_form.h"
#include "formula/compiler.h"
#include "kinds/form_kinds.h"
#include "kit/typed_forms.h"
#include "platform/headless/headless_services.h"

namespace {

using namespace keldo;

constexpr double kFrameBudgetSeconds = 0.016;
const char* const kFormula = "sin(6*x)*cos(4*y)+x*y";
const char* const kFormula1D = "sin(6*x)*cos(4*x)+x*x";

struct Bench2D {
  platform::HeadlessPlatform platform{nullptr, KELDO_SOURCE_DIR "/docs"};
  Frame frame{platform.services(), KELDO_SOURCE_DIR};
  Bench2D() { InstallFormKinds(frame); }
  form2d::Graph2Form& NewForm(int points) {
    int code = 0;
    form2d::Graph2Form& f = *NewFormOf<form2d::Graph2Form>(frame, code);
    f.SetPoints(points);
    return f;
  }
};

void Plot(form2d::Graph2Form& f, const std::string& formula) {
  f.RunMenu("mnuPlot");
  f.controls().SetText("Formula", formula);
  f.Go();
}

void BM_PlotFormula(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  Bench2D b;
  form2d::Graph2Form& f = b.NewForm(n);
  for (auto _ : state) {
    Plot(f, kFormula);
    state.PauseTiming();
    f.DeleteGraph(0);
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * (n + 1LL) * (n + 1LL));
}

// The same number of points through the one-dimensional machine.
class NoHost final : public formula::FormulaHost {
 public:
  int FormulaPoints() const override { return 1024; }
  int FormulaGraphCount() const override { return 0; }
  double FormulaIntervalLength() const override { return 1.0; }
  std::optional<std::string> FormulaPrompt(const std::string&, const std::string&) override { return std::nullopt; }
  void FormulaError(int) override {}
  platform::Random* FormulaRandom() override { return nullptr; }
  const formula::GraphTable* FormulaGraphs() override { return nullptr; }
};

void BM_PlotFormulaYardstick(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  NoHost host;
  formula::FormulaState fs;
  formula::Compiler compiler(fs, host);
  std::string command;
  compiler.COMPILE(formula::kModeTyped, kFormula1D, command);
  formula::Evaluator ev;
  formula::BindEvaluator(ev, fs);
  ev.dx = 1.0 / n;
  ev.Prepare();
  for (auto _ : state) {
    double sum = 0.0;
    for (int i = 0; i <= n; ++i)
      for (int j = 0; j <= n; ++j) sum += ev.Eval(j, -0.5 + static_cast<double>(j) / n);
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * (n + 1LL) * (n + 1LL));
}

void BM_Redraw2D(benchmark::State& state) {
  Bench2D b;
  form2d::Graph2Form& f = b.NewForm(2048);
  for (const char* formula : {"x", "y", "x*y", "x+y"}) Plot(f, formula);
  for (auto _ : state) {
    const auto start = std::chrono::steady_clock::now();
    f.PlotAllSmallGraphs();
    f.PlotGraphLarge(3);
    state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
  }
  state.SetLabel("four small and one large picture, N = 2048");
}

void BM_RedrawBudget(benchmark::State& state) {
  for (auto _ : state) state.SetIterationTime(kFrameBudgetSeconds);
}

}  // namespace

BENCHMARK(BM_PlotFormula)->Name("BM_Form2DPlot/ours")->Arg(512)->Arg(2048)->Unit(benchmark::kMillisecond)->Iterations(2);
BENCHMARK(BM_PlotFormulaYardstick)
    ->Name("BM_Form2DPlot/yardstick")
    ->Arg(512)
    ->Arg(2048)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(2);
BENCHMARK(BM_Redraw2D)->Name("BM_Form2DRedraw/ours")->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(BM_RedrawBudget)->Name("BM_Form2DRedraw/yardstick")->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK_MAIN();
