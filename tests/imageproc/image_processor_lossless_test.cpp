// The image processor's lossless path and its region coders through the
// menus and "Compute": rate 0 with "Arithmetic" writes the .awg file and
// gives every pixel back with both integer wavelets, the levels box shows 4
// at most, the other options show their message; a dragged region takes
// the share of txtROIPercent (below 0 read as 0.01, above 0.99 as 0.99),
// gives a smaller error inside it than the plain coder at the same rate,
// and is shown as its mask on the right image.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "imageproc/image_processor_form.h"
#include "kit/focus.h"
#include "kit/typed_forms.h"
#include "platform/headless/raster_surface.h"
#include "test_frame.h"

namespace keldo {
namespace {

using imageproc::ImageProcessorForm;
using testing::TestFrame;

std::string TempPath(const std::string& name) { return testing::UniqueTempPath(name).string(); }

struct Processor {
  TestFrame t;
  ImageProcessorForm* f = nullptr;
  Processor() {
    int code = 0;
    f = NewFormOf<ImageProcessorForm>(t.frame, code);
    // The 128 by 128 photograph of tests/data/make_camera_crop.py.
    t.platform.fileDialog.QueueAnswer(std::string(KELDO_TEST_DATA) + "/camera_crop.pgm");
    f->RunMenu("mnuGetImage");
  }
  void Compress(const std::string& path) {
    t.platform.fileDialog.QueueAnswer(path);
    f->RunMenu("mnuCompress");
    f->Click("cmdBegin");
  }
  void Decompress(const std::string& path) {
    t.platform.fileDialog.QueueAnswer(path);
    f->RunMenu("mnuDecompress");
    f->Click("cmdBegin");
  }
  void Drag(double x0, double y0, double x1, double y1) {
    f->Mouse(MouseAction::Down, x0, y0, MouseButton::Left);
    f->Mouse(MouseAction::Up, x1, y1, MouseButton::Left);
  }
  std::string Report() const { return f->controls().Text("Report"); }
};

std::vector<std::uint8_t> FileBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

double SquaredErrorIn(const ImageProcessorForm& f, int x1, int y1, int x2, int y2) {
  double sum = 0.0;
  for (int x = x1; x <= x2; ++x)
    for (int y = y1; y <= y2; ++y) {
      const double d = double(f.Image().At(x, y)) - double(f.Reconstruction().At(x, y));
      sum += d * d;
    }
  return sum;
}

TEST(ImageProcessorLossless, RateZeroWithArithmeticGivesEveryPixelBack) {
  for (const char* wavelet : {"DD 5/3 Integer", "DD 2+2,2 Integer"}) {
    Processor p;
    ImageProcessorForm& f = *p.f;
    ASSERT_TRUE(f.HasImage());
    ASSERT_TRUE(f.controls().SetFromUser("cmbWavelet", wavelet));
    f.ControlChanged("cmbWavelet");
    ASSERT_GT(f.WaveletIndex(), 1);
    f.controls().SetText("txtBitRate", "0");
    ASSERT_TRUE(f.controls().SetFromUser("OpEntropyCode(1)", "1"));
    f.controls().SetText("txtLevels", "6");
    const std::string path = TempPath(std::string("keldo_lossless_") + wavelet[3] + ".awg");
    p.Compress(path);
    ASSERT_TRUE(std::filesystem::exists(path)) << p.Report();
    // The save dialog offered the lossless file.
    EXPECT_EQ(p.t.platform.fileDialog.Requests().back().filter, "ASWDR_V1 lossless arith. compression (*.awg)|*.awg");
    EXPECT_EQ(f.controls().Text("txtLevels"), "4");
    EXPECT_EQ(f.controls().Text("LabCommand"), "Decompress");
    EXPECT_NE(p.Report().find("Compressed file: " + path), std::string::npos);
    const std::vector<std::uint8_t> file = FileBytes(path);
    ASSERT_GT(file.size(), 14u);
    const int index = f.WaveletIndex();
    EXPECT_EQ(file[0], 40 + index);
    EXPECT_EQ(std::vector<std::uint8_t>(file.begin() + 1, file.begin() + 13),
              (std::vector<std::uint8_t>{128, 0, 128, 0, 2, 0, 128, 0, 2, 0, 128, 0}));
    // Well below the 8 bits a pixel of the picture.
    EXPECT_LT(file.size(), 128u * 128u);
    f.controls().SetText("txtLevels", "2");
    p.Decompress(path);
    std::filesystem::remove(path);
    ASSERT_FALSE(f.Reconstruction().Empty()) << p.Report();
    EXPECT_EQ(f.Reconstruction().bytes, f.Image().bytes) << wavelet;
    EXPECT_EQ(f.controls().Text("txtLevels"), "4");
    EXPECT_NE(p.Report().find("Image decompressed."), std::string::npos);
    EXPECT_TRUE(p.t.lines.empty());
  }
}

TEST(ImageProcessorLossless, OtherOptionsAtRateZeroShowTheirMessageAndWriteNothing) {
  for (const char* option : {"OpEntropyCode(0)", "OpEntropyCode(2)", "OpEntropyCode(3)"}) {
    Processor p;
    ImageProcessorForm& f = *p.f;
    f.controls().SetText("txtBitRate", "0");
    ASSERT_TRUE(f.controls().SetFromUser(option, "1"));
    const std::size_t dialogs = p.t.platform.fileDialog.Requests().size();
    f.RunMenu("mnuCompress");
    f.Click("cmdBegin");
    EXPECT_NE(p.Report().find("Lossless encoding not available for this option."), std::string::npos) << option;
    EXPECT_EQ(p.t.platform.fileDialog.Requests().size(), dialogs);
    EXPECT_EQ(f.controls().Text("LabCommand"), "Compress");
    // Decompression by the same table: no file to ask for.
    f.RunMenu("mnuDecompress");
    const std::string before = p.Report();
    f.Click("cmdBegin");
    EXPECT_EQ(p.Report(), before + "Lossless encoding not available for this option.\r\n") << option;
    EXPECT_EQ(p.t.platform.fileDialog.Requests().size(), dialogs);
    EXPECT_TRUE(f.Reconstruction().Empty());
  }
}

TEST(ImageProcessorLossless, AShareBelowZeroReadsAs001AndAboveAs099) {
  Processor p;
  ImageProcessorForm& f = *p.f;
  EXPECT_FALSE(f.controls()["txtROIPercent"].enabled);
  p.Drag(20, 30, 60, 90);
  ASSERT_TRUE(f.Region());
  EXPECT_TRUE(f.controls()["txtROIPercent"].enabled);
  f.controls().SetText("txtBitRate", "0.5");
  f.controls().SetText("txtROIPercent", "-0.3");
  const std::string path = TempPath("keldo_roi_share.awe");
  p.Compress(path);
  EXPECT_EQ(f.controls().Text("txtROIPercent"), "0.01");
  EXPECT_EQ(FocusRequested(f.controls()), "txtROIPercent");
  EXPECT_FALSE(f.RegionMask().empty());
  f.RunMenu("mnuCompress");
  f.controls().SetText("txtROIPercent", "7");
  p.Compress(path);
  EXPECT_EQ(f.controls().Text("txtROIPercent"), "0.99");
  std::filesystem::remove(path);
  EXPECT_TRUE(p.t.lines.empty());
}

TEST(ImageProcessorLossless, ARegionIsCodedBetterThanThePlainCoderAtTheSameRate) {
  const int x1 = 30, y1 = 40, x2 = 77, y2 = 87;
  double errors[2] = {0, 0};
  for (int withRegion = 0; withRegion < 2; ++withRegion) {
    Processor p;
    ImageProcessorForm& f = *p.f;
    if (withRegion) p.Drag(x2, y2, x1, y1);  // dragged from the lower right
    f.controls().SetText("txtBitRate", "0.25");
    f.controls().SetText("txtROIPercent", "0.6");
    const std::string path = TempPath("keldo_roi_plain.awe");
    p.Compress(path);
    ASSERT_EQ(f.RegionMask().empty(), withRegion == 0);
    if (withRegion) {
      // The right image shows the mask while it stands: the trend's corner
      // under the region is marked, a far corner of the finest level is not.
      EXPECT_NE(std::count(f.RegionMask().begin(), f.RegionMask().end(), 1), 0);
      EXPECT_EQ(f.RegionMask()[127 * 128 + 127], 0);
      platform::RasterSurface surface(128, 128);
      f.Paint(1, surface);
      const platform::RgbImage shown = surface.Snapshot();
      const platform::Rgb paint = platform::MakeRgb(255, 255, 48);
      int wrong = 0;
      for (int x = 0; x < 128; ++x)
        for (int y = 0; y < 128; ++y)
          wrong += (shown.At(y, x) == paint) != (f.RegionMask()[static_cast<std::size_t>(y * 128 + x)] != 0) ? 1 : 0;
      EXPECT_EQ(wrong, 0);
    }
    p.Decompress(path);
    std::filesystem::remove(path);
    ASSERT_FALSE(f.Reconstruction().Empty());
    EXPECT_TRUE(f.RegionMask().empty());
    errors[withRegion] = SquaredErrorIn(f, x1, y1, x2, y2);
  }
  EXPECT_LT(errors[1], 0.8 * errors[0]) << errors[1] << " against " << errors[0];
}

TEST(ImageProcessorLossless, LosslessWithARegionIsExactInsideIt) {
  Processor p;
  ImageProcessorForm& f = *p.f;
  ASSERT_TRUE(f.controls().SetFromUser("cmbWavelet", "DD 5/3 Integer"));
  f.ControlChanged("cmbWavelet");
  p.Drag(40, 40, 87, 87);
  f.controls().SetText("txtBitRate", "0");
  f.controls().SetText("txtROIPercent", "0.5");
  const std::string path = TempPath("keldo_roi_lossless.awg");
  p.Compress(path);
  ASSERT_TRUE(std::filesystem::exists(path));
  p.Decompress(path);
  std::filesystem::remove(path);
  ASSERT_FALSE(f.Reconstruction().Empty());
  EXPECT_EQ(SquaredErrorIn(f, 40, 40, 87, 87), 0.0);
  EXPECT_GT(SquaredErrorIn(f, 0, 0, 127, 127), 0.0);
}

}  // namespace
}  // namespace keldo
