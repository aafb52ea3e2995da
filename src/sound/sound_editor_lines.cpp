// The audio editor's two lines: placing them with the pointer or by ear,
// moving them together, and the pop-up menu of the whole-file picture.

#include "kit/form_context.h"
#include "sound/sound_editor_form.h"

namespace keldo::sound {

bool SoundEditorForm::Mouse(MouseAction action, double x, double y, MouseButton button) {
  return PictureMouse(kFilePicture, action, x, y, button);
}

bool SoundEditorForm::PictureMouse(int picture, MouseAction action, double x, double, MouseButton button) {
  if (picture != kFilePicture || action != MouseAction::Down) return true;
  if (button == MouseButton::Right) {
    popupX_ = x;
    SetPopUpMenu();
    return true;
  }
  if (button == MouseButton::Left && lineState_ != LineState::Both && !samples_.empty()) DrawClipLine(x);
  return true;
}

void SoundEditorForm::DrawClipLine(double x) {
  const std::int64_t p = ClickedSample(x, SampleCount());
  if (lineState_ == LineState::None) {
    if (p < 0) {
      SoundError(6);
      return;
    }
    clipStart_ = p;
    lineState_ = LineState::LineOne;
    playPosition_ = p;
    controls_.SetEnabled("mnuEraseClipLines", true);
    ShowLinePositions();
    ShowPlayPosition();
    return;
  }
  if (lineState_ == LineState::LineOne) PlaceSecondLine(p);
}

bool SoundEditorForm::PlaceSecondLine(std::int64_t p) {
  if (RefusedSecondLine(p, clipStart_)) {
    context_.Beep();
    return false;
  }
  const std::int32_t length = SetClipLength(p - clipStart_, clipStart_, SampleCount());
  if (length == -1) {
    context_.Beep();
    return false;
  }
  clipLength_ = length;
  lineState_ = LineState::Both;
  EnableClipCommands(true);
  ShowLinePositions();
  return true;
}

void SoundEditorForm::EraseClipLines() {
  lineState_ = LineState::None;
  EnableClipCommands(false);
  EraseClipFrames();
  ShowLinePositions();
}

void SoundEditorForm::SetPopUpMenu() {
  // The clip commands follow the lines; Paste follows a copy.
  const bool both = lineState_ == LineState::Both;
  for (const char* name : {"mnuMoveClip", "mnuClip", "mnuCut", "mnuCopy"}) controls_.SetEnabled(name, both);
  controls_.SetEnabled("mnuPaste", pasteReady_ && lineState_ != LineState::None);
}

void SoundEditorForm::MoveClip(double x) {
  if (lineState_ != LineState::Both) {
    context_.Beep();
    return;
  }
  std::int64_t start = x > 0 ? static_cast<std::int64_t>(x) : 0;
  if (!(x < static_cast<double>(SampleCount())) || start + clipLength_ >= SampleCount()) {
    context_.Beep();
    return;
  }
  const bool shown = clipShown_;
  if (shown) EraseClip();
  clipStart_ = start;
  copyStart_ = start;
  copyEnd_ = start + clipLength_;
  ShowLinePositions();
  if (shown) PlotClipCommand();
}

// The moves keep the clip's length: Line 2 follows Line 1.
void SoundEditorForm::MoveLinesLeft() {
  if (lineState_ == LineState::None || clipStart_ <= 0) return;
  --clipStart_;
  copyStart_ = clipStart_;
  if (lineState_ == LineState::Both) copyEnd_ = clipLength_ + clipStart_;
  ShowLinePositions();
}

void SoundEditorForm::MoveLinesRight() {
  if (lineState_ == LineState::None || clipStart_ >= LastClipStart()) return;
  ++clipStart_;
  copyStart_ = clipStart_;
  if (lineState_ == LineState::Both) copyEnd_ = clipLength_ + clipStart_;
  ShowLinePositions();
}

void SoundEditorForm::MoveLinesToStart() {
  if (lineState_ == LineState::None) return;
  clipStart_ = 0;
  copyStart_ = 0;
  if (lineState_ == LineState::Both) copyEnd_ = clipLength_;
  ShowLinePositions();
}

void SoundEditorForm::MoveLinesToEnd() {
  if (lineState_ == LineState::None || LastClipStart() < 0) return;
  clipStart_ = LastClipStart();
  copyStart_ = clipStart_;
  if (lineState_ == LineState::Both) copyEnd_ = clipLength_ + clipStart_;
  ShowLinePositions();
}

std::int64_t SoundEditorForm::LastClipStart() const {
  // A marked clip ends before the last sample; Line 1 alone stands where
  // a click may put it, 64 samples before the end.
  return lineState_ == LineState::Both ? SampleCount() - clipLength_ - 1 : SampleCount() - kMinClip;
}

}  // namespace keldo::sound
