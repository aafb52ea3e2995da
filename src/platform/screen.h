#pragma once
// The size of the screen the frame lives on, in pixels.

namespace keldo::platform {

struct ScreenSize {
  int width = 1024;
  int height = 768;
};

class Screen {
 public:
  virtual ~Screen() = default;
  virtual ScreenSize Size() const = 0;
};

}  // namespace keldo::platform
