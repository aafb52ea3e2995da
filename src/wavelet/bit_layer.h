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
  void TransmitBit(int bit) { TransmitBits(bit != 0 ? 1u : 0u, 1); }
  // The low `count` bits of `bits` (count up to 24), the highest first: the
  // bytes and count of TransmitBit for each in turn. The bits of the byte
  // being filled wait, right-aligned, in `partial_`; they and the new ones
  // (at most 31) go out a byte at a time from the top.
  void TransmitBits(std::uint32_t bits, int count) {
    bitsUsed_ += count;
    const std::uint64_t mask = (std::uint64_t{1} << count) - 1;
    const std::uint64_t joined = (std::uint64_t{partial_} << count) | (bits & mask);
    filled_ += count;
    while (filled_ >= 8) {
      filled_ -= 8;
      bytes_.push_back(static_cast<std::uint8_t>(joined >> filled_));
    }
    partial_ = static_cast<std::uint32_t>(joined & ((1u << filled_) - 1));
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
  void TransmitDbl(int bit) { TransmitBits(bit != 0 ? 1u : 0u, 2); }
  // Stores the partly filled byte, its low bits zero, when any bit stands
  // in it.
  void FlushPartialByte();
  void AppendByte(std::uint8_t byte) { bytes_.push_back(byte); }

  std::int64_t BitsUsed() const { return bitsUsed_; }
  int BitsToGo() const { return 8 - filled_; }
  const std::vector<std::uint8_t>& Bytes() const { return bytes_; }

 private:
  std::vector<std::uint8_t> bytes_;
  std::uint32_t partial_ = 0;  // the filled_ bits of the byte begun
  int filled_ = 0;             // 0..7
  std::int64_t bitsUsed_;
};

// Reads the bits of `data` from `offset` on in the writer's order. Past the
// end every bit is 0; BitsPastEnd counts those.
class BitReader {
 public:
  BitReader(const std::vector<std::uint8_t>& data, std::size_t offset, std::int64_t bitsUsed)
      : data_(data),
        next_(offset),
        bitsUsed_(bitsUsed),
        firstBit_(bitsUsed),
        storedBits_(offset < data.size() ? 8 * static_cast<std::int64_t>(data.size() - offset) : 0) {}
  // At BitsToGo 0 the next byte is taken; BitsToGo -= 1; the bit is 1 when
  // the byte holds at least 2^BitsToGo, which is then taken off.
  int GetBit() { return static_cast<int>(GetBits(1)); }

  // The next `count` bits (up to 24), the first highest: GetBit's value,
  // count and reads for each in turn. The bytes are taken ahead into a
  // window, whose low `unread_` bits are the next ones.
  std::uint32_t GetBits(int count) {
    if (unread_ < count) Refill();
    unread_ -= count;
    bitsUsed_ += count;
    return static_cast<std::uint32_t>(window_ >> unread_) & ((1u << count) - 1);
  }

  // GetBits(count)'s value without taking the bits; SkipBits takes them
  // (count up to 24 for both).
  std::uint32_t PeekBits(int count) {
    if (unread_ < count) Refill();
    return static_cast<std::uint32_t>(window_ >> (unread_ - count)) & ((1u << count) - 1);
  }
  void SkipBits(int count) {
    if (unread_ < count) Refill();
    unread_ -= count;
    bitsUsed_ += count;
  }

  std::int64_t BitsUsed() const { return bitsUsed_; }
  // The bits read beyond the stored bytes: as the bits are read in order,
  // those past the first storedBits_ of them.
  std::int64_t BitsPastEnd() const {
    const std::int64_t past = bitsUsed_ - firstBit_ - storedBits_;
    return past > 0 ? past : 0;
  }

 private:
  // Takes whole bytes (zero past the end) into the window until more than
  // 56 bits wait there.
  void Refill();
  const std::vector<std::uint8_t>& data_;
  std::size_t next_;
  std::uint64_t window_ = 0;
  int unread_ = 0;  // 0..64
  std::int64_t bitsUsed_;
  std::int64_t firstBit_;
  std::int64_t storedBits_;
};

}  // namespace keldo::wavelet
