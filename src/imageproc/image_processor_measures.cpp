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
  const std::string prefix = regionOnly ? "ROI " : "";
  switch (option) {
    case kSupNormImages: ComputeSupNormImages(rect, prefix); break;
    case kSupNormTransforms: ComputeSupNormTransforms(); break;
    case kPsnr: ComputeMSEorPSNR(1, rect, prefix); break;
    case kMeanSquare: ComputeMSError(rect, prefix); break;
    case kSnr: ComputeSNR(rect, prefix); break;
    default: break;
  }
  Touch();
}

void ImageProcessorForm::ComputeSupNormImages(const analysis::PixelRect& rect, const std::string& prefix) {
  // The largest difference is ComputeSupNormError's; the images' option
  // writes it once, under its own words "Sup-norm difference = ".
  AddReport(prefix + "Sup-norm difference = " +
            PlainNumber(analysis::ComputeSupNormError(ViewOf(image_), ViewOf(recon_), rect)));
}

// The transforms' sup-norm shows nothing.
void ImageProcessorForm::ComputeSupNormTransforms() {}

void ImageProcessorForm::ComputeMSEorPSNR(int kind, const analysis::PixelRect& rect, const std::string& prefix) {
  const double meanSquare = analysis::ComputeMSError(ViewOf(image_), ViewOf(recon_), rect);
  if (kind != 1) {
    AddReport(prefix + "Mean Square Error:  " + PlainNumber(meanSquare));
    return;
  }
  // The root's line with a region reads "ROI Root Mean Square Error:  ",
  // the root being what it shows.
  AddReport(prefix + "Root Mean Square Error:  " + PlainNumber(std::sqrt(meanSquare)));
  double psnr = 0.0;
  if (analysis::PSNRVal(meanSquare, psnr)) AddReport(prefix + "PSNR:  " + PlainNumber(psnr) + " dB");
  else AddReport(prefix + "PSNR:  none, the images are identical");
}

void ImageProcessorForm::ComputeMSError(const analysis::PixelRect& rect, const std::string& prefix) {
  ComputeMSEorPSNR(0, rect, prefix);
}

void ImageProcessorForm::ComputeSNR(const analysis::PixelRect& rect, const std::string& prefix) {
  // S the mean square of the left image, N that of the difference.
  const double signal = analysis::MeanSquareOf(ViewOf(image_), rect);
  const double noise = analysis::ComputeMSError(ViewOf(image_), ViewOf(recon_), rect);
  double snr = 0.0;
  if (analysis::SNRValue(signal, noise, snr)) AddReport(prefix + "SNR:  " + PlainNumber(snr) + " dB");
  else if (noise == 0.0) AddReport(prefix + "SNR:  none, the images are identical");
  else AddReport(prefix + "SNR:  none, the left image is black");
}

}  // namespace keldo::imageproc
