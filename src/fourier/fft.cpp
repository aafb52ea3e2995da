#include "fourier/fft.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstdlib>
#include <cstdint>
#include <cstring>
#include <immintrin.h>
#include <map>
#include <memory>
#include <mutex>
#include <type_traits>
#include <utility>

#include "common/transpose4.h"

namespace keldo::fourier {
namespace {

// The exponent of the smallest power of two not below n (n >= 1).
int Log2Of(int n) { return n <= 1 ? 0 : 32 - __builtin_clz(static_cast<unsigned>(n - 1)); }

// One butterfly: the rotated value (v, w) against element j.
template <typename T>
inline void Butterfly(T* x, T* y, int j, int r, T v, T w) {
  x[r] = x[j] - v;
  y[r] = y[j] - w;
  x[j] += v;
  y[j] += w;
}

}  // namespace

void BuildTrigTables(int n, int m, double* s, double* t, double& c) {
  const int quarter = n / 4;
  s[0] = 0.0;
  s[quarter] = 1.0;
  c = 0.0;
  int h = quarter;
  int count = 1;
  for (int round = 0; round < m - 2; ++round) {
    // sin(a) = (sin(a - b) + sin(a + b)) / (2 cos(b)), with c = 2 cos(b).
    c = std::sqrt(c + 2.0);
    const int g = h;
    h = g / 2;
    int i = g / 2;
    for (int k = 0; k < count; ++k) {
      s[i] = (s[i + h] + s[i - h]) / c;
      i += g;
    }
    count *= 2;
  }
  t[0] = 0.0;
  t[quarter] = 1.0;
  // tan(x / 2) = (1 - cos x) / sin x.
  for (int k = 1; k < quarter; ++k) t[k] = (1.0 - s[quarter - k]) / s[k];
}

namespace {

// This file is built with GCC's scheduling before register allocation, which
// interleaves the independent chains of the butterflies. The transform of 64
// points holds all its data in registers, and there the reordering only adds
// spills (it took 6 to 14 per cent longer): its kernels keep the order as
// written.
#if defined(__GNUC__) && !defined(__clang__)
#define KELDO_PLAIN_ORDER __attribute__((optimize("no-schedule-insns")))
#else
#define KELDO_PLAIN_ORDER
#endif

// Two or four doubles, or four or eight floats, in the lanes of one vector
// register of 16 or 32 bytes.
typedef double Pair __attribute__((vector_size(16)));
typedef double Quad __attribute__((vector_size(32)));
typedef float Float4 __attribute__((vector_size(16)));
typedef float Float8 __attribute__((vector_size(32)));

// How a kernel forms some of its sums a + b and differences a - b: with the
// adders (PlainAdds), or on the multiply-add units as a * 1 + b and
// -(b * 1) + a (FusedAdds, vectors of four doubles, processors with FMA),
// so that the sums share the units that the products leave free where the
// adders are the busier ones. The product by 1 is exact and the fused
// operation rounds once, so each gives exactly the sum or difference, with
// the same bits (signed zeros included). Add(r, a, b) sets r = a + b and
// Sub(r, a, b) r = a - b (r may be a or b).
struct PlainAdds {
  template <typename V>
  static inline __attribute__((always_inline)) void Add(V& r, const V& a, const V& b) {
    r = a + b;
  }
  template <typename V>
  static inline __attribute__((always_inline)) void Sub(V& r, const V& a, const V& b) {
    r = a - b;
  }
};

#if defined(__clang__)
// Clang asks for FMA in the function that names the builtin, not in the one
// it is expanded into: its builds take the plain sums, which give the very
// same bits.
struct FusedAdds : PlainAdds {};
#else
// (The builtin of _mm256_fmadd_pd, which needs FMA only where it is
// expanded: in the kernels built for it, into which these are inlined; its
// vector result never crosses a call.)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpsabi"
struct FusedAdds {
  template <typename V>
  static inline __attribute__((always_inline)) void Add(V& r, const V& a, const V& b) {
    r = __builtin_ia32_vfmaddpd256(a, V{1.0, 1.0, 1.0, 1.0}, b);
  }
  template <typename V>
  static inline __attribute__((always_inline)) void Sub(V& r, const V& a, const V& b) {
    r = __builtin_ia32_vfmaddpd256(-b, V{1.0, 1.0, 1.0, 1.0}, a);
  }
};
#pragma GCC diagnostic pop
#endif

// The first three stages (spans 1, 2 and 4) on eight elements, held in
// registers between the stages. The operations are those of the stages one
// by one. A and b hold the real and imaginary parts of the eight elements: numbers,
// or vectors whose lanes are separate runs of eight, each going through the
// very operations a lone run would.
template <typename V, typename T, typename A = PlainAdds>
inline __attribute__((always_inline)) void StagesOfEight(V* a, V* b, T s1, T t1) {
  for (int i = 0; i < 8; i += 2) {
    const V a0 = a[i], a1 = a[i + 1], b0 = b[i], b1 = b[i + 1];
    A::Add(a[i], a0, a1);
    A::Sub(a[i + 1], a0, a1);
    b[i] = b0 + b1;
    b[i + 1] = b0 - b1;
  }
  for (int i = 0; i < 8; i += 4) {
    V v = a[i + 2], w = b[i + 2];
    A::Sub(a[i + 2], a[i], v);
    b[i + 2] = b[i] - w;
    A::Add(a[i], a[i], v);
    b[i] += w;
    v = a[i + 3];
    w = b[i + 3];
    A::Add(a[i + 3], a[i + 1], w);
    b[i + 3] = b[i + 1] - v;
    A::Sub(a[i + 1], a[i + 1], w);
    b[i + 1] += v;
  }
  // Span 4: the trivial twiddles, then k = 1 and its mirror.
  V v = a[4], w = b[4];
  A::Sub(a[4], a[0], v);
  b[4] = b[0] - w;
  A::Add(a[0], a[0], v);
  b[0] += w;
  v = a[6];
  w = b[6];
  A::Add(a[6], a[2], w);
  b[6] = b[2] - v;
  A::Sub(a[2], a[2], w);
  b[2] += v;
  V u = b[5] + t1 * a[5];
  v = a[5] - s1 * u;
  w = u + t1 * v;
  A::Sub(a[5], a[1], v);
  b[5] = b[1] - w;
  A::Add(a[1], a[1], v);
  b[1] += w;
  u = a[7] - t1 * b[7];
  v = -b[7] - s1 * u;
  w = u + t1 * v;
  A::Sub(a[7], a[3], v);
  b[7] = b[3] - w;
  A::Add(a[3], a[3], v);
  b[3] += w;
}

template <typename T>
inline void ThreeStagesOfEight(T* x, T* y, T s1, T t1) {
  T a[8], b[8];
  for (int i = 0; i < 8; ++i) {
    a[i] = x[i];
    b[i] = y[i];
  }
  StagesOfEight(a, b, s1, t1);
  for (int i = 0; i < 8; ++i) {
    x[i] = a[i];
    y[i] = b[i];
  }
}

template <typename T>
void FirstThreeStages(T* x, T* y, T s1, T t1, int n) {
  for (int j = 0; j < n; j += 8) ThreeStagesOfEight(x + j, y + j, s1, t1);
}

// The bit-reversal permutation; with kStages, each run of eight elements
// also goes through the first three stages as soon as it holds its final
// values, so that the data are read and written once for both.
template <bool kStages, typename T>
void BitReverseTiles(T* x, T* y, int n, int m, T s1, T t1) {
  const auto exchange = [&](int i, int j) {
    std::swap(x[i], x[j]);
    std::swap(y[i], y[j]);
  };
  constexpr int kBits = 3;  // tiles of 8 by 8 elements
  if (m < 2 * kBits) {
    int j = 0;
    for (int i = 0; i < n - 1; ++i) {
      if (i < j) exchange(i, j);
      int bit = n >> 1;
      while (j & bit) {
        j ^= bit;
        bit >>= 1;
      }
      j |= bit;
    }
    if (kStages) FirstThreeStages(x, y, s1, t1, n);
    return;
  }
  // An index is (high, middle, low) with three-bit high and low parts; its
  // reversal is (rev low, rev middle, rev high). The tile of one middle value
  // maps onto the tile of the reversed middle value. A tile is read row by
  // row into a small buffer, exchanged against its partner row by row, and
  // written back, so that each row of eight elements is met as a whole.
  static constexpr int kReversed[8] = {0, 4, 2, 6, 1, 5, 3, 7};
  const int middleCount = 1 << (m - 2 * kBits);
  const int highShift = m - kBits;
  T bufferX[8][8], bufferY[8][8];
  const auto row = [&](int high, int middle) { return (high << highShift) | (middle << kBits); };
  int reversedMiddle = 0;
  for (int middle = 0; middle < middleCount; ++middle) {
    if (middle <= reversedMiddle) {
      for (int high = 0; high < 8; ++high) {
        const int at = row(high, middle);
        for (int low = 0; low < 8; ++low) {
          bufferX[high][low] = x[at + low];
          bufferY[high][low] = y[at + low];
        }
      }
      if (middle < reversedMiddle) {
        // Element (h, l) of the partner tile pairs with (rev l, rev h) here.
        for (int high = 0; high < 8; ++high) {
          const int at = row(high, reversedMiddle);
          const int low0 = kReversed[high];
          for (int low = 0; low < 8; ++low) {
            const int h0 = kReversed[low];
            std::swap(x[at + low], bufferX[h0][low0]);
            std::swap(y[at + low], bufferY[h0][low0]);
          }
          if (kStages) ThreeStagesOfEight(x + at, y + at, s1, t1);
        }
      }
      // Back into this tile: exchanged values, or the tile reversed in itself.
      for (int high = 0; high < 8; ++high) {
        const int at = row(high, middle);
        for (int low = 0; low < 8; ++low) {
          const bool self = middle == reversedMiddle;
          x[at + low] = self ? bufferX[kReversed[low]][kReversed[high]] : bufferX[high][low];
          y[at + low] = self ? bufferY[kReversed[low]][kReversed[high]] : bufferY[high][low];
        }
        if (kStages) ThreeStagesOfEight(x + at, y + at, s1, t1);
      }
    }
    int bit = middleCount >> 1;
    while (reversedMiddle & bit) {
      reversedMiddle ^= bit;
      bit >>= 1;
    }
    reversedMiddle |= bit;
  }
}


template <typename T>
struct Lanes;
template <>
struct Lanes<double> {
  using Narrow = Pair;
  using Wide = Quad;
  static constexpr int kNarrow = 2, kWide = 4;
};
template <>
struct Lanes<float> {
  using Narrow = Float4;
  using Wide = Float8;
  static constexpr int kNarrow = 4, kWide = 8;
};

// Vectors go in and out by reference, so that no vector crosses a call in
// a register of a width the caller may not have.
template <typename V, typename T>
inline __attribute__((always_inline)) void Load(V& v, const T* p) {
  std::memcpy(&v, p, sizeof v);
}

template <typename V, typename T>
inline __attribute__((always_inline)) void Store(T* p, const V& v) {
  std::memcpy(p, &v, sizeof v);
}

// The tiles of BitReverseTiles with 256-bit vectors, for doubles. The eight
// rows of a tile are loaded as two vectors each, so that lane c of row r is
// column c; as output row h gathers column rev h, the elements of all eight
// output rows go through the three stages at once, lane by lane, and are
// then transposed into place.
inline __attribute__((always_inline)) void LoadTile(Quad* lo, Quad* hi, const double* p, int rowStep) {
  for (int r = 0; r < 8; ++r) {
    Load(lo[r], p + r * rowStep);
    Load(hi[r], p + r * rowStep + 4);
  }
}

// Columns c0..c0+3 of one array, held as the first and last four elements
// of each (x[0..3] and x[4..7]), to output rows rev c at dest.
inline __attribute__((always_inline)) void StoreColumns(const Quad* a, double* dest, int rowStep, int c0) {
  static constexpr int kReversed[8] = {0, 4, 2, 6, 1, 5, 3, 7};
  Quad first[4], last[4];
  Transpose4(a, first);
  Transpose4(a + 4, last);
  for (int c = 0; c < 4; ++c) {
    double* row = dest + kReversed[c0 + c] * rowStep;
    Store(row, first[c]);
    Store(row + 4, last[c]);
  }
}

// StoreColumns for vectors whose lanes hold columns c0 + 0, 2, 1, 3 (as
// unpacking interleaved pairs leaves them), written as 128-bit halves:
// after the in-lane half of the transposition, lane c of four rows is the
// low or high half of two vectors, stored as they are, with no lane-crossing
// shuffle.
inline __attribute__((always_inline)) void StoreColumnsOfPairs(const Quad* a, double* dest, int rowStep, int c0) {
  static constexpr int kReversed[8] = {0, 4, 2, 6, 1, 5, 3, 7};
  static constexpr int kColumnOfLane[4] = {0, 2, 1, 3};
  for (int part = 0; part < 2; ++part) {
    const Quad* r = a + 4 * part;
    const Quad even01 = __builtin_shufflevector(r[0], r[1], 0, 4, 2, 6);
    const Quad odd01 = __builtin_shufflevector(r[0], r[1], 1, 5, 3, 7);
    const Quad even23 = __builtin_shufflevector(r[2], r[3], 0, 4, 2, 6);
    const Quad odd23 = __builtin_shufflevector(r[2], r[3], 1, 5, 3, 7);
    for (int lane = 0; lane < 4; ++lane) {
      double* row = dest + kReversed[c0 + kColumnOfLane[lane]] * rowStep + 4 * part;
      const Quad& front = lane % 2 == 0 ? even01 : odd01;
      const Quad& back = lane % 2 == 0 ? even23 : odd23;
      const Pair f = lane < 2 ? __builtin_shufflevector(front, front, 0, 1) : __builtin_shufflevector(front, front, 2, 3);
      const Pair b = lane < 2 ? __builtin_shufflevector(back, back, 0, 1) : __builtin_shufflevector(back, back, 2, 3);
      Store(row, f);
      Store(row + 2, b);
    }
  }
}

// A source tile (rows in lo and hi, x then y) into the destination tile:
// element l of output row h is source element (rev l, rev h). Element l of
// every output row is source row rev l, lane by lane, so the three stages
// run on all eight output rows at once before the transposition. With
// kPairLanes the lanes hold columns 0, 2, 1, 3 of their four, and the
// columns go out as 128-bit halves (StoreColumnsOfPairs), which spares the
// sixteen registers of AVX2 a lane-crossing shuffle per half row.
template <bool kStages, typename A = PlainAdds, bool kPairLanes = false>
inline __attribute__((always_inline)) void TileOut(const Quad* xlo, const Quad* xhi, const Quad* ylo,
                                                   const Quad* yhi, double* dx, double* dy, int rowStep, double s1,
                                                   double t1) {
  static constexpr int kReversed[8] = {0, 4, 2, 6, 1, 5, 3, 7};
  Quad a[8], b[8], e[8], f[8];
  for (int l = 0; l < 8; ++l) {
    a[l] = xlo[kReversed[l]];
    b[l] = ylo[kReversed[l]];
    e[l] = xhi[kReversed[l]];
    f[l] = yhi[kReversed[l]];
  }
  if (kStages) {
    StagesOfEight<Quad, double, A>(a, b, s1, t1);
    StagesOfEight<Quad, double, A>(e, f, s1, t1);
  }
  // The rows of a tile lie a power of two apart and share one cache set;
  // the lines of y, read last, are still there, so they are written first.
  if constexpr (kPairLanes) {
    StoreColumnsOfPairs(b, dy, rowStep, 0);
    StoreColumnsOfPairs(f, dy, rowStep, 4);
    StoreColumnsOfPairs(a, dx, rowStep, 0);
    StoreColumnsOfPairs(e, dx, rowStep, 4);
  } else {
    StoreColumns(b, dy, rowStep, 0);
    StoreColumns(f, dy, rowStep, 4);
    StoreColumns(a, dx, rowStep, 0);
    StoreColumns(e, dx, rowStep, 4);
  }
}

// BitReverseTiles for doubles, m at least 6.
template <bool kStages, typename A = PlainAdds>
inline __attribute__((always_inline)) void BitReverseTilesBody(double* x, double* y, int m, double s1, double t1) {
  const int middleCount = 1 << (m - 6);
  const int rowStep = 1 << (m - 3);
  int reversedMiddle = 0;
  for (int middle = 0; middle < middleCount; ++middle) {
    if (middle <= reversedMiddle) {
      const int at = middle << 3;
      Quad axl[8], axh[8], ayl[8], ayh[8];
      LoadTile(axl, axh, x + at, rowStep);
      LoadTile(ayl, ayh, y + at, rowStep);
      if (middle < reversedMiddle) {
        const int partner = reversedMiddle << 3;
        alignas(64) double bufX[64], bufY[64];
        TileOut<kStages, A>(axl, axh, ayl, ayh, bufX, bufY, 8, s1, t1);
        Quad bxl[8], bxh[8], byl[8], byh[8];
        LoadTile(bxl, bxh, x + partner, rowStep);
        LoadTile(byl, byh, y + partner, rowStep);
        TileOut<kStages, A>(bxl, bxh, byl, byh, x + at, y + at, rowStep, s1, t1);
        for (int r = 0; r < 8; ++r) {
          Quad a, b, c, e;
          Load(a, bufX + 8 * r);
          Load(b, bufX + 8 * r + 4);
          Load(c, bufY + 8 * r);
          Load(e, bufY + 8 * r + 4);
          Store(x + partner + r * rowStep, a);
          Store(x + partner + r * rowStep + 4, b);
          Store(y + partner + r * rowStep, c);
          Store(y + partner + r * rowStep + 4, e);
        }
      } else {
        TileOut<kStages, A>(axl, axh, ayl, ayh, x + at, y + at, rowStep, s1, t1);
      }
    }
    int bit = middleCount >> 1;
    while (reversedMiddle & bit) {
      reversedMiddle ^= bit;
      bit >>= 1;
    }
    reversedMiddle |= bit;
  }
}

// The same with the 32 vector registers of AVX-512 processors: a tile's
// rows and the three stages' values then stay in registers.
template <bool kStages>
__attribute__((target("avx"))) void BitReverseTilesWide(double* x, double* y, int m, double s1, double t1) {
  BitReverseTilesBody<kStages>(x, y, m, s1, t1);
}

template <bool kStages>
__attribute__((target("avx512f,avx512vl"))) void BitReverseTilesMany(double* x, double* y, int m, double s1,
                                                                     double t1) {
  BitReverseTilesBody<kStages>(x, y, m, s1, t1);
}

// Whether the processor has the 32 vector registers of AVX-512. The
// environment variable KELDO_NO_AVX512 (any value) takes the paths of the
// processors without them, so that one machine can measure both; the
// results are the same to the bit.
bool ManyRegisters() {
  static const bool many = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512vl") &&
                           std::getenv("KELDO_NO_AVX512") == nullptr;
  return many;
}

// The permutation, with the first three stages when kStages, by the vector
// tiles where they apply.
template <bool kStages, typename T>
void BitReverse(T* x, T* y, int n, int m, T s1, T t1) {
  // (With the stages, ReverseAndTransform takes the vector path itself.)
  if constexpr (std::is_same_v<T, double> && !kStages) {
    static const bool wide = __builtin_cpu_supports("avx");
    if (wide && m >= 6) {
      if (ManyRegisters()) BitReverseTilesMany<kStages>(x, y, m, s1, t1);
      else BitReverseTilesWide<kStages>(x, y, m, s1, t1);
      return;
    }
  }
  BitReverseTiles<kStages>(x, y, n, m, s1, t1);
}

template <typename T>
void BitReverseBoth(T* x, T* y, int n, int m) {
  BitReverse<false>(x, y, n, m, T(0), T(0));
}

// Elements that one pass of the early stages keeps in the first-level cache.
constexpr int kChunk = 1024;

// The rotated right element (v, w) of a butterfly with twiddles (sk, tk):
// by theta in three shears, or with kMirror by theta + pi / 2. With
// kTrivialLane, lane 0 is k = 0, whose twiddles are 1 and +i: it takes the
// rotated values as they are, (x, y) and (-y, x), without the shears,
// exactly as the trivial butterflies compute them.
template <bool kTrivialLane, bool kMirror, typename V>
inline __attribute__((always_inline)) void Rotated(const V& xr, const V& yr, const V& sk, const V& tk, V& v, V& w) {
  if constexpr (!kMirror) {
    const V u = yr + tk * xr;
    v = xr - sk * u;
    w = u + tk * v;
    if (kTrivialLane) {
      v[0] = xr[0];
      w[0] = yr[0];
    }
  } else {
    const V u = xr - tk * yr;
    v = -yr - sk * u;
    w = u + tk * v;
    if (kTrivialLane) {
      v[0] = -yr[0];
      w[0] = xr[0];
    }
  }
}

// The outputs of a butterfly: left + (v, w) and left - (v, w).
template <typename A = PlainAdds, typename V>
inline __attribute__((always_inline)) void Combine(V& xl, V& yl, V& xr, V& yr, const V& v, const V& w) {
  A::Sub(xr, xl, v);
  yr = yl - w;
  A::Add(xl, xl, v);
  yl = yl + w;
}

// The butterflies of one twiddle vector held in registers: the left (xl,
// yl) and right (xr, yr) elements of twiddles (sk, tk), and the mirror pair
// (xp, yp), (xm, ym) at theta + pi / 2.
template <bool kTrivialLane, typename V>
inline __attribute__((always_inline)) void Butterflies(V& xl, V& yl, V& xr, V& yr, V& xp, V& yp, V& xm, V& ym,
                                                       const V& sk, const V& tk) {
  V v, w;
  Rotated<kTrivialLane, false>(xr, yr, sk, tk, v, w);
  Combine(xl, yl, xr, yr, v, w);
  Rotated<kTrivialLane, true>(xm, ym, sk, tk, v, w);
  Combine(xp, yp, xm, ym, v, w);
}

// The twiddles of indices k .. k+L-1, entries (k + l) * tstep of the tables.
template <int L, typename V, typename T>
inline __attribute__((always_inline)) void LoadTwiddles(V& sk, V& tk, const T* s, const T* t, int k, int tstep) {
  if (tstep == 1) {
    Load(sk, s + k);
    Load(tk, t + k);
  } else {
    for (int l = 0; l < L; ++l) {
      sk[l] = s[(k + l) * tstep];
      tk[l] = t[(k + l) * tstep];
    }
  }
}

// L twiddle indices k .. k+L-1 of one block in the lanes of a vector V,
// each lane doing the operations of the scalar step in StageBody.
template <typename V, int L, bool kTrivialLane, typename T>
inline __attribute__((always_inline)) void VectorStep(T* x, T* y, const T* s, const T* t, int j, int k, int d, int q,
                                                      int tstep) {
  V sk, tk;
  LoadTwiddles<L>(sk, tk, s, t, k, tstep);
  const int lo = j + k, r = lo + d, p = lo + q, r2 = p + d;
  V xl, yl, xr, yr, xp, yp, xm, ym;
  Load(xl, x + lo);
  Load(yl, y + lo);
  Load(xr, x + r);
  Load(yr, y + r);
  Load(xp, x + p);
  Load(yp, y + p);
  Load(xm, x + r2);
  Load(ym, y + r2);
  Butterflies<kTrivialLane>(xl, yl, xr, yr, xp, yp, xm, ym, sk, tk);
  Store(x + lo, xl);
  Store(y + lo, yl);
  Store(x + r, xr);
  Store(y + r, yr);
  Store(x + p, xp);
  Store(y + p, yp);
  Store(x + r2, xm);
  Store(y + r2, ym);
}

// One stage of butterflies of span d over the blocks that start in
// [begin, end). The twiddle of index k is entry k * tstep of the tables.
// Every butterfly of a stage touches its own elements, so the order in which
// they run does not change a single bit of the result. Blocks run outermost
// and the twiddle index inside, so that the four elements of each step
// advance through memory together; L twiddle indices at a time go into the
// lanes of a vector V (then pairs, then one at a time for what is left).
template <typename V, int L, typename T>
inline __attribute__((always_inline)) void StageBody(T* x, T* y, const T* s, const T* t, int d, int tstep, int begin,
                                                     int end) {
  const int q = d / 2;
  const int blockStep = 2 * d;
  // Vector reads and writes that straddle two cache lines cost twice, so the
  // vector steps start where x + j + k is a multiple of the vector's width
  // (blocks start at multiples of 16 elements, so this is the same k in
  // every block). When a vector can start at k = 0, the trivial twiddles
  // ride in its lane 0, where they are done without the shears; otherwise
  // the twiddles before it go one at a time.
  // A narrower vector may lead the way to that k from k = 0.
  constexpr int kNarrow = Lanes<T>::kNarrow;
  const int misalign = static_cast<int>((reinterpret_cast<std::uintptr_t>(x) / sizeof(T)) % L);
  const int aligned = (L - misalign) % L;
  const bool laneZero = q >= L && aligned % kNarrow == 0;
  const int first = laneZero ? 0 : std::min(q, aligned == 0 ? L : aligned);
  const auto scalarStep = [&](int j, int k) {
    const T sk = s[k * tstep], tk = t[k * tstep];
    // Rotation by theta = pi k / d in three shears.
    int r = j + k + d;
    T u = y[r] + tk * x[r];
    T v = x[r] - sk * u;
    T w = u + tk * v;
    Butterfly(x, y, j + k, r, v, w);
    // The mirror pair, at theta + pi / 2.
    const int p = j + k + q;
    r = p + d;
    u = x[r] - tk * y[r];
    v = -y[r] - sk * u;
    w = u + tk * v;
    Butterfly(x, y, p, r, v, w);
  };
  using Narrow = typename Lanes<T>::Narrow;
  for (int j = begin; j < end; j += blockStep) {
    int k = 1;
    if (laneZero) {
      // The first vector carries the trivial twiddles in its lane 0.
      if (aligned == 0) {
        VectorStep<V, L, true>(x, y, s, t, j, 0, d, q, tstep);
        k = L;
      } else {
        VectorStep<Narrow, kNarrow, true>(x, y, s, t, j, 0, d, q, tstep);
        for (k = kNarrow; k < aligned; k += kNarrow) VectorStep<Narrow, kNarrow, false>(x, y, s, t, j, k, d, q, tstep);
      }
    } else {
      // The trivial twiddles, 1 and +i, then the twiddles before the first
      // aligned vector one at a time.
      const T a0 = x[j + d], b0 = y[j + d];
      Butterfly(x, y, j, j + d, a0, b0);
      const int p0 = j + q, r0 = j + d + q;
      const T a = x[r0], b = y[r0];
      x[r0] = x[p0] + b;
      y[r0] = y[p0] - a;
      x[p0] -= b;
      y[p0] += a;
      for (; k < first; ++k) scalarStep(j, k);
    }
    for (; k + L - 1 < q; k += L) VectorStep<V, L, false>(x, y, s, t, j, k, d, q, tstep);
    if constexpr (L > kNarrow)
      for (; k + kNarrow - 1 < q; k += kNarrow) VectorStep<Narrow, kNarrow, false>(x, y, s, t, j, k, d, q, tstep);
    for (; k < q; ++k) scalarStep(j, k);
  }
}

template <typename T>
void ButterflyStageNarrow(T* x, T* y, const T* s, const T* t, int d, int tstep, int begin, int end) {
  StageBody<typename Lanes<T>::Narrow, Lanes<T>::kNarrow>(x, y, s, t, d, tstep, begin, end);
}

// The same for processors with 256-bit vectors. Without fused multiply-add
// each lane rounds exactly as the scalar code does.
template <typename T>
__attribute__((target("avx"))) void ButterflyStageWide(T* x, T* y, const T* s, const T* t, int d, int tstep,
                                                         int begin, int end) {
  StageBody<typename Lanes<T>::Wide, Lanes<T>::kWide>(x, y, s, t, d, tstep, begin, end);
}

template <typename T>
void ButterflyStage(T* x, T* y, const T* s, const T* t, int d, int tstep, int begin, int end) {
  static const bool wide = __builtin_cpu_supports("avx");
  if (wide) ButterflyStageWide(x, y, s, t, d, tstep, begin, end);
  else ButterflyStageNarrow(x, y, s, t, d, tstep, begin, end);
}

// The twiddles of every stage laid out one after another, so that each stage
// reads its own contiguously instead of every (n / 2d)-th entry of the
// tables. The tables of a size are always the same numbers (they are built
// by the same square roots), so one copy per type, table size and transform
// size serves every caller; it is checked against the caller's tables at a
// few entries, and a caller with tables of its own keeps the strided reads.
template <typename T>
struct StageTwiddles {
  std::vector<T> s, t;
  std::vector<int> offset;  // of the stage of span 2^i, i from 3
};

template <typename T>
const StageTwiddles<T>* BuildTwiddles(const T* s, const T* t, int n, int stride) {
  static std::mutex lock;
  static std::map<std::pair<int, int>, std::unique_ptr<const StageTwiddles<T>>> kept;
  const std::lock_guard<std::mutex> guard(lock);
  std::unique_ptr<const StageTwiddles<T>>& entry = kept[{n, stride}];
  if (!entry) {
    auto built = std::make_unique<StageTwiddles<T>>();
    built->offset.assign(32, 0);
    int at = 0;
    for (int d = 8, i = 3; d < n; d *= 2, ++i) {
      built->offset[static_cast<std::size_t>(i)] = at;
      const int tstep = stride * (n / (2 * d));
      for (int k = 0; k < d / 2; ++k) {
        built->s.push_back(s[k * tstep]);
        built->t.push_back(t[k * tstep]);
      }
      // A few entries of slack, so that vector reads past the end stay inside.
      for (int k = 0; k < 8; ++k) {
        built->s.push_back(T(0));
        built->t.push_back(T(0));
      }
      at = static_cast<int>(built->s.size());
    }
    entry = std::move(built);
  }
  return entry.get();
}

// The layout for a size, built once; the strides the kernels use are found
// again without a lock, which matters to small transforms.
template <typename T>
const StageTwiddles<T>* TwiddlesFor(const T* s, const T* t, int n, int stride) {
  static std::atomic<const StageTwiddles<T>*> quick[32][3];
  const int log = Log2Of(n);
  const bool quickly = stride >= 1 && stride <= 2 && log < 32;
  const StageTwiddles<T>* found =
      quickly ? quick[log][stride].load(std::memory_order_acquire) : nullptr;
  if (found == nullptr) {
    found = BuildTwiddles(s, t, n, stride);
    if (quickly) quick[log][stride].store(found, std::memory_order_release);
  }
  const StageTwiddles<T>& w = *found;
  // The largest span reads s[k * stride] for k < n / 4.
  for (const int k : {1, n / 8, n / 4 - 1}) {
    if (n < 16 || k < 1) continue;
    const std::size_t at = static_cast<std::size_t>(w.offset[static_cast<std::size_t>(log - 1)] + k);
    if (w.s[at] != s[k * stride] || w.t[at] != t[k * stride]) return nullptr;
  }
  return &w;
}

// The twiddles of the stage of span d: its run of the layout w, or else
// every tstep-th entry of the tables.
template <typename T>
inline __attribute__((always_inline)) void ColumnTwiddles(const T* s, const T* t, int n, int stride,
                                                          const StageTwiddles<T>* w, int d, const T*& sd,
                                                          const T*& td, int& tstep) {
  sd = s;
  td = t;
  tstep = stride * (n / (2 * d));
  if (w) {
    const auto at = static_cast<std::size_t>(w->offset[static_cast<std::size_t>(Log2Of(d))]);
    sd = w->s.data() + at;
    td = w->t.data() + at;
    tstep = 1;
  }
}

// Rows of the data of the column stages: the array's from its column c0
// (step base), or those of the buffer (step width).
template <typename T>
struct ColumnRows {
  T* x;
  T* y;
  int step;
  T* X(int m) const { return x + m * step; }
  T* Y(int m) const { return y + m * step; }
};

// Stage d's butterfly of the rows in[0..1] and in[2..3]: the second row
// rotated, then both combined, into (a, b) and (c, e).
template <bool kTrivialD, bool kMirrorD, typename A>
inline __attribute__((always_inline)) void ColumnFirstButterfly(const double* const* in, const Quad& sd,
                                                                const Quad& td, Quad& a, Quad& b, Quad& c, Quad& e) {
  Quad v, w;
  Load(c, in[2]);
  Load(e, in[3]);
  Rotated<kTrivialD, kMirrorD>(c, e, sd, td, v, w);
  Load(a, in[0]);
  Load(b, in[1]);
  Combine<A>(a, b, c, e, v, w);
}

// Four columns of four rows, r0 and the rows span, 2 span and 3 span below
// it, read at (x0, y0) .. (x3, y3) and written at (o0, p0) .. (o3, p3),
// through the stages of spans d = span base and 2d: stage d pairs r0 with
// r1 and r2 with r3, twiddles (sd, td) in the mirror form when kMirrorD;
// stage 2d pairs r0 with r2 (twiddles s2, t2) and r1 with r3 in the mirror
// form with the same twiddles. A trivial flag gives lane 0 the trivial
// twiddles of its stage (1, or +i in the mirror form), as the stages alone
// give it.
template <bool kTrivialD, bool kMirrorD, bool kTrivial2, typename A>
inline __attribute__((always_inline)) void ColumnQuartet(const double* const* in, double* const* out, const Quad& sd,
                                                         const Quad& td, const Quad& s2, const Quad& t2) {
  Quad a0, b0, a1, b1, a2, b2, a3, b3, v, w;
  ColumnFirstButterfly<kTrivialD, kMirrorD, A>(in, sd, td, a0, b0, a1, b1);
  ColumnFirstButterfly<kTrivialD, kMirrorD, A>(in + 4, sd, td, a2, b2, a3, b3);
  Rotated<kTrivial2, false>(a2, b2, s2, t2, v, w);
  Combine<A>(a0, b0, a2, b2, v, w);
  Store(out[0], a0);
  Store(out[1], b0);
  Store(out[4], a2);
  Store(out[5], b2);
  Rotated<kTrivial2, true>(a3, b3, s2, t2, v, w);
  Combine<A>(a1, b1, a3, b3, v, w);
  Store(out[2], a1);
  Store(out[3], b1);
  Store(out[6], a3);
  Store(out[7], b3);
}

// The stages of spans span base and 2 span base at once over four columns
// at a time, from the rows `from` into the rows `to` (the same or others):
// the element of row m and column c0 + v is index m base + c0 + v, and in a
// group of rows r0 = b + mm (b a multiple of 4 span, mm below span) and the
// three at span, 2 span and 3 span below, k = mm base + c0 + v is the
// twiddle index of stage 2d in both of its butterflies and that of stage d
// from r0 (k - d/2, mirrored, from d/2 up). k is a multiple of four, as d/2
// is, so only lane 0 can be trivial.
template <typename A>
inline __attribute__((always_inline)) void ColumnPairOfStages(const ColumnRows<double>& from,
                                                              const ColumnRows<double>& to, const double* s,
                                                              const double* t, int n, int stride,
                                                              const StageTwiddles<double>* w, int base, int c0,
                                                              int rows, int width, int span) {
  const int d = span * base, q = d / 2;
  const double *sd, *td, *s2, *t2;
  int tstepD, tstep2;
  ColumnTwiddles(s, t, n, stride, w, d, sd, td, tstepD);
  ColumnTwiddles(s, t, n, stride, w, 2 * d, s2, t2, tstep2);
  for (int b = 0; b < rows; b += 4 * span)
    for (int mm = 0; mm < span; ++mm)
      for (int v = 0; v < width; v += 4) {
        const int k = mm * base + c0 + v;
        const bool mirror = k >= q;
        Quad sk, tk, s2k, t2k;
        LoadTwiddles<4>(sk, tk, sd, td, mirror ? k - q : k, tstepD);
        LoadTwiddles<4>(s2k, t2k, s2, t2, k, tstep2);
        const double* in[8];
        double* out[8];
        for (int r = 0; r < 4; ++r) {
          const int m = b + mm + r * span;
          in[2 * r] = from.X(m) + v;
          in[2 * r + 1] = from.Y(m) + v;
          out[2 * r] = to.X(m) + v;
          out[2 * r + 1] = to.Y(m) + v;
        }
        if (k == 0) ColumnQuartet<true, false, true, A>(in, out, sk, tk, s2k, t2k);
        else if (k == q) ColumnQuartet<true, true, false, A>(in, out, sk, tk, s2k, t2k);
        else if (!mirror) ColumnQuartet<false, false, false, A>(in, out, sk, tk, s2k, t2k);
        else ColumnQuartet<false, true, false, A>(in, out, sk, tk, s2k, t2k);
      }
}

// One stage of span d = span base over the columns, from the rows `from`
// into the rows `to`.
template <typename V, int L, typename A, typename T>
inline __attribute__((always_inline)) void ColumnOneStage(const ColumnRows<T>& from, const ColumnRows<T>& to,
                                                          const T* s, const T* t, int n, int stride,
                                                          const StageTwiddles<T>* w, int base, int c0, int rows,
                                                          int width, int span) {
  const int d = span * base, q = d / 2;
  const T *sd, *td;
  int tstep;
  ColumnTwiddles(s, t, n, stride, w, d, sd, td, tstep);
  for (int b = 0; b < rows; b += 2 * span)
    for (int mm = 0; mm < span; ++mm) {
      const T* const xl = from.X(b + mm);
      const T* const yl = from.Y(b + mm);
      const T* const xr = from.X(b + mm + span);
      const T* const yr = from.Y(b + mm + span);
      T* const ol = to.X(b + mm);
      T* const pl = to.Y(b + mm);
      T* const orr = to.X(b + mm + span);
      T* const pr = to.Y(b + mm + span);
      for (int v = 0; v < width; v += L) {
        const int k = mm * base + c0 + v;
        const bool mirror = k >= q;
        const int tw = mirror ? k - q : k;
        V sk, tk;
        LoadTwiddles<L>(sk, tk, sd, td, tw, tstep);
        V a, e, f, g, rv, rw;
        Load(a, xl + v);
        Load(e, yl + v);
        Load(f, xr + v);
        Load(g, yr + v);
        if (!mirror) {
          if (tw == 0) Rotated<true, false>(f, g, sk, tk, rv, rw);
          else Rotated<false, false>(f, g, sk, tk, rv, rw);
        } else {
          if (tw == 0) Rotated<true, true>(f, g, sk, tk, rv, rw);
          else Rotated<false, true>(f, g, sk, tk, rv, rw);
        }
        Combine<A>(a, e, f, g, rv, rw);
        Store(ol + v, a);
        Store(pl + v, e);
        Store(orr + v, f);
        Store(pr + v, g);
      }
    }
}

// The rows of the column stages: the stages of spans n / kMaxRows and up
// go column by column.
constexpr int kMaxRows = 64;

// The stages of spans base, 2 base, .. n / 2, which pair element i only with
// elements of the same i mod base: the array as n / base rows of base
// elements, the stages run a cache line of columns at a time: the first
// stage reads those columns of every row and leaves its results in a small
// buffer, the stages between work there, and the last writes back into the
// array (a lone stage works in the array). Each butterfly is the one its
// stage would do over the whole array, on the same values: element (row m,
// column c) is index i = m base + c; in the stage of span d = D base it
// pairs with row m + D when m mod 2D < D, with twiddle index k = i mod d, in
// the mirror form for k - d/2 when k >= d/2. One pass over the array instead
// of one per stage, and the buffer's rows do not fall into one cache set as
// the array's do. (Copying the columns in and out instead cost a seventh of
// the 32768-point real transform: copies of a few hundred bytes are slow.)
//
// With kPairs (vectors of four doubles), the stages go two at a time where
// their number allows (ColumnPairOfStages), each butterfly still the one its
// stage would do, and any last stage alone; A forms the butterflies' sums.
template <typename V, int L, typename A = PlainAdds, bool kPairs = false, typename T>
inline __attribute__((always_inline)) void ColumnStagesBody(T* x, T* y, const T* s, const T* t, int n, int stride,
                                                            const StageTwiddles<T>* w, int base) {
  // As many columns as keep the buffer within kBufferSize elements per part,
  // whole cache lines of them.
  constexpr int kBufferSize = 1024;
  const int rows = n / base;
  const int width = std::min(base, std::max(64 / static_cast<int>(sizeof(T)), kBufferSize / rows));
  const int stages = Log2Of(rows);
  const int passes = kPairs ? stages / 2 + stages % 2 : stages;
  alignas(64) T bx[kBufferSize], by[kBufferSize];
  const ColumnRows<T> buffer{bx, by, width};
  for (int c0 = 0; c0 < base; c0 += width) {
    // The first pass over the columns reads them from the array, the last
    // writes them back, the others work in the buffer.
    const ColumnRows<T> array{x + c0, y + c0, base};
    int span = 1, pass = 0;
    if constexpr (kPairs)
      for (; 4 * span <= rows; span *= 4, ++pass)
        ColumnPairOfStages<A>(pass == 0 ? array : buffer, pass + 1 == passes ? array : buffer, s, t, n, stride, w,
                              base, c0, rows, width, span);
    for (; span < rows; span *= 2, ++pass)
      ColumnOneStage<V, L, A>(pass == 0 ? array : buffer, pass + 1 == passes ? array : buffer, s, t, n, stride, w,
                              base, c0, rows, width, span);
  }
}

// The twiddle vectors of spans 8 .. kSize / 2 for RegisterStages, span d's
// from (d / 8) - 1 on; twiddle k of span d is entry k * stride * (n / 2d) of
// the tables.
template <int kSize>
inline __attribute__((always_inline)) void RegisterTwiddles(Quad* sv, Quad* tv, const double* s, const double* t,
                                                            int n, int stride) {
  for (int d = 8; d < kSize; d *= 2) {
    const int step = stride * (n / (2 * d));
    for (int k = 0; k < d / 2; ++k) {
      sv[d / 8 - 1 + k / 4][k % 4] = s[k * step];
      tv[d / 8 - 1 + k / 4][k % 4] = t[k * step];
    }
  }
}

// The stages of spans kD .. kSize / 2 on kSize elements held as vectors of
// four (re, im): the vector of twiddle indices k .. k+3 in block j pairs
// vector (j + k) / 4 with the one d / 4 on, and its mirror d / 8 on, as the
// vector steps of StageBody do.
template <int kSize, int kD>
inline __attribute__((always_inline)) void RegisterStages(Quad* re, Quad* im, const Quad* sv, const Quad* tv) {
  constexpr int q = kD / 2;
#pragma GCC unroll 8
  for (int k = 0; k < q; k += 4) {
    const Quad& sk = sv[kD / 8 - 1 + k / 4];
    const Quad& tk = tv[kD / 8 - 1 + k / 4];
#pragma GCC unroll 8
    for (int j = 0; j < kSize; j += 2 * kD) {
      const int lo = (j + k) / 4, r = lo + kD / 4, p = lo + q / 4, r2 = p + kD / 4;
      if (k == 0) Butterflies<true>(re[lo], im[lo], re[r], im[r], re[p], im[p], re[r2], im[r2], sk, tk);
      else Butterflies<false>(re[lo], im[lo], re[r], im[r], re[p], im[p], re[r2], im[r2], sk, tk);
    }
  }
  if constexpr (2 * kD < kSize) RegisterStages<kSize, 2 * kD>(re, im, sv, tv);
}

// The stages of spans 8, 16 and 32 over [begin, end), a block of 64
// elements at a time in registers.
inline __attribute__((always_inline)) void StagesInBlocks(double* x, double* y, const double* s, const double* t,
                                                          int n, int stride, int begin, int end) {
  Quad sv[7], tv[7];
  RegisterTwiddles<64>(sv, tv, s, t, n, stride);
  for (int j = begin; j < end; j += 64) {
    Quad re[16], im[16];
    for (int c = 0; c < 16; ++c) {
      Load(re[c], x + j + 4 * c);
      Load(im[c], y + j + 4 * c);
    }
    RegisterStages<64, 8>(re, im, sv, tv);
    for (int c = 0; c < 16; ++c) {
      Store(x + j + 4 * c, re[c]);
      Store(y + j + 4 * c, im[c]);
    }
  }
}

// The butterflies of stages d and 2d at once on the four elements i,
// i + d, i + 2d and i + 3d, for four values of i side by side (i = j + k in
// the block j of 4d, k a multiple of 4 below d). Stage d pairs the first
// with the second and the third with the fourth, with twiddle k (sd, td),
// in the mirror form when kMirrorD (k at least d / 2, twiddle k - d / 2);
// stage 2d pairs the first with the third, with twiddle k (s2, t2), and the
// second with the fourth in the mirror form. With kTrivialD and kTrivial2D
// lane 0 has the trivial twiddles of its stage. Each element goes through
// the operations of the two stages' vector steps one after the other, on
// the same values: eight vectors of data and four of twiddles, which
// sixteen registers hold, where a block of 64 would spill.
template <bool kTrivialD, bool kMirrorD, bool kTrivial2D>
inline __attribute__((always_inline)) void StagePairStep(double* x, double* y, int i, int d, const Quad& sd,
                                                         const Quad& td, const Quad& s2, const Quad& t2) {
  Quad x0, y0, x1, y1, x2, y2, x3, y3;
  Load(x0, x + i);
  Load(y0, y + i);
  Load(x1, x + i + d);
  Load(y1, y + i + d);
  Load(x2, x + i + 2 * d);
  Load(y2, y + i + 2 * d);
  Load(x3, x + i + 3 * d);
  Load(y3, y + i + 3 * d);
  Quad v, w;
  Rotated<kTrivialD, kMirrorD>(x1, y1, sd, td, v, w);
  Combine(x0, y0, x1, y1, v, w);
  Rotated<kTrivialD, kMirrorD>(x3, y3, sd, td, v, w);
  Combine(x2, y2, x3, y3, v, w);
  Rotated<kTrivial2D, false>(x2, y2, s2, t2, v, w);
  Combine(x0, y0, x2, y2, v, w);
  Rotated<kTrivial2D, true>(x3, y3, s2, t2, v, w);
  Combine(x1, y1, x3, y3, v, w);
  Store(x + i, x0);
  Store(y + i, y0);
  Store(x + i + d, x1);
  Store(y + i + d, y1);
  Store(x + i + 2 * d, x2);
  Store(y + i + 2 * d, y2);
  Store(x + i + 3 * d, x3);
  Store(y + i + 3 * d, y3);
}

// Two rotations of Rotated side by side, operation by operation, so that
// the two chains of dependent operations overlap: (xa, ya) with twiddles
// (sa, ta) in the forms kTrivialA, kMirrorA, and (xb, yb) likewise.
template <bool kTrivialA, bool kMirrorA, bool kTrivialB, bool kMirrorB>
inline __attribute__((always_inline)) void RotatedTwo(const Quad& xa, const Quad& ya, const Quad& sa, const Quad& ta,
                                                      Quad& va, Quad& wa, const Quad& xb, const Quad& yb,
                                                      const Quad& sb, const Quad& tb, Quad& vb, Quad& wb) {
  const Quad ua = kMirrorA ? xa - ta * ya : ya + ta * xa;
  const Quad ub = kMirrorB ? xb - tb * yb : yb + tb * xb;
  va = kMirrorA ? -ya - sa * ua : xa - sa * ua;
  vb = kMirrorB ? -yb - sb * ub : xb - sb * ub;
  wa = ua + ta * va;
  wb = ub + tb * vb;
  if (kTrivialA) {
    va[0] = kMirrorA ? -ya[0] : xa[0];
    wa[0] = kMirrorA ? xa[0] : ya[0];
  }
  if (kTrivialB) {
    vb[0] = kMirrorB ? -yb[0] : xb[0];
    wb[0] = kMirrorB ? xb[0] : yb[0];
  }
}

// The butterflies of stages d and 2d at once on two groups of elements:
// the four elements i, i + d, i + 2d and i + 3d for four values of i side
// by side (i = j + k in the block j of 4d, k a multiple of 4 below d), and
// the same from i + o. Stage d pairs the first element of a group with the
// second and the third with the fourth, with its twiddle (sdA, tdA for the
// group from i, sdB, tdB for the other), in the mirror form when kMirrorD
// (k at least d / 2, twiddle k - d / 2); stage 2d pairs the first with the
// third, with twiddle k (s2A, t2A; s2B, t2B), and the second with the fourth
// in the mirror form. The flags of F describe the group from i, those of S
// the other; a trivial flag gives lane 0 the trivial twiddles of its stage.
// Each element goes through the operations of the two stages' vector steps
// one after the other, on the same values; the two groups go side by side,
// so that while one waits on its chain of dependent operations the other's
// run.
template <bool kTrivial, bool kMirror, bool kTrivial2>
struct PairForm {
  static constexpr bool kTrivialD = kTrivial, kMirrorD = kMirror, kTrivial2D = kTrivial2;
};

template <typename F, typename S, typename A>
inline __attribute__((always_inline)) void StagePairTwin(double* x, double* y, int i, int o, int d, const double* sdA,
                                                         const double* tdA, const double* s2A, const double* t2A,
                                                         const double* sdB, const double* tdB, const double* s2B,
                                                         const double* t2B) {
  double* const xa = x + i;
  double* const ya = y + i;
  double* const xb = xa + o;
  double* const yb = ya + o;
  Quad sa, ta, sb, tb;
  Load(sa, sdA);
  Load(ta, tdA);
  Load(sb, sdB);
  Load(tb, tdB);
  Quad a0, b0, a1, b1, a2, b2, a3, b3;  // the group from i (x, y)
  Quad e0, f0, e1, f1, e2, f2, e3, f3;  // the group from i + o
  Load(a1, xa + d);
  Load(b1, ya + d);
  Load(e1, xb + d);
  Load(f1, yb + d);
  Quad va, wa, vb, wb;
  RotatedTwo<F::kTrivialD, F::kMirrorD, S::kTrivialD, S::kMirrorD>(a1, b1, sa, ta, va, wa, e1, f1, sb, tb, vb, wb);
  Load(a0, xa);
  Load(b0, ya);
  Load(e0, xb);
  Load(f0, yb);
  Combine<A>(a0, b0, a1, b1, va, wa);
  Combine<A>(e0, f0, e1, f1, vb, wb);
  Load(a3, xa + 3 * d);
  Load(b3, ya + 3 * d);
  Load(e3, xb + 3 * d);
  Load(f3, yb + 3 * d);
  RotatedTwo<F::kTrivialD, F::kMirrorD, S::kTrivialD, S::kMirrorD>(a3, b3, sa, ta, va, wa, e3, f3, sb, tb, vb, wb);
  Load(a2, xa + 2 * d);
  Load(b2, ya + 2 * d);
  Load(e2, xb + 2 * d);
  Load(f2, yb + 2 * d);
  Combine<A>(a2, b2, a3, b3, va, wa);
  Combine<A>(e2, f2, e3, f3, vb, wb);
  Load(sa, s2A);
  Load(ta, t2A);
  Load(sb, s2B);
  Load(tb, t2B);
  RotatedTwo<F::kTrivial2D, false, S::kTrivial2D, false>(a2, b2, sa, ta, va, wa, e2, f2, sb, tb, vb, wb);
  Combine<A>(a0, b0, a2, b2, va, wa);
  Combine<A>(e0, f0, e2, f2, vb, wb);
  Store(xa, a0);
  Store(ya, b0);
  Store(xb, e0);
  Store(yb, f0);
  Store(xa + 2 * d, a2);
  Store(ya + 2 * d, b2);
  Store(xb + 2 * d, e2);
  Store(yb + 2 * d, f2);
  RotatedTwo<F::kTrivial2D, true, S::kTrivial2D, true>(a3, b3, sa, ta, va, wa, e3, f3, sb, tb, vb, wb);
  Combine<A>(a1, b1, a3, b3, va, wa);
  Combine<A>(e1, f1, e3, f3, vb, wb);
  Store(xa + d, a1);
  Store(ya + d, b1);
  Store(xb + d, e1);
  Store(yb + d, f1);
  Store(xa + 3 * d, a3);
  Store(ya + 3 * d, b3);
  Store(xb + 3 * d, e3);
  Store(yb + 3 * d, f3);
}

// Stages d and 2d (d at least 8) over the blocks of 4d that start in
// [begin, end): the twiddle of index k of stage d is entry k of (sd, td),
// that of stage 2d entry k of (s2, t2) (each stage's run of the layout
// StageTwiddles, read a vector at a time). Every butterfly of the two
// stages is the one their passes would do, so the result has the same
// bits; the data are read and written once for both. Two groups go side by
// side: k and q + k where a half block holds one group (d = 8), else k and
// k + 4, whose elements share cache lines (groups a half block apart would
// touch sixteen lines that fall into one cache set when d is a multiple of
// 512).
template <typename A = PlainAdds>
inline __attribute__((always_inline)) void StagePairBody(double* x, double* y, const double* sd, const double* td,
                                                         const double* s2, const double* t2, int d, int begin,
                                                         int end) {
  using Plain = PairForm<false, false, false>;
  using Mirror = PairForm<false, true, false>;
  const int q = d / 2;
  for (int j = begin; j < end; j += 4 * d) {
    if (q == 4) {
      StagePairTwin<PairForm<true, false, true>, PairForm<true, true, false>, A>(x, y, j, q, d, sd, td, s2, t2, sd, td,
                                                                               s2 + q, t2 + q);
      continue;
    }
    StagePairTwin<PairForm<true, false, true>, Plain, A>(x, y, j, 4, d, sd, td, s2, t2, sd + 4, td + 4, s2 + 4, t2 + 4);
    for (int k = 8; k < q; k += 8)
      StagePairTwin<Plain, Plain, A>(x, y, j + k, 4, d, sd + k, td + k, s2 + k, t2 + k, sd + k + 4, td + k + 4,
                                  s2 + k + 4, t2 + k + 4);
    StagePairTwin<PairForm<true, true, false>, Mirror, A>(x, y, j + q, 4, d, sd, td, s2 + q, t2 + q, sd + 4, td + 4,
                                                       s2 + q + 4, t2 + q + 4);
    for (int k = q + 8; k < d; k += 8)
      StagePairTwin<Mirror, Mirror, A>(x, y, j + k, 4, d, sd + k - q, td + k - q, s2 + k, t2 + k, sd + k - q + 4,
                                    td + k - q + 4, s2 + k + 4, t2 + k + 4);
  }
}

// The butterflies of stages d, 2d and 4d at once on the eight elements
// i + m d, m = 0..7, for four values of i side by side (i = j + k in the
// block j of 8d, k a multiple of 4 below d). Stage d pairs m with m + 1 (m
// even), all with twiddle k of its span (sd, td), in the mirror form when
// kMirrorD (twiddle k - d / 2); stage 2d pairs m with m + 2 (m = 0, 1, 4,
// 5) with twiddle k (s2, t2), in the mirror form for odd m; stage 4d pairs
// m with m + 4, with twiddle k (s4, t4) for m = 0 and 2 and k + d (s4d,
// t4d) for m = 1 and 3, in the mirror form for m = 2 and 3. kTrivialD gives
// lane 0 the trivial twiddle of stage d, kFirst (k = 0) those of stages 2d
// and 4d at k. Each element goes through the operations of the three
// stages' vector steps one after the other, on the same values. The first
// four elements go through stages d and 2d, then the last four, and stage
// 4d writes each pair out as it is done, so that sixteen registers hold the
// data with only a few spilled.
template <bool kTrivialD, bool kMirrorD, bool kFirst, typename A>
inline __attribute__((always_inline)) void StageTripleStep(double* x, double* y, int i, int d, const double* sd,
                                                           const double* td, const double* s2, const double* t2,
                                                           const double* s4, const double* t4, const double* s4d,
                                                           const double* t4d) {
  double* const xa = x + i;
  double* const ya = y + i;
  Quad re[8], im[8];
  Quad v, w, sk, tk;
#pragma GCC unroll 2
  for (int half = 0; half < 8; half += 4) {
    Load(sk, sd);
    Load(tk, td);
#pragma GCC unroll 2
    for (int m = half; m < half + 4; m += 2) {
      Load(re[m + 1], xa + (m + 1) * d);
      Load(im[m + 1], ya + (m + 1) * d);
      Rotated<kTrivialD, kMirrorD>(re[m + 1], im[m + 1], sk, tk, v, w);
      Load(re[m], xa + m * d);
      Load(im[m], ya + m * d);
      Combine<A>(re[m], im[m], re[m + 1], im[m + 1], v, w);
    }
    Load(sk, s2);
    Load(tk, t2);
    Rotated<kFirst, false>(re[half + 2], im[half + 2], sk, tk, v, w);
    Combine<A>(re[half], im[half], re[half + 2], im[half + 2], v, w);
    Rotated<kFirst, true>(re[half + 3], im[half + 3], sk, tk, v, w);
    Combine<A>(re[half + 1], im[half + 1], re[half + 3], im[half + 3], v, w);
  }
#pragma GCC unroll 4
  for (int m = 0; m < 4; ++m) {
    Load(sk, m % 2 == 0 ? s4 : s4d);
    Load(tk, m % 2 == 0 ? t4 : t4d);
    if (m == 0) Rotated<kFirst, false>(re[4], im[4], sk, tk, v, w);
    else if (m == 1) Rotated<false, false>(re[5], im[5], sk, tk, v, w);
    else if (m == 2) Rotated<kFirst, true>(re[6], im[6], sk, tk, v, w);
    else Rotated<false, true>(re[7], im[7], sk, tk, v, w);
    Combine<A>(re[m], im[m], re[m + 4], im[m + 4], v, w);
    Store(xa + m * d, re[m]);
    Store(ya + m * d, im[m]);
    Store(xa + (m + 4) * d, re[m + 4]);
    Store(ya + (m + 4) * d, im[m + 4]);
  }
}

// Stages d, 2d and 4d (d at least 8) over the blocks of 8d that start in
// [begin, end), with each stage's twiddles as its run of the layout
// StageTwiddles: entry k of (sd, td), (s2, t2) and (s4, t4) is twiddle k of
// spans d, 2d and 4d. Every butterfly of the three stages is the one their
// passes would do, so the result has the same bits; the data are read and
// written once for the three.
template <typename A = PlainAdds>
inline __attribute__((always_inline)) void StageTripleBody(double* x, double* y, const double* sd, const double* td,
                                                           const double* s2, const double* t2, const double* s4,
                                                           const double* t4, int d, int begin, int end) {
  const int q = d / 2;
  for (int j = begin; j < end; j += 8 * d) {
    StageTripleStep<true, false, true, A>(x, y, j, d, sd, td, s2, t2, s4, t4, s4 + d, t4 + d);
    for (int k = 4; k < q; k += 4)
      StageTripleStep<false, false, false, A>(x, y, j + k, d, sd + k, td + k, s2 + k, t2 + k, s4 + k, t4 + k,
                                              s4 + k + d, t4 + k + d);
    StageTripleStep<true, true, false, A>(x, y, j + q, d, sd, td, s2 + q, t2 + q, s4 + q, t4 + q, s4 + q + d,
                                          t4 + q + d);
    for (int k = q + 4; k < d; k += 4)
      StageTripleStep<false, true, false, A>(x, y, j + k, d, sd + k - q, td + k - q, s2 + k, t2 + k, s4 + k, t4 + k,
                                             s4 + k + d, t4 + k + d);
  }
}

// Stages d and 2d (d at least 8) over the blocks of 4d that start in
// [begin, end), one group at a time, for twiddles read from a caller's own
// tables: the twiddle of index k of stage d is entry k * tstepD of (sd,
// td), that of stage 2d entry k * tstep2 of (s2, t2).
inline __attribute__((always_inline)) void StagePairBodyStrided(double* x, double* y, const double* sd, const double* td,
                                                         int tstepD, const double* s2, const double* t2, int tstep2,
                                                         int d, int begin, int end) {
  const int q = d / 2;
  for (int j = begin; j < end; j += 4 * d) {
    Quad skD, tkD, sk2, tk2;
    LoadTwiddles<4>(skD, tkD, sd, td, 0, tstepD);
    LoadTwiddles<4>(sk2, tk2, s2, t2, 0, tstep2);
    StagePairStep<true, false, true>(x, y, j, d, skD, tkD, sk2, tk2);
    for (int k = 4; k < q; k += 4) {
      LoadTwiddles<4>(skD, tkD, sd, td, k, tstepD);
      LoadTwiddles<4>(sk2, tk2, s2, t2, k, tstep2);
      StagePairStep<false, false, false>(x, y, j + k, d, skD, tkD, sk2, tk2);
    }
    LoadTwiddles<4>(skD, tkD, sd, td, 0, tstepD);
    LoadTwiddles<4>(sk2, tk2, s2, t2, q, tstep2);
    StagePairStep<true, true, false>(x, y, j + q, d, skD, tkD, sk2, tk2);
    for (int k = q + 4; k < d; k += 4) {
      LoadTwiddles<4>(skD, tkD, sd, td, k - q, tstepD);
      LoadTwiddles<4>(sk2, tk2, s2, t2, k, tstep2);
      StagePairStep<false, true, false>(x, y, j + k, d, skD, tkD, sk2, tk2);
    }
  }
}

// One stage, or two at once, of a transform over [begin, end) through a
// stage function, with the twiddles of span d from the stages' layout w (each
// its own run) or else every tstep-th entry of the tables.
template <typename T>
struct StageRun {
  T* x;
  T* y;
  const T* s;
  const T* t;
  int n, stride;
  const StageTwiddles<T>* w;

  inline __attribute__((always_inline)) void TwiddlesOf(int d, const T*& sd, const T*& td, int& tstep) const {
    if (w) {
      const auto at = static_cast<std::size_t>(w->offset[static_cast<std::size_t>(Log2Of(d))]);
      sd = w->s.data() + at;
      td = w->t.data() + at;
      tstep = 1;
    } else {
      sd = s;
      td = t;
      tstep = stride * (n / (2 * d));
    }
  }
  template <typename Stage>
  inline __attribute__((always_inline)) void One(const Stage& stageOf, int d, int begin, int end) const {
    const T *sd, *td;
    int tstep;
    TwiddlesOf(d, sd, td, tstep);
    stageOf(x, y, sd, td, d, tstep, begin, end);
  }
  // Spans d, 2d and 4d together, where the stage function runs three at
  // once; only with the stages' layout.
  template <typename Stage>
  inline __attribute__((always_inline)) void Triple(const Stage& stageOf, int d, int begin, int end) const {
    if constexpr (Stage::kTriples) {
      const T *sd, *td, *s2, *t2, *s4, *t4;
      int tstep;
      TwiddlesOf(d, sd, td, tstep);
      TwiddlesOf(2 * d, s2, t2, tstep);
      TwiddlesOf(4 * d, s4, t4, tstep);
      stageOf.Triple(x, y, sd, td, s2, t2, s4, t4, d, begin, end);
    }
  }
  // Spans d and 2d together, where the stage function pairs them.
  template <typename Stage>
  inline __attribute__((always_inline)) void Pair(const Stage& stageOf, int d, int begin, int end) const {
    if constexpr (Stage::kPairs) {
      const T *sd, *td, *s2, *t2;
      int tstepD, tstep2;
      TwiddlesOf(d, sd, td, tstepD);
      TwiddlesOf(2 * d, s2, t2, tstep2);
      stageOf.Pair(x, y, sd, td, tstepD, s2, t2, tstep2, d, begin, end);
    }
  }
};

// The stages of the transform; stageOf(x, y, s, t, d, tstep, begin, end)
// runs one.
template <typename T, typename Stage>
inline __attribute__((always_inline)) void FFTCoreWith(T* x, T* y, const T* s, const T* t, int n, int stride,
                                                       bool firstThreeDone, const Stage& stageOf) {
  int first = 2;
  if (n >= 8) {
    const int tstep = stride * (n / 8);
    if (!firstThreeDone) FirstThreeStages(x, y, s[tstep], t[tstep], n);
    first = 8;
  } else {
    for (int j = 0; j < n; j += 2) {
      const T x0 = x[j], x1 = x[j + 1], y0 = y[j], y1 = y[j + 1];
      x[j] = x0 + x1;
      x[j + 1] = x0 - x1;
      y[j] = y0 + y1;
      y[j + 1] = y0 - y1;
    }
  }
  // The stages whose blocks fit in a chunk run chunk by chunk, the others
  // over the whole array; the span d runs up to n/2 either way.
  const int chunk = std::min(n, kChunk);
  // The stages from span `columns` up go column by column where the stage
  // function can and there are at least eight rows (with fewer the passes
  // stage by stage were faster).
  const int columns = Stage::kColumns && n >= 8 * chunk ? std::max(chunk, n / kMaxRows) : n;
  const int lastSpan = std::min(n, columns);
  // The chunk by chunk passes run the spans below `inner`. Where stages go
  // in pairs and both the chunk's and the whole array's would be odd in
  // number, the chunk's last goes with the first over the whole array, so
  // that both counts are even: a pass fewer.
  int inner = chunk;
  if constexpr (Stage::kPairs)
    if (first == 8 && chunk < lastSpan && Log2Of(chunk / first) % 2 == 1 && Log2Of(lastSpan / chunk) % 2 == 1)
      inner = chunk / 2;
  const StageTwiddles<T>* w = n >= 16 ? TwiddlesFor(s, t, n, stride) : nullptr;
  // (A helper that is always inlined, unlike a lambda, which would be built
  // without the caller's wider vectors.)
  const StageRun<T> run{x, y, s, t, n, stride, w};
  for (int c = 0; c < n; c += chunk) {
    int d = first;
    // The stages of spans 8 to 32 in blocks of 64 held in registers where
    // the stage function can.
    if constexpr (Stage::kBlocks && std::is_same_v<T, double>) {
      if (first == 8 && chunk >= 64) {
        stageOf.Blocks(x, y, s, t, n, stride, c, c + chunk);
        d = 64;
      }
    }
    // An odd number of stages begins with three at once where the stage
    // function can, the rest in pairs; six go as two threes.
    if constexpr (Stage::kTriples) {
      if (d >= 8 && w != nullptr && 8 * d <= inner && Log2Of(inner / d) % 2 == 1) {
        run.Triple(stageOf, d, c, c + chunk);
        d *= 8;
      } else if (d >= 8 && w != nullptr && 64 * d == inner) {
        run.Triple(stageOf, d, c, c + chunk);
        run.Triple(stageOf, 8 * d, c, c + chunk);
        d *= 64;
      }
    }
    if constexpr (Stage::kPairs)
      if (d >= 8)
        for (; 4 * d <= inner; d *= 4) run.Pair(stageOf, d, c, c + chunk);
    for (; 2 * d <= inner; d *= 2) run.One(stageOf, d, c, c + chunk);
  }
  for (int d = std::max(inner, first); d < lastSpan;) {
    if (Stage::kPairs && d >= 8 && 2 * d < lastSpan) {
      run.Pair(stageOf, d, 0, n);
      d *= 4;
    } else {
      run.One(stageOf, d, 0, n);
      d *= 2;
    }
  }
  if constexpr (Stage::kColumns)
    if (columns < n) stageOf.Columns(x, y, s, t, n, stride, w, columns);
}

// Each stage through the processor's widest vectors, chosen per stage.
struct AnyStages {
  static constexpr bool kColumns = false;
  static constexpr bool kBlocks = false;
  static constexpr bool kPairs = false;
  static constexpr bool kTriples = false;
  template <typename T>
  void operator()(T* x, T* y, const T* s, const T* t, int d, int tstep, int begin, int end) const {
    ButterflyStage(x, y, s, t, d, tstep, begin, end);
  }
};

// Each stage with 256-bit vectors, inlined into a caller built for them.
struct WideStages {
  static constexpr bool kColumns = false;
  static constexpr bool kBlocks = true;
  static constexpr bool kPairs = false;
  static constexpr bool kTriples = false;
  // The stages of spans 8 to 32 in blocks of 64 held in registers (doubles).
  template <typename T>
  inline __attribute__((always_inline)) void Blocks(T* x, T* y, const T* s, const T* t, int n, int stride, int begin,
                                                    int end) const {
    StagesInBlocks(x, y, s, t, n, stride, begin, end);
  }
  template <typename T>
  inline __attribute__((always_inline)) void Columns(T* x, T* y, const T* s, const T* t, int n, int stride,
                                                     const StageTwiddles<T>* w, int base) const {
    ColumnStagesBody<typename Lanes<T>::Wide, Lanes<T>::kWide>(x, y, s, t, n, stride, w, base);
  }
  template <typename T>
  inline __attribute__((always_inline)) void operator()(T* x, T* y, const T* s, const T* t, int d, int tstep,
                                                        int begin, int end) const {
    StageBody<typename Lanes<T>::Wide, Lanes<T>::kWide>(x, y, s, t, d, tstep, begin, end);
  }
};

// The same, the last stages column by column (ColumnStagesBody): faster
// where the array fits the second-level cache, as the half-length array of
// the real transform does; slower on the complex transform's larger one,
// whose stage-by-stage passes stream.
struct ColumnWideStages : WideStages {
  static constexpr bool kColumns = true;
};

// The same laid out for sixteen registers: instead of the blocks of 64,
// which would not stay in them, stages two at a time (StagePairBody), from
// span 8, over the chunks and then over the whole array.
template <typename A>
struct PairedColumnWideStages : ColumnWideStages {
  static constexpr bool kBlocks = false;
  static constexpr bool kPairs = true;
  static constexpr bool kTriples = true;
  inline __attribute__((always_inline)) void Triple(double* x, double* y, const double* sd, const double* td,
                                                    const double* s2, const double* t2, const double* s4,
                                                    const double* t4, int d, int begin, int end) const {
    StageTripleBody<A>(x, y, sd, td, s2, t2, s4, t4, d, begin, end);
  }
  inline __attribute__((always_inline)) void Pair(double* x, double* y, const double* sd, const double* td,
                                                  int tstepD, const double* s2, const double* t2, int tstep2, int d,
                                                  int begin, int end) const {
    if (tstepD == 1 && tstep2 == 1) StagePairBody<A>(x, y, sd, td, s2, t2, d, begin, end);
    else StagePairBodyStrided(x, y, sd, td, tstepD, s2, t2, tstep2, d, begin, end);
  }
  inline __attribute__((always_inline)) void Columns(double* x, double* y, const double* s, const double* t, int n,
                                                     int stride, const StageTwiddles<double>* w, int base) const {
    ColumnStagesBody<Quad, 4, A, true>(x, y, s, t, n, stride, w, base);
  }
};

// The same for the thirty-two registers of AVX-512: spans 8 to 32 in the
// blocks of 64, the rest two or three stages at a time. From 4096 points on
// this took 0.8 to 0.97 of the time of the stages one by one; at 2048 and
// below it was no faster, and at 1024 points slower.
struct ManyColumnWideStages : PairedColumnWideStages<PlainAdds> {
  static constexpr bool kBlocks = true;
};

// The smallest N/2 for ManyColumnWideStages.
constexpr int kManyPairsFrom = 2048;

template <typename T>
void FFTCore(T* x, T* y, const T* s, const T* t, int n, int stride, bool firstThreeDone = false) {
  FFTCoreWith(x, y, s, t, n, stride, firstThreeDone, AnyStages{});
}

// The whole complex transform of doubles, bit reversal and stages, in one
// function built for 256-bit vectors (m at least 6), and the same for the
// 32 registers of AVX-512.
inline __attribute__((always_inline)) void TransformWideBody(double* x, double* y, const double* s, const double* t,
                                                             int n, int m, int stride) {
  const int tstep = stride * (n / 8);
  BitReverseTilesBody<true>(x, y, m, s[tstep], t[tstep]);
  FFTCoreWith(x, y, s, t, n, stride, true, WideStages{});
}

__attribute__((target("avx"))) void TransformWide(double* x, double* y, const double* s, const double* t, int n,
                                                    int m, int stride) {
  TransformWideBody(x, y, s, t, n, m, stride);
}

__attribute__((target("avx512f,avx512vl"))) void TransformMany(double* x, double* y, const double* s,
                                                                 const double* t, int n, int m, int stride) {
  TransformWideBody(x, y, s, t, n, m, stride);
}

// The bit reversal and the whole transform, the first three stages done as
// the permutation leaves each run of eight: the same operations on the same
// values as BitReverseBoth and FFTCore one after the other.
template <typename T>
void ReverseAndTransform(T* x, T* y, const T* s, const T* t, int n, int m, int stride) {
  if (n < 8) {
    BitReverseBoth(x, y, n, m);
    FFTCore(x, y, s, t, n, stride);
    return;
  }
  if constexpr (std::is_same_v<T, double>) {
    static const bool wide = __builtin_cpu_supports("avx");
    if (wide && m >= 6) {
      if (ManyRegisters()) TransformMany(x, y, s, t, n, m, stride);
      else TransformWide(x, y, s, t, n, m, stride);
      return;
    }
  }
  const int tstep = stride * (n / 8);
  BitReverse<true>(x, y, n, m, s[tstep], t[tstep]);
  FFTCore(x, y, s, t, n, stride, true);
}

// The transform of kFFTBatch sequences at once, interleaved: element i of
// sequence c at x[i * kFFTBatch + c], held as P vectors V. The permutation
// and the stages are those of BitReverseBoth and FFTCore with stride 1, in
// the same operations element by element: each lane comes out bit for bit
// as its sequence would alone.
template <typename V, int P>
inline __attribute__((always_inline)) void BatchTransform(float* x, float* y, const float* s, const float* t, int n) {
  constexpr int kB = kFFTBatch;
  constexpr int kL = kB / P;
  static_assert(sizeof(V) == kL * sizeof(float));
  for (int i = 0, r = 0; i < n; ++i) {
    if (i < r) {
      std::swap_ranges(x + i * kB, x + i * kB + kB, x + r * kB);
      std::swap_ranges(y + i * kB, y + i * kB + kB, y + r * kB);
    }
    int bit = n >> 1;
    while (r & bit) {
      r ^= bit;
      bit >>= 1;
    }
    r |= bit;
  }
  for (int j = 0; j < n; j += 2)
    for (int p = 0; p < P; ++p) {
      float* x0 = x + j * kB + p * kL;
      float* y0 = y + j * kB + p * kL;
      V a, b, c, e;
      Load(a, x0);
      Load(b, x0 + kB);
      Load(c, y0);
      Load(e, y0 + kB);
      V out = a + b;
      Store(x0, out);
      out = a - b;
      Store(x0 + kB, out);
      out = c + e;
      Store(y0, out);
      out = c - e;
      Store(y0 + kB, out);
    }
  // Element j's vector p.
  const auto at = [](float* a, int j, int p) { return a + j * kB + p * kL; };
  // One butterfly of Butterflies: left at lo, right at r, rotated (v, w).
  const auto butterfly = [&](int lo, int r, int p, const V& v, const V& w) {
    V xl, yl;
    Load(xl, at(x, lo, p));
    Load(yl, at(y, lo, p));
    V out = xl - v;
    Store(at(x, r, p), out);
    out = yl - w;
    Store(at(y, r, p), out);
    out = xl + v;
    Store(at(x, lo, p), out);
    out = yl + w;
    Store(at(y, lo, p), out);
  };
  for (int d = 2; d < n; d *= 2) {
    const int q = d / 2, tstep = n / (2 * d);
    for (int j = 0; j < n; j += 2 * d) {
      for (int p = 0; p < P; ++p) {
        // The trivial twiddles: 1 and +i.
        V v, w;
        Load(v, at(x, j + d, p));
        Load(w, at(y, j + d, p));
        butterfly(j, j + d, p, v, w);
        V a, b, xp, yp;
        Load(a, at(x, j + d + q, p));
        Load(b, at(y, j + d + q, p));
        Load(xp, at(x, j + q, p));
        Load(yp, at(y, j + q, p));
        V out = xp + b;
        Store(at(x, j + d + q, p), out);
        out = yp - a;
        Store(at(y, j + d + q, p), out);
        out = xp - b;
        Store(at(x, j + q, p), out);
        out = yp + a;
        Store(at(y, j + q, p), out);
      }
      for (int k = 1; k < q; ++k) {
        const float sk = s[k * tstep], tk = t[k * tstep];
        for (int p = 0; p < P; ++p) {
          // Rotation by theta = pi k / d in three shears, and the mirror pair.
          int r = j + k + d;
          V xr, yr;
          Load(xr, at(x, r, p));
          Load(yr, at(y, r, p));
          V u = yr + tk * xr;
          V v = xr - sk * u;
          V w = u + tk * v;
          butterfly(j + k, r, p, v, w);
          r = j + k + q + d;
          Load(xr, at(x, r, p));
          Load(yr, at(y, r, p));
          u = xr - tk * yr;
          v = -yr - sk * u;
          w = u + tk * v;
          butterfly(j + k + q, r, p, v, w);
        }
      }
    }
  }
}

__attribute__((target("avx"))) void BatchTransformWide(float* x, float* y, const float* s, const float* t, int n) {
  BatchTransform<Float8, 1>(x, y, s, t, n);
}

void BatchTransformNarrow(float* x, float* y, const float* s, const float* t, int n) {
  BatchTransform<Float4, 2>(x, y, s, t, n);
}

// A vector of the elements p[0], p[-1], ..., and its store back (a vector
// may be a lone double).
template <typename V>
inline __attribute__((always_inline)) void LoadBackwards(V& v, const double* p) {
  constexpr int L = sizeof(V) / sizeof(double);
  V w;
  Load(w, p - (L - 1));
  if constexpr (L == 1) v = w;
  else if constexpr (L == 2) v = __builtin_shufflevector(w, w, 1, 0);
  else v = __builtin_shufflevector(w, w, 3, 2, 1, 0);
}

template <typename V>
inline __attribute__((always_inline)) void StoreBackwards(double* p, const V& v) {
  constexpr int L = sizeof(V) / sizeof(double);
  V w;
  if constexpr (L == 1) w = v;
  else if constexpr (L == 2) w = __builtin_shufflevector(v, v, 1, 0);
  else w = __builtin_shufflevector(v, v, 3, 2, 1, 0);
  Store(p - (L - 1), w);
}

// The two forms of one output of the real transform's post-processing,
// with twiddle (sk, tk): from the transform of the even and odd samples at
// j (xa, ya) and at h - j (xb, yb), the output at n - j. The first serves
// j = k, the second j = q + k, the twiddle's mirror. V may be a vector of
// several j, W its twiddles.
template <typename A = PlainAdds, typename V, typename W>
inline __attribute__((always_inline)) void PostOutput(const V& xa, const V& ya, const V& xb, const V& yb,
                                                      const W& sk, const W& tk, V& outX, V& outY) {
  const V d = xa - xb, a = yb + ya;
  const V u = d * tk + a, v = d - u * sk;
  V sum, difference;
  A::Add(sum, xb, xa);
  A::Sub(difference, yb, ya);
  outX = (sum + (v * tk + u)) / 2;
  outY = (difference + v) / 2;
}

template <typename A = PlainAdds, typename V, typename W>
inline __attribute__((always_inline)) void PostOutputMirrored(const V& xa, const V& ya, const V& xb, const V& yb,
                                                              const W& sk, const W& tk, V& outX, V& outY) {
  const V d = xa - xb, a = yb + ya;
  const V u = d - a * tk, v = -a - u * sk;
  V sum, difference;
  A::Add(sum, xb, xa);
  A::Sub(difference, yb, ya);
  outX = (sum + (v * tk + u)) / 2;
  outY = (difference + v) / 2;
}

// The post-processing for one k: the outputs at n - k and n - (q + k). It
// reads the lower half and writes the upper half.
template <typename T>
inline void PostStep(T* x, T* y, const T* s, const T* t, int n, int k) {
  const int h = n / 2, q = n / 4, e = q + k;
  PostOutput(x[k], y[k], x[h - k], y[h - k], s[k], t[k], x[n - k], y[n - k]);
  PostOutputMirrored(x[e], y[e], x[h - e], y[h - e], s[k], t[k], x[n - e], y[n - e]);
}

// After the post-processing: the output at n - q, the lower half as the
// mirror of the upper, and the two real outputs at 0 and h.
template <typename T>
inline void FinishReal(T* x, T* y, int n) {
  const int h = n / 2, q = n / 4;
  x[n - q] = x[q];
  y[n - q] = -y[q];
  {
    // The upper half, read backwards, into the lower half: no index is both.
    T* __restrict xLow = x;
    T* __restrict yLow = y;
    const T* __restrict xHigh = x + n;
    const T* __restrict yHigh = y + n;
    for (int j = 1; j < h; ++j) {
      xLow[j] = xHigh[-j];
      yLow[j] = -yHigh[-j];
    }
  }
  x[h] = x[0] - y[0];
  x[0] = x[0] + y[0];
  y[0] = 0;
  y[h] = 0;
}

// The real transform for doubles, L values of k at a time in the lanes of a
// vector V where the passes allow, each lane doing the operations of the
// scalar steps.
template <typename V, int L>
inline __attribute__((always_inline)) void RealTransformBody(int n, double* x, double* y, const double* s,
                                                             const double* t, int mHalf) {
  const int h = n / 2, q = n / 4;
  // The odd samples go to y, the even ones move down: L values of each are
  // read before the writes, which land below them.
  int k = 0;
  for (; k + L - 1 < h; k += L) {
    V first, second;
    Load(first, x + 2 * k);
    Load(second, x + 2 * k + L);
    V evens, odds;
    if constexpr (L == 2) {
      evens = __builtin_shufflevector(first, second, 0, 2);
      odds = __builtin_shufflevector(first, second, 1, 3);
    } else {
      evens = __builtin_shufflevector(first, second, 0, 2, 4, 6);
      odds = __builtin_shufflevector(first, second, 1, 3, 5, 7);
    }
    Store(y + k, odds);
    Store(x + k, evens);
  }
  for (; k < h; ++k) {
    y[k] = x[2 * k + 1];
    x[k] = x[2 * k];
  }
  ReverseAndTransform(x, y, s, t, h, mHalf, 2);
  // L values of k at a time; the elements read and written backwards are
  // moved with their lanes reversed. Reads stay in the lower half and
  // writes in the upper half, so no step sees another's result.
  k = 1;
  if (q >= 4) {
    for (; k < L; ++k) PostStep(x, y, s, t, n, k);
    for (; k + L - 1 < q; k += L) {
      V sk, tk, xk, yk, xe, ye;
      Load(sk, s + k);
      Load(tk, t + k);
      Load(xk, x + k);
      Load(yk, y + k);
      V xm, ym, xf, yf;
      LoadBackwards(xm, x + h - k);
      LoadBackwards(ym, y + h - k);
      V d = xk - xm, a = ym + yk;
      V u = d * tk + a, v = d - u * sk;
      StoreBackwards(x + n - k, (xm + xk + (v * tk + u)) / 2);
      StoreBackwards(y + n - k, (ym - yk + v) / 2);
      const int e = q + k;
      Load(xe, x + e);
      Load(ye, y + e);
      LoadBackwards(xf, x + h - e);
      LoadBackwards(yf, y + h - e);
      d = xe - xf;
      a = yf + ye;
      u = d - a * tk;
      v = -a - u * sk;
      StoreBackwards(x + n - e, (xf + xe + (v * tk + u)) / 2);
      StoreBackwards(y + n - e, (yf - ye + v) / 2);
    }
  }
  for (; k < q; ++k) PostStep(x, y, s, t, n, k);
  FinishReal(x, y, n);
}

__attribute__((target("avx"))) void RealTransformWide(int n, double* x, double* y, const double* s,
                                                        const double* t, int mHalf) {
  RealTransformBody<Quad, 4>(n, x, y, s, t, mHalf);
}

// The real transform for doubles with 256-bit vectors and N/2 at least 64,
// in fewer passes over the data. The half-length sequence z[k] = x[2k] +
// i x[2k+1] is read straight from x by the bit reversal, which writes its
// real parts to y[0..N/2) and its imaginary parts to y[N/2..N); the
// butterflies run there; and the post-processing writes each output pair
// and its mirror at once. Every value is the result of the operations of
// RealTransformBody, so the output has the same bits.
//
// One pair of the post-processing: the outputs at i and at its partner
// b = h - i, from the elements of the half-length transform (X, Y) at those
// two indices, read forwards at i and backwards at b. With kMirrored the
// outputs at i take the mirrored form with the twiddles of k (sk, tk) and
// those at b the plain form with the twiddles of q - k (sm, tm); without,
// the other way round, out[0..3] holding the real and imaginary parts at i,
// then at b. Output j goes to n - j as it is and to j conjugated.
template <typename V, bool kMirrored, typename A>
inline __attribute__((always_inline)) void PostPairOutputs(const double* xs, const double* ys, int n, int i,
                                                           const V& sk, const V& tk, const V& sm, const V& tm,
                                                           V* out) {
  const int h = n / 2, b = h - i;
  V xi, yi, xb, yb;
  Load(xi, xs + i);
  Load(yi, ys + i);
  LoadBackwards(xb, xs + b);
  LoadBackwards(yb, ys + b);
  if constexpr (kMirrored) {
    PostOutputMirrored<A>(xi, yi, xb, yb, sk, tk, out[0], out[1]);
    PostOutput<A>(xb, yb, xi, yi, sm, tm, out[2], out[3]);
  } else {
    PostOutput<A>(xi, yi, xb, yb, sk, tk, out[0], out[1]);
    PostOutputMirrored<A>(xb, yb, xi, yi, sm, tm, out[2], out[3]);
  }
}

// The outputs of PostPairOutputs into their places; with kLowerHalf only
// those at indices up to N/2.
template <typename V, bool kLowerHalf = false>
inline __attribute__((always_inline)) void StorePostPair(double* x, double* y, int n, int i, const V* out) {
  const int b = n / 2 - i;
  if constexpr (!kLowerHalf) {
    StoreBackwards(x + n - i, out[0]);
    StoreBackwards(y + n - i, out[1]);
  }
  Store(x + i, out[0]);
  Store(y + i, -out[1]);
  if constexpr (!kLowerHalf) {
    Store(x + n - b, out[2]);
    Store(y + n - b, out[3]);
  }
  StoreBackwards(x + b, out[2]);
  StoreBackwards(y + b, -out[3]);
}

// The step of k and the step of q - k read the same four elements, k,
// h - k, q + k and q - k, of the half-length transform (X, Y), and between
// them produce the outputs at those four indices and at their mirrors n - j,
// whose imaginary parts land in exactly the places of y just read. The
// outputs at k and h - k come from the elements at k and h - k alone and
// land where those were read, and so do those at q + k and q - k: the two
// pairs go one after the other, so that no more than one pair's values are
// live at once (sixteen registers hold them without spilling). Only where
// the lanes reach k = q / 2, whose pairs are the same two elements, are
// both pairs read before either is written.
template <typename V, typename A = PlainAdds, bool kLowerHalf = false>
inline __attribute__((always_inline)) void PostQuad(double* x, double* y, const double* ys, const double* s,
                                                    const double* t, int n, int k, bool reachesMiddle) {
  const int q = n / 4;
  V sk, tk, sm, tm;  // the twiddles of k and of q - k
  Load(sk, s + k);
  Load(tk, t + k);
  LoadBackwards(sm, s + q - k);
  LoadBackwards(tm, t + q - k);
  V plain[4], mirrored[4];
  PostPairOutputs<V, false, A>(y, ys, n, k, sk, tk, sm, tm, plain);
  if (!reachesMiddle) StorePostPair<V, kLowerHalf>(x, y, n, k, plain);
  PostPairOutputs<V, true, A>(y, ys, n, q + k, sk, tk, sm, tm, mirrored);
  if (reachesMiddle) StorePostPair<V, kLowerHalf>(x, y, n, k, plain);
  StorePostPair<V, kLowerHalf>(x, y, n, q + k, mirrored);
}

// The outputs of the steps of k and of q - k from the eight elements they
// read (at k, h - k, q + k and q - k of the half-length transform (X, Y),
// those at h - k and q - k in reverse lane order) and the twiddles of k and
// of q - k (the latter reversed too).
template <typename A = PlainAdds, typename V, bool kLowerHalf = false>
inline __attribute__((always_inline)) void PostQuadOutputs(double* x, double* y, int n, int k, const V& sk,
                                                           const V& tk, const V& sm, const V& tm, const V& xk,
                                                           const V& yk, const V& xh, const V& yh, const V& xp,
                                                           const V& yp, const V& xm, const V& ym) {
  const int h = n / 2, q = n / 4;
  // The step of k: outputs at k and at q + k; the step of q - k: outputs at
  // q - k and at h - k.
  V ukX, ukY, upX, upY, umX, umY, uhX, uhY;
  PostOutput<A>(xk, yk, xh, yh, sk, tk, ukX, ukY);
  PostOutputMirrored<A>(xp, yp, xm, ym, sk, tk, upX, upY);
  PostOutput<A>(xm, ym, xp, yp, sm, tm, umX, umY);
  PostOutputMirrored<A>(xh, yh, xk, yk, sm, tm, uhX, uhY);
  // Output j goes to n - j as it is (unless kLowerHalf) and to j
  // conjugated.
  if constexpr (!kLowerHalf) {
    StoreBackwards(x + n - k, ukX);
    StoreBackwards(y + n - k, ukY);
    StoreBackwards(x + n - q - k, upX);
    StoreBackwards(y + n - q - k, upY);
    Store(x + n - q + k, umX);
    Store(y + n - q + k, umY);
    Store(x + h + k, uhX);
    Store(y + h + k, uhY);
  }
  Store(x + k, ukX);
  Store(y + k, -ukY);
  Store(x + q + k, upX);
  Store(y + q + k, -upY);
  StoreBackwards(x + q - k, umX);
  StoreBackwards(y + q - k, -umY);
  StoreBackwards(x + h - k, uhX);
  StoreBackwards(y + h - k, -uhY);
}

// The twiddles of k and, reversed, of q - k.
template <typename V>
inline __attribute__((always_inline)) void PostTwiddles(const double* s, const double* t, int q, int k, V& sk, V& tk,
                                                        V& sm, V& tm) {
  Load(sk, s + k);
  Load(tk, t + k);
  LoadBackwards(sm, s + q - k);
  LoadBackwards(tm, t + q - k);
}

// The same steps as PostQuad with all eight elements read before any output
// is written, which suits the thirty-two registers of AVX-512 better.
template <typename V, bool kLowerHalf = false>
inline __attribute__((always_inline)) void PostQuadJoint(double* x, double* y, const double* ys, const double* s,
                                                         const double* t, int n, int k) {
  const int h = n / 2, q = n / 4;
  const double* const xs = y;  // X; Y is ys
  V sk, tk, sm, tm;
  PostTwiddles(s, t, q, k, sk, tk, sm, tm);
  V xk, yk, xh, yh, xp, yp, xm, ym;  // at k, h - k, q + k, q - k
  Load(xk, xs + k);
  Load(yk, ys + k);
  LoadBackwards(xh, xs + h - k);
  LoadBackwards(yh, ys + h - k);
  Load(xp, xs + q + k);
  Load(yp, ys + q + k);
  LoadBackwards(xm, xs + q - k);
  LoadBackwards(ym, ys + q - k);
  PostQuadOutputs<PlainAdds, V, kLowerHalf>(x, y, n, k, sk, tk, sm, tm, xk, yk, xh, yh, xp, yp, xm, ym);
}

// The outputs the post-processing's steps leave out, from the half-length
// transform's elements at 0 (x0, y0) and at N/4 (xq, yq): those at N/4 and
// 3N/4 (the latter unless kLowerHalf) and the real ones at 0 and N/2.
template <bool kLowerHalf = false>
inline __attribute__((always_inline)) void PostProcessEnds(int n, double* x, double* y, double x0, double y0,
                                                           double xq, double yq) {
  const int h = n / 2, q = n / 4;
  if constexpr (!kLowerHalf) {
    x[n - q] = xq;
    y[n - q] = -yq;
  }
  x[q] = xq;
  y[q] = yq;
  x[h] = x0 - y0;
  x[0] = x0 + y0;
  y[0] = 0;
  y[h] = 0;
}

// The post-processing of the fused real transform, from the half-length
// transform in y (real parts) and ys (imaginary parts: y + N/2, or an array
// apart) into x and y; with kLowerHalf only the outputs at indices up to
// N/2, the entries above being left as they are.
template <bool kBothPairsFirst, typename A = PlainAdds, bool kLowerHalf = false>
inline __attribute__((always_inline)) void PostProcessFused(int n, double* x, double* y, const double* ys,
                                                             const double* s, const double* t) {
  const int q = n / 4;
  const double x0 = y[0], y0 = ys[0], xq = y[q], yq = ys[q];
  int k = 1;
  // k = q / 2 is its own partner: both steps give the same outputs, written
  // twice to the same places by the last vector (q / 2 is a multiple of 4).
  if constexpr (kBothPairsFirst) {
    for (; k + 3 <= q / 2; k += 4) PostQuadJoint<Quad, kLowerHalf>(x, y, ys, s, t, n, k);
    for (; k <= q / 2; ++k) PostQuadJoint<double, kLowerHalf>(x, y, ys, s, t, n, k);
  } else {
    for (; k + 3 <= q / 2; k += 4) PostQuad<Quad, A, kLowerHalf>(x, y, ys, s, t, n, k, k + 3 == q / 2);
    for (; k <= q / 2; ++k) PostQuad<double, PlainAdds, kLowerHalf>(x, y, ys, s, t, n, k, k == q / 2);
  }
  PostProcessEnds<kLowerHalf>(n, x, y, x0, y0, xq, yq);
}


// The half-length transform of N = 64 in registers, with the operations of
// the fused path: the 32 bit-reversed values as four runs of eight, one in
// each lane, through the first three stages at once; transposed, so that
// vector c holds elements 4c .. 4c+3; then the stages of spans 8 and 16
// (RegisterStages). Run r's element i is z[4 rev3(i) + rev2(r)],
// and rev2 takes 0, 1, 2, 3 to 0, 2, 1, 3.
template <typename A = PlainAdds>
inline __attribute__((always_inline)) void HalfTransformOf32Registers(const double* x, const double* s,
                                                                       const double* t, Quad* re, Quad* im) {
  static constexpr int kReversed[8] = {0, 4, 2, 6, 1, 5, 3, 7};
  Quad a[8], b[8];
  for (int i = 0; i < 8; ++i) {
    const double* z = x + 8 * kReversed[i];
    Quad lo, hi;
    Load(lo, z);
    Load(hi, z + 4);
    a[i] = __builtin_shufflevector(lo, hi, 0, 4, 2, 6);
    b[i] = __builtin_shufflevector(lo, hi, 1, 5, 3, 7);
  }
  StagesOfEight<Quad, double, A>(a, b, s[8], t[8]);
  Quad columns[4];
  for (int half = 0; half < 2; ++half) {
    Transpose4(a + 4 * half, columns);
    for (int r = 0; r < 4; ++r) re[2 * r + half] = columns[r];
    Transpose4(b + 4 * half, columns);
    for (int r = 0; r < 4; ++r) im[2 * r + half] = columns[r];
  }
  Quad sv[3], tv[3];
  RegisterTwiddles<32>(sv, tv, s, t, 32, 2);
  RegisterStages<32, 8>(re, im, sv, tv);
}

// Lanes 1, 2, 3 of a and lane 0 of b: elements i + 1 .. i + 4 where a and b
// hold i .. i + 3 and i + 4 .. i + 7.
inline __attribute__((always_inline)) void Ahead(const Quad& a, const Quad& b, Quad& out) {
  out = __builtin_shufflevector(a, b, 1, 2, 3, 4);
}

inline __attribute__((always_inline)) void Reversed(const Quad& a, Quad& out) {
  out = __builtin_shufflevector(a, a, 3, 2, 1, 0);
}

// The real transform of 64 points whole in registers: the half-length
// transform stays in the sixteen vectors of HalfTransformOf32Registers, and
// the post-processing takes the eight elements of each of its steps from
// them by lane shuffles, where PostProcessFused loads them from memory just
// written, most of them straddling two of the stores. The steps are those
// of PostProcessFused with both pairs first, on the same values.
template <typename A = PlainAdds>
inline __attribute__((always_inline)) void RealTransformOf64Body(double* x, double* y, const double* s,
                                                                 const double* t) {
  constexpr int n = 64, q = 16;
  Quad re[8], im[8];
  HalfTransformOf32Registers<A>(x, s, t, re, im);
  const double x0 = re[0][0], y0 = im[0][0], xq = re[4][0], yq = im[4][0];
  // The steps of k = 1 .. 4 and 5 .. 8 (q / 2 = 8 is its own partner).
#pragma GCC unroll 2
  for (int c = 0; c < 2; ++c) {
    const int k = 1 + 4 * c;
    Quad sk, tk, sm, tm;
    PostTwiddles(s, t, q, k, sk, tk, sm, tm);
    Quad xk, yk, xh, yh, xp, yp, xm, ym;  // at k, h - k, q + k, q - k
    Ahead(re[c], re[c + 1], xk);
    Ahead(im[c], im[c + 1], yk);
    Reversed(re[7 - c], xh);
    Reversed(im[7 - c], yh);
    Ahead(re[4 + c], re[5 + c], xp);
    Ahead(im[4 + c], im[5 + c], yp);
    Reversed(re[3 - c], xm);
    Reversed(im[3 - c], ym);
    PostQuadOutputs<A>(x, y, n, k, sk, tk, sm, tm, xk, yk, xh, yh, xp, yp, xm, ym);
  }
  PostProcessEnds(n, x, y, x0, y0, xq, yq);
}

// The bit reversal of the fused path with the first three stages: z[k] read
// from x, the real parts to y[0..N/2), the imaginary parts to y[N/2..N).
// With kPairLanes the interleaved pairs are split by in-lane unpacking
// alone, which leaves columns 0, 2, 1, 3 in the lanes; the lanes are
// independent, so only the rows they are written to change (TileOut).
template <typename A = PlainAdds, bool kPairLanes = false>
inline __attribute__((always_inline)) void FusedTiles(int h, const double* x, double* y, double* yi,
                                                      const double* s, const double* t, int mHalf) {
  // Row (high, middle) of z is x[2 * row .. 2 * row + 16).
  const int middleCount = 1 << (mHalf - 6);
  const int rowStep = 1 << (mHalf - 3);
  const int tstep = 2 * (h / 8);
  const double s1 = s[tstep], t1 = t[tstep];
  int reversedMiddle = 0;
  for (int middle = 0; middle < middleCount; ++middle) {
    Quad re[8], reHigh[8], im[8], imHigh[8];
    for (int r = 0; r < 8; ++r) {
      const double* z = x + 2 * (r * rowStep + (middle << 3));
      Quad a, b, c, e;
      Load(a, z);
      Load(b, z + 4);
      Load(c, z + 8);
      Load(e, z + 12);
      if constexpr (kPairLanes) {
        re[r] = __builtin_shufflevector(a, b, 0, 4, 2, 6);
        im[r] = __builtin_shufflevector(a, b, 1, 5, 3, 7);
        reHigh[r] = __builtin_shufflevector(c, e, 0, 4, 2, 6);
        imHigh[r] = __builtin_shufflevector(c, e, 1, 5, 3, 7);
      } else {
        re[r] = __builtin_shufflevector(a, b, 0, 2, 4, 6);
        im[r] = __builtin_shufflevector(a, b, 1, 3, 5, 7);
        reHigh[r] = __builtin_shufflevector(c, e, 0, 2, 4, 6);
        imHigh[r] = __builtin_shufflevector(c, e, 1, 3, 5, 7);
      }
    }
    const int to = reversedMiddle << 3;
    TileOut<true, A, kPairLanes>(re, reHigh, im, imHigh, y + to, yi + to, rowStep, s1, t1);
    int bit = middleCount >> 1;
    while (reversedMiddle & bit) {
      reversedMiddle ^= bit;
      bit >>= 1;
    }
    reversedMiddle |= bit;
  }
}

// kSmall is 6 for N/2 = 64, which after the tiles has its one block of 64
// in registers, 0 for larger sizes (N = 64 has RealTransformOf64Body).
template <int kSmall, bool kLowerHalf = false>
inline __attribute__((always_inline)) void RealTransformFusedBody(int n, double* x, double* y, double* yi,
                                                                  const double* s, const double* t, int mHalf) {
  if constexpr (kSmall != 0) mHalf = kSmall;
  const int h = n / 2;
  FusedTiles(h, x, y, yi, s, t, mHalf);
  if constexpr (kSmall == 6) StagesInBlocks(y, yi, s, t, h, 2, 0, h);
  else if (h >= kManyPairsFrom) FFTCoreWith(y, yi, s, t, h, 2, true, ManyColumnWideStages{});
  else FFTCoreWith(y, yi, s, t, h, 2, true, ColumnWideStages{});
  PostProcessFused<true, PlainAdds, kLowerHalf>(n, x, y, yi, s, t);
}

template <int kSmall, bool kLowerHalf = false>
__attribute__((target("avx512f,avx512vl"))) void RealTransformFusedMany(int n, double* x, double* y, double* yi,
                                                                         const double* s, const double* t,
                                                                         int mHalf) {
  RealTransformFusedBody<kSmall, kLowerHalf>(n, x, y, yi, s, t, mHalf);
}

// The half-length complex transform of the fused path alone, from
// interleaved pairs into (re, im).
__attribute__((target("avx512f,avx512vl"))) void InterleavedTransformMany(const double* z, double* re, double* im,
                                                                           const double* s, const double* t, int h,
                                                                           int mHalf) {
  FusedTiles(h, z, re, im, s, t, mHalf);
  if (h >= kManyPairsFrom) FFTCoreWith(re, im, s, t, h, 2, true, ManyColumnWideStages{});
  else FFTCoreWith(re, im, s, t, h, 2, true, ColumnWideStages{});
}

// N = 64, the whole transform in registers, in the order written (see
// KELDO_PLAIN_ORDER).
__attribute__((target("avx512f,avx512vl"))) KELDO_PLAIN_ORDER void RealTransformOf64Many(double* x, double* y,
                                                                                        const double* s,
                                                                                        const double* t) {
  RealTransformOf64Body(x, y, s, t);
}

// The largest N/2 exponent whose tiles go out as 128-bit halves on processors
// without AVX-512: up to 4096 points they measured 5 to 8 per cent faster, past
// it a few per cent slower.
constexpr int kHalvesUpTo = 11;

// The fused path laid out for the sixteen registers of processors without
// AVX-512: the stages two at a time (PairedColumnWideStages) instead of in
// blocks of 64, and each pass a function of its own, so that no pass's
// registers are spilled for another's (inlined into one function, the
// passes took a tenth longer).
template <typename A>
inline __attribute__((always_inline)) void PairedStages(int h, double* re, double* im, const double* s,
                                                        const double* t) {
  if (h == 64 || h == 128) {
    // Spans 8, 16 and 32 at once, then at h = 128 span 64 alone: at h = 128
    // this took 0.88 of the time of two passes of two stages.
    if (const StageTwiddles<double>* w = TwiddlesFor(s, t, h, 2)) {
      // The run of the stage of span 2^log.
      const auto run = [w](int log) { return static_cast<std::size_t>(w->offset[static_cast<std::size_t>(log)]); };
      const double* const ws = w->s.data();
      const double* const wt = w->t.data();
      StageTripleBody<A>(re, im, ws + run(3), wt + run(3), ws + run(4), wt + run(4), ws + run(5), wt + run(5), 8, 0,
                         h);
      if (h == 128) PairedColumnWideStages<A>{}(re, im, ws + run(6), wt + run(6), 64, 1, 0, h);
      return;
    }
  }
  FFTCoreWith(re, im, s, t, h, 2, true, PairedColumnWideStages<A>{});
}

__attribute__((target("avx"), noinline)) KELDO_PLAIN_ORDER void RealTransformOf64Wide(double* x, double* y,
                                                                                     const double* s,
                                                                                     const double* t) {
  RealTransformOf64Body(x, y, s, t);
}

__attribute__((target("avx"), noinline)) void FusedTilesWide(int h, const double* x, double* y, double* yi,
                                                             const double* s, const double* t, int mHalf) {
  if (mHalf <= kHalvesUpTo) FusedTiles<PlainAdds, true>(h, x, y, yi, s, t, mHalf);
  else FusedTiles(h, x, y, yi, s, t, mHalf);
}

__attribute__((target("avx"), noinline)) void FusedStagesWide(int h, double* re, double* im, const double* s,
                                                              const double* t) {
  PairedStages<PlainAdds>(h, re, im, s, t);
}

__attribute__((target("avx"), noinline)) void PostProcessWide(int n, double* x, double* y, const double* ys,
                                                              const double* s, const double* t) {
  PostProcessFused<false>(n, x, y, ys, s, t);
}

__attribute__((target("avx"), noinline)) void PostProcessLowerWide(int n, double* x, double* y, const double* ys,
                                                                   const double* s, const double* t) {
  PostProcessFused<false, PlainAdds, true>(n, x, y, ys, s, t);
}

// The same passes for processors with AVX2 and FMA, part of their sums on
// the multiply-add units (FusedAdds), with the same bits. They are kept in
// a section of their own, apart from the other kernels, whose timing moves
// by a few per cent with where their loops fall.
#define KELDO_FMA_KERNEL __attribute__((target("avx2,fma"), noinline, section(".text.keldo_fma")))
KELDO_FMA_KERNEL KELDO_PLAIN_ORDER void RealTransformOf64Fma(double* x, double* y, const double* s,
                                                             const double* t) {
  RealTransformOf64Body<FusedAdds>(x, y, s, t);
}

KELDO_FMA_KERNEL void FusedTilesFma(int h, const double* x, double* y, double* yi, const double* s, const double* t,
                                   int mHalf) {
  if (mHalf <= kHalvesUpTo) FusedTiles<FusedAdds, true>(h, x, y, yi, s, t, mHalf);
  else FusedTiles<FusedAdds>(h, x, y, yi, s, t, mHalf);
}

KELDO_FMA_KERNEL void FusedStagesFma(int h, double* re, double* im, const double* s, const double* t) {
  PairedStages<FusedAdds>(h, re, im, s, t);
}

KELDO_FMA_KERNEL void PostProcessFma(int n, double* x, double* y, const double* ys, const double* s,
                                    const double* t) {
  PostProcessFused<false, FusedAdds>(n, x, y, ys, s, t);
}

KELDO_FMA_KERNEL void PostProcessLowerFma(int n, double* x, double* y, const double* ys, const double* s,
                                         const double* t) {
  PostProcessFused<false, FusedAdds, true>(n, x, y, ys, s, t);
}

// The bit reversal in place with the first three stages (BitReverseTiles),
// and the paired stages on arrays of their own, for the inverse transform.
KELDO_FMA_KERNEL void BitReverseTilesFma(double* x, double* y, int m, double s1, double t1) {
  BitReverseTilesBody<true, FusedAdds>(x, y, m, s1, t1);
}

KELDO_FMA_KERNEL void PairedStagesFma(int h, double* re, double* im, const double* s, const double* t) {
  PairedStages<FusedAdds>(h, re, im, s, t);
}

#undef KELDO_FMA_KERNEL

bool HasFma() {
  static const bool fma = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
  return fma;
}

// The fused path's half-length transform on 256-bit vectors: the pairs
// z[k] = x[2k] + i x[2k + 1] through the permutation with the first three
// stages into (y, yi), then the other stages there.
void FusedHalfTransform(int h, const double* x, double* y, double* yi, const double* s, const double* t, int mHalf,
                        bool fma) {
  if (fma) {
    FusedTilesFma(h, x, y, yi, s, t, mHalf);
    FusedStagesFma(h, y, yi, s, t);
  } else {
    FusedTilesWide(h, x, y, yi, s, t, mHalf);
    FusedStagesWide(h, y, yi, s, t);
  }
}

// The half-length transform's imaginary parts go to yi: y + N/2, or an
// array apart (RealFFTLowerHalf).
void RealTransformFused(int n, double* x, double* y, double* yi, const double* s, const double* t, int mHalf,
                        bool lowerHalf = false) {
  const bool fma = HasFma();
  // N = 64 writes the upper half as well.
  if (mHalf == 5) {
    if (fma) RealTransformOf64Fma(x, y, s, t);
    else RealTransformOf64Wide(x, y, s, t);
    return;
  }
  FusedHalfTransform(n / 2, x, y, yi, s, t, mHalf, fma);
  if (lowerHalf) {
    if (fma) PostProcessLowerFma(n, x, y, yi, s, t);
    else PostProcessLowerWide(n, x, y, yi, s, t);
  } else {
    if (fma) PostProcessFma(n, x, y, yi, s, t);
    else PostProcessWide(n, x, y, yi, s, t);
  }
}

void RealTransform(int n, double* x, double* y, const double* s, const double* t, int mHalf) {
  static const bool wide = __builtin_cpu_supports("avx");
  if (wide && mHalf >= 5) {
    if (!ManyRegisters()) RealTransformFused(n, x, y, y + n / 2, s, t, mHalf);
    else if (mHalf == 5) RealTransformOf64Many(x, y, s, t);
    else if (mHalf == 6) RealTransformFusedMany<6>(n, x, y, y + n / 2, s, t, mHalf);
    else RealTransformFusedMany<0>(n, x, y, y + n / 2, s, t, mHalf);
  } else if (wide) {
    RealTransformWide(n, x, y, s, t, mHalf);
  } else {
    RealTransformBody<Pair, 2>(n, x, y, s, t, mHalf);
  }
}

// The complex transform of h = 2^mHalf elements inside the inverse real
// transform, in place on x (real parts) and y (imaginary parts), tables
// built for 2h: the passes of the fused real transform (the bit reversal in
// tiles with the first three stages, then the blocks of 64 or the paired
// stages, and the last stages column by column), each element computed by
// the very operations of BitReversePair and ComplexFFTCore with stride 2.
template <int kSmall>
__attribute__((target("avx512f,avx512vl"))) void InverseHalfTransformMany(double* x, double* y, const double* s,
                                                                           const double* t, int h, int mHalf) {
  const int tstep = 2 * (h / 8);
  BitReverseTilesBody<true>(x, y, mHalf, s[tstep], t[tstep]);
  if constexpr (kSmall == 6) StagesInBlocks(x, y, s, t, h, 2, 0, h);
  else if (h >= kManyPairsFrom) FFTCoreWith(x, y, s, t, h, 2, true, ManyColumnWideStages{});
  else FFTCoreWith(x, y, s, t, h, 2, true, ColumnWideStages{});
}

void InverseHalfTransform(double* x, double* y, const double* s, const double* t, int h, int mHalf) {
  static const bool wide = __builtin_cpu_supports("avx");
  if (!wide || mHalf < 6) {
    BitReverseBoth(x, y, h, mHalf);
    FFTCore(x, y, s, t, h, 2);
  } else if (ManyRegisters()) {
    if (mHalf == 6) InverseHalfTransformMany<6>(x, y, s, t, h, mHalf);
    else InverseHalfTransformMany<0>(x, y, s, t, h, mHalf);
  } else {
    const int tstep = 2 * (h / 8);
    if (HasFma()) {
      BitReverseTilesFma(x, y, mHalf, s[tstep], t[tstep]);
      PairedStagesFma(h, x, y, s, t);
    } else {
      BitReverseTilesWide<true>(x, y, mHalf, s[tstep], t[tstep]);
      FusedStagesWide(h, x, y, s, t);
    }
  }
}

// The passes of the inverse real transform around its half-length
// transform that hold no long sums, L elements at a time in the lanes of a
// vector V (a lone double for the ends), each lane doing the operations of
// the scalar steps; elements read and written backwards move with their
// lanes reversed. Preparation, k = 1..N/4-1: from the half spectrum, the
// sequence to transform, at k and N/2 - k in place.
template <typename V>
inline __attribute__((always_inline)) void InversePrepareStep(int n, double* x, double* y, const double* s, int k) {
  const int h = n / 2;
  V sk, xk, xm, yk, ym;
  Load(sk, s + k);
  Load(xk, x + k);
  LoadBackwards(xm, x + h - k);
  Load(yk, y + k);
  LoadBackwards(ym, y + h - k);
  const V p = (xm + xk) / 2, g = xk - xm;
  Store(x + k, p - g * sk);
  StoreBackwards(x + h - k, p + g * sk);
  const V w = (yk - ym) / 2, r = (ym + yk) * sk;
  Store(y + k, r + w);
  StoreBackwards(y + h - k, r - w);
}

// After the transform (X, Y) and the running sums over the odd outputs,
// kept in x[N/2 + k] and x[N - k]: for k = 1..N/4-1, y[2k] = X[N/2 - k] +
// X[k], y[2k + 1] the first running sum, and the difference X[N/2 - k] -
// X[k] in its place.
template <typename V>
inline __attribute__((always_inline)) void InverseGatherY(int n, double* x, double* y, int k) {
  const int h = n / 2;
  V xk, xm, odd;
  Load(xk, x + k);
  LoadBackwards(xm, x + h - k);
  Load(odd, x + h + k);
  const V sum = xm + xk;
  Store(x + h + k, xm - xk);
  if constexpr (sizeof(V) == sizeof(double)) {
    y[2 * k] = sum;
    y[2 * k + 1] = odd;
  } else {
    Store(y + 2 * k, V(__builtin_shufflevector(sum, odd, 0, 4, 1, 5)));
    Store(y + 2 * k + 4, V(__builtin_shufflevector(sum, odd, 2, 6, 3, 7)));
  }
}

// Then x[2k] = that difference and x[2k + 1] the second running sum.
template <typename V>
inline __attribute__((always_inline)) void InverseGatherX(int n, double* x, int k) {
  const int h = n / 2;
  V even, odd;
  Load(even, x + h + k);
  LoadBackwards(odd, x + n - k);
  if constexpr (sizeof(V) == sizeof(double)) {
    x[2 * k] = even;
    x[2 * k + 1] = odd;
  } else {
    Store(x + 2 * k, V(__builtin_shufflevector(even, odd, 0, 4, 1, 5)));
    Store(x + 2 * k + 4, V(__builtin_shufflevector(even, odd, 2, 6, 3, 7)));
  }
}

// The outputs at k and N - k, k = 1..N/2-1: with sign = (-1)^k x[N/2] of
// the input, v = sign - x[0] + y[k], x[N - k] = v - x[k], x[k] = v + x[k].
// The outputs below N/2 go to low[k], those from N/2 up to high[k - N/2]:
// low = x and high = x + N/2 in place, or two halves of another array.
template <typename V>
inline __attribute__((always_inline)) void InverseOutputs(int n, const double* x, const double* y, const V& sign,
                                                          double x0, int k, double* low, double* high) {
  V xk, yk;
  Load(xk, x + k);
  Load(yk, y + k);
  const V v = sign - x0 + yk;
  StoreBackwards(high + n / 2 - k, v - xk);
  Store(low + k, v + xk);
}

// The preparation, four values of k at a time when kWide.
template <bool kWide>
inline __attribute__((always_inline)) void InversePrepareBody(int n, double* x, double* y, const double* s) {
  const int q = n / 4;
  int k = 1;
  if constexpr (kWide)
    for (; k + 3 < q; k += 4) InversePrepareStep<Quad>(n, x, y, s, k);
  for (; k < q; ++k) InversePrepareStep<double>(n, x, y, s, k);
}

// Every pass after the running sums, x[1] = 2 f between the two gathers
// (the first reads X[1]); x0 and xh are the input's x[0] and x[N/2].
template <bool kWide>
inline __attribute__((always_inline)) void InverseFinishBody(int n, double* x, double* y, double x0, double xh,
                                                             double f, double* low, double* high) {
  const int h = n / 2, q = n / 4;
  int k = 1;
  if constexpr (kWide)
    for (; k + 3 < q; k += 4) InverseGatherY<Quad>(n, x, y, k);
  for (; k < q; ++k) InverseGatherY<double>(n, x, y, k);
  x[1] = 2 * f;
  k = 1;
  if constexpr (kWide)
    for (; k + 3 < q; k += 4) InverseGatherX<Quad>(n, x, k);
  for (; k < q; ++k) InverseGatherX<double>(n, x, k);
  // Negation is exact: the sign of odd k is -xh, of even k xh.
  k = 1;
  if constexpr (kWide) {
    const Quad signs = {-xh, xh, -xh, xh};
    for (; k + 3 < h; k += 4) InverseOutputs<Quad>(n, x, y, signs, x0, k, low, high);
  }
  for (; k < h; ++k) InverseOutputs<double>(n, x, y, (k & 1) ? -xh : xh, x0, k, low, high);
}

__attribute__((target("avx"))) void InversePrepareWide(int n, double* x, double* y, const double* s) {
  InversePrepareBody<true>(n, x, y, s);
}

__attribute__((target("avx"))) void InverseFinishWide(int n, double* x, double* y, double x0, double xh, double f,
                                                      double* low, double* high) {
  InverseFinishBody<true>(n, x, y, x0, xh, f, low, high);
}

void InversePrepare(int n, double* x, double* y, const double* s) {
  static const bool wide = __builtin_cpu_supports("avx");
  if (wide) InversePrepareWide(n, x, y, s);
  else InversePrepareBody<false>(n, x, y, s);
}

void InverseFinish(int n, double* x, double* y, double x0, double xh, double f, double* low, double* high) {
  static const bool wide = __builtin_cpu_supports("avx");
  if (wide) InverseFinishWide(n, x, y, x0, xh, f, low, high);
  else InverseFinishBody<false>(n, x, y, x0, xh, f, low, high);
}

// With the outputs apart from x and y, the passes after the transform go as
// one: per k = 1..N/4-1 the two running sums over the odd outputs, then
// the outputs at 2k and 2k + 1 and at their mirrors N - 2k and N - 2k - 1,
// each from the operands the separate passes would give it. L values of k
// at a time in the lanes of V; each running sum stays one chain, lane after
// lane. evenBase = x[N/2] - x[0] and oddBase = -x[N/2] - x[0] of the input.
template <typename V>
inline __attribute__((always_inline)) void InverseApartStep(int n, const double* x, const double* y,
                                                            double evenBase, double oddBase, double& oddY,
                                                            double& oddX, int k, double* low, double* high) {
  constexpr int L = sizeof(V) / sizeof(double);
  const int h = n / 2;
  V xk, xm, yk, ym;
  Load(xk, x + k);
  LoadBackwards(xm, x + h - k);
  Load(yk, y + k);
  LoadBackwards(ym, y + h - k);
  const V ySpan = yk - ym, yPair = ym + yk;
  V runY, runX;
  if constexpr (L == 1) {
    runY = oddY = ySpan + oddY;
    runX = oddX = yPair + oddX;
  } else {
    for (int l = 0; l < L; ++l) {
      runY[l] = oddY = ySpan[l] + oddY;
      runX[l] = oddX = yPair[l] + oddX;
    }
  }
  const V sum = xm + xk, difference = xm - xk;
  const V even = evenBase + sum, odd = oddBase + runY;
  const V evenLow = even + difference, oddLow = odd + runX;
  const V evenHigh = even - difference, oddHigh = odd - runX;
  if constexpr (L == 1) {
    low[2 * k] = evenLow;
    low[2 * k + 1] = oddLow;
    high[h - 2 * k] = evenHigh;
    high[h - 2 * k - 1] = oddHigh;
  } else {
    Store(low + 2 * k, V(__builtin_shufflevector(evenLow, oddLow, 0, 4, 1, 5)));
    Store(low + 2 * k + 4, V(__builtin_shufflevector(evenLow, oddLow, 2, 6, 3, 7)));
    Store(high + h - 2 * k - 3, V(__builtin_shufflevector(evenHigh, oddHigh, 5, 1, 4, 0)));
    Store(high + h - 2 * k - 7, V(__builtin_shufflevector(evenHigh, oddHigh, 7, 3, 6, 2)));
  }
}

// P inverses at once: oddY and oddX come in as the running sums' starts.
template <bool kWide, int P>
inline __attribute__((always_inline)) void InverseApartBody(int n, double* const* x, double* const* y,
                                                            const double* evenBase, const double* oddBase,
                                                            double* oddY, double* oddX, double* const* low,
                                                            double* const* high) {
  // Local copies, which no store into the arrays can touch, so that the
  // sums stay in registers.
  const double *xs[P], *ys[P];
  double *lows[P], *highs[P], evens[P], odds[P], runY[P], runX[P];
  for (int p = 0; p < P; ++p) {
    xs[p] = x[p];
    ys[p] = y[p];
    lows[p] = low[p];
    highs[p] = high[p];
    evens[p] = evenBase[p];
    odds[p] = oddBase[p];
    runY[p] = oddY[p];
    runX[p] = oddX[p];
  }
  const int q = n / 4;
  int k = 1;
  if constexpr (kWide)
    for (; k + 3 < q; k += 4)
      for (int p = 0; p < P; ++p)
        InverseApartStep<Quad>(n, xs[p], ys[p], evens[p], odds[p], runY[p], runX[p], k, lows[p], highs[p]);
  for (; k < q; ++k)
    for (int p = 0; p < P; ++p)
      InverseApartStep<double>(n, xs[p], ys[p], evens[p], odds[p], runY[p], runX[p], k, lows[p], highs[p]);
}

template <int P>
__attribute__((target("avx"))) void InverseApartWide(int n, double* const* x, double* const* y,
                                                     const double* evenBase, const double* oddBase, double* oddY,
                                                     double* oddX, double* const* low, double* const* high) {
  InverseApartBody<true, P>(n, x, y, evenBase, oddBase, oddY, oddX, low, high);
}

template <int P>
void InverseApart(int n, double* const* x, double* const* y, const double* evenBase, const double* oddBase,
                  double* oddY, double* oddX, double* const* low, double* const* high) {
  static const bool wide = __builtin_cpu_supports("avx");
  if (wide) InverseApartWide<P>(n, x, y, evenBase, oddBase, oddY, oddX, low, high);
  else InverseApartBody<false, P>(n, x, y, evenBase, oddBase, oddY, oddX, low, high);
}

// The same in floats, one value of k at a time.
void RealTransform(int n, float* x, float* y, const float* s, const float* t, int mHalf) {
  const int h = n / 2, q = n / 4;
  for (int k = 0; k < h; ++k) {
    y[k] = x[2 * k + 1];
    x[k] = x[2 * k];
  }
  ReverseAndTransform(x, y, s, t, h, mHalf, 2);
  for (int k = 1; k < q; ++k) PostStep(x, y, s, t, n, k);
  FinishReal(x, y, n);
}

}  // namespace

void BitReversePair(double* x, double* y, int n, int m) { BitReverseBoth(x, y, n, m); }
void BitReversePair(float* x, float* y, int n, int m) { BitReverseBoth(x, y, n, m); }
void ComplexFFTCore(double* x, double* y, const double* s, const double* t, int n, int stride) {
  FFTCore(x, y, s, t, n, stride);
}
void ComplexFFT(double* x, double* y, const double* s, const double* t, int n, int m) {
  ReverseAndTransform(x, y, s, t, n, m, 1);
}
void ComplexFFT(float* x, float* y, const float* s, const float* t, int n, int m) {
  ReverseAndTransform(x, y, s, t, n, m, 1);
}
void HalfLengthComplexFFT(double* x, double* y, const double* s, const double* t, int h, int mHalf) {
  InverseHalfTransform(x, y, s, t, h, mHalf);
}
void HalfLengthComplexFFTOfPairs(const double* z, double* re, double* im, const double* s, const double* t, int h,
                                 int mHalf) {
  static const bool wide = __builtin_cpu_supports("avx");
  if (!wide || mHalf < 7) {
    for (int k = 0; k < h; ++k) {
      re[k] = z[2 * k];
      im[k] = z[2 * k + 1];
    }
    BitReverseBoth(re, im, h, mHalf);
    FFTCore(re, im, s, t, h, 2);
  } else if (ManyRegisters()) {
    InterleavedTransformMany(z, re, im, s, t, h, mHalf);
  } else {
    FusedHalfTransform(h, z, re, im, s, t, mHalf, HasFma());
  }
}
void ComplexFFTCore(float* x, float* y, const float* s, const float* t, int n, int stride) {
  FFTCore(x, y, s, t, n, stride);
}
void ComplexFFTBatch(float* x, float* y, const float* s, const float* t, int n) {
  static const bool wide = __builtin_cpu_supports("avx");
  if (wide) BatchTransformWide(x, y, s, t, n);
  else BatchTransformNarrow(x, y, s, t, n);
}
void RealFFT(int n, double* x, double* y, const double* s, const double* t, int mHalf) {
  RealTransform(n, x, y, s, t, mHalf);
}
void RealFFTLowerHalf(int n, double* x, double* y, const double* s, const double* t, int mHalf,
                      double* imagHalf) {
  // The fused paths of the large transforms leave out the upper half; the
  // others write it as well.
  static const bool wide = __builtin_cpu_supports("avx");
  double* const yi = imagHalf != nullptr ? imagHalf : y + n / 2;
  if (!wide || mHalf < 7) RealTransform(n, x, y, s, t, mHalf);
  else if (ManyRegisters()) RealTransformFusedMany<0, true>(n, x, y, yi, s, t, mHalf);
  else RealTransformFused(n, x, y, yi, s, t, mHalf, true);
}
void RealFFT(int n, float* x, float* y, const float* s, const float* t, int mHalf) {
  RealTransform(n, x, y, s, t, mHalf);
}

// The long sums here are chains of dependent additions, each waiting on
// the one before. Chains that do not depend on one another run in the same
// loop, side by side, each adding the same terms in the same order as it
// would alone, so that the sums keep their bits: the alternating and plain
// sums over the lower half with e, then over the upper half with the sum of
// the r terms (which read y alone); after the transform the two running
// sums over the odd outputs together, kept in x's upper half until their
// places are free.
namespace {

// One inverse: its half spectrum in x and y, and where its outputs go,
// those below N/2 to low[0..N/2) and the rest to high[0..N/2).
struct InverseJob {
  double* x;
  double* y;
  double* low;
  double* high;
};

// P inverses of one size side by side: each loop of sums carries the
// chains of all P, which wait on their own predecessors only, and each
// chain adds its terms in the order one inverse alone would.
template <int P>
void InverseInto(int n, int mOffset, const std::array<InverseJob, P>& jobs, const double* s, const double* t) {
  const int h = n / 2, q = n / 4;
  double x0[P], xh[P], alternating[P], plain[P], e[P], accumulated[P], f[P];
  for (int p = 0; p < P; ++p) {
    x0[p] = jobs[p].x[0];
    xh[p] = jobs[p].x[h];
    alternating[p] = plain[p] = accumulated[p] = 0.0;
    e[p] = x0[p];
  }
  for (int k = 1; k < q; ++k)
    for (int p = 0; p < P; ++p) {
      const double* x = jobs[p].x;
      alternating[p] += (k & 1) ? -x[k] : x[k];
      plain[p] += x[k];
      e[p] += (x[q - k] - x[q + k]) * s[k];
    }
  for (int k = q; k < h; ++k)
    for (int p = 0; p < P; ++p) {
      const double* x = jobs[p].x;
      const double* y = jobs[p].y;
      alternating[p] += (k & 1) ? -x[k] : x[k];
      plain[p] += x[k];
      if (k > q) {
        const int i = k - q;
        accumulated[p] += (y[h - i] + y[i]) * s[i];
      }
    }
  for (int p = 0; p < P; ++p) {
    double* x = jobs[p].x;
    double* y = jobs[p].y;
    y[0] = 0.0;
    InversePrepare(n, x, y, s);
    f[p] = y[q] + accumulated[p];
    y[q] *= 2;
    InverseHalfTransform(x, y, s, t, h, mOffset + 5);
  }
  // The running sums of y[k] - y[h - k] from 2 e and of y[h - k] + y[k]
  // from 2 f, for the odd outputs of y and of x.
  double oddY[P], oddX[P];
  for (int p = 0; p < P; ++p) {
    oddY[p] = 2 * e[p];
    oddX[p] = 2 * f[p];
  }
  if (jobs[0].low != jobs[0].x) {
    double *xs[P], *ys[P], *lows[P], *highs[P], evenBase[P], oddBase[P];
    for (int p = 0; p < P; ++p) {
      xs[p] = jobs[p].x;
      ys[p] = jobs[p].y;
      lows[p] = jobs[p].low;
      highs[p] = jobs[p].high;
      evenBase[p] = xh[p] - x0[p];
      oddBase[p] = -xh[p] - x0[p];
    }
    InverseApart<P>(n, xs, ys, evenBase, oddBase, oddY, oddX, lows, highs);
    for (int p = 0; p < P; ++p) {
      const InverseJob& job = jobs[p];
      // The output at 1 from y[1] = 2 e and x[1] = 2 f.
      const double v = oddBase[p] + 2 * e[p];
      job.high[h - 1] = v - 2 * f[p];
      job.low[1] = v + 2 * f[p];
      job.low[0] = x0[p] + xh[p] + 2 * plain[p];
      job.high[0] = x0[p] + xh[p] + 2 * alternating[p];
    }
    return;
  }
  for (int k = 1; k < q; ++k)
    for (int p = 0; p < P; ++p) {
      double* x = jobs[p].x;
      const double* y = jobs[p].y;
      oddY[p] = (y[k] - y[h - k]) + oddY[p];
      oddX[p] = (y[h - k] + y[k]) + oddX[p];
      x[h + k] = oddY[p];
      x[n - k] = oddX[p];
    }
  for (int p = 0; p < P; ++p) {
    const InverseJob& job = jobs[p];
    job.y[1] = 2 * e[p];
    InverseFinish(n, job.x, job.y, x0[p], xh[p], f[p], job.low, job.high);
    job.low[0] = x0[p] + xh[p] + 2 * plain[p];
    job.high[0] = x0[p] + xh[p] + 2 * alternating[p];
  }
}

}  // namespace

void RealInverseFFT(int n, int mOffset, double* x, double* y, const double* s, const double* t) {
  InverseInto<1>(n, mOffset, {InverseJob{x, y, x, x + n / 2}}, s, t);
}

void RealInverseFFTSwapped(int n, int mOffset, double* x, double* y, const double* s, const double* t,
                           double* out) {
  InverseInto<1>(n, mOffset, {InverseJob{x, y, out + n / 2, out}}, s, t);
}

void RealInverseFFTSwappedPair(int n, int mOffset, double* x1, double* y1, double* out1, double* x2, double* y2,
                               double* out2, const double* s, const double* t) {
  InverseInto<2>(n, mOffset, {InverseJob{x1, y1, out1 + n / 2, out1}, InverseJob{x2, y2, out2 + n / 2, out2}}, s,
                 t);
}

void SineTransformCore(int n, double* x, double* y, const double* s, const double* t, int mOffset, double c) {
  const int h = n / 2;
  const double reciprocal = 1.0 / std::sqrt(c + 2.0);
  x[0] = 0.0;
  double acc = 0.0;
  // The sum alternates in sign from +r at k = 1; an odd and the following
  // even k at a time, so that no step asks which one it is. sin(pi k / N)
  // comes from the table at half index: an even k reads it, an odd k
  // averages its neighbours over cos(pi / N).
  const auto step = [&](int k, double sine) {
    const double g = (x[k] - x[n - k]) / 2;
    const double r = sine * (x[n - k] + x[k]);
    x[k] = r + g;
    x[n - k] = r - g;
    return r;
  };
  for (int k = 1; k < h; k += 2) {
    acc += step(k, (s[(k - 1) / 2] + s[(k + 1) / 2]) * reciprocal);
    if (k + 1 < h) acc -= step(k + 1, s[(k + 1) / 2]);
  }
  const double z = acc - x[h];
  x[h] = 2 * x[h];
  RealFFT(n, x, y, s, t, mOffset + 5);
  x[n - 1] = z;
  x[0] = 0.0;
  x[n] = 0.0;
  for (int k = h - 1; k >= 1; --k) {
    x[2 * k - 1] = x[2 * k + 1] - x[k];
    x[2 * k] = y[k];
  }
}

void CosineTransformCore(int n, double* x, double* y, const double* s, const double* t, int mOffset, double c) {
  const int h = n / 2;
  const double reciprocal = 1.0 / std::sqrt(c + 2.0);
  double acc = x[0];
  // Y is scratch until the transform: it keeps each half-angle sine for the
  // second loop.
  for (int k = 1; k < h; k += 2) {
    y[k] = (s[(k - 1) / 2] + s[(k + 1) / 2]) * reciprocal;
    acc -= y[k] * (x[h - k] - x[h + k]);
    if (k + 1 < h) {
      y[k + 1] = s[(k + 1) / 2];
      acc += y[k + 1] * (x[h - k - 1] - x[h + k + 1]);
    }
  }
  for (int k = 1; k < h; ++k) {
    const double w = y[k];
    const double p = (x[n - k] + x[k]) / 2, g = x[k] - x[n - k];
    x[k] = p - g * w;
    x[n - k] = p + g * w;
  }
  RealFFT(n, x, y, s, t, mOffset + 5);
  x[n - 1] = acc;
  for (int k = h - 1; k >= 1; --k) {
    x[2 * k] = x[k];
    x[2 * k - 1] = x[2 * k + 1] - y[k];
  }
}

void SwapHalves(int n, double* a) {
  const int h = n / 2;
  for (int k = 0; k < h; ++k) std::swap(a[k], a[k + h]);
}

void* AllocateKernelArray(std::size_t bytes) {
  // The arrays start at quarters of a page in the order 0, 2, 1, 3 (then
  // over again): any two allocated in a row start at least a quarter of a
  // page apart, and a pair of them half a page.
  static std::atomic<unsigned> count{0};
  const unsigned k = count.fetch_add(1, std::memory_order_relaxed);
  const std::uintptr_t place = ((k & 1u) * 2 + ((k >> 1) & 1u)) * 1024;
  // 64 bytes in front keep the start of the block for FreeKernelArray.
  char* const base = static_cast<char*>(::operator new(bytes + 4096 + 64, std::align_val_t(64)));
  const std::uintptr_t first = reinterpret_cast<std::uintptr_t>(base) + 64;
  char* const p = base + 64 + ((place - first) & 4095u);
  std::memcpy(p - sizeof base, &base, sizeof base);
  return p;
}

void FreeKernelArray(void* p) {
  if (p == nullptr) return;
  char* base = nullptr;
  std::memcpy(&base, static_cast<char*>(p) - sizeof base, sizeof base);
  ::operator delete(base, std::align_val_t(64));
}

TrigTables::TrigTables(int size) : n(size) {
  while ((1 << m) < n) ++m;
  sine.assign(static_cast<std::size_t>(n / 4 + 4), 0.0);
  tan.assign(static_cast<std::size_t>(n / 4 + 4), 0.0);
  BuildTrigTables(n, m, sine.data(), tan.data(), cosConstant);
}

FloatTrigTables::FloatTrigTables(int size) : n(size) {
  const TrigTables exact(size);
  m = exact.m;
  sine.assign(exact.sine.begin(), exact.sine.end());
  tan.assign(exact.tan.begin(), exact.tan.end());
}

}  // namespace keldo::fourier
