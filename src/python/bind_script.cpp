// keldo.run: a keldo-run script on headless forms, its dumps as dicts; and
// keldo.evaluate: a formula of X compiled and run as the forms do.

#include <cmath>
#include <cstdlib>
#include <sstream>

#include "app/frame.h"
#include "formula/compiler.h"
#include "formula/eval.h"
#include "formula/user_function.h"
#include "kinds/form_kinds.h"
#include "platform/headless/headless_services.h"
#include "python/arrays.h"
#include "python/bindings.h"
#include "script/runner.h"

namespace keldo::python {
namespace {

std::string ProgramHome() {
  if (const char* home = std::getenv("KELDO_HOME"); home && *home) return home;
  return KELDO_DEFAULT_HOME;
}

// Each dump's JSON as a dict.
py::list DumpsOf(const std::vector<std::string>& jsons) {
  py::object loads = py::module_::import("json").attr("loads");
  py::list dumps;
  for (const std::string& json : jsons) dumps.append(loads(py::str(json)));
  return dumps;
}

py::list RunScript(const std::string& text, bool strict) {
  std::ostringstream out, err;
  std::vector<std::string> jsons;
  int status = 0;
  {
    py::gil_scoped_release release;
    const std::string home = ProgramHome();
    script::Runner* runner = nullptr;
    platform::HeadlessPlatform platform(
        [&runner](const std::string& line) {
          if (runner) runner->Print(line);
        },
        home + "/docs");
    Frame frame(platform.services(), home);
    InstallFormKinds(frame);
    script::Runner run(frame, platform, out, err);
    run.SetDumpObserver([&jsons](const std::string& json) { jsons.push_back(json); });
    runner = &run;
    script::RunOptions options;
    options.strict = strict;
    status = run.Run(text, options);
  }
  if (status == 2) throw py::value_error("keldo-run: " + err.str());
  if (status == 1) throw py::value_error("keldo-run stopped at a message box: " + out.str());
  return DumpsOf(jsons);
}

// A formula's host outside any form: no stored graphs, no prompts (a
// formula that asks for a parameter fails to compile), random draws from a
// seeded generator.
class ArrayHost final : public formula::FormulaHost {
 public:
  ArrayHost(int points, double length) : points_(points), length_(length) { random_.Seed(seed); }
  int FormulaPoints() const override { return points_; }
  int FormulaGraphCount() const override { return 0; }
  double FormulaIntervalLength() const override { return length_; }
  std::optional<std::string> FormulaPrompt(const std::string&, const std::string&) override { return std::nullopt; }
  void FormulaError(int number) override {
    if (error == 0) error = number;
  }
  platform::Random* FormulaRandom() override { return &random_; }
  const formula::GraphTable* FormulaGraphs() override { return &graphs_; }

  int error = 0;
  static constexpr std::uint64_t seed = 12345;
  platform::HeadlessRandom random_;

 private:
  int points_;
  double length_;
  formula::GraphTable graphs_;
};

bool EvenlySpaced(const std::vector<double>& x, double& step) {
  if (x.size() < 2) return false;
  step = (x.back() - x.front()) / static_cast<double>(x.size() - 1);
  if (!(step > 0)) return false;
  for (std::size_t i = 0; i < x.size(); ++i)
    if (std::fabs(x[i] - (x.front() + static_cast<double>(i) * step)) > 1e-9 * std::max(1.0, std::fabs(x[i])))
      return false;
  return true;
}

py::array_t<double> Evaluate(const std::string& text, const py::object& points) {
  const std::vector<double> x = RealVector(points, "x");
  if (x.empty()) ThrowValue("x must hold at least one point");
  if (x.size() > (std::size_t{1} << kLargestExponent1D) + 1) ThrowValue("x holds too many points");
  double step = 0.0;
  const bool even = EvenlySpaced(x, step);
  const int count = static_cast<int>(x.size());
  ArrayHost host(count > 1 ? count - 1 : 1, even ? x.back() - x.front() : 1.0);
  formula::FormulaState state;
  formula::Compiler compiler(state, host);
  std::string command;
  compiler.COMPILE(formula::kModeTyped, text, command);
  if (command == formula::kErrorResult) ThrowCatalogue(host.error != 0 ? host.error : 23);
  std::vector<double> y(static_cast<std::size_t>(count) + 10, 0.0);
  if (state.formType != 0) {
    // A differential equation or a recursion runs over the grid as a plot.
    if (!even) ThrowValue("a differential equation or a recursive formula needs evenly spaced x");
    formula::UserFunctionRun run = formula::RunOver(state, x.front(), step, count);
    run.graphs = host.FormulaGraphs();
    run.random = host.FormulaRandom();
    formula::PlotSink quiet;
    const formula::UserFunctionResult r = formula::RunUserFunction(run, y, quiet);
    if (r.fault != formula::kNoFault) ThrowValue("run-time error " + std::to_string(r.fault) + " in the formula");
    return ToArray(y.data(), static_cast<std::size_t>(count));
  }
  formula::Evaluator ev;
  formula::BindEvaluator(ev, state);
  ev.dx = even ? step : 0.0;
  ev.graphs = host.FormulaGraphs();
  ev.random = host.FormulaRandom();
  ev.computed = y.data();
  ev.computedSize = count;
  ev.restartBudget = 2000000;
  ev.Prepare();
  // Point by point, as the plot runs a plain formula; a point whose
  // evaluation faults is NaN.
  for (int i = 0; i < count; ++i) {
    const double v = ev.Eval(i, x[static_cast<std::size_t>(i)]);
    y[static_cast<std::size_t>(i)] = ev.fault() == formula::kNoFault ? v : std::nan("");
  }
  return ToArray(y.data(), static_cast<std::size_t>(count));
}

}  // namespace

void BindScript(py::module_& m) {
  m.def("run", &RunScript, py::arg("script"), py::arg("strict") = false,
        R"(Runs a keldo-run script text on headless forms, exactly as keldo-run
does (one command a line: new, open, set, menu, go, click, answer, file,
dump ...), and returns a list with one dict per `dump` line, in order,
whether the line prints its dump or writes it to a file: the dump's JSON
(kind, caption, points, window, graphs, controls, messages, clipboard). Pictures are read and written
as BMP and PGM; screenshots need keldo-run itself. A line that is not
understood raises ValueError; strict=True also stops at the first message box.)");
  m.def("evaluate", &Evaluate, py::arg("formula"), py::arg("x"),
        R"(A formula of X in the program's language (as typed in a form's Formula
field: sin(2*pi*x), (x>0)*exp(-x), sums, ...) evaluated at the points x.
Evenly spaced x also give the step H = x[1] - x[0] and the interval's length
to the formula, and allow differential equations and recursive formulas,
which run over the grid as the one-dimensional form plots them. A point
where the formula faults (a division by zero, an overflow) is NaN. An
improper formula raises ValueError with message 23.)");
}

}  // namespace keldo::python
