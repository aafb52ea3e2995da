// SureShrink on the image processor, through its menu and "Compute": the
// right image against the clean picture, the shrinkage box, the levels box,
// and the command without a picture.

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "imageproc/image_processor_form.h"
#include "kit/typed_forms.h"
#include "test_frame.h"
#include "wavelet/image_denoise.h"

namespace keldo {
namespace {

using imageproc::ImageProcessorForm;
using testing::TestFrame;

constexpr int kSide = 64;

// A grey swell with a bright square.
int Clean(int row, int column) {
  const double swell = 50.0 * std::sin(6.28318530717958 * row / 64.0) * std::cos(6.28318530717958 * column / 32.0);
  return static_cast<int>(std::lround(110.0 + swell + ((row > 16 && row < 40 && column > 20 && column < 48) ? 60.0 : 0.0)));
}

// The clean picture with Gaussian noise of sigma 15, as a PGM file.
std::string NoisyPgm() {
  const std::string head = "P5\n64 64\n255\n";
  std::vector<char> bytes(head.begin(), head.end());
  std::mt19937 g(7);
  std::normal_distribution<double> noise(0.0, 15.0);
  for (int r = 0; r < kSide; ++r)
    for (int c = 0; c < kSide; ++c)
      bytes.push_back(static_cast<char>(std::clamp(static_cast<int>(std::lround(Clean(r, c) + noise(g))), 0, 255)));
  const std::filesystem::path path = std::filesystem::temp_directory_path() / ("keldo_sureshrink_noisy-" + std::to_string(::getpid()) + ".pgm");
  std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  return path.string();
}

// The RMS distance of a processor image from the clean picture; a file's
// row is the image's x.
double RmsFromClean(const imageproc::ProcessorImage& image) {
  double s = 0.0;
  for (int x = 0; x < kSide; ++x)
    for (int y = 0; y < kSide; ++y) {
      const double d = image.At(x, y) - Clean(x, y);
      s += d * d;
    }
  return std::sqrt(s / (kSide * kSide));
}

ImageProcessorForm& NewProcessor(TestFrame& t) {
  int code = 0;
  return *NewFormOf<ImageProcessorForm>(t.frame, code);
}

TEST(SureShrinkCommand, TheRightImageComesCloserToTheCleanPicture) {
  TestFrame t;
  ImageProcessorForm& f = NewProcessor(t);
  ASSERT_TRUE(f.LoadImageFile(NoisyPgm()));
  f.RunMenu("mnuDenoiseSureShrink");
  EXPECT_EQ(f.controls().Text("LabCommand"), "Denoise-SureShrink");
  EXPECT_TRUE(f.controls()["frSureShrink"].visible);
  f.controls().SetText("txtLevels", "3");
  f.Click("cmdBegin");
  ASSERT_FALSE(f.Reconstruction().Empty());
  const double noisy = RmsFromClean(f.Image());
  const double hard = RmsFromClean(f.Reconstruction());
  EXPECT_LT(hard, 0.8 * noisy) << noisy;
  f.controls()["chkShrinkage2"].value = 1;
  f.Click("cmdBegin");
  const double soft = RmsFromClean(f.Reconstruction());
  EXPECT_LT(soft, 0.8 * noisy);
  EXPECT_NE(soft, hard);
  // The left image is the noisy one still.
  EXPECT_EQ(RmsFromClean(f.Image()), noisy);
}

TEST(SureShrinkCommand, EveryDetailBandOfTheLevelsIsThresholdedAndTheTrendKept) {
  TestFrame t;
  ImageProcessorForm& f = NewProcessor(t);
  ASSERT_TRUE(f.LoadImageFile(NoisyPgm()));
  f.RunMenu("mnuDenoiseSureShrink");
  f.controls().SetText("txtLevels", "2");
  f.Click("cmdBegin");
  // The plane behind the right image: the transform of the left one with
  // its bands thresholded; trend 16 by 16 as it was.
  wavelet::ImagePlane transform(f.Image().width, f.Image().height);
  transform.v.assign(f.Image().bytes.begin(), f.Image().bytes.end());
  wavelet::TransformTheImage(transform, 2, f.WaveletIndex());
  const wavelet::ImagePlane& q = f.Quant();
  ASSERT_EQ(q.v.size(), transform.v.size());
  int zeroed = 0;
  for (int y = 0; y < kSide; ++y)
    for (int x = 0; x < kSide; ++x) {
      if (x < 16 && y < 16) {
        EXPECT_EQ(q.At(x, y), transform.At(x, y));
        continue;
      }
      // Hard: each value is kept or zeroed.
      if (q.At(x, y) == 0.0f) {
        ++zeroed;
      } else {
        EXPECT_EQ(q.At(x, y), transform.At(x, y));
      }
    }
  EXPECT_GT(zeroed, 2000);  // most of the 3840 detail values are noise
}

TEST(SureShrinkCommand, WithoutAPictureOnlyABeep) {
  TestFrame t;
  ImageProcessorForm& f = NewProcessor(t);
  f.RunMenu("mnuDenoiseSureShrink");
  f.Click("cmdBegin");
  EXPECT_TRUE(f.Reconstruction().Empty());
  ASSERT_FALSE(t.lines.empty());
  EXPECT_EQ(t.lines.back(), "beep");
}

TEST(SureShrinkCommand, ABadLevelCountChangesNothing) {
  TestFrame t;
  ImageProcessorForm& f = NewProcessor(t);
  ASSERT_TRUE(f.LoadImageFile(NoisyPgm()));
  f.RunMenu("mnuDenoiseSureShrink");
  f.controls().SetText("txtLevels", "0");
  f.Click("cmdBegin");
  EXPECT_TRUE(f.Reconstruction().Empty());
  ASSERT_FALSE(t.lines.empty());
  EXPECT_NE(t.lines.back().find("Number of levels must be a positive integer."), std::string::npos);
}

}  // namespace
}  // namespace keldo
