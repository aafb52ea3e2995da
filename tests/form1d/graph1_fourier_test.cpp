// The Fourier commands of the one-dimensional form: side boxes, checks and
// the result forms. The numbers themselves are tested in tests/fourier.

#include <gtest/gtest.h>

#include <cmath>

#include "fourier/transforms.h"
#include "graph1_test_util.h"
#include "kit/focus.h"

namespace keldo::testing {
namespace {

TEST(FourierTransformCommand, ResultFormHoldsRealAndImaginaryParts) {
  TestFrame t;
  auto& f = NewForm(t, 128);
  Plot(f, "exp(0-x*x)", "2");
  f.RunMenu("mnuFourierTransform");
  EXPECT_EQ(f.SideBoxKey(), "FTran");
  EXPECT_EQ(f.controls().Text("mnuHelpSideBox"), "Help for Fourier transform");
  EXPECT_EQ(f.controls()["TrOp2"].tip, "Transform displayed as magnitude and phase angle.");
  f.Go();
  ASSERT_TRUE(t.lines.empty()) << t.lines.front();
  ASSERT_EQ(t.frame.OpenForms().size(), 2u);
  auto& r = Last(t);
  EXPECT_EQ(r.Points(), 128);
  ASSERT_EQ(r.GraphCount(), 2);
  const auto g = r.Graphs();
  EXPECT_DOUBLE_EQ(g[0].h, 1.0 / 4);
  EXPECT_DOUBLE_EQ(g[0].a, -16.0);
  EXPECT_DOUBLE_EQ(g[0].b, 16.0);
  // The same numbers as the transform itself.
  fourier::TransformSetup s;
  const auto expected = fourier::FourierTransformOf(128, f.GraphValues(0), nullptr, -2.0, 2.0, s);
  EXPECT_EQ(g[0].values, expected.first);
  EXPECT_EQ(g[1].values, expected.second);
  // At frequency 0: the integral of exp(-x^2) over [-2, 2], sqrt(pi) erf(2).
  EXPECT_NEAR(g[0].values[64], std::sqrt(M_PI) * std::erf(2.0), 1e-4);
}

TEST(FourierTransformCommand, PowerSpectrumGivesOneGraphAndAmpPhTwo) {
  TestFrame t;
  auto& f = NewForm(t, 64);
  Plot(f, "sin(6*pi*x)", "1");
  f.RunMenu("mnuFourierTransform");
  f.controls().SetFromUser("TrOp3", "1");
  f.Go();
  EXPECT_EQ(Last(t).GraphCount(), 1);
  f.controls().SetFromUser("TrOp2", "1");
  f.controls().SetFromUser("FTIntOp4", "1");
  f.Go();
  auto& r = Last(t);
  EXPECT_EQ(r.GraphCount(), 2);
  EXPECT_EQ(r.Graphs()[0].a, 0.0);
  EXPECT_DOUBLE_EQ(r.Graphs()[0].b, 32.0);
  const auto graphs = r.Graphs();
  for (double v : graphs[0].values) EXPECT_GE(v, 0.0);  // magnitudes
}

TEST(FourierTransformCommand, GraphNumbersAreChecked) {
  TestFrame t;
  auto& f = NewForm(t, 64);
  Plot(f, "x");
  f.RunMenu("mnuFourierTransform");
  f.controls().SetText("FTGraph", "2");
  f.Go();
  f.controls().SetText("FTGraph", "0");
  f.Go();
  f.controls().SetFromUser("FTComplex", "1");
  f.controls().SetText("RealPart", "1");
  f.controls().SetText("ImagPart", "3");
  f.Go();
  EXPECT_EQ(t.lines, (std::vector<std::string>{"message 1: Insufficient number of graphs.",
                                               "message 3: Improper graph specification.",
                                               "message 1: Insufficient number of graphs."}));
  EXPECT_EQ(t.frame.OpenForms().size(), 1u);
}

TEST(FourierTransformCommand, AGroupWithoutChoiceBeepsAndEndsSilently) {
  TestFrame t;
  auto& f = NewForm(t, 64);
  Plot(f, "x");
  f.RunMenu("mnuFourierTransform");
  f.controls()["NegExponent"].value = 0;
  f.Go();
  EXPECT_EQ(t.lines, std::vector<std::string>{"beep"});
  EXPECT_EQ(t.frame.OpenForms().size(), 1u);
}

TEST(TrigTransformCommand, SineAndCosineBoxesShareTheirPanel) {
  TestFrame t;
  auto& f = NewForm(t, 64);
  Plot(f, "1+x", "1");
  f.RunMenu("mnuCosineTransform");
  EXPECT_EQ(f.SideBoxKey(), "CTran");
  EXPECT_EQ(f.controls().Text("LabFTrigTran"), "Cosine transform");
  f.Go();
  auto& c = Last(t);
  ASSERT_EQ(c.GraphCount(), 1);
  // Index 0: 2 dx (y0/2 + yN/2 + sum of the inner values).
  double sum = (f.GraphValues(0)[0] + f.GraphValues(0)[64]) / 2;
  for (int j = 1; j < 64; ++j) sum += f.GraphValues(0)[j];
  EXPECT_NEAR(c.Graphs()[0].values[0], 2 * (2.0 / 64) * sum, 1e-12);
  EXPECT_DOUBLE_EQ(c.Graphs()[0].b, 64 / 4.0);
  f.RunMenu("mnuSineTransform");
  EXPECT_EQ(f.SideBoxKey(), "STran");
  f.Go();
  auto& s = Last(t);
  EXPECT_EQ(s.Graphs()[0].values[0], 0.0);
  EXPECT_EQ(s.Graphs()[0].values[64], 0.0);
}

TEST(SeriesCommand, FilesThePartialSumAsANewGraph) {
  TestFrame t;
  auto& f = NewForm(t, 64);
  Plot(f, "abs(x)", "1");
  f.RunMenu("mnuCosineSeries");
  EXPECT_EQ(f.SideBoxKey(), "CSer");
  EXPECT_EQ(f.controls()["TxtHarmonics"].tip, "Integer between 0 and 64.");
  f.controls().SetText("TxtHarmonics", "64");
  f.Go();
  ASSERT_EQ(f.GraphCount(), 2);
  const auto g = f.Graphs();
  for (int j = 0; j <= 64; ++j) EXPECT_NEAR(g[1].values[static_cast<std::size_t>(j)], g[0].values[static_cast<std::size_t>(j)], 1e-13);
  f.RunMenu("mnuFourierSeries");
  EXPECT_EQ(f.controls()["TxtHarmonics"].tip, "Integer between 0 and 32.");
  f.controls().SetText("TxtHarmonics", "33");
  f.Go();
  EXPECT_EQ(t.lines, std::vector<std::string>{"message 29: Improper number of harmonics."});
  EXPECT_EQ(f.GraphCount(), 2);
}

TEST(SeriesCommand, FilterParametersAreChecked) {
  TestFrame t;
  auto& f = NewForm(t, 64);
  Plot(f, "x", "1");
  f.RunMenu("mnuFourierSeries");
  f.controls().SetFromUser("OptionFiltered", "1");
  const std::pair<const char*, const char*> cases[] = {{"Riesz", "-1"}, {"Poisson", "1"}, {"Kaiser", "0"}, {"Heat", "-2"}};
  for (const auto& [name, value] : cases) {
    f.controls().SetFromUser("FreqFilter", name);
    f.ControlChanged("FreqFilter");
    f.controls().SetText("FiltParam1", value);
    f.Go();
  }
  f.controls().SetFromUser("FreqFilter", "Energy percentage");
  f.controls().SetText("FiltParam1", "1.5");
  f.Go();
  f.controls().SetFromUser("FreqFilter", "Threshold");
  f.Go();
  f.controls().SetFromUser("FreqFilter", "User");
  f.controls().SetText("FilterFormula", "sin(");
  f.Go();
  EXPECT_EQ(t.lines, (std::vector<std::string>{"message 8: Damping constant must be non-negative.",
                                               "message 7: Damping power must be between 0 and 1.",
                                               "message 9: Damping constant must be positive.",
                                               "message 8: Damping constant must be non-negative.",
                                               "message 18: Energy fraction must lie between 0 and 1.",
                                               "message 19: Threshold must lie between 0 and 1.",
                                               "message 23: Improper formula."}));
  EXPECT_EQ(f.GraphCount(), 1);
}

TEST(SeriesCommand, LabelsFollowTheFilterAndSelectionsReport) {
  TestFrame t;
  auto& f = NewForm(t, 64);
  Plot(f, "x", "1");
  f.RunMenu("mnuFourierSeries");
  f.controls().SetFromUser("OptionFiltered", "1");
  f.controls().SetFromUser("FreqFilter", "Heat");
  f.ControlChanged("FreqFilter");
  EXPECT_EQ(f.controls().Text("LabFiltParam1"), "  Diffusion constant:");
  EXPECT_TRUE(f.controls()["FiltParam2"].visible);
  f.controls().SetFromUser("FreqFilter", "Energy percentage");
  f.ControlChanged("FreqFilter");
  EXPECT_EQ(f.controls().Text("LabFiltParam1"), "           Percentage:");
  EXPECT_FALSE(f.controls()["FiltParam2"].visible);
  f.controls().SetText("FiltParam1", "1");
  f.Go();
  EXPECT_EQ(f.GraphCount(), 2);
  // All 33 coefficients of the half spectrum kept, the constant among them:
  // 2 * 33 - 1 capped at N, and 32 harmonics written back.
  EXPECT_EQ(f.controls().Text("FilterFormula"), "64 coefficients used.");
  EXPECT_EQ(f.controls().Text("TxtHarmonics"), "32");
  // A weighting filter with H = 0 divides by zero: the command ends.
  f.controls().SetFromUser("FreqFilter", "Cesaro");
  f.controls().SetText("TxtHarmonics", "0");
  f.Go();
  EXPECT_EQ(f.GraphCount(), 2);
  EXPECT_EQ(t.lines.back(), "message: Run Error.  ");
}

TEST(ConvolveCommand, AutocorrelationPeaksAtTheCentreOfASymmetricInterval) {
  TestFrame t;
  auto& f = NewForm(t, 64);
  Plot(f, "exp(0-9*x*x)", "1");
  f.RunMenu("mnuAutocorrelation");
  EXPECT_EQ(f.SideBoxKey(), "AutoCor");
  EXPECT_FALSE(f.controls()["ConvGr2"].visible);
  f.controls().SetFromUser("ConvChk(0)", "1");
  f.Go();
  ASSERT_EQ(f.GraphCount(), 2);
  const auto r = f.Graphs()[1].values;
  EXPECT_NEAR(r[32], 1.0, 1e-14);
  EXPECT_EQ(r[64], r[0]);
  f.RunMenu("mnuConvolution");
  f.controls().SetText("ConvGr2", "3");
  f.Go();
  f.controls().SetText("ConvGr1", "0");
  f.Go();
  EXPECT_EQ(t.lines, (std::vector<std::string>{"message 1: Insufficient number of graphs.",
                                               "message 3: Improper graph specification."}));
}

TEST(FilteringCommand, MultipliesPointByPointInAllFourWays) {
  TestFrame t;
  auto& f = NewForm(t, 64);
  Plot(f, "x", "1");
  Plot(f, "2", "1");
  Plot(f, "x*x", "1");
  f.RunMenu("mnuFiltering");
  EXPECT_EQ(f.controls()["FDataNum(0)"].tip, "Positive integer less than 4");
  f.Go();  // real data 1 by real filter 2
  ASSERT_EQ(f.GraphCount(), 4);
  const double* x = f.GraphValues(0);
  for (int i = 0; i <= 64; ++i) EXPECT_EQ(f.GraphValues(3)[i], 2 * x[i]);
  f.controls().SetFromUser("OpFilt(1)", "1");  // complex filter 2 + i 3 on real data 1
  f.Go();
  ASSERT_EQ(f.GraphCount(), 6);
  for (int i = 0; i <= 64; ++i) {
    EXPECT_EQ(f.GraphValues(4)[i], 2 * x[i]);
    EXPECT_EQ(f.GraphValues(5)[i], x[i] * x[i] * x[i]);
  }
  f.controls().SetFromUser("OpFData(1)", "1");  // (1 + i 2)(2 + i 3)
  f.Go();
  ASSERT_EQ(f.GraphCount(), 8);
  for (int i = 0; i <= 64; ++i) {
    const double xi = x[i], x2 = xi * xi;
    EXPECT_DOUBLE_EQ(f.GraphValues(6)[i], xi * 2 - 2 * x2);
    EXPECT_DOUBLE_EQ(f.GraphValues(7)[i], xi * x2 + 2 * 2);
  }
  f.controls().SetText("FDataNum(2)", "9");
  f.Go();
  f.controls().SetFromUser("OpFData(0)", "1");
  f.controls().SetText("FiltNum(2)", "0");
  f.Go();
  f.controls().SetFromUser("OpFilt(0)", "1");
  f.controls().SetText("FDataNum(0)", "12");
  f.Go();
  f.controls().SetText("FDataNum(0)", "1");
  f.controls().SetText("FiltNum(0)", "-1");
  f.Go();
  EXPECT_EQ(t.lines, (std::vector<std::string>{"message 27: Improper number(s) for complex data.",
                                               "message 28: Improper number(s) for complex filter.",
                                               "message 25: Improper number for real data.",
                                               "message 26: Improper number for real filter."}));
  EXPECT_EQ(f.GraphCount(), 8);
}

TEST(FourierFocus, ARefusedGraphNumberFocusesItsBox) {
  TestFrame t;
  auto& f = NewForm(t, 64);
  Plot(f, "x", "1");
  Plot(f, "x*x", "1");
  f.RunMenu("mnuFourierTransform");
  f.controls().SetText("FTGraph", "3");
  f.Go();
  EXPECT_EQ(FocusRequested(f.controls()), "FTGraph");
  f.RunMenu("mnuFourierSeries");
  f.controls().SetText("LblSeriesGraph", "3");
  f.Go();
  EXPECT_EQ(FocusRequested(f.controls()), "LblSeriesGraph");
  ASSERT_TRUE(f.RunMenu("mnuConvolution"));
  f.controls().SetText("ConvGr1", "1");
  f.controls().SetText("ConvGr2", "3");
  f.Go();
  EXPECT_EQ(FocusRequested(f.controls()), "ConvGr2");
  f.controls().SetText("ConvGr1", "0");
  f.Go();
  EXPECT_EQ(FocusRequested(f.controls()), "ConvGr1");
  EXPECT_EQ(t.lines, (std::vector<std::string>{
                         "message 1: Insufficient number of graphs.", "message 1: Insufficient number of graphs.",
                         "message 1: Insufficient number of graphs.", "message 3: Improper graph specification."}));
  EXPECT_EQ(f.GraphCount(), 2);
  // Numbers that are accepted move nothing.
  RequestFocus(f.controls(), "Formula");
  f.controls().SetText("ConvGr1", "1");
  f.controls().SetText("ConvGr2", "2");
  f.Go();
  EXPECT_EQ(f.GraphCount(), 3);
  EXPECT_EQ(FocusRequested(f.controls()), "Formula");
}

TEST(FourierFocus, OnlyAMissingIntervalChoiceMovesTheFocus) {
  TestFrame t;
  auto& f = NewForm(t, 64);
  Plot(f, "x");
  f.RunMenu("mnuFourierTransform");
  RequestFocus(f.controls(), "Formula");
  f.controls()["NegExponent"].value = 0;
  f.Go();
  EXPECT_EQ(FocusRequested(f.controls()), "Formula");
  f.controls()["NegExponent"].value = 1;
  f.controls()["FTIntOp1"].value = 0;
  f.Go();
  EXPECT_EQ(t.lines, (std::vector<std::string>{"beep", "beep"}));
  EXPECT_EQ(FocusRequested(f.controls()), "FTIntOp1");
  EXPECT_EQ(t.frame.OpenForms().size(), 1u);
}

TEST(FourierFocus, ARefusedFilterParameterFocusesItsBox) {
  TestFrame t;
  auto& f = NewForm(t, 64);
  Plot(f, "x", "1");
  f.RunMenu("mnuFourierSeries");
  f.controls().SetFromUser("OptionFiltered", "1");
  struct Case {
    const char* filter;
    const char* c;
    const char* t;
    const char* focus;
  };
  const Case cases[] = {{"Riesz", "-1", "0", "FiltParam1"},      {"Heat", "-2", "1", "FiltParam1"},
                        {"Heat", "1", "-1", "FiltParam2"},       {"FresnelSin", "0", "-3", "FiltParam2"},
                        {"Diffraction", "-1", "1", "FiltParam1"}};
  for (const Case& c : cases) {
    f.controls().SetFromUser("FreqFilter", c.filter);
    f.ControlChanged("FreqFilter");
    f.controls().SetText("FiltParam1", c.c);
    f.controls().SetText("FiltParam2", c.t);
    RequestFocus(f.controls(), "Formula");
    f.Go();
    EXPECT_EQ(FocusRequested(f.controls()), c.focus) << c.filter << " " << c.c << " " << c.t;
    EXPECT_EQ(t.lines.back(), "message 8: Damping constant must be non-negative.");
  }
  f.controls().SetFromUser("FreqFilter", "User");
  f.controls().SetText("FilterFormula", "sin(");
  f.Go();
  EXPECT_EQ(t.lines.back(), "message 23: Improper formula.");
  EXPECT_EQ(FocusRequested(f.controls()), "FilterFormula");
  EXPECT_EQ(f.GraphCount(), 1);
}

}  // namespace
}  // namespace keldo::testing
