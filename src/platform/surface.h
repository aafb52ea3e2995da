#pragma once
// A drawing surface with a user scale: the plot boxes of the forms draw on it.
// Coordinates passed to drawing calls are user coordinates; the scale maps
// (left, top) to the top-left pixel and (right, bottom) to the bottom-right.

#include <span>
#include <string>

#include "platform/color.h"
#include "platform/image.h"

namespace keldo::platform {

struct UserScale {
  double left = 0.0, top = 0.0, right = 1.0, bottom = 1.0;
};

struct UserPoint {
  double x = 0.0, y = 0.0;
};

struct UserSegment {
  double x1 = 0.0, y1 = 0.0, x2 = 0.0, y2 = 0.0;
};

class Surface {
 public:
  virtual ~Surface() = default;
  virtual int PixelWidth() const = 0;
  virtual int PixelHeight() const = 0;
  virtual void Clear(Rgb background) = 0;
  virtual void SetScale(const UserScale& scale) = 0;
  virtual void SetPenWidth(int pixels) = 0;
  virtual void Line(double x1, double y1, double x2, double y2, Rgb color) = 0;
  virtual void SetPixel(double x, double y, Rgb color) = 0;
  virtual Rgb GetPixel(double x, double y) const = 0;
  // Many lines or pixels of one colour at once; a surface may draw them in
  // one batch. The picture is the same as from one call each.
  virtual void Lines(std::span<const UserSegment> segments, Rgb color) {
    for (const UserSegment& s : segments) Line(s.x1, s.y1, s.x2, s.y2, color);
  }
  virtual void Pixels(std::span<const UserPoint> points, Rgb color) {
    for (const UserPoint& p : points) SetPixel(p.x, p.y, color);
  }
  virtual void Text(double x, double y, const std::string& text, Rgb color) = 0;
  // The steps of a dotted grid line: 128 on the screen; paper of a printed
  // size has its own.
  virtual int GridDotSteps() const { return 128; }
  // An image over the whole surface, each image pixel a block of surface
  // pixels, nearest neighbour, no smoothing. The scale is left in pixels.
  virtual void DrawImage(const RgbImage& image) {
    if (image.Empty()) return;
    const int w = PixelWidth(), h = PixelHeight();
    SetScale({0.0, 0.0, static_cast<double>(w > 1 ? w - 1 : 1), static_cast<double>(h > 1 ? h - 1 : 1)});
    for (int y = 0; y < h; ++y)
      for (int x = 0; x < w; ++x)
        SetPixel(x, y, image.At(static_cast<int>(static_cast<long long>(x) * image.width / w),
                                static_cast<int>(static_cast<long long>(y) * image.height / h)));
  }
  virtual void Refresh() = 0;
  // What the surface shows now.
  virtual RgbImage Snapshot() const = 0;
};

}  // namespace keldo::platform

#include <memory>

namespace keldo::platform {

class SurfaceFactory {
 public:
  virtual ~SurfaceFactory() = default;
  virtual std::unique_ptr<Surface> Create(int pixelWidth, int pixelHeight) = 0;
};

}  // namespace keldo::platform
