#pragma once
// What the two time-frequency form files (.spg, .scg) share: a caption as
// a 32-bit length and its bytes; the signal as its upper bound (a power of
// two from 64 to 65536) and that many doubles plus one; and at the end the
// modification list (a count, then each entry as a length and its text),
// the report and the information, after which nothing may follow.

#include <cstdint>
#include <string>
#include <vector>

#include "common/bytes.h"

namespace keldo::timefreq {

// A signal's upper bound: a power of two from these.
inline constexpr std::int32_t kSmallestSignal = 64;
inline constexpr std::int32_t kLargestSignal = 65536;

// Whether a signal's upper bound is one a form holds.
bool IsSignalCount(std::int32_t count);

// A 32-bit length that is not negative, then that many bytes.
bool ReadLengthAndText(ByteReader& in, std::string& text);

// The signal's upper bound and its samples; `accept` may refuse a count
// the settings before it rule out.
template <class Accept>
bool ReadSignal(ByteReader& in, std::vector<double>& signal, Accept accept) {
  const std::int32_t count = in.I32();
  if (!in.ok() || !IsSignalCount(count) || !accept(count)) return false;
  if (!in.Room(static_cast<std::int64_t>(count) + 1, 8)) return false;
  in.Values(signal, static_cast<std::size_t>(count) + 1);
  return in.ok();
}
void WriteSignal(ByteWriter& out, const std::vector<double>& signal);

// The list, the report and the information, and the end of the file.
bool ReadListAndTexts(ByteReader& in, std::vector<std::string>& list, std::string& report, std::string& information);
void WriteListAndTexts(ByteWriter& out, const std::vector<std::string>& list, const std::string& report,
                       const std::string& information);

}  // namespace keldo::timefreq
