// Graphs from formulas on the one-dimensional form, and the graph store.

#include <gtest/gtest.h>

#include <cmath>

#include "form1d/graph1_form.h"
#include "kit/focus.h"
#include "kit/typed_forms.h"
#include "test_frame.h"

namespace keldo {
namespace {

using testing::TestFrame;

form1d::Graph1Form& NewGraph1(TestFrame& t, int points = 64) {
  int code = 0;
  auto& f = *NewFormOf<form1d::Graph1Form>(t.frame, code);
  f.SetPoints(points);
  f.RunMenu("mnuPlotGraph");
  return f;
}

void Plot(form1d::Graph1Form& f, const std::string& formula, const std::string& end = ".5", bool symmetric = true) {
  f.controls().SetText("Formula", formula);
  f.controls().SetText("EndRValue", end);
  f.controls().SetFromUser(symmetric ? "IntervalType1" : "IntervalType2", "1");
  EXPECT_TRUE(f.Go());
}

std::vector<double> Values(const form1d::Graph1Form& f, int g) {
  return f.Graphs().at(static_cast<std::size_t>(g)).values;
}

TEST(PlotTheGraph, FilesAPlainFormulaOverTheSymmetricInterval) {
  TestFrame t;
  auto& f = NewGraph1(t);
  EXPECT_EQ(f.controls()["GoButton(0)"].text, "&Plot");
  EXPECT_EQ(f.controls().Text("mnuHelpSideBox"), "Help for Graphing");
  Plot(f, "2*X");
  ASSERT_EQ(f.GraphCount(), 1);
  const auto g = f.Graphs()[0];
  EXPECT_EQ(g.a, -0.5);
  EXPECT_EQ(g.b, 0.5);
  EXPECT_EQ(g.h, 1.0 / 64);
  EXPECT_EQ(g.peak, 1.0);
  ASSERT_EQ(g.values.size(), 65u);
  for (int i = 0; i <= 64; ++i) EXPECT_DOUBLE_EQ(g.values[static_cast<std::size_t>(i)], 2 * (-0.5 + i / 64.0));
  EXPECT_EQ(f.controls().Text("GraphCaption"), "User defined function.");
  EXPECT_EQ(f.controls()["GoButton(0)"].text, "&Plot");
  EXPECT_EQ(f.controls()["GoButton(0)"].tip, "Draws a graph of the formula.");
  EXPECT_EQ(f.controls().Text("EndRValue"), "0.5");
  // Auto fit: [MINW, MAXW] by FUNCMAX 1 * 1.5 -> 2.
  EXPECT_EQ(f.Window(), (std::array<double, 4>{-0.5, 0.5, -2.0, 2.0}));
  EXPECT_TRUE(t.lines.empty());
}

TEST(PlotTheGraph, IntervalFromZeroAndEndValueFormula) {
  TestFrame t;
  auto& f = NewGraph1(t);
  Plot(f, "X^2", "2*2", false);
  ASSERT_EQ(f.GraphCount(), 1);
  const auto g = f.Graphs()[0];
  EXPECT_EQ(g.a, 0.0);
  EXPECT_EQ(g.b, 4.0);
  EXPECT_EQ(g.values[64], 16.0);
  EXPECT_EQ(g.values[16], 1.0);
}

TEST(PlotTheGraph, ImproperFormulaReports23AndFilesNothing) {
  TestFrame t;
  auto& f = NewGraph1(t);
  Plot(f, "SIN(X");
  EXPECT_EQ(f.GraphCount(), 0);
  EXPECT_EQ(t.lines, std::vector<std::string>{"message 23: Improper formula."});
}

TEST(PlotTheGraph, RunErrorsAreCriticalAndFileNothing) {
  TestFrame t;
  auto& f = NewGraph1(t);
  Plot(f, "1/X");
  EXPECT_EQ(f.GraphCount(), 0);
  EXPECT_EQ(f.controls().Text("Formula"), "1/X");
  Plot(f, "EXP(2000*X)");
  EXPECT_EQ(f.GraphCount(), 0);
  ASSERT_EQ(t.platform.dialogs.Shown().size(), 2u);
  EXPECT_EQ(t.platform.dialogs.Shown()[0].text, "Run Error.  ");
  EXPECT_EQ(t.platform.dialogs.Shown()[0].icon, platform::MessageIcon::Critical);
  EXPECT_EQ(t.platform.dialogs.Shown()[1].text, "Overflow.  ");
  EXPECT_FALSE(f.Plotting());
  EXPECT_EQ(f.controls()["GoButton(0)"].text, "&Plot");
}

TEST(PlotTheGraph, RefreshesEveryThirtySecondOfThePoints) {
  TestFrame t;
  auto& f = NewGraph1(t);
  const long long before = t.platform.eventLoop.Count();
  Plot(f, "X");
  EXPECT_EQ(t.platform.eventLoop.Count() - before, 32);  // every 2 points of 65
  EXPECT_EQ(formula::RefreshInterval(65), 2);
  EXPECT_EQ(formula::RefreshInterval(10), 1);
}

TEST(PlotTheGraph, StopLeavesTheCountAndRestoresTheButton) {
  TestFrame t;
  auto& f = NewGraph1(t);
  Plot(f, "X");
  ASSERT_EQ(f.GraphCount(), 1);
  std::string captionDuringPlot;
  int yields = 0;
  t.platform.eventLoop.SetHook([&] {
    if (++yields == 3) {
      captionDuringPlot = f.controls()["GoButton(0)"].text;
      EXPECT_EQ(f.controls()["GoButton(0)"].tip, "Stops the graphing.");
      EXPECT_TRUE(f.Plotting());
      f.Click("GoButton(0)");
    }
  });
  Plot(f, "X^2");
  EXPECT_EQ(captionDuringPlot, "&Stop");
  EXPECT_EQ(yields, 3);
  EXPECT_EQ(f.GraphCount(), 1);
  EXPECT_FALSE(f.Plotting());
  EXPECT_EQ(f.controls()["GoButton(0)"].text, "&Plot");
  EXPECT_EQ(f.controls()["GoButton(0)"].tip, "Draws a graph of the formula.");
}

TEST(PlotTheGraph, ParametersArePromptedThroughTheInputBox) {
  TestFrame t;
  auto& f = NewGraph1(t);
  t.platform.dialogs.QueueAnswer(std::string("3"));
  Plot(f, "A*X");
  ASSERT_EQ(f.GraphCount(), 1);
  EXPECT_EQ(Values(f, 0)[64], 1.5);
  EXPECT_EQ(t.lines, std::vector<std::string>{"prompt: Enter the value of a."});
}

TEST(PlotTheGraph, GraphReferencesReadEarlierGraphs) {
  TestFrame t;
  auto& f = NewGraph1(t);
  Plot(f, "X^2");
  Plot(f, "G1(X)+1");
  ASSERT_EQ(f.GraphCount(), 2);
  for (int i = 0; i <= 64; ++i) EXPECT_DOUBLE_EQ(Values(f, 1)[static_cast<std::size_t>(i)], Values(f, 0)[static_cast<std::size_t>(i)] + 1);
  Plot(f, "G3(X)");
  EXPECT_EQ(f.GraphCount(), 2);
  EXPECT_EQ(t.lines.back(), "message 23: Improper formula.");
}

TEST(DifferentialEquations, FirstOrderAgainstTheExponential) {
  TestFrame t;
  auto& f = NewGraph1(t, 1024);
  Plot(f, "Y\\DIFF\\Y0=1", "1", false);
  ASSERT_EQ(f.GraphCount(), 1);
  const auto v = Values(f, 0);
  for (int i = 0; i <= 1024; i += 64) EXPECT_NEAR(v[static_cast<std::size_t>(i)], std::exp(i / 1024.0), 1e-12);
  EXPECT_EQ(f.controls().Text("GraphCaption").rfind("MTE:", 0), 0u);
  EXPECT_NE(f.controls().Text("GraphCaption").find(", CTE:"), std::string::npos);
}

TEST(DifferentialEquations, SecondOrderAgainstTheSine) {
  TestFrame t;
  auto& f = NewGraph1(t, 1024);
  Plot(f, "-Y\\DIFF\\ORDER=2\\Y=0\\Y'=1", "2", false);
  ASSERT_EQ(f.GraphCount(), 1);
  const auto v = Values(f, 0);
  for (int i = 0; i <= 1024; i += 32) EXPECT_NEAR(v[static_cast<std::size_t>(i)], std::sin(2.0 * i / 1024.0), 1e-9);
}

TEST(DifferentialEquations, SecondOrderWithADampingTerm) {
  TestFrame t;
  auto& f = NewGraph1(t, 1024);
  // y'' = -2y' - 2y, y(0) = 0, y'(0) = 1: y = exp(-x) sin(x).
  Plot(f, "-2Y'-2Y\\DIFF\\Y0=0\\Y1=1", "3", false);
  ASSERT_EQ(f.GraphCount(), 1);
  const auto v = Values(f, 0);
  for (int i = 0; i <= 1024; i += 32) {
    const double x = 3.0 * i / 1024.0;
    EXPECT_NEAR(v[static_cast<std::size_t>(i)], std::exp(-x) * std::sin(x), 1e-9);
  }
}

TEST(DifferentialEquations, NoInitialValuesMeansZeros) {
  TestFrame t;
  auto& f = NewGraph1(t);
  Plot(f, "1+0*Y\\DIFF", "1", false);
  const auto v = Values(f, 0);
  for (int i = 0; i <= 64; ++i) EXPECT_NEAR(v[static_cast<std::size_t>(i)], i / 64.0, 1e-14);
}

TEST(DifferentialEquations, ErrorEstimatesStartDoubledAtStepTwo) {
  TestFrame t;
  auto& f = NewGraph1(t);
  // y' = x^3 from 0: the step is exact, and each estimate is
  // (3h^3/4)(h/72)/y(i) = 1/(24 i^4); step 2 counts twice.
  Plot(f, "X^3\\DIFF", "1", false);
  ASSERT_EQ(f.GraphCount(), 1);
  const auto v = Values(f, 0);
  EXPECT_NEAR(v[64], 0.25, 1e-15);
  double cte = 2.0 / (24.0 * 16.0);
  for (int i = 3; i <= 64; ++i) cte += 1.0 / (24.0 * std::pow(i, 4));
  const std::string caption = f.controls().Text("GraphCaption");
  const std::size_t comma = caption.find(", CTE:");
  ASSERT_NE(comma, std::string::npos);
  EXPECT_NEAR(std::stod(caption.substr(4, comma - 4)), 1.0 / 192.0, 1e-12);
  EXPECT_NEAR(std::stod(caption.substr(comma + 6)), cte, 1e-12);
}

TEST(DifferentialEquations, TooLowAnOrderIsRefusedSilently) {
  TestFrame t;
  auto& f = NewGraph1(t, 1024);
  // y'' = -y' with y(0) = 1, y'(0) = -1: exp(-x), whatever ORDER=1 says.
  Plot(f, "-Y'\\DIFF\\ORDER=1\\Y0=1\\Y1=-1", "1", false);
  ASSERT_EQ(f.GraphCount(), 1);
  EXPECT_NEAR(Values(f, 0)[1024], std::exp(-1.0), 1e-10);
  EXPECT_TRUE(t.lines.empty());
}

TEST(DifferentialEquations, AWrongNumberOfInitialValuesKeepsWhatWasRead) {
  TestFrame t;
  auto& f = NewGraph1(t);
  Plot(f, "-Y'\\DIFF\\Y0=1", "1", false);  // order 2, one value: y stays 1
  ASSERT_EQ(f.GraphCount(), 1);
  for (double v : Values(f, 0)) EXPECT_NEAR(v, 1.0, 1e-14);
  EXPECT_TRUE(t.lines.empty());
}

TEST(DifferentialEquations, AnInitialValueThatFailsEndsThePlot) {
  TestFrame t;
  auto& f = NewGraph1(t);
  Plot(f, "-Y\\DIFF\\Y0=1/0", "1", false);
  EXPECT_EQ(f.GraphCount(), 0);
  EXPECT_EQ(t.lines, std::vector<std::string>{"message 23: Improper formula."});
  EXPECT_FALSE(f.Plotting());
}

TEST(GraphStore, RemovingTheOnlyGraphDisablesTheGraphCommands) {
  TestFrame t;
  auto& g = NewGraph1(t, 65536);
  Plot(g, "X");
  EXPECT_TRUE(g.controls()["mnuClip"].enabled);
  g.RunMenu("mnuRemoveGraph");
  g.controls().SetText("TxtAnGr1", "1");
  g.Go();
  EXPECT_EQ(g.GraphCount(), 0);
  EXPECT_FALSE(g.controls()["mnuClip"].enabled);
  EXPECT_FALSE(g.controls()["mnuRemoveGraph"].enabled);
}

TEST(GraphStore, RemoveGraphMovesTheRowsDown) {
  TestFrame t;
  auto& f = NewGraph1(t);
  Plot(f, "1");
  Plot(f, "2", "1");
  Plot(f, "3", "2");
  f.RunMenu("mnuRemoveGraph");
  f.controls().SetText("TxtAnGr1", "2");
  f.Go();
  ASSERT_EQ(f.GraphCount(), 2);
  EXPECT_EQ(Values(f, 0)[5], 1.0);
  EXPECT_EQ(Values(f, 1)[5], 3.0);
  EXPECT_EQ(f.Graphs()[1].b, 2.0);
  EXPECT_EQ(f.Graphs()[1].peak, 3.0);
  f.controls().SetText("TxtAnGr1", "3");
  f.Go();
  f.controls().SetText("TxtAnGr1", "0");
  f.Go();
  EXPECT_EQ(t.lines, (std::vector<std::string>{"message 1: Insufficient number of graphs.", "message 3: Improper graph specification."}));
  EXPECT_EQ(f.GraphCount(), 2);
}

TEST(GraphStore, SetPointsWithTheSameNKeepsGraphsAndAnotherDropsThem) {
  TestFrame t;
  auto& f = NewGraph1(t);
  Plot(f, "X");
  f.RunMenu("mnu64");
  EXPECT_EQ(f.GraphCount(), 1);
  f.RunMenu("mnu128");
  EXPECT_EQ(f.GraphCount(), 0);
  EXPECT_EQ(f.controls()["wavlevels"].tip, "Integer between 1 and 7.");
  EXPECT_EQ(f.controls()["HighestMag"].tip, "Integer between 0 and 128.");
  EXPECT_EQ(f.controls()["WSerNumTerms"].tip, "Integer from 0 to 128.");
  EXPECT_EQ(f.controls().Text("wavlevels"), "7");
}

TEST(GraphStore, ManyGraphsGrowTheCapacity) {
  TestFrame t;
  auto& f = NewGraph1(t);
  for (int k = 1; k <= 9; ++k) Plot(f, std::to_string(k));
  ASSERT_EQ(f.GraphCount(), 9);
  EXPECT_EQ(Values(f, 8)[0], 9.0);
  EXPECT_EQ(Values(f, 0)[64], 1.0);
  EXPECT_EQ(form1d::GraphColour(6), form1d::GraphColour(0));
}

TEST(GraphStore, AllZeroGraphFitsASmallWindow) {
  TestFrame t;
  auto& f = NewGraph1(t);
  Plot(f, "0");
  EXPECT_EQ(f.Graphs()[0].peak, 0.0);
  EXPECT_EQ(f.Window(), (std::array<double, 4>{-0.5, 0.5, -0.015, 0.015}));
}

TEST(Window, ChangeWindowAndTestNewIntervals) {
  TestFrame t;
  auto& f = NewGraph1(t);
  std::string result;
  f.ChangeWindow("-1,1,-2,2", result);
  EXPECT_EQ(result, "");
  EXPECT_EQ(f.Window(), (std::array<double, 4>{-1, 1, -2, 2}));
  f.ChangeWindow("1,1,-2,2", result);
  EXPECT_EQ(result, "L");
  f.ChangeWindow("0,1,2,2", result);
  EXPECT_EQ(result, "R");
  EXPECT_EQ(f.TestNewIntervals("1", "1", "0", "1"), -1);
  EXPECT_EQ(f.TestNewIntervals("0", "1", "1", "0"), -1);
  EXPECT_EQ(f.TestNewIntervals("0", "1", "0", "1"), 0);
  EXPECT_EQ(t.lines, (std::vector<std::string>{"message 4: Left endpoint for X-interval must be less than right endpoint.",
                                               "message 5: Left endpoint for Y-interval must be less than right endpoint."}));
}

TEST(Window, GETBVTVClipsToTheYRange) {
  double x1 = 0, x2 = 1, y1 = 0, y2 = 2;
  form1d::GETBVTV(x1, x2, y1, y2, 1.0, -1.0, 1.0);
  EXPECT_EQ(x2, 0.5);
  EXPECT_EQ(y2, 1.0);
  EXPECT_EQ(x1, 0.0);
  x1 = 0, x2 = 1, y1 = 2, y2 = 3;
  form1d::GETBVTV(x1, x2, y1, y2, 1.0, -1.0, 1.0);
  EXPECT_EQ(y1, 2.0);
  EXPECT_EQ(y2, 2.0);
  x1 = 0, x2 = 1, y1 = -3, y2 = -2;
  form1d::GETBVTV(x1, x2, y1, y2, 1.0, -1.0, 1.0);
  EXPECT_EQ(y1, -2.0);
  EXPECT_EQ(y2, -2.0);
  x1 = 0, x2 = 1, y1 = -3, y2 = 3;
  form1d::GETBVTV(x1, x2, y1, y2, 1.0, -1.0, 1.0);
  EXPECT_DOUBLE_EQ(x1, 1.0 / 3.0);
  EXPECT_DOUBLE_EQ(x2, 2.0 / 3.0);
  EXPECT_EQ(y1, -1.0);
  EXPECT_EQ(y2, 1.0);
}

TEST(Form, ClosingDuringAPlotIsRefusedWithABeep) {
  TestFrame t;
  auto& f = NewGraph1(t);
  bool refused = false;
  t.platform.eventLoop.SetHook([&] {
    if (!refused) {
      refused = !f.QueryClose();
      f.Click("GoButton(0)");
    }
  });
  Plot(f, "X");
  EXPECT_TRUE(refused);
  EXPECT_EQ(t.lines, std::vector<std::string>{"beep"});
  EXPECT_TRUE(f.QueryClose());
}

TEST(Focus, OpeningTheGraphingBoxAndEveryPlotEndReturnToTheFormula) {
  TestFrame t;
  auto& f = NewGraph1(t);
  EXPECT_EQ(FocusRequested(f.controls()), "Formula");
  std::string focusDuringPlot;
  t.platform.eventLoop.SetHook([&] {
    if (focusDuringPlot.empty()) focusDuringPlot = FocusRequested(f.controls());
  });
  RequestFocus(f.controls(), "EndRValue");
  Plot(f, "X");
  ASSERT_EQ(f.GraphCount(), 1);
  // A running plot keeps the focus on its Stop button; the end gives it back.
  EXPECT_EQ(focusDuringPlot, "GoButton(0)");
  EXPECT_EQ(FocusRequested(f.controls()), "Formula");
  // A stopped plot ends the same way.
  int yields = 0;
  t.platform.eventLoop.SetHook([&] {
    if (++yields == 2) f.Click("GoButton(0)");
  });
  RequestFocus(f.controls(), "EndRValue");
  Plot(f, "X^2");
  EXPECT_EQ(f.GraphCount(), 1);
  EXPECT_EQ(FocusRequested(f.controls()), "Formula");
}

TEST(Focus, AnImproperOrFailingFormulaGoesBackToItsBox) {
  TestFrame t;
  auto& f = NewGraph1(t);
  RequestFocus(f.controls(), "EndRValue");
  const int before = FocusRequests(f.controls());
  Plot(f, "SIN(X");
  EXPECT_EQ(t.lines, std::vector<std::string>{"message 23: Improper formula."});
  EXPECT_EQ(FocusRequested(f.controls()), "Formula");
  EXPECT_EQ(FocusRequests(f.controls()), before + 1);
  RequestFocus(f.controls(), "EndRValue");
  Plot(f, "1/X");
  EXPECT_EQ(f.GraphCount(), 0);
  EXPECT_EQ(f.controls().Text("Formula"), "1/X");
  EXPECT_EQ(FocusRequested(f.controls()), "Formula");
}

TEST(Focus, ABadWindowFocusesTheIntervalItRefuses) {
  TestFrame t;
  auto& f = NewGraph1(t);
  EXPECT_EQ(f.TestNewIntervals("1", "1", "0", "1"), -1);
  EXPECT_EQ(FocusRequested(f.controls()), "txtXinterval");
  EXPECT_EQ(f.TestNewIntervals("0", "1", "1", "0"), -1);
  EXPECT_EQ(FocusRequested(f.controls()), "txtYinterval");
  const int before = FocusRequests(f.controls());
  EXPECT_EQ(f.TestNewIntervals("0", "1", "0", "1"), 0);
  EXPECT_EQ(FocusRequests(f.controls()), before);
}

TEST(Focus, FormulaHelpAndActivationKeepTheFormulaBoxFocused) {
  TestFrame t;
  int code = 0;
  auto& idle = *NewFormOf<form1d::Graph1Form>(t.frame, code);
  // Without the Graphing box open there is no formula to type.
  idle.Activated();
  EXPECT_EQ(FocusRequests(idle.controls()), 0);
  auto& f = NewGraph1(t);
  RequestFocus(f.controls(), "EndRValue");
  f.FormulaHelp("");
  EXPECT_EQ(FocusRequested(f.controls()), "Formula");
  RequestFocus(f.controls(), "EndRValue");
  f.Activated();
  EXPECT_EQ(FocusRequested(f.controls()), "Formula");
}

TEST(Focus, RemovingAGraphKeepsTheNumberBoxWhileGraphsRemain) {
  TestFrame t;
  auto& f = NewGraph1(t);
  Plot(f, "X");
  Plot(f, "X^2");
  f.controls().SetText("TxtAnGr1", "1");
  f.RemoveTheGraph();
  ASSERT_EQ(f.GraphCount(), 1);
  EXPECT_EQ(FocusRequested(f.controls()), "TxtAnGr1");
  RequestFocus(f.controls(), "EndRValue");
  f.RemoveTheGraph();
  EXPECT_EQ(f.GraphCount(), 0);
  EXPECT_EQ(FocusRequested(f.controls()), "EndRValue");
}

}  // namespace
}  // namespace keldo
