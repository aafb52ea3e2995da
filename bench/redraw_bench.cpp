// Redrawing the one-dimensional form's plot: graph paper and 1 or 4 graphs
// of 65536 points, in lines and in dots, on an offscreen 800 x 600 picture
// through the same surface the window uses. The yardstick is the budget of
// one frame at 60 Hz, 16 ms: a ratio below 1 means the redraw fits in it.

#include <benchmark/benchmark.h>

#include <QImage>
#include <QPainter>

#include <chrono>
#include <cmath>
#include <vector>

#include "form1d/plot_drawing.h"
#include "qt/painter_surface.h"

namespace {

using namespace keldo;

constexpr int kPoints = 65536;
constexpr double kFrameBudgetSeconds = 0.016;

std::vector<std::vector<double>> Curves(int count) {
  std::vector<std::vector<double>> out(static_cast<std::size_t>(count));
  for (int g = 0; g < count; ++g) {
    auto& v = out[static_cast<std::size_t>(g)];
    v.resize(kPoints + 1);
    for (int i = 0; i <= kPoints; ++i) {
      const double x = -0.5 + static_cast<double>(i) / kPoints;
      v[static_cast<std::size_t>(i)] = std::sin(2 * M_PI * (g + 1) * 3 * x) + 0.3 * std::sin(400 * x * (g + 1));
    }
  }
  return out;
}

void BM_Redraw(benchmark::State& state) {
  const int graphs = static_cast<int>(state.range(0));
  const bool dots = state.range(1) != 0;
  const auto curves = Curves(graphs);
  std::vector<form1d::GraphTrace> traces;
  for (int g = 0; g < graphs; ++g)
    traces.push_back({curves[static_cast<std::size_t>(g)].data(), kPoints + 1, -0.5, 1.0 / kPoints, g});
  QImage image(800, 600, QImage::Format_RGB32);
  const form1d::PlotWindow window{-0.5, 0.5, -2.0, 2.0};
  for (auto _ : state) {
    const auto start = std::chrono::steady_clock::now();
    QPainter p(&image);
    qt::PainterSurface surface(p, image.rect());
    form1d::DrawPlot(surface, {form1d::kGraphPaper, form1d::kBlackBackground, dots}, window, traces);
    p.end();
    benchmark::DoNotOptimize(image.constBits());
    state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
  }
  state.SetLabel(std::to_string(graphs) + (dots ? " graphs, dots" : " graphs, lines"));
}

void BM_RedrawBudget(benchmark::State& state) {
  for (auto _ : state) state.SetIterationTime(kFrameBudgetSeconds);
}

void Cases(benchmark::internal::Benchmark* b) {
  for (int graphs : {1, 4})
    for (int dots : {0, 1}) b->Args({graphs, dots});
}

}  // namespace

BENCHMARK(BM_Redraw)->Name("BM_Redraw/ours")->Apply(Cases)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(BM_RedrawBudget)->Name("BM_Redraw/yardstick")->Apply(Cases)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK_MAIN();
