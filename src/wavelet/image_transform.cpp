#include "wavelet/image_transform.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "wavelet/transforms.h"

namespace keldo::wavelet {
namespace {

constexpr int kExtension = 6;
// SymmWavTr's work array reaches 21 places beyond both ends of a line.
constexpr int kWorkMargin = 21;

// Columns go through in groups of this many, read and written a row of the
// group at a time.
constexpr int kColumnGroup = 8;

// The line buffers of one transform: kColumnGroup lines, Perm's scratch and
// the lifting work array with its margins.
struct LineBuffers {
  explicit LineBuffers(int n)
      : length(static_cast<std::size_t>(n)), lines(length * kColumnGroup), scratch(length),
        work(length + 2 * kWorkMargin + 1) {}
  double* Line(int j) { return lines.data() + static_cast<std::size_t>(j) * length; }
  double* Work() { return work.data() + kWorkMargin; }
  std::size_t length;
  std::vector<double> lines, scratch, work;
};

enum class LineKind { Row, Column };
enum class LineStep { Forward, Inverse };

// One level of one line of n values.
void TransformLine(int n, double* x, LineStep step, int code, LineBuffers& b) {
  if (step == LineStep::Forward) {
    SymmWavTr(n, kExtension, b.Work(), x, code);
    Perm(n, x, b.scratch.data());
  } else {
    INVPERM(n, x, b.scratch.data());
    InvSymmWavTr(n, kExtension, b.Work(), x, code);
  }
}

// One pass over the rows (or columns) of the w by h corner: each line is
// copied out to double, transformed one level and stored back as float.
void LinePass(ImagePlane& p, int w, int h, LineKind kind, LineStep step, int code, LineBuffers& b) {
  const std::size_t stride = static_cast<std::size_t>(p.width);
  if (kind == LineKind::Row) {
    double* x = b.Line(0);
    for (int k = 0; k < h; ++k) {
      float* row = p.v.data() + static_cast<std::size_t>(k) * stride;
      for (int i = 0; i < w; ++i) x[i] = row[i];
      TransformLine(w, x, step, code, b);
      for (int i = 0; i < w; ++i) row[i] = static_cast<float>(x[i]);
    }
    return;
  }
  for (int first = 0; first < w; first += kColumnGroup) {
    const int group = std::min(kColumnGroup, w - first);
    for (int i = 0; i < h; ++i) {
      const float* row = p.v.data() + static_cast<std::size_t>(i) * stride + static_cast<std::size_t>(first);
      for (int j = 0; j < group; ++j) b.Line(j)[i] = row[j];
    }
    for (int j = 0; j < group; ++j) TransformLine(h, b.Line(j), step, code, b);
    for (int i = 0; i < h; ++i) {
      float* row = p.v.data() + static_cast<std::size_t>(i) * stride + static_cast<std::size_t>(first);
      for (int j = 0; j < group; ++j) row[j] = static_cast<float>(b.Line(j)[i]);
    }
  }
}

bool Usable(const ImagePlane& p, int levels) {
  return levels >= 1 && p.width > 0 && p.height > 0 &&
         p.v.size() == static_cast<std::size_t>(p.width) * static_cast<std::size_t>(p.height);
}

}  // namespace

int LiftingCodeOf(int waveletIndex) {
  switch (waveletIndex) {
    case 1: return 101;
    case 2: return 107;
    case 3: return 108;
    default: return 0;
  }
}

void TransformTheImage(ImagePlane& plane, int levels, int waveletIndex) {
  const int code = LiftingCodeOf(waveletIndex);
  if (code == 0 || !Usable(plane, levels)) return;
  LineBuffers buffers(std::max(plane.width, plane.height));
  int w = plane.width, h = plane.height;
  for (int level = 1; level <= levels && w >= 2 && h >= 2; ++level) {
    LinePass(plane, w, h, LineKind::Row, LineStep::Forward, code, buffers);
    LinePass(plane, w, h, LineKind::Column, LineStep::Forward, code, buffers);
    w /= 2;
    h /= 2;
  }
  if (waveletIndex > 1) ScalingOfWT(plane, levels, 1);
}

void InvertTheTransform(ImagePlane& plane, int levels, int waveletIndex) {
  const int code = LiftingCodeOf(waveletIndex);
  if (code == 0 || !Usable(plane, levels)) return;
  if (waveletIndex > 1) ScalingOfWT(plane, levels, -1);
  LineBuffers buffers(std::max(plane.width, plane.height));
  for (int level = levels; level >= 1; --level) {
    const int w = plane.width >> (level - 1), h = plane.height >> (level - 1);
    if (w < 2 || h < 2) continue;
    LinePass(plane, w, h, LineKind::Column, LineStep::Inverse, code, buffers);
    LinePass(plane, w, h, LineKind::Row, LineStep::Inverse, code, buffers);
  }
}

std::vector<std::uint8_t> InvertTheTransformQuant(const ImagePlane& quant, int levels, int waveletIndex) {
  ImagePlane image = quant;
  InvertTheTransform(image, levels, waveletIndex);
  std::vector<std::uint8_t> bytes(image.v.size());
  // Below 255 the magnitude rounds to nearest, ties to even, by adding and
  // taking off 2^52 (the default rounding, as nearbyint's); at or above it,
  // or NaN, it is 255.
  constexpr double kRounder = 4503599627370496.0;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const double a = std::fabs(static_cast<double>(image.v[i]));
    bytes[i] = a < 255.0 ? static_cast<std::uint8_t>((a + kRounder) - kRounder) : std::uint8_t{255};
  }
  return bytes;
}

void ScalingOfWT(ImagePlane& plane, int levels, int direction) {
  if (!Usable(plane, 1)) return;
  const float factor = direction == 1 ? 2.0f : 0.5f;
  const auto scaleCorner = [&](int w, int h) {
    for (int y = 0; y < h; ++y)
      for (int x = 0; x < w; ++x) plane.At(x, y) *= factor;
  };
  int w = plane.width, h = plane.height;
  for (int round = 1; round <= levels; ++round) {
    scaleCorner(w, h);
    w /= 2;
    h /= 2;
  }
  scaleCorner(w, h);
}

int LevelLimit(int width, int height, int waveletIndex) {
  if (width < 1 || height < 1) return 0;
  const int byWidth = static_cast<int>(std::nearbyint(std::log2(static_cast<double>(width))));
  const int byHeight = static_cast<int>(std::nearbyint(std::log2(static_cast<double>(height))));
  int limit = std::min(byWidth, byHeight) - 2;
  if (waveletIndex > 1) limit = std::min(limit, 4);
  return limit;
}

std::int32_t BitBudgetOf(int width, int height, double bpp) {
  const double budget = std::nearbyint(static_cast<double>(height) * bpp) * static_cast<double>(width);
  if (std::isnan(budget)) return 0;
  constexpr double kLow = std::numeric_limits<std::int32_t>::min(), kHigh = std::numeric_limits<std::int32_t>::max();
  return static_cast<std::int32_t>(std::clamp(budget, kLow, kHigh));
}

}  // namespace keldo::wavelet
