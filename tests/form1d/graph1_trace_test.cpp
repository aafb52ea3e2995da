// Trace, zoom, clip, the exchange area and the system clipboard on the
// one-dimensional form.

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <iterator>

#include "form1d/graph1_form.h"
#include "graph1_test_util.h"

namespace keldo::testing {
namespace {

const std::string kData = KELDO_TEST_DATA "/form1d/";

std::string FileText(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

TEST(Trace, NearestGraphAndPositionFromAClick) {
  TestFrame t;
  auto& f = NewForm(t);
  Plot(f, "X");
  Plot(f, "1");
  // At x = 0.1 graph 1 reads about 0.1, graph 2 reads 1.
  EXPECT_EQ(f.FindNearestGraph(0.1, 0.9), 1);
  EXPECT_EQ(f.FindNearestGraph(0.1, 0.2), 0);
  // A tie goes to the earlier graph; distance 0 wins at once.
  EXPECT_EQ(f.FindNearestGraph(0.0, 0.5), 0);
  EXPECT_EQ(f.FindNearestGraph(0.25, 1.0), 1);
  f.Mouse(MouseAction::Down, 0.1, 0.9, MouseButton::Left);
  // round((0.1 + 0.5) * 64) = round(38.4) = 38
  EXPECT_EQ(f.TracePosition(), 38);
  f.Mouse(MouseAction::Down, 9.0, 0.0, MouseButton::Left);
  EXPECT_EQ(f.TracePosition(), 64);
  // The one-graph commands preset the number to the nearest graph.
  f.Mouse(MouseAction::Down, 0.2, 1.0, MouseButton::Right);
  f.RunMenu("mnuClip");
  EXPECT_EQ(f.controls().Text("TxtAnGr1"), "2");
}

TEST(Trace, PanelShowsOneFramePerGraphAndMoveButtonsStep) {
  TestFrame t;
  auto& f = NewForm(t);
  Plot(f, "X");
  Plot(f, "0-X");
  f.RunMenu("mnuTrace");
  EXPECT_EQ(f.VisiblePanel(), form1d::kPanelTrace);
  EXPECT_EQ(f.controls().Text("mnuHelpSideBox"), "Help for Trace");
  EXPECT_TRUE(f.controls()["FrTrace(1)"].visible);
  EXPECT_FALSE(f.controls()["FrTrace(2)"].visible);
  EXPECT_EQ(f.controls().Text("FrTrace(0)"), "Graph 1");
  EXPECT_EQ(f.controls().Text("LabTr(0)"), "X = 0\r\nY = 0");
  EXPECT_EQ(f.controls().Text("GraphCaption"), "Index = 32");
  f.Click("cmdMove(4)");
  EXPECT_EQ(f.controls().Text("LabTr(1)"), "X = 0.015625\r\nY =-0.015625");
  f.Click("cmdMove(0)");
  EXPECT_EQ(f.TracePosition(), 0);
  f.Click("cmdMove(2)");  // not below 0
  EXPECT_EQ(f.TracePosition(), 0);
  f.Click("cmdMove(6)");
  EXPECT_EQ(f.TracePosition(), 64);
  f.Click("cmdMove(5)");  // not above N
  EXPECT_EQ(f.TracePosition(), 64);
  EXPECT_EQ(f.controls().Text("GraphCaption"), "Index = 64");
  f.Click("cmdMove(3)");
  EXPECT_EQ(f.TracePosition(), 32);
  // A click moves the crosshair while the panel is open.
  f.Mouse(MouseAction::Down, -0.25, -0.25, MouseButton::Left);
  EXPECT_EQ(f.controls().Text("GraphCaption"), "Index = 16");
}

TEST(Trace, CursorCoordinatesReadOut) {
  TestFrame t;
  auto& f = NewForm(t);
  f.Mouse(MouseAction::Move, 0.25, -1.5, MouseButton::None);
  EXPECT_EQ(f.CursorText(), "");
  f.RunMenu("mnuDisplayCursorCoordinates");
  EXPECT_EQ(f.controls()["mnuDisplayCursorCoordinates"].value, 1);
  f.Mouse(MouseAction::Move, 0.25, -1.5, MouseButton::None);
  EXPECT_EQ(f.CursorText(), "( 0.25,-1.5) ");
  // Single precision, as the event carries it.
  f.Mouse(MouseAction::Move, 0.1, 0.0, MouseButton::None);
  EXPECT_EQ(f.CursorText(), "( 0.1, 0) ");
}

TEST(Zoom, RepeatsByFactorsOf399AroundEachClick) {
  TestFrame t;
  auto& f = NewForm(t);
  Plot(f, "X");  // window [-0.5, 0.5] x [-1, 1]
  double width = 1.0, height = 2.0;
  double x = 0.125, y = 0.5;  // exact in single precision
  for (int k = 0; k < 3; ++k) {
    f.Mouse(MouseAction::Down, x, y, MouseButton::Right);
    f.RunMenu("mnuZoom");
    const auto w = f.Window();
    EXPECT_DOUBLE_EQ(w[0], x - width / 3.99);
    EXPECT_DOUBLE_EQ(w[1], x + width / 3.99);
    EXPECT_DOUBLE_EQ(w[2], y - height / 3.99);
    EXPECT_DOUBLE_EQ(w[3], y + height / 3.99);
    width = 2 * width / 3.99;
    height = 2 * height / 3.99;
    x += 0.0078125;
  }
  f.Mouse(MouseAction::Down, x, y, MouseButton::Right);
  f.RunMenu("mnuEnlarge");
  EXPECT_DOUBLE_EQ(f.Window()[1] - f.Window()[0], 2 * width * 1.49);
  EXPECT_EQ(f.controls().Text("AxisLab(2)"), "0.148");
}

TEST(Zoom, TooSmallForTheSurfaceIsRefusedSilently) {
  TestFrame t;
  auto& f = NewForm(t);
  Plot(f, "X");
  f.Mouse(MouseAction::Down, 0.25, 0.5, MouseButton::Right);
  std::array<double, 4> last{};
  for (int k = 0; k < 60; ++k) {
    last = f.Window();
    f.RunMenu("mnuZoom");
  }
  EXPECT_EQ(f.Window(), last);
  EXPECT_GT(f.Window()[1], f.Window()[0]);
  EXPECT_TRUE(t.lines.empty());
}

TEST(Clip, FewerThan64SamplesGoToA64PointForm) {
  TestFrame t;
  auto& f = NewForm(t);
  Plot(f, "X");
  f.RunMenu("mnuDisplayStyle");
  f.controls().SetText("txtXinterval", "-0.1,0.1");
  f.Go();
  f.RunMenu("mnuClip");
  f.Go();
  ASSERT_EQ(t.frame.OpenForms().size(), 2u);
  auto& g = Last(t);
  EXPECT_EQ(g.Points(), 64);
  ASSERT_EQ(g.GraphCount(), 1);
  const auto graph = g.Graphs()[0];
  EXPECT_EQ(graph.a, -0.1);
  EXPECT_EQ(graph.b, 0.1);
  EXPECT_EQ(graph.h, 0.2 / 64);
  // x = -0.5 + i/64 inside [-0.1 - 1/128, 0.1 + 1/128]: i = 26 to 38, 13
  // samples; the last one is left off.
  for (int i = 0; i < 12; ++i) EXPECT_EQ(graph.values[static_cast<std::size_t>(i)], -0.5 + (26 + i) / 64.0);
  for (int i = 12; i <= 64; ++i) EXPECT_EQ(graph.values[static_cast<std::size_t>(i)], 0.0);
  EXPECT_EQ(f.GraphCount(), 1);
}

TEST(Clip, MoreThan32768SamplesGoTo65536) {
  TestFrame t;
  auto& f = NewForm(t, 65536);
  Plot(f, "X");
  f.RunMenu("mnuClip");
  f.Go();
  auto& g = Last(t);
  EXPECT_EQ(g.Points(), 65536);
  const auto graph = g.Graphs()[0];
  EXPECT_EQ(graph.values[65535], -0.5 + 65535 / 65536.0);
  EXPECT_EQ(graph.values[65536], 0.0);
}

TEST(Exchange, CopyAndPasteBetweenForms) {
  TestFrame t;
  auto& f = NewForm(t);
  Plot(f, "X^2");
  f.RunMenu("mnuCopyGraph");
  f.Go();
  EXPECT_TRUE(f.controls()["mnuPasteGraph"].enabled);
  auto& g = NewForm(t, 64);
  EXPECT_TRUE(g.controls()["mnuPasteGraph"].enabled);
  g.RunMenu("mnuPasteGraph");
  ASSERT_EQ(g.GraphCount(), 1);
  EXPECT_EQ(g.Graphs()[0].values, f.Graphs()[0].values);
  // Another N: an empty form changes its points, one with graphs passes the
  // graph to a new form.
  auto& h = NewForm(t, 256);
  h.RunMenu("mnuPasteGraph");
  EXPECT_EQ(h.Points(), 64);
  EXPECT_EQ(h.GraphCount(), 1);
  auto& k = NewForm(t, 256);
  Plot(k, "1");
  const std::size_t forms = t.frame.OpenForms().size();
  k.RunMenu("mnuPasteGraph");
  EXPECT_EQ(k.GraphCount(), 1);
  EXPECT_EQ(t.frame.OpenForms().size(), forms + 1);
  EXPECT_EQ(Last(t).Points(), 64);
}

TEST(Clipboard, CopyWritesTheTextLayoutAndFastEqualsSlow) {
  TestFrame t;
  auto& f = NewForm(t);
  Plot(f, "X/4");
  f.RunMenu("mnuCopyToClipboard");
  f.Go();
  const std::string text = t.platform.clipboard.Text();
  std::string expected = "64\r\n-0.5\r\n0.5\r\n";
  for (int i = 0; i <= 64; ++i) {
    char buffer[40];
    std::snprintf(buffer, sizeof buffer, "%.15G", (-0.5 + i / 64.0) / 4);
    expected += (std::string(buffer) == "-0" ? "0" : buffer) + std::string("\r\n");
  }
  EXPECT_EQ(text, expected);
  EXPECT_EQ(text.substr(0, 31), "64\r\n-0.5\r\n0.5\r\n-0.125\r\n-0.12109");
  f.CopyTheGraphToClipboardSlow();
  EXPECT_EQ(t.platform.clipboard.Text(), text);
  EXPECT_TRUE(f.controls()["mnuPasteFromClipboard"].enabled);
  // And back in: the same graph.
  auto& g = NewForm(t);
  g.PasteFromTheClipboard();
  ASSERT_EQ(g.GraphCount(), 1);
  EXPECT_EQ(g.Graphs()[0].values, f.Graphs()[0].values);
}

TEST(Clipboard, PasteOfATextMadeElsewhere) {
  TestFrame t;
  auto& f = NewForm(t);
  t.platform.clipboard.SetText(FileText(kData + "clip_ok.txt"));
  f.PasteFromTheClipboard();
  ASSERT_EQ(f.GraphCount(), 1);
  const auto g = f.Graphs()[0];
  EXPECT_EQ(g.a, -1.0);
  EXPECT_EQ(g.h, 2.0 / 64);
  EXPECT_EQ(g.values[64], 32.0);
  // N = 128 into a form with a graph: a new form.
  t.platform.clipboard.SetText(FileText(kData + "clip_128.txt"));
  f.PasteFromTheClipboard();
  EXPECT_EQ(f.GraphCount(), 1);
  EXPECT_EQ(Last(t).Points(), 128);
  EXPECT_EQ(Last(t).Graphs()[0].values[128], 128.0);
  EXPECT_TRUE(t.lines.empty());
}

TEST(Clipboard, ChecksReport89To91AndChangeNothing) {
  TestFrame t;
  auto& f = NewForm(t, 256);
  for (const char* name : {"clip_ab_89.txt", "clip_ab_90.txt", "clip_short_91.txt"}) {
    t.platform.clipboard.SetText(FileText(kData + name));
    f.PasteFromTheClipboard();
  }
  t.platform.clipboard.SetText("hello world");
  f.PasteFromTheClipboard();
  EXPECT_EQ(t.lines,
            (std::vector<std::string>{"message 89: Left endpoint of Clipboard Data must be less than right endpoint.",
                                      "message 90: Left endpoint of Clipboard Data must be 0 or the negative of right endpoint.",
                                      "message 91: Error in pasted function data.",
                                      "message 91: Error in pasted function data."}));
  EXPECT_EQ(f.GraphCount(), 0);
  EXPECT_EQ(f.Points(), 256);
  EXPECT_EQ(t.frame.OpenForms().size(), 1u);
  // A text that ends before its interval ends the paste silently.
  t.lines.clear();
  t.platform.clipboard.SetText("64\r\n0\r\n");
  f.PasteFromTheClipboard();
  EXPECT_TRUE(t.lines.empty());
}

TEST(Clipboard, CheckWindowsClipboardWantsAPointCountFirst) {
  EXPECT_TRUE(form1d::CheckWindowsClipboard("64\r\n0\r\n"));
  EXPECT_TRUE(form1d::CheckWindowsClipboard("65536\r\n"));
  EXPECT_FALSE(form1d::CheckWindowsClipboard("64\r\n"));  // fewer than 5 characters
  EXPECT_FALSE(form1d::CheckWindowsClipboard("100\r\n0\r\n"));
  EXPECT_FALSE(form1d::CheckWindowsClipboard("131072\r\n"));
  EXPECT_FALSE(form1d::CheckWindowsClipboard(""));
}

}  // namespace
}  // namespace keldo::testing
