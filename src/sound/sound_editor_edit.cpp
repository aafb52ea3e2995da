// The audio editor's clip and its edits: the clip plotted from the file,
// copy, cut and paste inside the file, the file opened and saved, and the
// clip sent to a one-dimensional form.

#include <algorithm>
#include <new>

#include "kit/form_context.h"
#include "platform/file_dialog.h"
#include "sound/sound_editor_form.h"

namespace keldo::sound {

int SoundEditorForm::InitializeWave2() {
  // The clip's scratch sound: an empty sound of the file's bits, sized to
  // the clip. It lives in memory, so there is no file to clean up.
  try {
    clip_.Create(bits_, sampleRate_);
    clip_.SetLength(clipLength_);
  } catch (const std::bad_alloc&) {
    SoundError(3);
    return -1;
  }
  return 0;
}

int SoundEditorForm::PlotClip() {
  if (lineState_ != LineState::Both || clipStart_ + clipLength_ >= SampleCount()) return -1;
  if (InitializeWave2() == -1) return -1;
  clip_.SetRate(sampleRate_);
  // ClipSamples holds ClipLength + 1 samples, 0 to ClipLength: the clip and
  // the sample after it, so that a graph of ClipLength intervals takes it.
  const auto first = samples_.begin() + clipStart_;
  clipSamples_.assign(first, first + clipLength_ + 1);
  shownClipStart_ = clipStart_;
  clip_.SetPosition(0);
  clip_.Write(std::vector<std::int16_t>(clipSamples_.begin(), clipSamples_.end() - 1));
  clip_.SetPosition(0);
  if (clip_.LastError() != 0) {
    SoundError(4);
    clip_.Close();
    return -1;
  }
  clipShown_ = true;
  clipPosition_ = 0;
  Touch();
  return 0;
}

void SoundEditorForm::PlotClipCommand() {
  if (PlotClip() == -1) {
    SoundError(5);
    return;
  }
  EnableButtons(1);
}

void SoundEditorForm::EraseClip() {
  if (playing_ == Playing::Clip) EndPlaying(false);
  clipShown_ = false;
  clipSamples_.clear();
  DisEnableButtons(1);
  Touch();
}

void SoundEditorForm::CopyClip() {
  if (lineState_ != LineState::Both) {
    context_.Beep();
    return;
  }
  copyLength_ = clipLength_;
  copyStart_ = clipStart_;
  copyEnd_ = copyStart_ + copyLength_;
  const auto first = samples_.begin() + copyStart_;
  copied_.assign(first, first + copyLength_);
  pasteReady_ = true;
  context_.settings().wavPasteValue = "Y";
  controls_.SetEnabled("mnuPaste", true);
  Touch();
}

void SoundEditorForm::CutClip() {
  if (lineState_ != LineState::Both) {
    context_.Beep();
    return;
  }
  EndPlaying(false);
  CopyClip();
  samples_.erase(samples_.begin() + copyStart_, samples_.begin() + copyEnd_);
  playPosition_ = std::min<std::int64_t>(playPosition_, SampleCount());
  // RedrawWaveFile, with the count shown anew; the lines are gone.
  controls_.SetText("labSamples", "Samples: " + std::to_string(SampleCount()));
  EraseClipLines();
}

void SoundEditorForm::PasteAtLineOne() {
  if (!pasteReady_ || samples_.empty()) {
    context_.Beep();
    return;
  }
  EndPlaying(false);
  const std::int32_t length = NewLength(SampleCount(), copyLength_);
  copyStart_ = std::min<std::int64_t>(clipStart_, SampleCount());
  if (length != -1) {
    try {
      samples_.insert(samples_.begin() + copyStart_, copied_.begin(), copied_.end());
    } catch (const std::bad_alloc&) {
      // The file stays as it was.
      context_.ShowError(49);
      return;
    }
  }
  copyEnd_ = copyStart_ + copyLength_;
  clipStart_ = copyStart_;
  controls_.SetText("labSamples", "Samples: " + std::to_string(SampleCount()));
  // Line 1 stands where the paste went; the clip commands wait for Line 2.
  lineState_ = LineState::LineOne;
  EnableClipCommands(false);
  controls_.SetEnabled("mnuEraseClipLines", false);
  ShowLinePositions();
}

void SoundEditorForm::ClearEditor() { InitializeDisplays(); }

void SoundEditorForm::OpenFile() {
  const auto chosen = context_.services().fileDialog->Run(
      {platform::FileDialogMode::Open, "Open audio file", "Audio file (*.wav)|*.wav", 1,
       platform::kFlagFileMustExist, ".wav", context_.Folder("Audio")});
  if (!chosen) return;
  LoadWavFile(chosen->path);
}

bool SoundEditorForm::SaveTo(const std::string& path) {
  if (samples_.empty()) return false;
  EndPlaying(false);
  WaveControl wave;
  wave.Assign(bits_, sampleRate_, std::move(samples_));
  bool saved = false;
  try {
    wave.SaveAs(path);
    saved = wave.LastError() == 0;
  } catch (const std::bad_alloc&) {
    saved = false;
  }
  samples_ = wave.TakeSamples();
  if (!saved) context_.ShowError(32);
  return saved;
}

void SoundEditorForm::SaveFile() {
  if (fileName_.empty()) {
    SaveFileAs();
    return;
  }
  SaveTo(fileName_);
}

void SoundEditorForm::SaveFileAs() {
  const auto chosen = context_.services().fileDialog->Run(
      {platform::FileDialogMode::Save, "Save audio file", "Wave files (*.wav)|*.wav", 1,
       platform::kFlagsSaveDialog, ".wav", context_.Folder("Audio")});
  if (!chosen) return;
  if (SaveTo(chosen->path)) fileName_ = chosen->path;
}

void SoundEditorForm::PasteClip() {
  if (!clipShown_ || clipSamples_.empty()) {
    context_.Beep();
    return;
  }
  SoundArrayReceiver* form = NewFormFor<SoundArrayReceiver>(context_, FormKind::Graph1);
  if (!form) return;
  const std::vector<double> values(clipSamples_.begin(), clipSamples_.end());
  form->InputSoundArray(values, bits_, sampleRate_, static_cast<int>(values.size()));
}

}  // namespace keldo::sound
