#pragma once
// The symbols of the image processor's adaptive coders on the bit layer:
// runs, signs and refinement bits, sent by the binary coder as bits and by
// the arithmetic one through the seven-context model. The plain coders
// (.awd/.awe) and the compress-denoise coders (.bcd/.acd) share them. A
// sender and its receiver start counting bits used from the coder's
// allowance for the head; a receiver reads its stream from `offset` on.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "wavelet/arith_coder.h"
#include "wavelet/aswdr.h"
#include "wavelet/bit_layer.h"

namespace keldo::wavelet::aswdr_detail {

// A run never has this many digits below its leading 1 in any plane; a
// stream that says otherwise is broken.
inline constexpr int kMaxRunDigits = 40;

// The binary coder's symbols on the bit layer.
class BinarySender {
 public:
  static constexpr bool kTestAfterInsignificant = true;
  explicit BinarySender(std::int64_t bitsUsed = SetBitTotal()) : bits_(bitsUsed) {}
  void Run(std::int64_t run) {
    for (; run >= 2; run /= 2) bits_.TransmitDbl(static_cast<int>(run % 2));
    bits_.TransmitBit(1);
  }
  void Sign(bool negative) { bits_.TransmitBit(negative ? 1 : 0); }
  void Refine(bool moved) { bits_.TransmitBit(moved ? 1 : 0); }
  std::int64_t Used() const { return bits_.BitsUsed(); }
  // The partly filled byte, if any, then a byte 128.
  std::vector<std::uint8_t> Finish() {
    bits_.FlushPartialByte();
    bits_.AppendByte(128);
    return bits_.Bytes();
  }

 private:
  BitWriter bits_;
};

class BinaryReceiver {
 public:
  explicit BinaryReceiver(const std::vector<std::uint8_t>& file, std::size_t offset = kAswdrHeadSize,
                          std::int64_t bitsUsed = SetBitTotal())
      : bits_(file, offset, bitsUsed) {}
  // Pairs 0d add d * W, W doubling from 1, until a 1; the value is the sum
  // plus the final W. Nothing for a run of impossible length.
  std::optional<std::int64_t> Run() {
    std::int64_t value = 0, weight = 1;
    for (int digits = 0; bits_.GetBit() == 0; ++digits) {
      if (digits == kMaxRunDigits) return std::nullopt;
      if (bits_.GetBit() == 1) value += weight;
      weight *= 2;
    }
    return value + weight;
  }
  bool Sign() { return bits_.GetBit() == 1; }
  bool Refine() { return bits_.GetBit() == 1; }
  std::int64_t Used() const { return bits_.BitsUsed(); }

 private:
  BitReader bits_;
};

// The arithmetic coder's symbols. Each kind of symbol is coded in the
// context its former symbol of that kind chose: run symbols in 1 (after a
// digit 0, and at the start), 2 (after a digit 1) or 3 (after an end mark);
// signs in 4 (after +, and at the start) or 5 (after -); refinement bits, 1
// for a value that stays and 0 for one that moves, in 6 (after a 0, and at
// the start) or 7 (after a 1).
struct SymbolContexts {
  int digit = 1, sign = 4, refine = 6;
  void AfterDigit(int symbol) { digit = symbol == 0 ? 1 : symbol == 1 ? 2 : 3; }
  void AfterSign(bool negative) { sign = negative ? 5 : 4; }
  void AfterRefine(int kept) { refine = kept == 1 ? 7 : 6; }
};

inline constexpr int kEndMark = 2;

class ArithmeticSender {
 public:
  static constexpr bool kTestAfterInsignificant = false;
  explicit ArithmeticSender(std::int64_t startBits = SetBitTotal_ASWDR()) : bits_(startBits) {}
  void Run(std::int64_t run) {
    for (; run >= 2; run /= 2) Digit(static_cast<int>(run % 2));
    Digit(kEndMark);
  }
  void Sign(bool negative) {
    coder_.SetCurrentContext(contexts_.sign);
    coder_.EncodeTwo(negative ? 1 : 0, bits_);
    contexts_.AfterSign(negative);
  }
  void Refine(bool moved) {
    const int kept = moved ? 0 : 1;
    coder_.SetCurrentContext(contexts_.refine);
    coder_.EncodeTwo(kept, bits_);
    contexts_.AfterRefine(kept);
  }
  // The bits out and the bits the coder still owes.
  std::int64_t Used() const { return bits_.BitsUsed() + coder_.Pending(); }
  // DoneEncoding in the last run context, then the partly filled byte, if
  // any; no end byte.
  std::vector<std::uint8_t> Finish() { return FinishInContext(contexts_.digit); }
  // The same with DoneEncoding in the context given.
  std::vector<std::uint8_t> FinishInContext(int context) {
    coder_.SetCurrentContext(context);
    coder_.DoneEncoding(bits_);
    bits_.FlushPartialByte();
    return bits_.Bytes();
  }

 private:
  void Digit(int symbol) {
    coder_.SetCurrentContext(contexts_.digit);
    coder_.Encode(symbol, bits_);
    contexts_.AfterDigit(symbol);
  }
  BitWriter bits_;
  ArithmeticCoderTwo coder_;
  SymbolContexts contexts_;
};

// BitsUsed counts the 9 bits BeginDecoding reads ahead.
class ArithmeticReceiver {
 public:
  explicit ArithmeticReceiver(const std::vector<std::uint8_t>& file, std::size_t headSize = kAswdrHeadSize,
                              std::int64_t bitsUsed = SetBitTotal_ASWDR())
      : bits_(file, headSize, bitsUsed) {
    coder_.BeginDecoding(bits_);
  }
  std::optional<std::int64_t> Run() {
    std::int64_t value = 0, weight = 1;
    for (int digits = 0;; ++digits) {
      const int symbol = Digit();
      if (symbol == kEndMark) break;
      if (symbol > kEndMark || digits == kMaxRunDigits) return std::nullopt;
      if (symbol == 1) value += weight;
      weight *= 2;
    }
    return value + weight;
  }
  bool Sign() {
    coder_.SetCurrentContext(contexts_.sign);
    const bool negative = coder_.DecodeSymbolTwo(bits_) == 1;
    contexts_.AfterSign(negative);
    return negative;
  }
  bool Refine() {
    coder_.SetCurrentContext(contexts_.refine);
    const int kept = coder_.DecodeSymbolTwo(bits_) == 1 ? 1 : 0;
    contexts_.AfterRefine(kept);
    return kept == 0;
  }
  std::int64_t Used() const { return bits_.BitsUsed(); }

 private:
  int Digit() {
    coder_.SetCurrentContext(contexts_.digit);
    const int symbol = coder_.DecodeSymbol(bits_);
    if (symbol <= kEndMark) contexts_.AfterDigit(symbol);
    return symbol;
  }
  BitReader bits_;
  ArithmeticCoderTwo coder_;
  SymbolContexts contexts_;
};

}  // namespace keldo::wavelet::aswdr_detail
