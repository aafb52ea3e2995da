#include "wavelet/scalogram.h"

#include <immintrin.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>
#include <new>

#include "common/transpose4.h"

namespace keldo::wavelet {
namespace {

constexpr double kPi = 3.14159265358979;
constexpr double kHatConstant = 4.57565215012204;
// exp(x) is exactly 0 in double precision for every x below -745.2: a
// sample whose exponent lies beyond this is 0 without calling exp.
constexpr double kExpUnderflow = 746.0;

constexpr std::array<std::string_view, 5> kLabels{
    "1. Mexican hat (real)", "2. Haar (real)", "3. Gabor cosine (real)", "4. Gabor sine (real)",
    "5. Gabor (complex)"};

// Catalogue numbers of the parameter checks.
constexpr int kOctavesTooFew = 58;
constexpr int kOctavesTooMany = 59;
constexpr int kVoicesTooFew = 60;
constexpr int kTooManyVoices = 61;
constexpr int kWidthNotPositive = 62;
constexpr int kFreqNotPositive = 63;
constexpr int kMostOctaves = 256;

std::size_t Index(int i) { return static_cast<std::size_t>(i); }

int ExponentOf(int n) {
  int m = 0;
  while ((1 << m) < n) ++m;
  return m;
}

// The centre of every wavelet: b/2 on an interval that starts at or after
// 0, 0 on one that starts before.
double CentreOf(double a, double b) { return a >= 0.0 ? b / 2 : 0.0; }

// The sample grids of the usual intervals are mirrored, to the bit, about
// the sample nearest the centre: with k0 that sample, C - t at 2 k0 - i is
// exactly -(C - t) at i (an interval [0, b] or [-b, b] whose steps are exact
// binary fractions), and so is u. Every wavelet here is even or odd in u, so
// such a sample takes its mirror's value (negated for an odd part) rather
// than calling exp, cos and sin again; the result is the one the formula
// gives, the library's cos being even and its sin odd to the bit. A grid
// that is not mirrored computes every sample.
int MirrorIndex(int n, double a, double c0, double dx) {
  const double k = std::nearbyint((c0 - a) / dx);
  return k >= 0.0 && k <= n ? static_cast<int>(k) : -1;
}

// C - t[i], of which u is a multiple: opposite offsets give opposite u to
// the bit, rounding being symmetric in sign.
inline double OffsetOf(int i, double a, double c0, double dx) { return c0 - (a + i * dx); }

// The sample below i that mirrors it about k0, or -1.
inline int MirrorOf(int i, int k0) {
  const int j = 2 * k0 - i;
  return k0 >= 0 && j >= 0 && j < i ? j : -1;
}

// The last sample of the unbroken run above k0 whose partners below mirror
// them (k0 itself when the first does not; -1 without a centre sample).
int MirroredTo(int n, double a, double c0, double dx, int k0) {
  if (k0 < 0) return -1;
  const int last = std::min(n, 2 * k0);
  int m = k0 + 1;
  while (m <= last && OffsetOf(2 * k0 - m, a, c0, dx) == -OffsetOf(m, a, c0, dx)) ++m;
  return m - 1;
}

// The samples past a wavelet's reach, |C - t| > reach, where its exponent
// passes kExpUnderflow and the formula gives 0 without calling exp: those
// below `below` and above `above` are past it with room for every rounding
// of t, u and the exponent, so they are 0 without being computed. The
// samples between are computed one by one as before.
struct Tails {
  int below = 0;
  int above = 0;
};

Tails TailsBeyond(int n, double a, double c0, double dx, double reach) {
  const Tails none{0, n};
  if (!(dx > 0.0) || !(reach >= 0.0) || !std::isfinite(reach)) return none;
  const double rounding = 16 * std::numeric_limits<double>::epsilon() * (std::fabs(c0) + std::fabs(a) + n * dx);
  const double far = reach + 1e-9 * reach + rounding;
  const double low = (c0 - a - far) / dx - 2;
  const double high = (c0 - a + far) / dx + 2;
  if (!std::isfinite(low) || !std::isfinite(high)) return none;
  Tails tails;
  tails.below = low <= 0.0 ? 0 : low >= n ? n : static_cast<int>(std::floor(low));
  tails.above = high >= n ? n : high <= 0.0 ? 0 : static_cast<int>(std::ceil(high));
  if (tails.above < tails.below) tails.above = tails.below;
  return tails;
}

// The transcendental values of a Gabor sample depend on its u alone:
// exp(-g) with g = pi u^2, cos(2 pi f u) and sin(2 pi f u). Every row keeps
// its values for the samples i = 0..k0 (k0 the grid's centre; the samples
// above are mirrored) for the row an octave above. Row r + v has the scale
// 2 s(r) wherever the powers give that to the bit, and then on a mirrored
// grid its sample i has the u of row r's sample 2 i - k0: where that u is
// the same to the bit (it is recomputed and compared for every sample), the
// sample takes the values the library gave for it instead of calling exp,
// cos and sin again. Every sample is still the formula's value with the
// library's exp, cos and sin. (Samples of the second octave far from the
// centre have a u beyond the first octave's grid and are computed; from the
// third octave on, every sample within reach has its u an octave below.)
struct SampleReuse {
  // The values of the row an octave below, read where `read` (index 2 i - k0
  // from `from` to k0).
  bool read = false;
  const double* exps = nullptr;
  const double* coss = nullptr;
  const double* sins = nullptr;
  int from = 0;
  double scale = 0.0;  // its scale
  // This row's own, kept where `write` (index i from its first sample
  // within reach to k0, in the same place), its first index into
  // *wroteFrom.
  bool write = false;
  double* keepExp = nullptr;
  double* keepCos = nullptr;
  double* keepSin = nullptr;
  int* wroteFrom = nullptr;
  // The grid's samples k0 + 1 .. mirroredTo all have partners at 2 k0 - i
  // whose offsets are their exact opposites: found once for all the rows
  // (MirroredTo), -1 where not known.
  int mirroredTo = -1;
  // The index of the lower row's sample for sample i, or -1 if it kept none.
  int Source(int i, int k0) const {
    if (!read || i > k0) return -1;
    const int ip = 2 * i - k0;
    return ip >= from ? ip : -1;
  }
};

void MexicanHatValues(int n, double* out, double a, double c0, double dx, double s, double q, double w) {
  const double c = kHatConstant * (w * w);
  const double amplitude = 2 * kPi * std::sqrt(c) * q;
  const int k0 = MirrorIndex(n, a, c0, dx);
  // Past the reach a sample is 0, computed or mirrored.
  const Tails tails = TailsBeyond(n, a, c0, dx, std::sqrt(kExpUnderflow * c / kPi) / s);
  std::fill(out, out + tails.below, 0.0);
  std::fill(out + tails.above + 1, out + n + 1, 0.0);
  for (int i = tails.below; i <= tails.above; ++i) {
    const double offset = OffsetOf(i, a, c0, dx);
    const int j = MirrorOf(i, k0);
    if (j >= 0 && OffsetOf(j, a, c0, dx) == -offset) {
      out[i] = out[j];
      continue;
    }
    const double u = offset * s;
    // g/c once: 2g/c is 2 (g/c) and -g/c is -(g/c) to the bit.
    const double ratio = kPi * (u * u) / c;
    out[i] = ratio > kExpUnderflow ? 0.0 : (1 - 2 * ratio) * amplitude * std::exp(-ratio);
  }
}

void HaarValues(int n, double* out, double a, double c0, double dx, double s, double q, double w) {
  const double amplitude = q / std::sqrt(w);
  for (int i = 0; i <= n; ++i) {
    const double t = a + i * dx;
    const double u = (t - c0) * s / w;
    out[i] = (u > -0.5 && u < 0.0) ? amplitude : (u > 0.0 && u < 0.5) ? -amplitude : 0.0;
  }
}

// Division by w. When w is a power of two (the usual width 1 among them)
// its reciprocal is exact, and x * (1/w) is x / w to the bit, each being
// the same real number correctly rounded; a product costs a fraction of a
// division.
template <bool kPowerOfTwo>
struct DivideBy {
  explicit DivideBy(double divisor) : w(divisor), inverse(1.0 / divisor) {}
  double operator()(double x) const {
    if constexpr (kPowerOfTwo) return x * inverse;
    else return x / w;
  }
  // The same for four lanes, in place (vectors pass by reference here).
  void InPlace(Doubles4& x) const {
    if constexpr (kPowerOfTwo) x *= inverse;
    else x /= w;
  }
  double w, inverse;
};

bool IsPowerOfTwo(double w) {
  int exponent = 0;
  return w > 0.0 && std::frexp(w, &exponent) == 0.5 && exponent > -1000 && exponent < 1000;
}

// Four lanes, or one, with their loads and stores, upwards from an index
// or downwards. (Vectors pass by reference, never by value.)
template <typename V>
struct Lanes;

template <>
struct Lanes<double> {
  template <bool kDown>
  static void Load(const double* at, double& v) {
    v = *at;
  }
  template <bool kDown>
  static void Store(double* at, const double& v) {
    *at = v;
  }
  // Pairs (re, im) of the lanes' indices.
  template <bool kDown>
  static void StorePairs(double* pairs, int k, const double& re, const double& im) {
    pairs[2 * k] = re;
    pairs[2 * k + 1] = im;
  }
};

template <>
struct Lanes<Doubles4> {
  template <bool kDown>
  static inline __attribute__((always_inline)) void Load(const double* at, Doubles4& v) {
    std::memcpy(&v, kDown ? at - 3 : at, sizeof v);
    if constexpr (kDown) v = __builtin_shufflevector(v, v, 3, 2, 1, 0);
  }
  template <bool kDown>
  static inline __attribute__((always_inline)) void Store(double* at, const Doubles4& v) {
    Doubles4 out = v;
    if constexpr (kDown) out = __builtin_shufflevector(v, v, 3, 2, 1, 0);
    std::memcpy(kDown ? at - 3 : at, &out, sizeof out);
  }
  template <bool kDown>
  static inline __attribute__((always_inline)) void StorePairs(double* pairs, int k, const Doubles4& re,
                                                               const Doubles4& im) {
    Doubles4 r = re, i = im;
    if constexpr (kDown) {
      r = __builtin_shufflevector(re, re, 3, 2, 1, 0);
      i = __builtin_shufflevector(im, im, 3, 2, 1, 0);
    }
    const Doubles4 low = __builtin_shufflevector(r, i, 0, 4, 1, 5), high = __builtin_shufflevector(r, i, 2, 6, 3, 7);
    double* at = pairs + 2 * (kDown ? k - 3 : k);
    std::memcpy(at, &low, sizeof low);
    std::memcpy(at + 4, &high, sizeof high);
  }
};

// Elements 7, 5, 3 and 1 of at[0..7] into the lanes of v.
inline __attribute__((always_inline)) void EverySecondDown(const double* at, Doubles4& v) {
  Doubles4 low, high;
  std::memcpy(&low, at, sizeof low);
  std::memcpy(&high, at + 4, sizeof high);
  v = __builtin_shufflevector(low, high, 7, 5, 3, 1);
}

// Samples i, i - 1, ... down to `below` that read their values an octave
// below, four at a time while every one of the four does (its u within the
// underflow and the same to the bit as its source's), the others through
// `sample` one by one as before: the same operations lane by lane, and so
// the same bits. The four sources, 2 i - k0 and every second one below,
// come from one run of eight values, and are read before the four values
// kept are written (in place, at i - 3..i). Returns where the runs
// stopped, short of the lower row's first kept value.
template <bool kCosine, bool kSine, bool kPowerOfTwo, typename Sample>
inline __attribute__((always_inline)) int ReusedRunsBody(int i, int below, int k0, double a, double c0, double dx,
                                                         double s, double q, double w, double* cosine, double* sine,
                                                         const SampleReuse& reuse, Sample& sample) {
  using L = Lanes<Doubles4>;
  const DivideBy<kPowerOfTwo> over(w);
  const Doubles4 lane = {0.0, 1.0, 2.0, 3.0};
  // Lanes i - l, l = 0..3; the source of lane l is 2 i - k0 - 2 l.
  for (; i - 3 >= below; i -= 4) {
    const int lowest = 2 * (i - 3) - k0;
    if (lowest - 1 < 0 || lowest < reuse.from) break;
    const Doubles4 index = static_cast<double>(i) - lane;
    Doubles4 u = (c0 - (a + index * dx)) * s;
    over.InPlace(u);
    const Doubles4 g = kPi * (u * u);
    const Doubles4 source = static_cast<double>(2 * i - k0) - 2.0 * lane;
    Doubles4 sourceU = (c0 - (a + source * dx)) * reuse.scale;
    over.InPlace(sourceU);
    const auto apart = (g > kExpUnderflow) | (sourceU != u);
    if (apart[0] | apart[1] | apart[2] | apart[3]) {
      for (int l = 0; l < 4; ++l) sample(i - l);
      continue;
    }
    // Elements lowest - 1 .. lowest + 6; lane l's source is element 7 - 2 l.
    Doubles4 e, cosValue{}, sinValue{};
    EverySecondDown(reuse.exps + lowest - 1, e);
    if constexpr (kCosine) EverySecondDown(reuse.coss + lowest - 1, cosValue);
    if constexpr (kSine) EverySecondDown(reuse.sins + lowest - 1, sinValue);
    L::Store<true>(reuse.keepExp + i, e);
    if constexpr (kCosine) L::Store<true>(reuse.keepCos + i, cosValue);
    if constexpr (kSine) L::Store<true>(reuse.keepSin + i, sinValue);
    const Doubles4 envelope = e * q;
    if constexpr (kCosine) {
      Doubles4 value = envelope * cosValue;
      over.InPlace(value);
      L::Store<true>(cosine + i, value);
    }
    if constexpr (kSine) {
      Doubles4 value = envelope * sinValue;
      over.InPlace(value);
      L::Store<true>(sine + i, value);
    }
  }
  return i;
}

template <bool kCosine, bool kSine, bool kPowerOfTwo, typename Sample>
__attribute__((target("avx"))) int ReusedRunsWide(int i, int below, int k0, double a, double c0, double dx, double s,
                                                   double q, double w, double* cosine, double* sine,
                                                   const SampleReuse& reuse, Sample& sample) {
  return ReusedRunsBody<kCosine, kSine, kPowerOfTwo>(i, below, k0, a, c0, dx, s, q, w, cosine, sine, reuse, sample);
}

template <bool kCosine, bool kSine, bool kPowerOfTwo, typename Sample>
int ReusedRuns(int i, int below, int k0, double a, double c0, double dx, double s, double q, double w,
               double* cosine, double* sine, const SampleReuse& reuse, Sample& sample) {
  static const bool wide = __builtin_cpu_supports("avx");
  if (wide) return ReusedRunsWide<kCosine, kSine, kPowerOfTwo>(i, below, k0, a, c0, dx, s, q, w, cosine, sine, reuse,
                                                                sample);
  return ReusedRunsBody<kCosine, kSine, kPowerOfTwo>(i, below, k0, a, c0, dx, s, q, w, cosine, sine, reuse, sample);
}

// The Gabor wavelet's parts, the cosine part into `cosine` when kCosine
// and the sine part into `sine` when kSine. Both parts of a sample share
// its envelope exp(-pi u^2) q, and its cosine and sine come from one call
// when both are wanted.
template <bool kCosine, bool kSine, bool kPowerOfTwo>
Tails GaborValuesDividing(int n, double* cosine, double* sine, double a, double c0, double dx, double f, double s,
                         double q, double w, const SampleReuse& reuse) {
  const DivideBy<kPowerOfTwo> over(w);
  const double turn = 2 * kPi * f;
  const int k0 = MirrorIndex(n, a, c0, dx);
  // Past the reach a sample is 0; in the upper tail a mirrored sine sample
  // is its partner's 0 negated.
  const Tails tails = TailsBeyond(n, a, c0, dx, std::sqrt(kExpUnderflow / kPi) * w / s);
  if constexpr (kCosine) {
    std::fill(cosine, cosine + tails.below, 0.0);
    std::fill(cosine + tails.above + 1, cosine + n + 1, 0.0);
  }
  if constexpr (kSine) {
    std::fill(sine, sine + tails.below, 0.0);
    // Samples above the reach up to 2 k0 have their partner at 2 k0 - i,
    // mirrored where its offset is the exact opposite (a test without
    // branches).
    const int last = k0 >= 0 ? std::max(tails.above, std::min(n, 2 * k0)) : tails.above;
    const int known = std::clamp(reuse.mirroredTo, tails.above, last);
    std::fill(sine + tails.above + 1, sine + known + 1, -0.0);
    for (int i = known + 1; i <= last; ++i)
      sine[i] = OffsetOf(2 * k0 - i, a, c0, dx) == -OffsetOf(i, a, c0, dx) ? -0.0 : 0.0;
    std::fill(sine + last + 1, sine + n + 1, 0.0);
  }
  if (reuse.write) *reuse.wroteFrom = tails.below;
  const auto sample = [&](int i) {
    const double offset = OffsetOf(i, a, c0, dx);
    const int j = MirrorOf(i, k0);
    if (j >= 0 && OffsetOf(j, a, c0, dx) == -offset) {
      if constexpr (kCosine) cosine[i] = cosine[j];
      if constexpr (kSine) sine[i] = -sine[j];
      return;
    }
    const double u = over(offset * s);
    const double g = kPi * (u * u);
    if (g > kExpUnderflow) {
      if constexpr (kCosine) cosine[i] = 0.0;
      if constexpr (kSine) sine[i] = 0.0;
      return;
    }
    const int source = reuse.Source(i, k0);
    double e, cosValue = 0.0, sinValue = 0.0;
    if (source >= 0 && over(OffsetOf(source, a, c0, dx) * reuse.scale) == u) {
      e = reuse.exps[source];
      if constexpr (kCosine) cosValue = reuse.coss[source];
      if constexpr (kSine) sinValue = reuse.sins[source];
    } else {
      e = std::exp(-g);
      const double angle = turn * u;
      if constexpr (kCosine) cosValue = std::cos(angle);
      if constexpr (kSine) sinValue = std::sin(angle);
    }
    if (reuse.write && i <= k0) {
      reuse.keepExp[i] = e;
      if constexpr (kCosine) reuse.keepCos[i] = cosValue;
      if constexpr (kSine) reuse.keepSin[i] = sinValue;
    }
    const double envelope = e * q;
    if constexpr (kCosine) cosine[i] = over(envelope * cosValue);
    if constexpr (kSine) sine[i] = over(envelope * sinValue);
  };
  // The samples up to the centre downwards, then those above it (mirrors
  // of samples already made, or computed): a row that keeps its values in
  // the place it reads them from, at index 2 i - k0 <= i, reads each before
  // it is overwritten.
  const int centre = std::clamp(k0, tails.below - 1, tails.above);
  int i = centre;
  if (reuse.read && reuse.write && centre == k0)
    i = ReusedRuns<kCosine, kSine, kPowerOfTwo>(i, tails.below, k0, a, c0, dx, s, q, w, cosine, sine, reuse, sample);
  for (; i >= tails.below; --i) sample(i);
  i = centre + 1;
  if (centre == k0) {
    // Above the centre up to 2 k0 every sample has its partner below; where
    // every one of them mirrors to the bit (a test without branches), they
    // are copied in a plain loop.
    const int last = std::min(tails.above, 2 * k0);
    bool mirrored = last <= reuse.mirroredTo;
    if (!mirrored) {
      mirrored = true;
      for (int m = i; m <= last; ++m) mirrored &= OffsetOf(2 * k0 - m, a, c0, dx) == -OffsetOf(m, a, c0, dx);
    }
    if (mirrored) {
      for (int m = i; m <= last; ++m) {
        if constexpr (kCosine) cosine[m] = cosine[2 * k0 - m];
        if constexpr (kSine) sine[m] = -sine[2 * k0 - m];
      }
      i = last + 1;
    }
  }
  for (; i <= tails.above; ++i) sample(i);
  return tails;
}

// The samples outside the span returned are 0 (of either sign).
template <bool kCosine, bool kSine>
Tails GaborValues(int n, double* cosine, double* sine, double a, double c0, double dx, double f, double s, double q,
                  double w, const SampleReuse& reuse = {}) {
  if (IsPowerOfTwo(w)) return GaborValuesDividing<kCosine, kSine, true>(n, cosine, sine, a, c0, dx, f, s, q, w, reuse);
  return GaborValuesDividing<kCosine, kSine, false>(n, cosine, sine, a, c0, dx, f, s, q, w, reuse);
}

// The samples of a real wavelet's row of scale s, the Gabor parts with the
// values kept an octave below where `reuse` says so.
void SampleRow(int n, double* out, double a, double b, double dx, double f, double s, ScalWavelet type, double w,
               const SampleReuse& reuse) {
  const double c0 = CentreOf(a, b);
  const double q = std::sqrt(s);
  switch (type) {
    case ScalWavelet::MexicanHat: MexicanHatValues(n, out, a, c0, dx, s, q, w); break;
    case ScalWavelet::Haar: HaarValues(n, out, a, c0, dx, s, q, w); break;
    case ScalWavelet::GaborSine: GaborValues<false, true>(n, nullptr, out, a, c0, dx, f, s, q, w, reuse); break;
    case ScalWavelet::GaborCosine:
    case ScalWavelet::GaborComplex: GaborValues<true, false>(n, out, nullptr, a, c0, dx, f, s, q, w, reuse); break;
  }
}

// One row's wavelet spectrum against the signal's, for k = 0..n/2 (the
// inverse reads no more): S[k] += s (Wr^2 + Wi^2), then W = Z W dx.
void MultiplyRow(int n, const double* x, const double* y, double* wr, double* wi, double* sum, double s,
                 double dx) {
  const int h = n / 2;
  for (int k = 0; k <= h; ++k) {
    const double re = wr[k], im = wi[k];
    sum[k] += s * (re * re + im * im);
    const double p = x[k] * re - y[k] * im;
    const double q = x[k] * im + y[k] * re;
    wr[k] = p * dx;
    wi[k] = q * dx;
  }
}

// The inverse transform of a row's product, its halves exchanged on the
// way into `row` (columns 0..n-1); column n is the end entry's product.
void InvertInto(int n, ScalogramWork& work, double* wr, double* wi, double endValue, double* row) {
  fourier::RealInverseFFTSwapped(n, ExponentOf(n) - 6, wr, wi, work.tables.sine.data(), work.tables.tan.data(),
                                 row);
  row[n] = endValue;
}

// The spectrum of row r >= 1 from samples already in wr[0..n], times the
// signal's and dx; the row's end entry, column n, from the end sample.
double RowProduct(int n, double s, double dx, ScalogramWork& work, double* wr, double* wi, double* sum) {
  const double endSample = wr[n];
  fourier::RealFFTLowerHalf(n, wr, wi, work.tables.sine.data(), work.tables.tan.data(), ExponentOf(n) - 1,
                            work.half.data());
  MultiplyRow(n, work.x.data(), work.y.data(), wr, wi, sum, s, dx);
  // At k = n: X[n] = sig[n], Y[n] = 0, and the wavelet's own end entries.
  return work.x[Index(n)] * endSample * dx;
}

// The complex wavelet's parts on a grid mirrored about the middle sample
// h = n/2 are, as the transform reads them (samples 0..n-1, taken round a
// circle), the cosine part even and the sine part odd about h, except for
// the sine part's sample 0, which is its own mirror. Then the transform of
// the cosine part is real and the sine part's is imaginary, apart from that
// sample's constant, and the one real transform of their sum gives both:
// its real part is the cosine part's, its imaginary part the sine part's.
// The rounding of that transform is relative to the sum, so it serves only
// parts of like size: each with at least a sixteenth of the other's energy
// (a part that nearly vanishes, as the sine part does where u steps by a
// half, keeps a transform of its own). `PartsMirrored` checks the samples
// themselves, every pair to the bit, and leaves their sum in `cosine`
// (sample 0 the cosine part's alone); otherwise it leaves the arrays as
// they were and says so. Outside `span` both parts are 0, which mirrors and
// adds to 0, so only the pairs with a sample inside it are looked at.
bool PartsMirrored(int n, double* cosine, const double* sine, Tails span) {
  const int h = n / 2;
  if (n < 4 || sine[h] != 0.0) return false;
  const int reach = std::min(h - 1, std::max(span.above - h, h - span.below));
  bool mirrored = true;
  double even = cosine[0] * cosine[0] + cosine[h] * cosine[h], odd = 0.0;
  for (int j = 1; j <= reach; ++j) {
    const double c = cosine[h + j], d = sine[h + j];
    mirrored &= (c == cosine[h - j]) & (d == -sine[h - j]);
    even += c * c;
    odd += d * d;
  }
  constexpr double kLikeSize = 1.0 / 16;
  // (Written so that a NaN sum fails.)
  if (!mirrored || !(odd >= kLikeSize * even) || !(even >= kLikeSize * odd)) return false;
  for (int i = std::max(1, h - reach); i <= h + reach; ++i) cosine[i] += sine[i];
  return true;
}

// Row r >= 1 from samples already in wr[0..n]: its spectrum, the product,
// the inverse, into `row`.
void WaveletRow(int n, double s, double dx, ScalogramWork& work, double* wr, double* wi, double* sum, double* row) {
  InvertInto(n, work, wr, wi, RowProduct(n, s, dx, work, wr, wi, sum), row);
}

// The rows of both parts from the transform Z[0..h] (h = n/2) of their sum.
// The cosine part's spectrum is (Re Z, 0) and the sine part's (sine0, Im Z),
// sine0 being the sine part's sample 0; each goes into its accumulator as
// s (Wr^2 + Wi^2), and against the signal's spectrum times dx, F = Z W dx,
// as in MultiplyRow. The inverses then go the usual way for a real
// signal: the half spectrum F[0..h] folded into the h-point sequence
//   G[k] = F[k] + F[k + h] + i e^(-2 pi i k/n) (F[k] - F[k + h]),
// F[k + h] being conj F[h - k], whose transform with the negative exponent
// is z[m] = x[2m] + i x[2m + 1], x the sums RealInverseFFT makes. Each pair
// k, h - k folds together. The complex transform's exponent is positive,
// so it is handed conj G and its output is conjugated (MirroredRowOut).
// The sums are RealInverseFFT's, rounded along another path.
//
// The folded sequences go out as interleaved pairs, conj G[k] to
// cosPairs[2k], cosPairs[2k + 1] for the cosine part and to sinPairs for
// the sine part, which the transform's permutation reads as they are
// (HalfLengthComplexFFTOfPairs). The pairs k, h - k go four at a time, k
// upwards in the lanes of vectors and h - k downwards: the same operations
// lane by lane as one pair at a time.
struct FoldRows {
  const double* x;
  const double* y;
  const double* zr;
  const double* zi;
  double* cosPairs;
  double* sinPairs;
  double* sum;
  double* sum2;
  const double* sine;
  double s, dx, sine0;
};

// The accumulators and both parts' products at the lanes of index k.
template <typename V, bool kDown>
inline __attribute__((always_inline)) void FoldSpectra(const FoldRows& f, int k, V& cr, V& ci, V& sr, V& si) {
  using L = Lanes<V>;
  V even, odd, x, y, sum, sum2;
  L::template Load<kDown>(f.zr + k, even);
  L::template Load<kDown>(f.zi + k, odd);
  L::template Load<kDown>(f.x + k, x);
  L::template Load<kDown>(f.y + k, y);
  L::template Load<kDown>(f.sum + k, sum);
  L::template Load<kDown>(f.sum2 + k, sum2);
  sum += f.s * (even * even);
  sum2 += f.s * (f.sine0 * f.sine0 + odd * odd);
  L::template Store<kDown>(f.sum + k, sum);
  L::template Store<kDown>(f.sum2 + k, sum2);
  cr = x * even * f.dx;
  ci = y * even * f.dx;
  sr = (x * f.sine0 - y * odd) * f.dx;
  si = (x * odd + y * f.sine0) * f.dx;
}

// conj G at k and at h - k from A = F[k] and F[h - k] (fr, fi); (c, sn) =
// (cos, sin)(2 pi k / n).
template <typename V>
inline __attribute__((always_inline)) void FoldPairInto(const V& ar, const V& ai, const V& fr, const V& fi,
                                                        const V& c, const V& sn, V& re, V& im, V& reMirror,
                                                        V& imMirror) {
  const V br = fr, bi = -fi;
  const V sr = ar + br, si = ai + bi, dr = ar - br, di = ai - bi;
  const V er = c * dr + sn * di, ei = c * di - sn * dr;  // e^(-2 pi i k/n) (A - B)
  re = sr - ei;
  im = -(si + er);
  reMirror = sr + ei;
  imMirror = si - er;
}

template <typename V>
inline __attribute__((always_inline)) void FoldLanesAt(const FoldRows& f, int h, int q, int k) {
  using L = Lanes<V>;
  V ckr, cki, skr, ski, cjr, cji, sjr, sji, c, sn;
  FoldSpectra<V, false>(f, k, ckr, cki, skr, ski);
  FoldSpectra<V, true>(f, h - k, cjr, cji, sjr, sji);
  L::template Load<true>(f.sine + q - k, c);
  L::template Load<false>(f.sine + k, sn);
  V re, im, reMirror, imMirror;
  FoldPairInto(ckr, cki, cjr, cji, c, sn, re, im, reMirror, imMirror);
  L::template StorePairs<false>(f.cosPairs, k, re, im);
  L::template StorePairs<true>(f.cosPairs, h - k, reMirror, imMirror);
  FoldPairInto(skr, ski, sjr, sji, c, sn, re, im, reMirror, imMirror);
  L::template StorePairs<false>(f.sinPairs, k, re, im);
  L::template StorePairs<true>(f.sinPairs, h - k, reMirror, imMirror);
}

inline __attribute__((always_inline)) void FoldMirroredRowsBody(int n, const FoldRows& rows) {
  const FoldRows f = rows;  // a copy no store through the arrays can reach
  const int h = n / 2, q = n / 4;
  double c0r, c0i, s0r, s0i, chr, chi, shr, shi;
  FoldSpectra<double, false>(f, 0, c0r, c0i, s0r, s0i);
  FoldSpectra<double, false>(f, h, chr, chi, shr, shi);
  // k = 0 pairs with h, both real.
  Lanes<double>::StorePairs<false>(f.cosPairs, 0, c0r + chr, -(c0r - chr));
  Lanes<double>::StorePairs<false>(f.sinPairs, 0, s0r + shr, -(s0r - shr));
  int k = 1;
  for (; k + 3 < q; k += 4) FoldLanesAt<Doubles4>(f, h, q, k);
  for (; k < q; ++k) FoldLanesAt<double>(f, h, q, k);
  // k = h/2 is its own partner: G = 2 F there.
  double cqr, cqi, sqr, sqi;
  FoldSpectra<double, false>(f, q, cqr, cqi, sqr, sqi);
  Lanes<double>::StorePairs<false>(f.cosPairs, q, 2 * cqr, -(2 * cqi));
  Lanes<double>::StorePairs<false>(f.sinPairs, q, 2 * sqr, -(2 * sqi));
}

__attribute__((target("avx"))) void FoldMirroredRowsWide(int n, const FoldRows& rows) {
  FoldMirroredRowsBody(n, rows);
}

void FoldMirroredRows(int n, const FoldRows& rows) {
  static const bool wide = __builtin_cpu_supports("avx");
  if (wide) FoldMirroredRowsWide(n, rows);
  else FoldMirroredRowsBody(n, rows);
}

// Row columns 0..n-1 from the transform R of conj G: x[2m] = Re R[m],
// x[2m + 1] = -Im R[m], with the halves exchanged, row[j] = x[(j + h) mod n].
// The rows, 512 KiB each at 65536 points and not read again while the
// scalogram is computed, go straight to memory past the caches (stores
// that do not first fetch the lines they fill); the fence puts them in
// order before anything the caller stores after.
void MirroredRowOut(int n, const double* __restrict__ re, const double* __restrict__ im, double* __restrict__ row) {
  const int h = n / 2, q = n / 4;
  const auto put = [](double* at, double v) {
    _mm_stream_si64(reinterpret_cast<long long*>(at), std::bit_cast<long long>(v));
  };
  for (int m = 0; m < q; ++m) {
    put(row + 2 * m, re[m + q]);
    put(row + 2 * m + 1, -im[m + q]);
  }
  for (int m = 0; m < q; ++m) {
    put(row + h + 2 * m, re[m]);
    put(row + h + 2 * m + 1, -im[m]);
  }
  _mm_sfence();
}

// Rows r of both parts, from the cosine part's samples in wr[0..n] and the
// sine part's in wr2[0..n]: one transform of their sum when the grid's
// centre is its middle sample and PartsMirrored allows it, one each
// otherwise.
void ComplexRows(int n, double s, double dx, ScalogramWork& work, bool middleCentre, Tails span, double* realRow,
                 double* imagRow) {
  double* wr = work.wr.data();
  double* wr2 = work.wr2.data();
  const double signalEnd = work.x[Index(n)];
  const double realEnd = signalEnd * wr[n] * dx, imagEnd = signalEnd * wr2[n] * dx;
  if (middleCentre && n >= 16 && PartsMirrored(n, wr, wr2, span)) {
    fourier::RealFFTLowerHalf(n, wr, work.wi.data(), work.tables.sine.data(), work.tables.tan.data(),
                              ExponentOf(n) - 1, work.half.data());
    // The pairs of the cosine part to wr2 and of the sine part to wi2; the
    // transforms to (wr, wi), free once folded, and to (wr2, half), free
    // once the cosine part's transform has read them.
    double* wi = work.wi.data();
    double* wi2 = work.wi2.data();
    double* half = work.half.data();
    FoldMirroredRows(n, FoldRows{work.x.data(), work.y.data(), wr, wi, wr2, wi2, work.sum.data(), work.sum2.data(),
                                 work.tables.sine.data(), s, dx, wr2[0]});
    const double* sine = work.tables.sine.data();
    const double* tan = work.tables.tan.data();
    fourier::HalfLengthComplexFFTOfPairs(wr2, wr, wi, sine, tan, n / 2, ExponentOf(n) - 1);
    fourier::HalfLengthComplexFFTOfPairs(wi2, wr2, half, sine, tan, n / 2, ExponentOf(n) - 1);
    MirroredRowOut(n, wr, wi, realRow);
    MirroredRowOut(n, wr2, half, imagRow);
  } else {
    RowProduct(n, s, dx, work, wr, work.wi.data(), work.sum.data());
    RowProduct(n, s, dx, work, wr2, work.wi2.data(), work.sum2.data());
    // The two inverses side by side, each with the bits of its own.
    fourier::RealInverseFFTSwappedPair(n, ExponentOf(n) - 6, wr, work.wi.data(), realRow, wr2, work.wi2.data(),
                                       imagRow, work.tables.sine.data(), work.tables.tan.data());
  }
  realRow[n] = realEnd;
  imagRow[n] = imagEnd;
}

// Row 0: the low-pass spectrum phi from the accumulator, real, in the
// place of a wavelet's spectrum.
void LowPassRow(int n, double dx, ScalogramWork& work, const double* sum, double* row) {
  double* phi = work.phi.data();
  CreateScaleTransform(n, FMAXWI(n, sum), phi, sum);
  double* wr = work.wr.data();
  double* wi = work.wi.data();
  const double* x = work.x.data();
  const double* y = work.y.data();
  for (int k = 0; k <= n / 2; ++k) {
    wr[k] = x[k] * phi[k] * dx;
    wi[k] = y[k] * phi[k] * dx;
  }
  InvertInto(n, work, wr, wi, x[n] * phi[n] * dx, row);
}

// The matrices of a shape; `re` always, `im` for the complex wavelet.
void SizeResult(const ScalogramShape& shape, bool complex, Scalogram& result) {
  const std::size_t cells = shape.Cells();
  if (result.shape != shape || result.re.size() != cells) {
    result.re = std::vector<double>();
    result.re.resize(cells, 0.0);
  }
  if (complex && result.im.size() != cells) {
    result.im = std::vector<double>();
    result.im.resize(cells, 0.0);
  }
  result.shape = shape;
  result.complex = complex;
}

bool AskToStop(int r, const ScalogramRowCallback& onRow) {
  return r % 4 == 0 && onRow && onRow(r) == ScalogramProgress::Stop;
}

double DxOf(const ScalogramSetup& setup, int n) { return (setup.b - setup.a) / n; }

template <typename Create>
ScalogramStatus ComputeWith(const double* sig, int n, const ScalogramSetup& setup, bool complex, Scalogram& result,
                            Create create) {
  try {
    std::shared_ptr<ScalogramWork>& work = result.workSlot.work;
    if (!work || work->n != n) {
      work.reset();
      work = std::make_shared<ScalogramWork>(n);
    }
    work->SetSignal(sig);
    SizeResult(ScalogramShape::Of(n, setup.octaves, setup.voices), complex, result);
    return create(*work);
  } catch (const std::bad_alloc&) {
    result = Scalogram();
    return ScalogramStatus::NoMemory;
  }
}

}  // namespace

std::span<const std::string_view> ScalWaveletLabels() { return kLabels; }

bool ScalWaveletOfLabel(std::string_view label, ScalWavelet& wavelet) {
  if (label.empty() || label[0] < '1' || label[0] > '5') return false;
  if (label.size() > 1 && label[1] >= '0' && label[1] <= '9') return false;
  wavelet = static_cast<ScalWavelet>(label[0] - '0');
  return true;
}

ScalogramProblem CheckScalogramParameters(int octaves, int voices, double width, double freq, ScalWavelet wavelet) {
  if (octaves < 1) return {kOctavesTooFew, ScalogramField::Octaves};
  if (octaves > kMostOctaves) return {kOctavesTooMany, ScalogramField::Octaves};
  if (voices < 1) return {kVoicesTooFew, ScalogramField::Voices};
  if (static_cast<long long>(octaves) * voices > kMostOctaves) return {kTooManyVoices, ScalogramField::Voices};
  if (!(width > 0.0)) return {kWidthNotPositive, ScalogramField::Width};
  if (static_cast<int>(wavelet) > 2 && !(freq > 0.0)) return {kFreqNotPositive, ScalogramField::Freq};
  return {};
}

double ScaleOfRow(int r, int voices) { return std::pow(2.0, static_cast<double>(r - 1) / voices); }

void RealWaveletValues(int n, double* out, double a, double b, double dx, double f, int r, int v, ScalWavelet type,
                       double w) {
  SampleRow(n, out, a, b, dx, f, ScaleOfRow(r, v), type, w, {});
}

void ComplexWaveletValues(int n, double* out, double a, double b, double dx, double f, int r, int v, double w,
                          WaveletPart part) {
  RealWaveletValues(n, out, a, b, dx, f, r, v,
                    part == WaveletPart::Cosine ? ScalWavelet::GaborCosine : ScalWavelet::GaborSine, w);
}

double FMAXWI(int n, const double* S) {
  double largest = 0.0;
  for (int i = 10; i <= n / 8; ++i) largest = std::max(largest, std::fabs(S[i]));
  return largest;
}

void CreateScaleTransform(int n, double c, double* phi, const double* S) {
  std::fill(phi, phi + n + 1, 0.0);
  for (int k = 0; k <= n / 2; ++k) {
    const double e = c - S[k];
    if (e < 0.001 * c) break;
    phi[k] = phi[n - k] = std::sqrt(std::fabs(e));
  }
}

namespace {

// The distance between the starts of two arrays of the block: their n + 5
// elements rounded up to whole pages of 512 values, and 432 values more.
// The seven arrays then start at offsets within their pages 640 bytes or
// more apart (0, 3456, 2816, 2176, 1536, 896, 256): the kernels walk them at
// the same indices, and arrays that start at nearly the same offset have
// the loads from one wait on the stores to the other, which the processor
// first matches by the address bits within a page.
std::size_t ArrayStride(int n) { return (Index(n) + 5 + 511) / 512 * 512 + 432; }

// The most values of each kind the rows of an octave keep (16 MiB each);
// past it, and on a grid without a centre sample, every row computes its
// own.
constexpr std::size_t kOctaveSamplesMost = std::size_t{1} << 21;

// Room for an octave's values, or false when there is none to be had (the
// rows then compute their own).
bool PrepareOctaveSamples(ScalogramWork& work, int voices, int k0, bool cosine, bool sine) {
  if (k0 < 0) return false;
  const std::size_t count = static_cast<std::size_t>(voices) * (Index(k0) + 1);
  if (count > kOctaveSamplesMost) return false;
  try {
    if (work.octaveExp.size() < count) work.octaveExp.resize(count);
    if (cosine && work.octaveCos.size() < count) work.octaveCos.resize(count);
    if (sine && work.octaveSin.size() < count) work.octaveSin.resize(count);
    if (work.octaveFrom.size() < Index(voices)) work.octaveFrom.resize(Index(voices));
  } catch (const std::bad_alloc&) {
    return false;
  }
  return true;
}

// Row r's part in the kept values (see SampleReuse): every row keeps its
// own in the place of its voice, where the row an octave below kept its
// values, and reads those first when its scale is twice that row's to the
// bit.
SampleReuse ReuseFor(ScalogramWork& work, bool prepared, int voices, int k0, int mirroredTo, int r) {
  SampleReuse reuse;
  reuse.mirroredTo = mirroredTo;
  if (!prepared) return reuse;
  const std::size_t voice = Index((r - 1) % voices);
  const std::size_t at = voice * (Index(k0) + 1);
  const auto part = [&](std::vector<double>& values) { return values.empty() ? nullptr : values.data() + at; };
  reuse.write = true;
  reuse.keepExp = part(work.octaveExp);
  reuse.keepCos = part(work.octaveCos);
  reuse.keepSin = part(work.octaveSin);
  reuse.wroteFrom = &work.octaveFrom[voice];
  if (r > voices) {
    const double below = ScaleOfRow(r - voices, voices);
    if (ScaleOfRow(r, voices) == 2 * below) {
      reuse.read = true;
      reuse.exps = reuse.keepExp;
      reuse.coss = reuse.keepCos;
      reuse.sins = reuse.keepSin;
      reuse.from = work.octaveFrom[voice];
      reuse.scale = below;
    }
  }
  return reuse;
}

}  // namespace

ScalogramWork::ScalogramWork(int size)
    : n(size),
      tables(size),
      block(7 * ArrayStride(size), 0.0),
      sum(Index(size) + 1, 0.0),
      sum2(Index(size) + 1, 0.0),
      phi(Index(size) + 1, 0.0) {
  const std::size_t stride = ArrayStride(size), length = Index(size) + 5;
  std::span<double>* const arrays[] = {&x, &y, &wr, &wi, &wr2, &wi2, &half};
  for (std::size_t i = 0; i < 7; ++i) *arrays[i] = std::span<double>(block.data() + i * stride, length);
}

ScalogramWork::ScalogramWork(const double* sig, int size) : ScalogramWork(size) { SetSignal(sig); }

void ScalogramWork::SetSignal(const double* sig) {
  std::copy(sig, sig + n + 1, x.begin());
  // Only the lower half of the spectrum is read.
  fourier::RealFFTLowerHalf(n, x.data(), y.data(), tables.sine.data(), tables.tan.data(), tables.m - 1);
  // The transform reads sig[0..n-1]; the end entries are the sample and 0.
  x[Index(n)] = sig[n];
  y[Index(n)] = 0.0;
}

ScalogramStatus CreateTheRealScalogram(const ScalogramSetup& setup, ScalogramWork& work,
                                       const ScalogramRowCallback& onRow, Scalogram& result) {
  const int n = work.n;
  const double dx = DxOf(setup, n);
  std::fill(work.sum.begin(), work.sum.end(), 0.0);
  const int k0 = MirrorIndex(n, setup.a, CentreOf(setup.a, setup.b), dx);
  const bool sines = setup.wavelet == ScalWavelet::GaborSine;
  const bool cosines = setup.wavelet == ScalWavelet::GaborCosine || setup.wavelet == ScalWavelet::GaborComplex;
  // (The Mexican hat's exp costs less than finding a sample's partner.)
  const bool prepared = (cosines || sines) && PrepareOctaveSamples(work, setup.voices, k0, cosines, sines);
  const int mirroredTo = MirroredTo(n, setup.a, CentreOf(setup.a, setup.b), dx, k0);
  for (int r = 1; r <= result.shape.nscales; ++r) {
    const double s = ScaleOfRow(r, setup.voices);
    SampleRow(n, work.wr.data(), setup.a, setup.b, dx, setup.freq, s, setup.wavelet, setup.width,
              ReuseFor(work, prepared, setup.voices, k0, mirroredTo, r));
    WaveletRow(n, s, dx, work, work.wr.data(), work.wi.data(), work.sum.data(), result.RealRow(r).data());
    if (AskToStop(r, onRow)) return ScalogramStatus::Stopped;
  }
  LowPassRow(n, dx, work, work.sum.data(), result.RealRow(0).data());
  return ScalogramStatus::Done;
}

// The cosine and sine passes go row by row together: each row's two parts
// share their envelope, and each pass keeps its own accumulator, so the
// rows are those of two passes one after the other.
ScalogramStatus CreateTheComplexScalogram(const ScalogramSetup& setup, ScalogramWork& work,
                                          const ScalogramRowCallback& onRow, Scalogram& result) {
  const int n = work.n;
  const double dx = DxOf(setup, n);
  std::fill(work.sum.begin(), work.sum.end(), 0.0);
  std::fill(work.sum2.begin(), work.sum2.end(), 0.0);
  const double c0 = CentreOf(setup.a, setup.b);
  const int k0 = MirrorIndex(n, setup.a, c0, dx);
  const bool prepared = PrepareOctaveSamples(work, setup.voices, k0, true, true);
  const int mirroredTo = MirroredTo(n, setup.a, c0, dx, k0);
  for (int r = 1; r <= result.shape.nscales; ++r) {
    const double s = ScaleOfRow(r, setup.voices);
    const SampleReuse reuse = ReuseFor(work, prepared, setup.voices, k0, mirroredTo, r);
    const Tails span = GaborValues<true, true>(n, work.wr.data(), work.wr2.data(), setup.a, c0, dx, setup.freq, s,
                                               std::sqrt(s), setup.width, reuse);
    ComplexRows(n, s, dx, work, k0 == n / 2, span, result.RealRow(r).data(), result.ImagRow(r).data());
    if (AskToStop(r, onRow)) return ScalogramStatus::Stopped;
  }
  LowPassRow(n, dx, work, work.sum.data(), result.RealRow(0).data());
  LowPassRow(n, dx, work, work.sum2.data(), result.ImagRow(0).data());
  return ScalogramStatus::Done;
}

ScalogramStatus ComputeRealScalogram(const double* sig, int n, const ScalogramSetup& setup,
                                     const ScalogramRowCallback& onRow, Scalogram& result) {
  return ComputeWith(sig, n, setup, false, result,
                     [&](ScalogramWork& work) { return CreateTheRealScalogram(setup, work, onRow, result); });
}

ScalogramStatus ComputeComplexScalogram(const double* sig, int n, const ScalogramSetup& setup,
                                        const ScalogramRowCallback& onRow, Scalogram& result) {
  return ComputeWith(sig, n, setup, true, result,
                     [&](ScalogramWork& work) { return CreateTheComplexScalogram(setup, work, onRow, result); });
}

}  // namespace keldo::wavelet
