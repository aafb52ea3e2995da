// The Fourier routines of the module: the kernels as they are, and the
// one- and two-dimensional commands with the forms' scalings.

#include <algorithm>
#include <cmath>

#include "fourier/convolve.h"
#include "fourier/fft.h"
#include "fourier/fourier2d.h"
#include "fourier/series.h"
#include "fourier/transforms.h"
#include "python/arrays.h"
#include "python/bindings.h"

namespace keldo::python {
namespace {

using fourier::KernelVector;
using fourier::TrigTables;

// The smallest size the kernels' tables are built for.
constexpr int kSmallestExponent = 3;

py::array_t<std::complex<double>> ComplexKernel(const py::object& data) {
  const std::vector<std::complex<double>> z = ComplexVector(data, "z");
  const int m = PowerOfTwoExponent(z.size(), kSmallestExponent, kLargestExponent1D, "z");
  const int n = 1 << m;
  KernelVector<double> x(static_cast<std::size_t>(n) + 5, 0.0), y(static_cast<std::size_t>(n) + 5, 0.0);
  for (int i = 0; i < n; ++i) {
    x[static_cast<std::size_t>(i)] = z[static_cast<std::size_t>(i)].real();
    y[static_cast<std::size_t>(i)] = z[static_cast<std::size_t>(i)].imag();
  }
  {
    py::gil_scoped_release release;
    const TrigTables tables(n);
    fourier::ComplexFFT(x.data(), y.data(), tables.sine.data(), tables.tan.data(), n, m);
  }
  return ToComplexArray(x.data(), y.data(), static_cast<std::size_t>(n));
}

py::array_t<std::complex<double>> InverseComplexKernel(const py::object& data) {
  std::vector<std::complex<double>> z = ComplexVector(data, "z");
  const int m = PowerOfTwoExponent(z.size(), kSmallestExponent, kLargestExponent1D, "z");
  const int n = 1 << m;
  // The negative exponent through the positive kernel: conj F+ conj.
  KernelVector<double> x(static_cast<std::size_t>(n) + 5, 0.0), y(static_cast<std::size_t>(n) + 5, 0.0);
  for (int i = 0; i < n; ++i) {
    x[static_cast<std::size_t>(i)] = z[static_cast<std::size_t>(i)].real();
    y[static_cast<std::size_t>(i)] = -z[static_cast<std::size_t>(i)].imag();
  }
  {
    py::gil_scoped_release release;
    const TrigTables tables(n);
    fourier::ComplexFFT(x.data(), y.data(), tables.sine.data(), tables.tan.data(), n, m);
  }
  for (int i = 0; i < n; ++i) {
    x[static_cast<std::size_t>(i)] /= n;
    y[static_cast<std::size_t>(i)] = -y[static_cast<std::size_t>(i)] / n;
  }
  return ToComplexArray(x.data(), y.data(), static_cast<std::size_t>(n));
}

py::array_t<std::complex<double>> RealKernel(const py::object& data) {
  const std::vector<double> v = RealVector(data, "x");
  const int m = PowerOfTwoExponent(v.size(), kSmallestExponent, kLargestExponent1D, "x");
  const int n = 1 << m;
  KernelVector<double> x(static_cast<std::size_t>(n) + 5, 0.0), y(static_cast<std::size_t>(n) + 5, 0.0);
  std::copy(v.begin(), v.end(), x.begin());
  {
    py::gil_scoped_release release;
    const TrigTables tables(n);
    fourier::RealFFT(n, x.data(), y.data(), tables.sine.data(), tables.tan.data(), m - 1);
  }
  return ToComplexArray(x.data(), y.data(), static_cast<std::size_t>(n / 2 + 1));
}

// The inverse kernel needs M - 6 >= 0.
constexpr int kSmallestInverseExponent = 6;

py::array_t<double> InverseRealKernel(const py::object& data) {
  const std::vector<std::complex<double>> z = ComplexVector(data, "z");
  if (z.size() < 2) ThrowValue("z must hold N/2 + 1 values, N a power of two");
  const int m = PowerOfTwoExponent(2 * (z.size() - 1), kSmallestInverseExponent, kLargestExponent1D, "2 (len(z) - 1)");
  const int n = 1 << m;
  KernelVector<double> x(static_cast<std::size_t>(n) + 5, 0.0), y(static_cast<std::size_t>(n) + 5, 0.0);
  for (int k = 0; k <= n / 2; ++k) {
    x[static_cast<std::size_t>(k)] = z[static_cast<std::size_t>(k)].real();
    y[static_cast<std::size_t>(k)] = z[static_cast<std::size_t>(k)].imag();
  }
  {
    py::gil_scoped_release release;
    const TrigTables tables(n);
    fourier::RealInverseFFT(n, m - 6, x.data(), y.data(), tables.sine.data(), tables.tan.data());
  }
  for (int i = 0; i < n; ++i) x[static_cast<std::size_t>(i)] /= n;
  return ToArray(x.data(), static_cast<std::size_t>(n));
}

py::array_t<double> SineKernel(const py::object& data) {
  const std::vector<double> v = RealVector(data, "x");
  if (v.empty()) ThrowValue("x must hold N + 1 values, N a power of two");
  const int m = PowerOfTwoExponent(v.size() - 1, kSmallestInverseExponent, kLargestExponent1D, "len(x) - 1");
  const int n = 1 << m;
  KernelVector<double> x(static_cast<std::size_t>(n) + 5, 0.0), y(static_cast<std::size_t>(n) + 5, 0.0);
  std::copy(v.begin(), v.end(), x.begin());
  {
    py::gil_scoped_release release;
    const TrigTables tables(n);
    fourier::SineTransformCore(n, x.data(), y.data(), tables.sine.data(), tables.tan.data(), m - 6, tables.cosConstant);
  }
  return ToArray(x.data(), static_cast<std::size_t>(n) + 1);
}

py::array_t<double> CosineKernel(const py::object& data) {
  const std::vector<double> v = RealVector(data, "x");
  const int m = PowerOfTwoExponent(v.size(), kSmallestInverseExponent, kLargestExponent1D, "x");
  const int n = 1 << m;
  KernelVector<double> x(static_cast<std::size_t>(n) + 5, 0.0), y(static_cast<std::size_t>(n) + 5, 0.0);
  std::copy(v.begin(), v.end(), x.begin());
  {
    py::gil_scoped_release release;
    const TrigTables tables(n);
    fourier::CosineTransformCore(n, x.data(), y.data(), tables.sine.data(), tables.tan.data(), m - 6, tables.cosConstant);
  }
  return ToArray(x.data(), static_cast<std::size_t>(n));
}

// A graph of N + 1 samples, N a power of two: its N.
int GraphIntervals(const std::vector<double>& y, const char* name, int lowest = kSmallestInverseExponent) {
  if (y.empty()) ThrowValue(std::string(name) + " must hold N + 1 values, N a power of two");
  return 1 << PowerOfTwoExponent(y.size() - 1, lowest, kLargestExponent1D, (std::string("len(") + name + ") - 1").c_str());
}

void CheckInterval(double a, double b) {
  if (!std::isfinite(a) || !std::isfinite(b) || !(a < b)) ThrowCatalogue(4);
}

bool KnownWindow(const std::string& name) {
  for (const char* w : {"None", "Blackman", "Gauss", "Hamming", "hanning"})
    if (name == w) return true;
  return false;
}

py::tuple FourierTransformCommand(const py::object& values, double a, double b, const py::object& imag,
                                  const std::string& output, int exponent, int intervalType, const std::string& window,
                                  bool endpointAveraged) {
  const std::vector<double> re = RealVector(values, "y");
  const int n = GraphIntervals(re, "y");
  std::vector<double> im;
  if (!imag.is_none()) {
    im = RealVector(imag, "imag");
    if (im.size() != re.size()) ThrowCatalogue(2);
  }
  CheckInterval(a, b);
  if (exponent != 1 && exponent != -1) ThrowValue("exponent must be -1 or +1");
  if (intervalType < 1 || intervalType > 4) ThrowValue("interval_type must be 1, 2, 3 or 4");
  if (!KnownWindow(window)) ThrowValue("window must be None, Blackman, Gauss, Hamming or hanning");
  fourier::TransformSetup setup;
  setup.dataType = im.empty() ? fourier::DataType::Real : fourier::DataType::Complex;
  const std::string kind = Folded(output);
  if (kind == "realim" || kind == "realimag") setup.displayKind = 1;
  else if (kind == "ampph" || kind == "amplitudephase") setup.displayKind = 2;
  else if (kind == "power" || kind == "powersp") {
    setup.displayKind = 0;
    setup.outputClass = 2;
  } else ThrowValue("output must be 'real/im', 'amp/ph' or 'power'");
  setup.exponent = exponent < 0 ? fourier::Exponent::Negative : fourier::Exponent::Positive;
  setup.intervalType = intervalType;
  setup.signalInterval = (intervalType == 1 || intervalType == 3) ? 1 : 2;
  setup.window = window;
  setup.endpointAveraged = endpointAveraged;
  fourier::TransformResult r;
  {
    py::gil_scoped_release release;
    r = fourier::FourierTransformOf(n, re.data(), im.empty() ? nullptr : im.data(), a, b, setup);
  }
  std::vector<double> f(static_cast<std::size_t>(n) + 1);
  for (int i = 0; i <= n; ++i) f[static_cast<std::size_t>(i)] = r.left + i * r.step;
  py::object second = r.second.empty() ? py::object(py::none()) : py::object(ToArray(r.second));
  return py::make_tuple(ToArray(f), ToArray(r.first), second);
}

py::tuple TrigTransformCommand(const py::object& values, double a, double b, const std::string& kind,
                               const std::string& window) {
  const std::vector<double> y = RealVector(values, "y");
  const int n = GraphIntervals(y, "y");
  CheckInterval(a, b);
  const std::string k = Folded(kind);
  if (k != "sine" && k != "cosine") ThrowValue("kind must be 'sine' or 'cosine'");
  if (!KnownWindow(window)) ThrowValue("window must be None, Blackman, Gauss, Hamming or hanning");
  fourier::TransformResult r;
  {
    py::gil_scoped_release release;
    r = fourier::FourierTrigTransformOf(n, y.data(), a, b, k == "sine" ? 5 : 6, window);
  }
  std::vector<double> f(static_cast<std::size_t>(n) + 1);
  for (int i = 0; i <= n; ++i) f[static_cast<std::size_t>(i)] = r.left + i * r.step;
  return py::make_tuple(ToArray(f), ToArray(r.first));
}

fourier::SeriesKind SeriesKindOf(const std::string& kind) {
  const std::string k = Folded(kind);
  if (k == "fourier") return fourier::SeriesKind::Fourier;
  if (k == "sine") return fourier::SeriesKind::Sine;
  if (k == "cosine") return fourier::SeriesKind::Cosine;
  ThrowValue("kind must be 'fourier', 'sine' or 'cosine'");
}

// The filter of a series as the one-dimensional form sets it up: the
// selecting filters run on the coefficients, Diffraction weighs the cosine
// and sine passes, the others give weights.
fourier::SeriesFilter SeriesFilterOf(const std::string& name, fourier::SeriesKind kind, int n, int h,
                                     const fourier::FilterParameters& prm) {
  using Mode = fourier::SeriesFilter::Mode;
  fourier::SeriesFilter filter;
  if (name.empty() || name == "None") return filter;
  const auto& names = fourier::FrequencyFilterNames();
  if (std::find(names.begin(), names.end(), name) == names.end() || name == "User")
    ThrowValue("unknown filter '" + name + "'");
  if (name == "Riesz" && !(prm.p >= 0)) ThrowCatalogue(8);
  if (name == "Poisson" && !(prm.p >= 0 && prm.p < 1)) ThrowCatalogue(7);
  if (name == "Kaiser" && !(prm.p > 0)) ThrowCatalogue(9);
  const bool waves = name == "Cos" || name == "Sinc" || name == "Heat" || name == "FresnelCos" || name == "FresnelSin" ||
                     name == "Diffraction";
  if (waves && !(prm.p >= 0 && prm.q >= 0)) ThrowCatalogue(8);
  if (name == "Energy percentage" && !(prm.p >= 0 && prm.p <= 1)) ThrowCatalogue(18);
  if (name == "Threshold" && !(prm.p >= 0 && prm.p <= 1)) ThrowCatalogue(19);
  if (name == "Diffraction") {
    filter.mode = Mode::Diffraction;
    fourier::FilterWeights("FresnelCos", h, prm, filter.weights);
    fourier::FilterWeights("FresnelSin", h, prm, filter.sineWeights);
  } else if (name == "Highest magnitude" || name == "Energy percentage" || name == "Threshold") {
    filter.mode = Mode::Selects;
    filter.select = [=](double* cx, double* cy, fourier::SelectionReport& report) {
      if (name == "Highest magnitude") {
        fourier::FSerHighMag(kind, n, h, cx, cy);
        return true;
      }
      if (name == "Energy percentage") return fourier::FSerEnerPerc(kind, n, prm.p, cx, cy, report);
      return fourier::FSerThreshold(kind, n, prm.p, cx, cy, report);
    };
  } else {
    filter.mode = Mode::Weights;
    fourier::FilterWeights(name, h, prm, filter.weights);
  }
  for (double w : filter.weights)
    if (!std::isfinite(w)) ThrowValue("the filter's weights are not finite (harmonics 0 divides by zero)");
  for (double w : filter.sineWeights)
    if (!std::isfinite(w)) ThrowValue("the filter's weights are not finite (harmonics 0 divides by zero)");
  return filter;
}

py::array_t<double> FourierSeriesCommand(const py::object& values, int harmonics, const std::string& kind,
                                         bool averaged, const std::string& filterName, double p, double q, double b) {
  const std::vector<double> y = RealVector(values, "y");
  const int n = GraphIntervals(y, "y");
  const fourier::SeriesKind k = SeriesKindOf(kind);
  if (harmonics < 0 || harmonics > fourier::MaxHarmonic(k, n)) ThrowCatalogue(29);
  fourier::FilterParameters prm;
  prm.p = p;
  prm.q = q;
  prm.b = b;
  const fourier::SeriesFilter filter = SeriesFilterOf(filterName, k, n, harmonics, prm);
  fourier::SeriesResult r;
  {
    py::gil_scoped_release release;
    r = fourier::FourierSeriesOf(n, y.data(), k, harmonics, averaged, filter);
  }
  if (!r.ok) ThrowValue("the filter refused its parameters");
  return ToArray(r.values);
}

py::array_t<double> ConvolveCommand(int kind, const py::object& first, const py::object& second, double dx,
                                    bool normalize, bool symmetric, double length) {
  const std::vector<double> f = RealVector(first, "y1");
  const int n = GraphIntervals(f, "y1");
  std::vector<double> g = f;
  if (kind != 2) {
    g = RealVector(second, "y2");
    if (g.size() != f.size()) ThrowCatalogue(2);
  }
  if (!std::isfinite(dx) || !(dx > 0)) ThrowValue("dx must be positive");
  fourier::ConvolveSetup setup;
  setup.kind = kind;
  setup.normalize = normalize;
  setup.symmetric = symmetric;
  setup.dx = dx;
  setup.divideByLength = length > 0;
  setup.length = length > 0 ? length : 1.0;
  std::vector<double> r;
  {
    py::gil_scoped_release release;
    r = fourier::ConvolveGraphs(n, f.data(), g.data(), setup);
  }
  return ToArray(r);
}

// --- Two dimensions: single precision planes of (N+1) by (N+1).

struct SquarePlane {
  int n = 0;
  bool edges = false;  // the caller gave the (N+1)-sided matrix
  std::vector<float> v;
  fourier::Plane View() { return {v.data(), static_cast<std::size_t>(n) + 1}; }
};

SquarePlane SquarePlaneOf(const py::handle& object, const char* name, int lowest) {
  const RealMatrix m = RealMatrixOf(object, name);
  if (m.rows != m.columns) ThrowValue(std::string(name) + " must be square");
  SquarePlane p;
  const bool powerSide = (m.rows & (m.rows - 1)) == 0;
  p.edges = !powerSide;
  const int side = powerSide ? m.rows : m.rows - 1;
  p.n = 1 << PowerOfTwoExponent(static_cast<std::size_t>(side), lowest, 12, (std::string("the side of ") + name).c_str());
  const std::size_t s = static_cast<std::size_t>(p.n) + 1;
  p.v.assign(s * s, 0.0f);
  for (int r = 0; r < m.rows; ++r)
    for (int c = 0; c < m.columns; ++c) p.v[static_cast<std::size_t>(r) * s + static_cast<std::size_t>(c)] = static_cast<float>(m.At(r, c));
  return p;
}

py::array_t<double> PlaneOut(const SquarePlane& p) {
  const int side = p.edges ? p.n + 1 : p.n;
  const std::size_t s = static_cast<std::size_t>(p.n) + 1;
  py::array_t<double> out({static_cast<py::ssize_t>(side), static_cast<py::ssize_t>(side)});
  double* o = out.mutable_data();
  for (int r = 0; r < side; ++r)
    for (int c = 0; c < side; ++c) *o++ = p.v[static_cast<std::size_t>(r) * s + static_cast<std::size_t>(c)];
  return out;
}

py::array_t<std::complex<double>> Fourier2DCommand(const py::object& data, double width, const py::object& imag) {
  SquarePlane re = SquarePlaneOf(data, "a", kSmallestExponent);
  SquarePlane im;
  if (!imag.is_none()) {
    im = SquarePlaneOf(imag, "imag", kSmallestExponent);
    if (im.n != re.n || im.edges != re.edges) ThrowCatalogue(2);
  } else {
    im = re;
    std::fill(im.v.begin(), im.v.end(), 0.0f);
  }
  if (!std::isfinite(width) || !(width > 0)) ThrowValue("width must be positive");
  {
    py::gil_scoped_release release;
    if (imag.is_none()) fourier::Fourier2DReal(re.n, static_cast<float>(width), re.View(), im.View());
    else fourier::Fourier2DComplex(re.n, static_cast<float>(width), re.View(), im.View());
    fourier::WrapEdges(re.n, re.View());
    fourier::WrapEdges(re.n, im.View());
  }
  const int side = re.edges ? re.n + 1 : re.n;
  const std::size_t s = static_cast<std::size_t>(re.n) + 1;
  py::array_t<std::complex<double>> out({static_cast<py::ssize_t>(side), static_cast<py::ssize_t>(side)});
  std::complex<double>* o = out.mutable_data();
  for (int r = 0; r < side; ++r)
    for (int c = 0; c < side; ++c) {
      const std::size_t at = static_cast<std::size_t>(r) * s + static_cast<std::size_t>(c);
      *o++ = {re.v[at], im.v[at]};
    }
  return out;
}

py::array_t<double> Convolve2DCommand(int kind, const py::object& first, const py::object& second, double width) {
  SquarePlane f = SquarePlaneOf(first, "a", kSmallestExponent);
  SquarePlane g = f;
  if (kind != 2) {
    g = SquarePlaneOf(second, "b", kSmallestExponent);
    if (g.n != f.n || g.edges != f.edges) ThrowCatalogue(2);
  }
  if (!std::isfinite(width) || !(width > 0)) ThrowValue("width must be positive");
  SquarePlane out = f;
  {
    py::gil_scoped_release release;
    const std::size_t stride = static_cast<std::size_t>(f.n) + 1;
    if (kind == 2) fourier::AutoCorrelation2D(f.n, static_cast<float>(width), f.View(), out.v, stride);
    else fourier::Convolution2D(f.n, static_cast<float>(width), f.View(), g.View(), kind == 3, out.v, stride);
  }
  return PlaneOut(out);
}

}  // namespace

void BindFourier(py::module_& m) {
  m.def("fft", &ComplexKernel, py::arg("z"),
        R"(Complex FFT kernel, no normalization, positive exponent.

Z[k] = sum_j z[j] exp(+2 pi i j k / N), k = 0..N-1, for N = len(z) a power
of two from 8 to 2^24. This is N * numpy.fft.ifft(z).)");
  m.def("inverse_fft", &InverseComplexKernel, py::arg("Z"),
        R"(Inverse of fft: z[j] = (1/N) sum_k Z[k] exp(-2 pi i j k / N).

This is numpy.fft.fft(Z) / N, so inverse_fft(fft(z)) == z.)");
  m.def("real_fft", &RealKernel, py::arg("x"),
        R"(Real FFT kernel with no normalization: the N/2 + 1 values
Z[k] = sum_{j<N} x[j] exp(+2 pi i j k / N), k = 0..N/2, for real x of N = 2^M
points (8 <= N <= 2^24), as the one-dimensional form's transform computes
them before it scales by the step. The exponent is positive, so this is
numpy.conj(numpy.fft.rfft(x)); Im Z[0] = Im Z[N/2] = 0.)");
  m.def("inverse_real_fft", &InverseRealKernel, py::arg("Z"),
        R"(Real signal from a half spectrum Z[0..N/2] (N >= 64):
x[j] = (1/N) sum_{k<N} Z[k] exp(-2 pi i j k / N) with Z[N-k] = conj(Z[k]).
inverse_real_fft(real_fft(x)) == x.)");
  m.def("sine_transform", &SineKernel, py::arg("x"),
        R"(Sine transform kernel of x[0..N] (N + 1 values, N = 2^M >= 64):
X[k] = sum_{j=1}^{N-1} x[j] sin(pi j k / N), k = 0..N; x[0] and x[N] are not
read and X[0] = X[N] = 0. X[1:N] is scipy.fft.dst(x[1:N], type=1) / 2.)");
  m.def("cosine_transform", &CosineKernel, py::arg("x"),
        R"(Cosine transform kernel of x[0..N-1] (N = 2^M >= 64):
X[k] = sum_{j=0}^{N-1} x[j] cos(pi j k / N), k = 0..N-1.)");
  m.def("fourier_transform", &FourierTransformCommand, py::arg("y"), py::arg("a") = -0.5, py::arg("b") = 0.5,
        py::arg("imag") = py::none(), py::arg("output") = "real/im", py::arg("exponent") = -1,
        py::arg("interval_type") = 1, py::arg("window") = "None", py::arg("endpoint_averaged") = false,
        R"(The one-dimensional form's Fourier transform of a graph.

y holds the N + 1 samples of a graph over [a, b] (N = 2^M >= 64); imag, when
given, the imaginary part. The result is a Riemann sum of the continuous
transform with frequency in cycles per unit of x:
  F(f_k) = dx sum_{j<N} y[j] exp(exponent * 2 pi i f_k t_j),  dx = (b - a)/N,
on the N + 1 frequencies f_k = left + k / (b - a), k = 0..N, where
interval_type 1 ([-L,L]->[-A,A]) and 2 ([0,L]->[-A,A]) give left = -N/(2(b-a))
and 3, 4 give left = 0; types 1 and 3 take the signal's origin in the middle
of the interval. output: 'real/im' (real and imaginary parts), 'amp/ph'
(magnitude and phase) or 'power' (|F|^2, second part None). window: None,
Blackman, Gauss, Hamming or hanning on the real part; endpoint_averaged
replaces y[0] by (y[0] + y[N])/2.

Returns (frequencies, first, second).)");
  m.def("trig_transform", &TrigTransformCommand, py::arg("y"), py::arg("a") = 0.0, py::arg("b") = 1.0,
        py::arg("kind") = "sine", py::arg("window") = "None",
        R"(The one-dimensional form's sine or cosine transform of a graph y[0..N]
over [a, b]: 2 dx times the kernel (the cosine with the trapezoid ends
y[0]/2 and y[N]/2), at frequencies k / (2 (b - a)), k = 0..N.
Returns (frequencies, values).)");
  m.def("fourier_series", &FourierSeriesCommand, py::arg("y"), py::arg("harmonics"), py::arg("kind") = "fourier",
        py::arg("averaged") = false, py::arg("filter") = "", py::arg("p") = 0.0, py::arg("q") = 0.0,
        py::arg("b") = 1.0,
        R"(Partial sum of the Fourier (harmonics <= N/2), sine or cosine
(harmonics <= N) series of a graph y[0..N], as the one-dimensional form's
series commands compute it: the discrete spectrum truncated at the harmonic,
weighed or selected by the filter, and transformed back; N + 1 values.

filter: '' (none), a weighting filter (hanning, Hamming, Cesaro, Cos, Sinc,
Heat, Gauss, Kaiser, DlVP, Blackman, Riesz, Poisson, FresnelCos, FresnelSin,
Diffraction) with parameters p, q and the interval's right end b, or a
selection ('Highest magnitude', 'Energy percentage' with fraction p,
'Threshold' with relative threshold p). averaged: "Periodic, endpoint
averaged".)");
  m.def(
      "convolve",
      [](const py::object& y1, const py::object& y2, double dx, bool normalize, bool symmetric, double length) {
        return ConvolveCommand(1, y1, y2, dx, normalize, symmetric, length);
      },
      py::arg("y1"), py::arg("y2"), py::arg("dx") = 1.0, py::arg("normalize") = false, py::arg("symmetric") = false,
      py::arg("length") = 0.0,
      R"(Circular convolution of two graphs of N + 1 samples through the FFT:
r[j] = dx sum_{m<N} y1[m] y2[(j - m) mod N], r[N] = r[0]. symmetric moves the
origin to the middle (an interval starting below 0); normalize divides by N
and both norms instead; length > 0 divides by the interval's length.)");
  m.def(
      "correlate",
      [](const py::object& y1, const py::object& y2, double dx, bool normalize, bool symmetric, double length) {
        return ConvolveCommand(3, y1, y2, dx, normalize, symmetric, length);
      },
      py::arg("y1"), py::arg("y2"), py::arg("dx") = 1.0, py::arg("normalize") = false, py::arg("symmetric") = false,
      py::arg("length") = 0.0,
      R"(Pair correlation: convolve with y1[m] replaced by y1[-m mod N].)");
  m.def(
      "autocorrelate",
      [](const py::object& y, double dx, bool normalize, bool symmetric, double length) {
        return ConvolveCommand(2, y, py::none(), dx, normalize, symmetric, length);
      },
      py::arg("y"), py::arg("dx") = 1.0, py::arg("normalize") = false, py::arg("symmetric") = false,
      py::arg("length") = 0.0, R"(Autocorrelation r[j] = dx sum_m y[m] y[(m + j) mod N], r[N] = r[0].)");
  m.def("fourier_transform_2d", &Fourier2DCommand, py::arg("a"), py::arg("width") = 1.0, py::arg("imag") = py::none(),
        R"(The two-dimensional form's Fourier transform of a square matrix
(N by N or N+1 by N+1, N = 2^M >= 4; row i is y, column j is x), in single
precision:
  F[p][q] = h^2 sum_{i,j<N} a[i][j] exp(+2 pi i ((i - N/2)(p - N/2) + (j - N/2)(q - N/2)) / N)
with h = width / N: index N/2 is the origin on both sides. Row N and column
N repeat row 0 and column 0. Complex result of the input's shape.)");
  m.def(
      "convolve_2d", [](const py::object& a, const py::object& b, double width) { return Convolve2DCommand(1, a, b, width); },
      py::arg("a"), py::arg("b"), py::arg("width") = 1.0,
      R"(h^2 sum_u a(u) b(x - u) over a square of the given width (h = width/N), origin at the centre.)");
  m.def(
      "correlate_2d", [](const py::object& a, const py::object& b, double width) { return Convolve2DCommand(3, a, b, width); },
      py::arg("a"), py::arg("b"), py::arg("width") = 1.0,
      R"(h^2 sum_u a(u) b(u + x) over a square of the given width, origin at the centre.)");
  m.def(
      "autocorrelate_2d", [](const py::object& a, double width) { return Convolve2DCommand(2, a, py::none(), width); },
      py::arg("a"), py::arg("width") = 1.0, R"(The autocorrelation h^2 sum_u a(u) a(u + x), origin at the centre.)");
}

}  // namespace keldo::python
