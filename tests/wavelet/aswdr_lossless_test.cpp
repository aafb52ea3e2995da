// The lossless coder (.awg): the integer transforms invert exactly, the
// coder and decoder give back every coefficient and so every pixel with
// both integer wavelets on flat, noisy, drawn and photographic images, the
// 14-byte head field by field, the first threshold of a flat picture, the
// same stream as the arithmetic coder run to its pass limit, and a decoder
// that survives truncated and random files.

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "aswdr_camera.h"
#include "aswdr_test_images.h"
#include "wavelet/aswdr.h"
#include "wavelet/aswdr_scan.h"
#include "wavelet/bit_layer.h"

namespace keldo::wavelet {
namespace {

using testing::CameraCrop;
using testing::HeadFor;
using testing::LargestMagnitude;
using testing::TestImages;
using testing::TransformOf;

ImagePlane Flat(int w, int h, float value) {
  ImagePlane p(w, h);
  for (float& v : p.v) v = value;
  return p;
}

std::vector<testing::TestImage> LosslessImages() {
  std::vector<testing::TestImage> images = TestImages(64, 64);
  images.push_back({"flat 100", Flat(64, 64, 100.0f)});
  images.push_back({"flat 0", Flat(32, 32, 0.0f)});
  images.push_back({"camera", CameraCrop()});
  std::mt19937 random(5);
  std::uniform_int_distribution<int> byte(0, 255);
  ImagePlane wide(96, 64);
  for (float& v : wide.v) v = static_cast<float>(byte(random));
  images.push_back({"noise 96x64", wide});
  return images;
}

std::vector<std::uint8_t> BytesOf(const ImagePlane& image) {
  std::vector<std::uint8_t> bytes(image.v.size());
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<std::uint8_t>(image.v[i]);
  return bytes;
}

TEST(ImageTransform, IntegerWaveletsInvertExactlyWithTheirScaling) {
  // Every level count the lossless coder allows, on random bytes of several
  // sizes: the lifting steps round to integers, the scaling by powers of 2
  // is exact in float, and all values stay far below 2^24.
  std::mt19937 random(17);
  std::uniform_int_distribution<int> byte(0, 255);
  for (const auto& size : {std::array{32, 32}, std::array{64, 32}, std::array{128, 96}, std::array{256, 256}})
    for (int wavelet = 2; wavelet <= 3; ++wavelet)
      for (int levels = 1; levels <= 4; ++levels) {
        ImagePlane image(size[0], size[1]);
        for (float& v : image.v) v = static_cast<float>(byte(random));
        ImagePlane t = TransformOf(image, levels, wavelet);
        for (float v : t.v) ASSERT_EQ(v, std::nearbyint(v)) << "an integer transform gave a fraction";
        InvertTheTransform(t, levels, wavelet);
        EXPECT_EQ(t.v, image.v) << size[0] << "x" << size[1] << " wavelet " << wavelet << " levels " << levels;
      }
}

TEST(AswdrLossless, EveryPixelComesBackWithBothIntegerWavelets) {
  for (const auto& img : LosslessImages()) {
    ASSERT_FALSE(img.image.v.empty()) << img.name;
    for (int wavelet = 2; wavelet <= 3; ++wavelet) {
      const int levels = std::min(4, LevelLimit(img.image.width, img.image.height, wavelet));
      const ImagePlane t = TransformOf(img.image, levels, wavelet);
      const std::string label = img.name + " wavelet " + std::to_string(wavelet);
      // The coder sends every coefficient below its start threshold.
      ASSERT_TRUE(LargestMagnitude(t) == 0.0 || LargestMagnitude(t) < GetThreshold(t).threshold) << label;
      const AswdrEncoded enc = CompressAswdrLossless(t, HeadFor(t, 0.0, levels, wavelet));
      ASSERT_FALSE(enc.file.empty()) << label;
      EXPECT_EQ(enc.quant.v, t.v) << label;
      const auto dec = DecompressAswdrLossless(enc.file);
      ASSERT_TRUE(dec) << label;
      EXPECT_FALSE(dec->lastRefinement);
      EXPECT_EQ(dec->quant.v, t.v) << label;
      EXPECT_EQ(InvertTheTransformQuant(dec->quant, levels, wavelet), BytesOf(img.image)) << label;
      // The last pass is that of threshold 1 (none for an all-zero plane,
      // whose one pass has T = 1/2).
      ASSERT_GE(dec->report.size(), 2u);
      const std::string& lastCount = dec->report[dec->report.size() - 2];
      if (LargestMagnitude(t) > 0.0) {
        EXPECT_EQ(lastCount.substr(lastCount.size() - 16), ".  Threshold = 1") << label;
      }
      EXPECT_EQ(enc.passes, std::max(GetThreshold(t).exponent, 1)) << label;
    }
  }
}

TEST(AswdrLossless, HeadFieldByField) {
  const ImagePlane t = TransformOf(TestImages(64, 32)[0].image, 3, 2);
  AswdrHead head = HeadFor(t, 0.0, 3, 2);  // original sizes 61 by 31
  const AswdrEncoded enc = CompressAswdrLossless(t, head);
  ASSERT_GT(enc.file.size(), kAwgHeadSize);
  const std::vector<std::uint8_t> expected = {32, 64, 0, 32, 0, 2, 0, 61, 0, 2, 0, 31, 0};
  EXPECT_EQ(std::vector<std::uint8_t>(enc.file.begin(), enc.file.begin() + 13), expected);
  EXPECT_EQ(enc.file[13], GetThreshold(t).exponent);
  const auto read = ReadAwgHead(enc.file);
  ASSERT_TRUE(read);
  EXPECT_EQ(read->levels, 3);
  EXPECT_EQ(read->waveletIndex, 2);
  EXPECT_EQ(read->width, 64);
  EXPECT_EQ(read->height, 32);
  EXPECT_EQ(read->originalWidth, 61);
  EXPECT_EQ(read->originalHeight, 31);
  EXPECT_EQ(read->exponent, GetThreshold(t).exponent);
  // The stream: the bits used past the allowance of 132, the close's few
  // and the partial byte; no end byte.
  const std::int64_t streamBytes = static_cast<std::int64_t>(enc.file.size() - kAwgHeadSize);
  EXPECT_GE(8 * streamBytes, enc.bitsUsed - SetBitTotal_ASWDR() + 1);
  EXPECT_LE(8 * streamBytes, enc.bitsUsed - SetBitTotal_ASWDR() + 10 + 7);
  // A head cut short, a variant tag other than 2 or a size that is no
  // multiple of 2^levels is refused.
  EXPECT_FALSE(ReadAwgHead(std::vector<std::uint8_t>(enc.file.begin(), enc.file.begin() + 13)));
  std::vector<std::uint8_t> bad = enc.file;
  bad[5] = 3;
  EXPECT_FALSE(ReadAwgHead(bad));
  bad = enc.file;
  bad[1] = 60;
  EXPECT_FALSE(ReadAwgHead(bad));
}

TEST(AswdrLossless, FlatPictureStartsAtHalfItsLargestValueWhenThatIsAPower) {
  // A flat picture's transform is its trend alone: with 4 levels the value
  // times 2^5. At 100 that is 3200, so the start is 4096 (E = 12) and the
  // first pass runs at 2048; every pixel comes back.
  for (float value : {100.0f, 128.0f}) {
    const ImagePlane image = Flat(64, 64, value);
    const ImagePlane t = TransformOf(image, 4, 2);
    for (int y = 0; y < 64; ++y)
      for (int x = 0; x < 64; ++x) ASSERT_EQ(t.At(x, y), x < 4 && y < 4 ? 32.0f * value : 0.0f);
    const AswdrEncoded enc = CompressAswdrLossless(t, HeadFor(t, 0.0, 4, 2));
    EXPECT_EQ(enc.file[13], 12);
    ASSERT_FALSE(enc.report.empty());
    EXPECT_NE(enc.report[0].find(".  Threshold = 2048"), std::string::npos) << enc.report[0];
    const auto dec = DecompressAswdrLossless(enc.file);
    ASSERT_TRUE(dec);
    if (value == 100.0f) {
      EXPECT_EQ(InvertTheTransformQuant(dec->quant, 4, 2), BytesOf(image));
      continue;
    }
    // At 128 the largest value 4096 is a power of two and is itself the
    // start threshold: the first pass runs at M/2 = 2048, and the trend,
    // at the start threshold, counts as significant already in every pass
    // and is never sent: the coder's values stay 0. The decoder, holding 0
    // there, counts those 16 positions too, reaches the pass-end run
    // (4096 - 16 + 1) inside the walk and parts from the coder: the
    // picture does not come back.
    EXPECT_EQ(LargestMagnitude(enc.quant), 0.0);
    EXPECT_GT(testing::DifferingValues(dec->quant, enc.quant), 0u);
    EXPECT_NE(InvertTheTransformQuant(dec->quant, 4, 2), BytesOf(image));
  }
}

TEST(AswdrLossless, SameStreamAsTheArithmeticCoderRunToThePassLimit) {
  // With an integer wavelet the arithmetic coder given more bits than it
  // needs stops after the pass of threshold 1, having just sent the end
  // mark of its pass-end run: its stream is the lossless one bit for bit.
  const ImagePlane t = TransformOf(CameraCrop(), 4, 3);
  const AswdrEncoded lossless = CompressAswdrLossless(t, HeadFor(t, 0.0, 4, 3));
  const AswdrEncoded lossy = CompressAswdr(t, HeadFor(t, 30.0, 4, 3), AswdrCoder::Arithmetic);
  ASSERT_TRUE(lossy.stoppedByLoopTest);
  EXPECT_EQ(std::vector<std::uint8_t>(lossless.file.begin() + kAwgHeadSize, lossless.file.end()),
            std::vector<std::uint8_t>(lossy.file.begin() + kAswdrHeadSize, lossy.file.end()));
  EXPECT_EQ(lossless.bitsUsed, lossy.bitsUsed);
}

TEST(AswdrLossless, TheNineSevenWaveletIsCloseButNotExact) {
  // Its coefficients are no whole numbers: the passes down to threshold 1
  // leave each below 1 from its value, and the picture comes back within a
  // few grey levels, not exactly.
  const ImagePlane image = CameraCrop();
  const ImagePlane t = TransformOf(image, 4, 1);
  const AswdrEncoded enc = CompressAswdrLossless(t, HeadFor(t, 0.0, 4, 1));
  const auto dec = DecompressAswdrLossless(enc.file);
  ASSERT_TRUE(dec);
  EXPECT_EQ(dec->quant.v, enc.quant.v);
  for (std::size_t i = 0; i < t.v.size(); ++i) ASSERT_LT(std::fabs(dec->quant.v[i] - t.v[i]), 1.0f);
  const std::vector<std::uint8_t> back = InvertTheTransformQuant(dec->quant, 4, 1), original = BytesOf(image);
  int largest = 0;
  for (std::size_t i = 0; i < back.size(); ++i) largest = std::max(largest, std::abs(back[i] - original[i]));
  EXPECT_GT(largest, 0);
  EXPECT_LE(largest, 3);
}

TEST(AswdrLossless, AFuzzedFileOfManyPassesDecodesInBoundedWork) {
  // A file the fuzzer held for over its second on a loaded machine: 6
  // levels of 64 by 64 and the exponent 58, so 58 passes of the whole
  // plane with whatever the stream says. It decodes to a plane of that
  // size in those passes, every value below the start threshold's double.
  const std::vector<std::uint8_t> file = {
      0x3d, 0x40, 0x00, 0x40, 0x00, 0x02, 0x00, 0x00, 0x00, 0x02, 0x00, 0x00, 0x00, 0x3a, 0x00, 0xb4,
      0x5c, 0x2f, 0x0a, 0x00, 0x40, 0x00, 0x02, 0x00, 0x00, 0x00, 0x02, 0x00, 0xff, 0xff, 0xff, 0xff,
      0xff, 0xff, 0xff, 0x0d, 0xf3, 0xf3, 0xf3, 0xf3, 0xf3, 0xf3, 0xf3, 0xf3, 0xf3, 0xf3, 0xf3, 0xa9,
      0xa9, 0xa9, 0xa9, 0xa9, 0xa9, 0xa9, 0xa9, 0xa9, 0xa9, 0xa9, 0xa9, 0xa9, 0xa9, 0xa9, 0xa9, 0xa9,
      0xa9, 0xa9, 0xa9, 0xa9, 0xa9, 0xa9, 0xa9, 0xa9, 0xa9, 0xa9, 0xa9, 0xa9, 0x25, 0xa9, 0xa9, 0xa9,
      0xa9, 0xa9, 0xa9, 0xa9, 0xa9, 0xa9, 0xa9, 0xa9, 0xa9, 0xa9, 0xa9, 0xa9, 0xa9, 0xa9, 0xa9, 0xa9,
      0x86, 0x86, 0x86, 0x86, 0x86, 0x86, 0x86, 0x86, 0x86, 0x86, 0x86, 0x86, 0x86, 0x86, 0x86, 0x86,
      0x86, 0x86, 0x86, 0x86, 0x86, 0x86, 0x86, 0x86, 0x86, 0xff, 0xff, 0xff, 0xff, 0xff, 0x3f, 0xff,
      0xff, 0x40, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xf8, 0xff, 0xf9, 0xfe, 0xff, 0xfe, 0xff, 0xff,
      0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xf3, 0xf3, 0x01, 0x00, 0x60,
      0x40, 0x00, 0x96, 0xe4, 0xb8, 0xf3, 0xf3, 0xf3, 0xf3, 0x1f, 0xf3, 0xf3, 0xf3, 0xf3, 0xf3, 0xf3,
      0xf3, 0xf3, 0xf3, 0xf3, 0xf3, 0xf3, 0xf3, 0xf3, 0xf3, 0xf3, 0xf3, 0xf3, 0x68, 0x68, 0x00, 0x00,
      0x10, 0x00, 0x00, 0x00, 0x02, 0x00, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0x0d, 0xf3, 0xf3,
      0xf3, 0xf3, 0xf3, 0xf3, 0xb4, 0x5c, 0x0a, 0xd7, 0x05, 0x20, 0x00, 0x00, 0x01, 0xff, 0x19, 0x60,
      0x00, 0x00, 0x00, 0x00, 0x2c, 0xff, 0x60, 0x00, 0x00,
  };
  const auto head = ReadAwgHead(file);
  ASSERT_TRUE(head);
  EXPECT_EQ(head->levels, 6);
  EXPECT_EQ(head->width, 64);
  EXPECT_EQ(head->height, 64);
  EXPECT_EQ(head->exponent, 58);
  const auto dec = DecompressAswdrLossless(file);
  ASSERT_TRUE(dec);
  EXPECT_EQ(dec->quant.v.size(), 64u * 64u);
  EXPECT_LE(dec->passes, 58);
  for (float v : dec->quant.v) ASSERT_LT(std::fabs(static_cast<double>(v)), std::ldexp(1.0, 59));
}

TEST(AswdrLossless, DecoderSurvivesTruncatedAndRandomFiles) {
  const ImagePlane t = TransformOf(TestImages(32, 32)[2].image, 3, 2);
  const AswdrEncoded enc = CompressAswdrLossless(t, HeadFor(t, 0.0, 3, 2));
  for (std::size_t length = 0; length <= enc.file.size(); ++length) {
    const std::vector<std::uint8_t> cut(enc.file.begin(), enc.file.begin() + static_cast<std::ptrdiff_t>(length));
    const auto dec = DecompressAswdrLossless(cut);
    EXPECT_EQ(dec.has_value(), length >= kAwgHeadSize);
  }
  std::mt19937 random(23);
  std::uniform_int_distribution<int> byte(0, 255);
  for (int round = 0; round < 300; ++round) {
    std::vector<std::uint8_t> file = enc.file;
    for (std::size_t i = kAwgHeadSize; i < file.size(); ++i) file[i] = static_cast<std::uint8_t>(byte(random));
    if (round % 3 == 0) file[13] = static_cast<std::uint8_t>(byte(random) % 70);
    const auto dec = DecompressAswdrLossless(file);
    if (dec) {
      EXPECT_EQ(dec->quant.v.size(), t.v.size());
      EXPECT_LE(dec->passes, kMaxAswdrPasses);
    }
  }
}

}  // namespace
}  // namespace keldo::wavelet
