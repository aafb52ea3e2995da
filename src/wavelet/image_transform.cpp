#include "wavelet/image_transform.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "wavelet/lanes.h"
#include "wavelet/transforms.h"

namespace keldo::wavelet {
namespace {

constexpr int kExtension = 6;
// SymmWavTr's work array reaches 21 places beyond both ends of a line.
constexpr int kWorkMargin = 21;

// Lines go through eight at a time, as the lanes of one Lanes8 line: rows
// read across eight rows, columns a row of the group at a time. Lines left
// over go one by one.
constexpr int kGroup = Lanes8::kCount;

// The line buffers of one transform: a line of lanes and one of doubles,
// Perm's scratch and the lifting work arrays with their margins.
struct LineBuffers {
  explicit LineBuffers(int n)
      : length(static_cast<std::size_t>(n)), lanes(length), laneScratch(length),
        laneWork(length + 2 * kWorkMargin + 1), line(length), scratch(length), work(length + 2 * kWorkMargin + 1) {}
  std::size_t length;
  std::vector<Lanes8> lanes, laneScratch, laneWork;
  std::vector<double> line, scratch, work;
};

enum class LineKind { Row, Column };
enum class LineStep { Forward, Inverse };

// One level of one line of n elements, doubles or lanes.
template <typename E>
void TransformLine(int n, E* x, LineStep step, int code, E* scratch, E* work) {
  if (step == LineStep::Forward) {
    SymmWavTr(n, kExtension, work + kWorkMargin, x, code);
    Perm(n, x, scratch);
  } else {
    INVPERM(n, x, scratch);
    InvSymmWavTr(n, kExtension, work + kWorkMargin, x, code);
  }
}

// One pass over the rows (or columns) of the w by h corner: each line is
// copied out to double, transformed one level and stored back as float.
// Value i of line j (of a group) is at(j, i).
void LinePass(ImagePlane& p, int w, int h, LineKind kind, LineStep step, int code, LineBuffers& b) {
  const std::size_t stride = static_cast<std::size_t>(p.width);
  const int lines = kind == LineKind::Row ? h : w, n = kind == LineKind::Row ? w : h;
  float* const v = p.v.data();
  const auto at = [&](int line, int i) -> float& {
    return kind == LineKind::Row ? v[static_cast<std::size_t>(line) * stride + static_cast<std::size_t>(i)]
                                 : v[static_cast<std::size_t>(i) * stride + static_cast<std::size_t>(line)];
  };
  int first = 0;
  for (; first + kGroup <= lines; first += kGroup) {
    Lanes8* x = b.lanes.data();
    if (kind == LineKind::Row) {
      for (int j = 0; j < kGroup; ++j) {
        const float* row = &at(first + j, 0);
        for (int i = 0; i < n; ++i) x[i].v[j] = row[i];
      }
    } else {
      for (int i = 0; i < n; ++i) {
        const float* row = &at(first, i);
        for (int j = 0; j < kGroup; ++j) x[i].v[j] = row[j];
      }
    }
    TransformLine(n, x, step, code, b.laneScratch.data(), b.laneWork.data());
    if (kind == LineKind::Row) {
      for (int j = 0; j < kGroup; ++j) {
        float* row = &at(first + j, 0);
        for (int i = 0; i < n; ++i) row[i] = static_cast<float>(x[i].v[j]);
      }
    } else {
      for (int i = 0; i < n; ++i) {
        float* row = &at(first, i);
        for (int j = 0; j < kGroup; ++j) row[j] = static_cast<float>(x[i].v[j]);
      }
    }
  }
  for (; first < lines; ++first) {
    double* x = b.line.data();
    for (int i = 0; i < n; ++i) x[i] = at(first, i);
    TransformLine(n, x, step, code, b.scratch.data(), b.work.data());
    for (int i = 0; i < n; ++i) at(first, i) = static_cast<float>(x[i]);
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
  return RoundedMagnitudeBytes(image);
}

std::vector<std::uint8_t> RoundedMagnitudeBytes(const ImagePlane& image) {
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
