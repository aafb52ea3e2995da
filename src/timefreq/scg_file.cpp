#include "timefreq/scg_file.h"

#include <bit>
#include <cstdint>

#include "common/bytes.h"

namespace keldo::timefreq {
namespace {

constexpr std::int32_t kSmallestSignal = 64;
constexpr std::int32_t kLargestSignal = 65536;
constexpr std::int64_t kDoubleBytes = 8;
// A list entry is at least its 4-byte length.
constexpr std::int64_t kEntryLengthBytes = 4;

bool IsSignalCount(std::int32_t count) {
  return count >= kSmallestSignal && count <= kLargestSignal && std::has_single_bit(static_cast<std::uint32_t>(count));
}

// Octaves 1..256, voices from 1, at most 256 scales in all, and the rows
// stored being that number of scales.
bool ScalesFit(const ScgFile& file) {
  if (file.octaves < 1 || file.octaves > kMostOctaves || file.voices < 1) return false;
  const std::int64_t scales = static_cast<std::int64_t>(file.octaves) * file.voices;
  return scales <= kMostScales && file.rows == scales;
}

bool ListIndicesFit(const ScgFile& file) {
  return file.wavelet >= '1' && file.wavelet < '1' + kScalogramWavelets && file.mode >= 0 &&
         file.mode < kScalogramDisplayModes && file.view >= 0 && file.view < kScalogramViews;
}

// A 32-bit length that is not negative, then that many bytes.
bool ReadLengthAndText(ByteReader& in, std::string& text) {
  const std::int32_t length = in.I32();
  if (!in.ok() || length < 0) return false;
  text = in.Chars(length);
  return in.ok();
}

// The settings between the caption and the signal.
bool ReadSettings(ByteReader& in, ScgFile& file) {
  for (std::int16_t& flag : file.displayFlags) flag = in.I16();
  file.left = in.F64();
  file.right = in.F64();
  file.dx = in.F64();
  file.wavelet = in.Char();
  file.octaves = in.I32();
  file.width = in.F64();
  file.voices = in.I32();
  file.frequency = in.F64();
  file.signalMean = in.F64();
  file.rows = in.I32();
  file.columns = in.I32();
  file.reference = in.F64();
  file.mode = in.I16();
  for (std::int16_t& flag : file.signalFlags) flag = in.I16();
  file.view = in.I16();
  file.sampling = in.F64();
  file.displayKind = in.Char();
  return in.ok() && ScalesFit(file) && ListIndicesFit(file);
}

bool ReadSignal(ByteReader& in, ScgFile& file) {
  const std::int32_t count = in.I32();
  if (!in.ok() || !IsSignalCount(count) || file.columns != count) return false;
  if (!in.Room(static_cast<std::int64_t>(count) + 1, kDoubleBytes)) return false;
  in.Values(file.signal, static_cast<std::size_t>(count) + 1);
  return in.ok();
}

bool ReadModifications(ByteReader& in, ScgFile& file) {
  const std::int32_t count = in.I32();
  if (!in.ok() || !in.Room(count, kEntryLengthBytes)) return false;
  file.modifications.resize(static_cast<std::size_t>(count));
  for (std::string& entry : file.modifications)
    if (!ReadLengthAndText(in, entry)) return false;
  return true;
}

}  // namespace

std::vector<std::uint8_t> WriteScgFile(const ScgFile& file) {
  ByteWriter out;
  out.CountedText(file.caption);
  for (std::int16_t flag : file.displayFlags) out.I16(flag);
  out.F64(file.left);
  out.F64(file.right);
  out.F64(file.dx);
  out.Char(file.wavelet);
  out.I32(file.octaves);
  out.F64(file.width);
  out.I32(file.voices);
  out.F64(file.frequency);
  out.F64(file.signalMean);
  out.I32(file.rows);
  out.I32(file.columns);
  out.F64(file.reference);
  out.I16(file.mode);
  for (std::int16_t flag : file.signalFlags) out.I16(flag);
  out.I16(file.view);
  out.F64(file.sampling);
  out.Char(file.displayKind);
  out.I32(static_cast<std::int32_t>(file.signal.size()) - 1);
  for (double v : file.signal) out.F64(v);
  out.I32(static_cast<std::int32_t>(file.modifications.size()));
  for (const std::string& entry : file.modifications) out.CountedText(entry);
  out.CountedText(file.report);
  out.CountedText(file.information);
  return out.bytes;
}

std::optional<ScgFile> ReadScgFile(const std::vector<std::uint8_t>& bytes) {
  ByteReader in(bytes);
  ScgFile file;
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
