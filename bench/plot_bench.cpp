// From Go to the drawn graph: a 65536-point plot on the one-dimensional
// form of each formula shape that bench_formula times point by point, and
// of a sixth that reads a stored graph. Each iteration plots the formula
// through the Graphing box and removes the graph again, untimed. There is
// no yardstick: the rows give the time of the whole command.

#include <benchmark/benchmark.h>

#include <string>

#include "app/frame.h"
#include "form1d/graph1_form.h"
#include "kinds/form_kinds.h"
#include "kit/typed_forms.h"
#include "platform/headless/headless_services.h"
#include "formula_shapes.h"

namespace {

using namespace keldo;

constexpr int kPoints = 65536;

void Plot(form1d::Graph1Form& f, const std::string& formula) {
  f.RunMenu("mnuPlotGraph");
  f.controls().SetText("Formula", formula);
  f.controls().SetText("EndRValue", "1");
  f.Go();
}

void BM_Plot(benchmark::State& state) {
  const bench::FormulaShape& shape = bench::kFormulaShapes[state.range(0)];
  platform::HeadlessPlatform platform{nullptr, KELDO_SOURCE_DIR "/docs"};
  Frame frame{platform.services(), KELDO_SOURCE_DIR};
  InstallFormKinds(frame);
  int code = 0;
  form1d::Graph1Form& f = *NewFormOf<form1d::Graph1Form>(frame, code);
  f.SetPoints(kPoints);
  // The graph that G1( reads.
  Plot(f, "SIN(5*X)+X/2");
  const int before = f.GraphCount();
  for (auto _ : state) {
    Plot(f, shape.formula);
    state.PauseTiming();
    if (f.GraphCount() != before + 1) {
      state.SkipWithError("the formula did not plot");
      break;
    }
    f.RemoveGraph(before + 1);
    state.ResumeTiming();
  }
  state.SetLabel(shape.formula);
  state.SetItemsProcessed(state.iterations() * (kPoints + 1LL));
}

}  // namespace

BENCHMARK(BM_Plot)->Name("BM_Plot1D65536")->DenseRange(0, 5)->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
