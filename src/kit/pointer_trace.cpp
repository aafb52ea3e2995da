#include "kit/pointer_trace.h"

#include <algorithm>

#include "common/number_text.h"

namespace keldo {

void PointerTrace::Read(double x, double y) {
  Press(x, y);
  readout_ = "(" + StrSingle(static_cast<float>(x)) + "," + StrSingle(static_cast<float>(y)) + ") ";
}

void PointerTrace::SetIndex(int index, int n) { index_ = std::clamp(index, 0, n); }

ViewWindow PointerTrace::ZoomedIn(const ViewWindow& w, double divisor) const {
  const double hw = (w.right - w.left) / divisor, hh = (w.top - w.bottom) / divisor;
  return {x_ - hw, x_ + hw, y_ - hh, y_ + hh};
}

ViewWindow PointerTrace::ZoomedOut(const ViewWindow& w, double factor) const {
  const double hw = (w.right - w.left) * factor, hh = (w.top - w.bottom) * factor;
  return {x_ - hw, x_ + hw, y_ - hh, y_ + hh};
}

}  // namespace keldo
