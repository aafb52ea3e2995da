// Two-dimensional transforms of square single-precision images: the complex
// Fourier kernel against FFTW's two-dimensional single-precision plan
// (FFTW_MEASURE, split arrays in place, as ours), and the wavelet transforms
// (CDF 9/7 five levels at 512, Daubechies 4 at all levels of 2048), whose
// PyWavelets yardstick bench/pywt_yardstick.py times. Both sides copy their
// input into the working arrays in every iteration, as the commands do.
// BM_WaveletSeries2D times a whole series command, from Go to the drawn
// result, at N = 2048, against its budget of one second.

#include <benchmark/benchmark.h>
#include <fftw3.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "form2d/graph2_form.h"
#include "fourier/fourier2d.h"
#include "kinds/form_kinds.h"
#include "kit/typed_forms.h"
#include "app/frame.h"
#include "platform/headless/headless_services.h"
#include "wavelet/wavelet2d.h"

namespace {

using namespace keldo;

constexpr std::size_t kMargin = 10;

std::vector<float> Image(int n, int seed) {
  const std::size_t stride = static_cast<std::size_t>(n) + 1 + kMargin;
  std::vector<float> v(stride * static_cast<std::size_t>(n + 1), 0.0f);
  for (int i = 0; i <= n; ++i)
    for (int j = 0; j <= n; ++j)
      v[static_cast<std::size_t>(i) * stride + static_cast<std::size_t>(j)] =
          static_cast<float>(std::sin(0.013 * i * seed + 0.007 * j) + 0.25 * std::cos(0.0011 * i * j));
  return v;
}

void BM_Fourier2DOurs(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  const std::size_t stride = static_cast<std::size_t>(n) + 1 + kMargin;
  const auto re = Image(n, 1), im = Image(n, 2);
  std::vector<float> x(re.size()), y(im.size());
  for (auto _ : state) {
    std::copy(re.begin(), re.end(), x.begin());
    std::copy(im.begin(), im.end(), y.begin());
    fourier::Fourier2DComplex(n, 1.0f, {x.data(), stride}, {y.data(), stride});
    benchmark::DoNotOptimize(x.data());
  }
}

void BM_Fourier2DFftw(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  const auto re = Image(n, 1), im = Image(n, 2);
  const std::size_t count = static_cast<std::size_t>(n) * static_cast<std::size_t>(n);
  float* x = fftwf_alloc_real(count);
  float* y = fftwf_alloc_real(count);
  fftwf_iodim dims[2] = {{n, n, n}, {n, 1, 1}};
  fftwf_plan plan = fftwf_plan_guru_split_dft(2, dims, 0, nullptr, x, y, x, y, FFTW_MEASURE);
  const std::size_t stride = static_cast<std::size_t>(n) + 1 + kMargin;
  for (auto _ : state) {
    for (int i = 0; i < n; ++i) {
      std::copy_n(re.begin() + static_cast<long>(static_cast<std::size_t>(i) * stride), n, x + i * n);
      std::copy_n(im.begin() + static_cast<long>(static_cast<std::size_t>(i) * stride), n, y + i * n);
    }
    fftwf_execute_split_dft(plan, x, y, x, y);
    benchmark::DoNotOptimize(x);
  }
  fftwf_destroy_plan(plan);
  fftwf_free(x);
  fftwf_free(y);
}

BENCHMARK(BM_Fourier2DOurs)->Arg(512)->Arg(2048)->Name("BM_Fourier2D/ours")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Fourier2DFftw)->Arg(512)->Arg(2048)->Name("BM_Fourier2D/yardstick")->Unit(benchmark::kMillisecond);

void Wavelet(benchmark::State& state, int n, wavelet::WaveletChoice w, int levels) {
  const std::size_t stride = static_cast<std::size_t>(n) + 1 + kMargin;
  const auto source = Image(n, 3);
  std::vector<float> x(source.size());
  for (auto _ : state) {
    std::copy(source.begin(), source.end(), x.begin());
    wavelet::Transform2D(w, false, n, {x.data(), stride}, levels);
    benchmark::DoNotOptimize(x.data());
  }
}

BENCHMARK_CAPTURE(Wavelet, Cdf97, 512, wavelet::WaveletChoice{4, 101, false}, 5)
    ->Name("BM_Wavelet2D/CDF97_512_5/ours")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Wavelet, Daub4, 2048, wavelet::WaveletChoice{1, 1, false}, 11)
    ->Name("BM_Wavelet2D/Daub4_2048_all/ours")
    ->Unit(benchmark::kMillisecond);

// A whole wavelet series at N = 2048: transform, thresholds, inverse and the
// drawing of the result, as Go runs it; the yardstick is the budget of one
// second.
void BM_WaveletSeries2D(benchmark::State& state) {
  platform::HeadlessPlatform platform{[](const std::string&) {}, KELDO_SOURCE_DIR "/docs"};
  Frame frame{platform.services(), KELDO_SOURCE_DIR};
  InstallFormKinds(frame);
  int code = 0;
  auto* f = NewFormOf<form2d::Graph2Form>(frame, code);
  f->SetPoints(2048);
  f->RunMenu("mnuPlot");
  f->controls().SetText("Formula", "sin(9*x)*cos(7*y)+(x^2+y^2<0.1)");
  f->Go();
  f->RunMenu("mnuWaveletSeries");
  f->controls().SetText("wavlevels", "5");
  for (auto _ : state) {
    f->Go();
    state.PauseTiming();
    f->DeleteGraph(1);
    state.ResumeTiming();
  }
}
BENCHMARK(BM_WaveletSeries2D)->Name("BM_WaveletSeries2D_2048/ours")->Unit(benchmark::kMillisecond)->Iterations(3);

void BM_OneSecond(benchmark::State& state) {
  for (auto _ : state) state.SetIterationTime(1.0);
}
BENCHMARK(BM_OneSecond)->Name("BM_WaveletSeries2D_2048/yardstick")->UseManualTime()->Iterations(1)
    ->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
