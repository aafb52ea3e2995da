// The workshop's coders as files: every member round trips through its
// bytes to the values the binary decoder gives from the same symbols, in
// every scan mode, at several budgets and PSNR targets; the charges of each
// stage summed afresh from the streams; file lengths against budgets; PSNR
// targets reached; the lossless codes exact on integer transforms; the
// codes and refusals of the forms' entry point; the report's text; and
// truncated, corrupted and nonsense files refused without a crash.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "wavelet/image_transform.h"
#include "wavelet/wdr_files.h"
#include "wavelet/workshop_entropy.h"

namespace keldo::wavelet {
namespace {

constexpr WdrScanMode kModes[] = {WdrScanMode::ZigZag, WdrScanMode::StaticTree, WdrScanMode::DynamicParentChild,
                                  WdrScanMode::DynamicContext};
constexpr int kSide = 64;
constexpr int kLevels = 3;
constexpr double kRates[] = {0.1, 0.5, 1.5};     // bpp
constexpr double kTargets[] = {24.0, 32.0, 40.0};  // dB
constexpr double kPsnrAgreement = 1e-9;           // relative, the encoder's PSNR against one summed here
const double kIntegerTargetDrop = 10.0 * std::log10(4.0);

// A smooth picture with texture and an edge, transformed by the 9/7 wavelet.
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

// The integer 5/3 transform of a byte picture, the processor's scaling undone:
// integers throughout.
ImagePlane IntegerTransform(int n, int levels, unsigned seed) {
  std::mt19937 rng(seed);
  ImagePlane p(n, n);
  for (int y = 0; y < n; ++y)
    for (int x = 0; x < n; ++x) p.At(x, y) = static_cast<float>((x * 7 + y * 3 + (x * y) % 23 + rng() % 9) % 256);
  TransformTheImage(p, levels, 2);
  ScalingOfWT(p, levels, -1);
  return p;
}

// Whether the largest magnitude of the plane as the lossless codes scale it
// is a power of two. The starting threshold is then that value itself, the
// first pass codes it as half of it, and the refinements of all passes down
// to threshold 1 reach one less: the lossless codes are exact only on
// planes where this is false, which the fixtures check.
bool LargestScaledIsPowerOfTwo(const ImagePlane& plane, int levels) {
  ImagePlane scaled = plane;
  ScalingOfWT(scaled, levels, 1);
  double largest = 0.0;
  for (float v : scaled.v) largest = std::max(largest, std::fabs(static_cast<double>(v)));
  int exponent = 0;
  return std::frexp(largest, &exponent) == 0.5;
}

WdrMemberSettings Member(WdrScanMode mode, bool wc2 = false) {
  WdrMemberSettings s;
  s.levels = kLevels;
  s.scanMode = mode;
  s.head.wc2 = wc2;
  return s;
}

enum class Stage { Binary, Prefix, Arith0, ArithMixed };

struct BudgetMember {
  const char* name;
  Stage stage;
  std::function<WdrCodedFile(const ImagePlane&, const WdrMemberSettings&, std::int64_t)> run;
};
struct PsnrMember {
  const char* name;
  Stage stage;
  std::function<WdrCodedFile(const ImagePlane&, const WdrMemberSettings&, double)> run;
};
struct LosslessMember {
  const char* name;
  Stage stage;
  int code;
  std::function<WdrCodedFile(const ImagePlane&, const WdrMemberSettings&)> run;
};

std::vector<BudgetMember> BudgetMembers() {
  return {{"binary", Stage::Binary,
           [](const ImagePlane& t, const WdrMemberSettings& s, std::int64_t b) {
             return ArrayEncodeToBitBudget(t, s, b);
           }},
          {"prefix", Stage::Prefix, ArrayEncodeHuffToBitBudget},
          {"arith", Stage::Arith0, ArrayEncodeArithToBitBudget},
          {"arith MM", Stage::ArithMixed, ArrayEncodeArithToBitBudgetMM}};
}
std::vector<PsnrMember> PsnrMembers() {
  return {{"binary", Stage::Binary,
           [](const ImagePlane& t, const WdrMemberSettings& s, double d) {
             return ArrayEncodeToMatchDistortion(t, s, d);
           }},
          {"prefix", Stage::Prefix, ArrayEncodeHuffToMatchDistortion},
          {"arith", Stage::Arith0, ArrayEncodeArithToMatchDistortion},
          {"arith MM", Stage::ArithMixed, ArrayEncodeArithToMatchDistortionMM}};
}
std::vector<LosslessMember> LosslessMembers() {
  return {{"binary", Stage::Binary, 101,
           [](const ImagePlane& t, const WdrMemberSettings& s) { return ArrayEncodeToBitBudgetLossless(t, s); }},
          {"arith", Stage::Arith0, 103, ArrayEncodeArithToBitBudgetLossless},
          {"arith MM", Stage::ArithMixed, 104, ArrayEncodeArithToBitBudgetMMLossless}};
}

int StageCode(Stage stage) { return static_cast<int>(stage) + 1; }

// The refinement bits as the file gives them back: the binary and prefix
// stages pack them eight a byte, so a reader sees the padding zeros too;
// the arithmetic streams end on their end symbol.
std::string StoredRefinement(const std::string& bits, Stage stage) {
  if (stage == Stage::Arith0 || stage == Stage::ArithMixed) return bits;
  std::string padded = bits;
  padded.resize((bits.size() + 7) / 8 * 8, '0');
  return padded;
}

// Encode -> bytes -> read -> streams -> decoded: the symbols and bits back
// as the encoder made them, and the decoded matrix the binary decoder's
// from those very symbols.
void ExpectRoundTrip(const WdrCodedFile& coded, Stage stage, const std::string& what) {
  SCOPED_TRACE(what);
  ASSERT_EQ(coded.status, WdrStatus::Ok);
  const std::vector<std::uint8_t> bytes = WriteWicFile(coded.file);
  ASSERT_FALSE(bytes.empty());
  EXPECT_EQ(bytes[0], coded.file.code + 1);
  const std::optional<WicFile> read = ReadWicFile(bytes, coded.file.wc2);
  ASSERT_TRUE(read.has_value());
  const std::optional<WdrStreams> streams = GetCompressedData2(*read);
  ASSERT_TRUE(streams.has_value());
  EXPECT_EQ(streams->symbols, coded.streams.symbols);
  EXPECT_EQ(streams->refinement, StoredRefinement(coded.streams.refinement, stage));
  EXPECT_EQ(streams->passCounts, coded.streams.passCounts);
  WdrStreams model = coded.streams;
  model.refinement = StoredRefinement(model.refinement, stage);
  const WdrDecoded expected = Decode(model);
  ASSERT_EQ(expected.status, WdrStatus::Ok);
  const std::optional<WdrDecodedFile> decoded = DecodeWicFile(bytes, coded.file.wc2);
  ASSERT_TRUE(decoded.has_value());
  EXPECT_EQ(decoded->plane.v, expected.plane.v);
  EXPECT_EQ(decoded->code, coded.streams.code);
  EXPECT_EQ(decoded->levels, coded.streams.levels);
  EXPECT_EQ(decoded->scanMode, coded.streams.scanMode);
}

double MeanSquare(const ImagePlane& a, const ImagePlane& b) {
  double sum = 0.0;
  const double n = a.width;
  for (std::size_t p = 0; p < a.v.size(); ++p) {
    const double e = (static_cast<double>(a.v[p]) - b.v[p]) / n;
    sum += e * e;
  }
  return sum;
}

// The charges summed afresh from the streams: the symbols before the stop
// mark and the refinement bits at the stage's prices, 16 a pass.
std::int64_t ChargesOf(const WdrStreams& s, Stage stage) {
  const std::string symbols = s.symbols.substr(0, s.symbols.size() - 1);
  std::int64_t bits = 16 * (s.passes + 1);
  if (stage == Stage::Binary) return bits + 2 * static_cast<std::int64_t>(symbols.size()) + s.refinement.size();
  if (stage == Stage::Prefix) {
    for (char c : symbols) bits += c == '0' ? 1 : c == '1' ? 2 : 3;
    return bits + static_cast<std::int64_t>(s.refinement.size());
  }
  // Arithmetic: the bits each stream has emitted after its last charged
  // symbol, coded again here symbol by symbol.
  WorkshopArithEncoder significance(stage == Stage::ArithMixed ? WorkshopArithStream::SignificanceMixedOrders
                                                               : WorkshopArithStream::Significance0Order);
  WorkshopArithEncoder refinement(WorkshopArithStream::Refinement);
  for (char c : symbols) significance.EncodeSymbol(CharValue(std::string(1, c), 0, WorkshopAlphabet::Significance));
  for (char c : s.refinement) refinement.EncodeSymbol(c == '1' ? 1 : 0);
  return bits + significance.BitsEmitted() + refinement.BitsEmitted();
}

TEST(WdrFiles, BudgetMembersRoundTripInEveryMode) {
  const ImagePlane image = TestTransform(kSide, kLevels, 5);
  for (const BudgetMember& member : BudgetMembers())
    for (WdrScanMode mode : kModes)
      for (double rate : kRates) {
        const std::int64_t budget = BitBudgetOfRate(kSide, rate);
        const WdrCodedFile coded = member.run(image, Member(mode), budget);
        ExpectRoundTrip(coded, member.stage,
                        std::string(member.name) + " mode " + std::to_string(static_cast<int>(mode)) + " bpp " +
                            std::to_string(rate));
        EXPECT_EQ(coded.streams.code, StageCode(member.stage));
        // The budget stopped it, and the charges are the start and the stage's own.
        EXPECT_GT(coded.streams.bitsUsed, budget);
        const std::int64_t start = member.stage == Stage::Binary ? 172 : 188;
        EXPECT_EQ(coded.streams.bitsUsed, start + ChargesOf(coded.streams, member.stage)) << member.name;
      }
}

TEST(WdrFiles, PsnrMembersRoundTripAndReachTheirTargets) {
  const ImagePlane image = TestTransform(kSide, kLevels, 6);
  for (const PsnrMember& member : PsnrMembers())
    for (WdrScanMode mode : kModes)
      for (double target : kTargets) {
        const WdrCodedFile coded = member.run(image, Member(mode), target);
        ExpectRoundTrip(coded, member.stage,
                        std::string(member.name) + " mode " + std::to_string(static_cast<int>(mode)) + " dB " +
                            std::to_string(target));
        EXPECT_EQ(coded.streams.code, StageCode(member.stage));
        EXPECT_GE(coded.streams.psnr, target);
        // No start charge on the PSNR members.
        EXPECT_EQ(coded.streams.bitsUsed, ChargesOf(coded.streams, member.stage)) << member.name;
        // The decoder's magnitudes as decoded (no midpoint) are the
        // encoder's: their PSNR against the transform, summed here.
        const std::optional<WicFile> read = ReadWicFile(WriteWicFile(coded.file), false);
        ASSERT_TRUE(read.has_value());
        const std::optional<WdrStreams> streams = GetCompressedData2(*read);
        ASSERT_TRUE(streams.has_value());
        const WdrDecoded truncated = Decode(*streams, WdrReconstruction::Truncated);
        const double psnr = FPSNR(MeanSquare(image, truncated.plane));
        EXPECT_GE(psnr, target);
        EXPECT_NEAR(psnr, coded.streams.psnr, kPsnrAgreement * psnr);
      }
}

TEST(WdrFiles, StagesCodeTheSameEventsAsTheBinaryMember) {
  // The stages change how the streams are coded and charged, not what is
  // coded: to a PSNR every stage stops at the same event.
  const ImagePlane image = TestTransform(kSide, kLevels, 7);
  for (WdrScanMode mode : kModes) {
    const WdrCodedFile binary = ArrayEncodeToMatchDistortion(image, Member(mode), 33.0);
    for (const PsnrMember& member : PsnrMembers()) {
      const WdrCodedFile other = member.run(image, Member(mode), 33.0);
      EXPECT_EQ(other.streams.symbols, binary.streams.symbols) << member.name;
      EXPECT_EQ(other.streams.refinement, binary.streams.refinement) << member.name;
    }
  }
}

TEST(WdrFiles, TwoDimensionalFilesChargeTheirByte) {
  const ImagePlane image = TestTransform(kSide, kLevels, 8);
  for (WdrScanMode mode : kModes) {
    WdrMemberSettings settings = Member(mode, true);
    settings.head.waveletByte = 23;  // a region: wavelet 3
    settings.head.roiValue = 1234;
    const WdrCodedFile binary = ArrayEncodeToBitBudget(image, settings, 2000);
    EXPECT_EQ(binary.streams.bitsUsed, 180 + ChargesOf(binary.streams, Stage::Binary));
    ExpectRoundTrip(binary, Stage::Binary, ".wc2 binary");
    const WdrCodedFile arith = ArrayEncodeArithToBitBudgetMM(image, settings, 2000);
    EXPECT_EQ(arith.streams.bitsUsed, 188 + ChargesOf(arith.streams, Stage::ArithMixed));
    ExpectRoundTrip(arith, Stage::ArithMixed, ".wc2 arith MM");
    const std::optional<WdrDecodedFile> d = DecodeWicFile(WriteWicFile(arith.file), true);
    ASSERT_TRUE(d.has_value());
    EXPECT_EQ(d->waveletByte, 23);
    EXPECT_EQ(d->roiValue, 1234);
  }
}

// How far a budget member's file may lie from its budget. The file holds
// 17 bytes of head and trailer and 2 a pass; the charges count 172 or 188
// bits and 16 a pass, so the start charge holds 36 (binary), 20 (prefix) or
// 52 (arithmetic) bits beyond the head, against which stand the last
// symbol's overshoot of the budget, the uncharged stop mark, the arithmetic
// streams' closing bits and the byte padding of each stream. Measured on
// this plane, file bits less budget: binary -11..0, prefix +8..+16,
// arithmetic -11..+8.
constexpr std::int64_t kFileBelowBudget = 32;
constexpr std::int64_t kFileAboveBudget = 24;

TEST(WdrFiles, FileLengthsMeetTheBudgets) {
  const ImagePlane image = TestTransform(128, 4, 9);
  for (const BudgetMember& member : BudgetMembers())
    for (WdrScanMode mode : kModes)
      for (double rate : {0.05, 0.25, 0.5, 1.0, 2.0}) {
        WdrMemberSettings settings = Member(mode);
        settings.levels = 4;
        const std::int64_t budget = BitBudgetOfRate(128, rate);
        const WdrCodedFile coded = member.run(image, settings, budget);
        ASSERT_EQ(coded.status, WdrStatus::Ok);
        const std::int64_t fileBits = 8 * static_cast<std::int64_t>(WriteWicFile(coded.file).size());
        EXPECT_GE(fileBits, budget - kFileBelowBudget) << member.name << " " << rate;
        EXPECT_LE(fileBits, budget + kFileAboveBudget) << member.name << " " << rate;
      }
}

TEST(WdrFiles, LosslessMembersReproduceIntegerTransforms) {
  const ImagePlane image = IntegerTransform(kSide, kLevels, 10);
  for (float v : image.v) ASSERT_EQ(v, std::nearbyint(v));
  ASSERT_FALSE(LargestScaledIsPowerOfTwo(image, kLevels));
  for (const LosslessMember& member : LosslessMembers())
    for (WdrScanMode mode : kModes)
      for (bool wc2 : {false, true}) {
        const WdrCodedFile coded = member.run(image, Member(mode, wc2));
        ExpectRoundTrip(coded, member.stage, std::string(member.name) + " lossless");
        EXPECT_EQ(coded.streams.code, member.code);
        const std::int64_t start = member.stage == Stage::Binary ? (wc2 ? 180 : 172) : 188;
        EXPECT_EQ(coded.streams.bitsUsed, start + ChargesOf(coded.streams, member.stage));
        const std::optional<WdrDecodedFile> d = DecodeWicFile(WriteWicFile(coded.file), wc2);
        ASSERT_TRUE(d.has_value());
        EXPECT_EQ(d->plane.v, image.v) << member.name << " mode " << static_cast<int>(mode);
      }
}

TEST(WdrFiles, IntegerCodesUndoTheirScaling) {
  // Lossy codes of an integer transform at a rate high enough to be exact:
  // the decoded matrix is the transform, not its scaled form.
  const ImagePlane image = IntegerTransform(kSide, kLevels, 11);
  WdrMemberSettings settings = Member(WdrScanMode::DynamicParentChild);
  settings.integerCode = true;
  const WdrCodedFile binary = ArrayEncodeToBitBudget(image, settings, 1'000'000);
  const WdrCodedFile arith = ArrayEncodeArithToBitBudget(image, settings, 1'000'000);
  const WdrCodedFile mixed = ArrayEncodeArithToBitBudgetMM(image, settings, 1'000'000);
  EXPECT_EQ(binary.streams.code, 201);
  EXPECT_EQ(arith.streams.code, 203);
  EXPECT_EQ(mixed.streams.code, 204);
  for (const WdrCodedFile* coded : {&binary, &arith, &mixed}) {
    ExpectRoundTrip(*coded, coded == &binary ? Stage::Binary : coded == &arith ? Stage::Arith0 : Stage::ArithMixed,
                    "integer code");
    const WdrDecoded truncated = Decode(coded->streams, WdrReconstruction::Truncated);
    EXPECT_EQ(truncated.plane.v, image.v);
  }
  // To a PSNR the target is 10 log10 4 lower for these codes.
  const WdrCodedFile psnr = ArrayEncodeArithToMatchDistortion(image, settings, 40.0);
  EXPECT_EQ(psnr.streams.code, 203);
  EXPECT_GE(psnr.streams.psnr, 40.0 - kIntegerTargetDrop);
  ExpectRoundTrip(psnr, Stage::Arith0, "integer code to a PSNR");
}

WdrEncodeOptions Options(WdrEntropyStage stage, WdrSourceModel model, WdrStopKind stop, double target,
                         bool lossless = false) {
  WdrEncodeOptions o;
  o.levels = kLevels;
  o.scanMode = 2;
  o.stage = stage;
  o.model = model;
  o.stopKind = stop;
  o.target = target;
  o.lossless = lossless;
  return o;
}

TEST(WdrFiles, EntryPointPicksTheMemberAndCode) {
  const ImagePlane image = IntegerTransform(kSide, kLevels, 13);
  ASSERT_FALSE(LargestScaledIsPowerOfTwo(image, kLevels));
  using S = WdrEntropyStage;
  using M = WdrSourceModel;
  struct Case {
    S stage;
    M model;
    bool lossless;
    double target;
    int code;
  };
  const Case cases[] = {
      {S::Binary, M::ZeroOrder, false, 1.0, 1},       {S::Huffman, M::ZeroOrder, false, 1.0, 2},
      {S::Arithmetic, M::ZeroOrder, false, 1.0, 3},   {S::Arithmetic, M::MixedOrders, false, 1.0, 4},
      {S::Binary, M::ZeroOrder, true, 1.0, 201},      {S::Huffman, M::ZeroOrder, true, 1.0, 2},
      {S::Arithmetic, M::ZeroOrder, true, 1.0, 203},  {S::Arithmetic, M::MixedOrders, true, 1.0, 204},
      {S::Binary, M::ZeroOrder, true, 0.0, 101},      {S::Huffman, M::MixedOrders, true, 0.0, 101},
      {S::Arithmetic, M::ZeroOrder, true, 0.0, 103},  {S::Arithmetic, M::MixedOrders, true, 0.0, 104},
  };
  for (const Case& c : cases)
    for (WdrStopKind stop : {WdrStopKind::BitRate, WdrStopKind::Psnr}) {
      const double target = c.target == 0.0 ? 0.0 : stop == WdrStopKind::Psnr ? 35.0 : c.target;
      const WdrEncodeResult r = EncodeTransform(image.v, kSide, Options(c.stage, c.model, stop, target, c.lossless));
      ASSERT_EQ(r.status, WdrEncodeStatus::Ok);
      EXPECT_EQ(r.message, 0);
      EXPECT_EQ(r.file.code, c.code) << static_cast<int>(c.stage) << " " << c.lossless << " " << c.target;
      const std::vector<std::uint8_t> bytes = WriteWicFile(r.file);
      EXPECT_EQ(bytes[0], c.code + 1);
      const std::optional<WdrDecodedFile> d = DecodeWicFile(bytes, false);
      ASSERT_TRUE(d.has_value());
      if (c.target == 0.0) {
        EXPECT_EQ(d->plane.v, image.v);
      }
      if (stop == WdrStopKind::Psnr && c.target != 0.0) {
        ASSERT_TRUE(r.report.psnr.has_value());
        EXPECT_GE(*r.report.psnr, c.code > 100 ? 35.0 - kIntegerTargetDrop : 35.0);
      }
      if (stop == WdrStopKind::BitRate && c.target != 0.0) {
        EXPECT_FALSE(r.report.psnr.has_value());
        EXPECT_GT(r.streams.bitsUsed, BitBudgetOfRate(kSide, 1.0));
      }
    }
}

TEST(WdrFiles, EntryPointRefusesBadOptions) {
  const ImagePlane image = TestTransform(kSide, kLevels, 13);
  using S = WdrEntropyStage;
  using M = WdrSourceModel;
  auto message = [&](WdrStopKind stop, double target, bool lossless) {
    return EncodeTransform(image.v, kSide, Options(S::Arithmetic, M::ZeroOrder, stop, target, lossless)).message;
  };
  EXPECT_EQ(message(WdrStopKind::Psnr, 0.0, false), 81);
  EXPECT_EQ(message(WdrStopKind::BitRate, 0.0, false), 82);
  EXPECT_EQ(message(WdrStopKind::Psnr, -1.0, true), 83);
  EXPECT_EQ(message(WdrStopKind::BitRate, -0.5, true), 84);
  EXPECT_EQ(message(WdrStopKind::BitRate, std::nan(""), false), 82);
  WdrEncodeOptions o = Options(S::Binary, M::ZeroOrder, WdrStopKind::BitRate, 1.0);
  o.levels = 5;  // 64 allows 4
  EXPECT_EQ(EncodeTransform(image.v, kSide, o).status, WdrEncodeStatus::BadLevels);
  EXPECT_EQ(EncodeTransform(image.v, kSide, o).message, 21);
  o.levels = 4;
  EXPECT_EQ(EncodeTransform(image.v, kSide, o).status, WdrEncodeStatus::Ok);
  o.scanMode = 5;
  EXPECT_EQ(EncodeTransform(image.v, kSide, o).status, WdrEncodeStatus::BadScanMode);
  o.scanMode = 1;
  EXPECT_EQ(EncodeTransform(image.v, 32, o).status, WdrEncodeStatus::BadPlane);
  EXPECT_EQ(EncodeTransform(std::vector<float>(100), kSide, o).status, WdrEncodeStatus::BadPlane);
}

TEST(WdrFiles, ReportCountsWhatWasCoded) {
  const ImagePlane image = TestTransform(kSide, kLevels, 14);
  WdrEncodeOptions o = Options(WdrEntropyStage::Huffman, WdrSourceModel::ZeroOrder, WdrStopKind::BitRate, 0.75);
  const WdrEncodeResult r = EncodeTransform(image.v, kSide, o);
  ASSERT_EQ(r.status, WdrEncodeStatus::Ok);
  const std::string& s = r.streams.symbols;
  EXPECT_EQ(r.report.symbolCount, static_cast<std::int64_t>(s.size()));
  EXPECT_EQ(r.report.symbolCounts[0], std::count(s.begin(), s.end(), '0'));
  EXPECT_EQ(r.report.symbolCounts[1], std::count(s.begin(), s.end(), '1'));
  EXPECT_EQ(r.report.symbolCounts[2], std::count(s.begin(), s.end(), '+'));
  EXPECT_EQ(r.report.symbolCounts[3], std::count(s.begin(), s.end(), '-'));
  // Signs: one a significant coefficient and the stop mark.
  EXPECT_EQ(r.report.symbolCounts[2] + r.report.symbolCounts[3], r.streams.sigTotal + 1);
  EXPECT_EQ(r.report.significantCount, r.streams.sigTotal);
  EXPECT_EQ(r.report.bitsUsed, r.streams.bitsUsed);
  EXPECT_EQ(r.report.minimumFileBytes, (r.streams.bitsUsed + 7) / 8);
  EXPECT_EQ(r.report.completedPasses, r.streams.passes);  // the last pass was cut by the budget
  // Lossless: every pass completes.
  o = Options(WdrEntropyStage::Arithmetic, WdrSourceModel::ZeroOrder, WdrStopKind::BitRate, 0.0, true);
  const ImagePlane integer = IntegerTransform(kSide, kLevels, 15);
  const WdrEncodeResult exact = EncodeTransform(integer.v, kSide, o);
  EXPECT_EQ(exact.report.completedPasses, exact.streams.passes + 1);
}

TEST(WdrFiles, ReportText) {
  WdrEncodeReport r;
  r.completedPasses = 7;
  r.symbolCount = 1234;
  r.minimumFileBytes = 512;
  r.significantCount = 345;
  r.symbolCounts = {400, 489, 200, 145};
  EXPECT_EQ(WdrReportText(r),
            "Number of Completed Passes: 7\r\n"
            "Number of Symbols: 1234.  Minimum File length: 512  bytes\r\n"
            "Number of significant values: 345\r\n"
            "Symbol Counts. 0: 400.  1: 489.  +: 200.  -: 145\r\n");
  r.psnr = 31.4159;
  EXPECT_EQ(WdrReportText(r).substr(WdrReportText(r).rfind("Distortion")), "Distortion (PSNR): 31.42\r\n");
}

std::vector<std::vector<std::uint8_t>> SampleFiles() {
  const ImagePlane image = TestTransform(kSide, kLevels, 16);
  std::vector<std::vector<std::uint8_t>> files;
  for (const BudgetMember& member : BudgetMembers())
    files.push_back(WriteWicFile(member.run(image, Member(WdrScanMode::DynamicContext), 3000).file));
  return files;
}

TEST(WdrFiles, TruncatedFilesGiveNothing) {
  for (const std::vector<std::uint8_t>& file : SampleFiles()) {
    ASSERT_TRUE(DecodeWicFile(file, false).has_value());
    for (std::size_t length = 0; length < file.size(); ++length)
      EXPECT_FALSE(DecodeWicFile(std::vector<std::uint8_t>(file.begin(), file.begin() + length), false).has_value())
          << "code " << int{file[0]} - 1 << " length " << length;
  }
}

TEST(WdrFiles, CorruptStreamsNeverCrash) {
  std::mt19937 rng(18);
  int refused = 0, decoded = 0;
  for (const std::vector<std::uint8_t>& file : SampleFiles()) {
    for (int trial = 0; trial < 300; ++trial) {
      std::vector<std::uint8_t> bad = file;
      const int flips = 1 + static_cast<int>(rng() % 4);
      for (int k = 0; k < flips; ++k) bad[rng() % bad.size()] ^= static_cast<std::uint8_t>(1 + rng() % 255);
      const std::optional<WdrDecodedFile> d = DecodeWicFile(bad, trial % 2 == 1);
      if (d) {
        ++decoded;
        EXPECT_EQ(d->plane.v.size(), static_cast<std::size_t>(d->plane.width) * d->plane.height);
      } else {
        ++refused;
      }
    }
  }
  EXPECT_GT(refused, 0);
  EXPECT_GT(decoded, 0);  // a flipped refinement bit still decodes
}

TEST(WdrFiles, ArithmeticStreamsWithoutTheirEndGiveNothing) {
  const ImagePlane image = TestTransform(kSide, kLevels, 19);
  for (bool mixed : {false, true}) {
    const WdrCodedFile coded = mixed ? ArrayEncodeArithToBitBudgetMM(image, Member(WdrScanMode::ZigZag), 3000)
                                     : ArrayEncodeArithToBitBudget(image, Member(WdrScanMode::ZigZag), 3000);
    WicFile cut = coded.file;
    cut.significance.resize(cut.significance.size() / 2);
    EXPECT_FALSE(GetCompressedData2(cut).has_value());
    cut = coded.file;
    cut.refinementBytes.resize(cut.refinementBytes.size() / 2);
    EXPECT_FALSE(GetCompressedData2(cut).has_value());
    // Random bytes in place of the significance stream: refused or bounded.
    std::mt19937 rng(mixed ? 20 : 21);
    for (int trial = 0; trial < 200; ++trial) {
      WicFile noise = coded.file;
      for (std::uint8_t& b : noise.significance) b = static_cast<std::uint8_t>(rng());
      const std::optional<WdrStreams> s = GetCompressedData2(noise);
      if (s) {
        EXPECT_LE(s->symbols.size(), 1 + static_cast<std::size_t>(coded.streams.sigTotal) * (1 + 12));
      }
    }
    // Pass counts beyond the plane.
    WicFile big = coded.file;
    big.passCounts[0] = kSide * kSide + 1;
    EXPECT_FALSE(GetCompressedData2(big).has_value());
  }
}

TEST(WdrFiles, NonsenseAndUnknownCodesGiveNothing) {
  EXPECT_FALSE(DecodeWicFile({}, false).has_value());
  EXPECT_FALSE(DecodeWicFile({}, true).has_value());
  std::vector<std::uint8_t> text(200);
  for (std::size_t i = 0; i < text.size(); ++i) text[i] = static_cast<std::uint8_t>("nonsense "[i % 9]);
  EXPECT_FALSE(DecodeWicFile(text, false).has_value());
  EXPECT_FALSE(DecodeWicFile(text, true).has_value());
  // A well-formed trailer behind a code of no stage.
  const ImagePlane image = TestTransform(kSide, kLevels, 22);
  WicFile f = ArrayEncodeToBitBudget(image, Member(WdrScanMode::ZigZag), 2000).file;
  f.code = 5;
  EXPECT_FALSE(DecodeWicFile(WriteWicFile(f), false).has_value());
  // Stage 0 (characters) is read though no encoder writes it.
  WicFile plain = ArrayEncodeToBitBudget(image, Member(WdrScanMode::ZigZag), 2000).file;
  const WdrStreams streams = *GetCompressedData2(plain);
  plain.code = 0;
  const std::optional<WdrDecodedFile> d = DecodeWicFile(WriteWicFile(plain), false);
  ASSERT_TRUE(d.has_value());
  WdrStreams asZero = streams;
  asZero.code = 0;
  EXPECT_EQ(d->plane.v, Decode(asZero).plane.v);
}

// The region members: with every position in the region they code what the
// plain member codes; with none, once the shared budget is spent, nothing
// new turns significant, while the values already significant keep their
// refinement bits.
TEST(WdrFiles, RegionMembersWeighTheSignificanceTestOnly) {
  const int n = 64;
  const ImagePlane transform = TestTransform(n, kLevels, 11);
  const std::int64_t budget = BitBudgetOfRate(n, 1.0);
  WdrMemberSettings plainSettings = Member(WdrScanMode::ZigZag, true);
  const WdrCodedFile plain = ArrayEncodeArithToBitBudgetMM(transform, plainSettings, budget);
  const std::vector<std::uint8_t> all(static_cast<std::size_t>(n) * n, 1), none(all.size(), 0);
  WdrMemberSettings whole = plainSettings;
  whole.region = {&all, 0};
  const WdrCodedFile same = ROIArrayEncodeArithToBitBudgetMM(transform, whole, budget);
  ASSERT_EQ(same.status, WdrStatus::Ok);
  EXPECT_EQ(same.streams.symbols, plain.streams.symbols);
  EXPECT_EQ(same.streams.refinement, plain.streams.refinement);
  // No region after the first 600 bits: the symbols stop growing but for
  // the passes' ends, and the refinement goes on.
  WdrMemberSettings empty = plainSettings;
  empty.region = {&none, 600};
  const WdrCodedFile early = ROIArrayEncodeArithToBitBudgetMM(transform, empty, budget);
  ASSERT_EQ(early.status, WdrStatus::Ok);
  const std::int32_t significant = early.streams.sigTotal;
  EXPECT_GT(significant, 0);
  EXPECT_LT(significant, plain.streams.sigTotal);
  EXPECT_GT(early.streams.refinement.size(), static_cast<std::size_t>(significant));
  const std::optional<WdrDecodedFile> decoded = DecodeWicFile(WriteWicFile(early.file), true);
  ASSERT_TRUE(decoded.has_value());
  std::int32_t nonZero = 0;
  for (float v : decoded->plane.v) nonZero += v != 0.0f ? 1 : 0;
  EXPECT_EQ(nonZero, significant);
  // A mask of another size is refused.
  const std::vector<std::uint8_t> shortMask(10, 1);
  WdrMemberSettings wrong = plainSettings;
  wrong.region = {&shortMask, 0};
  EXPECT_EQ(ROIArrayEncodeArithToBitBudgetMM(transform, wrong, budget).status, WdrStatus::BadPlane);
  EXPECT_EQ(ROIArrayEncodeArithToBitBudgetMMLossless(transform, plainSettings).status, WdrStatus::BadPlane);
}

}  // namespace
}  // namespace keldo::wavelet
