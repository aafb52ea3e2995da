// The scalogram of 65536 points over 8 octaves of 16 voices (128 scales and
// the low-pass row), for the complex Gabor wavelet and the Mexican hat, on
// [0, 16] with width 1 and frequency 1. The yardstick, pywt.cwt with
// method="fft" on the same signal and the same scales ("cmor" with the
// Gaussian exp(-pi u^2) and frequency 1, and "mexh"), is timed by
// bench/pywt_cwt_yardstick.py, which bench/compare.sh runs.

#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include "wavelet/scalogram.h"

namespace {

using namespace keldo::wavelet;

constexpr int kPoints = 65536, kOctaves = 8, kVoices = 16;

std::vector<double> Input() {
  std::vector<double> v(kPoints + 1);
  for (int i = 0; i <= kPoints; ++i)
    v[static_cast<std::size_t>(i)] = std::sin(0.01 * i + 1e-6 * i * i) + 0.1 * std::cos(0.37 * i);
  return v;
}

ScalogramSetup SetupOf(ScalWavelet wavelet) {
  ScalogramSetup setup;
  setup.a = 0.0;
  setup.b = 16.0;
  setup.octaves = kOctaves;
  setup.voices = kVoices;
  setup.width = 1.0;
  setup.freq = 1.0;
  setup.wavelet = wavelet;
  return setup;
}

// The form keeps its matrices between computations of one shape, so they
// are allocated once, outside the timing; the row callback is the form's
// cheapest, one that never stops.
void BM_Scalogram(benchmark::State& state, ScalWavelet wavelet) {
  const auto sig = Input();
  const ScalogramSetup setup = SetupOf(wavelet);
  const ScalogramRowCallback onRow = [](int) { return ScalogramProgress::Continue; };
  const auto compute = [&](Scalogram& result) {
    return IsRealWavelet(wavelet) ? ComputeRealScalogram(sig.data(), kPoints, setup, onRow, result)
                                  : ComputeComplexScalogram(sig.data(), kPoints, setup, onRow, result);
  };
  Scalogram result;
  compute(result);
  for (auto _ : state) {
    if (compute(result) != ScalogramStatus::Done) state.SkipWithError("no memory");
    benchmark::DoNotOptimize(result.re.data());
  }
  // Time per coefficient: rows 1..128 by 65536 columns, each complex
  // coefficient counted once.
  state.counters["coefficients"] = static_cast<double>(kOctaves * kVoices) * kPoints;
}

}  // namespace

BENCHMARK_CAPTURE(BM_Scalogram, gabor, ScalWavelet::GaborComplex)
    ->Name("BM_Scalogram/GaborComplex/ours")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Scalogram, hat, ScalWavelet::MexicanHat)
    ->Name("BM_Scalogram/MexicanHat/ours")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
