#include "analysis/measures.h"

#include <algorithm>
#include <cmath>

#include "common/number_text.h"
#include "fourier/series.h"
#include "wavelet/series.h"

namespace keldo::analysis {

std::vector<bool> InWindow(const Sampled& g, double xl, double xr) {
  std::vector<bool> inside(static_cast<std::size_t>(g.n) + 1);
  double x = g.a;
  for (int i = 0; i <= g.n; ++i) {
    inside[static_cast<std::size_t>(i)] = xl - g.dx / 2 < x && x < xr + g.dx / 2;
    x += g.dx;
  }
  return inside;
}

double NORM(double x, double p) {
  if (p == 1) return std::fabs(x);
  if (p == 2) return x * x;
  return std::pow(std::fabs(x), p);
}

double ROOT(double x, double p) {
  if (p == 1) return x;
  if (p == 2) return std::sqrt(x);
  return std::pow(x, 1 / p);
}

double RNorm(double x, double y, char& flag) {
  if (y == 0) {
    flag = 'Z';
    return 0.0;
  }
  flag = 'N';
  return x / y;
}

double NormOf(const Sampled& g, const double* minus, const std::vector<bool>& inside, NormKind kind, double p) {
  const auto value = [&](int i) { return minus ? g.y[i] - minus[i] : g.y[i]; };
  double sup = 0.0;
  for (int i = 0; i <= g.n; ++i)
    if (inside[static_cast<std::size_t>(i)]) sup = std::max(sup, std::fabs(value(i)));
  if (kind == NormKind::Sup) return sup;
  if (kind == NormKind::Var) {
    double v = 0.0;
    for (int i = 1; i <= g.n; ++i) {
      if (!inside[static_cast<std::size_t>(i)]) continue;
      const double d = value(i) - value(i - 1);
      v += std::sqrt(std::fabs(d * d + d * d));
    }
    return sup + v / g.n;
  }
  double s = 0.0;
  for (int i = 0; i < g.n; ++i)
    if (inside[static_cast<std::size_t>(i)]) s += NORM(value(i), p);
  return ROOT(g.dx * s, p);
}

double Integral(const Sampled& g, const std::vector<bool>& inside) {
  double s = 0.0;
  for (int i = 0; i < g.n; ++i)
    if (inside[static_cast<std::size_t>(i)]) s += g.y[i];
  return g.dx * s;
}

double ScalarProduct(const Sampled& g, const double* other, const std::vector<bool>& inside) {
  double s = 0.0;
  for (int i = 0; i < g.n; ++i)
    if (inside[static_cast<std::size_t>(i)]) s += g.y[i] * other[i];
  return g.dx * s;
}

std::vector<double> Derivative(const Sampled& g) {
  const double* y = g.y;
  const int n = g.n;
  const double d = 12 * g.dx;
  std::vector<double> z(static_cast<std::size_t>(n) + 1);
  for (int i = 0; i <= 1; ++i)
    z[static_cast<std::size_t>(i)] = (-25 * y[i] + 48 * y[i + 1] - 36 * y[i + 2] + 16 * y[i + 3] - 3 * y[i + 4]) / d;
  for (int i = 2; i <= n - 2; ++i) z[static_cast<std::size_t>(i)] = (y[i - 2] - 8 * y[i - 1] + 8 * y[i + 1] - y[i + 2]) / d;
  for (int i = n - 1; i <= n; ++i)
    z[static_cast<std::size_t>(i)] = (25 * y[i] - 48 * y[i - 1] + 36 * y[i - 2] - 16 * y[i - 3] + 3 * y[i - 4]) / d;
  return z;
}

bool ComputeStatistics(const Sampled& g, const std::vector<bool>& inside, Statistics& s) {
  std::vector<double> values;
  for (int i = 0; i <= g.n; ++i)
    if (inside[static_cast<std::size_t>(i)]) values.push_back(g.y[i]);
  return StatisticsOf(values, s);
}

bool StatisticsOf(std::span<const double> values, Statistics& s) {
  double sum = 0.0;
  bool first = true;
  s = Statistics{};
  for (const double y : values) {
    ++s.count;
    sum += y;
    s.energy += y * y;
    s.maximum = first ? y : std::max(s.maximum, y);
    s.minimum = first ? y : std::min(s.minimum, y);
    first = false;
  }
  if (s.count < 2) return false;
  s.mean = sum / s.count;
  double ss = 0.0, dim = 0.0;
  for (const double y : values) {
    ss += (y - s.mean) * (y - s.mean);
    if (y * y > 0) dim -= 2 * y * y * std::log(std::fabs(y));
  }
  s.variance = ss / (s.count - 1);
  s.stdDev = std::sqrt(s.variance);
  s.dimension = s.energy > 0 ? std::exp(dim / s.energy) * s.energy : 0.0;
  return true;
}

std::string StatisticsReport(const Statistics& s, const char* countLabel) {
  const std::pair<const char*, double> lines[] = {
      {"Maximum = ", s.maximum},  {"Minimum = ", s.minimum}, {"Mean = ", s.mean},
      {"Variance = ", s.variance}, {"Std. Dev. = ", s.stdDev}, {"Energy = ", s.energy},
      {countLabel, static_cast<double>(s.count)}, {"Theoretical Dim = ", s.dimension}};
  std::string report;
  for (const auto& [label, value] : lines) report += label + PlainNumber(value) + "\r\n";
  return report;
}

std::vector<double> Histogram(const Sampled& g, int levels, bool signBit, bool zeros, double& entropy, double& max) {
  return HistogramOf(std::span<const double>(g.y, static_cast<std::size_t>(g.n) + 1), levels, signBit, zeros, entropy,
                     max);
}

namespace {

// Counts values into `bins` bins of `width` from -max (signed) or from 0
// (magnitudes), an index past the last going into the last; `entropy` is
// sum -p log2 p over the counted values. Returns the number counted.
long long CountBins(std::span<const double> values, bool signBit, bool zeros, double max, double width,
                    std::vector<double>& h, double& entropy) {
  const int bins = static_cast<int>(h.size()) - 1;
  long long counted = 0;
  for (const double y : values) {
    if (y == 0.0 && !zeros) continue;
    const int bin = signBit ? wavelet::NQuant(y, -max, width) : wavelet::NQuant(std::fabs(y), 0.0, width);
    h[static_cast<std::size_t>(std::clamp(bin, 0, bins - 1))] += 1;
    ++counted;
  }
  entropy = 0.0;
  for (int k = 0; k < bins; ++k) {
    const double p = counted > 0 ? h[static_cast<std::size_t>(k)] / static_cast<double>(counted) : 0.0;
    if (p > 0) entropy -= p * std::log2(p);
  }
  return counted;
}

double LargestMagnitude(std::span<const double> values) {
  std::vector<double> magnitudes(values.size());
  for (std::size_t i = 0; i < values.size(); ++i) magnitudes[i] = std::fabs(values[i]);
  return values.empty() ? 0.0 : wavelet::WaveletMaximum(static_cast<int>(values.size()) - 1, magnitudes.data());
}

}  // namespace

std::vector<double> HistogramOf(std::span<const double> values, int levels, bool signBit, bool zeros, double& entropy,
                                double& max) {
  max = LargestMagnitude(values);
  std::vector<double> h(static_cast<std::size_t>(levels) + 1, 0.0);
  CountBins(values, signBit, zeros, max, signBit ? 2 * max / levels : max / levels, h, entropy);
  return h;
}

std::vector<double> FrequencyHistogramOf(std::span<const double> values, int levels, bool signBit, bool zeros,
                                         double& entropy, double& max) {
  max = LargestMagnitude(values);
  const int bins = signBit ? 2 * levels : levels;
  std::vector<double> h(static_cast<std::size_t>(bins) + 1, 0.0);
  const long long counted = CountBins(values, signBit, zeros, max, max / levels, h, entropy);
  if (counted > 0)
    for (double& v : h) v /= static_cast<double>(counted);
  return h;
}

std::vector<double> EnergyGraph(const Sampled& g, bool percentage) {
  std::vector<double> e(static_cast<std::size_t>(g.n) + 1);
  double running = 0.0;
  for (int i = 0; i <= g.n; ++i) {
    running += g.y[i] * g.y[i];
    e[static_cast<std::size_t>(i)] = running;
  }
  if (percentage && running != 0.0)
    for (double& v : e) v /= running;
  return e;
}

std::vector<double> NonIncreasingRearrangement(const Sampled& g) {
  std::vector<double> keys(static_cast<std::size_t>(g.n) + 1);
  std::vector<int> idx(keys.size());
  for (int i = 0; i <= g.n; ++i) {
    keys[static_cast<std::size_t>(i)] = std::fabs(g.y[i]);
    idx[static_cast<std::size_t>(i)] = i;
  }
  fourier::ISORTD(keys, idx);
  return keys;
}

std::vector<double> QuantizeXBit(const Sampled& g, int bits) {
  const double upper = bits == 8 ? 127 : 32767, lower = bits == 8 ? -128 : -32768;
  std::vector<double> z(static_cast<std::size_t>(g.n) + 1);
  for (int i = 0; i <= g.n; ++i) {
    const double y = g.y[i];
    double v;
    if (y >= upper) v = upper;
    else if (y < lower) v = lower;
    else v = (y < 0 ? -1.0 : 1.0) * std::nearbyint(std::fabs(y));
    z[static_cast<std::size_t>(i)] = static_cast<float>(v);
  }
  return z;
}

// ------------------------------------------------------------ in the plane

PlaneRange InPlaneWindow(const Plane& g, float xl, float xr, float yl, float yh) {
  PlaneRange r;
  if (!(g.h > 0.0f) || g.n < 0) return r;
  const float half = g.h / 2;
  const auto span = [&](float low, float high, int& first, int& last) {
    first = 0;
    last = -1;
    bool found = false;
    for (int k = 0; k <= g.n; ++k) {
      const float x = static_cast<float>(k) * g.h + g.a;
      if (low - half <= x && x <= high + half) {
        if (!found) first = k;
        found = true;
        last = k;
      }
    }
    if (!found) first = 0, last = -1;
  };
  span(xl, xr, r.j0, r.j1);
  span(yl, yh, r.i0, r.i1);
  return r;
}

double PlaneNorm(const Plane& g, const float* minus, const PlaneRange& r, NormKind kind, double p) {
  const auto value = [&](int i, int j) {
    const std::size_t at = static_cast<std::size_t>(i) * g.stride + static_cast<std::size_t>(j);
    return minus ? static_cast<double>(g.v[at]) - minus[at] : static_cast<double>(g.v[at]);
  };
  if (r.Empty()) return 0.0;
  double sup = 0.0;
  for (int i = r.i0; i <= r.i1; ++i)
    for (int j = r.j0; j <= r.j1; ++j) sup = std::max(sup, std::fabs(value(i, j)));
  if (kind == NormKind::Sup) return sup;
  if (kind == NormKind::Var) {
    double v = 0.0;
    for (int i = r.i0; i <= r.i1; ++i)
      for (int j = r.j0; j <= r.j1; ++j) {
        if (j > r.j0) v += std::fabs(value(i, j) - value(i, j - 1));
        if (i > r.i0) v += std::fabs(value(i, j) - value(i - 1, j));
      }
    return sup + v / g.n;
  }
  double s = 0.0;
  for (int i = r.i0; i <= std::min(r.i1, g.n - 1); ++i)
    for (int j = r.j0; j <= std::min(r.j1, g.n - 1); ++j) s += NORM(value(i, j), p);
  return ROOT(static_cast<double>(g.h) * g.h * s, p);
}

double PlaneIntegral(const Plane& g, const PlaneRange& r) {
  double s = 0.0;
  for (int i = r.i0; i <= r.i1; ++i) {
    const double wi = (i == r.i0 || i == r.i1) ? 0.5 : 1.0;
    for (int j = r.j0; j <= r.j1; ++j) s += wi * ((j == r.j0 || j == r.j1) ? 0.5 : 1.0) * g.At(i, j);
  }
  return static_cast<double>(g.h) * g.h * s;
}

double PlaneScalarProduct(const Plane& g, const float* other, const PlaneRange& r) {
  double s = 0.0;
  for (int i = r.i0; i <= std::min(r.i1, g.n - 1); ++i)
    for (int j = r.j0; j <= std::min(r.j1, g.n - 1); ++j)
      s += g.At(i, j) * static_cast<double>(other[static_cast<std::size_t>(i) * g.stride + static_cast<std::size_t>(j)]);
  return static_cast<double>(g.h) * g.h * s;
}

void PlaneSignalAndNoise(const Plane& g, const float* other, const PlaneRange& r, double& signal, double& noise) {
  signal = noise = 0.0;
  for (int i = r.i0; i <= r.i1; ++i)
    for (int j = r.j0; j <= r.j1; ++j) {
      const double f = g.At(i, j);
      const double d = f - other[static_cast<std::size_t>(i) * g.stride + static_cast<std::size_t>(j)];
      signal += f * f;
      noise += d * d;
    }
}

std::vector<double> PlaneValues(const Plane& g, const PlaneRange& r) {
  std::vector<double> values;
  values.reserve(static_cast<std::size_t>(r.Count()));
  for (int i = r.i0; i <= r.i1; ++i)
    for (int j = r.j0; j <= r.j1; ++j) values.push_back(g.At(i, j));
  return values;
}

std::string SafeSNR(double signal, double noise) {
  const double q = 10 * std::log10(signal / noise);
  return std::isfinite(q) ? "SNR\r\n" + PlainNumber(q) : "SNR\r\n";
}

std::string SafePSNR(double mse) {
  const double q = 10 * std::log10(65025 / mse);
  return std::isfinite(q) ? "PSNR\r\n" + PlainNumber(q) : "PSNR\r\n";
}

}  // namespace keldo::analysis
