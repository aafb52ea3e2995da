#pragma once
// Splits script text into words. One command a line; "#" outside quotes
// starts a comment; words are split at blanks and tabs; a word may be
// double-quoted, with "" standing for one quote inside it. Backslashes are
// ordinary characters, so formulas keep theirs.

#include <string>
#include <string_view>
#include <vector>

namespace keldo::script {

struct ParsedLine {
  std::vector<std::string> words;
  std::string error;  // empty when the line was understood
};

ParsedLine ParseLine(std::string_view line);

// Splits text into lines at "\n", dropping a "\r" before it.
std::vector<std::string> SplitLines(std::string_view text);

}  // namespace keldo::script
