// The Fourier kernels against direct evaluation of their defining sums, for
// every size from 8 to 4096, and the edge cases of their definitions.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <random>
#include <sstream>
#include <utility>
#include <vector>

#include "fourier/fft.h"

namespace keldo::fourier {
namespace {

constexpr double kRelativeTolerance = 1e-12;
constexpr long double kPi = 3.141592653589793238462643383279502884L;

// cos and sin of 2 pi a / M for an integer a, from a table per M.
struct UnitCircle {
  int size = 0;
  std::vector<long double> cos, sin;
  void Use(int m) {
    if (size == m) return;
    size = m;
    cos.resize(static_cast<std::size_t>(m));
    sin.resize(static_cast<std::size_t>(m));
    for (int a = 0; a < m; ++a) {
      cos[static_cast<std::size_t>(a)] = std::cos(2 * kPi * a / m);
      sin[static_cast<std::size_t>(a)] = std::sin(2 * kPi * a / m);
    }
  }
};
UnitCircle circle;
long double CosStep(long long a, int twoN) {
  circle.Use(twoN);
  return circle.cos[static_cast<std::size_t>(a % twoN)];
}
long double SinStep(long long a, int twoN) {
  circle.Use(twoN);
  return circle.sin[static_cast<std::size_t>(a % twoN)];
}

std::vector<double> RandomSignal(int n, unsigned seed) {
  std::mt19937 engine(seed);
  std::uniform_real_distribution<double> u(-1.0, 1.0);
  std::vector<double> v(static_cast<std::size_t>(n) + 5, 0.0);
  for (int i = 0; i <= n; ++i) v[static_cast<std::size_t>(i)] = u(engine);
  return v;
}

// A random signal rounded to small integers, its small negative values to
// -0: sums over it meet exact zeros of both signs.
std::vector<double> SmallIntegers(int n, unsigned seed) {
  auto v = RandomSignal(n, seed);
  for (double& x : v) x = std::signbit(x) && std::fabs(x) < 0.5 ? -0.0 : std::round(2 * x);
  return v;
}

// Largest difference over the largest reference value.
double RelativeError(const std::vector<long double>& reference, const double* ours, int from, int to) {
  long double worst = 0, scale = 0;
  for (int k = from; k <= to; ++k) {
    worst = std::max(worst, std::fabs(reference[static_cast<std::size_t>(k)] - ours[k]));
    scale = std::max(scale, std::fabs(reference[static_cast<std::size_t>(k)]));
  }
  return static_cast<double>(worst / (scale > 0 ? scale : 1));
}

class Sizes : public ::testing::TestWithParam<int> {};

TEST_P(Sizes, TablesHoldSinesAndTangents) {
  const int n = GetParam();
  TrigTables t(n);
  for (int k = 0; k <= n / 4; ++k) {
    EXPECT_NEAR(t.sine[static_cast<std::size_t>(k)], std::sin(2 * M_PI * k / n), 1e-15) << k;
    // (1 - cos x) / sin x cancels near 0: the error grows as 1 / sin x.
    const double tolerance = 2e-15 + (k > 0 ? 1e-15 / std::sin(2 * M_PI * k / n) : 0.0);
    EXPECT_NEAR(t.tan[static_cast<std::size_t>(k)], std::tan(M_PI * k / n), tolerance) << k;
  }
  EXPECT_EQ(t.tan[0], 0.0);
  EXPECT_EQ(t.tan[static_cast<std::size_t>(n / 4)], 1.0);
  EXPECT_NEAR(t.cosConstant, 2 * std::cos(2 * M_PI / n), 1e-15);
}

TEST_P(Sizes, ComplexTransformIsTheDirectSumWithPositiveExponent) {
  const int n = GetParam();
  TrigTables t(n);
  auto x = RandomSignal(n, 1), y = RandomSignal(n, 2);
  std::vector<long double> re(static_cast<std::size_t>(n)), im(static_cast<std::size_t>(n));
  for (int k = 0; k < n; ++k) {
    long double a = 0, b = 0;
    for (int j = 0; j < n; ++j) {
      const long double c = CosStep(2LL * j * k, 2 * n), s = SinStep(2LL * j * k, 2 * n);
      a += x[static_cast<std::size_t>(j)] * c - y[static_cast<std::size_t>(j)] * s;
      b += x[static_cast<std::size_t>(j)] * s + y[static_cast<std::size_t>(j)] * c;
    }
    re[static_cast<std::size_t>(k)] = a;
    im[static_cast<std::size_t>(k)] = b;
  }
  BitReversePair(x.data(), y.data(), n, t.m);
  ComplexFFTCore(x.data(), y.data(), t.sine.data(), t.tan.data(), n, 1);
  EXPECT_LT(RelativeError(re, x.data(), 0, n - 1), kRelativeTolerance);
  EXPECT_LT(RelativeError(im, y.data(), 0, n - 1), kRelativeTolerance);
}

TEST_P(Sizes, RealTransformGivesTheFullSpectrumAndTheInverseNTimesTheSignal) {
  const int n = GetParam();
  TrigTables t(n);
  auto x = RandomSignal(n, 3);
  const auto original = x;
  std::vector<double> y(x.size(), 7.0);  // ignored on input
  std::vector<long double> re(static_cast<std::size_t>(n)), im(static_cast<std::size_t>(n));
  for (int k = 0; k < n; ++k) {
    long double a = 0, b = 0;
    for (int j = 0; j < n; ++j) {
      a += original[static_cast<std::size_t>(j)] * CosStep(2LL * j * k, 2 * n);
      b += original[static_cast<std::size_t>(j)] * SinStep(2LL * j * k, 2 * n);
    }
    re[static_cast<std::size_t>(k)] = a;
    im[static_cast<std::size_t>(k)] = b;
  }
  RealFFT(n, x.data(), y.data(), t.sine.data(), t.tan.data(), t.m - 1);
  EXPECT_LT(RelativeError(re, x.data(), 0, n - 1), kRelativeTolerance);
  EXPECT_LT(RelativeError(im, y.data(), 0, n - 1), kRelativeTolerance);
  EXPECT_EQ(y[0], 0.0);
  EXPECT_EQ(y[static_cast<std::size_t>(n / 2)], 0.0);
  RealInverseFFT(n, t.m - 6, x.data(), y.data(), t.sine.data(), t.tan.data());
  std::vector<long double> scaled(static_cast<std::size_t>(n));
  for (int j = 0; j < n; ++j) scaled[static_cast<std::size_t>(j)] = static_cast<long double>(n) * original[static_cast<std::size_t>(j)];
  EXPECT_LT(RelativeError(scaled, x.data(), 0, n - 1), kRelativeTolerance);
}

TEST_P(Sizes, InverseIsTheDirectSumOfAHalfSpectrum) {
  const int n = GetParam();
  TrigTables t(n);
  auto x = RandomSignal(n, 4), y = RandomSignal(n, 5);
  std::vector<long double> out(static_cast<std::size_t>(n));
  for (int j = 0; j < n; ++j) {
    // Z[0] and Z[N/2] are real; the others come in conjugate pairs.
    long double sum = x[0] + ((j & 1) ? -1.0L : 1.0L) * x[static_cast<std::size_t>(n / 2)];
    for (int k = 1; k < n / 2; ++k)
      sum += 2 * (x[static_cast<std::size_t>(k)] * CosStep(2LL * j * k, 2 * n) +
                  y[static_cast<std::size_t>(k)] * SinStep(2LL * j * k, 2 * n));
    out[static_cast<std::size_t>(j)] = sum;
  }
  RealInverseFFT(n, t.m - 6, x.data(), y.data(), t.sine.data(), t.tan.data());
  EXPECT_LT(RelativeError(out, x.data(), 0, n - 1), kRelativeTolerance);
}

TEST_P(Sizes, TheSwappedInverseIsTheInverseWithItsHalvesExchanged) {
  const int n = GetParam();
  TrigTables t(n);
  auto x = RandomSignal(n, 4), y = RandomSignal(n, 5);
  auto x2 = x, y2 = y;
  RealInverseFFT(n, t.m - 6, x.data(), y.data(), t.sine.data(), t.tan.data());
  SwapHalves(n, x.data());
  std::vector<double> out(static_cast<std::size_t>(n) + 1, -7.0);
  RealInverseFFTSwapped(n, t.m - 6, x2.data(), y2.data(), t.sine.data(), t.tan.data(), out.data());
  for (int j = 0; j < n; ++j)
    ASSERT_EQ(std::bit_cast<std::uint64_t>(out[static_cast<std::size_t>(j)]),
              std::bit_cast<std::uint64_t>(x[static_cast<std::size_t>(j)]))
        << "n = " << n << ", j = " << j;
  EXPECT_EQ(out[static_cast<std::size_t>(n)], -7.0);
  // Two at once: each output that of the inverse alone.
  auto a = RandomSignal(n, 6), b = RandomSignal(n, 7), c = RandomSignal(n, 8), d = RandomSignal(n, 9);
  auto a2 = a, b2 = b, c2 = c, d2 = d;
  std::vector<double> first(static_cast<std::size_t>(n)), second(first), firstAlone(first), secondAlone(first);
  RealInverseFFTSwappedPair(n, t.m - 6, a.data(), b.data(), first.data(), c.data(), d.data(), second.data(),
                            t.sine.data(), t.tan.data());
  RealInverseFFTSwapped(n, t.m - 6, a2.data(), b2.data(), t.sine.data(), t.tan.data(), firstAlone.data());
  RealInverseFFTSwapped(n, t.m - 6, c2.data(), d2.data(), t.sine.data(), t.tan.data(), secondAlone.data());
  for (int j = 0; j < n; ++j) {
    const std::size_t i = static_cast<std::size_t>(j);
    ASSERT_EQ(std::bit_cast<std::uint64_t>(first[i]), std::bit_cast<std::uint64_t>(firstAlone[i])) << j;
    ASSERT_EQ(std::bit_cast<std::uint64_t>(second[i]), std::bit_cast<std::uint64_t>(secondAlone[i])) << j;
  }
}

TEST_P(Sizes, SineAndCosineTransformsAreTheirSums) {
  const int n = GetParam();
  TrigTables t(n);
  auto x = RandomSignal(n, 6);
  const auto original = x;
  std::vector<double> y(x.size(), 0.0);
  std::vector<long double> sine(static_cast<std::size_t>(n) + 1), cosine(static_cast<std::size_t>(n));
  for (int k = 0; k <= n; ++k) {
    long double a = 0, b = 0;
    for (int j = 0; j < n; ++j) {
      if (j > 0) a += original[static_cast<std::size_t>(j)] * SinStep(1LL * j * k, 2 * n);
      if (k < n) b += original[static_cast<std::size_t>(j)] * CosStep(1LL * j * k, 2 * n);
    }
    sine[static_cast<std::size_t>(k)] = a;
    if (k < n) cosine[static_cast<std::size_t>(k)] = b;
  }
  SineTransformCore(n, x.data(), y.data(), t.sine.data(), t.tan.data(), t.m - 6, t.cosConstant);
  EXPECT_LT(RelativeError(sine, x.data(), 0, n), kRelativeTolerance);
  EXPECT_EQ(x[0], 0.0);
  EXPECT_EQ(x[static_cast<std::size_t>(n)], 0.0);

  x = original;
  x[static_cast<std::size_t>(n)] = 12345.0;  // never written, never read
  CosineTransformCore(n, x.data(), y.data(), t.sine.data(), t.tan.data(), t.m - 6, t.cosConstant);
  EXPECT_LT(RelativeError(cosine, x.data(), 0, n - 1), kRelativeTolerance);
  EXPECT_EQ(x[static_cast<std::size_t>(n)], 12345.0);
}

INSTANTIATE_TEST_SUITE_P(PowersOfTwo, Sizes, ::testing::Values(8, 16, 32, 64, 128, 256, 512, 1024, 2048, 4096));

TEST(Kernels, AConstantHasItsWholeSpectrumAtZeroWithoutScaling) {
  const int n = 64;
  TrigTables t(n);
  std::vector<double> x(n + 5, 1.0), y(n + 5, 0.0);
  RealFFT(n, x.data(), y.data(), t.sine.data(), t.tan.data(), t.m - 1);
  EXPECT_NEAR(x[0], n, 1e-12);
  for (int k = 1; k < n; ++k) {
    EXPECT_NEAR(x[static_cast<std::size_t>(k)], 0.0, 1e-12);
    EXPECT_NEAR(y[static_cast<std::size_t>(k)], 0.0, 1e-12);
  }
}

// Working arrays start on 64-byte boundaries, arrays allocated in a row at
// least a quarter of a page apart within their pages, and every element can
// be written (AddressSanitizer builds check the bounds and the freeing).
TEST(Kernels, WorkingArraysAreAlignedAndStaggeredWithinTheirPages) {
  std::vector<KernelVector<double>> arrays;
  for (const std::size_t size : {5, 69, 1029, 4101, 65541, 65541, 65541, 65541, 131077})
    arrays.emplace_back(size, 1.0);
  std::uintptr_t before = 0;
  for (std::size_t i = 0; i < arrays.size(); ++i) {
    const auto at = reinterpret_cast<std::uintptr_t>(arrays[i].data());
    EXPECT_EQ(at % 64, 0u) << i;
    if (i > 0) {
      const std::uintptr_t apart = (at - before) % 4096;
      EXPECT_GE(std::min(apart, 4096 - apart), 1024u) << i;
    }
    before = at;
    std::fill(arrays[i].begin(), arrays[i].end(), 2.0);
    EXPECT_EQ(arrays[i].back(), 2.0);
  }
  // Copies and growth go through the same allocator.
  KernelVector<double> copy = arrays[3];
  copy.resize(300000, 3.0);
  EXPECT_EQ(copy[4100], 2.0);
  EXPECT_EQ(copy[299999], 3.0);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(copy.data()) % 64, 0u);
}

TEST(Kernels, CosineAndSineWavesLandInBinsOneAndNMinusOne) {
  const int n = 128;
  TrigTables t(n);
  std::vector<double> x(n + 5), y(n + 5);
  for (int j = 0; j < n; ++j) x[static_cast<std::size_t>(j)] = std::cos(2 * M_PI * j / n);
  RealFFT(n, x.data(), y.data(), t.sine.data(), t.tan.data(), t.m - 1);
  EXPECT_NEAR(x[1], n / 2.0, 1e-12);
  EXPECT_NEAR(x[n - 1], n / 2.0, 1e-12);
  for (int j = 0; j < n; ++j) x[static_cast<std::size_t>(j)] = std::sin(2 * M_PI * j / n);
  RealFFT(n, x.data(), y.data(), t.sine.data(), t.tan.data(), t.m - 1);
  EXPECT_NEAR(y[1], n / 2.0, 1e-12);
  EXPECT_NEAR(y[n - 1], -n / 2.0, 1e-12);
}

TEST(Kernels, BitReversalUpTo2To17) {
  for (int m = 1; m <= 17; ++m) {
    const int n = 1 << m;
    std::vector<double> x(static_cast<std::size_t>(n)), y(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) x[static_cast<std::size_t>(i)] = y[static_cast<std::size_t>(i)] = i;
    BitReversePair(x.data(), y.data(), n, m);
    for (int i = 0; i < n; ++i) {
      int r = 0;
      for (int b = 0; b < m; ++b) r |= ((i >> b) & 1) << (m - 1 - b);
      ASSERT_EQ(x[static_cast<std::size_t>(i)], r) << "n " << n << " i " << i;
      ASSERT_EQ(y[static_cast<std::size_t>(i)], r);
    }
  }
}

// ComplexFFTCore as the steps list it: the twiddle loop outside, the block
// loop inside, one scalar butterfly at a time. Ours runs the butterflies in
// another order and two at a time; every value must come out the same, bit
// for bit.
void StepOrderCore(double* x, double* y, const double* s, const double* t, int n, int stride) {
  for (int j = 0; j < n; j += 2) {
    const double a = x[j], b = x[j + 1], c = y[j], d = y[j + 1];
    x[j] = a + b;
    x[j + 1] = a - b;
    y[j] = c + d;
    y[j + 1] = c - d;
  }
  int d = 2, groups = n / 2, tstep = stride * (n / 2);
  while (d < n) {
    groups /= 2;
    tstep /= 2;
    const int q = d / 2;
    for (int g = 0; g < groups; ++g) {
      const int j = g * 2 * d;
      double a = x[j + d], b = y[j + d];
      x[j + d] = x[j] - a;
      y[j + d] = y[j] - b;
      x[j] += a;
      y[j] += b;
      a = x[j + d + q];
      b = y[j + d + q];
      x[j + d + q] = x[j + q] + b;
      y[j + d + q] = y[j + q] - a;
      x[j + q] -= b;
      y[j + q] += a;
    }
    for (int k = 1; k < q; ++k) {
      const double sk = s[k * tstep], tk = t[k * tstep];
      for (int g = 0; g < groups; ++g) {
        const int j = g * 2 * d;
        int r = j + k + d;
        double u = y[r] + tk * x[r], v = x[r] - sk * u, w = u + tk * v;
        x[r] = x[j + k] - v;
        y[r] = y[j + k] - w;
        x[j + k] += v;
        y[j + k] += w;
        const int p = j + k + q;
        r = p + d;
        u = x[r] - tk * y[r];
        v = -y[r] - sk * u;
        w = u + tk * v;
        x[r] = x[p] - v;
        y[r] = y[p] - w;
        x[p] += v;
        y[p] += w;
      }
    }
    d *= 2;
  }
}

TEST(Kernels, ComplexCoreIsBitForBitTheStepOrder) {
  for (int m = 3; m <= 16; ++m) {
    const int n = 1 << m;
    TrigTables t(n);
    auto x = RandomSignal(n, 11), y = RandomSignal(n, 12);
    auto rx = x, ry = y;
    ComplexFFTCore(x.data(), y.data(), t.sine.data(), t.tan.data(), n, 1);
    StepOrderCore(rx.data(), ry.data(), t.sine.data(), t.tan.data(), n, 1);
    for (int i = 0; i < n; ++i) {
      ASSERT_EQ(x[static_cast<std::size_t>(i)], rx[static_cast<std::size_t>(i)]) << "n " << n << " i " << i;
      ASSERT_EQ(y[static_cast<std::size_t>(i)], ry[static_cast<std::size_t>(i)]) << "n " << n << " i " << i;
    }
    // Stride 2: tables built for 2n.
    TrigTables t2(2 * n);
    x = RandomSignal(n, 13);
    y = RandomSignal(n, 14);
    rx = x;
    ry = y;
    ComplexFFTCore(x.data(), y.data(), t2.sine.data(), t2.tan.data(), n, 2);
    StepOrderCore(rx.data(), ry.data(), t2.sine.data(), t2.tan.data(), n, 2);
    EXPECT_EQ(x, rx);
    EXPECT_EQ(y, ry);
  }
}

TEST(Kernels, BatchOfSequencesIsBitForBitEachSequenceAlone) {
  for (int m = 3; m <= 13; ++m) {
    const int n = 1 << m;
    const FloatTrigTables t(n);
    std::vector<float> bx(static_cast<std::size_t>(n) * kFFTBatch), by(bx.size());
    std::vector<std::vector<float>> alone(2 * kFFTBatch);
    for (int c = 0; c < kFFTBatch; ++c) {
      const auto x = RandomSignal(n, 100 + c), y = RandomSignal(n, 200 + c);
      auto& ax = alone[static_cast<std::size_t>(2 * c)];
      auto& ay = alone[static_cast<std::size_t>(2 * c + 1)];
      ax.assign(x.begin(), x.end());
      ay.assign(y.begin(), y.end());
      for (int i = 0; i < n; ++i) {
        bx[static_cast<std::size_t>(i * kFFTBatch + c)] = ax[static_cast<std::size_t>(i)];
        by[static_cast<std::size_t>(i * kFFTBatch + c)] = ay[static_cast<std::size_t>(i)];
      }
      BitReversePair(ax.data(), ay.data(), n, m);
      ComplexFFTCore(ax.data(), ay.data(), t.sine.data(), t.tan.data(), n, 1);
    }
    ComplexFFTBatch(bx.data(), by.data(), t.sine.data(), t.tan.data(), n);
    for (int c = 0; c < kFFTBatch; ++c)
      for (int i = 0; i < n; ++i) {
        ASSERT_EQ(bx[static_cast<std::size_t>(i * kFFTBatch + c)], alone[static_cast<std::size_t>(2 * c)][static_cast<std::size_t>(i)])
            << "n " << n << " sequence " << c << " i " << i;
        ASSERT_EQ(by[static_cast<std::size_t>(i * kFFTBatch + c)],
                  alone[static_cast<std::size_t>(2 * c + 1)][static_cast<std::size_t>(i)])
            << "n " << n << " sequence " << c << " i " << i;
      }
  }
}

// The four kernels at N = 65536 against numpy and scipy
// (tests/data/make_fft_golden.py).
TEST(Kernels, LargestSizeMatchesNumpy) {
  const int n = 65536;
  std::ifstream in(KELDO_TEST_DATA "/fft_golden_65536.tsv");
  ASSERT_TRUE(in) << "missing golden file";
  std::vector<std::array<double, 7>> rows;
  std::string line;
  while (std::getline(in, line)) {
    if (line.empty() || line[0] == '#') continue;
    std::istringstream fields(line);
    std::array<double, 7> r{};
    for (double& v : r) fields >> v;
    rows.push_back(r);
  }
  ASSERT_GT(rows.size(), 1000u);
  std::vector<double> x(n + 5), y(n + 5);
  for (int j = 0; j < n; ++j) {
    x[static_cast<std::size_t>(j)] = std::sin(0.37 * j) + 0.25 * std::cos(0.011 * static_cast<double>(j) * j);
    y[static_cast<std::size_t>(j)] = std::cos(0.29 * j) - 0.5 * std::sin(0.013 * j);
  }
  TrigTables t(n);
  // Errors relative to the largest value of each spectrum.
  const auto check = [&](const std::vector<double>& ours, int column, const char* what) {
    double scale = 0;
    for (const auto& r : rows) scale = std::max(scale, std::fabs(r[static_cast<std::size_t>(column)]));
    for (const auto& r : rows) {
      const std::size_t k = static_cast<std::size_t>(r[0]);
      ASSERT_NEAR(ours[k], r[static_cast<std::size_t>(column)], 1e-12 * scale) << what << " k " << k;
    }
  };
  auto rx = x, ry = y;
  RealFFT(n, rx.data(), ry.data(), t.sine.data(), t.tan.data(), t.m - 1);
  check(rx, 1, "real, real part");
  check(ry, 2, "real, imaginary part");
  auto cx = x, cy = y;
  BitReversePair(cx.data(), cy.data(), n, t.m);
  ComplexFFTCore(cx.data(), cy.data(), t.sine.data(), t.tan.data(), n, 1);
  check(cx, 3, "complex, real part");
  check(cy, 4, "complex, imaginary part");
  auto sx = x, scratch = y;
  SineTransformCore(n, sx.data(), scratch.data(), t.sine.data(), t.tan.data(), t.m - 6, t.cosConstant);
  check(sx, 5, "sine");
  auto ox = x;
  CosineTransformCore(n, ox.data(), scratch.data(), t.sine.data(), t.tan.data(), t.m - 6, t.cosConstant);
  check(ox, 6, "cosine");
}

// RealFFT as its steps list it, with the step-order core.
void StepOrderRealFFT(int n, double* x, double* y, const double* s, const double* t, int mHalf) {
  const int h = n / 2, q = n / 4;
  for (int k = 0; k < h; ++k) {
    y[k] = x[2 * k + 1];
    x[k] = x[2 * k];
  }
  BitReversePair(x, y, h, mHalf);
  StepOrderCore(x, y, s, t, h, 2);
  for (int k = 1; k < q; ++k) {
    const double sk = s[k], tk = t[k];
    double d = x[k] - x[h - k], a = y[h - k] + y[k];
    double u = d * tk + a, v = d - u * sk;
    x[n - k] = (x[h - k] + x[k] + (v * tk + u)) / 2;
    y[n - k] = (y[h - k] - y[k] + v) / 2;
    const int e = q + k;
    d = x[e] - x[h - e];
    a = y[h - e] + y[e];
    u = d - a * tk;
    v = -a - u * sk;
    x[n - e] = (x[h - e] + x[e] + (v * tk + u)) / 2;
    y[n - e] = (y[h - e] - y[e] + v) / 2;
  }
  x[n - q] = x[q];
  y[n - q] = -y[q];
  for (int k = 1; k < h; ++k) {
    x[k] = x[n - k];
    y[k] = -y[n - k];
  }
  x[h] = x[0] - y[0];
  x[0] = x[0] + y[0];
  y[0] = 0.0;
  y[h] = 0.0;
}

TEST(Kernels, RealTransformIsBitForBitTheStepOrder) {
  for (int m = 3; m <= 16; ++m) {
    const int n = 1 << m;
    TrigTables t(n);
    // A random signal, one of small integers and zeros of both signs, whose
    // sums meet exact zeros on the way, and one of negative zeros, whose
    // sums keep zeros of both signs in every stage: there a trivial twiddle
    // taken as a rotation by 0 would turn some -0 into +0.
    const auto integers = SmallIntegers(n, 23);
    const std::vector<double> negativeZeros(integers.size(), -0.0);
    for (const auto& signal : {RandomSignal(n, 21), integers, negativeZeros}) {
      auto x = signal, y = RandomSignal(n, 22);
      auto rx = x, ry = y;
      RealFFT(n, x.data(), y.data(), t.sine.data(), t.tan.data(), m - 1);
      StepOrderRealFFT(n, rx.data(), ry.data(), t.sine.data(), t.tan.data(), m - 1);
      for (int i = 0; i < n; ++i) {
        const auto at = static_cast<std::size_t>(i);
        ASSERT_EQ(std::bit_cast<std::uint64_t>(x[at]), std::bit_cast<std::uint64_t>(rx[at])) << "n " << n << " i " << i;
        ASSERT_EQ(std::bit_cast<std::uint64_t>(y[at]), std::bit_cast<std::uint64_t>(ry[at])) << "n " << n << " i " << i;
      }
    }
  }
}

// RealInverseFFT as its steps list it, with the step-order core.
void StepOrderRealInverseFFT(int n, double* x, double* y, const double* s, const double* t, int mHalf) {
  const int h = n / 2, q = n / 4;
  const double x0 = x[0], xh = x[h];
  double a = 0.0, b = 0.0;
  for (int k = 1; k < h; ++k) {
    a += (k % 2 == 1) ? -x[k] : x[k];
    b += x[k];
  }
  const double p = x0 + xh + 2 * a, r0 = x0 + xh + 2 * b;
  double e = x0;
  for (int j = 1; j < q; ++j) e += (x[q - j] - x[q + j]) * s[j];
  y[0] = 0.0;
  double c = 0.0;
  for (int k = 1; k < q; ++k) {
    const double sk = s[k];
    const double mean = (x[h - k] + x[k]) / 2, g = x[k] - x[h - k];
    x[k] = mean - g * sk;
    x[h - k] = mean + g * sk;
    const double w = (y[k] - y[h - k]) / 2, r = (y[h - k] + y[k]) * sk;
    y[k] = r + w;
    y[h - k] = r - w;
    c += r;
  }
  const double f = y[q] + c;
  y[q] *= 2;
  BitReversePair(x, y, h, mHalf);
  StepOrderCore(x, y, s, t, h, 2);
  for (int k = 1; k < q; ++k) {
    x[h + k] = y[k] - y[h - k];
    x[n - k] = y[h - k] + y[k];
  }
  y[1] = 2 * e;
  for (int k = 1; k < q; ++k) {
    y[2 * k] = x[h - k] + x[k];
    y[2 * k + 1] = x[h + k] + y[2 * k - 1];
    x[h + k] = x[h - k] - x[k];
  }
  x[1] = 2 * f;
  for (int k = 1; k < q; ++k) {
    x[2 * k] = x[h + k];
    x[2 * k + 1] = x[n - k] + x[2 * k - 1];
  }
  x[0] = r0;
  double sign = xh;
  for (int k = 1; k < h; ++k) {
    sign = -sign;
    const double v = sign - x0 + y[k];
    x[n - k] = v - x[k];
    x[k] = v + x[k];
  }
  x[h] = p;
}

void ExpectSameBits(const double* got, const double* want, int n, const char* what) {
  for (int i = 0; i < n; ++i)
    ASSERT_EQ(std::bit_cast<std::uint64_t>(got[i]), std::bit_cast<std::uint64_t>(want[i]))
        << what << " n " << n << " i " << i;
}

// The lower half of the spectrum alone is RealFFT's, bit for bit, at every
// size, on a random signal, on integers with zeros of both signs and on
// negative zeros; also with an array lent for the imaginary parts of the
// half-length transform, which is written only within its N/2 entries.
TEST(Kernels, LowerHalfIsTheRealTransformsToTheBit) {
  for (int m = 3; m <= 16; ++m) {
    const int n = 1 << m;
    TrigTables t(n);
    const auto integers = SmallIntegers(n, 25);
    const std::vector<double> negativeZeros(integers.size(), -0.0);
    for (const auto& signal : {RandomSignal(n, 24), integers, negativeZeros}) {
      auto x = signal, y = RandomSignal(n, 26);
      auto hx = signal, hy = RandomSignal(n, 27);
      auto lx = signal, ly = RandomSignal(n, 28);
      std::vector<double> lent(static_cast<std::size_t>(n / 2) + 2, 7.0);
      RealFFT(n, x.data(), y.data(), t.sine.data(), t.tan.data(), m - 1);
      RealFFTLowerHalf(n, hx.data(), hy.data(), t.sine.data(), t.tan.data(), m - 1);
      RealFFTLowerHalf(n, lx.data(), ly.data(), t.sine.data(), t.tan.data(), m - 1, lent.data() + 1);
      ExpectSameBits(hx.data(), x.data(), n / 2 + 1, "real parts");
      ExpectSameBits(hy.data(), y.data(), n / 2 + 1, "imaginary parts");
      ExpectSameBits(lx.data(), x.data(), n / 2 + 1, "real parts, imaginary half lent");
      ExpectSameBits(ly.data(), y.data(), n / 2 + 1, "imaginary parts, imaginary half lent");
      EXPECT_EQ(lent.front(), 7.0);
      EXPECT_EQ(lent.back(), 7.0);
    }
  }
}

// The inverse, alone, with its halves exchanged into another array, and two
// at once, against its steps, bit for bit: on a spectrum, on a half spectrum
// of small integers with zeros of both signs, and on one of negative zeros.
TEST(Kernels, RealInverseIsBitForBitTheStepOrder) {
  for (int m = 6; m <= 16; ++m) {
    const int n = 1 << m;
    TrigTables t(n);
    auto spectrumX = RandomSignal(n, 31), spectrumY = RandomSignal(n, 32);
    RealFFT(n, spectrumX.data(), spectrumY.data(), t.sine.data(), t.tan.data(), m - 1);
    const auto integersX = SmallIntegers(n, 33), integersY = SmallIntegers(n, 34);
    const std::vector<double> negativeZeros(spectrumX.size(), -0.0);
    const std::vector<std::pair<std::vector<double>, std::vector<double>>> inputs = {
        {spectrumX, spectrumY}, {integersX, integersY}, {negativeZeros, negativeZeros}};
    for (const auto& [inX, inY] : inputs) {
      auto wantX = inX, wantY = inY;
      StepOrderRealInverseFFT(n, wantX.data(), wantY.data(), t.sine.data(), t.tan.data(), m - 1);
      std::vector<double> swapped(wantX.begin(), wantX.begin() + n);
      SwapHalves(n, swapped.data());

      auto x = inX, y = inY;
      RealInverseFFT(n, m - 6, x.data(), y.data(), t.sine.data(), t.tan.data());
      ExpectSameBits(x.data(), wantX.data(), n, "in place");

      // Into rows at four offsets of one element apart in a buffer, as the
      // rows of a matrix of n + 1 columns lie, with a guard on each side
      // that must stay as it was.
      constexpr double kGuard = -7.5;
      const auto rowAt = [&](std::vector<double>& buffer, int shift) {
        buffer.assign(static_cast<std::size_t>(n) + 8, kGuard);
        return buffer.data() + 1 + shift;
      };
      const auto expectGuards = [&](const std::vector<double>& buffer, int shift, const char* what) {
        for (std::size_t i = 0; i < buffer.size(); ++i)
          if (i < static_cast<std::size_t>(1 + shift) || i >= static_cast<std::size_t>(1 + shift + n)) {
            ASSERT_EQ(buffer[i], kGuard) << what << ", n = " << n << ", shift " << shift << ", at " << i;
          }
      };
      for (int shift = 0; shift < 4; ++shift) {
        x = inX;
        y = inY;
        std::vector<double> out;
        double* row = rowAt(out, shift);
        RealInverseFFTSwapped(n, m - 6, x.data(), y.data(), t.sine.data(), t.tan.data(), row);
        ExpectSameBits(row, swapped.data(), n, "swapped");
        expectGuards(out, shift, "swapped");

        // The second of the pair on the first spectrum, so that the two
        // differ, its row at another shift.
        auto x1 = inX, y1 = inY, x2 = spectrumX, y2 = spectrumY;
        auto want2X = spectrumX, want2Y = spectrumY;
        StepOrderRealInverseFFT(n, want2X.data(), want2Y.data(), t.sine.data(), t.tan.data(), m - 1);
        SwapHalves(n, want2X.data());
        std::vector<double> out1, out2;
        const int shift2 = (shift + 1) % 4;
        double* row1 = rowAt(out1, shift);
        double* row2 = rowAt(out2, shift2);
        RealInverseFFTSwappedPair(n, m - 6, x1.data(), y1.data(), row1, x2.data(), y2.data(), row2, t.sine.data(),
                                  t.tan.data());
        ExpectSameBits(row1, swapped.data(), n, "first of a pair");
        ExpectSameBits(row2, want2X.data(), n, "second of a pair");
        expectGuards(out1, shift, "first of a pair");
        expectGuards(out2, shift2, "second of a pair");
      }
    }
  }
}

// The complex transform with its bit reversal (done with the first stages
// in tiles) against the permutation and the step-order core one after the
// other, bit for bit.
TEST(Kernels, ComplexTransformIsBitForBitReversalThenSteps) {
  for (int m = 3; m <= 16; ++m) {
    const int n = 1 << m;
    TrigTables t(n);
    auto x = RandomSignal(n, 41), y = RandomSignal(n, 42);
    auto rx = x, ry = y;
    ComplexFFT(x.data(), y.data(), t.sine.data(), t.tan.data(), n, m);
    BitReversePair(rx.data(), ry.data(), n, m);
    StepOrderCore(rx.data(), ry.data(), t.sine.data(), t.tan.data(), n, 1);
    ExpectSameBits(x.data(), rx.data(), n, "real parts");
    ExpectSameBits(y.data(), ry.data(), n, "imaginary parts");
  }
}

// The half-length transform with the tables of twice its length against
// the permutation and the step-order core with stride 2, bit for bit.
TEST(Kernels, HalfLengthTransformIsBitForBitReversalThenStepsOfStride2) {
  for (int m = 3; m <= 17; ++m) {
    const int n = 1 << m, h = n / 2;
    TrigTables t(n);
    auto x = RandomSignal(h, 43), y = RandomSignal(h, 44);
    auto rx = x, ry = y;
    HalfLengthComplexFFT(x.data(), y.data(), t.sine.data(), t.tan.data(), h, m - 1);
    BitReversePair(rx.data(), ry.data(), h, m - 1);
    StepOrderCore(rx.data(), ry.data(), t.sine.data(), t.tan.data(), h, 2);
    ExpectSameBits(x.data(), rx.data(), h, "real parts");
    ExpectSameBits(y.data(), ry.data(), h, "imaginary parts");
  }
}

// The same transform from interleaved pairs, out of place, bit for bit.
TEST(Kernels, HalfLengthTransformOfPairsIsTheSplitOnesToTheBit) {
  for (int m = 3; m <= 17; ++m) {
    const int n = 1 << m, h = n / 2;
    TrigTables t(n);
    const auto pairs = RandomSignal(n, 45);
    std::vector<double> x(static_cast<std::size_t>(h)), y(static_cast<std::size_t>(h));
    for (int k = 0; k < h; ++k) {
      x[static_cast<std::size_t>(k)] = pairs[static_cast<std::size_t>(2 * k)];
      y[static_cast<std::size_t>(k)] = pairs[static_cast<std::size_t>(2 * k + 1)];
    }
    HalfLengthComplexFFT(x.data(), y.data(), t.sine.data(), t.tan.data(), h, m - 1);
    std::vector<double> re(static_cast<std::size_t>(h) + 2, 7.0), im(static_cast<std::size_t>(h) + 2, 7.0);
    const auto input = pairs;
    HalfLengthComplexFFTOfPairs(input.data(), re.data() + 1, im.data() + 1, t.sine.data(), t.tan.data(), h, m - 1);
    ExpectSameBits(re.data() + 1, x.data(), h, "real parts");
    ExpectSameBits(im.data() + 1, y.data(), h, "imaginary parts");
    EXPECT_EQ(re.front(), 7.0);
    EXPECT_EQ(re.back(), 7.0);
    EXPECT_EQ(input, pairs);
  }
}

TEST(Kernels, SwapHalvesExchangesTheHalves) {
  std::vector<double> a = {0, 1, 2, 3, 4, 5, 6, 7};
  SwapHalves(8, a.data());
  EXPECT_EQ(a, (std::vector<double>{4, 5, 6, 7, 0, 1, 2, 3}));
}

}  // namespace
}  // namespace keldo::fourier
