#pragma once
// The two-dimensional data file (.kb2): a square grid of samples with its
// interval, which the two-dimensional form reads and writes and the
// compression workshop reads as a stored transform and writes as a decoded
// matrix. Little-endian: N (int32), left and right (floats), the colour
// method (one character), then the (N+1) by (N+1) samples row by row. The
// step is (right - left)/N.

#include <cstdint>
#include <optional>
#include <vector>

namespace keldo {

struct Kb2Record {
  std::int32_t points = 0;
  float left = 0, right = 0;
  char colorMethod = 'G';
  std::vector<float> samples;  // (N+1) by (N+1), row-major
};

// The sides a file may give.
inline constexpr int kKb2MinPoints = 2;
inline constexpr int kKb2MaxPoints = 2049;

std::vector<std::uint8_t> WriteKb2(const Kb2Record& record);
// Nothing for bytes that end before the samples, or a side out of range.
std::optional<Kb2Record> ReadKb2(const std::vector<std::uint8_t>& bytes);

}  // namespace keldo
