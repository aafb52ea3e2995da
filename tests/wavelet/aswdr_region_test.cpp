// The region of interest: the mask of a rectangle worked by hand on a small
// plane for one and two levels, the region coders against the plain ones
// at the same budget on a photograph (a smaller error inside the region),
// the plain decoders reading the region coders' files, region mode from
// the start when the shared budget is below the head's allowance, the
// lossless coder with a region exact inside it, and the shared budget of
// RegionOfRectangle for the coders to a budget and the lossless one.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "aswdr_camera.h"
#include "aswdr_test_images.h"
#include "wavelet/aswdr.h"
#include "wavelet/aswdr_region.h"
#include "wavelet/bit_layer.h"

namespace keldo::wavelet {
namespace {

using testing::CameraCrop;
using testing::HeadFor;
using testing::TransformOf;

std::vector<std::string> Rows(const std::vector<std::uint8_t>& mask, int width) {
  std::vector<std::string> rows;
  for (std::size_t at = 0; at < mask.size(); at += static_cast<std::size_t>(width)) {
    std::string row;
    for (int x = 0; x < width; ++x) row += mask[at + static_cast<std::size_t>(x)] ? '1' : '0';
    rows.push_back(row);
  }
  return rows;
}

TEST(AswdrRegion, SupportOfTheThreeWavelets) {
  EXPECT_EQ(SupportOfWavelet(1), 5);
  EXPECT_EQ(SupportOfWavelet(2), 5);
  EXPECT_EQ(SupportOfWavelet(3), 5);
  EXPECT_EQ(SupportOfWavelet(0), 0);
  EXPECT_EQ(SupportOfWavelet(4), 0);
}

TEST(AswdrRegion, MaskOfOneLevelByHand) {
  // 8 by 8, support 1, the rectangle x 2..3, y 4..5. Level 1 (scale 2,
  // margin 1): 1 <= 2u <= 4 gives u = 1, 2; 3 <= 2v <= 6 gives v = 2, 3, in
  // each of the three blocks of side 4. The trend (scale 2, margin
  // 2^0 + 1 = 2): 0 <= 2u <= 5 gives u = 0..2; 2 <= 2v <= 7 gives v = 1..3.
  const std::vector<std::string> expected = {
      "00000000",  //
      "11100000",  //
      "11100110",  // trend u 0..2; upper block x = 4 + 1, 4 + 2
      "11100110",  //
      "00000000",  //
      "00000000",  //
      "01100110",  // lower block y = 4 + 2, x = 1, 2; diagonal x 5, 6
      "01100110",  //
  };
  EXPECT_EQ(Rows(GetROIValues(8, 8, 2, 4, 3, 5, 1, 1), 8), expected);
}

TEST(AswdrRegion, MaskOfTwoLevelsByHand) {
  // The same rectangle over two levels. Level 1 as before. Level 2 (scale
  // 4, margin 2 + 1 = 3, blocks of side 2): -1 <= 4u <= 6 gives u = 0, 1;
  // 1 <= 4v <= 8 gives v = 1. The trend takes level 2's scale and margin.
  const std::vector<std::string> expected = {
      "00000000",  //
      "11110000",  // trend (0..1, 1); level 2 upper (2..3, 1)
      "00000110",  // level 1 upper
      "11110110",  // level 2 lower (0..1, 3) and diagonal (2..3, 3)
      "00000000",  //
      "00000000",  //
      "01100110",  //
      "01100110",  //
  };
  EXPECT_EQ(Rows(GetROIValues(8, 8, 2, 4, 3, 5, 1, 2), 8), expected);
}

TEST(AswdrRegion, MaskOfAWholeImageRectangleIsEverything) {
  const std::vector<std::uint8_t> mask = GetROIValues(64, 32, 0, 0, 63, 31, 5, 3);
  EXPECT_EQ(std::count(mask.begin(), mask.end(), 1), 64 * 32);
}

struct Rect {
  int x1, y1, x2, y2;
};

double MeanSquareErrorIn(const std::vector<std::uint8_t>& a, const ImagePlane& b, const Rect& r) {
  double sum = 0.0;
  int count = 0;
  for (int y = r.y1; y <= r.y2; ++y)
    for (int x = r.x1; x <= r.x2; ++x) {
      const double d = a[static_cast<std::size_t>(y * b.width + x)] - static_cast<double>(b.At(x, y));
      sum += d * d;
      ++count;
    }
  return sum / count;
}

AswdrRegion RegionOf(const ImagePlane& t, const Rect& r, int levels, int wavelet, std::int64_t budget, double p) {
  AswdrRegion region;
  region.mask = GetROIValues(t.width, t.height, r.x1, r.y1, r.x2, r.y2, SupportOfWavelet(wavelet), levels);
  region.sharedBudget = static_cast<std::int64_t>(std::nearbyint((1.0 - p) * static_cast<double>(budget)));
  return region;
}

TEST(AswdrRegion, RegionOfRectangleTakesTheShareOfTheRightBudget) {
  const ImagePlane t = TransformOf(CameraCrop(), 4, 2);
  const AswdrHead head = HeadFor(t, 0.25, 4, 2);
  ASSERT_EQ(head.budget, 4096);
  const Rect r{10, 70, 50, 120};
  // 0.7 of 4096 is 2867.2: the whole picture gets 2867 bits.
  const AswdrRegion lossy =
      RegionOfRectangle(t, head, {r.x1, r.y1, r.x2, r.y2}, 0.3, RegionBudgetBase::HeadBudget);
  EXPECT_EQ(lossy.sharedBudget, 2867);
  EXPECT_EQ(lossy.mask, GetROIValues(128, 128, r.x1, r.y1, r.x2, r.y2, 5, 4));
  // The lossless coder's share is of what a plain lossless run uses.
  const std::int64_t plain = CompressAswdrLossless(t, HeadFor(t, 0.0, 4, 2)).bitsUsed;
  const AswdrRegion lossless =
      RegionOfRectangle(t, HeadFor(t, 0.0, 4, 2), {r.x1, r.y1, r.x2, r.y2}, 0.5, RegionBudgetBase::LosslessRun);
  EXPECT_EQ(lossless.sharedBudget, static_cast<std::int64_t>(std::nearbyint(0.5 * static_cast<double>(plain))));
  EXPECT_EQ(lossless.mask, lossy.mask);
}

TEST(AswdrRegion, RegionCoderIsBetterInsideTheRegionAtTheSameBudget) {
  const ImagePlane image = CameraCrop();
  ASSERT_FALSE(image.v.empty());
  const Rect r{40, 24, 87, 71};  // the head
  for (int wavelet : {1, 2})
    for (AswdrCoder coder : {AswdrCoder::Binary, AswdrCoder::Arithmetic})
      for (double bpp : {0.25, 0.5}) {
        const int levels = 4;
        const ImagePlane t = TransformOf(image, levels, wavelet);
        const AswdrHead head = HeadFor(t, bpp, levels, wavelet);
        const AswdrRegion region = RegionOf(t, r, levels, wavelet, head.budget, 0.5);
        const AswdrEncoded plain = CompressAswdr(t, head, coder);
        const AswdrEncoded roi = CompressAswdr(t, head, coder, &region);
        EXPECT_GT(roi.regionModePass, 0);
        const auto plainBack = DecompressAswdr(plain.file, bpp, coder);
        const auto roiBack = DecompressAswdr(roi.file, bpp, coder);
        ASSERT_TRUE(plainBack && roiBack);
        const double plainError =
            MeanSquareErrorIn(InvertTheTransformQuant(plainBack->quant, levels, wavelet), image, r);
        const double roiError = MeanSquareErrorIn(InvertTheTransformQuant(roiBack->quant, levels, wavelet), image, r);
        const std::string label = "wavelet " + std::to_string(wavelet) + " " +
                                  (coder == AswdrCoder::Binary ? "binary" : "arithmetic") + " at " +
                                  std::to_string(bpp);
        // Half the bits on a quarter of the picture: well below the plain
        // coder's error there.
        EXPECT_LT(roiError, 0.8 * plainError) << label << ": " << roiError << " against " << plainError;
        // The budget is the same and is met.
        EXPECT_GE(roi.bitsUsed, head.budget) << label;
      }
}

TEST(AswdrRegion, PlainDecodersReadTheRegionCodersFiles) {
  const ImagePlane t = TransformOf(CameraCrop(), 4, 1);
  const Rect r{10, 70, 50, 120};
  const AswdrHead head = HeadFor(t, 0.5, 4, 1);
  const AswdrRegion region = RegionOf(t, r, 4, 1, head.budget, 0.6);
  // Binary: both sides count from 124, and the decoder holds exactly the
  // coder's values.
  const AswdrEncoded binary = CompressAswdr(t, head, AswdrCoder::Binary, &region);
  const auto binaryBack = DecompressAswdr(binary.file, 0.5, AswdrCoder::Binary);
  ASSERT_TRUE(binaryBack);
  EXPECT_EQ(binaryBack->quantBeforeRefinement.v, binary.quant.v);
  // Arithmetic: the coder counts from 140 and its decoder from 132, so the
  // decoder, with its 9 bits read ahead, stops about one bit after the
  // coder; the values it holds are the coder's but for the last few.
  const AswdrEncoded arith = CompressAswdr(t, head, AswdrCoder::Arithmetic, &region);
  const auto arithBack = DecompressAswdr(arith.file, 0.5, AswdrCoder::Arithmetic);
  ASSERT_TRUE(arithBack);
  EXPECT_LE(testing::DifferingValues(arithBack->quantBeforeRefinement, arith.quant), 3u);
}

TEST(AswdrRegion, RegionModeFromTheStartKeepsEverythingOutsideAtZero) {
  // p = 0.99 of 0.25 bpp on 128 by 128: the shared budget, 41 bits, is below
  // the allowance the bits used start from, so region mode holds from the
  // first position of the first pass.
  const ImagePlane t = TransformOf(CameraCrop(), 4, 1);
  const AswdrHead head = HeadFor(t, 0.25, 4, 1);
  const Rect r{64, 64, 127, 127};
  const AswdrRegion region = RegionOf(t, r, 4, 1, head.budget, 0.99);
  ASSERT_EQ(region.sharedBudget, 41);
  for (AswdrCoder coder : {AswdrCoder::Binary, AswdrCoder::Arithmetic}) {
    const AswdrEncoded enc = CompressAswdr(t, head, coder, &region);
    EXPECT_EQ(enc.regionModePass, 1);
    std::size_t inside = 0;
    for (std::size_t p = 0; p < t.v.size(); ++p) {
      if (region.mask[p] == 0) {
        EXPECT_EQ(enc.quant.v[p], 0.0f) << "position " << p;
      }
      inside += region.mask[p] != 0 && enc.quant.v[p] != 0.0f ? 1 : 0;
    }
    EXPECT_GT(inside, 100u);
    const auto dec = DecompressAswdr(enc.file, 0.25, coder);
    ASSERT_TRUE(dec);
    for (std::size_t p = 0; p < t.v.size(); ++p)
      if (region.mask[p] == 0) {
        EXPECT_EQ(dec->quantBeforeRefinement.v[p], 0.0f);
      }
  }
}

TEST(AswdrRegion, SharedBudgetNeverReachedGivesThePlainFile) {
  const ImagePlane t = TransformOf(CameraCrop(), 4, 2);
  const AswdrHead head = HeadFor(t, 0.5, 4, 2);
  AswdrRegion region = RegionOf(t, Rect{0, 0, 20, 20}, 4, 2, head.budget, 0.0);
  region.sharedBudget = head.budget + 1000;
  EXPECT_EQ(CompressAswdr(t, head, AswdrCoder::Binary, &region).file,
            CompressAswdr(t, head, AswdrCoder::Binary).file);
}

TEST(AswdrRegion, LosslessWithARegionIsExactInsideIt) {
  const ImagePlane image = CameraCrop();
  const ImagePlane t = TransformOf(image, 4, 2);
  const AswdrEncoded plain = CompressAswdrLossless(t, HeadFor(t, 0.0, 4, 2));
  const Rect r{32, 32, 95, 95};
  const AswdrRegion region = RegionOf(t, r, 4, 2, plain.bitsUsed, 0.5);
  const AswdrEncoded roi = CompressAswdrLossless(t, HeadFor(t, 0.0, 4, 2), &region);
  EXPECT_GT(roi.regionModePass, 0);
  EXPECT_LT(roi.file.size(), plain.file.size());
  const auto dec = DecompressAswdrLossless(roi.file);
  ASSERT_TRUE(dec);
  EXPECT_EQ(dec->quant.v, roi.quant.v);
  const std::vector<std::uint8_t> back = InvertTheTransformQuant(dec->quant, 4, 2);
  EXPECT_EQ(MeanSquareErrorIn(back, image, r), 0.0);
  EXPECT_GT(MeanSquareErrorIn(back, image, Rect{0, 0, 127, 20}), 0.0);
}

}  // namespace
}  // namespace keldo::wavelet
