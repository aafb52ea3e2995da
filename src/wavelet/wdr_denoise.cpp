#include "wavelet/wdr_denoise.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "wavelet/aswdr_scan.h"
#include "wavelet/wdr_scan.h"

namespace keldo::wavelet {
namespace {

// The level of a detail position (1 the finest), 0 in the trend.
int LevelOf(int x, int y, int n, int levels) {
  int side = n;
  for (int k = 1; k <= levels; ++k) {
    const int half = side / 2;
    if (x >= half || y >= half) return k;
    side = half;
  }
  return 0;
}

}  // namespace

WdrDenoiseResult ArrayDeNoiseEncode(const ImagePlane& transform, const WdrDenoiseOptions& options, bool& ok) {
  WdrDenoiseResult out;
  const int n = transform.width;
  ok = n > 0 && transform.height == n && options.levels >= 1 && options.levels < 31 &&
       n % (1 << options.levels) == 0 && transform.v.size() == static_cast<std::size_t>(n) * static_cast<std::size_t>(n);
  if (!ok) return out;
  const StartThreshold start = GetThreshold(transform);
  out.startThreshold = start.threshold;
  out.lastThreshold = GetTheLastThreshold(options.floor, start.threshold);
  for (double t = start.threshold; t > out.lastThreshold; t /= 2) ++out.passes;
  const double last = out.lastThreshold;
  const double step = options.refine ? std::ldexp(last, -std::max(options.descents, 0)) : last;
  const auto cells = transform.v.size();
  std::vector<std::uint8_t> significant(cells, 0);
  for (std::size_t k = 0; k < cells; ++k)
    if (std::fabs(static_cast<double>(transform.v[k])) >= last) significant[k] = 1;
  // The longest chains: from the coarsest level down (ancestors), then from
  // the finest up (descendants).
  const int trend = n >> options.levels;
  std::vector<int> up(cells, 0), down(cells, 0);
  const auto at = [n](int x, int y) { return static_cast<std::size_t>(y) * static_cast<std::size_t>(n) + x; };
  for (int k = options.levels; k >= 1; --k) {
    const int side = n >> (k - 1), half = side / 2;
    for (int y = 0; y < side; ++y)
      for (int x = 0; x < side; ++x) {
        if (x < half && y < half) continue;
        const std::size_t p = at(x, y);
        if (!significant[p]) continue;
        up[p] = 1;
        if (k < options.levels) {
          const std::size_t parent = at(x / 2, y / 2);
          if (significant[parent] && LevelOf(x / 2, y / 2, n, options.levels) == k + 1) up[p] += up[parent];
        }
      }
  }
  for (int k = 1; k <= options.levels; ++k) {
    const int side = n >> (k - 1), half = side / 2;
    for (int y = 0; y < side; ++y)
      for (int x = 0; x < side; ++x) {
        if (x < half && y < half) continue;
        const std::size_t p = at(x, y);
        if (!significant[p]) continue;
        int best = 0;
        if (k > 1)
          for (int dy = 0; dy < 2; ++dy)
            for (int dx = 0; dx < 2; ++dx) best = std::max(best, down[at(2 * x + dx, 2 * y + dy)]);
        down[p] = 1 + best;
      }
  }
  out.plane = ImagePlane(n, n);
  for (int y = 0; y < n; ++y)
    for (int x = 0; x < n; ++x) {
      const std::size_t p = at(x, y);
      if (!significant[p]) continue;
      ++out.significant;
      const bool inTrend = x < trend && y < trend;
      if (!inTrend && up[p] + down[p] - 1 < options.depth) continue;
      ++out.kept;
      const double c = transform.v[p];
      double q = std::floor(std::fabs(c) / step) * step + step / 2;
      if (options.shrink) q = std::max(q - last, 0.0);
      out.plane.v[p] = static_cast<float>(c < 0 ? -q : q);
    }
  return out;
}

}  // namespace keldo::wavelet
