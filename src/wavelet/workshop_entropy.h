#pragma once
// The entropy stages of the compression workshop's bit-plane encoders: an
// adaptive integer arithmetic coder (the frequency-sorted coder of Witten,
// Neal and Cleary, one context at a time) on two alphabets, and a fixed
// prefix code the interface calls "Huffman".
//
// Alphabets, in symbol order:
//   significance  "0" "1" "+" "-"  values 0 1 2 3
//   refinement    "0" "1"          values 0 1
//
// Arithmetic streams. A model of n symbols keeps counts by sorted index:
// index 0 a zero count, 1..n the symbols, n+1 the end of the stream (count 1
// for ever). At the start every count is 1 and cum[i] = n+1-i, so cum[0] is
// the total and cum[n+1] is 0. Three kinds of stream:
//
//   stream                     models                     code bits  max total
//   Significance0Order         one                        11         511
//   SignificanceMixedOrders    four, by the former symbol 10         255
//   Refinement                 one                        11         511
//
// The mixed-order stream codes a symbol in model 1 after "+" (and for the
// first symbol), 2 after "-", 3 after "0", 4 after "1". A model whose total
// equals the maximum exactly is halved ((f+1) div 2 over every index, so the
// zero count stays 0) before its next count. The coding step, the
// renormalisation and the model update are those of the image processor's
// coder (wavelet/arith_coder.h).
//
// End of a stream: the end index is coded in the model in force without an
// update; then one more deferred bit, and a 0 followed by the deferred bits
// as ones when low is below the first quarter, otherwise a 1 followed by
// them as zeros. A stream without symbols is that close alone.
//
// Bit order: eight bits a byte, the first bit in the lowest place (weights
// 1, 2, ..., 128); a last partial byte has its unused high bits zero. The
// same order holds for the prefix code.

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "wavelet/arith_coder.h"

namespace keldo::wavelet {

enum class WorkshopAlphabet { Significance, Refinement };

// CharValue: the value of the character at `position` of `text`. The
// significance alphabet gives its table's value, and 0 for any other
// character; the refinement alphabet gives 1 for "1" and 0 otherwise.
// (CharValueMM is the significance case.)
int CharValue(const std::string& text, std::size_t position, WorkshopAlphabet alphabet);
// SymbolValue: the character of a value, taken modulo the alphabet's size
// (SymbolValueMM is the significance case).
char SymbolValue(int value, WorkshopAlphabet alphabet);

enum class WorkshopArithStream { Significance0Order, SignificanceMixedOrders, Refinement };

// 10 code bits for the mixed-order significance models; the 11-bit
// precision of the other streams is kArithElevenBits.
inline constexpr ArithPrecision kArithTenBits{10, 1023, 256, 512, 768, 255};

const ArithPrecision& PrecisionOf(WorkshopArithStream stream);
WorkshopAlphabet AlphabetOf(WorkshopArithStream stream);
// A model of `symbols` symbols as it stands at the start.
ArithModel StartingWorkshopModel(int symbols);

// One arithmetic stream being coded, symbol by symbol, so that an encoder
// can charge its budget as the bits go out: BitsEmitted() counts every bit
// emitted so far (each emission adds Pending + 1), Pending() the bits still
// deferred.
class WorkshopArithEncoder {
 public:
  explicit WorkshopArithEncoder(WorkshopArithStream stream);

  // Codes a symbol value (0..n-1; others are coded as 0).
  void EncodeSymbol(int value);
  // Codes the end of the stream and the final bits. No symbol may follow.
  void DoneEncoding();

  std::int64_t BitsEmitted() const { return bits_.BitsUsed(); }
  std::int32_t Pending() const { return state_.pending; }
  // The stream's bytes in the workshop's bit order; after DoneEncoding the
  // last partial byte is included.
  std::vector<std::uint8_t> Bytes() const;

  const ArithState& State() const { return state_; }
  int ModelCount() const { return static_cast<int>(models_.size()); }
  // Model 1..ModelCount().
  const ArithModel& Model(int model) const { return models_[static_cast<std::size_t>(model - 1)]; }
  int ModelInForce() const { return current_ + 1; }

 private:
  WorkshopArithStream stream_;
  int symbols_;
  std::vector<ArithModel> models_;
  std::size_t current_ = 0;
  ArithState state_;
  BitWriter bits_{0};
  bool done_ = false;
};

// What ended a decoding.
enum class ArithDecodeEnd {
  EndOfStream,      // the end symbol: a well-formed stream
  PastStoredBytes,  // a whole code value read past the bytes without it
  SymbolLimit,      // the caller's limit on symbols reached first
};

// The reader of one stream. The code value is the first code-bits bits,
// most significant first; past the stored bytes every bit is 0. A
// well-formed stream meets its end symbol at most code bits - 2 bits past
// its bytes, so a decoder that has read a whole code value past them stops.
class WorkshopArithDecoder {
 public:
  static constexpr int kEndOfStream = -1;
  static constexpr int kPastStoredBytes = -2;

  WorkshopArithDecoder(const std::vector<std::uint8_t>& bytes, WorkshopArithStream stream);
  WorkshopArithDecoder(const WorkshopArithDecoder&) = delete;
  WorkshopArithDecoder& operator=(const WorkshopArithDecoder&) = delete;
  ~WorkshopArithDecoder();

  // The next symbol value; kEndOfStream at the end symbol and after it;
  // kPastStoredBytes, before any decoding, once the reader has gone a whole
  // code value past the bytes.
  int DecodeSymbol();
  bool PastStoredBytes() const;
  std::int64_t BitsPastEnd() const;

 private:
  struct Bits;
  WorkshopArithStream stream_;
  int symbols_;
  std::vector<ArithModel> models_;
  std::size_t current_ = 0;
  ArithState state_;
  std::unique_ptr<Bits> bits_;
  bool ended_ = false;
};

struct ArithDecodedText {
  std::string symbols;
  ArithDecodeEnd end = ArithDecodeEnd::EndOfStream;
};

// The whole-string round trip of the "Arithmetic CoDec" test aid, and the
// readers of a file's streams. TestArithEncode codes `text` (characters read
// by CharValue) in one model of the alphabet; TestArithEncodeMM in the four
// significance models. The decoders read until the end symbol, a whole code
// value past the bytes, or `maxSymbols`.
std::vector<std::uint8_t> TestArithEncode(const std::string& text, WorkshopAlphabet alphabet);
std::vector<std::uint8_t> TestArithEncodeMM(const std::string& text);
ArithDecodedText TestArithDecode(const std::vector<std::uint8_t>& bytes, WorkshopAlphabet alphabet,
                                 std::size_t maxSymbols = std::numeric_limits<std::size_t>::max());
ArithDecodedText TestArithDecodeMM(const std::vector<std::uint8_t>& bytes,
                                   std::size_t maxSymbols = std::numeric_limits<std::size_t>::max());

// --- The prefix code: "0" -> 0, "1" -> 10, "+" -> 110, "-" -> 111 (first bit
// written first). A character outside the alphabet is coded as "0".

// The codeword of a significance character, as "0"/"1" characters.
const char* HuffCodeword(char symbol);
// The codewords of `symbols` one after another, padded with 0 to whole
// bytes, packed in the workshop's bit order.
std::vector<std::uint8_t> HuffEncode(const std::string& symbols);
// `count` symbols read back: up to three bits a symbol, stopping after a
// first 0 (0 -> "0", 10 -> "1", 110 -> "+", 111 -> "-"). Nothing when the
// bytes end before `count` symbols.
std::optional<std::string> HuffDecode(const std::vector<std::uint8_t>& bytes, std::size_t count);

// --- The digits of a run (Run >= 1) that follow a sign: while Run >= 2, an
// odd Run gives "1" and an even one "0", and Run is halved; so the bits of
// Run below its leading 1, least significant first. The Huffman forms write
// a "1" digit as its codeword "10". Costs: 2 bits a digit in the plain form,
// 2 for a one and 1 for a zero in the Huffman form; a Run of 1 costs 0.
std::string ReducedBit(std::int64_t run);
std::string ReducedBitHuff(std::int64_t run);
std::int64_t ReducedBitCost(std::int64_t run);
std::int64_t ReducedHuffBitCost(std::int64_t run);

// --- CreateLookupTable: the weight of each character at each place of a
// packed byte, by which the binary writers sum their bytes: a significance
// symbol at place p (0..3, first symbol lowest) weighs value * 4^p, a
// refinement bit at place p (0..7) weighs bit * 2^p.
struct PackingLookupTables {
  std::uint8_t symbolWeight[4][4];  // [place][value]
  std::uint8_t bitWeight[8][2];     // [place][bit]
};
PackingLookupTables CreateLookupTable();

}  // namespace keldo::wavelet
