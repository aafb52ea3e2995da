#include "wavelet/series.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "common/number_text.h"
#include "fourier/series.h"
#include "wavelet/transforms.h"

namespace keldo::wavelet {
namespace {

double Sign(double v) { return v > 0 ? 1.0 : v < 0 ? -1.0 : 0.0; }

// A value through its plain text form and back: 15 significant digits.
double ThroughText(double v) {
  const std::string text = PlainNumber(v);
  double back = 0.0;
  std::from_chars(text.data(), text.data() + text.size(), back);
  return back;
}

// Entropy, in bits, of the quantized non-zero values of one band, times
// their count; 0 for a band with no such value.
double BandBits(const double* a, int from, int to, double t, int kind, double max) {
  int c = 0;
  for (int i = from; i < to; ++i) c += a[i] != 0.0;
  if (c == 0) return 0.0;
  const double e = std::log2(1.0 / t);
  const int bins = std::max(1, static_cast<int>(std::pow(2.0, kind + e)));
  const double width = kind == 1 ? 2 * max / bins : max / bins;
  std::vector<double> counts(static_cast<std::size_t>(bins), 0.0);
  for (int i = from; i < to; ++i) {
    const double v = kind == 1 ? a[i] : std::fabs(a[i]);
    if (!(std::fabs(a[i]) >= width)) continue;
    const int bin = std::clamp(NQuant(v, kind == 1 ? -max : 0.0, width), 0, bins - 1);
    counts[static_cast<std::size_t>(bin)] += 1;
  }
  double entropy = 0.0;
  for (double k : counts) {
    const double p = k / c;
    if (p > 0) entropy -= p * std::log2(p);
  }
  return c * (entropy + 0.5);
}

}  // namespace

void ForwardTransform(const WaveletChoice& w, bool packet, int n, double* x, int levels) {
  if (w.family == 1 || w.family == 2) {
    const int code = w.family == 2 ? -1 : w.code;
    if (packet) DAUBGENWP(code, w.symmetric, n, x, levels);
    else DAUBGEN(code, w.symmetric, n, x, levels);
  } else {
    if (packet) CoifletTrWP(w.code, n, x, levels);
    else CoifletTR(w.code, n, x, levels);
  }
}

void InverseTransform(const WaveletChoice& w, bool packet, int n, double* x, int m, int levels) {
  if (w.family == 1 || w.family == 2) {
    const int code = w.family == 2 ? -1 : w.code;
    if (packet) INVDAUBGENWP(code, w.symmetric, n, x, m, levels);
    else INVDAUBGEN(code, w.symmetric, n, x, m, levels);
  } else {
    if (packet) InvCoifletTrWP(w.code, n, x, m, levels);
    else INVCoifletTR(w.code, n, x, m, levels);
  }
}

int CheckWaveletChoice(int family, double levels, int m, bool symmetric, const std::function<double()>& order,
                       const std::string& otherName, WaveletChoice& choice, int& levelsOut) {
  if (family < 1 || family > 4) return 13;
  const double l = std::nearbyint(levels);
  if (!(l >= 1 && l <= m)) return 21;
  levelsOut = static_cast<int>(l);
  choice.family = family;
  choice.symmetric = symmetric;
  if (family == 1) {
    const double o = order();
    const bool even = o >= 4 && o <= 20 && std::fmod(o, 2.0) == 0.0;
    choice.code = even ? static_cast<int>(o) / 2 - 1 : 0;
    if (choice.code == 0) return 14;
    if (symmetric && choice.code <= 2) return 80;
  } else if (family == 2) {
    choice.code = -1;
  } else if (family == 3) {
    const double o = order();
    const bool six = o >= 6 && o <= 30 && std::fmod(o, 6.0) == 0.0;
    choice.code = six ? static_cast<int>(o) / 6 : 0;
    if (choice.code == 0) return 15;
  } else {
    choice.code = GetOtherType(otherName);
    if (choice.code == 0 || levelsOut > m - 2) return 21;
  }
  return 0;
}

int GetOtherType(const std::string& name) {
  const auto& names = OtherWaveletNames();
  for (std::size_t i = 0; i < names.size(); ++i)
    if (names[i] == name) return 101 + static_cast<int>(i);
  return 0;
}

const std::vector<std::string>& WaveletFilterLabels() {
  static const std::vector<std::string> kLabels = {"Daub 9/7",          "DD 11/7 Integer",   "DD 5/3 (2,2)",
                                                   "DD 11/7 (4,2)",     "DD 13/11 (6,2)",    "DD 13/7 (4,4)",
                                                   "DD 5/9 (2+2,2)",    "Daub 9/7 Integer",  "DD 5/3 Integer",
                                                   "DD (2+2,2) Integer"};
  return kLabels;
}

double WaveletMaximum(int n, const double* a) { return WaveletMaximum2(0, n, a); }

double WaveletMaximum2(int first, int last, const double* a) {
  double m = 0.0;
  for (int i = first; i <= last; ++i) m = std::max(m, std::fabs(a[i]));
  return m == 0.0 ? 1.0 : m;
}

void SortedMagnitudes(int n, const double* x, std::vector<double>& keys, std::vector<int>& idx) {
  keys.assign(static_cast<std::size_t>(n) + 1, 0.0);
  idx.assign(static_cast<std::size_t>(n) + 1, 0);
  for (int i = 0; i < n; ++i) {
    const double k = std::fabs(x[i]);
    keys[static_cast<std::size_t>(i)] = k == 0.0 ? -1.0 - i : k;
    idx[static_cast<std::size_t>(i)] = i;
  }
  keys[static_cast<std::size_t>(n)] = -1.0 - n;
  idx[static_cast<std::size_t>(n)] = n;
  fourier::ISORTD(keys, idx);
}

void KeepHighest(int n, double* x, int c) {
  std::vector<double> keys;
  std::vector<int> idx;
  SortedMagnitudes(n, x, keys, idx);
  for (int p = std::max(c, 0); p < n; ++p) x[idx[static_cast<std::size_t>(p)]] = 0.0;
}

int KeepEnergy(int n, double* x, double e) {
  const double r = 1 - e;
  std::vector<double> keys;
  std::vector<int> idx;
  SortedMagnitudes(n, x, keys, idx);
  const auto square = [&](int p) {
    const double v = x[idx[static_cast<std::size_t>(p)]];
    return v * v;
  };
  double total = 0.0;
  for (int p = n - 1; p >= 0; --p) total += square(p);
  const double cut = r * total;
  int m = 0;
  double sum = 0.0;
  for (int p = n - 1; p >= 0; --p) {
    sum += square(p);
    if (sum > cut) {
      m = p + 1;
      break;
    }
  }
  for (int p = m; p < n; ++p) x[idx[static_cast<std::size_t>(p)]] = 0.0;
  return m;
}

void KeepFirst(int n, double* x, int c) {
  for (int i = std::max(c, 0); i < n; ++i) x[i] = 0.0;
}

int NQuant(double x, double low, double width) {
  if (!(width > 0)) return 0;
  const double bin = std::floor((x - low) / width + 0.5);
  if (!(bin < 2e9)) return 2000000000;
  if (!(bin > -2e9)) return -2000000000;
  return static_cast<int>(bin);
}

double CompressionRatio1(double t, int n, int kind, const double* a, double max, int levels) {
  double total = 0.0;
  for (int level = 1, h = n / 2; level <= levels; ++level, h /= 2) total += BandBits(a, h, 2 * h, t, kind, max);
  return total / n;
}

double CompressionRatio2(double t1, double t2, int n, int kind, const double* a, double max1, double max2, int levels) {
  double total = BandBits(a, 0, n >> levels, t1, kind, max1);
  for (int level = 1, h = n / 2; level <= levels; ++level, h /= 2) total += BandBits(a, h, 2 * h, t2, kind, max2);
  return total / n;
}

ThresholdResult ApplyThresholds(int n, double* x, const ThresholdSetup& s) {
  ThresholdResult r;
  const bool two = s.second >= 0;
  const double max1 = two ? WaveletMaximum(s.trendLength - 1, x) : WaveletMaximum(n - 1, x);
  const double max2 = two ? WaveletMaximum2(s.trendLength, n - 1, x) : max1;
  const double q1 = s.first * max1, q2 = two ? s.second * max2 : q1;
  if (s.map) r.map.assign(static_cast<std::size_t>(n) + 1, 0.0);
  for (int i = 0; i < n; ++i) {
    const double q = two && i >= s.trendLength ? q2 : q1;
    const double v = x[i];
    if (std::fabs(v) >= q && !(s.quantize && q == 0.0)) {
      if (s.quantize) x[i] = ThroughText(Sign(v) * (std::floor(std::fabs(v) / q) + 0.5) * q);
      ++r.count;
      if (s.map) r.map[static_cast<std::size_t>(i)] = s.signBit ? (v >= 0 ? 1.0 : -1.0) : 1.0;
    } else {
      x[i] = 0.0;
    }
  }
  if (s.quantize) {
    const int kind = s.signBit ? 1 : 0;
    r.bitsPerPoint = two ? CompressionRatio2(s.first, s.second, n, kind, x, max1, max2, s.levels)
                         : CompressionRatio1(s.first, n, kind, x, max1, s.levels);
  }
  return r;
}

double NoiseSigma(int n, const double* transformed) {
  const int half = n / 2;
  std::vector<double> keys(static_cast<std::size_t>(half));
  std::vector<int> idx(static_cast<std::size_t>(half));
  for (int i = 0; i < half; ++i) {
    keys[static_cast<std::size_t>(i)] = std::fabs(transformed[half + i]);
    idx[static_cast<std::size_t>(i)] = i;
  }
  fourier::ISORTD(keys, idx);
  const double sigma = keys[static_cast<std::size_t>(half / 2)] / 0.6745;
  return sigma == 0.0 ? 1.0 : sigma;
}

void SoftThreshold(double* x, int first, int last, double t) {
  for (int i = first; i <= last; ++i) x[i] = std::fabs(x[i]) <= t ? 0.0 : Sign(x[i]) * (std::fabs(x[i]) - t);
}

void ShiftVector(int n, int s, double* x, double* w) {
  for (int i = 0; i < n; ++i) w[((i + s) % n + n) % n] = x[i];
  for (int i = 0; i < n; ++i) x[i] = w[i];
}

bool DenoiseAveraged(const WaveletChoice& w, int n, int m, int levels, double t, std::vector<double>& y,
                     const std::function<bool(int percent)>& progress) {
  const int first = n >> levels;
  std::vector<double> sum(static_cast<std::size_t>(n), 0.0), x(static_cast<std::size_t>(n) + 5), scratch(x.size());
  for (int s = -63; s <= 63; ++s) {
    if (!progress((s + 63) * 100 / 127)) return false;
    std::copy(y.begin(), y.begin() + n, x.begin());
    ShiftVector(n, s, x.data(), scratch.data());
    ForwardTransform(w, false, n, x.data(), levels);
    SoftThreshold(x.data(), first, n - 1, t);
    InverseTransform(w, false, n, x.data(), m, levels);
    ShiftVector(n, -s, x.data(), scratch.data());
    for (int i = 0; i < n; ++i) sum[static_cast<std::size_t>(i)] += x[static_cast<std::size_t>(i)];
  }
  for (int i = 0; i < n; ++i) y[static_cast<std::size_t>(i)] = sum[static_cast<std::size_t>(i)] / 127;
  return true;
}

void SureShrinkDenoise(double* x, int count, double sigma) {
  std::vector<double> k(static_cast<std::size_t>(count));
  std::vector<int> idx(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) {
    k[static_cast<std::size_t>(i)] = std::fabs(x[i]);
    idx[static_cast<std::size_t>(i)] = i;
  }
  fourier::ISORTD(k, idx);
  double s2 = 0.0;
  for (double& v : k) {
    v /= sigma;
    s2 += v * v;
  }
  const double u = std::sqrt(2 * std::log(static_cast<double>(count)));
  double r = count * k[0] * k[0] + count - 2, best = r, bestK = k[0];
  for (int j = 1; j < count; ++j) {
    const std::size_t i = static_cast<std::size_t>(j);
    r += (k[i] + k[i - 1]) * (count - j) * (k[i] - k[i - 1]) - 2;
    if (r < best) {
      best = r;
      bestK = k[i];
    }
  }
  const double v = s2 / count - 1, e = std::pow(std::log(static_cast<double>(count)), 1.5) / std::sqrt(count);
  const double t = (v <= e ? u : bestK) * sigma;
  if (t <= 0) return;
  SoftThreshold(x, 0, count - 1, t);
}

double AdaptiveMedianValue(double x, double m, double low, double high) {
  if (m >= 0) return low * m <= x && x <= high * m ? m : x;
  return high * m <= x && x <= low * m ? m : x;
}

double AdaptiveMedianValue(double x, double m) { return AdaptiveMedianValue(x, m, 0.95, 1.05); }

std::vector<double> MedianDenoise(int n, const double* y, bool adaptive) {
  std::vector<double> z(y, y + n + 1);
  for (int i = 1; i < n; ++i) {
    std::vector<double> window = {y[i - 1], y[i], y[i + 1]};
    std::vector<int> idx = {0, 1, 2};
    fourier::ISORTD(window, idx);
    z[static_cast<std::size_t>(i)] = adaptive ? AdaptiveMedianValue(y[i], window[1]) : window[1];
  }
  return z;
}

std::vector<double> Downsample(int n, const double* y) {
  std::vector<double> z(static_cast<std::size_t>(n / 2) + 1);
  for (int i = 0; i <= n / 2; ++i) z[static_cast<std::size_t>(i)] = y[2 * i];
  return z;
}

std::vector<double> HaarInterpolate(int n, int m, const double* y) {
  std::vector<double> x(static_cast<std::size_t>(2 * n) + 5, 0.0);
  for (int i = 0; i < n; ++i) x[static_cast<std::size_t>(i)] = std::sqrt(2.0) * y[i];
  INVDAUBGEN(-1, false, 2 * n, x.data(), m + 1, 1);
  x[static_cast<std::size_t>(2 * n)] = y[n];
  x.resize(static_cast<std::size_t>(2 * n) + 1);
  return x;
}

std::vector<double> DD4and2Interpolate(int n, int m, const double* y) {
  std::vector<double> x(static_cast<std::size_t>(2 * n) + 5, 0.0);
  for (int i = 0; i < n; ++i) x[static_cast<std::size_t>(i)] = y[i];
  INVCoifletTR(103, 2 * n, x.data(), m + 1, 1);
  x[static_cast<std::size_t>(2 * n)] = y[n];
  x.resize(static_cast<std::size_t>(2 * n) + 1);
  return x;
}

}  // namespace keldo::wavelet
