// The plot's run of a plain formula: computed a block of points at a time
// where it can be, it draws the very points the walk gives one at a time,
// stops where the user stops it, and meets a fault at its point.

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "formula/user_function.h"
#include "formula_test_host.h"

namespace keldo {
namespace {

struct Drawn final : formula::PlotSink {
  std::vector<double> xs, ys;
  int refreshes = 0;
  int stopAt = 0;  // the refresh that says stop; 0: never
  void Point(double x, double y, bool) override {
    xs.push_back(x);
    ys.push_back(y);
  }
  bool Refresh() override { return ++refreshes != stopAt; }
};

// The walk of the program at each point, as the run would have it.
std::vector<double> Walked(testing::FormulaBench& b, const formula::UserFunctionRun& run, int upTo, int* fault) {
  formula::Evaluator ev;
  formula::BindEvaluator(ev, b.state);
  ev.dx = run.h;
  ev.bounds = run.bounds;
  ev.useTape = false;
  ev.Prepare();
  std::vector<double> out;
  *fault = formula::kNoFault;
  for (int i = 0; i < upTo; ++i) {
    const double v = ev.Eval(i, run.a + i * run.h);
    if (ev.fault() != formula::kNoFault) {
      *fault = ev.fault();
      break;
    }
    out.push_back(v);
  }
  return out;
}

void ExpectSameBits(const std::vector<double>& a, const std::vector<double>& b, const std::string& what) {
  ASSERT_EQ(a.size(), b.size()) << what;
  for (std::size_t i = 0; i < a.size(); ++i)
    ASSERT_EQ(std::memcmp(&a[i], &b[i], sizeof(double)), 0) << what << " at point " << i;
}

TEST(PlotRun, BlocksDrawWhatTheWalkGivesPointByPoint) {
  for (const char* text : {"SIN(3*X)+X^2", "SUMI(SIN(I*X)/I)\\I=1,7", "-0.5<X<=0.5", "ABS(X)-GRI(4*X)/4+SQR(ABS(X))"}) {
    testing::FormulaBench b;
    ASSERT_NE(b.Compile(text), formula::kErrorResult);
    formula::UserFunctionRun run = formula::RunOver(b.state, -1.0, 1.0 / 500, 1001);
    std::vector<double> y;
    Drawn drawn;
    const formula::UserFunctionResult result = formula::RunUserFunction(run, y, drawn);
    EXPECT_EQ(result.fault, formula::kNoFault) << text;
    EXPECT_FALSE(result.stopped);
    int fault = 0;
    const std::vector<double> walked = Walked(b, run, 1001, &fault);
    ExpectSameBits(drawn.ys, walked, text);
    ExpectSameBits(std::vector<double>(y.begin(), y.begin() + 1001), walked, text);
    ASSERT_EQ(drawn.xs.size(), 1001u);
    EXPECT_EQ(drawn.xs[1000], -1.0 + 1000 * (1.0 / 500));
  }
}

TEST(PlotRun, AFaultInsideABlockStopsAtItsPoint) {
  // x = 0.25 at point 160, in the third block of 64.
  testing::FormulaBench b;
  ASSERT_NE(b.Compile("1/(X-0.25)"), formula::kErrorResult);
  formula::UserFunctionRun run = formula::RunOver(b.state, -1.0, 1.0 / 128, 400);
  std::vector<double> y;
  Drawn drawn;
  const formula::UserFunctionResult result = formula::RunUserFunction(run, y, drawn);
  EXPECT_EQ(result.fault, formula::kDivisionByZero);
  int fault = 0;
  const std::vector<double> walked = Walked(b, run, 400, &fault);
  EXPECT_EQ(fault, formula::kDivisionByZero);
  ASSERT_EQ(walked.size(), 160u);
  ExpectSameBits(drawn.ys, walked, "1/(X-0.25)");
  EXPECT_EQ(y[160], 0.0);  // the faulting point's value, as Eval leaves it
}

TEST(PlotRun, StoppingAtARefreshLeavesTheLaterPointsUndrawn) {
  testing::FormulaBench b;
  ASSERT_NE(b.Compile("X*X*X"), formula::kErrorResult);
  formula::UserFunctionRun run = formula::RunOver(b.state, 0.0, 1.0 / 1000, 1001);
  ASSERT_EQ(run.refresh, 31);
  std::vector<double> y;
  Drawn drawn;
  drawn.stopAt = 3;
  const formula::UserFunctionResult result = formula::RunUserFunction(run, y, drawn);
  EXPECT_TRUE(result.stopped);
  EXPECT_EQ(drawn.ys.size(), 93u);
  int fault = 0;
  std::vector<double> walked = Walked(b, run, 93, &fault);
  ExpectSameBits(drawn.ys, walked, "X*X*X");
}

}  // namespace
}  // namespace keldo
