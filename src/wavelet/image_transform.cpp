#include "wavelet/image_transform.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "common/transpose4.h"
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

// The lifting work arrays of one transform, a line of lanes and one of
// doubles, each with its margins.
struct LineBuffers {
  explicit LineBuffers(int n)
      : laneWork(static_cast<std::size_t>(n) + 2 * kWorkMargin + 1),
        work(static_cast<std::size_t>(n) + 2 * kWorkMargin + 1) {}
  std::vector<Lanes8> laneWork;
  std::vector<double> work;
};

enum class LineKind { Row, Column };
enum class LineStep { Forward, Inverse };

// Where value i of a line lies after one forward level, as Perm puts it:
// the even values in order in the first half, the odd ones in the second;
// with n odd the last value stays last.
inline int PermutedPlace(int n, int i) {
  const int h = n / 2;
  if (i % 2 == 1) return h + i / 2;
  return i < 2 * h ? i / 2 : i;
}

typedef double Doubles8 __attribute__((vector_size(64)));
typedef float Floats8 __attribute__((vector_size(32)));

// (Vectors pass by reference: passed by value, their layout would depend
// on the instructions a function is built for.)
inline __attribute__((always_inline)) void LoadFloats(Doubles8& d, const float* p) {
  Floats8 f;
  std::memcpy(&f, p, sizeof f);
  d = __builtin_convertvector(f, Doubles8);
}

inline __attribute__((always_inline)) void StoreFloats(float* p, const Doubles8& d) {
  const Floats8 f = __builtin_convertvector(d, Floats8);
  std::memcpy(p, &f, sizeof f);
}

inline __attribute__((always_inline)) void LoadLanes(Doubles8& d, const Lanes8& x) {
  std::memcpy(&d, x.v, sizeof d);
}

inline __attribute__((always_inline)) void StoreLanes(Lanes8& x, const Doubles8& d) { std::memcpy(x.v, &d, sizeof d); }

typedef float Floats4 __attribute__((vector_size(16)));

// Eight rows of the plane, from rows[j] on, and a line of lanes: values
// rows[j][from + k] for k < 8 are lane j of x[first + step * k], read
// (kIn) or written. The tile goes through as four blocks of four by four:
// low[j] and high[j] hold values 0..3 and 4..7 of row j, or after the
// transposes lanes 0..3 (j < 4) and 4..7 (j - 4) of the first four values'
// lanes and of the last four's.
template <bool kIn>
inline __attribute__((always_inline)) void MoveTile(float* const* rows, int from, Lanes8* x, int first, int step) {
  Doubles4 low[8], high[8];
  if constexpr (kIn) {
    for (int j = 0; j < 8; ++j) {
      Floats4 a, b;
      std::memcpy(&a, rows[j] + from, sizeof a);
      std::memcpy(&b, rows[j] + from + 4, sizeof b);
      low[j] = __builtin_convertvector(a, Doubles4);
      high[j] = __builtin_convertvector(b, Doubles4);
    }
    Transpose4(low, low);
    Transpose4(low + 4, low + 4);
    Transpose4(high, high);
    Transpose4(high + 4, high + 4);
    for (int k = 0; k < 4; ++k) {
      double* a = x[first + step * k].v;
      double* b = x[first + step * (k + 4)].v;
      std::memcpy(a, &low[k], sizeof low[k]);
      std::memcpy(a + 4, &low[k + 4], sizeof low[k]);
      std::memcpy(b, &high[k], sizeof high[k]);
      std::memcpy(b + 4, &high[k + 4], sizeof high[k]);
    }
  } else {
    for (int k = 0; k < 4; ++k) {
      const double* a = x[first + step * k].v;
      const double* b = x[first + step * (k + 4)].v;
      std::memcpy(&low[k], a, sizeof low[k]);
      std::memcpy(&low[k + 4], a + 4, sizeof low[k]);
      std::memcpy(&high[k], b, sizeof high[k]);
      std::memcpy(&high[k + 4], b + 4, sizeof high[k]);
    }
    Transpose4(low, low);
    Transpose4(low + 4, low + 4);
    Transpose4(high, high);
    Transpose4(high + 4, high + 4);
    for (int j = 0; j < 8; ++j) {
      const Floats4 a = __builtin_convertvector(low[j], Floats4);
      const Floats4 b = __builtin_convertvector(high[j], Floats4);
      std::memcpy(rows[j] + from, &a, sizeof a);
      std::memcpy(rows[j] + from + 4, &b, sizeof b);
    }
  }
}

// Eight rows and a line of lanes, place i of a row being value i of its
// line (kPermuted false) or value i of a line in Perm's order (kPermuted):
// value 2m at place m, value 2m + 1 at place n/2 + m, the last value of an
// odd n last.
template <bool kIn, bool kPermuted>
inline __attribute__((always_inline)) void MoveRows(float* const* rows, int n, Lanes8* x) {
  const auto one = [&](int place, int i) {
    for (int j = 0; j < 8; ++j) {
      if constexpr (kIn) x[i].v[j] = rows[j][place];
      else rows[j][place] = static_cast<float>(x[i].v[j]);
    }
  };
  if constexpr (!kPermuted) {
    int i = 0;
    for (; i + 8 <= n; i += 8) MoveTile<kIn>(rows, i, x, i, 1);
    for (; i < n; ++i) one(i, i);
  } else {
    const int h = n / 2;
    int m = 0;
    for (; m + 8 <= h; m += 8) {
      MoveTile<kIn>(rows, m, x, 2 * m, 2);
      MoveTile<kIn>(rows, h + m, x, 2 * m + 1, 2);
    }
    for (; m < h; ++m) {
      one(m, 2 * m);
      one(h + m, 2 * m + 1);
    }
    if (n % 2 == 1) one(n - 1, n - 1);
  }
}

// One pass over the rows (or columns) of the w by h corner, one level
// each. A line is read from the plane straight into the lifting's work
// array, lifted there in place and written back as float; the plane takes
// the forward level's values in Perm's order and gives the inverse level
// its values from that order, so that neither Perm nor INVPERM nor the
// lifting's own copies are needed. Value i of line j (of a group) is at(j, i).
// Eight lines go through at a time; the moves between the plane and the
// lanes are written over eight-wide vectors, for the widest the processor
// has (LinePass).
inline __attribute__((always_inline)) void LinePassBody(ImagePlane& p, int w, int h, LineKind kind, LineStep step,
                                                        int code, LineBuffers& b) {
  const std::size_t stride = static_cast<std::size_t>(p.width);
  const int lines = kind == LineKind::Row ? h : w, n = kind == LineKind::Row ? w : h;
  float* const v = p.v.data();
  const auto at = [&](int line, int i) -> float& {
    return kind == LineKind::Row ? v[static_cast<std::size_t>(line) * stride + static_cast<std::size_t>(i)]
                                 : v[static_cast<std::size_t>(i) * stride + static_cast<std::size_t>(line)];
  };
  const bool forward = step == LineStep::Forward;
  // Value i of the line in the work array comes from (forward) or goes to
  // (inverse) place i of the plane's line; the other way it is place
  // PermutedPlace(n, i).
  const auto readPlace = [&](int i) { return forward ? i : PermutedPlace(n, i); };
  const auto writePlace = [&](int i) { return forward ? PermutedPlace(n, i) : i; };
  int first = 0;
  for (; first + kGroup <= lines; first += kGroup) {
    Lanes8* x = b.laneWork.data() + kWorkMargin;
    float* rows[kGroup] = {};
    if (kind == LineKind::Row) {
      for (int j = 0; j < kGroup; ++j) rows[j] = &at(first + j, 0);
      if (forward) MoveRows<true, false>(rows, n, x);
      else MoveRows<true, true>(rows, n, x);
    } else {
      for (int i = 0; i < n; ++i) {
        Doubles8 d;
        LoadFloats(d, &at(first, readPlace(i)));
        StoreLanes(x[i], d);
      }
    }
    if (forward) SymmWavTr(n, kExtension, x, x, code);
    else InvSymmWavTr(n, kExtension, x, x, code);
    if (kind == LineKind::Row) {
      if (forward) MoveRows<false, true>(rows, n, x);
      else MoveRows<false, false>(rows, n, x);
    } else {
      for (int i = 0; i < n; ++i) {
        Doubles8 d;
        LoadLanes(d, x[i]);
        StoreFloats(&at(first, writePlace(i)), d);
      }
    }
  }
  for (; first < lines; ++first) {
    double* x = b.work.data() + kWorkMargin;
    for (int i = 0; i < n; ++i) x[i] = at(first, readPlace(i));
    if (forward) SymmWavTr(n, kExtension, x, x, code);
    else InvSymmWavTr(n, kExtension, x, x, code);
    for (int i = 0; i < n; ++i) at(first, writePlace(i)) = static_cast<float>(x[i]);
  }
}

__attribute__((target("avx512f"))) void LinePassMany(ImagePlane& p, int w, int h, LineKind kind, LineStep step,
                                                     int code, LineBuffers& b) {
  LinePassBody(p, w, h, kind, step, code, b);
}

__attribute__((target("avx"))) void LinePassWide(ImagePlane& p, int w, int h, LineKind kind, LineStep step, int code,
                                                 LineBuffers& b) {
  LinePassBody(p, w, h, kind, step, code, b);
}

// KELDO_NO_AVX512 (any value) keeps to four lanes, as the other kernels do.
void LinePass(ImagePlane& p, int w, int h, LineKind kind, LineStep step, int code, LineBuffers& b) {
  static const bool many = __builtin_cpu_supports("avx512f") && std::getenv("KELDO_NO_AVX512") == nullptr;
  static const bool wide = __builtin_cpu_supports("avx");
  if (many) LinePassMany(p, w, h, kind, step, code, b);
  else if (wide) LinePassWide(p, w, h, kind, step, code, b);
  else LinePassBody(p, w, h, kind, step, code, b);
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

namespace {

// Below 255 the magnitude rounds to nearest, ties to even, by adding and
// taking off 2^52 (the default rounding, as nearbyint's); at or above it,
// or NaN, it is 255.
constexpr double kRounder = 4503599627370496.0;

inline std::uint8_t RoundedMagnitude(float value) {
  const double a = std::fabs(static_cast<double>(value));
  return a < 255.0 ? static_cast<std::uint8_t>((a + kRounder) - kRounder) : std::uint8_t{255};
}

typedef std::int64_t Longs8 __attribute__((vector_size(64)));
typedef std::int32_t Ints8 __attribute__((vector_size(32)));
typedef std::uint8_t Bytes8 __attribute__((vector_size(8)));

// Eight values at a time by the same operations: the magnitude (the sign
// bit cleared), the sum and difference with 2^52, and 255 where the
// magnitude is not below 255 (NaN included).
inline __attribute__((always_inline)) void RoundMagnitudes(const float* v, std::uint8_t* bytes, std::size_t count) {
  std::size_t i = 0;
  for (; i + 8 <= count; i += 8) {
    Doubles8 d;
    LoadFloats(d, v + i);
    const Doubles8 a = reinterpret_cast<Doubles8>(reinterpret_cast<Longs8>(d) & INT64_MAX);
    const Doubles8 rounded = (a + kRounder) - kRounder;
    const Longs8 small = a < 255.0;
    const Doubles8 clamped = small ? rounded : Doubles8{} + 255.0;
    const Bytes8 out = __builtin_convertvector(__builtin_convertvector(clamped, Ints8), Bytes8);
    std::memcpy(bytes + i, &out, sizeof out);
  }
  for (; i < count; ++i) bytes[i] = RoundedMagnitude(v[i]);
}

__attribute__((target("avx512f"))) void RoundMagnitudesMany(const float* v, std::uint8_t* bytes, std::size_t count) {
  RoundMagnitudes(v, bytes, count);
}

__attribute__((target("avx2"))) void RoundMagnitudesWide(const float* v, std::uint8_t* bytes, std::size_t count) {
  RoundMagnitudes(v, bytes, count);
}

}  // namespace

std::vector<std::uint8_t> RoundedMagnitudeBytes(const ImagePlane& image) {
  std::vector<std::uint8_t> bytes(image.v.size());
  static const bool many = __builtin_cpu_supports("avx512f") && std::getenv("KELDO_NO_AVX512") == nullptr;
  static const bool wide = __builtin_cpu_supports("avx2");
  if (many) RoundMagnitudesMany(image.v.data(), bytes.data(), bytes.size());
  else if (wide) RoundMagnitudesWide(image.v.data(), bytes.data(), bytes.size());
  else RoundMagnitudes(image.v.data(), bytes.data(), bytes.size());
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
