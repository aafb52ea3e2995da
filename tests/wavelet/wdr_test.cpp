// The workshop's wavelet-difference coder and its decoder: a 4 by 4 plane
// coded by hand at three budgets, each edge case of the coder's charges and
// passes, coder and decoder agreeing pass by pass in every scan mode at
// many budgets, shorter budgets giving prefixes of the streams, an error
// that never grows with the budget, exact lossless coding of integer
// transforms, the PSNR member, and malformed streams.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <utility>
#include <random>
#include <string>
#include <vector>

#include "wavelet/image_transform.h"
#include "wavelet/wdr_coder.h"

namespace keldo::wavelet {
namespace {

constexpr WdrScanMode kModes[] = {WdrScanMode::ZigZag, WdrScanMode::StaticTree, WdrScanMode::DynamicParentChild,
                                  WdrScanMode::DynamicContext};
constexpr double kPsnrAgreement = 1e-9;

// The hand-worked plane: in the subband order of a 4 by 4 plane of one level
// the values 20, -9, 5, 0, 3, -12, 0, 1, 0, 6, then zeros.
ImagePlane HandPlane() {
  ImagePlane p(4, 4);
  p.At(0, 0) = 20.0f;
  p.At(1, 0) = -9.0f;
  p.At(0, 1) = 5.0f;
  p.At(2, 0) = 3.0f;
  p.At(2, 1) = -12.0f;
  p.At(3, 0) = 1.0f;
  p.At(1, 2) = 6.0f;
  return p;
}

WdrEncodeSettings Settings(int levels, WdrScanMode mode, int code = 1) {
  WdrEncodeSettings s;
  s.levels = levels;
  s.scanMode = mode;
  s.code = code;
  return s;
}

// A smooth picture with texture, transformed by the 9/7 wavelet.
ImagePlane TestTransform(int n, int levels, unsigned seed) {
  std::mt19937 rng(seed);
  std::uniform_real_distribution<double> noise(-12.0, 12.0);
  ImagePlane p(n, n);
  for (int y = 0; y < n; ++y)
    for (int x = 0; x < n; ++x)
      p.At(x, y) = static_cast<float>(128.0 + 60.0 * std::sin(x * 0.21) * std::cos(y * 0.13) +
                                      (x > n / 2 && y < n / 3 ? 50.0 : 0.0) + noise(rng));
  TransformTheImage(p, levels, 1);
  return p;
}

ImagePlane IntegerPlane(int n, int range, unsigned seed) {
  std::mt19937 rng(seed);
  std::uniform_int_distribution<int> value(-range, range);
  ImagePlane p(n, n);
  for (float& v : p.v) v = static_cast<float>(value(rng));
  return p;
}

double MeanSquareError(const ImagePlane& a, const ImagePlane& b) {
  double sum = 0.0;
  for (std::size_t i = 0; i < a.v.size(); ++i) {
    const double d = static_cast<double>(a.v[i]) - b.v[i];
    sum += d * d;
  }
  return sum / static_cast<double>(a.v.size());
}

struct Snapshot {
  int pass;
  double threshold;
  std::int32_t sigTotal;
  std::vector<std::int16_t> signMap;
  std::vector<float> quantMag;
  std::vector<std::int32_t> list;
  bool operator==(const Snapshot&) const = default;
};

WdrPassObserver Recorder(std::vector<Snapshot>& into) {
  return [&into](const WdrPassState& s) {
    into.push_back({s.pass, s.threshold, s.sigTotal, s.signMap, s.quantMag, s.insignificant});
  };
}

TEST(WdrCoder, HandWorkedPlaneStoppedInASignificanceWalk) {
  // Pass 0 (T 16): "+" at run 1. Pass 1 (T 8): "-" at 1, "-" at run 4
  // ("00"); (0,0) refined "0". Pass 2 (T 4): "+" at 1, "+" at run 6
  // ("01"); bits 1 0 1. Pass 3 (T 2): "+" at run 2 ("0") takes the charge
  // to 74 > 70. Charges 2 a symbol, 1 a bit, 16 a pass, no start charge.
  const WdrStreams s = ArrayEncodeToBitBudget(HandPlane(), Settings(1, WdrScanMode::ZigZag), 70);
  ASSERT_EQ(s.status, WdrStatus::Ok);
  EXPECT_EQ(s.exponent, 5);
  EXPECT_EQ(s.symbols, "+--00++01+0+");
  EXPECT_EQ(s.refinement, "0101");
  EXPECT_EQ(s.passCounts, (std::vector<std::int32_t>{1, 2, 3, 3}));
  EXPECT_EQ(s.passes, 3);
  EXPECT_EQ(s.bitsUsed, 90);
  // No refinement bit is left for pass 3: every coefficient gains T = 2.
  const WdrDecoded d = Decode(s);
  ASSERT_EQ(d.status, WdrStatus::Ok);
  ImagePlane expected(4, 4);
  expected.At(0, 0) = 22.0f;
  expected.At(1, 0) = -10.0f;
  expected.At(2, 1) = -14.0f;
  expected.At(0, 1) = 6.0f;
  expected.At(1, 2) = 6.0f;
  expected.At(2, 0) = 4.0f;
  EXPECT_EQ(d.plane.v, expected.v);
}

TEST(WdrCoder, HandWorkedPlaneStoppedInMidRefinement) {
  // Pass 2's refinement starts at 67: the second bit takes it to 69 > 68.
  const WdrStreams s = ArrayEncodeToBitBudget(HandPlane(), Settings(1, WdrScanMode::ZigZag), 68);
  EXPECT_EQ(s.symbols, "+--00++01+");
  EXPECT_EQ(s.refinement, "010");
  EXPECT_EQ(s.passCounts, (std::vector<std::int32_t>{1, 2, 3}));
  EXPECT_EQ(s.passes, 2);
  EXPECT_EQ(s.bitsUsed, 69);
  // (0,0) and (1,0) got their bit (+T/2 = 2); (2,1), (0,1), (1,2) did not (+4).
  const WdrDecoded d = Decode(s);
  ImagePlane expected(4, 4);
  expected.At(0, 0) = 22.0f;
  expected.At(1, 0) = -10.0f;
  expected.At(2, 1) = -12.0f;
  expected.At(0, 1) = 8.0f;
  expected.At(1, 2) = 8.0f;
  EXPECT_EQ(d.plane.v, expected.v);
  // Without the last refinement the magnitudes are as decoded.
  const WdrDecoded t = Decode(s, WdrReconstruction::Truncated);
  EXPECT_EQ(t.plane.At(0, 0), 20.0f);
  EXPECT_EQ(t.plane.At(2, 1), -8.0f);
}

TEST(WdrCoder, BudgetExceededByTheFirstSign) {
  const WdrStreams s = ArrayEncodeToBitBudget(HandPlane(), Settings(1, WdrScanMode::ZigZag), 1);
  EXPECT_EQ(s.symbols, "++");  // the sign, then the stop mark
  EXPECT_TRUE(s.refinement.empty());
  EXPECT_EQ(s.passCounts, std::vector<std::int32_t>{1});
  EXPECT_EQ(s.passes, 0);
  EXPECT_EQ(s.bitsUsed, 18);
  EXPECT_EQ(Decode(s).plane.At(0, 0), 32.0f);  // 16, not refined: + 16
}

TEST(WdrCoder, StartChargeOnlyFromSideEleven) {
  for (int n : {8, 16}) {
    const ImagePlane image = TestTransform(n, 2, 3);
    const WdrStreams s = ArrayEncodeToBitBudget(image, Settings(2, WdrScanMode::ZigZag), 1'000'000);
    const std::int64_t start = n < 11 ? 0 : 172;
    EXPECT_EQ(s.passes, 32);
    EXPECT_EQ(s.bitsUsed, start + 2 * static_cast<std::int64_t>(s.symbols.size() - 1) +
                              static_cast<std::int64_t>(s.refinement.size()) + 16 * 33)
        << n;
  }
  // The 2-D form's start charge.
  WdrEncodeSettings twoDim = Settings(2, WdrScanMode::ZigZag);
  twoDim.startBits = kWdrTwoDimStartBits;
  const WdrStreams a = ArrayEncodeToBitBudget(TestTransform(16, 2, 3), twoDim, 0);
  // Over the budget from the start: the walk ends after the first position,
  // with or without its sign (a run of 1 has no digits).
  EXPECT_EQ(a.passes, 0);
  EXPECT_LE(a.symbols.size(), 2u);
  EXPECT_EQ(a.bitsUsed, 180 + 16 + 2 * static_cast<std::int64_t>(a.symbols.size() - 1));
}

TEST(WdrCoder, PassWithNothingSignificant) {
  ImagePlane p(4, 4);
  p.At(0, 0) = 20.0f;
  p.At(3, 3) = 3.0f;  // the last of the subband order: run 15, digits "111"
  const WdrStreams s = ArrayEncodeToBitBudget(p, Settings(1, WdrScanMode::ZigZag), 1'000'000);
  EXPECT_EQ(s.symbols, "++111+");
  // Pass 1 and 2 add nothing; the difference rule gives 1 - 1 = 0, then
  // 1 - 0 = 1, 2 - 1 = 1, 2 - 1 = 1, ...
  ASSERT_EQ(s.passCounts.size(), 33u);  // 33 passes at most
  EXPECT_EQ(s.passCounts[0], 1);
  EXPECT_EQ(s.passCounts[1], 0);
  EXPECT_EQ(s.passCounts[2], 1);
  for (std::size_t k = 3; k < 33; ++k) EXPECT_EQ(s.passCounts[k], 1);
  EXPECT_EQ(s.passes, 32);
  // Refinement: one bit in passes 1 to 3, two in passes 4 to 32.
  EXPECT_EQ(s.refinement.size(), 3u + 29u * 2u);
  EXPECT_EQ(s.bitsUsed, 2 * 5 + 61 + 16 * 33);
}

TEST(WdrCoder, AllCoefficientsSignificant) {
  // All in [16, 32): pass 0 makes every one significant; from pass 1 the
  // significance walk has nothing left and only refinement runs.
  ImagePlane p(4, 4);
  ScanOrder order;
  CreateScanOrder(order, 1, 4, WdrBaseOrder::Subband);
  const std::vector<std::int32_t> walk = WalkScanOrder(order);
  for (std::size_t i = 0; i < walk.size(); ++i) p.v[static_cast<std::size_t>(walk[i])] = 16.0f + static_cast<float>(i);
  const WdrStreams s = ArrayEncodeToBitBudget(p, Settings(1, WdrScanMode::ZigZag), 1'000'000);
  EXPECT_EQ(s.symbols, std::string(17, '+'));
  EXPECT_EQ(s.refinement.substr(0, 16), "0000000011111111");  // |c| >= 24 in pass 1
  for (std::size_t k = 1; k < s.passCounts.size(); ++k) EXPECT_EQ(s.passCounts[k], k % 2 == 1 ? 0 : 16);
  const WdrDecoded d = Decode(s, WdrReconstruction::Truncated);
  EXPECT_EQ(d.plane.v, p.v);  // integers, every bit down to 2^-28 known
}

TEST(WdrCoder, NumberOfSteps) {
  EXPECT_EQ(NumberOfSteps(""), 1);  // callers take the empty string as 0
  EXPECT_EQ(NumberOfSteps("0"), 1);
  EXPECT_EQ(NumberOfSteps("1"), 2);
  EXPECT_EQ(NumberOfSteps("00"), 3);
  EXPECT_EQ(NumberOfSteps("10"), 4);
  EXPECT_EQ(NumberOfSteps("01"), 5);
  EXPECT_EQ(NumberOfSteps("111"), 14);
  EXPECT_EQ(NumberOfSteps(std::string(41, '0')), -1);
}

TEST(WdrCoder, CoderAndDecoderAgreePassByPass) {
  const int n = 32, levels = 3;
  const ImagePlane image = TestTransform(n, levels, 11);
  for (WdrScanMode mode : kModes)
    for (int code : {1, 201})
      for (std::int64_t budget : {0, 100, 300, 700, 1500, 3000, 6000, 12000, 30000, 100000}) {
        std::vector<Snapshot> coded, decoded;
        WdrEncodeSettings settings = Settings(levels, mode, code);
        settings.observer = Recorder(coded);
        const WdrStreams s = ArrayEncodeToBitBudget(image, settings, budget);
        ASSERT_EQ(s.status, WdrStatus::Ok);
        const WdrDecoded d = Decode(s, WdrReconstruction::LastRefinement, Recorder(decoded));
        ASSERT_EQ(d.status, WdrStatus::Ok);
        ASSERT_EQ(coded.size(), static_cast<std::size_t>(s.passes) + 1);
        EXPECT_TRUE(coded == decoded) << static_cast<int>(mode) << " " << code << " " << budget;
      }
}

TEST(WdrCoder, ShorterBudgetsGivePrefixes) {
  const ImagePlane image = TestTransform(64, 4, 5);
  for (WdrScanMode mode : kModes) {
    const WdrStreams full = ArrayEncodeToBitBudget(image, Settings(4, mode), 64 * 64 * 4);
    for (std::int64_t budget = 200; budget < 64 * 64 * 4; budget = budget * 3 / 2) {
      const WdrStreams s = ArrayEncodeToBitBudget(image, Settings(4, mode), budget);
      EXPECT_EQ(full.symbols.compare(0, s.symbols.size() - 1, s.symbols, 0, s.symbols.size() - 1), 0);
      EXPECT_EQ(full.refinement.compare(0, s.refinement.size(), s.refinement), 0);
      EXPECT_LE(s.bitsUsed - budget, 16 + 2 * 13);  // the last position's symbols and its pass's charge
    }
  }
}

TEST(WdrCoder, ErrorNeverGrowsWithTheBudget) {
  const ImagePlane image = TestTransform(64, 4, 9);
  for (WdrScanMode mode : kModes) {
    double former = std::numeric_limits<double>::infinity();
    for (std::int64_t budget = 0; budget <= 40000; budget += 250) {
      const WdrDecoded d =
          Decode(ArrayEncodeToBitBudget(image, Settings(4, mode), budget), WdrReconstruction::Truncated);
      const double error = MeanSquareError(d.plane, image);
      EXPECT_LE(error, former) << static_cast<int>(mode) << " " << budget;
      former = error;
    }
    // With the last refinement, at rates that double.
    former = std::numeric_limits<double>::infinity();
    for (double bpp : {0.125, 0.25, 0.5, 1.0, 2.0, 4.0}) {
      const WdrDecoded d = Decode(ArrayEncodeToBitBudget(image, Settings(4, mode), BitBudgetOfRate(64, bpp)));
      const double error = MeanSquareError(d.plane, image);
      EXPECT_LT(error, former) << static_cast<int>(mode) << " " << bpp;
      former = error;
    }
  }
}

TEST(WdrCoder, LosslessReproducesIntegerTransforms) {
  std::vector<std::pair<ImagePlane, int>> planes;
  planes.emplace_back(IntegerPlane(8, 300, 1), 2);
  planes.emplace_back(IntegerPlane(16, 5, 2), 4);
  planes.emplace_back(IntegerPlane(32, 2000, 3), 3);
  // An integer wavelet transform, with the image processor's scaling undone.
  ImagePlane picture(64, 64);
  for (int y = 0; y < 64; ++y)
    for (int x = 0; x < 64; ++x) picture.At(x, y) = static_cast<float>((x * 7 + y * 3 + (x * y) % 23) % 256);
  TransformTheImage(picture, 4, 2);
  ScalingOfWT(picture, 4, -1);
  for (float v : picture.v) ASSERT_EQ(v, std::nearbyint(v));
  planes.emplace_back(picture, 4);
  for (const auto& [plane, levels] : planes)
    for (WdrScanMode mode : kModes) {
      std::vector<Snapshot> coded, decoded;
      WdrEncodeSettings settings = Settings(levels, mode);
      settings.observer = Recorder(coded);
      const WdrStreams s = ArrayEncodeToBitBudgetLossless(plane, settings);
      ASSERT_EQ(s.status, WdrStatus::Ok);
      EXPECT_EQ(s.code, 101);
      EXPECT_EQ(coded.back().threshold, 1.0);  // the last pass is at threshold 1
      const WdrDecoded d = Decode(s, WdrReconstruction::LastRefinement, Recorder(decoded));
      EXPECT_TRUE(coded == decoded);
      EXPECT_EQ(d.plane.v, plane.v) << plane.width << " " << static_cast<int>(mode);
    }
}

TEST(WdrCoder, IntegerCodeUndoesItsScaling) {
  const ImagePlane plane = IntegerPlane(16, 100, 4);
  const WdrStreams s = ArrayEncodeToBitBudget(plane, Settings(2, WdrScanMode::DynamicParentChild, 201), 1'000'000);
  // Scaled by hand: the baseband (side 4) by 8, the rest of the corner of
  // side 8 by 4, all else by 2; the exponent is that plane's.
  ImagePlane scaled = plane;
  for (int y = 0; y < 16; ++y)
    for (int x = 0; x < 16; ++x) scaled.At(x, y) *= x < 4 && y < 4 ? 8.0f : (x < 8 && y < 8 ? 4.0f : 2.0f);
  EXPECT_EQ(s.exponent, GetThreshold(scaled).exponent);
  EXPECT_NE(s.exponent, GetThreshold(plane).exponent);
  const WdrDecoded d = Decode(s, WdrReconstruction::Truncated);
  EXPECT_EQ(d.plane.v, plane.v);
}

TEST(WdrCoder, MatchDistortionStopsAtTheTarget) {
  const ImagePlane image = TestTransform(32, 3, 21);
  for (WdrScanMode mode : kModes)
    for (double target : {20.0, 30.0, 40.0, 50.0}) {
      std::vector<Snapshot> coded;
      WdrEncodeSettings settings = Settings(3, mode);
      settings.observer = Recorder(coded);
      const WdrStreams s = ArrayEncodeToMatchDistortion(image, settings, target);
      ASSERT_EQ(s.status, WdrStatus::Ok);
      EXPECT_GE(s.psnr, target);
      // The PSNR of the encoder's own magnitudes, summed afresh.
      const Snapshot& last = coded.back();
      double sum = 0.0;
      for (std::size_t p = 0; p < image.v.size(); ++p) {
        const double e = (image.v[p] - last.signMap[p] * static_cast<double>(last.quantMag[p])) / 32.0;
        sum += e * e;
      }
      EXPECT_NEAR(s.psnr, FPSNR(sum), kPsnrAgreement * s.psnr);
      // The same events as the budget member's, cut earlier.
      const WdrStreams full = ArrayEncodeToBitBudget(image, Settings(3, mode), 1'000'000'000);
      EXPECT_EQ(full.symbols.compare(0, s.symbols.size() - 1, s.symbols, 0, s.symbols.size() - 1), 0);
      EXPECT_EQ(full.refinement.compare(0, s.refinement.size(), s.refinement), 0);
      EXPECT_EQ(Decode(s).status, WdrStatus::Ok);
    }
  // A code of 100 or above aims 10 log10 4 lower.
  const WdrStreams scaled = ArrayEncodeToMatchDistortion(image, Settings(3, WdrScanMode::ZigZag, 201), 40.0);
  EXPECT_GE(scaled.psnr, 40.0 - 10.0 * std::log10(4.0));
}

TEST(WdrCoder, RefusesBadInput) {
  EXPECT_EQ(ArrayEncodeToBitBudget(ImagePlane(8, 4), Settings(1, WdrScanMode::ZigZag), 100).status,
            WdrStatus::BadPlane);
  EXPECT_EQ(ArrayEncodeToBitBudget(ImagePlane(12, 12), Settings(1, WdrScanMode::ZigZag), 100).status,
            WdrStatus::BadPlane);
  EXPECT_EQ(ArrayEncodeToBitBudget(ImagePlane(8, 8), Settings(4, WdrScanMode::ZigZag), 100).status,
            WdrStatus::BadPlane);
  EXPECT_EQ(ArrayEncodeToBitBudget(ImagePlane(8, 8), Settings(1, static_cast<WdrScanMode>(5)), 100).status,
            WdrStatus::BadScanMode);
  EXPECT_EQ(ArrayEncodeToBitBudget(ImagePlane(8, 8), Settings(1, WdrScanMode::ZigZag, 7), 100).status,
            WdrStatus::BadCode);
  EXPECT_EQ(ArrayEncodeToBitBudget(ImagePlane(8, 8), Settings(1, WdrScanMode::ZigZag, 101), 100).status,
            WdrStatus::BadCode);
}

TEST(WdrCoder, MalformedStreamsAreRefused) {
  WdrStreams s = ArrayEncodeToBitBudget(HandPlane(), Settings(1, WdrScanMode::ZigZag), 70);
  WdrStreams bad = s;
  bad.symbols = "0+";  // a digit where a sign must stand
  EXPECT_EQ(Decode(bad).status, WdrStatus::BadStreams);
  bad = s;
  bad.symbols = "+111111+";  // a run past the list's end
  EXPECT_EQ(Decode(bad).status, WdrStatus::BadStreams);
  bad = s;
  bad.passCounts = {40};  // more than the plane holds
  bad.passes = 0;
  EXPECT_EQ(Decode(bad).status, WdrStatus::BadStreams);
  bad = s;
  bad.passCounts.pop_back();
  EXPECT_EQ(Decode(bad).status, WdrStatus::BadStreams);
  // Random streams on a real head: a status, never a crash.
  std::mt19937 rng(17);
  const std::string alphabet = "01+-";
  for (int trial = 0; trial < 2000; ++trial) {
    WdrStreams r = s;
    r.scanMode = kModes[trial % 4];
    r.symbols.clear();
    for (int i = 0; i < 40; ++i) r.symbols.push_back(alphabet[rng() % 4]);
    for (std::int32_t& c : r.passCounts) c = static_cast<std::int32_t>(rng() % 8) - 1;
    const WdrDecoded d = Decode(r);
    EXPECT_TRUE(d.status == WdrStatus::Ok || d.status == WdrStatus::BadStreams);
  }
}

}  // namespace
}  // namespace keldo::wavelet
