// Partial sums of series against direct sums of their formulas, and the
// frequency filters' weights and selections.

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "fourier/series.h"

namespace keldo::fourier {
namespace {

constexpr long double kPi = 3.141592653589793238462643383279502884L;

std::vector<double> Signal(int n) {
  std::vector<double> y(static_cast<std::size_t>(n) + 1);
  for (int j = 0; j <= n; ++j) {
    const double x = -1.0 + 2.0 * j / n;
    y[static_cast<std::size_t>(j)] = std::exp(x) * std::sin(4 * x) + (x > 0.3 ? 1.0 : 0.0);
  }
  return y;
}

long double At(const std::vector<double>& y, int j) { return y[static_cast<std::size_t>(j)]; }

// The partial sums from their formulas.
std::vector<long double> Expected(const std::vector<double>& y, int n, SeriesKind kind, int h) {
  std::vector<long double> s(static_cast<std::size_t>(n) + 1, 0.0L);
  if (kind == SeriesKind::Fourier) {
    for (int j = 0; j < n; ++j) {
      long double sum = 0;
      for (int k = -h; k <= h; ++k) {
        // c_k = sum_m y_m exp(+2 pi i m k / N); the term c_k exp(-2 pi i j k / N).
        for (int m = 0; m < n; ++m) sum += At(y, m) * std::cos(2 * kPi * ((1LL * (m - j) * k) % n) / n);
      }
      s[static_cast<std::size_t>(j)] = sum / n;
    }
    s[static_cast<std::size_t>(n)] = At(y, n);
  } else if (kind == SeriesKind::Sine) {
    for (int j = 0; j <= n; ++j) {
      long double sum = 0;
      for (int k = 1; k <= h; ++k) {
        long double b = 0;
        for (int m = 1; m < n; ++m) b += At(y, m) * std::sin(kPi * ((1LL * m * k) % (2 * n)) / n);
        sum += b * std::sin(kPi * ((1LL * j * k) % (2 * n)) / n);
      }
      s[static_cast<std::size_t>(j)] = 2 * sum / n;
    }
    s[static_cast<std::size_t>(n)] = At(y, n);
  } else {
    const long double base = At(y, n);
    for (int j = 0; j <= n; ++j) {
      long double sum = 0;
      for (int k = 0; k <= h; ++k) {
        long double a = (At(y, 0) - base) / 2;
        for (int m = 1; m < n; ++m) a += (At(y, m) - base) * std::cos(kPi * ((1LL * m * k) % (2 * n)) / n);
        if (k == 0) a /= 2;
        sum += a * std::cos(kPi * ((1LL * j * k) % (2 * n)) / n);
      }
      s[static_cast<std::size_t>(j)] = 2 * sum / n + base;
    }
    s[static_cast<std::size_t>(n)] = At(y, n);  // the graph's own last value
  }
  return s;
}

class SeriesSums : public ::testing::TestWithParam<std::tuple<int, int>> {};

TEST_P(SeriesSums, PartialSumsAreTheirFormulas) {
  const int n = 64;
  const SeriesKind kind = static_cast<SeriesKind>(std::get<0>(GetParam()));
  const int h = std::get<1>(GetParam());
  const auto y = Signal(n);
  const SeriesResult r = FourierSeriesOf(n, y.data(), kind, h, false, SeriesFilter{});
  ASSERT_TRUE(r.ok);
  const auto e = Expected(y, n, kind, h);
  for (int j = 0; j <= n; ++j) EXPECT_NEAR(r.values[static_cast<std::size_t>(j)], static_cast<double>(e[static_cast<std::size_t>(j)]), 1e-12) << j;
}

// Harmonics up to the maximum of each kind: N/2 - 1 for Fourier, N - 1 else.
INSTANTIATE_TEST_SUITE_P(KindsAndHarmonics, SeriesSums,
                         ::testing::Values(std::make_tuple(1, 0), std::make_tuple(1, 1), std::make_tuple(1, 5),
                                           std::make_tuple(1, 17), std::make_tuple(1, 31), std::make_tuple(2, 0),
                                           std::make_tuple(2, 1), std::make_tuple(2, 5), std::make_tuple(2, 31),
                                           std::make_tuple(2, 63), std::make_tuple(3, 0), std::make_tuple(3, 1),
                                           std::make_tuple(3, 17), std::make_tuple(3, 31), std::make_tuple(3, 63)));

TEST(Series, EdgeCasesOfTheHarmonicCount) {
  const int n = 64;
  const auto y = Signal(n);
  // Fourier with H = N/2 gives the samples back; y[0] averaged when checked.
  auto r = FourierSeriesOf(n, y.data(), SeriesKind::Fourier, n / 2, false, {});
  for (int j = 0; j <= n; ++j) EXPECT_NEAR(r.values[static_cast<std::size_t>(j)], y[static_cast<std::size_t>(j)], 1e-13);
  r = FourierSeriesOf(n, y.data(), SeriesKind::Fourier, n / 2, true, {});
  EXPECT_NEAR(r.values[0], (y[0] + y[static_cast<std::size_t>(n)]) / 2, 1e-13);
  EXPECT_EQ(r.values[static_cast<std::size_t>(n)], r.values[0]);
  // Fourier with H = 0: the mean of y[0..N-1], and y[N] at the end.
  r = FourierSeriesOf(n, y.data(), SeriesKind::Fourier, 0, false, {});
  double mean = 0;
  for (int j = 0; j < n; ++j) mean += y[static_cast<std::size_t>(j)];
  mean /= n;
  for (int j = 0; j < n; ++j) EXPECT_NEAR(r.values[static_cast<std::size_t>(j)], mean, 1e-14);
  EXPECT_EQ(r.values[static_cast<std::size_t>(n)], y[static_cast<std::size_t>(n)]);
  // Cosine with H = N reproduces every sample.
  r = FourierSeriesOf(n, y.data(), SeriesKind::Cosine, n, false, {});
  for (int j = 0; j <= n; ++j) EXPECT_NEAR(r.values[static_cast<std::size_t>(j)], y[static_cast<std::size_t>(j)], 1e-13) << j;
  // Sine with H = 0: zero but the last point.
  r = FourierSeriesOf(n, y.data(), SeriesKind::Sine, 0, false, {});
  for (int j = 0; j < n; ++j) EXPECT_EQ(r.values[static_cast<std::size_t>(j)], 0.0);
  EXPECT_EQ(r.values[static_cast<std::size_t>(n)], y[static_cast<std::size_t>(n)]);
}

TEST(Filters, WeightsFollowTheirFormulas) {
  std::vector<double> w;
  const FilterParameters none;
  ASSERT_TRUE(FilterWeights("hanning", 4, none, w));
  EXPECT_DOUBLE_EQ(w[2], (1 + std::cos(3.14159265358979 / 2)) / 2);
  ASSERT_TRUE(FilterWeights("Hamming", 4, none, w));
  EXPECT_DOUBLE_EQ(w[4], 0.54 + 0.46 * std::cos(3.14159265358979));
  ASSERT_TRUE(FilterWeights("Cesaro", 4, none, w));
  EXPECT_EQ(w[1], 0.75);
  ASSERT_TRUE(FilterWeights("Blackman", 2, none, w));
  EXPECT_DOUBLE_EQ(w[1], 0.42 + 0.5 * std::cos(3.14159265358979 / 2) + 0.08 * std::cos(3.14159265358979));
  ASSERT_TRUE(FilterWeights("DlVP", 10, none, w));
  EXPECT_EQ(w[5], 1.0);  // exactly 1 at 2k = H
  EXPECT_DOUBLE_EQ(w[6], 2 * (1 - 0.6));
  ASSERT_TRUE(FilterWeights("Gauss", 3, none, w));
  EXPECT_DOUBLE_EQ(w[3], std::exp(-4.5));
  ASSERT_TRUE(FilterWeights("Poisson", 3, {0.0, 0, 1}, w));
  EXPECT_EQ(w[0], 1.0);  // 0^0
  EXPECT_EQ(w[1], 0.0);
  ASSERT_TRUE(FilterWeights("Riesz", 3, {0.0, 0, 1}, w));
  EXPECT_EQ(w[3], 1.0);  // 0^0 at k = H
  ASSERT_TRUE(FilterWeights("Riesz", 2, {2.0, 0, 1}, w));
  EXPECT_DOUBLE_EQ(w[1], 0.75 * 0.75);
  ASSERT_TRUE(FilterWeights("Kaiser", 4, {2.0, 0, 1}, w));
  EXPECT_DOUBLE_EQ(w[0], 1.0);
  EXPECT_DOUBLE_EQ(w[2], FMBESS(3.14159265358979 * 2 * std::sqrt(0.75)) / FMBESS(3.14159265358979 * 2));
  ASSERT_TRUE(FilterWeights("Cos", 3, {0.5, 2.0, 4.0}, w));
  EXPECT_DOUBLE_EQ(w[3], std::cos(3 * 0.5 * 2.0 * 3.14159265358979 / 4.0));
  ASSERT_TRUE(FilterWeights("Sinc", 3, {0.5, 2.0, 4.0}, w));
  EXPECT_DOUBLE_EQ(w[0], 2.0);
  EXPECT_DOUBLE_EQ(w[2], 2.0 * std::sin(3.14159265358979 * 0.5) / (3.14159265358979 * 0.5));
  const double pb = 3.14159265358979 / 4.0;
  ASSERT_TRUE(FilterWeights("Heat", 3, {0.5, 2.0, 4.0}, w));
  EXPECT_DOUBLE_EQ(w[2], std::exp(-pb * pb * 1.0 * 4));
  ASSERT_TRUE(FilterWeights("FresnelCos", 3, {0.5, 2.0, 4.0}, w));
  EXPECT_DOUBLE_EQ(w[3], std::cos(pb * pb * 1.0 * 9));
  ASSERT_TRUE(FilterWeights("FresnelSin", 3, {0.5, 2.0, 4.0}, w));
  EXPECT_DOUBLE_EQ(w[3], std::sin(pb * pb * 1.0 * 9));
  EXPECT_FALSE(FilterWeights("User", 3, none, w));
  // H = 0 divides by zero: the weights of u are not finite.
  ASSERT_TRUE(FilterWeights("Cesaro", 0, none, w));
  EXPECT_FALSE(std::isfinite(w[0]));
}

TEST(Filters, BesselApproximationIsCloseToTheFunction) {
  // The short series (its fifth power with the coefficient 0.0406581) keeps
  // about five digits near 3.75; the large-argument form about seven.
  for (double x : {0.0, 0.5, 2.0, 3.7499}) EXPECT_NEAR(FMBESS(x) / std::cyl_bessel_i(0.0, x), 1.0, 1e-5) << x;
  for (double x : {3.75, 5.0, 12.0, 30.0}) EXPECT_NEAR(FMBESS(x) / std::cyl_bessel_i(0.0, x), 1.0, 3e-7) << x;
  // At 0 the polynomial is exactly 1.
  EXPECT_EQ(FMBESS(0.0), 1.0);
  EXPECT_EQ(FMBESS(-2.0), FMBESS(2.0));
}

TEST(Selection, ShellSortIsDescendingAndKeepsTiesInOrder) {
  std::vector<double> keys = {1, 5, 3, 5, -1, 3, 9, 0, 5, 2, 2, 7, 5};
  std::vector<int> idx(keys.size());
  for (std::size_t i = 0; i < idx.size(); ++i) idx[i] = static_cast<int>(i);
  ISORTD(keys, idx);
  EXPECT_EQ(keys, (std::vector<double>{9, 7, 5, 5, 5, 5, 3, 3, 2, 2, 1, 0, -1}));
  EXPECT_EQ(idx, (std::vector<int>{6, 11, 1, 3, 8, 12, 2, 5, 9, 10, 0, 7, 4}));
}

TEST(Selection, HighestMagnitudeKeepsTheLargest) {
  const int n = 8;
  double x[] = {0, 3, -7, 1, 0, 2, 5, 0, 4, 0, 0, 0, 0};
  double y[13] = {};
  FSerHighMag(SeriesKind::Sine, n, 3, x, y);
  EXPECT_EQ(std::vector<double>(x, x + 9), (std::vector<double>{0, 0, -7, 0, 0, 0, 5, 0, 4}));
  // A count above the non-zero coefficients keeps them all.
  double x2[] = {0, 3, -7, 1, 0, 2, 5, 0, 4, 0, 0, 0, 0};
  FSerHighMag(SeriesKind::Sine, n, 8, x2, y);
  EXPECT_EQ(std::vector<double>(x2, x2 + 9), (std::vector<double>{0, 3, -7, 1, 0, 2, 5, 0, 4}));
}

TEST(Selection, ThresholdOneKeepsTheLargestWithTiesAndEnergyOneKeepsAll) {
  const int n = 8;
  double x[] = {1, 3, -5, 1, 5, 2, 0, 0, 4, 0, 0, 0, 0};
  double y[13] = {};
  SelectionReport report;
  ASSERT_TRUE(FSerThreshold(SeriesKind::Cosine, n, 1.0, x, y, report));
  EXPECT_EQ(std::vector<double>(x, x + 9), (std::vector<double>{0, 0, -5, 0, 5, 0, 0, 0, 0}));
  EXPECT_EQ(report.formulaText, "2 coefficients used.");
  double x2[] = {1, 3, -5, 1, 5, 2, 0, 0, 4, 0, 0, 0, 0};
  ASSERT_TRUE(FSerEnerPerc(SeriesKind::Cosine, n, 1.0, x2, y, report));
  EXPECT_EQ(std::vector<double>(x2, x2 + 9), (std::vector<double>{1, 3, -5, 1, 5, 2, 0, 0, 4}));
  EXPECT_EQ(report.formulaText, "9 coefficients used.");
  EXPECT_FALSE(FSerEnerPerc(SeriesKind::Cosine, n, 1.5, x2, y, report));
  EXPECT_FALSE(FSerThreshold(SeriesKind::Cosine, n, -0.1, x2, y, report));
}

TEST(Selection, EnergyKeepsTheFewestLargestThatHoldTheFraction) {
  const int n = 8;
  // Squares 16, 9, 4, 1 at indices 1, 2, 3, 4: 30 in all.
  double x[] = {0, 4, -3, 2, 1, 0, 0, 0, 0, 0, 0, 0, 0};
  double y[13] = {};
  SelectionReport report;
  ASSERT_TRUE(FSerEnerPerc(SeriesKind::Sine, n, 0.8, x, y, report));  // 24 of 30: 16 + 9
  EXPECT_EQ(std::vector<double>(x, x + 9), (std::vector<double>{0, 4, -3, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(report.formulaText, "2 coefficients used.");
  EXPECT_EQ(report.harmonicsText, "2");
}

TEST(Series, WeightsAndDiffractionPasses) {
  const int n = 64;
  const auto y = Signal(n);
  SeriesFilter f;
  f.mode = SeriesFilter::Mode::Weights;
  ASSERT_TRUE(FilterWeights("Cesaro", 10, {}, f.weights));
  const auto weighted = FourierSeriesOf(n, y.data(), SeriesKind::Sine, 10, false, f);
  // A weighted sine series is the sum with b_k w_k.
  long double expected = 0;
  const int j = 20;
  for (int k = 1; k <= 10; ++k) {
    long double b = 0;
    for (int m = 1; m < n; ++m) b += At(y, m) * std::sin(kPi * m * k / n);
    expected += b * f.weights[static_cast<std::size_t>(k)] * std::sin(kPi * j * k / n);
  }
  EXPECT_NEAR(weighted.values[j], static_cast<double>(2 * expected / n), 1e-12);
  // Diffraction: the squared sum of the cosine pass and the sine pass.
  SeriesFilter d;
  d.mode = SeriesFilter::Mode::Diffraction;
  FilterWeights("FresnelCos", 10, {0.5, 0.2, 1.0}, d.weights);
  FilterWeights("FresnelSin", 10, {0.5, 0.2, 1.0}, d.sineWeights);
  SeriesFilter c = f, s = f;
  c.weights = d.weights;
  s.weights = d.sineWeights;
  const auto both = FourierSeriesOf(n, y.data(), SeriesKind::Sine, 10, true, d);
  const auto cosPass = FourierSeriesOf(n, y.data(), SeriesKind::Sine, 10, true, c);
  const auto sinPass = FourierSeriesOf(n, y.data(), SeriesKind::Sine, 10, true, s);
  for (int i = 0; i < n; ++i)
    EXPECT_NEAR(both.values[static_cast<std::size_t>(i)],
                sinPass.values[static_cast<std::size_t>(i)] * sinPass.values[static_cast<std::size_t>(i)] +
                    cosPass.values[static_cast<std::size_t>(i)] * cosPass.values[static_cast<std::size_t>(i)],
                1e-12);
}

}  // namespace
}  // namespace keldo::fourier
