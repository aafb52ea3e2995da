#include "wavelet/transforms.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "wavelet/filter_tables.h"
#include "wavelet/lanes.h"

namespace keldo::wavelet {
namespace {

FilterBank FromLowPass(std::vector<double> h) {
  FilterBank bank;
  bank.lh = static_cast<int>(h.size()) - 1;
  bank.g.resize(h.size());
  for (int k = 0; k <= bank.lh; ++k)
    bank.g[static_cast<std::size_t>(k)] = ((k & 1) ? -1.0 : 1.0) * h[static_cast<std::size_t>(bank.lh - k)];
  bank.h = std::move(h);
  return bank;
}

// Scratch for one transform: buffers kept by the thread and grown when a
// larger transform needs them, so that a transform touches no fresh memory.
// Every value is written before it is read. The lifting copy has room from
// -21 to n + 21.
struct Scratch {
  Scratch(int n, bool lifting) {
    thread_local std::vector<double> w, e;
    const std::size_t size = static_cast<std::size_t>(n) + 43;
    if (w.size() < size) w.resize(size);
    if (lifting && e.size() < size) e.resize(size);
    w_ = w.data();
    e_ = lifting ? e.data() + 21 : nullptr;
  }
  double* W() { return w_; }
  double* E() { return e_; }

 private:
  double* w_;
  double* e_;
};

bool IsLifting(int code) { return code >= 100; }

void LevelToHalves(int n, int lh, double* x, double* w, const double* h, const double* g);
void LevelFromHalves(int n, int lh, double* x, double* w, const double* a, const double* b);

// The level of a lifting scheme, or the rotated filter bank of a coiflet.
void CoifletLevel(int code, const FilterBank& bank, int n, double* x, Scratch& s) {
  if (IsLifting(code)) {
    SymmWavTr(n, 6, s.E(), x, code);
  } else {
    COIFPerm(n, x, s.W(), 2 * code);
    LevelToHalves(n, bank.lh, x, s.W(), bank.h.data(), bank.g.data());
    return;
  }
  Perm(n, x, s.W());
}

void InverseCoifletLevel(int code, const FilterBank& bank, const std::vector<double>& a, const std::vector<double>& b,
                         int n, double* x, Scratch& s) {
  if (IsLifting(code)) {
    INVPERM(n, x, s.W());
    InvSymmWavTr(n, 6, s.E(), x, code);
  } else {
    LevelFromHalves(n, bank.lh, x, s.W(), a.data(), b.data());
    InvCOIFPerm(n, x, s.W(), 2 * code);
  }
}

}  // namespace

FilterBank DaubechiesFilters(int code, bool symmetric) {
  if (code == -1) {
    const double c = std::sqrt(2.0) / 2;
    return FromLowPass({c, c});
  }
  if (code >= 1 && symmetric) {
    const auto& rows = SymmetricRows();
    if (code - 3 < 0 || code - 3 >= static_cast<int>(rows.size())) return FromLowPass({0.0});
    std::vector<double> h = rows[static_cast<std::size_t>(code - 3)];
    for (double& v : h) v *= std::sqrt(2.0) / 2;
    return FromLowPass(std::move(h));
  }
  const auto& rows = DaubechiesRows();
  if (code < 1 || code > static_cast<int>(rows.size())) return FromLowPass({0.0});
  return FromLowPass(rows[static_cast<std::size_t>(code - 1)]);
}

FilterBank CoifletFilters(int code) {
  if (code == 1) {
    const double r = std::sqrt(7.0), d = 16 * std::sqrt(2.0);
    return FromLowPass({(1 - r) / d, (5 + r) / d, (14 + 2 * r) / d, (14 - 2 * r) / d, (1 - r) / d, (r - 3) / d});
  }
  const auto& rows = CoifletRows();
  if (code < 2 || code - 2 >= static_cast<int>(rows.size())) return FromLowPass({0.0});
  return FromLowPass(rows[static_cast<std::size_t>(code - 2)]);
}

void GetInvWCoeff(const FilterBank& bank, std::vector<double>& a, std::vector<double>& b) {
  const int lh = bank.lh;
  a.assign(static_cast<std::size_t>(lh) + 1, 0.0);
  b.assign(static_cast<std::size_t>(lh) + 1, 0.0);
  for (int m = 0; m <= (lh - 1) / 2; ++m) {
    const std::size_t e = static_cast<std::size_t>(2 * m);
    a[e] = bank.h[static_cast<std::size_t>(lh - 1 - 2 * m)];
    a[e + 1] = bank.g[static_cast<std::size_t>(lh - 1 - 2 * m)];
    b[e] = bank.h[static_cast<std::size_t>(lh - 2 * m)];
    b[e + 1] = bank.g[static_cast<std::size_t>(lh - 2 * m)];
  }
}

void GetInvCOIFCoeff(const FilterBank& bank, std::vector<double>& a, std::vector<double>& b) { GetInvWCoeff(bank, a, b); }

namespace {

typedef double Pair __attribute__((vector_size(16)));

// Outputs that run without wrap-around are formed tap by tap over a run of
// positions: for each position the products are still added in the order of
// j, so every sum is the same to the last bit. out[2k] and out[2k + 1] take
// the low- and high-pass sums over in[2k + j], k = 0 .. count-1.
constexpr int kRun = 512;

void TapByTap(int count, int lh, const double* in, double* out, const double* lo, const double* hi) {
  for (int start = 0; start < count; start += kRun) {
    const int end = std::min(count, start + kRun);
    for (int k = start; k < end; ++k) out[2 * k] = out[2 * k + 1] = 0.0;
    for (int j = 0; j <= lh; ++j) {
      const Pair taps = {lo[j], hi[j]};
      for (int k = start; k < end; ++k) {
        Pair sum;
        std::memcpy(&sum, out + 2 * k, sizeof sum);
        const double v = in[2 * k + j];
        sum += taps * Pair{v, v};
        std::memcpy(out + 2 * k, &sum, sizeof sum);
      }
    }
  }
}

// The low- and high-pass sums of one level over in[0..n-1], handed to
// store(k, a, d) for the output pair k = 0 .. n/2 - 1. Positions that never
// wrap go tap by tap; the last ones wrap round as often as the filter needs.
template <typename Store>
void ForwardSums(int n, int lh, const double* in, const double* h, const double* g, Store store) {
  const int clean = n - lh > 0 ? (n - lh + 1) / 2 : 0;
  double acc[2 * kRun];
  for (int start = 0; start < clean; start += kRun) {
    const int count = std::min(clean - start, kRun);
    TapByTap(count, lh, in + 2 * start, acc, h, g);
    for (int k = 0; k < count; ++k) store(start + k, acc[2 * k], acc[2 * k + 1]);
  }
  for (int i = 2 * clean; i < n; i += 2) {
    double a = 0.0, d = 0.0;
    int p = i;
    for (int j = 0; j <= lh; ++j) {
      a += h[j] * in[p];
      d += g[j] * in[p];
      if (++p == n) p = 0;
    }
    store(i / 2, a, d);
  }
}

// The inverse filters over interleaved in[0..n-1] into out[0..n-1]. Round
// r starts at p (wrapping below 0 to n - 2) and writes out[t - 1], out[t]
// with t = n - 1 - 2r; the rounds with p + lh <= n - 1 read without wrap and
// go tap by tap.
void InverseSums(int n, int lh, const double* in, double* out, const double* a, const double* b) {
  const bool shortFilter = lh < n;
  const int clean = shortFilter ? (n - 1 - lh) / 2 + 1 : 0;
  if (clean > 0) TapByTap(clean, lh, in, out + lh - 1, a, b);
  int p = std::abs(n - 1 - (lh % n));
  int t = n - 1;
  for (int round = 0; round < n / 2; ++round) {
    if (!(shortFilter && p + lh <= n - 1)) {
      double s1 = 0.0, s2 = 0.0;
      int q = p;
      for (int j = 0; j <= lh; ++j) {
        s1 += a[j] * in[q];
        s2 += b[j] * in[q];
        if (++q == n) q = 0;
      }
      out[t - 1] = s1;
      out[t] = s2;
    }
    t -= 2;
    if (p == 0) p = n;
    p -= 2;
  }
}

// Vectors of doubles for the filter sums. Each lane is multiplied and added
// on its own (no fused multiply-add is formed here), so every width gives
// the same bits as the plain loop.
typedef double Doubles2 __attribute__((vector_size(16)));
typedef double Doubles4 __attribute__((vector_size(32)));
typedef double Doubles8 __attribute__((vector_size(64)));

// lo[k] and hi[k], k = 0 .. half-1, the sums over j = 0 .. lh of h[j] and
// g[j] times input 2k + j, where input 2i is e[i] and input 2i + 1 is o[i]
// (both readable up to index half - 1 + lh / 2). The products are added in
// the order of j to a sum that starts at 0.0, as the scalar loop does.
template <typename V>
__attribute__((always_inline)) inline void SumsOfHalves(int half, int lh, const double* e, const double* o,
                                                        const double* h, const double* g, double* lo, double* hi) {
  constexpr int kLanes = sizeof(V) / sizeof(double);
  int k = 0;
  for (; k + kLanes <= half; k += kLanes) {
    V a = {}, d = {};
    for (int j = 0; j <= lh; ++j) {
      V v;
      std::memcpy(&v, ((j & 1) ? o : e) + (j >> 1) + k, sizeof v);
      a = a + h[j] * v;
      d = d + g[j] * v;
    }
    std::memcpy(lo + k, &a, sizeof a);
    std::memcpy(hi + k, &d, sizeof d);
  }
  for (; k < half; ++k) {
    double a = 0.0, d = 0.0;
    for (int j = 0; j <= lh; ++j) {
      const double v = ((j & 1) ? o : e)[(j >> 1) + k];
      a += h[j] * v;
      d += g[j] * v;
    }
    lo[k] = a;
    hi[k] = d;
  }
}

__attribute__((target("avx512f"))) void SumsOfHalvesMany(int half, int lh, const double* e, const double* o,
                                                         const double* h, const double* g, double* lo, double* hi) {
  SumsOfHalves<Doubles8>(half, lh, e, o, h, g, lo, hi);
}

__attribute__((target("avx"))) void SumsOfHalvesWide(int half, int lh, const double* e, const double* o,
                                                     const double* h, const double* g, double* lo, double* hi) {
  SumsOfHalves<Doubles4>(half, lh, e, o, h, g, lo, hi);
}

// The widest vectors the processor has; KELDO_NO_AVX512 (any value) keeps to
// four lanes, as the Fourier kernels do.
void SumsOfHalvesBest(int half, int lh, const double* e, const double* o, const double* h, const double* g,
                      double* lo, double* hi) {
  static const bool many = __builtin_cpu_supports("avx512f") && std::getenv("KELDO_NO_AVX512") == nullptr;
  static const bool wide = __builtin_cpu_supports("avx");
  if (many) SumsOfHalvesMany(half, lh, e, o, h, g, lo, hi);
  else if (wide) SumsOfHalvesWide(half, lh, e, o, h, g, lo, hi);
  else SumsOfHalves<Doubles2>(half, lh, e, o, h, g, lo, hi);
}

// WavTr followed by Perm, with the values put straight into their halves:
// the same numbers in the same places. The input is first split into its
// even and odd values, each followed by as many of its first values again
// as the filter reaches past the end (wrapping round as often as needed),
// so that every sum then reads straight along memory with no wrap test.
// w needs room for n + 2 (lh / 2 + 1) values.
void LevelToHalves(int n, int lh, double* x, double* w, const double* h, const double* g) {
  const int half = n / 2;
  const int reach = lh / 2 + 1;
  double* e = w;
  double* o = w + half + reach;
  for (int i = 0; i < half; ++i) {
    e[i] = x[2 * i];
    o[i] = x[2 * i + 1];
  }
  for (int i = half; i < half + reach; ++i) {
    e[i] = e[i % half];
    o[i] = o[i % half];
  }
  SumsOfHalvesBest(half, lh, e, o, h, g, x, x + half);
}

// INVPERM followed by InvWavTr: the halves interleaved into w, then the
// inverse filters from w straight into x.
void LevelFromHalves(int n, int lh, double* x, double* w, const double* a, const double* b) {
  const int half = n / 2;
  for (int i = 0; i < half; ++i) {
    w[2 * i] = x[i];
    w[2 * i + 1] = x[half + i];
  }
  InverseSums(n, lh, w, x, a, b);
}

}  // namespace

void WavTr(int n, int lh, double* x, double* w, const double* h, const double* g) {
  ForwardSums(n, lh, x, h, g, [&](int k, double a, double d) {
    w[2 * k] = a;
    w[2 * k + 1] = d;
  });
  for (int i = 0; i < n; ++i) x[i] = w[i];
}

void InvWavTr(int n, int lh, double* x, double* w, const double* a, const double* b) {
  InverseSums(n, lh, x, w, a, b);
  for (int i = 0; i < n; ++i) x[i] = w[i];
}

namespace {

template <typename E>
void PermLine(int n, E* x, E* w) {
  const int h = n / 2;
  for (int i = 1; i <= h; ++i) w[i - 1] = x[2 * i - 1];
  for (int i = 2; i <= h; ++i) x[i - 1] = x[2 * (i - 1)];
  for (int i = 1; i <= h; ++i) x[h - 1 + i] = w[i - 1];
}

template <typename E>
void InvPermLine(int n, E* x, E* w) {
  const int h = n / 2;
  for (int i = 1; i <= h; ++i) w[i - 1] = x[h - 1 + i];
  for (int i = h; i >= 2; --i) x[2 * (i - 1)] = x[i - 1];
  for (int i = 1; i <= h; ++i) x[2 * i - 1] = w[i - 1];
}

}  // namespace

void Perm(int n, double* x, double* w) { PermLine(n, x, w); }
void Perm(int n, Lanes8* x, Lanes8* w) { PermLine(n, x, w); }
void INVPERM(int n, double* x, double* w) { InvPermLine(n, x, w); }
void INVPERM(int n, Lanes8* x, Lanes8* w) { InvPermLine(n, x, w); }

void COIFPerm(int n, double* x, double* w, int shift) {
  const int s = shift % n;
  if (s == 0) return;
  // The last s values wrap round to the front.
  for (int j = 0; j < s; ++j) w[j] = x[n - s + j];
  for (int j = n - 1; j >= s; --j) x[j] = x[j - s];
  for (int j = 0; j < s; ++j) x[j] = w[j];
}

void InvCOIFPerm(int n, double* x, double* w, int shift) {
  const int s = shift % n;
  if (s != 0) COIFPerm(n, x, w, n - s);
}

void DAUBGEN(int code, bool symmetric, int n, double* x, int levels) {
  const FilterBank bank = DaubechiesFilters(code, symmetric);
  Scratch s(n, false);
  for (int level = 0, size = n; level < levels; ++level, size /= 2)
    LevelToHalves(size, bank.lh, x, s.W(), bank.h.data(), bank.g.data());
}

void INVDAUBGEN(int code, bool symmetric, int n, double* x, int m, int levels) {
  const FilterBank bank = DaubechiesFilters(code, symmetric);
  std::vector<double> a, b;
  GetInvWCoeff(bank, a, b);
  Scratch s(n, false);
  for (int level = 0, size = 1 << (m - levels + 1); level < levels; ++level, size *= 2)
    LevelFromHalves(size, bank.lh, x, s.W(), a.data(), b.data());
}

void CoifletTR(int code, int n, double* x, int levels) {
  const FilterBank bank = IsLifting(code) ? FilterBank{} : CoifletFilters(code);
  Scratch s(n, IsLifting(code));
  for (int level = 0, size = n; level < levels; ++level, size /= 2) CoifletLevel(code, bank, size, x, s);
}

void INVCoifletTR(int code, int n, double* x, int m, int levels) {
  const FilterBank bank = IsLifting(code) ? FilterBank{} : CoifletFilters(code);
  std::vector<double> a, b;
  if (!IsLifting(code)) GetInvCOIFCoeff(bank, a, b);
  Scratch s(n, IsLifting(code));
  for (int level = 0, size = 1 << (m - levels + 1); level < levels; ++level, size *= 2)
    InverseCoifletLevel(code, bank, a, b, size, x, s);
}

void DAUBGENWP(int code, bool symmetric, int n, double* x, int levels) {
  const FilterBank bank = DaubechiesFilters(code, symmetric);
  Scratch s(n, false);
  // Every block of a level on its own: a block never sees its neighbours.
  for (int level = 0, size = n; level < levels; ++level, size /= 2)
    for (int offset = 0; offset < n; offset += size)
      LevelToHalves(size, bank.lh, x + offset, s.W(), bank.h.data(), bank.g.data());
}

void INVDAUBGENWP(int code, bool symmetric, int n, double* x, int m, int levels) {
  const FilterBank bank = DaubechiesFilters(code, symmetric);
  std::vector<double> a, b;
  GetInvWCoeff(bank, a, b);
  Scratch s(n, false);
  for (int level = 0, size = 1 << (m - levels + 1); level < levels; ++level, size *= 2)
    for (int offset = 0; offset < n; offset += size)
      LevelFromHalves(size, bank.lh, x + offset, s.W(), a.data(), b.data());
}

void CoifletTrWP(int code, int n, double* x, int levels) {
  const FilterBank bank = IsLifting(code) ? FilterBank{} : CoifletFilters(code);
  Scratch s(n, IsLifting(code));
  for (int level = 0, size = n; level < levels; ++level, size /= 2)
    for (int offset = 0; offset < n; offset += size) CoifletLevel(code, bank, size, x + offset, s);
}

void InvCoifletTrWP(int code, int n, double* x, int m, int levels) {
  const FilterBank bank = IsLifting(code) ? FilterBank{} : CoifletFilters(code);
  std::vector<double> a, b;
  if (!IsLifting(code)) GetInvCOIFCoeff(bank, a, b);
  Scratch s(n, IsLifting(code));
  for (int level = 0, size = 1 << (m - levels + 1); level < levels; ++level, size *= 2)
    for (int offset = 0; offset < n; offset += size) InverseCoifletLevel(code, bank, a, b, size, x + offset, s);
}

LevelSteps::LevelSteps(int code, bool symmetric, bool coiflet, int maxSize)
    : code_(code), coiflet_(coiflet), w_(static_cast<std::size_t>(maxSize) + 43), e_(static_cast<std::size_t>(maxSize) + 43) {
  if (!coiflet) {
    bank_ = DaubechiesFilters(code, symmetric);
    GetInvWCoeff(bank_, a_, b_);
  } else if (!IsLifting(code)) {
    bank_ = CoifletFilters(code);
    GetInvCOIFCoeff(bank_, a_, b_);
  }
}

void LevelSteps::Forward(int size, double* x) {
  if (!coiflet_) {
    LevelToHalves(size, bank_.lh, x, w_.data(), bank_.h.data(), bank_.g.data());
  } else if (IsLifting(code_)) {
    SymmWavTr(size, 6, e_.data() + 21, x, code_);
    Perm(size, x, w_.data());
  } else {
    COIFPerm(size, x, w_.data(), 2 * code_);
    LevelToHalves(size, bank_.lh, x, w_.data(), bank_.h.data(), bank_.g.data());
  }
}

void LevelSteps::Inverse(int size, double* x) {
  if (!coiflet_) {
    LevelFromHalves(size, bank_.lh, x, w_.data(), a_.data(), b_.data());
  } else if (IsLifting(code_)) {
    INVPERM(size, x, w_.data());
    InvSymmWavTr(size, 6, e_.data() + 21, x, code_);
  } else {
    LevelFromHalves(size, bank_.lh, x, w_.data(), a_.data(), b_.data());
    InvCOIFPerm(size, x, w_.data(), 2 * code_);
  }
}

}  // namespace keldo::wavelet
