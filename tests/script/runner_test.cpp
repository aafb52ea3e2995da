#include <gtest/gtest.h>

#include <sstream>

#include "kinds/form_kinds.h"
#include "app/frame.h"
#include "platform/headless/headless_services.h"
#include "script/runner.h"
#include "script_fixture.h"

namespace keldo::script {
namespace {

TEST(Runner, NewFormAndDump) {
  Script r;
  EXPECT_EQ(r("new 1d\ndump\n"), 0);
  const std::string json = r.out.str();
  EXPECT_NE(json.find("\"kind\": \"1d\""), std::string::npos);
  EXPECT_NE(json.find("\"caption\": \"1DGraph  1\""), std::string::npos);
  EXPECT_NE(json.find("\"points\": 1024"), std::string::npos);
  EXPECT_NE(json.find("\"window\": [-0.5, 0.5, 0, 0]"), std::string::npos);
  EXPECT_NE(json.find("\"EndRValue\": {\"text\": \".5\""), std::string::npos);
  EXPECT_TRUE(r.err.str().empty());
}

TEST(Runner, EveryKindIsMadeByItsWord) {
  Script r;
  EXPECT_EQ(r("new workshop\ndump brief\nnew spectrogram\ndump brief\nnew AUDIO\ndump brief\n"), 0);
  const std::string json = r.out.str();
  EXPECT_NE(json.find("\"kind\": \"workshop\""), std::string::npos);
  EXPECT_NE(json.find("\"caption\": \"Wavelet Image Compression Workshop\""), std::string::npos);
  EXPECT_NE(json.find("\"kind\": \"spectrogram\""), std::string::npos);
  EXPECT_NE(json.find("\"caption\": \"Spectrogram  1\""), std::string::npos);
  EXPECT_NE(json.find("\"kind\": \"audio\""), std::string::npos);
  EXPECT_TRUE(r.err.str().empty());
}

TEST(Runner, ABriefDumpGivesTheShapeOfAMatrixInsteadOfItsValues) {
  Script r;
  ASSERT_EQ(r("new 2d\nmenu mnu64\nmenu mnuPlot\nset Formula \"x+y\"\ngo\ndump brief\ndump\n"), 0) << r.err.str();
  const std::string json = r.out.str();
  const std::size_t second = json.find("}\n{\n");
  ASSERT_NE(second, std::string::npos);
  const std::string brief = json.substr(0, second), full = json.substr(second);
  EXPECT_NE(brief.find("\"rows\": 65, \"columns\": 65"), std::string::npos) << brief.substr(0, 400);
  EXPECT_EQ(brief.find("\"values\""), std::string::npos);
  // The full dump: 65 rows of 65 values, the first row y = -1/2 from x = -1/2.
  EXPECT_NE(full.find("\"rows\": 65, \"values\": [\n      [-1, -0.984375,"), std::string::npos) << full.substr(0, 400);
}

TEST(Runner, UnknownCommandStopsWithTwoAndTheLineNumber) {
  Script r;
  EXPECT_EQ(r("new 1d\n# comment\n\nfrobnicate now\ndump\n"), 2);
  EXPECT_EQ(r.err.str(), "line 4: unknown command frobnicate\n");
  EXPECT_EQ(r.out.str().find("\"kind\""), std::string::npos);
}

TEST(Runner, UnknownControlFormAndMenuAreErrors) {
  Script a;
  EXPECT_EQ(a("new 1d\nset NoSuchBox 1\n"), 2);
  EXPECT_EQ(a.err.str(), "line 2: unknown control NoSuchBox\n");
  Script b;
  EXPECT_EQ(b("new 1d\nform 3\n"), 2);
  EXPECT_EQ(b.err.str(), "line 2: no form 3\n");
  Script c;
  EXPECT_EQ(c("new 1d\nmenu mnuNoSuch\n"), 2);
  EXPECT_EQ(c.err.str(), "line 2: unknown menu item mnuNoSuch\n");
  Script d;
  EXPECT_EQ(d("set Formula x\n"), 2);
  EXPECT_EQ(d.err.str(), "line 1: no form is open\n");
  Script e;
  EXPECT_EQ(e("new 3d\n"), 2);
  Script f;
  EXPECT_EQ(f("set Formula \"x\n"), 2);
  EXPECT_EQ(f.err.str(), "line 1: unterminated quoted word\n");
}

TEST(Runner, SetMenuFormAndQuotedValues) {
  Script r;
  EXPECT_EQ(r("new 1d\nset Formula \"a*x\\a=2\"\nset IntervalType2 1\nmenu mnu256\nnew 2d\nform 1\ndump\n"), 0);
  const std::string json = r.out.str();
  EXPECT_NE(json.find(R"~("Formula": {"text": "a*x\\a=2")~"), std::string::npos);
  EXPECT_NE(json.find("\"points\": 256"), std::string::npos);
  EXPECT_NE(json.find(R"~("IntervalType1": {"caption": "[-L,L]", "value": 0)~"), std::string::npos);
  EXPECT_NE(json.find(R"~("IntervalType2": {"caption": "[0,L]", "value": 1)~"), std::string::npos);
  EXPECT_EQ(r.frame.CreatedForms().size(), 2u);
}

TEST(Runner, MessagesArePrintedAndGoIntoTheNextDump) {
  Script r;
  r.platform.fileDialog.QueueAnswer(std::nullopt);
  EXPECT_EQ(r("open /no/such/file.kd1\ndump\ndump\n"), 0);
  const std::string out = r.out.str();
  EXPECT_EQ(out.rfind("message 73: Error loading form.\n", 0), 0u);
  const auto first = out.find("\"messages\": [\"message 73: Error loading form.\"]");
  EXPECT_NE(first, std::string::npos);
  EXPECT_NE(out.find("\"messages\": []", first), std::string::npos);
}

TEST(Runner, StrictStopsWithOneAtTheFirstMessage) {
  Script r;
  EXPECT_EQ(r("open /no/such/file.kd1\nnew 1d\n", true), 1);
  EXPECT_TRUE(r.frame.OpenForms().empty());
}

TEST(Runner, ClipboardTextAndFrameMenu) {
  Script r;
  EXPECT_EQ(r("clipboard \"1 2 3\"\nmenu mnuNew1Dim\nmenu mnuClose\ndump\n"), 0);
  EXPECT_NE(r.out.str().find("\"clipboard\": \"1 2 3\""), std::string::npos);
  EXPECT_NE(r.out.str().find("\"kind\": \"frame\""), std::string::npos);
  EXPECT_TRUE(r.frame.OpenForms().empty());
}

TEST(Runner, AnswersFeedTheNextInputBox) {
  Script r;
  EXPECT_EQ(r("answer 42\nanswer cancel\n"), 0);
  EXPECT_EQ(r.platform.dialogs.InputBox({"Enter the value of a", "", ""}), "42");
  EXPECT_EQ(r.platform.dialogs.InputBox({"Enter the value of b", "", ""}), std::nullopt);
  EXPECT_EQ(r.out.str(), "prompt: Enter the value of a\nprompt: Enter the value of b\n");
}

}  // namespace
}  // namespace keldo::script

namespace keldo::script {
namespace {

TEST(Runner, TwoDimensionalMeasuresAndTheGraphClipboardRunByName) {
  Script r;
  const char* script =
      "new 2d\nmenu mnu64\nmenu mnuPlot\nset Formula \"x*y\"\ngo\n"
      "menu mnuNorm\nset OptSupNorm 1\ngo\ndump\n"
      "mouse down 10 10 right\npopup mnuCopyGraph\npopup mnuPasteGraph\n"
      "menu mnuDownSample\nset TxtGraphStat 2\ngo\ndump\n";
  ASSERT_EQ(r(script), 0) << r.err.str();
  const std::string json = r.out.str();
  // x*y over [-1/2, 1/2] square: the largest magnitude is 1/4.
  EXPECT_NE(json.find("Sup-Norm\\r\\n0.25"), std::string::npos) << json.substr(0, 2000);
  // The down sampled copy is the newest form, of side 32.
  EXPECT_NE(json.find("\"points\": 32"), std::string::npos);
}

}  // namespace
}  // namespace keldo::script

namespace keldo::script {
namespace {

// The spectrogram of a 1024-point sine plays at 8000 Hz: 1025 samples,
// 128.125 ms. Its picture, never drawn, is 512 pixels wide: a step of
// ceil(512 * 8000 / (50 * 1025)) = 80 pixels every 20 ms, 7 places.
constexpr const char* kPlaySpectrogram =
    "new 1d\nmenu mnuPlotGraph\nset Formula \"sin(40*x)\"\ngo\n"
    "menu mnuSpectrogram\nset TxtGraphStat 1\ngo\ngo\n"
    "menu mnuAudio\nset TxtSound(1) 8000\ngo\n";

TEST(Runner, WaitRunsTheScanLineThroughTheSoundToItsEnd) {
  Script r;
  ASSERT_EQ(r(std::string(kPlaySpectrogram) + "dump brief\nwait\ndump brief\n"), 0) << r.err.str();
  const std::string out = r.out.str();
  const std::size_t second = out.find("}\n{\n");
  ASSERT_NE(second, std::string::npos);
  // Before `wait` no tick has run; after it every place in order.
  EXPECT_NE(out.substr(0, second).find("\"name\": \"signal\", \"scanline\": []"), std::string::npos);
  EXPECT_NE(out.substr(second).find("\"name\": \"signal\", \"scanline\": [0, 80, 160, 240, 320, 400, 480]"),
            std::string::npos);
  // The sound's 129 ms saw six ticks (20 .. 120 ms); the seventh and the
  // eighth, which switches the timer off, came after it.
  EXPECT_EQ(r.platform.timers.Now(), 160);
  EXPECT_EQ(r.platform.timers.Running(), 0);
  EXPECT_FALSE(r.platform.audio.IsPlaying());
}

TEST(Runner, APlayAgainBeforeWaitStartsTheLineAgain) {
  Script r;
  ASSERT_EQ(r(std::string(kPlaySpectrogram) + "go\nwait\ndump brief\n"), 0) << r.err.str();
  EXPECT_NE(r.out.str().find("\"scanline\": [0, 80, 160, 240, 320, 400, 480]"), std::string::npos);
  EXPECT_EQ(r.platform.audio.PlayCount(), 2);
  EXPECT_EQ(r.platform.timers.Ticks(), 8);
}

}  // namespace
}  // namespace keldo::script

namespace keldo::script {
namespace {

// `caption K` is a double click on picture K's caption: on a 2-D form the
// input box for the graph's caption, answered by the line before it.
// `mouse ... @K` reaches picture K in its own coordinates: here the small
// picture of the first of two graphs, whose pop-up copies that graph.
TEST(Runner, CaptionDoubleClickAndPointerOnAnyPicture) {
  Script r;
  const char* script =
      "new 2d\nmenu mnu64\nmenu mnuPlot\nset Formula \"x*y\"\ngo\nset Formula \"x+y\"\ngo\n"
      "mouse down 0.25 0.25 right @0\npopup mnuCopyGraph\nmouse up 0.25 0.25 @0\n"
      "new 2d\nmenu mnu64\npopup mnuPasteGraph\n"
      "answer Product\ncaption 0\ndump\n";
  ASSERT_EQ(r(script), 0) << r.err.str();
  const std::string json = r.out.str();
  EXPECT_NE(json.find("\"LabGraphSm(0)\": {\"caption\": \"Product\""), std::string::npos) << json.substr(0, 3000);
  // The pasted graph is x*y, the first one: its value at the corner (-1/2, -1/2) is 1/4.
  EXPECT_NE(json.find("\"values\": [\n      [0.25,"), std::string::npos) << json.substr(0, 600);

  Script bad;
  EXPECT_EQ(bad("new 2d\ncaption 4\n"), 2);
  EXPECT_EQ(bad.err.str(), "line 2: caption takes the number of a picture of the form, from 0 to 3\n");
  Script far;
  EXPECT_EQ(far("new 2d\nmouse down 0 0 left @7\n"), 2);
  EXPECT_EQ(far.err.str(), "line 2: no picture 7 on this form\n");
}

}  // namespace
}  // namespace keldo::script
