// The compression workshop driven through its buttons: a stored transform
// coded into a .wic file and decoded back to its _quant.kb2 matrix, the
// targets' messages, the lossless option, and the test aids.

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "kit/kb2_file.h"
#include "kit/typed_forms.h"
#include "test_frame.h"
#include "wavelet/image_transform.h"
#include "wavelet/wdr_denoise.h"
#include "wavelet/wdr_files.h"
#include "workshop/workshop_form.h"

namespace keldo {
namespace {

using testing::TestFrame;
using workshop::WorkshopForm;

WorkshopForm& OpenWorkshop(TestFrame& t) {
  int code = 0;
  Form* form = t.frame.NewForm(FormKind::Workshop, code);
  auto* w = FormAs<WorkshopForm>(form);
  EXPECT_NE(w, nullptr);
  return *w;
}

// A 64 by 64 picture transformed to 3 levels of Daub 9/7, as a .kb2 file of
// 65 by 65 samples (the last row and column 0).
std::vector<float> WriteTransform(const std::string& path, bool integer = false) {
  const int n = 64;
  wavelet::ImagePlane plane(n, n);
  for (int y = 0; y < n; ++y)
    for (int x = 0; x < n; ++x)
      plane.At(x, y) = static_cast<float>(std::lround(120 + 50 * std::sin(x / 6.0) * std::cos(y / 9.0) + (x > 40 ? 30 : 0)));
  wavelet::TransformTheImage(plane, 3, integer ? 2 : 1);
  Kb2Record record;
  record.points = n;
  record.right = static_cast<float>(n);
  record.samples.assign(65 * 65, 0.0f);
  for (int y = 0; y < n; ++y)
    for (int x = 0; x < n; ++x) record.samples[static_cast<std::size_t>(y) * 65 + x] = plane.At(x, y);
  const std::vector<std::uint8_t> bytes = WriteKb2(record);
  std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()),
                                              static_cast<std::streamsize>(bytes.size()));
  return plane.v;
}

std::string TempPath(const std::string& name) { return (std::filesystem::temp_directory_path() / name).string(); }

TEST(Workshop, ItOpensWithTheDefaultsOfALossyArithmeticRun) {
  TestFrame t;
  WorkshopForm& w = OpenWorkshop(t);
  EXPECT_EQ(w.Caption(), "Wavelet Image Compression Workshop");
  EXPECT_NE(w.controls()["OpLossy(0)"].value, 0);
  EXPECT_NE(w.controls()["OpCompress(2)"].value, 0);
  EXPECT_EQ(w.controls().Text("cmdEncode"), "Encode Transform");
  EXPECT_EQ(w.controls().Text("cmdDecode"), "Decode Transform");
  EXPECT_EQ(w.controls().Text("OpScan(3)"), "Dynamic Tree  (context predict)");
}

TEST(Workshop, EveryCoderEncodesAndDecodesThroughItsFile) {
  TestFrame t;
  WorkshopForm& w = OpenWorkshop(t);
  const std::string source = TempPath("keldo_ws_transform.kb2");
  const std::vector<float> transform = WriteTransform(source);
  for (int stage = 0; stage < 3; ++stage)
    for (int scan = 0; scan < 4; ++scan) {
      t.lines.clear();
      ASSERT_TRUE(w.controls().SetFromUser("OpCompress(" + std::to_string(stage) + ")", "1"));
      ASSERT_TRUE(w.controls().SetFromUser("OpScan(" + std::to_string(scan) + ")", "1"));
      w.controls().SetText("txtLevels", "3");
      w.controls().SetText("txtBitRate", "1");
      t.platform.fileDialog.QueueAnswer(source);
      ASSERT_TRUE(w.Click("cmdEncode"));
      const std::string report = w.controls().Text("TxtData");
      const std::string saved = t.frame.CompressFolder() + "/keldo_ws_transform.wic";
      ASSERT_NE(report.find("Compressed data saved in file:  " + saved), std::string::npos) << report;
      EXPECT_NE(report.find("Number of Completed Passes: "), std::string::npos);
      ASSERT_TRUE(std::filesystem::exists(saved));
      // About 1 bpp of 64 by 64: 512 bytes.
      EXPECT_NEAR(static_cast<double>(std::filesystem::file_size(saved)), 512.0, 48.0) << stage << " " << scan;
      t.platform.fileDialog.QueueAnswer(saved);
      ASSERT_TRUE(w.Click("cmdDecode"));
      EXPECT_TRUE(t.lines.empty()) << t.lines.front();
      const std::string quant = t.frame.CompressFolder() + "/keldo_ws_transform_quant.kb2";
      ASSERT_TRUE(std::filesystem::exists(quant));
      EXPECT_NE(w.controls().Text("TxtData").find("Distortion (PSNR): "), std::string::npos);
      // The matrix stored is the one decoded from the same file directly.
      std::ifstream in(saved, std::ios::binary);
      const std::vector<std::uint8_t> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
      const std::optional<wavelet::WdrDecodedFile> direct = wavelet::DecodeWicFile(bytes, false);
      ASSERT_TRUE(direct);
      EXPECT_EQ(w.Decoded().v, direct->plane.v);
      std::ifstream qin(quant, std::ios::binary);
      const std::vector<std::uint8_t> qbytes((std::istreambuf_iterator<char>(qin)), std::istreambuf_iterator<char>());
      const std::optional<Kb2Record> record = ReadKb2(qbytes);
      ASSERT_TRUE(record);
      ASSERT_EQ(record->points, 64);
      for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 64; ++x)
          ASSERT_EQ(record->samples[static_cast<std::size_t>(y) * 65 + x], direct->plane.At(x, y));
    }
  std::filesystem::remove(source);
}

TEST(Workshop, TargetsAreCheckedBeforeAFileIsAskedFor) {
  TestFrame t;
  WorkshopForm& w = OpenWorkshop(t);
  w.controls().SetText("txtBitRate", "0");
  ASSERT_TRUE(w.Click("cmdEncode"));
  EXPECT_EQ(t.lines, std::vector<std::string>{"message 82: Bpp value must be positive."});
  t.lines.clear();
  ASSERT_TRUE(w.controls().SetFromUser("OpPSNR", "1"));
  w.controls().SetText("txtPSNR", "-3");
  ASSERT_TRUE(w.Click("cmdEncode"));
  EXPECT_EQ(t.lines, std::vector<std::string>{"message 81: PSNR value must be positive."});
  t.lines.clear();
  ASSERT_TRUE(w.controls().SetFromUser("OpLossy(1)", "1"));
  w.ControlChanged("OpLossy(1)");
  // Lossless: the arithmetic coder and the rate option, the boxes cleared.
  EXPECT_NE(w.controls()["OpCompress(2)"].value, 0);
  EXPECT_NE(w.controls()["OpCompRatio"].value, 0);
  EXPECT_FALSE(w.controls()["OpCompress(0)"].enabled);
  EXPECT_EQ(w.controls().Text("txtBitRate"), "");
  w.controls().SetText("txtBitRate", "-1");
  ASSERT_TRUE(w.Click("cmdEncode"));
  EXPECT_EQ(t.lines, std::vector<std::string>{"message 84: Bpp value must be non-negative."});
  EXPECT_TRUE(t.platform.fileDialog.Requests().empty());
}

TEST(Workshop, LosslessCodingOfAnIntegerTransformDecodesExactly) {
  TestFrame t;
  WorkshopForm& w = OpenWorkshop(t);
  const std::string source = TempPath("keldo_ws_integer.kb2");
  const std::vector<float> transform = WriteTransform(source, true);
  ASSERT_TRUE(w.controls().SetFromUser("OpLossy(1)", "1"));
  w.ControlChanged("OpLossy(1)");
  w.controls().SetText("txtLevels", "3");
  t.platform.fileDialog.QueueAnswer(source);
  ASSERT_TRUE(w.Click("cmdEncode"));
  const std::string saved = t.frame.CompressFolder() + "/keldo_ws_integer.wic";
  ASSERT_TRUE(std::filesystem::exists(saved)) << w.controls().Text("TxtData");
  t.platform.fileDialog.QueueAnswer(saved);
  ASSERT_TRUE(w.Click("cmdDecode"));
  std::filesystem::remove(source);
  EXPECT_EQ(w.Decoded().v, transform);
  // An exact decoding reports no distortion.
  EXPECT_EQ(w.controls().Text("TxtData").find("Distortion"), std::string::npos);
}

TEST(Workshop, ABadFileGivesMessage85) {
  TestFrame t;
  WorkshopForm& w = OpenWorkshop(t);
  const std::string bad = TempPath("keldo_ws_bad.wic");
  std::ofstream(bad, std::ios::binary) << "not a compressed file";
  t.platform.fileDialog.QueueAnswer(bad);
  ASSERT_TRUE(w.Click("cmdDecode"));
  std::filesystem::remove(bad);
  EXPECT_EQ(t.lines, std::vector<std::string>{"message 85: Error decompressing file."});
}

TEST(Workshop, DenoiseTransformStoresTheMatrixTheDenoiserGives) {
  TestFrame t;
  WorkshopForm& w = OpenWorkshop(t);
  const std::string source = TempPath("keldo_ws_noisy.kb2");
  const std::vector<float> transform = WriteTransform(source);
  w.controls().SetText("txtDNLevels", "3");
  w.controls().SetText("txtDNThresh", "12");
  w.controls().SetText("txtDepth", "2");
  ASSERT_TRUE(w.controls().SetFromUser("chkShrinkage", "1"));
  t.platform.fileDialog.QueueAnswer(source);
  ASSERT_TRUE(w.Click("cmdDenoise"));
  std::filesystem::remove(source);
  EXPECT_TRUE(t.lines.empty());
  wavelet::ImagePlane plane(64, 64);
  plane.v = transform;
  wavelet::WdrDenoiseOptions options;
  options.levels = 3;
  options.floor = 12;
  options.depth = 2;
  options.shrink = true;
  bool ok = false;
  const wavelet::WdrDenoiseResult expected = wavelet::ArrayDeNoiseEncode(plane, options, ok);
  ASSERT_TRUE(ok);
  EXPECT_EQ(w.Decoded().v, expected.plane.v);
  const std::string report = w.controls().Text("TxtData");
  EXPECT_NE(report.find("Number of significant values: " + std::to_string(expected.significant)), std::string::npos)
      << report;
  const std::string quant = t.frame.CompressFolder() + "/keldo_ws_noisy_quant.kb2";
  EXPECT_NE(report.find("Denoised matrix saved in file:  " + quant), std::string::npos) << report;
  EXPECT_TRUE(std::filesystem::exists(quant));
  // A negative threshold is refused before any file is asked for.
  const std::size_t asked = t.platform.fileDialog.Requests().size();
  w.controls().SetText("txtDNThresh", "-1");
  ASSERT_TRUE(w.Click("cmdDenoise"));
  EXPECT_EQ(t.lines, std::vector<std::string>{"message 11: Threshold value cannot be negative."});
  EXPECT_EQ(t.platform.fileDialog.Requests().size(), asked);
}

TEST(Workshop, TheScanOrderAidPrintsTheEightByEightOrder) {
  TestFrame t;
  WorkshopForm& w = OpenWorkshop(t);
  ASSERT_TRUE(w.Click("cmdScanOrder"));
  const std::string report = w.controls().Text("TxtData");
  ASSERT_EQ(report.rfind("Testing Scan Order, N =8, L =2\r\n", 0), 0u) << report;
  // The zigzag of the 2 by 2 baseband first: (0,0), (1,0), (0,1), (1,1).
  const std::string first = report.substr(report.find("\r\n") + 2, 32);
  EXPECT_EQ(first.substr(0, 8), "   1   2") << report;
  ASSERT_TRUE(w.Click("cmdArithCode"));
  EXPECT_NE(w.controls().Text("TxtData").find("Decoded as coded."), std::string::npos);
}

}  // namespace
}  // namespace keldo
