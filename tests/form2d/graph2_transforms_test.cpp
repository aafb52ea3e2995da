// The two-dimensional form's transforms and series, driven through their
// side boxes as a person would: results, domains, messages and new forms.

#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "form2d/graph2_form.h"
#include "kit/typed_forms.h"
#include "form2d_driver.h"

namespace keldo {
namespace {

using form2d::Graph2Form;
using testing::TestFrame;

using testing::NewForm;
using testing::Plot;
using testing::Sample;

bool Reported(const TestFrame& t, const std::string& number) {
  for (const std::string& line : t.lines)
    if (line.find(number) != std::string::npos) return true;
  return false;
}

TEST(FourierTransform2D, AConstantHasItsWeightAtTheCentreOverTheFrequencyDomain) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  Plot(f, "1", "1.5");  // width 3
  f.RunMenu("mnuFourierTransform");
  EXPECT_EQ(f.SideBoxKey(), "FTran");
  ASSERT_TRUE(f.Go());
  ASSERT_EQ(f.NumGraphsPlotted(), 3);  // the real and the imaginary part
  EXPECT_NEAR(Sample(f, 1, 32, 32), 9.0f, 1e-4);
  EXPECT_NEAR(Sample(f, 1, 10, 40), 0.0f, 1e-5);
  EXPECT_EQ(Sample(f, 1, 64, 7), Sample(f, 1, 0, 7));  // the wrapped row
  EXPECT_FLOAT_EQ(f.GraphLeft(1), -64.0f / 6);
  EXPECT_FLOAT_EQ(f.GraphRight(1), 64.0f / 6);
  EXPECT_FLOAT_EQ(f.GraphStep(1), 1.0f / 3);
}

TEST(FourierTransform2D, TheExponentSignConjugatesAndThePowerSpectrumIsOneGraph) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  Plot(f, "sin(2*pi*(3*x+y))+x");
  f.RunMenu("mnuFourierTransform");
  ASSERT_TRUE(f.Go());
  f.controls()["PosExponent"].value = 1;
  f.controls()["NegExponent"].value = 0;
  ASSERT_TRUE(f.Go());
  ASSERT_EQ(f.NumGraphsPlotted(), 3);
  // Three graphs held: the pair goes whole to a new form.
  ASSERT_EQ(t.frame.OpenForms().size(), 2u);
  Graph2Form* second = FormAs<Graph2Form>(t.frame.OpenForms().back());
  ASSERT_NE(second, &f);
  ASSERT_EQ(second->NumGraphsPlotted(), 2);
  for (int i = 0; i <= 64; i += 7)
    for (int j = 0; j <= 64; j += 5) {
      EXPECT_EQ(second->GraphValues(0)[static_cast<std::size_t>(i) * f.RowStride() + j], Sample(f, 1, i, j));
      EXPECT_EQ(second->GraphValues(1)[static_cast<std::size_t>(i) * f.RowStride() + j], -Sample(f, 2, i, j));
    }
  // The power spectrum: re^2 + im^2 as one graph, in the fourth slot.
  f.controls()["TrOpPs"].value = 1;
  f.controls()["TrOpRI"].value = 0;
  ASSERT_TRUE(f.Go());
  ASSERT_EQ(f.NumGraphsPlotted(), 4);
  for (int i = 0; i <= 64; i += 3)
    for (int j = 0; j <= 64; j += 4) {
      const float re = Sample(f, 1, i, j), im = Sample(f, 2, i, j);
      EXPECT_EQ(Sample(f, 3, i, j), re * re + im * im);
    }
}

TEST(FourierTransform2D, ImproperGraphsReport3ForRealDataAndBeepForComplex) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  Plot(f, "x");
  f.RunMenu("mnuFourierTransform");
  f.controls().SetText("FTGraph", "2");
  ASSERT_TRUE(f.Go());
  EXPECT_TRUE(Reported(t, "Improper graph specification"));
  t.lines.clear();
  f.controls()["FTComplex"].value = 1;
  f.controls()["FTReal"].value = 0;
  ASSERT_TRUE(f.Go());  // ImagPart is 2
  ASSERT_EQ(t.lines.size(), 1u);
  EXPECT_EQ(t.lines[0], "beep");
  // No option of a group: a beep.
  t.lines.clear();
  f.controls()["FTComplex"].value = 0;
  ASSERT_TRUE(f.Go());
  EXPECT_EQ(t.lines, std::vector<std::string>{"beep"});
  EXPECT_EQ(f.NumGraphsPlotted(), 1);
}

TEST(FourierSeries2D, SphericalLimitZeroGivesTheMeanAndBadLimitsReport29) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  Plot(f, "x+2");
  f.RunMenu("mnuFourierSeries");
  EXPECT_EQ(f.SideBoxKey(), "FSer");
  f.controls().SetText("Harmonic(0)", "0");
  ASSERT_TRUE(f.Go());
  ASSERT_EQ(f.NumGraphsPlotted(), 2);
  // The mean over the 64 by 64 square: x runs -0.5 .. 0.5 - 1/64.
  EXPECT_NEAR(Sample(f, 1, 5, 9), 2.0f - 0.5f / 64, 1e-5);
  EXPECT_NEAR(Sample(f, 1, 64, 64), 2.0f - 0.5f / 64, 1e-5);
  f.controls().SetText("Harmonic(0)", "33");
  ASSERT_TRUE(f.Go());
  EXPECT_TRUE(Reported(t, "Improper number of harmonics"));
  EXPECT_EQ(f.NumGraphsPlotted(), 2);
  // A filter with a negative parameter: message 8, nothing filed.
  t.lines.clear();
  f.controls().SetText("Harmonic(0)", "10");
  f.controls()["OpSerType(1)"].value = 1;
  f.controls()["OpSerType(0)"].value = 0;
  f.controls().SetText("FreqFilter", "Diffusion");
  f.ControlChanged("FreqFilter");
  EXPECT_TRUE(f.controls()["Parameter"].visible);
  EXPECT_EQ(f.controls().Text("LabFiltParam"), "Damping power:");
  f.controls().SetText("Parameter", "-1");
  ASSERT_TRUE(f.Go());
  EXPECT_EQ(t.lines.size(), 1u);
  EXPECT_EQ(f.NumGraphsPlotted(), 2);
  f.controls().SetText("FreqFilter", "hanning");
  f.ControlChanged("FreqFilter");
  EXPECT_FALSE(f.controls()["Parameter"].visible);
}

TEST(WaveletTransform2D, ForwardThenInverseReturnsTheImageAndMarksTheTrendBlock) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  Plot(f, "exp(-(x^2+y^2)/0.05)+x*y");
  f.RunMenu("mnuWaveletTransform");
  EXPECT_EQ(f.SideBoxKey(), "WTran");
  f.controls().SetText("wavlevels", "6");
  f.controls()["WavTypeHaar"].value = 1;
  f.controls()["WavTypeDaub"].value = 0;
  ASSERT_TRUE(f.Go());
  ASSERT_EQ(f.NumGraphsPlotted(), 2);
  EXPECT_EQ(f.LinRegValue(1), 1);  // L = PowerTwo with Haar: a 1 by 1 trend
  f.controls().SetText("WavGraph", "2");
  f.controls()["chkWavInvTr"].value = 1;
  ASSERT_TRUE(f.Go());
  ASSERT_EQ(f.NumGraphsPlotted(), 3);
  EXPECT_EQ(f.LinRegValue(2), 64);
  for (int i = 0; i <= 64; ++i)
    for (int j = 0; j <= 64; ++j) ASSERT_NEAR(Sample(f, 2, i, j), Sample(f, 0, i, j), 1e-5) << i << " " << j;
}

TEST(WaveletTransform2D, ChecksReportTheirMessages) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  Plot(f, "x");
  f.RunMenu("mnuWaveletTransform");
  const auto run = [&](const char* number) {
    t.lines.clear();
    ASSERT_TRUE(f.Go());
    ASSERT_EQ(t.lines.size(), 1u) << number;
    EXPECT_NE(t.lines[0].find(number), std::string::npos) << t.lines[0];
  };
  f.controls().SetText("wavlevels", "7");
  run("Improper number of levels");
  f.controls().SetText("wavlevels", "2");
  f.controls().SetText("DaubOrder", "5");
  run("even integer between 4 and 20");
  f.controls().SetText("DaubOrder", "6");
  f.controls()["chkSymDaub"].value = 1;
  run("between 8 and 20");
  f.controls()["WavTypeOther"].value = 1;
  f.controls()["WavTypeDaub"].value = 0;
  f.controls().SetText("wavlevels", "5");
  run("Improper number of levels");
  f.controls()["WavTypeOther"].value = 0;
  run("Type of wavelet not specified");
  f.controls().SetText("WavGraph", "3");
  run("Improper graph specification");
  EXPECT_EQ(f.NumGraphsPlotted(), 1);
}

TEST(WaveletSeries2D, KeepingEveryCoefficientReturnsTheImageAndReports) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  Plot(f, "cos(5*x)*sin(3*y)");
  f.RunMenu("mnuWaveletSeries");
  EXPECT_EQ(f.SideBoxKey(), "WSer");
  f.controls().SetText("wavlevels", "3");
  // Threshold 0 without quantizing keeps everything.
  ASSERT_TRUE(f.Click("GoButton(0)"));
  f.controls().SetText("TxtThreshold(0)", "0");
  f.controls()["chkQuantize(0)"].value = 0;
  ASSERT_TRUE(f.Click("cmdApply"));
  EXPECT_EQ(f.QuantParams()[0], "0|0|N|N|B|N|");
  ASSERT_TRUE(f.Go());
  ASSERT_EQ(f.NumGraphsPlotted(), 2);
  for (int i = 0; i < 64; ++i)
    for (int j = 0; j < 64; ++j) ASSERT_NEAR(Sample(f, 1, i, j), Sample(f, 0, i, j), 2e-6);
  EXPECT_EQ(f.controls().Text("WavReport"), "4096 coefficients used.\r\n100.% out of possible 4096.");
}

TEST(WaveletSeries2D, QuantizingWithTheMapGivesTwoGraphs) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  Plot(f, "cos(5*x)*sin(3*y)");
  f.RunMenu("mnuWaveletSeries");
  f.controls().SetText("wavlevels", "2");
  ASSERT_TRUE(f.Click("GoButton(0)"));
  f.controls().SetText("TxtThreshold(0)", "1/2^4");
  f.controls()["chkSigMap"].value = 1;
  ASSERT_TRUE(f.Click("cmdApply"));
  ASSERT_TRUE(f.Go());
  ASSERT_EQ(f.NumGraphsPlotted(), 3);
  const std::string report = f.controls().Text("WavReport");
  EXPECT_NE(report.find(" coefficients used,\r\n"), std::string::npos) << report;
  EXPECT_NE(report.find("Threshold: 1/2^4\r\nBits per pixel: "), std::string::npos) << report;
  // The map: 1 where a coefficient was kept (the sign bit is on), else 0.
  int kept = 0;
  for (int i = 0; i < 64; ++i)
    for (int j = 0; j < 64; ++j) {
      const float m = Sample(f, 2, i, j);
      ASSERT_TRUE(m == 0.0f || m == 1.0f);
      kept += m == 1.0f;
    }
  EXPECT_EQ(report.substr(0, report.find(' ')), std::to_string(kept));
  // With the sign bit the map is drawn in grey.
  EXPECT_EQ(f.Look(2).colorMethod, form2d::kGrey);
  // A threshold above 1 is refused.
  t.lines.clear();
  ASSERT_TRUE(f.Click("GoButton(0)"));
  f.controls().SetText("TxtThreshold(0)", "2");
  ASSERT_TRUE(f.Click("cmdApply"));
  ASSERT_TRUE(f.Go());
  EXPECT_TRUE(Reported(t, "Threshold must lie between 0 and 1"));
}

TEST(Convolution2D, AutocorrelationOfZeroBeepsAndConvolutionKeepsTheDomain) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  Plot(f, "0");
  f.RunMenu("mnuAutocorrelation");
  EXPECT_EQ(f.SideBoxKey(), "AutoCor");
  EXPECT_FALSE(f.controls()["ConvGr2"].visible);
  ASSERT_TRUE(f.Go());
  EXPECT_EQ(t.lines, std::vector<std::string>{"beep"});
  Plot(f, "exp(-(x^2+y^2)/0.01)");
  f.RunMenu("mnuConvolution");
  f.controls().SetText("ConvGr1", "2");
  f.controls().SetText("ConvGr2", "2");
  ASSERT_TRUE(f.Go());
  ASSERT_EQ(f.NumGraphsPlotted(), 3);
  // A gaussian of variance 0.005 per axis convolved with itself: twice the
  // variance, the integral pi*0.01 spread over 2*pi*0.01: peak pi*0.01/2.
  EXPECT_NEAR(Sample(f, 2, 32, 32), M_PI * 0.01 / 2, 1e-4);
  EXPECT_EQ(f.GraphLeft(2), f.GraphLeft(1));
  f.controls().SetText("ConvGr2", "4");
  t.lines.clear();
  ASSERT_TRUE(f.Go());
  EXPECT_TRUE(Reported(t, "Improper graph specification"));
}

TEST(Filtering2D, RealTimesRealIsThePointwiseProduct) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  Plot(f, "x+1");
  Plot(f, "y-2");
  f.RunMenu("mnuFiltering");
  EXPECT_EQ(f.SideBoxKey(), "Filter");
  f.controls().SetText("FDataNum(0)", "1");
  f.controls().SetText("FiltNum(0)", "2");
  ASSERT_TRUE(f.Go());
  ASSERT_EQ(f.NumGraphsPlotted(), 3);
  for (int i = 0; i <= 64; i += 9)
    for (int j = 0; j <= 64; j += 11) EXPECT_EQ(Sample(f, 2, i, j), Sample(f, 0, i, j) * Sample(f, 1, i, j));
  f.controls().SetText("FiltNum(0)", "7");
  ASSERT_TRUE(f.Go());
  EXPECT_TRUE(Reported(t, "Improper number for real filter"));
}

TEST(WaveletTransform2D, AResultOnANewFormIsPreparedForTheWayBack) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  for (const char* formula : {"x", "y", "x*y", "x+y"}) Plot(f, formula);
  f.RunMenu("mnuWaveletTransform");
  f.controls()["WavTypeCoif"].value = 1;
  f.controls()["WavTypeDaub"].value = 0;
  f.controls().SetText("CoifOrder", "12");
  f.controls().SetText("wavlevels", "2");
  f.controls().SetText("WavGraph", "4");
  ASSERT_TRUE(f.Go());
  ASSERT_EQ(t.frame.OpenForms().size(), 2u);
  Graph2Form* next = FormAs<Graph2Form>(t.frame.OpenForms().back());
  ASSERT_EQ(next->NumGraphsPlotted(), 1);
  EXPECT_EQ(next->LinRegValue(0), 16);
  EXPECT_EQ(next->SideBoxKey(), "WTran");
  EXPECT_EQ(next->controls()["chkWavInvTr"].value, 1);
  EXPECT_EQ(next->controls()["WavTypeCoif"].value, 1);
  EXPECT_EQ(next->controls().Text("CoifOrder"), "12");
  EXPECT_EQ(next->controls().Text("wavlevels"), "2");
  // Go on the new form brings the image back.
  ASSERT_TRUE(next->Go());
  ASSERT_EQ(next->NumGraphsPlotted(), 2);
  for (int i = 0; i <= 64; i += 3)
    for (int j = 0; j <= 64; j += 5) ASSERT_NEAR(Sample(*next, 1, i, j), Sample(f, 3, i, j), 1e-5);
}

TEST(Transforms2D, ServeTheEventLoopEveryFourthRowAndRefuseCommandsMeanwhile) {
  TestFrame t;
  Graph2Form& f = NewForm(t, 64);
  Plot(f, "x*y");
  f.RunMenu("mnuFourierTransform");
  int yields = 0;
  bool closed = true;
  const int beepsBefore = t.platform.beeper.Count();
  t.platform.eventLoop.SetHook([&] {
    if (++yields != 5) return;
    EXPECT_TRUE(f.Working());
    f.RunMenu("mnuEraseGraphs");  // refused with a beep
    f.Go();                       // refused with a beep
    closed = t.frame.CloseForm(f);
  });
  ASSERT_TRUE(f.Go());
  // Real data: 64 rows, a pause after every fourth, then 33 columns in
  // batches of eight, a pause after each batch.
  EXPECT_EQ(yields, 16 + 5);
  EXPECT_FALSE(closed);
  EXPECT_EQ(t.platform.beeper.Count() - beepsBefore, 3);
  EXPECT_FALSE(f.Working());
  ASSERT_EQ(f.NumGraphsPlotted(), 3);
  EXPECT_EQ(t.frame.OpenForms().size(), 1u);
  t.platform.eventLoop.SetHook(nullptr);
  // The commands work again once the transform is over.
  f.RunMenu("mnuEraseGraphs");
  EXPECT_EQ(f.NumGraphsPlotted(), 0);
}

}  // namespace
}  // namespace keldo
