#include "wavelet/arith_coder.h"

#include <cstdint>

namespace keldo::wavelet {
namespace {

// Division of a small dividend by a small divisor through a reciprocal:
// with m = ceil(2^32 / d), (x m) >> 32 is x div d for 0 <= x < 2^16 and
// 1 <= d <= kLargestDivisor (the error x (m d - 2^32) / (d 2^32) stays below
// 2^-16 < 1/d). The coder's products and totals are all that small at 9 code
// bits; anything else is divided as it stands.
constexpr int kLargestDivisor = 512;
constexpr std::int32_t kSmallDividend = 1 << 16;

struct Reciprocals {
  std::uint64_t of[kLargestDivisor + 1] = {};
  constexpr Reciprocals() {
    for (std::uint64_t d = 1; d <= kLargestDivisor; ++d) of[d] = ((std::uint64_t{1} << 32) + d - 1) / d;
  }
};
constexpr Reciprocals kReciprocals;

std::int32_t Divide(std::int32_t x, std::int32_t d) {
  if (x >= 0 && x < kSmallDividend && d >= 1 && d <= kLargestDivisor)
    return static_cast<std::int32_t>((static_cast<std::uint64_t>(x) * kReciprocals.of[d]) >> 32);
  return x / d;
}

void Emit(ArithState& s, int bit, BitWriter& bits) {
  bits.TransmitBit(bit);
  for (; s.pending > 0; --s.pending) bits.TransmitBit(1 - bit);
}

// Tables of one context: `characters` characters at indices 1.., an unused
// index above them whose cum is -1, and the end-of-stream index beyond.
ArithModel FreshModel(int characters) {
  ArithModel m;
  const int size = ArithmeticCoderTwo::kEofSymbol + 1;
  m.freq.assign(static_cast<std::size_t>(size), 0);
  m.cum.assign(static_cast<std::size_t>(size), 0);
  for (int i = 1; i <= characters + 1; ++i) m.freq[static_cast<std::size_t>(i)] = 1;
  for (int i = 0; i <= characters + 1; ++i) m.cum[static_cast<std::size_t>(i)] = characters - i;
  m.charToIndex.assign(static_cast<std::size_t>(characters), 0);
  m.indexToChar.assign(static_cast<std::size_t>(size), 0);
  for (int k = 0; k < characters; ++k) {
    m.charToIndex[static_cast<std::size_t>(k)] = static_cast<std::int16_t>(k + 1);
    m.indexToChar[static_cast<std::size_t>(k + 1)] = static_cast<std::int16_t>(k);
  }
  return m;
}

}  // namespace

void NarrowToIndex(ArithState& s, const ArithModel& m, int index) {
  s.range = s.high - s.low + 1;
  const std::int32_t total = m.cum[0];
  s.high = s.low + Divide(s.range * m.cum[static_cast<std::size_t>(index - 1)], total) - 1;
  s.low = s.low + Divide(s.range * m.cum[static_cast<std::size_t>(index)], total);
}

void RenormaliseEncoding(ArithState& s, const ArithPrecision& p, BitWriter& bits) {
  for (;;) {
    if (s.high < p.half) {
      Emit(s, 0, bits);
    } else if (s.low >= p.half) {
      Emit(s, 1, bits);
      s.low -= p.half;
      s.high -= p.half;
    } else if (s.low >= p.firstQuarter && s.high < p.thirdQuarter) {
      ++s.pending;
      s.low -= p.firstQuarter;
      s.high -= p.firstQuarter;
    } else {
      return;
    }
    s.low = 2 * s.low;
    s.high = 2 * s.high + 1;
  }
}

void RenormaliseDecoding(ArithState& s, const ArithPrecision& p, BitReader& bits) {
  for (;;) {
    if (s.high >= p.half) {
      if (s.low >= p.half) {
        s.value -= p.half;
        s.low -= p.half;
        s.high -= p.half;
      } else if (s.low >= p.firstQuarter && s.high < p.thirdQuarter) {
        s.value -= p.firstQuarter;
        s.low -= p.firstQuarter;
        s.high -= p.firstQuarter;
      } else {
        return;
      }
    }
    s.low = 2 * s.low;
    s.high = 2 * s.high + 1;
    s.value = 2 * s.value + bits.GetBit();
  }
}

int FindIndex(const ArithState& s, const ArithModel& m, int lastIndex) {
  const std::int32_t range = s.high - s.low + 1;
  const std::int32_t target = Divide((s.value - s.low + 1) * m.cum[0] - 1, range);
  int i = 1;
  while (i < lastIndex && m.cum[static_cast<std::size_t>(i)] > target) ++i;
  return i;
}

void UpdateModel(ArithModel& m, int index, int rescaleTop, std::int32_t maxFrequency) {
  auto& freq = m.freq;
  auto& cum = m.cum;
  if (cum[0] == maxFrequency) {
    std::int32_t running = 0;
    for (int j = rescaleTop; j >= 0; --j) {
      const auto u = static_cast<std::size_t>(j);
      freq[u] = (freq[u] + 1) / 2;
      cum[u] = running;
      running += freq[u];
    }
  }
  int k = index;
  while (freq[static_cast<std::size_t>(k)] == freq[static_cast<std::size_t>(k - 1)]) --k;
  if (k < index) {
    const std::int16_t atK = m.indexToChar[static_cast<std::size_t>(k)];
    const std::int16_t atIndex = m.indexToChar[static_cast<std::size_t>(index)];
    m.indexToChar[static_cast<std::size_t>(k)] = atIndex;
    m.indexToChar[static_cast<std::size_t>(index)] = atK;
    m.charToIndex[static_cast<std::size_t>(atK)] = static_cast<std::int16_t>(index);
    m.charToIndex[static_cast<std::size_t>(atIndex)] = static_cast<std::int16_t>(k);
  }
  ++freq[static_cast<std::size_t>(k)];
  for (int j = k - 1; j >= 0; --j) ++cum[static_cast<std::size_t>(j)];
}

void ArithmeticCoderTwo::InitializeArithmeticCodingTwo() {
  for (int c = 1; c <= kContexts; ++c) models_[static_cast<std::size_t>(c - 1)] = FreshModel(c <= 3 ? 3 : 2);
  state_ = ArithState{};
  state_.high = kArithNineBits.top;
  currentContext_ = 1;
}

void ArithmeticCoderTwo::EncodeIn(int character, int rescaleTop, BitWriter& bits) {
  ArithModel& m = Model();
  const int index = m.charToIndex[static_cast<std::size_t>(character)];
  NarrowToIndex(state_, m, index);
  RenormaliseEncoding(state_, kArithNineBits, bits);
  UpdateModel(m, index, rescaleTop, kArithNineBits.maxFrequency);
}

void ArithmeticCoderTwo::Encode(int character, BitWriter& bits) { EncodeIn(character, kSymbolCount, bits); }

void ArithmeticCoderTwo::EncodeTwo(int character, BitWriter& bits) { EncodeIn(character, kSymbolCount - 1, bits); }

void ArithmeticCoderTwo::DoneEncoding(BitWriter& bits) {
  NarrowToIndex(state_, Model(), 1);
  RenormaliseEncoding(state_, kArithNineBits, bits);
  ++state_.pending;
  bits.TransmitBit(state_.low >= kArithNineBits.firstQuarter ? 1 : 0);
  for (; state_.pending > 0; --state_.pending) bits.TransmitBit(0);
}

void ArithmeticCoderTwo::BeginDecoding(BitReader& bits) {
  state_.value = 0;
  for (int i = 0; i < kArithNineBits.codeBits; ++i) state_.value = 2 * state_.value + bits.GetBit();
  state_.low = 0;
  state_.high = kArithNineBits.top;
}

int ArithmeticCoderTwo::DecodeIn(int rescaleTop, BitReader& bits) {
  ArithModel& m = Model();
  const int index = FindIndex(state_, m, kEofSymbol);
  NarrowToIndex(state_, m, index);
  RenormaliseDecoding(state_, kArithNineBits, bits);
  if (index == kEofSymbol) return kEofSymbol;
  const int character = m.indexToChar[static_cast<std::size_t>(index)];
  UpdateModel(m, index, rescaleTop, kArithNineBits.maxFrequency);
  return character;
}

int ArithmeticCoderTwo::DecodeSymbol(BitReader& bits) { return DecodeIn(kSymbolCount, bits); }

int ArithmeticCoderTwo::DecodeSymbolTwo(BitReader& bits) { return DecodeIn(kSymbolCount - 1, bits); }

}  // namespace keldo::wavelet
