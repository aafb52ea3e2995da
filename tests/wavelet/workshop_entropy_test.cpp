// The workshop's entropy stages: the arithmetic coder's starting models,
// empty and one-symbol streams and the halving at its exact totals worked by
// hand; its bytes, bit counts and final counts against the independent
// model of tests/data/make_workshop_arith.py (workshop_arith.tsv); round
// trips of random strings of both alphabets in all three streams; decoders
// fed cut and random bytes; the prefix code, the run digits and the packing
// weights by hand.

#include <gtest/gtest.h>

#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "wavelet/workshop_entropy.h"

namespace keldo::wavelet {
namespace {

using Bytes = std::vector<std::uint8_t>;
using Stream = WorkshopArithStream;

constexpr Stream kStreams[] = {Stream::Significance0Order, Stream::SignificanceMixedOrders, Stream::Refinement};

Bytes Encode(const std::string& text, Stream stream) {
  return stream == Stream::SignificanceMixedOrders ? TestArithEncodeMM(text)
                                                   : TestArithEncode(text, AlphabetOf(stream));
}

ArithDecodedText Decode(const Bytes& bytes, Stream stream) {
  return stream == Stream::SignificanceMixedOrders ? TestArithDecodeMM(bytes)
                                                   : TestArithDecode(bytes, AlphabetOf(stream));
}

// An encoder that has coded `text`, not yet closed.
WorkshopArithEncoder EncoderAfter(const std::string& text, Stream stream) {
  WorkshopArithEncoder e(stream);
  for (std::size_t i = 0; i < text.size(); ++i) e.EncodeSymbol(CharValue(text, i, AlphabetOf(stream)));
  return e;
}

TEST(WorkshopEntropy, CharacterValues) {
  const std::string s = "01+-x";
  EXPECT_EQ(CharValue(s, 0, WorkshopAlphabet::Significance), 0);
  EXPECT_EQ(CharValue(s, 1, WorkshopAlphabet::Significance), 1);
  EXPECT_EQ(CharValue(s, 2, WorkshopAlphabet::Significance), 2);
  EXPECT_EQ(CharValue(s, 3, WorkshopAlphabet::Significance), 3);
  EXPECT_EQ(CharValue(s, 4, WorkshopAlphabet::Significance), 0);
  EXPECT_EQ(CharValue(s, 1, WorkshopAlphabet::Refinement), 1);
  EXPECT_EQ(CharValue(s, 2, WorkshopAlphabet::Refinement), 0);
  EXPECT_EQ(SymbolValue(2, WorkshopAlphabet::Significance), '+');
  EXPECT_EQ(SymbolValue(7, WorkshopAlphabet::Significance), '-');  // modulo 4
  EXPECT_EQ(SymbolValue(1, WorkshopAlphabet::Refinement), '1');
}

TEST(WorkshopEntropy, StartingModels) {
  const ArithModel s = StartingWorkshopModel(4);
  EXPECT_EQ(s.freq, (std::vector<std::int32_t>{0, 1, 1, 1, 1, 1}));
  EXPECT_EQ(s.cum, (std::vector<std::int32_t>{5, 4, 3, 2, 1, 0}));
  EXPECT_EQ(s.charToIndex, (std::vector<std::int16_t>{1, 2, 3, 4}));
  for (int c = 0; c < 4; ++c) EXPECT_EQ(s.indexToChar[static_cast<std::size_t>(c + 1)], c);
  const ArithModel r = StartingWorkshopModel(2);
  EXPECT_EQ(r.freq, (std::vector<std::int32_t>{0, 1, 1, 1}));
  EXPECT_EQ(r.cum, (std::vector<std::int32_t>{3, 2, 1, 0}));
  EXPECT_EQ(r.charToIndex, (std::vector<std::int16_t>{1, 2}));

  EXPECT_EQ(PrecisionOf(Stream::Significance0Order).codeBits, 11);
  EXPECT_EQ(PrecisionOf(Stream::Significance0Order).maxFrequency, 511);
  EXPECT_EQ(PrecisionOf(Stream::Refinement).maxFrequency, 511);
  const ArithPrecision& mm = PrecisionOf(Stream::SignificanceMixedOrders);
  EXPECT_EQ(mm.codeBits, 10);
  EXPECT_EQ(mm.top, 1023);
  EXPECT_EQ(mm.firstQuarter, 256);
  EXPECT_EQ(mm.half, 512);
  EXPECT_EQ(mm.thirdQuarter, 768);
  EXPECT_EQ(mm.maxFrequency, 255);
  EXPECT_EQ(WorkshopArithEncoder(Stream::SignificanceMixedOrders).ModelCount(), 4);
}

TEST(WorkshopEntropy, EmptyStreamsHoldTheEndAlone) {
  // 0-order significance: the end index 5 of total 5 narrows [0, 2047] to
  // [0, 2048*1/5 - 1] = [0, 408]; two 0s settle, leaving [0, 1635]; the
  // close adds a deferred bit and, low below 512, writes 0 then 1:
  // 0,0,0,1 -> 0x08. Mixed orders, 10 bits: [0, 203], two 0s, the same
  // close. Refinement: end index 3 of total 3 gives [0, 681], one 0, then
  // 0,1: 0,0,1 -> 0x04.
  EXPECT_EQ(TestArithEncode("", WorkshopAlphabet::Significance), (Bytes{0x08}));
  EXPECT_EQ(TestArithEncodeMM(""), (Bytes{0x08}));
  EXPECT_EQ(TestArithEncode("", WorkshopAlphabet::Refinement), (Bytes{0x04}));
  WorkshopArithEncoder e(Stream::Refinement);
  e.DoneEncoding();
  EXPECT_EQ(e.BitsEmitted(), 3);
  EXPECT_EQ(e.Pending(), 0);
  for (const Stream s : kStreams) {
    const ArithDecodedText d = Decode(Encode("", s), s);
    EXPECT_EQ(d.symbols, "");
    EXPECT_EQ(d.end, ArithDecodeEnd::EndOfStream);
  }
}

TEST(WorkshopEntropy, OneSymbolByHand) {
  // "0" (index 1 of total 5): [2048*4/5, 2047] = [1638, 2047] sends 1, 1
  // and leaves [408, 2047]. The end (index 5 of 6, width 1640) narrows to
  // [408, 680]: a 0, then [816, 1361] defers one bit, leaving [608, 1699].
  // Close: two deferred, low >= 512, so 1,0,0. Bits 1,1,0,1,0,0 -> 0x0b.
  WorkshopArithEncoder e = EncoderAfter("0", Stream::Significance0Order);
  EXPECT_EQ(e.BitsEmitted(), 2);
  EXPECT_EQ(e.State().low, 408);
  EXPECT_EQ(e.State().high, 2047);
  EXPECT_EQ(e.Model(1).freq, (std::vector<std::int32_t>{0, 2, 1, 1, 1, 1}));
  EXPECT_EQ(e.Model(1).cum, (std::vector<std::int32_t>{6, 4, 3, 2, 1, 0}));
  e.DoneEncoding();
  EXPECT_EQ(e.BitsEmitted(), 6);
  EXPECT_EQ(e.Bytes(), (Bytes{0x0b}));
  EXPECT_EQ(TestArithDecode(Bytes{0x0b}, WorkshopAlphabet::Significance).symbols, "0");
}

TEST(WorkshopEntropy, ZeroOrderHalvesExactlyAt511) {
  // 506 counts take the total from 5 to 511; only the 507th halves.
  WorkshopArithEncoder e = EncoderAfter(std::string(505, '0'), Stream::Significance0Order);
  EXPECT_EQ(e.Model(1).cum[0], 510);
  e.EncodeSymbol(0);
  EXPECT_EQ(e.Model(1).cum[0], 511);
  EXPECT_EQ(e.Model(1).freq[1], 507);
  e.EncodeSymbol(0);
  // Halved from the end index down: counts 1 stay 1, 507 -> 254, the zero
  // count stays 0 and cum of the end index 0; then index 1 counts once more.
  EXPECT_EQ(e.Model(1).freq, (std::vector<std::int32_t>{0, 255, 1, 1, 1, 1}));
  EXPECT_EQ(e.Model(1).cum, (std::vector<std::int32_t>{259, 4, 3, 2, 1, 0}));
  e.DoneEncoding();
  const std::string text(507, '0');
  EXPECT_EQ(e.Bytes(), TestArithEncode(text, WorkshopAlphabet::Significance));
  EXPECT_EQ(TestArithDecode(e.Bytes(), WorkshopAlphabet::Significance).symbols, text);
}

TEST(WorkshopEntropy, RefinementHalvesExactlyAt511) {
  // "1" moves to index 1 at its first count; 508 counts reach 511.
  WorkshopArithEncoder e = EncoderAfter(std::string(508, '1'), Stream::Refinement);
  EXPECT_EQ(e.Model(1).freq, (std::vector<std::int32_t>{0, 509, 1, 1}));
  EXPECT_EQ(e.Model(1).cum[0], 511);
  EXPECT_EQ(e.Model(1).charToIndex, (std::vector<std::int16_t>{2, 1}));
  e.EncodeSymbol(1);
  EXPECT_EQ(e.Model(1).freq, (std::vector<std::int32_t>{0, 256, 1, 1}));
  EXPECT_EQ(e.Model(1).cum, (std::vector<std::int32_t>{258, 2, 1, 0}));
}

TEST(WorkshopEntropy, MixedOrdersHalveExactlyAt255) {
  // The first symbol is coded in model 1, and so is every symbol after a
  // "+": 250 "+" take model 1 from 5 to 255, the next halves it.
  WorkshopArithEncoder e = EncoderAfter(std::string(250, '+'), Stream::SignificanceMixedOrders);
  EXPECT_EQ(e.ModelInForce(), 1);
  EXPECT_EQ(e.Model(1).freq, (std::vector<std::int32_t>{0, 251, 1, 1, 1, 1}));
  EXPECT_EQ(e.Model(1).cum[0], 255);
  e.EncodeSymbol(2);
  EXPECT_EQ(e.Model(1).freq, (std::vector<std::int32_t>{0, 127, 1, 1, 1, 1}));
  EXPECT_EQ(e.Model(1).cum, (std::vector<std::int32_t>{131, 4, 3, 2, 1, 0}));
  // The other three models are untouched; "-", "0", "1" lead to 2, 3, 4.
  for (int m = 2; m <= 4; ++m) EXPECT_EQ(e.Model(m).cum[0], 5);
  e.EncodeSymbol(3);
  EXPECT_EQ(e.ModelInForce(), 2);
  e.EncodeSymbol(0);
  EXPECT_EQ(e.ModelInForce(), 3);
  e.EncodeSymbol(1);
  EXPECT_EQ(e.ModelInForce(), 4);
  EXPECT_EQ(e.Model(2).cum[0], 6);  // the "0" after "-"
  EXPECT_EQ(e.Model(3).cum[0], 6);  // the "1" after "0"
  EXPECT_EQ(e.Model(4).cum[0], 5);
}

// --- Against the independent model.

std::vector<std::string> Split(const std::string& s, char separator) {
  std::vector<std::string> parts;
  std::stringstream in(s);
  for (std::string part; std::getline(in, part, separator);) parts.push_back(part);
  return parts;
}

Bytes FromHex(const std::string& hex) {
  Bytes out;
  for (std::size_t i = 0; i + 1 < hex.size(); i += 2)
    out.push_back(static_cast<std::uint8_t>(std::stoi(hex.substr(i, 2), nullptr, 16)));
  return out;
}

Stream StreamNamed(const std::string& name) {
  if (name == "sigmm") return Stream::SignificanceMixedOrders;
  if (name == "ref") return Stream::Refinement;
  return Stream::Significance0Order;
}

TEST(WorkshopEntropy, MatchesIndependentModel) {
  std::ifstream in(KELDO_TEST_DATA "/workshop_arith.tsv");
  ASSERT_TRUE(in) << "run tests/data/make_workshop_arith.py";
  int cases = 0, halvingsSig0 = 0, halvingsMM = 0, halvingsRef = 0;
  for (std::string line; std::getline(in, line);) {
    const std::vector<std::string> f = Split(line, '\t');
    ASSERT_EQ(f.size(), 7u) << line;
    const Stream stream = StreamNamed(f[1]);
    const std::string symbols = f[2] == "." ? "" : f[2];
    SCOPED_TRACE(f[0]);
    WorkshopArithEncoder e = EncoderAfter(symbols, stream);
    const std::vector<std::string> models = Split(f[5], '|');
    ASSERT_EQ(static_cast<int>(models.size()), e.ModelCount());
    for (int m = 1; m <= e.ModelCount(); ++m) {
      std::vector<std::int32_t> freq;
      for (const std::string& v : Split(models[static_cast<std::size_t>(m - 1)], ',')) freq.push_back(std::stoi(v));
      EXPECT_EQ(e.Model(m).freq, freq) << "model " << m;
    }
    e.DoneEncoding();
    EXPECT_EQ(e.BitsEmitted(), std::stoll(f[3]));
    const Bytes expected = FromHex(f[4]);
    EXPECT_EQ(e.Bytes(), expected);
    const ArithDecodedText d = Decode(expected, stream);
    EXPECT_EQ(d.symbols, symbols);
    EXPECT_EQ(d.end, ArithDecodeEnd::EndOfStream);
    const int halvings = std::stoi(f[6]);
    (stream == Stream::Refinement ? halvingsRef : stream == Stream::Significance0Order ? halvingsSig0 : halvingsMM) +=
        halvings;
    ++cases;
  }
  EXPECT_EQ(cases, 19);
  // The references pass through the halving in every stream.
  EXPECT_GT(halvingsSig0, 0);
  EXPECT_GT(halvingsMM, 0);
  EXPECT_GT(halvingsRef, 0);
}

// --- Round trips.

std::string RandomText(std::mt19937& rng, Stream stream, std::size_t length, bool skewed) {
  const std::string alphabet = AlphabetOf(stream) == WorkshopAlphabet::Significance ? "01+-" : "01";
  std::vector<double> weights(alphabet.size(), 1.0);
  if (skewed) {
    for (std::size_t i = 0; i < weights.size(); ++i) weights[i] = i == 0 ? 40.0 : 1.0 / static_cast<double>(i);
  }
  std::discrete_distribution<int> pick(weights.begin(), weights.end());
  std::string text(length, '0');
  for (char& c : text) c = alphabet[static_cast<std::size_t>(pick(rng))];
  return text;
}

TEST(WorkshopEntropy, RoundTripsRandomStrings) {
  std::mt19937 rng(90210);
  int trips = 0;
  for (const Stream stream : kStreams) {
    const ArithPrecision& p = PrecisionOf(stream);
    for (std::size_t length : {0, 1, 2, 3, 5, 8, 13, 31, 64, 100, 255, 256, 511, 512, 1000, 2049, 6000}) {
      for (const bool skewed : {false, true}) {
        const std::string text = RandomText(rng, stream, length, skewed);
        WorkshopArithEncoder e(stream);
        std::int64_t charged = 0;
        for (std::size_t i = 0; i < text.size(); ++i) {
          e.EncodeSymbol(CharValue(text, i, AlphabetOf(stream)));
          // Bits out and deferred never fall; the interval stays wider than
          // any model's total (at 10 bits: 257 against 255).
          ASSERT_GE(e.BitsEmitted() + e.Pending(), charged);
          charged = e.BitsEmitted() + e.Pending();
          ASSERT_GE(e.State().high - e.State().low + 1, p.firstQuarter + 1);
          for (int m = 1; m <= e.ModelCount(); ++m) ASSERT_LE(e.Model(m).cum[0], p.maxFrequency);
        }
        e.DoneEncoding();
        const Bytes bytes = e.Bytes();
        EXPECT_EQ(static_cast<std::int64_t>(bytes.size()), (e.BitsEmitted() + 7) / 8);
        EXPECT_EQ(bytes, Encode(text, stream));

        WorkshopArithDecoder d(bytes, stream);
        std::string back;
        for (int v; (v = d.DecodeSymbol()) >= 0;) back.push_back(SymbolValue(v, AlphabetOf(stream)));
        EXPECT_EQ(back, text) << "length " << length << (skewed ? " skewed" : " uniform");
        // A well-formed stream ends at most code bits - 2 bits past its bytes.
        EXPECT_LE(d.BitsPastEnd(), p.codeBits - 2);
        EXPECT_EQ(d.DecodeSymbol(), WorkshopArithDecoder::kEndOfStream);
        ++trips;
      }
    }
  }
  EXPECT_EQ(trips, 3 * 17 * 2);
}

TEST(WorkshopEntropy, OtherCharactersCodeAsZero) {
  const auto sig = WorkshopAlphabet::Significance;
  EXPECT_EQ(TestArithDecode(TestArithEncode("0x1", sig), sig).symbols, "001");
  EXPECT_EQ(TestArithDecode(TestArithEncode("1+1", WorkshopAlphabet::Refinement), WorkshopAlphabet::Refinement).symbols,
            "101");
}

TEST(WorkshopEntropy, SymbolLimit) {
  const std::string text = "+0-1100+-01";
  const Bytes bytes = TestArithEncodeMM(text);
  const ArithDecodedText exact = TestArithDecodeMM(bytes, text.size());
  EXPECT_EQ(exact.symbols, text);
  EXPECT_EQ(exact.end, ArithDecodeEnd::EndOfStream);
  const ArithDecodedText cut = TestArithDecodeMM(bytes, 4);
  EXPECT_EQ(cut.symbols, "+0-1");
  EXPECT_EQ(cut.end, ArithDecodeEnd::SymbolLimit);
}

TEST(WorkshopEntropy, DecodersStopOnCutAndRandomBytes) {
  // No bytes at all: the code value is wholly past the end.
  for (const Stream s : kStreams) {
    const ArithDecodedText d = Decode(Bytes{}, s);
    EXPECT_EQ(d.symbols, "");
    EXPECT_EQ(d.end, ArithDecodeEnd::PastStoredBytes);
  }
  std::mt19937 rng(555);
  for (const Stream s : kStreams) {
    const std::string text = RandomText(rng, s, 3000, true);
    Bytes bytes = Encode(text, s);
    bytes.resize(bytes.size() / 2);
    const ArithDecodedText cut = Decode(bytes, s);
    EXPECT_NE(cut.end, ArithDecodeEnd::SymbolLimit);
    // What stands before the cut comes back.
    ASSERT_GE(cut.symbols.size(), 100u);
    EXPECT_EQ(cut.symbols.substr(0, 100), text.substr(0, 100));
  }
  std::uniform_int_distribution<int> byte(0, 255);
  for (int trial = 0; trial < 300; ++trial) {
    Bytes noise(static_cast<std::size_t>(trial % 40));
    for (auto& b : noise) b = static_cast<std::uint8_t>(byte(rng));
    for (const Stream s : kStreams) {
      const ArithDecodedText d = Decode(noise, s);
      // Every symbol needs some bits: a bounded output.
      EXPECT_LT(d.symbols.size(), 1000u * (noise.size() + 2));
    }
  }
}

// --- The prefix code.

TEST(WorkshopEntropy, PrefixCodeByHand) {
  EXPECT_STREQ(HuffCodeword('0'), "0");
  EXPECT_STREQ(HuffCodeword('1'), "10");
  EXPECT_STREQ(HuffCodeword('+'), "110");
  EXPECT_STREQ(HuffCodeword('-'), "111");
  EXPECT_EQ(HuffEncode(""), Bytes{});
  EXPECT_EQ(HuffEncode("0"), (Bytes{0x00}));
  EXPECT_EQ(HuffEncode("-"), (Bytes{0x07}));
  // "1+-0": 10 110 111 0 -> places 0..7 = 1,0,1,1,0,1,1,1 = 0xed, then a 0.
  EXPECT_EQ(HuffEncode("1+-0"), (Bytes{0xed, 0x00}));
  // "0000000011": eight 0 bits, then 1,0,1,0.
  EXPECT_EQ(HuffEncode("0000000011"), (Bytes{0x00, 0x05}));

  EXPECT_EQ(HuffDecode(Bytes{0xed, 0x00}, 4), std::optional<std::string>("1+-0"));
  // The padding reads as "0"s; the count says where the symbols end.
  EXPECT_EQ(HuffDecode(Bytes{0xed, 0x00}, 11), std::optional<std::string>("1+-00000000"));
  EXPECT_EQ(HuffDecode(Bytes{0xed, 0x00}, 12), std::nullopt);
  EXPECT_EQ(HuffDecode(Bytes{}, 0), std::optional<std::string>(""));
  EXPECT_EQ(HuffDecode(Bytes{}, 1), std::nullopt);
  // 111 111 11|: the third codeword runs off the end.
  EXPECT_EQ(HuffDecode(Bytes{0xff}, 2), std::optional<std::string>("--"));
  EXPECT_EQ(HuffDecode(Bytes{0xff}, 3), std::nullopt);
  // A character outside the alphabet is coded as "0".
  EXPECT_EQ(HuffEncode("x1"), HuffEncode("01"));
}

TEST(WorkshopEntropy, PrefixCodeRoundTrips) {
  std::mt19937 rng(4242);
  for (std::size_t length : {1, 2, 7, 8, 9, 100, 1001}) {
    const std::string text = RandomText(rng, Stream::Significance0Order, length, length % 2 == 0);
    const Bytes bytes = HuffEncode(text);
    std::size_t bits = 0;
    for (const char c : text) bits += std::string(HuffCodeword(c)).size();
    EXPECT_EQ(bytes.size(), (bits + 7) / 8);
    EXPECT_EQ(HuffDecode(bytes, text.size()), std::optional<std::string>(text));
  }
}

TEST(WorkshopEntropy, RunDigitsByHand) {
  EXPECT_EQ(ReducedBit(1), "");
  EXPECT_EQ(ReducedBitCost(1), 0);
  EXPECT_EQ(ReducedHuffBitCost(1), 0);
  EXPECT_EQ(ReducedBitHuff(1), "");
  EXPECT_EQ(ReducedBit(2), "0");
  EXPECT_EQ(ReducedBit(3), "1");
  EXPECT_EQ(ReducedBit(6), "01");    // 110: 0, 1 below the leading 1
  EXPECT_EQ(ReducedBit(13), "101");  // 1101
  EXPECT_EQ(ReducedBitHuff(13), "10010");
  EXPECT_EQ(ReducedBitCost(13), 6);
  EXPECT_EQ(ReducedHuffBitCost(13), 5);
  EXPECT_EQ(ReducedBit(64), "000000");
  EXPECT_EQ(ReducedHuffBitCost(64), 6);
  // The Huffman form is the prefix code of the plain digits.
  for (std::int64_t run = 1; run < 300; ++run) {
    std::string coded;
    for (const char d : ReducedBit(run)) coded += HuffCodeword(d);
    EXPECT_EQ(ReducedBitHuff(run), coded);
    EXPECT_EQ(ReducedHuffBitCost(run), static_cast<std::int64_t>(coded.size()));
    EXPECT_EQ(ReducedBitCost(run), 2 * static_cast<std::int64_t>(ReducedBit(run).size()));
  }
}

TEST(WorkshopEntropy, PackingWeights) {
  const PackingLookupTables t = CreateLookupTable();
  EXPECT_EQ(t.symbolWeight[0][3], 3);
  EXPECT_EQ(t.symbolWeight[1][2], 8);
  EXPECT_EQ(t.symbolWeight[3][3], 192);
  EXPECT_EQ(t.bitWeight[0][1], 1);
  EXPECT_EQ(t.bitWeight[7][1], 128);
  EXPECT_EQ(t.bitWeight[5][0], 0);
  // "+-01" packs as 2 + 3*4 + 0*16 + 1*64 = 78.
  EXPECT_EQ(t.symbolWeight[0][2] + t.symbolWeight[1][3] + t.symbolWeight[2][0] + t.symbolWeight[3][1], 78);
}

}  // namespace
}  // namespace keldo::wavelet
