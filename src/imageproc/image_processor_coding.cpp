// The image processor's lossless coding and its region coders: the levels
// rule of the lossless path, the share of the bits given to a region, and
// the coder run over the transform with the region's mask.

#include <algorithm>
#include <cmath>

#include "common/number_text.h"
#include "imageproc/image_processor_form.h"
#include "kit/focus.h"
#include "kit/form_context.h"
#include "wavelet/aswdr_region.h"

namespace keldo::imageproc {
namespace {

// PaintColor: the colour of the region's marks.
constexpr platform::Rgb kMaskColor = platform::MakeRgb(255, 255, 48);
// The bounds of the region's share of the bits.
constexpr double kLeastShare = 0.01;
constexpr double kLargestShare = 0.99;
// The integer wavelets' cap on levels in the lossless path.
constexpr int kLosslessLevels = 4;

}  // namespace

int ImageProcessorForm::SetNumberOfLevelsLossless() {
  int levels = SetNumberOfLevels();
  if (levels > kLosslessLevels && waveletIndex_ > 1) {
    levels = kLosslessLevels;
    controls_.SetText("txtLevels", std::to_string(levels));
  }
  return levels;
}

std::optional<double> ImageProcessorForm::ReadRegionShare() {
  std::string text = controls_.Text("txtROIPercent");
  const double p = compiler_.VALU(text);
  if (text == "N!N" || !std::isfinite(p)) {
    context_.ShowError(86);
    return std::nullopt;
  }
  if (p >= 0.0 && p <= kLargestShare) return p;
  const double taken = p < 0.0 ? kLeastShare : kLargestShare;
  controls_.SetText("txtROIPercent", PlainNumber(taken));
  RequestFocus(controls_, "txtROIPercent");
  return taken;
}

wavelet::AswdrEncoded ImageProcessorForm::EncodeTransform(const wavelet::AswdrHead& head, wavelet::AswdrCoder coder,
                                                          bool lossless, std::optional<double> share) {
  regionMask_.clear();
  if (!roi_ || !share) {
    return lossless ? wavelet::CompressAswdrLossless(transform_, head) : wavelet::CompressAswdr(transform_, head, coder);
  }
  // The coefficients that bear on the rectangle, and the bits spent on the
  // whole picture before the region alone takes the rest: for the lossless
  // coder, a share of what a plain lossless run spends.
  wavelet::AswdrRegion region = wavelet::RegionOfRectangle(
      transform_, head, {roi_->x1, roi_->y1, roi_->x2, roi_->y2}, *share,
      lossless ? wavelet::RegionBudgetBase::LosslessRun : wavelet::RegionBudgetBase::HeadBudget);
  wavelet::AswdrEncoded encoded = lossless ? wavelet::CompressAswdrLossless(transform_, head, &region)
                                           : wavelet::CompressAswdr(transform_, head, coder, &region);
  regionMask_ = std::move(region.mask);
  return encoded;
}

platform::RgbImage ImageProcessorForm::RegionMaskPicture() const {
  // x runs down the picture and y across it, as in the other pictures; the
  // mask lies on the transform's blocks, so nothing of the image is under it.
  const int width = transform_.width, height = transform_.height;
  platform::RgbImage picture(height, width, platform::kBlack);
  for (int x = 0; x < width; ++x)
    for (int y = 0; y < height; ++y) {
      const std::size_t at = static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x);
      if (at < regionMask_.size() && regionMask_[at] != 0) picture.Set(y, x, kMaskColor);
    }
  return picture;
}

}  // namespace keldo::imageproc
