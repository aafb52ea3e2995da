// The two-dimensional form's compressed image type (.wc2): a graph saved by
// the workshop's bit-plane coder with the frame's coding options, and such a
// file opened again as a new graph through the inverse transform.

#include <algorithm>
#include <cmath>

#include "common/file_io.h"
#include "form2d/graph2_form.h"
#include "kit/form_context.h"
#include "wavelet/aswdr_region.h"
#include "wavelet/wavelet2d.h"
#include "wavelet/wdr_files.h"

namespace keldo::form2d {
namespace {

// The coding options the frame keeps, by their index.
enum WavCompCode : std::size_t {
  kCodeLevels = 0,
  kCodeStopKind = 1,
  kCodeTarget = 2,
  kCodeStage = 3,
  kCodeModel = 4,
  kCodeScanMode = 5,
  kCodeLossless = 6,
  kCodeRegion = 7,
  kCodeRegionFraction = 8,
  kCodeWavelet = 9,
};

// GetWaveletTransformInfo: the wavelet's number to the "Other" lifting
// scheme: 1 "Daub 9/7", 2 "DD (2+2,2) Integer", 3 "DD 5/3 Integer".
wavelet::WaveletChoice ChoiceOfWavelet(int wavelet) {
  wavelet::WaveletChoice choice;
  choice.family = 4;
  choice.code = wavelet == 2 ? 108 : wavelet == 3 ? 107 : 101;
  return choice;
}

int Log2(int n) {
  int k = 0;
  while ((1 << k) < n) ++k;
  return k;
}

}  // namespace

bool Graph2Form::SaveToWaveletCompressedFile(const std::string& path, int g) {
  const std::array<float, 11>& codes = context_.settings().wavCompCodes;
  const auto code = [&codes](WavCompCode k) { return codes[static_cast<std::size_t>(k)]; };
  int levels = static_cast<int>(std::lround(code(kCodeLevels)));
  if (levels < 1) {
    context_.ShowError(21);
    return false;
  }
  // The lifting schemes leave two levels of the image's power unused.
  levels = std::min(levels, Log2(n_) - 2);
  // The region is the zoomed view of the picture: with the whole picture in
  // view there is none, whatever the option says. Its corners are the
  // samples at or outside the view's edges (x a column, y a row of the
  // grid), held to the plane.
  const GraphLook& look = Look(g);
  const float left = GraphLeft(g), right = GraphRight(g);
  const bool zoomed = look.viewXLeft > left || look.viewXRight < right || look.viewYLow > left || look.viewYHigh < right;
  const bool region = code(kCodeRegion) != 0.0f && zoomed;
  std::vector<std::uint8_t> mask;
  if (region) {
    const double h = (static_cast<double>(right) - left) / n_;
    const auto sample = [&](float at, bool up) {
      const double k = (static_cast<double>(at) - left) / h;
      return std::clamp(static_cast<int>(up ? std::ceil(k) : std::floor(k)), 0, n_ - 1);
    };
    const int wavelet = std::clamp(static_cast<int>(std::lround(code(kCodeWavelet))), 1, 3);
    mask = wavelet::GetROIValues(n_, n_, sample(look.viewXLeft, false), sample(look.viewYLow, false),
                                 sample(look.viewXRight, true), sample(look.viewYHigh, true),
                                 wavelet::SupportOfWavelet(wavelet), levels);
  }
  const int stage = static_cast<int>(std::lround(code(kCodeStage)));
  if (stage == 1) return false;  // no prefix-coded writer for this file type
  const int wavelet = std::clamp(static_cast<int>(std::lround(code(kCodeWavelet))), 1, 3);
  context_.ShowBusy();
  // The transform of the plane's n by n part.
  std::vector<float> work = CopyOfGraph(g);
  wavelet::Transform2D(ChoiceOfWavelet(wavelet), false, n_, wavelet::MatrixView{work.data(), Stride()}, levels);
  std::vector<float> plane(static_cast<std::size_t>(n_) * static_cast<std::size_t>(n_));
  for (int y = 0; y < n_; ++y)
    std::copy_n(work.begin() + static_cast<std::ptrdiff_t>(static_cast<std::size_t>(y) * Stride()), n_,
                plane.begin() + static_cast<std::ptrdiff_t>(static_cast<std::size_t>(y) * n_));
  wavelet::WdrEncodeOptions options;
  options.levels = levels;
  options.scanMode = std::clamp(static_cast<int>(std::lround(code(kCodeScanMode))), 0, 3) + 1;
  options.stopKind = code(kCodeStopKind) != 0.0f ? wavelet::WdrStopKind::Psnr : wavelet::WdrStopKind::BitRate;
  options.target = code(kCodeTarget);
  options.stage = stage == 2 ? wavelet::WdrEntropyStage::Arithmetic : wavelet::WdrEntropyStage::Binary;
  options.model = code(kCodeModel) != 0.0f ? wavelet::WdrSourceModel::MixedOrders : wavelet::WdrSourceModel::ZeroOrder;
  options.lossless = code(kCodeLossless) != 0.0f;
  options.head.wc2 = true;
  options.head.waveletByte = wavelet;
  if (region) {
    options.regionMask = &mask;
    options.regionFraction = code(kCodeRegionFraction);
  }
  const wavelet::WdrEncodeResult result = wavelet::EncodeTransform(plane, n_, options);
  context_.ShowIdle();
  // Only the mixed-order arithmetic coder codes a region; for any other
  // choice nothing is written.
  if (result.status == wavelet::WdrEncodeStatus::RegionNotCoded) return false;
  if (result.message != 0) {
    context_.ShowError(result.message);
    return false;
  }
  if (result.status != wavelet::WdrEncodeStatus::Ok || !WriteFileBytes(path, wavelet::WriteWicFile(result.file))) {
    context_.ShowError(32);
    return false;
  }
  return true;
}

bool Graph2Form::GetWaveletCompressedFile(const std::string& path) {
  std::vector<std::uint8_t> bytes;
  std::optional<wavelet::WdrDecodedFile> decoded;
  context_.ShowBusy();
  if (ReadFileBytes(path, bytes)) decoded = wavelet::DecodeWicFile(bytes, true);
  if (!decoded) {
    context_.ShowIdle();
    context_.ShowError(85);
    return false;
  }
  // DecodeNonROI: the inverse transform, each pixel rounded and held to
  // 0..255, on a grid of the file's side.
  const int n = decoded->plane.width;
  const std::size_t stride = static_cast<std::size_t>(n) + 1;
  std::vector<float> values(stride * stride, 0.0f);
  for (int y = 0; y < n; ++y)
    for (int x = 0; x < n; ++x) values[static_cast<std::size_t>(y) * stride + x] = decoded->plane.At(x, y);
  wavelet::InverseTransform2D(ChoiceOfWavelet(decoded->waveletByte % 10), false, n,
                              wavelet::MatrixView{values.data(), stride}, decoded->levels);
  for (float& v : values) v = std::clamp(std::nearbyint(v), 0.0f, 255.0f);
  context_.ShowIdle();
  const float left = -0.5f, right = 0.5f;
  if (n != n_) {
    if (graphCount_ > 0) {
      // A graph of another side goes to a new form; this one stays as it is.
      Graph2Form* form = NewResultForm(n);
      return form && form->DisplayFunction(n, values.data(), stride, left, right, (right - left) / n) != nullptr;
    }
    SetPoints(n);
  }
  return DisplayFunction(n, values.data(), stride, left, right, (right - left) / static_cast<float>(n)) != nullptr;
}

}  // namespace keldo::form2d
