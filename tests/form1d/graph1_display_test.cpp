// The plot window of the one-dimensional form: grid styles, colours, the two
// plot styles, axis labels, the display style box, the side box and menus.

#include <gtest/gtest.h>

#include <cmath>

#include "form1d/graph1_form.h"
#include "platform/headless/raster_surface.h"
#include "graph1_test_util.h"

namespace keldo::testing {
namespace {

using form1d::PlotWindow;
using platform::Rgb;

// Keeps every call, so that a test sees what a drawing asked for.
class RecordingSurface final : public platform::Surface {
 public:
  struct Item {
    char kind;  // 'L' line, 'P' pixel, 'C' clear
    double x1, y1, x2, y2;
    Rgb color;
  };
  int PixelWidth() const override { return 400; }
  int PixelHeight() const override { return 300; }
  void Clear(Rgb c) override { items.push_back({'C', 0, 0, 0, 0, c}); }
  void SetScale(const platform::UserScale& s) override { scale = s; }
  void SetPenWidth(int) override {}
  void Line(double x1, double y1, double x2, double y2, Rgb c) override { items.push_back({'L', x1, y1, x2, y2, c}); }
  void SetPixel(double x, double y, Rgb c) override { items.push_back({'P', x, y, x, y, c}); }
  Rgb GetPixel(double, double) const override { return 0; }
  void Text(double, double, const std::string&, Rgb) override {}
  void Refresh() override {}
  platform::RgbImage Snapshot() const override { return platform::RgbImage(1, 1); }
  int Count(char kind) const {
    int n = 0;
    for (const Item& i : items) n += i.kind == kind;
    return n;
  }
  std::vector<Item> items;
  platform::UserScale scale;
};

constexpr Rgb kPaper = platform::MakeRgb(0, 128, 128);

TEST(DrawAxes, GraphPaperHasFourEdgesAndNineDottedLinesEachWay) {
  RecordingSurface s;
  const PlotWindow w{-1.0, 3.0, -2.0, 2.0};
  form1d::DrawAxes(s, form1d::kGraphPaper, w);
  EXPECT_EQ(s.scale.left, -1.0);
  EXPECT_EQ(s.scale.top, 2.0);
  EXPECT_EQ(s.scale.right, 3.0);
  EXPECT_EQ(s.scale.bottom, -2.0);
  EXPECT_EQ(s.Count('L'), 4);
  EXPECT_EQ(s.Count('P'), 18 * 129);
  for (const auto& i : s.items) EXPECT_EQ(i.color, kPaper);
  // The third horizontal line (k = 2) at bottom + 2 dy8, its dots dx128 apart.
  int found = 0;
  for (const auto& i : s.items)
    if (i.kind == 'P' && i.y1 == -2.0 + 2 * (4.0 / 8) && (i.x1 == -1.0 + 5 * (4.0 / 128))) ++found;
  EXPECT_EQ(found, 1);
}

TEST(DrawAxes, AxesCrossAtZeroWithTicksAsFarAsTheWindowReaches) {
  RecordingSurface s;
  form1d::DrawAxes(s, form1d::kAxes, {-1.0, 3.0, -2.0, 2.0});
  // Two axes, x ticks: 7 to the right (7 * 4/10.1 <= 3) and 2 to the left;
  // y ticks: 5 up and 5 down.
  EXPECT_EQ(s.Count('L'), 2 + 9 + 10);
  EXPECT_EQ(s.Count('P'), 0);
  const auto& xAxis = s.items[0];
  EXPECT_EQ(xAxis.y1, 0.0);
  EXPECT_EQ(xAxis.x1, -1.0);
  EXPECT_EQ(xAxis.x2, 3.0);
  // A tick stands sy/7 above and below the axis.
  const auto& tick = s.items[2];
  EXPECT_DOUBLE_EQ(tick.x1, -4.0 / 10.1);
  EXPECT_DOUBLE_EQ(tick.y2 - tick.y1, 2 * (4.0 / 10.1) / 7);
}

TEST(DrawAxes, AWindowWhollyOnOneSideCrossesAtTheNearerEdge) {
  RecordingSurface s;
  form1d::DrawAxes(s, form1d::kAxes, {1.0, 3.0, -5.0, -1.0});
  EXPECT_EQ(s.items[0].y1, -1.0);  // y = top, the edge nearer zero
  EXPECT_EQ(s.items[1].x1, 1.0);   // x = left
}

TEST(DrawAxes, BlankSetsTheScaleOnly) {
  RecordingSurface s;
  form1d::DrawAxes(s, form1d::kNoGrid, {0.0, 1.0, 0.0, 1.0});
  EXPECT_TRUE(s.items.empty());
  EXPECT_EQ(s.scale.right, 1.0);
}

TEST(Colours, SixGraphColoursRepeatAndSignedColoursFollowTheValue) {
  EXPECT_EQ(form1d::GraphColour(0), platform::MakeRgb(0, 255, 0));
  EXPECT_EQ(form1d::GraphColour(5), platform::MakeRgb(255, 255, 255));
  EXPECT_EQ(form1d::GraphColour(6), form1d::GraphColour(0));
  EXPECT_EQ(form1d::GraphColor(2.0), kPaper);
  EXPECT_EQ(form1d::GraphColor(-2.0), platform::MakeRgb(128, 0, 0));
  EXPECT_EQ(form1d::GraphColor(0.0), platform::MakeRgb(128, 0, 128));
}

TEST(DrawGraph, LinesSkipSegmentsWhollyAboveOrBelowAndOutsideInX) {
  RecordingSurface s;
  const double v[] = {-5.0, -4.0, 0.5, 3.0, 4.0, -3.0, 0.0};
  // x = 0..6; window x [0.5, 5.5], y [-1, 1].
  form1d::DrawGraph(s, {v, 7, 0.0, 1.0, 2}, {0.5, 5.5, -1.0, 1.0}, false);
  // Segments: 0-1 both below (skipped), 1-2, 2-3, 3-4 both above (skipped),
  // 4-5 crosses the whole window, 5-6 ends at x = 6, overlapping in x.
  ASSERT_EQ(s.Count('L'), 4);
  for (const auto& i : s.items) EXPECT_EQ(i.color, platform::MakeRgb(255, 0, 0));
  // Ends inside the window stay as they are.
  EXPECT_EQ(s.items[0].x2, 2.0);
  EXPECT_EQ(s.items[0].y2, 0.5);
  EXPECT_EQ(s.items[2].x2, 5.0);
  EXPECT_EQ(s.items[2].y2, -3.0);
}

TEST(DrawGraph, DotsOnlyInsideTheWindow) {
  RecordingSurface s;
  const double v[] = {0.0, 2.0, 0.5, -0.5, 0.9};
  form1d::DrawGraph(s, {v, 5, -1.0, 0.5, 0}, {-1.0, 0.5, -1.0, 1.0}, true);
  // x = -1, -0.5, 0, 0.5, 1: the value 2 is above, x = 1 is right of it.
  EXPECT_EQ(s.Count('P'), 3);
}

TEST(DrawPlot, ClearsToTheBackgroundAndDrawsCrosshairsInTheContrastingColour) {
  RecordingSurface s;
  const double v[] = {0.0, 0.0};
  const form1d::Crosshair c{0.0, 0.0};
  form1d::DrawPlot(s, {form1d::kNoGrid, form1d::kWhiteBackground, false}, {-1.0, 1.0, -1.0, 1.0}, std::vector<form1d::GraphTrace>{{v, 2, 0.0, 1.0, 0}},
                   std::vector<form1d::Crosshair>{c});
  EXPECT_EQ(s.items.front().kind, 'C');
  EXPECT_EQ(s.items.front().color, platform::kWhite);
  const auto& arm = s.items[s.items.size() - 2];
  EXPECT_EQ(arm.color, platform::kBlack);
  EXPECT_DOUBLE_EQ(arm.x2 - arm.x1, 2 * 2.0 / 65.97344572538559);
}

TEST(DrawPlot, RasterPictureShowsPaperAndGraph) {
  platform::RasterSurface s(200, 100);
  TestFrame t;
  auto& f = NewForm(t);
  Plot(f, "0.5");
  f.Paint(s);
  const auto image = s.Snapshot();
  int green = 0, paper = 0;
  for (Rgb p : image.pixels) {
    green += p == platform::MakeRgb(0, 255, 0);
    paper += p == kPaper;
  }
  EXPECT_GE(green, 60);  // 65 dots, a few sharing a pixel
  EXPECT_GT(paper, 500);
}

TEST(AxisLabels, TenLabelsInTheLabelFormat) {
  const auto l = form1d::AxisLabelTexts({-1.0, 3.0, -2.0, 2.5});
  const std::array<std::string, 10> expected = {"-1", "0", "1", "2", "-2", "2.5", "1.375", "0.25", "-0.875", "3"};
  EXPECT_EQ(l, expected);
  EXPECT_EQ(form1d::AxisLabelTexts({0.0, 1.0 / 3, 0.0, 1.0})[9], "0.333");
}

TEST(LineCoord, CutsAtTheBoundaryAndRefusesSegmentsWhollyOutside) {
  const PlotWindow w{0.0, 4.0, -1.0, 1.0};
  double x1, x2, y1, y2;
  EXPECT_EQ(form1d::LineCoord(1.0, 2.0, 0.0, 3.0, x1, x2, y1, y2, w), 1);
  EXPECT_EQ(y2, 1.0);
  EXPECT_DOUBLE_EQ(x2, 1.0 + 1.0 / 3);
  EXPECT_EQ(form1d::LineCoord(1.0, 2.0, -2.0, -3.0, x1, x2, y1, y2, w), -1);
  EXPECT_EQ(form1d::LineCoord(5.0, 6.0, 9.0, 9.0, x1, x2, y1, y2, w), 1);  // outside in x: as is
  EXPECT_EQ(y1, 9.0);
  EXPECT_EQ(form1d::LineCoord(1.0, 2.0, 2.0, -2.0, x1, x2, y1, y2, w), 1);
  EXPECT_EQ(y1, 1.0);
  EXPECT_EQ(y2, -1.0);
  EXPECT_DOUBLE_EQ(x1, 1.25);
  EXPECT_DOUBLE_EQ(x2, 1.75);
}

TEST(Window, AllZeroGraphFitsToASmallWindowThatIsNotEmpty) {
  TestFrame t;
  auto& f = NewForm(t);
  Plot(f, "0");
  EXPECT_EQ(f.Window(), (std::array<double, 4>{-0.5, 0.5, -0.015, 0.015}));
  EXPECT_EQ(f.controls().Text("AxisLab(5)"), "0.015");
  EXPECT_EQ(f.controls().Text("AxisLab(4)"), "-0.015");
}

TEST(DisplayStyle, BoxTakesTheAxisBoxesAndApplyRedraws) {
  TestFrame t;
  auto& f = NewForm(t);
  Plot(f, "X");
  f.RunMenu("mnuDisplayStyle");
  EXPECT_EQ(f.controls().Text("txtXinterval"), "-0.5,0.5");
  EXPECT_EQ(f.controls().Text("txtYinterval"), "-1,1");
  EXPECT_EQ(f.controls().Text("mnuHelpSideBox"), "Help for Display style");
  EXPECT_TRUE(f.controls()["PicSideBox(7)"].visible);
  EXPECT_EQ(f.controls()["OpDispStyle(4)"].value, 1);  // dots
  f.controls().SetText("txtXinterval", "0, 2*pi");
  f.controls().SetText("txtYinterval", "-1,1");
  f.controls().SetFromUser("OpDispStyle(2)", "1");
  f.controls().SetFromUser("OpDispStyle(3)", "1");
  f.controls().SetFromUser("OpDispStyle(5)", "1");
  f.Go();
  EXPECT_TRUE(t.lines.empty());
  EXPECT_EQ(f.Window()[0], 0.0);
  EXPECT_NEAR(f.Window()[1], 2 * M_PI, 1e-13);
  EXPECT_EQ(f.controls().Text("AxisLab(9)"), "6.283");
  EXPECT_EQ(f.Style().grid, 'B');
  EXPECT_FALSE(f.Style().dots);
  EXPECT_EQ(f.Style().background, 'W');
  // New forms take the line style over.
  EXPECT_EQ(t.frame.settings().captions["LabLineStyle"], "N");
  auto& g = NewForm(t);
  EXPECT_FALSE(g.Style().dots);
  EXPECT_EQ(g.controls()["OpDispStyle(3)"].value, 1);
}

TEST(DisplayGraphs, FollowsTheFramesAutoFitAndLineStyle) {
  TestFrame t;
  auto& f = NewForm(t);
  f.controls().SetFromUser("chkAutoFit", "0");
  Plot(f, "3*X");
  EXPECT_EQ(f.Window(), (std::array<double, 4>{-0.5, 0.5, 0.0, 0.0}));
  t.frame.settings().captions["LabLineStyle"] = "N";
  f.DisplayGraphs(0);
  EXPECT_EQ(f.Window(), (std::array<double, 4>{-0.5, 0.5, 0.0, 0.0}));
  EXPECT_FALSE(f.Style().dots);
  EXPECT_EQ(f.controls()["OpDispStyle(3)"].value, 1);
  t.frame.settings().captions["LabAutoFit"] = "Y";
  f.DisplayGraphs(0);
  EXPECT_EQ(f.Window(), (std::array<double, 4>{-0.5, 0.5, -3.0, 3.0}));
  EXPECT_EQ(f.controls().Text("AxisLab(5)"), "3");
}

TEST(DisplayStyle, LeftEqualToRightReports4AndKeepsTheWindow) {
  TestFrame t;
  auto& f = NewForm(t);
  Plot(f, "X");
  const auto before = f.Window();
  f.RunMenu("mnuDisplayStyle");
  f.controls().SetText("txtXinterval", "1,1");
  f.Go();
  f.controls().SetText("txtXinterval", "0,1");
  f.controls().SetText("txtYinterval", "1");
  f.Go();
  EXPECT_EQ(t.lines, (std::vector<std::string>{"message 4: Left endpoint for X-interval must be less than right endpoint.",
                                               "message 5: Left endpoint for Y-interval must be less than right endpoint."}));
  EXPECT_EQ(f.Window(), before);
}

TEST(SideBox, CalculatorWritesTheValueOrReports52) {
  TestFrame t;
  auto& f = NewForm(t);
  f.RunMenu("mnuCalculator");
  EXPECT_EQ(f.SideBoxKey(), "Calc");
  EXPECT_EQ(f.controls().Text("mnuHelpSideBox"), "Help for Calculator");
  f.controls().SetText("CalcFormula", "2^10+sqr(9)");
  f.Go();
  EXPECT_EQ(f.controls().Text("Remarks(2)"), "1027");
  f.controls().SetText("CalcFormula", "log(0-1)");
  f.Go();
  EXPECT_EQ(t.lines, std::vector<std::string>{"message 52: Error in calculator formula."});
  EXPECT_EQ(f.FormulaFields().valueFault, 0);
  EXPECT_EQ(f.controls().Text("Remarks(2)"), "1027");
}

TEST(SideBox, OnePanelAtATimeAndClearHidesIt) {
  TestFrame t;
  auto& f = NewForm(t);
  f.RunMenu("mnuPlotGraph");
  EXPECT_EQ(f.VisiblePanel(), 0);
  EXPECT_TRUE(f.controls()["cmdFormula(2)"].enabled);
  f.RunMenu("mnuRemarks");
  EXPECT_EQ(f.VisiblePanel(), 9);
  EXPECT_EQ(f.SideBoxKey(), "Rem");
  EXPECT_FALSE(f.controls()["GoButton(0)"].enabled);
  EXPECT_FALSE(f.controls()["cmdFormula(2)"].enabled);
  EXPECT_FALSE(f.Go());
  f.RunMenu("mnuClearSideBox");
  EXPECT_EQ(f.VisiblePanel(), -1);
  EXPECT_EQ(f.SideBoxKey(), "");
  EXPECT_FALSE(f.controls()["mnuHelpSideBox"].visible);
}

// Every box's Go button can be pressed, as a click in the window does.
TEST(SideBox, EveryGoButtonIsEnabledInItsBox) {
  TestFrame t;
  auto& f = NewForm(t, 128);
  Plot(f, "x");
  Plot(f, "x*x");
  const std::pair<const char*, const char*> boxes[] = {
      {"mnuPlotGraph", "GoButton(0)"},      {"mnuFourierSeries", "GoButton(1)"}, {"mnuFourierTransform", "GoButton(2)"},
      {"mnuSineTransform", "GoButton(3)"},  {"mnuConvolution", "GoButton(4)"},   {"mnuNorm", "GoButton(5)"},
      {"mnuRemoveGraph", "GoButton(5)"},    {"mnuCalculator", "GoButton(6)"},    {"mnuWaveletTransform", "GoButton(7)"},
      {"mnuDisplayStyle", "GoButton(8)"},   {"mnuFiltering", "GoButton(9)"},     {"mnuStatistics", "GoButton(11)"},
      {"mnuAudioPlay", "cmdSound(0)"}};
  for (const auto& [menu, button] : boxes) {
    ASSERT_TRUE(f.RunMenu(menu)) << menu;
    EXPECT_TRUE(f.controls()[button].enabled) << menu;
    EXPECT_TRUE(f.controls()[button].visible) << menu;
  }
}

TEST(SideBox, HelpForTheTopicAndQuickHelpOfLimitedFields) {
  TestFrame t;
  auto& f = NewForm(t);
  f.RunMenu("mnuDisplayStyle");
  f.RunMenu("mnuHelpSideBox");
  EXPECT_TRUE(t.lines.empty());
  EXPECT_NE(t.platform.help.LastPage().find("one-dimensional-form.md"), std::string::npos);
  f.FormulaHelp("");
  EXPECT_NE(t.platform.help.LastPage().find("graphing.md"), std::string::npos);
  EXPECT_TRUE(f.FieldHelp("HighestMag"));
  ASSERT_EQ(t.platform.dialogs.Shown().size(), 1u);
  EXPECT_EQ(t.platform.dialogs.Shown()[0].title, "The number of coefficients");
  EXPECT_EQ(t.platform.dialogs.Shown()[0].text, "Integer between 0 and 64.");
}

// The table of menu states for 0, 1, 2 and 3 graphs: a command is enabled
// when the count allows it and it is built.
TEST(ResetMenu, FollowsTheCountForBuiltCommands) {
  TestFrame t;
  auto& f = NewForm(t, 128);
  struct Row {
    const char* name;
    bool at[4];
  };
  const Row rows[] = {
      {"mnuClip", {false, true, true, true}},          {"mnuRemoveGraph", {false, true, true, true}},
      {"mnuPopUpRemoveGraph", {false, true, true, true}}, {"mnuEraseScreen", {false, true, true, true}},
      {"mnuCopyGraph", {false, true, true, true}},     {"mnuCopyToClipboard", {false, true, true, true}},
      {"mnuSaveGraph", {false, true, true, true}},     {"mnuTrace", {false, true, true, true}},
      {"mnuOpenSave(3)", {false, true, true, true}},   {"mnuOpenSave(4)", {false, true, true, true}},
      {"mnuOpenSave(5)", {false, true, true, true}},
      {"mnuSpectrogram", {false, true, true, true}},   {"mnuTransforms", {false, true, true, true}},
      {"mnuStatistics", {false, true, true, true}},
      {"mnuOpenSave(6)", {false, true, true, true}}, {"mnuDownSample", {false, true, true, true}},
      {"mnuScalarProduct", {false, false, true, true}}, {"mnuNormDifference", {false, false, true, true}},
      // Two graphs needed.
      {"mnuConvolution", {false, false, true, true}},   {"mnuPaircorrelation", {false, false, true, true}},
      // One graph: the Fourier commands.
      {"mnuSeries", {false, true, true, true}},        {"mnuConvolve", {false, true, true, true}},
      {"mnuFiltering", {false, true, true, true}},
      // Always there.
      {"mnuPlotGraph", {true, true, true, true}},      {"mnuDisplayStyle", {true, true, true, true}},
      {"mnuCalculator", {true, true, true, true}},     {"mnuOpenSave(0)", {true, true, true, true}},
  };
  for (int count = 0; count <= 3; ++count) {
    if (count > 0) Plot(f, std::to_string(count) + "*X");
    for (const Row& r : rows) EXPECT_EQ(f.controls()[r.name].enabled, r.at[count]) << r.name << " with " << count;
  }
}

}  // namespace
}  // namespace keldo::testing
