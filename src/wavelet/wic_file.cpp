#include "wavelet/wic_file.h"

#include <bit>

#include "common/bytes.h"

namespace keldo::wavelet {
namespace {

constexpr int kMostPasses = 33;
constexpr std::int32_t kPassCountUnit = 32000;

int SymbolWeight(char c) {
  switch (c) {
    case '1': return 1;
    case '+': return 2;
    case '-': return 3;
    default: return 0;
  }
}

constexpr char kSymbolOfValue[] = {'0', '1', '+', '-'};

// log2 N - 2 for the sides the coders take, 0 for any other.
int MostLevels(std::int32_t n) {
  if (n < 64 || n > 1024 || !std::has_single_bit(static_cast<std::uint32_t>(n))) return 0;
  return std::bit_width(static_cast<std::uint32_t>(n)) - 1 - 2;
}

bool ReadBytes(ByteReader& in, std::int64_t count, std::vector<std::uint8_t>& out) {
  if (count < 0 || !in.Room(count, 1)) return false;
  const std::string raw = in.Chars(count);
  out.assign(raw.begin(), raw.end());
  return in.ok();
}

void WriteBytes(ByteWriter& out, const std::vector<std::uint8_t>& bytes) {
  out.bytes.insert(out.bytes.end(), bytes.begin(), bytes.end());
}

}  // namespace

int StageOfCode(int code) {
  if (code <= 100) return code;
  return code < 190 ? code - 100 : code - 200;
}

std::vector<std::uint8_t> PackSymbols(const std::string& symbols) {
  std::vector<std::uint8_t> out((symbols.size() + 3) / 4, 0);
  for (std::size_t k = 0; k < symbols.size(); ++k)
    out[k / 4] = static_cast<std::uint8_t>(out[k / 4] + (SymbolWeight(symbols[k]) << (2 * (k % 4))));
  return out;
}

std::string UnpackSymbols(const std::vector<std::uint8_t>& bytes, std::size_t count) {
  std::string out;
  out.reserve(count);
  for (std::size_t k = 0; k < count && k / 4 < bytes.size(); ++k) out += kSymbolOfValue[(bytes[k / 4] >> (2 * (k % 4))) & 3];
  return out;
}

std::vector<std::uint8_t> PackRefinement(const std::string& bits) {
  std::vector<std::uint8_t> out((bits.size() + 7) / 8, 0);
  for (std::size_t k = 0; k < bits.size(); ++k)
    if (bits[k] == '1') out[k / 8] = static_cast<std::uint8_t>(out[k / 8] | (1 << (k % 8)));
  return out;
}

std::string UnpackRefinement(const std::vector<std::uint8_t>& bytes) {
  std::string out;
  out.reserve(bytes.size() * 8);
  for (std::uint8_t b : bytes)
    for (int bit = 0; bit < 8; ++bit) out += (b >> bit) & 1 ? '1' : '0';
  return out;
}

void WritePassCounts(std::vector<std::uint8_t>& bytes, const std::vector<std::int32_t>& counts) {
  ByteWriter out;
  for (std::int32_t v : counts) {
    if (v <= kPassCountUnit) {
      out.I16(static_cast<std::int16_t>(v));
    } else {
      out.I16(static_cast<std::int16_t>(-(v % kPassCountUnit)));
      out.I16(static_cast<std::int16_t>(v / kPassCountUnit));
    }
  }
  bytes.insert(bytes.end(), out.bytes.begin(), out.bytes.end());
}

std::vector<std::uint8_t> WriteWicFile(const WicFile& file) {
  ByteWriter out;
  out.Char(static_cast<char>(static_cast<std::uint8_t>(file.code + 1)));
  const int stage = StageOfCode(file.code);
  std::int32_t count = file.count;
  if (stage == 0 || stage == 1) count = static_cast<std::int32_t>(file.symbols.size());
  if (stage == 3 || stage == 4) count = static_cast<std::int32_t>(file.significance.size());
  out.I32(count);
  if (file.wc2) {
    out.Char(static_cast<char>(static_cast<std::uint8_t>(file.waveletByte)));
    if (file.waveletByte > 9) out.I32(file.roiValue);
  }
  switch (stage) {
    case 0:
      out.Chars(file.symbols);
      out.I32(static_cast<std::int32_t>(file.refinement.size()));
      out.Chars(file.refinement);
      break;
    case 1: {
      WriteBytes(out, PackSymbols(file.symbols));
      const std::vector<std::uint8_t> refinement = PackRefinement(file.refinement);
      out.I32(static_cast<std::int32_t>(refinement.size()));
      WriteBytes(out, refinement);
      break;
    }
    case 2:
      out.I32(static_cast<std::int32_t>(file.significance.size()));
      WriteBytes(out, file.significance);
      out.I32(static_cast<std::int32_t>(file.refinementBytes.size()));
      WriteBytes(out, file.refinementBytes);
      break;
    case 3:
    case 4:
      WriteBytes(out, file.significance);
      out.I32(static_cast<std::int32_t>(file.refinementBytes.size()));
      WriteBytes(out, file.refinementBytes);
      break;
    default:
      break;
  }
  out.I32(file.n);
  out.Char(static_cast<char>(file.scanMode));
  out.Char(static_cast<char>(file.levels));
  out.Char(static_cast<char>(file.exponent));
  out.Char(static_cast<char>(file.passes));
  WritePassCounts(out.bytes, file.passCounts);
  return out.bytes;
}

std::optional<WicFile> ReadWicFile(const std::vector<std::uint8_t>& bytes, bool wc2) {
  ByteReader in(bytes);
  WicFile f;
  f.wc2 = wc2;
  f.code = static_cast<std::uint8_t>(in.Char()) - 1;
  f.count = in.I32();
  if (!in.ok() || f.count < 0) return std::nullopt;
  if (wc2) {
    f.waveletByte = static_cast<std::uint8_t>(in.Char());
    if (f.waveletByte > 9) f.roiValue = in.I32();
  }
  const int stage = StageOfCode(f.code);
  std::vector<std::uint8_t> raw;
  switch (stage) {
    case 0: {
      if (!in.Room(f.count, 1)) return std::nullopt;
      f.symbols = in.Chars(f.count);
      const std::int32_t r = in.I32();
      if (!in.ok() || r < 0 || !in.Room(r, 1)) return std::nullopt;
      f.refinement = in.Chars(r);
      break;
    }
    case 1: {
      if (!ReadBytes(in, (static_cast<std::int64_t>(f.count) + 3) / 4, raw)) return std::nullopt;
      f.symbols = UnpackSymbols(raw, static_cast<std::size_t>(f.count));
      if (!ReadBytes(in, in.I32(), raw)) return std::nullopt;
      f.refinement = UnpackRefinement(raw);
      break;
    }
    case 2:
      if (!ReadBytes(in, in.I32(), f.significance) || !ReadBytes(in, in.I32(), f.refinementBytes))
        return std::nullopt;
      break;
    case 3:
    case 4:
      if (!ReadBytes(in, f.count, f.significance) || !ReadBytes(in, in.I32(), f.refinementBytes))
        return std::nullopt;
      break;
    default:
      break;
  }
  f.n = in.I32();
  f.scanMode = static_cast<std::uint8_t>(in.Char());
  f.levels = static_cast<std::uint8_t>(in.Char());
  f.exponent = static_cast<std::uint8_t>(in.Char());
  f.passes = static_cast<std::uint8_t>(in.Char());
  if (!in.ok()) return std::nullopt;
  const int most = MostLevels(f.n);
  if (most == 0 || f.scanMode < 1 || f.scanMode > 4 || f.levels < 1 || f.levels > most || f.passes > kMostPasses)
    return std::nullopt;
  for (int k = 0; k <= f.passes; ++k) {
    const std::int16_t v = in.I16();
    if (v >= 0) {
      f.passCounts.push_back(v);
    } else {
      const std::int16_t w = in.I16();
      f.passCounts.push_back(static_cast<std::int32_t>(w) * kPassCountUnit - v);
    }
  }
  if (!in.ok()) return std::nullopt;
  return f;
}

}  // namespace keldo::wavelet
