#include "print/paper_surface.h"

#include <algorithm>
#include <cmath>

namespace keldo::print {
namespace {

// Liang and Barsky's clip of the segment (x1,y1)-(x2,y2) to the unit
// square, in place; false when nothing of it is inside.
bool ClipToUnitSquare(double& x1, double& y1, double& x2, double& y2) {
  const double dx = x2 - x1, dy = y2 - y1;
  double t0 = 0.0, t1 = 1.0;
  const double p[4] = {-dx, dx, -dy, dy};
  const double q[4] = {x1, 1.0 - x1, y1, 1.0 - y1};
  for (int k = 0; k < 4; ++k) {
    if (p[k] == 0.0) {
      if (q[k] < 0.0) return false;
      continue;
    }
    const double t = q[k] / p[k];
    if (p[k] < 0.0) t0 = std::max(t0, t);
    else t1 = std::min(t1, t);
    if (t0 > t1) return false;
  }
  const double ox = x1, oy = y1;
  x1 = ox + t0 * dx;
  y1 = oy + t0 * dy;
  x2 = ox + t1 * dx;
  y2 = oy + t1 * dy;
  return true;
}

// The grey of a colour, for pictures printed in monochrome.
platform::Rgb Grey(platform::Rgb c) {
  const int g = (platform::RedOf(c) + platform::GreenOf(c) + platform::BlueOf(c)) / 3;
  return platform::MakeRgb(g, g, g);
}

}  // namespace

void PrinterTarget::Line(double x1, double y1, double x2, double y2, platform::Rgb color) {
  printer_.Line(x1, y1, x2, y2, color);
}
void PrinterTarget::Dot(double x, double y, platform::Rgb color) { printer_.Dot(x, y, color); }
void PrinterTarget::Text(double x, double y, const std::string& text) { printer_.Text(x, y, text); }
void PrinterTarget::Picture(double x, double y, double width, double height, const platform::RgbImage& image) {
  printer_.Picture(x, y, width, height, image);
}

// The scale runs over the pixels' edges: pixel i covers [i, i + 1).
SurfaceTarget::SurfaceTarget(platform::Surface& surface) : surface_(surface) {
  surface_.SetScale({0.0, 0.0, static_cast<double>(surface.PixelWidth()), static_cast<double>(surface.PixelHeight())});
}

void SurfaceTarget::Line(double x1, double y1, double x2, double y2, platform::Rgb color) {
  surface_.Line(x1, y1, x2, y2, color);
}

void SurfaceTarget::Dot(double x, double y, platform::Rgb color) { surface_.SetPixel(x, y, color); }

void SurfaceTarget::Picture(double x, double y, double width, double height, const platform::RgbImage& image) {
  if (image.Empty() || !(width > 0.0) || !(height > 0.0)) return;
  // Every pixel the rectangle touches.
  const int x0 = static_cast<int>(std::floor(x)), y0 = static_cast<int>(std::floor(y));
  const int w = static_cast<int>(std::ceil(x + width)) - x0, h = static_cast<int>(std::ceil(y + height)) - y0;
  for (int j = 0; j < h; ++j)
    for (int i = 0; i < w; ++i)
      surface_.SetPixel(x0 + i, y0 + j,
                        image.At(static_cast<int>(static_cast<long long>(i) * image.width / w),
                                 static_cast<int>(static_cast<long long>(j) * image.height / h)));
}

platform::Rgb PaperColourOf(platform::Rgb color, PaperColour mode) {
  if (mode == PaperColour::Monochrome || color == platform::kWhite) return platform::kBlack;
  return color;
}

PaperSurface::PaperSurface(PaperTarget& target, PaperBox box, int pixelWidth, int pixelHeight, PaperColour mode,
                           int gridDotSteps)
    : target_(target), box_(box), pixelWidth_(std::max(1, pixelWidth)), pixelHeight_(std::max(1, pixelHeight)),
      mode_(mode), gridDotSteps_(std::max(1, gridDotSteps)) {}

void PaperSurface::Line(double x1, double y1, double x2, double y2, platform::Rgb color) {
  double fx1 = FractionX(x1), fy1 = FractionY(y1), fx2 = FractionX(x2), fy2 = FractionY(y2);
  if (!std::isfinite(fx1) || !std::isfinite(fy1) || !std::isfinite(fx2) || !std::isfinite(fy2)) return;
  if (!ClipToUnitSquare(fx1, fy1, fx2, fy2)) return;
  target_.Line(TargetX(fx1), TargetY(fy1), TargetX(fx2), TargetY(fy2), PaperColourOf(color, mode_));
}

void PaperSurface::SetPixel(double x, double y, platform::Rgb color) {
  const double fx = FractionX(x), fy = FractionY(y);
  if (!(fx >= 0.0 && fx <= 1.0 && fy >= 0.0 && fy <= 1.0)) return;
  target_.Dot(TargetX(fx), TargetY(fy), PaperColourOf(color, mode_));
}

void PaperSurface::Text(double x, double y, const std::string& text, platform::Rgb) {
  const double fx = FractionX(x), fy = FractionY(y);
  if (!std::isfinite(fx) || !std::isfinite(fy)) return;
  target_.Text(TargetX(fx), TargetY(fy), text);
}

void PaperSurface::DrawImage(const platform::RgbImage& image) {
  if (image.Empty()) return;
  if (mode_ == PaperColour::Colour) {
    target_.Picture(box_.left, box_.top, box_.right - box_.left, box_.bottom - box_.top, image);
    return;
  }
  platform::RgbImage grey = image;
  for (platform::Rgb& c : grey.pixels) c = Grey(c);
  target_.Picture(box_.left, box_.top, box_.right - box_.left, box_.bottom - box_.top, grey);
}

}  // namespace keldo::print
