// The workshop's compressed files, .wic and .wc2, byte by byte: heads built
// here field by field, the stage 1 packing worked by hand, the pass counts'
// two-integer form with its multiple-of-32000 slip, and every stage written
// and read back.

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "wavelet/wic_file.h"

namespace keldo::wavelet {
namespace {

void Put(std::vector<std::uint8_t>& out, std::int64_t v, int size) {
  for (int k = 0; k < size; ++k) out.push_back(static_cast<std::uint8_t>((v >> (8 * k)) & 0xFF));
}

// A trailer for N = 64, scan mode 2, 3 levels, exponent 9, the last pass
// and the counts' 16-bit integers.
void Trailer(std::vector<std::uint8_t>& out, int passes, const std::vector<std::int16_t>& counts) {
  Put(out, 64, 4);
  out.push_back(2);
  out.push_back(3);
  out.push_back(9);
  out.push_back(static_cast<std::uint8_t>(passes));
  for (std::int16_t c : counts) Put(out, c, 2);
}

TEST(WicFile, StagesComeFromTheCode) {
  EXPECT_EQ(StageOfCode(0), 0);
  EXPECT_EQ(StageOfCode(1), 1);
  EXPECT_EQ(StageOfCode(4), 4);
  EXPECT_EQ(StageOfCode(101), 1);
  EXPECT_EQ(StageOfCode(103), 3);
  EXPECT_EQ(StageOfCode(104), 4);
  EXPECT_EQ(StageOfCode(189), 89);
  EXPECT_EQ(StageOfCode(201), 1);
  EXPECT_EQ(StageOfCode(204), 4);
}

TEST(WicFile, SymbolsPackFourAByteFromTheLowBits) {
  // "1", "+", "-", "0" -> 1 + 2*4 + 3*16 + 0*64 = 57; then "-" alone -> 3.
  EXPECT_EQ(PackSymbols("1+-0-"), (std::vector<std::uint8_t>{57, 3}));
  EXPECT_EQ(UnpackSymbols({57, 3}, 5), "1+-0-");
  EXPECT_EQ(UnpackSymbols({57, 3}, 8), "1+-0-000");
  // Refinement bits eight a byte, the first lowest: "10000001" "1".
  EXPECT_EQ(PackRefinement("100000011"), (std::vector<std::uint8_t>{0x81, 0x01}));
  EXPECT_EQ(UnpackRefinement({0x81, 0x01}), "1000000110000000");
}

TEST(WicFile, AStage1FileReadsFieldByField) {
  std::vector<std::uint8_t> bytes;
  bytes.push_back(2);  // code 1
  Put(bytes, 5, 4);    // five symbols
  bytes.push_back(57);
  bytes.push_back(3);
  Put(bytes, 2, 4);  // two refinement bytes
  bytes.push_back(0x81);
  bytes.push_back(0x01);
  Trailer(bytes, 2, {12, 30, -500, 2});
  const std::optional<WicFile> f = ReadWicFile(bytes, false);
  ASSERT_TRUE(f);
  EXPECT_EQ(f->code, 1);
  EXPECT_EQ(f->count, 5);
  EXPECT_EQ(f->symbols, "1+-0-");
  EXPECT_EQ(f->refinement, "1000000110000000");
  EXPECT_EQ(f->n, 64);
  EXPECT_EQ(f->scanMode, 2);
  EXPECT_EQ(f->levels, 3);
  EXPECT_EQ(f->exponent, 9);
  EXPECT_EQ(f->passes, 2);
  // -500 then 2: 2 * 32000 + 500.
  EXPECT_EQ(f->passCounts, (std::vector<std::int32_t>{12, 30, 64500}));
}

TEST(WicFile, AWc2FileCarriesItsWaveletByteAndRegion) {
  std::vector<std::uint8_t> bytes;
  bytes.push_back(4);  // code 3: arithmetic, one model
  Put(bytes, 3, 4);    // three bytes of significance
  bytes.push_back(23);  // wavelet 3 with a region
  Put(bytes, 777, 4);
  bytes.insert(bytes.end(), {9, 8, 7});
  Put(bytes, 1, 4);
  bytes.push_back(5);
  Trailer(bytes, 0, {4});  // no pass finished: one entry
  const std::optional<WicFile> f = ReadWicFile(bytes, true);
  ASSERT_TRUE(f);
  EXPECT_TRUE(f->HasRegion());
  EXPECT_EQ(f->Wavelet(), 3);
  EXPECT_EQ(f->roiValue, 777);
  EXPECT_EQ(f->significance, (std::vector<std::uint8_t>{9, 8, 7}));
  EXPECT_EQ(f->refinementBytes, (std::vector<std::uint8_t>{5}));
  EXPECT_EQ(f->passes, 0);
  EXPECT_EQ(f->passCounts, std::vector<std::int32_t>{4});
  EXPECT_EQ(WriteWicFile(*f), bytes);
  // Without its region a .wc2 goes straight on to the streams.
  std::vector<std::uint8_t> plain = {4};
  Put(plain, 1, 4);
  plain.push_back(1);
  plain.push_back(42);
  Put(plain, 0, 4);
  Trailer(plain, 0, {4});
  const std::optional<WicFile> p = ReadWicFile(plain, true);
  ASSERT_TRUE(p);
  EXPECT_FALSE(p->HasRegion());
  EXPECT_EQ(p->significance, std::vector<std::uint8_t>{42});
}

TEST(WicFile, EveryStageWritesAndReadsBack) {
  for (int code : {0, 1, 2, 3, 4, 101, 103, 104, 201, 203, 204}) {
    WicFile f;
    f.code = code;
    f.wc2 = code % 2 == 0;
    f.waveletByte = 2;
    const int stage = StageOfCode(code);
    if (stage <= 1) {
      f.symbols = "01+-+-10";
      f.refinement = stage == 0 ? "0110" : "01100000";
    } else {
      f.count = 8;
      f.significance = {1, 2, 3, 250};
      f.refinementBytes = {7, 0};
    }
    f.n = 256;
    f.scanMode = 4;
    f.levels = 6;
    f.exponent = 12;
    f.passes = 3;
    f.passCounts = {5, 32000, 32001, 70000};
    const std::vector<std::uint8_t> bytes = WriteWicFile(f);
    EXPECT_EQ(bytes[0], code + 1);
    const std::optional<WicFile> back = ReadWicFile(bytes, f.wc2);
    ASSERT_TRUE(back) << code;
    EXPECT_EQ(back->code, code);
    EXPECT_EQ(back->symbols, f.symbols) << code;
    EXPECT_EQ(back->refinement, f.refinement) << code;
    EXPECT_EQ(back->significance, f.significance) << code;
    EXPECT_EQ(back->refinementBytes, f.refinementBytes) << code;
    EXPECT_EQ(back->passCounts, f.passCounts) << code;
    EXPECT_EQ(back->levels, 6);
  }
}

TEST(WicFile, TheStage3CountIsTheSignificanceStreamsLengthRightAfterTheCode) {
  WicFile f;
  f.code = 3;
  f.significance = std::vector<std::uint8_t>(300, 1);
  f.n = 64;
  f.levels = 2;
  f.passCounts = {1};
  const std::vector<std::uint8_t> bytes = WriteWicFile(f);
  // Offset 1 holds the count, 300 = 0x012C.
  EXPECT_EQ(bytes[1], 0x2C);
  EXPECT_EQ(bytes[2], 0x01);
  EXPECT_EQ(bytes[3], 0);
  EXPECT_EQ(bytes[4], 0);
}

TEST(WicFile, AWholeMultipleOf32000SlipsIntoTheNextEntry) {
  std::vector<std::uint8_t> written;
  WritePassCounts(written, {64000, 3});
  // 0 (64000 mod 32000, negated), then 2, then 3.
  std::vector<std::uint8_t> expected;
  Put(expected, 0, 2);
  Put(expected, 2, 2);
  Put(expected, 3, 2);
  EXPECT_EQ(written, expected);
  std::vector<std::uint8_t> bytes = {2};
  Put(bytes, 0, 4);
  Put(bytes, 0, 4);
  Put(bytes, 64, 4);
  bytes.insert(bytes.end(), {1, 2, 9, 1});
  bytes.insert(bytes.end(), written.begin(), written.end());
  const std::optional<WicFile> f = ReadWicFile(bytes, false);
  ASSERT_TRUE(f);
  // Read as 0 and 2; the 3 is left over.
  EXPECT_EQ(f->passCounts, (std::vector<std::int32_t>{0, 2}));
}

// The two-integer form reads up to 32767 * 32000 + 32768, but writes a
// quotient above 32767 into its 16 bits as it comes: such a count, which
// only a made-up file holds, reads back negative after writing. (Found by
// fuzzing: the reader keeps the file's value, the writer the layout's.)
TEST(WicFile, ACountPastTheLargestQuotientDoesNotSurviveWriting) {
  std::vector<std::uint8_t> counts;
  Put(counts, 0x10000 - 32641, 2);  // -32641
  Put(counts, 32767, 2);
  std::vector<std::uint8_t> bytes = {2};
  Put(bytes, 0, 4);
  Put(bytes, 0, 4);
  Put(bytes, 64, 4);
  bytes.insert(bytes.end(), {1, 2, 9, 0});
  bytes.insert(bytes.end(), counts.begin(), counts.end());
  const std::optional<WicFile> f = ReadWicFile(bytes, false);
  ASSERT_TRUE(f);
  ASSERT_EQ(f->passCounts, (std::vector<std::int32_t>{32767 * 32000 + 32641}));
  std::vector<std::uint8_t> written;
  WritePassCounts(written, f->passCounts);
  std::vector<std::uint8_t> expected;
  Put(expected, 0x10000 - 641, 2);   // -(1048576641 mod 32000)
  Put(expected, 0x8000, 2);          // 32768, as 16 bits: -32768
  EXPECT_EQ(written, expected);
}

TEST(WicFile, BadFilesAreRefused) {
  WicFile f;
  f.code = 1;
  f.symbols = "0101";
  f.n = 128;
  f.levels = 5;
  f.passes = 1;
  f.passCounts = {1, 2};
  const std::vector<std::uint8_t> good = WriteWicFile(f);
  ASSERT_TRUE(ReadWicFile(good, false));
  for (std::size_t cut = 0; cut < good.size(); ++cut)
    EXPECT_FALSE(ReadWicFile(std::vector<std::uint8_t>(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(cut)),
                             false))
        << cut;
  for (std::int32_t n : {0, 32, 100, 2048}) {
    WicFile g = f;
    g.n = n;
    EXPECT_FALSE(ReadWicFile(WriteWicFile(g), false)) << n;
  }
  WicFile deep = f;
  deep.levels = 6;  // 128 allows 5
  EXPECT_FALSE(ReadWicFile(WriteWicFile(deep), false));
  WicFile mode = f;
  mode.scanMode = 5;
  EXPECT_FALSE(ReadWicFile(WriteWicFile(mode), false));
  std::vector<std::uint8_t> negative = good;
  negative[1] = negative[2] = negative[3] = negative[4] = 0xFF;
  EXPECT_FALSE(ReadWicFile(negative, false));
}

}  // namespace
}  // namespace keldo::wavelet
