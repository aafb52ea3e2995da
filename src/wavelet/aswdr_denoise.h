#pragma once
// The image processor's wavelet-domain denoising by thresholding with an
// adaptive, tree-based scan (TAWS), the noise estimate it shares with the
// compress-denoise coders, and their last offsets.
//
// TAWS runs the significance and refinement passes of the adaptive coder in
// memory, on a transform whose detail values below Low = T / descent are
// cleared first. Above the noise threshold T every value may turn
// significant; from T down to Low the scan is rebuilt with
// CreateDenoisingScanOrder, whose weights keep an isolated value (parent and
// siblings insignificant) insignificant at the finest `depth` levels: noise
// leaves such values, while edges and textures make families across levels.

#include <cstdint>
#include <functional>
#include <vector>

#include "wavelet/aswdr_scan.h"
#include "wavelet/image_transform.h"

namespace keldo::wavelet {

// The indices 0..n-1 ordered by value, smallest first; equal values keep
// their index order.
std::vector<std::int32_t> ISORTSng(const std::vector<float>& values);

// The noise estimate from the finest diagonal block.
struct NoiseThreshold {
  double sigma = 1.0;
  double threshold = 0.0;
  int depth = 1;  // the depth the estimate advises: 1 for sigma <= 12.8, else 2
};
// With W, H the transform's sides: walk the initial scan order of `levels`
// levels from (W/2, H/2), the start of the finest diagonal block, over
// C = min(2^16 - 2, (W/2)(H/2) - 2) + 1 positions, taking |c| (0 where it
// is not above 0, a NaN included); sort them with ISORTSng; sigma = the value
// at index (C - 1) div 2 over 0.6745, 1 when that is 0. Threshold = sigma *
// sqrt(4 ln max(W, H)). Needs levels >= 1 and sides of at least 4.
NoiseThreshold AutoThresholdValue(const ImagePlane& transform, int levels);

// Sets to 0 every value with |c| < low outside the trend (the corner of
// sides W / 2^levels by H / 2^levels).
void ClearBelowOutsideTrend(ImagePlane& plane, int levels, double low);

// The denoisers' last offset: every non-zero value moves `threshold` / 2
// away from zero, to the middle of the cell of width `threshold` that the
// passes left it at the bottom of.
void LastDenoiseRefinement(ImagePlane& quant, double threshold);

struct TawsOptions {
  int levels = 1;
  int depth = 1;         // the finest levels with the tree test
  double descent = 2.0;  // Low = threshold / descent
  bool shrink = false;   // soft shrinkage by Low after the passes
};

struct TawsResult {
  ImagePlane quant;            // the denoised transform, without the last offset
  double lastThreshold = 0.0;  // the threshold of the last refinement round
  double low = 0.0;
  int passes = 0;              // significance passes
  std::int64_t significant = 0;
};

// The passes of DenoiseImageTransformTAWS on a transform of `options.levels`
// levels, for the noise threshold t (FinalT):
// 1. Low = t / descent; every weight 1; detail values with |c| < Low
//    cleared; T from GetThreshold of the cleared transform; quant 0.
// 2. Passes: PrevT = T, T = T/2; a position with |quant| < PrevT and
//    |weight * c| >= T turns +-T; from pass 2 a value with |quant| >= PrevT
//    moves T away from zero when |c - quant| >= T. After each pass the
//    order and weights are rebuilt (CreateNewDenoisingScanOrder, the tree
//    test once T <= t). They end when T/2 < Low.
// 3. Five refinement rounds, T halving each time, on every non-zero value.
// 4. With shrink, every detail value with |v| >= Low moves Low toward zero.
// A descent or threshold that is not positive and finite, or a plane whose
// sides are not multiples of 2^levels, gives an empty quant.
TawsResult DenoiseImageTransformTAWS(const ImagePlane& transform, double t, const TawsOptions& options);

// One whole denoising of a picture (row-major floats, width by height):
// transform, DenoiseImageTransformTAWS, LastDenoiseRefinement by the last
// threshold, inverse; the inverse plane comes back as floats. `quant` gets
// the refined transform when given.
ImagePlane DenoisePictureTAWS(const ImagePlane& picture, int waveletIndex, double t, const TawsOptions& options,
                              ImagePlane* quant = nullptr);

// The cyclic shifts of an averaging type: the number of shifts along each
// axis k (1, 2, 4, 8 or 16) and whether it is a "D" type. All pairs (i, j)
// with i, j in 0..k-1, row by row; the "D" types only (i, i), i = 0..k-1.
struct ShiftPair {
  int x = 0, y = 0;
};
std::vector<ShiftPair> AverageShifts(int count, bool diagonal);

// Cycle spinning: for each shift (i, j), the picture shifted cyclically by
// i columns and j rows, denoised by DenoisePictureTAWS, shifted back and
// added up; the mean of the sums. `progress` is told the percent done before
// each shift and may return false to stop: then false comes back.
bool DenoiseAveragedTAWS(const ImagePlane& picture, int waveletIndex, double t, const TawsOptions& options,
                         const std::vector<ShiftPair>& shifts, ImagePlane& mean,
                         const std::function<bool(int percent)>& progress);

}  // namespace keldo::wavelet
