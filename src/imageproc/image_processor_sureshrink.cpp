// SureShrink on the image processor: the left image's transform, each
// detail band thresholded at the level that minimises Stein's unbiased risk
// estimate (or at the universal threshold for a sparse band), hard or soft
// by the frame's "Shrinkage" box, and the inverse on the right.

#include "imageproc/image_processor_form.h"
#include "kit/form_context.h"
#include "wavelet/image_denoise.h"

namespace keldo::imageproc {

void ImageProcessorForm::DenoiseImageSureShrink() {
  if (image_.Empty()) {
    context_.Beep();
    return;
  }
  const int levels = SetNumberOfLevels();
  if (levels < 0) return;
  const wavelet::Shrinkage rule =
      controls_["chkShrinkage2"].value != 0 ? wavelet::Shrinkage::Soft : wavelet::Shrinkage::Hard;
  context_.ShowBusy();
  // The transform of the image, kept apart from the one the left box shows.
  wavelet::ImagePlane plane(image_.width, image_.height);
  plane.v.assign(image_.bytes.begin(), image_.bytes.end());
  wavelet::TransformTheImage(plane, levels, waveletIndex_);
  wavelet::SureShrinkImageTransform(plane, levels, rule);
  quant_ = std::move(plane);
  levels_ = levels;
  ReconstructFrom(quant_, levels_);
  context_.ShowIdle();
  Touch();
}

}  // namespace keldo::imageproc
