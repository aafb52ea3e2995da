#pragma once
// The display box of the time-frequency forms: how the picture of a complex
// spectrum is shown. OpMag(0..3) picks the magnitude scale ("Log (global)",
// "Linear (global)", "Log (local)", "Linear (local)"); a pair of options
// shows the magnitude or the phase ("G1: Magnitude", "G2: Phase"; the
// spectrogram names them OpMagPhase, the scalogram OpView); OpSignalDisplay
// draws the signal under the picture as "Dots" or "Lines". Go redraws.

#include <string>

#include "kit/controls.h"
#include "kit/layout.h"

namespace keldo {

struct SpectrumDisplayBox {
  const char* view;  // the magnitude-or-phase options: "OpMagPhase" or "OpView"
  int goButton;      // GoButton(k) that redraws

  void AddControls(ControlModel& controls) const;
  LayoutNode Panel() const;
  // The OpMag index chosen, 0 to 3.
  int MagnitudeMode(const ControlModel& controls) const;
  bool ShowsPhase(const ControlModel& controls) const;
  bool SignalAsDots(const ControlModel& controls) const;
  // Chooses a mode and a view, as a form file gives them; out-of-range
  // values leave the choice as it is.
  void Select(ControlModel& controls, int mode, int view) const;
  // Whether a change of this control asks for a redraw.
  bool Redraws(const std::string& name) const;
};

}  // namespace keldo
