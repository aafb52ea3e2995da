#pragma once
// A surface that draws into an RgbImage by itself: one-pixel lines by
// Bresenham's method, texts kept as records. It needs no window system.

#include <string>
#include <vector>

#include "platform/surface.h"

namespace keldo::platform {

struct SurfaceText {
  double x, y;
  std::string text;
  Rgb color;
};

class RasterSurface final : public Surface {
 public:
  RasterSurface(int pixelWidth, int pixelHeight);
  int PixelWidth() const override { return image_.width; }
  int PixelHeight() const override { return image_.height; }
  void Clear(Rgb background) override;
  void SetScale(const UserScale& scale) override { scale_ = scale; }
  void SetPenWidth(int pixels) override { pen_ = pixels < 1 ? 1 : pixels; }
  void Line(double x1, double y1, double x2, double y2, Rgb color) override;
  void SetPixel(double x, double y, Rgb color) override;
  Rgb GetPixel(double x, double y) const override;
  void Text(double x, double y, const std::string& text, Rgb color) override;
  void Refresh() override {}
  RgbImage Snapshot() const override { return image_; }

  const std::vector<SurfaceText>& Texts() const { return texts_; }
  long long LineCount() const { return lines_; }

 private:
  // User coordinates to pixel coordinates, rounded to the nearest pixel and
  // clamped far outside so that huge values cannot overflow.
  int PixelX(double x) const;
  int PixelY(double y) const;
  void Plot(int px, int py, Rgb color);

  RgbImage image_;
  UserScale scale_;
  int pen_ = 1;
  long long lines_ = 0;
  std::vector<SurfaceText> texts_;
};

}  // namespace keldo::platform
