// Two-dimensional wavelet transforms: one level against an independent
// separable computation (tests/data/wavelet2d.tsv, from make_wavelet2d.py),
// every wavelet forward then back, the sub-band layout, and the thresholds.

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "wavelet/wavelet2d.h"

namespace keldo::wavelet {
namespace {

constexpr int kMargin = 10;

struct Matrix {
  explicit Matrix(int n) : n(n), stride(static_cast<std::size_t>(n) + 1 + kMargin), values(stride * (n + 1), 0.0f) {}
  MatrixView view() { return {values.data(), stride}; }
  float& at(int i, int j) { return values[static_cast<std::size_t>(i) * stride + static_cast<std::size_t>(j)]; }
  int n;
  std::size_t stride;
  std::vector<float> values;
};

Matrix Noise(int n, unsigned seed) {
  Matrix m(n);
  std::mt19937 random(seed);
  std::uniform_real_distribution<float> uniform(-1.0f, 1.0f);
  for (float& v : m.values) v = uniform(random);
  return m;
}

TEST(Wavelet2D, OneLevelAgreesWithASeparableFilterBank) {
  std::ifstream in(KELDO_TEST_DATA "/wavelet2d.tsv");
  std::string line;
  int cases = 0;
  while (std::getline(in, line)) {
    std::istringstream head(line);
    std::string word, name;
    int n = 0;
    head >> word >> n >> name;
    ASSERT_EQ(word, "case");
    Matrix m(n);
    std::vector<double> expected(static_cast<std::size_t>(n * n));
    for (int k = 0; k < n * n; ++k) {
      std::getline(in, line);
      std::istringstream s(line);
      int i, j;
      double x, y;
      s >> i >> j >> x >> y;
      m.at(i, j) = static_cast<float>(x);
      expected[static_cast<std::size_t>(k)] = y;
    }
    WaveletChoice w;
    if (name == "daub4") {
      w.family = 1;
      w.code = 1;
    } else {
      w.family = 4;
      w.code = 101;
    }
    Transform2D(w, false, n, m.view(), 1);
    for (int i = 0; i < n; ++i)
      for (int j = 0; j < n; ++j)
        ASSERT_NEAR(m.at(i, j), expected[static_cast<std::size_t>(i * n + j)], 2e-6) << name << " " << i << " " << j;
    ++cases;
  }
  EXPECT_EQ(cases, 4);
}

struct Wavelet {
  WaveletChoice choice;
  int maxLevelsBelowM;  // the lifting schemes stop two levels early
};

std::vector<Wavelet> EveryWavelet() {
  std::vector<Wavelet> all;
  all.push_back({{2, -1, false}, 0});
  for (int code = 1; code <= 9; ++code) all.push_back({{1, code, false}, 0});
  for (int code = 3; code <= 9; ++code) all.push_back({{1, code, true}, 0});
  for (int code = 1; code <= 5; ++code) all.push_back({{3, code, false}, 0});
  for (int code = 101; code <= 110; ++code) all.push_back({{4, code, false}, 2});
  return all;
}

TEST(Wavelet2D, EveryWaveletAndLevelReturnsTheImage) {
  for (int m : {6, 8}) {
    const int n = 1 << m;
    const Matrix source = Noise(n, 7u + static_cast<unsigned>(m));
    for (const Wavelet& w : EveryWavelet())
      for (bool packet : {false, true})
        for (int levels = 1; levels <= m - w.maxLevelsBelowM; ++levels) {
          Matrix a = source;
          Transform2D(w.choice, packet, n, a.view(), levels);
          bool changed = false;
          for (int i = 0; i < n && !changed; ++i)
            for (int j = 0; j < n; ++j) changed = changed || a.at(i, j) != source.values[i * source.stride + j];
          ASSERT_TRUE(changed);
          for (int k = 0; k <= n; ++k) {
            ASSERT_EQ(a.at(n, k), source.values[static_cast<std::size_t>(n) * source.stride + k]);
            ASSERT_EQ(a.at(k, n), source.values[static_cast<std::size_t>(k) * source.stride + n]);
          }
          InverseTransform2D(w.choice, packet, n, a.view(), levels);
          for (int i = 0; i <= n; ++i)
            for (int j = 0; j <= n; ++j)
              ASSERT_NEAR(a.at(i, j), source.values[static_cast<std::size_t>(i) * source.stride + j], 2e-5)
                  << "code " << w.choice.code << " family " << w.choice.family << " levels " << levels << " packet "
                  << packet << " at " << i << " " << j;
        }
  }
}

TEST(Wavelet2D, HaarAtEveryLevelLeavesTheMeanInOneCell) {
  const int n = 64;
  Matrix a = Noise(n, 3);
  double sum = 0;
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < n; ++j) sum += a.at(i, j);
  Transform2D({2, -1, false}, false, n, a.view(), 6);
  // Each Haar level multiplies the trend by sqrt 2 in each direction.
  EXPECT_NEAR(a.at(0, 0), sum / n, 1e-4);
}

TEST(Wavelet2D, TheFluctuationsOfASmoothImageLieOutsideTheTrendBlock) {
  // A linear ramp in x alone: Daubechies 4 annihilates it in the rows, so
  // the blocks of high column frequency vanish away from the wrap.
  const int n = 64;
  Matrix a(n);
  for (int i = 0; i <= n; ++i)
    for (int j = 0; j <= n; ++j) a.at(i, j) = static_cast<float>(j);
  Transform2D({1, 1, false}, false, n, a.view(), 1);
  for (int i = 0; i < n; ++i)
    for (int j = n / 2; j < n - 1; ++j) ASSERT_NEAR(a.at(i, j), 0.0f, 1e-4) << i << " " << j;
  // A constant in y: the rows-high block (i >= N/2) vanishes everywhere.
  for (int i = n / 2; i < n; ++i)
    for (int j = 0; j < n; ++j) ASSERT_NEAR(a.at(i, j), 0.0f, 1e-4) << i << " " << j;
}

TEST(Wavelet2D, ThresholdsCountQuantizeAndMap) {
  const int n = 4;
  Matrix a(n);
  const float values[4][4] = {{8, -4, 1, 0.5f}, {2, -2, 0, 3}, {1, 1, -1, 0.25f}, {-6, 0, 0, 0}};
  for (int i = 0; i < 4; ++i)
    for (int j = 0; j < 4; ++j) a.at(i, j) = values[i][j];
  Threshold2DSetup s;
  s.first = 0.25;  // T = 2: values of 2 and more stay
  s.quantize = true;
  s.map = true;
  s.trendSide = 2;
  Matrix b = a;
  const Threshold2DResult r = ApplyThresholds2D(n, b.view(), s);
  EXPECT_EQ(r.count, 6);
  EXPECT_EQ(r.trendCount, 4);
  EXPECT_EQ(b.at(0, 0), 9.0f);    // (floor(8/2) + 0.5) * 2
  EXPECT_EQ(b.at(0, 1), -5.0f);
  EXPECT_EQ(b.at(1, 0), 3.0f);    // equal to T counts
  EXPECT_EQ(b.at(3, 0), -7.0f);
  EXPECT_EQ(b.at(0, 2), 0.0f);
  EXPECT_EQ(r.map[1], -1.0f);
  EXPECT_EQ(r.map[b.stride * 3], -1.0f);
  EXPECT_EQ(r.map[2], 0.0f);
  // bits(1/4) = 2: 6 coefficients of 2 bits over 16 pixels.
  EXPECT_DOUBLE_EQ(r.bitsPerPixel, 12.0 / 16);
  // Two thresholds: the trend block's maximum is 8, the rest's 6.
  s.first = 0.5;   // T1 = 4
  s.second = 0.5;  // T2 = 3
  s.signBit = true;
  Matrix c = a;
  const Threshold2DResult r2 = ApplyThresholds2D(n, c.view(), s);
  EXPECT_EQ(r2.trendCount, 2);
  EXPECT_EQ(r2.count, 4);         // 8, -4; 3 and -6 outside
  EXPECT_EQ(c.at(1, 3), 4.5f);
  EXPECT_EQ(c.at(3, 0), -7.5f);
  EXPECT_EQ(c.at(1, 0), 0.0f);
  EXPECT_EQ(r2.map[1], 1.0f);     // the sign bit leaves 1 alone
  EXPECT_DOUBLE_EQ(r2.bitsPerPixel, (2 * 2 + 2 * 2) / 16.0);
}

}  // namespace
}  // namespace keldo::wavelet
