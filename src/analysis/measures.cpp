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
  double sum = 0.0;
  bool first = true;
  s = Statistics{};
  for (int i = 0; i <= g.n; ++i) {
    if (!inside[static_cast<std::size_t>(i)]) continue;
    const double y = g.y[i];
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
  for (int i = 0; i <= g.n; ++i) {
    if (!inside[static_cast<std::size_t>(i)]) continue;
    const double y = g.y[i];
    ss += (y - s.mean) * (y - s.mean);
    if (y * y > 0) dim -= 2 * y * y * std::log(std::fabs(y));
  }
  s.variance = ss / (s.count - 1);
  s.stdDev = std::sqrt(s.variance);
  s.dimension = s.energy > 0 ? std::exp(dim / s.energy) * s.energy : 0.0;
  return true;
}

std::string StatisticsReport(const Statistics& s) {
  const std::pair<const char*, double> lines[] = {
      {"Maximum = ", s.maximum},  {"Minimum = ", s.minimum}, {"Mean = ", s.mean},
      {"Variance = ", s.variance}, {"Std. Dev. = ", s.stdDev}, {"Energy = ", s.energy},
      {"Number of samples = ", static_cast<double>(s.count)}, {"Theoretical Dim = ", s.dimension}};
  std::string report;
  for (const auto& [label, value] : lines) report += label + PlainNumber(value) + "\r\n";
  return report;
}

std::vector<double> Histogram(const Sampled& g, int levels, bool signBit, bool zeros, double& entropy, double& max) {
  std::vector<double> magnitudes(static_cast<std::size_t>(g.n) + 1);
  for (int i = 0; i <= g.n; ++i) magnitudes[static_cast<std::size_t>(i)] = std::fabs(g.y[i]);
  max = wavelet::WaveletMaximum(g.n, magnitudes.data());
  const double width = signBit ? 2 * max / levels : max / levels;
  std::vector<double> h(static_cast<std::size_t>(levels) + 1, 0.0);
  int counted = 0;
  for (int i = 0; i <= g.n; ++i) {
    if (g.y[i] == 0.0 && !zeros) continue;
    const int bin = signBit ? wavelet::NQuant(g.y[i], -max, width) : wavelet::NQuant(std::fabs(g.y[i]), 0.0, width);
    h[static_cast<std::size_t>(std::clamp(bin, 0, levels - 1))] += 1;
    ++counted;
  }
  entropy = 0.0;
  for (int k = 0; k < levels; ++k) {
    const double p = counted > 0 ? h[static_cast<std::size_t>(k)] / counted : 0.0;
    if (p > 0) entropy -= p * std::log2(p);
  }
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

}  // namespace keldo::analysis
