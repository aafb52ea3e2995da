// Plotting formulas of x and y on the two-dimensional form.

#include <gtest/gtest.h>

#include <string>

#include "common/number_text.h"
#include "form2d/graph2_form.h"
#include "kit/focus.h"
#include "kit/typed_forms.h"
#include "form2d_driver.h"

namespace keldo {
namespace {

using form2d::Graph2Form;
using testing::TestFrame;

using testing::NewForm;
using testing::Plot;
using testing::Sample;

TEST(PlotTheGraph2, XPlusYRunsFromMinusOneAtTheBottomLeftToOneAtTheTopRight) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  Plot(f, "X+Y");
  ASSERT_EQ(f.NumGraphsPlotted(), 1);
  EXPECT_EQ(Sample(f, 0, 0, 0), -1.0f);
  EXPECT_EQ(Sample(f, 0, 64, 64), 1.0f);
  EXPECT_EQ(Sample(f, 0, 0, 64), 0.0f);
  EXPECT_EQ(Sample(f, 0, 10, 0), -1.0f + 10.0f / 64);  // row i is y
  EXPECT_EQ(f.GraphLeft(0), -0.5f);
  EXPECT_EQ(f.GraphStep(0), 1.0f / 64);
  EXPECT_EQ(f.History(), std::vector<std::string>{"X+Y"});
  EXPECT_EQ(t.frame.settings().formulas2d.maxFormNum, 1);
  EXPECT_EQ(t.frame.settings().formulas1d.maxFormNum, 0);
}

TEST(PlotTheGraph2, G1CopiesTheFirstGraphSampleBySample) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  Plot(f, "sin(7*x)*y");
  Plot(f, "G1");
  ASSERT_EQ(f.NumGraphsPlotted(), 2);
  for (int i = 0; i <= 64; i += 7)
    for (int j = 0; j <= 64; j += 5) ASSERT_EQ(Sample(f, 1, i, j), Sample(f, 0, i, j));
}

TEST(PlotTheGraph2, TheSquareFollowsL) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  Plot(f, "x", "2");
  EXPECT_EQ(Sample(f, 0, 0, 0), -2.0f);
  EXPECT_EQ(Sample(f, 0, 0, 64), 2.0f);
  EXPECT_EQ(f.GraphRight(0), 2.0f);
  EXPECT_EQ(f.controls().Text("EndRValue"), "2");
}

TEST(PlotTheGraph2, AnImproperFormulaReports23AndFilesNothing) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  Plot(f, "x+(");
  EXPECT_EQ(f.NumGraphsPlotted(), 0);
  ASSERT_EQ(t.lines.size(), 1u);
  EXPECT_NE(t.lines[0].find("23"), std::string::npos);
}

TEST(PlotTheGraph2, ARunTimeErrorEndsThePlotWithNoGraph) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  Plot(f, "1/x");  // x = 0 on the middle column
  EXPECT_EQ(f.NumGraphsPlotted(), 0);
  EXPECT_FALSE(f.Plotting());
  EXPECT_EQ(f.controls()["GoButton(1)"].text, "&Plot");
}

TEST(PlotTheGraph2, StopFilesNothingAndShowsTheProgressUntilThen) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  Plot(f, "x");
  ASSERT_EQ(f.NumGraphsPlotted(), 1);
  int yields = 0;
  std::string caption, percent;
  t.platform.eventLoop.SetHook([&] {
    if (++yields == 3) {
      caption = f.controls()["GoButton(1)"].text;
      percent = f.controls().Text("PercentDone");
      EXPECT_TRUE(f.controls()["PercentDone"].visible);
      f.Click("GoButton(1)");
    }
  });
  Plot(f, "y");
  EXPECT_EQ(caption, "&Stop");
  EXPECT_EQ(percent, "9% done.");  // rows 0, 2 and 4, each round(2/65*100) = 3
  EXPECT_EQ(yields, 3);
  EXPECT_EQ(f.NumGraphsPlotted(), 1);
  EXPECT_FALSE(f.Plotting());
  EXPECT_FALSE(f.controls()["PercentDone"].visible);
  EXPECT_EQ(f.controls()["GoButton(1)"].text, "&Plot");
}

TEST(PlotTheGraph2, TheFormulaButtonsStepThroughTheTwoDimensionalList) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  Plot(f, "x");
  Plot(f, "y");
  f.Click("cmdGraph(0)");
  EXPECT_EQ(f.controls().Text("Formula"), "x");
  f.Click("cmdGraph(1)");
  EXPECT_EQ(f.controls().Text("Formula"), "y");
  f.Click("cmdGraph(1)");
  EXPECT_EQ(f.controls().Text("Formula"), "");
}

TEST(PlotTheGraph2, AFifthFormulaGoesToANewForm) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  for (const char* formula : {"x", "y", "x*y", "x+y"}) Plot(f, formula);
  Plot(f, "x-y");
  ASSERT_EQ(t.frame.OpenForms().size(), 2u);
  Graph2Form* next = FormAs<Graph2Form>(t.frame.OpenForms().back());
  ASSERT_NE(next, nullptr);
  EXPECT_EQ(next->NumGraphsPlotted(), 1);
  EXPECT_EQ(next->Points(), 64);
  EXPECT_EQ(Sample(*next, 0, 0, 64), 1.0f);
}

}  // namespace
}  // namespace keldo

namespace keldo {
namespace {

TEST(Graph2Help, TheSideBoxAndFormulaHelpOpenTheTwoDimensionalPage) {
  testing::TestFrame t;
  int code = 0;
  form2d::Graph2Form& f = *NewFormOf<form2d::Graph2Form>(t.frame, code);
  f.RunMenu("mnuPlot");
  EXPECT_EQ(f.controls().Text("mnuHelpSideBox"), "Help for Graphing");
  f.RunMenu("mnuHelpSideBox");
  EXPECT_NE(t.platform.help.LastPage().find("two-dimensional-form.md"), std::string::npos);
  f.FormulaHelp("");
  EXPECT_NE(t.platform.help.LastPage().find("two-dimensional-form.md"), std::string::npos);
  EXPECT_TRUE(t.lines.empty());
}

}  // namespace
}  // namespace keldo

namespace keldo {
namespace {

TEST(Graph2Calculator, GivesSinglePrecisionValuesAndReports52OnAnError) {
  testing::TestFrame t;
  int code = 0;
  form2d::Graph2Form& f = *NewFormOf<form2d::Graph2Form>(t.frame, code);
  ASSERT_TRUE(f.RunMenu("mnuCalculator"));
  f.controls().SetText("CalcFormula", "1/3");
  ASSERT_TRUE(f.Go());
  EXPECT_EQ(f.controls().Text("TxtCalculation"), PlainNumber(static_cast<double>(1.0f / 3.0f)));
  f.controls().SetText("CalcFormula", "1/0");
  f.Go();
  ASSERT_EQ(t.lines.size(), 1u);
  EXPECT_NE(t.lines[0].find("52"), std::string::npos);
}

TEST(Graph2Focus, TheGraphingBoxAndItsFailuresFocusTheFormula) {
  testing::TestFrame t;
  form2d::Graph2Form& f = testing::NewForm(t, 64);
  ASSERT_TRUE(f.RunMenu("mnuPlot"));
  EXPECT_EQ(FocusRequested(f.controls()), "Formula");
  RequestFocus(f.controls(), "EndRValue");
  f.controls().SetText("Formula", "SIN(X");
  f.Go();
  EXPECT_EQ(t.lines, std::vector<std::string>{"message 23: Improper formula."});
  EXPECT_EQ(FocusRequested(f.controls()), "Formula");
  RequestFocus(f.controls(), "EndRValue");
  f.controls().SetText("Formula", "1/(X-X)");
  f.Go();
  EXPECT_EQ(f.NumGraphsPlotted(), 0);
  EXPECT_EQ(f.controls().Text("Formula"), "1/(X-X)");
  EXPECT_EQ(FocusRequested(f.controls()), "Formula");
  RequestFocus(f.controls(), "EndRValue");
  f.Activated();
  EXPECT_EQ(FocusRequested(f.controls()), "Formula");
  RequestFocus(f.controls(), "EndRValue");
  f.FormulaHelp("");
  EXPECT_EQ(FocusRequested(f.controls()), "Formula");
}

TEST(Graph2Focus, ACalculatorErrorFocusesTheFormulaOfTheCalculator) {
  testing::TestFrame t;
  form2d::Graph2Form& f = testing::NewForm(t, 64);
  ASSERT_TRUE(f.RunMenu("mnuCalculator"));
  f.controls().SetText("CalcFormula", "1/3");
  ASSERT_TRUE(f.Go());
  EXPECT_EQ(FocusRequests(f.controls()), 0);
  f.controls().SetText("CalcFormula", "1/0");
  f.Go();
  EXPECT_EQ(FocusRequested(f.controls()), "CalcFormula");
}

TEST(Graph2Focus, ARefusedThresholdFocusesItsBox) {
  testing::TestFrame t;
  form2d::Graph2Form& f = testing::NewForm(t, 64);
  testing::Plot(f, "X+Y");
  f.RestoreSideBoxFromKey("GrStyle1");
  ASSERT_EQ(f.VisiblePanel(), form2d::kPanelGraphStyle);
  for (const char* text : {"1/", "-1"}) {
    RequestFocus(f.controls(), "Formula");
    f.controls().SetText("TxtThreshold", text);
    f.Go();
    EXPECT_EQ(FocusRequested(f.controls()), "TxtThreshold") << text;
  }
  ASSERT_EQ(t.lines.size(), 2u);
  EXPECT_NE(t.lines[0].find("message 10:"), std::string::npos);
  EXPECT_NE(t.lines[1].find("message 11:"), std::string::npos);
  RequestFocus(f.controls(), "Formula");
  f.controls().SetText("TxtThreshold", "0.5");
  f.Go();
  EXPECT_EQ(FocusRequested(f.controls()), "Formula");
  EXPECT_EQ(f.Look(0).threshold, 0.5f);
}

}  // namespace
}  // namespace keldo
