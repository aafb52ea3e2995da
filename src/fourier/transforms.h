#pragma once
// The Fourier, sine and cosine transforms of a sampled function: a kernel
// times the graph's step, a Riemann sum of the continuous transform with
// frequency in cycles per unit of x.

#include <string>
#include <vector>

namespace keldo::fourier {

// The program's own value of pi, as its formulas and phases use it.
constexpr double kProgramPi = 3.14159265358979;

enum class DataType { Real = 1, Complex = 2 };
enum class Exponent { Negative = 4, Positive = 9 };

// The choices of the "Fourier transform" side box, coded as the box reads
// them: display kind 1 Real/Im, 2 Amp/Ph, 0 power (output class 2).
struct TransformSetup {
  DataType dataType = DataType::Real;
  int displayKind = 1;
  int outputClass = 1;
  Exponent exponent = Exponent::Negative;
  int intervalType = 1;    // 1 to 4: [-L,L]->[-A,A], [0,L]->[-A,A], [-L,L]->[0,A], [0,L]->[0,A]
  int signalInterval = 1;  // 1 signal over [-L,L], 2 over [0,L]
  std::string window = "None";
  bool endpointAveraged = false;
};

// One or two result graphs over [left, right] with the given step.
struct TransformResult {
  std::vector<double> first, second;  // N+1 values each; second empty for a power spectrum
  double left = 0.0, right = 0.0, step = 0.0;
};

// The time windows over A[0..N]: centred (v = (i - N/2)/(N/2)) for the
// Fourier transform, one-sided (v = i/N) for the sine and cosine transforms.
// "None" or an unknown name leaves A as it is.
void TimeFilter(const std::string& name, int n, double* a);
void TimeFilter2(const std::string& name, int n, double* a);

// Magnitude and phase in (-pi, pi] for i = 0..N, in place.
void AMPPH(int n, double* x, double* y);
// The largest |A[i]| for i = 0..N.
double FUNMX(int n, const double* a);

// The "Fourier transform" of y[0..N] (and the imaginary graph for complex
// data) sampled over [a, b].
TransformResult FourierTransformOf(int n, const double* re, const double* im, double a, double b,
                                   const TransformSetup& setup);

// The sine (kind 5) or cosine (kind 6) transform of y[0..N] over [a, b],
// through the one-sided window.
TransformResult FourierTrigTransformOf(int n, const double* y, double a, double b, int kind, const std::string& window);

}  // namespace keldo::fourier
