#include "script/script_parser.h"

namespace keldo::script {
namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\v' || c == '\f'; }

}  // namespace

ParsedLine ParseLine(std::string_view line) {
  ParsedLine out;
  std::size_t i = 0;
  const std::size_t n = line.size();
  while (i < n) {
    while (i < n && IsBlank(line[i])) ++i;
    if (i >= n || line[i] == '#') break;
    std::string word;
    if (line[i] == '"') {
      ++i;
      bool closed = false;
      while (i < n) {
        if (line[i] == '"') {
          if (i + 1 < n && line[i + 1] == '"') {
            word += '"';
            i += 2;
            continue;
          }
          ++i;
          closed = true;
          break;
        }
        word += line[i++];
      }
      if (!closed) {
        out.error = "unterminated quoted word";
        out.words.clear();
        return out;
      }
      if (i < n && !IsBlank(line[i]) && line[i] != '#') {
        out.error = "a quoted word must end at a blank";
        out.words.clear();
        return out;
      }
    } else {
      while (i < n && !IsBlank(line[i])) word += line[i++];
    }
    out.words.push_back(std::move(word));
  }
  return out;
}

std::vector<std::string> SplitLines(std::string_view text) {
  std::vector<std::string> lines;
  std::size_t start = 0;
  while (start <= text.size()) {
    const std::size_t end = text.find('\n', start);
    std::string_view line = text.substr(start, end == std::string_view::npos ? std::string_view::npos : end - start);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    if (end == std::string_view::npos) {
      if (!line.empty()) lines.emplace_back(line);
      break;
    }
    lines.emplace_back(line);
    start = end + 1;
  }
  return lines;
}

}  // namespace keldo::script
