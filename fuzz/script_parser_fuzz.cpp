// Any bytes as a script line and as script text: parsing never fails hard,
// and a parsed word never holds a line break.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "script/script_parser.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  for (const auto& line : keldo::script::SplitLines(text)) {
    const auto parsed = keldo::script::ParseLine(line);
    if (!parsed.error.empty() && !parsed.words.empty()) std::abort();
    for (const auto& w : parsed.words)
      if (w.find('\n') != std::string::npos) std::abort();
  }
  return 0;
}
