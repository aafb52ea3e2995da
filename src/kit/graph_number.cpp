#include "kit/graph_number.h"

#include <cmath>

#include "common/number_text.h"
#include "kit/controls.h"
#include "kit/focus.h"
#include "kit/form_context.h"

namespace keldo {
namespace {

void Report(FormContext& context, int message) {
  if (message > 0) context.ShowError(message);
  else context.Beep();
}

}  // namespace

int ReadGraphNumber(FormContext& context, const std::string& text, int graphCount, const GraphNumberRules& rules,
                    const NumberEvaluator& evaluate) {
  if (rules.single != SingleGraph::Read && graphCount == 1) return 0;
  if (rules.single == SingleGraph::TakenOrNone && graphCount == 0) return -1;
  bool failed = false;
  const double value = rules.reading == NumberReading::Evaluated && evaluate ? evaluate(text, failed) : Val(text);
  const double number = std::nearbyint(value);
  if (!failed && number > graphCount) {
    Report(context, rules.pastLast);
    return -1;
  }
  // A NaN is no graph either.
  if (failed || !(number >= 1)) {
    Report(context, rules.notAGraph);
    return -1;
  }
  return static_cast<int>(number) - 1;
}

int GraphNumberReader::operator()(const std::string& field, int graphCount, const GraphNumberRules& rules) const {
  const int g = ReadGraphNumber(context_, controls_.Text(field), graphCount, rules, evaluate_);
  // A form holding no graph may pass over the field without a word.
  const bool silent = rules.single == SingleGraph::TakenOrNone && graphCount == 0;
  if (g < 0 && !silent) RequestFocus(controls_, field);
  return g;
}

}  // namespace keldo
