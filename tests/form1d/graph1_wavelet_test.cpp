// The wavelet commands of the one-dimensional form: checks, result forms,
// series, denoising with Stop, median filters and resizing.

#include <gtest/gtest.h>

#include <cmath>

#include "graph1_test_util.h"
#include "wavelet/series.h"
#include "wavelet/transforms.h"

namespace keldo::testing {
namespace {

TEST(WaveletCommands, ChecksInOrder) {
  TestFrame t;
  auto& f = NewForm(t, 64);
  Plot(f, "sin(9*x)", "1");
  f.RunMenu("mnuWaveletTransform");
  EXPECT_EQ(f.SideBoxKey(), "WTran");
  EXPECT_EQ(f.controls()["wavlevels"].tip, "Integer between 1 and 6.");
  f.controls().SetText("WavGraph", "2");
  f.Go();
  f.controls().SetText("WavGraph", "1");
  for (const char* name : {"WavTypeDaub", "WavTypeCoif", "WavTypeHaar", "WavTypeOther"}) f.controls()[name].value = 0;
  f.Go();
  f.controls().SetFromUser("WavTypeDaub", "1");
  f.controls().SetText("wavlevels", "7");
  f.Go();
  f.controls().SetText("wavlevels", "3");
  f.controls().SetText("DaubOrder", "5");
  f.Go();
  f.controls().SetText("DaubOrder", "4");
  f.controls().SetFromUser("chkSymDaub", "1");
  f.Go();
  f.controls().SetFromUser("WavTypeCoif", "1");
  f.controls().SetText("CoifOrder", "10");
  f.Go();
  f.controls().SetFromUser("WavTypeOther", "1");
  f.controls().SetText("wavlevels", "5");  // M - 1
  f.Go();
  EXPECT_EQ(t.lines, (std::vector<std::string>{"message 1: Insufficient number of graphs.",
                                               "message 13: Type of wavelet not specified.",
                                               "message 21: Improper number of levels.",
                                               "message 14: The order must be an even integer between 4 and 20.",
                                               "message 80: The order must be an even integer between 8 and 20.",
                                               "message 15: The order must be a multiple of 6 between 6 and 30.",
                                               "message 21: Improper number of levels."}));
  EXPECT_EQ(t.frame.OpenForms().size(), 1u);
  f.controls().SetText("wavlevels", "4");  // M - 2 is accepted
  f.Go();
  EXPECT_EQ(t.frame.OpenForms().size(), 2u);
}

TEST(WaveletCommands, TransformOpensAFormReadyForTheInverse) {
  TestFrame t;
  auto& f = NewForm(t, 128);
  Plot(f, "x*x", "1");
  f.RunMenu("mnuWaveletTransform");
  f.controls().SetText("DaubOrder", "8");
  f.controls().SetText("wavlevels", "4");
  f.Go();
  auto& r = Last(t);
  ASSERT_EQ(r.GraphCount(), 1);
  std::vector<double> expected(f.GraphValues(0), f.GraphValues(0) + 129);
  expected.resize(133);
  wavelet::DAUBGEN(3, false, 128, expected.data(), 4);
  for (int i = 0; i < 128; ++i) EXPECT_EQ(r.Graphs()[0].values[static_cast<std::size_t>(i)], expected[static_cast<std::size_t>(i)]);
  EXPECT_EQ(r.controls()["chkWavInvTr"].value, 1);
  EXPECT_EQ(r.controls().Text("DaubOrder"), "8");
  EXPECT_EQ(r.SideBoxKey(), "WTran");
  r.Go();
  auto& back = Last(t);
  const auto values = back.Graphs()[0].values;
  for (int i = 0; i < 128; ++i) EXPECT_NEAR(values[static_cast<std::size_t>(i)], f.GraphValues(0)[i], 1e-12);
  // The packet box calls Haar "Walsh".
  f.RunMenu("mnuWaveletPacketTransform");
  EXPECT_EQ(f.controls().Text("WavTypeHaar"), "Walsh");
}

TEST(WaveletCommands, SeriesTypesAndTheirChecks) {
  TestFrame t;
  auto& f = NewForm(t, 64);
  Plot(f, "exp(x)", "1");
  f.RunMenu("mnuWaveletSeries");
  EXPECT_EQ(f.SideBoxKey(), "WSer");
  f.controls().SetText("HighestMag", "0");
  f.Go();
  ASSERT_EQ(f.GraphCount(), 2);
  for (int i = 0; i < 64; ++i) EXPECT_NEAR(f.GraphValues(1)[i], 0.0, 1e-15);
  EXPECT_EQ(f.GraphValues(1)[64], f.GraphValues(0)[64]);  // the last point comes from the source
  f.controls().SetText("HighestMag", "65");
  f.Go();
  f.controls().SetFromUser("SerTypeAscend", "1");
  f.controls().SetText("WSerNumTerms", "-1");
  f.Go();
  f.controls().SetFromUser("SerTypeEnergy", "1");
  f.controls().SetText("EnerPerc", "2");
  f.Go();
  for (const char* name : {"SerTypeAscend", "SerTypeMagnitude", "SerTypeEnergy", "SerTypeThreshold"}) f.controls()[name].value = 0;
  f.Go();
  EXPECT_EQ(t.lines, (std::vector<std::string>{"message 17: Number of coefficients must be between 0 and total number of points.",
                                               "message 30: Number of terms must be between 0 and total number of points.",
                                               "message 18: Energy fraction must lie between 0 and 1.",
                                               "message 16: Method of forming series not specified."}));
  EXPECT_EQ(f.GraphCount(), 2);
  // Energy 1 keeps everything: the graph back within rounding.
  f.controls().SetFromUser("SerTypeEnergy", "1");
  f.controls().SetText("EnerPerc", "1");
  f.Go();
  for (int i = 0; i < 64; ++i) EXPECT_NEAR(f.GraphValues(2)[i], f.GraphValues(0)[i], 1e-12);
  EXPECT_EQ(f.controls().Text("Remarks(1)"), "64 coefficients used.");
  // Threshold with quantizing, from the form's quantization settings.
  f.controls().SetFromUser("SerTypeThreshold", "1");
  f.SetQuantParams({"0|1|Q|N|B|N|", "", ""});
  f.Go();
  EXPECT_EQ(f.GraphCount(), 4);
  EXPECT_EQ(f.controls().Text("Remarks(1)").substr(0, 34), "1 coefficients used, 1.6% of 64.\r\n");
  f.SetQuantParams({"0|0|Q|N|B|N|", "", ""});
  f.Go();
  f.SetQuantParams({"1|0.5,2|N|N|B|N|", "", ""});
  f.Go();
  EXPECT_EQ(t.lines.back(), "message 19: Threshold must lie between 0 and 1.");
  EXPECT_EQ(t.lines[t.lines.size() - 2], "message 35: Threshold of 0 not allowed when quantizing.");
}

TEST(WaveletCommands, QuantizationSettingsGoThroughTheirFields) {
  TestFrame t;
  auto& f = NewForm(t, 64);
  Plot(f, "x*x*x", "1");
  f.RunMenu("mnuWaveletSeries");
  f.controls().SetFromUser("SerTypeThreshold", "1");
  f.Click("GoButton(10)");
  EXPECT_EQ(f.VisiblePanel(), form1d::kPanelQuantization);
  EXPECT_EQ(f.controls().Text("TxtThreshold(0)"), "1/2^16");
  EXPECT_EQ(f.controls().Text("TxtThreshold(1)"), "1/2^16:1/2^8");
  EXPECT_EQ(f.controls()["OpMethod(0)"].value, 1);
  f.controls().SetFromUser("OpMethod(1)", "1");
  f.controls().SetText("TxtThreshold(1)", "1/2^4,1/2^3");  // a comma works as a colon
  f.controls().SetFromUser("chkSigMap", "1");
  f.Click("cmdApply");
  EXPECT_EQ(f.VisiblePanel(), form1d::kPanelWavelet);
  EXPECT_EQ(f.QuantParams()[0], "1|1/2^4,1/2^3|Q|N|B|S|");
  EXPECT_EQ(f.QuantParams()[1], "N|1/2^16|Y|N|Y|S|");
  EXPECT_EQ(f.QuantParams()[2], "Y|1/2^4,1/2^3|Y|N|Y|S|");
  f.Go();
  // The series and its significance map.
  ASSERT_EQ(f.GraphCount(), 3);
  const std::string report = f.controls().Text("Remarks(1)");
  EXPECT_NE(report.find("Thresholds: 0.0625, 0.125"), std::string::npos) << report;
  EXPECT_NE(report.find("Bits per point: "), std::string::npos);
  for (int i = 0; i < 64; ++i) {
    const double v = f.GraphValues(2)[i];
    EXPECT_TRUE(v == 0.0 || v == 1.0 || v == -1.0);
  }
}

TEST(WaveletCommands, DenoiseOnceAveragedAndStopped) {
  TestFrame t;
  auto& f = NewForm(t, 256);
  Plot(f, "sin(5*x)+0.2*sin(170*x)", "1");
  f.RunMenu("mnuQuantize", 3);
  EXPECT_EQ(f.SideBoxKey(), "DenoiseWavelet");
  EXPECT_EQ(f.controls().Text("chkWavInvTr"), "Avg.");
  f.controls().SetText("wavlevels", "3");
  f.Go();
  ASSERT_EQ(f.GraphCount(), 2);
  EXPECT_EQ(f.controls().Text("Remarks(1)").rfind("Threshold: ", 0), 0u);
  // Averaged: the percent shows in the caption while it runs; Stop ends it.
  f.controls().SetFromUser("chkWavInvTr", "1");
  int yields = 0;
  std::string seen;
  t.platform.eventLoop.SetHook([&] {
    if (++yields == 40) {
      seen = f.controls().Text("chkWavInvTr");
      EXPECT_EQ(f.controls().Text("GoButton(7)"), "Stop");
      f.Click("GoButton(7)");
    }
  });
  f.Go();
  t.platform.eventLoop.SetHook(nullptr);
  EXPECT_EQ(seen, "30%");  // shift 39 of 127: (39 - 63 + 63) * 100 / 127
  EXPECT_EQ(f.GraphCount(), 2);
  EXPECT_EQ(f.controls().Text("GoButton(7)"), "&Plot");
  EXPECT_EQ(f.controls().Text("chkWavInvTr"), "Avg.");
  f.Go();
  EXPECT_EQ(f.GraphCount(), 3);
}

TEST(WaveletCommands, AConstantGraphComesThroughDenoisingUnchanged) {
  TestFrame t;
  auto& f = NewForm(t, 64);
  Plot(f, "3", "1");
  f.RunMenu("mnuQuantize", 3);
  f.controls().SetFromUser("WavTypeHaar", "1");
  f.Go();
  for (int i = 0; i <= 64; ++i) EXPECT_NEAR(f.GraphValues(1)[i], 3.0, 1e-14);
}

TEST(WaveletCommands, MedianDownsampleAndInterpolation) {
  TestFrame t;
  auto& f = NewForm(t, 128);  // down-sampling needs more than 64 points
  Plot(f, "sgn(sin(20*x))", "1");
  f.RunMenu("mnuQuantize", 4);
  EXPECT_EQ(f.controls().Text("AnalysisLabel"), "Median denoise");
  f.Go();
  EXPECT_EQ(f.GraphCount(), 2);
  f.RunMenu("mnuDownSample");
  f.controls().SetText("TxtAnGr1", "1");
  f.Go();
  EXPECT_EQ(Last(t).Points(), 64);
  f.RunMenu("mnuInterpolateMethod", 0);
  EXPECT_EQ(f.controls().Text("mnuHelpSideBox"), "Help for Haar Interpolate");
  f.controls().SetText("TxtGraphStat", "1");
  const std::string levels = f.controls().Text("wavlevels");
  f.Go();
  auto& up = Last(t);
  EXPECT_EQ(up.Points(), 256);
  EXPECT_EQ(up.Graphs()[0].values[7], up.Graphs()[0].values[6]);  // each sample twice
  EXPECT_EQ(up.Graphs()[0].values[256], f.GraphValues(0)[128]);
  EXPECT_EQ(f.controls().Text("wavlevels"), levels);
}

}  // namespace
}  // namespace keldo::testing
