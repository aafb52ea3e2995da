#include "common/number_text.h"

#include <cmath>
#include <cstdio>
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

}  // namespace keldo
