// The spectrogram form driven as a person would: from a one-dimensional
// form's Graph menu, through its boxes, to its file and the forms it makes.

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <string>
#include <vector>

#include "form1d/graph1_form.h"
#include "kit/focus.h"
#include "kit/typed_forms.h"
#include "form1d_driver.h"
#include "test_frame.h"
#include "timefreq/spectrogram_form.h"

namespace keldo {
namespace {

using form1d::Graph1Form;
using testing::NewGraphForm;
using testing::Plot;
using testing::TestFrame;
using timefreq::SpectrogramForm;

constexpr double kRounding = 1e-9;

// The spectrogram of graph 1, its box open, not computed yet.
SpectrogramForm& OpenSpectrogram(TestFrame& t, Graph1Form& f, const std::string& item = "mnuSpectrogram") {
  f.RunMenu(item);
  f.controls().SetText("TxtGraphStat", "1");
  EXPECT_TRUE(f.Go());
  SpectrogramForm* s = FormAs<SpectrogramForm>(t.frame.OpenForms().back());
  EXPECT_NE(s, nullptr);
  return *s;
}

void Compute(SpectrogramForm& s, const std::string& winlen, const std::string& step, const std::string& window) {
  s.RunMenu("mnuSpectrogram");
  s.controls().SetText("SpSetting(0)", winlen);
  s.controls().SetText("SpSetting(1)", step);
  ASSERT_TRUE(s.controls().SetFromUser("SpecFilter", window));
  ASSERT_TRUE(s.Go());
}

double Magnitude(const fourier::Spectrum& sp, int r, int c) { return std::hypot(sp.Re(r, c), sp.Im(r, c)); }

TEST(SpectrogramForm, AGraphOpensItsSpectrogramWithTheBoxForItsLength) {
  TestFrame t;
  Graph1Form& f = NewGraphForm(t, 1024);
  Plot(f, "sin(40*x)");
  SpectrogramForm& s = OpenSpectrogram(t, f);
  EXPECT_EQ(s.Caption(), "Spectrogram  1");
  EXPECT_EQ(t.frame.Current(), &s);
  EXPECT_EQ(s.Points(), 1024);
  EXPECT_TRUE(s.controls()["PicSideBox(0)"].visible);
  // 1024 points allow windows up to 128.
  EXPECT_EQ(s.controls()["SpSetting(0)"].tip, "Enter 16, 32, 64, or 128.");
  EXPECT_FALSE(s.Present());
  ASSERT_EQ(s.Signal().size(), 1025u);
  EXPECT_EQ(s.Signal()[100], f.GraphValues(0)[100]);
}

TEST(SpectrogramForm, WindowLengthsAndStepsAreChecked) {
  TestFrame t;
  Graph1Form& f = NewGraphForm(t, 1024);
  Plot(f, "x");
  SpectrogramForm& s = OpenSpectrogram(t, f);
  for (const char* bad : {"16", "32", "256", "100", "2^20", "0"}) {
    t.lines.clear();
    s.controls().SetText("SpSetting(0)", bad);
    s.controls().SetText("SpSetting(1)", "8");
    s.Go();
    EXPECT_EQ(t.lines, std::vector<std::string>{"message 56: Incorrect window length."}) << bad;
    EXPECT_EQ(FocusRequested(s.controls()), "SpSetting(0)");
  }
  for (const char* bad : {"0", "129", "-4"}) {
    t.lines.clear();
    s.controls().SetText("SpSetting(0)", "128");
    s.controls().SetText("SpSetting(1)", bad);
    s.Go();
    EXPECT_EQ(t.lines, std::vector<std::string>{"message 57: Incorrect step size."}) << bad;
    EXPECT_EQ(FocusRequested(s.controls()), "SpSetting(1)");
  }
  EXPECT_FALSE(s.Present());
  // At 64 points no length is accepted.
  Graph1Form& small = NewGraphForm(t, 64);
  Plot(small, "x");
  SpectrogramForm& s64 = OpenSpectrogram(t, small);
  for (const char* length : {"16", "32", "64"}) {
    s64.controls().SetText("SpSetting(0)", length);
    EXPECT_EQ(s64.CheckWindowLength(), -1) << length;
  }
}

TEST(SpectrogramForm, ABoxcarOverAConstantSumsTheWindow) {
  TestFrame t;
  Graph1Form& f = NewGraphForm(t, 1024);
  Plot(f, "3");
  SpectrogramForm& s = OpenSpectrogram(t, f);
  Compute(s, "64", "64", "Boxcar");
  ASSERT_TRUE(s.Present());
  const fourier::Spectrum& sp = s.Spectrum();
  EXPECT_EQ(sp.shape.ncols, 1024 / 64 + 1);
  EXPECT_EQ(sp.shape.nrows, 32);
  // Away from the ends every sample of the window is 3: 65 samples, the
  // first being the average of both ends, so 64 times 3.
  for (int c = 2; c < sp.shape.ncols; ++c) EXPECT_NEAR(sp.Re(0, c), 192.0, kRounding) << c;
  EXPECT_EQ(s.controls().Text("txtInformation"), "Filter: Boxcar\r\nWindow length: 64\r\nShift: 64");
}

TEST(SpectrogramForm, ThresholdsAreListedAndNegativeOnesRefused) {
  TestFrame t;
  Graph1Form& f = NewGraphForm(t, 512);
  Plot(f, "sin(60*x)+sin(200*x)/10");
  SpectrogramForm& s = OpenSpectrogram(t, f);
  Compute(s, "128", "32", "hanning");
  s.RunMenu("mnuThreshold");
  EXPECT_EQ(s.controls().Text("LabMaximum").rfind("Maximum = ", 0), 0u);
  s.controls().SetText("txtThreshold", "-1");
  s.Go();
  EXPECT_EQ(t.lines, std::vector<std::string>{"message 64: Threshold must be non-negative."});
  EXPECT_EQ(FocusRequested(s.controls()), "txtThreshold");
  EXPECT_EQ(s.Modifications().All(), std::vector<std::string>{"B"});
  s.controls().SetText("txtThreshold", "2");
  s.Go();
  EXPECT_EQ(s.Modifications().All(), (std::vector<std::string>{"B", "T:2"}));
  EXPECT_EQ(s.controls().Text("txtModReport"), "1. Threshold\r\nValue: 2\r\n");
  const fourier::Spectrum& sp = s.Spectrum();
  for (std::size_t k = 0; k < sp.re.size(); ++k) {
    const double m = std::hypot(sp.re[k], sp.im[k]);
    EXPECT_TRUE(m == 0.0 || m >= 2.0) << k;
  }
}

TEST(SpectrogramForm, AFormulaOfOneGivesEveryNonZeroCellMagnitudeOne) {
  TestFrame t;
  Graph1Form& f = NewGraphForm(t, 512);
  Plot(f, "sin(60*x)");
  SpectrogramForm& s = OpenSpectrogram(t, f);
  Compute(s, "64", "16", "Hamming");
  s.RunMenu("mnuThreshold");
  s.controls().SetText("txtThreshold", "1");
  s.Go();
  const std::vector<double> before = s.Spectrum().re;
  s.RunMenu("mnuPlot");
  s.controls().SetText("Formula", "1");
  ASSERT_TRUE(s.Go());
  EXPECT_EQ(s.Modifications().All(), (std::vector<std::string>{"B", "T:1", "G:1"}));
  const fourier::Spectrum& sp = s.Spectrum();
  for (std::size_t k = 0; k < sp.re.size(); ++k) {
    if (before[k] == 0.0 && sp.im[k] == 0.0) {
      EXPECT_EQ(sp.re[k], 0.0);
    } else {
      EXPECT_NEAR(std::hypot(sp.re[k], sp.im[k]), 1.0, 1e-6) << k;
    }
  }
  // A formula that does not compile changes nothing.
  t.lines.clear();
  s.controls().SetText("Formula", "x+(");
  s.Go();
  EXPECT_EQ(t.lines, std::vector<std::string>{"message 23: Improper formula."});
  EXPECT_EQ(s.Modifications().All().size(), 3u);
}

TEST(SpectrogramForm, SavingAndLoadingReproducesAThresholdedImageThroughTheList) {
  TestFrame t;
  Graph1Form& f = NewGraphForm(t, 512);
  Plot(f, "sin(60*x)+cos(150*x)/3");
  SpectrogramForm& s = OpenSpectrogram(t, f);
  Compute(s, "128", "16", "Blackman");
  s.RunMenu("mnuThreshold");
  s.controls().SetText("txtThreshold", "3");
  s.Go();
  const std::string path =
      (std::filesystem::temp_directory_path() / ("keldo-spectrogram-" + std::to_string(::getpid()) + ".spg")).string();
  t.platform.fileDialog.QueueAnswer(path);
  s.RunMenu("mnuSaveAs");
  ASSERT_TRUE(std::filesystem::exists(path));
  Form* loaded = t.frame.OpenFormFile(FormKind::Spectrogram, path, "saved.spg");
  std::filesystem::remove(path);
  ASSERT_NE(loaded, nullptr);
  auto* l = FormAs<SpectrogramForm>(loaded);
  ASSERT_NE(l, nullptr);
  EXPECT_EQ(l->Caption(), "saved.spg");
  EXPECT_EQ(l->Modifications().All(), (std::vector<std::string>{"B", "T:3"}));
  EXPECT_EQ(l->controls().Text("txtModReport"), s.controls().Text("txtModReport"));
  ASSERT_EQ(l->Spectrum().re.size(), s.Spectrum().re.size());
  EXPECT_EQ(l->Spectrum().re, s.Spectrum().re);
  EXPECT_EQ(l->Spectrum().im, s.Spectrum().im);
  EXPECT_EQ(l->Graphs().back().values, s.Graphs().back().values);  // the display levels
  EXPECT_TRUE(t.lines.empty());
}

TEST(SpectrogramForm, InvertingAnUnmodifiedSpectrogramGivesTheSignalBack) {
  TestFrame t;
  Graph1Form& f = NewGraphForm(t, 1024);
  Plot(f, "sin(30*x)*exp(-x*x)");
  SpectrogramForm& s = OpenSpectrogram(t, f);
  Compute(s, "128", "16", "hanning");
  s.RunMenu("mnuInvert");
  ASSERT_TRUE(s.controls().SetFromUser("OpInversion(2)", "1"));  // by summed filters
  ASSERT_TRUE(s.Go());
  auto* inverse = FormAs<Graph1Form>(t.frame.OpenForms().back());
  ASSERT_NE(inverse, nullptr);
  ASSERT_NE(inverse, &f);
  ASSERT_EQ(inverse->Points(), 1024);
  for (int i = 0; i <= 1024; ++i) EXPECT_NEAR(inverse->GraphValues(0)[i], f.GraphValues(0)[i], 1e-9) << i;
  EXPECT_EQ(inverse->GraphLeft(0), f.GraphLeft(0));
  EXPECT_EQ(inverse->GraphRight(0), f.GraphRight(0));
}

TEST(SpectrogramForm, AVanishingWindowAtStepWReportsTheDivisionFault) {
  TestFrame t;
  Graph1Form& f = NewGraphForm(t, 1024);
  Plot(f, "x");
  SpectrogramForm& s = OpenSpectrogram(t, f);
  Compute(s, "128", "128", "hanning");
  const std::size_t forms = t.frame.OpenForms().size();
  s.RunMenu("mnuInvert");
  s.Go();
  EXPECT_EQ(t.lines, std::vector<std::string>{"message 70: Error computing spectrogram."});
  EXPECT_EQ(t.frame.OpenForms().size(), forms);
}

TEST(SpectrogramForm, GaborDenoisingComputesAndPreparesTheFormula) {
  TestFrame t;
  Graph1Form& f = NewGraphForm(t, 1024);
  Plot(f, "sin(40*x)");
  SpectrogramForm& s = OpenSpectrogram(t, f, "mnuQuantize(2)");
  ASSERT_TRUE(s.Present());
  const std::string formula = s.controls().Text("Formula");
  EXPECT_EQ(formula.rfind("(g1)(g1 > c)\\c=.63*sqr(2log(128))*(", 0), 0u) << formula;
  EXPECT_NE(formula.find(")*sqr(64)\\Rem To denoise, plot this function and then select Invert."), std::string::npos)
      << formula;
  EXPECT_TRUE(s.controls()["PicSideBox(3)"].visible);
}

TEST(SpectrogramForm, TheGraphMenuDenoisesAndTheViewMenuHidesTheSignal) {
  TestFrame t;
  Graph1Form& f = NewGraphForm(t, 1024);
  Plot(f, "sin(40*x)");
  SpectrogramForm& s = OpenSpectrogram(t, f);
  EXPECT_EQ(s.Pictures().size(), 2u);
  s.RunMenu("mnuDenoise");
  EXPECT_EQ(t.lines, std::vector<std::string>{"beep"});  // nothing computed yet
  Compute(s, "128", "32", "Boxcar");
  s.RunMenu("mnuDenoise");
  EXPECT_EQ(s.controls().Text("Formula").rfind("(g1)(g1 > c)\\c=sqr(2log(128))*(", 0), 0u) << s.controls().Text("Formula");
  s.RunMenu("mnuViewOnly");
  EXPECT_EQ(s.Pictures().size(), 1u);
  s.RunMenu("mnuViewOnly");
  EXPECT_EQ(s.Pictures().size(), 2u);
}

TEST(SpectrogramForm, AVerticalSliceHoldsTheColumnUnderThePointer) {
  TestFrame t;
  Graph1Form& f = NewGraphForm(t, 512);
  Plot(f, "sin(90*x)");
  SpectrogramForm& s = OpenSpectrogram(t, f);
  Compute(s, "128", "64", "Hamming");
  const fourier::Spectrum& sp = s.Spectrum();
  // Column 3 is centred on sample 128: time -0.5 + 128/512.
  ASSERT_TRUE(s.PictureMouse(0, MouseAction::Down, -0.25, 100.0, MouseButton::Right));
  s.RunMenu("mnuVerticalSlice");
  auto* slice = FormAs<Graph1Form>(t.frame.OpenForms().back());
  ASSERT_NE(slice, nullptr);
  ASSERT_NE(slice, &f);
  EXPECT_EQ(slice->Points(), 64);
  for (int r = 0; r <= 64; ++r) EXPECT_NEAR(slice->GraphValues(0)[r], Magnitude(sp, r, 3), kRounding) << r;
}

TEST(SpectrogramForm, AFileBuiltByteByByteOpensAndReplaysItsList) {
  TestFrame t;
  Form* form = t.frame.OpenFormFile(FormKind::Spectrogram, KELDO_TEST_DATA "/spg/basic.spg", "basic.spg");
  ASSERT_NE(form, nullptr);
  auto* s = FormAs<SpectrogramForm>(form);
  ASSERT_NE(s, nullptr);
  EXPECT_EQ(s->Caption(), "basic.spg");
  ASSERT_TRUE(s->Present());
  // 128 points of (i mod 7) - 3 + i/8 over [0, 1], window 64 (Hamming), step 8.
  ASSERT_EQ(s->Signal().size(), 129u);
  EXPECT_EQ(s->Signal()[10], 3 - 3 + 10 / 8.0);
  EXPECT_EQ(s->Spectrum().shape.winlen, 64);
  EXPECT_EQ(s->Spectrum().shape.step, 8);
  EXPECT_EQ(s->Spectrum().shape.ncols, 17);
  EXPECT_EQ(s->controls().Text("SpecFilter"), "Hamming");
  EXPECT_EQ(s->Modifications().All(), (std::vector<std::string>{"B", "T:0.5", "G:(g1)(g1>2)"}));
  EXPECT_EQ(s->controls().Text("txtModReport"), "1. Threshold\r\nValue: 0.5\r\n2. Formula\r\n(g1)(g1>2)\r\n");
  EXPECT_EQ(s->controls().Text("txtInformation"), "Filter: Hamming\r\nWindow length: 64\r\nShift: 8\r\n");
  // The replayed formula kept the cells above 2 and cleared the others.
  const fourier::Spectrum& sp = s->Spectrum();
  int kept = 0;
  for (std::size_t k = 0; k < sp.re.size(); ++k) {
    const double m = std::hypot(sp.re[k], sp.im[k]);
    EXPECT_TRUE(m == 0.0 || m > 2.0) << k;
    kept += m > 2.0;
  }
  EXPECT_GT(kept, 0);
  EXPECT_TRUE(t.lines.empty());
}

TEST(SpectrogramForm, AFileThatIsNoFormFileOpensNothing) {
  TestFrame t;
  for (const char* name : {"nonsense.spg", "empty.spg", "trailing.spg", "count_63.spg", "window_96.spg"}) {
    t.lines.clear();
    EXPECT_EQ(t.frame.OpenFormFile(FormKind::Spectrogram, std::string(KELDO_TEST_DATA "/spg/") + name, name), nullptr);
    EXPECT_EQ(t.lines, std::vector<std::string>{"message 73: Error loading form."}) << name;
    EXPECT_TRUE(t.frame.OpenForms().empty()) << name;
  }
}

}  // namespace
}  // namespace keldo
