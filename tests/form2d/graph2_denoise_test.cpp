// "De&noise (wavelet)" on the two-dimensional form, driven through the
// wavelet panel: the passes of the shift types, the progress and Stop, the
// automatic threshold and its defaults, the messages, and the error of a
// denoised picture against the clean one.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "common/number_text.h"
#include "form2d/graph2_form.h"
#include "form2d_driver.h"
#include "kit/typed_forms.h"

namespace keldo {
namespace {

using form2d::Graph2Form;
using testing::NewForm;
using testing::Sample;
using testing::TestFrame;

bool Reported(const TestFrame& t, const std::string& number) {
  for (const std::string& line : t.lines)
    if (line.find(number) != std::string::npos) return true;
  return false;
}

// A clean picture of N = 64: a smooth swell and a bright square.
float Clean(int i, int j) {
  const double swell = 60.0 * std::sin(6.28318530717958 * i / 64.0) * std::cos(6.28318530717958 * j / 64.0);
  return static_cast<float>(100.0 + swell + ((i > 20 && i < 40 && j > 10 && j < 30) ? 50.0 : 0.0));
}

// Files the clean picture, with Gaussian noise of the level given, as a
// graph of the form.
void FileNoisyPicture(Graph2Form& f, double sigma, unsigned seed) {
  const std::size_t stride = 65;
  std::vector<float> v(stride * stride);
  std::mt19937 g(seed);
  std::normal_distribution<double> noise(0.0, sigma);
  for (int i = 0; i <= 64; ++i)
    for (int j = 0; j <= 64; ++j) v[static_cast<std::size_t>(i) * stride + static_cast<std::size_t>(j)] = Clean(i, j) + static_cast<float>(noise(g));
  ASSERT_NE(f.DisplayFunction(64, v.data(), stride, 0.0f, 64.0f, 1.0f), nullptr);
}

double RmsFromClean(const Graph2Form& f, int g) {
  double s = 0.0;
  for (int i = 0; i < 64; ++i)
    for (int j = 0; j < 64; ++j) {
      const double d = Sample(f, g, i, j) - Clean(i, j);
      s += d * d;
    }
  return std::sqrt(s / (64.0 * 64.0));
}

void OpenDenoise(Graph2Form& f) {
  f.RunMenu("mnuDenoiseWavelet");
  ASSERT_EQ(f.SideBoxKey(), "Denoise");
  ASSERT_EQ(f.controls().Text("labWavelet"), "Denoise");
  f.controls().SetText("wavlevels", "3");
}

TEST(DenoiseImage, ThePanelShowsTheFrameWithItsCaptions) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  FileNoisyPicture(f, 5.0, 1);
  OpenDenoise(f);
  const char* captions[] = {"Shrink", "Refine", "Avg", "Auto", "Post-process", "Quantize (8-bit)", "High SNR"};
  for (int k = 0; k < 7; ++k) EXPECT_EQ(f.controls()[IndexedName("chkDenoise", k)].text, captions[k]);
  EXPECT_TRUE(f.controls()["frWSerType"].visible);
  EXPECT_FALSE(f.controls()["chkWavInvTr"].visible);
  const std::vector<std::string> shifts = {"1", "1D", "2", "2D", "4", "4D", "8", "8D", "16", "16D"};
  EXPECT_EQ(f.controls()["AvgType"].items, shifts);
  EXPECT_EQ(f.controls().Text("AvgType"), "1");
  // The frame is the denoiser's alone.
  f.RunMenu("mnuWaveletTransform");
  EXPECT_FALSE(f.controls()["frWSerType"].visible);
}

// Runs the denoiser with the shift entry given, counting the passes by the
// yields between them; the result is graph 1.
int PassesOf(const std::string& entry, std::string& progress) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  FileNoisyPicture(f, 5.0, 2);
  OpenDenoise(f);
  f.controls()["chkDenoise(2)"].value = 1;
  f.controls().SetFromUser("AvgType", entry);
  int yields = 0;
  std::string caption;
  t.platform.eventLoop.SetHook([&] {
    ++yields;
    caption = f.controls()["GoButton(5)"].text;
  });
  EXPECT_TRUE(f.Go());
  EXPECT_EQ(caption, "Stop");
  EXPECT_EQ(f.controls()["GoButton(5)"].text, "Plot");
  EXPECT_EQ(f.NumGraphsPlotted(), 2);
  progress = f.controls().Text("Label(24)");
  return yields;
}

TEST(DenoiseImage, OneShiftRunsFourPassesAndItsDiagonalFormNine) {
  std::string progress;
  EXPECT_EQ(PassesOf("1", progress), 4);
  EXPECT_EQ(progress, "100% done");
  EXPECT_EQ(PassesOf("1D", progress), 9);
  EXPECT_EQ(PassesOf("2", progress), 9);
  EXPECT_EQ(PassesOf("2D", progress), 25);
}

TEST(DenoiseImage, StopAbandonsTheRunWithNoResult) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  FileNoisyPicture(f, 5.0, 3);
  OpenDenoise(f);
  f.controls()["chkDenoise(2)"].value = 1;
  f.controls().SetFromUser("AvgType", "2D");
  int yields = 0;
  std::string progress;
  t.platform.eventLoop.SetHook([&] {
    if (++yields == 2) {
      progress = f.controls().Text("Label(24)");
      EXPECT_TRUE(f.Denoising());
      EXPECT_FALSE(f.QueryClose());  // a running denoise keeps the form open
      f.Click("GoButton(5)");
    }
  });
  EXPECT_TRUE(f.Go());
  EXPECT_EQ(progress, "8% done");  // 2 of 25 passes
  EXPECT_EQ(yields, 2);
  EXPECT_EQ(f.NumGraphsPlotted(), 1);
  EXPECT_FALSE(f.Denoising());
  EXPECT_EQ(f.controls()["GoButton(5)"].text, "Plot");
  EXPECT_TRUE(f.QueryClose());
}

TEST(DenoiseImage, ANewGridSizeDuringTheRunFilesNoResult) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  FileNoisyPicture(f, 5.0, 8);
  OpenDenoise(f);
  f.controls()["chkDenoise(2)"].value = 1;
  int yields = 0;
  t.platform.eventLoop.SetHook([&] {
    if (++yields == 1) f.RunMenu("mnu128");
  });
  EXPECT_TRUE(f.Go());
  EXPECT_EQ(yields, 4);
  EXPECT_EQ(f.Points(), 128);
  EXPECT_FALSE(f.Denoising());
  for (int g = 0; g < f.NumGraphsPlotted(); ++g) EXPECT_NE(f.GraphRight(g) - f.GraphLeft(g), 0.0f);
  EXPECT_LE(f.NumGraphsPlotted(), 1);
}

TEST(DenoiseImage, InfiniteAndNanSamplesNeitherHangNorCrash) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  std::vector<float> v(65 * 65, 100.0f);
  v[10 * 65 + 20] = std::numeric_limits<float>::infinity();
  v[40 * 65 + 3] = std::numeric_limits<float>::quiet_NaN();
  ASSERT_NE(f.DisplayFunction(64, v.data(), 65, 0.0f, 64.0f, 1.0f), nullptr);
  OpenDenoise(f);
  ASSERT_TRUE(f.Go());
  f.controls()["chkDenoise(1)"].value = 1;
  f.controls()["chkDenoise(4)"].value = 1;
  ASSERT_TRUE(f.Go());
  EXPECT_FALSE(f.Denoising());
  EXPECT_GE(f.NumGraphsPlotted(), 1);
}

TEST(DenoiseImage, AConstantImageHasSigmaOneAndItsThresholdAndDefaults) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  testing::Plot(f, "100");
  OpenDenoise(f);
  // Auto is ticked by default; Avg and High SNR are not: T = 2 sigma sqrt(2 ln N).
  ASSERT_TRUE(f.Go());
  const double t1 = 2.0 * std::sqrt(2.0 * std::log(64.0));
  EXPECT_NEAR(Val(f.controls().Text("txtDenoiseThreshold")), t1, 1e-12);
  EXPECT_EQ(f.controls().Text("txtDepth"), "2");     // sigma 1 <= 25.6
  EXPECT_EQ(f.controls().Text("txtDescents"), "4");  // N below 101
  // A constant comes through.
  ASSERT_EQ(f.NumGraphsPlotted(), 2);
  for (int i = 0; i <= 64; i += 9)
    for (int j = 0; j <= 64; j += 7) EXPECT_NEAR(Sample(f, 1, i, j), 100.0f, 1e-3);
  // High SNR without averaging: sigma sqrt(4 ln N).
  f.controls()["chkDenoise(6)"].value = 1;
  ASSERT_TRUE(f.Go());
  EXPECT_NEAR(Val(f.controls().Text("txtDenoiseThreshold")), std::sqrt(4.0 * std::log(64.0)), 1e-12);
  EXPECT_EQ(f.controls().Text("txtDescents"), "3");
  // Depth and descent both below 1 are kept, and descent 0 gives sigma sqrt(2 ln N).
  f.controls().SetText("txtDepth", "0");
  f.controls().SetText("txtDescents", "0");
  ASSERT_TRUE(f.Go());
  EXPECT_NEAR(Val(f.controls().Text("txtDenoiseThreshold")), std::sqrt(2.0 * std::log(64.0)), 1e-12);
  EXPECT_EQ(f.controls().Text("txtDepth"), "0");
  EXPECT_EQ(f.controls().Text("txtDescents"), "0");
}

TEST(DenoiseImage, ANoisyPictureComesCloserToTheCleanOne) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  FileNoisyPicture(f, 10.0, 4);
  const double noisy = RmsFromClean(f, 0);
  OpenDenoise(f);
  ASSERT_TRUE(f.Go());  // automatic threshold, hard, one pass
  const double plain = RmsFromClean(f, 1);
  f.controls()["chkDenoise(2)"].value = 1;
  f.controls().SetFromUser("AvgType", "1D");
  ASSERT_TRUE(f.Go());
  const double averaged = RmsFromClean(f, 2);
  f.controls()["chkDenoise(1)"].value = 1;  // the bit-plane routine with trees
  f.controls()["chkDenoise(4)"].value = 1;
  ASSERT_TRUE(f.Go());
  const double bitPlane = RmsFromClean(f, 3);
  EXPECT_LT(plain, 0.9 * noisy);
  EXPECT_LT(averaged, plain);
  EXPECT_LT(bitPlane, noisy);
  // The source stays.
  EXPECT_NEAR(RmsFromClean(f, 0), noisy, 0.0);
}

TEST(DenoiseImage, QuantizeGivesGreyLevels) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  FileNoisyPicture(f, 40.0, 5);
  OpenDenoise(f);
  f.controls()["chkDenoise(5)"].value = 1;
  ASSERT_TRUE(f.Go());
  for (int i = 0; i <= 64; ++i)
    for (int j = 0; j <= 64; ++j) {
      const float v = Sample(f, 1, i, j);
      ASSERT_TRUE(v >= 0.0f && v <= 255.0f && v == std::nearbyint(v)) << v;
    }
}

TEST(DenoiseImage, BadFieldsGiveTheirMessagesAndNoGraph) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  FileNoisyPicture(f, 5.0, 6);
  OpenDenoise(f);
  f.controls()["chkDenoise(3)"].value = 0;
  f.controls().SetText("txtDenoiseThreshold", "1/0");
  ASSERT_TRUE(f.Go());
  EXPECT_TRUE(Reported(t, "message 10:"));
  f.controls().SetText("txtDenoiseThreshold", "-3");
  ASSERT_TRUE(f.Go());
  EXPECT_TRUE(Reported(t, "message 11:"));
  f.controls().SetText("txtDenoiseThreshold", "10");
  f.controls().SetText("wavlevels", "9");
  ASSERT_TRUE(f.Go());
  EXPECT_TRUE(Reported(t, "message 21:"));
  f.controls().SetText("wavlevels", "2");
  f.controls().SetText("WavGraph", "3");
  ASSERT_TRUE(f.Go());
  EXPECT_TRUE(Reported(t, "message 3:"));
  EXPECT_EQ(f.NumGraphsPlotted(), 1);
  EXPECT_FALSE(f.Denoising());
  // A typed threshold of 0 keeps every coefficient: the picture comes back.
  f.controls().SetText("WavGraph", "1");
  f.controls().SetText("txtDenoiseThreshold", "0");
  ASSERT_TRUE(f.Go());
  ASSERT_EQ(f.NumGraphsPlotted(), 2);
  for (int i = 0; i < 64; i += 5)
    for (int j = 0; j < 64; j += 3) EXPECT_NEAR(Sample(f, 1, i, j), Sample(f, 0, i, j), 1e-3);
}

}  // namespace
}  // namespace keldo
