// Wavelet series selections, thresholds, denoising, median filters and the
// changes of the number of points.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "wavelet/series.h"
#include "wavelet/transforms.h"

namespace keldo::wavelet {
namespace {

std::vector<double> Noisy(int n, unsigned seed, double noise) {
  std::mt19937 engine(seed);
  std::normal_distribution<double> gauss(0.0, 1.0);
  std::vector<double> y(static_cast<std::size_t>(n) + 1);
  for (int i = 0; i <= n; ++i) {
    const double x = static_cast<double>(i) / n;
    y[static_cast<std::size_t>(i)] = std::sin(6 * x) + (x > 0.5 ? 1.0 : 0.0) + noise * gauss(engine);
  }
  return y;
}

TEST(Selections, HighestEnergyAndAscending) {
  const int n = 16;
  std::vector<double> x = {0, 3, -7, 1, 0, 2, 5, 0, 4, 0, -1, 0, 0, 6, 0, 0, 99};
  auto a = x;
  KeepHighest(n, a.data(), 0);
  for (int i = 0; i < n; ++i) EXPECT_EQ(a[static_cast<std::size_t>(i)], 0.0);
  EXPECT_EQ(a[16], 99.0);  // X[N] is never touched
  a = x;
  KeepHighest(n, a.data(), 3);
  EXPECT_EQ(a, (std::vector<double>{0, 0, -7, 0, 0, 0, 5, 0, 0, 0, 0, 0, 0, 6, 0, 0, 99}));
  a = x;
  EXPECT_EQ(KeepEnergy(n, a.data(), 1.0), 8);  // all eight non-zero ones
  a = x;
  EXPECT_EQ(KeepEnergy(n, a.data(), 0.0), 0);
  for (int i = 0; i < n; ++i) EXPECT_EQ(a[static_cast<std::size_t>(i)], 0.0);
  a = x;
  // Squares 49 36 25 16 9 4 1 = 140; 0.6 of it (84) needs 49 + 36.
  EXPECT_EQ(KeepEnergy(n, a.data(), 0.6), 2);
  a = x;
  KeepFirst(n, a.data(), 4);
  EXPECT_EQ(a, (std::vector<double>{0, 3, -7, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 99}));
}

TEST(Thresholds, OneKeepsTheLargestAtOneAndAHalfTimesItself) {
  const int n = 8;
  std::vector<double> x = {0.5, -2.0, 1.0, 0.25, 0, 0, 0, 0.1, 7};
  ThresholdSetup s;
  s.first = 1.0;
  s.trendLength = 4;
  const auto r = ApplyThresholds(n, x.data(), s);
  EXPECT_EQ(r.count, 1);
  EXPECT_EQ(x, (std::vector<double>{0, -3.0, 0, 0, 0, 0, 0, 0, 7}));
  // Quantizing: the midpoint of the cell, through 15 significant digits.
  std::vector<double> y = {1.0, 0.3, -0.55, 0.01, 0, 0, 0, 0, 0};
  s.first = 0.25;
  ApplyThresholds(n, y.data(), s);
  EXPECT_EQ(y[0], 1.125);            // floor(1/0.25) + 0.5 = 4.5 cells
  EXPECT_EQ(y[1], 0.375);            // 1.5 cells
  EXPECT_EQ(y[2], -0.625);           // 2.5 cells
  EXPECT_EQ(y[3], 0.0);
  // Two thresholds: the trend's and the fluctuations'.
  // Trend 0..1 against half of 4; fluctuations 2..7 against half of 0.5.
  std::vector<double> z = {4.0, 1.0, 0.5, 0.2, 0.1, 0.3, 0, 0, 0};
  ThresholdSetup two;
  two.first = 0.5;
  two.second = 0.5;
  two.quantize = false;
  two.trendLength = 2;
  const auto r2 = ApplyThresholds(n, z.data(), two);
  EXPECT_EQ(z, (std::vector<double>{4.0, 0, 0.5, 0, 0, 0.3, 0, 0, 0}));
  EXPECT_EQ(r2.count, 3);
}

TEST(Thresholds, BitsPerPointFromTheBandEntropies) {
  const int n = 16;
  // Level 1 band (8..15): four values in two bins; level 2 band (4..7): one.
  std::vector<double> a(17, 0.0);
  a[8] = a[9] = 1.0;
  a[10] = a[11] = 3.0;
  a[5] = 1.0;
  // T = 1/4: 2^(1 + 2) = 8 bins over [-4, 4] of width 1.
  const double bits = CompressionRatio1(0.25, n, 1, a.data(), 4.0, 2);
  // Level 1: entropy 1 + 0.5 per value, 4 values; level 2: 0 + 0.5, 1 value.
  EXPECT_DOUBLE_EQ(bits, (4 * 1.5 + 1 * 0.5) / 16);
  EXPECT_EQ(NQuant(2.6, 0.0, 1.0), 3);
  EXPECT_EQ(NQuant(2.6, 0.0, 0.0), 0);
}

TEST(Denoise, SigmaFromTheFinestBandAndOneForAZeroBand) {
  const int n = 64;
  std::vector<double> flat(n + 5, 2.0);
  DAUBGEN(-1, false, n, flat.data(), 3);  // Haar: exactly zero fluctuations
  EXPECT_EQ(NoiseSigma(n, flat.data()), 1.0);
  // The median of the magnitudes over 0.6745, checked with nth_element.
  auto y = Noisy(n, 3, 0.3);
  y.resize(n + 5);
  DAUBGEN(2, false, n, y.data(), 2);
  std::vector<double> m(y.begin() + n / 2, y.begin() + n);
  for (double& v : m) v = std::fabs(v);
  std::sort(m.begin(), m.end(), std::greater<>());
  EXPECT_DOUBLE_EQ(NoiseSigma(n, y.data()), m[n / 4] / 0.6745);
}

TEST(Denoise, AveragedOverShiftsIsTheMeanOfTheShiftedRuns) {
  const int n = 64, m = 6, levels = 3;
  const WaveletChoice w{1, 2, false};
  const auto y0 = Noisy(n, 5, 0.2);
  auto y = y0;
  int calls = 0;
  ASSERT_TRUE(DenoiseAveraged(w, n, m, levels, 0.1, y, [&](int) { return ++calls > 0; }));
  EXPECT_EQ(calls, 127);
  // Direct: each shift by itself, rotated with std::rotate.
  std::vector<double> sum(n, 0.0);
  for (int s = -63; s <= 63; ++s) {
    std::vector<double> x(y0.begin(), y0.begin() + n);
    const int r = ((s % n) + n) % n;
    std::rotate(x.begin(), x.begin() + (n - r) % n, x.end());
    x.resize(n + 5);
    DAUBGEN(2, false, n, x.data(), levels);
    for (int i = n >> levels; i < n; ++i) {
      const double v = x[static_cast<std::size_t>(i)];
      x[static_cast<std::size_t>(i)] = std::fabs(v) <= 0.1 ? 0.0 : (v > 0 ? v - 0.1 : v + 0.1);
    }
    INVDAUBGEN(2, false, n, x.data(), m, levels);
    x.resize(n);
    std::rotate(x.begin(), x.begin() + r, x.end());
    for (int i = 0; i < n; ++i) sum[static_cast<std::size_t>(i)] += x[static_cast<std::size_t>(i)];
  }
  for (int i = 0; i < n; ++i) EXPECT_NEAR(y[static_cast<std::size_t>(i)], sum[static_cast<std::size_t>(i)] / 127, 1e-13);
  // Stop halfway: false, and nothing changed.
  auto stopped = y0;
  EXPECT_FALSE(DenoiseAveraged(w, n, m, levels, 0.1, stopped, [](int percent) { return percent < 50; }));
  EXPECT_EQ(stopped, y0);
}

TEST(Denoise, SureShrinkUsesTheUniversalThresholdForSparseData) {
  std::vector<double> x(64, 0.0);
  x[3] = 10.0;  // sparse: s2/count - 1 is below the bound
  const double u = std::sqrt(2 * std::log(64.0));
  SureShrinkDenoise(x.data(), 64, 1.0);
  EXPECT_DOUBLE_EQ(x[3], 10.0 - u);
}

TEST(Median, WindowsOfThreeAndTheAdaptiveRule) {
  const std::vector<double> y = {5, 1, 9, 2, 2, 8, 3};
  const auto z = MedianDenoise(6, y.data(), false);
  EXPECT_EQ(z, (std::vector<double>{5, 5, 2, 2, 2, 3, 3}));
  EXPECT_EQ(AdaptiveMedianValue(1.02, 1.0), 1.0);
  EXPECT_EQ(AdaptiveMedianValue(1.2, 1.0), 1.2);
  EXPECT_EQ(AdaptiveMedianValue(-0.97, -1.0), -1.0);
  EXPECT_EQ(AdaptiveMedianValue(-0.9, -1.0), -0.9);
  EXPECT_EQ(AdaptiveMedianValue(0.0, 0.0), 0.0);  // near 0 the band is narrow
  EXPECT_EQ(AdaptiveMedianValue(1e-9, 0.0), 1e-9);
}

TEST(Resizing, DownsampleAndInterpolations) {
  const int n = 64, m = 6;
  const auto y = Noisy(n, 7, 0.0);
  const auto d = Downsample(n, y.data());
  ASSERT_EQ(d.size(), 33u);
  for (int i = 0; i <= 32; ++i) EXPECT_EQ(d[static_cast<std::size_t>(i)], y[static_cast<std::size_t>(2 * i)]);
  const auto h = HaarInterpolate(n, m, y.data());
  ASSERT_EQ(h.size(), 129u);
  for (int i = 0; i < n; ++i) {
    EXPECT_NEAR(h[static_cast<std::size_t>(2 * i)], y[static_cast<std::size_t>(i)], 1e-14);
    EXPECT_NEAR(h[static_cast<std::size_t>(2 * i + 1)], y[static_cast<std::size_t>(i)], 1e-14);
  }
  EXPECT_EQ(h[128], y[64]);
  const auto dd = DD4and2Interpolate(n, m, y.data());
  // The interpolating scheme keeps the samples at the even positions.
  for (int i = 2; i < n - 2; ++i) EXPECT_NEAR(dd[static_cast<std::size_t>(2 * i)], y[static_cast<std::size_t>(i)], 1e-13) << i;
  // and predicts the odd ones by the cubic through four neighbours.
  for (int i = 2; i < n - 3; ++i)
    EXPECT_NEAR(dd[static_cast<std::size_t>(2 * i + 1)],
                (9 * (y[static_cast<std::size_t>(i)] + y[static_cast<std::size_t>(i + 1)]) -
                 (y[static_cast<std::size_t>(i - 1)] + y[static_cast<std::size_t>(i + 2)])) / 16,
                1e-13) << i;
  EXPECT_EQ(dd[128], y[64]);
}

}  // namespace
}  // namespace keldo::wavelet
