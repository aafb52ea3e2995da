#pragma once
// The region of interest of the image processor's coders: which transform
// positions bear on a rectangle of the image, and how many bits the whole
// picture gets before the region alone takes the rest.
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

#include "wavelet/aswdr.h"
#include "wavelet/image_transform.h"

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

// A rectangle of image pixels, x along a row of the plane and y down it,
// corners sorted: x1 <= x2, y1 <= y2.
struct RegionRectangle {
  int x1 = 0, y1 = 0, x2 = 0, y2 = 0;
};

// The bits B that a region's share p is taken of: the head's budget for the
// coders to a budget, the bits a plain lossless run over the same transform
// uses for the lossless coder (which has no budget of its own).
enum class RegionBudgetBase { HeadBudget, LosslessRun };

// The region of a rectangle for the coders over `transform` (the head's
// levels, wavelet and sizes): the mask of GetROIValues with the support of
// the head's wavelet, and sharedBudget = nearbyint((1 - p) B). The whole
// picture is coded until the bits used reach the shared budget; the
// coefficients that bear on the rectangle take the rest. The share p is
// taken as given (the callers keep it within 0..0.99).
AswdrRegion RegionOfRectangle(const ImagePlane& transform, const AswdrHead& head, const RegionRectangle& rectangle,
                              double share, RegionBudgetBase base);

}  // namespace keldo::wavelet
