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
#include <bit>
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
  bits.TransmitRepeated(1 - bit, s.pending);
  s.pending = 0;
}

// The steps of a renormalisation in which low and high share their top bit
// (settling it) come first, and there are as many as the leading bits they
// share: none follows one that subtracts a quarter, which leaves low below
// half and high at or above it. So those steps are taken at once: the
// shared bits shifted out of low, and ones into high. Only for a state in
// range (0 <= low <= high <= top).
inline int SharedTopBits(const ArithState& s, const ArithPrecision& p) {
  return p.codeBits - std::bit_width(static_cast<std::uint32_t>(s.low ^ s.high));
}

inline bool InRange(const ArithState& s, const ArithPrecision& p) {
  return s.low >= 0 && s.low <= s.high && s.high <= p.top;
}

inline void ShiftOutShared(ArithState& s, const ArithPrecision& p, int shared) {
  s.low = (s.low << shared) & p.top;
  s.high = ((s.high << shared) | ((1 << shared) - 1)) & p.top;
}

// Then low is below half and high at or above it, and a step that takes a
// quarter off (low >= the first quarter, high below the third) keeps them
// so: it drops the bit below the top of each, low's a 1 and high's a 0, and
// shifts the lower bits up, the top bit staying. So the number of such
// steps is the run of 1s in low and 0s in high from the bit below the top
// down, and they too go at once.
inline int QuarterSteps(const ArithState& s, const ArithPrecision& p) {
  const std::uint32_t below = static_cast<std::uint32_t>(p.half - 1);
  const std::uint32_t breaks = ~(static_cast<std::uint32_t>(s.low) & ~static_cast<std::uint32_t>(s.high)) & below;
  return p.codeBits - 1 - std::bit_width(breaks);
}

inline void ShiftOutQuarters(ArithState& s, const ArithPrecision& p, int quarters) {
  const std::int32_t below = p.half - 1;
  s.low = (s.low << quarters) & below;
  s.high = (((s.high << quarters) | ((1 << quarters) - 1)) & below) | p.half;
}

template <typename Model>
inline void Narrow(ArithState& s, const Model& m, int index) {
  s.range = s.high - s.low + 1;
  const std::int32_t total = m.cum[0];
  s.high = s.low + Divide(s.range * m.cum[static_cast<std::size_t>(index - 1)], total) - 1;
  s.low = s.low + Divide(s.range * m.cum[static_cast<std::size_t>(index)], total);
}

// One step at a time, for any state (arith_coder.cpp).
void RenormaliseEncodingByStep(ArithState& s, const ArithPrecision& p, BitWriter& bits);
void RenormaliseDecodingByStep(ArithState& s, const ArithPrecision& p, BitReader& bits);

// The most bits one TransmitBits takes.
inline constexpr int kLargestJoinedPiece = 24;

inline void RenormaliseEncoding(ArithState& s, const ArithPrecision& p, BitWriter& bits) {
  if (!InRange(s, p)) return RenormaliseEncodingByStep(s, p, bits);
  const int shared = SharedTopBits(s, p);
  if (shared > 0) {
    // The first settled bit, then the pending bits (its opposite), then the
    // rest; when they are few enough, as one piece: a 1 and pending 0s are
    // 2^pending, a 0 and pending 1s 2^pending - 1.
    const int top = p.codeBits - 1;
    const auto first = static_cast<std::uint32_t>(s.low >> top) & 1u;
    const std::uint32_t rest = static_cast<std::uint32_t>(s.low >> (p.codeBits - shared)) & ((1u << (shared - 1)) - 1);
    if (s.pending <= kLargestJoinedPiece - shared) {
      const std::uint32_t lead = (1u << s.pending) - (first ^ 1u);
      bits.TransmitBits(lead << (shared - 1) | rest, s.pending + shared);
      s.pending = 0;
    } else {
      Emit(s, static_cast<int>(first), bits);
      bits.TransmitBits(rest, shared - 1);
    }
    ShiftOutShared(s, p, shared);
  }
  const int quarters = QuarterSteps(s, p);
  s.pending += quarters;
  ShiftOutQuarters(s, p, quarters);
}

// As on encoding, when the value too shares the settled bits (it lies
// between low and high in any stream a coder wrote), so that dropping them
// is what the steps' subtractions do. The bits of both kinds of step, the
// shared ones then the quarters', are read as one piece; with no shared bit
// the first kind changes nothing, so it needs no branch.
inline void RenormaliseDecoding(ArithState& s, const ArithPrecision& p, BitReader& bits) {
  if (!InRange(s, p) || s.value < 0 || s.value > p.top) return RenormaliseDecodingByStep(s, p, bits);
  const int shared = SharedTopBits(s, p);
  const int kept = p.codeBits - shared;
  if ((s.value >> kept) != (s.low >> kept)) return RenormaliseDecodingByStep(s, p, bits);
  ShiftOutShared(s, p, shared);
  const int quarters = QuarterSteps(s, p);
  const std::uint32_t piece = bits.PeekBits(shared + quarters);
  s.value = ((s.value << shared) & p.top) | static_cast<std::int32_t>(piece >> quarters);
  if (s.value < s.low || s.value > s.high) {
    // Take the shared bits alone and go on step by step.
    bits.SkipBits(shared);
    return RenormaliseDecodingByStep(s, p, bits);
  }
  bits.SkipBits(shared + quarters);
  s.value = (s.value & p.half) | ((s.value << quarters) & (p.half - 1)) |
            static_cast<std::int32_t>(piece & ((1u << quarters) - 1));
  ShiftOutQuarters(s, p, quarters);
}

template <typename Model>
inline int Find(const ArithState& s, const Model& m, int lastIndex) {
  const std::int32_t range = s.high - s.low + 1;
  const std::int32_t target = Divide((s.value - s.low + 1) * m.cum[0] - 1, range);
  int i = 1;
  while (i < lastIndex && m.cum[static_cast<std::size_t>(i)] > target) ++i;
  return i;
}

template <typename Model>
inline void Update(Model& m, int index, int rescaleTop, std::int32_t maxFrequency) {
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
  // arith_step::Find with the comparisons made on products: for the target
  // t = floor((X - 1) / range), X = (value - low + 1) * total, and any count
  // c, c > t exactly when c * range >= X. When Divide's quotient is that
  // floor (X - 1 and range small, X - 1 not negative) the search runs on
  // the products, whose operands are at hand before the quotient would be,
  // and it branches: a predicted symbol lets the next steps start before the
  // comparisons are done.
  static int FindByProducts(const ArithState& s, const Model& m) {
    const std::int32_t range = s.high - s.low + 1;
    const std::int32_t x = (s.value - s.low + 1) * m.cum[0];
    if (x < 1 || x > arith_step::kSmallDividend || range < 1 || range > arith_step::kLargestDivisor)
      return arith_step::Find(s, m, kEofSymbol);
    int i = 1;
    while (i < kEofSymbol && m.cum[static_cast<std::size_t>(i)] * range >= x) ++i;
    return i;
  }
  int DecodeIn(int rescaleTop, BitReader& bits) {
    Model& m = Current();
    const int index = FindByProducts(state_, m);
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
