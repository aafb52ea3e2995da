// How close the Fourier kernels come to the exact transform, for every
// power of two from 64 to 65536: the largest error over all outputs divided
// by the largest output magnitude, against a long-double FFT whose twiddles
// come from cosl and sinl one by one. The bounds in
// tests/data/fft_precision.tsv are the kernels' errors as first measured,
// rounded up to two digits: a faster kernel may not be less accurate.
// With KELDO_PRINT_PRECISION=1 the test prints the table it measured
// (scripts/fft_precision.sh makes the table of docs/fft-precision.md).

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <limits>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "fourier/fft.h"

namespace keldo::fourier {
namespace {

using Exact = std::complex<long double>;
constexpr long double kPi = 3.141592653589793238462643383279502884L;

// sum_j a[j] exp(+2 pi i j k / N), iteratively in long double.
std::vector<Exact> ExactTransform(std::vector<Exact> a) {
  const std::size_t n = a.size();
  for (std::size_t i = 1, j = 0; i < n; ++i) {
    std::size_t bit = n >> 1;
    for (; j & bit; bit >>= 1) j ^= bit;
    j ^= bit;
    if (i < j) std::swap(a[i], a[j]);
  }
  std::vector<Exact> w(n / 2);
  for (std::size_t k = 0; k < n / 2; ++k) {
    const long double angle = 2 * kPi * static_cast<long double>(k) / static_cast<long double>(n);
    w[k] = Exact(std::cos(angle), std::sin(angle));
  }
  for (std::size_t len = 2; len <= n; len *= 2) {
    const std::size_t step = n / len;
    for (std::size_t i = 0; i < n; i += len)
      for (std::size_t k = 0; k < len / 2; ++k) {
        const Exact u = a[i + k], v = a[i + k + len / 2] * w[k * step];
        a[i + k] = u + v;
        a[i + k + len / 2] = u - v;
      }
  }
  return a;
}

std::vector<double> Signal(int n, unsigned seed) {
  std::mt19937_64 random(seed);
  std::uniform_real_distribution<double> uniform(-1.0, 1.0);
  std::vector<double> v(static_cast<std::size_t>(n) + 5, 0.0);
  for (int i = 0; i <= n; ++i) v[static_cast<std::size_t>(i)] = uniform(random);
  return v;
}

// max |ours - exact| / max |exact| over the outputs given.
struct ErrorMeter {
  long double worst = 0, largest = 0;
  void Add(long double ours, long double exact) {
    worst = std::max(worst, std::fabs(ours - exact));
    largest = std::max(largest, std::fabs(exact));
  }
  double Relative() const { return static_cast<double>(worst / largest); }
};

double ComplexError(int n) {
  const TrigTables t(n);
  std::vector<double> x = Signal(n, 11), y = Signal(n, 12);
  std::vector<Exact> a(static_cast<std::size_t>(n));
  for (int j = 0; j < n; ++j) a[static_cast<std::size_t>(j)] = Exact(x[static_cast<std::size_t>(j)], y[static_cast<std::size_t>(j)]);
  const std::vector<Exact> z = ExactTransform(a);
  BitReversePair(x.data(), y.data(), n, t.m);
  ComplexFFTCore(x.data(), y.data(), t.sine.data(), t.tan.data(), n, 1);
  ErrorMeter e;
  for (int k = 0; k < n; ++k) {
    e.Add(x[static_cast<std::size_t>(k)], z[static_cast<std::size_t>(k)].real());
    e.Add(y[static_cast<std::size_t>(k)], z[static_cast<std::size_t>(k)].imag());
  }
  return e.Relative();
}

double RealError(int n) {
  const TrigTables t(n);
  std::vector<double> x = Signal(n, 21), y(x.size(), 0.0);
  std::vector<Exact> a(static_cast<std::size_t>(n));
  for (int j = 0; j < n; ++j) a[static_cast<std::size_t>(j)] = x[static_cast<std::size_t>(j)];
  const std::vector<Exact> z = ExactTransform(a);
  RealFFT(n, x.data(), y.data(), t.sine.data(), t.tan.data(), t.m - 1);
  ErrorMeter e;
  for (int k = 0; k < n; ++k) {
    e.Add(x[static_cast<std::size_t>(k)], z[static_cast<std::size_t>(k)].real());
    e.Add(y[static_cast<std::size_t>(k)], z[static_cast<std::size_t>(k)].imag());
  }
  return e.Relative();
}

// The sine sum over j = 1..N-1 is half the imaginary part of the transform
// of the odd extension of length 2N; the cosine sum over j = 0..N-1 is half
// of x[0] plus the real part of the transform of the even extension.
double TrigError(int n, bool sine) {
  const TrigTables t(n);
  std::vector<double> x = Signal(n, sine ? 31 : 32), y(x.size(), 0.0);
  std::vector<Exact> a(2 * static_cast<std::size_t>(n), Exact(0));
  for (int j = sine ? 1 : 0; j < n; ++j) {
    const long double v = x[static_cast<std::size_t>(j)];
    a[static_cast<std::size_t>(j)] = v;
    if (j > 0) a[2 * static_cast<std::size_t>(n) - static_cast<std::size_t>(j)] = sine ? -v : v;
  }
  const long double x0 = x[0];
  const std::vector<Exact> z = ExactTransform(a);
  if (sine) SineTransformCore(n, x.data(), y.data(), t.sine.data(), t.tan.data(), t.m - 6, t.cosConstant);
  else CosineTransformCore(n, x.data(), y.data(), t.sine.data(), t.tan.data(), t.m - 6, t.cosConstant);
  ErrorMeter e;
  for (int k = 0; k < (sine ? n + 1 : n); ++k) {
    const Exact f = z[static_cast<std::size_t>(k)];
    e.Add(x[static_cast<std::size_t>(k)], sine ? f.imag() / 2 : (f.real() + x0) / 2);
  }
  return e.Relative();
}

std::map<std::string, double> Bounds() {
  std::map<std::string, double> out;
  std::ifstream in(KELDO_TEST_DATA "/fft_precision.tsv");
  std::string line;
  while (std::getline(in, line)) {
    if (line.empty() || line[0] == '#') continue;
    std::istringstream fields(line);
    std::string kind;
    int n = 0;
    double bound = 0;
    fields >> kind >> n >> bound;
    out[kind + " " + std::to_string(n)] = bound;
  }
  return out;
}

TEST(FFTPrecision, EveryKernelAtEverySizeIsNoLessAccurateThanItsBound) {
  const auto bounds = Bounds();
  const bool print = std::getenv("KELDO_PRINT_PRECISION") != nullptr;
  if (print) std::printf("kind\tN\trelative error\n");
  for (int m = 6; m <= 16; ++m) {
    const int n = 1 << m;
    const std::pair<const char*, double> rows[] = {{"complex", ComplexError(n)},
                                                   {"real", RealError(n)},
                                                   {"sine", TrigError(n, true)},
                                                   {"cosine", TrigError(n, false)}};
    for (const auto& [kind, error] : rows) {
      if (print) std::printf("%s\t%d\t%.6e\n", kind, n, error);
      const auto bound = bounds.find(std::string(kind) + " " + std::to_string(n));
      EXPECT_NE(bound, bounds.end()) << kind << " " << n;
      if (bound != bounds.end()) {
        EXPECT_LE(error, bound->second) << kind << " " << n;
      }
      // Whatever the table says, a double kernel stays well within 1e-12.
      EXPECT_LT(error, 1e-12) << kind << " " << n;
    }
  }
}

}  // namespace
}  // namespace keldo::fourier

namespace keldo::fourier {
namespace {

// The permutation with the first stages folded in gives the very bits of the
// permutation followed by the whole transform, at every size and in both
// precisions.
template <typename T, typename Tables>
void ExpectSameBits(int n) {
  const Tables t(n);
  std::mt19937_64 random(static_cast<unsigned>(n));
  std::uniform_real_distribution<double> uniform(-1.0, 1.0);
  std::vector<T> x(static_cast<std::size_t>(n) + 5), y(x.size());
  for (std::size_t i = 0; i < x.size(); ++i) {
    x[i] = static_cast<T>(uniform(random));
    y[i] = static_cast<T>(uniform(random));
  }
  std::vector<T> x2 = x, y2 = y;
  BitReversePair(x.data(), y.data(), n, t.m);
  ComplexFFTCore(x.data(), y.data(), t.sine.data(), t.tan.data(), n, 1);
  ComplexFFT(x2.data(), y2.data(), t.sine.data(), t.tan.data(), n, t.m);
  for (int k = 0; k < n; ++k) {
    ASSERT_EQ(x[static_cast<std::size_t>(k)], x2[static_cast<std::size_t>(k)]) << n << " " << k;
    ASSERT_EQ(y[static_cast<std::size_t>(k)], y2[static_cast<std::size_t>(k)]) << n << " " << k;
  }
}

TEST(FFTPrecision, TheFoldedPermutationGivesTheSameBitsAsTheTwoSteps) {
  for (int m = 3; m <= 16; ++m) {
    ExpectSameBits<double, TrigTables>(1 << m);
    ExpectSameBits<float, FloatTrigTables>(1 << m);
  }
}


// The stages start their vector steps where the arrays are aligned, so each
// placement of the arrays takes another path; every one gives the same bits.
// Three signals: random numbers; signed zeros around a single one, whose
// exact zeros keep their signs only if the trivial twiddles are done as
// such; and a single infinity.
template <typename T>
bool SameBits(T a, T b) {
  if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && std::isnan(b);  // a NaN's sign is no result
  return std::memcmp(&a, &b, sizeof a) == 0;
}

template <typename T, typename Tables>
void ExpectTheSameBitsAtEveryPlacement(int n, int signal) {
  const Tables t(n);
  std::mt19937_64 random(static_cast<unsigned>(3 * n));
  std::uniform_real_distribution<double> uniform(-1.0, 1.0);
  std::vector<T> re(static_cast<std::size_t>(n)), im(re.size());
  for (std::size_t i = 0; i < re.size(); ++i) {
    re[i] = signal == 0 ? static_cast<T>(uniform(random)) : (i % 3 == 0 ? T(-0.0) : T(0.0));
    im[i] = signal == 0 ? static_cast<T>(uniform(random)) : (i % 5 == 1 ? T(-0.0) : T(0.0));
  }
  if (signal == 1) re[5 % re.size()] = T(1);
  if (signal == 2) im[3] = std::numeric_limits<T>::infinity();
  constexpr std::size_t kSpread = 16;  // elements; more than a vector's width
  std::vector<T> bufferX(re.size() + kSpread + 5), bufferY(bufferX.size());
  std::vector<T> firstX, firstY;
  for (std::size_t offX = 0; offX < kSpread; ++offX) {
    const std::size_t offY = (offX * 5) % kSpread;  // x and y placed apart as well
    T* x = bufferX.data() + offX;
    T* y = bufferY.data() + offY;
    std::copy(re.begin(), re.end(), x);
    std::copy(im.begin(), im.end(), y);
    ComplexFFT(x, y, t.sine.data(), t.tan.data(), n, t.m);
    if (offX == 0) {
      firstX.assign(x, x + n);
      firstY.assign(y, y + n);
      continue;
    }
    for (int k = 0; k < n; ++k) {
      ASSERT_TRUE(SameBits(x[k], firstX[static_cast<std::size_t>(k)])) << n << " " << signal << " " << offX << " " << k;
      ASSERT_TRUE(SameBits(y[k], firstY[static_cast<std::size_t>(k)])) << n << " " << signal << " " << offX << " " << k;
    }
  }
}

TEST(FFTPrecision, WhereTheArraysLieChangesNotABit) {
  for (int m = 3; m <= 14; ++m) {
    for (int signal = 0; signal < 3; ++signal) {
      ExpectTheSameBitsAtEveryPlacement<double, TrigTables>(1 << m, signal);
      ExpectTheSameBitsAtEveryPlacement<float, FloatTrigTables>(1 << m, signal);
    }
  }
}

}  // namespace
}  // namespace keldo::fourier
