// TAWS and the compress-denoise coders on the image processor: the frame
// "Thresholding" of Denoise-TAWS (threshold or its estimate, depth,
// descent, cycle spinning, shrinkage) and the coding frame's options 2
// "Compress+Denoise" (.bcd, also with a region) and 3 "Arithmetic+Denoise"
// (.acd).

#include <cmath>
#include <string>

#include "common/file_io.h"
#include "common/number_text.h"
#include "imageproc/image_processor_form.h"
#include "kit/focus.h"
#include "kit/form_context.h"
#include "platform/services.h"
#include "wavelet/aswdr_denoise.h"
#include "wavelet/aswdr_denoise_coder.h"
#include "wavelet/aswdr_region.h"

namespace keldo::imageproc {
namespace {

// The largest tree depth the boxes take.
constexpr int kMostDepth = 25;

// "1", "2", ..., "16" and the same with "D": the shifts along each axis and
// the diagonal form. False for any other text.
bool ParseAverageType(const std::string& text, int& count, bool& diagonal) {
  diagonal = !text.empty() && text.back() == 'D';
  const std::string number = diagonal ? text.substr(0, text.size() - 1) : text;
  for (int k : {1, 2, 4, 8, 16})
    if (number == std::to_string(k)) {
      count = k;
      return true;
    }
  return false;
}

}  // namespace

std::optional<wavelet::AswdrCoder> ImageProcessorForm::DenoiseCoderChosen() const {
  if (controls_.Find("OpEntropyCode(2)")->value != 0) return wavelet::AswdrCoder::Binary;
  if (controls_.Find("OpEntropyCode(3)")->value != 0) return wavelet::AswdrCoder::Arithmetic;
  return std::nullopt;
}

bool ImageProcessorForm::ReadDepthAndDescent(const char* depthBox, const char* descentBox, int& depth,
                                             double& descent) {
  // A depth box that is empty takes no part (the estimate writes it).
  const double typedDepth = depthBox[0] != '\0' ? compiler_.VALU(controls_.Text(depthBox)) : 1.0;
  descent = compiler_.VALU(controls_.Text(descentBox));
  // A depth or descent the passes can't run with ends the command as the
  // form's error recovery does, with the images as they were.
  if (!(typedDepth >= 1.0 && typedDepth <= kMostDepth) || !(descent > 0.0) || !std::isfinite(descent)) {
    context_.ShowCritical("Run Error.  ");
    return false;
  }
  depth = static_cast<int>(std::nearbyint(typedDepth));
  return true;
}

wavelet::NoiseThreshold ImageProcessorForm::AutoThresholdValue(const wavelet::ImagePlane& transform, int levels,
                                                               bool setDepthBox) {
  const wavelet::NoiseThreshold noise = wavelet::AutoThresholdValue(transform, levels);
  if (setDepthBox && controls_["chkAutoThreshold"].value != 0) {
    controls_.SetText("txtDepth2", std::to_string(noise.depth));
    RequestFocus(controls_, "txtDepth2");
  }
  return noise;
}

void ImageProcessorForm::DenoiseImageTAWS() {
  if (image_.Empty()) {
    context_.Beep();
    return;
  }
  const int levels = SetNumberOfLevels();
  if (levels < 0) return;
  const bool automatic = controls_["chkAutoThreshold"].value != 0;
  double threshold = 0.0;
  if (!automatic) {
    std::string text = controls_.Text("TxtThreshold");
    threshold = compiler_.VALU(text);
    if (text == "N!N" || !std::isfinite(threshold)) {
      context_.ShowError(10);
      return;
    }
    if (threshold < 0.0) {
      context_.ShowError(11);
      return;
    }
    if (threshold == 0.0) {
      context_.ShowCritical("Run Error.  ");
      return;
    }
  }
  int shifts = 1;
  bool diagonal = false;
  if (controls_["chkAverage"].value != 0 && !ParseAverageType(controls_.Text("AvgType"), shifts, diagonal)) shifts = 1;
  // Every box is checked before any work; with the estimate the depth box
  // is written by it, and its old text takes no part.
  int depth = 1;
  double descent = 0.0;
  if (!ReadDepthAndDescent(automatic ? "" : "txtDepth2", "txtDescentPower2", depth, descent)) return;
  wavelet::ImagePlane picture(image_.width, image_.height);
  picture.v.assign(image_.bytes.begin(), image_.bytes.end());
  context_.ShowBusy();
  if (automatic) {
    // TransformTheImageDN: the transform for the estimate, not shown.
    wavelet::ImagePlane transform = picture;
    wavelet::TransformTheImage(transform, levels, waveletIndex_);
    const wavelet::NoiseThreshold noise = AutoThresholdValue(transform, levels, true);
    threshold = noise.threshold;
    depth = noise.depth;
  }
  wavelet::TawsOptions options;
  options.levels = levels;
  options.depth = depth;
  options.descent = descent;
  options.shrink = controls_["chkShrinkage"].value != 0;
  if (shifts == 1 && !diagonal) {
    wavelet::ImagePlane quant;
    wavelet::DenoisePictureTAWS(picture, waveletIndex_, threshold, options, &quant);
    quant_ = std::move(quant);
    levels_ = levels;
    ReconstructFrom(quant_, levels_);
  } else {
    // Cycle spinning from the stored picture; the button shows the share
    // done while the shifts run.
    Control& begin = controls_["cmdBegin"];
    const std::string caption = begin.text;
    wavelet::ImagePlane mean;
    const bool done = wavelet::DenoiseAveragedTAWS(
        picture, waveletIndex_, threshold, options, wavelet::AverageShifts(shifts, diagonal), mean, [&](int percent) {
          begin.text = std::to_string(percent) + "% done.";
          Touch();
          if (platform::EventLoop* loop = context_.services().eventLoop) loop->Yield();
          return true;
        });
    begin.text = caption;
    if (!done) {
      context_.ShowIdle();
      Touch();
      return;
    }
    // The right image's transform, for the display and the measures.
    quant_ = mean;
    wavelet::TransformTheImage(quant_, levels, waveletIndex_);
    levels_ = levels;
    ReconstructFrom(quant_, levels_);
    recon_.bytes = wavelet::RoundedMagnitudeBytes(mean);
  }
  AddReport("Threshold = " + PlainNumber(threshold));
  context_.ShowIdle();
  Touch();
}

void ImageProcessorForm::CompressDenoise(wavelet::AswdrCoder coder, double bpp, bool withRegion) {
  int depth = 1;
  double descent = 0.0;
  if (!ReadDepthAndDescent("txtDepth", "txtDescentPower", depth, descent)) return;
  std::optional<double> share;
  if (withRegion && !(share = ReadRegionShare())) return;
  const std::optional<std::string> path = AskForFile(true, coder == wavelet::AswdrCoder::Binary ? "bcd" : "acd");
  if (!path) return;
  const std::optional<wavelet::AswdrHead> head = TransformForCoding(bpp, false);
  if (!head) return;
  const int levels = head->levels;
  wavelet::DenoiseCoding coding;
  coding.noiseThreshold = AutoThresholdValue(transform_, levels, false).threshold;
  coding.depth = depth;
  coding.descent = descent;
  coding.minBitRate = controls_["chkMinBitRate"].value != 0;
  // With a region, the bits past the share of the whole picture go to the
  // coefficients that bear on it.
  regionMask_.clear();
  wavelet::AswdrRegion region;
  if (share) {
    region = wavelet::RegionOfRectangle(transform_, *head, {roi_->x1, roi_->y1, roi_->x2, roi_->y2}, *share,
                                        wavelet::RegionBudgetBase::HeadBudget);
  }
  wavelet::AswdrEncoded encoded =
      wavelet::CompressDenoiseAswdr(transform_, *head, coder, coding, share ? &region : nullptr);
  if (share) regionMask_ = std::move(region.mask);
  for (const std::string& line : encoded.report) AddReport(line);
  const bool written = !encoded.file.empty() && WriteFileBytes(*path, encoded.file);
  context_.ShowIdle();
  if (!written) {
    context_.ShowError(32);
    return;
  }
  quant_ = std::move(encoded.quant);
  AddReport("Compressed file: " + *path);
  AddReport("To decompress this file, press the GO button.");
  ChooseCommand(kCommandDecompress);
}

void ImageProcessorForm::Compress_Denoise_ASWDR_Binary_Ver1(double bpp) {
  CompressDenoise(wavelet::AswdrCoder::Binary, bpp, false);
}

void ImageProcessorForm::Compress_Denoise_ASWDR_Arithmetic_Ver1(double bpp) {
  CompressDenoise(wavelet::AswdrCoder::Arithmetic, bpp, false);
}

void ImageProcessorForm::Compress_Denoise_ASWDR_Binary_Ver1_ROI(double bpp) {
  CompressDenoise(wavelet::AswdrCoder::Binary, bpp, true);
}

}  // namespace keldo::imageproc
