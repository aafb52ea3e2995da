#pragma once
// A small JSON writer: strings escaped, doubles written so they read back to
// the same value (non-finite values as null).

#include <string>
#include <string_view>

namespace keldo::script {

std::string JsonString(std::string_view text);
std::string JsonNumber(double value);

}  // namespace keldo::script
