#pragma once
// Small text helpers shared by the frame, the help index and the script runner.

#include <string>

namespace keldo {

// Without leading and trailing blanks (spaces, tabs, line ends).
std::string Trim(const std::string& text);
std::string ToUpper(std::string text);
std::string ToLower(std::string text);
// The text with every space taken out.
std::string WithoutSpaces(const std::string& text);

}  // namespace keldo
