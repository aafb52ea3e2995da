#pragma once
// The region of interest of the image processor's coders: which transform
// positions bear on a rectangle of the image.
//
// A coefficient of level l (1 the finest) at offset (u, v) from the corner
// of its block stands for the image position (u s, v s), s = 2^l, and its
// basis function spreads over a margin m around it: m = Support at level
// 1, 2^(l-1) Support + Support at level l >= 2. It bears on the rectangle
// x1..x2 by y1..y2 when x1 - m <= u s <= x2 + m and y1 - m <= v s <= y2 + m.
// The trend takes the coarsest level's scale 2^L and the margin
// 2^(L-1) Support + Support. Blocks of level l, with edges ex = W / 2^l and
// ey = H / 2^l (x along a row of the plane, y down it):
//
//   +---------+---------+
//   | trend   | upper   |   upper:    x in ex..2ex-1, y in 0..ey-1
//   | (level  | (x high)|   lower:    x in 0..ex-1,   y in ey..2ey-1
//   |  L)     |         |   diagonal: x in ex..2ex-1, y in ey..2ey-1
//   +---------+---------+
//   | lower   | diagonal|   each block's offsets (u, v) from its own
//   | (y high)|         |   top left corner
//   +---------+---------+

#include <cstdint>
#include <vector>

namespace keldo::wavelet {

// The spread of the image processor's wavelets in pixels: 5 for each of
// the three (WaveletIndex 1, 2, 3), 0 for any other index.
int SupportOfWavelet(int waveletIndex);

// The mask of a width by height plane of `levels` levels, by position
// (y * width + x): 1 where the coefficient bears on the rectangle, 0
// elsewhere. The rectangle's corners are image pixels, x1 <= x2, y1 <= y2.
// Sides must be multiples of 2^levels; otherwise, or for levels below 1,
// every position is 1.
std::vector<std::uint8_t> GetROIValues(int width, int height, int x1, int y1, int x2, int y2, int support,
                                       int levels);

}  // namespace keldo::wavelet
