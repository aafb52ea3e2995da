#pragma once
// A small PDF writer for the recording printer: pages of stroked lines,
// square dots, texts in Helvetica and RGB pictures, uncompressed, so that a
// printed page can be looked at or rendered without a window system.
// Coordinates are inches from the page's top-left corner.

#include <string>
#include <vector>

#include "platform/image.h"
#include "platform/printer.h"

namespace keldo::platform {

class PdfDocument {
 public:
  explicit PdfDocument(PageSize page);
  int Pages() const { return static_cast<int>(pages_.size()); }
  void NewPage();
  void SetFont(double points);
  void Line(double x1, double y1, double x2, double y2, Rgb color);
  void Dot(double x, double y, Rgb color);
  void Text(double x, double y, const std::string& text);
  void Picture(double x, double y, double width, double height, const RgbImage& image);
  // The whole file.
  std::string Bytes() const;

 private:
  std::string& Content();
  void StrokeColour(Rgb color);
  void FillColour(Rgb color);
  // Inches to PDF points, y measured up from the page's bottom.
  double X(double inches) const { return inches * 72.0; }
  double Y(double inches) const { return (page_.height - inches) * 72.0; }

  PageSize page_;
  double fontPoints_ = 10.0;
  std::vector<std::string> pages_;
  std::vector<RgbImage> images_;
};

}  // namespace keldo::platform
