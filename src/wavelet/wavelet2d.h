#pragma once
// Wavelet and wavelet-packet transforms of a square single-precision matrix,
// rows then columns at every level, and the thresholded series built on
// them. Row i is y, column j is x; rows and columns 0..N-1 are transformed,
// row N and column N are left as they are. After L levels the trend is the
// block of rows and columns 0..N/2^L - 1; level k's fluctuations lie in the
// three blocks of side N/2^k beside its trend.

#include <cstddef>
#include <string>
#include <vector>

#include "wavelet/series.h"

namespace keldo::wavelet {

struct MatrixView {
  float* data = nullptr;
  std::size_t stride = 0;
  float* Row(int i) const { return data + static_cast<std::size_t>(i) * stride; }
};

void Transform2D(const WaveletChoice& w, bool packet, int n, const MatrixView& a, int levels);
void InverseTransform2D(const WaveletChoice& w, bool packet, int n, const MatrixView& a, int levels);

// The thresholds of a series: relative values, one for all coefficients or
// one for the trend block and one for the rest.
struct Threshold2DSetup {
  double first = 0.0;
  double second = -1.0;  // below 0: a single threshold
  bool quantize = false;
  bool signBit = false;
  bool map = false;
  int trendSide = 0;     // N / 2^L
};
struct Threshold2DResult {
  int count = 0;
  int trendCount = 0;
  double bitsPerPixel = 0.0;
  std::vector<float> map;  // the layout of the matrix, when asked for
};
// The largest |value| over the N by N part, and the trend block's and the
// rest's; each 1 when it would be 0.
double WaveletMaximum2D(int n, const MatrixView& a);
void GetWavMax2(int n, const MatrixView& a, int trendSide, double& trendMax, double& flucMax);
// Zeroes every coefficient below its threshold T = t * maximum and counts
// the others, quantized when asked. The caller has checked the values.
Threshold2DResult ApplyThresholds2D(int n, const MatrixView& a, const Threshold2DSetup& s);
// The bits of a relative threshold: round(log2(1/t) + sign bit).
int ThresholdBits(double t, bool signBit);

}  // namespace keldo::wavelet
