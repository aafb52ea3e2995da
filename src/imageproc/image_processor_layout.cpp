// The image processor's side box and its report.

#include "imageproc/image_processor_form.h"

namespace keldo::imageproc {
namespace {

using namespace layout;
using F = LayoutNode;

FormLayout MakeLayout() {
  FormLayout l;
  l.sideBox = {
      {0, Rows({GroupOf("frTransform", Column({Item("OpTransform(0)"), Item("OpTransform(1)")})),
                GroupOf("frWavelet", Rows({Field("Levels:", "txtLevels"), Field("Wavelet:", "cmbWavelet")})),
                GroupOf("frCoding",
                        Rows({Field("Bit rate (bpp):", "txtBitRate"),
                              Group("Coder", Column({Item("OpEntropyCode(0)"), Item("OpEntropyCode(1)"),
                                                     Item("OpEntropyCode(2)"), Item("OpEntropyCode(3)")})),
                              Field("Percentage of bits to ROI:", "txtROIPercent"), Bare("chkMinBitRate"),
                              Field("Depth:", "txtDepth"), Field("Descent:", "txtDescentPower")})),
                GroupOf("frTAWS", Rows({Field("Threshold:", "TxtThreshold"), Field("Depth:", "txtDepth2"),
                                        Field("Descent:", "txtDescentPower2"), Bare("chkAutoThreshold"),
                                        Bare("chkAverage"), Field("Shifts:", "AvgType"), Bare("chkShrinkage")})),
                GroupOf("frSureShrink", Rows({Bare("chkShrinkage2")})),
                GroupOf("frErrorMeasures",
                        Column({Item("OpErrorMeasure(0)"), Item("OpErrorMeasure(1)"), Item("OpErrorMeasure(2)"),
                                Item("OpErrorMeasure(3)"), Item("OpErrorMeasure(4)"), Item("chkROIErrorOnly")})),
                Group("Left image", Column({Item("OpDisplayImage"), Item("OpDisplayTransform")})),
                Item("cmdBegin")})},
  };
  l.bottom = Column({Item("Report", F::kMultiLine | F::kReadOnly | F::kStretch)});
  l.titleControl = "LabCommand";
  return l;
}

}  // namespace

const FormLayout& ImageProcessorForm::Layout() const {
  static const FormLayout kLayout = MakeLayout();
  return kLayout;
}

}  // namespace keldo::imageproc
