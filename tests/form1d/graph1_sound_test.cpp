// Sound on the one-dimensional form: wave files written by Python's wave
// module loaded sample by sample, playing with its checks, the rounding of
// the sample arrays, buffer files, and long files for the sound editor.

#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <fstream>

#include "graph1_test_util.h"
#include "kit/focus.h"
#include "sound/sound_editor_form.h"
#include "wavefile/wave_control.h"

namespace keldo::testing {
namespace {

const std::string kWaves = KELDO_TEST_DATA "/wave/";

TEST(SoundArrays, RoundingAtTheEdges) {
  const double y[] = {32766.5, 32766.6, -32768.5, -32768.6, 2.5, -2.5, 1.0};
  const auto a16 = sound::FillSoundArray(y, 7, 16, 1.0);
  EXPECT_EQ(a16, (std::vector<std::int16_t>{32767, 32767, -32768, -32768, 3, -2, 1}));
  const double z[] = {126.5, 126.6, -128.5, -128.6, 2.5, 1.0, -0.5};
  const auto a8 = sound::FillSoundArray(z, 7, 8, 1.0);
  EXPECT_EQ(a8, (std::vector<std::int16_t>{255, 255, 0, 0, 131, 129, 128}));
  // The second rule rounds s + 0.5 half to even: 1 + 0.5 goes to 2.
  const auto b8 = sound::FillSoundArray2(z, 7, 8, 1.0);
  EXPECT_EQ(b8, (std::vector<std::int16_t>{255, 255, 0, 0, 131, 130, 128}));
  EXPECT_EQ(sound::NumberSoundPoints(64), 64);
  EXPECT_EQ(sound::NumberSoundPoints(65), 128);
  EXPECT_EQ(sound::NumberSoundPoints(16385), 16384);
  EXPECT_EQ(sound::NumberSoundPoints(16386), 32768);
  EXPECT_EQ(sound::NumberSoundPoints(65537), 65536);
}

TEST(WaveLoading, EightBitFileSampleBySample) {
  TestFrame t;
  auto& f = NewForm(t, 64);
  ASSERT_TRUE(f.LoadDataFile(kWaves + "ramp8.wav", "ramp8.wav"));
  EXPECT_EQ(f.Points(), 512);
  const auto g = f.Graphs()[0];
  EXPECT_EQ(g.a, 0.0);
  EXPECT_DOUBLE_EQ(g.b, 512.0 / 8000);
  EXPECT_DOUBLE_EQ(g.h, 1.0 / 8000);
  for (int j = 0; j < 288; ++j) EXPECT_EQ(g.values[static_cast<std::size_t>(j)], (7 * j) % 256 - 128) << j;
  for (int j = 288; j <= 512; ++j) EXPECT_EQ(g.values[static_cast<std::size_t>(j)], 0.0) << j;  // the last 12 left off
  EXPECT_EQ(f.controls().Text("TxtSound(1)"), "8000");
  EXPECT_EQ(f.controls()["OpBitRate(0)"].value, 1);
}

TEST(WaveLoading, SixteenBitShortStereoAndNonsense) {
  TestFrame t;
  auto& f = NewForm(t, 64);
  ASSERT_TRUE(f.LoadDataFile(kWaves + "sine16.wav", "sine16.wav"));
  EXPECT_EQ(f.Points(), 1024);
  for (int j = 0; j < 988; ++j)
    EXPECT_EQ(f.GraphValues(0)[j], std::nearbyint(12000 * std::sin(j / 10.0))) << j;
  EXPECT_EQ(f.controls()["OpBitRate(1)"].value, 1);
  auto& g = NewForm(t, 64);
  ASSERT_TRUE(g.LoadDataFile(kWaves + "short20.wav", "short20.wav"));
  EXPECT_EQ(g.Points(), 64);
  EXPECT_EQ(g.GraphValues(0)[7], 700.0);
  EXPECT_EQ(g.GraphValues(0)[8], 0.0);  // 20 - 12 = 8 samples
  auto& h = NewForm(t, 64);
  EXPECT_FALSE(h.LoadDataFile(kWaves + "stereo16.wav", "stereo16.wav"));
  const std::string nonsense = std::filesystem::temp_directory_path() / ("keldo-nonsense-" + std::to_string(::getpid()) + ".wav");
  std::ofstream(nonsense) << "not a wave file";
  EXPECT_FALSE(h.LoadDataFile(nonsense, "x.wav"));
  EXPECT_EQ(t.lines, (std::vector<std::string>{"message 43: KELDO cannot load stereo sound files.",
                                               "message 46: Error loading sound file."}));
  EXPECT_EQ(h.GraphCount(), 0);
}

TEST(WaveLoading, LongFilesGoToTheSoundEditor) {
  TestFrame t;
  auto& f = NewForm(t, 64);
  ASSERT_TRUE(f.LoadDataFile(kWaves + "long66000.wav", "long66000.wav"));
  EXPECT_EQ(f.GraphCount(), 0);
  auto* editor = FormAs<sound::SoundEditorForm>(t.frame.OpenForms().back());
  ASSERT_NE(editor, nullptr);
  EXPECT_EQ(editor->SampleCount(), 66000);
  EXPECT_EQ(editor->Rate(), 44100);
  EXPECT_EQ(editor->Samples()[1999], 999);
  auto& g = NewForm(t, 64);
  ASSERT_TRUE(g.LoadDataFile(kWaves + "edge65537.wav", "edge65537.wav"));
  EXPECT_EQ(g.Points(), 65536);
  EXPECT_EQ(g.GraphValues(0)[65524], static_cast<double>((65524 % 2000) - 1000));
  EXPECT_EQ(g.GraphValues(0)[65525], 0.0);
}

TEST(Playing, TheWindowPartAtTheRateAndVolume) {
  TestFrame t;
  auto& f = NewForm(t, 64);
  Plot(f, "sin(2*pi*x)", "1");
  f.RunMenu("mnuAudioPlay");
  EXPECT_EQ(f.SideBoxKey(), "AudioPlay");
  EXPECT_TRUE(std::filesystem::exists(t.frame.SoundBufferFolder() + "/S64.wav"));
  EXPECT_TRUE(std::filesystem::exists(t.frame.SoundBufferFolder() + "/T64.wav"));
  EXPECT_TRUE(f.SoundReady(8) && f.SoundReady(16));
  f.controls().SetText("TxtSound(1)", "441");
  f.controls().SetText("TxtSound(2)", "1000");
  f.Click("cmdSound(0)");
  EXPECT_TRUE(t.lines.empty());
  // The window is [-1, 1]: samples from round((-1 - a)/h) = 0 up to
  // round((1 - a)/h) = 64, the end excluded, as FillSoundArray makes them.
  auto expected = sound::FillSoundArray(f.GraphValues(0), 65, 16, 1000.0);
  expected.resize(64);
  EXPECT_EQ(t.platform.audio.LastSamples(), expected);
  EXPECT_EQ(t.platform.audio.LastRate(), 441);
  EXPECT_TRUE(f.controls()["cmdSound(1)"].enabled);
  RequestFocus(f.controls(), "TxtSound(1)");
  f.Click("cmdSound(1)");
  EXPECT_FALSE(f.controls()["cmdSound(1)"].enabled);
  // The disabled Stop button hands the focus to Play.
  EXPECT_EQ(FocusRequested(f.controls()), "cmdSound(0)");
  // Half the window: the right half of the samples.
  f.RunMenu("mnuDisplayStyle");
  f.controls().SetText("txtXinterval", "0,1");
  f.Go();
  f.RunMenu("mnuAudioPlay");
  f.controls().SetText("TxtSound(1)", "44100");
  f.Click("cmdSound(0)");
  EXPECT_EQ(t.platform.audio.LastSamples().size(), 32u);  // indices 32 .. 63
  // The checks.
  f.controls().SetText("TxtSound(1)", "440");
  f.Click("cmdSound(0)");
  f.controls().SetText("TxtSound(1)", "44101");
  f.Click("cmdSound(0)");
  f.controls().SetText("TxtSound(1)", "8000");
  f.controls().SetText("TxtSound(2)", "0");
  f.Click("cmdSound(0)");
  f.controls().SetText("TxtSound(2)", "1");
  f.controls().SetText("TxtSound(0)", "2");
  f.Click("cmdSound(0)");
  f.controls().SetText("TxtSound(0)", "1");
  f.RunMenu("mnuDisplayStyle");
  f.controls().SetText("txtXinterval", "5,6");
  f.Go();
  f.Click("cmdSound(0)");
  t.platform.audio.SetDeviceAvailable(false);
  f.controls().SetText("txtXinterval", "-1,1");
  f.Go();
  f.Click("cmdSound(0)");
  EXPECT_EQ(t.lines, (std::vector<std::string>{"message 38: Invalid sampling rate. Use an integer from 441 to 44100.",
                                               "message 38: Invalid sampling rate. Use an integer from 441 to 44100.",
                                               "message 50: Volume factor must be positive.",
                                               "message 3: Improper graph specification.",
                                               "message 42: Window too small for audio play.",
                                               "message 39: Error playing sound."}));
}

TEST(Playing, ABufferThatCannotBeWrittenReports37AndStillPlays) {
  TestFrame t;
  // Folders where the buffer files should be: no file can be written there.
  const std::string folder = t.frame.settings().soundBufferFolder + "-37";
  std::filesystem::create_directories(folder + "/S64.wav");
  std::filesystem::create_directories(folder + "/T64.wav");
  t.frame.settings().soundBufferFolder = folder;
  auto& f = NewForm(t, 64);
  Plot(f, "x", "1");
  f.RunMenu("mnuAudioPlay");
  EXPECT_EQ(t.lines, (std::vector<std::string>{"message 37: Error initializing sound, file or device not ready.",
                                               "message 37: Error initializing sound, file or device not ready."}));
  f.Click("cmdSound(0)");
  EXPECT_EQ(t.platform.audio.PlayCount(), 1);
  std::filesystem::remove_all(folder);
}

TEST(SavingSound, EightAndSixteenBitFilesReadBack) {
  TestFrame t;
  auto& f = NewForm(t, 64);
  Plot(f, "300*sin(2*pi*x)+x", "1");
  const std::string folder = std::filesystem::temp_directory_path() / ("keldo-saved-sound-" + std::to_string(::getpid()));
  std::filesystem::create_directories(folder);
  f.controls().SetText("TxtSound(1)", "8000");
  f.controls().SetText("TxtSound(2)", "0.5");
  ASSERT_TRUE(f.SaveSoundFile(folder + "/a16.wav", 0));
  f.controls().SetFromUser("OpBitRate(0)", "1");
  ASSERT_TRUE(f.SaveSoundFile(folder + "/a8.wav", 0));
  sound::WaveControl w;
  w.Open(folder + "/a16.wav");
  ASSERT_EQ(w.LastError(), 0);
  EXPECT_EQ(w.Rate(), 8000);
  EXPECT_EQ(w.Bits(), 16);
  EXPECT_EQ(w.Read(65), sound::FillSoundArray(f.GraphValues(0), 65, 16, 0.5));
  w.Open(folder + "/a8.wav");
  EXPECT_EQ(w.Bits(), 8);
  EXPECT_EQ(w.Read(65), sound::FillSoundArray2(f.GraphValues(0), 65, 8, 0.5));
  std::filesystem::remove_all(folder);
}

}  // namespace
}  // namespace keldo::testing
