// The two-dimensional form's files: .kd2 and .kb2 files written byte by
// byte by tests/data/make_form2d_files.py and loaded, saved files read back
// field by field, PGM and BMP round trips, the sample rule of pictures and
// the messages of bad files.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "form2d/graph2_form.h"
#include "imageproc/image_processor_form.h"
#include "form2d/image_files.h"
#include "kit/typed_forms.h"
#include "platform/surface.h"
#include "platform/headless/simple_images.h"
#include "form2d_driver.h"

namespace keldo::testing {
namespace {

using form2d::Graph2Form;

const std::string kData = KELDO_TEST_DATA "/form2d/";

struct TempFolder {
  std::filesystem::path path;
  TempFolder() {
    path = std::filesystem::temp_directory_path() /
           ("keldo_files2_" + std::string(::testing::UnitTest::GetInstance()->current_test_info()->name()));
    std::filesystem::create_directories(path);
  }
  ~TempFolder() { std::filesystem::remove_all(path); }
  std::string operator/(const std::string& name) const { return (path / name).string(); }
};

std::vector<std::uint8_t> Bytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

void WriteBytes(const std::string& path, const std::string& bytes) {
  std::ofstream out(path, std::ios::binary);
  out << bytes;
}

bool Reported(const TestFrame& t, const std::string& text) {
  for (const std::string& line : t.lines)
    if (line.find(text) != std::string::npos) return true;
  return false;
}

Graph2Form* Opened(TestFrame& t) { return FormAs<Graph2Form>(t.frame.OpenForms().back()); }

TEST(FormFile2D, SectionCountOneHasNoSideBoxCursorOrRemarksAndKeepsLinRegAtN) {
  TestFrame t;
  Graph2Form* f = FormAs<Graph2Form>(t.frame.OpenFormFile(FormKind::Graph2, kData + "sections1.kd2", "sections1.kd2"));
  ASSERT_NE(f, nullptr);
  EXPECT_EQ(f->Points(), 64);
  ASSERT_EQ(f->NumGraphsPlotted(), 2);
  EXPECT_EQ(f->ViewSize(), 'L');
  for (int i = 0; i <= 64; i += 9)
    for (int j = 0; j <= 64; j += 7) {
      EXPECT_FLOAT_EQ(Sample(*f, 0, i, j), static_cast<float>(i + 0.5 * j)) << i << " " << j;
      EXPECT_FLOAT_EQ(Sample(*f, 1, i, j), static_cast<float>(std::sin(0.1 * i) * j)) << i << " " << j;
    }
  EXPECT_FLOAT_EQ(f->GraphLeft(1), -2.0f);
  EXPECT_FLOAT_EQ(f->GraphStep(1), 4.0f / 64);
  EXPECT_EQ(f->Look(1).colorMethod, form2d::kColor);
  EXPECT_EQ(f->Look(1).intensity, form2d::kLog);
  EXPECT_EQ(f->Look(1).thresholdText, "0.5");
  EXPECT_EQ(f->Look(0).caption, "plane");
  EXPECT_EQ(f->SideBoxKey(), "");  // no side box
  EXPECT_EQ(f->CursorColumn(), 32);
  EXPECT_EQ(f->CursorRow(), 32);
  EXPECT_EQ(f->controls().Text("Remarks"), "");
  EXPECT_EQ(f->LinRegValue(0), 64);
  EXPECT_EQ(f->LinRegValue(1), 64);
  const auto& history = f->History();
  ASSERT_GE(history.size(), 2u);
  EXPECT_EQ(history[history.size() - 2], "x*y");
  EXPECT_EQ(history.back(), "sin(x)");
  EXPECT_TRUE(f->controls()["mnuSaveForm"].enabled);
  EXPECT_TRUE(f->controls()["mnuConvolution"].enabled);  // two graphs: the menu steps accumulated
}

TEST(FormFile2D, AllSectionsRestoreTheSideBoxCursorRemarksAndLinReg) {
  TestFrame t;
  Graph2Form* f = FormAs<Graph2Form>(t.frame.OpenFormFile(FormKind::Graph2, kData + "sections4.kd2", "sections4.kd2"));
  ASSERT_NE(f, nullptr);
  ASSERT_EQ(f->NumGraphsPlotted(), 1);
  EXPECT_FLOAT_EQ(Sample(*f, 0, 64, 3), 6403.0f);
  EXPECT_EQ(f->SideBoxKey(), "FTran");
  EXPECT_EQ(f->CursorColumn(), 10);
  EXPECT_EQ(f->CursorRow(), 20);
  EXPECT_EQ(f->controls().Text("Remarks"), "two\r\nlines");
  EXPECT_EQ(f->LinRegValue(0), 8);
  EXPECT_EQ(f->Look(0).colorMethod, form2d::kGreyPlusMinus);
  EXPECT_EQ(f->Look(0).intensity, form2d::kLinLog);
}

TEST(FormFile2D, SavedFormIsReadBackFieldByFieldAndLoadsAlike) {
  TestFrame t;
  TempFolder dir;
  Graph2Form& f = NewForm(t, 64);
  Plot(f, "x*y+1", "2");
  Plot(f, "x-y", "2");
  f.controls().SetText("Remarks", "note");
  const std::string path = dir / "saved.kd2";
  t.platform.fileDialog.QueueAnswer(path);
  f.RunMenu("mnuSaveFormAs");
  EXPECT_EQ(f.FormFileName(), path);
  const auto bytes = Bytes(path);
  // Header: kind, six floats, count, points, view, selected graph.
  ASSERT_GT(bytes.size(), 40u);
  const std::optional<form2d::Kd2Record> r = form2d::ReadKd2(bytes);
  ASSERT_TRUE(r.has_value());
  EXPECT_EQ(bytes[0], 2);
  EXPECT_EQ(bytes[1], 0);
  EXPECT_EQ(r->points, 64);
  ASSERT_EQ(r->graphs.size(), 2u);
  EXPECT_EQ(r->view, 'S');
  EXPECT_FLOAT_EQ(r->formulaLeft, -2.0f);
  EXPECT_FLOAT_EQ(r->formulaRight, 2.0f);
  EXPECT_EQ(r->fileName, path);
  EXPECT_EQ(r->sections, 4);
  EXPECT_EQ(r->remarks, "note");
  EXPECT_EQ(r->sideBoxKey, "Graph");
  ASSERT_EQ(r->linReg.size(), 2u);
  EXPECT_EQ(r->linReg[0], 64);
  // The samples are stored with columns outermost: the float after the
  // first graph's strings is sample (0, 0), the next one (1, 0).
  const std::size_t side = 65;
  EXPECT_FLOAT_EQ(r->graphs[0].samples[1 * side + 0], Sample(f, 0, 1, 0));
  // Bytes of the first samples: after the header (2 + 24 + 4 + 4 + 1 + 2),
  // the record (8 floats, 2 chars, float, int16) and two counted strings.
  const std::size_t captionLength = r->graphs[0].caption.size(), thresholdLength = r->graphs[0].thresholdText.size();
  const std::size_t first = 37 + 32 + 2 + 4 + 2 + 4 + captionLength + 4 + thresholdLength;
  float second = 0.0f;
  std::memcpy(&second, bytes.data() + first + 4, 4);
  EXPECT_FLOAT_EQ(second, Sample(f, 0, 1, 0));
  // Loaded again: the same graphs.
  Graph2Form* g = FormAs<Graph2Form>(t.frame.OpenFormFile(FormKind::Graph2, path, "saved.kd2"));
  ASSERT_NE(g, nullptr);
  ASSERT_EQ(g->NumGraphsPlotted(), 2);
  for (int i = 0; i <= 64; i += 5)
    for (int j = 0; j <= 64; j += 3) ASSERT_EQ(Sample(*g, 1, i, j), Sample(f, 1, i, j));
  EXPECT_EQ(g->controls().Text("Remarks"), "note");
}

TEST(FormFile2D, BadFilesReport73AndOpenNothing) {
  TestFrame t;
  TempFolder dir;
  const auto good = Bytes(kData + "sections4.kd2");
  const std::string truncated = dir / "short.kd2";
  WriteBytes(truncated, std::string(good.begin(), good.begin() + 3000));
  EXPECT_EQ(t.frame.OpenFormFile(FormKind::Graph2, truncated, "short.kd2"), nullptr);
  EXPECT_TRUE(Reported(t, "message 73"));
  // A side too large to hold.
  std::string huge(good.begin(), good.end());
  const std::int32_t side = 1 << 20;
  std::memcpy(huge.data() + 2 + 24 + 4, &side, 4);
  WriteBytes(dir / "huge.kd2", huge);
  EXPECT_EQ(t.frame.OpenFormFile(FormKind::Graph2, dir / "huge.kd2", "huge.kd2"), nullptr);
  EXPECT_TRUE(t.frame.OpenForms().empty());
}

// A surface that keeps the pictures a form hands it, as the form made them,
// before any scaling to the surface.
class PictureCatcher final : public platform::Surface {
 public:
  std::vector<platform::RgbImage> pictures;
  int PixelWidth() const override { return 256; }
  int PixelHeight() const override { return 256; }
  void Clear(platform::Rgb) override {}
  void SetScale(const platform::UserScale&) override {}
  void SetPenWidth(int) override {}
  void Line(double, double, double, double, platform::Rgb) override {}
  void SetPixel(double, double, platform::Rgb) override {}
  platform::Rgb GetPixel(double, double) const override { return platform::kBlack; }
  void Text(double, double, const std::string&, platform::Rgb) override {}
  void Refresh() override {}
  platform::RgbImage Snapshot() const override { return {}; }
  void DrawImage(const platform::RgbImage& image) override { pictures.push_back(image); }
};

// The picture of each of a form's picture boxes.
std::vector<platform::RgbImage> Painted(const Graph2Form& f) {
  std::vector<platform::RgbImage> out;
  for (std::size_t p = 0; p < f.Pictures().size(); ++p) {
    PictureCatcher catcher;
    f.Paint(static_cast<int>(p), catcher);
    EXPECT_EQ(catcher.pictures.size(), 1u);
    if (!catcher.pictures.empty()) out.push_back(catcher.pictures.front());
  }
  return out;
}

int NotBlack(const platform::RgbImage& picture) {
  int n = 0;
  for (const platform::Rgb p : picture.pixels) n += (p & 0xFFFFFF) != platform::kBlack;
  return n;
}

TEST(FormFile2D, NotANumberAndInfiniteFieldsLoadAndDraw) {
  // Found by fuzzing: a maximum of NaN and an infinite window came to the
  // grey levels and the window's indices as numbers no int can hold.
  TestFrame t;
  TempFolder dir;
  auto bytes = Bytes(kData + "sections4.kd2");
  // The file as written, in the large view: its graph, 100 i + j on a grid
  // of 64 in grey (+/-) and lin-log, is drawn everywhere but at sample
  // (0, 0), a 0 in the linear block, which covers at most 4 by 4 of the
  // 257 by 257 pixels.
  Graph2Form* plain = FormAs<Graph2Form>(t.frame.OpenFormFile(FormKind::Graph2, kData + "sections4.kd2", "plain"));
  ASSERT_NE(plain, nullptr);
  const std::vector<platform::RgbImage> drawn = Painted(*plain);
  ASSERT_EQ(drawn.size(), 1u);
  ASSERT_EQ(drawn[0].width, 257);
  ASSERT_EQ(drawn[0].height, 257);
  EXPECT_GE(NotBlack(drawn[0]), 257 * 257 - 16);
  const float nan = std::nanf(""), inf = INFINITY;
  std::memcpy(bytes.data() + 37 + 12, &nan, 4);       // GraphMax
  std::memcpy(bytes.data() + 37 + 16, &inf, 4);       // ViewXLeft
  std::memcpy(bytes.data() + 37 + 28, &nan, 4);       // ViewYHigh
  WriteBytes(dir / "nan.kd2", std::string(bytes.begin(), bytes.end()));
  Graph2Form* f = FormAs<Graph2Form>(t.frame.OpenFormFile(FormKind::Graph2, dir / "nan.kd2", "nan.kd2"));
  ASSERT_NE(f, nullptr);
  EXPECT_TRUE(std::isnan(f->GraphMax(0)));
  // A window from x = +infinity holds no sample: every picture is black.
  for (const platform::RgbImage& picture : Painted(*f)) EXPECT_EQ(NotBlack(picture), 0);
  f->Mouse(MouseAction::Move, 0.1, 0.1, MouseButton::None);
  // A window upside down and far off the grid: the ranges of the fill are
  // inverted and their lengths exceed an int.
  const float high = 1e30f, low = -1e30f;
  std::memcpy(bytes.data() + 37 + 12, &high, 4);  // GraphMax
  std::memcpy(bytes.data() + 37 + 24, &high, 4);  // ViewYLow
  std::memcpy(bytes.data() + 37 + 28, &low, 4);   // ViewYHigh
  WriteBytes(dir / "off.kd2", std::string(bytes.begin(), bytes.end()));
  Graph2Form* g = FormAs<Graph2Form>(t.frame.OpenFormFile(FormKind::Graph2, dir / "off.kd2", "off.kd2"));
  ASSERT_NE(g, nullptr);
  // No y lies from 1e30 up to -1e30: black again.
  for (const platform::RgbImage& picture : Painted(*g)) EXPECT_EQ(NotBlack(picture), 0);
}

TEST(FormFile2D, AFailedSaveReports36) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  Plot(f, "x");
  t.platform.fileDialog.QueueAnswer("/nonexistent-folder/x.kd2");
  f.RunMenu("mnuSaveFormAs");
  EXPECT_TRUE(Reported(t, "message 36"));
  EXPECT_EQ(f.FormFileName(), "");
}

TEST(DataFile2D, Kb2LoadsRowsFirstAndSavesTheSameBytes) {
  TestFrame t;
  TempFolder dir;
  Graph2Form& f = NewForm(t, 128);
  t.platform.fileDialog.QueueAnswer(kData + "grid64.kb2");
  f.RunMenu("mnuOpenSave(2)");
  EXPECT_EQ(t.platform.fileDialog.Requests().back().filter, "Binary data files (*.kb2)|*.kb2");
  ASSERT_EQ(f.Points(), 64);  // no graph held: the form takes the file's N
  ASSERT_EQ(f.NumGraphsPlotted(), 1);
  EXPECT_FLOAT_EQ(Sample(f, 0, 3, 5), 305.0f);
  EXPECT_FLOAT_EQ(Sample(f, 0, 64, 64), 6464.0f);
  EXPECT_FLOAT_EQ(f.GraphLeft(0), -2.0f);
  EXPECT_FLOAT_EQ(f.GraphRight(0), 2.0f);
  EXPECT_FLOAT_EQ(f.GraphStep(0), 4.0f / 64);
  EXPECT_EQ(f.Look(0).colorMethod, form2d::kColor);
  const std::string path = dir / "again.kb2";
  t.platform.fileDialog.QueueAnswer(path);
  f.RunMenu("mnuSaveGraph");
  EXPECT_EQ(Bytes(path), Bytes(kData + "grid64.kb2"));
}

TEST(DataFile2D, AGraphOfAnotherSideGoesToANewFormAndLeavesThisOne) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 128);
  Plot(f, "x");
  const float before = Sample(f, 0, 10, 10);
  ASSERT_TRUE(f.LoadFunction(kData + "grid64.kb2", form2d::kFileData));
  ASSERT_EQ(t.frame.OpenForms().size(), 2u);
  EXPECT_EQ(f.Points(), 128);
  EXPECT_EQ(f.NumGraphsPlotted(), 1);
  EXPECT_EQ(Sample(f, 0, 10, 10), before);
  Graph2Form* other = Opened(t);
  EXPECT_EQ(other->Points(), 64);
  EXPECT_EQ(other->NumGraphsPlotted(), 1);
}

TEST(Pgm2D, LinesFromTheTopBecomeRowsFromTheBottomAndSaveBackTheSameBytes) {
  TestFrame t;
  TempFolder dir;
  Graph2Form* f = FormAs<Graph2Form>(t.frame.OpenDataFile(FormKind::Graph2, kData + "lines64.pgm"));
  ASSERT_NE(f, nullptr);
  ASSERT_EQ(f->Points(), 64);
  for (int k = 0; k < 64; k += 5)
    for (int c = 0; c < 64; c += 3) ASSERT_EQ(Sample(*f, 0, 63 - k, c), static_cast<float>((7 * k + c) % 256));
  EXPECT_EQ(Sample(*f, 0, 64, 5), 0.0f);
  EXPECT_EQ(Sample(*f, 0, 5, 64), 0.0f);
  EXPECT_FLOAT_EQ(f->GraphLeft(0), -0.5f);
  EXPECT_FLOAT_EQ(f->GraphStep(0), 1.0f / 64);
  const std::string path = dir / "again.pgm";
  t.platform.fileDialog.QueueAnswer(path);
  f->RunMenu("mnuSaveImage");
  EXPECT_EQ(Bytes(path), Bytes(kData + "lines64.pgm"));
}

TEST(Pgm2D, ACommentLineIsMisreadAndReports20) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  Plot(f, "x");
  EXPECT_FALSE(f.LoadFunction(kData + "comment.pgm", form2d::kFilePgm));
  EXPECT_TRUE(Reported(t, "message 20: Error loading file"));
  EXPECT_EQ(f.NumGraphsPlotted(), 1);
  EXPECT_EQ(t.frame.OpenForms().size(), 1u);
}

TEST(Pgm2D, TheWidthText1MBStandsFor1024) {
  TestFrame t;
  TempFolder dir;
  std::string bytes = "P5\n1MB 1024\n255\n";
  for (int k = 0; k < 1024 * 1024; ++k) bytes += static_cast<char>(k % 251);
  WriteBytes(dir / "big.pgm", bytes);
  Graph2Form* f = FormAs<Graph2Form>(t.frame.OpenDataFile(FormKind::Graph2, dir / "big.pgm"));
  ASSERT_NE(f, nullptr);
  EXPECT_EQ(f->Points(), 1024);
  // Line 1 from the top, column 2: byte 1026.
  EXPECT_EQ(Sample(*f, 0, 1022, 2), static_cast<float>(1026 % 251));
}

TEST(Image2D, NegativeSamplesAreBlackAndValuesAbove255Wrap) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  Plot(f, "300*(x>0)-5*(x<0)");
  const auto bytes = f.ImageBytesOf(0);
  ASSERT_EQ(bytes.size(), 64u * 64u);
  EXPECT_EQ(bytes[10 * 64 + 60], 300 % 256);  // x > 0
  EXPECT_EQ(bytes[10 * 64 + 3], 0);           // a negative sample
}

TEST(Image2D, AZoomedGraphSavesBlackOutsideItsWindow) {
  std::vector<float> samples(65 * 65, 100.0f);
  form2d::ImageGraph v;
  v.n = 64;
  v.data = samples.data();
  v.rowLength = 65;
  v.left = -0.5f;
  v.right = 0.5f;
  v.step = 1.0f / 64;
  v.viewXLeft = 0.0f;
  v.viewXRight = 0.25f;
  v.viewYLow = -0.25f;
  v.viewYHigh = 0.0f;
  v.threshold = 0.0f;
  const auto bytes = form2d::ImageBytes(v);
  // Row r is y = r/64 - 0.5, column c is x = c/64 - 0.5; both ends inclusive.
  EXPECT_EQ(bytes[16 * 64 + 32], 100);  // (x, y) = (0, -0.25)
  EXPECT_EQ(bytes[32 * 64 + 48], 100);  // (0.25, 0)
  EXPECT_EQ(bytes[33 * 64 + 40], 0);    // y above the window
  EXPECT_EQ(bytes[20 * 64 + 31], 0);    // x left of it
  EXPECT_EQ(bytes[20 * 64 + 49], 0);    // x right of it
  // A threshold at the value itself blacks it out: |v| must be above it.
  v.threshold = 100.0f;
  EXPECT_EQ(form2d::ImageBytes(v)[16 * 64 + 32], 0);
}

TEST(Image2D, BitmapSamplesAreTheBlueBytesRowsFromTheBottom) {
  TestFrame t;
  TempFolder dir;
  Graph2Form* f = FormAs<Graph2Form>(t.frame.OpenDataFile(FormKind::Graph2, kData + "colour64.bmp"));
  ASSERT_NE(f, nullptr);
  ASSERT_EQ(f->Points(), 64);
  for (int i = 0; i < 64; i += 3)
    for (int j = 0; j < 64; j += 5) ASSERT_EQ(Sample(*f, 0, i, j), static_cast<float>((3 * j + 5 * (63 - i)) % 256));
  EXPECT_EQ(Sample(*f, 0, 64, 64), 0.0f);
  // Saved as a bitmap and read again: the same grey levels.
  const std::string path = dir / "again.bmp";
  t.platform.fileDialog.QueueAnswer(path);
  f->RunMenu("mnuSaveImage");
  Graph2Form* g = FormAs<Graph2Form>(t.frame.OpenDataFile(FormKind::Graph2, path));
  ASSERT_NE(g, nullptr);
  for (int i = 0; i < 64; i += 3)
    for (int j = 0; j < 64; j += 5) ASSERT_EQ(Sample(*g, 0, i, j), Sample(*f, 0, i, j));
}

TEST(Image2D, ASide65FillsRowsAndColumnsToNReadWithoutSkippingPadding) {
  TestFrame t;
  Graph2Form* f = FormAs<Graph2Form>(t.frame.OpenDataFile(FormKind::Graph2, kData + "side65.bmp"));
  ASSERT_NE(f, nullptr);
  ASSERT_EQ(f->Points(), 64);
  std::ifstream in(kData + "side65_samples.tsv");
  std::string line;
  for (int i = 0; i <= 64; ++i) {
    ASSERT_TRUE(std::getline(in, line));
    std::istringstream row(line);
    for (int j = 0; j <= 64; ++j) {
      int expected = 0;
      row >> expected;
      ASSERT_EQ(Sample(*f, 0, i, j), static_cast<float>(expected)) << i << " " << j;
    }
  }
}

TEST(Image2D, ANonSquarePictureGoesToAnImageProcessorAndASquareOneOfAnySideLoads) {
  TestFrame t;
  TempFolder dir;
  EXPECT_EQ(t.frame.OpenDataFile(FormKind::Graph2, kData + "wide.bmp"), nullptr);
  // No two-dimensional form holds it: a new image processor has it.
  std::vector<Form*> open = t.frame.OpenForms();
  open.erase(std::remove_if(open.begin(), open.end(), [&](Form* f) { return !t.frame.IsOpenForm(f); }), open.end());
  ASSERT_EQ(open.size(), 1u);
  auto* processor = FormAs<imageproc::ImageProcessorForm>(open.front());
  ASSERT_NE(processor, nullptr);
  ASSERT_TRUE(processor->HasImage());
  // 30 pixels across and 20 down: 20 rows of 30, each side padded to 32.
  EXPECT_EQ(processor->Image().originalWidth, 20);
  EXPECT_EQ(processor->Image().originalHeight, 30);
  EXPECT_EQ(processor->Image().width, 32);
  EXPECT_EQ(processor->Image().height, 32);
  EXPECT_TRUE(t.lines.empty());
  platform::RgbImage square(300, 300, platform::MakeRgb(9, 9, 9));
  WriteBytes(dir / "square.bmp", platform::EncodeBmp(square));
  Graph2Form* f = FormAs<Graph2Form>(t.frame.OpenDataFile(FormKind::Graph2, dir / "square.bmp"));
  ASSERT_NE(f, nullptr);
  EXPECT_EQ(f->Points(), 300);  // AdjustValue leaves 300: a side outside the menu
  for (const char* item : {"mnu64", "mnu128", "mnu256", "mnu512", "mnu1024", "mnu2048"})
    EXPECT_EQ(f->controls()[item].value, 0) << item;
  EXPECT_EQ(Sample(*f, 0, 150, 299), 9.0f);
  EXPECT_EQ(Sample(*f, 0, 150, 300), 0.0f);
  // The transforms need a power of two: they beep.
  const int beeps = t.platform.beeper.Count();
  f->RunMenu("mnuFourierTransform");
  f->Go();
  EXPECT_EQ(t.platform.beeper.Count(), beeps + 1);
  EXPECT_EQ(f->NumGraphsPlotted(), 1);
}

TEST(Image2D, TheFrameItemsOpenANewFormWithTheirDialogs) {
  TestFrame t;
  t.platform.fileDialog.QueueAnswer(kData + "lines64.pgm");
  t.frame.RunMenu("mnuOpenImageFile");
  ASSERT_EQ(t.frame.OpenForms().size(), 1u);
  const auto& request = t.platform.fileDialog.Requests().back();
  EXPECT_EQ(request.title, "Open image file");
  EXPECT_EQ(request.filter, "PGM|*.pgm|BMP|*.bmp|WC2|*wc2|DIB|*.dib|JPEG|*.jpg|PCX|*.pcx|PNG|*.png|TIFF|*.tif");
  EXPECT_EQ(Opened(t)->NumGraphsPlotted(), 1);
  t.platform.fileDialog.QueueAnswer(kData + "grid64.kb2");
  t.frame.RunMenu("mnuOpen2DDataFile");
  ASSERT_EQ(t.frame.OpenForms().size(), 2u);
  EXPECT_EQ(Opened(t)->NumGraphsPlotted(), 1);
  EXPECT_FLOAT_EQ(Sample(*Opened(t), 0, 1, 1), 101.0f);
}

// Files cut short, one of each kind a form reads itself or through the
// imaging service: the whole file minus its last byte. Each side is 64.
struct CutFile {
  std::string name;
  int type;
  const char* menu;  // the pop-up item that loads it
};

std::vector<CutFile> CutFiles(const TempFolder& dir) {
  const auto pgm = Bytes(kData + "lines64.pgm");
  const auto kb2 = Bytes(kData + "grid64.kb2");
  const std::string bmp = platform::EncodeBmp(platform::RgbImage(64, 64, platform::MakeRgb(9, 9, 9)));
  // Whole, each file holds exactly what its header announces.
  EXPECT_EQ(pgm.size(), std::string("P5\n64 64\n255\n").size() + 64u * 64u);
  EXPECT_EQ(kb2.size(), 13u + 4u * 65u * 65u);
  WriteBytes(dir / "cut.pgm", std::string(pgm.begin(), pgm.end() - 1));
  WriteBytes(dir / "cut.kb2", std::string(kb2.begin(), kb2.end() - 1));
  WriteBytes(dir / "cut.bmp", bmp.substr(0, bmp.size() - 1));
  return {{dir / "cut.pgm", form2d::kFilePgm, "mnuLoadImage"},
          {dir / "cut.kb2", form2d::kFileData, "mnuLoadGraph"},
          {dir / "cut.bmp", form2d::kFileBmp, "mnuLoadImage"}};
}

int Count(const TestFrame& t, const std::string& text) {
  int n = 0;
  for (const std::string& line : t.lines)
    if (line.find(text) != std::string::npos) ++n;
  return n;
}

TEST(Pgm2D, AFileOfOneByteLessThanItsSideIsRefused) {
  TestFrame t;
  TempFolder dir;
  const auto whole = Bytes(kData + "lines64.pgm");
  std::string cut(whole.begin(), whole.end() - 1);
  EXPECT_FALSE(form2d::ReadPgm(std::vector<std::uint8_t>(cut.begin(), cut.end())).has_value());
  // A header alone, and the header with one line of the 64.
  EXPECT_FALSE(form2d::ReadPgm(std::vector<std::uint8_t>(whole.begin(), whole.begin() + 13)).has_value());
  EXPECT_FALSE(form2d::ReadPgm(std::vector<std::uint8_t>(whole.begin(), whole.begin() + 13 + 64)).has_value());
  EXPECT_TRUE(form2d::ReadPgm(whole).has_value());
}

TEST(Files2D, AFileCutShortLeavesAFormHoldingGraphsAsItWas) {
  TestFrame t;
  TempFolder dir;
  Graph2Form& f = NewForm(t, 64);
  Plot(f, "x+2*y");
  const float before = Sample(f, 0, 40, 20);
  for (const CutFile& file : CutFiles(dir)) {
    const int reports = Count(t, "message 20: Error loading file");
    EXPECT_FALSE(f.LoadFunction(file.name, file.type)) << file.name;
    // The same through the picture's pop-up menu and its dialog.
    t.platform.fileDialog.QueueAnswer(file.name);
    ASSERT_TRUE(f.PictureMouse(0, MouseAction::Down, 0.1, 0.1, MouseButton::Right));
    f.RunMenu(file.menu);
    EXPECT_EQ(Count(t, "message 20: Error loading file"), reports + 2) << file.name;
    EXPECT_EQ(f.NumGraphsPlotted(), 1) << file.name;
    EXPECT_EQ(f.Points(), 64) << file.name;
    EXPECT_EQ(Sample(f, 0, 40, 20), before) << file.name;
    EXPECT_EQ(t.frame.OpenForms().size(), 1u) << file.name;
  }
}

TEST(Files2D, AFileCutShortOfAnotherSideOpensNoNewForm) {
  TestFrame t;
  TempFolder dir;
  Graph2Form& f = NewForm(t, 128);
  Plot(f, "x*y");
  const float before = Sample(f, 0, 100, 7);
  for (const CutFile& file : CutFiles(dir)) {
    const int reports = Count(t, "message 20: Error loading file");
    EXPECT_FALSE(f.LoadFunction(file.name, file.type)) << file.name;
    EXPECT_EQ(Count(t, "message 20: Error loading file"), reports + 1) << file.name;
    EXPECT_EQ(t.frame.OpenForms().size(), 1u) << file.name;
    EXPECT_EQ(f.Points(), 128) << file.name;
    EXPECT_EQ(f.NumGraphsPlotted(), 1) << file.name;
    EXPECT_EQ(Sample(f, 0, 100, 7), before) << file.name;
  }
}

TEST(Files2D, AFileCutShortAddsNoGraphToAnEmptyForm) {
  TestFrame t;
  TempFolder dir;
  Graph2Form& f = NewForm(t, 128);
  for (const CutFile& file : CutFiles(dir)) {
    const int reports = Count(t, "message 20: Error loading file");
    t.platform.fileDialog.QueueAnswer(file.name);
    f.RunMenu(file.type == form2d::kFileData ? "mnuOpenSave(2)" : "mnuOpenSave(1)");
    EXPECT_EQ(Count(t, "message 20: Error loading file"), reports + 1) << file.name;
    EXPECT_EQ(f.NumGraphsPlotted(), 0) << file.name;
    EXPECT_EQ(f.Points(), 128) << file.name;
    EXPECT_EQ(t.frame.OpenForms().size(), 1u) << file.name;
  }
}

TEST(Files2D, TheFrameOpensNoFormForAFileCutShort) {
  TestFrame t;
  TempFolder dir;
  for (const CutFile& file : CutFiles(dir)) {
    const int reports = Count(t, "message 20: Error loading file");
    EXPECT_EQ(t.frame.OpenDataFile(FormKind::Graph2, file.name), nullptr) << file.name;
    EXPECT_EQ(Count(t, "message 20: Error loading file"), reports + 1) << file.name;
    EXPECT_TRUE(t.frame.OpenForms().empty()) << file.name;
  }
}

}  // namespace
}  // namespace keldo::testing

namespace keldo::testing {
namespace {

// A picture of integer grey levels on 128 points, saved as .wc2 with the
// frame's coding options and opened again.
double Wc2RoundTrip(TestFrame& t, const std::array<float, 11>& codes, const std::string& path, bool& opened) {
  Graph2Form& f = NewForm(t, 128);
  Plot(f, "gri(120+60*sin(9*x)*cos(7*y)+40*(x>0.1))");
  t.frame.settings().wavCompCodes = codes;
  EXPECT_TRUE(f.SaveFunctionFile(path, 0, form2d::kFileWc2));
  Graph2Form& g = NewForm(t, 64);
  opened = g.LoadFunction(path, form2d::kFileWc2);
  Graph2Form* holder = Opened(t);
  if (!opened || holder->NumGraphsPlotted() < 1 || holder->Points() != 128) return 0.0;
  double squared = 0.0;
  for (int i = 0; i < 128; ++i)
    for (int j = 0; j < 128; ++j) {
      const double d = Sample(f, 0, i, j) - Sample(*holder, holder->NumGraphsPlotted() - 1, i, j);
      squared += d * d;
    }
  return squared / (128.0 * 128.0);
}

TEST(CompressedImage2D, AWc2FileSavesWithTheFramesOptionsAndOpensAsANewGraph) {
  TestFrame t;
  TempFolder dir;
  const std::string path = dir / "picture.wc2";
  // 5 levels, to a bit rate of 1 bpp, arithmetic with one model, ZigZag,
  // lossy, no region, Daub 9/7.
  bool opened = false;
  const double mse = Wc2RoundTrip(t, {5, 0, 1.0f, 2, 0, 0, 0, 0, 0.9f, 1, 0}, path, opened);
  for (const std::string& line : t.lines) ADD_FAILURE() << line;
  ASSERT_TRUE(opened);
  EXPECT_GT(10 * std::log10(255.0 * 255.0 / mse), 30.0);
  const std::vector<std::uint8_t> bytes = Bytes(path);
  ASSERT_GT(bytes.size(), 6u);
  EXPECT_EQ(bytes[0], 4);  // code 3, arithmetic with one model
  EXPECT_EQ(bytes[5], 1);  // the wavelet byte: Daub 9/7, no region
  // 1 bpp of 128 by 128: 2048 bytes, give or take the trailer.
  EXPECT_NEAR(static_cast<double>(bytes.size()), 2048.0, 64.0);
  EXPECT_TRUE(t.lines.empty());
}

TEST(CompressedImage2D, LosslessCodingOfAnIntegerWaveletGivesThePictureBack) {
  TestFrame t;
  TempFolder dir;
  bool opened = false;
  // DD 5/3 Integer, lossless with a target of 0, binary.
  const double mse = Wc2RoundTrip(t, {4, 0, 0.0f, 0, 0, 1, 1, 0, 0.9f, 3, 0}, dir / "exact.wc2", opened);
  for (const std::string& line : t.lines) ADD_FAILURE() << line;
  ASSERT_TRUE(opened);
  EXPECT_EQ(mse, 0.0);
}

TEST(CompressedImage2D, TheFramesDefaultsSaveAPictureInFullView) {
  TestFrame t;
  TempFolder dir;
  Graph2Form& f = NewForm(t, 64);
  Plot(f, "x*y");
  // The defaults tick the region option; a picture in full view has none.
  ASSERT_NE(t.frame.settings().wavCompCodes[7], 0.0f);
  EXPECT_TRUE(f.SaveFunctionFile(dir / "default.wc2", 0, form2d::kFileWc2));
  EXPECT_TRUE(t.lines.empty());
  EXPECT_TRUE(std::filesystem::exists(dir / "default.wc2"));
}

// The picture of Wc2RoundTrip zoomed to columns and rows 40 to 80 of its
// 128 points, saved with the region option and with `model` and `stage`.
struct RegionCase {
  std::vector<std::uint8_t> bytes;
  double insideRegion = 0.0, outside = 0.0;  // mean square errors of the opened picture
  bool written = false;
};

RegionCase SaveZoomed(TestFrame& t, const std::array<float, 11>& codes, const std::string& path) {
  RegionCase out;
  Graph2Form& f = NewForm(t, 128);
  Plot(f, "gri(120+60*sin(9*x)*cos(7*y)+40*(x>0.1))");
  f.RunMenu("mnuViewZoom");
  f.controls().SetText("TxtGraphStat", "1");
  f.controls().SetText("txtZoomCoord(0)", "40");
  f.controls().SetText("txtZoomCoord(1)", "80");
  EXPECT_TRUE(f.Go());
  const float a = f.GraphLeft(0), h = (f.GraphRight(0) - a) / 128.0f;
  const auto first = [&](float at) { return static_cast<int>(std::floor((at - a) / h)); };
  const auto last = [&](float at) { return static_cast<int>(std::ceil((at - a) / h)); };
  const int x1 = first(f.Look(0).viewXLeft), x2 = last(f.Look(0).viewXRight);
  const int y1 = first(f.Look(0).viewYLow), y2 = last(f.Look(0).viewYHigh);
  EXPECT_GT(x1, 0);
  EXPECT_LT(x2, 127);
  t.frame.settings().wavCompCodes = codes;
  f.SaveFunctionFile(path, 0, form2d::kFileWc2);
  out.written = std::filesystem::exists(path);
  if (!out.written) return out;
  out.bytes = Bytes(path);
  Graph2Form& g = NewForm(t, 64);
  if (!g.LoadFunction(path, form2d::kFileWc2)) return out;
  Graph2Form* holder = Opened(t);
  double inside = 0.0, outside = 0.0;
  int insideCount = 0;
  for (int i = 0; i < 128; ++i)
    for (int j = 0; j < 128; ++j) {
      const double d = Sample(f, 0, i, j) - Sample(*holder, holder->NumGraphsPlotted() - 1, i, j);
      const bool in = j >= x1 && j <= x2 && i >= y1 && i <= y2;
      (in ? inside : outside) += d * d;
      insideCount += in ? 1 : 0;
    }
  out.insideRegion = inside / insideCount;
  out.outside = outside / (128 * 128 - insideCount);
  return out;
}

TEST(CompressedImage2D, AZoomedViewIsARegionThatTheMixedOrderCoderSpendsBitsOn) {
  TestFrame t;
  TempFolder dir;
  // 5 levels, 0.5 bpp, arithmetic with the mixed-order model, ZigZag,
  // lossy, Daub 9/7; with the region at 0.5 of the bits and without one.
  const RegionCase region = SaveZoomed(t, {5, 0, 0.5f, 2, 1, 0, 0, 1, 0.5f, 1, 0}, dir / "region.wc2");
  const RegionCase plain = SaveZoomed(t, {5, 0, 0.5f, 2, 1, 0, 0, 0, 0.5f, 1, 0}, dir / "plain.wc2");
  for (const std::string& line : t.lines) ADD_FAILURE() << line;
  ASSERT_TRUE(region.written);
  ASSERT_TRUE(plain.written);
  ASSERT_GT(region.bytes.size(), 10u);
  // The wavelet byte: Daub 9/7 + 10 * log2 128; then RoiValue, little-endian:
  // Int(0.45 * 8192 * (1 - 0.5)) = 1843.
  EXPECT_EQ(region.bytes[5], 71);
  EXPECT_EQ(region.bytes[6] | region.bytes[7] << 8 | region.bytes[8] << 16 | region.bytes[9] << 24, 1843);
  EXPECT_EQ(plain.bytes[5], 1);
  EXPECT_LT(region.insideRegion, plain.insideRegion);
  EXPECT_GT(region.outside, plain.outside);
}

TEST(CompressedImage2D, ARegionWithAnyOtherCoderWritesNothing) {
  TestFrame t;
  TempFolder dir;
  // Arithmetic with the 0-order model, and binary: no region member.
  EXPECT_FALSE(SaveZoomed(t, {5, 0, 0.5f, 2, 0, 0, 0, 1, 0.5f, 1, 0}, dir / "order0.wc2").written);
  EXPECT_FALSE(SaveZoomed(t, {5, 0, 0.5f, 0, 0, 0, 0, 1, 0.5f, 1, 0}, dir / "binary.wc2").written);
  // A distortion target excludes a region too.
  EXPECT_FALSE(SaveZoomed(t, {5, 1, 30.0f, 2, 1, 0, 0, 1, 0.5f, 1, 0}, dir / "psnr.wc2").written);
  EXPECT_TRUE(t.lines.empty());
}

TEST(CompressedImage2D, ALosslessRegionComesBackExactInsideTheRegion) {
  TestFrame t;
  TempFolder dir;
  // DD 5/3 Integer, lossless with a target of 0, arithmetic mixed orders,
  // the region at 0.9 of the bits.
  const RegionCase region = SaveZoomed(t, {4, 0, 0.0f, 2, 1, 0, 1, 1, 0.9f, 3, 0}, dir / "exact.wc2");
  for (const std::string& line : t.lines) ADD_FAILURE() << line;
  ASSERT_TRUE(region.written);
  EXPECT_EQ(region.bytes[5], 73);
  EXPECT_EQ(region.insideRegion, 0.0);
  EXPECT_GT(region.outside, 0.0);
}

TEST(CompressedImage2D, AFileThatDoesNotDecodeGivesMessage85) {
  TestFrame t;
  TempFolder dir;
  const std::string path = dir / "bad.wc2";
  WriteBytes(path, "nothing to decode here");
  Graph2Form& g = NewForm(t, 64);
  EXPECT_FALSE(g.LoadFunction(path, form2d::kFileWc2));
  EXPECT_TRUE(Reported(t, "message 85"));
  EXPECT_EQ(g.NumGraphsPlotted(), 0);
}

}  // namespace
}  // namespace keldo::testing
