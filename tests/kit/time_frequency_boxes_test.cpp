// The kit modules the time-frequency forms share: the display box and the
// slices sent to one-dimensional forms.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kit/slices.h"
#include "kit/spectrum_display_box.h"
#include "test_frame.h"

namespace keldo {
namespace {

constexpr SpectrumDisplayBox kBox{"OpView", 4};

TEST(SpectrumDisplayBox, ItsOptionsReadAsModeViewAndSignal) {
  ControlModel c;
  kBox.AddControls(c);
  EXPECT_EQ(c.Text("OpMag(0)"), "Log (global)");
  EXPECT_EQ(c.Text("OpMag(3)"), "Linear (local)");
  EXPECT_EQ(c.Text("OpView(1)"), "G2: Phase");
  EXPECT_EQ(c.Text("GoButton(4)"), "&Apply");
  EXPECT_EQ(kBox.MagnitudeMode(c), 0);
  EXPECT_FALSE(kBox.ShowsPhase(c));
  EXPECT_FALSE(kBox.SignalAsDots(c));
  ASSERT_TRUE(c.SetFromUser("OpMag(2)", "1"));
  ASSERT_TRUE(c.SetFromUser("OpView(1)", "1"));
  ASSERT_TRUE(c.SetFromUser("OpSignalDisplay(0)", "1"));
  EXPECT_EQ(kBox.MagnitudeMode(c), 2);
  EXPECT_TRUE(kBox.ShowsPhase(c));
  EXPECT_TRUE(kBox.SignalAsDots(c));
  EXPECT_EQ(c["OpMag(0)"].value, 0);
  // A form file's choice; values out of range change nothing.
  kBox.Select(c, 1, 0);
  EXPECT_EQ(kBox.MagnitudeMode(c), 1);
  EXPECT_FALSE(kBox.ShowsPhase(c));
  kBox.Select(c, 7, -1);
  EXPECT_EQ(kBox.MagnitudeMode(c), 1);
  EXPECT_FALSE(kBox.ShowsPhase(c));
  EXPECT_TRUE(kBox.Redraws("OpMag(3)"));
  EXPECT_TRUE(kBox.Redraws("OpView(0)"));
  EXPECT_TRUE(kBox.Redraws("OpSignalDisplay(1)"));
  EXPECT_FALSE(kBox.Redraws("OpMagPhase(0)"));
  EXPECT_FALSE(kBox.Redraws("txtThreshold"));
}

TEST(Slices, ValuesGoOntoTheSmallestGridThatHoldsThem) {
  const OneDimensionalResult five = SliceResult({1, 2, 3, 4, 5}, 0.0, 1.0, "r");
  EXPECT_EQ(five.points, 64);
  ASSERT_EQ(five.graphs.size(), 1u);
  const auto& g = five.graphs[0];
  ASSERT_EQ(g.values.size(), 65u);
  EXPECT_EQ(g.values[0], 1);
  EXPECT_EQ(g.values[4], 5);
  EXPECT_EQ(g.values[5], 0);
  EXPECT_EQ(g.values[64], 0);
  // The spacing of the values is kept: 0.25, so the grid runs to 16.
  EXPECT_EQ(g.h, 0.25);
  EXPECT_EQ(g.a, 0.0);
  EXPECT_EQ(g.b, 16.0);
  EXPECT_EQ(five.remarks, "r");
  EXPECT_EQ(SliceResult(std::vector<double>(65, 1.0), 0, 1, "").points, 64);
  EXPECT_EQ(SliceResult(std::vector<double>(66, 1.0), 0, 1, "").points, 128);
  EXPECT_EQ(SliceResult(std::vector<double>(1025, 1.0), 0, 1, "").points, 1024);
}

TEST(Slices, ANewFormTakesTheValuesAndTheAudioSettings) {
  testing::TestFrame t;
  ASSERT_TRUE(SendToOneDimensionalForm(t.frame, {0.5, 1.5, 2.5}, -1.0, 1.0, "", {"11025", "3", false}));
  ASSERT_EQ(t.frame.OpenForms().size(), 1u);
  Form& f = *t.frame.OpenForms()[0];
  EXPECT_EQ(f.Kind(), FormKind::Graph1);
  EXPECT_EQ(f.Points(), 64);
  EXPECT_EQ(f.Graphs()[0].values[2], 2.5);
  EXPECT_EQ(f.controls().Text("TxtSound(1)"), "11025");
  EXPECT_EQ(f.controls().Text("TxtSound(2)"), "3");
}

}  // namespace
}  // namespace keldo
