// The workshop coder's scan orders: block tables and the two static orders
// of an 8 by 8 plane of two levels worked by hand, the two rebuilds on that
// plane worked by hand, the forced 1 by 1 baseband, every order visiting
// each position once, and the threshold and level helpers.

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <utility>
#include <vector>

#include "wavelet/wdr_scan.h"

namespace keldo::wavelet {
namespace {

using Walk = std::vector<std::pair<int, int>>;

Walk PairsOf(const std::vector<std::int32_t>& positions, int n) {
  Walk walk;
  for (std::int32_t p : positions) walk.emplace_back(p % n, p / n);
  return walk;
}

Walk StaticWalk(int n, int levels, WdrBaseOrder mode) {
  ScanOrder order;
  CreateScanOrder(order, levels, n, mode);
  return PairsOf(WalkScanOrder(order), n);
}

// The visit number of each position, row y = 0 first.
std::vector<int> VisitTable(const Walk& walk, int n) {
  std::vector<int> table(static_cast<std::size_t>(n * n), -1);
  for (std::size_t i = 0; i < walk.size(); ++i)
    table[static_cast<std::size_t>(walk[i].second * n + walk[i].first)] = static_cast<int>(i);
  return table;
}

bool VisitsEachOnce(const std::vector<std::int32_t>& positions, std::size_t total) {
  std::vector<int> seen(total, 0);
  for (std::int32_t p : positions) {
    if (p < 0 || static_cast<std::size_t>(p) >= total || seen[static_cast<std::size_t>(p)]++ != 0) return false;
  }
  return positions.size() == total;
}

TEST(WdrScan, ZigZagTable) {
  // m = 3: diagonals 0, 2, 4, 6 with x rising, 1, 3, 5 with x falling.
  const std::vector<std::int32_t> table = GetZigZag(3);
  std::vector<std::int32_t> walk;
  for (std::int32_t at = 0, i = 0; i < 16; ++i, at = table[static_cast<std::size_t>(at)]) walk.push_back(at);
  const Walk expected = {{0, 0}, {1, 0}, {0, 1}, {0, 2}, {1, 1}, {2, 0}, {3, 0}, {2, 1},
                         {1, 2}, {0, 3}, {1, 3}, {2, 2}, {3, 1}, {3, 2}, {2, 3}, {3, 3}};
  EXPECT_EQ(PairsOf(walk, 4), expected);
  EXPECT_EQ(table[15], 15);  // (3, 3) links to itself
  // A one-position block links to itself.
  EXPECT_EQ(GetZigZag(0), std::vector<std::int32_t>{0});
}

TEST(WdrScan, BoustrophedonTables) {
  // Columns: (0,0) (0,1) (0,2), then (1,2) (1,1) (1,0), then (2,0) (2,1) (2,2).
  const std::vector<std::int32_t> horiz = GetHorizScan(2);
  EXPECT_EQ(horiz, (std::vector<std::int32_t>{3, 2, 5, 6, 1, 8, 7, 4, -1}));
  // Rows: (0,0) (1,0) (2,0), then (2,1) (1,1) (0,1), then (0,2) (1,2) (2,2).
  const std::vector<std::int32_t> vert = GetVertScan(2);
  EXPECT_EQ(vert, (std::vector<std::int32_t>{1, 2, 5, 6, 3, 4, 7, 8, -1}));
}

TEST(WdrScan, SubbandOrderOfAnEightByEightPlane) {
  const std::vector<int> expected = {
      0,  1,  4,  7,  16, 23, 24, 31,  //
      2,  3,  5,  6,  17, 22, 25, 30,  //
      8,  9,  12, 13, 18, 21, 26, 29,  //
      11, 10, 14, 15, 19, 20, 27, 28,  //
      32, 33, 34, 35, 48, 49, 53, 54,  //
      39, 38, 37, 36, 50, 52, 55, 60,  //
      40, 41, 42, 43, 51, 56, 59, 61,  //
      47, 46, 45, 44, 57, 58, 62, 63};
  EXPECT_EQ(VisitTable(StaticWalk(8, 2, WdrBaseOrder::Subband), 8), expected);
  ScanOrder order;
  CreateScanOrder(order, 2, 8, WdrBaseOrder::Subband);
  EXPECT_EQ(order.next[63], 63);
}

TEST(WdrScan, TreeOrderOfAnEightByEightPlane) {
  // Each level-one diagonal coefficient links to the next spot's upper one.
  const std::vector<int> expected = {
      0,  1,  4,  7,  16, 19, 28, 31,  //
      2,  3,  10, 13, 17, 18, 29, 30,  //
      5,  8,  6,  9,  40, 43, 52, 55,  //
      11, 14, 12, 15, 41, 42, 53, 54,  //
      20, 21, 32, 33, 24, 25, 36, 37,  //
      23, 22, 35, 34, 26, 27, 38, 39,  //
      44, 45, 56, 57, 48, 49, 60, 61,  //
      47, 46, 59, 58, 50, 51, 62, 63};
  EXPECT_EQ(VisitTable(StaticWalk(8, 2, WdrBaseOrder::Tree), 8), expected);
}

TEST(WdrScan, OneByOneBasebandIsForced) {
  // 4 by 4 with two levels: (N/2)/2^L = 0 becomes a side of 1.
  const Walk expected = {{0, 0}, {1, 0}, {0, 1}, {1, 1}, {2, 0}, {2, 1}, {3, 1}, {3, 0},
                         {0, 2}, {1, 2}, {1, 3}, {0, 3}, {2, 2}, {3, 2}, {2, 3}, {3, 3}};
  EXPECT_EQ(StaticWalk(4, 2, WdrBaseOrder::Subband), expected);
  EXPECT_EQ(StaticWalk(4, 2, WdrBaseOrder::Tree), expected);
  // Three levels of 8 by 8: the coarsest three coefficients follow (0, 0).
  const Walk sub = StaticWalk(8, 3, WdrBaseOrder::Subband);
  EXPECT_EQ(Walk(sub.begin(), sub.begin() + 4), (Walk{{0, 0}, {1, 0}, {0, 1}, {1, 1}}));
}

TEST(WdrScan, ParentChildRebuildWorkedByHand) {
  std::vector<std::int16_t> sign(64, 0);
  sign[0 * 8 + 1] = 1;   // (1, 0) baseband
  sign[1 * 8 + 2] = -1;  // (2, 1) level one, upper
  sign[4 * 8 + 5] = 1;   // (5, 4) level two, diagonal: its parent (2, 2) comes first
  const Walk expected = {
      {0, 0}, {0, 1}, {1, 1},                                                                   // baseband
      {2, 2}, {3, 0}, {1, 2}, {3, 2}, {2, 0}, {0, 2}, {0, 3}, {2, 3}, {3, 1}, {1, 3}, {3, 3},  // level one
      {4, 2}, {4, 3}, {5, 3}, {5, 2},                                                           // of (2, 1)
      {4, 4}, {4, 5}, {5, 5},                                                                   // of (2, 2)
      {6, 0}, {6, 1}, {7, 1}, {7, 0}, {2, 4}, {3, 4}, {3, 5}, {2, 5}, {6, 4}, {7, 4}, {6, 5}, {7, 5},
      {4, 0}, {4, 1}, {5, 1}, {5, 0}, {0, 4}, {1, 4}, {1, 5}, {0, 5}, {0, 6}, {1, 6}, {1, 7}, {0, 7},
      {4, 6}, {5, 6}, {4, 7}, {5, 7}, {6, 2}, {6, 3}, {7, 3}, {7, 2}, {2, 6}, {3, 6}, {3, 7}, {2, 7},
      {6, 6}, {7, 6}, {6, 7}, {7, 7}};
  EXPECT_EQ(PairsOf(CreateNewScanningOrder(8, 2, sign), 8), expected);
}

TEST(WdrScan, ContextRebuildWorkedByHand) {
  std::vector<std::int16_t> sign(64, 0);
  std::vector<float> quant(64, 0.0f);
  const auto set = [&](int x, int y, float q) {
    sign[static_cast<std::size_t>(y * 8 + x)] = 1;
    quant[static_cast<std::size_t>(y * 8 + x)] = q;
  };
  set(1, 0, 16.0f);
  set(2, 0, 8.0f);
  set(3, 3, 8.0f);
  set(1, 3, 8.0f);
  set(4, 1, 4.0f);
  ScanOrder tree;
  CreateScanOrder(tree, 2, 8, WdrBaseOrder::Tree);
  // After a pass at threshold 8 the bar is 4: (4, 0) predicts 2 + 4, the
  // lower row y = 4 reads the row above it, the children of (1, 3) and
  // (3, 3) get half their parent's 8; (4, 5) gets only a quarter of (4, 1).
  const Walk expected = {
      {0, 0}, {0, 1}, {1, 1},                                                                   // baseband
      {0, 2}, {2, 2}, {3, 0}, {1, 2}, {3, 2}, {2, 1}, {0, 3}, {2, 3}, {3, 1},                  // level one
      {4, 0}, {5, 1}, {5, 0}, {0, 4}, {1, 4}, {2, 4}, {3, 4}, {2, 6}, {3, 6}, {3, 7}, {2, 7},  // first walk
      {6, 6}, {7, 6}, {6, 7}, {7, 7},                                                           //
      {1, 5}, {0, 5}, {4, 4}, {5, 4}, {4, 5}, {5, 5}, {6, 0}, {6, 1}, {7, 1}, {7, 0}, {3, 5}, {2, 5},
      {6, 4}, {7, 4}, {6, 5}, {7, 5}, {4, 2}, {4, 3}, {5, 3}, {5, 2}, {0, 6}, {1, 6}, {1, 7}, {0, 7},
      {4, 6}, {5, 6}, {4, 7}, {5, 7}, {6, 2}, {6, 3}, {7, 3}, {7, 2}};
  EXPECT_EQ(PairsOf(CreateNewScanningOrderSiblingsSTO(8.0, quant, 8, 2, sign, WalkScanOrder(tree)), 8), expected);
}

TEST(WdrScan, EveryOrderVisitsEachPositionOnce) {
  std::mt19937 rng(7);
  for (int n = 2; n <= 256; n *= 2) {
    int log2n = 0;
    while ((1 << log2n) < n) ++log2n;
    for (int levels = 1; levels <= log2n; ++levels) {
      const std::size_t total = static_cast<std::size_t>(n) * static_cast<std::size_t>(n);
      for (WdrBaseOrder mode : {WdrBaseOrder::Subband, WdrBaseOrder::Tree}) {
        ScanOrder order;
        CreateScanOrder(order, levels, n, mode);
        const std::vector<std::int32_t> walk = WalkScanOrder(order);
        EXPECT_TRUE(VisitsEachOnce(walk, total)) << n << " " << levels << " " << static_cast<int>(mode);
        EXPECT_EQ(order.next[total - 1], static_cast<std::int32_t>(total - 1));
      }
      ScanOrder tree;
      CreateScanOrder(tree, levels, n, WdrBaseOrder::Tree);
      const std::vector<std::int32_t> treeWalk = WalkScanOrder(tree);
      for (double density : {0.0, 0.1, 0.5, 1.0}) {
        std::vector<std::int16_t> sign(total, 0);
        std::vector<float> quant(total, 0.0f);
        std::vector<std::int32_t> significant;
        std::bernoulli_distribution pick(density);
        for (std::size_t p = 0; p < total; ++p)
          if (pick(rng)) {
            sign[p] = 1;
            quant[p] = static_cast<float>(1 + rng() % 64);
            significant.push_back(static_cast<std::int32_t>(p));
          }
        for (int which = 0; which < 2; ++which) {
          std::vector<std::int32_t> all = which == 0
                                              ? CreateNewScanningOrder(n, levels, sign)
                                              : CreateNewScanningOrderSiblingsSTO(16.0, quant, n, levels, sign, treeWalk);
          EXPECT_EQ(all.size(), total - significant.size());
          for (std::int32_t p : all) EXPECT_EQ(sign[static_cast<std::size_t>(p)], 0);
          all.insert(all.end(), significant.begin(), significant.end());
          EXPECT_TRUE(VisitsEachOnce(all, total)) << n << " " << levels << " " << which << " " << density;
        }
      }
    }
  }
}

TEST(WdrScan, LevelHelpers) {
  EXPECT_EQ(HighestLevel(64), 4);
  EXPECT_EQ(HighestLevel(128), 5);
  EXPECT_EQ(HighestLevel(256), 6);
  EXPECT_EQ(HighestLevel(512), 7);
  EXPECT_EQ(HighestLevel(1024), 8);
  EXPECT_EQ(HighestLevel(32), 0);
  EXPECT_EQ(HighestLevel(2048), 0);
  EXPECT_EQ(LevelCount(8, 2), (std::vector<std::int32_t>{4, 12, 48}));
  EXPECT_EQ(LevelCount(8, 3), (std::vector<std::int32_t>{1, 3, 12, 48}));
  EXPECT_EQ(LevelCount(64, 4), (std::vector<std::int32_t>{16, 48, 192, 768, 3072}));
  EXPECT_TRUE(WdrPlaneUsable(8, 3));
  EXPECT_FALSE(WdrPlaneUsable(8, 4));
  EXPECT_FALSE(WdrPlaneUsable(12, 1));
  EXPECT_FALSE(WdrPlaneUsable(8, 0));
}

TEST(WdrScan, ThresholdHelpers) {
  ImagePlane plane(4, 4);
  plane.At(2, 3) = -16.0f;  // a maximum that is a power of two is the threshold
  EXPECT_EQ(GetThreshold(plane).exponent, 4);
  EXPECT_EQ(GetThreshold(plane).threshold, 16.0);
  plane.At(1, 1) = 16.5f;
  EXPECT_EQ(GetThreshold(plane).threshold, 32.0);
  plane.At(1, 1) = 23.0f;  // log2 23 rounds to 5
  EXPECT_EQ(GetThreshold(plane).threshold, 32.0);
  EXPECT_EQ(GetTheLastThreshold(3.0, 32.0), 2.0);
  EXPECT_EQ(GetTheLastThreshold(4.0, 32.0), 4.0);
  EXPECT_EQ(GetTheLastThreshold(40.0, 32.0), 32.0);
}

TEST(WdrScan, RebuildTiming) {
  const WdrScanMode pc = WdrScanMode::DynamicParentChild;
  EXPECT_FALSE(RebuildsAfterPass(pc, 4, 1));
  EXPECT_TRUE(RebuildsAfterPass(pc, 5, 1));
  EXPECT_FALSE(RebuildsAfterPass(pc, 0, 201));
  EXPECT_TRUE(RebuildsAfterPass(pc, 1, 201));
  EXPECT_FALSE(RebuildsAfterPass(pc, 1, 101));
  EXPECT_TRUE(RebuildsAfterPass(pc, 2, 101));
  EXPECT_TRUE(RebuildsAfterPass(WdrScanMode::DynamicContext, 1, 1));
  EXPECT_FALSE(RebuildsAfterPass(WdrScanMode::ZigZag, 9, 201));
  EXPECT_FALSE(RebuildsAfterPass(WdrScanMode::StaticTree, 9, 1));
}

}  // namespace
}  // namespace keldo::wavelet
