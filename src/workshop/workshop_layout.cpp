// The workshop's boxes and buttons, and its report.

#include "workshop/workshop_form.h"

namespace keldo::workshop {
namespace {

using namespace layout;
using F = LayoutNode;

FormLayout MakeLayout() {
  FormLayout l;
  // No pictures: the boxes side by side across the form, the denoiser's
  // fields and the test aids under them, and the report filling the rest.
  LayoutNode coding = Group("Coding", Column({Item("OpLossy(0)"), Item("OpLossy(1)"), Item("OpCompress(0)"),
                                              Item("OpCompress(1)"), Item("OpCompress(2)"), Item("OpModel(0)"),
                                              Item("OpModel(1)")}));
  LayoutNode stop =
      Group("Stop", Column({Item("OpCompRatio"), Item("txtBitRate"), Item("OpPSNR"), Item("txtPSNR")}));
  LayoutNode scan =
      Group("Scan order", Column({Item("OpScan(0)"), Item("OpScan(1)"), Item("OpScan(2)"), Item("OpScan(3)")}));
  LayoutNode run = Column({Line({Text("Levels:"), Item("txtLevels")}), Item("cmdEncode"), Item("cmdDecode")});
  l.bottom = Column({Line({coding, stop, scan, run}),
                     Line({Text("Denoise, levels:"), Item("txtDNLevels"), Text("depth:"), Item("txtDepth"),
                           Text("descents:"), Item("txtDescents"), Text("threshold:"), Item("txtDNThresh"),
                           Item("chkRefine"), Item("chkShrinkage"), Item("cmdDenoise", F::kFitWidth)}),
                     Line({Item("cmdScanOrder", F::kFitWidth), Item("cmdZigZag", F::kFitWidth),
                           Item("cmdLookUp", F::kFitWidth), Item("cmdArithCode", F::kFitWidth),
                           Item("cmdHelp", F::kFitWidth)}),
                     Item("TxtData", F::kMultiLine | F::kReadOnly | F::kStretch)});
  return l;
}

}  // namespace

const FormLayout& WorkshopForm::Layout() const {
  static const FormLayout kLayout = MakeLayout();
  return kLayout;
}

}  // namespace keldo::workshop
