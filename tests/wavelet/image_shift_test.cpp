// The cyclic shifts of an image: where each pixel lands, the way back, and
// shifts past the side.

#include <gtest/gtest.h>

#include <vector>

#include "wavelet/image_shift.h"

namespace keldo::wavelet {
namespace {

// A 5 by 3 image (width 5, height 3) with a margin of 2 in each row; pixel
// (x, y) holds 10 y + x.
struct Small {
  static constexpr int kW = 5, kH = 3;
  static constexpr std::size_t kStride = 7;
  std::vector<float> v = std::vector<float>(kStride * kH, -1.0f);
  Small() {
    for (int y = 0; y < kH; ++y)
      for (int x = 0; x < kW; ++x) v[static_cast<std::size_t>(y) * kStride + static_cast<std::size_t>(x)] = 10.0f * y + x;
  }
  FloatImage View() { return {v.data(), kW, kH, kStride}; }
  float At(int x, int y) const { return v[static_cast<std::size_t>(y) * kStride + static_cast<std::size_t>(x)]; }
};

TEST(ImageShift, PixelMovesByColumnsAndRowsWithWrap) {
  Small a, b;
  ShiftWork work;
  ShiftImage(2, 1, a.View(), b.View(), work);
  for (int y = 0; y < Small::kH; ++y)
    for (int x = 0; x < Small::kW; ++x) EXPECT_EQ(b.At((x + 2) % 5, (y + 1) % 3), 10.0f * y + x) << x << "," << y;
  // The margin of the target is left alone.
  EXPECT_EQ(b.v[5], -1.0f);
  EXPECT_EQ(b.v[6], -1.0f);
}

TEST(ImageShift, NegativeShiftUndoesInPlace) {
  Small a;
  const std::vector<float> before = a.v;
  ShiftWork work;
  ShiftImage(3, -2, a.View(), a.View(), work);
  EXPECT_NE(a.v, before);
  ShiftImage(-3, 2, a.View(), a.View(), work);
  EXPECT_EQ(a.v, before);
}

TEST(ImageShift, WholeTurnsLeaveTheImage) {
  Small a;
  const std::vector<float> before = a.v;
  ShiftWork work;
  ShiftImage(10, -6, a.View(), a.View(), work);
  EXPECT_EQ(a.v, before);
  // One turn and one more place is one place.
  Small b, c;
  ShiftImage(6, 4, a.View(), b.View(), work);
  ShiftImage(1, 1, a.View(), c.View(), work);
  EXPECT_EQ(b.v, c.v);
}

TEST(ImageShift, VertMovesColumnsOnlyAndHorizRowsOnly) {
  Small a;
  ShiftWork work;
  ShiftImageVert(1, a.View(), work);
  EXPECT_EQ(a.At(4, 1), 4.0f);   // (4, 0) moved up one row
  EXPECT_EQ(a.At(4, 0), 24.0f);  // the top row wrapped to row 0
  Small b;
  ShiftImageHoriz(-1, b.View(), work);
  EXPECT_EQ(b.At(0, 2), 21.0f);
  EXPECT_EQ(b.At(4, 2), 20.0f);
}

}  // namespace
}  // namespace keldo::wavelet
