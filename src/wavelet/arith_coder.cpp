#include "wavelet/arith_coder.h"

#include <cstdint>

namespace keldo::wavelet {

namespace arith_step {

void RenormaliseEncodingByStep(ArithState& s, const ArithPrecision& p, BitWriter& bits) {
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

void RenormaliseDecodingByStep(ArithState& s, const ArithPrecision& p, BitReader& bits) {
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

}  // namespace arith_step

void NarrowToIndex(ArithState& s, const ArithModel& m, int index) { arith_step::Narrow(s, m, index); }

void RenormaliseEncoding(ArithState& s, const ArithPrecision& p, BitWriter& bits) {
  arith_step::RenormaliseEncoding(s, p, bits);
}

void RenormaliseDecoding(ArithState& s, const ArithPrecision& p, BitReader& bits) {
  arith_step::RenormaliseDecoding(s, p, bits);
}

int FindIndex(const ArithState& s, const ArithModel& m, int lastIndex) { return arith_step::Find(s, m, lastIndex); }

void UpdateModel(ArithModel& m, int index, int rescaleTop, std::int32_t maxFrequency) {
  arith_step::Update(m, index, rescaleTop, maxFrequency);
}

// Tables of one context: `characters` characters at indices 1.., an unused
// index above them whose cum is -1, and the end-of-stream index beyond.
ArithmeticCoderTwo::Model ArithmeticCoderTwo::FreshModel(int characters) {
  Model m;
  for (int i = 1; i <= characters + 1; ++i) m.freq[static_cast<std::size_t>(i)] = 1;
  for (int i = 0; i <= characters + 1; ++i) m.cum[static_cast<std::size_t>(i)] = characters - i;
  for (int k = 0; k < characters; ++k) {
    m.charToIndex[static_cast<std::size_t>(k)] = static_cast<std::int16_t>(k + 1);
    m.indexToChar[static_cast<std::size_t>(k + 1)] = static_cast<std::int16_t>(k);
  }
  return m;
}

void ArithmeticCoderTwo::InitializeArithmeticCodingTwo() {
  for (int c = 1; c <= kContexts; ++c) models_[static_cast<std::size_t>(c - 1)] = FreshModel(c <= 3 ? 3 : 2);
  state_ = ArithState{};
  state_.high = kArithNineBits.top;
  currentContext_ = 1;
}

void ArithmeticCoderTwo::DoneEncoding(BitWriter& bits) {
  arith_step::Narrow(state_, Current(), 1);
  arith_step::RenormaliseEncoding(state_, kArithNineBits, bits);
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

}  // namespace keldo::wavelet
