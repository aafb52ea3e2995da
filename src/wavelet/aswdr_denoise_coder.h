#pragma once
// The compress-denoise coders of the image processor, binary (.bcd) and
// arithmetic (.acd): the adaptive coders' passes and symbols (aswdr.h) on a
// transform denoised as they go.
//
// With the noise threshold N (AutoThresholdValue) and Low = N / descent,
// the detail values below Low are cleared first; the passes then run as in
// the plain coders, with three changes:
// - The scan is rebuilt by CreateNewDenoisingScanOrder: after a pass whose
//   threshold is at most N the rebuild gives the finest `depth` levels their
//   tree-test weights. A position of weight 0 is passed over by the next
//   significance walk on both sides, neither counted in a run nor tested;
//   the coder tests the others with |weight * c| >= T.
// - A position counts as significant already when its value (quant) is
//   non-zero, on both sides: a value held back by its weight may turn
//   significant later, when it is no longer at or above the former
//   threshold's test of the plain coder.
// - With "minimum bit rate" the passes end with the one after which T/2 <
//   Low, whatever the budget left.
// The budget, the pass limits and the report lines are the plain coders'.
// The decoder rebuilds the same scan and ends with LastDenoiseRefinement by
// the last pass's threshold.
//
// File: the plain coders' 18-byte head (exponent from the cleared
// transform), then three bytes: depth, the first pass after which the
// rebuild gives weights (255: none), and the last pass (0: none, the budget
// or pass limit ends the passes); then the stream, whose bits used start
// from the plain coder's allowance plus those 24 bits.

#include <cstdint>
#include <optional>
#include <vector>

#include "wavelet/aswdr.h"

namespace keldo::wavelet {

struct DenoiseCoding {
  double noiseThreshold = 1.0;
  int depth = 1;
  double descent = 2.0;
  bool minBitRate = false;
};

constexpr std::size_t kDenoisePreambleSize = 3;
// The largest depth a file may hold.
constexpr int kMaxDenoiseDepth = 25;

// An empty file for a head that ReadAswdrHead would refuse, a depth outside
// 1..kMaxDenoiseDepth, a threshold or descent that is not positive and
// finite, or a region mask of another size. With a region the coder turns
// to region mode at its shared budget as the plain coders do (aswdr.h); the
// decoder needs no mask.
AswdrEncoded CompressDenoiseAswdr(const ImagePlane& transform, AswdrHead head, AswdrCoder coder,
                                  const DenoiseCoding& coding, const AswdrRegion* region = nullptr);

// The decoder at the budget of `bpp` (or the stored one when smaller, with
// the rate message). Nothing for a bad head or preamble or a plane above
// kMaxAswdrPixels. `quant` is after LastDenoiseRefinement,
// `quantBeforeRefinement` as decoded.
std::optional<AswdrDecoded> DecompressDenoiseAswdr(const std::vector<std::uint8_t>& file, double bpp,
                                                   AswdrCoder coder);

}  // namespace keldo::wavelet
