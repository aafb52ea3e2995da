#pragma once
// Reading the number of a graph from a text field, as every command on
// "graph k" does. The text is read as a number (its leading number, or the
// form's evaluation of a formula of numbers), rounded to the nearest integer
// and counted from 1; the result is the graph's 0-based index, or -1 after
// one report:
//
//   text    number n            report
//   ------  ------------------  -------------------------------------------
//   any     not evaluable       notAGraph
//   "5"     n > graphs          pastLast   (checked first)
//   "0"     n < 1, or no number notAGraph
//
// A report is a catalogue message, or a beep where its number is 0. With
// SingleGraph::Taken a form holding exactly one graph uses it without
// reading the field; TakenOrNone also gives -1, silently, when it holds none.

#include <functional>
#include <string>

namespace keldo {

class ControlModel;
class FormContext;

enum class NumberReading {
  Leading,    // the number at the start of the text; never fails
  Evaluated,  // the form's evaluation of the text as a formula of numbers
};

enum class SingleGraph { Read, Taken, TakenOrNone };

struct GraphNumberRules {
  NumberReading reading = NumberReading::Leading;
  int pastLast = 1;   // the report of a number past the last graph
  int notAGraph = 3;  // the report of a number below 1, or of a text that is no number
  SingleGraph single = SingleGraph::Read;
};

// Rules under which every bad number gives the one report `message`.
constexpr GraphNumberRules AnyBadNumber(int message, NumberReading reading = NumberReading::Leading) {
  return {reading, message, message, SingleGraph::Read};
}

// A form's evaluation of a formula of numbers; `failed` is set when the text
// cannot be evaluated (an evaluation that cannot tell leaves it false).
using NumberEvaluator = std::function<double(const std::string& text, bool& failed)>;

// The graph a field names among `graphCount` graphs; see above.
int ReadGraphNumber(FormContext& context, const std::string& text, int graphCount, const GraphNumberRules& rules,
                    const NumberEvaluator& evaluate);

// The same, bound to a form's context, controls and evaluation, reading the
// field by its control name. A number it reports on sends the keyboard focus
// back to the field, so that the user can correct it at once.
class GraphNumberReader {
 public:
  GraphNumberReader(FormContext& context, ControlModel& controls, NumberEvaluator evaluate)
      : context_(context), controls_(controls), evaluate_(std::move(evaluate)) {}

  int operator()(const std::string& field, int graphCount, const GraphNumberRules& rules = {}) const;

 private:
  FormContext& context_;
  ControlModel& controls_;
  NumberEvaluator evaluate_;
};

}  // namespace keldo
