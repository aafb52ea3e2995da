// Formulas of x and y on the two-dimensional form: compiling the formula,
// evaluating it over the (N+1) by (N+1) grid row by row with the Stop button
// live, and filing the result.

#include <cmath>

#include "common/number_text.h"
#include "form2d/graph2_form.h"
#include "formula/formula_text.h"
#include "kit/focus.h"
#include "kit/form_context.h"
#include "platform/event_loop.h"
#include "platform/random.h"
#include "platform/services.h"

namespace keldo::form2d {
void Graph2Form::RestorePlotButton() {
  Control& go = controls_["GoButton(1)"];
  go.text = "&Plot";
  go.tip = "Draws the formula as an image.";
  Touch();
}

bool Graph2Form::IsStopButton(int k) const { return (k == 1 && plotting_) || IsDenoiseStop(k); }

bool Graph2Form::StopWork() {
  if (denoising_) {
    denoising_ = false;  // the denoiser notices after its pass
    return true;
  }
  if (!plotting_) return false;
  plotting_ = false;  // the running loop notices at its next yield
  return true;
}

void Graph2Form::PlotTheGraph2() {
  if (plotting_) {
    plotting_ = false;
    return;
  }
  const float oldLeft = formulaLeft_, oldRight = formulaRight_;
  bool failed = false;
  const float l = static_cast<float>(Value(controls_.Text("EndRValue"), failed));
  formulaLeft_ = -l;
  formulaRight_ = l;
  const std::string typed = controls_.Text("Formula");
  formula_.order = 0;
  formula_.formType = 0;
  std::string command;
  compiler_.COMPILE(formula::kModeTyped, typed, command);
  if (command == formula::kErrorResult) {
    formulaLeft_ = oldLeft;
    formulaRight_ = oldRight;
    context_.ShowError(23);
    RequestFocus(controls_, "Formula");
    return;
  }
  std::string error;
  PlotGraph2(error, command, l);
  RestorePlotButton();
  if (error != "E") {
    formulaBox_.Update(typed);
  } else {
    controls_.SetText("Formula", typed);
    formulaLeft_ = oldLeft;
    formulaRight_ = oldRight;
    RequestFocus(controls_, "Formula");
  }
  plotting_ = false;
  Touch();
}

void Graph2Form::PlotGraph2(std::string& error, const std::string& command, float l) {
  const float left = -l;
  const float step = (l - left) / static_cast<float>(n_);
  formulaStep_ = step;
  // The slot of the new graph knows its domain, so that G references and H
  // see it while the formula runs.
  if (graphCount_ < kMaxGraphs) {
    const auto s = static_cast<std::size_t>(graphCount_);
    store_.a[s] = left;
    store_.b[s] = l;
    store_.h[s] = step;
    GraphLook& look = looks_[s];
    look.viewXLeft = look.viewYLow = left;
    look.viewXRight = look.viewYHigh = l;
  }
  // The samples go straight into the slot the graph will be filed in: a
  // slot past the last graph is read by nothing, and a stopped or failed
  // plot leaves it as unused as before. A fifth graph, which goes to a new
  // form, needs a matrix of its own.
  std::vector<float> own;
  float* values = nullptr;
  if (graphCount_ < kMaxGraphs) {
    values = store_.Row(graphCount_);
  } else {
    own.assign(Stride() * Stride(), 0.0f);
    values = own.data();
  }
  USERFN2(n_ + 1, left, l, step, values, error, command);
}

void Graph2Form::USERFN2(int count, float left, float right, float step, float* values, std::string& error,
                         const std::string& command) {
  (void)command;
  formula::Evaluator ev;
  formula::BindEvaluator(ev, formula_);
  ev.dx = step;
  ev.random = context_.services().random;
  if (ev.random != nullptr) ev.random->SeedFromClock();
  for (int g = 0; g < kMaxGraphs; ++g) ev.planes[g] = store_.Row(g);
  ev.planeStride = Stride();
  // Computed values, for the state letters: those of the present row.
  std::vector<double> row(static_cast<std::size_t>(count) + 10, 0.0);
  ev.computed = row.data();
  ev.computedSize = count;
  ev.Prepare();

  plotting_ = true;
  Control& go = controls_["GoButton(1)"];
  go.text = "&Stop";
  go.tip = "Stops the graphing.";
  controls_.SetText("PercentDone", "0% done.");
  controls_.SetVisible("PercentDone", true);
  Touch();
  context_.ShowBusyArrow();
  platform::EventLoop& loop = *context_.services().eventLoop;
  const int every = std::max(1, n_ / 32);
  long long percent = 0;
  const std::size_t stride = Stride();
  // Where the formula allows, a row is computed a block of columns at a
  // time, with the values Eval2 gives point by point; `fine` columns of it
  // are ready, and the column after them is the first fault.
  const bool blocks = ev.RunsInBlocks();
  std::vector<double> xs(blocks ? static_cast<std::size_t>(count) : 0), rowValues(xs.size());
  for (std::size_t j = 0; j < xs.size(); ++j) xs[j] = static_cast<float>(j) * step + left;
  for (int i = 0; i < count; ++i) {
    const float y = static_cast<float>(i) * step + left;
    const int fine = blocks ? ev.EvalRun2(i, 0, xs.data(), y, count, rowValues.data()) : -1;
    for (int j = 0; j < count; ++j) {
      const float x = static_cast<float>(j) * step + left;
      const double v = fine < 0 ? ev.Eval2(j, i, x, y) : rowValues[static_cast<std::size_t>(j)];
      if (fine < 0 ? ev.fault() != formula::kNoFault : j == fine) {
        plotting_ = false;
        controls_.SetVisible("PercentDone", false);
        context_.ShowIdle();
        context_.ShowCritical(ev.fault() == formula::kOverflow ? "Overflow.  " : "Run Error.  ");
        error = "E";
        Touch();
        return;
      }
      values[static_cast<std::size_t>(i) * stride + static_cast<std::size_t>(j)] = static_cast<float>(v);
      row[static_cast<std::size_t>(j)] = v;
    }
    if (i % every != 0) continue;
    percent += std::llround(static_cast<double>(every) / count * 100.0);
    controls_.SetText("PercentDone", std::to_string(percent) + "% done.");
    Touch();
    loop.Yield();
    if (!plotting_) {
      // Stopped: nothing is filed.
      controls_.SetVisible("PercentDone", false);
      context_.ShowIdle();
      Touch();
      return;
    }
  }
  RestorePlotButton();
  controls_.SetVisible("PercentDone", false);
  context_.ShowIdle();
  plotting_ = false;
  DisplayFunction(count - 1, values, stride, left, right, step);
}

}  // namespace keldo::form2d
