// Two-dimensional transforms against numpy (tests/data/fourier2d.tsv, from
// make_fourier2d.py), and series, convolution and correlation against sums
// written out here.

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "fourier/fourier2d.h"

namespace keldo::fourier {
namespace {

constexpr int kMargin = 10;

struct Matrix {
  explicit Matrix(int n) : n(n), stride(static_cast<std::size_t>(n) + 1 + kMargin), values(stride * (n + 1), 0.0f) {}
  Plane plane() { return {values.data(), stride}; }
  float& at(int i, int j) { return values[static_cast<std::size_t>(i) * stride + static_cast<std::size_t>(j)]; }
  int n;
  std::size_t stride;
  std::vector<float> values;
};

struct Case {
  int n = 0;
  double width = 0;
  bool complex = false;
  std::vector<double> a, b, re, im;
};

std::vector<Case> ReadCases() {
  std::ifstream in(KELDO_TEST_DATA "/fourier2d.tsv");
  std::vector<Case> cases;
  std::string line;
  while (std::getline(in, line)) {
    std::istringstream s(line);
    if (line.rfind("case", 0) == 0) {
      std::string word, kind;
      Case c;
      s >> word >> c.n >> c.width >> kind;
      c.complex = kind == "complex";
      cases.push_back(c);
      continue;
    }
    int i, j;
    double a, b, re, im;
    s >> i >> j >> a >> b >> re >> im;
    Case& c = cases.back();
    c.a.push_back(a);
    c.b.push_back(b);
    c.re.push_back(re);
    c.im.push_back(im);
  }
  return cases;
}

TEST(Fourier2D, KernelsAgreeWithNumpy) {
  const auto cases = ReadCases();
  ASSERT_EQ(cases.size(), 4u);
  for (const Case& c : cases) {
    for (bool useReal : {false, true}) {
      if (useReal && c.complex) continue;
      Matrix re(c.n), im(c.n);
      double largest = 0;
      for (int i = 0; i < c.n; ++i)
        for (int j = 0; j < c.n; ++j) {
          const std::size_t k = static_cast<std::size_t>(i * c.n + j);
          re.at(i, j) = static_cast<float>(c.a[k]);
          im.at(i, j) = useReal ? 123.0f : static_cast<float>(c.b[k]);  // the real kernel ignores it
          largest = std::max(largest, std::hypot(c.re[k], c.im[k]));
        }
      if (useReal) Fourier2DReal(c.n, static_cast<float>(c.width), re.plane(), im.plane());
      else Fourier2DComplex(c.n, static_cast<float>(c.width), re.plane(), im.plane());
      for (int i = 0; i < c.n; ++i)
        for (int j = 0; j < c.n; ++j) {
          const std::size_t k = static_cast<std::size_t>(i * c.n + j);
          ASSERT_NEAR(re.at(i, j), c.re[k], 2e-6 * largest) << c.n << " " << i << " " << j << " real " << useReal;
          ASSERT_NEAR(im.at(i, j), c.im[k], 2e-6 * largest) << c.n << " " << i << " " << j << " real " << useReal;
        }
    }
  }
}

TEST(Fourier2D, ConstantOneHasItsWholeWeightAtTheCentre) {
  for (int n : {64, 256}) {
    const float width = 3.0f;
    Matrix re(n), im(n);
    for (int i = 0; i <= n; ++i)
      for (int j = 0; j <= n; ++j) re.at(i, j) = 1.0f;
    Fourier2DReal(n, width, re.plane(), im.plane());
    WrapEdges(n, re.plane());
    WrapEdges(n, im.plane());
    for (int i = 0; i <= n; ++i)
      for (int j = 0; j <= n; ++j) {
        const bool centre = i == n / 2 && j == n / 2;
        EXPECT_NEAR(re.at(i, j), centre ? width * width : 0.0f, 1e-5) << i << " " << j;
        EXPECT_NEAR(im.at(i, j), 0.0f, 1e-5);
      }
    for (int j = 0; j <= n; ++j) EXPECT_EQ(re.at(n, j), re.at(0, j));
    for (int i = 0; i <= n; ++i) EXPECT_EQ(re.at(i, n), re.at(i, 0));
  }
}

// A smooth bump and a ramp, rows 0..N, with their circular wrap.
void Fill(Matrix& m, int which) {
  const int n = m.n;
  for (int i = 0; i <= n; ++i)
    for (int j = 0; j <= n; ++j) {
      const double x = static_cast<double>(j % n) / n - 0.5, y = static_cast<double>(i % n) / n - 0.5;
      m.at(i, j) = static_cast<float>(which == 0 ? std::exp(-20 * ((x - 0.1) * (x - 0.1) + (y + 0.2) * (y + 0.2)))
                                                 : (x + 0.5) * (1 - y * y) + 0.3 * std::sin(6 * x));
    }
}

// g at grid offset (i, j) from the centre, circularly.
float Circular(Matrix& m, int i, int j) {
  const int n = m.n;
  return m.at(((i % n) + n) % n, ((j % n) + n) % n);
}

// Runs Convolution2D on the bump and the ramp and compares every sample
// with h^2 times the direct sum of f(i, j) g(offset(p, q, i, j)), the
// offsets taken circularly; returns the result.
template <class Offset>
std::vector<float> CompareWithDirectSum(float width, bool correlation, Offset offset) {
  const int n = 16;
  const float h = width / n;
  Matrix f(n), g(n);
  Fill(f, 0);
  Fill(g, 1);
  std::vector<float> out;
  Convolution2D(n, width, f.plane(), g.plane(), correlation, out, f.stride);
  double largest = 0;
  std::vector<double> expected(static_cast<std::size_t>(n * n));
  for (int p = 0; p < n; ++p)
    for (int q = 0; q < n; ++q) {
      double sum = 0;
      for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j) {
          const auto [row, column] = offset(p, q, i, j, n);
          sum += f.at(i, j) * static_cast<double>(Circular(g, row, column));
        }
      expected[static_cast<std::size_t>(p * n + q)] = h * h * sum;
      largest = std::max(largest, std::fabs(h * h * sum));
    }
  for (int p = 0; p < n; ++p)
    for (int q = 0; q < n; ++q)
      EXPECT_NEAR(out[static_cast<std::size_t>(p) * f.stride + static_cast<std::size_t>(q)],
                  expected[static_cast<std::size_t>(p * n + q)], 1e-5 * largest)
          << p << " " << q;
  return out;
}

TEST(Fourier2D, ConvolutionIsTheCircularSumAboutTheCentre) {
  // g(x - u), the origin at index N/2.
  const auto out = CompareWithDirectSum(2.0f, false, [](int p, int q, int i, int j, int n) {
    return std::pair{p - i + n / 2, q - j + n / 2};
  });
  const std::size_t stride = 16 + 1 + kMargin;
  for (std::size_t q = 0; q <= 16; ++q) EXPECT_EQ(out[16 * stride + q], out[q]);
}

TEST(Fourier2D, PairCorrelationIsTheCircularSumOfShiftedProducts) {
  // g(u + x).
  CompareWithDirectSum(1.0f, true, [](int p, int q, int i, int j, int n) {
    return std::pair{i + p - n / 2, j + q - n / 2};
  });
}

TEST(Fourier2D, AutoCorrelationIsTheCorrelationOfAGraphWithItself) {
  const int n = 32;
  const float width = 1.5f;
  Matrix f(n);
  Fill(f, 1);
  std::vector<float> auto1, pair;
  AutoCorrelation2D(n, width, f.plane(), auto1, f.stride);
  Convolution2D(n, width, f.plane(), f.plane(), true, pair, f.stride);
  float largest = 0;
  for (float v : pair) largest = std::max(largest, std::fabs(v));
  for (int i = 0; i <= n; ++i)
    for (int j = 0; j <= n; ++j) {
      const std::size_t k = static_cast<std::size_t>(i) * f.stride + static_cast<std::size_t>(j);
      EXPECT_NEAR(auto1[k], pair[k], 2e-6 * largest) << i << " " << j;
    }
}

TEST(Fourier2D, SeriesWithEveryHarmonicReturnsTheImage) {
  const int n = 64;
  Matrix f(n);
  Fill(f, 1);
  Series2DSetup s;
  s.sum = Series2DSetup::Sum::Rectangular;
  s.columnLimit = s.rowLimit = n;
  std::vector<float> out;
  int message = -1;
  ASSERT_TRUE(FourierSeries2D(n, f.plane(), s, out, f.stride, message));
  EXPECT_EQ(message, 0);
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < n; ++j)
      EXPECT_NEAR(out[static_cast<std::size_t>(i) * f.stride + static_cast<std::size_t>(j)], f.at(i, j), 1e-5);
  // No limit at all keeps the whole spectrum too.
  s.sum = Series2DSetup::Sum::None;
  std::vector<float> whole;
  ASSERT_TRUE(FourierSeries2D(n, f.plane(), s, whole, f.stride, message));
  EXPECT_EQ(whole, out);
}

TEST(Fourier2D, SphericalLimitZeroKeepsTheMean) {
  const int n = 64;
  Matrix f(n);
  Fill(f, 1);
  double mean = 0;
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < n; ++j) mean += f.at(i, j);
  mean /= n * n;
  Series2DSetup s;
  s.sum = Series2DSetup::Sum::Spherical;
  s.harmonic = 0;
  for (const char* filter : {"", "hanning"}) {
    s.filter = filter;
    std::vector<float> out;
    int message = -1;
    ASSERT_TRUE(FourierSeries2D(n, f.plane(), s, out, f.stride, message));
    for (int i = 0; i <= n; ++i)
      for (int j = 0; j <= n; ++j)
        ASSERT_NEAR(out[static_cast<std::size_t>(i) * f.stride + static_cast<std::size_t>(j)], mean, 1e-6) << filter;
  }
}

TEST(Fourier2D, SphericalLimitDropsTheHarmonicsOutsideTheCircle) {
  // A single harmonic (3, 4) has radius 5: a limit of 5 keeps it, 4 drops it.
  const int n = 32;
  Matrix f(n);
  for (int i = 0; i <= n; ++i)
    for (int j = 0; j <= n; ++j)
      f.at(i, j) = static_cast<float>(1 + std::cos(2 * M_PI * (3.0 * i + 4.0 * j) / n));
  Series2DSetup s;
  s.sum = Series2DSetup::Sum::Spherical;
  std::vector<float> out;
  int message = 0;
  s.harmonic = 5;
  ASSERT_TRUE(FourierSeries2D(n, f.plane(), s, out, f.stride, message));
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < n; ++j) ASSERT_NEAR(out[static_cast<std::size_t>(i) * f.stride + j], f.at(i, j), 1e-5);
  s.harmonic = 4;
  ASSERT_TRUE(FourierSeries2D(n, f.plane(), s, out, f.stride, message));
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < n; ++j) ASSERT_NEAR(out[static_cast<std::size_t>(i) * f.stride + j], 1.0f, 1e-5);
  // A rectangle of 4 columns and 3 rows keeps it; 3 columns do not.
  s.sum = Series2DSetup::Sum::Rectangular;
  s.columnLimit = 4;
  s.rowLimit = 3;
  ASSERT_TRUE(FourierSeries2D(n, f.plane(), s, out, f.stride, message));
  EXPECT_NEAR(out[0], f.at(0, 0), 1e-5);
  s.columnLimit = 3;
  ASSERT_TRUE(FourierSeries2D(n, f.plane(), s, out, f.stride, message));
  EXPECT_NEAR(out[0], 1.0f, 1e-5);
}

TEST(Fourier2D, FilterWeighsByTheProfileAndRefusesBadParameters) {
  const int n = 16;
  Matrix re(n), im(n);
  for (int i = 0; i <= n; ++i)
    for (int j = 0; j <= n; ++j) re.at(i, j) = im.at(i, j) = 1.0f;
  int message = -1;
  // Spherical Cesaro with H = 4: weight 1 - r/4 inside the circle.
  EXPECT_EQ(FREQFILT("Cesaro", n, re.plane(), im.plane(), 16, 16, false, 0.5, -0.5, 0, message), 0);
  EXPECT_FLOAT_EQ(re.at(8, 8), 1.0f);
  EXPECT_FLOAT_EQ(re.at(8, 10), 0.5f);
  EXPECT_FLOAT_EQ(im.at(11, 8), 0.25f);
  EXPECT_FLOAT_EQ(re.at(8, 13), 1.0f);  // outside: left to the limit step
  EXPECT_EQ(FREQFILT("Diffusion", n, re.plane(), im.plane(), 16, 16, false, 0.5, -0.5, -1, message), kFilterStop);
  EXPECT_EQ(message, 8);
  EXPECT_EQ(FREQFILT("Kaiser", n, re.plane(), im.plane(), 16, 16, false, 0.5, -0.5, 1, message), kFilterStop);
  EXPECT_EQ(message, 0);
  // Diffraction turns the phase and keeps the magnitude.
  EXPECT_EQ(FREQFILT("Diffraction", n, re.plane(), im.plane(), 16, 16, false, 0.5, -0.5, 0.01, message),
            kFilterDiffraction);
  EXPECT_NEAR(std::hypot(re.at(3, 5), im.at(3, 5)), std::sqrt(2.0), 1e-6);
  const double angle = 0.01 * M_PI * M_PI * (25 + 9);
  EXPECT_NEAR(re.at(3, 5), std::cos(angle) - std::sin(angle), 1e-6);
}

}  // namespace
}  // namespace keldo::fourier
