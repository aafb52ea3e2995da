#include "timefreq/scg_file.h"

#include <cstdint>

#include "common/bytes.h"
#include "timefreq/form_file_parts.h"

namespace keldo::timefreq {
namespace {


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
  WriteSignal(out, file.signal);
  WriteListAndTexts(out, file.modifications, file.report, file.information);
  return out.bytes;
}

std::optional<ScgFile> ReadScgFile(const std::vector<std::uint8_t>& bytes) {
  ByteReader in(bytes);
  ScgFile file;
  if (!ReadLengthAndText(in, file.caption)) return std::nullopt;
  if (!ReadSettings(in, file)) return std::nullopt;
  if (!ReadSignal(in, file.signal, [&](std::int32_t count) { return file.columns == count; })) return std::nullopt;
  if (!ReadListAndTexts(in, file.modifications, file.report, file.information)) return std::nullopt;
  return file;
}

}  // namespace keldo::timefreq
