#pragma once
// A printed document: pages of lines, dots, texts and pictures, positioned in
// inches from the printable page's top-left corner. A document stays open
// across several print commands, so that several graphs can share a sheet;
// End finishes it (ejects the paper).

#include <string>

#include "platform/color.h"
#include "platform/image.h"

namespace keldo::platform {

// The printable area of a page, in inches. Graphs are laid out on a
// landscape sheet.
struct PageSize {
  double width = 11.0;
  double height = 8.5;
};

class Printer {
 public:
  virtual ~Printer() = default;
  // Starts a document on a new sheet; false when no printer is available or
  // the person cancelled the print dialog.
  virtual bool Begin(const std::string& documentName) = 0;
  // Whether a document is open: the next print goes on its current page.
  virtual bool IsOpen() const = 0;
  virtual PageSize Page() const = 0;
  // Whether the printer prints in colour (a file always does).
  virtual bool SupportsColour() const { return true; }
  virtual void NewPage() = 0;
  virtual void SetFont(const std::string& family, double points) = 0;
  virtual void Line(double x1, double y1, double x2, double y2, Rgb color) = 0;
  // A dot of one printer pixel or so, centred on the point.
  virtual void Dot(double x, double y, Rgb color) = 0;
  // Text whose baseline starts at (x, y), in the current font.
  virtual void Text(double x, double y, const std::string& text) = 0;
  virtual void Picture(double x, double y, double width, double height, const RgbImage& image) = 0;
  // Ends the document; false when none was open or it could not be written.
  virtual bool End() = 0;
};

}  // namespace keldo::platform
