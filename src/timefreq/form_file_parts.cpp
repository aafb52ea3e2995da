#include "timefreq/form_file_parts.h"

#include <bit>

namespace keldo::timefreq {
namespace {

// A list entry is at least its 4-byte length.
constexpr std::int64_t kEntryLengthBytes = 4;

}  // namespace

bool IsSignalCount(std::int32_t count) {
  return count >= kSmallestSignal && count <= kLargestSignal && std::has_single_bit(static_cast<std::uint32_t>(count));
}

bool ReadLengthAndText(ByteReader& in, std::string& text) {
  const std::int32_t length = in.I32();
  if (!in.ok() || length < 0) return false;
  text = in.Chars(length);
  return in.ok();
}

void WriteSignal(ByteWriter& out, const std::vector<double>& signal) {
  out.I32(static_cast<std::int32_t>(signal.size()) - 1);
  for (double v : signal) out.F64(v);
}

bool ReadListAndTexts(ByteReader& in, std::vector<std::string>& list, std::string& report, std::string& information) {
  const std::int32_t count = in.I32();
  if (!in.ok() || !in.Room(count, kEntryLengthBytes)) return false;
  list.resize(static_cast<std::size_t>(count));
  for (std::string& entry : list)
    if (!ReadLengthAndText(in, entry)) return false;
  if (!ReadLengthAndText(in, report) || !ReadLengthAndText(in, information)) return false;
  return in.Left() == 0;
}

void WriteListAndTexts(ByteWriter& out, const std::vector<std::string>& list, const std::string& report,
                       const std::string& information) {
  out.I32(static_cast<std::int32_t>(list.size()));
  for (const std::string& entry : list) out.CountedText(entry);
  out.CountedText(report);
  out.CountedText(information);
}

}  // namespace keldo::timefreq
