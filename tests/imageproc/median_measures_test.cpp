// The image processor's median menus, its error measures and the region
// dragged on the left image, on the picture of tests/data/make_median_image.py
// (40 pixels along y, 32 along x, so that y is padded to 64).

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "imageproc/image_processor_form.h"
#include "kit/typed_forms.h"
#include "platform/headless/raster_surface.h"
#include "test_frame.h"

namespace keldo {
namespace {

using imageproc::ImageProcessorForm;
using imageproc::RoiRectangle;
using testing::TestFrame;

constexpr double kReportTolerance = 1e-9;
constexpr int kRows = 40, kCols = 32;  // y and x of the picture

struct Reference {
  std::map<std::string, std::vector<int>> matrices;  // row y, column x
  std::map<std::string, double> measures;
};

const Reference& Data() {
  static const Reference data = [] {
    Reference d;
    std::ifstream in(KELDO_TEST_DATA "/median_image.tsv");
    std::string line;
    while (std::getline(in, line)) {
      std::istringstream words(line);
      std::string name;
      words >> name;
      std::vector<double> numbers;
      double x = 0;
      while (words >> x) numbers.push_back(x);
      if (numbers.size() == 1) d.measures[name] = numbers[0];
      else
        for (std::size_t k = 2; k < numbers.size(); ++k) d.matrices[name].push_back(static_cast<int>(numbers[k]));
    }
    return d;
  }();
  return data;
}

int Expected(const std::string& name, int x, int y) {
  return Data().matrices.at(name)[static_cast<std::size_t>(y * kCols + x)];
}

// The picture as a PGM file: its first number the bytes a row (y), its rows
// the values of x.
std::vector<std::uint8_t> PgmOf(const std::string& name) {
  const std::string head = "P5\n" + std::to_string(kRows) + " " + std::to_string(kCols) + "\n255\n";
  std::vector<std::uint8_t> out(head.begin(), head.end());
  for (int x = 0; x < kCols; ++x)
    for (int y = 0; y < kRows; ++y) out.push_back(static_cast<std::uint8_t>(Expected(name, x, y)));
  return out;
}

std::vector<std::uint8_t> FlatPgm(int value) {
  const std::string head = "P5\n32 32\n255\n";
  std::vector<std::uint8_t> out(head.begin(), head.end());
  out.resize(out.size() + 32 * 32, static_cast<std::uint8_t>(value));
  return out;
}

struct Processor {
  TestFrame t;
  ImageProcessorForm* f = nullptr;
  explicit Processor(const std::vector<std::uint8_t>& pgm) {
    int code = 0;
    f = NewFormOf<ImageProcessorForm>(t.frame, code);
    Load(pgm);
  }
  void Load(const std::vector<std::uint8_t>& pgm) {
    const std::filesystem::path path = testing::UniqueTempPath("keldo-median-test.pgm");
    {
      std::ofstream out(path, std::ios::binary);
      out.write(reinterpret_cast<const char*>(pgm.data()), static_cast<std::streamsize>(pgm.size()));
    }
    t.platform.fileDialog.QueueAnswer(path.string());
    f->RunMenu("mnuGetImage");
    std::filesystem::remove(path);
  }
  void Drag(double x0, double y0, double x1, double y1) {
    f->Mouse(MouseAction::Down, x0, y0, MouseButton::Left);
    f->Mouse(MouseAction::Move, (x0 + x1) / 2, (y0 + y1) / 2, MouseButton::None);
    f->Mouse(MouseAction::Up, x1, y1, MouseButton::Left);
  }
  // Runs one error measure and returns the report lines it added.
  std::vector<std::string> Measure(int option, bool regionOnly) {
    f->RunMenu("mnuErrormeasures");
    f->controls().SetFromUser("OpErrorMeasure(" + std::to_string(option) + ")", "1");
    f->controls().SetFromUser("chkROIErrorOnly", regionOnly ? "1" : "0");
    const std::string before = f->controls().Text("Report");
    EXPECT_TRUE(f->Click("cmdBegin"));
    const std::string after = f->controls().Text("Report");
    EXPECT_EQ(after.substr(0, before.size()), before);
    std::vector<std::string> lines;
    std::istringstream in(after.substr(before.size()));
    std::string line;
    while (std::getline(in, line)) {
      if (!line.empty() && line.back() == '\r') line.pop_back();
      lines.push_back(line);
    }
    return lines;
  }
};

// The number after `label` at the start of `line`.
double NumberAfter(const std::string& line, const std::string& label) {
  EXPECT_EQ(line.substr(0, label.size()), label) << line;
  return std::stod(line.substr(label.size()));
}

bool SameRegion(const std::optional<RoiRectangle>& r, int x1, int y1, int x2, int y2) {
  return r && r->x1 == x1 && r->y1 == y1 && r->x2 == x2 && r->y2 == y2;
}

TEST(ImageProcessorMedian, ThePlainAndAdaptiveMediansGoToTheRightImage) {
  for (const auto& [menu, name] : {std::pair{"mnuMedianDenoise", "median"}, std::pair{"mnuAdaptiveMedianDenoise", "adaptive"}}) {
    Processor p(PgmOf("input"));
    ASSERT_TRUE(p.f->HasImage());
    p.f->RunMenu(menu);
    const imageproc::ProcessorImage& right = p.f->Reconstruction();
    ASSERT_EQ(right.width, 32);
    ASSERT_EQ(right.height, 64);
    EXPECT_EQ(right.originalWidth, kCols);
    EXPECT_EQ(right.originalHeight, kRows);
    for (int x = 0; x < kCols; ++x)
      for (int y = 0; y < kRows; ++y) ASSERT_EQ(right.At(x, y), Expected(name, x, y)) << name << " " << x << " " << y;
    // The padding repeats the last line, and the left image stays.
    for (int y = kRows; y < 64; ++y) EXPECT_EQ(right.At(7, y), right.At(7, kRows - 1));
    for (int x = 0; x < kCols; ++x) EXPECT_EQ(p.f->Image().At(x, 3), Expected("input", x, 3));
    EXPECT_TRUE(p.t.lines.empty());
  }
}

TEST(ImageProcessorMedian, WithoutAnImageTheMediansBeepAndMakeNothing) {
  TestFrame t;
  int code = 0;
  ImageProcessorForm* f = NewFormOf<ImageProcessorForm>(t.frame, code);
  ASSERT_NE(f, nullptr);
  f->RunMenu("mnuMedianDenoise");
  f->RunMenu("mnuAdaptiveMedianDenoise");
  EXPECT_TRUE(f->Reconstruction().Empty());
  EXPECT_EQ(t.lines, (std::vector<std::string>{"beep", "beep"}));
}

TEST(ImageProcessorMeasures, EachOptionWritesItsLinesWithNumpysValues) {
  Processor p(PgmOf("input"));
  p.f->RunMenu("mnuMedianDenoise");
  const std::map<std::string, double>& m = Data().measures;
  std::vector<std::string> lines = p.Measure(0, false);
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0], "Sup-norm difference = 183");
  EXPECT_EQ(m.at("sup"), 183);
  EXPECT_TRUE(p.Measure(1, false).empty());
  lines = p.Measure(2, false);
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_NEAR(NumberAfter(lines[0], "Root Mean Square Error:  "), m.at("rms"), kReportTolerance);
  EXPECT_NEAR(NumberAfter(lines[1], "PSNR:  "), m.at("psnr"), kReportTolerance);
  lines = p.Measure(3, false);
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_NEAR(NumberAfter(lines[0], "Mean Square Error:  "), m.at("mse"), kReportTolerance);
  lines = p.Measure(4, false);
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_NEAR(NumberAfter(lines[0], "SNR:  "), m.at("snr"), kReportTolerance);
  EXPECT_TRUE(p.t.lines.empty());
}

TEST(ImageProcessorMeasures, TheRegionRestrictsThemAndPrefixesTheirLines) {
  Processor p(PgmOf("input"));
  p.f->RunMenu("mnuMedianDenoise");
  p.Drag(20, 30, 5, 8);
  ASSERT_TRUE(SameRegion(p.f->Region(), 5, 8, 20, 30));
  const std::map<std::string, double>& m = Data().measures;
  std::vector<std::string> lines = p.Measure(0, true);
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_NEAR(NumberAfter(lines[0], "ROI Sup-norm difference = "), m.at("roi_sup"), 0);
  lines = p.Measure(2, true);
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_NEAR(NumberAfter(lines[0], "ROI Root Mean Square Error:  "), m.at("roi_rms"), kReportTolerance);
  EXPECT_NEAR(NumberAfter(lines[1], "ROI PSNR:  "), m.at("roi_psnr"), kReportTolerance);
  lines = p.Measure(3, true);
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_NEAR(NumberAfter(lines[0], "ROI Mean Square Error:  "), m.at("roi_mse"), kReportTolerance);
  lines = p.Measure(4, true);
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_NEAR(NumberAfter(lines[0], "ROI SNR:  "), m.at("roi_snr"), kReportTolerance);
  // The region's measures differ from the whole picture's.
  EXPECT_NE(m.at("roi_mse"), m.at("mse"));
  // Unticked, the whole picture again.
  lines = p.Measure(3, false);
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_NEAR(NumberAfter(lines[0], "Mean Square Error:  "), m.at("mse"), kReportTolerance);
}

TEST(ImageProcessorMeasures, WithoutARightImageNothingIsShown) {
  Processor p(PgmOf("input"));
  for (int option = 0; option < 5; ++option) EXPECT_TRUE(p.Measure(option, false).empty());
  EXPECT_TRUE(p.t.lines.empty());
}

TEST(ImageProcessorMeasures, IdenticalImagesGiveAReportLineAndNoInfinity) {
  Processor p(FlatPgm(90));
  p.f->RunMenu("mnuMedianDenoise");
  EXPECT_EQ(p.f->Reconstruction().bytes, p.f->Image().bytes);
  std::vector<std::string> lines = p.Measure(2, false);
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0], "Root Mean Square Error:  0");
  EXPECT_EQ(lines[1], "PSNR:  none, the images are identical");
  lines = p.Measure(4, false);
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0], "SNR:  none, the images are identical");
  EXPECT_EQ(p.Measure(0, false), std::vector<std::string>{"Sup-norm difference = 0"});
  EXPECT_EQ(p.f->controls().Text("Report").find("inf"), std::string::npos);
  EXPECT_TRUE(p.t.lines.empty());
}

TEST(ImageProcessorMeasures, ARegionInThePaddingAloneIsReportedAndChangesNothing) {
  Processor p(PgmOf("input"));
  p.f->RunMenu("mnuMedianDenoise");
  p.Drag(3, 45, 10, 60);
  ASSERT_TRUE(SameRegion(p.f->Region(), 3, 45, 10, 60));
  EXPECT_TRUE(p.Measure(3, true).empty());
  EXPECT_EQ(p.t.lines, std::vector<std::string>{"message 53: No graph values in display window."});
}

TEST(ImageProcessorRegion, ADragReportsItsCornersAndEnablesTheShare) {
  Processor p(PgmOf("input"));
  EXPECT_FALSE(p.f->controls()["txtROIPercent"].enabled);
  p.Drag(5, 8, 20, 30);
  ASSERT_TRUE(SameRegion(p.f->Region(), 5, 8, 20, 30));
  const std::string report = p.f->controls().Text("Report");
  EXPECT_NE(report.find("Upper left corner: (5,8)\r\nLower right corner: (20,30)\r\n"), std::string::npos) << report;
  EXPECT_TRUE(p.f->controls()["txtROIPercent"].enabled);
  int x1 = 0, y1 = 0, x2 = 0, y2 = 0;
  ASSERT_TRUE(p.f->GetROICoordinates(x1, y1, x2, y2));
  EXPECT_EQ(x1 + y1 * 100 + x2 * 10000 + y2 * 1000000, 5 + 800 + 200000 + 30000000);
}

TEST(ImageProcessorRegion, ADragFromLowerRightToUpperLeftGivesTheSameRegion) {
  Processor a(PgmOf("input")), b(PgmOf("input")), c(PgmOf("input"));
  a.Drag(5, 8, 20, 30);
  b.Drag(20, 30, 5, 8);
  c.Drag(20, 8, 5, 30);
  EXPECT_TRUE(SameRegion(a.f->Region(), 5, 8, 20, 30));
  EXPECT_TRUE(SameRegion(b.f->Region(), 5, 8, 20, 30));
  EXPECT_TRUE(SameRegion(c.f->Region(), 5, 8, 20, 30));
}

TEST(ImageProcessorRegion, ARegionReachingTheBorderIsClippedToThePaddedImage) {
  Processor p(PgmOf("input"));
  p.Drag(-7, 10, 100, 500);
  EXPECT_TRUE(SameRegion(p.f->Region(), 0, 10, 31, 63));
  p.Drag(31.9, 63.9, 25.2, -3);
  EXPECT_TRUE(SameRegion(p.f->Region(), 25, 0, 31, 63));
}

TEST(ImageProcessorRegion, APlainClickClearsTheRegion) {
  Processor p(PgmOf("input"));
  p.Drag(5, 8, 20, 30);
  ASSERT_TRUE(p.f->Region());
  p.f->Mouse(MouseAction::Down, 12.2, 9.1, MouseButton::Left);
  p.f->Mouse(MouseAction::Up, 12.7, 9.8, MouseButton::Left);
  EXPECT_FALSE(p.f->Region());
  EXPECT_FALSE(p.f->controls()["txtROIPercent"].enabled);
  // A new picture forgets a region too.
  p.Drag(5, 8, 20, 30);
  ASSERT_TRUE(p.f->Region());
  p.Load(FlatPgm(3));
  EXPECT_FALSE(p.f->Region());
  EXPECT_FALSE(p.f->controls()["txtROIPercent"].enabled);
}

TEST(ImageProcessorRegion, TheViewsPointerAcrossAndDownIsTheScriptsYAndX) {
  Processor p(PgmOf("input"));
  // The view sends (across, down) of the left picture: across runs along y.
  EXPECT_TRUE(p.f->PictureMouse(0, MouseAction::Down, 30.4, 20.6, MouseButton::Left));
  EXPECT_TRUE(p.f->TracksPointer());
  EXPECT_TRUE(p.f->PictureMouse(0, MouseAction::Up, 8.0, 5.0, MouseButton::Left));
  EXPECT_FALSE(p.f->TracksPointer());
  EXPECT_TRUE(SameRegion(p.f->Region(), 5, 8, 20, 30));
  // The right picture takes no region.
  p.f->PictureMouse(1, MouseAction::Down, 1, 1, MouseButton::Left);
  p.f->PictureMouse(1, MouseAction::Up, 9, 9, MouseButton::Left);
  EXPECT_TRUE(SameRegion(p.f->Region(), 5, 8, 20, 30));
}

TEST(ImageProcessorRegion, TheBandIsDrawnDuringTheDragAndTheRectangleStays) {
  Processor p(PgmOf("input"));
  const platform::Rgb paint = platform::MakeRgb(255, 255, 48);
  // The left picture: 64 pixels across (y), 32 down (x).
  const auto snapshot = [&p] {
    platform::RasterSurface surface(64, 32);
    p.f->Paint(0, surface);
    return surface.Snapshot();
  };
  p.f->Mouse(MouseAction::Down, 4, 6, MouseButton::Left);
  p.f->Mouse(MouseAction::Move, 12, 30, MouseButton::None);
  platform::RgbImage during = snapshot();
  EXPECT_EQ(during.At(6, 4), paint);
  EXPECT_EQ(during.At(30, 12), paint);
  EXPECT_EQ(during.At(18, 4), paint);
  EXPECT_EQ(during.At(6, 9), paint);
  EXPECT_NE(during.At(18, 9), paint);
  p.f->Mouse(MouseAction::Up, 12, 30, MouseButton::Left);
  platform::RgbImage after = snapshot();
  EXPECT_EQ(after.At(30, 12), paint);
  EXPECT_EQ(after.At(6, 4), paint);
  EXPECT_NE(after.At(40, 20), paint);
  // A click takes the marks away.
  p.f->Mouse(MouseAction::Down, 2, 2, MouseButton::Left);
  p.f->Mouse(MouseAction::Up, 2, 2, MouseButton::Left);
  EXPECT_NE(snapshot().At(30, 12), paint);
}

TEST(ImageProcessorRegion, TheDumpOfTheLeftImageStaysThePicture) {
  Processor p(PgmOf("input"));
  p.Drag(5, 8, 20, 30);
  const std::vector<GraphSummary> graphs = p.f->Graphs();
  ASSERT_EQ(graphs.size(), 1u);
  ASSERT_EQ(graphs[0].rows, 64);
  for (int y = 0; y < kRows; ++y)
    for (int x = 0; x < kCols; ++x)
      ASSERT_EQ(graphs[0].values[static_cast<std::size_t>(y * 32 + x)], Expected("input", x, y));
}

}  // namespace
}  // namespace keldo
