// The image coders and denoisers: ASWDR to a budget and back (with a region
// of interest), the compress-denoise coders, the WDR coders' .wic files,
// SureShrink, TAWS (averaged over shifts too), the two-dimensional form's
// wavelet denoiser and the median windows, as the image processor and the
// two-dimensional form call them.

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>

#include "analysis/median_image.h"
#include "common/file_io.h"
#include "python/arrays.h"
#include "python/bindings.h"
#include "python/wavelet_choice.h"
#include "wavelet/aswdr.h"
#include "wavelet/aswdr_denoise.h"
#include "wavelet/aswdr_denoise_coder.h"
#include "wavelet/aswdr_region.h"
#include "wavelet/image_denoise.h"
#include "wavelet/wdr_files.h"

namespace keldo::python {
namespace {

// The largest share of the bits a region may take, as the form's box.
constexpr double kLargestRegionShare = 0.99;

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

// A number from Python (int or float); TypeError naming it otherwise.
double NumberOf(const py::handle& value, const char* name) {
  if (!py::isinstance<py::float_>(value) && !py::isinstance<py::int_>(value))
    throw py::type_error(std::string(name) + " must be a number");
  return value.cast<double>();
}

// The rectangle (x1, y1, x2, y2) of pixels of a width by height image, x
// along a row (the column index) and y down it; nothing for None. Corners
// outside the image or unsorted are refused, where the form would clip and
// sort a rectangle drawn with the mouse.
std::optional<wavelet::RegionRectangle> RectangleOf(const py::object& region, int width, int height) {
  if (region.is_none()) return std::nullopt;
  if (!py::isinstance<py::tuple>(region) && !py::isinstance<py::list>(region))
    throw py::type_error("region must be a tuple (x1, y1, x2, y2) or None");
  const py::sequence corners = region.cast<py::sequence>();
  if (corners.size() != 4) ThrowValue("region must hold four integers (x1, y1, x2, y2)");
  wavelet::RegionRectangle r{IntOf(corners[0], "x1"), IntOf(corners[1], "y1"), IntOf(corners[2], "x2"),
                             IntOf(corners[3], "y2")};
  if (r.x1 < 0 || r.y1 < 0 || r.x2 >= width || r.y2 >= height)
    ThrowValue("region must lie inside the image: 0 <= x < width, 0 <= y < height");
  if (r.x1 > r.x2 || r.y1 > r.y2) ThrowValue("region needs x1 <= x2 and y1 <= y2");
  return r;
}

// The share of the bits that the whole picture gives up to the region:
// 0..0.99 as the form takes it, refused outside where the form clamps.
double RegionShareOf(double share) {
  if (!std::isfinite(share) || share < 0.0) ThrowCatalogue(86);
  if (share > kLargestRegionShare) ThrowValue("region_share must be from 0 to 0.99");
  return share;
}

// The image to code: grey levels 0..255, sides multiples of 2^levels.
wavelet::ImagePlane CodedImageOf(const py::object& image, int levels, int index) {
  wavelet::ImagePlane plane = ImagePlaneOf(image, "image", levels, index);
  for (float v : plane.v)
    if (v < 0.0f || v > 255.0f) ThrowValue("image must hold grey levels from 0 to 255");
  return plane;
}

// The coders' head for a plane coded whole at the rate bpp.
wavelet::AswdrHead HeadOf(const wavelet::ImagePlane& plane, double bpp, int levels, int index) {
  wavelet::AswdrHead head;
  head.budget = wavelet::BitBudgetOf(plane.width, plane.height, bpp);
  head.levels = levels;
  head.waveletIndex = index;
  head.width = plane.width;
  head.height = plane.height;
  head.originalWidth = plane.width;
  head.originalHeight = plane.height;
  return head;
}

// The file as bytes (written to `path` too when given) and its info dict.
py::tuple EncodedResult(const wavelet::AswdrEncoded& encoded, const py::object& path, py::dict info) {
  if (encoded.file.empty()) ThrowValue("the image cannot be coded with these sizes and levels");
  if (!path.is_none() && !WriteFileBytes(PathOf(path), encoded.file)) ThrowCatalogue(32);
  info["bits_used"] = encoded.bitsUsed;
  info["passes"] = encoded.passes;
  py::list report;
  for (const std::string& line : encoded.report) report.append(py::str(line));
  info["report"] = report;
  return py::make_tuple(py::bytes(reinterpret_cast<const char*>(encoded.file.data()), encoded.file.size()), info);
}

// Pixels 0..255 of an image whose sides are multiples of 2^levels.
py::tuple AswdrEncode(const py::object& image, double bpp, int levels, const py::object& wavelet,
                      const std::string& coder, const py::object& region, double regionShare, const py::object& path) {
  if (!std::isfinite(bpp) || bpp < 0) ThrowCatalogue(84);
  const int index = ImageWaveletIndex(wavelet);
  wavelet::ImagePlane plane = CodedImageOf(image, levels, index);
  const bool lossless = bpp == 0.0;
  if (lossless && coder != "arithmetic") ThrowValue("the lossless coder (rate 0) is arithmetic");
  const std::optional<wavelet::RegionRectangle> rectangle = RectangleOf(region, plane.width, plane.height);
  const double share = RegionShareOf(regionShare);
  const wavelet::AswdrHead head = HeadOf(plane, bpp, levels, index);
  const wavelet::AswdrCoder kind = CoderOf(coder);
  wavelet::AswdrEncoded encoded;
  {
    py::gil_scoped_release release;
    wavelet::TransformTheImage(plane, levels, index);
    std::optional<wavelet::AswdrRegion> roi;
    if (rectangle)
      roi = wavelet::RegionOfRectangle(plane, head, *rectangle, share,
                                       lossless ? wavelet::RegionBudgetBase::LosslessRun
                                                : wavelet::RegionBudgetBase::HeadBudget);
    const wavelet::AswdrRegion* r = roi ? &*roi : nullptr;
    encoded = lossless ? wavelet::CompressAswdrLossless(plane, head, r) : wavelet::CompressAswdr(plane, head, kind, r);
  }
  py::dict info;
  info["region_mode_pass"] = encoded.regionModePass;
  return EncodedResult(encoded, path, info);
}

// The rate of a decoder's bpp argument: nothing for None (all of the file).
std::optional<double> DecodeRateOf(const py::object& bpp) {
  if (bpp.is_none()) return std::nullopt;
  const double rate = NumberOf(bpp, "bpp");
  if (!std::isfinite(rate) || rate < 0) ThrowCatalogue(84);
  return rate;
}

// The decoded values inverted and rounded to grey levels, cropped to the
// original sizes of the head; the catalogue's message when nothing decoded.
py::array_t<std::uint8_t> DecodedImage(const std::optional<wavelet::AswdrDecoded>& decoded) {
  if (!decoded) ThrowCatalogue(85);
  std::vector<std::uint8_t> pixels;
  {
    py::gil_scoped_release release;
    pixels = wavelet::InvertTheTransformQuant(decoded->quant, decoded->head.levels, decoded->head.waveletIndex);
  }
  const int w = decoded->head.width, h = decoded->head.height;
  const int ow = std::clamp(decoded->head.originalWidth, 1, w), oh = std::clamp(decoded->head.originalHeight, 1, h);
  py::array_t<std::uint8_t> out({static_cast<py::ssize_t>(oh), static_cast<py::ssize_t>(ow)});
  std::uint8_t* o = out.mutable_data();
  for (int y = 0; y < oh; ++y)
    for (int x = 0; x < ow; ++x) *o++ = pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(w) + static_cast<std::size_t>(x)];
  return out;
}

// A rate above any budget: the decoders then read the whole file.
constexpr double kWholeFileRate = 1e9;

py::array_t<std::uint8_t> AswdrDecode(const py::object& data, const py::object& bpp, const std::string& coder) {
  const std::vector<std::uint8_t> bytes = BytesOf(data);
  const std::optional<double> rate = DecodeRateOf(bpp);
  const bool lossless = rate && *rate == 0.0;
  const wavelet::AswdrCoder kind = CoderOf(coder);
  std::optional<wavelet::AswdrDecoded> decoded;
  {
    py::gil_scoped_release release;
    if (lossless) {
      decoded = wavelet::DecompressAswdrLossless(bytes);
    } else if (!rate) {
      // The stored budget: any rate at or above it decodes the whole file.
      const std::optional<wavelet::AswdrHead> head = wavelet::ReadAswdrHead(bytes);
      if (head) decoded = wavelet::DecompressAswdr(bytes, kWholeFileRate, kind);
    } else {
      decoded = wavelet::DecompressAswdr(bytes, *rate, kind);
    }
  }
  return DecodedImage(decoded);
}

py::tuple CompressDenoiseEncode(const py::object& image, double bpp, int levels, const py::object& wavelet,
                                const std::string& coder, int depth, double descent, bool minBitRate,
                                const py::object& region, double regionShare, const py::object& path) {
  if (!std::isfinite(bpp) || bpp < 0) ThrowCatalogue(84);
  if (bpp == 0.0) ThrowValue("the compress-denoise coders need a rate above 0");
  const int index = ImageWaveletIndex(wavelet);
  wavelet::ImagePlane plane = CodedImageOf(image, levels, index);
  if (plane.width < 4 || plane.height < 4) ThrowValue("image must be at least 4 by 4");
  if (depth < 1 || depth > wavelet::kMaxDenoiseDepth) ThrowValue("depth must be from 1 to 25");
  if (!std::isfinite(descent) || !(descent > 0)) ThrowValue("descent must be positive");
  const std::optional<wavelet::RegionRectangle> rectangle = RectangleOf(region, plane.width, plane.height);
  const double share = RegionShareOf(regionShare);
  const wavelet::AswdrHead head = HeadOf(plane, bpp, levels, index);
  const wavelet::AswdrCoder kind = CoderOf(coder);
  wavelet::DenoiseCoding coding;
  coding.depth = depth;
  coding.descent = descent;
  coding.minBitRate = minBitRate;
  wavelet::AswdrEncoded encoded;
  {
    py::gil_scoped_release release;
    wavelet::TransformTheImage(plane, levels, index);
    coding.noiseThreshold = wavelet::AutoThresholdValue(plane, levels).threshold;
    std::optional<wavelet::AswdrRegion> roi;
    if (rectangle)
      roi = wavelet::RegionOfRectangle(plane, head, *rectangle, share, wavelet::RegionBudgetBase::HeadBudget);
    encoded = wavelet::CompressDenoiseAswdr(plane, head, kind, coding, roi ? &*roi : nullptr);
  }
  py::dict info;
  info["threshold"] = coding.noiseThreshold;
  return EncodedResult(encoded, path, info);
}

py::array_t<std::uint8_t> CompressDenoiseDecode(const py::object& data, const py::object& bpp,
                                                const std::string& coder) {
  const std::vector<std::uint8_t> bytes = BytesOf(data);
  const std::optional<double> rate = DecodeRateOf(bpp);
  if (rate && *rate == 0.0) ThrowValue("the compress-denoise coders have no lossless file (rate 0)");
  const wavelet::AswdrCoder kind = CoderOf(coder);
  std::optional<wavelet::AswdrDecoded> decoded;
  {
    py::gil_scoped_release release;
    decoded = wavelet::DecompressDenoiseAswdr(bytes, rate.value_or(kWholeFileRate), kind);
  }
  return DecodedImage(decoded);
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
                      int depth, double descent, bool shrink, int shifts, bool diagonal) {
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
  if (shifts != 1 && shifts != 2 && shifts != 4 && shifts != 8 && shifts != 16)
    ThrowValue("shifts must be 1, 2, 4, 8 or 16");
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
    if (shifts == 1 && !diagonal) {
      denoised = wavelet::DenoisePictureTAWS(picture, index, t, options);
    } else if (!wavelet::DenoiseAveragedTAWS(picture, index, t, options, wavelet::AverageShifts(shifts, diagonal),
                                             denoised, nullptr)) {
      denoised.v.clear();
    }
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

// The AvgType entries of the two-dimensional form: k shifts from 0 to k
// along each axis, or from -k to k with "D".
constexpr const char* kAverageTypes[] = {"1", "1D", "2", "2D", "4", "4D", "8", "8D", "16", "16D"};
// The most halvings the second stage refines over, as the form's box.
constexpr int kMostDescents = 30;

// The shift range of an averaging entry; 0..0 (one pass) for None.
void ShiftRangeOf(const py::object& average, int& first, int& last) {
  first = last = 0;
  if (average.is_none()) return;
  if (!py::isinstance<py::str>(average)) throw py::type_error("average must be None or a string such as '4D'");
  const std::string entry = average.cast<std::string>();
  for (const char* type : kAverageTypes)
    if (entry == type) {
      const bool diagonal = entry.back() == 'D';
      last = std::stoi(diagonal ? entry.substr(0, entry.size() - 1) : entry);
      first = diagonal ? -last : 0;
      return;
    }
  ThrowValue("average must be None or one of '1', '1D', '2', '2D', '4', '4D', '8', '8D', '16', '16D'");
}

// The form's automatic threshold: one level of the chosen wavelet when it
// is a Daubechies wavelet (Daubechies 4 otherwise) on a copy of the graph,
// the diagonal band's noise level, and AutoDenoiseThreshold.
void AutoThreshold2D(const SquareGraph& g, const wavelet::WaveletChoice& choice, int descents, bool average,
                     bool highSnr, double& threshold, double& sigma) {
  constexpr wavelet::WaveletChoice kDaubechies4{1, 1, false};
  const wavelet::WaveletChoice daubechies =
      choice.family == 1 ? wavelet::WaveletChoice{1, choice.code, false} : kDaubechies4;
  std::vector<float> x = g.v;
  const wavelet::MatrixView view{x.data(), g.stride};
  wavelet::Transform2D(daubechies, false, g.n, view, 1);
  sigma = wavelet::DiagonalBandSigma(g.n, view);
  threshold = wavelet::AutoDenoiseThreshold(sigma, g.n, descents == 0 ? 0 : 1, average, highSnr);
}

py::tuple WaveletDenoise2DCommand(const py::object& a, const py::object& code, int levels, const py::object& threshold,
                                  bool refine, int depth, bool postProcess, int descents, bool shrink,
                                  const py::object& average, bool highSnr, bool quantize, const std::string& family,
                                  bool symmetric) {
  const SquareGraph g = SquareGraphOf(a, "a");
  const wavelet::WaveletChoice choice = WaveletChoiceOf(code, family, symmetric, g.m, levels);
  double t = 0.0, sigma = 0.0;
  if (!threshold.is_none()) {
    t = NumberOf(threshold, "threshold");
    if (!std::isfinite(t)) ThrowCatalogue(10);
    if (t < 0.0) ThrowCatalogue(11);
  }
  wavelet::CycleSpinSetup setup;
  ShiftRangeOf(average, setup.first, setup.last);
  setup.choice = choice;
  setup.levels = levels;
  setup.bitPlane = refine || postProcess;
  setup.options.depth = refine ? std::clamp(depth, 1, levels) : 1;
  setup.options.descents = postProcess ? std::clamp(descents, 0, kMostDescents) : 0;
  setup.options.shrink = shrink;
  std::vector<float> out;
  {
    py::gil_scoped_release release;
    if (threshold.is_none()) AutoThreshold2D(g, choice, descents, !average.is_none(), highSnr, t, sigma);
    setup.threshold = t;
    wavelet::CycleSpinDenoise(g.n, g.v.data(), g.stride, setup, out, [](int, int) { return true; });
    if (quantize)
      for (float& v : out) v = v >= 255.0f ? 255.0f : v < 0.0f ? 0.0f : std::nearbyint(v);
  }
  const py::object noise = threshold.is_none() ? py::object(py::float_(sigma)) : py::object(py::none());
  return py::make_tuple(SquareGraphToArray(out.data(), g.side, g.stride), t, noise);
}

}  // namespace

void BindImages(py::module_& m) {
  m.def("aswdr_encode", &AswdrEncode, py::arg("image"), py::arg("bpp"), py::arg("levels") = 5,
        py::arg("wavelet") = "Daub 9/7", py::arg("coder") = "arithmetic", py::arg("region") = py::none(),
        py::arg("region_share") = 0.5, py::arg("path") = py::none(),
        R"(The image processor's ASWDR coder: the image (grey levels 0..255, sides
multiples of 2^levels) through image_transform, then coded by bit planes to
the budget Round(height * bpp) * width bits. bpp = 0 runs the lossless
arithmetic coder (.awg). coder: 'arithmetic' (.awe) or 'binary' (.awd).
region (x1, y1, x2, y2), pixels with x the column and y the row, corners
included: the whole picture is coded until Round((1 - region_share) * B)
bits are used (B the budget, or for the lossless coder the bits of a plain
lossless run), then only the coefficients whose basis functions reach the
rectangle may turn significant. region_share from 0 to 0.99. Writes the
file when path is given. Returns (bytes, info), info holding bits_used,
passes, region_mode_pass (0 when region mode never began) and the report
lines.)");
  m.def("aswdr_decode", &AswdrDecode, py::arg("data"), py::arg("bpp") = py::none(), py::arg("coder") = "arithmetic",
        R"(Decodes an ASWDR file (bytes or a path) at the rate bpp (None: all of
it; 0: the lossless file), inverts the transform and rounds to grey levels.
Returns a uint8 image of the coded size.)");
  m.def("compress_denoise_encode", &CompressDenoiseEncode, py::arg("image"), py::arg("bpp"), py::arg("levels") = 5,
        py::arg("wavelet") = "Daub 9/7", py::arg("coder") = "arithmetic", py::arg("depth") = 1,
        py::arg("descent") = 2.0, py::arg("min_bit_rate") = false, py::arg("region") = py::none(),
        py::arg("region_share") = 0.5, py::arg("path") = py::none(),
        R"(The image processor's compress-denoise coders, 'arithmetic' (.acd) or
'binary' (.bcd): the ASWDR coder to the budget Round(height * bpp) * width
bits (bpp > 0) on a transform denoised as it is coded. With the noise
threshold N = sigma sqrt(4 ln max(W, H)) (sigma the median |c| of the finest
diagonal band over 0.6745) and Low = N / descent, detail values below Low
are cleared; once the passes' threshold is at most N, a value isolated
across the finest `depth` levels (1..25) can no longer turn significant.
min_bit_rate ends the passes with the one after which T/2 < Low. region and
region_share as in aswdr_encode. Returns (bytes, info), info holding
bits_used, passes, the report lines and 'threshold' (N).)");
  m.def("compress_denoise_decode", &CompressDenoiseDecode, py::arg("data"), py::arg("bpp") = py::none(),
        py::arg("coder") = "arithmetic",
        R"(Decodes a compress-denoise file (bytes or a path) at the rate bpp (None:
all of it), moves each value half its last threshold away from zero,
inverts the transform and rounds to grey levels. Returns a uint8 image of
the coded size.)");
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
        py::arg("shifts") = 1, py::arg("diagonal") = false,
        R"(The image processor's Denoise-TAWS: image_transform, detail values
below Low = threshold / descent cleared, then the adaptive coder's
significance and refinement passes run in memory down to Low with a
tree-based scan whose weights keep a value isolated across the finest
`depth` levels insignificant (noise leaves such values, edges make families
across levels), five refinement rounds, soft shrinkage by Low when asked,
the last half-step offset, and the inverse. threshold None takes the
estimate sigma sqrt(4 ln max(W, H)), sigma the median |c| of the finest
diagonal band over 0.6745, and the depth it advises. shifts k (1, 2, 4, 8
or 16) above 1, or diagonal, averages over cyclic shifts (cycle spinning):
the picture moved i columns right and j rows down (np.roll by (j, i)),
denoised, moved back; all pairs i, j in 0..k-1, or with diagonal only
i = j; the threshold is the unshifted picture's. Returns (image,
threshold); the form shows the image rounded to grey levels.)");
  m.def("median_filter_image", &MedianImageCommand, py::arg("image"), py::arg("adaptive") = false,
        R"(The median windows of images and two-dimensional graphs: the 3 by 3
median inside, the three values along an edge, the mean of the middle two of
a corner's 2 by 2 block; adaptive keeps a sample more than 10% away from its
median. uint8 images come back rounded to uint8.)");
  m.def("wavelet_denoise_2d", &WaveletDenoise2DCommand, py::arg("a"), py::arg("code"), py::arg("levels"),
        py::arg("threshold") = py::none(), py::arg("refine") = false, py::arg("depth") = 2,
        py::arg("post_process") = false, py::arg("descents") = 3, py::arg("shrink") = false,
        py::arg("average") = py::none(), py::arg("high_snr") = false, py::arg("quantize") = false,
        py::arg("family") = "", py::arg("symmetric") = false,
        R"(The two-dimensional form's Denoise (wavelet) of an N by N graph (or N+1 by
N+1, the last row and column carried through), single precision: the
wavelet transform of wavelet_transform_2d over the levels, the fluctuations
thresholded at T, the inverse. Plain: each |c| < T cleared. refine or
post_process: the bit-plane thresholding, refine keeping significant values
in trees spanning `depth` levels (clamped to 1..levels; 1 without refine),
post_process refining them over `descents` more halvings (clamped to
0..30; 0 without it); shrink then moves the kept values toward 0 by the
last threshold. average (the form's AvgType: '1', '1D', ..., '16', '16D')
averages over cyclic shifts 0..k along each axis, -k..k with 'D'.
quantize rounds to grey levels 0..255. threshold None estimates it as the
form's Auto box: sigma from one level of the chosen wavelet when it is a
Daubechies one (Daubechies 4 otherwise), the median |c| of the diagonal band
less its last 8 rows and columns over 0.6745; T = sigma sqrt(2 ln N) with
descents 0, sigma sqrt(4 ln N) with high_snr and no averaging, 2 sigma
sqrt(2 ln N) otherwise. depth and descents are used as given (the form's
Auto also writes advised values into those boxes). Returns (denoised, T,
sigma), sigma None for a threshold given. code, family and symmetric as
in wavelet_transform_2d.)");
}

}  // namespace keldo::python
