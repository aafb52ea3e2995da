// The transforms against the Riemann sums of their continuous definitions,
// evaluated directly: dx * sum_j y(x_j) exp(+-2 pi i f x_j).

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <vector>

#include "fourier/transforms.h"

namespace keldo::fourier {
namespace {

using Complex = std::complex<long double>;
constexpr double kTolerance = 1e-12;
constexpr long double kPi = 3.141592653589793238462643383279502884L;

std::vector<double> Signal(int n, double a, double b, int which) {
  std::vector<double> y(static_cast<std::size_t>(n) + 1);
  for (int j = 0; j <= n; ++j) {
    const double x = a + j * (b - a) / n;
    y[static_cast<std::size_t>(j)] = which == 0 ? std::exp(-x * x) * std::cos(5 * x) + 0.3 * x : std::sin(3 * x) - x * x * x;
  }
  return y;
}

double Window(const std::string& name, double v) {
  if (name == "hanning") return (1 + std::cos(kProgramPi * v)) / 2;
  if (name == "Gauss") return std::exp(-4.5 * v * v);
  return 1.0;
}

// The expected transform, value by value, from the definition.
std::vector<Complex> RiemannSum(int n, const std::vector<double>& re, const std::vector<double>* im, double a, double b,
                                const TransformSetup& s) {
  const double dx = (b - a) / n, df = 1.0 / (b - a);
  std::vector<Complex> data(static_cast<std::size_t>(n));
  for (int j = 0; j < n; ++j) {
    double r = re[static_cast<std::size_t>(j)] * Window(s.window, (j - n / 2.0) / (n / 2.0));
    if (j == 0 && s.endpointAveraged && s.intervalType < 4)
      r = (re[static_cast<std::size_t>(n)] * Window(s.window, 1.0) + re[0] * Window(s.window, -1.0)) / 2;
    data[static_cast<std::size_t>(j)] = Complex(r, im ? (*im)[static_cast<std::size_t>(j)] : 0.0);
  }
  const long double sign = s.exponent == Exponent::Positive ? 1 : -1;
  std::vector<Complex> out(static_cast<std::size_t>(n) + 1);
  for (int k = 0; k < n; ++k) {
    const long double f = (s.intervalType <= 2 ? k - n / 2 : k) * static_cast<long double>(df);
    Complex sum = 0;
    for (int j = 0; j < n; ++j) {
      const long double x = a + j * static_cast<long double>(dx);
      sum += data[static_cast<std::size_t>(j)] * std::polar(1.0L, sign * 2 * kPi * f * x);
    }
    out[static_cast<std::size_t>(k)] = sum * static_cast<long double>(dx);
  }
  out[static_cast<std::size_t>(n)] = out[0];
  return out;
}

void ExpectClose(const std::vector<Complex>& expected, const TransformResult& r, bool power) {
  long double scale = 0;
  for (const Complex& c : expected) scale = std::max(scale, std::abs(c) * (power ? std::abs(c) : 1));
  for (std::size_t k = 0; k < expected.size(); ++k) {
    if (power) {
      EXPECT_NEAR(r.first[k], static_cast<double>(std::norm(expected[k])), kTolerance * scale) << k;
    } else {
      EXPECT_NEAR(r.first[k], static_cast<double>(expected[k].real()), kTolerance * scale) << k;
      EXPECT_NEAR(r.second[k], static_cast<double>(expected[k].imag()), kTolerance * scale) << k;
    }
  }
}

struct Case {
  int intervalType;
  Exponent exponent;
  bool complex;
  std::string window;
  bool averaged;
};

class FourierTransformCases : public ::testing::TestWithParam<Case> {};

TEST_P(FourierTransformCases, MatchesTheRiemannSum) {
  const Case c = GetParam();
  for (int n : {64, 256}) {
    for (int which : {0, 1}) {
      TransformSetup s;
      s.intervalType = c.intervalType;
      s.signalInterval = (c.intervalType == 1 || c.intervalType == 3) ? 1 : 2;
      s.exponent = c.exponent;
      s.dataType = c.complex ? DataType::Complex : DataType::Real;
      s.window = c.window;
      s.endpointAveraged = c.averaged;
      const double a = s.signalInterval == 1 ? -1.5 : 0.0, b = 1.5;
      const auto re = Signal(n, a, b, which), im = Signal(n, a, b, 1 - which);
      const auto expected = RiemannSum(n, re, c.complex ? &im : nullptr, a, b, s);
      const TransformResult r = FourierTransformOf(n, re.data(), c.complex ? im.data() : nullptr, a, b, s);
      ASSERT_EQ(r.first.size(), static_cast<std::size_t>(n) + 1);
      EXPECT_DOUBLE_EQ(r.step, 1.0 / (b - a));
      if (c.intervalType <= 2) {
        EXPECT_DOUBLE_EQ(r.left, -n * r.step / 2);
        EXPECT_DOUBLE_EQ(r.right, n * r.step / 2);
      } else {
        EXPECT_EQ(r.left, 0.0);
        EXPECT_DOUBLE_EQ(r.right, n * r.step);
      }
      ExpectClose(expected, r, false);
      s.outputClass = 2;
      s.displayKind = 0;
      const TransformResult power = FourierTransformOf(n, re.data(), c.complex ? im.data() : nullptr, a, b, s);
      EXPECT_TRUE(power.second.empty());
      ExpectClose(expected, power, true);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(
    Choices, FourierTransformCases,
    ::testing::Values(Case{1, Exponent::Negative, false, "None", false}, Case{1, Exponent::Positive, false, "None", false},
                      Case{2, Exponent::Negative, false, "None", false}, Case{3, Exponent::Negative, false, "None", false},
                      Case{4, Exponent::Positive, false, "None", false}, Case{1, Exponent::Negative, true, "None", false},
                      Case{2, Exponent::Positive, true, "None", false}, Case{3, Exponent::Positive, true, "None", true},
                      Case{4, Exponent::Negative, true, "None", true}, Case{1, Exponent::Negative, false, "hanning", true},
                      Case{3, Exponent::Negative, true, "Gauss", false}, Case{2, Exponent::Negative, false, "None", true}));

TEST(FourierTransform, CentreValueIsTheSumTimesTheStep) {
  const int n = 64;
  const auto y = Signal(n, -1.0, 1.0, 0);
  TransformSetup s;
  s.endpointAveraged = true;
  const TransformResult r = FourierTransformOf(n, y.data(), nullptr, -1.0, 1.0, s);
  double sum = (y[0] + y[static_cast<std::size_t>(n)]) / 2;
  for (int j = 1; j < n; ++j) sum += y[static_cast<std::size_t>(j)];
  EXPECT_NEAR(r.first[static_cast<std::size_t>(n / 2)], sum * (2.0 / n), 1e-14);
  // Type 4 ignores the averaging; type 3 does not.
  s.intervalType = 4;
  s.signalInterval = 2;
  TransformSetup plain = s;
  plain.endpointAveraged = false;
  EXPECT_EQ(FourierTransformOf(n, y.data(), nullptr, 0.0, 1.0, s).first,
            FourierTransformOf(n, y.data(), nullptr, 0.0, 1.0, plain).first);
  s.intervalType = 3;
  s.signalInterval = 1;
  plain.intervalType = 3;
  plain.signalInterval = 1;
  EXPECT_NE(FourierTransformOf(n, y.data(), nullptr, -1.0, 1.0, s).first,
            FourierTransformOf(n, y.data(), nullptr, -1.0, 1.0, plain).first);
}

TEST(FourierTransform, ExponentSignsShareTheRealPartForRealData) {
  const int n = 128;
  const auto y = Signal(n, -2.0, 2.0, 1);
  TransformSetup neg, pos;
  pos.exponent = Exponent::Positive;
  const auto a = FourierTransformOf(n, y.data(), nullptr, -2.0, 2.0, neg);
  const auto b = FourierTransformOf(n, y.data(), nullptr, -2.0, 2.0, pos);
  EXPECT_EQ(a.first, b.first);
  for (int k = 0; k <= n; ++k) EXPECT_EQ(a.second[static_cast<std::size_t>(k)], -b.second[static_cast<std::size_t>(k)]);
}

TEST(AMPPH, MagnitudeAndPhaseInTheHalfOpenRange) {
  double x[] = {3.0, -2.0, 0.0, 0.0, -1.0, 1.0, -1.0, 0.0};
  double y[] = {4.0, 0.0, 2.0, -2.0, 1.0, -1.0, -1e-9, 0.0};
  AMPPH(7, x, y);
  EXPECT_DOUBLE_EQ(x[0], 5.0);
  EXPECT_DOUBLE_EQ(y[0], std::atan(4.0 / 3.0));
  EXPECT_EQ(y[1], 3.14159265358979);
  EXPECT_EQ(y[2], 3.14159265358979 / 2);
  EXPECT_EQ(y[3], -3.14159265358979 / 2);
  EXPECT_DOUBLE_EQ(y[4], std::atan(-1.0) + 3.14159265358979);
  EXPECT_DOUBLE_EQ(y[5], std::atan(-1.0));
  EXPECT_EQ(y[6], 3.14159265358979);  // just below -pi: within the tolerance, so +pi
  EXPECT_EQ(x[7], 0.0);
  EXPECT_EQ(y[7], 0.0);
}

TEST(TrigTransforms, SineAndCosineAreTheirSumsTimesTwiceTheStep) {
  for (int n : {64, 512}) {
    const double a = -0.5, b = 2.0, dx = (b - a) / n;
    const auto y = Signal(n, a, b, 0);
    const auto sine = FourierTrigTransformOf(n, y.data(), a, b, 5, "None");
    const auto cosine = FourierTrigTransformOf(n, y.data(), a, b, 6, "None");
    EXPECT_EQ(sine.left, 0.0);
    EXPECT_DOUBLE_EQ(sine.step, 1.0 / (2 * (b - a)));
    EXPECT_DOUBLE_EQ(sine.right, n / (2 * (b - a)));
    long double scale = 0;
    std::vector<long double> s(static_cast<std::size_t>(n) + 1), c(static_cast<std::size_t>(n) + 1);
    for (int k = 0; k <= n; ++k) {
      long double ss = 0, cs = y[0] / 2.0L + ((k & 1) ? -1 : 1) * y[static_cast<std::size_t>(n)] / 2.0L;
      for (int j = 1; j < n; ++j) {
        ss += y[static_cast<std::size_t>(j)] * std::sin(kPi * ((1LL * j * k) % (2 * n)) / n);
        cs += y[static_cast<std::size_t>(j)] * std::cos(kPi * ((1LL * j * k) % (2 * n)) / n);
      }
      s[static_cast<std::size_t>(k)] = 2 * dx * ss;
      c[static_cast<std::size_t>(k)] = 2 * dx * cs;
      scale = std::max({scale, std::fabs(s[static_cast<std::size_t>(k)]), std::fabs(c[static_cast<std::size_t>(k)])});
    }
    for (int k = 0; k <= n; ++k) {
      EXPECT_NEAR(sine.first[static_cast<std::size_t>(k)], static_cast<double>(s[static_cast<std::size_t>(k)]), kTolerance * scale) << k;
      EXPECT_NEAR(cosine.first[static_cast<std::size_t>(k)], static_cast<double>(c[static_cast<std::size_t>(k)]), kTolerance * scale) << k;
    }
    EXPECT_EQ(sine.first[0], 0.0);
    EXPECT_EQ(sine.first[static_cast<std::size_t>(n)], 0.0);
  }
}

TEST(TrigTransforms, SineIgnoresTheEndValuesAndWindowsAreOneSided) {
  const int n = 64;
  auto y = Signal(n, 0.0, 1.0, 1);
  const auto before = FourierTrigTransformOf(n, y.data(), 0.0, 1.0, 5, "None");
  y[0] = 100.0;
  y[static_cast<std::size_t>(n)] = -100.0;
  EXPECT_EQ(FourierTrigTransformOf(n, y.data(), 0.0, 1.0, 5, "None").first, before.first);
  std::vector<double> windowed = y;
  TimeFilter2("Hamming", n, windowed.data());
  EXPECT_DOUBLE_EQ(windowed[0], y[0]);  // weight 1 at v = 0
  EXPECT_DOUBLE_EQ(windowed[static_cast<std::size_t>(n)], y[static_cast<std::size_t>(n)] * 0.08);
  std::vector<double> centred = y;
  TimeFilter("Hamming", n, centred.data());
  EXPECT_DOUBLE_EQ(centred[static_cast<std::size_t>(n / 2)], y[static_cast<std::size_t>(n / 2)]);
  EXPECT_DOUBLE_EQ(centred[0], y[0] * 0.08);
}

}  // namespace
}  // namespace keldo::fourier
