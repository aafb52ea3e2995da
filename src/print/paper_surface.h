#pragma once
// A drawing surface that puts a form's picture onto paper. The form paints
// as it paints its window; this surface sends the strokes to a box on a
// printer page or on a saved image, clipped to the box (a printer, unlike
// a window, would draw beyond it), on white paper: the form's background
// is not drawn, and in monochrome every stroke is black.

#include <string>

#include "platform/image.h"
#include "platform/printer.h"
#include "platform/surface.h"

namespace keldo::print {

enum class PaperColour { Colour, Monochrome };

// Where the strokes go, in the target's own units.
class PaperTarget {
 public:
  virtual ~PaperTarget() = default;
  virtual void Line(double x1, double y1, double x2, double y2, platform::Rgb color) = 0;
  virtual void Dot(double x, double y, platform::Rgb color) = 0;
  virtual void Text(double x, double y, const std::string& text) = 0;
  virtual void Picture(double x, double y, double width, double height, const platform::RgbImage& image) = 0;
};

// A printer page, in inches from its top-left corner.
class PrinterTarget final : public PaperTarget {
 public:
  explicit PrinterTarget(platform::Printer& printer) : printer_(printer) {}
  void Line(double x1, double y1, double x2, double y2, platform::Rgb color) override;
  void Dot(double x, double y, platform::Rgb color) override;
  void Text(double x, double y, const std::string& text) override;
  void Picture(double x, double y, double width, double height, const platform::RgbImage& image) override;

 private:
  platform::Printer& printer_;
};

// A surface in its pixels: x from 0 at its left edge to its width at its
// right edge, and likewise y; texts are left out.
class SurfaceTarget final : public PaperTarget {
 public:
  explicit SurfaceTarget(platform::Surface& surface);
  void Line(double x1, double y1, double x2, double y2, platform::Rgb color) override;
  void Dot(double x, double y, platform::Rgb color) override;
  void Text(double, double, const std::string&) override {}
  void Picture(double x, double y, double width, double height, const platform::RgbImage& image) override;

 private:
  platform::Surface& surface_;
};

// The box the picture fills, in the target's units.
struct PaperBox {
  double left = 0.0, top = 0.0, right = 1.0, bottom = 1.0;
};

// The colour a stroke takes on paper: black in monochrome; in colour the
// same, but white (which paper would hide) turns black.
platform::Rgb PaperColourOf(platform::Rgb color, PaperColour mode);

class PaperSurface final : public platform::Surface {
 public:
  // `pixelWidth` by `pixelHeight` is the size the form is told it paints at.
  // `gridDotSteps` is the steps of a dotted grid line on this paper.
  PaperSurface(PaperTarget& target, PaperBox box, int pixelWidth, int pixelHeight, PaperColour mode,
               int gridDotSteps = 128);
  int PixelWidth() const override { return pixelWidth_; }
  int PixelHeight() const override { return pixelHeight_; }
  void Clear(platform::Rgb) override {}
  void SetScale(const platform::UserScale& scale) override { scale_ = scale; }
  void SetPenWidth(int) override {}
  void Line(double x1, double y1, double x2, double y2, platform::Rgb color) override;
  void SetPixel(double x, double y, platform::Rgb color) override;
  platform::Rgb GetPixel(double, double) const override { return platform::kWhite; }
  void Text(double x, double y, const std::string& text, platform::Rgb color) override;
  int GridDotSteps() const override { return gridDotSteps_; }
  void DrawImage(const platform::RgbImage& image) override;
  void Refresh() override {}
  platform::RgbImage Snapshot() const override { return {}; }

 private:
  // User coordinates to fractions of the box: 0 at its left (top), 1 at
  // its right (bottom).
  double FractionX(double x) const { return (x - scale_.left) / (scale_.right - scale_.left); }
  double FractionY(double y) const { return (y - scale_.top) / (scale_.bottom - scale_.top); }
  double TargetX(double f) const { return box_.left + f * (box_.right - box_.left); }
  double TargetY(double f) const { return box_.top + f * (box_.bottom - box_.top); }

  PaperTarget& target_;
  PaperBox box_;
  int pixelWidth_, pixelHeight_;
  PaperColour mode_;
  int gridDotSteps_;
  platform::UserScale scale_;
};

}  // namespace keldo::print
