// The scalogram form file: files written byte by byte by
// tests/data/make_scg_files.py read field by field, written back to the same
// bytes, and every kind of bad file refused.

#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "timefreq/scg_file.h"

namespace keldo::timefreq {
namespace {

const std::string kData = KELDO_TEST_DATA "/scg/";

std::vector<std::uint8_t> Bytes(const std::string& name) {
  std::ifstream in(kData + name, std::ios::binary);
  EXPECT_TRUE(in.good()) << name;
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// The samples of the script's good files.
double Sample(int i) { return (i % 5) - 2 + i / 16.0; }

// Field offsets after the caption (4 + caption length bytes): two display
// flags, three doubles, the wavelet byte, octaves, width, voices,
// frequency, mean, rows, columns, reference, mode, two signal flags, view,
// sampling, display kind, then the signal count.
constexpr std::size_t kWaveletAt = 28;
constexpr std::size_t kOctavesAt = 29;
constexpr std::size_t kVoicesAt = 41;
constexpr std::size_t kRowsAt = 61;
constexpr std::size_t kColumnsAt = 65;
constexpr std::size_t kModeAt = 77;
constexpr std::size_t kViewAt = 83;
constexpr std::size_t kDisplayKindAt = 93;
constexpr std::size_t kSignalCountAt = 94;
constexpr std::size_t kSignalAt = 98;
// plain.scg has no caption, so its fields are at these offsets plus 4.
constexpr std::size_t kPlainHead = 4;

void PutI16(std::vector<std::uint8_t>& bytes, std::size_t at, std::int16_t v) {
  const auto u = static_cast<std::uint16_t>(v);
  bytes[at] = static_cast<std::uint8_t>(u);
  bytes[at + 1] = static_cast<std::uint8_t>(u >> 8);
}

void PutI32(std::vector<std::uint8_t>& bytes, std::size_t at, std::int32_t v) {
  const auto u = static_cast<std::uint32_t>(v);
  for (std::size_t k = 0; k < 4; ++k) bytes[at + k] = static_cast<std::uint8_t>(u >> (8 * k));
}

// plain.scg (512 points) with a signal of `count` + 1 zero samples and
// `columns` columns, and its own empty list and texts after.
std::vector<std::uint8_t> PlainWithSignal(std::int32_t count, std::int32_t columns) {
  const std::vector<std::uint8_t> plain = Bytes("plain.scg");
  const std::size_t head = kPlainHead + kSignalCountAt;
  const std::size_t tail = head + 4 + 513 * 8;
  std::vector<std::uint8_t> bytes(plain.begin(), plain.begin() + static_cast<std::ptrdiff_t>(head));
  bytes.resize(head + 4 + (static_cast<std::size_t>(count) + 1) * 8, 0);
  bytes.insert(bytes.end(), plain.begin() + static_cast<std::ptrdiff_t>(tail), plain.end());
  PutI32(bytes, head, count);
  PutI32(bytes, kPlainHead + kColumnsAt, columns);
  return bytes;
}

// plain.scg with the given octaves, voices and rows.
std::vector<std::uint8_t> PlainWithScales(std::int32_t octaves, std::int32_t voices, std::int32_t rows) {
  std::vector<std::uint8_t> bytes = Bytes("plain.scg");
  PutI32(bytes, kPlainHead + kOctavesAt, octaves);
  PutI32(bytes, kPlainHead + kVoicesAt, voices);
  PutI32(bytes, kPlainHead + kRowsAt, rows);
  return bytes;
}

TEST(ScgFile, ReadsEveryFieldOfAFileWithTwoModifications) {
  const auto file = ReadScgFile(Bytes("basic.scg"));
  ASSERT_TRUE(file);
  EXPECT_EQ(file->caption, "Scalogram 1");
  EXPECT_EQ(file->displayFlags, (std::array<std::int16_t, 2>{-1, 0}));
  EXPECT_EQ(file->left, 0.0);
  EXPECT_EQ(file->right, 2.0);
  EXPECT_EQ(file->dx, 1.0 / 64);
  EXPECT_EQ(file->wavelet, '3');
  EXPECT_EQ(file->octaves, 4);
  EXPECT_EQ(file->width, 1.5);
  EXPECT_EQ(file->voices, 8);
  EXPECT_EQ(file->frequency, 2.0);
  EXPECT_EQ(file->signalMean, 0.25);
  EXPECT_EQ(file->rows, 32);
  EXPECT_EQ(file->columns, 128);
  EXPECT_EQ(file->reference, 37.5);
  EXPECT_EQ(file->mode, 1);
  EXPECT_EQ(file->signalFlags, (std::array<std::int16_t, 2>{0, -1}));
  EXPECT_EQ(file->view, 0);
  EXPECT_EQ(file->sampling, 8000.0);
  EXPECT_EQ(file->displayKind, 'G');
  ASSERT_EQ(file->signal.size(), 129u);
  for (int i = 0; i <= 128; ++i) EXPECT_EQ(file->signal[static_cast<std::size_t>(i)], Sample(i)) << i;
  EXPECT_EQ(file->modifications, (std::vector<std::string>{"T:0.5", "G:(g1)(g1>2)"}));
  EXPECT_EQ(file->report, "1. Threshold\r\nValue: 0.5\r\n2. Formula\r\n(g1)(g1>2)\r\n");
  EXPECT_EQ(file->information, "Wavelet type: 3. Gabor cosine (real)\r\nOctaves: 4\r\nVoices: 8\r\n");
}

TEST(ScgFile, ReadsAFileWithNoCaptionListOrTextsAndTheLastListEntries) {
  const auto file = ReadScgFile(Bytes("plain.scg"));
  ASSERT_TRUE(file);
  EXPECT_EQ(file->caption, "");
  EXPECT_EQ(file->displayFlags, (std::array<std::int16_t, 2>{0, -1}));
  EXPECT_EQ(file->left, -4.0);
  EXPECT_EQ(file->right, 4.0);
  EXPECT_EQ(file->dx, 1.0 / 64);
  EXPECT_EQ(file->wavelet, '5');
  EXPECT_EQ(file->octaves, 256);
  EXPECT_EQ(file->width, 0.5);
  EXPECT_EQ(file->voices, 1);
  EXPECT_EQ(file->frequency, 0.75);
  EXPECT_EQ(file->signalMean, -1.5);
  EXPECT_EQ(file->rows, 256);
  EXPECT_EQ(file->columns, 512);
  EXPECT_EQ(file->reference, 0.0);
  EXPECT_EQ(file->mode, 3);
  EXPECT_EQ(file->signalFlags, (std::array<std::int16_t, 2>{-1, 0}));
  EXPECT_EQ(file->view, 1);
  EXPECT_EQ(file->sampling, 0.0);
  EXPECT_EQ(file->displayKind, 'G');
  ASSERT_EQ(file->signal.size(), 513u);
  for (int i = 0; i <= 512; ++i) EXPECT_EQ(file->signal[static_cast<std::size_t>(i)], Sample(i)) << i;
  EXPECT_TRUE(file->modifications.empty());
  EXPECT_EQ(file->report, "");
  EXPECT_EQ(file->information, "");
}

TEST(ScgFile, KeepsEveryByteOfTextsFlagsAndEmptyEntries) {
  const auto file = ReadScgFile(Bytes("high_bytes.scg"));
  ASSERT_TRUE(file);
  ASSERT_EQ(file->caption.size(), 128u);
  for (std::size_t k = 0; k < 128; ++k) EXPECT_EQ(static_cast<unsigned char>(file->caption[k]), 128 + k);
  EXPECT_EQ(file->displayFlags, (std::array<std::int16_t, 2>{1, 2}));
  EXPECT_EQ(file->wavelet, '1');
  EXPECT_EQ(file->octaves, 1);
  EXPECT_EQ(file->voices, 256);
  EXPECT_EQ(file->rows, 256);
  EXPECT_EQ(file->mode, 0);
  EXPECT_EQ(file->signalFlags, (std::array<std::int16_t, 2>{-32768, 32767}));
  EXPECT_EQ(static_cast<unsigned char>(file->displayKind), 0xC7);
  EXPECT_EQ(file->modifications, (std::vector<std::string>{"T:", "G:"}));
  EXPECT_EQ(file->report, "x");
  EXPECT_EQ(file->information, "\xff");
}

TEST(ScgFile, WritesTheScriptsFilesBackByteForByte) {
  for (const char* name : {"basic.scg", "plain.scg", "high_bytes.scg"}) {
    const std::vector<std::uint8_t> bytes = Bytes(name);
    const auto file = ReadScgFile(bytes);
    ASSERT_TRUE(file) << name;
    EXPECT_EQ(WriteScgFile(*file), bytes) << name;
  }
}

TEST(ScgFile, AFileWrittenReadsBackToTheSameFields) {
  ScgFile file;
  file.caption = "Signal";
  file.caption += '\0';
  file.displayFlags = {7, -7};
  file.left = -1e300;
  file.right = 3.25;
  file.dx = 1.0 / 3;
  file.wavelet = '2';
  file.octaves = 16;
  file.width = 1e-3;
  file.voices = 16;
  file.frequency = -2.0;
  file.signalMean = 1.0 / 7;
  file.rows = 256;
  file.columns = 65536;
  file.reference = 1e12;
  file.mode = 2;
  file.signalFlags = {-1, -1};
  file.view = 1;
  file.sampling = 44100.0;
  file.displayKind = '\x80';
  for (int i = 0; i <= 65536; ++i) file.signal.push_back(i * 0.001 - 7);
  file.modifications = {"G:sin(x)*g1", "T:12", "T:"};
  file.report = "r\r\n";
  file.information = std::string(300, 'i');
  const std::vector<std::uint8_t> bytes = WriteScgFile(file);
  // 4 + 7 caption, 98 up to the signal, 65537 samples, list 4 + 15 + 8 + 6, texts 4 + 3 + 4 + 300.
  EXPECT_EQ(bytes.size(), 11u + 98u + 65537u * 8u + 4u + 15u + 8u + 6u + 7u + 304u);
  const auto back = ReadScgFile(bytes);
  ASSERT_TRUE(back);
  EXPECT_EQ(back->caption, file.caption);
  EXPECT_EQ(back->displayFlags, file.displayFlags);
  EXPECT_EQ(back->left, file.left);
  EXPECT_EQ(back->right, file.right);
  EXPECT_EQ(back->dx, file.dx);
  EXPECT_EQ(back->wavelet, file.wavelet);
  EXPECT_EQ(back->octaves, file.octaves);
  EXPECT_EQ(back->width, file.width);
  EXPECT_EQ(back->voices, file.voices);
  EXPECT_EQ(back->frequency, file.frequency);
  EXPECT_EQ(back->signalMean, file.signalMean);
  EXPECT_EQ(back->rows, file.rows);
  EXPECT_EQ(back->columns, file.columns);
  EXPECT_EQ(back->reference, file.reference);
  EXPECT_EQ(back->mode, file.mode);
  EXPECT_EQ(back->signalFlags, file.signalFlags);
  EXPECT_EQ(back->view, file.view);
  EXPECT_EQ(back->sampling, file.sampling);
  EXPECT_EQ(back->displayKind, file.displayKind);
  EXPECT_EQ(back->signal, file.signal);
  EXPECT_EQ(back->modifications, file.modifications);
  EXPECT_EQ(back->report, file.report);
  EXPECT_EQ(back->information, file.information);
}

TEST(ScgFile, WritesTheFieldsAtTheirOffsets) {
  ScgFile file;
  file.caption = "ab";
  file.displayFlags = {0x11, 0x22};
  file.wavelet = '4';
  file.octaves = 3;
  file.voices = 5;
  file.rows = 15;
  file.columns = 128;
  file.mode = 2;
  file.signalFlags = {0x33, 0x44};
  file.view = 1;
  file.displayKind = 'Q';
  file.signal.assign(129, 0.0);
  file.signal[0] = 1.0;
  const std::vector<std::uint8_t> bytes = WriteScgFile(file);
  ASSERT_EQ(bytes.size(), 6u + kSignalAt + 129u * 8u + 4u + 4u + 4u);
  EXPECT_EQ(bytes[0], 2);
  EXPECT_EQ(bytes[4], 'a');
  EXPECT_EQ(bytes[6 + 0], 0x11);
  EXPECT_EQ(bytes[6 + 2], 0x22);
  EXPECT_EQ(bytes[6 + kWaveletAt], '4');
  EXPECT_EQ(bytes[6 + kOctavesAt], 3);
  EXPECT_EQ(bytes[6 + kVoicesAt], 5);
  EXPECT_EQ(bytes[6 + kRowsAt], 15);
  EXPECT_EQ(bytes[6 + kColumnsAt], 128);
  EXPECT_EQ(bytes[6 + kModeAt], 2);
  EXPECT_EQ(bytes[6 + kModeAt + 2], 0x33);
  EXPECT_EQ(bytes[6 + kModeAt + 4], 0x44);
  EXPECT_EQ(bytes[6 + kViewAt], 1);
  EXPECT_EQ(bytes[6 + kDisplayKindAt], 'Q');
  EXPECT_EQ(bytes[6 + kSignalCountAt], 128);
  // 1.0 is 0x3FF0000000000000.
  EXPECT_EQ(bytes[6 + kSignalAt + 6], 0xF0);
  EXPECT_EQ(bytes[6 + kSignalAt + 7], 0x3F);
}

TEST(ScgFile, RefusesEveryFileCutShort) {
  for (const char* name : {"basic.scg", "plain.scg", "high_bytes.scg"}) {
    const std::vector<std::uint8_t> bytes = Bytes(name);
    for (std::size_t n = 0; n < bytes.size(); ++n)
      EXPECT_FALSE(ReadScgFile(std::vector<std::uint8_t>(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(n))))
          << name << " cut to " << n;
  }
}

TEST(ScgFile, RefusesEmptyNonsenseAndTrailingBytes) {
  for (const char* name : {"empty.scg", "nonsense.scg", "trailing.scg"}) EXPECT_FALSE(ReadScgFile(Bytes(name))) << name;
}

TEST(ScgFile, RefusesNegativeAndHugeLengths) {
  for (const char* name : {"negative_caption.scg", "huge_caption.scg", "negative_list.scg", "huge_list.scg",
                           "negative_entry.scg", "huge_entry.scg", "negative_report.scg", "huge_report.scg",
                           "negative_information.scg", "huge_information.scg"})
    EXPECT_FALSE(ReadScgFile(Bytes(name))) << name;
}

TEST(ScgFile, RefusesSignalCountsThatAreNotPowersOfTwoFrom64To65536) {
  for (const char* name : {"count_63.scg", "count_65.scg", "count_96.scg", "count_32.scg", "count_0.scg",
                           "count_negative.scg", "count_131072.scg", "count_huge.scg"})
    EXPECT_FALSE(ReadScgFile(Bytes(name))) << name;
  for (std::int32_t count : {0, 1, 2, 31, 32, 33, 63, 65, 100, 127, 129, 192, 255, 257, 1000, 4095, 4097, 65535, 65537,
                             131072}) {
    EXPECT_FALSE(ReadScgFile(PlainWithSignal(count, count))) << count;
  }
  for (std::int32_t count = 64; count <= 65536; count *= 2)
    EXPECT_TRUE(ReadScgFile(PlainWithSignal(count, count))) << count;
}

TEST(ScgFile, RefusesColumnsOtherThanTheSignalsUpperBound) {
  for (const char* name : {"columns_256.scg", "columns_127.scg", "columns_0.scg", "columns_negative.scg"})
    EXPECT_FALSE(ReadScgFile(Bytes(name))) << name;
  for (std::int32_t columns : {-512, -1, 0, 64, 256, 511, 513, 1024, 65536})
    EXPECT_FALSE(ReadScgFile(PlainWithSignal(512, columns))) << columns;
  EXPECT_TRUE(ReadScgFile(PlainWithSignal(512, 512)));
}

TEST(ScgFile, TakesTheOctavesAndVoicesAScalogramAccepts) {
  const std::vector<std::int32_t> values = {-256, -1, 0, 1, 2, 3, 8, 15, 16, 17, 85, 86, 128, 255, 256, 257, 1 << 24};
  for (std::int32_t octaves : values) {
    for (std::int32_t voices : values) {
      const std::int64_t scales = static_cast<std::int64_t>(octaves) * voices;
      const bool fits = octaves >= 1 && octaves <= 256 && voices >= 1 && scales <= 256;
      EXPECT_EQ(ReadScgFile(PlainWithScales(octaves, voices, static_cast<std::int32_t>(scales))).has_value(), fits)
          << octaves << " octaves, " << voices << " voices";
    }
  }
  for (const char* name : {"octaves_0.scg", "octaves_257.scg", "octaves_negative.scg", "voices_0.scg",
                           "voices_negative.scg", "scales_257.scg", "scales_512.scg", "scales_272.scg",
                           "scales_wrap.scg"})
    EXPECT_FALSE(ReadScgFile(Bytes(name))) << name;
}

TEST(ScgFile, RefusesRowsOtherThanOctavesTimesVoices) {
  for (const char* name : {"rows_31.scg", "rows_33.scg", "rows_0.scg", "rows_negative.scg"})
    EXPECT_FALSE(ReadScgFile(Bytes(name))) << name;
  EXPECT_TRUE(ReadScgFile(PlainWithScales(16, 16, 256)));
  for (std::int32_t rows : {-256, 0, 1, 16, 32, 255, 257, 512}) EXPECT_FALSE(ReadScgFile(PlainWithScales(16, 16, rows)));
}

TEST(ScgFile, TakesTheWaveletNumbersOneToFiveAndNoOtherByte) {
  for (int byte = 0; byte < 256; ++byte) {
    std::vector<std::uint8_t> bytes = Bytes("plain.scg");
    bytes[kPlainHead + kWaveletAt] = static_cast<std::uint8_t>(byte);
    EXPECT_EQ(ReadScgFile(bytes).has_value(), byte >= '1' && byte <= '5') << byte;
  }
  for (const char* name : {"wavelet_0.scg", "wavelet_6.scg", "wavelet_3_as_number.scg", "wavelet_letter.scg",
                           "wavelet_high.scg"})
    EXPECT_FALSE(ReadScgFile(Bytes(name))) << name;
}

TEST(ScgFile, TakesTheModesAndViewsOfTheirListsAndNoOthers) {
  for (int mode : {-32768, -2, -1, 0, 1, 2, 3, 4, 5, 256, 32767}) {
    std::vector<std::uint8_t> bytes = Bytes("plain.scg");
    PutI16(bytes, kPlainHead + kModeAt, static_cast<std::int16_t>(mode));
    EXPECT_EQ(ReadScgFile(bytes).has_value(), mode >= 0 && mode <= 3) << mode;
  }
  for (int view : {-32768, -1, 0, 1, 2, 3, 256, 32767}) {
    std::vector<std::uint8_t> bytes = Bytes("plain.scg");
    PutI16(bytes, kPlainHead + kViewAt, static_cast<std::int16_t>(view));
    EXPECT_EQ(ReadScgFile(bytes).has_value(), view >= 0 && view <= 1) << view;
  }
  for (const char* name : {"mode_4.scg", "mode_negative.scg", "view_2.scg", "view_negative.scg"})
    EXPECT_FALSE(ReadScgFile(Bytes(name))) << name;
}

}  // namespace
}  // namespace keldo::timefreq
