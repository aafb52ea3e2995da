// SureShrink and the thresholding steps of the two-dimensional denoiser:
// thresholds against tests/data/make_sureshrink.py (a direct evaluation of
// the risk at every candidate), the sparsity switch, hard and soft rules and
// the zero band, worked by hand.

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "wavelet/image_denoise.h"

namespace keldo::wavelet {
namespace {

constexpr double kRelative = 1e-9;

struct Line {
  std::string kind, name;
  std::vector<std::string> cells;
};

std::vector<Line> ReadCases() {
  std::ifstream in(KELDO_TEST_DATA "/sureshrink.tsv");
  std::vector<Line> lines;
  std::string text;
  while (std::getline(in, text)) {
    std::stringstream s(text);
    Line line;
    std::getline(s, line.kind, '\t');
    std::getline(s, line.name, '\t');
    for (std::string cell; std::getline(s, cell, '\t');) line.cells.push_back(cell);
    lines.push_back(line);
  }
  return lines;
}

TEST(SureShrink, ThresholdsMatchTheDirectRisk) {
  int bands = 0;
  for (const Line& line : ReadCases()) {
    if (line.kind != "band") continue;
    ++bands;
    const double sigma = std::stod(line.cells[0]);
    const std::size_t n = std::stoul(line.cells[1]);
    const double sureT = std::stod(line.cells[2]);
    const bool sparse = line.cells[3] == "1";
    const double threshold = std::stod(line.cells[4]);
    std::vector<float> band;
    for (std::size_t k = 0; k < n; ++k) band.push_back(std::stof(line.cells[5 + k]));
    const SureShrinkChoice c = SureShrinkThreshold(band, sigma);
    EXPECT_NEAR(c.sureT, sureT, kRelative * (1 + sureT)) << line.name;
    EXPECT_EQ(c.sparse, sparse) << line.name;
    EXPECT_NEAR(c.threshold, threshold, kRelative * (1 + threshold)) << line.name;
  }
  EXPECT_EQ(bands, 5);
}

TEST(SureShrink, SigmaIsTheMedianOfTheFinestDiagonalBlock) {
  int planes = 0;
  for (const Line& line : ReadCases()) {
    if (line.kind != "sigma") continue;
    ++planes;
    ImagePlane p(std::stoi(line.cells[0]), std::stoi(line.cells[1]));
    for (std::size_t k = 0; k < p.v.size(); ++k) p.v[k] = std::stof(line.cells[3 + k]);
    EXPECT_NEAR(SureShrinkSigma(p), std::stod(line.cells[2]), 1e-6) << line.name;
  }
  EXPECT_EQ(planes, 2);
}

TEST(SureShrink, ZeroFinestBandGivesSigmaOne) {
  ImagePlane p(16, 16);
  for (int y = 0; y < 8; ++y)
    for (int x = 0; x < 16; ++x) p.At(x, y) = static_cast<float>(x * y);
  EXPECT_EQ(SureShrinkSigma(p), 1.0);
  const ImagePlane before = p;
  const SureShrinkResult r = SureShrinkImageTransform(p, 1, Shrinkage::Hard);
  EXPECT_EQ(r.sigma, 1.0);
  ASSERT_EQ(r.bands.size(), 3u);
  // The zero diagonal block is sparse: the universal threshold over 64 values.
  EXPECT_TRUE(r.bands[2].sparse);
  EXPECT_NEAR(r.bands[2].threshold, std::sqrt(2 * std::log(64.0)), 1e-12);
  for (int y = 8; y < 16; ++y)
    for (int x = 8; x < 16; ++x) EXPECT_EQ(p.At(x, y), 0.0f);
  // The trend corner is never touched.
  for (int y = 0; y < 8; ++y)
    for (int x = 0; x < 8; ++x) EXPECT_EQ(p.At(x, y), before.At(x, y));
}

// x = {0, 0, 0, c}: Energy/n - 1 = c^2/4 - 1 against (ln 4)^1.5/2 = 0.8158.
TEST(SureShrink, SparsitySwitchesToTheUniversalThreshold) {
  const double universal = std::sqrt(2 * std::log(4.0));
  // c = 2: 0 <= 0.8158, sparse.
  std::vector<float> sparse = {0, 0, 0, 2};
  SureShrinkChoice a = SureShrinkThreshold(sparse, 1.0);
  EXPECT_TRUE(a.sparse);
  EXPECT_NEAR(a.threshold, universal, 1e-12);
  // c = 3: 1.25 > 0.8158, not sparse. Risks 2, 0, -2, 5 (start 4): x(2) = 0.
  std::vector<float> dense = {0, 0, 0, 3};
  SureShrinkChoice b = SureShrinkThreshold(dense, 1.0);
  EXPECT_FALSE(b.sparse);
  EXPECT_EQ(b.bestRisk, -2.0);
  EXPECT_EQ(b.threshold, 0.0);
  // Threshold 0 leaves the band, even under the soft rule.
  std::vector<float> band = {0, 0, 0, 3};
  SureShrinkDenoise({band.data(), 4, 1, 4}, 1.0, Shrinkage::Soft);
  EXPECT_EQ(band, dense);
}

TEST(SureShrink, StrictMinimumKeepsTheFirstOfEqualRisks) {
  // x = {1, 1}: Risk(0) = 2 - 2 + 2 = 2, Risk(1) = 2 - 2 + 0 = 0, a new
  // minimum at the same value; x = {2, 2}: Risk(0) = 8, no better than n.
  std::vector<float> ones = {1, 1};
  EXPECT_EQ(SureShrinkThreshold(ones, 1.0).sureT, 1.0);
  EXPECT_EQ(SureShrinkThreshold(ones, 1.0).bestRisk, 0.0);
  std::vector<float> twos = {2, -2};
  EXPECT_EQ(SureShrinkThreshold(twos, 1.0).sureT, 0.0);
  EXPECT_EQ(SureShrinkThreshold(twos, 1.0).bestRisk, 2.0);
}

TEST(SureShrink, HardAndSoftRules) {
  // A 2 by 4 block inside rows of 6; the sparse rule gives the threshold
  // sigma sqrt(2 ln 8) = 2.0393.
  const double t = 1.0 * std::sqrt(2 * std::log(8.0));
  // Energy 16.05 / 8 - 1 = 1.006 <= (ln 8)^1.5 / sqrt(8) = 1.060: sparse.
  const std::vector<float> start = {0.5f, -0.3f, 2.1f, -2.5f, 9, 9, 0.0f, 0.2f, -2.05f, 0.9f, 9, 9};
  std::vector<float> hard = start, soft = start;
  const SureShrinkChoice h = SureShrinkDenoise({hard.data(), 4, 2, 6}, 1.0, Shrinkage::Hard);
  ASSERT_TRUE(h.sparse);
  ASSERT_NEAR(h.threshold, t, 1e-12);
  const std::vector<float> hardWant = {0, 0, 2.1f, -2.5f, 9, 9, 0, 0, -2.05f, 0, 9, 9};
  EXPECT_EQ(hard, hardWant);
  SureShrinkDenoise({soft.data(), 4, 2, 6}, 1.0, Shrinkage::Soft);
  const std::vector<float> softWant = {0, 0, static_cast<float>(2.1f - t), static_cast<float>(-(2.5 - t)), 9, 9, 0, 0,
                                       static_cast<float>(-(2.05f - t)), 0, 9, 9};
  for (std::size_t k = 0; k < start.size(); ++k) EXPECT_FLOAT_EQ(soft[k], softWant[k]) << k;
}

TEST(SureShrink, LevelsAndBandsOfATransform) {
  // Three levels of a 32 by 16 plane: nine bands, the coarsest 4 by 2.
  ImagePlane p(32, 16);
  std::mt19937 g(5);
  std::normal_distribution<float> noise(0.0f, 3.0f);
  for (float& v : p.v) v = noise(g);
  const ImagePlane before = p;
  const SureShrinkResult r = SureShrinkImageTransform(p, 3, Shrinkage::Hard);
  EXPECT_EQ(r.bands.size(), 9u);
  // Gaussian noise: every band is sparse and its values below the universal
  // threshold are gone, the trend 4 by 2 stays.
  for (int y = 0; y < 2; ++y)
    for (int x = 0; x < 4; ++x) EXPECT_EQ(p.At(x, y), before.At(x, y));
  int kept = 0;
  for (int y = 0; y < 16; ++y)
    for (int x = 0; x < 32; ++x)
      if ((x >= 4 || y >= 2) && p.At(x, y) != 0.0f) ++kept;
  EXPECT_LT(kept, 10);
}

TEST(ImageDenoise2D, HardAndSoftOutsideTheTrend) {
  // n = 4, trend side 2, a margin column and row: a(i, j) = (j - 1.5) * (i + 1).
  constexpr int n = 4;
  constexpr std::size_t stride = 5;
  std::vector<float> a(stride * 5, 7.0f);
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < n; ++j) a[static_cast<std::size_t>(i) * stride + static_cast<std::size_t>(j)] = (j - 1.5f) * (i + 1);
  std::vector<float> cs = a, vs = a;
  DenoiseTheImageTransformCS(n, {cs.data(), stride}, 2.0, 2);
  DenoiseTheImageTransformVS(n, {vs.data(), stride}, 2.0, 2);
  for (int i = 0; i < 5; ++i)
    for (int j = 0; j < 5; ++j) {
      const std::size_t k = static_cast<std::size_t>(i) * stride + static_cast<std::size_t>(j);
      const float c = a[k];
      if (i >= n || j >= n || (i < 2 && j < 2)) {
        EXPECT_EQ(cs[k], c);
        EXPECT_EQ(vs[k], c);
      } else {
        EXPECT_EQ(cs[k], std::fabs(c) < 2 ? 0.0f : c);
        EXPECT_EQ(vs[k], std::fabs(c) < 2 ? 0.0f : std::copysign(std::fabs(c) - 2.0f, c));
      }
    }
}

TEST(ImageDenoise2D, BitPlaneRoutineZeroesSmallFluctuations) {
  constexpr int n = 32;
  constexpr std::size_t stride = n + 1;
  std::vector<float> a(stride * stride, 0.0f);
  std::mt19937 g(11);
  std::normal_distribution<float> noise(0.0f, 1.0f);
  for (float& v : a) v = noise(g);
  a[5 * stride + 20] = 50.0f;   // a lone large fluctuation of level 1
  for (int i = 0; i < 4; ++i)
    for (int j = 0; j < 4; ++j) a[static_cast<std::size_t>(i) * stride + static_cast<std::size_t>(j)] = 100.0f + i;
  std::vector<float> b = a;
  ASSERT_TRUE(DenoiseTheImageTransformForAverage(n, {b.data(), stride}, 6.0, 4, {1, 3, false}));
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < n; ++j) {
      const std::size_t k = static_cast<std::size_t>(i) * stride + static_cast<std::size_t>(j);
      // The last threshold lies in (3, 6]: values below 3 are gone.
      if (i < 4 && j < 4) {
        EXPECT_EQ(b[k], a[k]);
      } else if (std::fabs(a[k]) < 3.0f) {
        EXPECT_EQ(b[k], 0.0f) << i << "," << j;
      }
    }
  // Kept with depth 1, refined to within the last step over 2^3.
  EXPECT_NEAR(b[5 * stride + 20], 50.0f, 6.0 / 8);
  // A tree depth of 2 drops it: its parent is noise.
  std::vector<float> c = a;
  ASSERT_TRUE(DenoiseTheImageTransformForAverage(n, {c.data(), stride}, 6.0, 4, {2, 3, false}));
  EXPECT_EQ(c[5 * stride + 20], 0.0f);
  // Sizes that are no power of two of the trend are refused.
  EXPECT_FALSE(DenoiseTheImageTransformForAverage(n, {c.data(), stride}, 6.0, 3, {}));
}

TEST(ImageDenoise2D, DiagonalBandSigmaAndThresholds) {
  constexpr int n = 64;
  constexpr std::size_t stride = n + 1;
  std::vector<float> a(stride * stride, 0.0f);
  // A constant band: the median is 0, so sigma is 1.
  EXPECT_EQ(DiagonalBandSigma(n, {a.data(), stride}), 1.0);
  // Band values |c| = 1..576 over the 24 by 24 block from (32, 32); the
  // last 8 rows and columns hold 1000 and are left out. Descending, the
  // element 288 is 576 - 288 = 288.
  for (int i = 32; i < 64; ++i)
    for (int j = 32; j < 64; ++j) a[static_cast<std::size_t>(i) * stride + static_cast<std::size_t>(j)] = 1000.0f;
  for (int i = 0; i < 24; ++i)
    for (int j = 0; j < 24; ++j)
      a[static_cast<std::size_t>(32 + i) * stride + static_cast<std::size_t>(32 + j)] = ((i + j) % 2 ? -1.0f : 1.0f) * (i * 24 + j + 1);
  EXPECT_NEAR(DiagonalBandSigma(n, {a.data(), stride}), 288.0 / 0.6745, 1e-9);
  const double ln = std::log(256.0);
  EXPECT_NEAR(AutoDenoiseThreshold(3.0, 256, 0, true, true), 3.0 * std::sqrt(2 * ln), 1e-12);
  EXPECT_NEAR(AutoDenoiseThreshold(3.0, 256, 4, false, true), 3.0 * std::sqrt(4 * ln), 1e-12);
  EXPECT_NEAR(AutoDenoiseThreshold(3.0, 256, 4, false, false), 6.0 * std::sqrt(2 * ln), 1e-12);
  EXPECT_NEAR(AutoDenoiseThreshold(3.0, 256, 4, true, true), 6.0 * std::sqrt(2 * ln), 1e-12);
}

TEST(ImageDenoise2D, IndexSortIsAscendingAndStable) {
  std::vector<float> keys = {3, 1, 2, 1, 0.5f};
  std::vector<int> idx = {0, 1, 2, 3, 4};
  IndexSORTSng(keys, idx);
  EXPECT_EQ(keys, (std::vector<float>{0.5f, 1, 1, 2, 3}));
  EXPECT_EQ(idx, (std::vector<int>{4, 1, 3, 2, 0}));
}

}  // namespace
}  // namespace keldo::wavelet
