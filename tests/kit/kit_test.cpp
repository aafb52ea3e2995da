// The form kit on its own: side-box tables, buttons, the graph store, the
// pointer trace and the formula history, on a small form of a test's own.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kit/form_context.h"
#include "kit/formula_history.h"
#include "kit/graph_store.h"
#include "kit/menu_table.h"
#include "kit/pointer_trace.h"
#include "test_frame.h"

namespace keldo {
namespace {

using testing::TestFrame;

constexpr MenuRow kMenu[] = {
    {0, "mnuFile", "&File"}, {1, "mnuFirst", "&First"}, {1, "mnuSecond", "&Second"},
    {1, "mnuThird", "&Third"}, {1, "mnuHelpSideBox", "Help for "},
};

// Three commands over two panels; the third opens the first panel with a
// key of its own and has no Go.
class TableForm final : public Form {
 public:
  explicit TableForm(FormContext& context) : Form(context, FormKind::Graph2) {
    SetMenu(BuildMenu(kMenu, controls_));
    for (int k = 0; k < 2; ++k) controls_.Add(IndexedName("PicSideBox", k), ControlKind::Panel).visible = false;
    for (int k = 0; k < 3; ++k) controls_.Add(IndexedName("GoButton", k), ControlKind::Button, "Go");
    controls_.Add("cmdStep(0)", ControlKind::Button, "<");
    controls_.Add("cmdStep(1)", ControlKind::Button, ">");
    static const SideBoxRow<TableForm> kRows[] = {
        {{"mnuFirst", "One", "First", 0, 0}, &TableForm::Opened, &TableForm::RunFirst},
        {{"mnuSecond", "Two", "Second", 1, 1}, nullptr, &TableForm::RunSecond},
        {{"mnuThird", "", "Third", 0, -1}, &TableForm::Opened, nullptr},
    };
    BindSideBoxes(*this, std::span<const SideBoxRow<TableForm>>(kRows), 2);
    OnButton("cmdStep", [this](int index) { log.push_back("step " + std::to_string(index)); });
    OnButton("cmdStep(1)", [this](int) { log.push_back("exact"); });
  }
  bool IsStopButton(int k) const override { return running && k == 2; }
  bool StopWork() override {
    if (!running) return false;
    running = false;
    log.push_back("stopped");
    return true;
  }
  void Opened(const SideBoxCommand& box) { log.push_back(std::string("open ") + box.topic); }
  void RunFirst() { log.push_back("first"); }
  void RunSecond() { log.push_back("second"); }
  using Form::ShowPanel;
  void Restore(const std::string& key) {
    SetSideBoxKey(key);
    RestoreSideBox();
  }

  std::vector<std::string> log;
  bool running = false;
};

TEST(SideBoxTable, AMenuItemOpensItsPanelAndGoRunsItsRow) {
  TestFrame t;
  TableForm f(t.frame);
  EXPECT_FALSE(f.Go());
  ASSERT_TRUE(f.RunMenu("mnuSecond"));
  EXPECT_EQ(f.VisiblePanel(), 1);
  EXPECT_EQ(f.SideBoxKey(), "Two");
  EXPECT_EQ(f.controls().Text("mnuHelpSideBox"), "Help for Second");
  EXPECT_TRUE(f.Go());
  f.RunMenu("mnuFirst");
  EXPECT_EQ(f.VisiblePanel(), 0);
  EXPECT_TRUE(f.Go());
  EXPECT_EQ(f.log, (std::vector<std::string>{"second", "open First", "first"}));
}

TEST(SideBoxTable, OnlyTheOpenRowsGoButtonRunsIt) {
  TestFrame t;
  TableForm f(t.frame);
  f.RunMenu("mnuFirst");
  f.log.clear();
  EXPECT_TRUE(f.Click("GoButton(1)"));
  EXPECT_TRUE(f.log.empty());
  f.Click("GoButton(0)");
  EXPECT_EQ(f.log, std::vector<std::string>{"first"});
}

TEST(SideBoxTable, ABoxWithoutGoRunsNothingAndRunningWorkStopsFirst) {
  TestFrame t;
  TableForm f(t.frame);
  f.RunMenu("mnuThird");
  f.log.clear();
  EXPECT_FALSE(f.Go());
  f.running = true;
  f.Click("GoButton(2)");
  EXPECT_EQ(f.log, std::vector<std::string>{"stopped"});
  EXPECT_FALSE(f.running);
}

TEST(SideBoxTable, RestoreOpensTheFirstRowOfAKeyAndNothingForAnEmptyOrUnknownKey) {
  TestFrame t;
  TableForm f(t.frame);
  f.Restore("One");
  EXPECT_EQ(f.VisiblePanel(), 0);
  EXPECT_EQ(f.log, std::vector<std::string>{"open First"});
  f.log.clear();
  f.ShowPanel(-1);
  f.Restore("");
  f.Restore("PrGr");
  EXPECT_TRUE(f.log.empty());
  EXPECT_EQ(f.VisiblePanel(), -1);
}

TEST(Buttons, AnExactNameWinsOverItsBaseAndAHiddenButtonDoesNothing) {
  TestFrame t;
  TableForm f(t.frame);
  EXPECT_TRUE(f.Click("cmdStep(0)"));
  EXPECT_TRUE(f.Click("cmdStep(1)"));
  f.controls().SetVisible("cmdStep(0)", false);
  EXPECT_TRUE(f.Click("cmdStep(0)"));
  EXPECT_FALSE(f.Click("cmdNone"));
  EXPECT_FALSE(f.Click("mnuFirst"));
  EXPECT_EQ(f.log, (std::vector<std::string>{"step 0", "exact"}));
}

TEST(GraphStore, GrowsKeepingItsGraphsAndRemovesBySlidingDown) {
  GraphStore<double> s;
  s.Size(5, 2, false);
  EXPECT_EQ(s.values.size(), 15u);
  EXPECT_EQ(s.a.size(), 4u);
  for (int g = 0; g < 2; ++g) {
    for (int i = 0; i < 5; ++i) s.Row(g)[i] = 10 * g + i;
    s.a[static_cast<std::size_t>(g)] = g;
  }
  s.Grow(3);
  EXPECT_EQ(s.capacity, 3);
  EXPECT_EQ(s.Row(1)[4], 14.0);
  s.Row(2)[0] = 20;
  s.a[2] = 2;
  s.Remove(0, 3, 5);
  EXPECT_EQ(s.Row(0)[3], 13.0);
  EXPECT_EQ(s.Row(1)[0], 20.0);
  EXPECT_EQ(s.a[0], 1.0);
  EXPECT_EQ(s.a[1], 2.0);
  s.Size(5, 3, false);
  EXPECT_EQ(s.Row(0)[3], 0.0);
}

TEST(PointerTrace, KeepsSinglePrecisionAndZoomsAroundThePress) {
  PointerTrace p;
  p.Press(0.1, -0.3);
  EXPECT_EQ(p.X(), static_cast<double>(0.1f));
  EXPECT_EQ(p.Y(), static_cast<double>(-0.3f));
  const ViewWindow in = p.ZoomedIn({-1.0, 1.0, -2.0, 2.0}, 4.0);
  EXPECT_DOUBLE_EQ(in.left, p.X() - 0.5);
  EXPECT_DOUBLE_EQ(in.top, p.Y() + 1.0);
  const ViewWindow out = p.ZoomedOut({-1.0, 1.0, -2.0, 2.0}, 1.5);
  EXPECT_DOUBLE_EQ(out.right, p.X() + 3.0);
  EXPECT_DOUBLE_EQ(out.bottom, p.Y() - 6.0);
  p.Read(2.5, 0.25);
  EXPECT_EQ(p.Readout(), "( 2.5, 0.25) ");  // positive numbers keep the blank of their sign
  EXPECT_EQ(p.X(), 2.5);
  p.SetIndex(70, 64);
  EXPECT_EQ(p.Index(), 64);
  p.SetIndex(-3, 64);
  EXPECT_EQ(p.Index(), 0);
}

TEST(FormulaHistory, FilesNewFormulasOnceAndStepsThroughThem) {
  FormulaList shared;
  FormulaHistory h;
  h.Initialize(shared);
  h.Update(shared, "x");
  h.Update(shared, " x ");  // the same formula, spaces aside
  h.Update(shared, "2*x");
  EXPECT_EQ(shared.maxFormNum, 2);
  EXPECT_EQ(h.Plotted(), (std::vector<std::string>{"x", "2*x"}));
  EXPECT_EQ(h.Previous(), "x");
  EXPECT_EQ(h.Previous(), "x");
  EXPECT_EQ(h.Next(), "2*x");
  EXPECT_EQ(h.Next(), "");
  FormulaHistory other;
  other.Initialize(shared);
  EXPECT_EQ(other.Previous(), "x");
}

}  // namespace
}  // namespace keldo
