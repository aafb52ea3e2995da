#pragma once
// A formula host for tests: a form of N points with no graphs, whose prompts
// take queued answers and whose messages are recorded.

#include <gtest/gtest.h>

#include <cstring>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "formula/compiler.h"
#include "formula/eval.h"

namespace keldo::testing {

class FormulaTestHost final : public formula::FormulaHost {
 public:
  int points = 1024;
  int graphCount = 0;
  double intervalLength = 1.0;
  std::deque<std::optional<std::string>> answers;  // nothing queued: cancel
  std::vector<std::string> prompts;
  std::vector<int> errors;
  formula::GraphTable graphs;

  int FormulaPoints() const override { return points; }
  int FormulaGraphCount() const override { return graphCount; }
  double FormulaIntervalLength() const override { return intervalLength; }
  std::optional<std::string> FormulaPrompt(const std::string& prompt, const std::string& title) override {
    prompts.push_back(prompt + "|" + title);
    if (answers.empty()) return std::nullopt;
    auto a = answers.front();
    answers.pop_front();
    return a;
  }
  void FormulaError(int number) override { errors.push_back(number); }
  platform::Random* FormulaRandom() override { return nullptr; }
  const formula::GraphTable* FormulaGraphs() override { return &graphs; }
};

// A compiler over its own fields, and an evaluator for what it compiled.
struct FormulaBench {
  FormulaTestHost host;
  formula::FormulaState state;
  formula::Compiler compiler{state, host};

  // Compiles a typed formula as the plot command does; the command string
  // comes back.
  std::string Compile(const std::string& text) {
    state.order = 0;
    state.formType = 0;
    std::string command;
    compiler.COMPILE(formula::kModeTyped, text, command);
    return command;
  }

  // Evaluates the last program at x with step dx; fault gets the error number.
  double Eval(double x, double dx, int* fault = nullptr) {
    formula::Evaluator ev;
    formula::BindEvaluator(ev, state);
    ev.dx = dx;
    ev.graphs = &host.graphs;
    ev.Prepare();
    const double v = ev.Eval(0, x);
    if (fault) *fault = ev.fault();
    return v;
  }
};

// Runs xs in blocks on `fast` and point by point on `slow`, which walks the
// program: the run must give each point's bits up to its first fault, that
// fault with the value 0 there, and stop at it. Returns the run's count.
inline int ExpectRunAgreesWithWalk(formula::Evaluator& fast, formula::Evaluator& slow, const std::vector<double>& xs,
                                   const std::string& what) {
  const int count = static_cast<int>(xs.size());
  std::vector<double> out(xs.size(), -1.0);
  const int fine = fast.EvalRun(xs.data(), count, out.data());
  int expected = count;
  for (int k = 0; k < count; ++k) {
    const std::size_t at = static_cast<std::size_t>(k);
    const double s = slow.Eval(k, xs[at]);
    if (slow.fault() != formula::kNoFault) {
      expected = k;
      EXPECT_EQ(fast.fault(), slow.fault()) << what << " at " << xs[at];
      EXPECT_EQ(out[at], 0.0) << what;
      break;
    }
    EXPECT_EQ(std::memcmp(&out[at], &s, sizeof s), 0) << what << " at " << xs[at] << ": " << out[at] << " vs " << s;
  }
  EXPECT_EQ(fine, expected) << what;
  if (expected == count) {
    EXPECT_EQ(fast.fault(), formula::kNoFault) << what;
  }
  return fine;
}

}  // namespace keldo::testing
