// The scan orders of the adaptive coder: the zigzag of square and oblong
// blocks by hand, the initial order of an 8 by 8 plane walked by hand, the
// link after a diagonal block on oblong planes, the rebuild's three walks,
// every order a permutation of the plane, and the starting threshold.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <set>
#include <utility>
#include <vector>

#include "wavelet/aswdr_scan.h"

namespace keldo::wavelet {
namespace {

using Walk = std::vector<std::pair<int, int>>;

Walk WalkOf(const ScanOrder& order, std::size_t count) {
  Walk walk;
  std::int32_t p = 0;
  for (std::size_t i = 0; i < count; ++i) {
    walk.emplace_back(p % order.width, p / order.width);
    p = order.next[static_cast<std::size_t>(p)];
  }
  return walk;
}

Walk ZigZagOf(int maxX, int maxY) {
  Walk walk;
  for (const BlockPosition& b : GetZigZag(maxX, maxY)) walk.emplace_back(b.x, b.y);
  return walk;
}

bool IsPermutation(const Walk& walk, int width, int height) {
  std::set<std::pair<int, int>> seen(walk.begin(), walk.end());
  return walk.size() == static_cast<std::size_t>(width * height) && seen.size() == walk.size();
}

TEST(AswdrScan, ZigZagOfASquareBlock) {
  const Walk expected = {{0, 0}, {1, 0}, {0, 1}, {0, 2}, {1, 1}, {2, 0}, {2, 1}, {1, 2}, {2, 2}};
  EXPECT_EQ(ZigZagOf(2, 2), expected);
}

TEST(AswdrScan, ZigZagOfOblongBlocks) {
  // 4 by 2: the right diagonal 2 ends at (2, 0) and goes on to (3, 0); the
  // left diagonals 1 and 3 end on the bottom row and step right along it.
  const Walk wide = {{0, 0}, {1, 0}, {0, 1}, {1, 1}, {2, 0}, {3, 0}, {2, 1}, {3, 1}};
  EXPECT_EQ(ZigZagOf(3, 1), wide);
  // 2 by 4: the subscripts exchanged.
  const Walk tall = {{0, 0}, {1, 0}, {0, 1}, {0, 2}, {1, 1}, {1, 2}, {0, 3}, {1, 3}};
  EXPECT_EQ(ZigZagOf(1, 3), tall);
  EXPECT_EQ(ZigZagOf(0, 0), Walk({{0, 0}}));
  EXPECT_EQ(ZigZagOf(0, 2), Walk({{0, 0}, {0, 1}, {0, 2}}));
}

TEST(AswdrScan, InitialOrderOfAnEightByEightPlane) {
  ScanOrder order;
  CreateScanOrder(order, 2, 8, 8);
  const Walk walk = WalkOf(order, 64);
  const Walk head = {
      {0, 0}, {1, 0}, {0, 1}, {1, 1},  // trend, zigzag
      {0, 2}, {1, 2}, {1, 3}, {0, 3},  // level 2 lower block, rows
      {2, 0}, {2, 1}, {3, 1}, {3, 0},  // upper block, columns
      {2, 2}, {3, 2}, {2, 3}, {3, 3},  // diagonal block, zigzag
      {0, 4}, {1, 4}, {2, 4}, {3, 4}, {3, 5}, {2, 5}, {1, 5}, {0, 5},
      {0, 6}, {1, 6}, {2, 6}, {3, 6}, {3, 7}, {2, 7}, {1, 7}, {0, 7},
      {4, 0}, {4, 1}, {4, 2}, {4, 3}, {5, 3}, {5, 2}, {5, 1}, {5, 0},
      {6, 0}, {6, 1}, {6, 2}, {6, 3}, {7, 3}, {7, 2}, {7, 1}, {7, 0},
      {4, 4}, {5, 4}, {4, 5}, {4, 6}, {5, 5}, {6, 4}, {7, 4}, {6, 5},
      {5, 6}, {4, 7}, {5, 7}, {6, 6}, {7, 5}, {7, 6}, {6, 7}, {7, 7}};
  EXPECT_EQ(walk, head);
  EXPECT_EQ(order.next[static_cast<std::size_t>(order.Index(7, 7))], order.Index(7, 7));
}

TEST(AswdrScan, DiagonalBlockLinksToTwiceItsWidth) {
  // 8 wide, 16 high, 2 levels: the level 2 blocks are 2 by 4, and their
  // diagonal block's last position (3, 7) links to (0, 4), not to the next
  // lower block at (0, 8).
  ScanOrder tall;
  CreateScanOrder(tall, 2, 8, 16);
  EXPECT_EQ(tall.next[static_cast<std::size_t>(tall.Index(3, 7))], tall.Index(0, 4));
  // 16 wide, 8 high: (0, 8) lies outside, and the link goes to (0, 4).
  ScanOrder wide;
  CreateScanOrder(wide, 2, 16, 8);
  EXPECT_EQ(wide.next[static_cast<std::size_t>(wide.Index(7, 3))], wide.Index(0, 4));
  EXPECT_TRUE(IsPermutation(WalkOf(wide, 128), 16, 8));
  // An odd trend height ends the lower block's rows on the right.
  ScanOrder odd;
  CreateScanOrder(odd, 1, 4, 6);
  EXPECT_EQ(odd.next[static_cast<std::size_t>(odd.Index(1, 5))], odd.Index(2, 0));
}

TEST(AswdrScan, RebuildPutsChildrenOfSignificantParentsFirst) {
  ScanOrder order;
  CreateScanOrder(order, 2, 8, 8);
  ImagePlane quant(8, 8);
  quant.At(2, 3) = 5.0f;   // diagonal block of level 2, significant at 4
  quant.At(0, 6) = -1.0f;  // a child of (0, 3), which stays below 4
  quant.At(0, 0) = 9.0f;   // the trend: never reordered
  CreateNewScanOrder(order, 2, quant, 4.0);
  const Walk walk = WalkOf(order, 64);
  const Walk unchanged = {{0, 0}, {1, 0}, {0, 1}, {1, 1}, {0, 2}, {1, 2}, {1, 3}, {0, 3},
                          {2, 0}, {2, 1}, {3, 1}, {3, 0}, {2, 2}, {3, 2}, {2, 3}, {3, 3}};
  EXPECT_EQ(Walk(walk.begin(), walk.begin() + 16), unchanged);
  const Walk rebuilt = {
      {4, 6}, {5, 6}, {4, 7}, {5, 7},  // children of (2, 3), diagonal: row by row
      {0, 6}, {1, 6}, {1, 7}, {0, 7},  // of (0, 3), lower: along the top pair first
      {0, 4}, {1, 4}, {1, 5}, {0, 5},  // then the rest in the list's order
      {2, 4}, {3, 4}, {3, 5}, {2, 5}, {2, 6}, {3, 6}, {3, 7}, {2, 7},
      {4, 0}, {4, 1}, {5, 1}, {5, 0}};  // (2, 0), upper: down the left pair first
  EXPECT_EQ(Walk(walk.begin() + 16, walk.begin() + 40), rebuilt);
  EXPECT_TRUE(IsPermutation(walk, 8, 8));
}

TEST(AswdrScan, EveryOrderIsAPermutation) {
  const int sizes[][3] = {{64, 64, 5}, {32, 64, 3}, {64, 32, 3}, {96, 32, 5}, {16, 16, 1}, {32, 32, 4}};
  std::mt19937 random(3);
  for (const auto& s : sizes) {
    ScanOrder order;
    CreateScanOrder(order, s[2], s[0], s[1]);
    ImagePlane quant(s[0], s[1]);
    for (int round = 0; round < 4; ++round) {
      for (float& q : quant.v) q = (random() % 7 == 0) ? static_cast<float>(random() % 40) - 20.0f : 0.0f;
      CreateNewScanOrder(order, s[2], quant, 8.0);
      EXPECT_TRUE(IsPermutation(WalkOf(order, quant.v.size()), s[0], s[1])) << s[0] << "x" << s[1];
    }
  }
}

// The flat order, started and rebuilt, against the linked one it stands
// for, with a by-position value carried along (read by position, by parent,
// and the non-zero flags with their zeros unread): square planes (built in
// walk order) and oblong ones (flattened from the links).
TEST(AswdrScan, FlatOrderFollowsTheLinkedOrder) {
  const int sizes[][3] = {{64, 64, 5}, {64, 64, 1}, {32, 32, 3}, {8, 8, 3}, {32, 64, 3}, {64, 32, 2}};
  std::mt19937 random(5);
  for (const auto& s : sizes) {
    const std::size_t n = static_cast<std::size_t>(s[0]) * static_cast<std::size_t>(s[1]);
    ScanOrder linked;
    CreateScanOrder(linked, s[2], s[0], s[1]);
    FlatScanOrder flat;
    flat.Start(s[2], s[0], s[1]);
    const auto sameWalk = [&] {
      const Walk walk = WalkOf(linked, n);
      for (std::size_t i = 0; i < n; ++i)
        if (flat.Positions()[i] != walk[i].second * s[0] + walk[i].first) return false;
      return true;
    };
    EXPECT_TRUE(sameWalk()) << s[0] << "x" << s[1] << " levels " << s[2];
    ImagePlane quant(s[0], s[1]);
    std::vector<std::uint16_t> byPosition(n), bySlot(n);
    for (std::size_t p = 0; p < n; ++p) byPosition[p] = static_cast<std::uint16_t>(p * 7 % 65521);
    flat.Carry(byPosition.data(), bySlot.data());
    // The same value read by parent, and the non-zero flags themselves.
    FlatScanOrder byParentOrder, nonZeroOrder;
    byParentOrder.Start(s[2], s[0], s[1]);
    nonZeroOrder.Start(s[2], s[0], s[1]);
    const auto children = byParentOrder.ChildrenByParent(byPosition.data());
    std::vector<std::uint16_t> byParentSlot(n);
    byParentOrder.Carry(byPosition.data(), byParentSlot.data());
    std::vector<std::uint8_t> nonZeroSlot(n, 0);
    for (int round = 0; round < 3; ++round) {
      std::vector<std::uint8_t> nonZero(n);
      for (std::size_t p = 0; p < n; ++p) {
        quant.v[p] = (random() % 5 == 0) ? 8.0f : 0.0f;
        nonZero[p] = quant.v[p] != 0.0f ? 1 : 0;
      }
      CreateNewScanOrder(linked, s[2], quant, 8.0);
      flat.Rebuild(quant, nonZero, 8.0, FlatScanOrder::Carried<std::uint16_t>{byPosition.data()}, bySlot.data());
      EXPECT_TRUE(sameWalk()) << s[0] << "x" << s[1] << " round " << round;
      for (std::size_t i = 0; i < n; ++i)
        ASSERT_EQ(bySlot[i], byPosition[static_cast<std::size_t>(flat.Positions()[i])]);
      FlatScanOrder::Carried<std::uint16_t> byParent{byPosition.data()};
      byParent.byParent = children.empty() ? nullptr : children.data();
      byParentOrder.Rebuild(quant, nonZero, 8.0, byParent, byParentSlot.data());
      // The flags by place as the coder keeps them: current before the rebuild.
      nonZeroOrder.Carry(nonZero.data(), nonZeroSlot.data());
      FlatScanOrder::Carried<std::uint8_t> flags{nonZero.data()};
      flags.zeroWhereZero = true;
      nonZeroOrder.Rebuild(quant, nonZero, 8.0, flags, nonZeroSlot.data());
      ASSERT_EQ(byParentOrder.Positions(), flat.Positions());
      ASSERT_EQ(nonZeroOrder.Positions(), flat.Positions());
      for (std::size_t i = 0; i < n; ++i) {
        ASSERT_EQ(byParentSlot[i], bySlot[i]);
        ASSERT_EQ(nonZeroSlot[i], nonZero[static_cast<std::size_t>(flat.Positions()[i])]);
      }
    }
  }
}

TEST(AswdrScan, StartingThreshold) {
  const auto start = [](float largest) {
    ImagePlane p(4, 4);
    p.At(3, 2) = -largest;
    p.At(0, 0) = largest / 3.0f;
    return GetThreshold(p);
  };
  EXPECT_EQ(start(5.0f).exponent, 3);
  EXPECT_EQ(start(5.0f).threshold, 8.0);
  EXPECT_EQ(start(8.0f).threshold, 8.0);  // a power of two is its own threshold
  EXPECT_EQ(start(8.0f).exponent, 3);
  EXPECT_EQ(start(8.001f).threshold, 16.0);
  EXPECT_EQ(start(11.4f).threshold, 16.0);  // log2 rounds up to 4, which is not below
  EXPECT_EQ(start(1000.0f).exponent, 10);
  EXPECT_EQ(start(0.3f).threshold, 1.0);  // exponent held at 0
  EXPECT_EQ(start(0.0f).exponent, 0);
}

// The largest magnitude leaves NaNs out wherever they lie (the first eight
// values go through in vectors, the rest one by one), takes infinity as
// no threshold at all, and finds a largest value in any place of a plane
// of 5 x 5, negative or not.
TEST(AswdrScan, StartingThresholdSkipsNaN) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  for (int at = 0; at < 25; ++at)
    for (float largest : {37.0f, -37.0f, 64.0f, 1e-39f}) {
      ImagePlane p(5, 5);
      for (std::size_t i = 0; i < p.v.size(); ++i) p.v[i] = static_cast<float>(i % 7) * (i % 2 ? -1.0f : 1.0f);
      for (float& v : p.v) v = std::fabs(largest) < 1.0f ? v * 1e-41f : v;
      p.v[static_cast<std::size_t>(at)] = largest;
      p.v[static_cast<std::size_t>((at + 3) % 25)] = nan;
      p.v[static_cast<std::size_t>((at + 11) % 25)] = -nan;
      double expected = 0.0;
      for (float v : p.v)
        if (!std::isnan(v)) expected = std::max(expected, std::fabs(static_cast<double>(v)));
      const StartThreshold s = GetThreshold(p);
      const int exponent = std::clamp(static_cast<int>(std::ceil(std::log2(expected))), 0, 255);
      EXPECT_EQ(s.exponent, exponent) << "largest " << largest << " at " << at;
    }
  ImagePlane p(5, 5);
  p.v[17] = -std::numeric_limits<float>::infinity();
  p.v[2] = 3.0f;
  EXPECT_EQ(GetThreshold(p).exponent, 0);
  EXPECT_EQ(GetThreshold(p).threshold, 1.0);
}

}  // namespace
}  // namespace keldo::wavelet
