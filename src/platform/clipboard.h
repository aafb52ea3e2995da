#pragma once
// The system clipboard: text, and pictures.

#include <string>

#include "platform/image.h"

namespace keldo::platform {

class Clipboard {
 public:
  virtual ~Clipboard() = default;
  virtual std::string Text() const = 0;
  virtual void SetText(const std::string& text) = 0;
  virtual void SetImage(const RgbImage& image) = 0;
};

}  // namespace keldo::platform
