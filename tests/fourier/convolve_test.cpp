// Convolution and correlation against their circular sums.

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "fourier/convolve.h"

namespace keldo::fourier {
namespace {

std::vector<double> Curve(int n, int which) {
  std::vector<double> y(static_cast<std::size_t>(n) + 1);
  for (int j = 0; j <= n; ++j) {
    const double x = static_cast<double>(j) / n;
    y[static_cast<std::size_t>(j)] = which == 0 ? std::exp(-20 * (x - 0.3) * (x - 0.3)) : (x < 0.5 ? x : 0.25 - x * x);
  }
  return y;
}

double At(const std::vector<double>& v, long long i, int n) { return v[static_cast<std::size_t>(((i % n) + n) % n)]; }

class Kinds : public ::testing::TestWithParam<std::tuple<int, bool>> {};

TEST_P(Kinds, ResultIsTheCircularSum) {
  const int kind = std::get<0>(GetParam());
  const bool symmetric = std::get<1>(GetParam());
  for (int n : {64, 256}) {
    const auto y1 = Curve(n, 0), y2 = Curve(n, 1);
    ConvolveSetup s;
    s.kind = kind;
    s.symmetric = symmetric;
    s.dx = 0.5 / n;
    s.length = 0.5;
    const auto r = ConvolveGraphs(n, y1.data(), y2.data(), s);
    std::vector<long double> e(static_cast<std::size_t>(n));
    for (int j = 0; j < n; ++j) {
      long double sum = 0;
      for (int m = 0; m < n; ++m) {
        if (kind == 1) sum += At(y1, m, n) * At(y2, j - m, n);
        // The reversal swaps y[i] and y[N - i] over 0..N, so the first
        // value it gives is y[N].
        if (kind == 3) sum += (m == 0 ? y1[static_cast<std::size_t>(n)] : At(y1, -m, n)) * At(y2, j - m, n);
        if (kind == 2) sum += At(y1, m, n) * At(y1, m + j, n);
      }
      e[static_cast<std::size_t>(j)] = sum * s.dx;
    }
    long double scale = 0;
    for (long double v : e) scale = std::max(scale, std::fabs(v));
    for (int j = 0; j <= n; ++j) {
      const int k = (symmetric ? j + n / 2 : j) % n;  // r[N] repeats r[0]
      EXPECT_NEAR(r[static_cast<std::size_t>(j)], static_cast<double>(e[static_cast<std::size_t>(k)]), 1e-12 * scale) << j;
    }
    EXPECT_EQ(r[static_cast<std::size_t>(n)], r[0]);
  }
}

INSTANTIATE_TEST_SUITE_P(AllKinds, Kinds, ::testing::Combine(::testing::Values(1, 2, 3), ::testing::Bool()));

TEST(Correlation, NormalizedAutocorrelationPeaksAtOneAtTheOrigin) {
  const int n = 128;
  const auto y = Curve(n, 0);
  ConvolveSetup s;
  s.kind = 2;
  s.normalize = true;
  auto r = ConvolveGraphs(n, y.data(), nullptr, s);
  EXPECT_NEAR(r[0], 1.0, 1e-14);
  for (double v : r) EXPECT_LE(v, 1.0 + 1e-14);
  // On a symmetric interval the peak moves to the centre.
  s.symmetric = true;
  r = ConvolveGraphs(n, y.data(), nullptr, s);
  EXPECT_NEAR(r[static_cast<std::size_t>(n / 2)], 1.0, 1e-14);
  // A zero graph normalizes by 1: zeros, no division fault.
  const std::vector<double> zero(static_cast<std::size_t>(n) + 1, 0.0);
  r = ConvolveGraphs(n, zero.data(), nullptr, s);
  for (double v : r) EXPECT_EQ(v, 0.0);
  // Divided by the interval length.
  s.normalize = false;
  s.symmetric = false;
  s.divideByLength = true;
  s.dx = 1.0 / n;
  s.length = 4.0;
  const auto divided = ConvolveGraphs(n, y.data(), nullptr, s);
  s.divideByLength = false;
  const auto plain = ConvolveGraphs(n, y.data(), nullptr, s);
  EXPECT_DOUBLE_EQ(divided[3], plain[3] / 4.0);
}

}  // namespace
}  // namespace keldo::fourier
