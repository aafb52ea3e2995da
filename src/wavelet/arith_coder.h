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
  void Encode(int character, BitWriter& bits);
  // A character of a two-character context; halved over indices 2..0.
  void EncodeTwo(int character, BitWriter& bits);
  // The close: index 1 of the current context without an update, one more
  // pending bit, then a 1 if low >= the first quarter, otherwise a 0, and
  // the pending bits as zeros in both cases.
  void DoneEncoding(BitWriter& bits);

  // The value from the first 9 bits, most significant first.
  void BeginDecoding(BitReader& bits);
  // The character read in the current context; kEofSymbol when the search
  // ends on that index, which a coder's stream never gives.
  int DecodeSymbol(BitReader& bits);
  int DecodeSymbolTwo(BitReader& bits);

 private:
  ArithModel& Model() { return models_[static_cast<std::size_t>(currentContext_ - 1)]; }
  void EncodeIn(int character, int rescaleTop, BitWriter& bits);
  int DecodeIn(int rescaleTop, BitReader& bits);

  std::array<ArithModel, kContexts> models_;
  ArithState state_;
  int currentContext_ = 1;
};

}  // namespace keldo::wavelet
