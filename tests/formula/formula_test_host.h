#pragma once
// A formula host for tests: a form of N points with no graphs, whose prompts
// take queued answers and whose messages are recorded.

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

}  // namespace keldo::testing
