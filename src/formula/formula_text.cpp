#include "formula/formula_text.h"

#include <array>
#include <cstdint>

namespace keldo::formula {
namespace {

// Unicode code points of Windows-1252 bytes 0x80..0x9F; 0 where the byte
// has no character of its own.
constexpr std::array<std::uint16_t, 32> kHighTable = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

char ByteOf(std::uint32_t code) {
  if (code < 0x80 || (code >= 0xA0 && code <= 0xFF)) return static_cast<char>(code);
  if (code >= 0x80 && code <= 0x9F) return static_cast<char>(code);  // bytes with no character
  for (std::size_t i = 0; i < kHighTable.size(); ++i)
    if (kHighTable[i] == code) return static_cast<char>(0x80 + i);
  return '\x7F';
}

void AppendUtf8(std::string& out, std::uint32_t code) {
  if (code < 0x80) {
    out.push_back(static_cast<char>(code));
  } else if (code < 0x800) {
    out.push_back(static_cast<char>(0xC0 | (code >> 6)));
    out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
  } else {
    out.push_back(static_cast<char>(0xE0 | (code >> 12)));
    out.push_back(static_cast<char>(0x80 | ((code >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
  }
}

}  // namespace

std::string FromAnsiText(std::string_view ansi) {
  std::string out;
  out.reserve(ansi.size());
  for (char c : ansi) {
    const auto b = static_cast<unsigned char>(c);
    std::uint32_t code = b;
    if (b >= 0x80 && b <= 0x9F && kHighTable[b - 0x80] != 0) code = kHighTable[b - 0x80];
    AppendUtf8(out, code);
  }
  return out;
}

std::string_view FunctionCharacters() {
  static const std::string kChars = {ch::kAbs,   ch::kCos,  ch::kSin,   ch::kExp,  ch::kSqr,   ch::kTan,  ch::kAtn,
                                     ch::kLog,   ch::kSinc, ch::kSgn,   ch::kSinh, ch::kCosh,  ch::kEntr, ch::kRec,
                                     ch::kGri,   ch::kRandom, ch::kNotFn, ch::kAcs, ch::kRang, ch::kDelta, ch::kFac,
                                     ch::kSumI,  ch::kSumJ, ch::kSumK,  ch::kSumN, ch::kProdP, ch::kProdQ, ch::kBell,
                                     ch::kG1,    ch::kG2,   ch::kG3,    ch::kG4,   ch::kG5};
  return kChars;
}

std::string_view NumberCharacters() {
  static const std::string kChars = std::string("0123456789!") + ch::kPi;
  return kChars;
}

std::string_view StateCharacters() {
  static const std::string kChars = std::string(ch::kY, 10) + std::string(ch::kF, 5);
  return kChars;
}

std::string ToFormulaText(std::string_view utf8) {
  std::string out;
  out.reserve(utf8.size());
  std::size_t i = 0;
  while (i < utf8.size()) {
    const auto b0 = static_cast<unsigned char>(utf8[i]);
    int extra = 0;
    std::uint32_t code = 0;
    if (b0 < 0x80) {
      out.push_back(static_cast<char>(b0));
      ++i;
      continue;
    }
    if ((b0 & 0xE0) == 0xC0) {
      extra = 1;
      code = b0 & 0x1F;
    } else if ((b0 & 0xF0) == 0xE0) {
      extra = 2;
      code = b0 & 0x0F;
    } else if ((b0 & 0xF8) == 0xF0) {
      extra = 3;
      code = b0 & 0x07;
    } else {
      out.push_back(static_cast<char>(b0));
      ++i;
      continue;
    }
    bool valid = i + static_cast<std::size_t>(extra) < utf8.size();
    for (int k = 1; valid && k <= extra; ++k) {
      const auto b = static_cast<unsigned char>(utf8[i + k]);
      if ((b & 0xC0) != 0x80) valid = false;
      else code = (code << 6) | (b & 0x3F);
    }
    if (!valid) {
      out.push_back(static_cast<char>(b0));
      ++i;
      continue;
    }
    out.push_back(ByteOf(code));
    i += static_cast<std::size_t>(extra) + 1;
  }
  return out;
}

std::string FormulaUpper(std::string text) {
  for (char& c : text) {
    const auto b = static_cast<unsigned char>(c);
    if (b >= 'a' && b <= 'z') c = static_cast<char>(b - 32);
    else if (b >= 0xE0 && b <= 0xFE && b != 0xF7) c = static_cast<char>(b - 32);
    else if (b == 0xFF) c = ch::kCancel;
    else if (b == 0x9A || b == 0x9C || b == 0x9E) c = static_cast<char>(b - 16);
  }
  return text;
}

std::string FormulaLower(std::string text) {
  for (char& c : text)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
  return text;
}

void ReplaceAll(std::string& text, std::string_view find, std::string_view replacement) {
  if (find.empty()) return;
  if (replacement.find(find) != std::string_view::npos) {
    ReplaceEach(text, find, replacement);
    return;
  }
  // A splice can only create an occurrence that overlaps the spliced text,
  // so searching again a little before it equals searching from the start.
  std::size_t from = 0;
  for (;;) {
    const std::size_t at = text.find(find, from);
    if (at == std::string::npos) return;
    text.replace(at, find.size(), replacement);
    from = at >= find.size() - 1 ? at - (find.size() - 1) : 0;
  }
}

void ReplaceEach(std::string& text, std::string_view find, std::string_view replacement) {
  if (find.empty()) return;
  std::string out;
  std::size_t from = 0;
  for (;;) {
    const std::size_t at = text.find(find, from);
    if (at == std::string::npos) break;
    out.append(text, from, at - from);
    out.append(replacement);
    from = at + find.size();
  }
  if (from == 0) return;
  out.append(text, from, std::string::npos);
  text = std::move(out);
}

std::string NextToken(std::size_t& pos, std::string_view text, std::string_view separators) {
  if (pos > text.size()) return {};
  const std::size_t end = text.find_first_of(separators, pos);
  if (end == std::string_view::npos) return {};
  std::string token(text.substr(pos, end - pos));
  pos = end + 1;
  return token;
}

std::string Filter(std::string_view text, std::string_view allowed) {
  std::string out;
  for (char c : text)
    if (allowed.find(c) != std::string_view::npos) out.push_back(c);
  return out;
}

void RemoveChar(std::string& text, char c) { std::erase(text, c); }

}  // namespace keldo::formula
