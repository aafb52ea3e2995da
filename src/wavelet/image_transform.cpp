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

// The line buffers of one transform: the line itself, Perm's scratch and the
// lifting work array with its margins.
struct LineBuffers {
  explicit LineBuffers(int n)
      : line(static_cast<std::size_t>(n)), scratch(static_cast<std::size_t>(n)),
        work(static_cast<std::size_t>(n) + 2 * kWorkMargin + 1) {}
  double* Work() { return work.data() + kWorkMargin; }
  std::vector<double> line, scratch, work;
};

enum class LineKind { Row, Column };
enum class LineStep { Forward, Inverse };

// One pass over the rows (or columns) of the w by h corner: each line is
// copied out, transformed one level and stored back.
void LinePass(ImagePlane& p, int w, int h, LineKind kind, LineStep step, int code, LineBuffers& b) {
  const int lines = kind == LineKind::Row ? h : w;
  const int n = kind == LineKind::Row ? w : h;
  double* x = b.line.data();
  for (int k = 0; k < lines; ++k) {
    for (int i = 0; i < n; ++i) x[i] = kind == LineKind::Row ? p.At(i, k) : p.At(k, i);
    if (step == LineStep::Forward) {
      SymmWavTr(n, kExtension, b.Work(), x, code);
      Perm(n, x, b.scratch.data());
    } else {
      INVPERM(n, x, b.scratch.data());
      InvSymmWavTr(n, kExtension, b.Work(), x, code);
    }
    for (int i = 0; i < n; ++i) {
      float& target = kind == LineKind::Row ? p.At(i, k) : p.At(k, i);
      target = static_cast<float>(x[i]);
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
  for (std::size_t i = 0; i < bytes.size(); ++i)
    bytes[i] = static_cast<std::uint8_t>(std::min(255.0, std::nearbyint(std::fabs(static_cast<double>(image.v[i])))));
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
