// The formula box on a small form of the test's own: its buttons, the
// history through Previous and Next, the files of one formula and the
// history as a form file keeps it.

#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "kit/form.h"
#include "kit/form_context.h"
#include "kit/formula_box.h"
#include "test_frame.h"

namespace keldo {
namespace {

using testing::TestFrame;

// A file holds the text upper-cased; the box shows it lower-cased.
std::string Upper(std::string_view text) {
  std::string out(text);
  for (char& c : out) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  return out;
}
std::string Lower(std::string_view text) {
  std::string out(text);
  for (char& c : out) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  return out;
}

const FormulaBoxKind kKind{"cmdTest", {"Test formulas (*.utf)|*.utf", ".utf"}, "Help on test formulas",
                           &FrameSettings::formulas2d, Upper, Lower};

class BoxForm final : public Form {
 public:
  explicit BoxForm(FormContext& context) : Form(context, FormKind::Graph2), box(*this, kKind) {
    controls_.Add("Formula", ControlKind::Text, "");
    box.AddControls();
    box.Initialize();
  }
  void FormulaHelp(const std::string& selected) override { helpAsked.push_back(selected); }
  std::string Formula() const { return controls().Text("Formula"); }

  FormulaBox box;
  std::vector<std::string> helpAsked;
};

TEST(FormulaBox, AddsFiveDisabledButtonsNamedForItsKind) {
  TestFrame t;
  BoxForm f(t.frame);
  const char* captions[5] = {"Previous", "Next", "Load", "Save", "Help"};
  for (int k = 0; k < 5; ++k) {
    const Control& b = f.controls()[IndexedName("cmdTest", k)];
    EXPECT_EQ(b.text, captions[k]);
    EXPECT_FALSE(b.enabled);
  }
  EXPECT_EQ(f.controls()["cmdTest(2)"].tip, "Load a formula file (*.utf)");
  EXPECT_EQ(f.controls()["cmdTest(3)"].tip, "Save the formula to a file (*.utf)");
  EXPECT_EQ(f.controls()["cmdTest(4)"].tip, "Help on test formulas");
  f.box.Enable(true);
  EXPECT_TRUE(f.controls()["cmdTest(0)"].enabled);
  EXPECT_TRUE(f.controls()["cmdTest(4)"].enabled);
}

TEST(FormulaBox, PreviousAndNextWalkThePlottedFormulas) {
  TestFrame t;
  BoxForm f(t.frame);
  f.box.Update("x");
  f.box.Update("x*y");
  f.box.Update("x * y");  // the same formula, spaces aside
  f.box.Update("y");
  EXPECT_EQ(f.box.Plotted(), (std::vector<std::string>{"x", "x*y", "y"}));
  f.box.Press(0);
  EXPECT_EQ(f.Formula(), "x*y");
  f.box.Press(0);
  EXPECT_EQ(f.Formula(), "x");
  f.box.Press(0);  // the first one stays
  EXPECT_EQ(f.Formula(), "x");
  f.box.Press(1);
  f.box.Press(1);
  EXPECT_EQ(f.Formula(), "y");
  f.box.Press(1);  // past the last: an empty field
  EXPECT_EQ(f.Formula(), "");
  f.box.Press(4);
  EXPECT_EQ(f.helpAsked, std::vector<std::string>{""});
}

TEST(FormulaBox, TheListIsSharedByTheFormsOfTheKind) {
  TestFrame t;
  BoxForm first(t.frame);
  first.box.Update("sin(x)");
  first.box.Update("cos(y)");
  EXPECT_EQ(t.frame.settings().formulas2d.maxFormNum, 2);
  BoxForm second(t.frame);
  second.box.Press(0);
  EXPECT_EQ(second.Formula(), "sin(x)");
  EXPECT_TRUE(second.box.Plotted().empty());
}

TEST(FormulaBox, AFormFileKeepsThePlottedFormulasInTheKindsText) {
  TestFrame t;
  BoxForm f(t.frame);
  f.box.UpdateFromFile({"X+Y", "2*X"});
  EXPECT_EQ(f.box.Plotted(), (std::vector<std::string>{"x+y", "2*x"}));
  EXPECT_EQ(f.box.PlottedForFile(), (std::vector<std::string>{"X+Y", "2*X"}));
}

TEST(FormulaBox, SaveAndLoadOneFormulaThroughTheFileDialog) {
  TestFrame t;
  BoxForm f(t.frame);
  const std::filesystem::path path =
      std::filesystem::temp_directory_path() / ("keldo-formula-box-" + std::to_string(::getpid()) + ".utf");
  f.controls().SetText("Formula", "x^2+y");
  t.platform.fileDialog.QueueAnswer(path.string());
  f.box.Press(3);
  std::ifstream in(path, std::ios::binary);
  const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  EXPECT_EQ(bytes, "X^2+Y\r\n");
  f.controls().SetText("Formula", "");
  t.platform.fileDialog.QueueAnswer(path.string());
  f.box.Press(2);
  EXPECT_EQ(f.Formula(), "x^2+y\r\n");
  // A cancelled dialog leaves the field.
  t.platform.fileDialog.QueueAnswer(std::nullopt);
  f.box.Press(2);
  EXPECT_EQ(f.Formula(), "x^2+y\r\n");
  std::filesystem::remove(path);
  EXPECT_TRUE(t.lines.empty());
}

}  // namespace
}  // namespace keldo
