// The two-dimensional form's store, view model and pictures, driven through
// its commands on headless services.

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "form2d/graph2_form.h"
#include "kit/typed_forms.h"
#include "form2d_driver.h"

namespace keldo {
namespace {

using form2d::Graph2Form;
using testing::TestFrame;

using testing::NewForm;
using testing::Sample;

// A matrix of (n+1) by (n+1) samples, row-major, value(i, j).
template <class Fn>
std::vector<float> Matrix(int n, Fn value) {
  std::vector<float> m(static_cast<std::size_t>(n + 1) * static_cast<std::size_t>(n + 1));
  for (int i = 0; i <= n; ++i)
    for (int j = 0; j <= n; ++j) m[static_cast<std::size_t>(i * (n + 1) + j)] = value(i, j);
  return m;
}

void File(Graph2Form& f, float fill) {
  const int n = f.Points();
  const auto m = Matrix(n, [fill](int, int) { return fill; });
  f.DisplayFunction(n, m.data(), static_cast<std::size_t>(n + 1), -0.5f, 0.5f, 1.0f / static_cast<float>(n));
}

TEST(Graph2Store, SetPointsKeepsGraphsForTheSameSizeAndErasesThemForAnother) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  File(f, 1.0f);
  f.SetPoints(64);
  EXPECT_EQ(f.NumGraphsPlotted(), 1);
  f.SetPoints(128);
  EXPECT_EQ(f.NumGraphsPlotted(), 0);
  EXPECT_EQ(f.Points(), 128);
  EXPECT_EQ(t.frame.settings().captions["Points"], "128");
  EXPECT_EQ(t.frame.settings().captions["PowerTwo"], "7");
  EXPECT_EQ(f.controls()["mnu128"].value, 1);
  EXPECT_EQ(f.controls()["mnu64"].value, 0);
}

TEST(Graph2Store, EraseAllGraphsAtSixtyFourPassesThroughOneTwentyEight) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  File(f, 2.0f);
  File(f, 3.0f);
  f.EraseAllGraphs();
  EXPECT_EQ(f.Points(), 64);
  EXPECT_EQ(f.NumGraphsPlotted(), 0);
  EXPECT_EQ(f.CurrentGraph(), 0);
  EXPECT_EQ(Sample(f, 0, 3, 3), 0.0f);
}

TEST(Graph2Store, FilingKeepsTheMaximumDomainAndViewWindow) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  const auto m = Matrix(64, [](int i, int j) { return static_cast<float>(i - 2 * j); });
  f.UpDateFnData2(64, m.data(), 65, -2.0f, 2.0f, 4.0f / 64);
  EXPECT_EQ(f.NumGraphsPlotted(), 1);
  EXPECT_EQ(Sample(f, 0, 5, 7), -9.0f);
  EXPECT_EQ(Sample(f, 0, 64, 64), -64.0f);
  EXPECT_EQ(f.GraphMax(0), 128.0f);  // |0 - 2*64|
  EXPECT_EQ(f.Look(0).viewXLeft, -2.0f);
  EXPECT_EQ(f.Look(0).viewYHigh, 2.0f);
  EXPECT_EQ(f.controls().Text("EndRValue"), "2");
}

TEST(Graph2Store, DeletingTheSecondOfThreeMovesSamplesButNotCaptions) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  for (float v : {1.0f, 2.0f, 3.0f}) File(f, v);
  for (const char* caption : {"one", "two", "three"}) {
    t.platform.dialogs.QueueAnswer(caption);
    f.ChangeTheCaption(caption[0] == 'o' ? 0 : caption[1] == 'w' ? 1 : 2);
  }
  f.DeleteGraph(1);
  EXPECT_EQ(f.Look(1).caption, "two");  // the caption stays with its slot
  EXPECT_EQ(f.Look(2).caption, "three");
  EXPECT_EQ(f.NumGraphsPlotted(), 2);
  EXPECT_EQ(Sample(f, 0, 10, 10), 1.0f);
  EXPECT_EQ(Sample(f, 1, 10, 10), 3.0f);
  EXPECT_EQ(f.GraphMax(1), 3.0f);
}

TEST(Graph2Store, AFifthResultOpensANewFormWhichHoldsIt) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  for (float v : {1.0f, 2.0f, 3.0f, 4.0f}) File(f, v);
  EXPECT_EQ(t.frame.OpenForms().size(), 1u);
  File(f, 5.0f);
  ASSERT_EQ(t.frame.OpenForms().size(), 2u);
  Graph2Form* next = FormAs<Graph2Form>(t.frame.OpenForms().back());
  ASSERT_NE(next, nullptr);
  EXPECT_EQ(f.NumGraphsPlotted(), 4);
  EXPECT_EQ(next->NumGraphsPlotted(), 1);
  EXPECT_EQ(next->Points(), 64);  // N comes through the frame, not the default
  EXPECT_EQ(Sample(*next, 0, 0, 0), 5.0f);
}

TEST(Graph2Store, APairWithThreeHeldGoesWholeToANewForm) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 128);
  for (float v : {1.0f, 2.0f, 3.0f}) File(f, v);
  const auto a = Matrix(128, [](int, int) { return 7.0f; });
  const auto b = Matrix(128, [](int, int) { return 8.0f; });
  f.DisplayTwoGraphs(128, a.data(), b.data(), 129, -0.5f, 0.5f, 1.0f / 128);
  ASSERT_EQ(t.frame.OpenForms().size(), 2u);
  Graph2Form* next = FormAs<Graph2Form>(t.frame.OpenForms().back());
  EXPECT_EQ(f.NumGraphsPlotted(), 3);
  EXPECT_EQ(next->NumGraphsPlotted(), 2);
  EXPECT_EQ(next->Points(), 128);
  EXPECT_EQ(Sample(*next, 1, 4, 4), 8.0f);
}

TEST(Graph2Store, TheMenuFollowsTheCountForBuiltCommands) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  EXPECT_FALSE(f.controls()["mnuEraseGraphs"].enabled);
  EXPECT_FALSE(f.controls()["mnuViewZoom"].enabled);
  EXPECT_FALSE(f.controls()["mnuDenoiseMedian"].enabled);
  File(f, 1.0f);
  EXPECT_TRUE(f.controls()["mnuEraseGraphs"].enabled);
  EXPECT_TRUE(f.controls()["mnuViewZoom"].enabled);
  EXPECT_TRUE(f.controls()["mnuTrace"].enabled);
  EXPECT_TRUE(f.controls()["mnuTransform"].enabled);
  EXPECT_TRUE(f.controls()["mnuAutocorrelation"].enabled);
  // Commands of two graphs wait for the second.
  EXPECT_FALSE(f.controls()["mnuConvolution"].enabled);
  File(f, 2.0f);
  EXPECT_TRUE(f.controls()["mnuConvolution"].enabled);
  EXPECT_TRUE(f.controls()["mnuPaircorrelation"].enabled);
  EXPECT_TRUE(f.controls()["mnuNorm"].enabled);
  EXPECT_TRUE(f.controls()["mnuScalarProduct"].enabled);
  EXPECT_TRUE(f.controls()["mnuDenoiseMedian"].enabled);
  EXPECT_TRUE(f.controls()["mnuDenoiseAdaptiveMedian"].enabled);
}

TEST(Graph2View, LargeAndSmallViewsBeepWhenAlreadyShown) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  File(f, 1.0f);
  EXPECT_EQ(f.ViewSize(), 'S');
  f.ChangeToSmallGraphs();
  EXPECT_EQ(t.lines, std::vector<std::string>{"beep"});
  ASSERT_TRUE(f.RunMenu("mnuLarge"));
  EXPECT_EQ(f.ViewSize(), 'L');
  EXPECT_EQ(f.controls().Text("mnuChangeViewSize"), "View small graphs");
  EXPECT_EQ(f.Pictures().size(), 1u);
  f.RunMenu("mnuLarge");
  EXPECT_EQ(t.lines.size(), 2u);
  f.RunMenu("mnuSmall");
  EXPECT_EQ(f.Pictures().size(), 4u);
  EXPECT_EQ(f.controls().Text("mnuChangeViewSize"), "View large graph");
}

TEST(Graph2Zoom, SixtyFourPointsZoomSixteenTimesThenReportThirtyOne) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  File(f, 1.0f);
  ASSERT_TRUE(f.RunMenu("mnuViewZoom"));
  for (int k = 0; k < 4; ++k) ASSERT_TRUE(f.Go());
  EXPECT_TRUE(t.lines.empty());
  EXPECT_EQ(f.Look(0).drawWidths, 16);
  f.Go();
  ASSERT_EQ(t.lines.size(), 1u);
  EXPECT_NE(t.lines[0].find("31"), std::string::npos);
}

TEST(Graph2Zoom, ACornerCentreGivesAWindowFlushWithThatCorner) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  File(f, 1.0f);
  f.RunMenu("mnuViewZoom");
  f.controls().SetText("txtZoomCoord(0)", "0");
  f.controls().SetText("txtZoomCoord(1)", "64");
  f.Go();
  EXPECT_EQ(f.Look(0).viewXLeft, -0.5f);
  EXPECT_EQ(f.Look(0).viewXRight, 0.0f);
  EXPECT_EQ(f.Look(0).viewYHigh, 0.5f);
  EXPECT_EQ(f.Look(0).viewYLow, 0.0f);
  EXPECT_EQ(f.Look(0).drawWidths, 2);
  f.RestoreImage(0);
  EXPECT_EQ(f.Look(0).viewXRight, 0.5f);
  EXPECT_EQ(f.Look(0).drawWidths, 1);
}

TEST(Graph2Zoom, CentresOutsideTheGridAreReportedAndChangeNothing) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  File(f, 1.0f);
  f.RunMenu("mnuViewZoom");
  const std::pair<const char*, const char*> cases[] = {{"-1", "3"}, {"65", "3"}, {"3", "-1"}, {"3", "65"}};
  for (const auto& [c, r] : cases) {
    f.controls().SetText("txtZoomCoord(0)", c);
    f.controls().SetText("txtZoomCoord(1)", r);
    f.Go();
  }
  ASSERT_EQ(t.lines.size(), 4u);
  for (int k = 0; k < 4; ++k) EXPECT_NE(t.lines[static_cast<std::size_t>(k)].find(std::to_string(74 + k)), std::string::npos);
  EXPECT_EQ(f.Look(0).drawWidths, 1);
}

TEST(Graph2Trace, AClickSetsTheCursorAndTheTraceShowsTheSample) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  const auto m = Matrix(64, [](int i, int j) { return static_cast<float>(100 * i + j); });
  f.DisplayFunction(64, m.data(), 65, -0.5f, 0.5f, 1.0f / 64);
  ASSERT_TRUE(f.RunMenu("mnuTrace"));
  f.Mouse(MouseAction::Down, 10.2, 20.7, MouseButton::Left);
  EXPECT_EQ(f.CursorColumn(), 10);
  EXPECT_EQ(f.CursorRow(), 21);
  EXPECT_EQ(f.controls().Text("LabTrace(0)"), "X = -0.344,   Y = -0.172\r\nZ = 2110,   Row: 21, Col: 10");
  f.Click("cmdMoveOnceUp");
  f.Click("cmdMoveOnceLeft");
  EXPECT_EQ(f.CursorRow(), 22);
  EXPECT_EQ(f.CursorColumn(), 9);
}

}  // namespace
}  // namespace keldo

#include <fstream>

namespace keldo {
namespace {

// Resident pages of this process.
long ResidentPages() {
  std::ifstream in("/proc/self/statm");
  long size = 0, resident = 0;
  in >> size >> resident;
  return resident;
}

TEST(Graph2Store, TenFormsOf2048PointsOpenedAndClosedLeaveNoGrowth) {
  TestFrame t;
  long afterFirst = 0;
  for (int k = 0; k < 10; ++k) {
    Graph2Form& f = NewForm(t, 2048);
    for (float v : {1.0f, 2.0f, 3.0f, 4.0f}) File(f, v);
    EXPECT_EQ(f.NumGraphsPlotted(), 4);
    ASSERT_TRUE(t.frame.CloseForm(f));
    t.frame.CollectClosedForms();  // as the program does once the command has returned
    if (k == 0) afterFirst = ResidentPages();
  }
  ASSERT_EQ(t.frame.OpenForms().size(), 0u);
  const long growthMb = (ResidentPages() - afterFirst) * sysconf(_SC_PAGESIZE) / (1024 * 1024);
  EXPECT_LT(growthMb, 20) << "the process grew by " << growthMb << " MB";
}

}  // namespace
}  // namespace keldo

namespace keldo {
namespace {

TEST(Graph2Views, ANewFormForResultsTakesTheViewAndStylesOfThisOne) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  f.ChangeColorMethod(form2d::kColor);
  for (float v : {1.0f, 2.0f, 3.0f, 4.0f}) File(f, v);
  f.RunMenu("mnuLarge");
  File(f, 5.0f);
  Graph2Form* next = FormAs<Graph2Form>(t.frame.OpenForms().back());
  ASSERT_NE(next, nullptr);
  EXPECT_EQ(next->ViewSize(), 'L');
  EXPECT_EQ(next->Look(0).colorMethod, form2d::kColor);
  EXPECT_EQ(next->QuantParams(), f.QuantParams());
}

TEST(Graph2Views, TheDefaultThresholdIsAskedUntilItIsANonNegativeNumber) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  File(f, 1.0f);
  t.platform.dialogs.QueueAnswer("x+(");
  t.platform.dialogs.QueueAnswer("-1");
  t.platform.dialogs.QueueAnswer("1/4");
  f.GetNewThresholdValue();
  EXPECT_EQ(f.Look(1).threshold, 0.25f);
  EXPECT_EQ(f.Look(1).thresholdText, "1/4");
  EXPECT_EQ(f.Look(1).caption, "Linear, Threshold:1/4");
  EXPECT_EQ(f.controls().Text("LabGraphSm(1)"), "Linear, Threshold:1/4");
  EXPECT_EQ(f.Look(0).threshold, 0.0f);  // a graph held keeps its own
  int beeps = 0;
  for (const std::string& line : t.lines) beeps += line == "beep";
  EXPECT_EQ(beeps, 2);
}

TEST(Graph2Views, AnEmptyCaptionAnswerKeepsTheCaption) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  File(f, 1.0f);
  t.platform.dialogs.QueueAnswer("Noise");
  f.PictureCaptionActivated(0);
  EXPECT_EQ(f.Look(0).caption, "Noise");
  EXPECT_EQ(f.controls().Text("LabGraphSm(0)"), "Noise");
  t.platform.dialogs.QueueAnswer("");
  f.ChangeTheCaption(0);
  EXPECT_EQ(f.Look(0).caption, "Noise");
}

}  // namespace
}  // namespace keldo

namespace keldo {
namespace {

TEST(Graph2SideBox, StoredKeysOpenTheirBoxesAndAnUnknownKeyClearsIt) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  File(f, 1.0f);
  File(f, 2.0f);
  f.RestoreSideBoxFromKey("GrStyle2");
  EXPECT_EQ(f.VisiblePanel(), form2d::kPanelGraphStyle);
  EXPECT_EQ(f.controls().Text("labGraphStyle"), "Graph  2");
  EXPECT_EQ(f.SideBoxKey(), "GrStyle2");
  f.RestoreSideBoxFromKey("Calc");
  EXPECT_EQ(f.VisiblePanel(), form2d::kPanelCalculator);
  f.RestoreSideBoxFromKey("PrnGr");
  EXPECT_EQ(f.VisiblePanel(), -1);
  EXPECT_EQ(f.SideBoxKey(), "");
}

}  // namespace
}  // namespace keldo
