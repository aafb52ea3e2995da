// The spectrogram of 65536 points, window 1024 (Hamming), step 256: the
// computation of all 257 columns into a kept spectrum, and the inversion by
// summed filters. The yardstick, scipy.signal.stft and istft with the same
// segment length, hop and window, is timed by bench/scipy_stft_yardstick.py,
// which bench/compare.sh runs.

#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include "fourier/spectrogram.h"

namespace {

using namespace keldo::fourier;

constexpr int kPoints = 65536, kWindow = 1024, kStep = 256;

std::vector<double> Input() {
  std::vector<double> v(kPoints + 1);
  for (int i = 0; i <= kPoints; ++i)
    v[static_cast<std::size_t>(i)] = std::sin(0.01 * i + 1e-6 * i * i) + 0.1 * std::cos(0.37 * i);
  return v;
}

const SpectrogramShape kShape = SpectrogramShape::Of(kPoints, kWindow, kStep);

// The form keeps its matrices between computations of one shape, so the
// spectrum is allocated once, outside the timing.
void BM_Compute(benchmark::State& state) {
  const auto sig = Input();
  Spectrum spectrum;
  ComputeSpectrograph(sig.data(), kShape, SpecWindow::Hamming, spectrum);
  for (auto _ : state) {
    if (!ComputeSpectrograph(sig.data(), kShape, SpecWindow::Hamming, spectrum)) state.SkipWithError("no memory");
    benchmark::DoNotOptimize(spectrum.re.data());
  }
}

void BM_Invert(benchmark::State& state) {
  const auto sig = Input();
  Spectrum spectrum;
  ComputeSpectrograph(sig.data(), kShape, SpecWindow::Hamming, spectrum);
  std::vector<double> result;
  for (auto _ : state) {
    if (!InvertSpectrogram(spectrum, SpecWindow::Hamming, InversionMethod::SummedFilters, result))
      state.SkipWithError("division fault");
    benchmark::DoNotOptimize(result.data());
  }
}

}  // namespace

BENCHMARK(BM_Compute)->Name("BM_Spectrogram/Compute/ours")->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Invert)->Name("BM_Spectrogram/Invert/ours")->Unit(benchmark::kMicrosecond);
BENCHMARK_MAIN();
