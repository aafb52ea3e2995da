#pragma once
// Circular convolution, autocorrelation and pair correlation of graphs
// through the FFT:
//   convolution       r[j] = dx * sum_m y1[m] y2[(j - m) mod N]
//   pair correlation  the same with y1[m] replaced by y1[-m mod N]
//   autocorrelation   r[j] = dx * sum_m y1[m] y1[(m + j) mod N]
// with the origin moved to the middle for a symmetric interval.

#include <vector>

namespace keldo::fourier {

struct ConvolveSetup {
  int kind = 1;                 // 1 convolution, 2 autocorrelation, 3 pair correlation
  bool normalize = false;       // divide by N and by both norms instead of dx/N
  bool divideByLength = false;  // divide by b - a
  bool symmetric = false;       // the first graph starts below 0: origin in the middle
  double dx = 1.0;
  double length = 1.0;          // b - a
};

// The result, N+1 values with r[N] = r[0]. `second` is not read for an
// autocorrelation.
std::vector<double> ConvolveGraphs(int n, const double* first, const double* second, const ConvolveSetup& setup);

}  // namespace keldo::fourier
