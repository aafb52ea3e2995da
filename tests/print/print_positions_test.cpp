// The printer rectangle of every position against the position table
// evaluated by tests/data/make_print_positions.py.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "kit/print_box.h"
#include "print/print_positions.h"

namespace keldo::print {
namespace {

constexpr double kRelativeTolerance = 1e-13;

bool Near(double a, double b) { return std::fabs(a - b) <= kRelativeTolerance * std::max(1.0, std::fabs(b)); }

TEST(PrintPositions, EveryPositionMatchesTheTable) {
  std::ifstream in(KELDO_TEST_DATA "/print_positions.tsv");
  ASSERT_TRUE(in);
  std::string line;
  int rows = 0;
  while (std::getline(in, line)) {
    if (line.empty() || line[0] == '#') continue;
    std::istringstream fields(line);
    std::string position, cell;
    std::getline(fields, position, '\t');
    std::vector<double> v;
    std::string size;
    while (std::getline(fields, cell, '\t')) {
      if (cell.size() == 1 && std::isalpha(static_cast<unsigned char>(cell[0]))) size = cell;
      else v.push_back(std::stod(cell));
    }
    ASSERT_EQ(v.size(), 9u) << line;
    const PrintWindow w{v[0], v[1], v[2], v[3]};
    const auto r = SetPrinterScale(position, w, v[4]);
    ASSERT_TRUE(r) << position;
    EXPECT_TRUE(Near(r->left, v[5])) << position << " left " << r->left << " " << v[5];
    EXPECT_TRUE(Near(r->right, v[6])) << position << " right " << r->right << " " << v[6];
    EXPECT_TRUE(Near(r->top, v[7])) << position << " top " << r->top << " " << v[7];
    EXPECT_TRUE(Near(r->bottom, v[8])) << position << " bottom " << r->bottom << " " << v[8];
    EXPECT_EQ(static_cast<char>(r->size), size[0]) << position;
    ++rows;
  }
  EXPECT_EQ(rows, 16 * 4 * 3);
}

TEST(PrintPositions, TheListOffersEveryPositionButTheSavedFormOne) {
  const auto& list = PrinterPositionList();
  EXPECT_EQ(list.size(), 15u);
  EXPECT_EQ(std::count(list.begin(), list.end(), std::string(kSavedFormPosition)), 0);
  EXPECT_EQ(list.front(), "(A), Medium, top, left");
  for (const std::string& p : list) EXPECT_TRUE(SetPrinterScale(p, {-1, 1, -1, 1}, 11.0 / 8.5)) << p;
  // The saved form's position is still one the scale routine knows.
  EXPECT_TRUE(SetPrinterScale(kSavedFormPosition, {-1, 1, -1, 1}, 11.0 / 8.5));
}

TEST(PrintPositions, UnknownTextsAndEmptyWindowsHaveNoScale) {
  const PrintWindow w{-1, 1, -1, 1};
  EXPECT_FALSE(SetPrinterScale("", w, 1.3));
  EXPECT_FALSE(SetPrinterScale("(E), Medium, top, left", w, 1.3));
  EXPECT_FALSE(SetPrinterScale("(a), small, top, left", w, 1.3));  // case matters
  EXPECT_FALSE(SetPrinterScale("(A), Medium, top, left", {1, 1, -1, 1}, 1.3));
  EXPECT_FALSE(SetPrinterScale("(A), Medium, top, left", {-1, 1, 2, 1}, 1.3));
  EXPECT_FALSE(SetPrinterScale("(A), Medium, top, left", {-1, 1, -1, NAN}, 1.3));
}

// On a landscape sheet the medium and small positions that pair up do not
// overlap: (A) lies left of (B), (a) left of (b), (a) above (c).
TEST(PrintPositions, PairedPositionsShareASheetWithoutOverlap) {
  const PrintWindow w{-0.5, 0.5, -1, 1};
  const double ratio = 11.0 / 8.5;
  const auto place = [&](const char* p) { return PlaceOnPage(*SetPrinterScale(p, w, ratio), w); };
  const PagePlace a = place("(A), Medium, top, left"), b = place("(B), Medium, top, right");
  EXPECT_LT(a.right, b.left);
  EXPECT_GT(a.left, 0.0);
  EXPECT_LT(b.right, 1.0);
  EXPECT_NEAR(a.top, b.top, 1e-15);
  const PagePlace sa = place("(a), Small, top, left"), sb = place("(b), Small, top, right");
  const PagePlace sc = place("(c), Small, center, left");
  EXPECT_LT(sa.right, sb.left);
  EXPECT_LT(sa.bottom, sc.top);
  // The place on the page, by hand for (A): r = 1.2 * 11 / 8.5; the page
  // spans dx (1 + 1.7 r / 15 + r), the window starts 1.7 r dx / 15 in.
  const double r = 1.2 * ratio;
  EXPECT_NEAR(a.left, (1.7 * r / 15) / (1 + 1.7 * r / 15 + r), 1e-15);
  EXPECT_NEAR(a.right, (1 + 1.7 * r / 15) / (1 + 1.7 * r / 15 + r), 1e-15);
}

}  // namespace
}  // namespace keldo::print
