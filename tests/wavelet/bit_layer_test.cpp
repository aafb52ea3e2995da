// The bit layer against a plain list of bits: whatever mix of single bits,
// pieces, repeats and pairs goes in, the writer's complete bytes, bits to go
// and count are those of the bits packed eight to a byte from the top; and
// the reader, from any offset, gives the same bits by single bits, pieces,
// peeks and skips, zeros past the end, counted in BitsPastEnd.

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

#include "wavelet/bit_layer.h"

namespace keldo::wavelet {
namespace {

constexpr int kLargestPiece = 24;
constexpr int kOperations = 3000;

std::vector<std::uint8_t> Packed(const std::vector<int>& bits, bool withPartial) {
  std::vector<std::uint8_t> bytes;
  for (std::size_t i = 0; i < bits.size(); i += 8) {
    if (i + 8 > bits.size() && !withPartial) break;
    int byte = 0;
    for (std::size_t j = 0; j < 8; ++j) byte |= (i + j < bits.size() ? bits[i + j] : 0) << (7 - j);
    bytes.push_back(static_cast<std::uint8_t>(byte));
  }
  return bytes;
}

TEST(BitLayer, WriterPacksEveryMixOfBitsFromTheTop) {
  std::mt19937 random(7);
  BitWriter writer(124);
  std::vector<int> bits;
  for (int op = 0; op < kOperations; ++op) {
    const unsigned kind = random() % 4;
    if (kind == 0) {
      const int bit = static_cast<int>(random() % 3);  // any non-zero is a 1
      writer.TransmitBit(bit);
      bits.push_back(bit != 0 ? 1 : 0);
    } else if (kind == 1) {
      const int count = static_cast<int>(random() % (kLargestPiece + 1));
      const std::uint32_t value = random();  // bits above `count` are ignored
      writer.TransmitBits(value, count);
      for (int j = count - 1; j >= 0; --j) bits.push_back(static_cast<int>((value >> j) & 1u));
    } else if (kind == 2) {
      const int bit = static_cast<int>(random() % 2);
      const std::int64_t count = random() % 60;
      writer.TransmitRepeated(bit, count);
      bits.insert(bits.end(), static_cast<std::size_t>(count), bit);
    } else {
      const int bit = static_cast<int>(random() % 2);
      writer.TransmitDbl(bit);
      bits.push_back(0);
      bits.push_back(bit);
    }
    ASSERT_EQ(writer.Bytes(), Packed(bits, false)) << "after operation " << op;
    ASSERT_EQ(writer.BitsToGo(), 8 - static_cast<int>(bits.size() % 8));
    ASSERT_EQ(writer.BitsUsed(), 124 + static_cast<std::int64_t>(bits.size()));
  }
  writer.FlushPartialByte();
  EXPECT_EQ(writer.Bytes(), Packed(bits, true));
  EXPECT_EQ(writer.BitsToGo(), 8);
}

TEST(BitLayer, ReaderGivesTheBitsThenZerosFromAnyOffset) {
  std::mt19937 random(11);
  std::vector<std::uint8_t> data(40);
  for (std::uint8_t& byte : data) byte = static_cast<std::uint8_t>(random());
  for (std::size_t offset : {std::size_t{0}, std::size_t{3}, std::size_t{39}, std::size_t{40}, std::size_t{45}}) {
    BitReader reader(data, offset, 132);
    std::int64_t at = 0;  // bits read so far
    const std::int64_t stored = offset < data.size() ? 8 * static_cast<std::int64_t>(data.size() - offset) : 0;
    const auto bitAt = [&](std::int64_t i) {
      if (i >= stored) return 0u;
      const std::size_t byte = offset + static_cast<std::size_t>(i / 8);
      return static_cast<unsigned>(data[byte] >> (7 - i % 8)) & 1u;
    };
    const auto expected = [&](int count) {
      std::uint32_t value = 0;
      for (int j = 0; j < count; ++j) value = value << 1 | bitAt(at + j);
      return value;
    };
    while (at < stored + 100) {
      const unsigned kind = random() % 4;
      const int count = static_cast<int>(random() % (kLargestPiece + 1));
      if (kind == 0) {
        ASSERT_EQ(static_cast<std::uint32_t>(reader.GetBit()), expected(1)) << offset << " " << at;
        at += 1;
      } else if (kind == 1) {
        ASSERT_EQ(reader.GetBits(count), expected(count)) << offset << " " << at;
        at += count;
      } else if (kind == 2) {
        ASSERT_EQ(reader.PeekBits(count), expected(count)) << offset << " " << at;
      } else {
        reader.SkipBits(count);
        at += count;
      }
      ASSERT_EQ(reader.BitsUsed(), 132 + at);
      ASSERT_EQ(reader.BitsPastEnd(), at > stored ? at - stored : 0);
    }
  }
}

}  // namespace
}  // namespace keldo::wavelet
