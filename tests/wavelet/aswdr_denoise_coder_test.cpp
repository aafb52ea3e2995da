// The compress-denoise coders (.bcd, .acd): the file's head and three
// bytes, decoders that reproduce the coder's values at its budget, the
// minimum bit rate that ends at the noise floor, an isolated value held out
// by the tree test, the last offset, and broken files.

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "aswdr_test_images.h"
#include "wavelet/aswdr_denoise.h"
#include "wavelet/aswdr_denoise_coder.h"
#include "wavelet/aswdr_region.h"

namespace keldo::wavelet {
namespace {

using testing::DifferingValues;
using testing::HeadFor;
using testing::MeanSquareError;
using testing::TestImages;
using testing::TransformOf;

DenoiseCoding CodingFor(const ImagePlane& transform, int levels, bool minBitRate) {
  const NoiseThreshold n = AutoThresholdValue(transform, levels);
  DenoiseCoding coding;
  coding.noiseThreshold = n.threshold;
  coding.depth = n.depth;
  coding.descent = 4.0;
  coding.minBitRate = minBitRate;
  return coding;
}

ImagePlane NoisyDisk(int side, double sigma) {
  ImagePlane image = TestImages(side, side)[1].image;
  std::mt19937 random(3);
  std::normal_distribution<double> noise(0.0, sigma);
  for (float& v : image.v) v = static_cast<float>(std::clamp(v + noise(random), 0.0, 255.0));
  return image;
}

// The decoder's value where the coder's is non-zero, moved by half the last
// threshold away from zero; zero elsewhere.
void ExpectLastOffset(const AswdrDecoded& d) {
  const double step = std::ldexp(1.0, d.head.exponent - d.passes) / 2.0;
  for (std::size_t i = 0; i < d.quant.v.size(); ++i) {
    const float before = d.quantBeforeRefinement.v[i];
    const float want = before == 0.0f ? 0.0f : static_cast<float>(before + (before < 0.0f ? -step : step));
    ASSERT_EQ(d.quant.v[i], want) << i;
  }
}

TEST(CompressDenoise, TheHeadIsTheCodersAndThreeBytesFollow) {
  const ImagePlane t = TransformOf(NoisyDisk(64, 10.0), 3, 1);
  DenoiseCoding coding = CodingFor(t, 3, true);
  coding.depth = 2;
  const AswdrEncoded enc = CompressDenoiseAswdr(t, HeadFor(t, 1.0, 3, 1), AswdrCoder::Binary, coding);
  ASSERT_GT(enc.file.size(), kAswdrHeadSize + kDenoisePreambleSize);
  const std::optional<AswdrHead> head = ReadAswdrHead(enc.file);
  ASSERT_TRUE(head);
  EXPECT_EQ(head->budget, BitBudgetOf(64, 64, 1.0));
  EXPECT_EQ(head->levels, 3);
  EXPECT_EQ(head->width, 64);
  EXPECT_EQ(head->originalWidth, 61);
  EXPECT_EQ(enc.file[kAswdrHeadSize], 2);
  // The first pass at or below the noise threshold, and the first after
  // which T/2 < Low = N/4, from the exponent of the cleared transform.
  const int e = head->exponent;
  int from = 0, last = 0;
  for (int k = 1; k < 255 && last == 0; ++k) {
    const double step = std::ldexp(1.0, e - k);
    if (from == 0 && step <= coding.noiseThreshold) from = k;
    if (step / 2.0 < coding.noiseThreshold / 4.0) last = k;
  }
  EXPECT_EQ(enc.file[kAswdrHeadSize + 1], from);
  EXPECT_EQ(enc.file[kAswdrHeadSize + 2], last);
  EXPECT_EQ(enc.passes, last);
  // The binary stream ends with a byte 128.
  EXPECT_EQ(enc.file.back(), 128);
}

TEST(CompressDenoise, TheBinaryDecoderReproducesTheCodersValuesAtItsBudget) {
  for (const auto& picture : TestImages(64, 64)) {
    for (int wavelet : {1, 2}) {
      const int levels = wavelet == 1 ? 4 : 3;
      const ImagePlane t = TransformOf(picture.image, levels, wavelet);
      for (double bpp : {0.1, 0.5, 2.0}) {
        const AswdrEncoded enc =
            CompressDenoiseAswdr(t, HeadFor(t, bpp, levels, wavelet), AswdrCoder::Binary, CodingFor(t, levels, false));
        ASSERT_FALSE(enc.file.empty());
        const std::optional<AswdrDecoded> dec = DecompressDenoiseAswdr(enc.file, bpp, AswdrCoder::Binary);
        ASSERT_TRUE(dec);
        EXPECT_EQ(DifferingValues(dec->quantBeforeRefinement, enc.quant), 0u) << picture.name << " " << bpp;
        EXPECT_EQ(dec->bitsUsed, enc.bitsUsed) << picture.name << " " << bpp;
        EXPECT_FALSE(dec->rateTooLarge);
        ExpectLastOffset(*dec);
        // A lower rate decodes a part of the same stream.
        const std::optional<AswdrDecoded> part = DecompressDenoiseAswdr(enc.file, bpp / 2.0, AswdrCoder::Binary);
        ASSERT_TRUE(part);
        EXPECT_LE(part->bitsUsed, BitBudgetOf(64, 64, bpp / 2.0) + 40);
      }
    }
  }
}

TEST(CompressDenoise, TheArithmeticDecoderReproducesTheCodersValues) {
  const ImagePlane t = TransformOf(NoisyDisk(64, 12.0), 4, 1);
  // Ended by the minimum rate, far below the budget: the same values.
  const AswdrEncoded enc = CompressDenoiseAswdr(t, HeadFor(t, 8.0, 4, 1), AswdrCoder::Arithmetic, CodingFor(t, 4, true));
  ASSERT_FALSE(enc.file.empty());
  const std::optional<AswdrDecoded> dec = DecompressDenoiseAswdr(enc.file, 8.0, AswdrCoder::Arithmetic);
  ASSERT_TRUE(dec);
  EXPECT_EQ(DifferingValues(dec->quantBeforeRefinement, enc.quant), 0u);
  EXPECT_EQ(dec->passes, enc.passes);
  ExpectLastOffset(*dec);
  // Ended by the budget: the decoder stops a few symbols early (its 9 bits
  // read ahead), so all but a handful of values agree.
  const AswdrEncoded cut = CompressDenoiseAswdr(t, HeadFor(t, 0.5, 4, 1), AswdrCoder::Arithmetic, CodingFor(t, 4, false));
  const std::optional<AswdrDecoded> part = DecompressDenoiseAswdr(cut.file, 0.5, AswdrCoder::Arithmetic);
  ASSERT_TRUE(part);
  EXPECT_LE(DifferingValues(part->quantBeforeRefinement, cut.quant), 8u);
}

TEST(CompressDenoise, MinimumBitRateEndsAtTheNoiseFloorWhateverTheBudget) {
  const ImagePlane t = TransformOf(NoisyDisk(64, 12.0), 4, 1);
  const DenoiseCoding coding = CodingFor(t, 4, true);
  const AswdrEncoded minimum = CompressDenoiseAswdr(t, HeadFor(t, 8.0, 4, 1), AswdrCoder::Binary, coding);
  const double lastT = std::ldexp(1.0, ReadAswdrHead(minimum.file)->exponent - minimum.passes);
  const double low = coding.noiseThreshold / coding.descent;
  EXPECT_GE(lastT, low);
  EXPECT_LT(lastT / 2.0, low);
  EXPECT_LT(minimum.bitsUsed, BitBudgetOf(64, 64, 8.0));
  EXPECT_FALSE(minimum.stoppedByLoopTest);
  // Without it the same budget buys more passes and bits.
  DenoiseCoding open = coding;
  open.minBitRate = false;
  const AswdrEncoded full = CompressDenoiseAswdr(t, HeadFor(t, 8.0, 4, 1), AswdrCoder::Binary, open);
  EXPECT_GT(full.passes, minimum.passes);
  EXPECT_GT(full.bitsUsed, minimum.bitsUsed);
  // Up to the floor the two streams send the same values.
  const std::optional<AswdrDecoded> dec = DecompressDenoiseAswdr(minimum.file, 8.0, AswdrCoder::Binary);
  ASSERT_TRUE(dec);
  EXPECT_EQ(DifferingValues(dec->quantBeforeRefinement, minimum.quant), 0u);
  // A small budget still ends the coding first.
  const AswdrEncoded small = CompressDenoiseAswdr(t, HeadFor(t, 0.05, 4, 1), AswdrCoder::Binary, coding);
  EXPECT_LT(small.passes, minimum.passes + 1);
  EXPECT_GE(small.bitsUsed, BitBudgetOf(64, 64, 0.05));
}

// 8 by 8 with two levels, the values of the TAWS test: the isolated 20 at
// (4, 2) is never sent, the 20 under the significant parent is.
TEST(CompressDenoise, AnIsolatedValueIsNeverSent) {
  ImagePlane t(8, 8);
  t.At(0, 0) = 100.0f;
  t.At(2, 0) = 50.0f;
  t.At(4, 0) = 20.0f;
  t.At(6, 0) = 35.0f;
  t.At(4, 2) = 20.0f;
  AswdrHead head;
  head.budget = 100000;
  head.levels = 2;
  head.waveletIndex = 2;
  head.originalWidth = head.originalHeight = 8;
  DenoiseCoding coding;
  coding.noiseThreshold = 40.0;
  coding.descent = 8.0;
  for (AswdrCoder coder : {AswdrCoder::Binary, AswdrCoder::Arithmetic}) {
    const AswdrEncoded enc = CompressDenoiseAswdr(t, head, coder, coding);
    EXPECT_EQ(enc.quant.At(4, 2), 0.0f);
    EXPECT_EQ(enc.quant.At(4, 0), 20.0f);
    EXPECT_EQ(enc.quant.At(0, 0), 100.0f);
    const std::optional<AswdrDecoded> dec = DecompressDenoiseAswdr(enc.file, 100000.0, coder);
    ASSERT_TRUE(dec);
    EXPECT_EQ(DifferingValues(dec->quantBeforeRefinement, enc.quant), 0u);
    EXPECT_EQ(dec->quant.At(4, 2), 0.0f);
    // The integer wavelet ends at T = 1; the last offset is 1/2.
    EXPECT_EQ(dec->quant.At(4, 0), 20.5f);
  }
}

TEST(CompressDenoise, ARegionTakesTheBitsPastItsShareAndThePlainDecoderReadsIt) {
  const ImagePlane image = NoisyDisk(64, 8.0);
  const ImagePlane t = TransformOf(image, 3, 1);
  AswdrRegion region;
  region.mask = GetROIValues(64, 64, 8, 8, 23, 23, SupportOfWavelet(1), 3);
  const DenoiseCoding coding = CodingFor(t, 3, false);
  const AswdrHead head = HeadFor(t, 0.3, 3, 1);
  // Region mode from the first bit: nothing outside the mask is sent.
  region.sharedBudget = 0;
  const AswdrEncoded only = CompressDenoiseAswdr(t, head, AswdrCoder::Binary, coding, &region);
  std::size_t inside = 0;
  for (std::size_t i = 0; i < only.quant.v.size(); ++i) {
    if (region.mask[i] == 0) {
      EXPECT_EQ(only.quant.v[i], 0.0f) << i;
    }
    inside += only.quant.v[i] != 0.0f ? 1 : 0;
  }
  EXPECT_GT(inside, 20u);
  const std::optional<AswdrDecoded> dec = DecompressDenoiseAswdr(only.file, 0.3, AswdrCoder::Binary);
  ASSERT_TRUE(dec);
  EXPECT_EQ(DifferingValues(dec->quantBeforeRefinement, only.quant), 0u);
  // Half the budget shared: the region's pixels come out closer than
  // without a region at the same rate.
  region.sharedBudget = head.budget / 2;
  const AswdrEncoded half = CompressDenoiseAswdr(t, head, AswdrCoder::Binary, coding, &region);
  const AswdrEncoded plain = CompressDenoiseAswdr(t, head, AswdrCoder::Binary, coding);
  const auto regionError = [&](const AswdrEncoded& enc) {
    const std::optional<AswdrDecoded> d = DecompressDenoiseAswdr(enc.file, 0.3, AswdrCoder::Binary);
    ImagePlane back = d->quant;
    InvertTheTransform(back, 3, 1);
    double sum = 0.0;
    for (int y = 8; y <= 23; ++y)
      for (int x = 8; x <= 23; ++x) sum += std::pow(double(back.At(x, y)) - double(image.At(x, y)), 2.0);
    return sum;
  };
  EXPECT_LT(regionError(half), regionError(plain));
  region.mask.pop_back();
  EXPECT_TRUE(CompressDenoiseAswdr(t, head, AswdrCoder::Binary, coding, &region).file.empty());
}

TEST(CompressDenoise, DenoisingCodingLowersTheNoise) {
  const ImagePlane clean = TestImages(128, 128)[1].image;
  const ImagePlane noisy = NoisyDisk(128, 15.0);
  const ImagePlane t = TransformOf(noisy, 4, 1);
  const AswdrEncoded enc = CompressDenoiseAswdr(t, HeadFor(t, 2.0, 4, 1), AswdrCoder::Arithmetic, CodingFor(t, 4, true));
  const std::optional<AswdrDecoded> dec = DecompressDenoiseAswdr(enc.file, 2.0, AswdrCoder::Arithmetic);
  ASSERT_TRUE(dec);
  ImagePlane image = dec->quant;
  InvertTheTransform(image, 4, 1);
  EXPECT_LT(MeanSquareError(image, clean), 0.5 * MeanSquareError(noisy, clean));
}

TEST(CompressDenoise, BadSettingsAndBrokenFiles) {
  const ImagePlane t = TransformOf(TestImages(32, 32)[0].image, 2, 1);
  DenoiseCoding coding;
  coding.depth = 0;
  EXPECT_TRUE(CompressDenoiseAswdr(t, HeadFor(t, 1.0, 2, 1), AswdrCoder::Binary, coding).file.empty());
  coding.depth = 1;
  coding.descent = 0.0;
  EXPECT_TRUE(CompressDenoiseAswdr(t, HeadFor(t, 1.0, 2, 1), AswdrCoder::Binary, coding).file.empty());
  coding.descent = 2.0;
  coding.noiseThreshold = std::nan("");
  EXPECT_TRUE(CompressDenoiseAswdr(t, HeadFor(t, 1.0, 2, 1), AswdrCoder::Binary, coding).file.empty());
  coding.noiseThreshold = 5.0;
  const AswdrEncoded enc = CompressDenoiseAswdr(t, HeadFor(t, 1.0, 2, 1), AswdrCoder::Binary, coding);
  // The head alone, a depth of 0, and every cut of the file.
  std::vector<std::uint8_t> file(enc.file.begin(), enc.file.begin() + kAswdrHeadSize);
  EXPECT_FALSE(DecompressDenoiseAswdr(file, 1.0, AswdrCoder::Binary));
  file = enc.file;
  file[kAswdrHeadSize] = 0;
  EXPECT_FALSE(DecompressDenoiseAswdr(file, 1.0, AswdrCoder::Arithmetic));
  for (std::size_t n = kAswdrHeadSize + kDenoisePreambleSize; n < enc.file.size(); n += 7)
    for (AswdrCoder coder : {AswdrCoder::Binary, AswdrCoder::Arithmetic}) {
      const std::vector<std::uint8_t> cut(enc.file.begin(), enc.file.begin() + static_cast<std::ptrdiff_t>(n));
      EXPECT_TRUE(DecompressDenoiseAswdr(cut, 1.0, coder));
    }
  std::mt19937 random(9);
  for (int k = 0; k < 50; ++k) {
    std::vector<std::uint8_t> junk = enc.file;
    for (std::size_t i = kAswdrHeadSize; i < junk.size(); ++i) junk[i] = static_cast<std::uint8_t>(random());
    junk[kAswdrHeadSize] = static_cast<std::uint8_t>(1 + k % 25);
    junk[kAswdrHeadSize + 1] = static_cast<std::uint8_t>(1 + k);
    const auto dec = DecompressDenoiseAswdr(junk, 1.0, k % 2 == 0 ? AswdrCoder::Binary : AswdrCoder::Arithmetic);
    ASSERT_TRUE(dec);
    EXPECT_LE(dec->bitsUsed, BitBudgetOf(32, 32, 1.0) + 200);
  }
}

}  // namespace
}  // namespace keldo::wavelet
