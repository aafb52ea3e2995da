#include "fourier/convolve.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "fourier/fft.h"

namespace keldo::fourier {
namespace {

// sqrt of the sum of squares of a[0..N-1], or 1 when that sum is 0.
double NormFactor(int n, const double* a) {
  double sum = 0.0;
  for (int i = 0; i < n; ++i) sum += a[i] * a[i];
  return sum == 0.0 ? 1.0 : std::sqrt(sum);
}

}  // namespace

std::vector<double> ConvolveGraphs(int n, const double* first, const double* second, const ConvolveSetup& s) {
  const TrigTables t(n);
  const std::size_t size = static_cast<std::size_t>(n) + 5, last = static_cast<std::size_t>(n);
  KernelVector<double> a(first, first + n + 1), b(size, 0.0);
  a.resize(size, 0.0);
  double norm1 = 1.0, norm2 = 1.0;
  if (s.normalize) norm1 = norm2 = NormFactor(n, a.data());
  if (s.kind != 2) {
    std::copy(second, second + n + 1, b.begin());
    if (s.normalize) norm2 = NormFactor(n, b.data());
  }
  if (s.kind == 3)
    for (int i = 0; i < n / 2; ++i) std::swap(a[static_cast<std::size_t>(i)], a[last - static_cast<std::size_t>(i)]);
  if (s.kind == 2) {
    RealFFT(n, a.data(), b.data(), t.sine.data(), t.tan.data(), t.m - 1);
    for (std::size_t i = 0; i <= last; ++i) a[i] = a[i] * a[i] + b[i] * b[i];
    RealFFT(n, a.data(), b.data(), t.sine.data(), t.tan.data(), t.m - 1);
  } else {
    ComplexFFT(a.data(), b.data(), t.sine.data(), t.tan.data(), n, t.m);
    // The spectra of the two real graphs, taken apart and multiplied.
    for (int k = 1; k <= n / 2; ++k) {
      const std::size_t i = static_cast<std::size_t>(k), c = last - i;
      const double p = (a[c] + a[i]) / 2, q = (b[i] - b[c]) / 2;
      const double r = (b[c] + b[i]) / 2, u = (a[c] - a[i]) / 2;
      a[i] = p * r - q * u;
      b[i] = q * r + p * u;
    }
    a[0] = a[0] * b[0];
    b[0] = 0.0;
    RealInverseFFT(n, t.m - 6, a.data(), b.data(), t.sine.data(), t.tan.data());
  }
  if (s.symmetric) SwapHalves(n, a.data());
  for (std::size_t i = 0; i <= last; ++i) a[i] = s.normalize ? a[i] / n : s.dx * a[i] / n;
  a[last] = a[0];
  if (s.divideByLength)
    for (std::size_t i = 0; i <= last; ++i) a[i] /= s.length;
  if (s.normalize)
    for (std::size_t i = 0; i <= last; ++i) a[i] /= norm1 * norm2;
  return std::vector<double>(a.begin(), a.begin() + static_cast<std::ptrdiff_t>(last) + 1);
}

}  // namespace keldo::fourier
