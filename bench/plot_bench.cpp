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

namespace {

using namespace keldo;

constexpr int kPoints = 65536;

struct Shape {
  const char* name;
  const char* formula;
};

constexpr Shape kShapes[] = {
    {"Polynomial", "3*X^4-2*X^3+X^2-5*X+7"},
    {"Trig", "SIN(X)*COS(2*X)+TAN(X/3)-ATN(X)+EXP(-X^2)"},
    {"Nested", "((((((X+1)*2-3)/4+5)*6-7)/8+9)*X)"},
    {"ChainedInequality", "-0.5<X<=0.5"},
    {"SumI", "SUMI(SIN(I*X)/I)\\I=1,20"},
    {"GraphReference", "EXP(-X^2/2)*G1(X)+SIN(3*X)"},
};

void Plot(form1d::Graph1Form& f, const std::string& formula) {
  f.RunMenu("mnuPlotGraph");
  f.controls().SetText("Formula", formula);
  f.controls().SetText("EndRValue", "1");
  f.Go();
}

void BM_Plot(benchmark::State& state) {
  const Shape& shape = kShapes[state.range(0)];
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
