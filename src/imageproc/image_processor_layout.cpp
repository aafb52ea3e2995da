// The image processor's side box and its report.

#include "imageproc/image_processor_form.h"

namespace keldo::imageproc {
namespace {

using namespace layout;
using F = LayoutNode;

FormLayout MakeLayout() {
  FormLayout l;
  l.sideBox = {
      {0, Rows({Item("OpTransform(0)"), Item("OpTransform(1)"),
                Field("Levels:", "txtLevels"), Field("Wavelet:", "cmbWavelet"), Field("Bit rate (bpp):", "txtBitRate"),
                Group("Coder", Column({Item("OpEntropyCode(0)"), Item("OpEntropyCode(1)"), Item("OpEntropyCode(2)"),
                                       Item("OpEntropyCode(3)")})),
                Field("Region share:", "txtROIPercent"),
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
