#pragma once
// The workshop's transform denoiser (its "Denoise Transform"): the
// bit-plane passes of the coder run without output down to a last
// threshold, and of the coefficients they make significant only those in
// trees of significant coefficients that reach a given depth across the
// levels are kept: noise leaves isolated coefficients, while edges and
// textures make significant parents and children.
//
// With the start threshold T0 of the transform (GetThreshold) and the last
// threshold Tl = GetTheLastThreshold(floor, T0), a coefficient c with
// |c| >= Tl is significant, and after the passes down to Tl its magnitude
// is |c| truncated to a multiple of Tl, which the passes' order does not
// change. It is then given the middle of that step (+ Tl/2), or, with
// refinement, refined over `descents` more halvings (to a multiple of
// Tl / 2^descents) and given the middle of the last step; with shrinkage
// the magnitude is then reduced by Tl (not below 0). Signs are kept; every
// other coefficient is 0.
//
// The trees: the plane is n by n with `levels` levels; the trend block
// (side n / 2^levels) is always kept. A detail coefficient at (x, y) of
// level k (1 the finest) has its parent at (x/2, y/2) on level k + 1, the
// coarsest level's details have none. A significant detail coefficient is
// kept when the longest chain of significant coefficients through it, from
// an ancestor down to a descendant, spans at least `depth` levels.

#include <cstdint>

#include "wavelet/image_transform.h"

namespace keldo::wavelet {

struct WdrDenoiseOptions {
  int levels = 1;
  double floor = 1.0;  // the last threshold is the first halving at or below it
  int depth = 1;       // the levels a kept tree spans
  bool refine = false;
  int descents = 0;
  bool shrink = false;
};

struct WdrDenoiseResult {
  ImagePlane plane;
  double startThreshold = 0.0;
  double lastThreshold = 0.0;
  int passes = 0;           // the halvings from the start down to the last threshold
  std::int64_t significant = 0;
  std::int64_t kept = 0;    // significant coefficients kept, the trend's included
};

// False in `ok` for a plane that is not square, a side that is not a
// multiple of 2^levels, or levels below 1.
WdrDenoiseResult ArrayDeNoiseEncode(const ImagePlane& transform, const WdrDenoiseOptions& options, bool& ok);

}  // namespace keldo::wavelet
