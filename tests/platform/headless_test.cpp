#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

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

TEST(HeadlessAudio, ItsSoundNumberChangesWithEachPlayAndStopOnly) {
  HeadlessAudio a;
  const long long first = a.SoundNumber();
  ASSERT_TRUE(a.Play(std::vector<std::int16_t>(8000, 0), 8000));
  const long long playing = a.SoundNumber();
  EXPECT_NE(playing, first);
  // 8000 samples at 8000 Hz: a second left; 1 sample: 1/8000 s, rounded up.
  EXPECT_EQ(a.RemainingMilliseconds(), 1000);
  a.Finish();
  EXPECT_EQ(a.SoundNumber(), playing);
  EXPECT_EQ(a.RemainingMilliseconds(), 0);
  ASSERT_TRUE(a.Play({1}, 8000));
  EXPECT_EQ(a.RemainingMilliseconds(), 1);
  const long long second = a.SoundNumber();
  EXPECT_NE(second, playing);
  a.Stop();
  EXPECT_NE(a.SoundNumber(), second);
}

TEST(HeadlessTimers, TicksRunInTimeOrderOnlyWhenTheClockMoves) {
  HeadlessTimers timers;
  std::vector<std::string> ticks;
  const int a = timers.Start(30, [&] { ticks.push_back("a" + std::to_string(timers.Now())); });
  timers.Start(20, [&] { ticks.push_back("b" + std::to_string(timers.Now())); });
  EXPECT_GT(a, 0);
  EXPECT_TRUE(ticks.empty());
  timers.Advance(59);
  // Due at 20, 30, 40; at 60 both, a first as it was started first.
  EXPECT_EQ(ticks, (std::vector<std::string>{"b20", "a30", "b40"}));
  EXPECT_EQ(timers.Now(), 59);
  timers.Advance(1);
  EXPECT_EQ(ticks, (std::vector<std::string>{"b20", "a30", "b40", "a60", "b60"}));
  timers.Stop(a);
  timers.Stop(a);  // no longer running: ignored
  timers.Advance(40);
  EXPECT_EQ(ticks.back(), "b100");
  EXPECT_EQ(timers.Running(), 1);
  EXPECT_EQ(timers.Ticks(), 7);
}

TEST(HeadlessTimers, ATickMayStopItselfAndRunUntilStoppedEndsWithTheLast) {
  HeadlessTimers timers;
  int count = 0;
  int id = 0;
  id = timers.Start(25, [&] {
    if (++count == 3) timers.Stop(id);
  });
  // A timer that never stops is cut off at the limit.
  int forever = 0;
  const int other = timers.Start(1000, [&] { ++forever; });
  EXPECT_EQ(timers.RunUntilStopped(2), 2);
  EXPECT_EQ(count, 2);
  EXPECT_EQ(timers.Now(), 50);
  timers.Stop(other);
  EXPECT_EQ(timers.RunUntilStopped(100), 1);
  EXPECT_EQ(count, 3);
  EXPECT_EQ(forever, 0);
  EXPECT_EQ(timers.Now(), 75);
  EXPECT_EQ(timers.Running(), 0);
  // A tick that starts a timer: it is due one interval after that tick.
  std::vector<long long> at;
  timers.Start(10, [&] {
    at.push_back(timers.Now());
    if (at.size() == 1) timers.Start(5, [&] { at.push_back(-timers.Now()); });
  });
  timers.Advance(20);
  // At 95 both are due: the one started first ticks first.
  EXPECT_EQ(at, (std::vector<long long>{85, -90, 95, -95}));
}

}  // namespace
}  // namespace keldo::platform
