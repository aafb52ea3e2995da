// The evaluation machine: functions at their edges, faults, graph lookup.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "formula_test_host.h"
#include "platform/random.h"

namespace keldo {
namespace {

using testing::FormulaBench;

double At(const std::string& formula, double x, double dx = 0.01, int* fault = nullptr) {
  FormulaBench b;
  EXPECT_NE(b.Compile(formula), formula::kErrorResult) << formula;
  return b.Eval(x, dx, fault);
}

int FaultOf(const std::string& formula, double x) {
  int fault = 0;
  At(formula, x, 0.01, &fault);
  return fault;
}

TEST(Factorials, TableByRecurrence) {
  const auto& t = formula::FactorialTable();
  EXPECT_EQ(t[0], 1.0);
  EXPECT_EQ(t[10], 3628800.0);
  double v = 1.0;
  for (int n = 1; n <= 70; ++n) v *= n;
  EXPECT_EQ(t[70], v);
}

TEST(Functions, FacRoundsTiesToEven) {
  EXPECT_EQ(At("FAC(X)", 70), formula::FactorialTable()[70]);
  EXPECT_EQ(At("FAC(X)", 2.5), 2.0);
  EXPECT_EQ(At("FAC(X)", 3.5), 24.0);
  EXPECT_EQ(FaultOf("FAC(X)", 71), formula::kInvalidCall);
  EXPECT_EQ(FaultOf("FAC(X)", -1), formula::kInvalidCall);
}

TEST(Functions, RecDeltaBellSincEntr) {
  EXPECT_EQ(At("REC(X)", 0.5), 0.5);
  EXPECT_EQ(At("REC(X)", -0.25), 1.0);
  EXPECT_EQ(At("REC(X)", 0.75), 0.0);
  EXPECT_EQ(At("DELTA(X)", 0.0, 0.1), 1.0);
  EXPECT_EQ(At("DELTA(X)", 0.0, 0.0), 0.0);
  EXPECT_EQ(At("DELTA(X)", -0.05, 0.1), 1.0);
  EXPECT_EQ(At("DELTA(X)", 0.05, 0.1), 0.0);
  FormulaBench b;
  EXPECT_EQ(b.compiler.VALU(std::string("DELTA(0)")), 0.0);  // VALU's step is 0
  EXPECT_EQ(At("BELL(X)", 0.25), 1.0);
  EXPECT_EQ(At("BELL(X)", 0.75), 0.0);
  EXPECT_NEAR(At("BELL(X)", 0.5), 0.5, 1e-12);
  EXPECT_EQ(At("SINC(X)", 0.0), 1.0);
  EXPECT_EQ(At("ENTR(X)", 0.0), 0.0);
  EXPECT_DOUBLE_EQ(At("ENTR(X)", 0.5), 0.5);
  EXPECT_EQ(At("GRI(X)", -1.5), -2.0);
  EXPECT_EQ(At("SGN(X)", -3), -1.0);
}

TEST(Logic, OperandsOtherThanOneAreFalse) {
  EXPECT_EQ(At("X AND 1", 2.0), 0.0);
  EXPECT_EQ(At("X AND 1", 1.0), 1.0);
  EXPECT_EQ(At("X OR 0", 2.0), 0.0);
  EXPECT_EQ(At("NOT X", 1.0), 0.0);
  EXPECT_EQ(At("NOT X", 2.0), 1.0);
  EXPECT_EQ(At("NOT X", 0.0), 1.0);
  EXPECT_EQ(At("NOT(X)", 2.0), 0.0);  // the function tests x <= 0
  EXPECT_EQ(At("NOT(X)", -2.0), 1.0);
  EXPECT_EQ(At("1<X<=3", 3.0), 1.0);
  EXPECT_EQ(At("1<X<=3", 1.0), 0.0);
}

TEST(Faults, DivisionOverflowAndBadArguments) {
  EXPECT_EQ(FaultOf("1/X", 0.0), formula::kDivisionByZero);
  EXPECT_EQ(FaultOf("EXP(X)", 1000.0), formula::kOverflow);
  EXPECT_EQ(FaultOf("X^X", 1000.0), formula::kOverflow);
  EXPECT_EQ(FaultOf("LOG(X)", 0.0), formula::kInvalidCall);
  EXPECT_EQ(FaultOf("SQR(X)", -1.0), formula::kInvalidCall);
  EXPECT_EQ(FaultOf("X^(1/3)", -8.0), formula::kInvalidCall);
  EXPECT_EQ(FaultOf("SUMI(EXP(X*I))\\I=1,10", 100.0), formula::kOverflow);
}

TEST(Graphs, GFUNC1InterpolatesAndExtendsOneStep) {
  std::vector<double> g = {0, 10, 20, 30, 40};  // N = 4 on [0, 1], h = 0.25
  formula::GraphSlot slot{g.data(), 0.0, 1.0, 0.25};
  EXPECT_EQ(formula::GFUNC1(0.0, slot, 4), 0.0);
  EXPECT_EQ(formula::GFUNC1(0.125, slot, 4), 5.0);
  EXPECT_EQ(formula::GFUNC1(0.6, slot, 4), 24.0);
  EXPECT_EQ(formula::GFUNC1(1.0, slot, 4), 40.0);
  EXPECT_EQ(formula::GFUNC1(1.2, slot, 4), 40.0);    // k = N: the last value
  EXPECT_EQ(formula::GFUNC1(-0.125, slot, 4), -5.0);  // first segment extended
  EXPECT_EQ(formula::GFUNC1(1.3, slot, 4), 0.0);      // beyond one step
  EXPECT_EQ(formula::GFUNC1(-0.3, slot, 4), 0.0);
}

TEST(Graphs, FormulasReadStoredGraphs) {
  std::vector<double> g = {0, 10, 20, 30, 40};
  FormulaBench b;
  b.host.graphCount = 2;
  b.host.graphs.points = 4;
  b.host.graphs.entries[0] = {g.data(), 0.0, 1.0, 0.25};
  b.host.graphs.entries[1] = {g.data(), -1.0, 0.0, 0.25};
  ASSERT_NE(b.Compile("G1(X)+G2(X-1)"), formula::kErrorResult);
  EXPECT_EQ(b.Eval(0.6, 0.1), 48.0);
  ASSERT_NE(b.Compile("@(X)"), formula::kErrorResult);
  EXPECT_EQ(b.Eval(0.125, 0.1), 5.0);
}

TEST(Relative, GetRelVal) {
  EXPECT_EQ(formula::GetRelVal(2.0, -4.0, 0.0), 0.5);
  EXPECT_EQ(formula::GetRelVal(2.0, 0.0, 0.0), 2.0);
}

class FixedRandom final : public platform::Random {
 public:
  void Seed(std::uint64_t s) override { engine.seed(s); }
  void SeedFromClock() override {}
  double Next() override { return std::uniform_real_distribution<double>(0.0, 1.0)(engine); }
  std::mt19937_64 engine{7};
};

TEST(Random, RandomIsUniformOnMinusOneToOneAndFreshInsideSums) {
  FormulaBench b;
  FixedRandom random;
  ASSERT_NE(b.Compile("RANDOM(X)"), formula::kErrorResult);
  formula::Evaluator ev;
  ev.formula = &b.state.compiled;
  ev.random = &random;
  ev.Prepare();
  double sum = 0, sumSq = 0;
  const int n = 20000;
  for (int i = 0; i < n; ++i) {
    const double v = ev.Eval(i, 0.0);
    ASSERT_GE(v, -1.0);
    ASSERT_LT(v, 1.0);
    sum += v;
    sumSq += v * v;
  }
  EXPECT_NEAR(sum / n, 0.0, 0.03);
  EXPECT_NEAR(sumSq / n, 1.0 / 3.0, 0.02);
  // Each pass of a sum draws again: a sum of 100 draws is not 100 times one.
  ASSERT_NE(b.Compile("SUMI(RAN(X))\\I=1,100"), formula::kErrorResult);
  ev.bounds = {1, 0, 0, 0, 0, 0, 100, 0, 0, 0, 0, 0};
  ev.Prepare();
  const double s = ev.Eval(0, 0.0);
  EXPECT_LT(std::fabs(s), 40.0);
}

TEST(Random, RangHasUnitSpread) {
  FormulaBench b;
  FixedRandom random;
  ASSERT_NE(b.Compile("RANG(X)"), formula::kErrorResult);
  formula::Evaluator ev;
  ev.formula = &b.state.compiled;
  ev.random = &random;
  ev.noiseTerms = 144;
  ev.Prepare();
  double sumSq = 0;
  const int n = 4000;
  for (int i = 0; i < n; ++i) {
    const double v = ev.Eval(i, 0.0);
    sumSq += v * v;
  }
  EXPECT_NEAR(sumSq / n, 1.0, 0.08);
}

}  // namespace
}  // namespace keldo

namespace keldo {
namespace {

TEST(Tape, RandomDrawsComeInTheSameOrder) {
  for (const char* text : {"RANDOM(X)+SUMI(RAN(X)*I)\\I=1,5", "RANG(X)*RAN(X)", "SUMI(SUMJ(RAN(I*J)))\\I=1,3\\J=2,4"}) {
    FormulaBench b;
    ASSERT_NE(b.Compile(text), formula::kErrorResult);
    FixedRandom r1, r2;
    formula::Evaluator fast, slow;
    slow.useTape = false;
    for (auto [ev, r] : {std::pair{&fast, &r1}, std::pair{&slow, &r2}}) {
      ev->formula = &b.state.compiled;
      ev->random = r;
      for (std::size_t k = 0; k < 6; ++k) {
        ev->bounds[k] = b.state.lower[k];
        ev->bounds[k + 6] = b.state.upper[k];
      }
      ev->Prepare();
    }
    EXPECT_TRUE(fast.HasTape());
    for (int i = 0; i < 50; ++i) EXPECT_EQ(fast.Eval(i, 0.1 * i), slow.Eval(i, 0.1 * i)) << text;
  }
}

TEST(Tape, StateOperandsAndFallback) {
  FormulaBench b;
  ASSERT_NE(b.Compile("Y''+X*Y'\\DIFF"), formula::kErrorResult);
  formula::Evaluator ev;
  ev.formula = &b.state.compiled;
  ev.formType = 1;
  double state[11] = {0, 5, 7};
  ev.state = state;
  ev.Prepare();
  EXPECT_TRUE(ev.HasTape());
  EXPECT_EQ(ev.Eval(0, 2.0), 17.0);
  ASSERT_NE(b.Compile("ACS(X)+1"), formula::kErrorResult);
  ev.Prepare();
  EXPECT_FALSE(ev.HasTape());  // ACS keeps stale results: the program is walked
}


// A formula compiled once, with an evaluator that runs its tape and one
// that walks its program.
struct TapeAndWalk {
  FormulaBench bench;
  formula::Evaluator fast, slow;
  bool Prepare(const std::string& text) {
    if (bench.Compile(text) == formula::kErrorResult) return false;
    slow.useTape = false;
    for (formula::Evaluator* ev : {&fast, &slow}) {
      formula::BindEvaluator(*ev, bench.state);
      ev->Prepare();
    }
    return true;
  }
};

// The tape multiplies by 2^-k where the formula divides by 2^k: the same
// real number, so the same bits, down to the subnormal numbers, and the
// same overflow.
TEST(Tape, DividingByAPowerOfTwoGivesTheBitsOfTheDivision) {
  const double xs[] = {0.1, 3.0, -7.25, 1e-310, -1e-310, 4.9e-324, 1.7e308, -1.7e308, -0.0, 0.0, 1e300};
  for (const char* text : {"X/4", "X/0.5", "X/1024", "X/0.125", "X/1", "(X+1)/8-X/2", "X/3", "X/6"}) {
    TapeAndWalk machines;
    ASSERT_TRUE(machines.Prepare(text)) << text;
    formula::Evaluator& fast = machines.fast;
    formula::Evaluator& slow = machines.slow;
    ASSERT_TRUE(fast.HasTape());
    for (const double x : xs) {
      const double a = fast.Eval(0, x), c = slow.Eval(0, x);
      EXPECT_EQ(std::memcmp(&a, &c, sizeof a), 0) << text << " at " << x << ": " << a << " against " << c;
      EXPECT_EQ(fast.fault(), slow.fault()) << text << " at " << x;
    }
  }
  // 1.7e308 / 0.5 overflows on both.
  FormulaBench b;
  ASSERT_NE(b.Compile("X/0.5"), formula::kErrorResult);
  formula::Evaluator ev;
  formula::BindEvaluator(ev, b.state);
  ev.Prepare();
  EXPECT_EQ(ev.Eval(0, 1.7e308), 0.0);
  EXPECT_EQ(ev.fault(), formula::kOverflow);
  EXPECT_EQ(ev.Eval(0, 1e-310), 2e-310);
}

// Odd 53-bit integers m whose squares lie within a hair of a midpoint
// between two doubles: m^2 = 2^(k-1) + c (mod 2^k), k the number of bits
// the product loses, found bit by bit (Hensel), scaled to [1, 2).
std::vector<double> NearMidpointSquareRoots(int count) {
  std::vector<double> roots;
  std::mt19937_64 draw(11);
  while (static_cast<int>(roots.size()) < count) {
    const int k = (roots.size() % 2 == 0) ? 52 : 53;
    const std::uint64_t mask = (std::uint64_t{1} << k) - 1;
    const std::uint64_t target = ((std::uint64_t{1} << (k - 1)) + (draw() % 256) * 8 + 1) & mask;
    std::uint64_t r = 1;
    for (int bit = 3; bit < k; ++bit) {
      // The low 64 bits of r^2 - target, which is all the step reads.
      if (((r * r - target) >> bit) & 1) r += std::uint64_t{1} << (bit - 1);
    }
    for (const std::uint64_t m : {r & mask, (0 - r) & mask}) {
      const std::uint64_t top = (m | (std::uint64_t{1} << 52)) & ((std::uint64_t{1} << 53) - 1);
      roots.push_back(std::ldexp(static_cast<double>(top), -52));
    }
  }
  return roots;
}

// X^2, X^3 and X^4 in blocks are products where they must round as pow
// does and pow elsewhere: the bits of pow for every point, at the hardest
// squares, at random points (of which some round away from the product),
// at powers of two, at the ends of the range and where the power overflows.
TEST(Tape, SmallPowersInBlocksGiveTheBitsOfPow) {
  std::vector<double> xs = NearMidpointSquareRoots(4000);
  std::mt19937_64 draw(5);
  std::uniform_real_distribution<double> unit(-4.0, 4.0);
  for (int k = 0; k < 60000; ++k) xs.push_back(std::ldexp(unit(draw), static_cast<int>(draw() % 400) - 200));
  for (const double x : {0.0, -0.0, 1.0, -2.0, 0.5, 0x1p-200, -0x1p-200, 0x1.0000000000001p-201, 0x1p200, 0x1.fffffp200,
                         1e-310, 4.9e-324, 1e-80, 1e70, -3e65})
    xs.push_back(x);
  // Around the roots of powers of two, where the power lands at a binade's
  // edge and the doubles below it are twice as dense.
  for (const double root : {1.0, std::sqrt(2.0), std::cbrt(2.0), std::cbrt(4.0), std::pow(2.0, 0.25), std::pow(2.0, 0.75)}) {
    double x = root;
    for (int k = 0; k < 6; ++k) x = std::nextafter(x, 0.0);
    for (int k = 0; k < 12; ++k, x = std::nextafter(x, 4.0)) {
      xs.push_back(x);
      xs.push_back(-x * 0x1p-30);
    }
  }
  volatile double exponents[] = {2.0, 3.0, 4.0};
  for (int n = 2; n <= 4; ++n) {
    const std::string text = "X^" + std::to_string(n);
    TapeAndWalk machines;
    ASSERT_TRUE(machines.Prepare(text)) << text;
    formula::Evaluator& fast = machines.fast;
    formula::Evaluator& slow = machines.slow;
    ASSERT_TRUE(fast.RunsInBlocks());
    std::vector<double> out(xs.size());
    ASSERT_EQ(fast.EvalRun(xs.data(), static_cast<int>(xs.size()), out.data()), static_cast<int>(xs.size()))
        << text << " faults " << fast.fault();
    const double power = exponents[n - 2];
    int awayFromTheProduct = 0;
    for (std::size_t k = 0; k < xs.size(); ++k) {
      const double x = xs[k], expected = std::pow(x, power);
      const double product = n == 2 ? x * x : n == 3 ? x * x * x : (x * x) * (x * x);
      if (expected != product) ++awayFromTheProduct;
      ASSERT_EQ(std::memcmp(&out[k], &expected, sizeof expected), 0) << text << " at " << x << ": " << out[k]
                                                                     << " against " << expected;
    }
    EXPECT_GT(awayFromTheProduct, 20) << text;  // the points that test the choice are there
    testing::ExpectRunAgreesWithWalk(fast, slow, xs, text);
    // Past the largest double the point faults as it does point by point.
    const std::vector<double> large = {3.0, 1e160, 2.0};
    testing::ExpectRunAgreesWithWalk(fast, slow, large, text + " overflowing");
  }
  // A power within a longer formula, and in the plane's single precision.
  for (const char* text : {"(X+1)^3-X^4/3+X^2", "SIN(X)^2+COS(X)^2"}) {
    TapeAndWalk machines;
    ASSERT_TRUE(machines.Prepare(text)) << text;
    formula::Evaluator& fast = machines.fast;
    formula::Evaluator& slow = machines.slow;
    ASSERT_TRUE(fast.RunsInBlocks());
    testing::ExpectRunAgreesWithWalk(fast, slow, std::vector<double>(xs.begin(), xs.begin() + 9000), text);
  }
}

}  // namespace
}  // namespace keldo
