#include "qt/painter_surface.h"

#include <QImage>
#include <vector>

#include "qt/qt_surface.h"

namespace keldo::qt {

void PainterSurface::Clear(platform::Rgb background) { p_.fillRect(target_, QColor::fromRgb(background)); }

QPointF PainterSurface::ToPixel(double x, double y) const {
  const double w = scale_.right - scale_.left, h = scale_.bottom - scale_.top;
  const double px = w == 0 ? 0 : (x - scale_.left) / w * (target_.width() - 1);
  const double py = h == 0 ? 0 : (y - scale_.top) / h * (target_.height() - 1);
  return {target_.left() + px, target_.top() + py};
}

QPointF PainterSurface::ToUser(const platform::UserScale& scale, QRect target, QPointF pixel) {
  const double fx = target.width() > 1 ? (pixel.x() - target.left()) / (target.width() - 1) : 0.0;
  const double fy = target.height() > 1 ? (pixel.y() - target.top()) / (target.height() - 1) : 0.0;
  return {scale.left + fx * (scale.right - scale.left), scale.top + fy * (scale.bottom - scale.top)};
}

void PainterSurface::UsePen(platform::Rgb color) {
  QPen pen(QColor::fromRgb(color));
  pen.setWidth(pen_ > 1 ? pen_ : 0);  // width 0: one device pixel at any scale
  p_.setPen(pen);
}

void PainterSurface::Line(double x1, double y1, double x2, double y2, platform::Rgb color) {
  UsePen(color);
  p_.drawLine(ToPixel(x1, y1), ToPixel(x2, y2));
}

void PainterSurface::Lines(std::span<const platform::UserSegment> segments, platform::Rgb color) {
  if (segments.empty()) return;
  UsePen(color);
  std::vector<QLineF> lines;
  lines.reserve(segments.size());
  for (const platform::UserSegment& s : segments) lines.emplace_back(ToPixel(s.x1, s.y1), ToPixel(s.x2, s.y2));
  p_.drawLines(lines.data(), static_cast<int>(lines.size()));
}

void PainterSurface::SetPixel(double x, double y, platform::Rgb color) {
  UsePen(color);
  p_.drawPoint(ToPixel(x, y));
}

void PainterSurface::Pixels(std::span<const platform::UserPoint> points, platform::Rgb color) {
  if (points.empty()) return;
  UsePen(color);
  std::vector<QPointF> pixels;
  pixels.reserve(points.size());
  for (const platform::UserPoint& pt : points) pixels.push_back(ToPixel(pt.x, pt.y));
  p_.drawPoints(pixels.data(), static_cast<int>(pixels.size()));
}

platform::Rgb PainterSurface::GetPixel(double x, double y) const {
  const auto* image = dynamic_cast<const QImage*>(p_.device());
  if (!image) return platform::kBlack;
  const QPoint pt = ToPixel(x, y).toPoint();
  if (!image->rect().contains(pt)) return platform::kBlack;
  return image->pixel(pt) & 0xFFFFFF;
}

void PainterSurface::Text(double x, double y, const std::string& text, platform::Rgb color) {
  p_.setPen(QColor::fromRgb(color));
  p_.drawText(ToPixel(x, y), QString::fromStdString(text));
}

platform::RgbImage PainterSurface::Snapshot() const {
  const auto* image = dynamic_cast<const QImage*>(p_.device());
  if (!image) return platform::RgbImage(target_.width(), target_.height());
  return FromQImage(image->copy(target_));
}

}  // namespace keldo::qt
