// The Fourier commands of the one-dimensional form: side boxes, checks and
// the result forms. The numbers themselves are tested in tests/fourier.

#include <gtest/gtest.h>

#include <cmath>

#include "fourier/transforms.h"
#include "graph1_test_util.h"

namespace keldo {
namespace {

using form1d::Graph1Form;
using testing::NewForm;
using testing::Plot;
using testing::TestFrame;

Graph1Form& Last(TestFrame& t) { return static_cast<Graph1Form&>(*t.frame.OpenForms().back()); }

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

}  // namespace
}  // namespace keldo
