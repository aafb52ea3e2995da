// TAWS and the compress-denoise coders through the image processor's menus:
// the noise of a picture lowered, the estimate's depth in its box, one
// shift the same as none, cycle spinning, bad boxes, and .bcd/.acd files
// written and read back.

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "common/file_io.h"
#include "imageproc/image_processor_form.h"
#include "imageproc/processor_image.h"
#include "kit/focus.h"
#include "kit/typed_forms.h"
#include "test_frame.h"
#include "wavelet/aswdr_denoise_coder.h"

namespace keldo {
namespace {

using imageproc::ImageProcessorForm;
using testing::TestFrame;

constexpr int kRows = 64, kColumns = 96;

// A smooth picture with an edge, 96 bytes a row and 64 rows, with Gaussian
// noise of the given sigma (0 for none).
std::vector<std::uint8_t> Picture(double sigma) {
  const std::string head = "P5\n96 64\n255\n";
  std::vector<std::uint8_t> out(head.begin(), head.end());
  std::mt19937 random(21);
  std::normal_distribution<double> noise(0.0, sigma > 0.0 ? sigma : 1.0);
  for (int x = 0; x < kRows; ++x)
    for (int y = 0; y < kColumns; ++y) {
      double v = 100 + 60 * std::sin(x / 9.0) * std::cos(y / 13.0) + (y > 50 ? 40 : 0);
      if (sigma > 0.0) v += noise(random);
      out.push_back(static_cast<std::uint8_t>(std::clamp(std::lround(v), 0L, 255L)));
    }
  return out;
}

std::string TempPath(const std::string& name) {
  return testing::UniqueTempPath(name).string();
}

ImageProcessorForm& NewProcessorWith(TestFrame& t, const std::vector<std::uint8_t>& pgm) {
  int code = 0;
  ImageProcessorForm* f = NewFormOf<ImageProcessorForm>(t.frame, code);
  EXPECT_NE(f, nullptr);
  const std::string path = TempPath("keldo_ipr_denoise.pgm");
  EXPECT_TRUE(WriteFileBytes(path, pgm));
  t.platform.fileDialog.QueueAnswer(path);
  f->RunMenu("mnuGetImage");
  std::filesystem::remove(path);
  return *f;
}

// The mean square error of a picture, in the form's layout, against the
// clean one read the same way.
double ErrorAgainstClean(const std::vector<std::uint8_t>& bytes) {
  const std::optional<imageproc::ProcessorImage> clean = imageproc::ReadProcessorPgm(Picture(0.0));
  EXPECT_TRUE(clean);
  EXPECT_EQ(clean->bytes.size(), bytes.size());
  double sum = 0.0;
  for (std::size_t k = 0; k < bytes.size(); ++k) {
    const double d = double(bytes[k]) - double(clean->bytes[k]);
    sum += d * d;
  }
  return sum / double(bytes.size());
}

TEST(ImageProcessorTaws, ComputeLowersTheNoiseAndTheEstimateSetsTheDepth) {
  TestFrame t;
  ImageProcessorForm& f = NewProcessorWith(t, Picture(16.0));
  ASSERT_EQ(f.Image().bytes.size(), static_cast<std::size_t>(kRows * kColumns));
  f.RunMenu("mnuDenoiseTAWS");
  EXPECT_EQ(f.controls().Text("LabCommand"), "Denoise-TAWS");
  EXPECT_TRUE(f.controls()["frTAWS"].visible);
  f.controls().SetText("txtLevels", "3");
  f.controls().SetText("txtDepth2", "5");
  f.controls().SetText("txtDescentPower2", "4");
  ASSERT_TRUE(f.Click("cmdBegin"));
  ASSERT_FALSE(f.Reconstruction().Empty());
  EXPECT_TRUE(t.lines.empty());
  // Sigma near 16, above 12.8: the estimate writes depth 2.
  EXPECT_EQ(f.controls().Text("txtDepth2"), "2");
  EXPECT_EQ(FocusRequested(f.controls()), "txtDepth2");
  EXPECT_LT(ErrorAgainstClean(f.Reconstruction().bytes), 0.5 * ErrorAgainstClean(f.Image().bytes));
  EXPECT_NE(f.controls().Text("Report").find("Threshold = "), std::string::npos);
}

TEST(ImageProcessorTaws, AverageTypeOneIsThePlainPathAndShiftsRun) {
  TestFrame t;
  ImageProcessorForm& f = NewProcessorWith(t, Picture(10.0));
  f.RunMenu("mnuDenoiseTAWS");
  f.controls().SetText("txtLevels", "3");
  f.controls().SetFromUser("chkAutoThreshold", "0");
  f.controls().SetText("TxtThreshold", "30");
  f.controls().SetText("txtDescentPower2", "4");
  ASSERT_TRUE(f.Click("cmdBegin"));
  const std::vector<std::uint8_t> plain = f.Reconstruction().bytes;
  ASSERT_FALSE(plain.empty());
  f.controls().SetFromUser("chkAverage", "1");
  ASSERT_TRUE(f.controls().SetFromUser("AvgType", "1"));
  ASSERT_TRUE(f.Click("cmdBegin"));
  EXPECT_EQ(f.Reconstruction().bytes, plain);
  ASSERT_TRUE(f.controls().SetFromUser("AvgType", "4D"));
  ASSERT_TRUE(f.Click("cmdBegin"));
  EXPECT_NE(f.Reconstruction().bytes, plain);
  EXPECT_EQ(f.controls()["cmdBegin"].text, "Compute");
  EXPECT_LT(ErrorAgainstClean(f.Reconstruction().bytes), ErrorAgainstClean(f.Image().bytes));
  EXPECT_TRUE(t.lines.empty());
}

TEST(ImageProcessorTaws, BadBoxesGiveTheirMessagesAndChangeNothing) {
  TestFrame t;
  ImageProcessorForm& f = NewProcessorWith(t, Picture(10.0));
  f.RunMenu("mnuDenoiseTAWS");
  f.controls().SetText("txtLevels", "3");
  f.controls().SetFromUser("chkAutoThreshold", "0");
  f.controls().SetText("TxtThreshold", "1/");
  ASSERT_TRUE(f.Click("cmdBegin"));
  f.controls().SetText("TxtThreshold", "-3");
  ASSERT_TRUE(f.Click("cmdBegin"));
  f.controls().SetText("TxtThreshold", "30");
  f.controls().SetText("txtDescentPower2", "0");
  ASSERT_TRUE(f.Click("cmdBegin"));
  f.controls().SetFromUser("chkAutoThreshold", "1");
  ASSERT_TRUE(f.Click("cmdBegin"));
  f.controls().SetText("txtDescentPower2", "2");
  f.controls().SetFromUser("chkAutoThreshold", "0");
  f.controls().SetText("txtDepth2", "0");
  ASSERT_TRUE(f.Click("cmdBegin"));
  EXPECT_TRUE(f.Reconstruction().Empty());
  ASSERT_EQ(t.lines.size(), 5u);
  EXPECT_NE(t.lines[0].find("Error in specifying threshold value."), std::string::npos) << t.lines[0];
  EXPECT_NE(t.lines[1].find("Threshold value cannot be negative."), std::string::npos) << t.lines[1];
  for (std::size_t k = 2; k < 5; ++k) EXPECT_NE(t.lines[k].find("Run Error."), std::string::npos) << t.lines[k];
}

// Compress with option 2 or 3 at 2 bpp, then decompress the file.
struct CodedRun {
  std::vector<std::uint8_t> file;
  wavelet::ImagePlane encoderQuant, decoderQuant;
  std::vector<std::uint8_t> reconstruction;
  std::string filter;
};

CodedRun CompressAndDecompress(TestFrame& t, ImageProcessorForm& f, const char* option, bool minimum) {
  CodedRun run;
  f.RunMenu("mnuCompress");
  EXPECT_TRUE(f.controls().SetFromUser(option, "1"));
  f.controls().SetText("txtBitRate", "2");
  f.controls().SetFromUser("chkMinBitRate", minimum ? "1" : "0");
  f.controls().SetText("txtDescentPower", "4");
  const std::string path = TempPath(std::string("keldo_ipr_denoise") + option[14] + (minimum ? "m" : "") + ".cd");
  t.platform.fileDialog.QueueAnswer(path);
  EXPECT_TRUE(f.Click("cmdBegin"));
  run.filter = t.platform.fileDialog.Requests().back().filter;
  EXPECT_EQ(f.controls().Text("LabCommand"), "Decompress");
  EXPECT_TRUE(ReadFileBytes(path, run.file));
  run.encoderQuant = f.Quant();
  t.platform.fileDialog.QueueAnswer(path);
  EXPECT_TRUE(f.Click("cmdBegin"));
  run.decoderQuant = f.Quant();
  run.reconstruction = f.Reconstruction().bytes;
  std::filesystem::remove(path);
  return run;
}

TEST(ImageProcessorCompressDenoise, BothCodersWriteAndReadTheirFiles) {
  for (const char* option : {"OpEntropyCode(2)", "OpEntropyCode(3)"}) {
    TestFrame t;
    ImageProcessorForm& f = NewProcessorWith(t, Picture(16.0));
    const CodedRun run = CompressAndDecompress(t, f, option, false);
    const bool binary = option[14] == '2';
    EXPECT_EQ(run.filter, binary ? "Binary compress/denoise (*.bcd)|*.bcd" : "Arith compress/denoise (*.acd)|*.acd");
    ASSERT_GT(run.file.size(), wavelet::kAswdrHeadSize + wavelet::kDenoisePreambleSize);
    // 2 bpp of 96 by 64: 12288 bits, 1536 bytes after the head.
    EXPECT_NEAR(static_cast<double>(run.file.size()), 21 + 1536, 24) << option;
    // The decoder's values are those of the file decoded apart, and its
    // values before the last offset are the coder's.
    const auto coder = binary ? wavelet::AswdrCoder::Binary : wavelet::AswdrCoder::Arithmetic;
    const std::optional<wavelet::AswdrDecoded> apart = wavelet::DecompressDenoiseAswdr(run.file, 2.0, coder);
    ASSERT_TRUE(apart);
    EXPECT_EQ(run.decoderQuant.v, apart->quant.v);
    if (binary) {
      EXPECT_EQ(apart->quantBeforeRefinement.v, run.encoderQuant.v);
    }
    ASSERT_EQ(run.reconstruction.size(), static_cast<std::size_t>(kRows * kColumns));
    EXPECT_LT(ErrorAgainstClean(run.reconstruction), 0.6 * ErrorAgainstClean(f.Image().bytes)) << option;
    EXPECT_NE(f.controls().Text("Report").find("Image decompressed."), std::string::npos);
    EXPECT_TRUE(t.lines.empty());
  }
}

TEST(ImageProcessorCompressDenoise, MinimumBitRateWritesLessAndAWrongFileIsRefused) {
  TestFrame t;
  ImageProcessorForm& f = NewProcessorWith(t, Picture(16.0));
  const CodedRun full = CompressAndDecompress(t, f, "OpEntropyCode(2)", false);
  const CodedRun minimum = CompressAndDecompress(t, f, "OpEntropyCode(2)", true);
  EXPECT_LT(minimum.file.size(), full.file.size() / 2);
  EXPECT_EQ(minimum.file[wavelet::kAswdrHeadSize + 2] != 0, true);
  EXPECT_TRUE(t.lines.empty());
  // A file of nonsense: message 85, the right image as it was.
  const std::vector<std::uint8_t> before = f.Reconstruction().bytes;
  const std::string junk = TempPath("keldo_ipr_denoise_junk.bcd");
  ASSERT_TRUE(WriteFileBytes(junk, {1, 2, 3, 4, 5}));
  t.platform.fileDialog.QueueAnswer(junk);
  ASSERT_TRUE(f.Click("cmdBegin"));
  std::filesystem::remove(junk);
  ASSERT_EQ(t.lines.size(), 1u);
  EXPECT_NE(t.lines[0].find("Error decompressing file."), std::string::npos) << t.lines[0];
  EXPECT_EQ(f.Reconstruction().bytes, before);
  // An empty file with the arithmetic option: the same.
  ASSERT_TRUE(f.controls().SetFromUser("OpEntropyCode(3)", "1"));
  const std::string empty = TempPath("keldo_ipr_denoise_empty.acd");
  ASSERT_TRUE(WriteFileBytes(empty, {}));
  t.platform.fileDialog.QueueAnswer(empty);
  ASSERT_TRUE(f.Click("cmdBegin"));
  std::filesystem::remove(empty);
  ASSERT_EQ(t.lines.size(), 2u);
  EXPECT_NE(t.lines[1].find("Error decompressing file."), std::string::npos) << t.lines[1];
  EXPECT_EQ(f.Reconstruction().bytes, before);
  // A descent of 0: "Run Error." and no file asked for.
  f.RunMenu("mnuCompress");
  f.controls().SetText("txtDescentPower", "0");
  const std::size_t asked = t.platform.fileDialog.Requests().size();
  ASSERT_TRUE(f.Click("cmdBegin"));
  EXPECT_EQ(t.platform.fileDialog.Requests().size(), asked);
  ASSERT_EQ(t.lines.size(), 3u);
  EXPECT_NE(t.lines[2].find("Run Error."), std::string::npos);
}

TEST(ImageProcessorCompressDenoise, OptionTwoTakesADraggedRegionAndOptionThreeBeeps) {
  TestFrame t;
  ImageProcessorForm& f = NewProcessorWith(t, Picture(16.0));
  f.Mouse(MouseAction::Down, 10, 20, MouseButton::Left);
  f.Mouse(MouseAction::Up, 30, 50, MouseButton::Left);
  ASSERT_TRUE(f.Region());
  f.RunMenu("mnuCompress");
  ASSERT_TRUE(f.controls().SetFromUser("OpEntropyCode(3)", "1"));
  const std::size_t asked = t.platform.fileDialog.Requests().size();
  ASSERT_TRUE(f.Click("cmdBegin"));
  EXPECT_EQ(t.platform.fileDialog.Requests().size(), asked);
  ASSERT_EQ(t.lines, std::vector<std::string>{"beep"});
  // The binary option codes the region: the mask is shown, and the file is
  // read back by the plain decoder of option 2.
  ASSERT_TRUE(f.controls().SetFromUser("OpEntropyCode(2)", "1"));
  f.controls().SetText("txtBitRate", "0.5");
  const std::string path = TempPath("keldo_ipr_denoise_roi.bcd");
  t.platform.fileDialog.QueueAnswer(path);
  ASSERT_TRUE(f.Click("cmdBegin"));
  EXPECT_FALSE(f.RegionMask().empty());
  std::vector<std::uint8_t> file;
  ASSERT_TRUE(ReadFileBytes(path, file));
  const wavelet::ImagePlane encoded = f.Quant();
  t.platform.fileDialog.QueueAnswer(path);
  ASSERT_TRUE(f.Click("cmdBegin"));
  std::filesystem::remove(path);
  const std::optional<wavelet::AswdrDecoded> back = wavelet::DecompressDenoiseAswdr(file, 0.5, wavelet::AswdrCoder::Binary);
  ASSERT_TRUE(back);
  EXPECT_EQ(back->quantBeforeRefinement.v, encoded.v);
  EXPECT_EQ(f.Quant().v, back->quant.v);
  EXPECT_EQ(t.lines.size(), 1u);
}

}  // namespace
}  // namespace keldo
