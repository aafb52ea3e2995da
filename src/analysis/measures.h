#pragma once
// Measurements of sampled graphs over the part inside a display window:
// norms, differences, integrals, scalar products, the derivative, the
// statistics report, histogram, energy, rearrangement and quantization.

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
std::string StatisticsReport(const Statistics& s);

// A histogram of Q bins: with the sign over [-m, m], else of |y| over [0, m];
// zeros left out unless counted. `entropy` is sum -p log2 p.
std::vector<double> Histogram(const Sampled& g, int levels, bool signBit, bool zeros, double& entropy, double& max);

std::vector<double> EnergyGraph(const Sampled& g, bool percentage);
std::vector<double> NonIncreasingRearrangement(const Sampled& g);
std::vector<double> QuantizeXBit(const Sampled& g, int bits);

}  // namespace keldo::analysis
