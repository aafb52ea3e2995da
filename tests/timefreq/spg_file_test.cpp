// The spectrogram form file: files written byte by byte by
// tests/data/make_spg_files.py read field by field, written back to the same
// bytes, and every kind of bad file refused.

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "timefreq/spg_file.h"

namespace keldo::timefreq {
namespace {

const std::string kData = KELDO_TEST_DATA "/spg/";

std::vector<std::uint8_t> Bytes(const std::string& name) {
  std::ifstream in(kData + name, std::ios::binary);
  EXPECT_TRUE(in.good()) << name;
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// The samples of the script's good files.
double Sample(int i) { return (i % 7) - 3 + i / 8.0; }

// Field offsets after the caption (4 + caption length bytes): three
// doubles, rows, window part, step, sampling value, display maximum, mode,
// choice, flag, filter index, df, then the signal count.
constexpr std::size_t kWinlenPartAt = 28;
constexpr std::size_t kStepAt = 32;
constexpr std::size_t kSignalCountAt = 63;
constexpr std::size_t kSignalAt = 67;

void PutI32(std::vector<std::uint8_t>& bytes, std::size_t at, std::int32_t v) {
  const auto u = static_cast<std::uint32_t>(v);
  for (std::size_t k = 0; k < 4; ++k) bytes[at + k] = static_cast<std::uint8_t>(u >> (8 * k));
}

// plain.spg (512 points and no caption, so the offsets hold from byte 4) with a signal of
// `count` + 1 zero samples, the given window part and step, and its own
// empty list and texts after.
std::vector<std::uint8_t> PlainWith(std::int32_t count, std::int32_t winlenPart, std::int32_t step) {
  const std::vector<std::uint8_t> plain = Bytes("plain.spg");
  const std::size_t head = 4 + kSignalCountAt;
  const std::size_t tail = head + 4 + 513 * 8;
  std::vector<std::uint8_t> bytes(plain.begin(), plain.begin() + static_cast<std::ptrdiff_t>(head));
  bytes.resize(head + 4 + (static_cast<std::size_t>(count) + 1) * 8, 0);
  bytes.insert(bytes.end(), plain.begin() + static_cast<std::ptrdiff_t>(tail), plain.end());
  PutI32(bytes, head, count);
  PutI32(bytes, 4 + kWinlenPartAt, winlenPart);
  PutI32(bytes, 4 + kStepAt, step);
  return bytes;
}

TEST(SpgFile, ReadsEveryFieldOfAFileWithTwoModifications) {
  const auto file = ReadSpgFile(Bytes("basic.spg"));
  ASSERT_TRUE(file);
  EXPECT_EQ(file->caption, "Spectrogram 1");
  EXPECT_EQ(file->left, 0.0);
  EXPECT_EQ(file->right, 1.0);
  EXPECT_EQ(file->dt, 1.0 / 128);
  EXPECT_EQ(file->rows, 32);
  EXPECT_EQ(file->winlenPart, 32);
  EXPECT_EQ(file->step, 8);
  EXPECT_EQ(file->samplingValue, 8000.0);
  EXPECT_EQ(file->displayMaximum, 255);
  EXPECT_EQ(file->displayMode, 1);
  EXPECT_EQ(file->displayChoice, 0);
  EXPECT_EQ(file->flag, 'Y');
  EXPECT_EQ(file->filterIndex, 2);
  EXPECT_EQ(file->df, 2.0);
  ASSERT_EQ(file->signal.size(), 129u);
  for (int i = 0; i <= 128; ++i) EXPECT_EQ(file->signal[static_cast<std::size_t>(i)], Sample(i)) << i;
  EXPECT_EQ(file->modifications, (std::vector<std::string>{"T:0.5", "G:(g1)(g1>2)"}));
  EXPECT_EQ(file->report, "1. Threshold\r\nValue: 0.5\r\n2. Formula\r\n(g1)(g1>2)\r\n");
  EXPECT_EQ(file->information, "Filter: Hamming\r\nWindow length: 64\r\nShift: 8\r\n");
}

TEST(SpgFile, ReadsAFileWithNoCaptionListOrTextsAndTheLastListIndices) {
  const auto file = ReadSpgFile(Bytes("plain.spg"));
  ASSERT_TRUE(file);
  EXPECT_EQ(file->caption, "");
  EXPECT_EQ(file->left, -2.5);
  EXPECT_EQ(file->right, 2.5);
  EXPECT_EQ(file->dt, 5.0 / 512);
  EXPECT_EQ(file->rows, 64);
  EXPECT_EQ(file->winlenPart, 64);
  EXPECT_EQ(file->step, 128);
  EXPECT_EQ(file->samplingValue, 0.0);
  EXPECT_EQ(file->displayMaximum, 0);
  EXPECT_EQ(file->displayMode, 3);
  EXPECT_EQ(file->displayChoice, 1);
  EXPECT_EQ(file->flag, 'N');
  EXPECT_EQ(file->filterIndex, 4);
  EXPECT_EQ(file->df, 0.8);
  ASSERT_EQ(file->signal.size(), 513u);
  for (int i = 0; i <= 512; ++i) EXPECT_EQ(file->signal[static_cast<std::size_t>(i)], Sample(i)) << i;
  EXPECT_TRUE(file->modifications.empty());
  EXPECT_EQ(file->report, "");
  EXPECT_EQ(file->information, "");
}

TEST(SpgFile, KeepsEveryByteOfTextsAndEmptyEntries) {
  const auto file = ReadSpgFile(Bytes("high_bytes.spg"));
  ASSERT_TRUE(file);
  ASSERT_EQ(file->caption.size(), 128u);
  for (std::size_t k = 0; k < 128; ++k) EXPECT_EQ(static_cast<unsigned char>(file->caption[k]), 128 + k);
  EXPECT_EQ(file->step, 64);
  EXPECT_EQ(file->modifications, (std::vector<std::string>{"T:", "G:"}));
  EXPECT_EQ(file->report, "x");
  EXPECT_EQ(file->information, "\xff");
}

TEST(SpgFile, WritesTheScriptsFilesBackByteForByte) {
  for (const char* name : {"basic.spg", "plain.spg", "high_bytes.spg"}) {
    const std::vector<std::uint8_t> bytes = Bytes(name);
    const auto file = ReadSpgFile(bytes);
    ASSERT_TRUE(file) << name;
    EXPECT_EQ(WriteSpgFile(*file), bytes) << name;
  }
}

TEST(SpgFile, AFileWrittenReadsBackToTheSameFields) {
  SpgFile file;
  file.caption = "Signal\0two";
  file.caption += '\0';
  file.left = -1e300;
  file.right = 3.25;
  file.dt = 1.0 / 3;
  file.rows = -7;
  file.winlenPart = 512;
  file.step = 1024;
  file.samplingValue = 44100.0;
  file.displayMaximum = 123456;
  file.displayMode = 2;
  file.displayChoice = 1;
  file.flag = '\x80';
  file.filterIndex = 0;
  file.df = 1e-9;
  for (int i = 0; i <= 65536; ++i) file.signal.push_back(i * 0.001 - 7);
  file.modifications = {"G:sin(x)*g1", "T:12", "T:"};
  file.report = "r\r\n";
  file.information = std::string(300, 'i');
  const std::vector<std::uint8_t> bytes = WriteSpgFile(file);
  // 4 + 7 caption, 67 up to the signal count, 65537 samples, list 4 + 15 + 8 + 6, texts 4 + 3 + 4 + 300.
  EXPECT_EQ(bytes.size(), 11u + 67u + 65537u * 8u + 4u + 15u + 8u + 6u + 7u + 304u);
  const auto back = ReadSpgFile(bytes);
  ASSERT_TRUE(back);
  EXPECT_EQ(back->caption, file.caption);
  EXPECT_EQ(back->left, file.left);
  EXPECT_EQ(back->right, file.right);
  EXPECT_EQ(back->dt, file.dt);
  EXPECT_EQ(back->rows, file.rows);
  EXPECT_EQ(back->winlenPart, file.winlenPart);
  EXPECT_EQ(back->step, file.step);
  EXPECT_EQ(back->samplingValue, file.samplingValue);
  EXPECT_EQ(back->displayMaximum, file.displayMaximum);
  EXPECT_EQ(back->displayMode, file.displayMode);
  EXPECT_EQ(back->displayChoice, file.displayChoice);
  EXPECT_EQ(back->flag, file.flag);
  EXPECT_EQ(back->filterIndex, file.filterIndex);
  EXPECT_EQ(back->df, file.df);
  EXPECT_EQ(back->signal, file.signal);
  EXPECT_EQ(back->modifications, file.modifications);
  EXPECT_EQ(back->report, file.report);
  EXPECT_EQ(back->information, file.information);
}

TEST(SpgFile, WritesTheFieldsAtTheirOffsets) {
  SpgFile file;
  file.caption = "ab";
  file.winlenPart = 32;
  file.step = 3;
  file.flag = 'Q';
  file.signal.assign(129, 0.0);
  file.signal[0] = 1.0;
  const std::vector<std::uint8_t> bytes = WriteSpgFile(file);
  ASSERT_EQ(bytes.size(), 6u + 67u + 129u * 8u + 4u + 4u + 4u);
  EXPECT_EQ(bytes[0], 2);
  EXPECT_EQ(bytes[4], 'a');
  EXPECT_EQ(bytes[6 + kWinlenPartAt], 32);
  EXPECT_EQ(bytes[6 + kStepAt], 3);
  EXPECT_EQ(bytes[6 + 52], 'Q');
  EXPECT_EQ(bytes[6 + kSignalCountAt], 128);
  // 1.0 is 0x3FF0000000000000.
  EXPECT_EQ(bytes[6 + kSignalAt + 6], 0xF0);
  EXPECT_EQ(bytes[6 + kSignalAt + 7], 0x3F);
}

TEST(SpgFile, RefusesEveryFileCutShort) {
  for (const char* name : {"basic.spg", "high_bytes.spg"}) {
    const std::vector<std::uint8_t> bytes = Bytes(name);
    for (std::size_t n = 0; n < bytes.size(); ++n)
      EXPECT_FALSE(ReadSpgFile(std::vector<std::uint8_t>(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(n))))
          << name << " cut to " << n;
  }
}

TEST(SpgFile, RefusesEmptyNonsenseAndTrailingBytes) {
  for (const char* name : {"empty.spg", "nonsense.spg", "trailing.spg", "fuzz_stall.spg"})
    EXPECT_FALSE(ReadSpgFile(Bytes(name))) << name;
}

TEST(SpgFile, RefusesNegativeAndHugeLengths) {
  for (const char* name : {"negative_caption.spg", "huge_caption.spg", "negative_list.spg", "huge_list.spg",
                           "negative_entry.spg", "huge_entry.spg", "negative_report.spg", "huge_report.spg",
                           "negative_information.spg", "huge_information.spg"})
    EXPECT_FALSE(ReadSpgFile(Bytes(name))) << name;
}

TEST(SpgFile, RefusesSignalCountsThatAreNotPowersOfTwoFrom64To65536) {
  for (const char* name : {"count_63.spg", "count_65.spg", "count_96.spg", "count_32.spg", "count_0.spg",
                           "count_negative.spg", "count_huge.spg"})
    EXPECT_FALSE(ReadSpgFile(Bytes(name))) << name;
  // With a window of 64 and a step of 1, which every count from 128 takes.
  for (std::int32_t count : {31, 32, 33, 63, 65, 100, 127, 129, 192, 255, 257, 1000, 4095, 4097, 65535, 65537, 131072}) {
    EXPECT_FALSE(ReadSpgFile(PlainWith(count, 32, 1))) << count;
  }
  for (std::int32_t count = 128; count <= 65536; count *= 2) EXPECT_TRUE(ReadSpgFile(PlainWith(count, 32, 1))) << count;
}

TEST(SpgFile, TakesTheWindowLengthsASpectrogramOfTheSignalAccepts) {
  // The longest window for each signal: 64 points take none of 64..2048.
  const std::vector<std::pair<std::int32_t, std::int32_t>> longest = {
      {64, 32},    {128, 64},   {256, 64},    {512, 128},   {1024, 128},  {2048, 256},
      {4096, 256}, {8192, 512}, {16384, 512}, {32768, 1024}, {65536, 1024}};
  for (const auto& [count, most] : longest) {
    for (std::int32_t winlen = 1; winlen <= 4096; winlen *= 2) {
      const bool fits = winlen >= 64 && winlen <= most;
      EXPECT_EQ(ReadSpgFile(PlainWith(count, winlen / 2, 1)).has_value(), fits) << count << " " << winlen;
    }
  }
  EXPECT_TRUE(ReadSpgFile(PlainWith(65536, 512, 1024)));
  EXPECT_FALSE(ReadSpgFile(PlainWith(65536, 512, 1025)));
  EXPECT_FALSE(ReadSpgFile(PlainWith(65536, 384, 1)));
  EXPECT_FALSE(ReadSpgFile(PlainWith(128, 0, 1)));
}

TEST(SpgFile, RefusesWindowsStepsAndListIndicesNoSpectrogramCouldHave) {
  for (const char* name : {"window_128_of_128.spg", "window_96.spg", "window_32.spg", "window_negative.spg",
                           "window_huge.spg", "step_0.spg", "step_negative.spg", "step_65.spg", "mode_4.spg",
                           "mode_negative.spg", "choice_2.spg", "choice_negative.spg", "filter_5.spg", "filter_negative.spg"})
    EXPECT_FALSE(ReadSpgFile(Bytes(name))) << name;
}

}  // namespace
}  // namespace keldo::timefreq
