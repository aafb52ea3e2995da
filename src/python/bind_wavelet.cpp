// The one-dimensional wavelet routines and the two-dimensional transforms:
// the calls of the forms' wavelet commands, in the forms' layouts.

#include <algorithm>
#include <cmath>

#include "python/arrays.h"
#include "python/bindings.h"
#include "python/wavelet_choice.h"
#include "wavelet/image_transform.h"
#include "wavelet/series.h"
#include "wavelet/wavelet2d.h"

namespace keldo::python {
namespace {

// A signal for the transforms: N = 2^M values, or the N + 1 samples of a
// graph, whose last value is carried through unchanged.
struct Signal {
  int n = 0, m = 0;
  bool graph = false;
  std::vector<double> x;  // N + 5 values, as the kernels want
};

Signal SignalOf(const py::handle& object, const char* name) {
  Signal s;
  s.x = RealVector(object, name, 5);
  const std::size_t size = s.x.size();
  const bool power = size >= 2 && (size & (size - 1)) == 0;
  s.graph = !power;
  if (s.graph && size < 3) ThrowValue(std::string(name) + " must hold N or N + 1 values, N a power of two");
  s.m = PowerOfTwoExponent(power ? size : size - 1, 1, kLargestExponent1D, name);
  s.n = 1 << s.m;
  s.x.resize(static_cast<std::size_t>(s.n) + 5, 0.0);
  return s;
}

py::array_t<double> SignalOut(Signal& s) {
  const std::size_t count = static_cast<std::size_t>(s.n) + (s.graph ? 1 : 0);
  return ToArray(std::move(s.x), count);
}

py::array_t<double> Transform1D(const py::object& data, const py::object& code, int levels, bool packet,
                                bool inverse, const std::string& family, bool symmetric) {
  Signal s = SignalOf(data, inverse ? "c" : "x");
  const double last = s.x[static_cast<std::size_t>(s.n)];
  const wavelet::WaveletChoice choice = WaveletChoiceOf(code, family, symmetric, s.m, levels);
  {
    py::gil_scoped_release release;
    if (inverse) wavelet::InverseTransform(choice, packet, s.n, s.x.data(), s.m, levels);
    else wavelet::ForwardTransform(choice, packet, s.n, s.x.data(), levels);
  }
  s.x[static_cast<std::size_t>(s.n)] = last;
  return SignalOut(s);
}

py::tuple SeriesCommand(const py::object& data, const py::object& code, int levels, const std::string& keep,
                        double amount, double second, bool quantize, bool signBit, bool packet,
                        const std::string& family, bool symmetric) {
  Signal s = SignalOf(data, "x");
  const std::vector<double> original(s.x.begin(), s.x.begin() + s.n + 1);
  const wavelet::WaveletChoice choice = WaveletChoiceOf(code, family, symmetric, s.m, levels);
  const std::string k = Folded(keep);
  int type = 0;
  int count = 0;
  wavelet::ThresholdSetup t;
  if (k == "highest" || k == "first") {
    type = k == "highest" ? 1 : 4;
    const double c = std::nearbyint(amount);
    if (!(c >= 0 && c <= s.n)) ThrowCatalogue(type == 1 ? 17 : 30);
    count = static_cast<int>(c);
  } else if (k == "energy") {
    type = 2;
    if (!(amount >= 0 && amount <= 1)) ThrowCatalogue(18);
  } else if (k == "threshold") {
    type = 3;
    // A second threshold below 0 means one threshold for all.
    const auto proper = [&](double v) {
      if (v == 0.0 && quantize) ThrowCatalogue(35);
      if (!(v >= 0 && v <= 1)) ThrowCatalogue(19);
    };
    proper(amount);
    if (second >= 0) proper(second);
    t.first = amount;
    t.second = second;
    t.quantize = quantize;
    t.signBit = signBit;
    t.levels = levels;
    t.trendLength = s.n >> levels;
  } else {
    ThrowCatalogue(16);
  }
  double kept = 0.0;
  wavelet::ThresholdResult quantized;
  {
    py::gil_scoped_release release;
    wavelet::ForwardTransform(choice, packet, s.n, s.x.data(), levels);
    if (type == 1) wavelet::KeepHighest(s.n, s.x.data(), count);
    if (type == 4) wavelet::KeepFirst(s.n, s.x.data(), count);
    if (type == 2) kept = wavelet::KeepEnergy(s.n, s.x.data(), amount);
    if (type == 3) quantized = wavelet::ApplyThresholds(s.n, s.x.data(), t);
    wavelet::InverseTransform(choice, packet, s.n, s.x.data(), s.m, levels);
  }
  if (type == 1 || type == 4) kept = count;
  if (type == 3) kept = quantized.count;
  s.x[static_cast<std::size_t>(s.n)] = original[static_cast<std::size_t>(s.n)];
  py::dict info;
  info["kept"] = static_cast<int>(kept);
  if (type == 3 && quantize) info["bits_per_point"] = quantized.bitsPerPoint;
  return py::make_tuple(SignalOut(s), info);
}

py::tuple DenoiseCommand(const py::object& data, const py::object& code, int levels, bool averaged,
                         const std::string& family, bool symmetric) {
  Signal s = SignalOf(data, "x");
  if (averaged && s.n < 128) ThrowValue("the averaged denoiser shifts by up to 63 points: x needs at least 128");
  const wavelet::WaveletChoice choice = WaveletChoiceOf(code, family, symmetric, s.m, levels);
  std::vector<double> y(s.x.begin(), s.x.begin() + s.n + 1);
  double t = 0.0;
  {
    py::gil_scoped_release release;
    wavelet::ForwardTransform(choice, false, s.n, s.x.data(), levels);
    const double sigma = wavelet::NoiseSigma(s.n, s.x.data());
    t = std::sqrt(2 * std::log(static_cast<double>(s.n))) * sigma;
    if (!averaged) {
      wavelet::SoftThreshold(s.x.data(), s.n >> levels, s.n - 1, t);
      wavelet::InverseTransform(choice, false, s.n, s.x.data(), s.m, levels);
      std::copy(s.x.begin(), s.x.begin() + s.n, y.begin());
    } else {
      wavelet::DenoiseAveraged(choice, s.n, s.m, levels, t, y, [](int) { return true; });
    }
  }
  return py::make_tuple(ToArray(y.data(), static_cast<std::size_t>(s.n) + (s.graph ? 1 : 0)), t);
}

py::array_t<double> MedianCommand(const py::object& data, bool adaptive) {
  const std::vector<double> y = RealVector(data, "y");
  if (y.size() < 2) ThrowValue("y must hold at least 2 values");
  return ToArray(wavelet::MedianDenoise(static_cast<int>(y.size()) - 1, y.data(), adaptive));
}

// --- The two-dimensional form's square transforms, in single precision.

py::array_t<double> Transform2DCommand(const py::object& data, const py::object& code, int levels, bool packet,
                                       bool inverse, const std::string& family, bool symmetric) {
  SquareGraph g = SquareGraphOf(data, inverse ? "c" : "a");
  const wavelet::WaveletChoice choice = WaveletChoiceOf(code, family, symmetric, g.m, levels);
  {
    py::gil_scoped_release release;
    const wavelet::MatrixView view{g.v.data(), g.stride};
    if (inverse) wavelet::InverseTransform2D(choice, packet, g.n, view, levels);
    else wavelet::Transform2D(choice, packet, g.n, view, levels);
  }
  return SquareGraphToArray(g.v.data(), g.side, g.stride);
}

}  // namespace

int ImageWaveletIndex(const py::handle& wavelet) {
  if (py::isinstance<py::int_>(wavelet)) {
    const int index = IntOf(wavelet, "wavelet");
    if (index < 1 || index > 3) ThrowValue("wavelet must be 1, 2 or 3");
    return index;
  }
  if (py::isinstance<py::str>(wavelet)) {
    const std::string f = Folded(wavelet.cast<std::string>());
    if (f == "daub97") return 1;
    if (f == "dd53integer") return 2;
    if (f == "dd222integer") return 3;
  }
  ThrowValue("wavelet must be 'Daub 9/7', 'DD 5/3 Integer' or 'DD 2+2,2 Integer' (1, 2, 3)");
}

wavelet::ImagePlane ImagePlaneOf(const py::handle& image, const char* name, int levels, int index) {
  wavelet::ImagePlane plane;
  plane.v = FloatMatrixOf(image, name, plane.height, plane.width);
  if (levels < 1 || levels > wavelet::LevelLimit(plane.width, plane.height, index)) ThrowCatalogue(21);
  if (plane.width % (1 << levels) != 0 || plane.height % (1 << levels) != 0)
    ThrowValue(std::string(name) + "'s sides must be multiples of 2^levels");
  return plane;
}

py::array_t<double> PlaneToArray(const wavelet::ImagePlane& plane) {
  py::array_t<double> out({static_cast<py::ssize_t>(plane.height), static_cast<py::ssize_t>(plane.width)});
  std::copy(plane.v.begin(), plane.v.end(), out.mutable_data());
  return out;
}

void BindWavelet(py::module_& m) {
  const char* kCodeDoc = R"(

code: -1 Haar; 1..9 Daubechies of order 2(code + 1) (least asymmetric with
symmetric=True, orders 8..20); with family='coiflet' 1..5 the coiflets of
order 6 code; 101..110 the "Other" biorthogonal lifting schemes ('Daub 9/7',
'DD 5/3 (2,2)', 'DD 11/7 (4,2)', 'DD 13/11 (6,2)', 'DD 13/7 (4,4)',
'DD 5/9 (2+2,2)', 'DD 5/3 Integer', 'DD (2+2,2) Integer', 'DD 11/7 Integer',
'Daub 9/7 Integer'), which need levels <= M - 2. A name works too: 'Haar',
'Daub4'..'Daub20', 'Coif6'..'Coif30' or an Other name.)";
  m.def(
      "wavelet_transform",
      [](const py::object& x, const py::object& code, int levels, const std::string& family, bool symmetric) {
        return Transform1D(x, code, levels, false, false, family, symmetric);
      },
      py::arg("x"), py::arg("code"), py::arg("levels"), py::arg("family") = "", py::arg("symmetric") = false,
      (std::string(R"(The periodic wavelet transform of the one-dimensional form's
Wavelet transform command: N = 2^M values (or the N + 1 samples of a graph,
the last one carried through), levels 1..M. After L levels the trend
(scaling coefficients) is c[0 : N/2^L], followed by the fluctuations of levels
L, L-1, ..., 1 (level k's in c[N/2^k : N/2^(k-1)]). The orthogonal filters
are normalized to sum sqrt(2) (an orthonormal transform: energy is kept);
for Daubechies and coiflets this is pywt.wavedec(x, 'dbK' / 'coifK',
mode='periodization', level=L) concatenated, up to the filters' shift.)") + kCodeDoc).c_str());
  m.def(
      "inverse_wavelet_transform",
      [](const py::object& c, const py::object& code, int levels, const std::string& family, bool symmetric) {
        return Transform1D(c, code, levels, false, true, family, symmetric);
      },
      py::arg("c"), py::arg("code"), py::arg("levels"), py::arg("family") = "", py::arg("symmetric") = false,
      "The inverse of wavelet_transform with the same code and levels.");
  m.def(
      "wavelet_packet_transform",
      [](const py::object& x, const py::object& code, int levels, const std::string& family, bool symmetric) {
        return Transform1D(x, code, levels, true, false, family, symmetric);
      },
      py::arg("x"), py::arg("code"), py::arg("levels"), py::arg("family") = "", py::arg("symmetric") = false,
      (std::string(R"(The full wavelet packet transform (every block of every level split
again), in the layout of the one-dimensional form's Wavelet packet transform:
after L levels, 2^L blocks of N/2^L values.)") + kCodeDoc).c_str());
  m.def(
      "inverse_wavelet_packet_transform",
      [](const py::object& c, const py::object& code, int levels, const std::string& family, bool symmetric) {
        return Transform1D(c, code, levels, true, true, family, symmetric);
      },
      py::arg("c"), py::arg("code"), py::arg("levels"), py::arg("family") = "", py::arg("symmetric") = false,
      "The inverse of wavelet_packet_transform.");
  m.def("wavelet_series", &SeriesCommand, py::arg("x"), py::arg("code"), py::arg("levels"),
        py::arg("keep") = "highest", py::arg("amount") = 32.0, py::arg("second") = -1.0, py::arg("quantize") = true,
        py::arg("sign_bit") = true, py::arg("packet") = false, py::arg("family") = "", py::arg("symmetric") = false,
        R"(A thresholded wavelet (or packet) series, as the one-dimensional form's
Wavelet series command: transform, keep some coefficients, invert.

keep='highest': the `amount` largest-magnitude coefficients; 'first': the
first `amount` in transform order; 'energy': the fewest largest holding the
fraction `amount` of the energy; 'threshold': the coefficients with |c| >=
amount * max|c| (with second >= 0, `amount` for the trend and `second` for
the fluctuations), quantized when quantize is set.
Returns (series, info) with info['kept'] the number of coefficients kept.)");
  m.def("wavelet_denoise", &DenoiseCommand, py::arg("x"), py::arg("code"), py::arg("levels"),
        py::arg("averaged") = false, py::arg("family") = "", py::arg("symmetric") = false,
        R"(The one-dimensional form's Denoise (Wavelet): soft thresholding of the
fluctuations at the universal threshold T = sqrt(2 ln N) sigma, with sigma
from the finest band (median |c| / 0.6745); averaged=True averages the
denoised signal over the 127 circular shifts -63..63. Returns (y, T).)");
  m.def("median_denoise", &MedianCommand, py::arg("y"), py::arg("adaptive") = false,
        R"(Three-point median filter of y[0..N] (the ends kept); adaptive keeps a
sample more than 5% away from its window's median.)");
  m.def(
      "wavelet_transform_2d",
      [](const py::object& a, const py::object& code, int levels, bool packet, const std::string& family,
         bool symmetric) { return Transform2DCommand(a, code, levels, packet, false, family, symmetric); },
      py::arg("a"), py::arg("code"), py::arg("levels"), py::arg("packet") = false, py::arg("family") = "",
      py::arg("symmetric") = false,
      (std::string(R"(The two-dimensional form's wavelet (or packet) transform of a square
N by N matrix (or N+1 by N+1, the last row and column carried through),
single precision: rows then columns at every level. After L levels the trend
is the block [0:N/2^L, 0:N/2^L]; level k's fluctuations are the three blocks
of side N/2^k beside its trend.)") + kCodeDoc).c_str());
  m.def(
      "inverse_wavelet_transform_2d",
      [](const py::object& c, const py::object& code, int levels, bool packet, const std::string& family,
         bool symmetric) { return Transform2DCommand(c, code, levels, packet, true, family, symmetric); },
      py::arg("c"), py::arg("code"), py::arg("levels"), py::arg("packet") = false, py::arg("family") = "",
      py::arg("symmetric") = false, "The inverse of wavelet_transform_2d.");
  m.def(
      "image_transform",
      [](const py::object& image, int levels, const py::object& wavelet) {
        const int index = ImageWaveletIndex(wavelet);
        wavelet::ImagePlane plane = ImagePlaneOf(image, "image", levels, index);
        {
          py::gil_scoped_release release;
          wavelet::TransformTheImage(plane, levels, index);
        }
        return PlaneToArray(plane);
      },
      py::arg("image"), py::arg("levels"), py::arg("wavelet") = "Daub 9/7",
      R"(The image processor's transform of a rectangular image (height by width,
sides multiples of 2^levels), single precision: per level one pass over the
rows and one over the columns of the current corner, with the lifting
scheme 'Daub 9/7' (1), 'DD 5/3 Integer' (2) or 'DD 2+2,2 Integer' (3); the
integer wavelets' level r fluctuations are then scaled by 2^r and the trend
by 2^(levels + 1). The trend is the corner [0:H/2^L, 0:W/2^L].)");
  m.def(
      "inverse_image_transform",
      [](const py::object& c, int levels, const py::object& wavelet) {
        const int index = ImageWaveletIndex(wavelet);
        wavelet::ImagePlane plane = ImagePlaneOf(c, "c", levels, index);
        {
          py::gil_scoped_release release;
          wavelet::InvertTheTransform(plane, levels, index);
        }
        return PlaneToArray(plane);
      },
      py::arg("c"), py::arg("levels"), py::arg("wavelet") = "Daub 9/7", "The inverse of image_transform.");
}

}  // namespace keldo::python
