#include "fourier/transforms.h"

#include <algorithm>
#include <cmath>

#include "fourier/fft.h"

namespace keldo::fourier {
namespace {

// The window's weight at v, or 1 for none.
double WindowWeight(const std::string& name, double v) {
  if (name == "hanning") return 0.5 * std::cos(kProgramPi * v) + 0.5;
  if (name == "Hamming") return 0.54 + 0.46 * std::cos(kProgramPi * v);
  if (name == "Blackman") return 0.5 * std::cos(kProgramPi * v) + 0.42 + 0.08 * std::cos(2 * kProgramPi * v);
  if (name == "Gauss") return std::exp(-18.0 / 4 * v * v);
  return 1.0;
}

bool IsWindow(const std::string& name) {
  return name == "hanning" || name == "Hamming" || name == "Blackman" || name == "Gauss";
}

int ExponentOf(int n) {
  int m = 0;
  while ((1 << m) < n) ++m;
  return m;
}

}  // namespace

void TimeFilter(const std::string& name, int n, double* a) {
  if (!IsWindow(name)) return;
  const double half = n / 2.0;
  for (int i = 0; i <= n; ++i) a[i] *= WindowWeight(name, (i - half) / half);
}

void TimeFilter2(const std::string& name, int n, double* a) {
  if (!IsWindow(name)) return;
  for (int i = 0; i <= n; ++i) a[i] *= WindowWeight(name, static_cast<double>(i) / n);
}

double FUNMX(int n, const double* a) {
  double m = 0.0;
  for (int i = 0; i <= n; ++i) m = std::max(m, std::fabs(a[i]));
  return m;
}

void AMPPH(int n, double* x, double* y) {
  const double pi = kProgramPi;
  for (int i = 0; i <= n; ++i) {
    const double p = x[i], q = y[i];
    const double r = std::sqrt(p * p + q * q);
    double phase;
    if (q == 0.0) phase = p >= 0.0 ? 0.0 : pi;
    else if (q > 0.0) phase = p > 0.0 ? std::atan(q / p) : p == 0.0 ? pi / 2 : std::atan(q / p) + pi;
    else phase = p > 0.0 ? std::atan(q / p) : p == 0.0 ? -pi / 2 : std::atan(q / p) - pi;
    if (std::fabs(phase + pi) < 5e-7) phase = pi;
    x[i] = r;
    y[i] = phase;
  }
}

TransformResult FourierTransformOf(int n, const double* re, const double* im, double a, double b,
                                   const TransformSetup& setup) {
  const int m = ExponentOf(n);
  const TrigTables tables(n);
  KernelVector<double> x(static_cast<std::size_t>(n) + 5, 0.0), y(static_cast<std::size_t>(n) + 5, 0.0);
  std::copy(re, re + n + 1, x.begin());
  const bool complex = setup.dataType == DataType::Complex && im != nullptr;
  if (complex) std::copy(im, im + n + 1, y.begin());
  const double dx = (b - a) / n;
  // The window goes on the real part alone.
  TimeFilter(setup.window, n, x.data());
  if (setup.endpointAveraged && setup.intervalType < 4) x[0] = (x[static_cast<std::size_t>(n)] + x[0]) / 2;
  const bool negative = setup.exponent == Exponent::Negative;
  if (complex && negative)
    for (int i = 0; i <= n; ++i) y[static_cast<std::size_t>(i)] = -y[static_cast<std::size_t>(i)];
  if (complex) {
    ComplexFFT(x.data(), y.data(), tables.sine.data(), tables.tan.data(), n, m);
  } else {
    RealFFT(n, x.data(), y.data(), tables.sine.data(), tables.tan.data(), m - 1);
  }
  SwapHalves(n, x.data());
  SwapHalves(n, y.data());
  const std::size_t last = static_cast<std::size_t>(n);
  if (setup.intervalType <= 2) {
    x[last] = x[0];
    y[last] = y[0];
  }
  if (setup.signalInterval == 1)
    for (int i = 1; i < n; i += 2) {
      x[static_cast<std::size_t>(i)] = -x[static_cast<std::size_t>(i)];
      y[static_cast<std::size_t>(i)] = -y[static_cast<std::size_t>(i)];
    }
  for (std::size_t i = 0; i <= last; ++i) {
    x[i] *= dx;
    y[i] *= dx;
  }
  TransformResult result;
  result.step = 1.0 / (b - a);
  if (setup.intervalType <= 2) {
    result.right = n * result.step / 2;
    result.left = -result.right;
  } else {
    result.left = 0.0;
    result.right = n * result.step;
    SwapHalves(n, x.data());
    SwapHalves(n, y.data());
    x[last] = x[0];
    y[last] = y[0];
  }
  if (negative)
    for (std::size_t i = 0; i <= last; ++i) y[i] = -y[i];
  const auto end = [&](const KernelVector<double>& v) { return v.cbegin() + static_cast<std::ptrdiff_t>(last) + 1; };
  if (setup.outputClass == 2) {
    for (std::size_t i = 0; i <= last; ++i) x[i] = x[i] * x[i] + y[i] * y[i];
    result.first.assign(x.cbegin(), end(x));
    return result;
  }
  if (setup.displayKind == 2) AMPPH(n, x.data(), y.data());
  result.first.assign(x.cbegin(), end(x));
  result.second.assign(y.cbegin(), end(y));
  return result;
}

TransformResult FourierTrigTransformOf(int n, const double* values, double a, double b, int kind,
                                       const std::string& window) {
  const int m = ExponentOf(n);
  const TrigTables tables(n);
  KernelVector<double> x(values, values + n + 1), y(static_cast<std::size_t>(n) + 5, 0.0);
  x.resize(static_cast<std::size_t>(n) + 5, 0.0);
  const std::size_t last = static_cast<std::size_t>(n);
  const double dx = (b - a) / n;
  TimeFilter2(window, n, x.data());
  if (kind == 5) {
    SineTransformCore(n, x.data(), y.data(), tables.sine.data(), tables.tan.data(), m - 6, tables.cosConstant);
  } else {
    // The trapezoid weights at the ends, kept apart from the core.
    const double p = x[0] / 2;
    x[0] = 0.0;
    const double q = x[last] / 2;
    double e = p + q;
    for (int k = 1; k < n; ++k) e += (k & 1) ? -x[static_cast<std::size_t>(k)] : x[static_cast<std::size_t>(k)];
    CosineTransformCore(n, x.data(), y.data(), tables.sine.data(), tables.tan.data(), m - 6, tables.cosConstant);
    for (int k = 0; k < n; ++k) x[static_cast<std::size_t>(k)] += ((k & 1) ? -q : q) + p;
    x[last] = e;
  }
  for (std::size_t i = 0; i <= last; ++i) x[i] *= 2 * dx;
  TransformResult result;
  result.first.assign(x.begin(), x.begin() + static_cast<std::ptrdiff_t>(last) + 1);
  result.left = 0.0;
  result.step = 1.0 / (2 * (b - a));
  result.right = n * result.step;
  return result;
}

}  // namespace keldo::fourier
