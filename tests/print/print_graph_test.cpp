// Printing a one-dimensional form's graph: where it falls on the sheet,
// several graphs on one sheet, the labels, colour, and the failures.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "print/print_positions.h"
#include "print_test_util.h"

namespace keldo::testing {
namespace {

using platform::PrintedItem;

const platform::Rgb kGreen = platform::StandardColour(10);  // the first graph's colour
constexpr double kInchTolerance = 1e-9;

// The box a graph in window w lands in at a position, in inches.
print::PagePlace ExpectedBox(const print::PrintWindow& w, const std::string& position) {
  const platform::PageSize page;
  const auto r = print::SetPrinterScale(position, w, page.width / page.height);
  print::PagePlace p = print::PlaceOnPage(*r, w);
  return {p.left * page.width, p.top * page.height, p.right * page.width, p.bottom * page.height};
}

struct Extent {
  double xmin = std::numeric_limits<double>::max(), xmax = -std::numeric_limits<double>::max();
  double ymin = std::numeric_limits<double>::max(), ymax = -std::numeric_limits<double>::max();
  void Add(double x, double y) {
    xmin = std::min(xmin, x);
    xmax = std::max(xmax, x);
    ymin = std::min(ymin, y);
    ymax = std::max(ymax, y);
  }
};

Extent ExtentOf(const std::vector<PrintedItem>& items) {
  Extent e;
  for (const PrintedItem& i : items) {
    e.Add(i.x1, i.y1);
    e.Add(i.x2, i.y2);
  }
  return e;
}

void Print(form1d::Graph1Form& f, const std::string& position, int button) {
  f.RunMenu("mnuPrintGraph");
  ASSERT_TRUE(f.controls().SetFromUser("PrinterSpecs", position));
  ASSERT_TRUE(f.Click("cmdPrnt(" + std::to_string(button) + ")"));
}

TEST(PrintGraph, TheBoxOffersThePositionsAndKeepsItsKey) {
  TestFrame t;
  auto& f = NewGraphForm(t, 256);
  Plot(f, "X");
  f.RunMenu("mnuPrintGraphs");
  EXPECT_EQ(f.SideBoxKey(), "PrGr");
  EXPECT_TRUE(f.controls()["PicSideBox(15)"].visible);
  const Control& specs = f.controls()["PrinterSpecs"];
  EXPECT_EQ(specs.items.size(), 15u);
  EXPECT_EQ(specs.text, "(A), Medium, top, left");
  EXPECT_EQ(f.controls()["cmdPrnt(1)"].text, "Print and Eject");
  EXPECT_EQ(f.controls()["cmdPrnt(3)"].text, "Save Printout to File");
  EXPECT_EQ(f.controls()["MonoOrColor(1)"].text, "Monochrome ");
  // The list does not offer the saved form's position.
  EXPECT_FALSE(f.controls().SetFromUser("PrinterSpecs", "(AA), Big, top, right"));
}

TEST(PrintGraph, TwoGraphsAtAAndBShareOneSheetSideBySide) {
  TestFrame t;
  ScratchFolder folder("two");
  t.platform.printer.SetOutputPath(folder / "page.pdf");
  auto& f = GraphInWindow(t, "sin(6*pi*x)", "-.5,.5", "-1,1", true);
  auto& g = GraphInWindow(t, "8*x^2-1", "-.5,.5", "-1,1", true);
  Print(f, "(A), Medium, top, left", 0);
  EXPECT_TRUE(t.platform.printer.IsOpen());
  EXPECT_EQ(f.controls().Text("LabPrinting"), "");
  const std::size_t firstGraph = t.platform.printer.Items().size();
  Print(g, "(B), Medium, top, right", 1);
  EXPECT_FALSE(t.platform.printer.IsOpen());
  EXPECT_EQ(t.platform.printer.Documents(), 1);
  EXPECT_TRUE(t.lines.empty());
  // One sheet: the document's first page and no other.
  EXPECT_EQ(ItemsOf(t.platform.printer, "page").size(), 1u);

  // The recorded strokes: each graph fills its own box.
  std::vector<PrintedItem> left, right;
  for (std::size_t k = 0; k < t.platform.printer.Items().size(); ++k) {
    const PrintedItem& i = t.platform.printer.Items()[k];
    if (i.kind == "line" && i.color == kGreen) (k < firstGraph ? left : right).push_back(i);
  }
  const auto a = ExpectedBox({-.5, .5, -1, 1}, "(A), Medium, top, left");
  const auto b = ExpectedBox({-.5, .5, -1, 1}, "(B), Medium, top, right");
  const Extent ea = ExtentOf(left), eb = ExtentOf(right);
  EXPECT_NEAR(ea.xmin, a.left, kInchTolerance);
  EXPECT_NEAR(ea.xmax, a.right, kInchTolerance);
  EXPECT_NEAR(ea.ymin, a.top, 1e-3);  // sin reaches 1 and -1 only near samples
  EXPECT_NEAR(ea.ymax, a.bottom, 1e-3);
  EXPECT_NEAR(eb.xmin, b.left, kInchTolerance);
  EXPECT_NEAR(eb.xmax, b.right, kInchTolerance);
  EXPECT_NEAR(eb.ymin, b.top, kInchTolerance);  // 8x^2-1 is 1 at both ends
  EXPECT_LT(a.right, b.left);

  // The sheet itself, rendered: green in two columns of pixels apart, in
  // the top half.
  // pdftoppm (poppler-utils) renders it as a plain PPM picture.
  const std::string sheet = folder / "sheet";
  ASSERT_EQ(std::system(("pdftoppm -r 40 -singlefile " + folder / "page.pdf" + " " + sheet).c_str()), 0);
  std::ifstream ppm(sheet + ".ppm", std::ios::binary);
  std::string magic;
  int width = 0, height = 0, maxValue = 0;
  ppm >> magic >> width >> height >> maxValue;
  ppm.get();
  ASSERT_EQ(magic, "P6");
  EXPECT_EQ(width, 440);   // 11 inches at 40 dots an inch
  EXPECT_EQ(height, 340);  // 8.5 inches
  std::vector<unsigned char> rgb(static_cast<std::size_t>(width) * height * 3);
  ppm.read(reinterpret_cast<char*>(rgb.data()), static_cast<std::streamsize>(rgb.size()));
  std::vector<int> greenInColumn(static_cast<std::size_t>(width), 0);
  int lowestGreenRow = 0;
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) {
      const unsigned char* p = &rgb[(static_cast<std::size_t>(y) * width + x) * 3];
      if (p[1] > p[0] + 60 && p[1] > p[2] + 60) {
        ++greenInColumn[static_cast<std::size_t>(x)];
        lowestGreenRow = std::max(lowestGreenRow, y);
      }
    }
  const auto columnsWithGreen = [&](double from, double to) {
    int count = 0;
    for (int x = static_cast<int>(from * 40) + 1; x < static_cast<int>(to * 40) - 1; ++x) count += greenInColumn[x] > 0;
    return count;
  };
  const int widthA = static_cast<int>((a.right - a.left) * 40) - 2, widthB = static_cast<int>((b.right - b.left) * 40) - 2;
  EXPECT_GE(columnsWithGreen(a.left, a.right), widthA * 9 / 10);
  EXPECT_GE(columnsWithGreen(b.left, b.right), widthB * 9 / 10);
  EXPECT_EQ(columnsWithGreen(a.right + 0.05, b.left - 0.05), 0);  // the gap between them
  EXPECT_EQ(columnsWithGreen(0.0, a.left - 0.05), 0);
  EXPECT_LT(lowestGreenRow, height / 2);
}

TEST(PrintGraph, AZoomedGraphPrintsAsZoomed) {
  TestFrame t;
  // y = x seen through [0, 0.25] x [0, 0.25]: the diagonal of the box.
  auto& f = GraphInWindow(t, "X", "0,.25", "0,.25", true);
  Print(f, "Large, center, center", 1);
  const auto box = ExpectedBox({0, .25, 0, .25}, "Large, center, center");
  const std::vector<PrintedItem> lines = ItemsOf(t.platform.printer, "line", kGreen);
  ASSERT_FALSE(lines.empty());
  const Extent e = ExtentOf(lines);
  EXPECT_NEAR(e.xmin, box.left, kInchTolerance);
  EXPECT_NEAR(e.xmax, box.right, kInchTolerance);
  EXPECT_NEAR(e.ymin, box.top, kInchTolerance);
  EXPECT_NEAR(e.ymax, box.bottom, kInchTolerance);
  // Every stroke lies on the diagonal from bottom-left to top-right.
  const double slope = (box.top - box.bottom) / (box.right - box.left);
  for (const PrintedItem& i : lines) {
    EXPECT_NEAR(i.y1, box.bottom + slope * (i.x1 - box.left), 1e-9);
    EXPECT_NEAR(i.y2, box.bottom + slope * (i.x2 - box.left), 1e-9);
  }
  // The whole graph would have filled [-0.5, 0.5]: the zoomed print is
  // larger by four in x.
  const auto whole = ExpectedBox({-.5, .5, -1, 1}, "Large, center, center");
  EXPECT_NEAR(whole.right - whole.left, box.right - box.left, 1e-12);  // the same box on the page
}

TEST(PrintGraph, AnUnknownPositionReports24AndPrintsNothing) {
  TestFrame t;
  auto& f = GraphInWindow(t, "X", "-.5,.5", "-1,1");
  f.RunMenu("mnuPrintGraph");
  f.controls().SetText("PrinterSpecs", "(E), Huge, top, left");  // as a damaged form file could hold
  EXPECT_TRUE(f.Click("cmdPrnt(1)"));
  ASSERT_EQ(t.lines.size(), 1u);
  // The catalogue's text ends in a full stop, and the box adds its own.
  EXPECT_EQ(t.lines[0], "message 24: Sorry. This printing position/size is not supported at this time..");
  EXPECT_TRUE(t.platform.printer.Items().empty());
  EXPECT_EQ(t.platform.printer.Documents(), 0);
  EXPECT_EQ(f.controls().Text("LabPrinting"), "");
}

TEST(PrintGraph, TheSavedFormPositionPrintsFromAFormFile) {
  TestFrame t;
  ScratchFolder folder("saved");
  auto& f = GraphInWindow(t, "X", "-.5,.5", "-1,1");
  f.controls().SetText("PrinterSpecs", print::kSavedFormPosition);
  t.platform.fileDialog.QueueAnswer(folder / "aa.kd1");
  f.RunMenu("mnuOpenSave", 3);
  ASSERT_TRUE(t.lines.empty()) << t.lines[0];
  auto& g = NewGraphForm(t, 256);
  ASSERT_TRUE(g.LoadForm(folder / "aa.kd1", "aa.kd1"));
  EXPECT_EQ(g.controls().Text("PrinterSpecs"), "(AA), Big, top, right");
  g.RunMenu("mnuPrintGraph");
  EXPECT_TRUE(g.Click("cmdPrnt(1)"));
  EXPECT_TRUE(t.lines.empty());
  const auto box = ExpectedBox({-.5, .5, -1, 1}, "(AA), Big, top, right");
  const Extent e = ExtentOf(ItemsOf(t.platform.printer, "line", kGreen));
  EXPECT_NEAR(e.xmin, box.left, kInchTolerance);
  EXPECT_NEAR(e.xmax, box.right, kInchTolerance);
}

TEST(PrintGraph, MonochromePrintsEveryStrokeBlack) {
  TestFrame t;
  auto& f = GraphInWindow(t, "X", "-.5,.5", "-1,1");
  f.RunMenu("mnuPrintGraph");
  f.controls().SetFromUser("MonoOrColor(1)", "1");
  f.Click("cmdPrnt(1)");
  const auto lines = ItemsOf(t.platform.printer, "line");
  ASSERT_FALSE(lines.empty());
  for (const PrintedItem& i : lines) EXPECT_EQ(i.color, platform::kBlack);
  // In colour the grid is colour entry 3 and the graph its own colour.
  TestFrame u;
  auto& g = GraphInWindow(u, "X", "-.5,.5", "-1,1");
  Print(g, "(A), Medium, top, left", 1);
  EXPECT_FALSE(ItemsOf(u.platform.printer, "line", kGreen).empty());
  EXPECT_FALSE(ItemsOf(u.platform.printer, "dot", platform::StandardColour(3)).empty());
}

// The graph paper's dotted lines: nine across and nine down, each of
// steps + 1 dots, with 2400 steps for a Big print, 1200 for Medium and 800
// for Small (the screen has 128). Dots of the grid's colour that fall off
// the window's box are not printed, so the count is at most that.
TEST(PrintGraph, GraphPaperDotsFollowThePrintSize) {
  for (const auto& [position, steps] : std::vector<std::pair<std::string, int>>{
           {"Large, center, center", 2400}, {"(A), Medium, top, left", 1200}, {"(a), Small, top, left", 800}}) {
    TestFrame t;
    auto& f = GraphInWindow(t, "X", "-.5,.5", "-1,1");
    Print(f, position, 1);
    const auto dots = ItemsOf(t.platform.printer, "dot", platform::StandardColour(3));
    EXPECT_EQ(dots.size(), static_cast<std::size_t>(18 * (steps + 1))) << position;
    // Along the bottom edge the dots stand 1/steps of the box apart.
    const auto box = ExpectedBox({-.5, .5, -1, 1}, position);
    std::vector<double> bottom;
    for (const PrintedItem& d : dots)
      if (std::fabs(d.y1 - box.bottom) < 1e-9) bottom.push_back(d.x1);
    // The vertical lines start on the bottom line too.
    std::sort(bottom.begin(), bottom.end());
    bottom.erase(std::unique(bottom.begin(), bottom.end(), [](double a, double b) { return b - a < 1e-9; }),
                 bottom.end());
    ASSERT_EQ(bottom.size(), static_cast<std::size_t>(steps + 1)) << position;
    EXPECT_NEAR(bottom[1] - bottom[0], (box.right - box.left) / steps, 1e-9) << position;
  }
}

TEST(PrintGraph, LabelsAndCaptionFollowTheChecks) {
  TestFrame t;
  auto& f = GraphInWindow(t, "X", "-.5,.5", "-1,1");
  Print(f, "(A), Medium, top, left", 1);
  std::vector<std::string> texts;
  for (const auto& i : ItemsOf(t.platform.printer, "text")) texts.push_back(i.text);
  EXPECT_EQ(texts, (std::vector<std::string>{"User defined function.", "-0.5", "-0.25", "0", "0.25", "0.5", "1",
                                             "0.5", "0", "-0.5", "-1"}));
  // The lower labels stand under the box at its quarters, the right ones
  // beside it from top to bottom.
  const auto box = ExpectedBox({-.5, .5, -1, 1}, "(A), Medium, top, left");
  const auto items = ItemsOf(t.platform.printer, "text");
  EXPECT_GT(items[1].y1, box.bottom);
  EXPECT_LT(items[1].x1, items[2].x1);
  EXPECT_GT(items[6].x1, box.right);
  EXPECT_LT(items[6].y1, items[10].y1);

  TestFrame u;
  auto& g = GraphInWindow(u, "X", "-.5,.5", "-1,1");
  g.RunMenu("mnuPrintGraph");
  for (int k = 0; k < 3; ++k) g.controls().SetFromUser("chkPrLab(" + std::to_string(k) + ")", "0");
  g.Click("cmdPrnt(1)");
  EXPECT_TRUE(ItemsOf(u.platform.printer, "text").empty());
  EXPECT_FALSE(ItemsOf(u.platform.printer, "line").empty());
}

TEST(PrintGraph, PrintLeavesThePageOpenUntilEject) {
  TestFrame t;
  auto& f = GraphInWindow(t, "X", "-.5,.5", "-1,1");
  // Eject with nothing printed does nothing.
  f.RunMenu("mnuPrintGraph");
  f.Click("cmdPrnt(2)");
  EXPECT_EQ(t.platform.printer.Documents(), 0);
  Print(f, "(a), Small, top, left", 0);
  Print(f, "(b), Small, top, right", 0);
  Print(f, "(c), Small, center, left", 0);
  EXPECT_EQ(t.platform.printer.Documents(), 0);
  EXPECT_TRUE(t.platform.printer.IsOpen());
  f.Click("cmdPrnt(2)");
  EXPECT_EQ(t.platform.printer.Documents(), 1);
  EXPECT_EQ(ItemsOf(t.platform.printer, "page").size(), 1u);
  f.Click("cmdPrnt(2)");
  EXPECT_EQ(t.platform.printer.Documents(), 1);
  EXPECT_TRUE(t.lines.empty());
}

TEST(PrintGraph, NoPrinterReports34) {
  TestFrame t;
  t.platform.printer.SetAvailable(false);
  auto& f = GraphInWindow(t, "X", "-.5,.5", "-1,1");
  Print(f, "(A), Medium, top, left", 1);
  ASSERT_EQ(t.lines.size(), 1u);
  EXPECT_EQ(t.lines[0], "message 34: Error printing graph.");
  EXPECT_TRUE(t.platform.printer.Items().empty());
  EXPECT_EQ(f.controls().Text("LabPrinting"), "");
}

// Colour asked of a printer that prints only black and grey: message 40,
// nothing printed; Monochrome then prints.
TEST(PrintGraph, ColourOnAPrinterWithoutItReports40) {
  TestFrame t;
  t.platform.printer.SetColour(false);
  auto& f = GraphInWindow(t, "X", "-.5,.5", "-1,1");
  Print(f, "(A), Medium, top, left", 1);
  ASSERT_EQ(t.lines.size(), 1u);
  EXPECT_EQ(t.lines[0], "message 40: Color printing not supported at this time.");
  EXPECT_TRUE(t.platform.printer.Items().empty());
  EXPECT_EQ(t.platform.printer.Documents(), 0);
  f.RunMenu("mnuPrintGraph");
  f.controls().SetFromUser("MonoOrColor(1)", "1");
  f.Click("cmdPrnt(1)");
  EXPECT_EQ(t.lines.size(), 1u);
  EXPECT_EQ(t.platform.printer.Documents(), 1);
  EXPECT_FALSE(ItemsOf(t.platform.printer, "line").empty());
}

}  // namespace
}  // namespace keldo::testing
