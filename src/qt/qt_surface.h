#pragma once
// A drawing surface on a QImage, drawn with QPainter (antialiased text).

#include <QImage>

#include "platform/surface.h"

namespace keldo::qt {

class QtSurface final : public platform::Surface {
 public:
  QtSurface(int pixelWidth, int pixelHeight);
  int PixelWidth() const override { return image_.width(); }
  int PixelHeight() const override { return image_.height(); }
  void Clear(platform::Rgb background) override;
  void SetScale(const platform::UserScale& scale) override { scale_ = scale; }
  void SetPenWidth(int pixels) override { pen_ = pixels < 1 ? 1 : pixels; }
  void Line(double x1, double y1, double x2, double y2, platform::Rgb color) override;
  void SetPixel(double x, double y, platform::Rgb color) override;
  platform::Rgb GetPixel(double x, double y) const override;
  void Text(double x, double y, const std::string& text, platform::Rgb color) override;
  void Refresh() override {}
  platform::RgbImage Snapshot() const override;
  const QImage& Image() const { return image_; }

 private:
  QPointF ToPixel(double x, double y) const;
  QImage image_;
  platform::UserScale scale_;
  int pen_ = 1;
};

class QtSurfaceFactory final : public platform::SurfaceFactory {
 public:
  std::unique_ptr<platform::Surface> Create(int w, int h) override { return std::make_unique<QtSurface>(w, h); }
};

QImage ToQImage(const platform::RgbImage& image);
platform::RgbImage FromQImage(const QImage& image);

}  // namespace keldo::qt
