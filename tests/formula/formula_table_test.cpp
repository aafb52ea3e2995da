// Formulas against values computed independently: tests/data/formula_table.tsv
// is written by tests/data/make_formula_table.py, which evaluates a
// hand-written python translation of each formula.

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "formula_test_host.h"

namespace keldo {
namespace {

struct Case {
  std::string mode, formula;
  double x = 0, dx = 0;
  bool error = false;
  double expected = 0;
  int line = 0;
};

std::vector<Case> ReadTable() {
  std::ifstream in(KELDO_TEST_DATA "/formula_table.tsv");
  std::vector<Case> cases;
  std::string line;
  int number = 0;
  while (std::getline(in, line)) {
    ++number;
    if (line.empty() || line[0] == '#') continue;
    std::vector<std::string> f;
    std::stringstream ss(line);
    std::string field;
    while (std::getline(ss, field, '\t')) f.push_back(field);
    if (f.size() != 5) {
      ADD_FAILURE() << "line " << number << " has " << f.size() << " fields";
      continue;
    }
    Case c;
    c.mode = f[0];
    c.formula = f[1];
    c.x = std::stod(f[2]);
    c.dx = std::stod(f[3]);
    c.error = f[4] == "error";
    if (!c.error) c.expected = std::stod(f[4]);
    c.line = number;
    cases.push_back(c);
  }
  return cases;
}

bool Close(double got, double want) {
  if (got == want) return true;
  const double scale = std::max(1.0, std::fabs(want));
  return std::fabs(got - want) <= 1e-12 * scale;
}

TEST(FormulaTable, HoldsEnoughCases) {
  const auto cases = ReadTable();
  EXPECT_GE(cases.size(), 1000u);
  std::set<std::string> formulas;
  for (const Case& c : cases) formulas.insert(c.mode + c.formula);
  EXPECT_GE(formulas.size(), 200u);
}

TEST(FormulaTable, PlotFormulasOverTheirGrids) {
  int checked = 0;
  for (const Case& c : ReadTable()) {
    if (c.mode != "plot") continue;
    testing::FormulaBench b;
    const std::string command = b.Compile(c.formula);
    ASSERT_NE(command, formula::kErrorResult) << "line " << c.line << ": " << c.formula;
    int fault = 0;
    const double got = b.Eval(c.x, c.dx, &fault);
    if (c.error) {
      EXPECT_NE(fault, 0) << "line " << c.line << ": " << c.formula << " at " << c.x;
    } else {
      EXPECT_EQ(fault, 0) << "line " << c.line << ": " << c.formula << " at " << c.x;
      EXPECT_TRUE(Close(got, c.expected)) << "line " << c.line << ": " << c.formula << " at x=" << c.x
                                          << " gives " << got << ", expected " << c.expected;
    }
    EXPECT_TRUE(b.host.errors.empty()) << c.formula;
    EXPECT_TRUE(b.host.prompts.empty()) << c.formula;
    ++checked;
  }
  EXPECT_GT(checked, 1000);
}

TEST(FormulaTable, ValuesThroughVALU) {
  int checked = 0;
  for (const Case& c : ReadTable()) {
    if (c.mode != "valu") continue;
    testing::FormulaBench b;
    std::string text = c.formula;
    const double got = b.compiler.VALU(text);
    if (c.error) {
      EXPECT_EQ(text, formula::kValueFailure) << "line " << c.line << ": " << c.formula;
      EXPECT_EQ(b.state.valueFault, -12);
    } else {
      EXPECT_EQ(text, c.formula) << "line " << c.line;
      EXPECT_TRUE(Close(got, c.expected)) << "line " << c.line << ": " << c.formula << " gives " << got
                                          << ", expected " << c.expected;
    }
    ++checked;
  }
  EXPECT_GT(checked, 100);
}

}  // namespace
}  // namespace keldo

namespace keldo {
namespace {

// Every plot formula of the table, compiled, with one evaluator on the tape
// (and in blocks) and one that walks the program: check(c, fast, slow).
template <typename Check>
void ForEachPlotFormula(Check check) {
  for (const Case& c : ReadTable()) {
    if (c.mode != "plot") continue;
    testing::FormulaBench b;
    ASSERT_NE(b.Compile(c.formula), formula::kErrorResult);
    formula::Evaluator fast, slow;
    for (formula::Evaluator* ev : {&fast, &slow}) {
      formula::BindEvaluator(*ev, b.state);
      ev->dx = c.dx;
    }
    slow.useTape = false;
    fast.Prepare();
    slow.Prepare();
    check(c, fast, slow);
  }
}

// The linked tape and the walk over the program give the same bits and the
// same faults for every formula of the table.
TEST(FormulaTable, TapeAndProgramWalkAgreeBitForBit) {
  int linked = 0;
  ForEachPlotFormula([&](const Case& c, formula::Evaluator& fast, formula::Evaluator& slow) {
    EXPECT_FALSE(slow.HasTape());
    if (fast.HasTape()) ++linked;
    const double f = fast.Eval(0, c.x), s = slow.Eval(0, c.x);
    EXPECT_EQ(fast.fault(), slow.fault()) << c.formula << " at " << c.x;
    EXPECT_EQ(std::memcmp(&f, &s, sizeof f), 0) << c.formula << " at " << c.x << ": " << f << " vs " << s;
  });
  EXPECT_GT(linked, 1000);
}

// A block of points gives, point for point, what the walk gives one point at
// a time, up to and with the first fault; the run stops there.
TEST(FormulaTable, BlocksOfPointsAgreeWithTheWalkBitForBit) {
  int blocked = 0;
  ForEachPlotFormula([&](const Case& c, formula::Evaluator& fast, formula::Evaluator& slow) {
    // 150 points (three blocks, the last one short) around the table's x,
    // which sits at point 100.
    std::vector<double> xs(150);
    const double step = c.dx != 0.0 ? c.dx : 1.0 / 64;
    for (std::size_t k = 0; k < xs.size(); ++k) xs[k] = c.x + (static_cast<double>(k) - 100) * step;
    if (!fast.RunsInBlocks()) {
      EXPECT_EQ(fast.EvalRun(xs.data(), static_cast<int>(xs.size()), nullptr), -1) << c.formula;
      return;
    }
    ++blocked;
    testing::ExpectRunAgreesWithWalk(fast, slow, xs, c.formula);
  });
  EXPECT_GT(blocked, 500);
}

}  // namespace
}  // namespace keldo
