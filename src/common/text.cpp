#include "common/text.h"

#include <cctype>

namespace keldo {

std::string Trim(const std::string& text) {
  std::size_t b = 0, e = text.size();
  while (b < e && std::isspace(static_cast<unsigned char>(text[b]))) ++b;
  while (e > b && std::isspace(static_cast<unsigned char>(text[e - 1]))) --e;
  return text.substr(b, e - b);
}

std::string ToUpper(std::string text) {
  for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return text;
}

std::string ToLower(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

std::string WithoutSpaces(const std::string& text) {
  std::string out;
  for (char c : text)
    if (c != ' ') out.push_back(c);
  return out;
}

}  // namespace keldo
