#include "common/number_text.h"

#include <cmath>
#include <cstdio>
#include <charconv>
#include <cstdlib>

namespace keldo {

std::string StrInt(long long value) {
  return value >= 0 ? " " + std::to_string(value) : std::to_string(value);
}

std::string FormatLabel(double value) {
  if (!std::isfinite(value)) return RoundTripText(value);
  char buffer[64];
  // Rounding to three decimals, as the picture "#0.###" does, then trimming.
  std::snprintf(buffer, sizeof buffer, "%.3f", value);
  std::string text = buffer;
  while (!text.empty() && text.back() == '0') text.pop_back();
  if (!text.empty() && text.back() == '.') text.pop_back();
  if (text == "-0") text = "0";
  return text;
}

std::string RoundTripText(double value) {
  if (std::isnan(value)) return "nan";
  if (std::isinf(value)) return value > 0 ? "inf" : "-inf";
  char buffer[40];
  for (int digits = 15; digits <= 17; ++digits) {
    std::snprintf(buffer, sizeof buffer, "%.*g", digits, value);
    if (std::strtod(buffer, nullptr) == value) break;
  }
  return buffer;
}

std::string PlainNumber(double value) {
  if (value == 0.0) return "0";
  char buffer[48];
  std::snprintf(buffer, sizeof buffer, "%.15G", value);
  return buffer;
}

double Val(const std::string& text) {
  std::string number;
  std::size_t i = 0;
  const auto skipBlanks = [&] {
    while (i < text.size() && (text[i] == ' ' || text[i] == '\t')) ++i;
  };
  skipBlanks();
  if (i < text.size() && (text[i] == '+' || text[i] == '-')) number += text[i++];
  bool digits = false, point = false;
  for (; i < text.size(); ++i) {
    const char c = text[i];
    if (c >= '0' && c <= '9') {
      number += c;
      digits = true;
    } else if (c == '.' && !point) {
      number += c;
      point = true;
    } else if (c != ' ') {
      break;
    }
  }
  if (!digits) return 0.0;
  if (i < text.size() && (text[i] == 'E' || text[i] == 'e' || text[i] == 'D' || text[i] == 'd')) {
    std::string exponent = "e";
    std::size_t j = i + 1;
    if (j < text.size() && (text[j] == '+' || text[j] == '-')) exponent += text[j++];
    const std::size_t start = exponent.size();
    while (j < text.size() && text[j] >= '0' && text[j] <= '9' && exponent.size() < start + 6) exponent += text[j++];
    if (exponent.size() > start) number += exponent;
  }
  double value = 0.0;
  const char* first = number.c_str() + (number[0] == '+' ? 1 : 0);
  std::from_chars(first, number.c_str() + number.size(), value);
  return value;
}

std::string StrNumber(double value) {
  const std::string text = PlainNumber(value);
  return text[0] == '-' ? text : " " + text;
}

std::string StrSingle(float value) {
  if (value == 0.0f) return " 0";
  char buffer[48];
  std::snprintf(buffer, sizeof buffer, "%.7G", static_cast<double>(value));
  return buffer[0] == '-' ? std::string(buffer) : " " + std::string(buffer);
}

std::string FormatDecimals(double value, int decimals) {
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, "%.*f", decimals, value);
  std::string s = buffer;
  while (!s.empty() && s.back() == '0') s.pop_back();
  return s;
}

}  // namespace keldo
