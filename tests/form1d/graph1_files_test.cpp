// The files of the one-dimensional form: form files written and read byte
// by byte, the data files, the formula files and the formula history.

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "form1d/graph1_form.h"
#include "platform/headless/raster_surface.h"
#include "graph1_test_util.h"

namespace keldo::testing {
namespace {

const std::string kData = KELDO_TEST_DATA "/form1d/";

// A folder of its own for each test that writes.
struct TempFolder {
  std::filesystem::path path;
  TempFolder() {
    path = std::filesystem::temp_directory_path() /
           ("keldo_files_" + std::string(::testing::UnitTest::GetInstance()->current_test_info()->name()));
    std::filesystem::create_directories(path);
  }
  ~TempFolder() { std::filesystem::remove_all(path); }
  std::string operator/(const std::string& name) const { return (path / name).string(); }
};

std::vector<unsigned char> Bytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// Reads the little-endian fields of a file the way the table lists them.
struct FieldReader {
  const std::vector<unsigned char>& b;
  std::size_t pos = 0;
  template <typename T>
  T Get() {
    T v{};
    EXPECT_LE(pos + sizeof(T), b.size());
    if (pos + sizeof(T) <= b.size()) std::memcpy(&v, b.data() + pos, sizeof(T));
    pos += sizeof(T);
    return v;
  }
  std::string Chars(std::size_t n) {
    std::string s;
    if (pos + n <= b.size()) s.assign(b.begin() + static_cast<long>(pos), b.begin() + static_cast<long>(pos + n));
    pos += n;
    return s;
  }
  std::string Counted() { return Chars(static_cast<std::size_t>(Get<std::int32_t>())); }
};

Graph1Form* Open(TestFrame& t, const std::string& path) {
  return FormAs<Graph1Form>(t.frame.OpenFormFile(FormKind::Graph1, path, "t.kd1"));
}

TEST(FormFile, WrittenFieldByFieldAsTheTableSays) {
  TestFrame t;
  TempFolder dir;
  auto& f = NewForm(t);
  Plot(f, "X");
  Plot(f, "2", "1");
  f.controls().SetText("GraphCaption", "My caption");
  f.SetRemarks("Two\r\nlines");
  f.RunMenu("mnuDisplayStyle");
  f.controls().SetFromUser("OpDispStyle(1)", "1");
  f.controls().SetFromUser("OpDispStyle(3)", "1");
  f.controls().SetFromUser("OpDispStyle(5)", "1");
  f.Go();
  f.RunMenu("mnuCalculator");
  const std::string path = dir / "form.kd1";
  t.platform.fileDialog.QueueAnswer(path);
  f.SaveTheForm(0);
  ASSERT_TRUE(t.lines.empty()) << t.lines.front();

  const auto bytes = Bytes(path);
  FieldReader r{bytes};
  EXPECT_EQ(r.Get<std::int16_t>(), 1);
  const auto w = f.Window();
  for (double v : w) EXPECT_EQ(r.Get<double>(), v);
  EXPECT_EQ(r.Get<double>(), -1.0);  // the interval of the last plot
  EXPECT_EQ(r.Get<double>(), 1.0);
  EXPECT_EQ(r.Get<std::int32_t>(), 2);
  EXPECT_EQ(r.Get<std::int32_t>(), 64);
  for (int g = 0; g < 2; ++g) {
    const double b = g == 0 ? 0.5 : 1.0;
    EXPECT_EQ(r.Get<double>(), -b);
    EXPECT_EQ(r.Get<double>(), b);
    EXPECT_EQ(r.Get<double>(), 2 * b / 64);
    for (int i = 0; i <= 64; ++i) EXPECT_EQ(r.Get<double>(), g == 0 ? -0.5 + i / 64.0 : 2.0);
  }
  EXPECT_EQ(r.Counted(), path);
  EXPECT_EQ(r.Get<std::int32_t>(), 5);
  EXPECT_EQ(r.Get<std::int32_t>(), 2);
  EXPECT_EQ(r.Counted(), "X");
  EXPECT_EQ(r.Counted(), "2");
  EXPECT_EQ(r.Counted(), "Calc");
  EXPECT_EQ(r.Chars(1), "N");
  EXPECT_EQ(r.Chars(1), "W");
  EXPECT_EQ(r.Get<std::int32_t>(), 32);
  EXPECT_EQ(r.Counted(), "My caption");
  EXPECT_EQ(r.Counted(), "Two\r\nlines");
  EXPECT_EQ(r.Chars(1), "X");
  EXPECT_EQ(r.Counted(), "(A), Medium, top, left");
  for (int k = 0; k < 3; ++k) EXPECT_EQ(r.Get<std::int16_t>(), 1);
  EXPECT_EQ(r.Chars(1), "Y");
  EXPECT_EQ(r.pos, bytes.size());
  EXPECT_EQ(f.FormFileName(), path);
  EXPECT_TRUE(f.controls()["mnuOpenSave(4)"].enabled);
}

TEST(FormFile, RoundTripKeepsEveryGroup) {
  TestFrame t;
  TempFolder dir;
  auto& f = NewForm(t, 128);
  Plot(f, "sin(2*pi*x)");
  f.controls().SetText("GraphCaption", "Caption");
  f.controls().SetFromUser("MonoOrColor(1)", "1");
  const std::string path = dir / "round.kd1";
  ASSERT_TRUE(f.SaveFormTo(path));
  Graph1Form* g = Open(t, path);
  ASSERT_NE(g, nullptr);
  EXPECT_EQ(g->Points(), 128);
  EXPECT_EQ(g->Window(), f.Window());
  ASSERT_EQ(g->GraphCount(), 1);
  EXPECT_EQ(g->Graphs()[0].values, f.Graphs()[0].values);
  EXPECT_EQ(g->Graphs()[0].peak, f.Graphs()[0].peak);
  EXPECT_EQ(g->controls().Text("GraphCaption"), "Caption");
  EXPECT_EQ(g->controls()["MonoOrColor(1)"].value, 1);
  EXPECT_EQ(g->History(), std::vector<std::string>{"sin(2*pi*x)"});
  // The side box comes back: the Graphing box with its Plot button.
  EXPECT_EQ(g->SideBoxKey(), "Graph");
  EXPECT_TRUE(g->controls()["GoButton(0)"].enabled);
  EXPECT_EQ(g->Caption(), "t.kd1");
  // Writing the loaded form again gives the same bytes but its own name.
  const std::string again = dir / "again.kd1";
  ASSERT_TRUE(g->SaveFormTo(again));
  auto a = Bytes(path), b = Bytes(again);
  EXPECT_EQ(a.size() + (again.size() - path.size()), b.size());
}

// Files made by tests/data/make_form1d_files.py, one for each version.
class FormFileVersion : public ::testing::TestWithParam<int> {};

TEST_P(FormFileVersion, LoadsTheGroupsItsVersionHas) {
  const int version = GetParam();
  TestFrame t;
  Graph1Form* f = Open(t, kData + "version" + std::to_string(version) + ".kd1");
  ASSERT_NE(f, nullptr) << (t.lines.empty() ? "" : t.lines.front());
  EXPECT_TRUE(t.lines.empty());
  EXPECT_EQ(f->Points(), 64);
  EXPECT_EQ(f->Window(), (std::array<double, 4>{-1.0, 1.5, -2.0, 3.0}));
  ASSERT_EQ(f->GraphCount(), 2);
  const auto graphs = f->Graphs();
  EXPECT_EQ(graphs[0].a, -0.5);
  EXPECT_EQ(graphs[1].b, 2.0);
  EXPECT_NEAR(graphs[0].values[16], -1.0, 1e-15);  // x = -0.25
  EXPECT_EQ(graphs[1].values[64], 2.0);
  EXPECT_EQ(f->controls().Text("XLeft"), "-1");
  EXPECT_EQ(f->controls().Text("YRight"), "3");
  EXPECT_EQ(f->controls().Text("EndRValue"), "2");
  // Menus follow the count: two graphs enable the one-graph commands.
  EXPECT_TRUE(f->controls()["mnuClip"].enabled);
  EXPECT_TRUE(f->controls()["mnuOpenSave(3)"].enabled);
  EXPECT_EQ(f->History().size(), version > 0 ? 2u : 0u);
  EXPECT_EQ(f->SideBoxKey(), version > 1 ? "Calc" : "");
  EXPECT_EQ(f->controls()["PicSideBox(6)"].visible, version > 1);
  EXPECT_EQ(f->Style().dots, version <= 2);
  EXPECT_EQ(f->Style().background, version > 2 ? 'W' : 'B');
  EXPECT_EQ(f->TracePosition(), version > 2 ? 7 : 32);
  EXPECT_EQ(f->controls().Text("GraphCaption"), version > 2 ? "Caption" : "");
  EXPECT_EQ(f->controls().Text("Remarks(0)"), version > 2 ? "Remarks\r\nline 2" : "");
  EXPECT_EQ(f->Style().grid, version > 3 ? 'X' : 'G');
  EXPECT_EQ(f->controls()["OpDispStyle(1)"].value, version > 3 ? 1 : 0);
  EXPECT_EQ(f->controls().Text("PrinterSpecs"), version > 4 ? "(B), Medium, top, right" : "(A), Medium, top, left");
  EXPECT_EQ(f->controls()["chkPrLab(1)"].value, version > 4 ? 0 : 1);
  EXPECT_EQ(f->controls()["MonoOrColor(1)"].value, version > 4 ? 1 : 0);
}

INSTANTIATE_TEST_SUITE_P(AllVersions, FormFileVersion, ::testing::Range(0, 6));

TEST(FormFile, ZeroGraphsLoadToAnEmptyFormWithTheSavedInterval) {
  TestFrame t;
  Graph1Form* f = Open(t, kData + "empty.kd1");
  ASSERT_NE(f, nullptr);
  EXPECT_EQ(f->GraphCount(), 0);
  EXPECT_EQ(f->Points(), 128);
  EXPECT_FALSE(f->controls()["mnuClip"].enabled);
  // The saved interval [0, 2] serves the next plot's step.
  EXPECT_EQ(f->Window(), (std::array<double, 4>{-1.0, 1.5, -2.0, 3.0}));
}

TEST(FormFile, MalformedFilesReport73AndLeaveNoForm) {
  for (const char* name : {"truncated.kd1", "truncated_graph.kd1", "bad_points.kd1", "huge_count.kd1",
                           "nonsense.kd1", "zero.kd1", "missing.kd1"}) {
    TestFrame t;
    EXPECT_EQ(Open(t, kData + name), nullptr) << name;
    EXPECT_EQ(t.lines, std::vector<std::string>{"message 73: Error loading form."}) << name;
    EXPECT_TRUE(t.frame.OpenForms().empty()) << name;
  }
}

TEST(FormFile, AWindowNoSurfaceCanShowLoadsAndDrawsAnEmptyPlot) {
  TestFrame t;
  TempFolder dir;
  auto bytes = Bytes(kData + "version5.kd1");
  const double nan = std::nan("");
  std::memcpy(bytes.data() + 2, &nan, sizeof nan);  // window left
  const std::string path = dir / "nan.kd1";
  std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()),
                                              static_cast<std::streamsize>(bytes.size()));
  Graph1Form* f = Open(t, path);
  ASSERT_NE(f, nullptr);
  platform::RasterSurface s(64, 48);
  f->Paint(s);
  for (platform::Rgb p : s.Snapshot().pixels) EXPECT_EQ(p, platform::kWhite);  // the white background
  // A proper window set afterwards draws again.
  f->RunMenu("mnuDisplayStyle");
  f->controls().SetText("txtXinterval", "-1,1");
  f->Go();
  f->Paint(s);
  int coloured = 0;
  for (platform::Rgb p : s.Snapshot().pixels) coloured += p != platform::kWhite;
  EXPECT_GT(coloured, 50);
}

TEST(FormFile, SaveToAnUnwritablePlaceReports36) {
  TestFrame t;
  auto& f = NewForm(t);
  Plot(f, "X");
  t.platform.fileDialog.QueueAnswer("/nonexistent-folder/x.kd1");
  f.SaveTheForm(0);
  EXPECT_EQ(t.lines, std::vector<std::string>{"message 36: Error saving form."});
  EXPECT_EQ(f.FormFileName(), "");
}

TEST(FormFile, CancelledDialogEndsSilently) {
  TestFrame t;
  auto& f = NewForm(t);
  t.platform.fileDialog.QueueAnswer(std::nullopt);
  f.SaveTheForm(0);
  EXPECT_TRUE(t.lines.empty());
  const auto& request = t.platform.fileDialog.Requests().back();
  EXPECT_EQ(request.filter, "(*.kd1)|*.kd1");
  EXPECT_EQ(request.defaultExtension, ".kd1");
  EXPECT_EQ(request.flags, 4098);
}

// ----------------------------------------------------------- data files

TEST(DataFile, Kb1IntoAnEmptyFormChangesItsPoints) {
  TestFrame t;
  auto& f = NewForm(t, 64);
  ASSERT_TRUE(f.LoadFunction(kData + "sine128.kb1", "sine128.kb1", 1, 1));
  EXPECT_EQ(f.Points(), 128);
  ASSERT_EQ(f.GraphCount(), 1);
  const auto g = f.Graphs()[0];
  EXPECT_EQ(g.a, -1.0);
  EXPECT_EQ(g.h, 2.0 / 128);
  for (int i = 0; i <= 128; ++i) EXPECT_EQ(g.values[static_cast<std::size_t>(i)], std::sin(2 * M_PI * (-1.0 + i * (2.0 / 128))));
  EXPECT_EQ(f.controls()["IntervalType1"].value, 1);
  EXPECT_EQ(f.Window()[1], 1.0);  // fitted
  EXPECT_EQ(t.frame.OpenForms().size(), 1u);
}

TEST(DataFile, Kb1OfAnotherNOpensInANewFormWhenThisOneHoldsGraphs) {
  TestFrame t;
  auto& f = NewForm(t, 64);
  Plot(f, "X");
  ASSERT_TRUE(f.LoadFunction(kData + "sine128.kb1", "sine128.kb1", 1, 1));
  EXPECT_EQ(f.GraphCount(), 1);
  EXPECT_EQ(f.Points(), 64);
  const auto forms = t.frame.OpenForms();
  ASSERT_EQ(forms.size(), 2u);
  EXPECT_EQ(forms[1]->Points(), 128);
  EXPECT_EQ(forms[1]->Graphs().size(), 1u);
  EXPECT_EQ(forms[1]->controls()["PicSideBox(0)"].visible, false);
}

TEST(DataFile, KdtComputesTheStep) {
  TestFrame t;
  auto& f = NewForm(t, 1024);
  ASSERT_TRUE(f.LoadFunction(kData + "ramp64.kdt", "ramp64.kdt", 1, 2));
  EXPECT_EQ(f.Points(), 64);
  const auto g = f.Graphs()[0];
  EXPECT_EQ(g.h, 4.0 / 64);
  EXPECT_EQ(g.values[64], 4.0);
  EXPECT_EQ(f.controls()["IntervalType2"].value, 1);  // a = 0
}

TEST(DataFile, ANameOfAnotherTypeAndShortFilesReport20AndChangeNothing) {
  TestFrame t;
  auto& f = NewForm(t);
  Plot(f, "X");
  TempFolder dir;
  const std::string other = dir / "sine.dat";
  std::filesystem::copy_file(kData + "sine128.kb1", other);
  t.platform.fileDialog.QueueAnswer(other);
  f.LoadTheGraph(1);
  t.platform.fileDialog.QueueAnswer(kData + "short.kb1");
  f.LoadTheGraph(1);
  EXPECT_EQ(t.lines, (std::vector<std::string>{"message 20: Error loading file.", "message 20: Error loading file."}));
  EXPECT_EQ(f.GraphCount(), 1);
  EXPECT_EQ(t.frame.OpenForms().size(), 1u);
  const auto& request = t.platform.fileDialog.Requests().back();
  EXPECT_EQ(request.filter, "KELDO data file (*.kb1)|*.kb1|VRN data file (*.kdt)|*.kdt");
  EXPECT_EQ(request.flags, 4096);
}

TEST(DataFile, SaveGraphWritesKb1ThatPythonLayoutReads) {
  TestFrame t;
  TempFolder dir;
  auto& f = NewForm(t);
  Plot(f, "X");
  Plot(f, "3*X", "1");
  f.RunMenu("mnuOpenSave", 5);
  EXPECT_EQ(f.controls().Text("AnalysisLabel"), "Save graph");
  f.controls().SetText("TxtAnGr1", "2");
  const std::string path = dir / "g.kb1";
  t.platform.fileDialog.QueueAnswer(path);
  f.Go();
  const auto bytes = Bytes(path);
  FieldReader r{bytes};
  EXPECT_EQ(r.Get<std::int32_t>(), 64);
  EXPECT_EQ(r.Get<double>(), -1.0);
  EXPECT_EQ(r.Get<double>(), 1.0);
  EXPECT_EQ(r.Get<double>(), 2.0 / 64);
  for (int i = 0; i <= 64; ++i) EXPECT_EQ(r.Get<double>(), 3 * (-1.0 + i * (2.0 / 64)));
  EXPECT_EQ(r.pos, bytes.size());
  // A graph number above the count reports 1 after the dialog.
  f.controls().SetText("TxtAnGr1", "3");
  t.platform.fileDialog.QueueAnswer(dir / "h.kb1");
  f.Go();
  EXPECT_EQ(t.lines, std::vector<std::string>{"message 1: Insufficient number of graphs."});
  EXPECT_FALSE(std::filesystem::exists(dir / "h.kb1"));
}

TEST(DataFile, OpenFromTheFrameLeavesNoFormOnFailure) {
  TestFrame t;
  EXPECT_NE(t.frame.OpenDataFile(FormKind::Graph1, kData + "sine128.kb1"), nullptr);
  EXPECT_EQ(t.frame.OpenDataFile(FormKind::Graph1, kData + "short.kb1"), nullptr);
  EXPECT_EQ(t.frame.OpenForms().size(), 1u);
  EXPECT_EQ(t.lines, std::vector<std::string>{"message 20: Error loading file."});
}

TEST(DataFile, EmptyAndNonsenseFilesOfEitherKindReport20) {
  TestFrame t;
  TempFolder dir;
  auto& f = NewForm(t);
  for (const char* name : {"empty.kb1", "empty.kdt", "nonsense.kb1", "nonsense.kdt"}) {
    std::ofstream(dir / name, std::ios::binary) << (std::string(name).rfind("nonsense", 0) == 0 ? "nonsense bytes" : "");
    EXPECT_FALSE(f.LoadDataFile(dir / name, name)) << name;
  }
  EXPECT_EQ(t.lines.size(), 4u);
  for (const std::string& line : t.lines) EXPECT_EQ(line, "message 20: Error loading file.");
  EXPECT_EQ(f.GraphCount(), 0);
  EXPECT_EQ(f.Points(), 64);
}

TEST(DataFile, FrameMenuOpensADataFileInANewForm) {
  TestFrame t;
  t.platform.fileDialog.QueueAnswer(kData + "ramp64.kdt");
  EXPECT_TRUE(t.frame.RunMenu("mnuOpen1DDataFile"));
  ASSERT_EQ(t.frame.OpenForms().size(), 1u);
  EXPECT_EQ(t.frame.OpenForms()[0]->Points(), 64);
  EXPECT_EQ(t.frame.OpenForms()[0]->Graphs().size(), 1u);
  EXPECT_EQ(t.frame.settings().dialogFolders[2] + "/", kData);
}

TEST(FormFile, OpenFormFromAFormPassesTheQuantizationParameters) {
  TestFrame t;
  auto& f = NewForm(t);
  f.SetQuantParams({"a|", "b|", "c|"});
  t.platform.fileDialog.QueueAnswer(kData + "version5.kd1");
  f.RunMenu("mnuOpenSave", 0);
  ASSERT_EQ(t.frame.OpenForms().size(), 2u);
  auto* g = FormAs<Graph1Form>(t.frame.OpenForms()[1]);
  ASSERT_NE(g, nullptr);
  EXPECT_EQ(g->GraphCount(), 2);
  EXPECT_EQ(g->QuantParams()[1], "b|");
  EXPECT_EQ(g->Caption(), "version5.kd1");
}

// ------------------------------------------------------------- formulas

TEST(FormulaList, PlotsFillTheHistoryAndPreviousNextWalkIt) {
  TestFrame t;
  auto& f = NewForm(t);
  Plot(f, "X");
  Plot(f, "X ");  // the same without spaces: not a new entry
  Plot(f, "2*X");
  Plot(f, "3*X");
  EXPECT_EQ(f.History(), (std::vector<std::string>{"X", "2*X", "3*X"}));
  EXPECT_EQ(t.frame.settings().formulas1d.maxFormNum, 3);
  f.Click("cmdFormula(0)");
  EXPECT_EQ(f.controls().Text("Formula"), "2*X");
  f.Click("cmdFormula(0)");
  EXPECT_EQ(f.controls().Text("Formula"), "X");
  f.Click("cmdFormula(0)");  // stops at entry 1
  EXPECT_EQ(f.controls().Text("Formula"), "X");
  f.Click("cmdFormula(1)");
  f.Click("cmdFormula(1)");
  EXPECT_EQ(f.controls().Text("Formula"), "3*X");
  f.Click("cmdFormula(1)");  // past the end: empty
  EXPECT_EQ(f.controls().Text("Formula"), "");
  // A new form shares the list through the frame.
  auto& g = NewForm(t);
  g.RunMenu("mnuPlotGraph");
  g.Click("cmdFormula(0)");
  EXPECT_EQ(g.controls().Text("Formula"), "2*X");
}

TEST(FormulaList, FormulaFilesRoundTripWithALineEnd) {
  TestFrame t;
  TempFolder dir;
  auto& f = NewForm(t);
  f.RunMenu("mnuPlotGraph");
  f.controls().SetText("Formula", "sin(x)+\xC2\xB2");  // a typed superscript two
  const std::string path = dir / "f.uf1";
  t.platform.fileDialog.QueueAnswer(path);
  f.Click("cmdFormula(3)");
  const auto bytes = Bytes(path);
  EXPECT_EQ(std::string(bytes.begin(), bytes.end()), "sin(x)+\xB2\r\n");
  EXPECT_EQ(t.platform.fileDialog.Requests().back().filter, "Formula files (*.uf1)|*.uf1");
  f.controls().SetText("Formula", "");
  t.platform.fileDialog.QueueAnswer(path);
  f.Click("cmdFormula(2)");
  EXPECT_EQ(f.controls().Text("Formula"), "sin(x)+\xC2\xB2\r\n");
  EXPECT_EQ(t.frame.settings().dialogFolders[6], dir.path.string());
}

}  // namespace
}  // namespace keldo::testing
