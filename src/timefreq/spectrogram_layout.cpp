// The spectrogram's side-box panels and its bottom row.

#include "timefreq/spectrogram_form.h"

namespace keldo::timefreq {
namespace {

using namespace layout;
using F = LayoutNode;

FormLayout MakeLayout() {
  FormLayout l;
  LayoutNode information = Column({Item("txtInformation", F::kMultiLine | F::kReadOnly)});
  LayoutNode report = Column({Item("txtModReport", F::kMultiLine | F::kReadOnly)});
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
      {kPanelPlay, Rows({Field("Sampling rate:", "TxtSound(1)"), Field("Volume:", "TxtSound(2)"),
                         Item("OpBitRate(0)"), Item("OpBitRate(1)"), Item("GoButton(5)")})},
      {kPanelInformation, information},
      {kPanelModifications, report},
  };
  LayoutNode formula = Item("Formula", F::kStretch | F::kFormulaBox);
  formula.enter = "GoButton(3)";
  formula.minimumWidth = 240;
  std::vector<LayoutNode> row{Text("Formula of x, y, g1:"), formula};
  for (int k = 0; k < 5; ++k) row.push_back(Item(IndexedName("cmdFormula", k), F::kFitWidth));
  l.bottom = Column({Line({Item("labSigValues", F::kStretch)}), Line(std::move(row))});
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
