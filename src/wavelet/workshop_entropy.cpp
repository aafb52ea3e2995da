#include "wavelet/workshop_entropy.h"

#include <array>

#include "wavelet/bit_layer.h"

namespace keldo::wavelet {
namespace {

constexpr char kSignificanceCharacters[4] = {'0', '1', '+', '-'};

// The mixed-order stream's next model (0-based) after a symbol value:
// model 1 after "+", 2 after "-", 3 after "0", 4 after "1".
constexpr std::size_t kModelAfter[4] = {2, 3, 0, 1};

int SymbolCountOf(WorkshopArithStream stream) {
  return AlphabetOf(stream) == WorkshopAlphabet::Significance ? 4 : 2;
}

int ModelCountOf(WorkshopArithStream stream) {
  return stream == WorkshopArithStream::SignificanceMixedOrders ? 4 : 1;
}

std::vector<ArithModel> StartingModels(WorkshopArithStream stream) {
  return std::vector<ArithModel>(static_cast<std::size_t>(ModelCountOf(stream)),
                                 StartingWorkshopModel(SymbolCountOf(stream)));
}

std::size_t NextModel(WorkshopArithStream stream, std::size_t current, int value) {
  if (stream != WorkshopArithStream::SignificanceMixedOrders) return current;
  return kModelAfter[static_cast<std::size_t>(value)];
}

// The shared bit layer fills a byte from its top bit; the workshop's
// streams fill it from the lowest. The bits and their order are the same,
// so a stream changes between the two by reversing each byte.
constexpr std::uint8_t ReverseBits(std::uint8_t b) {
  std::uint8_t r = 0;
  for (int k = 0; k < 8; ++k) r = static_cast<std::uint8_t>(r | (((b >> k) & 1) << (7 - k)));
  return r;
}

struct ReversedBytes {
  std::array<std::uint8_t, 256> of{};
  constexpr ReversedBytes() {
    for (int b = 0; b < 256; ++b) of[static_cast<std::size_t>(b)] = ReverseBits(static_cast<std::uint8_t>(b));
  }
};
constexpr ReversedBytes kReversed;

std::vector<std::uint8_t> ReverseEachByte(const std::vector<std::uint8_t>& bytes) {
  std::vector<std::uint8_t> out(bytes.size());
  for (std::size_t i = 0; i < bytes.size(); ++i) out[i] = kReversed.of[bytes[i]];
  return out;
}

ArithDecodedText DecodeText(const std::vector<std::uint8_t>& bytes, WorkshopArithStream stream,
                            std::size_t maxSymbols) {
  ArithDecodedText out;
  WorkshopArithDecoder decoder(bytes, stream);
  const WorkshopAlphabet alphabet = AlphabetOf(stream);
  for (;;) {
    const int value = decoder.DecodeSymbol();
    if (value == WorkshopArithDecoder::kEndOfStream) break;
    if (value == WorkshopArithDecoder::kPastStoredBytes) {
      out.end = ArithDecodeEnd::PastStoredBytes;
      break;
    }
    // One symbol beyond the limit tells a stream that ends there from a
    // longer one.
    if (out.symbols.size() == maxSymbols) {
      out.end = ArithDecodeEnd::SymbolLimit;
      break;
    }
    out.symbols.push_back(SymbolValue(value, alphabet));
  }
  return out;
}

std::vector<std::uint8_t> EncodeText(const std::string& text, WorkshopArithStream stream) {
  WorkshopArithEncoder encoder(stream);
  const WorkshopAlphabet alphabet = AlphabetOf(stream);
  for (std::size_t i = 0; i < text.size(); ++i) encoder.EncodeSymbol(CharValue(text, i, alphabet));
  encoder.DoneEncoding();
  return encoder.Bytes();
}

}  // namespace

int CharValue(const std::string& text, std::size_t position, WorkshopAlphabet alphabet) {
  const char c = position < text.size() ? text[position] : '\0';
  if (alphabet == WorkshopAlphabet::Refinement) return c == '1' ? 1 : 0;
  for (int v = 0; v < 4; ++v)
    if (kSignificanceCharacters[v] == c) return v;
  return 0;
}

char SymbolValue(int value, WorkshopAlphabet alphabet) {
  const int n = alphabet == WorkshopAlphabet::Significance ? 4 : 2;
  return kSignificanceCharacters[((value % n) + n) % n];
}

const ArithPrecision& PrecisionOf(WorkshopArithStream stream) {
  return stream == WorkshopArithStream::SignificanceMixedOrders ? kArithTenBits : kArithElevenBits;
}

WorkshopAlphabet AlphabetOf(WorkshopArithStream stream) {
  return stream == WorkshopArithStream::Refinement ? WorkshopAlphabet::Refinement : WorkshopAlphabet::Significance;
}

ArithModel StartingWorkshopModel(int symbols) {
  ArithModel m;
  const auto size = static_cast<std::size_t>(symbols + 2);
  m.freq.assign(size, 1);
  m.freq[0] = 0;
  m.cum.resize(size);
  for (std::size_t i = 0; i < size; ++i) m.cum[i] = static_cast<std::int32_t>(size - 1 - i);
  m.charToIndex.resize(static_cast<std::size_t>(symbols));
  m.indexToChar.assign(size, 0);
  for (int c = 0; c < symbols; ++c) {
    m.charToIndex[static_cast<std::size_t>(c)] = static_cast<std::int16_t>(c + 1);
    m.indexToChar[static_cast<std::size_t>(c + 1)] = static_cast<std::int16_t>(c);
  }
  return m;
}

// --- Encoder.

WorkshopArithEncoder::WorkshopArithEncoder(WorkshopArithStream stream)
    : stream_(stream), symbols_(SymbolCountOf(stream)), models_(StartingModels(stream)) {
  state_.high = PrecisionOf(stream).top;
}

void WorkshopArithEncoder::EncodeSymbol(int value) {
  if (value < 0 || value >= symbols_) value = 0;
  const ArithPrecision& p = PrecisionOf(stream_);
  ArithModel& m = models_[current_];
  const int index = m.charToIndex[static_cast<std::size_t>(value)];
  NarrowToIndex(state_, m, index);
  RenormaliseEncoding(state_, p, bits_);
  UpdateModel(m, index, symbols_ + 1, p.maxFrequency);
  current_ = NextModel(stream_, current_, value);
}

void WorkshopArithEncoder::DoneEncoding() {
  if (done_) return;
  done_ = true;
  const ArithPrecision& p = PrecisionOf(stream_);
  NarrowToIndex(state_, models_[current_], symbols_ + 1);
  RenormaliseEncoding(state_, p, bits_);
  ++state_.pending;
  const int bit = state_.low < p.firstQuarter ? 0 : 1;
  bits_.TransmitBit(bit);
  for (; state_.pending > 0; --state_.pending) bits_.TransmitBit(1 - bit);
  bits_.FlushPartialByte();
}

std::vector<std::uint8_t> WorkshopArithEncoder::Bytes() const { return ReverseEachByte(bits_.Bytes()); }

// --- Decoder.

struct WorkshopArithDecoder::Bits {
  explicit Bits(const std::vector<std::uint8_t>& bytes) : data(ReverseEachByte(bytes)), reader(data, 0, 0) {}
  std::vector<std::uint8_t> data;
  BitReader reader;
};

WorkshopArithDecoder::WorkshopArithDecoder(const std::vector<std::uint8_t>& bytes, WorkshopArithStream stream)
    : stream_(stream),
      symbols_(SymbolCountOf(stream)),
      models_(StartingModels(stream)),
      bits_(std::make_unique<Bits>(bytes)) {
  const ArithPrecision& p = PrecisionOf(stream);
  for (int i = 0; i < p.codeBits; ++i) state_.value = 2 * state_.value + bits_->reader.GetBit();
  state_.low = 0;
  state_.high = p.top;
}

WorkshopArithDecoder::~WorkshopArithDecoder() = default;

std::int64_t WorkshopArithDecoder::BitsPastEnd() const { return bits_->reader.BitsPastEnd(); }

bool WorkshopArithDecoder::PastStoredBytes() const { return BitsPastEnd() >= PrecisionOf(stream_).codeBits; }

int WorkshopArithDecoder::DecodeSymbol() {
  if (ended_) return kEndOfStream;
  if (PastStoredBytes()) return kPastStoredBytes;
  const ArithPrecision& p = PrecisionOf(stream_);
  ArithModel& m = models_[current_];
  const int endIndex = symbols_ + 1;
  const int index = FindIndex(state_, m, endIndex);
  NarrowToIndex(state_, m, index);
  RenormaliseDecoding(state_, p, bits_->reader);
  if (index == endIndex) {
    ended_ = true;
    return kEndOfStream;
  }
  const int value = m.indexToChar[static_cast<std::size_t>(index)];
  UpdateModel(m, index, endIndex, p.maxFrequency);
  current_ = NextModel(stream_, current_, value);
  return value;
}

// --- Whole strings.

std::vector<std::uint8_t> TestArithEncode(const std::string& text, WorkshopAlphabet alphabet) {
  return EncodeText(text, alphabet == WorkshopAlphabet::Significance ? WorkshopArithStream::Significance0Order
                                                                     : WorkshopArithStream::Refinement);
}

std::vector<std::uint8_t> TestArithEncodeMM(const std::string& text) {
  return EncodeText(text, WorkshopArithStream::SignificanceMixedOrders);
}

ArithDecodedText TestArithDecode(const std::vector<std::uint8_t>& bytes, WorkshopAlphabet alphabet,
                                 std::size_t maxSymbols) {
  return DecodeText(bytes,
                    alphabet == WorkshopAlphabet::Significance ? WorkshopArithStream::Significance0Order
                                                               : WorkshopArithStream::Refinement,
                    maxSymbols);
}

ArithDecodedText TestArithDecodeMM(const std::vector<std::uint8_t>& bytes, std::size_t maxSymbols) {
  return DecodeText(bytes, WorkshopArithStream::SignificanceMixedOrders, maxSymbols);
}

// --- The prefix code.

const char* HuffCodeword(char symbol) {
  switch (symbol) {
    case '1': return "10";
    case '+': return "110";
    case '-': return "111";
    default: return "0";
  }
}

std::vector<std::uint8_t> HuffEncode(const std::string& symbols) {
  std::vector<std::uint8_t> out;
  std::size_t place = 0;  // bits written
  for (const char s : symbols) {
    for (const char* bit = HuffCodeword(s); *bit != '\0'; ++bit, ++place) {
      if (place % 8 == 0) out.push_back(0);
      if (*bit == '1') out.back() = static_cast<std::uint8_t>(out.back() | (1u << (place % 8)));
    }
  }
  return out;
}

std::optional<std::string> HuffDecode(const std::vector<std::uint8_t>& bytes, std::size_t count) {
  const std::size_t bitCount = 8 * bytes.size();
  std::size_t place = 0;
  std::string out;
  out.reserve(count < bitCount ? count : bitCount);
  while (out.size() < count) {
    int ones = 0;
    bool zero = false;
    while (ones < 3 && !zero) {
      if (place == bitCount) return std::nullopt;
      const int bit = (bytes[place / 8] >> (place % 8)) & 1;
      ++place;
      if (bit == 0) zero = true;
      else ++ones;
    }
    // 0 -> "0", 10 -> "1", 110 -> "+", 111 -> "-".
    out.push_back(ones == 0 ? '0' : ones == 1 ? '1' : (zero ? '+' : '-'));
  }
  return out;
}

// --- Run digits.

std::string ReducedBit(std::int64_t run) {
  std::string digits;
  for (; run >= 2; run /= 2) digits.push_back(run % 2 == 1 ? '1' : '0');
  return digits;
}

std::string ReducedBitHuff(std::int64_t run) {
  std::string bits;
  for (; run >= 2; run /= 2) bits += run % 2 == 1 ? "10" : "0";
  return bits;
}

std::int64_t ReducedBitCost(std::int64_t run) {
  std::int64_t cost = 0;
  for (; run >= 2; run /= 2) cost += 2;
  return cost;
}

std::int64_t ReducedHuffBitCost(std::int64_t run) {
  std::int64_t cost = 0;
  for (; run >= 2; run /= 2) cost += run % 2 == 1 ? 2 : 1;
  return cost;
}

// --- Packing weights.

PackingLookupTables CreateLookupTable() {
  PackingLookupTables t{};
  for (int place = 0; place < 4; ++place)
    for (int value = 0; value < 4; ++value)
      t.symbolWeight[place][value] = static_cast<std::uint8_t>(value << (2 * place));
  for (int place = 0; place < 8; ++place) {
    t.bitWeight[place][0] = 0;
    t.bitWeight[place][1] = static_cast<std::uint8_t>(1 << place);
  }
  return t;
}

}  // namespace keldo::wavelet
