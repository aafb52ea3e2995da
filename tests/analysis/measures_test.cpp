// Measurements against sums of values known in closed form.

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "analysis/measures.h"

namespace keldo::analysis {
namespace {

struct Graph {
  std::vector<double> y;
  Sampled s;
};

Graph Make(int n, double a, double b, double (*f)(double)) {
  Graph g;
  g.y.resize(static_cast<std::size_t>(n) + 1);
  const double dx = (b - a) / n;
  for (int i = 0; i <= n; ++i) g.y[static_cast<std::size_t>(i)] = f(a + i * dx);
  g.s = Sampled{g.y.data(), n, a, dx};
  return g;
}

TEST(Norms, PowerOneAndTwoAreRiemannSums) {
  const int n = 64;
  const Graph g = Make(n, 0.0, 1.0, [](double x) { return 2 * x - 1; });
  const auto all = InWindow(g.s, 0.0, 1.0);
  // |2x - 1| at x = i/64, i = 0..63: sum is 2 * (32 + 31 + .. + 1) / 32 ... by hand:
  // sum_{i=0}^{63} |i/32 - 1| = (32*33/2 + 31*32/2) / 32 = (528 + 496) / 32 = 32.
  EXPECT_DOUBLE_EQ(NormOf(g.s, nullptr, all, NormKind::Power, 1), 32.0 / 64);
  // sum (i/32 - 1)^2 = sum_{k=-32}^{31} k^2 / 1024 = (2 * 31*32*63/6 + 1024) / 1024.
  const double squares = (2.0 * 31 * 32 * 63 / 6 + 1024) / 1024;
  EXPECT_DOUBLE_EQ(NormOf(g.s, nullptr, all, NormKind::Power, 2), std::sqrt(squares / 64));
  EXPECT_DOUBLE_EQ(NormOf(g.s, nullptr, all, NormKind::Sup, 2), 1.0);
  EXPECT_NEAR(NormOf(g.s, nullptr, all, NormKind::Power, 3), std::cbrt([&] {
                double s = 0;
                for (int i = 0; i < n; ++i) s += std::pow(std::fabs(2.0 * i / n - 1), 3);
                return s / n;
              }()),
              1e-15);
}

TEST(Norms, AWindowShrinksTheSumsToTheVisiblePart) {
  const int n = 64;
  const Graph g = Make(n, 0.0, 1.0, [](double) { return 1.0; });
  // x = i/64 strictly inside (0.25 - 1/128, 0.5 + 1/128): i = 16..32.
  const auto part = InWindow(g.s, 0.25, 0.5);
  int counted = 0;
  for (bool b : part) counted += b;
  EXPECT_EQ(counted, 17);
  EXPECT_DOUBLE_EQ(Integral(g.s, part), 17.0 / 64);
  EXPECT_DOUBLE_EQ(Integral(g.s, InWindow(g.s, 0.0, 1.0)), 1.0);  // i = 0..63 of 64
  // Var-Norm of a constant is its sup.
  EXPECT_DOUBLE_EQ(NormOf(g.s, nullptr, part, NormKind::Var, 0), 1.0);
  std::vector<double> two(65, 2.0);
  EXPECT_DOUBLE_EQ(ScalarProduct(g.s, two.data(), part), 34.0 / 64);
}

TEST(Norms, VariationCountsEachStepTwiceUnderTheRoot) {
  std::vector<double> y = {0, 1, 0, 1, 0};
  const Sampled s{y.data(), 4, 0.0, 1.0};
  const auto all = InWindow(s, 0.0, 4.0);
  EXPECT_DOUBLE_EQ(NormOf(s, nullptr, all, NormKind::Var, 0), 1.0 + 4 * std::sqrt(2.0) / 4);
  char flag = 'N';
  EXPECT_EQ(RNorm(3.0, 0.0, flag), 0.0);
  EXPECT_EQ(flag, 'Z');
  EXPECT_EQ(RNorm(3.0, 2.0, flag), 1.5);
  EXPECT_EQ(flag, 'N');
}

TEST(Derivative, FivePointFormulasAreExactForQuartics) {
  const Graph g = Make(32, -1.0, 1.0, [](double x) { return x * x * x * x - x; });
  const auto z = Derivative(g.s);
  for (int i = 0; i <= 32; ++i) {
    const double x = -1.0 + i / 16.0;
    EXPECT_NEAR(z[static_cast<std::size_t>(i)], 4 * x * x * x - 1, 1e-12) << i;
  }
}

TEST(Statistics, ReportAndItsEdgeCases) {
  const Graph ones = Make(64, 0.0, 1.0, [](double) { return 1.0; });
  Statistics s;
  ASSERT_TRUE(ComputeStatistics(ones.s, InWindow(ones.s, 0.0, 1.0), s));
  EXPECT_EQ(s.count, 65);
  EXPECT_EQ(s.energy, 65.0);
  EXPECT_DOUBLE_EQ(s.dimension, 65.0);
  EXPECT_EQ(s.variance, 0.0);
  const Graph zeros = Make(64, 0.0, 1.0, [](double) { return 0.0; });
  ASSERT_TRUE(ComputeStatistics(zeros.s, InWindow(zeros.s, 0.0, 1.0), s));
  EXPECT_EQ(s.energy, 0.0);
  EXPECT_EQ(s.dimension, 0.0);
  EXPECT_EQ(StatisticsReport(s),
            "Maximum = 0\r\nMinimum = 0\r\nMean = 0\r\nVariance = 0\r\nStd. Dev. = 0\r\nEnergy = 0\r\n"
            "Number of samples = 65\r\nTheoretical Dim = 0\r\n");
  // One visible sample is too few.
  EXPECT_FALSE(ComputeStatistics(ones.s, InWindow(ones.s, 0.5, 0.5), s));
  const Graph ramp = Make(4, 0.0, 4.0, [](double x) { return x; });
  ASSERT_TRUE(ComputeStatistics(ramp.s, InWindow(ramp.s, 0.0, 4.0), s));
  EXPECT_EQ(s.mean, 2.0);
  EXPECT_EQ(s.variance, 2.5);  // (4 + 1 + 0 + 1 + 4) / 4
  EXPECT_DOUBLE_EQ(s.dimension, std::exp(-2 * (std::log(2.0) * 4 + std::log(3.0) * 9 + std::log(4.0) * 16) / 30) * 30);
}

TEST(Values, HistogramEnergyRearrangementAndQuantizing) {
  std::vector<double> y = {-1, -0.5, 0, 0.5, 1, 0.25, 130, -200.5, 2.5};
  const Sampled s{y.data(), 8, 0.0, 1.0};
  const auto q = QuantizeXBit(s, 8);
  EXPECT_EQ(q, (std::vector<double>{-1, -0.0, 0, 0, 1, 0, 127, -128, 2}));
  const auto e = EnergyGraph(s, true);
  EXPECT_EQ(e.back(), 1.0);
  const auto r = NonIncreasingRearrangement(s);
  EXPECT_EQ(r.front(), 200.5);
  EXPECT_EQ(r.back(), 0.0);
  // Four samples spread over two of four bins: entropy 1 bit.
  std::vector<double> v = {1, 1, 3, 3, 0};
  double entropy = 0, max = 0;
  const auto h = Histogram(Sampled{v.data(), 4, 0.0, 1.0}, 4, false, false, entropy, max);
  EXPECT_EQ(max, 3.0);
  EXPECT_EQ(h[1] + h[3], 4.0);
  EXPECT_DOUBLE_EQ(entropy, 1.0);
}

}  // namespace
}  // namespace keldo::analysis
