#pragma once
// The bit layer of the image processor's coders: bits are packed eight to a
// byte, each byte filled from its top bit (weight 128 first), and every bit
// written or read is counted in BitsUsed, which starts from the coder's fixed
// allowance for the file head.

#include <cstddef>
#include <cstdint>
#include <vector>

namespace keldo::wavelet {

// What BitsUsed starts from, by coder.
constexpr std::int64_t SetBitTotal() { return 124; }        // binary
constexpr std::int64_t SetBitTotal_ASWDR() { return 132; }  // arithmetic and lossless
constexpr std::int64_t SetBitTotal_WDR_AC() { return 140; } // the arithmetic region coder

class BitWriter {
 public:
  explicit BitWriter(std::int64_t bitsUsed) : bitsUsed_(bitsUsed) {}
  // BitsToGo -= 1; a 1 adds 2^BitsToGo to the byte; at 0 the byte is stored
  // and a new one begun.
  void TransmitBit(int bit) {
    --bitsToGo_;
    buffer_ |= (bit != 0 ? 1 : 0) << bitsToGo_;
    if (bitsToGo_ == 0) {
      bytes_.push_back(static_cast<std::uint8_t>(buffer_));
      bitsToGo_ = 8;
      buffer_ = 0;
    }
    ++bitsUsed_;
  }
  // The low `count` bits of `bits` (count up to 24), the highest first: the
  // bytes and count of TransmitBit for each in turn.
  void TransmitBits(std::uint32_t bits, int count) {
    bitsUsed_ += count;
    while (count > 0) {
      const int take = count < bitsToGo_ ? count : bitsToGo_;
      count -= take;
      bitsToGo_ -= take;
      buffer_ |= static_cast<int>((bits >> count) & ((1u << take) - 1)) << bitsToGo_;
      if (bitsToGo_ == 0) {
        bytes_.push_back(static_cast<std::uint8_t>(buffer_));
        bitsToGo_ = 8;
        buffer_ = 0;
      }
    }
  }
  // `count` copies of the bit.
  void TransmitRepeated(int bit, std::int64_t count) {
    constexpr int kPiece = 24;
    for (; count > 0; count -= kPiece) {
      const int take = count < kPiece ? static_cast<int>(count) : kPiece;
      TransmitBits(bit != 0 ? (1u << take) - 1 : 0u, take);
    }
  }
  // A 0, then the bit.
  void TransmitDbl(int bit) {
    TransmitBit(0);
    TransmitBit(bit);
  }
  // Stores the partly filled byte, its low bits zero, when any bit stands
  // in it.
  void FlushPartialByte();
  void AppendByte(std::uint8_t byte) { bytes_.push_back(byte); }

  std::int64_t BitsUsed() const { return bitsUsed_; }
  int BitsToGo() const { return bitsToGo_; }
  const std::vector<std::uint8_t>& Bytes() const { return bytes_; }

 private:
  std::vector<std::uint8_t> bytes_;
  int buffer_ = 0;
  int bitsToGo_ = 8;
  std::int64_t bitsUsed_;
};

// Reads the bits of `data` from `offset` on in the writer's order. Past the
// end every bit is 0; BitsPastEnd counts those.
class BitReader {
 public:
  BitReader(const std::vector<std::uint8_t>& data, std::size_t offset, std::int64_t bitsUsed)
      : data_(data), next_(offset), bitsUsed_(bitsUsed) {}
  // At BitsToGo 0 the next byte is taken; BitsToGo -= 1; the bit is 1 when
  // the byte holds at least 2^BitsToGo, which is then taken off.
  int GetBit() {
    if (bitsToGo_ == 0) NextByte();
    --bitsToGo_;
    ++bitsUsed_;
    if (pastEnd_) ++bitsPastEnd_;
    return (buffer_ >> bitsToGo_) & 1;
  }

  // The next `count` bits (up to 24), the first highest: GetBit's value,
  // count and reads for each in turn.
  std::uint32_t GetBits(int count) {
    std::uint32_t value = 0;
    while (count > 0) {
      if (bitsToGo_ == 0) NextByte();
      const int take = count < bitsToGo_ ? count : bitsToGo_;
      count -= take;
      bitsToGo_ -= take;
      bitsUsed_ += take;
      if (pastEnd_) bitsPastEnd_ += take;
      value = value << take | (static_cast<std::uint32_t>(buffer_ >> bitsToGo_) & ((1u << take) - 1));
    }
    return value;
  }

  std::int64_t BitsUsed() const { return bitsUsed_; }
  std::int64_t BitsPastEnd() const { return bitsPastEnd_; }

 private:
  void NextByte();
  const std::vector<std::uint8_t>& data_;
  std::size_t next_;
  int buffer_ = 0;
  int bitsToGo_ = 0;
  std::int64_t bitsUsed_;
  std::int64_t bitsPastEnd_ = 0;
  bool pastEnd_ = false;
};

}  // namespace keldo::wavelet
