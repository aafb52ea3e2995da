#pragma once
// Fourier transforms of square single-precision matrices and the commands
// built on them: series with harmonic limits and filters, convolution and
// correlation. A matrix has rows 0..N and columns 0..N with `stride` floats
// per row; row i is y, column j is x. The transforms read the N by N part
// and leave row N and column N to WrapEdges.
//
//   F[p][q] = h^2 sum_{i,j<N} (a[i][j] + i b[i][j])
//             exp(+2 pi i ((i - N/2)(p - N/2) + (j - N/2)(q - N/2)) / N)
//
// with h = W / N: the index N/2 is the origin on both sides.

#include <cstddef>
#include <string>
#include <vector>

namespace keldo::fourier {

// A view of one square matrix.
struct Plane {
  float* data = nullptr;
  std::size_t stride = 0;
  float* Row(int i) const { return data + static_cast<std::size_t>(i) * stride; }
  float& At(int i, int j) const { return Row(i)[j]; }
};

// Complex data in re and im; the factor h is applied on each of the two
// passes.
void Fourier2DComplex(int n, float width, const Plane& re, const Plane& im);
// Real data in re (im's input is ignored); the factor h^2 is applied once
// and half of the columns are filled by the symmetry of a real input.
void Fourier2DReal(int n, float width, const Plane& re, const Plane& im);
// Row 0 to row N and column 0 to column N: the periodic picture 0..N.
void WrapEdges(int n, const Plane& a);

// The two-dimensional frequency filters, by name.
const std::vector<std::string>& Filter2DNames();

// What FREQFILT returns besides the filtered spectrum.
constexpr int kFilterStop = -100;
constexpr int kFilterDiffraction = 9995;

// Filters the centred spectrum (index N/2 is harmonic 0). Spherical: limit1
// is H^2; rectangular: limit1 and limit2 are the column and row limits.
// `right` and `left` are the ends of the graph's interval. Returns the
// result code (0, kFilterDiffraction, or kFilterStop with `message` set to
// the catalogue number to show, 0 for none).
int FREQFILT(const std::string& name, int n, const Plane& re, const Plane& im, double limit1, double limit2,
             bool rectangular, double right, double left, double parameter, int& message);

// The Fourier series of a graph: coefficients by the real kernel, harmonics
// outside the limit zeroed, the filter applied, and summed back.
struct Series2DSetup {
  enum class Sum { None, Spherical, Rectangular } sum = Sum::None;
  int harmonic = 0;             // spherical H
  int columnLimit = 0;          // rectangular H1
  int rowLimit = 0;             // rectangular H2
  std::string filter;           // empty: unfiltered
  double parameter = 0.0;
  double right = 0.5, left = -0.5;
};
// Returns false when the filter stopped the command (message set, maybe 0).
bool FourierSeries2D(int n, const Plane& source, const Series2DSetup& setup, std::vector<float>& out,
                     std::size_t stride, int& message);

// Convolution (second graph as is) or pair correlation (second graph
// conjugated in the product) of two graphs on a square of the given width:
// h^2 sum f(u) g(x - u), or h^2 sum f(u) g(u + x) for the correlation,
// origin at the centre. out has the layout of the sources.
void Convolution2D(int n, float width, const Plane& f, const Plane& g, bool correlation, std::vector<float>& out,
                   std::size_t stride);
// The sum of squares over the N by N part.
double SumOfSquares2D(int n, const Plane& a);

// The autocorrelation of one graph.
void AutoCorrelation2D(int n, float width, const Plane& f, std::vector<float>& out, std::size_t stride);

}  // namespace keldo::fourier
