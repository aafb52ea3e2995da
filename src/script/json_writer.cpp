#include "script/json_writer.h"

#include <cmath>
#include <cstdio>

#include "common/number_text.h"

namespace keldo::script {

std::string JsonString(std::string_view text) {
  std::string out = "\"";
  for (unsigned char c : text) {
    switch (c) {
      case '"': out += "\\\""; break;
      case '\\': out += "\\\\"; break;
      case '\n': out += "\\n"; break;
      case '\r': out += "\\r"; break;
      case '\t': out += "\\t"; break;
      default:
        if (c < 0x20) {
          char buffer[8];
          std::snprintf(buffer, sizeof buffer, "\\u%04x", c);
          out += buffer;
        } else if (c < 0x80) {
          out += static_cast<char>(c);
        } else {
          // Text is one byte a character; bytes above 127 are Latin-1 here.
          out += static_cast<char>(0xC0 | (c >> 6));
          out += static_cast<char>(0x80 | (c & 0x3F));
        }
    }
  }
  out += '"';
  return out;
}

std::string JsonNumber(double value) {
  if (!std::isfinite(value)) return "null";
  return RoundTripText(value);
}

}  // namespace keldo::script
