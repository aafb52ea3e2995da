#pragma once
// Wavelet-domain denoisers of images: SureShrink on the image processor's
// transform, and the thresholding steps of the two-dimensional form's
// "De&noise (wavelet)".
//
// SureShrink (Donoho and Johnstone, "Adapting to unknown smoothness via
// wavelet shrinkage", 1995) picks for each detail band the threshold that
// minimises Stein's unbiased estimate of the risk, and falls back to the
// universal threshold sqrt(2 ln n) for a band too sparse for the estimate to
// be trusted. The noise level comes from the finest diagonal band as its
// median absolute value over 0.6745.

#include <cstddef>
#include <functional>
#include <span>
#include <vector>

#include "wavelet/image_shift.h"
#include "wavelet/image_transform.h"
#include "wavelet/wavelet2d.h"

namespace keldo::wavelet {

enum class Shrinkage { Hard, Soft };

// Ascending Shell sort of float keys, the index array moved with them;
// equal keys keep the order of their indices.
void IndexSORTSng(std::span<float> keys, std::span<int> idx);

// The noise level of a transform: |c| over the finest diagonal block
// (x >= W/2, y >= H/2), sorted by IndexSORTSng; the middle value, for an
// even count the mean of the two middle ones, over 0.6745. A zero result,
// or a plane with no such block, gives 1.
double SureShrinkSigma(const ImagePlane& transform);

// The choice for one band of n coefficients at noise level sigma (> 0).
struct SureShrinkChoice {
  double sureT = 0.0;       // the risk-minimising x(k), in units of sigma (0 when no k beats the risk n)
  double bestRisk = 0.0;    // its risk
  double universal = 0.0;   // sqrt(2 ln n)
  bool sparse = false;      // Energy/n - 1 <= (ln n)^1.5 / sqrt(n)
  double threshold = 0.0;   // (sparse ? universal : sureT) * sigma, at least 0
};
// With x(k) the ascending |c|/sigma: Risk(0) = n - 2 + n x(0)^2 and
// Risk(k) = Risk(k-1) - 2 + (n - k)(x(k)^2 - x(k-1)^2), the risk of the
// threshold x(k); a strict new minimum below the start value n takes x(k).
SureShrinkChoice SureShrinkThreshold(std::span<const float> band, double sigma);

// One band in place: hard (|c| below the threshold becomes 0) or soft (each
// c moves toward 0 by the threshold, 0 within it). A threshold of 0 leaves
// the band. Returns the choice made.
SureShrinkChoice SureShrinkDenoise(const FloatImage& band, double sigma, Shrinkage rule);

// Every detail band of levels 1..levels of a transform by SureShrinkDenoise
// at the noise level of SureShrinkSigma; the trend stays. The thresholds
// chosen, level by level (finest first), three a level: the band with x
// high, the band with y high, the diagonal band.
struct SureShrinkResult {
  double sigma = 1.0;
  std::vector<SureShrinkChoice> bands;
};
SureShrinkResult SureShrinkImageTransform(ImagePlane& transform, int levels, Shrinkage rule);

// ----------------------------------------------------------------- 2-D form

// The fluctuations of an n by n transform (rows and columns 0..n-1, the
// trend block rows and columns below trendSide): DenoiseTheImageTransformCS
// zeroes each |c| < t; DenoiseTheImageTransformVS does the same and moves
// the others toward 0 by t. The trend block, row n and column n stay.
void DenoiseTheImageTransformCS(int n, const MatrixView& a, double t, int trendSide);
void DenoiseTheImageTransformVS(int n, const MatrixView& a, double t, int trendSide);

// The bit-plane significance thresholding of the cycle-spinning denoiser:
// the workshop's tree denoiser (ArrayDeNoiseEncode) with its last threshold
// the first halving at or below t, keeping significant coefficients in trees
// spanning `depth` levels; `descents` > 0 refines the kept values over that
// many more halvings (the second stage), else they take the middle of their
// step; `shrink` then moves them toward 0 by the last threshold. The trend
// block stays as it was. False, with the matrix untouched, when n is not a
// multiple of the trend side's power of two or trendSide < 1.
struct BitPlaneOptions {
  int depth = 1;
  int descents = 0;
  bool shrink = false;
};
bool DenoiseTheImageTransformForAverage(int n, const MatrixView& a, double t, int trendSide,
                                        const BitPlaneOptions& options);

// Cycle spinning: for each row shift a and column shift b from `first` to
// `last`, the N by N part of the source shifted by (b, a), transformed by
// the wavelet over the levels, thresholded (DenoiseTheImageTransformForAverage
// with `bitPlane`, else DenoiseTheImageTransformCS), inverted, shifted back
// and added up; `out` (the source's shape, rows of `stride`) is the mean of
// the passes, with row N and column N the source's. `afterPass(done, passes)`
// is called after each pass; when it returns false the run stops and false
// comes back, `out` then undefined.
struct CycleSpinSetup {
  WaveletChoice choice;
  int levels = 1;
  double threshold = 0.0;
  int first = 0, last = 0;  // the shift range: 0..k, or -k..k for a diagonal entry
  bool bitPlane = false;
  BitPlaneOptions options;
};
int CycleSpinPasses(const CycleSpinSetup& s);
bool CycleSpinDenoise(int n, const float* source, std::size_t stride, const CycleSpinSetup& s, std::vector<float>& out,
                      const std::function<bool(int done, int passes)>& afterPass);

// The noise level read from one level of a transform of an n by n matrix:
// |c| of the diagonal band, rows and columns n/2 .. n-1 less the last 8 of
// each (side n/2 - 8, at least 1), sorted descending; the middle value (the
// lower one for an even count) over 0.6745, or 1 when that is 0.
double DiagonalBandSigma(int n, const MatrixView& oneLevel);

// The automatic threshold of the two-dimensional denoiser for an n by n
// graph: with descents 0, sigma sqrt(2 ln n); without averaging and with
// "High SNR", sigma sqrt(4 ln n); otherwise 2 sigma sqrt(2 ln n).
double AutoDenoiseThreshold(double sigma, int n, int descents, bool average, bool highSnr);

}  // namespace keldo::wavelet
