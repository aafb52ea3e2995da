#pragma once
// Wavelet series, denoising, and the commands that change a graph's number
// of points through one wavelet level.

#include <functional>
#include <string>
#include <vector>

namespace keldo::wavelet {

// The family and order the side box chose: family 1 Daubechies, 2 Haar,
// 3 Coiflets, 4 Other; `code` as the transforms take it.
struct WaveletChoice {
  int family = 1;
  int code = 1;
  bool symmetric = false;
};

// Checks a side box's wavelet choice in the order the commands report:
// family 0 (none chosen) 13; levels outside 1..m 21; a Daubechies order that
// is not even in 4..20 14, or below 8 when symmetric 80; a coiflet order
// that is not a multiple of 6 in 6..30 15; an "Other" name unknown or with
// levels above m - 2 21. `order` reads the family's order field and is
// asked only for families 1 and 3. Returns 0 when the choice stands.
int CheckWaveletChoice(int family, double levels, int m, bool symmetric, const std::function<double()>& order,
                       const std::string& otherName, WaveletChoice& choice, int& levelsOut);

// The transform (plain or packet) of n = 2^m points over `levels` levels,
// and its inverse.
void ForwardTransform(const WaveletChoice& w, bool packet, int n, double* x, int levels);
void InverseTransform(const WaveletChoice& w, bool packet, int n, double* x, int m, int levels);

// The code of an "Other" name, 0 for none.
int GetOtherType(const std::string& name);
// The names in the order the list shows them.
const std::vector<std::string>& WaveletFilterLabels();

// The largest |A[i]|, i = 0..n, or 1 when that is 0; the same over
// first..last.
double WaveletMaximum(int n, const double* a);
double WaveletMaximum2(int first, int last, const double* a);

// Keys |X[i]| (or -1 - i for a zero) over i = 0..N-1 with key[N] = -1 - N,
// sorted descending with their indices.
void SortedMagnitudes(int n, const double* x, std::vector<double>& keys, std::vector<int>& idx);
// Series type 1: keeps the c largest coefficients.
void KeepHighest(int n, double* x, int c);
// Series type 2: keeps the fewest largest that hold the energy fraction e;
// returns the number kept.
int KeepEnergy(int n, double* x, double e);
// Series type 4: keeps the first c coefficients in transform order.
void KeepFirst(int n, double* x, int c);

// Series type 3: thresholds relative to the largest magnitude (one for all,
// or the trend's and the fluctuations'), with or without quantizing.
struct ThresholdSetup {
  double first = 0.0;         // T or T1
  double second = -1.0;       // T2, below 0 when there is one threshold
  bool quantize = true;
  bool signBit = true;
  bool map = false;
  int trendLength = 0;        // N / 2^L
  int levels = 1;
};
struct ThresholdResult {
  int count = 0;
  double bitsPerPoint = 0.0;
  std::vector<double> map;    // N+1 values when asked for
};
ThresholdResult ApplyThresholds(int n, double* x, const ThresholdSetup& setup);

// The bin of x among bins of the width from low: floor((x - low)/width + 0.5)
// truncated, 0 when the width is not positive.
int NQuant(double x, double low, double width);
// Entropy estimate in bits per point of the quantized bands.
double CompressionRatio1(double t, int n, int kind, const double* a, double max, int levels);
double CompressionRatio2(double t1, double t2, int n, int kind, const double* a, double max1, double max2, int levels);

// Denoising by soft thresholding of the fluctuations from N/2^L up, at the
// universal threshold sqrt(2 ln N) sigma, sigma from the finest band.
double NoiseSigma(int n, const double* transformed);
void SoftThreshold(double* x, int first, int last, double t);
// Circular shift of x[0..n-1] by s, right for positive s, through w.
void ShiftVector(int n, int s, double* x, double* w);
// Averaged over the 127 shifts -63..63. `progress` is told the percent
// before each shift and may return false to stop: then false comes back
// and y is unchanged.
bool DenoiseAveraged(const WaveletChoice& w, int n, int m, int levels, double t, std::vector<double>& y,
                     const std::function<bool(int percent)>& progress);
void SureShrinkDenoise(double* x, int count, double sigma);

// x when it lies outside the band [low*m, high*m] around the median m (the
// band's ends swapped for a negative median), else m: a sample near its
// window's median is smoothed, one far from it (an edge, a lone spike) kept.
// The one-dimensional form's band is 5 % either way (0.95, 1.05), the
// images' 10 % (0.9, 1.1).
double AdaptiveMedianValue(double x, double m, double low, double high);
double AdaptiveMedianValue(double x, double m);
std::vector<double> MedianDenoise(int n, const double* y, bool adaptive);

// Halves or doubles the number of points.
std::vector<double> Downsample(int n, const double* y);
std::vector<double> HaarInterpolate(int n, int m, const double* y);
std::vector<double> DD4and2Interpolate(int n, int m, const double* y);

}  // namespace keldo::wavelet
