#include "fourier/series.h"

#include <algorithm>
#include <cmath>

#include "fourier/fft.h"
#include "fourier/transforms.h"

namespace keldo::fourier {
namespace {

constexpr double kPi = kProgramPi;

double Sinc(double x) { return x == 0.0 ? 1.0 : std::sin(kPi * x) / (kPi * x); }

// The last index of the coefficients a kind selects among.
int LastCoefficient(SeriesKind kind, int n) { return kind == SeriesKind::Fourier ? n / 2 : n; }

// Keys of the coefficients; a zero coefficient gets a negative key that
// places it behind all others, in the order of its index.
std::vector<double> SelectionKeys(SeriesKind kind, int n, const double* x, const double* y, bool squared) {
  const int last = LastCoefficient(kind, n);
  std::vector<double> keys(static_cast<std::size_t>(last) + 1);
  for (int i = 0; i <= last; ++i) {
    double k = kind == SeriesKind::Fourier ? x[i] * x[i] + y[i] * y[i] : (squared ? x[i] * x[i] : std::fabs(x[i]));
    if (k == 0.0) k = kind == SeriesKind::Fourier ? -1.0 - i : -5.0 - i;
    keys[static_cast<std::size_t>(i)] = k;
  }
  return keys;
}

// Zeroes coefficient j (with its mirror for a Fourier series).
void Drop(SeriesKind kind, int n, int j, double* x, double* y) {
  x[j] = 0.0;
  if (kind != SeriesKind::Fourier) return;
  y[j] = 0.0;
  x[n - j] = 0.0;
  y[n - j] = 0.0;
}

// The reports of the energy and threshold selections: m kept, z 1 when the
// constant term stays.
void Report(SeriesKind kind, int n, int m, int z, SelectionReport& report) {
  const int count = kind == SeriesKind::Fourier ? std::min(2 * m - z, n) : std::min(m, n + 1);
  report.formulaText = std::to_string(count) + " coefficients used.";
  const int harmonics = kind == SeriesKind::Sine ? m : (m != 0 ? m - z : m);
  report.harmonicsText = std::to_string(harmonics);
}

}  // namespace

int MaxHarmonic(SeriesKind kind, int n) { return kind == SeriesKind::Fourier ? n / 2 : n; }

double FMBESS(double x) {
  const double ax = std::fabs(x);
  if (ax < 3.75) {
    const double v = (x / 3.75) * (x / 3.75);
    return 1.0 + v * (3.5156229 + v * (3.0899424 + v * (1.2067492 + v * (0.2659732 + v * 0.0406581))));
  }
  const double v = 3.75 / ax;
  return std::exp(ax) / std::sqrt(ax) *
         (0.39894228 + v * (0.0132859 + v * (0.00225319 + v * (-0.00157565 + v * (0.00916281 +
          v * (-0.02057706 + v * (0.02635537 + v * (-0.01647633 + v * 0.00392377))))))));
}

const std::vector<std::string>& FrequencyFilterNames() {
  static const std::vector<std::string> kNames = {
      "Highest magnitude", "Energy percentage", "Threshold", "hanning", "Hamming", "Cesaro", "Cos",
      "Sinc",              "Diffraction",       "Heat",      "Gauss",   "Kaiser",  "DlVP",   "Blackman",
      "Riesz",             "User",              "Poisson",   "FresnelCos", "FresnelSin"};
  return kNames;
}

bool FilterWeights(const std::string& name, int h, const FilterParameters& prm, std::vector<double>& w) {
  w.assign(static_cast<std::size_t>(h) + 1, 0.0);
  const double piOverB = kPi / prm.b;
  for (int k = 0; k <= h; ++k) {
    const double u = static_cast<double>(k) / h;
    double v;
    if (name == "hanning") v = (1 + std::cos(kPi * u)) / 2;
    else if (name == "Hamming") v = 0.54 + 0.46 * std::cos(kPi * u);
    else if (name == "Cesaro") v = 1 - u;
    else if (name == "Blackman") v = 0.42 + 0.5 * std::cos(kPi * u) + 0.08 * std::cos(2 * kPi * u);
    else if (name == "DlVP") v = 2 * k <= h ? 1.0 : 2 * (1 - u);
    else if (name == "Gauss") v = std::exp(-4.5 * u * u);
    else if (name == "Riesz") v = std::pow(1 - u * u, prm.p);
    else if (name == "Poisson") v = std::pow(prm.p, k);
    else if (name == "Kaiser") v = FMBESS(kPi * prm.p * std::sqrt(1 - u * u)) / FMBESS(kPi * prm.p);
    else if (name == "Cos") v = std::cos(k * prm.p * prm.q * kPi / prm.b);
    else if (name == "Sinc") v = prm.q * Sinc(k * prm.p * prm.q / prm.b);
    else if (name == "Heat") v = std::exp(-piOverB * piOverB * (prm.p * prm.q) * k * k);
    else if (name == "FresnelCos") v = std::cos(piOverB * piOverB * prm.p * prm.q * k * k);
    else if (name == "FresnelSin") v = std::sin(piOverB * piOverB * prm.p * prm.q * k * k);
    else return false;
    w[static_cast<std::size_t>(k)] = v;
  }
  return true;
}

void ApplyWeights(SeriesKind kind, const std::vector<double>& w, double* x, double* y) {
  for (std::size_t k = 0; k < w.size(); ++k) {
    x[k] *= w[k];
    if (kind == SeriesKind::Fourier) y[k] *= w[k];
  }
}

void ISORTD(std::vector<double>& keys, std::vector<int>& idx) {
  const std::size_t count = keys.size();
  std::size_t gap = 1;
  while (gap <= count) gap = 3 * gap + 1;
  while (gap > 1) {
    gap /= 3;
    for (std::size_t i = gap; i < count; ++i) {
      const double key = keys[i];
      const int index = idx[i];
      std::size_t j = i;
      // Move forward only past smaller keys, and past equal keys of a later
      // index, so that equal keys keep the order of their indices.
      while (j >= gap && (keys[j - gap] < key || (keys[j - gap] == key && idx[j - gap] > index))) {
        keys[j] = keys[j - gap];
        idx[j] = idx[j - gap];
        j -= gap;
      }
      keys[j] = key;
      idx[j] = index;
    }
  }
}

void FSerHighMag(SeriesKind kind, int n, int h, double* x, double* y) {
  std::vector<double> keys = SelectionKeys(kind, n, x, y, false);
  std::vector<int> idx(keys.size());
  for (std::size_t i = 0; i < idx.size(); ++i) idx[i] = static_cast<int>(i);
  ISORTD(keys, idx);
  for (std::size_t p = static_cast<std::size_t>(std::max(h, 0)); p < idx.size(); ++p) Drop(kind, n, idx[p], x, y);
}

bool FSerEnerPerc(SeriesKind kind, int n, double e, double* x, double* y, SelectionReport& report) {
  const double r = 1 - e;
  if (r < 0 || r > 1) return false;
  std::vector<double> keys = SelectionKeys(kind, n, x, y, true);
  std::vector<int> idx(keys.size());
  for (std::size_t i = 0; i < idx.size(); ++i) idx[i] = static_cast<int>(i);
  ISORTD(keys, idx);
  for (double& k : keys)
    if (k < 0) k = 0;
  const int last = static_cast<int>(keys.size()) - 1;
  double sum = 0.0;
  for (int p = last; p >= 0; --p) sum += keys[static_cast<std::size_t>(p)];
  const double cut = r * sum;
  int m = 0;
  double acc = 0.0;
  for (int p = last; p >= 0; --p) {
    acc += keys[static_cast<std::size_t>(p)];
    if (acc > cut) {
      m = p + 1;
      break;
    }
  }
  int z = 1;
  if (r != 0) {
    for (int p = m; p <= last; ++p) {
      if (idx[static_cast<std::size_t>(p)] == 0) z = 0;
      Drop(kind, n, idx[static_cast<std::size_t>(p)], x, y);
    }
  } else {
    m = last + 1;
  }
  Report(kind, n, m, z, report);
  return true;
}

bool FSerThreshold(SeriesKind kind, int n, double t, double* x, double* y, SelectionReport& report) {
  if (t < 0 || t > 1) return false;
  const int last = LastCoefficient(kind, n);
  std::vector<double> mags(static_cast<std::size_t>(last) + 1);
  for (int i = 0; i <= last; ++i)
    mags[static_cast<std::size_t>(i)] = kind == SeriesKind::Fourier ? std::sqrt(x[i] * x[i] + y[i] * y[i]) : std::fabs(x[i]);
  int m = 0, z = 0;
  if (t != 0) {
    const double cut = t * *std::max_element(mags.begin(), mags.end());
    for (int i = 0; i <= last; ++i) {
      if (mags[static_cast<std::size_t>(i)] >= cut) {
        if (i == 0) z = 1;
        if (!(kind == SeriesKind::Fourier && i == 0)) ++m;
      } else {
        Drop(kind, n, i, x, y);
      }
    }
  } else {
    m = n / 2;
    z = 1;
  }
  Report(kind, n, m, z, report);
  return true;
}

SeriesResult FourierSeriesOf(int n, const double* values, SeriesKind kind, int h, bool averaged,
                             const SeriesFilter& filter) {
  const TrigTables t(n);
  const std::size_t size = static_cast<std::size_t>(n) + 5, last = static_cast<std::size_t>(n);
  KernelVector<double> x(values, values + n + 1), y(size, 0.0);
  x.resize(size, 0.0);
  const double yN = values[n];
  const bool fourier = kind == SeriesKind::Fourier;
  if (averaged && fourier) x[0] = (x[last] + x[0]) / 2;
  double base = 0.0, g = 0.0;
  if (kind == SeriesKind::Cosine) {
    base = x[last];
    for (std::size_t i = 0; i <= last; ++i) x[i] -= base;
    x[0] /= 2;
    for (int k = 0; k < n; ++k) g += (k & 1) ? -x[static_cast<std::size_t>(k)] : x[static_cast<std::size_t>(k)];
    g /= 2;
  }
  const auto forwardOrBack = [&] {
    if (kind == SeriesKind::Sine) SineTransformCore(n, x.data(), y.data(), t.sine.data(), t.tan.data(), t.m - 6, t.cosConstant);
    else CosineTransformCore(n, x.data(), y.data(), t.sine.data(), t.tan.data(), t.m - 6, t.cosConstant);
  };
  if (fourier) RealFFT(n, x.data(), y.data(), t.sine.data(), t.tan.data(), t.m - 1);
  else forwardOrBack();
  // The unfiltered spectrum, for the second pass of the diffraction filter.
  const KernelVector<double> storeX = x, storeY = y;
  if (kind == SeriesKind::Cosine) x[0] /= 2;

  SeriesResult result;
  bool truncate = true;
  switch (filter.mode) {
    case SeriesFilter::Mode::None: break;
    case SeriesFilter::Mode::Weights: ApplyWeights(kind, filter.weights, x.data(), y.data()); break;
    case SeriesFilter::Mode::Diffraction: ApplyWeights(kind, filter.weights, x.data(), y.data()); break;
    case SeriesFilter::Mode::Selects:
      if (!filter.select(x.data(), y.data(), result.report)) {
        result.ok = false;
        return result;
      }
      truncate = false;
      break;
  }
  std::vector<double> keep;
  for (int pass = 1;; ++pass) {
    if (truncate) {
      if (fourier) {
        for (int k = h + 1; k <= n / 2; ++k) x[static_cast<std::size_t>(k)] = y[static_cast<std::size_t>(k)] = 0.0;
      } else {
        for (int k = h + 1; k <= n; ++k) x[static_cast<std::size_t>(k)] = 0.0;
      }
    }
    double p = 0.0;
    if (kind == SeriesKind::Cosine)
      for (int k = 0; k <= h; ++k) p += (k & 1) ? -x[static_cast<std::size_t>(k)] : x[static_cast<std::size_t>(k)];
    if (fourier) RealInverseFFT(n, t.m - 6, x.data(), y.data(), t.sine.data(), t.tan.data());
    else forwardOrBack();
    if (fourier && averaged) x[last] = x[0];
    if (kind == SeriesKind::Cosine && h == n)
      for (int j = 0; j <= n; ++j) x[static_cast<std::size_t>(j)] += (j & 1) ? -g : g;
    const double d = fourier ? n : n / 2.0;
    for (std::size_t i = 0; i <= last; ++i) x[i] /= d;
    if (kind == SeriesKind::Cosine) {
      x[last] = p / d;
      for (std::size_t i = 0; i <= last; ++i) x[i] += base;
    }
    if (filter.mode != SeriesFilter::Mode::Diffraction) break;
    if (pass == 1) {
      keep.assign(x.begin(), x.begin() + static_cast<std::ptrdiff_t>(last) + 1);
      x = storeX;
      y = storeY;
      ApplyWeights(kind, filter.sineWeights, x.data(), y.data());
      continue;
    }
    for (std::size_t i = 0; i <= last; ++i) x[i] = x[i] * x[i] + keep[i] * keep[i];
    break;
  }
  if (!averaged) x[last] = yN;
  result.values.assign(x.begin(), x.begin() + static_cast<std::ptrdiff_t>(last) + 1);
  return result;
}

}  // namespace keldo::fourier
