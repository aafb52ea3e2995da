// The workshop's boxes and buttons, and its report.

#include "workshop/workshop_form.h"

namespace keldo::workshop {
namespace {

using namespace layout;
using F = LayoutNode;

FormLayout MakeLayout() {
  FormLayout l;
  l.sideBox = {
      {0, Rows({Group("Coding", Column({Item("OpLossy(0)"), Item("OpLossy(1)"), Item("OpCompress(0)"),
                                        Item("OpCompress(1)"), Item("OpCompress(2)"), Item("OpModel(0)"),
                                        Item("OpModel(1)")})),
                Group("Stop", Column({Item("OpCompRatio"), Item("txtBitRate"), Item("OpPSNR"), Item("txtPSNR")})),
                Group("Scan order", Column({Item("OpScan(0)"), Item("OpScan(1)"), Item("OpScan(2)"), Item("OpScan(3)")})),
                Field("Levels:", "txtLevels"), Item("cmdEncode"), Item("cmdDecode"),
                Group("Denoising", Column({Field("Levels:", "txtDNLevels"), Field("Depth:", "txtDepth"),
                                           Field("Descents:", "txtDescents"), Field("Threshold:", "txtDNThresh"),
                                           Item("chkRefine"), Item("chkShrinkage"), Item("cmdDenoise")})),
                Group("Tests", Column({Item("cmdScanOrder"), Item("cmdZigZag"), Item("cmdLookUp"),
                                       Item("cmdArithCode"), Item("cmdHelp")}))})},
  };
  l.bottom = Column({Item("TxtData", F::kMultiLine | F::kReadOnly | F::kStretch)});
  return l;
}

}  // namespace

const FormLayout& WorkshopForm::Layout() const {
  static const FormLayout kLayout = MakeLayout();
  return kLayout;
}

}  // namespace keldo::workshop
