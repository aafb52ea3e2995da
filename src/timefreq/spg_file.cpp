#include "timefreq/spg_file.h"

#include <bit>
#include <cstdint>

#include "common/bytes.h"
#include "timefreq/form_file_parts.h"

namespace keldo::timefreq {
namespace {

constexpr std::int64_t kSmallestWindow = 64;

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
  WriteSignal(out, file.signal);
  WriteListAndTexts(out, file.modifications, file.report, file.information);
  return out.bytes;
}

std::optional<SpgFile> ReadSpgFile(const std::vector<std::uint8_t>& bytes) {
  ByteReader in(bytes);
  SpgFile file;
  if (!ReadLengthAndText(in, file.caption)) return std::nullopt;
  if (!ReadSettings(in, file)) return std::nullopt;
  if (!ReadSignal(in, file.signal, [&](std::int32_t count) { return WindowAndStepFit(count, file.winlenPart, file.step); })) return std::nullopt;
  if (!ReadListAndTexts(in, file.modifications, file.report, file.information)) return std::nullopt;
  return file;
}

}  // namespace keldo::timefreq
