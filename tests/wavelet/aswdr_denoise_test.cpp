// TAWS and its noise estimate: the median of the finest diagonal block by
// hand, a zero block, the sigma rule at 12.8, the weights of the denoising
// scan on a small plane, a small transform denoised by hand, cycle spinning
// with one shift against the plain path, and noise lowered on a picture.

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "aswdr_test_images.h"
#include "wavelet/aswdr_denoise.h"
#include "wavelet/aswdr_scan.h"

namespace keldo::wavelet {
namespace {

using testing::MeanSquareError;
using testing::TestImages;

constexpr double kMedianOverSigma = 0.6745;

TEST(AutoThresholdValue, TheMedianOfTheFirstPositionsOfTheFinestDiagonalBlock) {
  // 8 by 8, one level: the diagonal block is 4 by 4 at (4, 4) and
  // C = min(65534, 16 - 2) + 1 = 15 positions from (4, 4) along the zigzag,
  // which ends at (7, 7). Every other position of the block gets 1..15 in
  // row order (with signs), (7, 7) gets 100: the walk leaves it out, so the
  // median, index 7 of the sorted 15, is 8.
  ImagePlane t(8, 8);
  float value = 1.0f;
  for (int y = 4; y < 8; ++y)
    for (int x = 4; x < 8; ++x) {
      if (x == 7 && y == 7) continue;
      t.At(x, y) = (x + y) % 2 == 0 ? value : -value;
      value += 1.0f;
    }
  t.At(7, 7) = 100.0f;
  t.At(0, 0) = 900.0f;  // the trend and coarser blocks take no part
  t.At(5, 1) = -700.0f;
  const NoiseThreshold n = AutoThresholdValue(t, 1);
  EXPECT_DOUBLE_EQ(n.sigma, 8.0 / kMedianOverSigma);
  EXPECT_DOUBLE_EQ(n.threshold, 8.0 / kMedianOverSigma * std::sqrt(4.0 * std::log(8.0)));
  EXPECT_EQ(n.depth, 1);
}

TEST(AutoThresholdValue, AZeroFinestBandGivesSigmaOne) {
  ImagePlane t(32, 16);
  for (int y = 0; y < 8; ++y)
    for (int x = 0; x < 16; ++x) t.At(x, y) = static_cast<float>(x * 7 - y * 3);
  const NoiseThreshold n = AutoThresholdValue(t, 2);
  EXPECT_EQ(n.sigma, 1.0);
  EXPECT_DOUBLE_EQ(n.threshold, std::sqrt(4.0 * std::log(32.0)));
  EXPECT_EQ(n.depth, 1);
}

TEST(AutoThresholdValue, ASigmaOf12Point8GivesDepthOneAndAboveItTwo) {
  // The largest float magnitude m with m / 0.6745 <= 12.8 and the next one.
  float m = static_cast<float>(12.8 * kMedianOverSigma);
  while (static_cast<double>(m) / kMedianOverSigma > 12.8) m = std::nextafter(m, 0.0f);
  while (static_cast<double>(std::nextafter(m, 100.0f)) / kMedianOverSigma <= 12.8) m = std::nextafter(m, 100.0f);
  const auto depthFor = [](float magnitude) {
    ImagePlane t(16, 16);
    for (int y = 8; y < 16; ++y)
      for (int x = 8; x < 16; ++x) t.At(x, y) = magnitude;
    return AutoThresholdValue(t, 2);
  };
  const NoiseThreshold at = depthFor(m);
  EXPECT_LE(at.sigma, 12.8);
  EXPECT_NEAR(at.sigma, 12.8, 1e-5);
  EXPECT_EQ(at.depth, 1);
  const NoiseThreshold above = depthFor(std::nextafter(m, 100.0f));
  EXPECT_GT(above.sigma, 12.8);
  EXPECT_EQ(above.depth, 2);
}

TEST(ISORTSng, IndicesByValueWithTiesInIndexOrder) {
  const std::vector<float> values = {3.0f, 1.0f, 2.0f, 1.0f, 0.0f};
  EXPECT_EQ(ISORTSng(values), (std::vector<std::int32_t>{4, 1, 3, 2, 0}));
}

// 8 by 8 with two levels: trend 2 by 2, coarse blocks of 2 by 2, fine blocks
// of 4 by 4. The coarse upper block holds the parents (2, 0), (3, 0), (2, 1).
TEST(DenoisingScanOrder, WeightsByTheFamilyAtTheFinestLevel) {
  ImagePlane quant(8, 8);
  quant.At(0, 0) = 64.0f;
  quant.At(2, 0) = 32.0f;  // significant parent
  quant.At(6, 0) = 32.0f;  // a child of (3, 0), which is 0
  ScanOrder order;
  CreateScanOrder(order, 2, 8, 8);
  std::vector<float> weights;
  CreateDenoisingScanOrder(order, 2, 1, quant, 32.0, weights);
  // Children of (2, 0): weight 1; of (3, 0), with one non-zero child: 3/4;
  // of (2, 1), with none: 0; the coarse level keeps 1.
  for (const auto& [x, y] : std::vector<std::pair<int, int>>{{4, 0}, {5, 0}, {4, 1}, {5, 1}})
    EXPECT_EQ(weights[static_cast<std::size_t>(y * 8 + x)], 1.0f) << x << "," << y;
  for (const auto& [x, y] : std::vector<std::pair<int, int>>{{6, 0}, {7, 0}, {6, 1}, {7, 1}})
    EXPECT_EQ(weights[static_cast<std::size_t>(y * 8 + x)], 0.75f) << x << "," << y;
  for (const auto& [x, y] : std::vector<std::pair<int, int>>{{4, 2}, {5, 2}, {4, 3}, {5, 3}, {0, 4}, {7, 7}})
    EXPECT_EQ(weights[static_cast<std::size_t>(y * 8 + x)], 0.0f) << x << "," << y;
  EXPECT_EQ(weights[2], 1.0f);
  EXPECT_EQ(weights[static_cast<std::size_t>(3 * 8 + 3)], 1.0f);
  // The order is CreateNewScanOrder's: the finest list starts with the
  // children of (2, 0), in the upper block's order, then those of (3, 0).
  ScanOrder plain;
  CreateScanOrder(plain, 2, 8, 8);
  CreateNewScanOrder(plain, 2, quant, 32.0);
  EXPECT_EQ(order.next, plain.next);
  std::int32_t p = 0;
  for (int i = 0; i < 16; ++i) p = order.next[static_cast<std::size_t>(p)];
  const std::vector<std::int32_t> expected = {4, 12, 13, 5, 6, 14, 15, 7};
  for (std::int32_t want : expected) {
    EXPECT_EQ(p, want);
    p = order.next[static_cast<std::size_t>(p)];
  }
  // Below the noise threshold the rebuild weighs; above it every weight is
  // 1 again.
  CreateNewDenoisingScanOrder(order, 2, 1, quant, 64.0, 40.0, weights);
  EXPECT_EQ(weights, std::vector<float>(64, 1.0f));
  CreateNewDenoisingScanOrder(order, 2, 1, quant, 32.0, 40.0, weights);
  EXPECT_EQ(weights[static_cast<std::size_t>(2 * 8 + 4)], 0.0f);
}

// The plane of the test above as a transform, with the threshold 40 and the
// descent 8 (Low = 5). Start 128; passes T = 64, 32 (the first at or below
// 40: the rebuild after it weighs), 16 and 8, after which T/2 < 5. Then five
// rounds down to T = 0.25, and the last offset 0.125.
//   (2,0) = 50: 32 at T = 32; 48 at 16; 50 at the round of 2.
//   (4,0) = 20, its parent significant (weight 1): 16 at T = 16; 20 at 4.
//   (7,0) = 20, a sibling of (6,0) = 35 (weight 3/4): 15 < 16, then 8 at
//     T = 8; rounds 12, 14, 15, 15.5, 15.75.
//   (4,2) = 20, no family: weight 0, stays 0.
TEST(DenoiseImageTransformTAWS, AnIsolatedValueStaysOutAndFamiliesComeIn) {
  ImagePlane t(8, 8);
  t.At(0, 0) = 100.0f;
  t.At(2, 0) = 50.0f;
  t.At(4, 0) = 20.0f;
  t.At(6, 0) = 35.0f;
  t.At(7, 0) = 20.0f;
  t.At(4, 2) = 20.0f;
  t.At(5, 5) = 4.0f;  // below Low: cleared
  TawsOptions o;
  o.levels = 2;
  o.depth = 1;
  o.descent = 8.0;
  TawsResult r = DenoiseImageTransformTAWS(t, 40.0, o);
  ASSERT_EQ(r.quant.v.size(), 64u);
  EXPECT_EQ(r.passes, 4);
  EXPECT_EQ(r.lastThreshold, 0.25);
  EXPECT_EQ(r.low, 5.0);
  EXPECT_EQ(r.quant.At(0, 0), 100.0f);
  EXPECT_EQ(r.quant.At(2, 0), 50.0f);
  EXPECT_EQ(r.quant.At(4, 0), 20.0f);
  EXPECT_EQ(r.quant.At(6, 0), 35.0f);
  EXPECT_EQ(r.quant.At(7, 0), 15.75f);
  EXPECT_EQ(r.quant.At(4, 2), 0.0f);
  EXPECT_EQ(r.quant.At(5, 5), 0.0f);
  LastDenoiseRefinement(r.quant, r.lastThreshold);
  EXPECT_EQ(r.quant.At(7, 0), 15.875f);
  EXPECT_EQ(r.quant.At(4, 2), 0.0f);
  // Shrinkage moves the details by Low toward zero, not the trend.
  o.shrink = true;
  const TawsResult s = DenoiseImageTransformTAWS(t, 40.0, o);
  EXPECT_EQ(s.quant.At(0, 0), 100.0f);
  EXPECT_EQ(s.quant.At(2, 0), 45.0f);
  EXPECT_EQ(s.quant.At(7, 0), 10.75f);
}

TEST(DenoiseImageTransformTAWS, BadSettingsGiveNothing) {
  ImagePlane t(8, 8);
  TawsOptions o;
  o.levels = 2;
  o.descent = 0.0;
  EXPECT_TRUE(DenoiseImageTransformTAWS(t, 10.0, o).quant.v.empty());
  o.descent = 2.0;
  EXPECT_TRUE(DenoiseImageTransformTAWS(t, 0.0, o).quant.v.empty());
  EXPECT_TRUE(DenoiseImageTransformTAWS(t, std::nan(""), o).quant.v.empty());
  o.levels = 4;
  EXPECT_TRUE(DenoiseImageTransformTAWS(t, 10.0, o).quant.v.empty());
}

ImagePlane Noisy(const ImagePlane& clean, double sigma, unsigned seed) {
  ImagePlane noisy = clean;
  std::mt19937 random(seed);
  std::normal_distribution<double> noise(0.0, sigma);
  for (float& v : noisy.v) v = static_cast<float>(std::clamp(v + noise(random), 0.0, 255.0));
  return noisy;
}

TEST(DenoiseAveragedTAWS, OneShiftIsThePlainPath) {
  const ImagePlane clean = TestImages(64, 64)[1].image;
  const ImagePlane noisy = Noisy(clean, 12.0, 5);
  TawsOptions o;
  o.levels = 3;
  o.descent = 4.0;
  const ImagePlane plain = DenoisePictureTAWS(noisy, 1, 40.0, o);
  ImagePlane mean;
  int calls = 0;
  ASSERT_TRUE(DenoiseAveragedTAWS(noisy, 1, 40.0, o, AverageShifts(1, false), mean, [&](int percent) {
    EXPECT_EQ(percent, 0);
    ++calls;
    return true;
  }));
  EXPECT_EQ(calls, 1);
  EXPECT_EQ(mean.v, plain.v);
  EXPECT_EQ(RoundedMagnitudeBytes(mean), InvertTheTransformQuant([&] {
              ImagePlane q;
              DenoisePictureTAWS(noisy, 1, 40.0, o, &q);
              return q;
            }(), 3, 1));
}

TEST(DenoiseAveragedTAWS, ShiftListsAndStopping) {
  const std::vector<ShiftPair> all = AverageShifts(2, false);
  ASSERT_EQ(all.size(), 4u);
  EXPECT_EQ(all[1].x, 1);
  EXPECT_EQ(all[1].y, 0);
  EXPECT_EQ(all[2].x, 0);
  EXPECT_EQ(all[2].y, 1);
  const std::vector<ShiftPair> diagonal = AverageShifts(4, true);
  ASSERT_EQ(diagonal.size(), 4u);
  EXPECT_EQ(diagonal[3].x, 3);
  EXPECT_EQ(diagonal[3].y, 3);
  const ImagePlane clean = TestImages(32, 32)[0].image;
  ImagePlane mean(1, 1);
  TawsOptions o;
  o.levels = 2;
  std::vector<int> seen;
  EXPECT_FALSE(DenoiseAveragedTAWS(clean, 1, 10.0, o, all, mean, [&](int percent) {
    seen.push_back(percent);
    return percent < 50;
  }));
  EXPECT_EQ(seen, (std::vector<int>{0, 25, 50}));
  EXPECT_EQ(mean.v.size(), 1u);  // unchanged
}

TEST(DenoiseImageTAWS, NoiseOnAPictureIsLowered) {
  for (const auto& picture : TestImages(128, 128)) {
    if (picture.name == "noise") continue;
    const ImagePlane noisy = Noisy(picture.image, 15.0, 11);
    const double before = MeanSquareError(noisy, picture.image);
    ImagePlane t = noisy;
    TransformTheImage(t, 4, 1);
    const NoiseThreshold n = AutoThresholdValue(t, 4);
    EXPECT_NEAR(n.sigma, 15.0, 4.0) << picture.name;
    EXPECT_EQ(n.depth, 2) << picture.name;
    TawsOptions o;
    o.levels = 4;
    o.depth = n.depth;
    o.descent = 4.0;
    const ImagePlane plain = DenoisePictureTAWS(noisy, 1, n.threshold, o);
    const double after = MeanSquareError(plain, picture.image);
    EXPECT_LT(after, 0.5 * before) << picture.name << " " << before << " -> " << after;
    ImagePlane mean;
    ASSERT_TRUE(DenoiseAveragedTAWS(noisy, 1, n.threshold, o, AverageShifts(4, true), mean, nullptr));
    // Cycle spinning helps where the picture wraps around smoothly (the
    // disk on its flat ground); the gradient's wrap is an edge, which the
    // shifted copies blur a little.
    const double averaged = MeanSquareError(mean, picture.image);
    EXPECT_LT(averaged, 0.5 * before) << picture.name;
    if (picture.name == "disk") {
      EXPECT_LT(averaged, after) << averaged << " " << after;
    }
  }
}

}  // namespace
}  // namespace keldo::wavelet
