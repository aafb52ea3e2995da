// The image coders and denoisers: ASWDR to a budget and back, the WDR
// coders' .wic files, SureShrink and the median windows, as the image
// processor and the two-dimensional form call them.

#include <algorithm>
#include <cmath>

#include "analysis/median_image.h"
#include "common/file_io.h"
#include "python/arrays.h"
#include "python/bindings.h"
#include "wavelet/aswdr.h"
#include "wavelet/aswdr_denoise.h"
#include "wavelet/image_denoise.h"
#include "wavelet/wdr_files.h"

namespace keldo::python {
namespace {

wavelet::AswdrCoder CoderOf(const std::string& name) {
  const std::string f = Folded(name);
  if (f == "arithmetic" || f == "awe") return wavelet::AswdrCoder::Arithmetic;
  if (f == "binary" || f == "awd") return wavelet::AswdrCoder::Binary;
  ThrowValue("coder must be 'arithmetic' or 'binary'");
}

std::vector<std::uint8_t> BytesOf(const py::object& data) {
  if (py::isinstance<py::bytes>(data) || py::isinstance<py::bytearray>(data)) {
    const std::string s = py::isinstance<py::bytes>(data) ? data.cast<std::string>()
                                                          : py::bytes(data.cast<py::bytearray>()).cast<std::string>();
    return {s.begin(), s.end()};
  }
  if (py::isinstance<py::str>(data)) {
    std::vector<std::uint8_t> bytes;
    if (!ReadFileBytes(data.cast<std::string>(), bytes)) throw py::value_error("cannot read " + data.cast<std::string>());
    return bytes;
  }
  throw py::type_error("data must be bytes or a file path");
}

std::string PathOf(const py::object& path) {
  if (!py::isinstance<py::str>(path)) throw py::type_error("path must be a string");
  return path.cast<std::string>();
}

// Pixels 0..255 of an image whose sides are multiples of 2^levels.
py::tuple AswdrEncode(const py::object& image, double bpp, int levels, const py::object& wavelet,
                      const std::string& coder, const py::object& path) {
  if (!std::isfinite(bpp) || bpp < 0) ThrowCatalogue(84);
  const int index = ImageWaveletIndex(wavelet);
  wavelet::ImagePlane plane = ImagePlaneOf(image, "image", levels, index);
  for (float v : plane.v)
    if (v < 0.0f || v > 255.0f) ThrowValue("image must hold grey levels from 0 to 255");
  const bool lossless = bpp == 0.0;
  if (lossless && coder != "arithmetic") ThrowValue("the lossless coder (rate 0) is arithmetic");
  wavelet::AswdrHead head;
  head.budget = wavelet::BitBudgetOf(plane.width, plane.height, bpp);
  head.levels = levels;
  head.waveletIndex = index;
  head.width = plane.width;
  head.height = plane.height;
  head.originalWidth = plane.width;
  head.originalHeight = plane.height;
  const wavelet::AswdrCoder kind = CoderOf(coder);
  wavelet::AswdrEncoded encoded;
  {
    py::gil_scoped_release release;
    wavelet::TransformTheImage(plane, levels, index);
    encoded = lossless ? wavelet::CompressAswdrLossless(plane, head) : wavelet::CompressAswdr(plane, head, kind);
  }
  if (encoded.file.empty()) ThrowValue("the image cannot be coded with these sizes and levels");
  if (!path.is_none() && !WriteFileBytes(PathOf(path), encoded.file)) ThrowCatalogue(32);
  py::dict info;
  info["bits_used"] = encoded.bitsUsed;
  info["passes"] = encoded.passes;
  py::list report;
  for (const std::string& line : encoded.report) report.append(py::str(line));
  info["report"] = report;
  return py::make_tuple(py::bytes(reinterpret_cast<const char*>(encoded.file.data()), encoded.file.size()), info);
}

py::array_t<std::uint8_t> AswdrDecode(const py::object& data, const py::object& bpp, const std::string& coder) {
  const std::vector<std::uint8_t> bytes = BytesOf(data);
  double rate = 0.0;
  if (!bpp.is_none()) {
    if (!py::isinstance<py::float_>(bpp) && !py::isinstance<py::int_>(bpp)) throw py::type_error("bpp must be a number");
    rate = bpp.cast<double>();
    if (!std::isfinite(rate) || rate < 0) ThrowCatalogue(84);
  }
  const bool lossless = !bpp.is_none() && rate == 0.0;
  const wavelet::AswdrCoder kind = CoderOf(coder);
  std::optional<wavelet::AswdrDecoded> decoded;
  std::vector<std::uint8_t> pixels;
  {
    py::gil_scoped_release release;
    if (lossless) {
      decoded = wavelet::DecompressAswdrLossless(bytes);
    } else if (bpp.is_none()) {
      // The stored budget: any rate at or above it decodes the whole file.
      const std::optional<wavelet::AswdrHead> head = wavelet::ReadAswdrHead(bytes);
      if (head) decoded = wavelet::DecompressAswdr(bytes, 1e9, kind);
    } else {
      decoded = wavelet::DecompressAswdr(bytes, rate, kind);
    }
    if (decoded) pixels = wavelet::InvertTheTransformQuant(decoded->quant, decoded->head.levels, decoded->head.waveletIndex);
  }
  if (!decoded) ThrowCatalogue(85);
  const int w = decoded->head.width, h = decoded->head.height;
  const int ow = std::clamp(decoded->head.originalWidth, 1, w), oh = std::clamp(decoded->head.originalHeight, 1, h);
  py::array_t<std::uint8_t> out({static_cast<py::ssize_t>(oh), static_cast<py::ssize_t>(ow)});
  std::uint8_t* o = out.mutable_data();
  for (int y = 0; y < oh; ++y)
    for (int x = 0; x < ow; ++x) *o++ = pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(w) + static_cast<std::size_t>(x)];
  return out;
}

wavelet::WdrEntropyStage StageOf(const std::string& name) {
  const std::string f = Folded(name);
  if (f == "binary") return wavelet::WdrEntropyStage::Binary;
  if (f == "huffman" || f == "prefix") return wavelet::WdrEntropyStage::Huffman;
  if (f == "arithmetic") return wavelet::WdrEntropyStage::Arithmetic;
  ThrowValue("stage must be 'binary', 'huffman' or 'arithmetic'");
}

py::tuple WdrEncode(const py::object& coefficients, int levels, double target, const std::string& stop,
                    const std::string& stage, bool mixedOrders, int scanMode, bool lossless, const py::object& path) {
  const RealMatrix a = RealMatrixOf(coefficients, "coefficients");
  if (a.rows != a.columns) ThrowValue("coefficients must be square");
  PowerOfTwoExponent(static_cast<std::size_t>(a.rows), 6, 10, "the side of coefficients");
  wavelet::WdrEncodeOptions options;
  options.levels = levels;
  options.scanMode = scanMode;
  const std::string s = Folded(stop);
  if (s == "bpp" || s == "bitrate") options.stopKind = wavelet::WdrStopKind::BitRate;
  else if (s == "psnr") options.stopKind = wavelet::WdrStopKind::Psnr;
  else ThrowValue("stop must be 'bpp' or 'psnr'");
  if (!std::isfinite(target)) ThrowCatalogue(options.stopKind == wavelet::WdrStopKind::Psnr ? 81 : 82);
  options.target = target;
  options.stage = StageOf(stage);
  options.model = mixedOrders ? wavelet::WdrSourceModel::MixedOrders : wavelet::WdrSourceModel::ZeroOrder;
  options.lossless = lossless;
  std::vector<float> plane(a.v.begin(), a.v.end());
  wavelet::WdrEncodeResult r;
  {
    py::gil_scoped_release release;
    r = wavelet::EncodeTransform(plane, a.rows, options);
  }
  if (r.message != 0) ThrowCatalogue(r.message);
  if (r.status != wavelet::WdrEncodeStatus::Ok) ThrowValue("these options code nothing");
  const std::vector<std::uint8_t> bytes = wavelet::WriteWicFile(r.file);
  if (!path.is_none() && !WriteFileBytes(PathOf(path), bytes)) ThrowCatalogue(32);
  py::dict info;
  info["passes"] = r.report.completedPasses;
  info["bits_used"] = r.report.bitsUsed;
  info["significant"] = r.report.significantCount;
  if (r.report.psnr) info["psnr"] = *r.report.psnr;
  return py::make_tuple(py::bytes(reinterpret_cast<const char*>(bytes.data()), bytes.size()), info);
}

py::tuple WdrDecode(const py::object& data) {
  const std::vector<std::uint8_t> bytes = BytesOf(data);
  std::optional<wavelet::WdrDecodedFile> decoded;
  {
    py::gil_scoped_release release;
    decoded = wavelet::DecodeWicFile(bytes, false);
  }
  if (!decoded) ThrowCatalogue(85);
  return py::make_tuple(PlaneToArray(decoded->plane), decoded->levels);
}

py::tuple SureShrinkCommand(const py::object& image, int levels, const py::object& wavelet, bool soft) {
  const int index = ImageWaveletIndex(wavelet);
  wavelet::ImagePlane plane = ImagePlaneOf(image, "image", levels, index);
  wavelet::SureShrinkResult r;
  {
    py::gil_scoped_release release;
    wavelet::TransformTheImage(plane, levels, index);
    r = wavelet::SureShrinkImageTransform(plane, levels, soft ? wavelet::Shrinkage::Soft : wavelet::Shrinkage::Hard);
    wavelet::InvertTheTransform(plane, levels, index);
  }
  py::list thresholds;
  for (const wavelet::SureShrinkChoice& c : r.bands) thresholds.append(c.threshold);
  return py::make_tuple(PlaneToArray(plane), r.sigma, thresholds);
}

py::tuple TawsCommand(const py::object& image, int levels, const py::object& wavelet, const py::object& threshold,
                      int depth, double descent, bool shrink) {
  const int index = ImageWaveletIndex(wavelet);
  const wavelet::ImagePlane picture = ImagePlaneOf(image, "image", levels, index);
  if (picture.width < 4 || picture.height < 4) ThrowValue("image must be at least 4 by 4");
  double t = 0.0;
  if (!threshold.is_none()) {
    if (!py::isinstance<py::float_>(threshold) && !py::isinstance<py::int_>(threshold))
      throw py::type_error("threshold must be a number or None");
    t = threshold.cast<double>();
    if (!std::isfinite(t)) ThrowCatalogue(10);
    if (t <= 0.0) ThrowCatalogue(11);
    if (depth < 1 || depth > levels) ThrowValue("depth must be from 1 to levels");
  }
  if (!std::isfinite(descent) || !(descent > 0)) ThrowValue("descent must be positive");
  wavelet::TawsOptions options;
  options.levels = levels;
  options.depth = depth;
  options.descent = descent;
  options.shrink = shrink;
  wavelet::ImagePlane denoised;
  {
    py::gil_scoped_release release;
    if (threshold.is_none()) {
      // The estimate from the picture's own transform, and the depth it advises.
      wavelet::ImagePlane transform = picture;
      wavelet::TransformTheImage(transform, levels, index);
      const wavelet::NoiseThreshold noise = wavelet::AutoThresholdValue(transform, levels);
      t = noise.threshold;
      options.depth = std::min(noise.depth, levels);
    }
    denoised = wavelet::DenoisePictureTAWS(picture, index, t, options);
  }
  if (denoised.v.empty()) ThrowValue("the picture cannot be denoised with these levels");
  return py::make_tuple(PlaneToArray(denoised), t);
}

py::object MedianImageCommand(const py::object& image, bool adaptive) {
  const RealMatrix a = RealMatrixOf(image, "image");
  const analysis::MedianRule rule = adaptive ? analysis::MedianRule::Adaptive : analysis::MedianRule::Plain;
  py::array arr = py::array::ensure(image);
  if (arr.dtype().kind() == 'u' && arr.dtype().itemsize() == 1) {
    std::vector<std::uint8_t> bytes(a.v.begin(), a.v.end());
    const std::vector<std::uint8_t> out = analysis::MedianFilterBytes(bytes.data(), static_cast<std::size_t>(a.columns),
                                                                      a.rows, a.columns, rule);
    py::array_t<std::uint8_t> result({static_cast<py::ssize_t>(a.rows), static_cast<py::ssize_t>(a.columns)});
    std::copy(out.begin(), out.end(), result.mutable_data());
    return result;
  }
  std::vector<float> samples(a.v.begin(), a.v.end());
  const std::vector<float> out =
      analysis::MedianFilterSamples(samples.data(), static_cast<std::size_t>(a.columns), a.rows, a.columns, rule);
  py::array_t<double> result({static_cast<py::ssize_t>(a.rows), static_cast<py::ssize_t>(a.columns)});
  std::copy(out.begin(), out.end(), result.mutable_data());
  return result;
}

}  // namespace

void BindImages(py::module_& m) {
  m.def("aswdr_encode", &AswdrEncode, py::arg("image"), py::arg("bpp"), py::arg("levels") = 5,
        py::arg("wavelet") = "Daub 9/7", py::arg("coder") = "arithmetic", py::arg("path") = py::none(),
        R"(The image processor's ASWDR coder: the image (grey levels 0..255, sides
multiples of 2^levels) through image_transform, then coded by bit planes to
the budget Round(height * bpp) * width bits. bpp = 0 runs the lossless
arithmetic coder (.awg). coder: 'arithmetic' (.awe) or 'binary' (.awd).
Writes the file when path is given. Returns (bytes, info).)");
  m.def("aswdr_decode", &AswdrDecode, py::arg("data"), py::arg("bpp") = py::none(), py::arg("coder") = "arithmetic",
        R"(Decodes an ASWDR file (bytes or a path) at the rate bpp (None: all of
it; 0: the lossless file), inverts the transform and rounds to grey levels.
Returns a uint8 image of the coded size.)");
  m.def("wdr_encode", &WdrEncode, py::arg("coefficients"), py::arg("levels"), py::arg("target"),
        py::arg("stop") = "bpp", py::arg("stage") = "arithmetic", py::arg("mixed_orders") = false,
        py::arg("scan_mode") = 1, py::arg("lossless") = false, py::arg("path") = py::none(),
        R"(The WDR coder of the two-dimensional form and the workshop: a square
transform (side a power of two from 64 to 1024, levels 1..) coded to a bit
rate (stop='bpp', Round(n*n*target) bits) or a PSNR in dB (stop='psnr'),
with the binary, huffman or arithmetic stage (zero-order or mixed-order
model) and scan mode 1..4, as a .wic file. Returns (bytes, info).)");
  m.def("wdr_decode", &WdrDecode, py::arg("data"),
        R"(The coefficient matrix of a .wic file (bytes or a path), any scaling
undone. Returns (coefficients, levels).)");
  m.def("sureshrink_denoise", &SureShrinkCommand, py::arg("image"), py::arg("levels"),
        py::arg("wavelet") = "Daub 9/7", py::arg("soft") = false,
        R"(The image processor's SureShrink: image_transform, each detail band
thresholded at the threshold of least Stein unbiased risk (or the universal
sqrt(2 ln n) sigma for a sparse band), sigma the median |c| of the finest
diagonal band over 0.6745; hard or soft; then the inverse. Returns
(image, sigma, thresholds) with three thresholds a level, finest first.)");
  m.def("taws_denoise", &TawsCommand, py::arg("image"), py::arg("levels"), py::arg("wavelet") = "Daub 9/7",
        py::arg("threshold") = py::none(), py::arg("depth") = 1, py::arg("descent") = 2.0, py::arg("shrink") = false,
        R"(The image processor's Denoise-TAWS: image_transform, detail values
below Low = threshold / descent cleared, then the adaptive coder's
significance and refinement passes run in memory down to Low with a
tree-based scan whose weights keep a value isolated across the finest
`depth` levels insignificant (noise leaves such values, edges make families
across levels), five refinement rounds, soft shrinkage by Low when asked,
the last half-step offset, and the inverse. threshold None takes the
estimate sigma sqrt(4 ln max(W, H)), sigma the median |c| of the finest
diagonal band over 0.6745, and the depth it advises. Returns (image,
threshold); the form shows the image rounded to grey levels.)");
  m.def("median_filter_image", &MedianImageCommand, py::arg("image"), py::arg("adaptive") = false,
        R"(The median windows of images and two-dimensional graphs: the 3 by 3
median inside, the three values along an edge, the mean of the middle two of
a corner's 2 by 2 block; adaptive keeps a sample more than 10% away from its
median. uint8 images come back rounded to uint8.)");
}

}  // namespace keldo::python
