#include "timefreq/spg_file.h"

#include <bit>
#include <cstdint>

#include "common/bytes.h"

namespace keldo::timefreq {
namespace {

constexpr std::int32_t kSmallestSignal = 64;
constexpr std::int32_t kLargestSignal = 65536;
constexpr std::int64_t kSmallestWindow = 64;
// Doubles: left, right, dt, sampling value and df.
constexpr std::int64_t kDoubleBytes = 8;
// A list entry is at least its 4-byte length.
constexpr std::int64_t kEntryLengthBytes = 4;

bool IsSignalCount(std::int32_t count) {
  return count >= kSmallestSignal && count <= kLargestSignal && std::has_single_bit(static_cast<std::uint32_t>(count));
}

// The longest window a spectrogram of sig[0..count] accepts: 32 for 64
// points (so none of the accepted lengths fits), 64 for 128 and 256, and
// twice as long for every further factor of four.
std::int64_t LongestWindow(std::int32_t count) {
  std::int64_t longest = 32;
  for (std::int64_t n = kSmallestSignal; n < count; n *= 4) longest *= 2;
  return longest;
}

// A window length 2 * part that is a power of two from 64 up to the
// longest for the signal, and a step from 1 up to that length.
bool WindowAndStepFit(std::int32_t count, std::int32_t winlenPart, std::int32_t step) {
  const std::int64_t winlen = 2 * static_cast<std::int64_t>(winlenPart);
  if (winlen < kSmallestWindow || winlen > LongestWindow(count)) return false;
  if (!std::has_single_bit(static_cast<std::uint64_t>(winlen))) return false;
  return step >= 1 && step <= winlen;
}

// A 32-bit length that is not negative, then that many bytes.
bool ReadLengthAndText(ByteReader& in, std::string& text) {
  const std::int32_t length = in.I32();
  if (!in.ok() || length < 0) return false;
  text = in.Chars(length);
  return in.ok();
}

// The settings between the caption and the signal.
bool ReadSettings(ByteReader& in, SpgFile& file) {
  file.left = in.F64();
  file.right = in.F64();
  file.dt = in.F64();
  file.rows = in.I32();
  file.winlenPart = in.I32();
  file.step = in.I32();
  file.samplingValue = in.F64();
  file.displayMaximum = in.I32();
  file.displayMode = in.I16();
  file.displayChoice = in.I16();
  file.flag = in.Char();
  file.filterIndex = in.I16();
  file.df = in.F64();
  if (!in.ok()) return false;
  return file.displayMode >= 0 && file.displayMode < kDisplayModes && file.displayChoice >= 0 &&
         file.displayChoice < kDisplayChoices && file.filterIndex >= 0 && file.filterIndex < kFilters;
}

bool ReadSignal(ByteReader& in, SpgFile& file) {
  const std::int32_t count = in.I32();
  if (!in.ok() || !IsSignalCount(count)) return false;
  if (!WindowAndStepFit(count, file.winlenPart, file.step)) return false;
  if (!in.Room(static_cast<std::int64_t>(count) + 1, kDoubleBytes)) return false;
  in.Values(file.signal, static_cast<std::size_t>(count) + 1);
  return in.ok();
}

bool ReadModifications(ByteReader& in, SpgFile& file) {
  const std::int32_t count = in.I32();
  if (!in.ok() || !in.Room(count, kEntryLengthBytes)) return false;
  file.modifications.resize(static_cast<std::size_t>(count));
  for (std::string& entry : file.modifications)
    if (!ReadLengthAndText(in, entry)) return false;
  return true;
}

}  // namespace

std::vector<std::uint8_t> WriteSpgFile(const SpgFile& file) {
  ByteWriter out;
  out.CountedText(file.caption);
  out.F64(file.left);
  out.F64(file.right);
  out.F64(file.dt);
  out.I32(file.rows);
  out.I32(file.winlenPart);
  out.I32(file.step);
  out.F64(file.samplingValue);
  out.I32(file.displayMaximum);
  out.I16(file.displayMode);
  out.I16(file.displayChoice);
  out.Char(file.flag);
  out.I16(file.filterIndex);
  out.F64(file.df);
  out.I32(static_cast<std::int32_t>(file.signal.size()) - 1);
  for (double v : file.signal) out.F64(v);
  out.I32(static_cast<std::int32_t>(file.modifications.size()));
  for (const std::string& entry : file.modifications) out.CountedText(entry);
  out.CountedText(file.report);
  out.CountedText(file.information);
  return out.bytes;
}

std::optional<SpgFile> ReadSpgFile(const std::vector<std::uint8_t>& bytes) {
  ByteReader in(bytes);
  SpgFile file;
  if (!ReadLengthAndText(in, file.caption)) return std::nullopt;
  if (!ReadSettings(in, file)) return std::nullopt;
  if (!ReadSignal(in, file)) return std::nullopt;
  if (!ReadModifications(in, file)) return std::nullopt;
  if (!ReadLengthAndText(in, file.report)) return std::nullopt;
  if (!ReadLengthAndText(in, file.information)) return std::nullopt;
  if (in.Left() != 0) return std::nullopt;
  return file;
}

}  // namespace keldo::timefreq
