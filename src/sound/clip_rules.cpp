#include "sound/clip_rules.h"

#include <cmath>
#include <limits>

namespace keldo::sound {

std::int32_t SetClipLength(std::int64_t distance, std::int64_t clipStart, std::int64_t sampleCount) {
  std::int32_t length = kMaxClip;
  while (true) {
    if (static_cast<double>(distance) * 1.99 >= length && clipStart + length < sampleCount) return length;
    length /= 2;
    if (length < kMinClip) return -1;
  }
}

std::int32_t NewLength(std::int64_t sampleCount, std::int64_t copyLength) {
  const std::int64_t sum = sampleCount + copyLength;
  if (sum > std::numeric_limits<std::int32_t>::max() || sum < 0) return -1;
  return static_cast<std::int32_t>(sum);
}

int WaveHeight(std::int16_t value, int bits) {
  if (bits == 8) return (value - 128) * 8;
  return (value / 260) * 8;
}

std::int64_t WaveStride(std::int64_t count, int width) {
  if (width < 1) width = 1;
  const std::int64_t stride = count / width;
  return stride < 1 ? 1 : stride;
}

std::vector<std::int64_t> WaveColumns(std::int64_t count, int width) {
  std::vector<std::int64_t> columns;
  const std::int64_t stride = WaveStride(count, width);
  for (std::int64_t i = 0; i <= width; ++i) {
    const std::int64_t k = i * stride;
    if (k >= count) break;
    columns.push_back(k);
  }
  return columns;
}

std::int64_t ClickedSample(double x, std::int64_t count) {
  std::int64_t p = 0;
  if (x > 0) p = x >= static_cast<double>(count) ? count : static_cast<std::int64_t>(std::trunc(x));
  if (count - p < kMinClip) p = count - kMinClip;
  return p;
}

bool RefusedSecondLine(std::int64_t p, std::int64_t clipStart) {
  return p < clipStart || p > clipStart + 65536 || p <= clipStart + 63;
}

}  // namespace keldo::sound
