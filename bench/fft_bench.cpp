// The Fourier kernels against FFTW (plans made with FFTW_MEASURE): complex
// and real transforms at every power of two from 64 to 65536, sine and
// cosine transforms at N = 1024, 8192 and 65536. Both
// sides copy their input into the working arrays in every iteration, as the
// commands do, and our tables are built once, as FFTW's plans are. Both
// sides' arrays start on a 64-byte boundary (FFTW's from fftw_malloc), so
// that neither pays for vectors straddling cache lines.

#include <benchmark/benchmark.h>
#include <fftw3.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "fourier/fft.h"

namespace {

using namespace keldo::fourier;

// The working arrays the commands use.
using Array = KernelVector<double>;

std::vector<double> Input(int n, int seed) {
  std::vector<double> v(static_cast<std::size_t>(n) + 5);
  for (int i = 0; i <= n; ++i) v[static_cast<std::size_t>(i)] = std::sin(0.37 * i * seed) + 0.25 * std::cos(0.011 * i * i);
  return v;
}

void BM_ComplexOurs(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  const TrigTables t(n);
  const auto re = Input(n, 1), im = Input(n, 2);
  Array x(re.size()), y(im.size());
  for (auto _ : state) {
    std::copy(re.begin(), re.end(), x.begin());
    std::copy(im.begin(), im.end(), y.begin());
    ComplexFFT(x.data(), y.data(), t.sine.data(), t.tan.data(), n, t.m);
    benchmark::DoNotOptimize(x.data());
  }
}

void BM_ComplexFftw(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  const auto re = Input(n, 1), im = Input(n, 2);
  double* x = fftw_alloc_real(static_cast<std::size_t>(n));
  double* y = fftw_alloc_real(static_cast<std::size_t>(n));
  // Split real and imaginary arrays, in place, as ours.
  fftw_iodim dim{n, 1, 1};
  fftw_plan plan = fftw_plan_guru_split_dft(1, &dim, 0, nullptr, x, y, x, y, FFTW_MEASURE);
  for (auto _ : state) {
    std::copy(re.begin(), re.begin() + n, x);
    std::copy(im.begin(), im.begin() + n, y);
    fftw_execute_split_dft(plan, x, y, x, y);
    benchmark::DoNotOptimize(x);
  }
  fftw_destroy_plan(plan);
  fftw_free(x);
  fftw_free(y);
}

void BM_RealOurs(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  const TrigTables t(n);
  const auto in = Input(n, 3);
  Array x(in.size()), y(in.size());
  for (auto _ : state) {
    std::copy(in.begin(), in.end(), x.begin());
    RealFFT(n, x.data(), y.data(), t.sine.data(), t.tan.data(), t.m - 1);
    benchmark::DoNotOptimize(x.data());
  }
}

void BM_RealFftw(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  const auto in = Input(n, 3);
  double* x = fftw_alloc_real(static_cast<std::size_t>(n));
  fftw_complex* out = fftw_alloc_complex(static_cast<std::size_t>(n / 2 + 1));
  fftw_plan plan = fftw_plan_dft_r2c_1d(n, x, out, FFTW_MEASURE);
  for (auto _ : state) {
    std::copy(in.begin(), in.begin() + n, x);
    fftw_execute(plan);
    benchmark::DoNotOptimize(out);
  }
  fftw_destroy_plan(plan);
  fftw_free(x);
  fftw_free(out);
}

template <bool kSine>
void BM_TrigOurs(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  const TrigTables t(n);
  const auto in = Input(n, 4);
  Array x(in.size()), y(in.size());
  for (auto _ : state) {
    std::copy(in.begin(), in.end(), x.begin());
    if (kSine) SineTransformCore(n, x.data(), y.data(), t.sine.data(), t.tan.data(), t.m - 6, t.cosConstant);
    else CosineTransformCore(n, x.data(), y.data(), t.sine.data(), t.tan.data(), t.m - 6, t.cosConstant);
    benchmark::DoNotOptimize(x.data());
  }
}

// The same sums by FFTW's type-I transforms: RODFT00 over the N - 1 inner
// points, REDFT00 over N + 1 points.
template <bool kSine>
void BM_TrigFftw(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  const auto in = Input(n, 4);
  const int size = kSine ? n - 1 : n + 1;
  double* x = fftw_alloc_real(static_cast<std::size_t>(size));
  fftw_plan plan = fftw_plan_r2r_1d(size, x, x, kSine ? FFTW_RODFT00 : FFTW_REDFT00, FFTW_MEASURE);
  for (auto _ : state) {
    std::copy(in.begin() + (kSine ? 1 : 0), in.begin() + (kSine ? 1 : 0) + size, x);
    fftw_execute(plan);
    benchmark::DoNotOptimize(x);
  }
  fftw_destroy_plan(plan);
  fftw_free(x);
}

void Sizes(benchmark::internal::Benchmark* b) {
  for (int n : {1024, 8192, 65536}) b->Arg(n);
}

// Every power of two from 64 to 65536.
void AllSizes(benchmark::internal::Benchmark* b) {
  for (int n = 64; n <= 65536; n *= 2) b->Arg(n);
}

}  // namespace

BENCHMARK(BM_ComplexOurs)->Name("BM_ComplexFFT/ours")->Apply(AllSizes);
BENCHMARK(BM_ComplexFftw)->Name("BM_ComplexFFT/yardstick")->Apply(AllSizes);
BENCHMARK(BM_RealOurs)->Name("BM_RealFFT/ours")->Apply(AllSizes);
BENCHMARK(BM_RealFftw)->Name("BM_RealFFT/yardstick")->Apply(AllSizes);
BENCHMARK(BM_TrigOurs<true>)->Name("BM_SineTransform/ours")->Apply(Sizes);
BENCHMARK(BM_TrigFftw<true>)->Name("BM_SineTransform/yardstick")->Apply(Sizes);
BENCHMARK(BM_TrigOurs<false>)->Name("BM_CosineTransform/ours")->Apply(Sizes);
BENCHMARK(BM_TrigFftw<false>)->Name("BM_CosineTransform/yardstick")->Apply(Sizes);
BENCHMARK_MAIN();
