#pragma once
// Lets pending events run during a long loop. Long loops call Yield at fixed
// strides and then test their own stop flag.

namespace keldo::platform {

class EventLoop {
 public:
  virtual ~EventLoop() = default;
  virtual void Yield() = 0;
};

}  // namespace keldo::platform
