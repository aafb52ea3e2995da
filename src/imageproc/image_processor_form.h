#pragma once
// The image processor: a grey picture on the left, what a command made of
// it on the right, and a report. A menu chooses the command (transform,
// compress, decompress) and fills the side box with its fields; "Compute"
// runs it. Compression writes a file of the bit-plane coders at a chosen
// rate; decompression reads one back into the right-hand picture.

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "analysis/image_errors.h"
#include "analysis/median_image.h"
#include "formula/compiler.h"
#include "imageproc/processor_image.h"
#include "kit/form.h"
#include "kit/named_calls.h"
#include "wavelet/aswdr.h"
#include "wavelet/aswdr_denoise.h"
#include "wavelet/image_transform.h"

namespace keldo::imageproc {

// The commands the side box's label names.
inline constexpr const char* kCommandTransform = "Transform";
inline constexpr const char* kCommandCompress = "Compress";
inline constexpr const char* kCommandDecompress = "Decompress";
inline constexpr const char* kCommandTaws = "Denoise-TAWS";
inline constexpr const char* kCommandSureShrink = "Denoise-SureShrink";
inline constexpr const char* kCommandErrorMeasures = "Error measures";

// The region of interest in pixels of the padded image, corners sorted
// (x1 <= x2, y1 <= y2) and clipped to it; x runs along the columns of the
// dumped matrices and y along their rows.
struct RoiRectangle {
  int x1 = 0, y1 = 0, x2 = 0, y2 = 0;
};

class ImageProcessorForm final : public Form, public ImageFileReceiver, private formula::FormulaHost {
 public:
  static constexpr FormKind kKind = FormKind::ImageProcessor;

  explicit ImageProcessorForm(FormContext& context);

  // The named call of the two-dimensional form: a picture it cannot hold.
  bool LoadImageFile(const std::string& path) override;

  void GetTheImage();
  void SaveTheReconstructedImage();
  void CopyImage(bool right);
  // The menu commands: the label and the frames of the side box.
  void ChooseCommand(const std::string& command);
  // "Compute" under "Denoise-TAWS": the left image denoised by TAWS into
  // the right one (threshold from its box or, with chkAutoThreshold, from
  // the noise of the finest diagonal band; with chkAverage, the mean over
  // the cyclic shifts of AvgType).
  void DenoiseImageTAWS();
  // The compress-denoise coders of options 2 (.bcd) and 3 (.acd) at a rate;
  // option 2 also with the dragged region and the share of txtROIPercent.
  void Compress_Denoise_ASWDR_Binary_Ver1(double bpp);
  void Compress_Denoise_ASWDR_Arithmetic_Ver1(double bpp);
  void Compress_Denoise_ASWDR_Binary_Ver1_ROI(double bpp);
  // The coder of options 2 and 3; none for the others.
  std::optional<wavelet::AswdrCoder> DenoiseCoderChosen() const;
  // "Compute": the command the label names.
  void Begin();
  void TransformCommand();
  void CompressCommand();
  void DecompressCommand();
  // "Compute" under "Denoise-SureShrink": the left image's transform with
  // every detail band through SureShrink (soft with chkShrinkage2 ticked,
  // else hard), inverted into the right image.
  void DenoiseImageSureShrink();
  // The median filters of the left image into the right one: the plain
  // median of each pixel's window, or the adaptive one that keeps a pixel
  // more than 10 % away from its median.
  void MedianDenoiseImage();
  void AdaptiveMedianDenoiseImage();
  // "Compute" under "Error measures": the measure OpErrorMeasure chooses,
  // between the left image and the right one, as lines of the report.
  void ErrorMeasuresCommand();
  // The region's corners in pixels from the drag: sorted, then clipped to
  // 0..MaxX and 0..MaxY of the padded image. False when no drag is done.
  bool GetROICoordinates(int& x1, int& y1, int& x2, int& y2) const;
  // Writes the corners of the region in the report.
  void ReportROICoordinates();
  const std::optional<RoiRectangle>& Region() const { return roi_; }

  // The mask of the transform positions that bore on the region in the
  // last compression with one, by position (y * width + x); empty after any
  // other compression, a decompression or a new image. The right image
  // shows it while it stands.
  const std::vector<std::uint8_t>& RegionMask() const { return regionMask_; }

  const ProcessorImage& Image() const { return image_; }
  const ProcessorImage& Reconstruction() const { return recon_; }
  const wavelet::ImagePlane& TransformPlane() const { return transform_; }
  const wavelet::ImagePlane& Quant() const { return quant_; }
  int WaveletIndex() const { return waveletIndex_; }
  bool HasImage() const { return !image_.Empty(); }

  std::vector<Picture> Pictures() const override;
  void Paint(int picture, platform::Surface& surface) const override;
  // The pointer on the left image, in its pixels: a drag there marks the
  // region of interest, a plain click clears it. The picture's coordinates
  // run across it (y) and down it (x); Mouse, for scripts, takes x and y.
  bool PictureMouse(int picture, MouseAction action, double across, double down, MouseButton button) override;
  // A script names a point of the left image down first, as Mouse takes it.
  bool ScriptPoint(int picture, double across, double down, double& scriptX, double& scriptY) const override {
    scriptX = down;
    scriptY = across;
    return picture == 0;
  }
  bool Mouse(MouseAction action, double x, double y, MouseButton button) override;
  // Moves are wanted while a drag is under way: they draw its band.
  bool TracksPointer() const override;
  const FormLayout& Layout() const override;
  void ControlChanged(const std::string& name) override;
  std::vector<GraphSummary> Graphs() const override;

 private:
  void BuildControls();
  void BindCommands();
  // Takes a loaded picture: the left image, an empty right one.
  void TakeImage(ProcessorImage image, const std::string& title);
  bool LoadPgmFile(const std::string& path);
  bool LoadPictureFile(const std::string& path);
  // The head of a coder's file for the loaded picture at `bpp`, the levels
  // box set to 5 (4 for the lossless coder) and lowered to the picture's
  // limit, and the picture transformed with the busy pointer on; nothing
  // after a message about the levels.
  std::optional<wavelet::AswdrHead> TransformForCoding(double bpp, bool lossless);
  // SetNumberOfLevels: the box's levels, lowered to the image's limit; -1
  // after a message.
  int SetNumberOfLevels();
  // The bit rate of the box; false after a message.
  bool ReadBitRate(double& bpp);
  // The transform of the left image at the levels and wavelet given.
  void TransformImage(int levels);
  // The right image from a plane by the inverse transform: each pixel the
  // rounded |value|, at most 255.
  void ReconstructFrom(const wavelet::ImagePlane& plane, int levels);
  void AddReport(const std::string& line);
  void ResetWaveletLabel();
  std::optional<std::string> AskForFile(bool save, const std::string& extension);
  wavelet::AswdrCoder Coder() const;
  void CompressDenoise(wavelet::AswdrCoder coder, double bpp, bool withRegion);
  // The depth (from `depthBox`, none when empty) and descent of the
  // denoisers; false after "Run Error." for a depth outside 1..25 or a
  // descent that is not positive.
  bool ReadDepthAndDescent(const char* depthBox, const char* descentBox, int& depth, double& descent);
  // The noise estimate of a transform; with `setDepthBox` and
  // chkAutoThreshold ticked, txtDepth2 gets the depth it advises.
  wavelet::NoiseThreshold AutoThresholdValue(const wavelet::ImagePlane& transform, int levels, bool setDepthBox);

  // FormulaHost: the number fields of the side box.
  int FormulaPoints() const override { return 0; }
  int FormulaGraphCount() const override { return 0; }
  double FormulaIntervalLength() const override { return 1.0; }
  std::optional<std::string> FormulaPrompt(const std::string&, const std::string&) override { return std::nullopt; }
  void FormulaError(int number) override;
  platform::Random* FormulaRandom() override;
  const formula::GraphTable* FormulaGraphs() override { return nullptr; }

  // The rectangle of the last completed drag on the left image (RoiActive);
  // none after a plain click or a new image.
  std::optional<RoiRectangle> roi_;
  // The drag under way: where it began and where the pointer is, in pixels
  // (x, y) not yet sorted or clipped (DragStart, DragEnd).
  struct Drag {
    double x0 = 0, y0 = 0, x1 = 0, y1 = 0;
  };
  std::optional<Drag> drag_;
  // The region's outline (or the rubber band of a drag) over the left
  // image, in PaintColor.
  void MarkRegion(platform::Surface& surface) const;
  void ClearRegion();
  // The one rule of the median menus.
  void MedianDenoise(analysis::MedianRule rule);
  // The error measures' report lines over a rectangle of both images,
  // `prefix` ("ROI " or "") before each.
  void ComputeSupNormImages(const analysis::PixelRect& rect, const std::string& prefix);
  void ComputeSupNormTransforms();
  // Kind 1: the root of the mean square and the PSNR.
  void ComputeMSEorPSNR(int kind, const analysis::PixelRect& rect, const std::string& prefix);
  void ComputeMSError(const analysis::PixelRect& rect, const std::string& prefix);
  void ComputeSNR(const analysis::PixelRect& rect, const std::string& prefix);
  // SetNumberOfLevelsLossless: SetNumberOfLevels with at most 4 levels for
  // an integer wavelet.
  int SetNumberOfLevelsLossless();
  // The share p of the bits for the region from txtROIPercent: below 0 it
  // is 0.01, above 0.99 it is 0.99, and the box shows the value taken.
  // Nothing after a message for a text that is no number.
  std::optional<double> ReadRegionShare();
  // The coder over transform_: lossless or to the head's budget, with the
  // region of roi_ and the share p when one is given (the lossless
  // coder's budget is then the bits of a plain lossless run). Sets or clears
  // regionMask_.
  wavelet::AswdrEncoded EncodeTransform(const wavelet::AswdrHead& head, wavelet::AswdrCoder coder, bool lossless,
                                        std::optional<double> share);
  // The right image's view of regionMask_: the marked positions in
  // PaintColor on black.
  platform::RgbImage RegionMaskPicture() const;
  std::vector<std::uint8_t> regionMask_;
  // What "Compute" runs for each command of the label.
  std::map<std::string, std::function<void()>> commands_;
  ProcessorImage image_, recon_;
  wavelet::ImagePlane transform_, quant_;
  int levels_ = 0;
  int waveletIndex_ = 1;
  bool showTransform_ = false;
  // Whether a decoded size differs from the loaded one, across and down.
  std::string sizeFlagWidth_ = "N", sizeFlagHeight_ = "N";
  std::string imageFolder_;
  formula::FormulaState formula_;
  formula::Compiler compiler_{formula_, *this};
};

std::unique_ptr<Form> MakeImageProcessorForm(FormContext& context);

}  // namespace keldo::imageproc
