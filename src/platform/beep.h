#pragma once
// The platform beep: the only answer to a refused action.

namespace keldo::platform {

class Beeper {
 public:
  virtual ~Beeper() = default;
  virtual void Beep() = 0;
};

}  // namespace keldo::platform
