#include "form2d/image_display.h"

#include <algorithm>
#include <cmath>

namespace keldo::form2d {
namespace {

constexpr int kMaxSamples = 256;  // strides keep a drawing within 257 samples

std::int32_t Grey(int m) { return m + 256 * m + 65536 * m; }
std::int32_t Red(int m) { return m; }
std::int32_t Blue(int m) { return 65536 * m; }

// Rounded to the nearest integer, held in the range of an int; NaN gives 0.
// Samples and windows read from a file may be anything.
int Round(double v) {
  if (!(v == v)) return 0;
  return static_cast<int>(std::clamp(std::nearbyint(v), -2147483648.0, 2147483647.0));
}

// The linear grey level of a magnitude: 0 to 255, or 0 to 127 for grey (+/-).
int LinearLevel(double a, double mx, int top) {
  const double scale = top == 127 ? 127.0 : 256.0;
  const double level = std::floor(scale * a / mx);
  if (!(level >= 0.0)) return 0;
  return static_cast<int>(std::min<double>(top, level));
}

// The log grey level: each step down is a factor of 0.96 in magnitude.
int LogLevel(double a, double mx) {
  static const double c = 1.0 / std::log(1.0 / 0.96);
  if (!(a >= std::ldexp(1.0, -256))) return 0;
  const double m = std::floor(c * std::log(a / mx)) + 256;
  if (!(m >= 0.0)) return 0;
  return static_cast<int>(std::min(m, 255.0));
}

// The colour of one sample by the table of methods; `logScale` picks the
// log rule (the lin-log method's detail pass uses it too).
std::int32_t Colour(float v, const ImageGraph& g, double mx, bool logScale) {
  const double a = std::fabs(static_cast<double>(v));
  const bool active = a > g.threshold;
  switch (g.colorMethod) {
    case kColor: {
      if (!active || v == 0.0f) return 0;
      const int m = logScale ? LogLevel(a, mx) : LinearLevel(a, mx, 255);
      return v > 0.0f ? Red(m) : Blue(m);
    }
    case kGreyPlusMinus: {
      if (!active) return Grey(128);
      if (!logScale) {
        const int m = LinearLevel(a, mx, 127);
        return v > 0.0f ? Grey(128 + m) : Grey(128 - m);
      }
      const int m = LogLevel(a, mx);
      if (v > 0.0f) return Grey(127 + m / 2);
      return v < 0.0f ? Grey(m / 2) : Grey(m);
    }
    case kGrey:
    default: {
      if (!active || !(v > 0.0f)) return 0;
      return Grey(logScale ? LogLevel(a, mx) : LinearLevel(a, mx, 255));
    }
  }
}

}  // namespace

void PixelMatrix::Reset(int n) {
  side = n + 6;
  cells.assign(static_cast<std::size_t>(side) * static_cast<std::size_t>(side), 0);
}

std::int32_t PixelMatrix::At(int i, int j) const {
  if (i < 0 || j < 0 || i >= side || j >= side) return 0;
  return cells[static_cast<std::size_t>(i) * static_cast<std::size_t>(side) + static_cast<std::size_t>(j)];
}

platform::Rgb ToRgb(std::int32_t packed) {
  return platform::MakeRgb(packed & 255, (packed >> 8) & 255, (packed >> 16) & 255);
}

ViewRange FillRange(const ImageGraph& g) {
  ViewRange r;
  const float lo = g.left, h = g.step;
  r.i0 = std::max(0, Round((g.viewYLow - lo) / h));
  r.i1 = std::min(g.n, Round((g.viewYHigh - lo) / h));
  r.si = static_cast<int>(std::max(1LL, (static_cast<long long>(r.i1) - r.i0) / kMaxSamples));
  r.j0 = std::max(0, Round((g.viewXLeft - lo) / h));
  r.j1 = std::min(g.n, Round((g.viewXRight - lo) / h));
  r.sj = static_cast<int>(std::max(1LL, (static_cast<long long>(r.j1) - r.j0) / kMaxSamples));
  return r;
}

void FillImageMatrix(const ImageGraph& g, PixelMatrix& pixels) {
  pixels.Reset(g.n);
  if (!g.data || !(g.step != 0.0f)) return;
  const ViewRange r = FillRange(g);
  const double mx = g.max == 0.0f ? 1.0 : g.max;
  const auto visit = [&](auto&& paint) {
    for (int i = r.i0; i <= r.i1; i += r.si)
      for (int j = r.j0; j <= r.j1; j += r.sj) paint(i, j);
  };
  if (g.intensity != kLinLog) {
    const bool logScale = g.intensity == kLog;
    visit([&](int i, int j) { pixels.Set(i, j, Colour(g.At(i, j), g, mx, logScale)); });
    return;
  }
  // Lin-log: the low-pass block linearly in grey (+), whatever the method.
  const int b = g.linReg;
  visit([&](int i, int j) {
    if (i >= b || j >= b) return;
    const float v = g.At(i, j);
    const double a = std::fabs(static_cast<double>(v));
    pixels.Set(i, j, a > g.threshold && v > 0.0f ? Grey(LinearLevel(a, mx, 255)) : 0);
  });
  // The detail's scale: the test reads the transposed sample and the
  // assignment the direct one, outside a block of half the side.
  double d = 0.0;
  const int half = b / 2;
  for (int i = 0; i <= g.n; ++i)
    for (int j = 0; j <= g.n; ++j) {
      if (i < half && j < half) continue;
      if (std::fabs(static_cast<double>(g.At(j, i))) > d) d = std::fabs(static_cast<double>(g.At(i, j)));
    }
  if (d == 0.0) d = 1.0;
  visit([&](int i, int j) {
    if (i < b && j < b) return;
    pixels.Set(i, j, Colour(g.At(i, j), g, d, true));
  });
}

int AdjustValue(int points) {
  switch (points) {
    case 65: return 64;
    case 129: return 128;
    case 257: return 256;
    case 513: return 512;
    case 1025: return 1024;
    case 2048: return 2049;
    default: return points;
  }
}

void PaintWholeGraph(const PixelMatrix& pixels, int adjusted, int side, platform::RgbImage& picture) {
  picture = platform::RgbImage(side + 1, side + 1, platform::kBlack);
  const int a = adjusted;
  if (a <= 0) return;
  if (a >= side) {
    const int s = a / side;
    for (int i = 0; i <= a; ++i)
      for (int j = 0; j <= a; ++j)
        if (const std::int32_t c = pixels.At(i, j); c > 0) picture.Set(j / s, (a - i) / s, ToRgb(c));
    return;
  }
  const int r = side / a;
  for (int p = 0; p <= side; ++p)
    for (int x = 0; x <= side; ++x)
      if (const std::int32_t c = pixels.At(p / r, x / r); c > 0) picture.Set(x, side - p, ToRgb(c));
}

void PaintViewedGraph(const ImageGraph& g, const PixelMatrix& pixels, int side, int limit,
                      platform::RgbImage& picture) {
  picture = platform::RgbImage(side + 1, side + 1, platform::kBlack);
  if (!(g.step != 0.0f)) return;
  // The ranges of the fill, with the domain's lower end taken as -right.
  const float lo = -g.right, h = g.step;
  const int i0 = std::max(0, Round((g.viewYLow - lo) / h));
  const int i1 = std::min(limit, Round((g.viewYHigh - lo) / h));
  const int j0 = std::max(0, Round((g.viewXLeft - lo) / h));
  const int j1 = std::min(limit, Round((g.viewXRight - lo) / h));
  // Windows off the grid (a file may hold any) give empty or inverted ranges.
  const int si = static_cast<int>((static_cast<long long>(i1) - i0) / side);
  const int sj = static_cast<int>((static_cast<long long>(j1) - j0) / side);
  if (sj >= 1) {
    if (si < 1) return;
    for (int i = i0; i <= i1; i += si)
      for (int j = j0; j <= j1; j += sj)
        if (const std::int32_t c = pixels.At(i, j); c > 0) picture.Set((j - j0) / sj, (i1 - i) / si, ToRgb(c));
    return;
  }
  const int r = g.n > 0 ? Round(static_cast<double>(g.drawWidths) * side / g.n) : 0;
  // A window off the grid (a file may hold any) shows nothing there.
  if (r < 1 || i1 < 0 || j0 > limit) return;
  for (int p = 0; p <= side && i1 - p / r >= 0; ++p)
    for (int x = 0; x <= side && j0 + x / r <= limit; ++x)
      if (const std::int32_t c = pixels.At(i1 - p / r, j0 + x / r); c > 0) picture.Set(x, p, ToRgb(c));
}

}  // namespace keldo::form2d
