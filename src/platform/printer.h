#pragma once
// A printed document: pages of lines and texts, positioned in inches from the
// page's top-left corner.

#include <string>

#include "platform/color.h"
#include "platform/image.h"

namespace keldo::platform {

class Printer {
 public:
  virtual ~Printer() = default;
  // False when no printer is available.
  virtual bool Begin(const std::string& documentName) = 0;
  virtual void NewPage() = 0;
  virtual void SetFont(const std::string& family, double points) = 0;
  virtual void Line(double x1, double y1, double x2, double y2, Rgb color) = 0;
  virtual void Text(double x, double y, const std::string& text) = 0;
  virtual void Picture(double x, double y, double width, double height, const RgbImage& image) = 0;
  virtual bool End() = 0;
};

}  // namespace keldo::platform
