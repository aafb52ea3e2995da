// The scan line over the spectrogram while its signal plays: the timing by
// hand, its walk tick by tick on the headless timers, its end with the
// sound, with a stop and with a new play, and its drawing.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "form1d/graph1_form.h"
#include "kit/scan_line.h"
#include "kit/typed_forms.h"
#include "platform/headless/raster_surface.h"
#include "test_frame.h"
#include "timefreq/spectrogram_form.h"

namespace keldo {
namespace {

using form1d::Graph1Form;
using testing::TestFrame;
using timefreq::SpectrogramForm;

// A spectrogram of sin(40 x) over 1024 points, computed, with the play box
// at `rate` Hz.
SpectrogramForm& PlayableSpectrogram(TestFrame& t, const std::string& rate = "8000") {
  int code = 0;
  Graph1Form& f = *NewFormOf<Graph1Form>(t.frame, code);
  f.SetPoints(1024);
  f.RunMenu("mnuPlotGraph");
  f.controls().SetText("Formula", "sin(40*x)");
  EXPECT_TRUE(f.Go());
  f.RunMenu("mnuSpectrogram");
  f.controls().SetText("TxtGraphStat", "1");
  EXPECT_TRUE(f.Go());
  SpectrogramForm* s = FormAs<SpectrogramForm>(t.frame.OpenForms().back());
  EXPECT_NE(s, nullptr);
  s->RunMenu("mnuSpectrogram");
  EXPECT_TRUE(s->Go());
  EXPECT_TRUE(s->Present());
  s->RunMenu("mnuAudio");
  s->controls().SetText("TxtSound(1)", rate);
  return *s;
}

void Play(SpectrogramForm& s) {
  s.RunMenu("mnuAudio");
  ASSERT_TRUE(s.Go());
}

TEST(ScanLineTiming, TheStepIsTheFewestPixelsOfAtLeastTwentyMilliseconds) {
  // 1025 samples at 8000 Hz last 128.125 ms, 0.25 ms a pixel of 512:
  // step ceil(20 / 0.25...) = ceil(79.92) = 80, interval round(20.02) = 20,
  // ticks ceil(512 / 80) = 7.
  ScanLineTiming t = ScanLineTimingOf(512, 1025, 8000);
  EXPECT_EQ(t.stepPixels, 80);
  EXPECT_EQ(t.intervalMs, 20);
  EXPECT_EQ(t.ticks, 7);
  // 1000 samples at 1000 Hz over 100 pixels: 10 ms a pixel, a step of 2
  // pixels every 20 ms exactly, 50 ticks.
  t = ScanLineTimingOf(100, 1000, 1000);
  EXPECT_EQ(t.stepPixels, 2);
  EXPECT_EQ(t.intervalMs, 20);
  EXPECT_EQ(t.ticks, 50);
  // 65537 samples at 441 Hz over 512 pixels: 148609.98 ms, 290.25 ms a
  // pixel: one pixel a tick.
  t = ScanLineTimingOf(512, 65537, 441);
  EXPECT_EQ(t.stepPixels, 1);
  EXPECT_EQ(t.intervalMs, 290);
  EXPECT_EQ(t.ticks, 512);
  // 3 ms a pixel: 7 pixels (21 ms) a tick; 300 / 7 gives 43 ticks, the
  // last at 294.
  t = ScanLineTimingOf(300, 900, 1000);
  EXPECT_EQ(t.stepPixels, 7);
  EXPECT_EQ(t.intervalMs, 21);
  EXPECT_EQ(t.ticks, 43);
  // A sound shorter than one interval: one step wider than the picture.
  t = ScanLineTimingOf(512, 65, 44100);
  EXPECT_EQ(t.stepPixels, 6948);  // ceil(512 * 44100 / 3250)
  EXPECT_EQ(t.ticks, 1);
  EXPECT_EQ(t.intervalMs, 20);  // round(1.474 ms * 6948 / 512) = round(20.0)
  // Nothing to animate.
  EXPECT_EQ(ScanLineTimingOf(0, 1025, 8000).ticks, 0);
  EXPECT_EQ(ScanLineTimingOf(512, 0, 8000).ticks, 0);
  EXPECT_EQ(ScanLineTimingOf(512, 1025, 0).ticks, 0);
}

TEST(ScanLine, PlayingTheSignalWalksTheLineAcrossThePictureAndHidesIt) {
  TestFrame t;
  SpectrogramForm& s = PlayableSpectrogram(t);
  Play(s);
  ASSERT_EQ(t.platform.audio.LastSamples().size(), 1025u);
  const ScanLine& line = s.PlayScanLine();
  // An undrawn picture is 512 pixels wide: the timing above.
  EXPECT_EQ(line.Width(), 512);
  EXPECT_EQ(line.Timing().stepPixels, 80);
  EXPECT_EQ(line.Timing().intervalMs, 20);
  EXPECT_TRUE(line.Running());
  EXPECT_TRUE(line.Visible());
  EXPECT_EQ(line.X(), 0);
  EXPECT_TRUE(line.Positions().empty());
  // Nothing moves before the first interval has passed.
  t.platform.timers.Advance(19);
  EXPECT_TRUE(line.Positions().empty());
  t.platform.timers.Advance(1);
  EXPECT_EQ(line.Positions(), std::vector<int>{0});
  t.platform.timers.Advance(40);
  EXPECT_EQ(line.Positions(), (std::vector<int>{0, 80, 160}));
  EXPECT_EQ(line.X(), 160);
  // The seventh tick puts it at 480, the last place below 512.
  t.platform.timers.Advance(80);
  EXPECT_EQ(line.Positions(), (std::vector<int>{0, 80, 160, 240, 320, 400, 480}));
  EXPECT_TRUE(line.Visible());
  EXPECT_TRUE(line.Running());
  // The eighth finds 7 * 80 = 560 beyond the width: the timer goes off and
  // the line hides, its positions kept.
  t.platform.timers.Advance(20);
  EXPECT_FALSE(line.Running());
  EXPECT_FALSE(line.Visible());
  EXPECT_EQ(t.platform.timers.Running(), 0);
  EXPECT_EQ(line.Positions().size(), 7u);
  EXPECT_EQ(t.platform.timers.Now(), 160);
}

TEST(ScanLine, ItIsDrawnWhereItStandsAndThePictureDrawnSetsTheWidth) {
  TestFrame t;
  SpectrogramForm& s = PlayableSpectrogram(t);
  platform::RasterSurface surface(300, 120);
  // Drawing the picture notes its width: the next play walks over 300
  // pixels. 1025 samples at 8000 Hz: ceil(300 * 8000 / 51250) = 47
  // pixels, round(128.125 * 47 / 300) = 20 ms, 7 ticks.
  s.Paint(0, surface);
  Play(s);
  const ScanLine& line = s.PlayScanLine();
  EXPECT_EQ(line.Width(), 300);
  EXPECT_EQ(line.Timing().stepPixels, 47);
  EXPECT_EQ(line.Timing().ticks, 7);
  t.platform.timers.Advance(60);
  ASSERT_EQ(line.Positions(), (std::vector<int>{0, 47, 94}));
  s.Paint(0, surface);
  for (int y : {0, 60, 119}) EXPECT_EQ(surface.GetPixel(94, y), kScanLineColour) << y;
  EXPECT_NE(surface.GetPixel(93, 60), kScanLineColour);
  EXPECT_NE(surface.GetPixel(95, 60), kScanLineColour);
  // On a surface of twice the width the line stands twice as far.
  platform::RasterSurface wide(600, 50);
  s.Paint(0, wide);
  EXPECT_EQ(wide.GetPixel(188, 25), kScanLineColour);
  // Once hidden it is not drawn.
  t.platform.timers.RunUntilStopped(100);
  EXPECT_FALSE(line.Visible());
  s.Paint(0, surface);
  for (int x = 0; x < 300; ++x) ASSERT_NE(surface.GetPixel(x, 60), kScanLineColour) << x;
}

TEST(ScanLine, StoppingTheSoundEndsItAtTheNextTick) {
  TestFrame t;
  SpectrogramForm& s = PlayableSpectrogram(t);
  Play(s);
  t.platform.timers.Advance(40);
  t.platform.audio.Stop();
  // The line still shows until the timer's next tick notices.
  EXPECT_TRUE(s.PlayScanLine().Visible());
  t.platform.timers.Advance(20);
  EXPECT_FALSE(s.PlayScanLine().Visible());
  EXPECT_FALSE(s.PlayScanLine().Running());
  EXPECT_EQ(t.platform.timers.Running(), 0);
  EXPECT_EQ(s.PlayScanLine().Positions(), (std::vector<int>{0, 80}));
}

TEST(ScanLine, AnotherSoundEndsItAndANewPlayStartsItAgain) {
  TestFrame t;
  SpectrogramForm& s = PlayableSpectrogram(t);
  Play(s);
  t.platform.timers.Advance(60);
  EXPECT_EQ(s.PlayScanLine().Positions().size(), 3u);
  // The same form plays again: one timer, the walk from the left edge.
  Play(s);
  EXPECT_EQ(t.platform.timers.Running(), 1);
  EXPECT_TRUE(s.PlayScanLine().Positions().empty());
  EXPECT_EQ(s.PlayScanLine().X(), 0);
  t.platform.timers.Advance(20);
  EXPECT_EQ(s.PlayScanLine().Positions(), std::vector<int>{0});
  // Any other sound replaces this one: the line ends.
  ASSERT_TRUE(t.platform.audio.Play({1, 2, 3}, 8000));
  t.platform.timers.Advance(20);
  EXPECT_FALSE(s.PlayScanLine().Running());
  EXPECT_FALSE(s.PlayScanLine().Visible());
  EXPECT_EQ(s.PlayScanLine().Positions(), std::vector<int>{0});
}

TEST(ScanLine, APlayThatFailsStartsNoLine) {
  TestFrame t;
  SpectrogramForm& s = PlayableSpectrogram(t, "100");
  Play(s);
  EXPECT_EQ(t.lines.back(), "message 38: Invalid sampling rate. Use an integer from 441 to 44100.");
  EXPECT_FALSE(s.PlayScanLine().Running());
  t.platform.audio.SetDeviceAvailable(false);
  s.controls().SetText("TxtSound(1)", "8000");
  Play(s);
  EXPECT_FALSE(s.PlayScanLine().Running());
  EXPECT_EQ(t.platform.timers.Running(), 0);
}

TEST(ScanLine, ClosingTheFormSwitchesItsTimerOff) {
  TestFrame t;
  SpectrogramForm& s = PlayableSpectrogram(t);
  Play(s);
  EXPECT_EQ(t.platform.timers.Running(), 1);
  s.RunMenu("mnuClose");
  // A closed form goes between commands, and its timer with it.
  t.frame.CollectClosedForms();
  EXPECT_EQ(t.platform.timers.Running(), 0);
}

TEST(ScanLine, TheDumpShowsThePositionsOnTheSignalGraph) {
  TestFrame t;
  SpectrogramForm& s = PlayableSpectrogram(t);
  // The signal graph's "scanline" field: a list, empty before any play.
  const auto scanline = [&s] {
    const std::vector<GraphSummary> graphs = s.Graphs();
    for (const GraphSummary::Field& f : graphs[0].fields)
      if (f.name == "scanline") return f;
    return GraphSummary::Field{};
  };
  EXPECT_EQ(scanline().name, "scanline");
  EXPECT_TRUE(scanline().numberList);
  EXPECT_TRUE(scanline().numbers.empty());
  Play(s);
  t.platform.timers.RunUntilStopped(100);
  EXPECT_EQ(scanline().numbers, (std::vector<double>{0, 80, 160, 240, 320, 400, 480}));
}

}  // namespace
}  // namespace keldo
