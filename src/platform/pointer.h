#pragma once
// The mouse pointer shown over the frame and its forms.

namespace keldo::platform {

// Values are the window system's pointer numbers.
enum class PointerShape { Default = 0, Hourglass = 11, ArrowHourglass = 13 };

class Pointer {
 public:
  virtual ~Pointer() = default;
  virtual void SetShape(PointerShape shape) = 0;
  virtual PointerShape Shape() const = 0;
};

}  // namespace keldo::platform
