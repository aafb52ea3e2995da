// The arithmetic adaptive coder (.awe): its first symbols by hand, round
// trips of three images at several rates (the decoder, counting the bits it
// reads ahead, stops at or before the coder and never ahead of it), exact
// agreement when both run to the pass limit, the rate message, file sizes,
// and decoders fed truncated and random files.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "aswdr_test_images.h"
#include "wavelet/arith_coder.h"
#include "wavelet/aswdr.h"
#include "wavelet/bit_layer.h"

namespace keldo::wavelet {
namespace {

using testing::DifferingValues;
using testing::HeadFor;
using testing::LargestMagnitude;
using testing::MeanSquareError;
using testing::TestImages;
using testing::TransformOf;

// Every value the decoder holds is one the coder held on the way: equal,
// still 0, or of the same sign and smaller, having missed its last bits.
bool DecoderIsBehindOrEqual(const ImagePlane& decoded, const ImagePlane& encoded) {
  for (std::size_t i = 0; i < decoded.v.size(); ++i) {
    const float d = decoded.v[i], e = encoded.v[i];
    if (d == e || d == 0.0f) continue;
    if ((d < 0) != (e < 0) || std::fabs(d) > std::fabs(e)) return false;
  }
  return true;
}

TEST(AswdrArithmetic, SmallPlaneFirstSymbols) {
  // The 4 by 4 plane of the binary test: 13 at (0,0) opens pass 1 with the
  // run 1 (the end mark alone, 1 bit) and the sign + (one pending bit):
  // 132 + 2 reaches a budget of 134.
  ImagePlane p(4, 4);
  p.At(0, 0) = 13.0f;
  p.At(1, 0) = -6.0f;
  p.At(2, 1) = 3.0f;
  AswdrHead h;
  h.budget = 134;
  h.levels = 1;
  h.waveletIndex = 2;
  const AswdrEncoded enc = CompressAswdr(p, h, AswdrCoder::Arithmetic);
  EXPECT_EQ(enc.bitsUsed, 134);
  EXPECT_EQ(enc.quant.At(0, 0), 8.0f);
  EXPECT_EQ(enc.quant.At(1, 0), 0.0f);
  // A budget above it runs on to the end at T = 1, and the decoder with all
  // the bits gets the plane exactly.
  h.budget = 1000;
  const AswdrEncoded all = CompressAswdr(p, h, AswdrCoder::Arithmetic);
  EXPECT_TRUE(all.stoppedByLoopTest);
  EXPECT_EQ(all.quant.v, p.v);
  const auto dec = DecompressAswdr(all.file, 1000.0, AswdrCoder::Arithmetic);
  ASSERT_TRUE(dec);
  EXPECT_TRUE(dec->rateTooLarge);
  EXPECT_EQ(dec->report[0], "Bpp value too large, decompressing at largest possible rate.");
  EXPECT_FALSE(dec->lastRefinement);
  EXPECT_EQ(dec->quant.v, p.v);
  // The stream holds the bits the coder used, past its allowance of 132.
  EXPECT_GE(8 * static_cast<std::int64_t>(all.file.size() - kAswdrHeadSize), all.bitsUsed - 132 + 1);
}

TEST(AswdrArithmetic, SmallPlaneSymbolsAndContextsByHand) {
  // The symbols of the binary test's stream, each in the context the former
  // symbol of its kind chose (run symbols 1 after a 0, 2 after a 1, 3 after
  // an end mark; signs 4 after +, 5 after -; refinement 1 for "stays", 0
  // for "moves", in 7 after a 1, 6 after a 0), closed in the last run
  // context.
  struct Symbol {
    char kind;  // 'D' run symbol, 'S' sign, 'R' refinement
    int context, character;
  };
  const std::vector<Symbol> symbols = {
      // Pass 1, T = 8: run 1, +, pass end 17 (digits 1 0 0 0).
      {'D', 1, 2}, {'S', 4, 0}, {'D', 3, 1}, {'D', 2, 0}, {'D', 1, 0}, {'D', 1, 0}, {'D', 1, 2},
      // Pass 2, T = 4: run 1, -, pass end 16, 13 moves.
      {'D', 3, 2}, {'S', 4, 1}, {'D', 3, 0}, {'D', 1, 0}, {'D', 1, 0}, {'D', 1, 0}, {'D', 1, 2}, {'R', 6, 0},
      // Pass 3, T = 2: run 8, +, pass end 8, 12 stays, -4 moves.
      {'D', 3, 0}, {'D', 1, 0}, {'D', 1, 0}, {'D', 1, 2}, {'S', 5, 0}, {'D', 3, 0}, {'D', 1, 0}, {'D', 1, 0},
      {'D', 1, 2}, {'R', 6, 1}, {'R', 7, 0},
      // Pass 4, T = 1: pass end 15 (digits 1 1 1), 13 moves, -6 stays, 3 moves.
      {'D', 3, 1}, {'D', 2, 1}, {'D', 2, 1}, {'D', 2, 2}, {'R', 6, 0}, {'R', 6, 1}, {'R', 7, 0}};
  BitWriter w(SetBitTotal_ASWDR());
  ArithmeticCoderTwo coder;
  for (const Symbol& s : symbols) {
    coder.SetCurrentContext(s.context);
    if (s.kind == 'D')
      coder.Encode(s.character, w);
    else
      coder.EncodeTwo(s.character, w);
  }
  const std::int64_t used = w.BitsUsed() + coder.Pending();
  coder.SetCurrentContext(3);
  coder.DoneEncoding(w);
  w.FlushPartialByte();

  ImagePlane p(4, 4);
  p.At(0, 0) = 13.0f;
  p.At(1, 0) = -6.0f;
  p.At(2, 1) = 3.0f;
  AswdrHead h;
  h.budget = 10000;
  h.levels = 1;
  h.waveletIndex = 2;
  const AswdrEncoded enc = CompressAswdr(p, h, AswdrCoder::Arithmetic);
  EXPECT_EQ(enc.bitsUsed, used);
  const std::vector<std::uint8_t> stream(enc.file.begin() + kAswdrHeadSize, enc.file.end());
  EXPECT_EQ(stream, w.Bytes());
}

TEST(AswdrArithmetic, RoundTripsAtSeveralRates) {
  const double rates[] = {0.1, 0.25, 0.5, 1.0, 2.0};
  const int sizes[][2] = {{64, 64}, {64, 32}};
  for (const auto& size : sizes)
    for (const auto& img : TestImages(size[0], size[1]))
      for (int wavelet = 1; wavelet <= 3; ++wavelet) {
        const int levels = std::min(4, LevelLimit(size[0], size[1], wavelet));
        const ImagePlane t = TransformOf(img.image, levels, wavelet);
        ASSERT_LT(LargestMagnitude(t), GetThreshold(t).threshold) << img.name;
        const std::string label = img.name + " " + std::to_string(size[1]) + " wavelet " + std::to_string(wavelet);
        double formerError = 1e300, formerValueError = 1e300;
        for (double bpp : rates) {
          const AswdrHead head = HeadFor(t, bpp, levels, wavelet);
          const AswdrEncoded enc = CompressAswdr(t, head, AswdrCoder::Arithmetic);
          const auto dec = DecompressAswdr(enc.file, bpp, AswdrCoder::Arithmetic);
          ASSERT_TRUE(dec) << label;
          EXPECT_FALSE(dec->rateTooLarge);
          const ImagePlane& got = dec->quantBeforeRefinement;
          EXPECT_TRUE(DecoderIsBehindOrEqual(got, enc.quant)) << label << " at " << bpp;
          // A few symbols' worth of the coder's last bits are missing.
          EXPECT_LE(DifferingValues(got, enc.quant), 24u) << label << " at " << bpp;
          if (enc.stoppedByLoopTest) {
            EXPECT_EQ(got.v, enc.quant.v) << label << " at " << bpp;
          } else {
            EXPECT_GE(enc.bitsUsed, head.budget);
            EXPECT_LE(enc.bitsUsed - head.budget, 64) << label;
            EXPECT_GE(dec->bitsUsed, head.budget);
          }
          // The stream: the bits out when the passes stopped (less those
          // still pending), the close's few, the partial byte.
          const std::int64_t streamBytes = static_cast<std::int64_t>(enc.file.size() - kAswdrHeadSize);
          EXPECT_GE(8 * streamBytes, enc.bitsUsed - SetBitTotal_ASWDR() + 1) << label;
          EXPECT_LE(8 * streamBytes, enc.bitsUsed - SetBitTotal_ASWDR() + 10 + 7) << label;

          const double valueError = MeanSquareError(got, t);
          EXPECT_LE(valueError, formerValueError) << label << " at " << bpp;
          formerValueError = valueError;
          if (wavelet == 1) {
            ImagePlane back = dec->quant;
            InvertTheTransform(back, levels, wavelet);
            const double error = MeanSquareError(back, img.image);
            EXPECT_LE(error, formerError) << label << " at " << bpp;
            formerError = error;
          }
        }
      }
}

TEST(AswdrArithmetic, AgreesExactlyWhenBothRunToThePassLimit) {
  const ImagePlane image = TestImages(32, 32)[0].image;
  for (int wavelet = 1; wavelet <= 3; ++wavelet) {
    const ImagePlane t = TransformOf(image, 3, wavelet);
    ASSERT_LT(LargestMagnitude(t), GetThreshold(t).threshold);
    const AswdrEncoded enc = CompressAswdr(t, HeadFor(t, 60.0, 3, wavelet), AswdrCoder::Arithmetic);
    ASSERT_TRUE(enc.stoppedByLoopTest) << wavelet;
    EXPECT_EQ(enc.passes, wavelet == 1 ? 32 : GetThreshold(t).exponent);
    const auto dec = DecompressAswdr(enc.file, 60.0, AswdrCoder::Arithmetic);
    ASSERT_TRUE(dec);
    EXPECT_EQ(dec->quantBeforeRefinement.v, enc.quant.v) << wavelet;
    EXPECT_EQ(dec->passes, enc.passes);
    EXPECT_EQ(dec->lastRefinement, wavelet == 1);
    if (wavelet > 1) {
      EXPECT_EQ(dec->quant.v, t.v);  // every bit: the integer transform itself
      ImagePlane back = dec->quant;
      InvertTheTransform(back, 3, wavelet);
      EXPECT_EQ(back.v, image.v);
    }
    // The arithmetic stream is the shorter one.
    const AswdrEncoded binary = CompressAswdr(t, HeadFor(t, 60.0, 3, wavelet), AswdrCoder::Binary);
    EXPECT_LT(enc.file.size(), binary.file.size());
  }
}

TEST(AswdrArithmetic, DecoderStopsAtTheBitsItReadAhead) {
  // At one budget the decoder's count, ahead by the 9 bits of BeginDecoding,
  // reaches the budget first: it holds fewer significant values than the
  // coder for most budgets, and never more.
  const ImagePlane t = TransformOf(TestImages(64, 64)[1].image, 4, 1);
  int behind = 0;
  for (int budget = 600; budget < 1400; budget += 37) {
    AswdrHead h = HeadFor(t, 1.0, 4, 1);
    h.budget = budget;
    const AswdrEncoded enc = CompressAswdr(t, h, AswdrCoder::Arithmetic);
    const auto dec = DecompressAswdr(enc.file, 100.0, AswdrCoder::Arithmetic);
    ASSERT_TRUE(dec);
    EXPECT_TRUE(dec->rateTooLarge);
    EXPECT_TRUE(DecoderIsBehindOrEqual(dec->quantBeforeRefinement, enc.quant));
    behind += DifferingValues(dec->quantBeforeRefinement, enc.quant) > 0 ? 1 : 0;
  }
  EXPECT_GT(behind, 10);
}

TEST(AswdrArithmetic, DecoderSurvivesTruncatedAndRandomFiles) {
  const ImagePlane t = TransformOf(TestImages(32, 32)[2].image, 3, 2);
  const AswdrEncoded enc = CompressAswdr(t, HeadFor(t, 1.0, 3, 2), AswdrCoder::Arithmetic);
  for (std::size_t length = 0; length <= enc.file.size(); ++length) {
    const std::vector<std::uint8_t> cut(enc.file.begin(), enc.file.begin() + static_cast<std::ptrdiff_t>(length));
    const auto dec = DecompressAswdr(cut, 1.0, AswdrCoder::Arithmetic);
    EXPECT_EQ(dec.has_value(), length >= kAswdrHeadSize);
  }
  std::mt19937 random(17);
  for (int round = 0; round < 300; ++round) {
    std::vector<std::uint8_t> file(kAswdrHeadSize + random() % 200);
    for (auto& b : file) b = static_cast<std::uint8_t>(round % 3 == 2 ? 0xFF : random());
    if (round % 3 != 0) {
      AswdrHead h;
      h.budget = static_cast<std::int32_t>(random() % 20000) - 100;
      h.levels = 1 + static_cast<int>(random() % 3);
      h.waveletIndex = 1 + static_cast<int>(random() % 3);
      h.width = 8 << (random() % 3);
      h.height = 8 << (random() % 3);
      h.exponent = static_cast<int>(random() % 256);
      const std::vector<std::uint8_t> head = WriteAswdrHead(h);
      std::copy(head.begin(), head.end(), file.begin());
    }
    const auto dec = DecompressAswdr(file, (random() % 1000) / 100.0, AswdrCoder::Arithmetic);
    if (dec) {
      EXPECT_EQ(dec->quant.v.size(), static_cast<std::size_t>(dec->head.width * dec->head.height));
    }
  }
}

}  // namespace
}  // namespace keldo::wavelet
