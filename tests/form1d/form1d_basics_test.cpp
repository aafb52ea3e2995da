#include <gtest/gtest.h>

#include "form1d/graph1_form.h"
#include "kit/typed_forms.h"
#include "test_frame.h"

namespace keldo {
namespace {

using testing::TestFrame;

form1d::Graph1Form& NewGraph1(TestFrame& t) {
  int code = 0;
  return *NewFormOf<form1d::Graph1Form>(t.frame, code);
}

TEST(Graph1Form, Defaults) {
  TestFrame t;
  auto& f = NewGraph1(t);
  EXPECT_EQ(f.Points(), 1024);
  EXPECT_EQ(f.Log2Points(), 10);
  EXPECT_EQ(f.GraphCount(), 0);
  EXPECT_EQ(f.Window(), (std::array<double, 4>{-0.5, 0.5, 0.0, 0.0}));
  EXPECT_EQ(f.controls().Text("EndRValue"), ".5");
  EXPECT_EQ(f.controls()["mnu1024"].value, 1);
  EXPECT_EQ(f.controls()["mnu64"].value, 0);
}

TEST(Graph1Form, PointsMenuChangesNWithoutPromptAndKeepsTheWindow) {
  TestFrame t;
  auto& f = NewGraph1(t);
  EXPECT_TRUE(f.RunMenu("mnu64"));
  EXPECT_EQ(f.Points(), 64);
  EXPECT_EQ(f.Log2Points(), 6);
  EXPECT_EQ(f.controls()["mnu64"].value, 1);
  EXPECT_EQ(f.controls()["mnu1024"].value, 0);
  EXPECT_EQ(f.controls().Text("NumPoints"), "64");
  EXPECT_EQ(f.Window(), (std::array<double, 4>{-0.5, 0.5, 0.0, 0.0}));
  EXPECT_TRUE(t.lines.empty());
  f.RunMenu("mnu65536");
  EXPECT_EQ(f.Log2Points(), 16);
}

TEST(Graph1Form, FileMenuCaptionsAndUnbuiltItemsDisabled) {
  TestFrame t;
  auto& f = NewGraph1(t);
  const auto& c = f.controls();
  EXPECT_EQ(c.Text("mnuFile"), "&File");
  EXPECT_EQ(c.Text("mnuNew(0)"), "New &1 Dim");
  EXPECT_EQ(c.Text("mnuClose"), "&Close");
  EXPECT_EQ(c.Text("mnuPasteFromClipboard"), "&Paste from Cilpboard");
  EXPECT_TRUE(c.Find("mnuNew(3)")->enabled);
  EXPECT_TRUE(c.Find("mnuClose")->enabled);
  EXPECT_FALSE(c.Find("mnuSpectrogram")->enabled);
  EXPECT_FALSE(c.Find("mnuHelpSideBox")->visible);
  // A disabled item does nothing when run.
  EXPECT_TRUE(f.RunMenu("mnuSpectrogram"));
  EXPECT_TRUE(t.lines.empty());
}

TEST(Graph1Form, FileNewAndCloseGoThroughTheFrame) {
  TestFrame t;
  auto& f = NewGraph1(t);
  f.RunMenu("mnuNew", 1);
  ASSERT_EQ(t.frame.OpenForms().size(), 2u);
  EXPECT_EQ(t.frame.Current()->Caption(), "2DGraph  1");
  t.frame.Current()->RunMenu("mnuClose");
  t.frame.CollectClosedForms();
  ASSERT_EQ(t.frame.OpenForms().size(), 1u);
  f.RunMenu("mnuClose");
  t.frame.CollectClosedForms();
  EXPECT_TRUE(t.frame.OpenForms().empty());
  EXPECT_EQ(t.frame.CascadePosition(), 0);
}

}  // namespace
}  // namespace keldo
