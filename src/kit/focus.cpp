#include "kit/focus.h"

namespace keldo {

void RequestFocus(ControlModel& controls, const std::string& name) {
  Control* request = controls.Find(kActiveControl);
  if (request == nullptr) {
    request = &controls.Add(kActiveControl, ControlKind::Label);
    request->visible = false;
  }
  request->text = name;
  ++request->value;
}

const std::string& FocusRequested(const ControlModel& controls) {
  static const std::string kNone;
  const Control* request = controls.Find(kActiveControl);
  return request != nullptr ? request->text : kNone;
}

int FocusRequests(const ControlModel& controls) {
  const Control* request = controls.Find(kActiveControl);
  return request != nullptr ? request->value : 0;
}

}  // namespace keldo
