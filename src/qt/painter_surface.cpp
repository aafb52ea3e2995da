#include "qt/painter_surface.h"

#include <QImage>

#include <algorithm>
#include <cmath>
#include <vector>

#include "qt/qt_surface.h"

namespace keldo::qt {

void PainterSurface::Clear(platform::Rgb background) { p_.fillRect(target_, QColor::fromRgb(background)); }

namespace {

// User to pixel coordinates with the factors worked out once.
struct PixelMap {
  PixelMap(const platform::UserScale& s, QRect t) {
    const double w = s.right - s.left, h = s.bottom - s.top;
    kx = w == 0 ? 0 : (t.width() - 1) / w;
    ky = h == 0 ? 0 : (t.height() - 1) / h;
    x0 = s.left;
    y0 = s.top;
    left = t.left();
    top = t.top();
  }
  QPointF operator()(double x, double y) const { return {left + (x - x0) * kx, top + (y - y0) * ky}; }
  double kx, ky, x0, y0, left, top;
};

}  // namespace

void PainterSurface::DrawImage(const platform::RgbImage& image) {
  if (image.Empty()) return;
  const QImage picture(reinterpret_cast<const uchar*>(image.pixels.data()), image.width, image.height,
                       image.width * 4, QImage::Format_RGB32);
  p_.save();
  p_.setRenderHint(QPainter::SmoothPixmapTransform, false);
  p_.drawImage(target_, picture);
  p_.restore();
}

QPointF PainterSurface::ToPixel(double x, double y) const { return PixelMap(scale_, target_)(x, y); }

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
  // A dense graph puts many joined segments into one pixel column. Such a
  // run covers the same pixels as one vertical line from its lowest to its
  // highest point, so it is drawn as that line.
  std::vector<QLineF> lines;
  lines.reserve(std::min<std::size_t>(segments.size(), 4 * static_cast<std::size_t>(target_.width()) + 16));
  bool inRun = false;
  long runColumn = 0;
  double runLow = 0.0, runHigh = 0.0;
  QPointF lastEnd;
  const PixelMap map(scale_, target_);
  const auto flush = [&] {
    if (inRun) lines.emplace_back(runColumn, runLow, runColumn, runHigh);
    inRun = false;
  };
  for (const platform::UserSegment& s : segments) {
    const QPointF a = map(s.x1, s.y1), b = map(s.x2, s.y2);
    const long ca = static_cast<long>(std::floor(a.x() + 0.5)), cb = static_cast<long>(std::floor(b.x() + 0.5));
    if (ca == cb) {
      if (!(inRun && ca == runColumn && a == lastEnd)) {
        flush();
        inRun = true;
        runColumn = ca;
        runLow = runHigh = a.y();
      }
      runLow = std::min({runLow, a.y(), b.y()});
      runHigh = std::max({runHigh, a.y(), b.y()});
    } else {
      flush();
      lines.emplace_back(a, b);
    }
    lastEnd = b;
  }
  flush();
  p_.drawLines(lines.data(), static_cast<int>(lines.size()));
}

void PainterSurface::SetPixel(double x, double y, platform::Rgb color) {
  UsePen(color);
  p_.drawPoint(ToPixel(x, y));
}

void PainterSurface::Pixels(std::span<const platform::UserPoint> points, platform::Rgb color) {
  if (points.empty()) return;
  UsePen(color);
  // A pixel set twice in a row is set once.
  std::vector<QPoint> pixels;
  pixels.reserve(points.size());
  const PixelMap map(scale_, target_);
  for (const platform::UserPoint& pt : points) {
    const QPointF f = map(pt.x, pt.y);
    const QPoint q(static_cast<int>(std::floor(f.x() + 0.5)), static_cast<int>(std::floor(f.y() + 0.5)));
    if (pixels.empty() || pixels.back() != q) pixels.push_back(q);
  }
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
