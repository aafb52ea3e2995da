// The colour of samples and the painting of pictures, against values worked
// out by hand from the methods' definitions.

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "form2d/image_display.h"

namespace keldo::form2d {
namespace {

constexpr std::int32_t Grey(int m) { return m + 256 * m + 65536 * m; }

// A 64-point graph whose samples are all `fill`, with one sample set apart.
struct TestGraph {
  std::vector<float> samples;
  ImageGraph g;
  explicit TestGraph(float fill, int n = 64) : samples(static_cast<std::size_t>((n + 11) * (n + 11)), fill) {
    g.data = samples.data();
    g.rowLength = static_cast<std::size_t>(n + 11);
    g.n = n;
    g.left = -0.5f;
    g.right = 0.5f;
    g.step = 1.0f / static_cast<float>(n);
    g.viewXLeft = g.viewYLow = -0.5f;
    g.viewXRight = g.viewYHigh = 0.5f;
    g.linReg = n;
  }
  void Set(int i, int j, float v) { samples[static_cast<std::size_t>(i) * g.rowLength + static_cast<std::size_t>(j)] = v; }
  std::int32_t ColourAt(int i, int j) {
    PixelMatrix m;
    FillImageMatrix(g, m);
    return m.At(i, j);
  }
};

TEST(FillImageMatrix, AllZerosAreBlackAndMidGreyForGreyPlusMinus) {
  TestGraph t(0.0f);
  t.g.max = 0.0f;
  EXPECT_EQ(t.ColourAt(5, 5), 0);
  t.g.colorMethod = kGreyPlusMinus;
  EXPECT_EQ(t.ColourAt(5, 5), Grey(128));
  t.g.colorMethod = kColor;
  EXPECT_EQ(t.ColourAt(5, 5), 0);
}

TEST(FillImageMatrix, AValueEqualToTheThresholdIsNotDrawn) {
  TestGraph t(0.5f);
  t.g.max = 1.0f;
  t.g.threshold = 0.5f;
  EXPECT_EQ(t.ColourAt(3, 4), 0);
  t.Set(3, 4, 0.5000001f);
  EXPECT_EQ(t.ColourAt(3, 4), Grey(128));  // floor(256 * 0.5000001) = 128
}

TEST(FillImageMatrix, GreyPlusShowsNegativesBlackAndColourShowsThemBlue) {
  TestGraph t(-0.25f);
  t.g.max = 1.0f;
  EXPECT_EQ(t.ColourAt(1, 1), 0);
  t.g.colorMethod = kColor;
  EXPECT_EQ(t.ColourAt(1, 1), 65536 * 64);  // blue floor(256 * 0.25)
  t.Set(1, 1, 0.25f);
  EXPECT_EQ(t.ColourAt(1, 1), 64);  // red
  t.g.colorMethod = kGreyPlusMinus;
  EXPECT_EQ(t.ColourAt(1, 1), Grey(128 + 31));  // floor(127 * 0.25) = 31
  t.Set(1, 1, -0.25f);
  EXPECT_EQ(t.ColourAt(1, 1), Grey(128 - 31));
}

TEST(FillImageMatrix, TheLargestMagnitudeClampsTo255OnBothScales) {
  TestGraph t(2.0f);
  t.g.max = 2.0f;
  EXPECT_EQ(t.ColourAt(0, 0), Grey(255));
  t.g.intensity = kLog;
  EXPECT_EQ(t.ColourAt(0, 0), Grey(255));
}

TEST(FillImageMatrix, EachLogStepIsAFactorOfPointNineSix) {
  TestGraph t(0.96f * 0.96f * 0.96f);  // three steps below the top: level 256 - 3 = 253
  t.g.max = 1.0f;
  t.g.intensity = kLog;
  // c * ln(0.96^3) is -3 up to rounding; floor may give -3 or -4.
  const double c = 1.0 / std::log(1.0 / 0.96);
  const int expected = static_cast<int>(std::floor(c * std::log(static_cast<double>(0.96f * 0.96f * 0.96f)))) + 256;
  EXPECT_EQ(t.ColourAt(2, 2), Grey(expected));
  EXPECT_TRUE(expected == 253 || expected == 252);
  t.g.colorMethod = kGreyPlusMinus;
  EXPECT_EQ(t.ColourAt(2, 2), Grey(127 + expected / 2));
  t.Set(2, 2, -0.96f * 0.96f * 0.96f);
  EXPECT_EQ(t.ColourAt(2, 2), Grey(expected / 2));
}

TEST(FillImageMatrix, LinLogWithABlockOfZeroDrawsEverythingOnTheLogScale) {
  TestGraph t(1.0f);
  t.g.max = 4.0f;
  t.g.intensity = kLinLog;
  t.g.linReg = 0;
  // Detail scale D is 1 (every sample is 1): the log level of 1/1 is 256 -> 255.
  EXPECT_EQ(t.ColourAt(0, 0), Grey(255));
  t.g.linReg = 64;  // now the block covers all but row and column 64
  // The low-pass block is linear over max 4: floor(256 / 4) = 64.
  EXPECT_EQ(t.ColourAt(0, 0), Grey(64));
  EXPECT_EQ(t.ColourAt(64, 0), Grey(255));
}

TEST(FillImageMatrix, TheLinLogDetailScaleTestsTheTransposedSample) {
  TestGraph t(0.0f);
  t.g.max = 1.0f;
  t.g.intensity = kLinLog;
  t.g.linReg = 8;
  // Outside the block of half the side (4 by 4): testing (0, 5) reads (5, 0)
  // = 2 > 0 and assigns the direct sample (0, 5) = 1; testing (5, 0) then
  // reads (0, 5) = 1, not above 1, so the true maximum 2 never becomes the
  // scale. D = 1, and the sample 1 at (0, 9), outside the 8-block, is at the
  // top of the log scale; a scale of 2 would put it a log step lower.
  t.Set(5, 0, 2.0f);
  t.Set(0, 5, 1.0f);
  t.Set(0, 9, 1.0f);
  EXPECT_EQ(t.ColourAt(0, 9), Grey(255));
}

TEST(FillImageMatrix, LargeGridsAreStridedToAtMost257Samples) {
  TestGraph t(1.0f, 1024);
  t.g.max = 1.0f;
  PixelMatrix m;
  FillImageMatrix(t.g, m);
  EXPECT_EQ(m.At(0, 0), Grey(255));
  EXPECT_EQ(m.At(4, 8), Grey(255));
  EXPECT_EQ(m.At(1, 0), 0);  // stride 4
  EXPECT_EQ(m.At(0, 3), 0);
}

TEST(AdjustValue, GivesNForNPlusOneAnd2049For2048) {
  EXPECT_EQ(AdjustValue(65), 64);
  EXPECT_EQ(AdjustValue(129), 128);
  EXPECT_EQ(AdjustValue(257), 256);
  EXPECT_EQ(AdjustValue(513), 512);
  EXPECT_EQ(AdjustValue(1025), 1024);
  EXPECT_EQ(AdjustValue(2048), 2049);
  EXPECT_EQ(AdjustValue(2049), 2049);
  EXPECT_EQ(AdjustValue(300), 300);
}

TEST(PaintWholeGraph, SmallGridsAreEnlargedWithRowZeroAtTheBottom) {
  PixelMatrix m;
  m.Reset(64);
  m.Set(0, 0, 255);      // red at the bottom-left sample
  m.Set(64, 64, 65280);  // green at the top-right sample
  platform::RgbImage picture;
  PaintWholeGraph(m, 64, 256, picture);
  ASSERT_EQ(picture.width, 257);
  EXPECT_EQ(picture.At(0, 256), platform::MakeRgb(255, 0, 0));
  EXPECT_EQ(picture.At(3, 253), platform::MakeRgb(255, 0, 0));  // a block of 4 by 4
  EXPECT_EQ(picture.At(4, 256), platform::kBlack);
  EXPECT_EQ(picture.At(256, 0), platform::MakeRgb(0, 255, 0));
}

TEST(PaintWholeGraph, LargeGridsFoldSeveralSamplesOntoAPixel) {
  PixelMatrix m;
  m.Reset(1024);
  m.Set(0, 8, 255);
  platform::RgbImage picture;
  PaintWholeGraph(m, 1024, 128, picture);
  ASSERT_EQ(picture.width, 129);
  EXPECT_EQ(picture.At(1, 128), platform::MakeRgb(255, 0, 0));  // (8 / 8, (1024 - 0) / 8)
}

}  // namespace
}  // namespace keldo::form2d

#include <fstream>
#include <sstream>
#include <string>

namespace keldo::form2d {
namespace {

// Every method, intensity, threshold and block side on a small graph against
// tests/data/image_colours.tsv, from make_image_colours.py.
TEST(FillImageMatrix, EveryMethodMatchesTheIndependentColourTable) {
  std::ifstream in(KELDO_TEST_DATA "/image_colours.tsv");
  ASSERT_TRUE(in.good());
  std::vector<float> samples(19 * 19, 0.0f);
  float mx = 0.0f;
  for (int i = 0; i <= 8; ++i)
    for (int j = 0; j <= 8; ++j) {
      const float v = static_cast<float>(((i * 9 + j) % 11 - 5) / 4.0);
      samples[static_cast<std::size_t>(i * 19 + j)] = v;
      mx = std::max(mx, std::fabs(v));
    }
  std::string line;
  int checked = 0;
  std::string last;
  PixelMatrix pixels;
  while (std::getline(in, line)) {
    if (line.empty() || line[0] == '#') continue;
    std::stringstream ss(line);
    std::string method, intensity;
    double threshold = 0;
    int block = 0, i = 0, j = 0;
    long long colour = 0;
    ss >> method >> intensity >> threshold >> block >> i >> j >> colour;
    const std::string key = method + intensity + std::to_string(threshold) + std::to_string(block);
    if (key != last) {
      ImageGraph g;
      g.data = samples.data();
      g.rowLength = 19;
      g.n = 8;
      g.max = mx;
      g.left = -0.5f;
      g.right = 0.5f;
      g.step = 0.125f;
      g.viewXLeft = g.viewYLow = -0.5f;
      g.viewXRight = g.viewYHigh = 0.5f;
      g.colorMethod = static_cast<ColorMethod>(method[0]);
      g.intensity = static_cast<Intensity>(intensity[0]);
      g.threshold = static_cast<float>(threshold);
      g.linReg = block;
      FillImageMatrix(g, pixels);
      last = key;
    }
    EXPECT_EQ(pixels.At(i, j), colour) << key << " at " << i << "," << j;
    ++checked;
  }
  EXPECT_EQ(checked, 3 * (2 + 2 + 6) * 81);
}

}  // namespace
}  // namespace keldo::form2d
