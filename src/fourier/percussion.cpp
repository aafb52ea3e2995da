#include "fourier/percussion.h"

#include <cmath>
#include <cstddef>

namespace keldo::fourier {
namespace {

constexpr int kFewestPoints = 64;
constexpr int kMostPoints = 65536;
constexpr double kPi = 3.14159265358979;

std::size_t Index(int i) { return static_cast<std::size_t>(i); }

// e[0..n]: each column's mean power over rows 1..R, zeros beyond the columns.
std::vector<double> ColumnPowers(const Spectrum& spectrum, int n) {
  const SpectrogramShape& s = spectrum.shape;
  std::vector<double> e(Index(n) + 1, 0.0);
  if (s.nrows < 1) return e;
  const double share = 1.0 / s.nrows;
  for (int c = 1; c <= s.ncols; ++c) {
    double sum = 0.0;
    for (int r = 1; r <= s.nrows; ++r) {
      const double re = spectrum.Re(r, c), im = spectrum.Im(r, c);
      sum += re * re + im * im;
    }
    e[Index(c - 1)] = share * sum;
  }
  return e;
}

}  // namespace

int AssignPoints(int ncols) {
  int n = kFewestPoints;
  while (n < ncols && n < kMostPoints) n *= 2;
  return n;
}

std::vector<double> PercussionTrain(const Spectrum& spectrum, int n, double* mean) {
  if (n < 1 || spectrum.shape.ncols > n + 1) return {};
  std::vector<double> train = ColumnPowers(spectrum, n);
  const double share = 1.0 / n;
  double m = 0.0;
  for (int i = 0; i < n; ++i) m += share * train[Index(i)];
  for (int i = 1; i <= n; ++i) train[Index(i)] = train[Index(i)] > m ? 1.0 : 0.0;
  if (mean) *mean = m;
  return train;
}

PulseRateResult PulseRate(const std::vector<double>& train, double step) {
  PulseRateResult result;
  const auto consider = [&result](int distance) {
    if (distance >= 1 && (result.best < 0 || distance < result.best)) result.best = distance;
  };
  bool inPulse = false;
  int lastEnd = -1;  // none before the first pulse has ended
  const int size = static_cast<int>(train.size());
  for (int i = 0; i < size; ++i) {
    const double v = train[Index(i)];
    if (v == 1.0 && !inPulse) {
      inPulse = true;
      if (lastEnd >= 0) consider(i - lastEnd);
      ++result.pulses;
    } else if (v == 0.0 && inPulse) {
      lastEnd = i;
      inPulse = false;
    }
  }
  if (!inPulse && lastEnd >= 0) consider(size - lastEnd);
  result.rate = (result.best + 1) * step;
  if (result.rate == 0.0) result.rate = 1.0;
  return result;
}

PercussionSettings PercussionScalogramSettings(int n, double duration, double rate) {
  PercussionSettings settings;
  const double s = std::sqrt(kPi) * 4.0 * duration;
  settings.width = 1.0 / s;
  settings.frequency = s / rate;
  const double nn = static_cast<double>(n) * static_cast<double>(n);
  const double u = std::log(nn / settings.frequency) / std::log(2.0);
  int o = 1;
  if (std::isfinite(u)) {
    const double v = u - 1.5;
    const double whole = std::trunc(v);
    o = static_cast<int>(whole) + (v != whole ? 1 : 0);
  }
  settings.octaves = o < 1 ? 1 : o;
  settings.voices = 256 / settings.octaves;
  return settings;
}

}  // namespace keldo::fourier
