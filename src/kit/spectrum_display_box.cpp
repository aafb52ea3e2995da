#include "kit/spectrum_display_box.h"

namespace keldo {
namespace {

constexpr const char* kModes[] = {"Log (global)", "Linear (global)", "Log (local)", "Linear (local)"};

int Chosen(const ControlModel& controls, const std::string& base, int count) {
  for (int k = 0; k < count; ++k)
    if (const Control* c = controls.Find(IndexedName(base, k)); c && c->value) return k;
  return 0;
}

}  // namespace

void SpectrumDisplayBox::AddControls(ControlModel& controls) const {
  for (int k = 0; k < 4; ++k) controls.AddOption(IndexedName("OpMag", k), kModes[k], "OpMag", k == 0);
  controls.AddOption(IndexedName(view, 0), "G1: Magnitude", view, true);
  controls.AddOption(IndexedName(view, 1), "G2: Phase", view);
  controls.AddOption("OpSignalDisplay(0)", "Dots", "OpSignalDisplay");
  controls.AddOption("OpSignalDisplay(1)", "Lines", "OpSignalDisplay", true);
  Control& go = controls.Add(IndexedName("GoButton", goButton), ControlKind::Button, "&Apply");
  go.tip = "Redraws the picture in the style chosen.";
}

LayoutNode SpectrumDisplayBox::Panel() const {
  using namespace layout;
  return Rows({Item("OpMag(0)"), Item("OpMag(1)"), Item("OpMag(2)"), Item("OpMag(3)"), Item(IndexedName(view, 0)),
               Item(IndexedName(view, 1)), Item("OpSignalDisplay(0)"), Item("OpSignalDisplay(1)"),
               Item(IndexedName("GoButton", goButton))});
}

int SpectrumDisplayBox::MagnitudeMode(const ControlModel& controls) const { return Chosen(controls, "OpMag", 4); }

bool SpectrumDisplayBox::ShowsPhase(const ControlModel& controls) const { return Chosen(controls, view, 2) == 1; }

bool SpectrumDisplayBox::SignalAsDots(const ControlModel& controls) const {
  return Chosen(controls, "OpSignalDisplay", 2) == 0;
}

void SpectrumDisplayBox::Select(ControlModel& controls, int mode, int shown) const {
  if (mode >= 0 && mode < 4) controls.SetFromUser(IndexedName("OpMag", mode), "1");
  if (shown >= 0 && shown < 2) controls.SetFromUser(IndexedName(view, shown), "1");
}

bool SpectrumDisplayBox::Redraws(const std::string& name) const {
  std::string base;
  int index = -1;
  SplitIndexedName(name, base, index);
  return base == "OpMag" || base == view || base == "OpSignalDisplay";
}

}  // namespace keldo
