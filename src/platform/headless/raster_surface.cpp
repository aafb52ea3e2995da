#include "platform/headless/raster_surface.h"

#include <cmath>
#include <cstdlib>

namespace keldo::platform {
namespace {

constexpr double kFarOutside = 1.0e6;  // pixels; lines are clipped long before this

int ToPixel(double value, double from, double to, int pixels) {
  if (to == from || !std::isfinite(value)) return -1;
  double p = (value - from) / (to - from) * pixels;
  if (p > kFarOutside) p = kFarOutside;
  if (p < -kFarOutside) p = -kFarOutside;
  return static_cast<int>(std::floor(p));
}

}  // namespace

RasterSurface::RasterSurface(int pixelWidth, int pixelHeight)
    : image_(pixelWidth < 1 ? 1 : pixelWidth, pixelHeight < 1 ? 1 : pixelHeight) {}

void RasterSurface::Clear(Rgb background) {
  for (Rgb& p : image_.pixels) p = background;
  texts_.clear();
  lines_ = 0;
}

int RasterSurface::PixelX(double x) const { return ToPixel(x, scale_.left, scale_.right, image_.width); }
int RasterSurface::PixelY(double y) const { return ToPixel(y, scale_.top, scale_.bottom, image_.height); }

void RasterSurface::Plot(int px, int py, Rgb color) {
  const int lo = -(pen_ - 1) / 2;
  const int hi = pen_ / 2;
  for (int dy = lo; dy <= hi; ++dy)
    for (int dx = lo; dx <= hi; ++dx) image_.Set(px + dx, py + dy, color);
}

void RasterSurface::Line(double x1, double y1, double x2, double y2, Rgb color) {
  ++lines_;
  int ax = PixelX(x1), ay = PixelY(y1), bx = PixelX(x2), by = PixelY(y2);
  const int w = image_.width, h = image_.height;
  // Skip lines wholly off one side of the picture.
  if ((ax < -pen_ && bx < -pen_) || (ax > w + pen_ && bx > w + pen_) ||
      (ay < -pen_ && by < -pen_) || (ay > h + pen_ && by > h + pen_))
    return;
  const int dx = std::abs(bx - ax), sx = ax < bx ? 1 : -1;
  const int dy = -std::abs(by - ay), sy = ay < by ? 1 : -1;
  int err = dx + dy;
  for (long long steps = 0; steps < 4LL * (w + h) + 8; ++steps) {
    Plot(ax, ay, color);
    if (ax == bx && ay == by) break;
    const int e2 = 2 * err;
    if (e2 >= dy) { err += dy; ax += sx; }
    if (e2 <= dx) { err += dx; ay += sy; }
  }
}

void RasterSurface::SetPixel(double x, double y, Rgb color) { Plot(PixelX(x), PixelY(y), color); }

Rgb RasterSurface::GetPixel(double x, double y) const {
  const int px = PixelX(x), py = PixelY(y);
  if (px < 0 || py < 0 || px >= image_.width || py >= image_.height) return kWhite;
  return image_.At(px, py);
}

void RasterSurface::Text(double x, double y, const std::string& text, Rgb color) {
  texts_.push_back({x, y, text, color});
}

}  // namespace keldo::platform
