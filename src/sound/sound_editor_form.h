#pragma once
// The audio editor: a whole wave file of any length as one waveform, and a
// clip of it, marked by two lines, as a second. The clip plays, goes to a
// one-dimensional form for analysis, and is cut, copied and pasted inside
// the file; the file plays, and is saved, edited, over itself or elsewhere.
//
// The file's samples live in this form (`Samples`, one 16-bit value per
// sample: an 8-bit sample is kept as its unsigned byte 0..255); the wave
// control only reads and writes files. Copy and paste keep their data in an
// array of the form.

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "kit/form.h"
#include "kit/named_calls.h"
#include "sound/clip_rules.h"
#include "wavefile/wave_control.h"

namespace keldo::sound {

// The pictures: the clip and the whole file.
inline constexpr int kClipPicture = 0;
inline constexpr int kFilePicture = 1;
// A picture no view has drawn is taken as this many pixels wide (the dump's
// waveform of the whole file, and the clip's).
inline constexpr int kDumpWidth = 512;

// What plays: nothing, the file or the clip.
enum class Playing { Nothing, File, Clip };

class SoundEditorForm final : public Form, public WaveFileReceiver {
 public:
  static constexpr FormKind kKind = FormKind::SoundEditor;

  explicit SoundEditorForm(FormContext& context);
  ~SoundEditorForm() override;

  // Opens a wave file into the editor: SoundError(1) when it cannot be
  // opened, SoundError(2) and a cleared editor when its samples cannot be
  // held or read. False after the message.
  bool LoadWavFile(const std::string& path) override;

  // The commands.
  void DrawClipLine(double x);
  void MoveClip(double x);
  void PlotClipCommand();
  void CopyClip();
  void CutClip();
  void PasteAtLineOne();
  void EraseClipLines();
  void ClearEditor();
  void EraseClip();
  void MoveLinesLeft();
  void MoveLinesRight();
  void MoveLinesToStart();
  void MoveLinesToEnd();
  void PlayFile();
  void PlayClip();
  void StartFile();
  void StartClip();
  void StopPlaying();
  void PasteClip();  // "&Analyze": the clip in a new one-dimensional form
  void OpenFile();
  void SaveFile();
  void SaveFileAs();
  // Writes the samples as a wave file at path, through a temporary file;
  // false (and the old file whole) on failure.
  bool SaveTo(const std::string& path);
  // Shows one line of the editor's own errors, the text and a full stop.
  void SoundError(int code);

  // State, as a script or a test reads it.
  std::int64_t SampleCount() const { return static_cast<std::int64_t>(samples_.size()); }
  const std::vector<std::int16_t>& Samples() const { return samples_; }
  const std::vector<std::int16_t>& ClipSamples() const { return clipSamples_; }
  int Rate() const { return sampleRate_; }
  int Bits() const { return bits_; }
  std::int64_t ClipStart() const { return clipStart_; }
  std::int32_t ClipLength() const { return clipLength_; }
  std::int64_t CopyStart() const { return copyStart_; }
  std::int64_t CopyLength() const { return copyLength_; }
  LineState Lines() const { return lineState_; }
  bool ClipShown() const { return clipShown_; }
  // The clip the lower picture shows, which stays as it was plotted while
  // the lines move or mark another: its first sample and its length.
  std::int64_t ShownClipStart() const { return shownClipStart_; }
  std::int64_t ShownClipLength() const {
    return clipSamples_.empty() ? 0 : static_cast<std::int64_t>(clipSamples_.size()) - 1;
  }
  bool PasteReady() const { return pasteReady_; }
  std::int64_t PlayPosition() const { return playPosition_; }
  const std::string& FileName() const { return fileName_; }
  Playing NowPlaying() const { return playing_; }

  // The form's face.
  std::vector<Picture> Pictures() const override;
  void Paint(int picture, platform::Surface& surface) const override;
  bool PictureMouse(int picture, MouseAction action, double x, double y, MouseButton button) override;
  // A script's pointer lands on the whole-file picture.
  bool ScriptPoint(int picture, double x, double y, double& scriptX, double& scriptY) const override {
    scriptX = x;
    scriptY = y;
    return picture == kFilePicture;
  }
  // Scripts point at the whole-file picture, x in samples.
  bool Mouse(MouseAction action, double x, double y, MouseButton button) override;
  const FormLayout& Layout() const override;
  int Points() const override { return static_cast<int>(clipLength_); }
  std::array<double, 4> Window() const override;
  std::vector<GraphSummary> Graphs() const override;

 private:
  void BuildControls();
  void BindCommands();
  // DisplayWave: takes the samples of the opened wave control; -1 after
  // SoundError(2) when they cannot be held.
  int DisplayWave(WaveControl& wave);
  void InitializeDisplays();
  void DisEnableButtons(int group);
  void EnableButtons(int group);
  void EraseClipFrames();
  void EnableClipCommands(bool on);
  // Marks the clip from Line 1 to a second line at p, as a click or Stop
  // does; a beep and no change when p is refused.
  bool PlaceSecondLine(std::int64_t p);
  // PlotClip: the clip's samples from the file, ready to draw and play;
  // -1 on failure.
  int PlotClip();
  // InitializeWave2: the clip's scratch sound, of the file's bits.
  int InitializeWave2();
  void ShowLinePositions();
  void SetPopUpMenu();
  // The last sample Line 1 may stand on, by the line state.
  std::int64_t LastClipStart() const;
  // Plays samples [start, end) of a sound from `from`; false after 39.
  bool StartPlaying(Playing what, const std::vector<std::int16_t>& sound, std::int64_t from);
  // A tick of the play timer: follows the play position, ends at the end.
  void FollowPlay();
  std::int64_t CurrentPlayPosition() const;
  void EndPlaying(bool reachedEnd);
  void ShowPlayPosition();
  // The samples a picture spans, by the width it was last drawn at.
  double PictureSpan(int picture) const;

  std::vector<std::int16_t> samples_;  // Samples
  int sampleRate_ = 0;                 // SampleRate
  int bits_ = 16;
  std::int64_t clipStart_ = 0;         // ClipStart
  std::int32_t clipLength_ = 0;        // ClipLength
  std::vector<std::int16_t> clipSamples_;  // ClipSamples, 0..ClipLength
  std::int64_t shownClipStart_ = 0;
  std::int64_t copyStart_ = 0, copyEnd_ = 0, copyLength_ = 0;
  std::vector<std::int16_t> copied_;   // what the last copy or cut took
  LineState lineState_ = LineState::None;
  bool pasteReady_ = false;            // PasteReady "Y"
  bool clipShown_ = false;
  std::string fileName_;               // FileName
  double popupX_ = 0.0;                // where the pop-up menu was asked for
  // The widths the pictures were last drawn at, in pixels; kDumpWidth
  // until a view draws them. Pointer positions map through them.
  mutable std::array<int, 2> drawnWidth_{kDumpWidth, kDumpWidth};
  WaveControl clip_;                   // Clip: the clip's scratch sound

  // Playback: what plays, from where, and the timer that follows it.
  Playing playing_ = Playing::Nothing;
  std::int64_t playPosition_ = 0;      // the file's play position
  std::int64_t clipPosition_ = 0;      // the clip's play position
  std::int64_t playFrom_ = 0;          // where the sound now playing began
  long long soundNumber_ = -1;
  int playTimer_ = 0;
};

std::unique_ptr<Form> MakeSoundEditorForm(FormContext& context);

}  // namespace keldo::sound
