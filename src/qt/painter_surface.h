#pragma once
// A drawing surface on any QPainter: the scale maps the user window onto a
// target rectangle of the painter's device. The plot box draws through it
// at whatever size the window has, so the picture stays crisp.

#include <QPainter>
#include <QRect>

#include "platform/surface.h"

namespace keldo::qt {

class PainterSurface final : public platform::Surface {
 public:
  PainterSurface(QPainter& painter, QRect target) : p_(painter), target_(target) {}
  int PixelWidth() const override { return target_.width(); }
  int PixelHeight() const override { return target_.height(); }
  void Clear(platform::Rgb background) override;
  void SetScale(const platform::UserScale& scale) override { scale_ = scale; }
  void SetPenWidth(int pixels) override { pen_ = pixels < 1 ? 1 : pixels; }
  void Line(double x1, double y1, double x2, double y2, platform::Rgb color) override;
  void Lines(std::span<const platform::UserSegment> segments, platform::Rgb color) override;
  void SetPixel(double x, double y, platform::Rgb color) override;
  void Pixels(std::span<const platform::UserPoint> points, platform::Rgb color) override;
  // The painter's device cannot always be read back: this surface answers
  // from a QImage device only, and black elsewhere.
  platform::Rgb GetPixel(double x, double y) const override;
  void Text(double x, double y, const std::string& text, platform::Rgb color) override;
  void DrawImage(const platform::RgbImage& image) override;
  void Refresh() override {}
  platform::RgbImage Snapshot() const override;

  QPointF ToPixel(double x, double y) const;
  // The user point under a pixel of the target.
  static QPointF ToUser(const platform::UserScale& scale, QRect target, QPointF pixel);

 private:
  void UsePen(platform::Rgb color);
  QPainter& p_;
  QRect target_;
  platform::UserScale scale_;
  int pen_ = 1;
};

}  // namespace keldo::qt
