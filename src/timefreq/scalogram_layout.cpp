// The scalogram's side-box panels and its bottom row.

#include "timefreq/scalogram_form.h"

namespace keldo::timefreq {
namespace {

using namespace layout;
using F = LayoutNode;

FormLayout MakeLayout() {
  FormLayout l;
  l.sideBox = {
      {kScgPanelCompute, Rows({Field("Octaves:", "txtScalogram(0)"), Field("Voices:", "txtScalogram(1)"),
                               Field("Width:", "txtScalogram(2)"), Field("Freq:", "txtScalogram(3)"),
                               Field("Wavelet:", "WavScgType"), Item("LabStatus"), Item("GoButton(3)")})},
      {kScgPanelDisplay, kScalogramDisplayBox.Panel()},
      {kScgPanelThreshold, Rows({Item("LabMaximum"), Field("Threshold:", "txtThreshold"), Item("GoButton(0)")})},
      {kScgPanelFormula, Rows({Item("GoButton(1)"), Item("PercentDone")})},
      {kScgPanelInvert, Rows({Title("LabelInvert"), Group("Inversion method",
                                                           Column({Item("OpInvert(1)"), Item("OpInvert(2)"),
                                                                   Item("OpInvert(3)")})),
                              Item("GoButton(4)")})},
      {kScgPanelPlay, TimeFreqForm::PlayPanel(5)},
      {kScgPanelInformation, TimeFreqForm::TextPanel("txtInformation")},
      {kScgPanelModifications, TimeFreqForm::TextPanel("txtModReport")},
  };
  l.bottom = Column({Line({Item("labSigValues", F::kStretch)}), TimeFreqForm::FormulaRow("Formula of x, y, g1:", 1)});
  l.titleControl = "mnuHelpSideBox";
  l.titleSkip = 9;  // "Help for "
  return l;
}

}  // namespace

const FormLayout& ScalogramForm::Layout() const {
  static const FormLayout kLayout = MakeLayout();
  return kLayout;
}

}  // namespace keldo::timefreq
