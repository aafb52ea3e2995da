// The two-dimensional form's measures, resampling and graph clipboard,
// driven through their side boxes and pop-up items. The measures of two
// graphs written by tests/data/make_measures2d.py are checked against the
// numpy values that script stored beside them.

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <map>
#include <sstream>
#include <string>

#include "form1d/graph1_form.h"
#include "form2d/graph2_form.h"
#include "form2d_driver.h"
#include "kit/focus.h"
#include "kit/quantization_box.h"
#include "kit/typed_forms.h"

namespace keldo {
namespace {

using form2d::Graph2Form;
using testing::NewForm;
using testing::Plot;
using testing::Sample;
using testing::TestFrame;

const std::string kData = KELDO_TEST_DATA "/";

std::map<std::string, double> Expected() {
  std::map<std::string, double> out;
  std::ifstream in(kData + "measures2d.tsv");
  std::string line;
  while (std::getline(in, line)) {
    if (line.empty() || line[0] == '#') continue;
    std::istringstream fields(line);
    std::string tag, name;
    double value = 0.0;
    fields >> tag >> name >> value;
    out[tag + "." + name] = value;
  }
  return out;
}

// The number after the label line of a result text.
double ResultValue(const std::string& text) {
  const auto end = text.find("\r\n");
  EXPECT_NE(end, std::string::npos) << text;
  return end == std::string::npos ? NAN : std::stod(text.substr(end + 2));
}

std::string Label(const std::string& text) { return text.substr(0, text.find("\r\n")); }

// A form holding f (graph 1) and g (graph 2).
Graph2Form& MeasureForm(TestFrame& t) {
  Graph2Form& f = NewForm(t, 64);
  EXPECT_TRUE(f.LoadFunction(kData + "form2d/measure_f64.kb2", form2d::kFileData));
  EXPECT_TRUE(f.LoadFunction(kData + "form2d/measure_g64.kb2", form2d::kFileData));
  EXPECT_EQ(f.NumGraphsPlotted(), 2);
  return f;
}

void ZoomBoth(Graph2Form& f) {
  for (const char* graph : {"1", "2"}) {
    f.RunMenu("mnuViewZoom");
    f.controls().SetText("TxtGraphStat", graph);
    f.controls().SetText("txtZoomCoord(0)", "20");
    f.controls().SetText("txtZoomCoord(1)", "40");
    ASSERT_TRUE(f.Go());
  }
  ASSERT_FLOAT_EQ(f.Look(0).viewXLeft, -1.75f);
  ASSERT_FLOAT_EQ(f.Look(0).viewYHigh, 1.5f);
}

struct Case {
  const char* menu;
  const char* option;
  const char* power;
  const char* key;
};

void CheckMeasures(Graph2Form& f, const std::string& tag) {
  const auto expected = Expected();
  const Case cases[] = {
      {"mnuNorm", "OptSupNorm", "2", "sup"},
      {"mnuNorm", "OpVarNorm", "2", "var"},
      {"mnuNorm", "OptPowerNorm", "2", "power2"},
      {"mnuNorm", "OptPowerNorm", "3", "power3"},
      {"mnuNormDifference", "OptSupNorm", "2", "diffsup"},
      {"mnuNormDifference", "OpVarNorm", "2", "diffvar"},
      {"mnuNormDifference", "OptPowerNorm", "2", "diffpower2"},
      {"mnuIntegral", nullptr, "2", "integral"},
      {"mnuScalarProduct", nullptr, "2", "scalar"},
  };
  for (const Case& c : cases) {
    f.RunMenu(c.menu);
    f.controls().SetText("TxtAnGr1", "1");
    f.controls().SetText("TxtAnGr2", "2");
    if (c.option) f.controls().SetFromUser(c.option, "1");
    f.controls().SetText("NormPower", c.power);
    ASSERT_TRUE(f.Go());
    const double want = expected.at(tag + "." + c.key);
    EXPECT_NEAR(ResultValue(f.controls().Text("AnalysisText")), want, 1e-9 * std::fabs(want))
        << tag << " " << c.key << ": " << f.controls().Text("AnalysisText");
  }
  // Normalized, relative and SNR.
  f.RunMenu("mnuNorm");
  f.controls().SetFromUser("OptPowerNorm", "1");
  f.controls().SetText("NormPower", "2");
  f.controls().SetFromUser("ChkNormalize", "1");
  ASSERT_TRUE(f.Go());
  EXPECT_EQ(Label(f.controls().Text("AnalysisText")), "Normalized 2-Norm");
  EXPECT_NEAR(ResultValue(f.controls().Text("AnalysisText")), expected.at(tag + ".normalized2"), 1e-9);
  f.controls().SetFromUser("ChkNormalize", "0");
  f.RunMenu("mnuNormDifference");
  f.controls().SetFromUser("RelNorm", "1");
  ASSERT_TRUE(f.Go());
  EXPECT_EQ(Label(f.controls().Text("AnalysisText")), "Relative 2-Norm difference");
  EXPECT_NEAR(ResultValue(f.controls().Text("AnalysisText")), expected.at(tag + ".relpower2"), 1e-9);
  f.controls().SetFromUser("AbsNorm", "1");
  f.controls().SetFromUser("OpSNR", "1");
  ASSERT_TRUE(f.Go());
  EXPECT_EQ(Label(f.controls().Text("AnalysisText")), "SNR");
  EXPECT_NEAR(ResultValue(f.controls().Text("AnalysisText")), expected.at(tag + ".snr"), 1e-9);
  f.controls().SetFromUser("OptPowerNorm", "1");
  // Statistics.
  f.RunMenu("mnuStatistics");
  EXPECT_EQ(f.controls().Text("Label(16)"), "Statistics");
  EXPECT_EQ(f.controls().Text("GoButton(11)"), "Compute");
  f.controls().SetText("TxtGraphStat", "1");
  ASSERT_TRUE(f.Go());
  std::istringstream lines(f.controls().Text("txtStats"));
  const std::pair<const char*, const char*> rows[] = {{"Maximum = ", "max"},     {"Minimum = ", "min"},
                                                      {"Mean = ", "mean"},       {"Variance = ", "variance"},
                                                      {"Std. Dev. = ", "stddev"}, {"Energy = ", "energy"},
                                                      {"Samples used = ", "count"}, {"Theoretical Dim = ", "dim"}};
  for (const auto& [label, key] : rows) {
    std::string line;
    ASSERT_TRUE(std::getline(lines, line)) << label;
    ASSERT_EQ(line.rfind(label, 0), 0u) << line;
    const double want = expected.at(tag + "." + key);
    EXPECT_NEAR(std::stod(line.substr(std::string(label).size())), want, 1e-9 * std::max(1.0, std::fabs(want)))
        << tag << " " << key;
  }
}

TEST(Measures2D, OverTheWholeSquareTheyAreNumpysValues) {
  TestFrame t;
  Graph2Form& f = MeasureForm(t);
  CheckMeasures(f, "whole");
}

TEST(Measures2D, AZoomShrinksThemToTheViewWindow) {
  TestFrame t;
  Graph2Form& f = MeasureForm(t);
  ZoomBoth(f);
  CheckMeasures(f, "zoom");
}

TEST(Measures2D, BadGraphNumbersAndDifferingDomainsAreReported) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  Plot(f, "x*y");
  f.RunMenu("mnuNorm");
  f.controls().SetText("TxtAnGr1", "2");
  ASSERT_TRUE(f.Go());
  EXPECT_EQ(t.lines.back(), "message 1: Insufficient number of graphs.");
  f.controls().SetText("TxtAnGr1", "0");
  ASSERT_TRUE(f.Go());
  EXPECT_EQ(t.lines.back(), "message 3: Improper graph specification.");
  Plot(f, "0", "1");
  f.RunMenu("mnuNormDifference");
  f.controls().SetText("TxtAnGr1", "1");
  f.controls().SetText("TxtAnGr2", "2");
  ASSERT_TRUE(f.Go());
  EXPECT_EQ(t.lines.back(), "message 2: Graph data incompatible.");
  // A relative difference against a zero graph divides by zero.
  Plot(f, "x", "1");
  f.RunMenu("mnuNormDifference");
  f.controls().SetText("TxtAnGr1", "2");
  f.controls().SetText("TxtAnGr2", "3");
  f.controls().SetFromUser("RelNorm", "1");
  ASSERT_TRUE(f.Go());
  EXPECT_EQ(f.controls().Text("AnalysisText"), "Relative 2-Norm difference error.  Division by zero");
  f.RunMenu("mnuStatistics");
  f.controls().SetText("TxtGraphStat", "4");
  const std::size_t before = t.lines.size();
  ASSERT_TRUE(f.Go());
  ASSERT_EQ(t.lines.size(), before + 1);
  EXPECT_EQ(t.lines.back(), "message 1: Insufficient number of graphs.");
}

TEST(Quantize8Bit2D, HalvesGoToTheEvenLevelAndTheRangeIsZeroTo255) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  Plot(f, "x/2+254", "32");  // x = j - 32: 238 to 270 in halves
  Plot(f, "x", "32");
  f.RunMenu("mnuQuantize8Bit");
  EXPECT_EQ(f.controls().Text("Label(16)"), "Quantize (8-bit image)");
  EXPECT_EQ(f.controls().Text("GoButton(11)"), "Select");
  f.controls().SetText("TxtGraphStat", "1");
  ASSERT_TRUE(f.Go());
  f.controls().SetText("TxtGraphStat", "2");
  ASSERT_TRUE(f.Go());
  ASSERT_EQ(f.NumGraphsPlotted(), 4);
  for (int j = 0; j <= 64; ++j) {
    const double v = (j - 32) / 2.0 + 254;
    double want = std::floor(v);
    if (v - want == 0.5 && std::fmod(want, 2.0) != 0.0) want += 1;  // ties to even
    if (v - want > 0.5) want += 1;
    want = std::min(want, 255.0);
    EXPECT_EQ(Sample(f, 2, 5, j), static_cast<float>(want)) << j;
    EXPECT_EQ(Sample(f, 3, 7, j), static_cast<float>(std::max(0, j - 32))) << j;
  }
  EXPECT_EQ(Sample(f, 2, 0, 32 + 2), 255.0f);  // exactly 255
  EXPECT_EQ(Sample(f, 2, 0, 32 + 1), 254.0f);  // 254.5
  EXPECT_EQ(Sample(f, 2, 0, 32 - 1), 254.0f);  // 253.5
  EXPECT_FLOAT_EQ(f.GraphLeft(2), -32.0f);
}

TEST(Resample2D, DownSamplingSixtyFourGivesAFormOfThirtyTwoWithNoMenuTick) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  Plot(f, "x+2*y");
  f.RunMenu("mnuDownSample");
  EXPECT_FALSE(f.controls()["TxtGraphStat"].visible);  // one graph: no number asked
  ASSERT_TRUE(f.Go());
  ASSERT_EQ(t.frame.OpenForms().size(), 2u);
  Graph2Form* d = FormAs<Graph2Form>(t.frame.OpenForms().back());
  ASSERT_NE(d, &f);
  EXPECT_EQ(d->Points(), 32);
  ASSERT_EQ(d->NumGraphsPlotted(), 1);
  for (int n = 64; n <= 2048; n *= 2) EXPECT_EQ(d->controls()["mnu" + std::to_string(n)].value, 0) << n;
  for (int i = 0; i <= 32; ++i)
    for (int j = 0; j <= 32; ++j) ASSERT_EQ(Sample(*d, 0, i, j), Sample(f, 0, 2 * i, 2 * j));
  EXPECT_FLOAT_EQ(d->GraphLeft(0), f.GraphLeft(0));
  EXPECT_FLOAT_EQ(d->GraphRight(0), f.GraphRight(0));
  EXPECT_FLOAT_EQ(d->GraphStep(0), 2 * f.GraphStep(0));
  // The new form opens on its Graphing box, ready for a formula.
  EXPECT_EQ(FocusRequested(d->controls()), "Formula");
}

TEST(Resample2D, HaarInterpolationSpreadsEachSampleOverATwoByTwoBlock) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  Plot(f, "sin(5*x)*cos(3*y)+x");
  f.RunMenu("mnuInterpolateMethod", 0);
  EXPECT_EQ(f.controls().Text("Label(16)"), "Haar Interpolate");
  ASSERT_TRUE(f.Go());
  Graph2Form* d = FormAs<Graph2Form>(t.frame.OpenForms().back());
  ASSERT_NE(d, &f);
  ASSERT_EQ(d->Points(), 128);
  for (int i = 0; i < 64; ++i)
    for (int j = 0; j < 64; ++j)
      for (int di = 0; di < 2; ++di)
        for (int dj = 0; dj < 2; ++dj)
          ASSERT_NEAR(Sample(*d, 0, 2 * i + di, 2 * j + dj), Sample(f, 0, i, j), 1e-6) << i << " " << j;
  EXPECT_EQ(Sample(*d, 0, 128, 5), 0.0f);
  EXPECT_FLOAT_EQ(d->GraphStep(0), f.GraphStep(0) / 2);
  EXPECT_FLOAT_EQ(d->GraphLeft(0), f.GraphLeft(0));
}

// The lifting steps of D-D 4,2 carry no scale: the trend comes back as it
// stands, so twice the samples come back twice as large.
TEST(Resample2D, DD42InterpolationKeepsTheSamplesAndFillsByTheFourPointRule) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  Plot(f, "x*x*x-y*y+x*y");  // a cubic: the four-point rule is exact on it away from the edges
  f.RunMenu("mnuInterpolateMethod", 1);
  EXPECT_EQ(f.controls().Text("Label(16)"), "D-D 4,2 Interpolate");
  ASSERT_TRUE(f.Go());
  Graph2Form* d = FormAs<Graph2Form>(t.frame.OpenForms().back());
  ASSERT_NE(d, &f);
  ASSERT_EQ(d->Points(), 128);
  const auto s = [&](int i, int j) { return 2.0 * Sample(f, 0, i, j); };
  for (int i = 4; i < 60; ++i)
    for (int j = 4; j < 60; ++j) {
      ASSERT_NEAR(Sample(*d, 0, 2 * i, 2 * j), s(i, j), 1e-5) << i << " " << j;
      const double odd = (-s(i, j - 1) + 9 * s(i, j) + 9 * s(i, j + 1) - s(i, j + 2)) / 16;
      ASSERT_NEAR(Sample(*d, 0, 2 * i, 2 * j + 1), odd, 1e-5) << i << " " << j;
      const double oddRow = (-s(i - 1, j) + 9 * s(i, j) + 9 * s(i + 1, j) - s(i + 2, j)) / 16;
      ASSERT_NEAR(Sample(*d, 0, 2 * i + 1, 2 * j), oddRow, 1e-5) << i << " " << j;
    }
}

TEST(Resample2D, InterpolationOfTheLargestSideIsRefused) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 2048);
  Plot(f, "x");
  f.RunMenu("mnuInterpolateMethod", 0);
  ASSERT_TRUE(f.Go());
  EXPECT_EQ(t.frame.OpenForms().size(), 1u);
}

TEST(Histogram2D, ARightClickedGraphGoesToAOneDimensionalFormWithItsEntropy) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  Plot(f, "(x>0)");
  ASSERT_TRUE(f.PictureMouse(0, MouseAction::Down, 0.1, 0.1, MouseButton::Right));
  f.RunMenu("mnuHistogram");
  EXPECT_EQ(f.controls().Text("LabHistogram"), "Histogram:  Graph 1");
  f.controls().SetFromUser("chkHistGram(0)", "0");
  f.controls().SetFromUser("chkHistGram(1)", "1");
  ASSERT_TRUE(f.controls().SetFromUser("ComboQuantLevel", "6-bit (64 levels)"));
  ASSERT_TRUE(f.Go());
  ASSERT_EQ(t.frame.OpenForms().size(), 2u);
  auto* h = FormAs<form1d::Graph1Form>(t.frame.OpenForms().back());
  ASSERT_NE(h, nullptr);
  // 32 of 65 columns are positive.
  const double p1 = 32.0 * 65 / (65.0 * 65), p0 = 1 - p1;
  const double entropy = -(p0 * std::log2(p0) + p1 * std::log2(p1));
  const std::string remarks = h->controls().Text("Remarks(0)");
  ASSERT_EQ(remarks.rfind("Histogram\r\nEntropy: ", 0), 0u) << remarks;
  EXPECT_NEAR(std::stod(remarks.substr(20)), entropy, 1e-9);
  // Magnitudes in 64 bins of width 1/64: the zeros in the first, the ones past the last.
  ASSERT_EQ(h->Points(), 64);
  EXPECT_NEAR(h->GraphValues(0)[0], p0, 1e-15);
  EXPECT_NEAR(h->GraphValues(0)[63], p1, 1e-15);
  double total = 0.0;
  for (int k = 0; k <= h->Points(); ++k) total += h->GraphValues(0)[k];
  EXPECT_NEAR(total, 1.0, 1e-12);
}

TEST(GraphClipboard2D, APastedGraphKeepsItsZoomAndAFullFormOpensANewOne) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  Plot(f, "x*y");
  f.RunMenu("mnuViewZoom");
  f.controls().SetText("txtZoomCoord(0)", "10");
  f.controls().SetText("txtZoomCoord(1)", "50");
  ASSERT_TRUE(f.Go());
  EXPECT_FALSE(f.controls()["mnuPasteGraph"].enabled);
  ASSERT_TRUE(f.PictureMouse(0, MouseAction::Down, 0.1, 0.1, MouseButton::Right));
  f.RunMenu("mnuCopyGraph");
  EXPECT_TRUE(f.controls()["mnuPasteGraph"].enabled);
  Graph2Form& g = NewForm(t, 64);
  g.Activated();
  EXPECT_TRUE(g.controls()["mnuPasteGraph"].enabled);
  Plot(g, "1");
  Plot(g, "2");
  Plot(g, "3");
  g.RunMenu("mnuPasteGraph");
  ASSERT_EQ(g.NumGraphsPlotted(), 4);
  for (int i = 0; i <= 64; i += 3)
    for (int j = 0; j <= 64; j += 5) ASSERT_EQ(Sample(g, 3, i, j), Sample(f, 0, i, j));
  EXPECT_EQ(g.Look(3).drawWidths, 2);
  EXPECT_EQ(g.Look(3).viewXLeft, f.Look(0).viewXLeft);
  EXPECT_EQ(g.Look(3).viewYHigh, f.Look(0).viewYHigh);
  // Four graphs, and a graph still on the clipboard: Paste stays enabled.
  EXPECT_TRUE(g.controls()["mnuPasteGraph"].enabled);
  // Copying here and pasting on the full form opens a new form.
  ASSERT_TRUE(g.PictureMouse(3, MouseAction::Down, 0.1, 0.1, MouseButton::Right));
  g.RunMenu("mnuCopyGraph");
  ASSERT_TRUE(g.controls()["mnuPasteGraph"].enabled);
  const std::size_t forms = t.frame.OpenForms().size();
  g.RunMenu("mnuPasteGraph");
  ASSERT_EQ(t.frame.OpenForms().size(), forms + 1);
  EXPECT_EQ(g.NumGraphsPlotted(), 4);
  Graph2Form* n = FormAs<Graph2Form>(t.frame.OpenForms().back());
  ASSERT_EQ(n->NumGraphsPlotted(), 1);
  EXPECT_EQ(n->Look(0).drawWidths, 2);
  EXPECT_EQ(Sample(*n, 0, 20, 30), Sample(f, 0, 20, 30));
}

TEST(GraphClipboard2D, AGraphCopiedBeforeAFormFillsUpIsPastedOnANewForm) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  Plot(f, "3*x-y");
  ASSERT_TRUE(f.PictureMouse(0, MouseAction::Down, 0.1, 0.1, MouseButton::Right));
  f.RunMenu("mnuCopyGraph");
  // The clipboard is filled before the second form files its four graphs.
  Graph2Form& g = NewForm(t, 64);
  for (const char* formula : {"1", "2", "3", "4"}) Plot(g, formula);
  ASSERT_EQ(g.NumGraphsPlotted(), 4);
  EXPECT_TRUE(g.controls()["mnuPasteGraph"].enabled);
  ASSERT_TRUE(g.PictureMouse(2, MouseAction::Down, 0.1, 0.1, MouseButton::Right));
  g.RunMenu("mnuPasteGraph");
  ASSERT_EQ(t.frame.OpenForms().size(), 3u);
  EXPECT_EQ(g.NumGraphsPlotted(), 4);
  for (int k = 0; k < 4; ++k) EXPECT_EQ(Sample(g, k, 30, 40), static_cast<float>(k + 1));
  Graph2Form* n = FormAs<Graph2Form>(t.frame.OpenForms().back());
  ASSERT_NE(n, &g);
  EXPECT_EQ(n->Points(), 64);
  ASSERT_EQ(n->NumGraphsPlotted(), 1);
  // 3x - y at x = j/64 - 1/2, y = i/64 - 1/2 on the default square.
  for (int i = 0; i <= 64; i += 8)
    for (int j = 0; j <= 64; j += 8)
      EXPECT_NEAR(Sample(*n, 0, i, j), 3.0 * (j / 64.0 - 0.5) - (i / 64.0 - 0.5), 1e-6) << i << " " << j;
}

TEST(GraphClipboard2D, WithNothingCopiedAFullFormHasNoPaste) {
  TestFrame t;
  Graph2Form& g = NewForm(t, 64);
  EXPECT_FALSE(g.controls()["mnuPasteGraph"].enabled);
  for (const char* formula : {"1", "2", "3", "4"}) Plot(g, formula);
  EXPECT_FALSE(g.controls()["mnuPasteGraph"].enabled);
  g.RunMenu("mnuPasteGraph");
  EXPECT_EQ(t.frame.OpenForms().size(), 1u);
}

TEST(GraphClipboard2D, APasteOfAnotherSideOnAnEmptyFormTakesItsSide) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 128);
  Plot(f, "x-y");
  f.RunMenu("mnuCopyGraph");
  Graph2Form& g = NewForm(t, 64);
  g.Activated();
  g.RunMenu("mnuPasteGraph");
  EXPECT_EQ(g.Points(), 128);
  ASSERT_EQ(g.NumGraphsPlotted(), 1);
  EXPECT_EQ(Sample(g, 0, 100, 3), Sample(f, 0, 100, 3));
}

TEST(GraphClipboard2D, ANewSideKeepsPasteWhileAGraphWaits) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  Plot(f, "x*y");
  ASSERT_TRUE(f.PictureMouse(0, MouseAction::Down, 0.1, 0.1, MouseButton::Right));
  f.RunMenu("mnuCopyGraph");
  // A form made after the copy, then given another side from its menu.
  int code = 0;
  Graph2Form& g = *NewFormOf<Graph2Form>(t.frame, code);
  g.RunMenu("mnu128");
  ASSERT_EQ(g.Points(), 128);
  EXPECT_TRUE(g.controls()["mnuPasteGraph"].enabled);
  g.RunMenu("mnuPasteGraph");
  EXPECT_EQ(g.Points(), 64);
  ASSERT_EQ(g.NumGraphsPlotted(), 1);
  EXPECT_EQ(Sample(g, 0, 16, 48), (48 / 64.0f - 0.5f) * (16 / 64.0f - 0.5f));
}

TEST(GraphClipboard2D, ClippingCopiesTheZoomedPartOrTheWholeUnzoomedGraph) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 256);
  Plot(f, "x+3*y");
  f.RunMenu("mnuClip");
  Graph2Form* whole = FormAs<Graph2Form>(t.frame.OpenForms().back());
  ASSERT_NE(whole, &f);
  EXPECT_EQ(whole->Points(), 256);
  for (int i = 0; i <= 256; i += 17)
    for (int j = 0; j <= 256; j += 13) ASSERT_EQ(Sample(*whole, 0, i, j), Sample(f, 0, i, j));
  // Zoomed twice: 64 grid points across, from the window's lower left.
  for (int k = 0; k < 2; ++k) {
    f.RunMenu("mnuViewZoom");
    f.controls().SetText("TxtGraphStat", "1");
    f.controls().SetText("txtZoomCoord(0)", "100");
    f.controls().SetText("txtZoomCoord(1)", "60");
    ASSERT_TRUE(f.Go());
  }
  ASSERT_EQ(f.Look(0).drawWidths, 4);
  f.RunMenu("mnuClip");
  Graph2Form* part = FormAs<Graph2Form>(t.frame.OpenForms().back());
  ASSERT_EQ(part->Points(), 64);
  const int j0 = static_cast<int>(std::nearbyint((f.Look(0).viewXLeft - f.GraphLeft(0)) / f.GraphStep(0)));
  const int i0 = static_cast<int>(std::nearbyint((f.Look(0).viewYLow - f.GraphLeft(0)) / f.GraphStep(0)));
  for (int i = 0; i <= 64; ++i)
    for (int j = 0; j <= 64; ++j) ASSERT_EQ(Sample(*part, 0, i, j), Sample(f, 0, i0 + i, j0 + j));
  EXPECT_FLOAT_EQ(part->GraphLeft(0), f.Look(0).viewXLeft);
  EXPECT_FLOAT_EQ(part->GraphStep(0), f.GraphStep(0));
}

TEST(QuantizationBox, TheThresholdTipSaysWhatTheTextMeans) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  Plot(f, "x");
  f.RunMenu("mnuWaveletSeries");
  ASSERT_TRUE(f.Click("GoButton(0)"));
  ControlModel& c = f.controls();
  EXPECT_EQ(c["TxtThreshold(0)"].tip, "Quantizes at 17 bpp.");
  c.SetFromUser("chkSignBit(0)", "0");
  f.ControlChanged("chkSignBit(0)");
  EXPECT_EQ(c["TxtThreshold(0)"].tip, "Quantizes at 16 bpp.");
  c.SetFromUser("chkQuantize(0)", "0");
  f.ControlChanged("chkQuantize(0)");
  EXPECT_EQ(c["TxtThreshold(0)"].tip, "Coefficients with mags below Max/2^16 are set to 0.");
  c.SetText("TxtThreshold(0)", "1/");
  f.ControlChanged("TxtThreshold(0)");
  EXPECT_EQ(c["TxtThreshold(0)"].tip, "Enter an expression like 1/2^16.");
  EXPECT_EQ(c["TxtThreshold(1)"].tip, "Quantizes trend at 17 bpp, and flucs at 9 bpp.");
  c.SetFromUser("chkQuantize(1)", "0");
  f.ControlChanged("chkQuantize(1)");
  EXPECT_EQ(c["TxtThreshold(1)"].tip,
            "Trends with mags less than Max/2^16, flucs  with mags less than Max/2^8, are set to 0.");
  c.SetText("TxtThreshold(1)", "1/2^16");
  f.ControlChanged("TxtThreshold(1)");
  EXPECT_EQ(c["TxtThreshold(1)"].tip, "Enter an expression like 1/2^16:1/2^8.");
  c.SetFromUser("OpMethod(1)", "1");
  f.ControlChanged("OpMethod(1)");
  EXPECT_EQ(c["TxtThreshold(1)"].tip,
            "An expression like 1/2^7:1/2^6, quantizes trend values to 6 bits and fluctuation values to 5 bits.");
  // A cancel keeps the strings, the method in use among them.
  ASSERT_TRUE(f.Click("cmdCancel"));
  EXPECT_EQ(f.QuantParams()[0], "0|1/2^16|Q|N|B|N|");
}

}  // namespace
}  // namespace keldo

namespace keldo {
namespace {

TEST(SaveOptions2D, ApplyChecksTheTargetsInOrderAndTheFrameKeepsWhatWasApplied) {
  TestFrame t;
  Graph2Form& f = testing::NewForm(t, 64);
  ASSERT_TRUE(f.RunMenu("mnuSaveOptions"));
  EXPECT_EQ(f.VisiblePanel(), form2d::kPanelSaveOptions);
  ControlModel& c = f.controls();
  EXPECT_EQ(c.Text("txtJPEGQuality"), "70");
  EXPECT_EQ(c["OpTIFF(0)"].value, 1);
  EXPECT_EQ(c["OpCompress(2)"].value, 1);
  EXPECT_FALSE(c["OpPSNR"].enabled);  // the region of interest is on
  const auto apply = [&] {
    const std::size_t before = t.lines.size();
    f.Click("cmdApply");
    return t.lines.size() > before ? t.lines.back() : std::string();
  };
  c.SetText("txtBitRate", "0");
  EXPECT_EQ(apply(), "message 82: Bpp value must be positive.");
  c.SetText("txtBitRate", "0.5");
  c.SetFromUser("chkROI", "0");
  f.ControlChanged("chkROI");
  EXPECT_TRUE(c["OpPSNR"].enabled);
  c.SetFromUser("OpPSNR", "1");
  c.SetText("txtPSNR", "-1");
  EXPECT_EQ(apply(), "message 81: PSNR value must be positive.");
  c.SetText("WaveletType", "DD 5/3 Integer");
  f.ControlChanged("WaveletType");
  EXPECT_EQ(c["OpLossy(1)"].value, 1);
  EXPECT_FALSE(c["OpCompress(0)"].enabled);
  EXPECT_EQ(apply(), "message 83: PSNR value must be non-negative.");
  c.SetText("txtPSNR", "0");
  c.SetFromUser("chkROI", "1");
  f.ControlChanged("chkROI");
  EXPECT_EQ(c["OpCompRatio"].value, 1);  // a region of interest has a rate target
  c.SetText("txtBitRate", "-2");
  EXPECT_EQ(apply(), "message 84: Bpp value must be non-negative.");
  c.SetText("txtBitRate", "1.5");
  c.SetText("txtROIFraction", "0");
  EXPECT_EQ(apply(), "message 86: Fraction of bits to ROI must be greater than 0.");
  c.SetText("txtROIFraction", "1.5");
  EXPECT_EQ(apply(), "message 87: Fraction of bits to ROI must be no more than 1.");
  c.SetText("txtROIFraction", "0.75");
  c.SetText("txtJPEGQuality", "100");
  EXPECT_EQ(apply(), "beep");
  c.SetText("txtJPEGQuality", "85");
  c.SetFromUser("OpTIFF(4)", "1");
  c.SetFromUser("chkProgressive", "1");
  EXPECT_EQ(apply(), "");
  EXPECT_EQ(f.VisiblePanel(), -1);
  const FrameSettings& s = t.frame.settings();
  EXPECT_EQ(s.captions.at("JPEGCompression"), "85");
  EXPECT_EQ(s.captions.at("OpTIFF"), "4");
  EXPECT_EQ(s.captions.at("WaveletType2D"), "DD 5/3 Integer");
  const std::array<float, 11> codes = {7, 0, 1.5f, 2, 1, 2, 1, 1, 0.75f, 3, 0};
  EXPECT_EQ(s.wavCompCodes, codes);
  // Another form opens the box as it was left; Cancel brings back the
  // frame's quality and TIFF choice and keeps the rest as typed.
  Graph2Form& g = testing::NewForm(t, 64);
  ASSERT_TRUE(g.RunMenu("mnuSaveOptions"));
  EXPECT_EQ(g.controls().Text("txtJPEGQuality"), "85");
  EXPECT_EQ(g.controls()["OpTIFF(4)"].value, 1);
  EXPECT_EQ(g.controls()["chkProgressive"].value, 1);
  g.controls().SetText("txtJPEGQuality", "20");
  g.controls().SetFromUser("OpTIFF(7)", "1");
  g.controls().SetText("txtLevels", "5");
  g.Click("cmdCancel");
  ASSERT_TRUE(g.RunMenu("mnuSaveOptions"));
  EXPECT_EQ(g.controls().Text("txtJPEGQuality"), "85");
  EXPECT_EQ(g.controls()["OpTIFF(4)"].value, 1);
  EXPECT_EQ(g.controls().Text("txtLevels"), "5");
  EXPECT_EQ(t.frame.settings().wavCompCodes[0], 7.0f);
}

TEST(Focus2D, ARefusedZoomFocusesTheBoxItRead) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  Plot(f, "X+Y");
  f.RunMenu("mnuViewZoom");
  struct Case {
    const char* graph;
    const char* column;
    const char* row;
    const char* message;
    const char* focus;
  };
  const Case cases[] = {{"2", "20", "20", "message 1:", "TxtGraphStat"},
                        {"1", "-1", "20", "message 74:", "txtZoomCoord(0)"},
                        {"1", "65", "20", "message 75:", "txtZoomCoord(0)"},
                        {"1", "20", "-1", "message 76:", "txtZoomCoord(1)"},
                        {"1", "20", "65", "message 77:", "txtZoomCoord(1)"}};
  for (const Case& c : cases) {
    f.controls().SetText("TxtGraphStat", c.graph);
    f.controls().SetText("txtZoomCoord(0)", c.column);
    f.controls().SetText("txtZoomCoord(1)", c.row);
    RequestFocus(f.controls(), "Formula");
    f.Go();
    ASSERT_FALSE(t.lines.empty());
    EXPECT_EQ(t.lines.back().rfind(c.message, 0), 0u) << t.lines.back();
    EXPECT_EQ(FocusRequested(f.controls()), c.focus) << c.message;
    EXPECT_EQ(f.Look(0).drawWidths, 1);
  }
  // Zoomed to the limit of a 64-point side (16 widths), the next zoom is refused.
  f.controls().SetText("txtZoomCoord(0)", "32");
  f.controls().SetText("txtZoomCoord(1)", "32");
  const std::size_t before = t.lines.size();
  for (int k = 0; k < 4; ++k) f.Go();
  ASSERT_EQ(t.lines.size(), before);
  EXPECT_EQ(f.Look(0).drawWidths, 16);
  RequestFocus(f.controls(), "Formula");
  f.Go();
  EXPECT_EQ(t.lines.back().rfind("message 31:", 0), 0u) << t.lines.back();
  EXPECT_EQ(FocusRequested(f.controls()), "TxtGraphStat");
  // Restoring a graph that is not there.
  f.controls().SetText("TxtGraphStat", "3");
  RequestFocus(f.controls(), "Formula");
  ASSERT_TRUE(f.Click("GoButton(12)"));
  EXPECT_EQ(t.lines.back().rfind("message 1:", 0), 0u) << t.lines.back();
  EXPECT_EQ(FocusRequested(f.controls()), "TxtGraphStat");
  EXPECT_EQ(f.Look(0).drawWidths, 16);
}

TEST(Focus2D, LeavingTheQuantizationBoxFocusesTheWaveletGoButton) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  Plot(f, "x");
  f.RunMenu("mnuWaveletSeries");
  for (const char* button : {"cmdApply", "cmdCancel"}) {
    ASSERT_TRUE(f.Click("GoButton(0)"));
    RequestFocus(f.controls(), "Formula");
    ASSERT_TRUE(f.Click(button));
    EXPECT_EQ(f.VisiblePanel(), form2d::kPanelWavelet);
    EXPECT_EQ(FocusRequested(f.controls()), "GoButton(5)") << button;
  }
}

TEST(Focus2D, ARefusedGraphNumberFocusesItsBox) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  Plot(f, "X+Y");
  f.RunMenu("mnuFourierSeries");
  f.controls().SetText("LblSeriesGraph", "2");
  RequestFocus(f.controls(), "Formula");
  f.Go();
  EXPECT_EQ(FocusRequested(f.controls()), "LblSeriesGraph");
  EXPECT_EQ(f.NumGraphsPlotted(), 1);
}

}  // namespace
}  // namespace keldo
