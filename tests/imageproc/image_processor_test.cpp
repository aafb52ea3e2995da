// The image processor: its PGM reader with the grid padded to multiples of
// 32, the picture it takes from the two-dimensional form, its transform,
// its files, and compression and decompression driven through its menus.

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "form2d/graph2_form.h"
#include "imageproc/image_processor_form.h"
#include "imageproc/processor_image.h"
#include "kit/typed_forms.h"
#include "test_frame.h"

namespace keldo {
namespace {

using imageproc::ImageProcessorForm;
using imageproc::ProcessorImage;
using testing::TestFrame;

std::vector<std::uint8_t> Pgm(const std::string& first, const std::string& second, int count, int seed = 0) {
  const std::string head = "P5\n" + first + " " + second + "\n255\n";
  std::vector<std::uint8_t> out(head.begin(), head.end());
  for (int k = 0; k < count; ++k) out.push_back(static_cast<std::uint8_t>((k * 7 + seed) % 251));
  return out;
}

std::string WriteTemp(const std::string& name, const std::vector<std::uint8_t>& bytes) {
  const std::filesystem::path path = testing::UniqueTempPath(name);
  std::ofstream out(path, std::ios::binary);
  out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  return path.string();
}

TEST(ProcessorPgm, TheFirstNumberIsTheHeightAndTheSidesArePaddedByRepeatingTheEdges) {
  // 40 bytes a row, 20 rows.
  const std::vector<std::uint8_t> file = Pgm("40", "20", 800);
  const std::optional<ProcessorImage> image = imageproc::ReadProcessorPgm(file);
  ASSERT_TRUE(image);
  EXPECT_EQ(image->originalHeight, 40);
  EXPECT_EQ(image->originalWidth, 20);
  EXPECT_EQ(image->height, 64);
  EXPECT_EQ(image->width, 32);
  const std::size_t start = file.size() - 800;
  for (int x = 0; x < image->width; ++x)
    for (int y = 0; y < image->height; ++y) {
      const int row = std::min(x, 19), column = std::min(y, 39);
      ASSERT_EQ(image->At(x, y), file[start + static_cast<std::size_t>(row) * 40 + static_cast<std::size_t>(column)])
          << x << " " << y;
    }
}

TEST(ProcessorPgm, SidesAlreadyMultiplesOf32StayAnd1MBReadsAs1024) {
  std::optional<ProcessorImage> image = imageproc::ReadProcessorPgm(Pgm("64", "32", 64 * 32));
  ASSERT_TRUE(image);
  EXPECT_EQ(image->height, 64);
  EXPECT_EQ(image->width, 32);
  image = imageproc::ReadProcessorPgm(Pgm("1MB", "2", 2048));
  ASSERT_TRUE(image);
  EXPECT_EQ(image->originalHeight, 1024);
  EXPECT_EQ(image->originalWidth, 2);
  EXPECT_EQ(imageproc::PaddedSide(33), 64);
  EXPECT_EQ(imageproc::PaddedSide(32), 32);
  EXPECT_EQ(imageproc::PaddedSide(1), 32);
}

TEST(ProcessorPgm, ShortOrMalformedFilesAreRefused) {
  EXPECT_FALSE(imageproc::ReadProcessorPgm(Pgm("40", "20", 799)));
  EXPECT_FALSE(imageproc::ReadProcessorPgm(Pgm("4x", "20", 800)));
  EXPECT_FALSE(imageproc::ReadProcessorPgm(Pgm("0", "20", 800)));
  EXPECT_FALSE(imageproc::ReadProcessorPgm(Pgm("99999", "2", 800)));
  EXPECT_FALSE(imageproc::ReadProcessorPgm({}));
  EXPECT_FALSE(imageproc::ReadProcessorPgm({'P', '5'}));
  const std::string noEnd = "P5\n40 20";
  EXPECT_FALSE(imageproc::ReadProcessorPgm(std::vector<std::uint8_t>(noEnd.begin(), noEnd.end())));
}

TEST(ProcessorPgm, ASavedReconstructionReadsBack) {
  const std::optional<ProcessorImage> image = imageproc::ReadProcessorPgm(Pgm("45", "33", 45 * 33, 3));
  ASSERT_TRUE(image);
  const std::vector<std::uint8_t> saved = imageproc::ProcessorPgmBytes(*image);
  const std::string head = "P5\n45 33\n255\n";
  ASSERT_GE(saved.size(), head.size());
  EXPECT_EQ(std::string(saved.begin(), saved.begin() + static_cast<std::ptrdiff_t>(head.size())), head);
  EXPECT_EQ(saved, Pgm("45", "33", 45 * 33, 3));
  const std::optional<ProcessorImage> back = imageproc::ReadProcessorPgm(saved);
  ASSERT_TRUE(back);
  EXPECT_EQ(back->bytes, image->bytes);
}

ImageProcessorForm& NewProcessor(TestFrame& t) {
  int code = 0;
  ImageProcessorForm* f = NewFormOf<ImageProcessorForm>(t.frame, code);
  EXPECT_NE(f, nullptr);
  return *f;
}

// Get Image with a file of these bytes, answered in the file dialog.
void GetImage(TestFrame& t, ImageProcessorForm& f, const std::string& name, const std::vector<std::uint8_t>& bytes) {
  const std::string path = WriteTemp(name, bytes);
  t.platform.fileDialog.QueueAnswer(path);
  f.RunMenu("mnuGetImage");
  std::filesystem::remove(path);
}

// A smooth picture with an edge: 96 bytes a row, 64 rows.
std::vector<std::uint8_t> TestPicture() {
  const std::string head = "P5\n96 64\n255\n";
  std::vector<std::uint8_t> out(head.begin(), head.end());
  for (int x = 0; x < 64; ++x)
    for (int y = 0; y < 96; ++y) {
      const double v = 100 + 60 * std::sin(x / 9.0) * std::cos(y / 13.0) + (y > 50 ? 40 : 0);
      out.push_back(static_cast<std::uint8_t>(std::lround(v)));
    }
  return out;
}

TEST(ImageProcessor, ItOpensWithTheCompressCommandAndTheTransformItemHidden) {
  TestFrame t;
  ImageProcessorForm& f = NewProcessor(t);
  EXPECT_EQ(f.Caption(), "Image Processor  1");
  EXPECT_EQ(f.controls().Text("LabCommand"), "Compress");
  EXPECT_FALSE(f.controls()["mnuTransformImage"].visible);
  EXPECT_FALSE(f.controls()["mnuTransformImage"].enabled);
  EXPECT_EQ(f.controls()["mnuTransformImage"].text, "&Transform ");
  EXPECT_EQ(f.controls().Text("cmdBegin"), "Compute");
  EXPECT_EQ(f.controls()["cmbWavelet"].items,
            (std::vector<std::string>{"DD 5/3 Integer", "DD 2+2,2 Integer", "Daub 9/7"}));
  EXPECT_EQ(f.controls().Text("cmbWavelet"), "Daub 9/7");
  EXPECT_EQ(f.WaveletIndex(), 1);
  ASSERT_TRUE(f.controls().SetFromUser("cmbWavelet", "DD 5/3 Integer"));
  f.ControlChanged("cmbWavelet");
  EXPECT_EQ(f.WaveletIndex(), 2);
  ASSERT_TRUE(f.controls().SetFromUser("cmbWavelet", "DD 2+2,2 Integer"));
  f.ControlChanged("cmbWavelet");
  EXPECT_EQ(f.WaveletIndex(), 3);
  // Help opens the image processor's page.
  f.RunMenu("mnuHelp");
  EXPECT_TRUE(t.lines.empty());
  EXPECT_NE(t.platform.help.LastPage().find("imageproc.md"), std::string::npos) << t.platform.help.LastPage();
}

TEST(ImageProcessor, GetImageLoadsAPgmAndTheDumpShowsItRowByY) {
  TestFrame t;
  ImageProcessorForm& f = NewProcessor(t);
  GetImage(t, f, "keldo_ipr_get.pgm", Pgm("40", "20", 800));
  ASSERT_TRUE(f.HasImage());
  const std::vector<GraphSummary> graphs = f.Graphs();
  ASSERT_EQ(graphs.size(), 1u);
  const GraphSummary& left = graphs[0];
  EXPECT_EQ(left.rows, 64);  // y runs 0..63 (40 padded)
  ASSERT_EQ(left.values.size(), 64u * 32u);
  for (int y = 0; y < 64; ++y)
    for (int x = 0; x < 32; ++x)
      ASSERT_EQ(left.values[static_cast<std::size_t>(y) * 32 + x], f.Image().At(x, y)) << x << " " << y;
  bool width = false, height = false;
  for (const GraphSummary::Field& field : left.fields) {
    if (field.name == "width") width = field.numbers == std::vector<double>{20};
    if (field.name == "height") height = field.numbers == std::vector<double>{40};
  }
  EXPECT_TRUE(width);
  EXPECT_TRUE(height);
}

TEST(ImageProcessor, AFileThatIsNoPgmGivesMessage20AndKeepsThePicture) {
  TestFrame t;
  ImageProcessorForm& f = NewProcessor(t);
  const std::string good = WriteTemp("keldo_ipr_good.pgm", TestPicture());
  t.platform.fileDialog.QueueAnswer(good);
  f.RunMenu("mnuGetImage");
  const std::vector<std::uint8_t> before = f.Image().bytes;
  const std::string bad = WriteTemp("keldo_ipr_bad.pgm", Pgm("40", "20", 100));
  t.platform.fileDialog.QueueAnswer(bad);
  f.RunMenu("mnuGetImage");
  std::filesystem::remove(good);
  std::filesystem::remove(bad);
  EXPECT_EQ(t.lines, std::vector<std::string>{"message 20: Error loading file."});
  EXPECT_EQ(f.Image().bytes, before);
}

TEST(ImageProcessor, TheTransformCommandTransformsAndInvertsBack) {
  TestFrame t;
  ImageProcessorForm& f = NewProcessor(t);
  GetImage(t, f, "keldo_ipr_tr.pgm", TestPicture());
  f.ChooseCommand("Transform");
  f.controls().SetText("txtLevels", "3");
  ASSERT_TRUE(f.Click("cmdBegin"));
  ASSERT_FALSE(f.TransformPlane().v.empty());
  EXPECT_NE(f.controls()["OpDisplayTransform"].value, 0);
  ASSERT_TRUE(f.controls().SetFromUser("OpTransform(1)", "1"));
  ASSERT_TRUE(f.Click("cmdBegin"));
  EXPECT_NE(f.controls()["OpTransform(0)"].value, 0);
  ASSERT_FALSE(f.Reconstruction().Empty());
  EXPECT_EQ(f.Reconstruction().bytes, f.Image().bytes);
}

TEST(ImageProcessor, TheLeftImageCopiesToANewTwoDimensionalForm) {
  TestFrame t;
  ImageProcessorForm& f = NewProcessor(t);
  GetImage(t, f, "keldo_ipr_copy.pgm", Pgm("40", "20", 800));
  f.RunMenu("mnuCopyLeftImage");
  auto* g = FormAs<form2d::Graph2Form>(t.frame.OpenForms().back());
  ASSERT_NE(g, nullptr);
  ASSERT_EQ(g->Points(), 64);
  const float* samples = g->GraphValues(0);
  const std::size_t stride = g->RowStride();
  // The grid's row 0 is drawn at the bottom: the picture's line x is row
  // 19 - x, upright in the bottom left corner; black beyond it.
  for (int row = 0; row <= 64; ++row)
    for (int y = 0; y <= 64; ++y)
      ASSERT_EQ(samples[static_cast<std::size_t>(row) * stride + static_cast<std::size_t>(y)],
                row < 20 && y < 40 ? f.Image().At(19 - row, y) : 0)
          << row << " " << y;
}

TEST(ImageProcessor, CompressingAndDecompressingGivesTheRightImageAndTheFile) {
  for (const char* coder : {"OpEntropyCode(0)", "OpEntropyCode(1)"}) {
    TestFrame t;
    ImageProcessorForm& f = NewProcessor(t);
    GetImage(t, f, "keldo_ipr_code.pgm", TestPicture());
    ASSERT_TRUE(f.controls().SetFromUser(coder, "1"));
    f.controls().SetText("txtBitRate", "1");
    const std::string compressed =
        (std::filesystem::temp_directory_path() / (std::string("keldo_ipr_code") + coder[13] + ".aw")).string();
    t.platform.fileDialog.QueueAnswer(compressed);
    f.RunMenu("mnuCompress");
    ASSERT_TRUE(f.Click("cmdBegin"));
    ASSERT_TRUE(std::filesystem::exists(compressed)) << coder;
    EXPECT_EQ(f.controls().Text("LabCommand"), "Decompress");
    const std::string report = f.controls().Text("Report");
    EXPECT_NE(report.find("Compressed file: " + compressed), std::string::npos);
    EXPECT_NE(report.find("To decompress this file, press the GO button."), std::string::npos);
    // 1 bpp of 64 by 96 (padded to 64 by 96): 6144 bits, 768 bytes after
    // the 18 of the head, give or take the coder's last bytes.
    const auto size = static_cast<long long>(std::filesystem::file_size(compressed));
    EXPECT_NEAR(size, 18 + 768, 24) << coder;
    t.platform.fileDialog.QueueAnswer(compressed);
    ASSERT_TRUE(f.Click("cmdBegin"));
    std::filesystem::remove(compressed);
    ASSERT_FALSE(f.Reconstruction().Empty()) << coder;
    EXPECT_NE(f.controls().Text("Report").find("Image decompressed."), std::string::npos);
    // A fair picture at 1 bpp.
    double squared = 0.0;
    for (std::size_t k = 0; k < f.Image().bytes.size(); ++k) {
      const double d = double(f.Image().bytes[k]) - double(f.Reconstruction().bytes[k]);
      squared += d * d;
    }
    const double psnr = 10 * std::log10(255.0 * 255.0 / (squared / double(f.Image().bytes.size())));
    EXPECT_GT(psnr, 30.0) << coder;
    EXPECT_TRUE(t.lines.empty());
  }
}

}  // namespace
}  // namespace keldo
