#include "wavelet/aswdr_region.h"

#include <cmath>
#include <cstddef>

namespace keldo::wavelet {
namespace {

constexpr int kSupport = 5;

struct Reach {
  std::int64_t scale = 1, margin = 0;
};

// Level 1: scale 2, margin Support; level l >= 2: scale 2^l, margin
// 2^(l-1) Support + Support.
Reach ReachOfLevel(int level, int support) {
  Reach r;
  r.scale = std::int64_t{1} << level;
  r.margin = level == 1 ? support : (std::int64_t{1} << (level - 1)) * support + support;
  return r;
}

struct Rectangle {
  std::int64_t x1, y1, x2, y2;
};

// Marks the block of w by h positions whose corner is (x0, y0).
void MarkBlock(std::vector<std::uint8_t>& mask, int width, int x0, int y0, int w, int h, const Rectangle& r,
               Reach reach) {
  for (int v = 0; v < h; ++v) {
    const std::int64_t ys = v * reach.scale;
    if (ys < r.y1 - reach.margin || ys > r.y2 + reach.margin) continue;
    for (int u = 0; u < w; ++u) {
      const std::int64_t xs = u * reach.scale;
      if (xs < r.x1 - reach.margin || xs > r.x2 + reach.margin) continue;
      mask[static_cast<std::size_t>(y0 + v) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x0 + u)] = 1;
    }
  }
}

}  // namespace

int SupportOfWavelet(int waveletIndex) { return waveletIndex >= 1 && waveletIndex <= 3 ? kSupport : 0; }

std::vector<std::uint8_t> GetROIValues(int width, int height, int x1, int y1, int x2, int y2, int support,
                                       int levels) {
  if (width <= 0 || height <= 0) return {};
  const std::size_t size = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
  if (levels < 1 || levels > 30 || width % (1 << levels) != 0 || height % (1 << levels) != 0)
    return std::vector<std::uint8_t>(size, 1);
  std::vector<std::uint8_t> mask(size, 0);
  const Rectangle r{x1, y1, x2, y2};
  for (int level = 1; level <= levels; ++level) {
    const int ex = width >> level, ey = height >> level;
    const Reach reach = ReachOfLevel(level, support);
    MarkBlock(mask, width, ex, 0, ex, ey, r, reach);   // upper
    MarkBlock(mask, width, 0, ey, ex, ey, r, reach);   // lower
    MarkBlock(mask, width, ex, ey, ex, ey, r, reach);  // diagonal
  }
  Reach trend;
  trend.scale = std::int64_t{1} << levels;
  trend.margin = (std::int64_t{1} << (levels - 1)) * support + support;
  MarkBlock(mask, width, 0, 0, width >> levels, height >> levels, r, trend);
  return mask;
}

AswdrRegion RegionOfRectangle(const ImagePlane& transform, const AswdrHead& head, const RegionRectangle& rectangle,
                              double share, RegionBudgetBase base) {
  AswdrRegion region;
  region.mask = GetROIValues(transform.width, transform.height, rectangle.x1, rectangle.y1, rectangle.x2, rectangle.y2,
                             SupportOfWavelet(head.waveletIndex), head.levels);
  const double budget = base == RegionBudgetBase::LosslessRun
                            ? static_cast<double>(CompressAswdrLossless(transform, head).bitsUsed)
                            : static_cast<double>(head.budget);
  region.sharedBudget = static_cast<std::int64_t>(std::nearbyint((1.0 - share) * budget));
  return region;
}

}  // namespace keldo::wavelet
