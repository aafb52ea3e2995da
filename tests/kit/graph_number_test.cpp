// Reading a graph-number field: the rounding, the reports and their order,
// and the one-graph shortcuts.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kit/controls.h"
#include "kit/focus.h"
#include "kit/graph_number.h"
#include "test_frame.h"

namespace keldo {
namespace {

using testing::TestFrame;

const std::string kPastLast = "message 1: Insufficient number of graphs.";
const std::string kNotAGraph = "message 3: Improper graph specification.";

// An evaluation that knows a few texts and fails on the rest, counting calls.
struct FakeEvaluation {
  int calls = 0;
  NumberEvaluator Evaluator() {
    return [this](const std::string& text, bool& failed) {
      ++calls;
      if (text == "1+1") return 2.0;
      if (text == "7/2") return 3.5;
      failed = true;
      return 0.0;
    };
  }
};

TEST(GraphNumber, ReadsTheLeadingNumberRoundedAndCountedFromOne) {
  TestFrame t;
  const GraphNumberRules rules;
  EXPECT_EQ(ReadGraphNumber(t.frame, "2", 3, rules, nullptr), 1);
  EXPECT_EQ(ReadGraphNumber(t.frame, " 2.6 graphs", 3, rules, nullptr), 2);
  EXPECT_EQ(ReadGraphNumber(t.frame, "1.4", 3, rules, nullptr), 0);
  EXPECT_TRUE(t.lines.empty());
}

TEST(GraphNumber, ZeroPastTheLastAndNoNumberReportInTheirOrder) {
  TestFrame t;
  const GraphNumberRules rules;
  EXPECT_EQ(ReadGraphNumber(t.frame, "0", 3, rules, nullptr), -1);
  EXPECT_EQ(ReadGraphNumber(t.frame, "5", 3, rules, nullptr), -1);
  EXPECT_EQ(ReadGraphNumber(t.frame, "abc", 3, rules, nullptr), -1);
  // 3.5 rounds to the even 4, past the last of three.
  EXPECT_EQ(ReadGraphNumber(t.frame, "3.5", 3, rules, nullptr), -1);
  // With no graphs at all, 1 is already past the last.
  EXPECT_EQ(ReadGraphNumber(t.frame, "1", 0, rules, nullptr), -1);
  EXPECT_EQ(t.lines, (std::vector<std::string>{kNotAGraph, kPastLast, kNotAGraph, kPastLast, kPastLast}));
}

TEST(GraphNumber, AZeroReportBeepsAndOneReportServesEveryBadNumber) {
  TestFrame t;
  EXPECT_EQ(ReadGraphNumber(t.frame, "5", 3, AnyBadNumber(0), nullptr), -1);
  EXPECT_EQ(ReadGraphNumber(t.frame, "-2", 3, AnyBadNumber(3), nullptr), -1);
  EXPECT_EQ(ReadGraphNumber(t.frame, "4", 3, AnyBadNumber(3), nullptr), -1);
  EXPECT_EQ(ReadGraphNumber(t.frame, "0", 3, AnyBadNumber(1), nullptr), -1);
  EXPECT_EQ(t.lines, (std::vector<std::string>{"beep", kNotAGraph, kNotAGraph, kPastLast}));
}

TEST(GraphNumber, AnEvaluatedFieldThatFailsIsNoGraphWhateverTheCount) {
  TestFrame t;
  FakeEvaluation fake;
  const GraphNumberRules rules{NumberReading::Evaluated};
  EXPECT_EQ(ReadGraphNumber(t.frame, "1+1", 3, rules, fake.Evaluator()), 1);
  EXPECT_EQ(ReadGraphNumber(t.frame, "7/2", 3, rules, fake.Evaluator()), -1);  // 4
  EXPECT_EQ(ReadGraphNumber(t.frame, "x", 0, rules, fake.Evaluator()), -1);
  EXPECT_EQ(t.lines, (std::vector<std::string>{kPastLast, kNotAGraph}));
  // The leading-number reading never asks the evaluation.
  EXPECT_EQ(ReadGraphNumber(t.frame, "2", 3, GraphNumberRules{}, fake.Evaluator()), 1);
  EXPECT_EQ(fake.calls, 3);
}

TEST(GraphNumber, TheOneGraphShortcutsSkipTheField) {
  TestFrame t;
  FakeEvaluation fake;
  const GraphNumberRules taken{NumberReading::Evaluated, 1, 3, SingleGraph::Taken};
  const GraphNumberRules takenOrNone{NumberReading::Evaluated, 1, 3, SingleGraph::TakenOrNone};
  EXPECT_EQ(ReadGraphNumber(t.frame, "x", 1, taken, fake.Evaluator()), 0);
  EXPECT_EQ(ReadGraphNumber(t.frame, "x", 1, takenOrNone, fake.Evaluator()), 0);
  EXPECT_EQ(ReadGraphNumber(t.frame, "x", 0, takenOrNone, fake.Evaluator()), -1);
  EXPECT_EQ(fake.calls, 0);
  EXPECT_TRUE(t.lines.empty());
  // Taken with no graph reads the field as usual.
  EXPECT_EQ(ReadGraphNumber(t.frame, "1+1", 0, taken, fake.Evaluator()), -1);
  EXPECT_EQ(ReadGraphNumber(t.frame, "1+1", 2, takenOrNone, fake.Evaluator()), 1);
  EXPECT_EQ(t.lines, std::vector<std::string>{kPastLast});
}

TEST(GraphNumber, TheReaderReadsAFieldByName) {
  TestFrame t;
  ControlModel controls;
  controls.Add("TxtAnGr1", ControlKind::Text, "2");
  FakeEvaluation fake;
  const GraphNumberReader read(t.frame, controls, fake.Evaluator());
  EXPECT_EQ(read("TxtAnGr1", 2), 1);
  controls.SetText("TxtAnGr1", "1+1");
  EXPECT_EQ(read("TxtAnGr1", 2, GraphNumberRules{NumberReading::Evaluated}), 1);
  EXPECT_EQ(read("TxtAnGr1", 1, GraphNumberRules{NumberReading::Evaluated}), -1);
  EXPECT_EQ(t.lines, std::vector<std::string>{kPastLast});
}

TEST(GraphNumber, AReportedNumberSendsTheFocusBackToItsField) {
  TestFrame t;
  ControlModel controls;
  controls.Add("ConvGr1", ControlKind::Text, "1");
  controls.Add("ConvGr2", ControlKind::Text, "3");
  FakeEvaluation fake;
  const GraphNumberReader read(t.frame, controls, fake.Evaluator());
  EXPECT_EQ(read("ConvGr1", 2), 0);
  EXPECT_EQ(FocusRequests(controls), 0);
  EXPECT_EQ(read("ConvGr2", 2), -1);
  EXPECT_EQ(FocusRequested(controls), "ConvGr2");
  EXPECT_EQ(FocusRequests(controls), 1);
  // An empty form passing over the field says nothing and moves nothing.
  EXPECT_EQ(read("ConvGr1", 0, GraphNumberRules{NumberReading::Leading, 1, 3, SingleGraph::TakenOrNone}), -1);
  EXPECT_EQ(FocusRequests(controls), 1);
  EXPECT_EQ(t.lines, std::vector<std::string>{kPastLast});
}

}  // namespace
}  // namespace keldo
