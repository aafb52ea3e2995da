#pragma once
// The adaptive arithmetic coder of the image processor, of the
// frequency-sorted integer kind (Witten, Neal and Cleary), on the bit layer:
// the coding step, the renormalisation and the model update are kept apart
// from the contexts so that a single-context coder can run the same step
// on its own model and precision.
//
// A model keeps counts by sorted index: freq[i] of index i (freq[0] = 0),
// cum[i] the sum of the counts above i, so cum[0] is the total; index i
// covers [cum[i], cum[i-1]) of it. Symbols move towards index 1 as they
// grow common. Integer arithmetic throughout: Range * cum stays below 2^16
// at 9 code bits.

#include <array>
#include <cstdint>
#include <vector>

#include "wavelet/bit_layer.h"

namespace keldo::wavelet {

struct ArithPrecision {
  int codeBits;
  std::int32_t top, firstQuarter, half, thirdQuarter, maxFrequency;
};
// InitializeArithmeticCoding's precision and InitializeArithmeticCodingTwo's:
// top = 2^bits - 1, quarters of top + 1, maximum total 2^(bits-2) - 1, so
// that Range >= first quarter + 1 stays above any total.
inline constexpr ArithPrecision kArithElevenBits{11, 2047, 512, 1024, 1536, 511};
inline constexpr ArithPrecision kArithNineBits{9, 511, 128, 256, 384, 127};

struct ArithModel {
  std::vector<std::int32_t> freq, cum;                // by sorted index
  std::vector<std::int16_t> charToIndex, indexToChar;  // character <-> index
};

struct ArithState {
  std::int32_t low = 0, high = 0, pending = 0, range = 0, value = 0;
};

// --- The step shared by the coders of this family.

// Narrows [low, high] to sorted index i of the model.
void NarrowToIndex(ArithState& s, const ArithModel& m, int index);
// Renormalises after a narrowing on encoding: each settled bit goes out by
// TransmitBit, followed by the pending bits of the other value.
void RenormaliseEncoding(ArithState& s, const ArithPrecision& p, BitWriter& bits);
// The same on decoding, shifting the next bit into the value.
void RenormaliseDecoding(ArithState& s, const ArithPrecision& p, BitReader& bits);
// The first sorted index whose cum is at or below the target the value
// gives; `lastIndex` bounds the search.
int FindIndex(const ArithState& s, const ArithModel& m, int lastIndex);
// Counts index i once more: when the total has reached `maxFrequency`, the
// counts of indices rescaleTop..0 are halved (rounding up, a 0 staying 0)
// first; then i moves to the front of its run of equal counts, its
// character trading places, and its count and the sums above it grow by 1.
void UpdateModel(ArithModel& m, int index, int rescaleTop, std::int32_t maxFrequency);

// The steps above written once over the model's type (anything with freq,
// cum, charToIndex and indexToChar indexed by int), so that the
// multi-context coder runs them inline on fixed-size tables.
namespace arith_step {

// Division of a small dividend by a small divisor through a reciprocal:
// with m = ceil(2^32 / d), (x m) >> 32 is x div d for 0 <= x < 2^16 and
// 1 <= d <= kLargestDivisor (the error x (m d - 2^32) / (d 2^32) stays below
// 2^-16 < 1/d). The coder's products and totals are all that small at 9 code
// bits; anything else is divided as it stands.
inline constexpr int kLargestDivisor = 512;
inline constexpr std::int32_t kSmallDividend = 1 << 16;

struct Reciprocals {
  std::uint64_t of[kLargestDivisor + 1] = {};
  constexpr Reciprocals() {
    for (std::uint64_t d = 1; d <= kLargestDivisor; ++d) of[d] = ((std::uint64_t{1} << 32) + d - 1) / d;
  }
};
inline constexpr Reciprocals kReciprocals;

inline std::int32_t Divide(std::int32_t x, std::int32_t d) {
  if (x >= 0 && x < kSmallDividend && d >= 1 && d <= kLargestDivisor)
    return static_cast<std::int32_t>((static_cast<std::uint64_t>(x) * kReciprocals.of[d]) >> 32);
  return x / d;
}

inline void Emit(ArithState& s, int bit, BitWriter& bits) {
  bits.TransmitBit(bit);
  for (; s.pending > 0; --s.pending) bits.TransmitBit(1 - bit);
}

template <typename Model>
void Narrow(ArithState& s, const Model& m, int index) {
  s.range = s.high - s.low + 1;
  const std::int32_t total = m.cum[0];
  s.high = s.low + Divide(s.range * m.cum[static_cast<std::size_t>(index - 1)], total) - 1;
  s.low = s.low + Divide(s.range * m.cum[static_cast<std::size_t>(index)], total);
}

inline void RenormaliseEncoding(ArithState& s, const ArithPrecision& p, BitWriter& bits) {
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

inline void RenormaliseDecoding(ArithState& s, const ArithPrecision& p, BitReader& bits) {
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

template <typename Model>
int Find(const ArithState& s, const Model& m, int lastIndex) {
  const std::int32_t range = s.high - s.low + 1;
  const std::int32_t target = Divide((s.value - s.low + 1) * m.cum[0] - 1, range);
  int i = 1;
  while (i < lastIndex && m.cum[static_cast<std::size_t>(i)] > target) ++i;
  return i;
}

template <typename Model>
void Update(Model& m, int index, int rescaleTop, std::int32_t maxFrequency) {
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

}  // namespace arith_step

// --- The multi-context coder.

// InitializeArithmeticCodingTwo's coder: 9 code bits and seven contexts.
// Contexts 1..3 hold the characters 0, 1 (run digits) and 2 (the end mark of
// a run) and are coded by Encode / DecodeSymbol; contexts 4 and 5 (signs)
// and 6 and 7 (refinement bits) hold 0 and 1 and are coded by EncodeTwo /
// DecodeSymbolTwo. The context in force is CurrentContext.
class ArithmeticCoderTwo {
 public:
  static constexpr int kContexts = 7;
  static constexpr int kSymbolCount = 3;
  static constexpr int kEofSymbol = 4;

  ArithmeticCoderTwo() { InitializeArithmeticCodingTwo(); }
  void InitializeArithmeticCodingTwo();

  int CurrentContext() const { return currentContext_; }
  void SetCurrentContext(int context) { currentContext_ = context; }
  std::int32_t Pending() const { return state_.pending; }

  // A character of a three-character context; the model is halved over
  // indices 3..0.
  void Encode(int character, BitWriter& bits) { EncodeIn(character, kSymbolCount, bits); }
  // A character of a two-character context; halved over indices 2..0.
  void EncodeTwo(int character, BitWriter& bits) { EncodeIn(character, kSymbolCount - 1, bits); }
  // The close: index 1 of the current context without an update, one more
  // pending bit, then a 1 if low >= the first quarter, otherwise a 0, and
  // the pending bits as zeros in both cases.
  void DoneEncoding(BitWriter& bits);

  // The value from the first 9 bits, most significant first.
  void BeginDecoding(BitReader& bits);
  // The character read in the current context; kEofSymbol when the search
  // ends on that index, which a coder's stream never gives.
  int DecodeSymbol(BitReader& bits) { return DecodeIn(kSymbolCount, bits); }
  int DecodeSymbolTwo(BitReader& bits) { return DecodeIn(kSymbolCount - 1, bits); }

 private:
  // One context's tables, as ArithModel's, at their fixed sizes: indices
  // 0..kEofSymbol, characters 0..kSymbolCount-1.
  struct Model {
    std::array<std::int32_t, kEofSymbol + 1> freq{}, cum{};
    std::array<std::int16_t, kSymbolCount> charToIndex{};
    std::array<std::int16_t, kEofSymbol + 1> indexToChar{};
  };
  static Model FreshModel(int characters);
  Model& Current() { return models_[static_cast<std::size_t>(currentContext_ - 1)]; }

  void EncodeIn(int character, int rescaleTop, BitWriter& bits) {
    Model& m = Current();
    const int index = m.charToIndex[static_cast<std::size_t>(character)];
    arith_step::Narrow(state_, m, index);
    arith_step::RenormaliseEncoding(state_, kArithNineBits, bits);
    arith_step::Update(m, index, rescaleTop, kArithNineBits.maxFrequency);
  }
  int DecodeIn(int rescaleTop, BitReader& bits) {
    Model& m = Current();
    const int index = arith_step::Find(state_, m, kEofSymbol);
    arith_step::Narrow(state_, m, index);
    arith_step::RenormaliseDecoding(state_, kArithNineBits, bits);
    if (index == kEofSymbol) return kEofSymbol;
    const int character = m.indexToChar[static_cast<std::size_t>(index)];
    arith_step::Update(m, index, rescaleTop, kArithNineBits.maxFrequency);
    return character;
  }

  std::array<Model, kContexts> models_;
  ArithState state_;
  int currentContext_ = 1;
};

}  // namespace keldo::wavelet
