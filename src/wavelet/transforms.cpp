#include "wavelet/transforms.h"

#include <cmath>

#include "wavelet/filter_tables.h"

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

// Scratch that lives for one transform.
struct Scratch {
  explicit Scratch(int n) : w(static_cast<std::size_t>(n) + 5, 0.0), e(static_cast<std::size_t>(n) + 43, 0.0) {}
  std::vector<double> w, e;
  double* E() { return e.data() + 21; }
};

bool IsLifting(int code) { return code >= 100; }

// The level of a lifting scheme, or the rotated filter bank of a coiflet.
void CoifletLevel(int code, const FilterBank& bank, int n, double* x, Scratch& s) {
  if (IsLifting(code)) {
    SymmWavTr(n, 6, s.E(), x, code);
  } else {
    COIFPerm(n, x, s.w.data(), 2 * code);
    WavTr(n, bank.lh, x, s.w.data(), bank.h.data(), bank.g.data());
  }
  Perm(n, x, s.w.data());
}

void InverseCoifletLevel(int code, const FilterBank& bank, const std::vector<double>& a, const std::vector<double>& b,
                         int n, double* x, Scratch& s) {
  INVPERM(n, x, s.w.data());
  if (IsLifting(code)) {
    InvSymmWavTr(n, 6, s.E(), x, code);
  } else {
    InvWavTr(n, bank.lh, x, s.w.data(), a.data(), b.data());
    InvCOIFPerm(n, x, s.w.data(), 2 * code);
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

void WavTr(int n, int lh, double* x, double* w, const double* h, const double* g) {
  for (int i = 0; i < n; i += 2) {
    double a = 0.0, d = 0.0;
    int p = i;
    for (int j = 0; j <= lh; ++j) {
      a += h[j] * x[p];
      d += g[j] * x[p];
      if (++p == n) p = 0;
    }
    w[i] = a;
    w[i + 1] = d;
  }
  for (int i = 0; i < n; ++i) x[i] = w[i];
}

void InvWavTr(int n, int lh, double* x, double* w, const double* a, const double* b) {
  int p = std::abs(n - 1 - (lh % n));
  int t = n - 1;
  for (int round = 0; round < n / 2; ++round) {
    double s1 = 0.0, s2 = 0.0;
    int q = p;
    for (int j = 0; j <= lh; ++j) {
      s1 += a[j] * x[q];
      s2 += b[j] * x[q];
      if (++q == n) q = 0;
    }
    w[t - 1] = s1;
    w[t] = s2;
    t -= 2;
    if (p == 0) p = n;
    p -= 2;
  }
  for (int i = 0; i < n; ++i) x[i] = w[i];
}

void Perm(int n, double* x, double* w) {
  const int h = n / 2;
  for (int i = 1; i <= h; ++i) w[i - 1] = x[2 * i - 1];
  for (int i = 2; i <= h; ++i) x[i - 1] = x[2 * (i - 1)];
  for (int i = 1; i <= h; ++i) x[h - 1 + i] = w[i - 1];
}

void INVPERM(int n, double* x, double* w) {
  const int h = n / 2;
  for (int i = 1; i <= h; ++i) w[i - 1] = x[h - 1 + i];
  for (int i = h; i >= 2; --i) x[2 * (i - 1)] = x[i - 1];
  for (int i = 1; i <= h; ++i) x[2 * i - 1] = w[i - 1];
}

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
  Scratch s(n);
  for (int level = 0, size = n; level < levels; ++level, size /= 2) {
    WavTr(size, bank.lh, x, s.w.data(), bank.h.data(), bank.g.data());
    Perm(size, x, s.w.data());
  }
}

void INVDAUBGEN(int code, bool symmetric, int n, double* x, int m, int levels) {
  const FilterBank bank = DaubechiesFilters(code, symmetric);
  std::vector<double> a, b;
  GetInvWCoeff(bank, a, b);
  Scratch s(n);
  for (int level = 0, size = 1 << (m - levels + 1); level < levels; ++level, size *= 2) {
    INVPERM(size, x, s.w.data());
    InvWavTr(size, bank.lh, x, s.w.data(), a.data(), b.data());
  }
}

void CoifletTR(int code, int n, double* x, int levels) {
  const FilterBank bank = IsLifting(code) ? FilterBank{} : CoifletFilters(code);
  Scratch s(n);
  for (int level = 0, size = n; level < levels; ++level, size /= 2) CoifletLevel(code, bank, size, x, s);
}

void INVCoifletTR(int code, int n, double* x, int m, int levels) {
  const FilterBank bank = IsLifting(code) ? FilterBank{} : CoifletFilters(code);
  std::vector<double> a, b;
  if (!IsLifting(code)) GetInvCOIFCoeff(bank, a, b);
  Scratch s(n);
  for (int level = 0, size = 1 << (m - levels + 1); level < levels; ++level, size *= 2)
    InverseCoifletLevel(code, bank, a, b, size, x, s);
}

void DAUBGENWP(int code, bool symmetric, int n, double* x, int levels) {
  const FilterBank bank = DaubechiesFilters(code, symmetric);
  Scratch s(n);
  // Every block of a level on its own: a block never sees its neighbours.
  for (int level = 0, size = n; level < levels; ++level, size /= 2)
    for (int offset = 0; offset < n; offset += size) {
      WavTr(size, bank.lh, x + offset, s.w.data(), bank.h.data(), bank.g.data());
      Perm(size, x + offset, s.w.data());
    }
}

void INVDAUBGENWP(int code, bool symmetric, int n, double* x, int m, int levels) {
  const FilterBank bank = DaubechiesFilters(code, symmetric);
  std::vector<double> a, b;
  GetInvWCoeff(bank, a, b);
  Scratch s(n);
  for (int level = 0, size = 1 << (m - levels + 1); level < levels; ++level, size *= 2)
    for (int offset = 0; offset < n; offset += size) {
      INVPERM(size, x + offset, s.w.data());
      InvWavTr(size, bank.lh, x + offset, s.w.data(), a.data(), b.data());
    }
}

void CoifletTrWP(int code, int n, double* x, int levels) {
  const FilterBank bank = IsLifting(code) ? FilterBank{} : CoifletFilters(code);
  Scratch s(n);
  for (int level = 0, size = n; level < levels; ++level, size /= 2)
    for (int offset = 0; offset < n; offset += size) CoifletLevel(code, bank, size, x + offset, s);
}

void InvCoifletTrWP(int code, int n, double* x, int m, int levels) {
  const FilterBank bank = IsLifting(code) ? FilterBank{} : CoifletFilters(code);
  std::vector<double> a, b;
  if (!IsLifting(code)) GetInvCOIFCoeff(bank, a, b);
  Scratch s(n);
  for (int level = 0, size = 1 << (m - levels + 1); level < levels; ++level, size *= 2)
    for (int offset = 0; offset < n; offset += size) InverseCoifletLevel(code, bank, a, b, size, x + offset, s);
}

}  // namespace keldo::wavelet
