// The workshop's transform denoiser: its magnitudes and trees worked by hand
// on small planes, and noise removed from a transformed picture.

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "wavelet/image_transform.h"
#include "wavelet/wdr_denoise.h"

namespace keldo::wavelet {
namespace {

// An 8 by 8 plane of two levels: trend 2 by 2, level 2 in the 4 by 4 corner,
// level 1 the rest.
ImagePlane SmallPlane() {
  ImagePlane p(8, 8);
  p.At(0, 0) = 100.0f;  // the trend
  p.At(2, 0) = 40.0f;   // level 2 ...
  p.At(4, 1) = -21.0f;  // ... and its child on level 1: a tree of two levels
  p.At(6, 6) = 37.0f;   // level 1 alone
  p.At(1, 1) = 3.0f;    // below every threshold here
  return p;
}

TEST(WdrDenoise, MagnitudesAreTheStepsMiddlesAboveTheLastThreshold) {
  bool ok = false;
  WdrDenoiseOptions options;
  options.levels = 2;
  options.floor = 10;  // 128 halves to 8
  const WdrDenoiseResult r = ArrayDeNoiseEncode(SmallPlane(), options, ok);
  ASSERT_TRUE(ok);
  EXPECT_EQ(r.startThreshold, 128.0);
  EXPECT_EQ(r.lastThreshold, 8.0);
  EXPECT_EQ(r.passes, 4);
  EXPECT_EQ(r.significant, 4);
  EXPECT_EQ(r.kept, 4);
  EXPECT_EQ(r.plane.At(0, 0), 100.0f);   // 96 + 4
  EXPECT_EQ(r.plane.At(2, 0), 44.0f);    // 40 + 4
  EXPECT_EQ(r.plane.At(4, 1), -20.0f);   // -(16 + 4)
  EXPECT_EQ(r.plane.At(6, 6), 36.0f);    // 32 + 4
  EXPECT_EQ(r.plane.At(1, 1), 0.0f);
}

TEST(WdrDenoise, RefinementShrinkageAndTreeDepth) {
  bool ok = false;
  WdrDenoiseOptions options;
  options.levels = 2;
  options.floor = 10;
  options.refine = true;
  options.descents = 2;  // steps of 2
  WdrDenoiseResult r = ArrayDeNoiseEncode(SmallPlane(), options, ok);
  EXPECT_EQ(r.plane.At(4, 1), -21.0f);  // -(20 + 1)
  EXPECT_EQ(r.plane.At(6, 6), 37.0f);   // 36 + 1
  options.refine = false;
  options.shrink = true;
  r = ArrayDeNoiseEncode(SmallPlane(), options, ok);
  EXPECT_EQ(r.plane.At(2, 0), 36.0f);   // 44 - 8
  EXPECT_EQ(r.plane.At(4, 1), -12.0f);  // -(20 - 8)
  options.shrink = false;
  // Trees of two levels: the lone level-1 coefficient goes, the pair and
  // the trend stay.
  options.depth = 2;
  r = ArrayDeNoiseEncode(SmallPlane(), options, ok);
  EXPECT_EQ(r.kept, 3);
  EXPECT_EQ(r.plane.At(6, 6), 0.0f);
  EXPECT_EQ(r.plane.At(2, 0), 44.0f);
  EXPECT_EQ(r.plane.At(4, 1), -20.0f);
  options.depth = 3;
  r = ArrayDeNoiseEncode(SmallPlane(), options, ok);
  EXPECT_EQ(r.kept, 1);
  EXPECT_EQ(r.plane.At(0, 0), 100.0f);
}

TEST(WdrDenoise, APlaneItCannotTakeIsRefused) {
  bool ok = true;
  WdrDenoiseOptions options;
  options.levels = 4;
  ArrayDeNoiseEncode(ImagePlane(8, 8), options, ok);
  EXPECT_FALSE(ok);
  options.levels = 1;
  ArrayDeNoiseEncode(ImagePlane(8, 16), options, ok);
  EXPECT_FALSE(ok);
}

TEST(WdrDenoise, NoiseOnASmoothPictureIsMostlyRemoved) {
  const int n = 128;
  ImagePlane clean(n, n), noisy(n, n);
  std::mt19937 random(5);
  std::normal_distribution<double> noise(0.0, 10.0);
  for (int y = 0; y < n; ++y)
    for (int x = 0; x < n; ++x) {
      const double v = 120 + 60 * std::sin(x / 11.0) * std::cos(y / 13.0) + (x > 70 ? 40 : 0);
      clean.At(x, y) = static_cast<float>(v);
      noisy.At(x, y) = static_cast<float>(v + noise(random));
    }
  ImagePlane transform = noisy;
  TransformTheImage(transform, 4, 1);
  bool ok = false;
  WdrDenoiseOptions options;
  options.levels = 4;
  options.floor = 30;  // three times the noise
  options.depth = 2;
  WdrDenoiseResult r = ArrayDeNoiseEncode(transform, options, ok);
  ASSERT_TRUE(ok);
  InvertTheTransform(r.plane, 4, 1);
  double before = 0, after = 0;
  for (std::size_t k = 0; k < clean.v.size(); ++k) {
    before += std::pow(noisy.v[k] - clean.v[k], 2);
    after += std::pow(r.plane.v[k] - clean.v[k], 2);
  }
  EXPECT_LT(after, before / 2) << after / clean.v.size() << " " << before / clean.v.size();
}

}  // namespace
}  // namespace keldo::wavelet
