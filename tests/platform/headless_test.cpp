#include <gtest/gtest.h>

#include "platform/headless/headless_services.h"

namespace keldo::platform {
namespace {

TEST(HeadlessDialogs, PrintsMessagesAndPromptsAndTakesQueuedAnswers) {
  std::vector<std::string> lines;
  HeadlessPlatform p([&](const std::string& l) { lines.push_back(l); }, "/nowhere");
  p.dialogs.QueueAnswer(std::string("3"));
  p.dialogs.QueueAnswer(std::nullopt);
  EXPECT_EQ(p.dialogs.InputBox({"Enter the value of a", "Parameter value needed.", ""}), "3");
  EXPECT_EQ(p.dialogs.InputBox({"Again", "", ""}), std::nullopt);
  EXPECT_EQ(p.dialogs.InputBox({"Nothing queued", "", ""}), std::nullopt);
  p.beeper.Beep();
  p.dialogs.ShowMessage({"Hello", "", MessageIcon::Information, 0, false});
  EXPECT_EQ(lines, (std::vector<std::string>{"prompt: Enter the value of a", "prompt: Again",
                                             "prompt: Nothing queued", "beep", "message: Hello"}));
}

TEST(HeadlessFileDialog, FilterIndexFollowsTheExtension) {
  HeadlessFileDialog d;
  d.QueueAnswer(std::string("/x/y.SPG"));
  d.QueueAnswer(std::string("/x/noext"));
  FileDialogRequest r;
  r.filter = "1-Dim forms (*.kd1)|*.kd1|2-Dim forms (*.kd2)|*.kd2|Scalogram (*.scg)|*.scg|Spectrograph (*.spg)|*.spg";
  const auto a = d.Run(r);
  ASSERT_TRUE(a);
  EXPECT_EQ(a->filterIndex, 4);
  EXPECT_EQ(a->title, "y.SPG");
  r.mode = FileDialogMode::Save;
  r.defaultExtension = ".kb1";
  r.filterIndex = 2;
  const auto b = d.Run(r);
  ASSERT_TRUE(b);
  EXPECT_EQ(b->path, "/x/noext.kb1");
  EXPECT_EQ(b->filterIndex, 2);
  EXPECT_FALSE(d.Run(r));
}

TEST(RasterSurface, DrawsLinesInUserCoordinates) {
  RasterSurface s(11, 11);
  s.Clear(kWhite);
  s.SetScale({-1, 1, 1, -1});
  s.Line(-1, 0, 1, 0, kBlack);
  for (int x = 0; x < 11; ++x) EXPECT_EQ(s.Snapshot().At(x, 5), kBlack) << x;
  EXPECT_EQ(s.Snapshot().At(5, 0), kWhite);
  EXPECT_EQ(s.GetPixel(0.0, 0.0), kBlack);
  s.Line(-1e300, 1e300, 1e300, 1e300, kBlack);  // far outside: nothing, no hang
  EXPECT_EQ(s.Snapshot().At(5, 0), kWhite);
}

TEST(HeadlessAudio, NoDeviceRefusesToPlay) {
  HeadlessAudio a;
  EXPECT_TRUE(a.Play({1, 2, 3}, 8000));
  EXPECT_TRUE(a.IsPlaying());
  a.Finish();
  EXPECT_EQ(a.Position(), 3);
  a.SetDeviceAvailable(false);
  EXPECT_FALSE(a.Play({1}, 8000));
}

}  // namespace
}  // namespace keldo::platform
