// The image processor's median filters and its error measures between the
// left image and the right, reconstructed one.

#include <algorithm>
#include <cmath>

#include "common/number_text.h"
#include "imageproc/image_processor_form.h"
#include "kit/form_context.h"

namespace keldo::imageproc {
namespace {

// OpErrorMeasure, in the order of its options.
enum ErrorMeasure : int { kSupNormImages = 0, kSupNormTransforms, kPsnr, kMeanSquare, kSnr, kMeasureCount };

analysis::ByteImage ViewOf(const ProcessorImage& image) { return {image.bytes.data(), image.width}; }

// The measured part: the pixels both images hold from their pictures (the
// padding is left out), within the region when one is given.
analysis::PixelRect MeasuredRect(const ProcessorImage& left, const ProcessorImage& right,
                                 const std::optional<RoiRectangle>& region) {
  analysis::PixelRect r{0, 0, std::min(left.originalWidth, right.originalWidth) - 1,
                        std::min(left.originalHeight, right.originalHeight) - 1};
  if (region) {
    r.x1 = std::max(r.x1, region->x1);
    r.y1 = std::max(r.y1, region->y1);
    r.x2 = std::min(r.x2, region->x2);
    r.y2 = std::min(r.y2, region->y2);
  }
  return r;
}

}  // namespace

// ------------------------------------------------------------- medians

void ImageProcessorForm::MedianDenoiseImage() { MedianDenoise(analysis::MedianRule::Plain); }

void ImageProcessorForm::AdaptiveMedianDenoiseImage() { MedianDenoise(analysis::MedianRule::Adaptive); }

void ImageProcessorForm::MedianDenoise(analysis::MedianRule rule) {
  if (image_.Empty()) {
    context_.Beep();
    return;
  }
  // The windows take the picture's own edges, 0..MaxOriginalX and
  // 0..MaxOriginalY; the grid is read with y as its row, as stored.
  const int rows = image_.originalHeight, cols = image_.originalWidth;
  context_.ShowBusy();
  const std::vector<std::uint8_t> filtered =
      analysis::MedianFilterBytes(image_.bytes.data(), static_cast<std::size_t>(image_.width), rows, cols, rule);
  // The right image has the left one's size; its padding repeats the last
  // pixel of each line and the last line, as a loaded picture's does.
  ProcessorImage out = image_;
  for (int y = 0; y < out.height; ++y)
    for (int x = 0; x < out.width; ++x)
      out.bytes[static_cast<std::size_t>(y) * static_cast<std::size_t>(out.width) + static_cast<std::size_t>(x)] =
          filtered[static_cast<std::size_t>(std::min(y, rows - 1)) * static_cast<std::size_t>(cols) +
                   static_cast<std::size_t>(std::min(x, cols - 1))];
  recon_ = std::move(out);
  context_.ShowIdle();
  Touch();
}

// ------------------------------------------------------------ measures

void ImageProcessorForm::ErrorMeasuresCommand() {
  // With no right image, or no left one, there is nothing to compare.
  if (image_.Empty() || recon_.Empty()) return;
  int option = 0;
  while (option < kMeasureCount && controls_[IndexedName("OpErrorMeasure", option)].value == 0) ++option;
  if (option == kMeasureCount) return;
  // The check without a dragged region measures the whole picture, and the
  // lines then say so by leaving out "ROI ".
  const bool regionOnly = controls_["chkROIErrorOnly"].value != 0 && roi_.has_value();
  const analysis::PixelRect rect = MeasuredRect(image_, recon_, regionOnly ? roi_ : std::nullopt);
  if (rect.Empty()) {
    // A region in the padding alone holds no pixel of the picture.
    context_.ShowError(53);
    return;
  }
  ReportErrorMeasure(option, rect, regionOnly ? "ROI " : "");
}

void ImageProcessorForm::ReportErrorMeasure(int option, const analysis::PixelRect& rect, const std::string& prefix) {
  const analysis::ByteImage left = ViewOf(image_), right = ViewOf(recon_);
  switch (option) {
    case kSupNormImages:
      // ComputeSupNormImages. The largest difference is ComputeSupNormError's;
      // the images' option writes it once, under its own words.
      AddReport(prefix + "Sup-norm difference = " + PlainNumber(analysis::ComputeSupNormError(left, right, rect)));
      break;
    case kSupNormTransforms:
      // ComputeSupNormTransforms: nothing to show.
      break;
    case kPsnr: {
      // ComputeMSEorPSNR, kind 1: the root of the mean square and the PSNR.
      // The root's line with a region reads "ROI Root Mean Square Error:  ",
      // the root being what it shows.
      const double meanSquare = analysis::ComputeMSError(left, right, rect);
      AddReport(prefix + "Root Mean Square Error:  " + PlainNumber(std::sqrt(meanSquare)));
      double psnr = 0.0;
      if (analysis::PSNRVal(meanSquare, psnr)) AddReport(prefix + "PSNR:  " + PlainNumber(psnr) + " dB");
      else AddReport(prefix + "PSNR:  none, the images are identical");
      break;
    }
    case kMeanSquare:
      AddReport(prefix + "Mean Square Error:  " + PlainNumber(analysis::ComputeMSError(left, right, rect)));
      break;
    case kSnr: {
      // ComputeSNR: S the mean square of the left image, N that of the
      // difference.
      const double signal = analysis::MeanSquareOf(left, rect), noise = analysis::ComputeMSError(left, right, rect);
      double snr = 0.0;
      if (analysis::SNRValue(signal, noise, snr)) AddReport(prefix + "SNR:  " + PlainNumber(snr) + " dB");
      else if (noise == 0.0) AddReport(prefix + "SNR:  none, the images are identical");
      else AddReport(prefix + "SNR:  none, the left image is black");
      break;
    }
    default:
      break;
  }
  Touch();
}

}  // namespace keldo::imageproc
