// The multi-context arithmetic coder against the independent model of
// tests/data/make_aswdr_arith.py (aswdr_arith.tsv): the bits it emits, the
// bits plus pending after every symbol, and the characters read back; and
// the initial tables and a halving worked by hand.

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "wavelet/arith_coder.h"
#include "wavelet/bit_layer.h"

namespace keldo::wavelet {
namespace {

struct Operation {
  char kind;  // 'E' three-character context, 'T' two-character, 'D' DoneEncoding
  int context;
  int character;
};

struct Reference {
  std::string name;
  std::vector<Operation> operations;
  std::string bits;
  std::vector<long> used;
  std::string decoded;
};

std::vector<std::string> Split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  std::stringstream in(text);
  for (std::string part; std::getline(in, part, separator);) parts.push_back(part);
  return parts;
}

std::vector<Reference> ReadReferences() {
  std::ifstream in(KELDO_TEST_DATA "/aswdr_arith.tsv");
  std::vector<Reference> refs;
  for (std::string line; std::getline(in, line);) {
    const std::vector<std::string> f = Split(line, '\t');
    if (f.size() != 5) continue;
    Reference r{f[0], {}, f[2], {}, f[4]};
    for (const std::string& op : Split(f[1], ' ')) {
      Operation o{op[0], op[1] - '0', -1};
      if (o.kind != 'D') o.character = op[3] - '0';
      r.operations.push_back(o);
    }
    for (const std::string& u : Split(f[3], ',')) r.used.push_back(std::stol(u));
    refs.push_back(r);
  }
  return refs;
}

std::string BitsOf(const BitWriter& w, std::int64_t count) {
  std::string out;
  const std::vector<std::uint8_t>& bytes = w.Bytes();
  for (std::int64_t i = 0; i < count; ++i) {
    const auto byte = static_cast<std::size_t>(i / 8);
    out += ((bytes[byte] >> (7 - i % 8)) & 1) ? '1' : '0';
  }
  return out;
}

TEST(ArithCoder, AgreesWithTheIndependentModel) {
  const std::vector<Reference> refs = ReadReferences();
  ASSERT_EQ(refs.size(), 10u);
  for (const Reference& r : refs) {
    BitWriter w(0);
    ArithmeticCoderTwo coder;
    std::vector<long> used;
    for (const Operation& o : r.operations) {
      coder.SetCurrentContext(o.context);
      if (o.kind == 'E')
        coder.Encode(o.character, w);
      else if (o.kind == 'T')
        coder.EncodeTwo(o.character, w);
      else
        coder.DoneEncoding(w);
      used.push_back(static_cast<long>(w.BitsUsed() + coder.Pending()));
    }
    ASSERT_EQ(w.BitsUsed(), static_cast<std::int64_t>(r.bits.size())) << r.name;
    w.FlushPartialByte();
    EXPECT_EQ(BitsOf(w, w.BitsUsed()), r.bits) << r.name;
    EXPECT_EQ(used, r.used) << r.name;

    // Back, in the same contexts, from the packed bytes.
    const std::vector<std::uint8_t> bytes = w.Bytes();
    BitReader reader(bytes, 0, 0);
    ArithmeticCoderTwo decoder;
    decoder.BeginDecoding(reader);
    EXPECT_EQ(reader.BitsUsed(), 9);
    std::string decoded, coded;
    for (const Operation& o : r.operations) {
      if (o.kind == 'D') continue;
      decoder.SetCurrentContext(o.context);
      const int c = o.kind == 'E' ? decoder.DecodeSymbol(reader) : decoder.DecodeSymbolTwo(reader);
      decoded += static_cast<char>('0' + c);
      coded += static_cast<char>('0' + o.character);
    }
    EXPECT_EQ(decoded, r.decoded) << r.name;
    // The close's followers are zeros, so only the last few characters may
    // read back wrong; everything before them does not.
    const std::size_t sure = coded.size() > 6 ? coded.size() - 6 : 0;
    EXPECT_EQ(decoded.substr(0, sure), coded.substr(0, sure)) << r.name;
  }
}

TEST(ArithCoder, FirstSymbolsByHand) {
  // Context 1 starts with cum 3 2 1 0: the end mark (index 3) takes
  // [0, 1/3) of 0..511: high = 512 / 3 - 1 = 169 < 256 sends a 0, then
  // low 0 and high 339 stay. The sign + (index 1 of cum 2 1 0) takes the
  // upper half, [170, 339], which straddles the middle: one bit pending.
  BitWriter w(132);
  ArithmeticCoderTwo coder;
  coder.SetCurrentContext(1);
  coder.Encode(2, w);
  EXPECT_EQ(w.BitsUsed(), 133);
  EXPECT_EQ(coder.Pending(), 0);
  coder.SetCurrentContext(4);
  coder.EncodeTwo(0, w);
  EXPECT_EQ(w.BitsUsed(), 133);
  EXPECT_EQ(coder.Pending(), 1);
}

TEST(ArithCoder, HalvingAtTheMaximumTotal) {
  ArithModel m;
  m.freq = {0, 1, 1, 1, 1};
  m.cum = {3, 2, 1, 0, -1};
  m.charToIndex = {1, 2, 3};
  m.indexToChar = {0, 0, 1, 2, 0};
  // Character 2 (index 3) counted once: it moves to index 1, trading
  // places with character 0.
  UpdateModel(m, 3, 3, kArithNineBits.maxFrequency);
  EXPECT_EQ(m.freq, std::vector<std::int32_t>({0, 2, 1, 1, 1}));
  EXPECT_EQ(m.cum, std::vector<std::int32_t>({4, 2, 1, 0, -1}));
  EXPECT_EQ(m.charToIndex, std::vector<std::int16_t>({3, 2, 1}));
  // At a total of exactly 127 the counts are halved first, rounding up:
  // 100, 20, 7 become 50, 10, 4; then index 1 grows.
  m.freq = {0, 100, 20, 7, 1};
  m.cum = {127, 27, 7, 0, -1};
  UpdateModel(m, 1, 3, kArithNineBits.maxFrequency);
  EXPECT_EQ(m.freq, std::vector<std::int32_t>({0, 51, 10, 4, 1}));
  EXPECT_EQ(m.cum, std::vector<std::int32_t>({65, 14, 4, 0, -1}));
  // The two-character halving leaves index 3 alone.
  m.freq = {0, 120, 6, 1, 0};
  m.cum = {127, 6, 0, -1, 0};
  UpdateModel(m, 2, 2, kArithNineBits.maxFrequency);
  EXPECT_EQ(m.freq, std::vector<std::int32_t>({0, 60, 4, 1, 0}));
  EXPECT_EQ(m.cum, std::vector<std::int32_t>({64, 4, 0, -1, 0}));
}

}  // namespace
}  // namespace keldo::wavelet
