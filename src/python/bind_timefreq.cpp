// Spectrograms and scalograms, their inversions: the calls of the
// time-frequency forms.

#include <algorithm>
#include <cmath>

#include "fourier/spectrogram.h"
#include "python/arrays.h"
#include "python/bindings.h"
#include "wavelet/scalogram.h"
#include "wavelet/scalogram_view.h"

namespace keldo::python {
namespace {

// Signals of N + 1 samples, N from 64 to 65536 as the forms take them.
constexpr int kSmallestSignal = 6;
constexpr int kLargestSignal = 16;

int SignalIntervals(const std::vector<double>& sig) {
  if (sig.empty()) ThrowValue("x must hold N + 1 samples, N a power of two");
  return 1 << PowerOfTwoExponent(sig.size() - 1, kSmallestSignal, kLargestSignal, "len(x) - 1");
}

fourier::SpecWindow WindowOf(const std::string& name) {
  for (auto w : {fourier::SpecWindow::Blackman, fourier::SpecWindow::Gauss, fourier::SpecWindow::Hamming,
                 fourier::SpecWindow::Hanning, fourier::SpecWindow::Boxcar})
    if (Folded(std::string(fourier::SpecWindowName(w))) == Folded(name)) return w;
  ThrowValue("window must be Blackman, Gauss, Hamming, hanning or Boxcar");
}

fourier::SpectrogramShape ShapeOf(int n, int winlen, int step) {
  if (winlen < 4 || winlen > n || (winlen & (winlen - 1)) != 0)
    ThrowValue("window_length must be a power of two from 4 to N");
  if (step < 1 || step > n) ThrowValue("step must be from 1 to N");
  return fourier::SpectrogramShape::Of(n, winlen, step);
}

py::array_t<std::complex<double>> SpectrogramCommand(const py::object& data, int winlen, int step,
                                                     const std::string& window) {
  const std::vector<double> sig = RealVector(data, "x");
  const int n = SignalIntervals(sig);
  const fourier::SpectrogramShape shape = ShapeOf(n, winlen, step);
  const fourier::SpecWindow kind = WindowOf(window);
  fourier::Spectrum s;
  bool done = false;
  {
    py::gil_scoped_release release;
    done = fourier::ComputeSpectrograph(sig.data(), shape, kind, s);
  }
  if (!done) throw std::bad_alloc();
  py::array_t<std::complex<double>> out({static_cast<py::ssize_t>(shape.nrows + 1), static_cast<py::ssize_t>(shape.ncols)});
  std::complex<double>* z = out.mutable_data();
  for (std::size_t i = 0; i < shape.Cells(); ++i) z[i] = {s.re[i], s.im[i]};
  return out;
}

py::array_t<double> InvertSpectrogramCommand(const py::object& data, int n, int step, const std::string& window,
                                             int method) {
  py::array a = py::array::ensure(data);
  if (!a || a.ndim() != 2) ThrowValue("S must be a two-dimensional array");
  if (a.dtype().kind() != 'c' && a.dtype().kind() != 'f' && a.dtype().kind() != 'i')
    throw py::type_error("S must be an array of numbers");
  PowerOfTwoExponent(static_cast<std::size_t>(n), kSmallestSignal, kLargestSignal, "n");
  const int rows = static_cast<int>(a.shape(0));
  const fourier::SpectrogramShape shape = ShapeOf(n, 2 * (rows - 1), step);
  if (a.shape(1) != shape.ncols) ThrowValue("S must have n / step + 1 columns");
  if (method < 1 || method > 3) ThrowValue("method must be 1, 2 or 3");
  auto c = py::array_t<std::complex<double>, py::array::c_style | py::array::forcecast>::ensure(a);
  fourier::Spectrum s;
  s.shape = shape;
  s.re.resize(shape.Cells());
  s.im.resize(shape.Cells());
  for (std::size_t i = 0; i < shape.Cells(); ++i) {
    s.re[i] = c.data()[i].real();
    s.im[i] = c.data()[i].imag();
    if (!std::isfinite(s.re[i]) || !std::isfinite(s.im[i])) ThrowValue("S must hold finite values");
  }
  std::vector<double> result;
  bool done = false;
  {
    py::gil_scoped_release release;
    done = fourier::InvertSpectrogram(s, WindowOf(window), static_cast<fourier::InversionMethod>(method), result);
  }
  if (!done) ThrowValue("the window vanishes where the inversion divides by it");
  return ToArray(result);
}

wavelet::ScalogramSetup ScalogramSetupOf(int octaves, int voices, double width, double freq, int wavelet, double a,
                                         double b) {
  if (wavelet < 1 || wavelet > 5) ThrowValue("wavelet must be 1 (Mexican hat) to 5 (Gabor complex)");
  const auto kind = static_cast<wavelet::ScalWavelet>(wavelet);
  const wavelet::ScalogramProblem p = wavelet::CheckScalogramParameters(octaves, voices, width, freq, kind);
  if (p.message != 0) ThrowCatalogue(p.message);
  if (!std::isfinite(a) || !std::isfinite(b) || !(a < b)) ThrowCatalogue(4);
  wavelet::ScalogramSetup s;
  s.a = a;
  s.b = b;
  s.octaves = octaves;
  s.voices = voices;
  s.width = width;
  s.freq = freq;
  s.wavelet = kind;
  return s;
}

py::object ScalogramCommand(const py::object& data, int octaves, int voices, double width, double freq, int wavelet,
                            double a, double b) {
  const std::vector<double> sig = RealVector(data, "x");
  const int n = SignalIntervals(sig);
  const wavelet::ScalogramSetup setup = ScalogramSetupOf(octaves, voices, width, freq, wavelet, a, b);
  wavelet::Scalogram s;
  wavelet::ScalogramStatus status;
  const auto onRow = [](int) { return wavelet::ScalogramProgress::Continue; };
  {
    py::gil_scoped_release release;
    status = wavelet::IsRealWavelet(setup.wavelet) ? wavelet::ComputeRealScalogram(sig.data(), n, setup, onRow, s)
                                                   : wavelet::ComputeComplexScalogram(sig.data(), n, setup, onRow, s);
  }
  if (status != wavelet::ScalogramStatus::Done) ThrowCatalogue(69);
  const int rows = s.shape.nscales + 1, columns = n + 1;
  if (wavelet::IsRealWavelet(setup.wavelet)) return ToMatrix(s.re.data(), rows, columns);
  py::array_t<std::complex<double>> out({static_cast<py::ssize_t>(rows), static_cast<py::ssize_t>(columns)});
  std::complex<double>* z = out.mutable_data();
  for (std::size_t i = 0; i < s.shape.Cells(); ++i) z[i] = {s.re[i], s.im[i]};
  return out;
}

py::array_t<double> InvertScalogramCommand(const py::object& data, int octaves, int voices, double width,
                                           double freq, int wavelet, double a, double b, int method) {
  const wavelet::ScalogramSetup setup = ScalogramSetupOf(octaves, voices, width, freq, wavelet, a, b);
  if (method < 1 || method > 3) ThrowValue("method must be 1, 2 or 3");
  py::array arr = py::array::ensure(data);
  if (!arr || arr.ndim() != 2) ThrowValue("S must be a two-dimensional array");
  const char kind = arr.dtype().kind();
  if (kind != 'c' && kind != 'f' && kind != 'i') throw py::type_error("S must be an array of numbers");
  const bool complex = !wavelet::IsRealWavelet(setup.wavelet);
  if (kind == 'c' && !complex) throw py::type_error("a real wavelet's scalogram is real");
  wavelet::Scalogram s;
  s.shape = wavelet::ScalogramShape::Of(static_cast<int>(arr.shape(1)) - 1, octaves, voices);
  if (arr.shape(0) != s.shape.nscales + 1) ThrowValue("S must have octaves * voices + 1 rows");
  PowerOfTwoExponent(static_cast<std::size_t>(s.shape.n), kSmallestSignal, kLargestSignal, "S.shape[1] - 1");
  s.complex = complex;
  auto c = py::array_t<std::complex<double>, py::array::c_style | py::array::forcecast>::ensure(arr);
  s.re.resize(s.shape.Cells());
  s.im.resize(complex ? s.shape.Cells() : 0);
  for (std::size_t i = 0; i < s.shape.Cells(); ++i) {
    s.re[i] = c.data()[i].real();
    if (complex) s.im[i] = c.data()[i].imag();
    if (!std::isfinite(c.data()[i].real()) || !std::isfinite(c.data()[i].imag())) ThrowValue("S must hold finite values");
  }
  std::vector<double> result;
  bool done = false;
  {
    py::gil_scoped_release release;
    done = wavelet::InvertScalogram(s, setup, static_cast<wavelet::ScalInversion>(method), result);
  }
  if (!done) ThrowCatalogue(69);
  return ToArray(result);
}

}  // namespace

void BindTimeFrequency(py::module_& m) {
  m.def("spectrogram", &SpectrogramCommand, py::arg("x"), py::arg("window_length") = 256, py::arg("step") = 32,
        py::arg("window") = "Blackman",
        R"(The spectrogram form's short-time Fourier transform of x[0..N] (N + 1
samples, N = 2^M from 64 to 65536): column c = 0..N/step is the window of
window_length W centred on sample c*step over the signal padded with zeros,
B[i] = x[c*step - W/2 + i] window[i] for i = 0..W, B[0] = (B[0] + B[W])/2,
then one real FFT of W points with no scaling and positive exponent:
S[r, c] = sum_{i<W} B[i] exp(+2 pi i i r / W), r = 0..W/2.
window: Blackman, Gauss, Hamming, hanning or Boxcar. Complex array of
W/2 + 1 rows by N/step + 1 columns.)");
  m.def("invert_spectrogram", &InvertSpectrogramCommand, py::arg("S"), py::arg("n"), py::arg("step"),
        py::arg("window") = "Blackman", py::arg("method") = 1,
        R"(The signal x[0..n] rebuilt from a spectrogram computed with the same
window and step. method 1 divides by the summed windows, 2 by the sum of
their squares (after weighing each piece by its window), 3 by each window
where it is at least 0.1.)");
  m.def("scalogram", &ScalogramCommand, py::arg("x"), py::arg("octaves"), py::arg("voices"), py::arg("width") = 1.0,
        py::arg("freq") = 1.0, py::arg("wavelet") = 1, py::arg("a") = 0.0, py::arg("b") = 1.0,
        R"(The scalogram form's continuous wavelet transform of x[0..N] over [a, b]
(N = 2^M from 64 to 65536), by convolution in the frequency domain. Row
r = 1..octaves*voices belongs to the scale s = 2^((r - 1)/voices) (a larger s
a narrower wavelet, so the rows climb in frequency):
  row[c] = (b - a) sum_{m<N} x[m] w_r[(j - m) mod N],  j = (c + N/2) mod N,
the wavelet samples w_r of 1 Mexican hat, 2 Haar, 3 Gabor cosine, 4 Gabor
sine (real result) or 5 Gabor complex (complex result) of width `width` and
frequency `freq`, each of height sqrt(s). Row 0 is the low-pass row that
fills in what the wavelets leave out. Array of octaves*voices + 1 rows by
N + 1 columns.)");
  m.def("invert_scalogram", &InvertScalogramCommand, py::arg("S"), py::arg("octaves"), py::arg("voices"),
        py::arg("width") = 1.0, py::arg("freq") = 1.0, py::arg("wavelet") = 1, py::arg("a") = 0.0,
        py::arg("b") = 1.0, py::arg("method") = 2,
        R"(The signal x[0..N] rebuilt from a scalogram made with the same
parameters: method 1 wavelet superposition, 2 wavelets and scaling functions
(the low-pass row too; brings the mean back), 3 damped trigonometric.)");
}

}  // namespace keldo::python
