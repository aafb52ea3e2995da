// The spectrogram's side-box panels and its bottom row.

#include "timefreq/spectrogram_form.h"

namespace keldo::timefreq {
namespace {

using namespace layout;
using F = LayoutNode;

FormLayout MakeLayout() {
  FormLayout l;
  l.sideBox = {
      {kPanelCompute, Rows({Field("Window length:", "SpSetting(0)"), Field("Step size:", "SpSetting(1)"),
                            Field("Window:", "SpecFilter"), Item("GoButton(0)")})},
      {kPanelDisplay, kDisplayBox.Panel()},
      {kPanelThreshold, Rows({Item("LabMaximum"), Field("Threshold:", "txtThreshold"), Item("GoButton(2)")})},
      {kPanelFormula, Rows({Item("GoButton(3)"), Item("PercentDone")})},
      {kPanelInvert, Rows({Title("LabelInvert"), Group("Inversion method",
                                                        Column({Item("OpInversion(0)"), Item("OpInversion(1)"),
                                                                Item("OpInversion(2)")})),
                           Item("GoButton(4)")})},
      {kPanelPlay, TimeFreqForm::PlayPanel(5)},
      {kPanelInformation, TimeFreqForm::TextPanel("txtInformation")},
      {kPanelModifications, TimeFreqForm::TextPanel("txtModReport")},
  };
  l.bottom = Column({Line({Item("labSigValues", F::kStretch)}), TimeFreqForm::FormulaRow("Formula of x, y, g1:", 3)});
  l.titleControl = "mnuHelpSideBox";
  l.titleSkip = 9;  // "Help for "
  return l;
}

}  // namespace

const FormLayout& SpectrogramForm::Layout() const {
  static const FormLayout kLayout = MakeLayout();
  return kLayout;
}

}  // namespace keldo::timefreq
