#include "imageproc/image_processor_form.h"

#include <algorithm>
#include <cmath>
#include <filesystem>

#include "common/file_io.h"
#include "common/number_text.h"
#include "common/text.h"
#include "imageproc/image_processor_menu.h"
#include "kit/form_context.h"
#include "kit/menu_table.h"
#include "platform/file_dialog.h"
#include "platform/imaging.h"
#include "platform/services.h"
#include "wavelet/aswdr_denoise_coder.h"

namespace keldo::imageproc {
namespace {

constexpr const char* kImageFilter =
    "Windows bitmap (*.bmp)|*.bmp|JPEG (*.jpg)|*.jpg|DIB (*.dib)|*.dib|PCX (*.pcx)|*.pcx|PNG (*.png)|*.png"
    "|TIFF (*.tif)|*.tif|PGM (*.pgm)|*.pgm";
constexpr const char* kSaveFilter = "Windows Bitmap file|*.bmp|PGM file (*.pgm)|*.pgm";

// The coders' files by extension.
std::string CompressedFilter(const std::string& extension) {
  if (extension == "awd") return "ASWDR_Ver1 binary compression (*.awd)|*.awd";
  if (extension == "awe") return "ASWDR_Ver1 arith. compression (*.awe)|*.awe";
  if (extension == "awg") return "ASWDR_V1 lossless arith. compression (*.awg)|*.awg";
  if (extension == "bcd") return "Binary compress/denoise (*.bcd)|*.bcd";
  if (extension == "acd") return "Arith compress/denoise (*.acd)|*.acd";
  return "All files (*.*)|*.*";
}

// cmbWavelet's texts and WaveletIndex: 1 "Daub 9/7", 2 "DD 5/3 Integer",
// 3 "DD 2+2,2 Integer".
constexpr const char* kWaveletNames[] = {"Daub 9/7", "DD 5/3 Integer", "DD 2+2,2 Integer"};

int WaveletIndexOf(const std::string& text) {
  for (int k = 0; k < 3; ++k)
    if (text == kWaveletNames[k]) return k + 1;
  return 1;
}

bool EndsWithNoCase(const std::string& text, const std::string& end) {
  if (text.size() < end.size()) return false;
  for (std::size_t k = 0; k < end.size(); ++k)
    if (std::tolower(static_cast<unsigned char>(text[text.size() - end.size() + k])) != end[k]) return false;
  return true;
}

platform::RgbImage GreyPicture(int width, int height, const std::function<int(int, int)>& level) {
  // x runs down the picture and y across it.
  platform::RgbImage picture(height, width, platform::kBlack);
  for (int x = 0; x < width; ++x)
    for (int y = 0; y < height; ++y) {
      const int g = std::clamp(level(x, y), 0, 255);
      picture.Set(y, x, platform::MakeRgb(g, g, g));
    }
  return picture;
}

}  // namespace

ImageProcessorForm::ImageProcessorForm(FormContext& context) : Form(context, FormKind::ImageProcessor) {
  BuildControls();
  BindCommands();
  AddCommonFileHandlers();
  DisableItemsWithoutHandler();
  // The Transform command is kept for Compute, but the menu does not offer it.
  controls_.SetEnabled("mnuTransformImage", false);
  controls_.SetVisible("mnuTransformImage", false);
  imageFolder_ = context_.Folder("Images");
  ChooseCommand(kCommandCompress);
}

void ImageProcessorForm::BuildControls() {
  SetMenu(BuildMenu(ImageProcessorMenuBar(), controls_));
  // One side box, whose frames follow the command its label names.
  controls_.Add("PicSideBox(0)", ControlKind::Panel);
  controls_.Add("LabCommand", ControlKind::Label, kCommandCompress);
  // The frames of the side box, shown for the commands they serve.
  controls_.Add("frTransform", ControlKind::Label, "Transform");
  controls_.Add("frWavelet", ControlKind::Label, "Wavelet transform");
  controls_.Add("frCoding", ControlKind::Label, "Coding");
  controls_.Add("frTAWS", ControlKind::Label, "Thresholding");
  controls_.Add("frSureShrink", ControlKind::Label, "Thresholding");
  controls_.Add("frErrorMeasures", ControlKind::Label, "Measure");
  // The transform frame.
  controls_.AddOption("OpTransform(0)", "Forward ", "OpTransform", true);
  controls_.AddOption("OpTransform(1)", "Inverse ", "OpTransform");
  controls_.Add("txtLevels", ControlKind::Text, "5").tip = "The number of levels of the wavelet transform.";
  Control& wavelets = controls_.Add("cmbWavelet", ControlKind::List, "Daub 9/7");
  wavelets.items = {"DD 5/3 Integer", "DD 2+2,2 Integer", "Daub 9/7"};
  wavelets.value = 2;
  // The coding frame.
  controls_.Add("txtBitRate", ControlKind::Text, "0.25").tip = "The bit rate in bits per pixel; 0 for lossless.";
  const char* codes[] = {"Binary", "Arithmetic", "Compress+Denoise", "Arithmetic+Denoise"};
  for (int k = 0; k < 4; ++k) controls_.AddOption(IndexedName("OpEntropyCode", k), codes[k], "OpEntropyCode", k == 1);
  controls_.Add("txtROIPercent", ControlKind::Text, "0.5").tip = "The share of the bits spent on the region.";
  controls_.SetEnabled("txtROIPercent", false);
  controls_.Add("chkMinBitRate", ControlKind::Check, "Minimum bit rate").tip =
      "Stops the denoising coders at the noise threshold, whatever the bit rate.";
  controls_.Add("txtDepth", ControlKind::Text, "1").tip = "The depth of the tree test of the denoising coders.";
  controls_.Add("txtDescentPower", ControlKind::Text, "2").tip =
      "The denoising coders' descent: the lowest threshold is the noise threshold divided by it.";
  // The frame of TAWS.
  controls_.Add("TxtThreshold", ControlKind::Text, "30").tip = "The noise threshold.";
  controls_.Add("txtDepth2", ControlKind::Text, "1").tip = "The depth of the tree test.";
  controls_.Add("txtDescentPower2", ControlKind::Text, "2").tip =
      "The descent: the lowest threshold is the noise threshold divided by it.";
  controls_.Add("chkAutoThreshold", ControlKind::Check, "Auto threshold").tip =
      "Estimates the noise from the finest diagonal band and sets the threshold and the depth.";
  controls_["chkAutoThreshold"].value = 1;
  controls_.Add("chkAverage", ControlKind::Check, "Average").tip = "Averages over cyclic shifts of the image.";
  Control& averages = controls_.Add("AvgType", ControlKind::List, "1");
  averages.items = {"1", "1D", "2", "2D", "4", "4D", "8", "8D", "16", "16D"};
  averages.value = 0;
  averages.tip = "The number of shifts along each axis; D shifts along the diagonal.";
  controls_.Add("chkShrinkage", ControlKind::Check, "Shrinkage").tip =
      "Moves each kept value toward zero by the lowest threshold.";
  // The frame of SureShrink.
  controls_.Add("chkShrinkage2", ControlKind::Check, "Shrinkage").tip =
      "Soft thresholding: each kept value moves toward zero by the threshold.";
  // The frame of the error measures.
  const char* measures[] = {"Sup-norm (images)", "Sup-norm (transforms)", "PSNR", "Mean square error", "SNR"};
  for (int k = 0; k < 5; ++k)
    controls_.AddOption(IndexedName("OpErrorMeasure", k), measures[k], "OpErrorMeasure", k == 2);
  controls_.Add("chkROIErrorOnly", ControlKind::Check, "Restrict to Region of Interest").tip =
      "Measures the error over the dragged rectangle only.";
  // The left picture shows the image or its transform.
  controls_.AddOption("OpDisplayImage", "Image", "OpDisplay", true);
  controls_.AddOption("OpDisplayTransform", "Transform", "OpDisplay");
  Control& begin = controls_.Add("cmdBegin", ControlKind::Button, "Compute");
  begin.tip = "Runs the command of the side box.";
  controls_.Add("Report", ControlKind::Text, "");
}

void ImageProcessorForm::BindCommands() {
  OnMenu("mnuGetImage", [this](int) { GetTheImage(); });
  OnMenu("mnuSaveReconstructedImage", [this](int) { SaveTheReconstructedImage(); });
  OnMenu("mnuCopyRightImage", [this](int) { CopyImage(true); });
  OnMenu("mnuCopyLeftImage", [this](int) { CopyImage(false); });
  OnMenu("mnuTransformImage", [this](int) { ChooseCommand(kCommandTransform); });
  OnMenu("mnuCompress", [this](int) { ChooseCommand(kCommandCompress); });
  OnMenu("mnuDecompress", [this](int) { ChooseCommand(kCommandDecompress); });
  OnMenu("mnuDenoiseTAWS", [this](int) { ChooseCommand(kCommandTaws); });
  OnMenu("mnuDenoiseSureShrink", [this](int) { ChooseCommand(kCommandSureShrink); });
  OnMenu("mnuErrormeasures", [this](int) { ChooseCommand(kCommandErrorMeasures); });
  commands_[kCommandTransform] = [this] { TransformCommand(); };
  commands_[kCommandCompress] = [this] { CompressCommand(); };
  commands_[kCommandDecompress] = [this] { DecompressCommand(); };
  commands_[kCommandTaws] = [this] { DenoiseImageTAWS(); };
  commands_[kCommandSureShrink] = [this] { DenoiseImageSureShrink(); };
  commands_[kCommandErrorMeasures] = [this] { ErrorMeasuresCommand(); };
  OnMenu("mnuMedianDenoise", [this](int) { MedianDenoiseImage(); });
  OnMenu("mnuAdaptiveMedianDenoise", [this](int) { AdaptiveMedianDenoiseImage(); });
  OnButton("cmdBegin", [this](int) { RunPaced([this] { Begin(); }); });
  OnMenu("mnuHelp", [this](int) { context_.GetHelp("ImageCompressor.HLP", ""); });
}

// ------------------------------------------------------------------ images

void ImageProcessorForm::GetTheImage() {
  const auto chosen = context_.services().fileDialog->Run({platform::FileDialogMode::Open, "Get image", kImageFilter,
                                                          7, platform::kFlagFileMustExist, "", imageFolder_});
  if (!chosen) return;
  imageFolder_ = std::filesystem::path(chosen->path).parent_path().string();
  LoadImageFile(chosen->path);
}

bool ImageProcessorForm::LoadImageFile(const std::string& path) {
  return EndsWithNoCase(path, "pgm") ? LoadPgmFile(path) : LoadPictureFile(path);
}

bool ImageProcessorForm::LoadPgmFile(const std::string& path) {
  std::vector<std::uint8_t> bytes;
  std::optional<ProcessorImage> image;
  if (ReadFileBytes(path, bytes)) image = ReadProcessorPgm(bytes);
  if (!image) {
    context_.ShowError(20);
    return false;
  }
  TakeImage(std::move(*image), std::filesystem::path(path).filename().string());
  return true;
}

bool ImageProcessorForm::LoadPictureFile(const std::string& path) {
  std::optional<platform::RgbImage> picture = context_.services().imaging->Load(path);
  std::optional<ProcessorImage> image;
  if (picture) image = ProcessorImageOfPicture(*picture);
  if (!image) {
    context_.ShowError(20);
    return false;
  }
  TakeImage(std::move(*image), std::filesystem::path(path).filename().string());
  return true;
}

void ImageProcessorForm::TakeImage(ProcessorImage image, const std::string& title) {
  image_ = std::move(image);
  recon_ = ProcessorImage{};
  transform_ = wavelet::ImagePlane{};
  quant_ = wavelet::ImagePlane{};
  showTransform_ = false;
  controls_.SetFromUser("OpDisplayImage", "1");
  sizeFlagWidth_ = sizeFlagHeight_ = "N";
  ClearRegion();
  regionMask_.clear();
  controls_.SetText("Report", "Image: " + title + "\r\nSize: " + std::to_string(image_.originalHeight) + " x " +
                                  std::to_string(image_.originalWidth) + "\r\n");
  Touch();
}

void ImageProcessorForm::SaveTheReconstructedImage() {
  if (recon_.Empty()) {
    context_.Beep();
    return;
  }
  const auto chosen = context_.services().fileDialog->Run(
      {platform::FileDialogMode::Save, "Save reconstructed image", kSaveFilter, 1, platform::kFlagsSaveDialog, "",
       imageFolder_});
  if (!chosen) return;
  const bool pgm = chosen->filterIndex == 2 || EndsWithNoCase(chosen->path, "pgm");
  bool saved = false;
  if (pgm) {
    saved = WriteFileBytes(chosen->path, ProcessorPgmBytes(recon_));
  } else {
    // The imaging service writes the file; a failure leaves any old one.
    const std::string temporary = chosen->path + ".saving.bmp";
    saved = context_.services().imaging->Save(temporary, PictureOf(recon_), {});
    std::error_code error;
    if (saved) std::filesystem::rename(temporary, chosen->path, error);
    if (!saved || error) {
      std::filesystem::remove(temporary, error);
      saved = false;
    }
  }
  if (!saved) context_.ShowError(32);
}

void ImageProcessorForm::CopyImage(bool right) {
  const ProcessorImage& source = right ? recon_ : image_;
  if (source.Empty()) {
    context_.Beep();
    return;
  }
  // The two-dimensional form holds a square grid of (N+1) by (N+1) samples,
  // N a power of two, and draws its row 0 at the bottom: the picture goes
  // into the smallest grid that holds it, upright in its bottom left
  // corner (its last line in row 0), black around it.
  int points = 64;
  while (points < std::max(source.originalWidth, source.originalHeight) && points < 2048) points *= 2;
  const auto stride = static_cast<std::size_t>(points) + 1;
  std::vector<float> samples(stride * stride, 0.0f);
  const int rows = std::min(source.originalWidth, points + 1);
  for (int x = 0; x < rows; ++x)
    for (int y = 0; y < std::min(source.originalHeight, points + 1); ++y)
      samples[static_cast<std::size_t>(rows - 1 - x) * stride + static_cast<std::size_t>(y)] = source.At(x, y);
  ImageReceiver* form = NewFormFor<ImageReceiver>(context_, FormKind::Graph2);
  if (!form) return;
  form->DisplayImage(points, samples.data(), stride, 0.0f, static_cast<float>(points), 1.0f);
}

// ---------------------------------------------------------------- commands

void ImageProcessorForm::ChooseCommand(const std::string& command) {
  controls_.SetText("LabCommand", command);
  const bool transform = command == kCommandTransform;
  const bool coding = command == kCommandCompress || command == kCommandDecompress;
  const bool taws = command == kCommandTaws;
  const bool sure = command == kCommandSureShrink;
  const bool measures = command == kCommandErrorMeasures;
  controls_.SetVisible("frTransform", transform);
  controls_.SetVisible("frWavelet", !measures);
  controls_.SetVisible("frCoding", coding);
  controls_.SetEnabled("txtBitRate", coding);
  controls_.SetVisible("frTAWS", taws);
  controls_.SetVisible("frSureShrink", sure);
  controls_.SetVisible("frErrorMeasures", measures);
  Touch();
}

void ImageProcessorForm::Begin() {
  const std::string& command = controls_.Text("LabCommand");
  if (const auto found = commands_.find(command); found != commands_.end()) found->second();
}

void ImageProcessorForm::ControlChanged(const std::string& name) {
  if (name == "cmbWavelet") waveletIndex_ = WaveletIndexOf(controls_.Text("cmbWavelet"));
  if (name == "OpDisplayImage" || name == "OpDisplayTransform") {
    showTransform_ = controls_["OpDisplayTransform"].value != 0 && !transform_.v.empty();
    Touch();
  }
}

void ImageProcessorForm::ResetWaveletLabel() {
  controls_.SetFromUser("cmbWavelet", kWaveletNames[std::clamp(waveletIndex_, 1, 3) - 1]);
}

void ImageProcessorForm::AddReport(const std::string& line) {
  controls_.SetText("Report", controls_.Text("Report") + line + "\r\n");
}

int ImageProcessorForm::SetNumberOfLevels() {
  const double typed = compiler_.VALU(controls_.Text("txtLevels"));
  if (!(typed >= 1)) {
    context_.ShowMessage("Number of levels must be a positive integer.");
    return -1;
  }
  if (typed > 25) {
    context_.ShowMessage("Number of levels too large.");
    return -1;
  }
  int levels = static_cast<int>(std::nearbyint(typed));
  const int limit = wavelet::LevelLimit(image_.width, image_.height, waveletIndex_);
  if (levels > limit) {
    levels = limit;
    controls_.SetText("txtLevels", std::to_string(levels));
  }
  return levels;
}

bool ImageProcessorForm::ReadBitRate(double& bpp) {
  std::string text = controls_.Text("txtBitRate");
  bpp = compiler_.VALU(text);
  if (text == "N!N" || !std::isfinite(bpp)) {
    context_.ShowError(84);
    return false;
  }
  if (bpp < 0) {
    context_.ShowError(84);
    return false;
  }
  return true;
}

void ImageProcessorForm::TransformImage(int levels) {
  transform_.width = image_.width;
  transform_.height = image_.height;
  transform_.v.assign(image_.bytes.begin(), image_.bytes.end());
  wavelet::TransformTheImage(transform_, levels, waveletIndex_);
  levels_ = levels;
}

void ImageProcessorForm::ReconstructFrom(const wavelet::ImagePlane& plane, int levels) {
  recon_.width = plane.width;
  recon_.height = plane.height;
  recon_.originalWidth = image_.Empty() ? plane.width : std::min(image_.originalWidth, plane.width);
  recon_.originalHeight = image_.Empty() ? plane.height : std::min(image_.originalHeight, plane.height);
  recon_.bytes = wavelet::InvertTheTransformQuant(plane, levels, waveletIndex_);
}

void ImageProcessorForm::TransformCommand() {
  if (image_.Empty()) {
    context_.Beep();
    return;
  }
  if (controls_["OpTransform(1)"].value != 0) {
    if (transform_.v.empty()) {
      context_.Beep();
      return;
    }
    ReconstructFrom(transform_, levels_);
    controls_.SetFromUser("OpTransform(0)", "1");
    Touch();
    return;
  }
  const int levels = SetNumberOfLevels();
  if (levels < 0) return;
  context_.ShowBusy();
  TransformImage(levels);
  context_.ShowIdle();
  controls_.SetFromUser("OpDisplayTransform", "1");
  showTransform_ = true;
  Touch();
}

wavelet::AswdrCoder ImageProcessorForm::Coder() const {
  return controls_.Find("OpEntropyCode(0)")->value != 0 ? wavelet::AswdrCoder::Binary
                                                        : wavelet::AswdrCoder::Arithmetic;
}

std::optional<std::string> ImageProcessorForm::AskForFile(bool save, const std::string& extension) {
  const auto chosen = context_.services().fileDialog->Run(
      {save ? platform::FileDialogMode::Save : platform::FileDialogMode::Open, save ? "Compressed file" : "Open compressed file",
       CompressedFilter(extension), 1, save ? platform::kFlagOverwritePrompt : platform::kFlagFileMustExist, "",
       context_.DialogFolder(kFolderImages, "Images")});
  if (!chosen) return std::nullopt;
  context_.RememberDialogFolder(kFolderImages, chosen->path);
  return chosen->path;
}

void ImageProcessorForm::CompressCommand() {
  if (image_.Empty()) {
    context_.Beep();
    return;
  }
  double bpp = 0.0;
  if (!ReadBitRate(bpp)) return;
  const int code = controls_.Find("OpEntropyCode(1)")->value ? 1 : controls_.Find("OpEntropyCode(0)")->value ? 0 : 2;
  // Options 2 and 3 at a rate above 0: the denoising coders; with a region
  // the binary one only.
  if (const std::optional<wavelet::AswdrCoder> denoiser = DenoiseCoderChosen(); denoiser && bpp > 0.0) {
    if (roi_ && *denoiser == wavelet::AswdrCoder::Binary) {
      Compress_Denoise_ASWDR_Binary_Ver1_ROI(bpp);
    } else if (roi_) {
      context_.Beep();
    } else if (*denoiser == wavelet::AswdrCoder::Binary) {
      Compress_Denoise_ASWDR_Binary_Ver1(bpp);
    } else {
      Compress_Denoise_ASWDR_Arithmetic_Ver1(bpp);
    }
    return;
  }
  if (code > 1 || (bpp == 0.0 && code != 1)) {
    // Rate 0 is the lossless coder, with the arithmetic option only.
    AddReport("Lossless encoding not available for this option.");
    return;
  }
  const bool lossless = bpp == 0.0;
  std::optional<double> share;
  if (roi_ && !(share = ReadRegionShare())) return;
  const wavelet::AswdrCoder coder = Coder();
  const std::optional<std::string> path =
      AskForFile(true, lossless ? "awg" : coder == wavelet::AswdrCoder::Binary ? "awd" : "awe");
  if (!path) return;
  const std::optional<wavelet::AswdrHead> head = TransformForCoding(bpp, lossless);
  if (!head) return;
  wavelet::AswdrEncoded encoded = EncodeTransform(*head, coder, lossless, share);
  for (const std::string& line : encoded.report) AddReport(line);
  const bool written = WriteFileBytes(*path, encoded.file);
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

std::optional<wavelet::AswdrHead> ImageProcessorForm::TransformForCoding(double bpp, bool lossless) {
  wavelet::AswdrHead head;
  head.budget = wavelet::BitBudgetOf(image_.width, image_.height, bpp);
  controls_.SetText("txtLevels", lossless ? "4" : "5");
  const int levels = lossless ? SetNumberOfLevelsLossless() : SetNumberOfLevels();
  if (levels < 0) return std::nullopt;
  head.levels = levels;
  head.waveletIndex = waveletIndex_;
  head.width = image_.width;
  head.height = image_.height;
  head.originalWidth = image_.originalWidth;
  head.originalHeight = image_.originalHeight;
  context_.ShowBusy();
  AddReport("Transforming image...");
  TransformImage(levels);
  return head;
}

void ImageProcessorForm::DecompressCommand() {
  double bpp = 0.0;
  if (!ReadBitRate(bpp)) return;
  const wavelet::AswdrCoder coder = Coder();
  // Rate 0 with the arithmetic option reads the lossless coder's file; with
  // any other option there is no such file.
  const bool lossless = bpp == 0.0 && controls_.Find("OpEntropyCode(1)")->value != 0;
  if (bpp == 0.0 && !lossless) {
    AddReport("Lossless encoding not available for this option.");
    return;
  }
  // Options 2 and 3 read the denoising coders' files.
  const std::optional<wavelet::AswdrCoder> denoiser = DenoiseCoderChosen();
  const char* denoiserExtension = denoiser == wavelet::AswdrCoder::Binary ? "bcd" : "acd";
  const std::optional<std::string> path =
      AskForFile(false, denoiser ? denoiserExtension : lossless ? "awg" : coder == wavelet::AswdrCoder::Binary ? "awd" : "awe");
  if (!path) return;
  std::vector<std::uint8_t> bytes;
  std::optional<wavelet::AswdrDecoded> decoded;
  context_.ShowBusy();
  if (ReadFileBytes(*path, bytes))
    decoded = denoiser  ? wavelet::DecompressDenoiseAswdr(bytes, bpp, *denoiser)
              : lossless ? wavelet::DecompressAswdrLossless(bytes)
                         : wavelet::DecompressAswdr(bytes, bpp, coder);
  if (!decoded) {
    context_.ShowIdle();
    context_.ShowError(85);
    return;
  }
  waveletIndex_ = decoded->head.waveletIndex;
  ResetWaveletLabel();
  regionMask_.clear();
  if (controls_.Text("txtLevels") != std::to_string(decoded->head.levels))
    controls_.SetText("txtLevels", std::to_string(decoded->head.levels));
  sizeFlagWidth_ = decoded->head.width != image_.width ? "Y" : "N";
  sizeFlagHeight_ = decoded->head.height != image_.height ? "Y" : "N";
  for (const std::string& line : decoded->report) AddReport(line);
  AddReport("Inverse transforming...");
  quant_ = std::move(decoded->quant);
  levels_ = decoded->head.levels;
  ReconstructFrom(quant_, levels_);
  recon_.originalWidth = std::min(decoded->head.originalWidth, recon_.width);
  recon_.originalHeight = std::min(decoded->head.originalHeight, recon_.height);
  AddReport("Image decompressed.");
  context_.ShowIdle();
  Touch();
}

// ------------------------------------------------------------------ view

std::vector<Picture> ImageProcessorForm::Pictures() const {
  Picture left, right;
  left.row = 0;
  left.column = 0;
  right.row = 0;
  right.column = 1;
  const int w = std::max(image_.width, 1), h = std::max(image_.height, 1);
  left.scale = {0.0, 0.0, static_cast<double>(h), static_cast<double>(w)};
  right.scale = left.scale;
  left.side = right.side = std::max(w, h);
  return {left, right};
}

void ImageProcessorForm::Paint(int picture, platform::Surface& surface) const {
  surface.Clear(platform::kBlack);
  if (picture == 0) {
    if (image_.Empty()) return;
    if (showTransform_ && !transform_.v.empty()) {
      // Each coefficient as |v|, at most 255.
      surface.DrawImage(GreyPicture(transform_.width, transform_.height, [this](int x, int y) {
        return static_cast<int>(std::min(255.0f, std::fabs(transform_.At(x, y))));
      }));
      return;
    }
    surface.DrawImage(GreyPicture(image_.width, image_.height, [this](int x, int y) { return image_.At(x, y); }));
    MarkRegion(surface);
    return;
  }
  if (!regionMask_.empty()) {
    surface.DrawImage(RegionMaskPicture());
    return;
  }
  if (recon_.Empty()) return;
  surface.DrawImage(GreyPicture(recon_.width, recon_.height, [this](int x, int y) { return recon_.At(x, y); }));
}

std::vector<GraphSummary> ImageProcessorForm::Graphs() const {
  // Row k of a matrix is y = k, its columns run along x.
  const auto matrix = [](const char* name, int width, int height, int originalWidth, int originalHeight,
                         const std::function<double(int, int)>& at) {
    GraphSummary g;
    g.rows = height;
    g.values.reserve(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    for (int y = 0; y < height; ++y)
      for (int x = 0; x < width; ++x) g.values.push_back(at(x, y));
    for (double v : g.values) g.peak = std::max(g.peak, std::fabs(v));
    g.fields.push_back({"name", name, {}, {}});
    g.fields.push_back({"width", "", {static_cast<double>(originalWidth)}, {}});
    g.fields.push_back({"height", "", {static_cast<double>(originalHeight)}, {}});
    return g;
  };
  std::vector<GraphSummary> out;
  if (!image_.Empty()) {
    if (showTransform_ && !transform_.v.empty())
      out.push_back(matrix("left", transform_.width, transform_.height, image_.originalWidth, image_.originalHeight,
                           [this](int x, int y) { return std::min(255.0, std::fabs(static_cast<double>(transform_.At(x, y)))); }));
    else
      out.push_back(matrix("left", image_.width, image_.height, image_.originalWidth, image_.originalHeight,
                           [this](int x, int y) { return static_cast<double>(image_.At(x, y)); }));
  }
  if (!recon_.Empty())
    out.push_back(matrix("right", recon_.width, recon_.height, recon_.originalWidth, recon_.originalHeight,
                         [this](int x, int y) { return static_cast<double>(recon_.At(x, y)); }));
  return out;
}

void ImageProcessorForm::FormulaError(int number) { context_.ShowError(number); }

platform::Random* ImageProcessorForm::FormulaRandom() { return context_.services().random; }

std::unique_ptr<Form> MakeImageProcessorForm(FormContext& context) {
  return std::make_unique<ImageProcessorForm>(context);
}

}  // namespace keldo::imageproc
