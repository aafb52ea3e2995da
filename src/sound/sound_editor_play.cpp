// The audio editor's playback: the file or the clip from its play position
// to its end, followed by a timer that shows where the sound is, and Stop,
// which can mark the clip's second line where the sound was stopped.

#include "kit/form_context.h"
#include "sound/sound_editor_form.h"

namespace keldo::sound {
namespace {

// How often the play position is looked at while a sound plays.
constexpr int kFollowMilliseconds = 50;

// What the audio service plays: 16-bit values, an 8-bit sample's unsigned
// byte b becoming (b - 128) * 256.
std::vector<std::int16_t> PlayableSound(const std::vector<std::int16_t>& sound, std::int64_t from, int bits) {
  std::vector<std::int16_t> out;
  if (from < 0 || from >= static_cast<std::int64_t>(sound.size())) return out;
  out.assign(sound.begin() + from, sound.end());
  if (bits == 8)
    for (std::int16_t& s : out) s = static_cast<std::int16_t>((s - 128) * 256);
  return out;
}

}  // namespace

void SoundEditorForm::PlayFile() {
  if (samples_.empty() || playing_ != Playing::Nothing) {
    context_.Beep();
    return;
  }
  StartPlaying(Playing::File, samples_, playPosition_);
}

void SoundEditorForm::PlayClip() {
  if (!clipShown_ || playing_ != Playing::Nothing) {
    context_.Beep();
    return;
  }
  // The clip without the sample after it.
  StartPlaying(Playing::Clip, std::vector<std::int16_t>(clipSamples_.begin(), clipSamples_.end() - 1), clipPosition_);
}

void SoundEditorForm::StartFile() {
  playPosition_ = 0;
  ShowPlayPosition();
}

void SoundEditorForm::StartClip() {
  clipPosition_ = 0;
  ShowPlayPosition();
}

bool SoundEditorForm::StartPlaying(Playing what, const std::vector<std::int16_t>& sound, std::int64_t from) {
  platform::Audio& audio = *context_.services().audio;
  if (!audio.Play(PlayableSound(sound, from, bits_), sampleRate_)) {
    context_.ShowError(39);
    return false;
  }
  playing_ = what;
  playFrom_ = from;
  soundNumber_ = audio.SoundNumber();
  controls_.SetEnabled(what == Playing::File ? "cmdPlay" : "cmdPlay2", false);
  controls_.SetEnabled("cmdStop", true);
  if (playTimer_ == 0) playTimer_ = context_.services().timers->Start(kFollowMilliseconds, [this] { FollowPlay(); });
  ShowPlayPosition();
  return true;
}

std::int64_t SoundEditorForm::CurrentPlayPosition() const {
  const platform::Audio& audio = *context_.services().audio;
  if (playing_ == Playing::Nothing) return playPosition_;
  if (audio.SoundNumber() != soundNumber_) return playFrom_;
  return playFrom_ + audio.Position();
}

void SoundEditorForm::FollowPlay() {
  const platform::Audio& audio = *context_.services().audio;
  if (playing_ == Playing::Nothing || audio.SoundNumber() != soundNumber_) {
    // Stopped, or another sound took the device.
    EndPlaying(false);
  } else if (!audio.IsPlaying()) {
    EndPlaying(true);
  } else {
    ShowPlayPosition();
  }
}

void SoundEditorForm::EndPlaying(bool reachedEnd) {
  if (playTimer_ != 0) {
    context_.services().timers->Stop(playTimer_);
    playTimer_ = 0;
  }
  if (playing_ == Playing::Nothing) return;
  platform::Audio& audio = *context_.services().audio;
  std::int64_t position = CurrentPlayPosition();
  if (!reachedEnd && audio.SoundNumber() == soundNumber_ && audio.IsPlaying()) audio.Stop();
  if (playing_ == Playing::File) {
    playPosition_ = reachedEnd ? SampleCount() : std::min(position, SampleCount());
  } else {
    clipPosition_ = reachedEnd ? ShownClipLength() : std::min(position, ShownClipLength());
  }
  playing_ = Playing::Nothing;
  controls_.SetEnabled("cmdPlay", !samples_.empty());
  controls_.SetEnabled("cmdPlay2", clipShown_);
  controls_.SetEnabled("cmdStop", false);
  ShowPlayPosition();
}

void SoundEditorForm::StopPlaying() {
  const bool fileWasPlaying = playing_ == Playing::File;
  EndPlaying(false);
  // Marking by ear: Line 1 placed, the file played, and Stop pressed where
  // the clip should end.
  if (!fileWasPlaying || lineState_ != LineState::LineOne) return;
  if (!PlaceSecondLine(playPosition_)) return;
  if (PlotClip() == -1) {
    SoundError(5);
    return;
  }
  EnableButtons(1);
}

void SoundEditorForm::ShowPlayPosition() {
  const std::int64_t p = playing_ == Playing::Clip ? shownClipStart_ + CurrentPlayPosition() : CurrentPlayPosition();
  controls_.SetText("labPlayPos", samples_.empty() ? "" : "Position: " + std::to_string(p));
  Touch();
}

}  // namespace keldo::sound
