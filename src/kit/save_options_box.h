#pragma once
// The options for saving images (JPEG quality, grey scale and progressive
// scan, TIFF compression, interlaced PNG, and the wavelet coder's targets),
// shown in a side box in place of a dialog. One set of values serves the
// whole program: the frame keeps them between uses, and the frame's caption
// fields and coder codes take them over on Apply.

#include <string>

#include "kit/controls.h"
#include "kit/layout.h"
#include "kit/settings.h"

namespace keldo {

// The box's controls; cmdApply and cmdCancel are shared with other boxes of
// the form and added only when missing.
void AddSaveOptionsControls(ControlModel& controls);
LayoutNode SaveOptionsPanel();
// Fills the box from the values the frame kept, or the defaults.
void OpenSaveOptions(ControlModel& controls, const FrameSettings& settings);
// The rules between the box's controls after `name` changed; false when it
// is not one of them.
bool SaveOptionsControlChanged(ControlModel& controls, const std::string& name);

// What Apply found: 0 when the options were taken over, a message number
// (81 to 84, 86, 87) or -1 for a beep (a JPEG quality outside 1 to 99),
// with the control to focus.
struct SaveOptionsCheck {
  int message = 0;
  std::string focus;
};
SaveOptionsCheck ApplySaveOptions(ControlModel& controls, FrameSettings& settings);
// Cancel: the quality and TIFF choice return to the frame's values; what
// else was typed is kept for the next opening.
void CancelSaveOptions(ControlModel& controls, FrameSettings& settings);

// The options an image save passes on, from the frame's values.
struct ImageSaveChoices {
  int jpegQuality = 70;
  int tiffCompression = 0;
  bool greyScale = false, progressive = false, interlaced = false;
};
ImageSaveChoices SaveChoicesOf(const FrameSettings& settings);

}  // namespace keldo
