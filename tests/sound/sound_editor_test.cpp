// The audio editor: the clip-length rule and the marking edge cases by
// hand, cut, copy and paste against the same edits made with Python's wave
// module (tests/data/make_audio_editor.py), playback on the headless audio,
// the clip sent to a one-dimensional form, and safe saves.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "form1d/graph1_form.h"
#include "kit/typed_forms.h"
#include "platform/headless/raster_surface.h"
#include "sound/sound_editor_form.h"
#include "test_frame.h"
#include "wavefile/wave_control.h"

namespace keldo::testing {
namespace {

using sound::LineState;
using sound::SoundEditorForm;

const std::string kWaves = KELDO_TEST_DATA "/wave/";

SoundEditorForm& NewEditor(TestFrame& t) {
  int code = 0;
  SoundEditorForm* editor = NewFormOf<SoundEditorForm>(t.frame, code);
  EXPECT_NE(editor, nullptr);
  return *editor;
}

SoundEditorForm& OpenEditor(TestFrame& t, const std::string& name) {
  SoundEditorForm& e = NewEditor(t);
  EXPECT_TRUE(e.LoadWavFile(kWaves + name));
  return e;
}

// The samples of a wave file as libsndfile reads them (8-bit as bytes).
std::vector<std::int16_t> WaveSamples(const std::string& path, int* rate = nullptr, int* bits = nullptr) {
  sound::WaveControl w;
  w.Open(path);
  EXPECT_EQ(w.LastError(), 0) << path;
  if (rate) *rate = w.Rate();
  if (bits) *bits = w.Bits();
  return w.Read(w.Length());
}

std::string TempPath(const std::string& name) {
  const auto dir = std::filesystem::temp_directory_path() / ("keldo-editor-" + std::to_string(::getpid()));
  std::filesystem::create_directories(dir);
  return (dir / name).string();
}

// Places the two lines by clicks on the whole-file picture.
void Mark(SoundEditorForm& e, double line1, double line2) {
  e.Mouse(MouseAction::Down, line1, 0, MouseButton::Left);
  e.Mouse(MouseAction::Down, line2, 0, MouseButton::Left);
}

TEST(ClipRules, LengthsOfTheExamples) {
  // 100 samples apart: 199 reaches 128 but not 256.
  EXPECT_EQ(sound::SetClipLength(100, 0, 100000), 128);
  EXPECT_EQ(sound::SetClipLength(64, 0, 100000), 64);
  EXPECT_EQ(sound::SetClipLength(65, 0, 100000), 128);  // 129.35 >= 128
  EXPECT_EQ(sound::SetClipLength(32768, 0, 1000000), 32768);  // 65208.32 falls short of 65536
  EXPECT_EQ(sound::SetClipLength(32933, 0, 1000000), 65536);  // 65536.67
  EXPECT_EQ(sound::SetClipLength(32932, 0, 1000000), 32768);  // 65534.68
  // Near the end of the file the clip falls to a smaller power of two:
  // 4000 + 1024 passes 5000, 4000 + 512 does not.
  EXPECT_EQ(sound::SetClipLength(900, 4000, 5000), 512);
  // The clip must end before the last sample: 4872 + 128 = 5000 does not fit.
  EXPECT_EQ(sound::SetClipLength(100, 4872, 5000), 64);
  EXPECT_EQ(sound::SetClipLength(100, 4937, 5000), -1);
  EXPECT_TRUE(sound::RefusedSecondLine(1063, 1000));
  EXPECT_FALSE(sound::RefusedSecondLine(1064, 1000));
  EXPECT_TRUE(sound::RefusedSecondLine(999, 1000));
  EXPECT_TRUE(sound::RefusedSecondLine(1000 + 65537, 1000));
  EXPECT_FALSE(sound::RefusedSecondLine(1000 + 65536, 1000));
  EXPECT_EQ(sound::NewLength(5000, 128), 5128);
  EXPECT_EQ(sound::NewLength(2147483647LL - 64, 64), 2147483647);
  EXPECT_EQ(sound::NewLength(2147483647LL - 63, 64), -1);
}

TEST(ClipRules, HeightsAndColumns) {
  EXPECT_EQ(sound::WaveHeight(255, 8), 127 * 8);
  EXPECT_EQ(sound::WaveHeight(0, 8), -128 * 8);
  EXPECT_EQ(sound::WaveHeight(32767, 16), 126 * 8);  // 32767 / 260 = 126.03
  EXPECT_EQ(sound::WaveHeight(-32768, 16), -126 * 8);
  EXPECT_EQ(sound::WaveHeight(-259, 16), 0);  // truncated toward zero
  EXPECT_EQ(sound::WaveHeight(520, 16), 16);
  // 5000 samples over 512 columns: a stride of 9, columns 0..512 all below.
  const auto columns = sound::WaveColumns(5000, 512);
  ASSERT_EQ(columns.size(), 513u);
  EXPECT_EQ(columns[1], 9);
  EXPECT_EQ(columns.back(), 4608);
  // A file narrower than the picture shows each sample once.
  EXPECT_EQ(sound::WaveColumns(63, 512).size(), 63u);
}

TEST(SoundEditor, NewEditorIsEmpty) {
  TestFrame t;
  SoundEditorForm& e = NewEditor(t);
  EXPECT_EQ(e.controls().Text("labSamples"), "Samples: 0");
  EXPECT_FALSE(e.controls()["cmdPlay"].enabled);
  EXPECT_FALSE(e.controls()["mnuSave"].enabled);
  EXPECT_TRUE(e.controls()["mnuOpen"].enabled);
  EXPECT_EQ(e.controls()["cmdPlay"].tip, "Plays sound file.");
  EXPECT_EQ(e.controls()["cmdStart"].tip, "Resets play position to the start.");
  EXPECT_EQ(e.controls()["cmdPlay2"].tip, "Plays sound clip.");
  EXPECT_EQ(e.controls()["cmdStart2"].tip, "Resets play position for sound clip to start.");
  EXPECT_EQ(e.controls()["cmdEraseClip"].tip, "Removes  the sound clip.");
  EXPECT_EQ(e.controls()["cmdAnalyzer"].tip, "Opens a 1-Dim form with sound clip as data.");
  EXPECT_EQ(e.controls()["cmdAnalyzer"].text, "&Analyze");
  EXPECT_EQ(e.controls()["FrClip(0)"].text, "Line 1: ");
  EXPECT_EQ(e.controls()["FrClip(1)"].text, "Line 2:");
  EXPECT_EQ(e.controls()["mnuClose"].text, "&Clear editor");
  EXPECT_EQ(e.controls()["mnuMoveClip"].text, "&Move clip region");
  EXPECT_EQ(e.controls()["mnuClip"].text, "C&lip");
  EXPECT_TRUE(e.Graphs().empty());
  // A click on an empty editor does nothing.
  e.Mouse(MouseAction::Down, 10, 0, MouseButton::Left);
  EXPECT_EQ(e.Lines(), LineState::None);
  EXPECT_TRUE(t.lines.empty());
}

TEST(SoundEditor, OpensSixteenBitFile) {
  TestFrame t;
  SoundEditorForm& e = OpenEditor(t, "editor16.wav");
  ASSERT_EQ(e.SampleCount(), 5000);
  EXPECT_EQ(e.Rate(), 8000);
  EXPECT_EQ(e.Bits(), 16);
  for (int i = 0; i < 5000; ++i) ASSERT_EQ(e.Samples()[static_cast<std::size_t>(i)], ((37 * i) % 20000) - 10000) << i;
  EXPECT_EQ(e.controls().Text("labSamples"), "Samples: 5000");
  EXPECT_TRUE(e.controls()["cmdPlay"].enabled);
  EXPECT_TRUE(e.controls()["mnuSave"].enabled);
  // The dump: one sample per column of a 512-pixel picture, stride 9.
  const auto graphs = e.Graphs();
  ASSERT_EQ(graphs.size(), 1u);
  EXPECT_EQ(graphs[0].values.size(), 513u);
  EXPECT_EQ(graphs[0].values[2], ((37 * 18) % 20000) - 10000);
  EXPECT_DOUBLE_EQ(graphs[0].b, 5000.0 / 8000);
  EXPECT_DOUBLE_EQ(graphs[0].h, 9.0 / 8000);
}

TEST(SoundEditor, OpenAudioFileAsksForAWaveFile) {
  TestFrame t;
  SoundEditorForm& e = NewEditor(t);
  t.platform.fileDialog.QueueAnswer(std::nullopt);
  ASSERT_TRUE(e.RunMenu("mnuOpen"));  // cancelled: nothing happens
  EXPECT_EQ(e.SampleCount(), 0);
  EXPECT_TRUE(t.lines.empty());
  t.platform.fileDialog.QueueAnswer(kWaves + "editor8.wav");
  ASSERT_TRUE(e.RunMenu("mnuOpen"));
  EXPECT_EQ(e.SampleCount(), 3000);
  EXPECT_EQ(e.FileName(), kWaves + "editor8.wav");
  // A second file replaces the first, lines and clip and all.
  Mark(e, 10, 250);
  ASSERT_TRUE(e.RunMenu("mnuClip"));
  t.platform.fileDialog.QueueAnswer(kWaves + "editor16.wav");
  ASSERT_TRUE(e.RunMenu("mnuOpen"));
  EXPECT_EQ(e.SampleCount(), 5000);
  EXPECT_EQ(e.Lines(), LineState::None);
  EXPECT_FALSE(e.ClipShown());
  EXPECT_FALSE(e.controls()["cmdAnalyzer"].enabled);
  EXPECT_EQ(e.Graphs().size(), 1u);
}

TEST(SoundEditor, OpensEightBitFileAsBytes) {
  TestFrame t;
  SoundEditorForm& e = OpenEditor(t, "editor8.wav");
  ASSERT_EQ(e.SampleCount(), 3000);
  EXPECT_EQ(e.Rate(), 11025);
  EXPECT_EQ(e.Bits(), 8);
  for (int i = 0; i < 3000; ++i) ASSERT_EQ(e.Samples()[static_cast<std::size_t>(i)], (7 * i + 3) % 256) << i;
}

TEST(SoundEditor, FailedOpensReportAndKeepTheEditor) {
  TestFrame t;
  SoundEditorForm& e = OpenEditor(t, "editor16.wav");
  t.lines.clear();
  EXPECT_FALSE(e.LoadWavFile(kWaves + "missing.wav"));
  EXPECT_EQ(t.lines, std::vector<std::string>{"message: Error opening file."});
  EXPECT_EQ(e.SampleCount(), 5000);  // the open file stays
  t.lines.clear();
  EXPECT_FALSE(e.LoadWavFile(kWaves + "stereo16.wav"));
  EXPECT_EQ(t.lines, std::vector<std::string>{"message 43: KELDO cannot load stereo sound files."});
  EXPECT_EQ(e.SampleCount(), 5000);
  // Nonsense bytes are no wave file.
  const std::string junk = TempPath("junk.wav");
  std::ofstream(junk) << "RIFF\x10\0\0\0WAVEfmt nonsense";
  t.lines.clear();
  EXPECT_FALSE(e.LoadWavFile(junk));
  EXPECT_EQ(t.lines, std::vector<std::string>{"message: Error opening file."});
}

TEST(SoundEditor, ClickHundredSamplesAfterLineOneGivesClipOf128) {
  TestFrame t;
  SoundEditorForm& e = OpenEditor(t, "editor16.wav");
  e.Mouse(MouseAction::Down, 1000.7, 0, MouseButton::Left);
  EXPECT_EQ(e.Lines(), LineState::LineOne);
  EXPECT_EQ(e.ClipStart(), 1000);
  EXPECT_EQ(e.controls().Text("labPos(0)"), "1000");
  EXPECT_EQ(e.PlayPosition(), 1000);
  EXPECT_FALSE(e.controls()["mnuClip"].enabled);
  e.Mouse(MouseAction::Down, 1100, 0, MouseButton::Left);
  EXPECT_EQ(e.Lines(), LineState::Both);
  EXPECT_EQ(e.ClipLength(), 128);
  EXPECT_EQ(e.controls().Text("labPos(1)"), "1128");
  for (const char* name : {"mnuClip", "mnuCut", "mnuCopy", "mnuMoveClip", "FrClip(0)", "FrClip(1)"})
    EXPECT_TRUE(e.controls()[name].enabled) << name;
  EXPECT_TRUE(t.lines.empty());
  // A third click changes nothing.
  e.Mouse(MouseAction::Down, 3000, 0, MouseButton::Left);
  EXPECT_EQ(e.ClipStart(), 1000);
  EXPECT_EQ(e.ClipLength(), 128);
}

TEST(SoundEditor, SixtyFourAfterGivesSixtyFourAndSixtyThreeBeeps) {
  TestFrame t;
  SoundEditorForm& e = OpenEditor(t, "editor16.wav");
  e.Mouse(MouseAction::Down, 2000, 0, MouseButton::Left);
  e.Mouse(MouseAction::Down, 2063, 0, MouseButton::Left);
  EXPECT_EQ(t.lines, std::vector<std::string>{"beep"});
  EXPECT_EQ(e.Lines(), LineState::LineOne);
  e.Mouse(MouseAction::Down, 1999, 0, MouseButton::Left);  // before Line 1
  EXPECT_EQ(t.lines, (std::vector<std::string>{"beep", "beep"}));
  e.Mouse(MouseAction::Down, 2064, 0, MouseButton::Left);
  EXPECT_EQ(e.Lines(), LineState::Both);
  EXPECT_EQ(e.ClipLength(), 64);
}

TEST(SoundEditor, ClipFallsToSmallerPowerNearTheEnd) {
  TestFrame t;
  SoundEditorForm& e = OpenEditor(t, "editor16.wav");
  Mark(e, 4000, 4900);  // 1791 wants 1024, which passes the end
  EXPECT_EQ(e.ClipLength(), 512);
  // Line 1 at the last place a click can put it: 64 before the end.
  e.EraseClipLines();
  e.Mouse(MouseAction::Down, 4999, 0, MouseButton::Left);
  EXPECT_EQ(e.ClipStart(), 4936);
}

TEST(SoundEditor, FileOf63SamplesIsTooShortOf64IsNot) {
  TestFrame t;
  SoundEditorForm& e = OpenEditor(t, "tiny63.wav");
  e.Mouse(MouseAction::Down, 10, 0, MouseButton::Left);
  EXPECT_EQ(t.lines, std::vector<std::string>{"message: Sound file too short for clipping."});
  EXPECT_EQ(e.Lines(), LineState::None);
  t.lines.clear();
  SoundEditorForm& f = OpenEditor(t, "tiny64.wav");
  f.Mouse(MouseAction::Down, 10, 0, MouseButton::Left);
  EXPECT_TRUE(t.lines.empty());
  EXPECT_EQ(f.ClipStart(), 0);
  // No room for a second line: 64 on would be the end of the file.
  f.Mouse(MouseAction::Down, 63, 0, MouseButton::Left);
  EXPECT_EQ(t.lines, std::vector<std::string>{"beep"});
}

TEST(SoundEditor, SoundErrorTexts) {
  TestFrame t;
  SoundEditorForm& e = NewEditor(t);
  for (int code = 0; code <= 7; ++code) e.SoundError(code);
  EXPECT_EQ(t.lines, (std::vector<std::string>{
                         "message: Unidentified error.", "message: Error opening file.",
                         "message: Error converting sound values.", "message: Error initializing clip file.",
                         "message: Error creating clip signal.", "message: Error plotting sound clip.",
                         "message: Sound file too short for clipping.", "message: Unidentified error."}));
}

TEST(SoundEditor, ClipPlotsTheMarkedSamples) {
  TestFrame t;
  SoundEditorForm& e = OpenEditor(t, "editor16.wav");
  Mark(e, 1000, 1100);
  ASSERT_TRUE(e.RunMenu("mnuClip"));
  ASSERT_TRUE(e.ClipShown());
  ASSERT_EQ(e.ClipSamples().size(), 129u);
  for (int i = 0; i <= 128; ++i)
    EXPECT_EQ(e.ClipSamples()[static_cast<std::size_t>(i)], ((37 * (1000 + i)) % 20000) - 10000);
  for (const char* name : {"cmdPlay2", "cmdStart2", "cmdEraseClip", "cmdAnalyzer"})
    EXPECT_TRUE(e.controls()[name].enabled) << name;
  const auto graphs = e.Graphs();
  ASSERT_EQ(graphs.size(), 2u);
  EXPECT_EQ(graphs[1].values.size(), 129u);
  EXPECT_DOUBLE_EQ(graphs[1].a, 1000.0 / 8000);
  EXPECT_DOUBLE_EQ(graphs[1].b, 1128.0 / 8000);
  ASSERT_TRUE(e.Click("cmdEraseClip"));
  EXPECT_FALSE(e.ClipShown());
  EXPECT_FALSE(e.controls()["cmdAnalyzer"].enabled);
  EXPECT_EQ(e.Graphs().size(), 1u);
}

// Found by the wave-file fuzzer: a clip drawn, then a longer one marked
// but not drawn; the lower picture keeps the clip it shows.
TEST(SoundEditor, ShownClipStaysWhileLongerOneIsMarked) {
  TestFrame t;
  SoundEditorForm& e = OpenEditor(t, "editor16.wav");
  Mark(e, 1000, 1100);
  ASSERT_TRUE(e.RunMenu("mnuClip"));
  e.EraseClipLines();
  Mark(e, 2000, 2600);  // 1194: a clip of 1024, not drawn
  ASSERT_EQ(e.ClipLength(), 1024);
  EXPECT_EQ(e.ShownClipStart(), 1000);
  EXPECT_EQ(e.ShownClipLength(), 128);
  platform::RasterSurface surface(300, 40);
  e.Paint(sound::kClipPicture, surface);
  EXPECT_EQ(e.Pictures()[sound::kClipPicture].scale.right, 300.0);  // 128 samples over 300 columns: stride 1
  const auto graphs = e.Graphs();
  ASSERT_EQ(graphs.size(), 2u);
  EXPECT_EQ(graphs[1].values.size(), 129u);
  EXPECT_DOUBLE_EQ(graphs[1].b, 1128.0 / 8000);
  // Played, it is the clip shown that sounds.
  ASSERT_TRUE(e.Click("cmdPlay2"));
  EXPECT_EQ(t.platform.audio.LastSamples().size(), 128u);
  // Cut and pasted under it, it still shows.
  ASSERT_TRUE(e.RunMenu("mnuCut"));
  e.Paint(sound::kClipPicture, surface);
  EXPECT_EQ(e.ShownClipLength(), 128);
}

TEST(SoundEditor, MovingTheLinesKeepsTheClip) {
  TestFrame t;
  SoundEditorForm& e = OpenEditor(t, "editor16.wav");
  Mark(e, 1000, 1100);
  ASSERT_TRUE(e.Click("cmdPos1(1)"));
  EXPECT_EQ(e.ClipStart(), 999);
  EXPECT_EQ(e.controls().Text("labPos(0)"), "999");
  EXPECT_EQ(e.controls().Text("labPos(1)"), "1127");
  ASSERT_TRUE(e.Click("cmdPos2(1)"));
  ASSERT_TRUE(e.Click("cmdPos2(1)"));
  EXPECT_EQ(e.ClipStart(), 1001);
  ASSERT_TRUE(e.Click("cmdPos1(0)"));
  EXPECT_EQ(e.ClipStart(), 0);
  ASSERT_TRUE(e.Click("cmdPos1(1)"));  // already at the start
  EXPECT_EQ(e.ClipStart(), 0);
  ASSERT_TRUE(e.Click("cmdPos2(2)"));
  EXPECT_EQ(e.ClipStart(), 5000 - 128 - 1);
  ASSERT_TRUE(e.Click("cmdPos2(1)"));  // already at the end
  EXPECT_EQ(e.ClipStart(), 4871);
  EXPECT_EQ(e.ClipLength(), 128);
  // The pop-up's Move clip region: the clip starts where the pointer was,
  // and is plotted again when it was shown.
  ASSERT_TRUE(e.RunMenu("mnuClip"));
  e.Mouse(MouseAction::Down, 2500, 0, MouseButton::Right);
  ASSERT_TRUE(e.RunMenu("mnuMoveClip"));
  EXPECT_EQ(e.ClipStart(), 2500);
  EXPECT_EQ(e.ClipSamples()[0], ((37 * 2500) % 20000) - 10000);
  t.lines.clear();
  e.Mouse(MouseAction::Down, 4900, 0, MouseButton::Right);  // 4900 + 128 passes the end
  ASSERT_TRUE(e.RunMenu("mnuMoveClip"));
  EXPECT_EQ(t.lines, std::vector<std::string>{"beep"});
  EXPECT_EQ(e.ClipStart(), 2500);
}

TEST(SoundEditor, EraseLinesAndClearEditor) {
  TestFrame t;
  SoundEditorForm& e = OpenEditor(t, "editor16.wav");
  Mark(e, 1000, 1100);
  ASSERT_TRUE(e.RunMenu("mnuEraseClipLines"));
  EXPECT_EQ(e.Lines(), LineState::None);
  EXPECT_FALSE(e.controls()["mnuCopy"].enabled);
  EXPECT_EQ(e.controls().Text("labPos(0)"), "");
  ASSERT_TRUE(e.RunMenu("mnuClose"));  // "&Clear editor"
  EXPECT_EQ(e.SampleCount(), 0);
  EXPECT_EQ(e.controls().Text("labSamples"), "Samples: 0");
  EXPECT_FALSE(e.controls()["cmdPlay"].enabled);
  EXPECT_EQ(t.frame.OpenForms().size(), 1u);  // the form stays open
  ASSERT_TRUE(e.RunMenu("mnuHelp"));
  EXPECT_NE(t.platform.help.LastPage().find("help/audio-editor.md"), std::string::npos) << t.platform.help.LastPage();
  ASSERT_TRUE(e.RunMenu("mnuCloseForm"));
  EXPECT_TRUE(t.frame.OpenForms().empty());
}

// The edits against Python's: paste16.wav and cut16.wav.
TEST(SoundEditor, CopyPasteAndCutMatchPythonSampleForSample) {
  TestFrame t;
  SoundEditorForm& e = OpenEditor(t, "editor16.wav");
  Mark(e, 1000, 1100);
  ASSERT_TRUE(e.RunMenu("mnuCopy"));
  EXPECT_TRUE(e.PasteReady());
  EXPECT_EQ(t.frame.settings().wavPasteValue, "Y");
  EXPECT_EQ(e.CopyStart(), 1000);
  EXPECT_EQ(e.CopyLength(), 128);
  EXPECT_EQ(e.SampleCount(), 5000);  // a copy changes nothing
  e.EraseClipLines();
  e.Mouse(MouseAction::Down, 3000, 0, MouseButton::Left);
  ASSERT_TRUE(e.controls()["mnuPaste"].enabled);
  ASSERT_TRUE(e.RunMenu("mnuPaste"));
  // The file grows by CopyLength; Line 1 stays at the paste.
  EXPECT_EQ(e.SampleCount(), 5128);
  EXPECT_EQ(e.controls().Text("labSamples"), "Samples: 5128");
  EXPECT_EQ(e.Lines(), LineState::LineOne);
  EXPECT_FALSE(e.controls()["mnuEraseClipLines"].enabled);
  EXPECT_FALSE(e.controls()["FrClip(0)"].enabled);
  EXPECT_EQ(e.Samples(), WaveSamples(kWaves + "paste16.wav"));

  e.EraseClipLines();
  Mark(e, 200, 500);
  EXPECT_EQ(e.ClipLength(), 512);
  ASSERT_TRUE(e.RunMenu("mnuCut"));
  EXPECT_EQ(e.Lines(), LineState::None);
  EXPECT_EQ(e.SampleCount(), 5128 - 512);
  EXPECT_EQ(e.Samples(), WaveSamples(kWaves + "cut16.wav"));

  const std::string out = TempPath("cut16-saved.wav");
  ASSERT_TRUE(e.SaveTo(out));
  int rate = 0, bits = 0;
  EXPECT_EQ(WaveSamples(out, &rate, &bits), WaveSamples(kWaves + "cut16.wav"));
  EXPECT_EQ(rate, 8000);
  EXPECT_EQ(bits, 16);
  EXPECT_TRUE(t.lines.empty());
}

TEST(SoundEditor, EightBitCutAndPasteMatchPython) {
  TestFrame t;
  SoundEditorForm& e = OpenEditor(t, "editor8.wav");
  Mark(e, 10, 250);
  ASSERT_EQ(e.ClipLength(), 256);
  ASSERT_TRUE(e.RunMenu("mnuCut"));
  EXPECT_EQ(e.SampleCount(), 3000 - 256);
  e.Mouse(MouseAction::Down, 1500, 0, MouseButton::Left);
  ASSERT_TRUE(e.RunMenu("mnuPaste"));
  EXPECT_EQ(e.SampleCount(), 3000);
  // Saved through the save dialog, then over itself by Save.
  const std::string out = TempPath("edit8-saved.wav");
  t.platform.fileDialog.QueueAnswer(out);
  ASSERT_TRUE(e.RunMenu("mnuSaveAs"));
  EXPECT_EQ(e.FileName(), out);
  int rate = 0, bits = 0;
  EXPECT_EQ(WaveSamples(out, &rate, &bits), WaveSamples(kWaves + "edit8.wav"));
  EXPECT_EQ(rate, 11025);
  EXPECT_EQ(bits, 8);
  e.EraseClipLines();
  Mark(e, 0, 100);
  ASSERT_TRUE(e.RunMenu("mnuCut"));
  ASSERT_TRUE(e.RunMenu("mnuSave"));
  EXPECT_EQ(WaveSamples(out).size(), 3000u - 128u);
  EXPECT_TRUE(t.lines.empty());
}

TEST(SoundEditor, PasteWithoutCopyBeepsAndChangesNothing) {
  TestFrame t;
  SoundEditorForm& e = OpenEditor(t, "editor16.wav");
  EXPECT_FALSE(e.controls()["mnuPaste"].enabled);
  e.PasteAtLineOne();
  EXPECT_EQ(t.lines, std::vector<std::string>{"beep"});
  EXPECT_EQ(e.SampleCount(), 5000);
}

TEST(SoundEditor, FailedSaveLeavesTheOldFileWhole) {
  TestFrame t;
  SoundEditorForm& e = OpenEditor(t, "editor16.wav");
  // A target that cannot be replaced: a folder holding a file.
  const std::string target = TempPath("folder.wav");
  std::filesystem::create_directories(target);
  std::ofstream(target + "/keep.txt") << "kept";
  EXPECT_FALSE(e.SaveTo(target));
  EXPECT_EQ(t.lines, std::vector<std::string>{"message 32: Error saving file."});
  EXPECT_TRUE(std::filesystem::is_regular_file(target + "/keep.txt"));
  // No temporary file is left beside it, and the editor keeps its samples.
  for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(target).parent_path()))
    EXPECT_EQ(entry.path().string().find("keldo-tmp"), std::string::npos) << entry.path();
  EXPECT_EQ(e.SampleCount(), 5000);
  EXPECT_EQ(e.Samples()[4999], ((37 * 4999) % 20000) - 10000);
  // An existing file stays whole when the folder of the target is gone.
  t.lines.clear();
  EXPECT_FALSE(e.SaveTo(TempPath("no-such-folder/x.wav")));
  EXPECT_EQ(t.lines, std::vector<std::string>{"message 32: Error saving file."});
}

TEST(SoundEditor, PlaysFileAndClipFromTheirPositions) {
  TestFrame t;
  SoundEditorForm& e = OpenEditor(t, "editor8.wav");
  ASSERT_TRUE(e.Click("cmdPlay"));
  const auto& played = t.platform.audio.LastSamples();
  ASSERT_EQ(played.size(), 3000u);
  EXPECT_EQ(played[5], ((7 * 5 + 3) % 256 - 128) * 256);
  EXPECT_EQ(t.platform.audio.LastRate(), 11025);
  EXPECT_FALSE(e.controls()["cmdPlay"].enabled);
  EXPECT_TRUE(e.controls()["cmdStop"].enabled);
  // The sound runs out: the timer finds it ended, at the end of the file.
  t.platform.audio.Finish();
  t.platform.timers.RunUntilStopped(10);
  EXPECT_EQ(e.NowPlaying(), sound::Playing::Nothing);
  EXPECT_EQ(e.PlayPosition(), 3000);
  EXPECT_TRUE(e.controls()["cmdPlay"].enabled);
  EXPECT_FALSE(e.controls()["cmdStop"].enabled);
  ASSERT_TRUE(e.Click("cmdStart"));
  EXPECT_EQ(e.PlayPosition(), 0);
  // Line 1 sets the play position; the file plays from there.
  e.Mouse(MouseAction::Down, 700, 0, MouseButton::Left);
  ASSERT_TRUE(e.Click("cmdPlay"));
  EXPECT_EQ(t.platform.audio.LastSamples().size(), 2300u);
  EXPECT_EQ(t.platform.audio.LastSamples()[0], ((7 * 700 + 3) % 256 - 128) * 256);
  ASSERT_TRUE(e.Click("cmdStop"));
  EXPECT_FALSE(t.platform.audio.IsPlaying());
  // Stopped at once: no room for a clip there, so Line 2 is refused.
  EXPECT_EQ(t.lines, std::vector<std::string>{"beep"});
  // The clip plays without the sample after it.
  e.EraseClipLines();
  Mark(e, 100, 200);
  ASSERT_TRUE(e.RunMenu("mnuClip"));
  ASSERT_TRUE(e.Click("cmdPlay2"));
  ASSERT_EQ(t.platform.audio.LastSamples().size(), 128u);
  EXPECT_EQ(t.platform.audio.LastSamples()[127], ((7 * 227 + 3) % 256 - 128) * 256);
  t.platform.audio.SetDeviceAvailable(false);
  t.platform.audio.Finish();
  t.platform.timers.RunUntilStopped(10);
  t.lines.clear();
  ASSERT_TRUE(e.Click("cmdStart2"));
  ASSERT_TRUE(e.Click("cmdPlay2"));
  EXPECT_EQ(t.lines, std::vector<std::string>{"message 39: Error playing sound."});
  EXPECT_TRUE(e.controls()["cmdPlay2"].enabled);
}

TEST(SoundEditor, StopMarksTheClipByEar) {
  TestFrame t;
  SoundEditorForm& e = OpenEditor(t, "editor16.wav");
  e.Mouse(MouseAction::Down, 1000, 0, MouseButton::Left);
  ASSERT_TRUE(e.Click("cmdPlay"));
  t.platform.audio.Advance(300);
  ASSERT_TRUE(e.Click("cmdStop"));
  EXPECT_EQ(e.PlayPosition(), 1300);
  // 300 samples on: 597 gives a clip of 512, plotted at once.
  EXPECT_EQ(e.Lines(), LineState::Both);
  EXPECT_EQ(e.ClipLength(), 512);
  EXPECT_TRUE(e.ClipShown());
  EXPECT_TRUE(e.controls()["cmdAnalyzer"].enabled);
  EXPECT_TRUE(e.controls()["mnuMoveClip"].enabled);
  EXPECT_TRUE(t.lines.empty());
}

TEST(SoundEditor, AnalyzeSendsTheClipToANewOneDimensionalForm) {
  TestFrame t;
  SoundEditorForm& e = OpenEditor(t, "editor8.wav");
  Mark(e, 100, 400);  // 597: a clip of 512
  ASSERT_TRUE(e.RunMenu("mnuClip"));
  ASSERT_TRUE(e.Click("cmdAnalyzer"));
  auto* g = FormAs<form1d::Graph1Form>(t.frame.OpenForms().back());
  ASSERT_NE(g, nullptr);
  EXPECT_EQ(g->Points(), 512);
  const auto graph = g->Graphs().at(0);
  ASSERT_EQ(graph.values.size(), 513u);
  for (int i = 0; i <= 512; ++i)
    EXPECT_EQ(graph.values[static_cast<std::size_t>(i)], (7 * (100 + i) + 3) % 256 - 128) << i;
  EXPECT_DOUBLE_EQ(graph.h, 1.0 / 11025);
  EXPECT_DOUBLE_EQ(graph.b, 512.0 / 11025);
  EXPECT_EQ(g->controls().Text("TxtSound(1)"), "11025");
  EXPECT_EQ(g->controls()["OpBitRate(0)"].value, 1);
}

}  // namespace
}  // namespace keldo::testing
