#pragma once
// The image processor's two-dimensional wavelet transform of a rectangular
// plane, its inverse, the integer wavelets' scaling and the level and budget
// rules of its coders.
//
// Layout after L levels of a W by H plane: the trend is the corner
// x < W/2^L, y < H/2^L; level k's fluctuations are the three blocks of side
// W/2^k by H/2^k beside the corner of side W/2^(k-1) by H/2^(k-1): x high
// (upper block), y high (lower block), both high (diagonal block).

#include <cstdint>
#include <vector>

namespace keldo::wavelet {

// A rectangular plane of floats, row-major: At(x, y) = v[y * width + x], x
// along a row.
struct ImagePlane {
  int width = 0, height = 0;
  std::vector<float> v;

  ImagePlane() = default;
  ImagePlane(int w, int h)
      : width(w), height(h), v(static_cast<std::size_t>(w > 0 ? w : 0) * static_cast<std::size_t>(h > 0 ? h : 0), 0.0f) {}
  float& At(int x, int y) { return v[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)]; }
  float At(int x, int y) const {
    return v[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)];
  }
};

// The image processor's wavelets: 1 "Daub 9/7", 2 "DD 5/3 Integer",
// 3 "DD 2+2,2 Integer"; 0 for any other index.
int LiftingCodeOf(int waveletIndex);

// Levels of one row pass then one column pass, the first over the whole
// plane and each later one over the corner of half the sides. Every line is
// copied out to double, run through SymmWavTr (extension 6) and Perm (trend
// half first) and stored back as float. The integer wavelets (index above 1)
// are then scaled by ScalingOfWT(levels, 1). The sides must be multiples of
// 2^levels; an unknown index leaves the plane as it is.
void TransformTheImage(ImagePlane& plane, int levels, int waveletIndex);
// The inverse: ScalingOfWT(levels, -1) first for an integer wavelet, then the
// levels from the coarsest, columns before rows, INVPERM then InvSymmWavTr on
// each line. An integer plane comes back exactly through the integer
// wavelets; 9/7 within float rounding.
void InvertTheTransform(ImagePlane& plane, int levels, int waveletIndex);
// The reconstruction shown from a decoded plane: a copy of `quant` inverted
// by InvertTheTransform, each pixel the rounded |value| (ties to even) held
// to 255, row-major like the plane.
std::vector<std::uint8_t> InvertTheTransformQuant(const ImagePlane& quant, int levels, int waveletIndex);
// The pixels of an inverted plane: each the rounded |value| (ties to even),
// 255 at or above 255 and for NaN.
std::vector<std::uint8_t> RoundedMagnitudeBytes(const ImagePlane& image);

// Direction 1 multiplies by 2, any other value divides by 2: for each of the
// levels the whole current corner, whose sides halve after every round, then
// the last corner once more. So level r's fluctuations are scaled by 2^r and
// the trend by 2^(levels + 1).
void ScalingOfWT(ImagePlane& plane, int levels, int direction);

// The largest level count for a size: the smaller of the two sides' log2,
// each rounded (ties to even), minus 2; at most 4 for an integer wavelet
// (index above 1). 0 for a side below 1.
int LevelLimit(int width, int height, int waveletIndex);

// The bit budget of a rate: Round(height * bpp) * width, the rounding with
// ties to even, held to the 32-bit range.
std::int32_t BitBudgetOf(int width, int height, double bpp);

}  // namespace keldo::wavelet
