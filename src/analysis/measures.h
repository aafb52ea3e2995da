#pragma once
// Measurements of sampled graphs over the part inside a display window:
// norms, differences, integrals, scalar products, the derivative, the
// statistics report, histogram, energy, rearrangement and quantization.

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace keldo::analysis {

// A graph's samples y[0..N] at a + i*dx, and the window [xl, xr].
struct Sampled {
  const double* y = nullptr;
  int n = 0;
  double a = 0.0, dx = 0.0;
};

// A sample at x counts when xl - dx/2 < x < xr + dx/2; x runs by adding dx
// to a, as the commands do.
std::vector<bool> InWindow(const Sampled& g, double xl, double xr);

double NORM(double x, double p);
double ROOT(double x, double p);
// x / y with flag 'N', or 0 with flag 'Z' when y is 0.
double RNorm(double x, double y, char& flag);

enum class NormKind { Sup, Var, Power };

// The norm of y (or of y1 - y2 when y2 is given, read with y1's indices).
double NormOf(const Sampled& g, const double* minus, const std::vector<bool>& inside, NormKind kind, double p);

double Integral(const Sampled& g, const std::vector<bool>& inside);
double ScalarProduct(const Sampled& g, const double* other, const std::vector<bool>& inside);
// The five-point derivative with one-sided formulas at both ends.
std::vector<double> Derivative(const Sampled& g);

// The statistics report lines; empty when fewer than 2 samples count.
struct Statistics {
  double maximum = 0, minimum = 0, mean = 0, variance = 0, stdDev = 0, energy = 0, dimension = 0;
  int count = 0;
};
bool ComputeStatistics(const Sampled& g, const std::vector<bool>& inside, Statistics& s);
// The same over any list of values; false when fewer than 2.
bool StatisticsOf(std::span<const double> values, Statistics& s);
// The report, the count under `countLabel`.
std::string StatisticsReport(const Statistics& s, const char* countLabel = "Number of samples = ");

// A histogram of Q bins: with the sign over [-m, m], else of |y| over [0, m];
// zeros left out unless counted. `entropy` is sum -p log2 p.
std::vector<double> Histogram(const Sampled& g, int levels, bool signBit, bool zeros, double& entropy, double& max);
// The same over any list of values.
std::vector<double> HistogramOf(std::span<const double> values, int levels, bool signBit, bool zeros, double& entropy,
                                double& max);
// The relative frequencies of bins of width max/levels: 2*levels bins over
// [-max, max] with the sign, `levels` over [0, max] without; one more
// entry, always 0, closes the graph.
std::vector<double> FrequencyHistogramOf(std::span<const double> values, int levels, bool signBit, bool zeros,
                                         double& entropy, double& max);

std::vector<double> EnergyGraph(const Sampled& g, bool percentage);
std::vector<double> NonIncreasingRearrangement(const Sampled& g);
std::vector<double> QuantizeXBit(const Sampled& g, int bits);

// ------------------------------------------------------------ in the plane

// A graph of the plane: samples v[i*stride + j] at x = j*h + a, y = i*h + a,
// for rows i and columns j in 0..n.
struct Plane {
  const float* v = nullptr;
  std::size_t stride = 0;
  int n = 0;
  float a = 0.0f, h = 0.0f;
  double At(int i, int j) const { return v[static_cast<std::size_t>(i) * stride + static_cast<std::size_t>(j)]; }
};

// The rows i0..i1 and columns j0..j1 whose samples lie in a view window,
// each bound allowing half a step: xl - h/2 <= x <= xr + h/2, and the same
// in y. Empty when no row or no column does.
struct PlaneRange {
  int i0 = 0, i1 = -1, j0 = 0, j1 = -1;
  bool Empty() const { return i1 < i0 || j1 < j0; }
  long long Count() const { return Empty() ? 0 : static_cast<long long>(i1 - i0 + 1) * (j1 - j0 + 1); }
};
PlaneRange InPlaneWindow(const Plane& g, float xl, float xr, float yl, float yh);

// Norms of a graph, or of its difference from `minus` (read with the same
// indices), over the window: Sup the largest magnitude; Var the sup plus the
// sum of the magnitudes of the differences of neighbours along rows and
// along columns, over N; Power (h^2 * sum |v|^p)^(1/p) over rows and columns
// 0..N-1, as in one variable.
double PlaneNorm(const Plane& g, const float* minus, const PlaneRange& r, NormKind kind, double p);
// h^2 times the sum of the samples, weighted 1/2 on the window's first and
// last row and again on its first and last column (the trapezoid rule in
// each direction).
double PlaneIntegral(const Plane& g, const PlaneRange& r);
// h^2 times the sum of f*g over rows and columns 0..N-1 in the window.
double PlaneScalarProduct(const Plane& g, const float* other, const PlaneRange& r);
// The sums of f^2 and of (f - g)^2 over the window, for the SNR.
void PlaneSignalAndNoise(const Plane& g, const float* other, const PlaneRange& r, double& signal, double& noise);
// The samples in the window, row by row.
std::vector<double> PlaneValues(const Plane& g, const PlaneRange& r);

// "SNR", a line end and 10*log10(signal/noise); the label alone when the
// quotient is not a number. "PSNR" likewise for 10*log10(65025/mse).
std::string SafeSNR(double signal, double noise);
std::string SafePSNR(double mse);

}  // namespace keldo::analysis
