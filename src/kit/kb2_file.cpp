#include "kit/kb2_file.h"

#include "common/bytes.h"

namespace keldo {
namespace {

std::size_t SampleCount(int points) {
  const auto side = static_cast<std::size_t>(points) + 1;
  return side * side;
}

}  // namespace

std::vector<std::uint8_t> WriteKb2(const Kb2Record& r) {
  ByteWriter w;
  w.I32(r.points);
  w.F32(r.left);
  w.F32(r.right);
  w.Char(r.colorMethod);
  const std::size_t count = SampleCount(r.points);
  for (std::size_t k = 0; k < count; ++k) w.F32(k < r.samples.size() ? r.samples[k] : 0.0f);
  return std::move(w.bytes);
}

std::optional<Kb2Record> ReadKb2(const std::vector<std::uint8_t>& bytes) {
  ByteReader in(bytes);
  Kb2Record r;
  r.points = in.I32();
  r.left = in.F32();
  r.right = in.F32();
  r.colorMethod = in.Char();
  if (!in.ok() || r.points < kKb2MinPoints || r.points > kKb2MaxPoints) return std::nullopt;
  const std::size_t count = SampleCount(r.points);
  if (!in.Room(static_cast<std::int64_t>(count), 4)) return std::nullopt;
  r.samples.resize(count);
  for (float& v : r.samples) v = in.F32();
  return r;
}

}  // namespace keldo
