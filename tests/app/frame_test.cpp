#include <gtest/gtest.h>

#include <new>

#include "kit/basic_form.h"
#include "test_frame.h"

namespace keldo {
namespace {

using testing::TestFrame;

// A form that records what LoadForm was given.
class RecordingForm final : public Form {
 public:
  RecordingForm(FormContext& f, FormKind k, std::vector<std::string>* log, bool succeed)
      : Form(f, k), log_(log), succeed_(succeed) {}
  bool LoadForm(const std::string& path, const std::string& title) override {
    log_->push_back(path + "|" + title);
    return succeed_;
  }

 private:
  std::vector<std::string>* log_;
  bool succeed_;
};

struct ProcessFixture : ::testing::Test {
  TestFrame t;
  std::vector<std::string> loads;
  void UseRecordingForms(bool succeed) {
    for (FormKind k : {FormKind::Graph1, FormKind::Graph2})
      t.frame.RegisterKind(k, [this, k, succeed](FormContext& f) {
        return std::make_unique<RecordingForm>(f, k, &loads, succeed);
      });
  }
};

TEST_F(ProcessFixture, ShortTextIsIgnored) {
  UseRecordingForms(true);
  for (const char* text : {"", "\"a.kd1", "a.kd1\"", "  .kd1  ", "\".kd1\"", "x.KD1"}) t.frame.Process(text);
  EXPECT_TRUE(loads.empty());
  EXPECT_TRUE(t.frame.OpenForms().empty());
  EXPECT_TRUE(t.lines.empty());
}

TEST_F(ProcessFixture, OtherExtensionIsIgnoredSilently) {
  UseRecordingForms(true);
  t.frame.Process("\"/home/user/data/signal.kb1\"");
  t.frame.Process("\"picture.bmp\"");
  EXPECT_TRUE(loads.empty());
  EXPECT_TRUE(t.frame.OpenForms().empty());
  EXPECT_TRUE(t.lines.empty());
}

TEST_F(ProcessFixture, QuotesAreStrippedAndTheKindFollowsTheExtension) {
  UseRecordingForms(true);
  t.frame.Process("  \"/tmp/figures/Wave.kd1\"  ");
  ASSERT_EQ(loads.size(), 1u);
  EXPECT_EQ(loads[0], "/tmp/figures/Wave.kd1|WAVE.KD1");
  ASSERT_EQ(t.frame.OpenForms().size(), 1u);
  EXPECT_EQ(t.frame.OpenForms()[0]->Kind(), FormKind::Graph1);
  EXPECT_EQ(t.frame.OpenForms()[0]->Caption(), "WAVE.KD1");

  t.frame.Process("\"c:\\figures\\image.Kd2\"");
  ASSERT_EQ(loads.size(), 2u);
  EXPECT_EQ(loads[1], "c:\\figures\\image.Kd2|IMAGE.KD2");
  EXPECT_EQ(t.frame.OpenForms()[1]->Kind(), FormKind::Graph2);
}

TEST_F(ProcessFixture, SevenCharactersAreEnough) {
  UseRecordingForms(true);
  t.frame.Process("\"a.kd1\"");  // exactly seven characters
  ASSERT_EQ(loads.size(), 1u);
  EXPECT_EQ(loads[0], "a.kd1|A.KD1");
}

TEST_F(ProcessFixture, FailedLoadReports73AndKeepsNoForm) {
  UseRecordingForms(false);
  t.frame.Process("\"missing.kd1\"");
  EXPECT_EQ(t.lines, std::vector<std::string>{"message 73: Error loading form."});
  EXPECT_TRUE(t.frame.OpenForms().empty());
}

TEST_F(ProcessFixture, FactoryOutOfMemoryReports72) {
  t.frame.RegisterKind(FormKind::Graph1, [](FormContext&) -> std::unique_ptr<Form> { throw std::bad_alloc(); });
  t.frame.Process("\"big.kd1\"");
  EXPECT_EQ(t.lines, std::vector<std::string>{"message 72: Error loading form, not enough memory."});
}

TEST_F(ProcessFixture, FactoryOtherFailureReports73) {
  t.frame.RegisterKind(FormKind::Graph2, [](FormContext&) -> std::unique_ptr<Form> { throw 5; });
  int code = 0;
  EXPECT_EQ(t.frame.NewForm(FormKind::Graph2, code), nullptr);
  EXPECT_LT(code, 0);
  EXPECT_NE(code, kOutOfMemoryCode);
  t.frame.ReportFactoryFailure(code);
  EXPECT_EQ(t.lines, std::vector<std::string>{"message 73: Error loading form."});
}

TEST(Factories, CaptionsKeepTheLeadingBlankOfTheNumber) {
  TestFrame t;
  int code = 0;
  EXPECT_EQ(t.frame.NewForm(FormKind::Graph1, code)->Caption(), "1DGraph  1");
  EXPECT_EQ(t.frame.NewForm(FormKind::Graph2, code)->Caption(), "2DGraph  1");
  EXPECT_EQ(t.frame.NewForm(FormKind::SoundEditor, code)->Caption(), "Sound Editor  1");
  EXPECT_EQ(t.frame.NewForm(FormKind::Spectrogram, code)->Caption(), "Spectrogram  1");
  EXPECT_EQ(t.frame.NewForm(FormKind::Scalogram, code)->Caption(), "Scalogram  1");
  EXPECT_EQ(t.frame.NewForm(FormKind::ImageProcessor, code)->Caption(), "Image Processor  1");
  EXPECT_EQ(t.frame.NewForm(FormKind::Graph1, code)->Caption(), "1DGraph  2");
  EXPECT_EQ(code, 0);
}

TEST(Factories, NumbersAreNeverReused) {
  TestFrame t;
  int code = 0;
  Form* first = t.frame.NewForm(FormKind::Graph1, code);
  Form* second = t.frame.NewForm(FormKind::Graph1, code);
  EXPECT_EQ(second->Caption(), "1DGraph  2");
  t.frame.CloseForm(*second);
  t.frame.CloseForm(*first);
  t.frame.CollectClosedForms();
  EXPECT_EQ(t.frame.NewForm(FormKind::Graph1, code)->Caption(), "1DGraph  3");
  EXPECT_EQ(t.frame.CreatedCount(FormKind::Graph1), 3);
}

TEST(Cascade, EighthFormReturnsToTheFirstPosition) {
  TestFrame t;
  t.platform.screen.SetSize({1000, 800});
  int code = 0;
  std::vector<Form*> forms;
  for (int i = 0; i < 9; ++i) forms.push_back(t.frame.NewForm(i % 2 ? FormKind::Graph2 : FormKind::Graph1, code));
  for (int i = 0; i < 9; ++i) {
    const int k = i % 7;
    EXPECT_EQ(forms[i]->left, k * 1000 / 20) << i;
    EXPECT_EQ(forms[i]->top, k * 800 / 20) << i;
  }
  EXPECT_EQ(forms[7]->left, 0);
  EXPECT_EQ(forms[7]->top, 0);
  EXPECT_EQ(t.frame.CascadePosition(), 9);
}

TEST(Cascade, ClosingLowersThePositionButNotBelowZero) {
  TestFrame t;
  int code = 0;
  Form* a = t.frame.NewForm(FormKind::Graph1, code);
  Form* b = t.frame.NewForm(FormKind::Graph1, code);
  EXPECT_EQ(t.frame.CascadePosition(), 2);
  t.frame.CloseForm(*b);
  EXPECT_EQ(t.frame.CascadePosition(), 1);
  t.frame.CloseForm(*a);
  EXPECT_EQ(t.frame.CascadePosition(), 0);
  Form* c = t.frame.NewForm(FormKind::Graph1, code);
  EXPECT_EQ(c->left, 0);
  EXPECT_EQ(t.frame.CascadePosition(), 1);
}

TEST(FrameMessages, ShowErrorAppendsTheFullStopAndRestoresThePointer) {
  TestFrame t;
  t.frame.ShowBusy();
  EXPECT_EQ(t.platform.pointer.Shape(), platform::PointerShape::Hourglass);
  t.frame.ShowError(23);
  EXPECT_EQ(t.platform.pointer.Shape(), platform::PointerShape::Default);
  t.frame.ShowBusyArrow();
  EXPECT_EQ(static_cast<int>(t.platform.pointer.Shape()), 13);
  t.frame.ShowIdle();
  EXPECT_EQ(static_cast<int>(t.platform.pointer.Shape()), 0);
  t.frame.ShowError(4242);
  t.frame.ShowCritical("Overflow.  ");
  ASSERT_EQ(t.lines.size(), 3u);
  EXPECT_EQ(t.lines[0], "message 23: Improper formula.");
  EXPECT_EQ(t.lines[1], "message 4242: Error.");
  EXPECT_EQ(t.lines[2], "message: Overflow.  ");
  const auto& shown = t.platform.dialogs.Shown();
  EXPECT_EQ(shown[0].icon, platform::MessageIcon::Critical);
  EXPECT_EQ(shown[2].icon, platform::MessageIcon::Critical);
  EXPECT_TRUE(shown[2].title.empty());
}

TEST(FrameMenu, CaptionsInOrder) {
  TestFrame t;
  std::vector<std::string> titles, file;
  for (const MenuNode& n : t.frame.MenuBar()) titles.push_back(t.frame.controls().Text(n.name));
  EXPECT_EQ(titles, (std::vector<std::string>{"&File", "&Edit", "&View", "&Graph", "&Series", "&Transform",
                                              "&Convolve", "&Analysis", "&Help"}));
  for (const MenuNode& n : t.frame.MenuBar().front().children)
    if (!n.IsSeparator()) file.push_back(t.frame.controls().Text(n.name));
  EXPECT_EQ(file, (std::vector<std::string>{"New &1 Dim ", "New &2 Dim", "New &Audio editor", "New &Image processor",
                                            "&Open form", "Open sound file (*.wav)", "Open 1D data File ",
                                            "Open image file", "Open 2D data file", "E&xit"}));
  std::vector<std::string> help;
  for (const MenuNode& n : t.frame.MenuBar().back().children) help.push_back(t.frame.controls().Text(n.name));
  EXPECT_EQ(help, (std::vector<std::string>{"&Getting started", "&About KELDO"}));
  for (size_t i = 1; i + 1 < t.frame.MenuBar().size(); ++i) EXPECT_TRUE(t.frame.MenuBar()[i].children.empty());
}

TEST(FrameMenu, NewItemsCreateFormsAndExitEnds) {
  TestFrame t;
  EXPECT_TRUE(t.frame.RunMenu("mnuNew1Dim"));
  EXPECT_TRUE(t.frame.RunMenu("mnuNewAudioEditor"));
  ASSERT_EQ(t.frame.OpenForms().size(), 2u);
  EXPECT_EQ(t.frame.Current()->Caption(), "Sound Editor  1");
  EXPECT_FALSE(t.frame.ExitRequested());
  EXPECT_TRUE(t.frame.RunMenu("mnuExit"));
  EXPECT_TRUE(t.frame.ExitRequested());
  EXPECT_FALSE(t.frame.RunMenu("mnuNoSuchItem"));
}

TEST(FrameMenu, AboutShowsDescriptionAndVersion) {
  TestFrame t;
  t.frame.RunMenu("mnuAbout");
  ASSERT_EQ(t.platform.dialogs.Shown().size(), 1u);
  const std::string text = t.platform.dialogs.Shown()[0].text;
  EXPECT_NE(text.find("A Fourier/Wavelet Analyzer"), std::string::npos);
  EXPECT_NE(text.find("Version 2.0"), std::string::npos);
}

TEST(FrameMenu, GettingStartedOpensItsHelpPage) {
  TestFrame t;
  t.frame.RunMenu("mnuGettingStarted");
  EXPECT_TRUE(t.lines.empty());
  EXPECT_NE(t.platform.help.LastPage().find("getting-started.md"), std::string::npos);
}

TEST(FrameHelp, UnknownHelpFileReports22) {
  TestFrame t;
  t.frame.GetHelp("NOSUCH.HLP", "");
  EXPECT_EQ(t.lines, std::vector<std::string>{"message 22: Error loading help file."});
}

TEST(OpenTheForm, CancelEndsSilently) {
  TestFrame t;
  t.platform.fileDialog.QueueAnswer(std::nullopt);
  t.frame.OpenTheForm();
  EXPECT_TRUE(t.lines.empty());
  EXPECT_TRUE(t.frame.OpenForms().empty());
  ASSERT_EQ(t.platform.fileDialog.Requests().size(), 1u);
  const auto& r = t.platform.fileDialog.Requests()[0];
  EXPECT_EQ(r.filter,
            "1-Dim forms (*.kd1)|*.kd1|2-Dim forms (*.kd2)|*.kd2|Scalogram (*.scg)|*.scg|Spectrograph (*.spg)|*.spg");
  EXPECT_EQ(r.flags, 4096);
  EXPECT_EQ(r.initialFolder, std::string(KELDO_SOURCE_DIR) + "/figures");
}

TEST(OpenTheForm, FilterIndexChoosesTheKindAndTheFolderIsKept) {
  TestFrame t;
  std::vector<FormKind> made;
  for (FormKind k : {FormKind::Graph1, FormKind::Graph2, FormKind::Scalogram, FormKind::Spectrogram})
    t.frame.RegisterKind(k, [k, &made](FormContext& f) {
      made.push_back(k);
      struct Loads final : Form {
        using Form::Form;
        bool LoadForm(const std::string&, const std::string&) override { return true; }
      };
      return std::make_unique<Loads>(f, k);
    });
  t.platform.fileDialog.QueueAnswer("/tmp/forms/a.scg");
  t.frame.OpenTheForm();
  t.platform.fileDialog.QueueAnswer("/tmp/other/b.spg");
  t.frame.OpenTheForm();
  EXPECT_EQ(made, (std::vector<FormKind>{FormKind::Scalogram, FormKind::Spectrogram}));
  EXPECT_EQ(t.frame.OpenForms()[0]->Caption(), "a.scg");
  EXPECT_EQ(t.frame.settings().dialogFolders[kFolderForms], "/tmp/other");
  EXPECT_EQ(t.platform.fileDialog.Requests()[1].initialFolder, "/tmp/forms");
}

TEST(GetFileTitle, LastPartOfThePath) {
  EXPECT_EQ(GetFileTitle("c:\\keldo\\figures\\wave.kd1"), "wave.kd1");
  EXPECT_EQ(GetFileTitle("/a/b/c.kd2"), "c.kd2");
  EXPECT_EQ(GetFileTitle("plain"), "plain");
}

}  // namespace
}  // namespace keldo

namespace keldo {
namespace {

TEST(QuickHelp, HelpButtonStoresYAndOpensTheTopic) {
  testing::TestFrame t;
  t.platform.dialogs.QueueAnswer(std::string("Help"));
  t.frame.QuickHelp("Quick help", "The number of levels", "KELDOX.HLP", "Graphing");
  EXPECT_EQ(t.frame.settings().captions.at("labHelp"), "Y");
  EXPECT_NE(t.platform.help.LastPage().find("graphing.md"), std::string::npos);
  EXPECT_EQ(t.lines, std::vector<std::string>{"message: The number of levels"});
}

TEST(QuickHelp, CloseLeavesNAndOpensNothing) {
  testing::TestFrame t;
  t.frame.QuickHelp("Quick help", "The energy fraction", "KELDOX.HLP", "Graphing");
  EXPECT_EQ(t.frame.settings().captions.at("labHelp"), "N");
  EXPECT_TRUE(t.platform.help.LastPage().empty());
}

}  // namespace
}  // namespace keldo
