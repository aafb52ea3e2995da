#include "qt/qt_surface.h"

#include <QPainter>

#include <cstdint>
#include <cstring>

namespace keldo::qt {

QtSurface::QtSurface(int w, int h) : image_(w < 1 ? 1 : w, h < 1 ? 1 : h, QImage::Format_RGB32) {
  image_.fill(Qt::white);
}

void QtSurface::Clear(platform::Rgb background) { image_.fill(QColor::fromRgb(background)); }

QPointF QtSurface::ToPixel(double x, double y) const {
  const double w = scale_.right - scale_.left, h = scale_.bottom - scale_.top;
  const double px = w == 0 ? 0 : (x - scale_.left) / w * image_.width();
  const double py = h == 0 ? 0 : (y - scale_.top) / h * image_.height();
  return {px, py};
}

void QtSurface::Line(double x1, double y1, double x2, double y2, platform::Rgb color) {
  QPainter p(&image_);
  p.setPen(QPen(QColor::fromRgb(color), pen_));
  p.drawLine(ToPixel(x1, y1), ToPixel(x2, y2));
}

void QtSurface::SetPixel(double x, double y, platform::Rgb color) {
  const QPointF pt = ToPixel(x, y);
  QPainter p(&image_);
  p.fillRect(QRectF(pt.x() - (pen_ - 1) / 2.0, pt.y() - (pen_ - 1) / 2.0, pen_, pen_), QColor::fromRgb(color));
}

platform::Rgb QtSurface::GetPixel(double x, double y) const {
  const QPoint pt = ToPixel(x, y).toPoint();
  if (!image_.rect().contains(pt)) return platform::kWhite;
  return image_.pixel(pt) & 0xFFFFFF;
}

void QtSurface::Text(double x, double y, const std::string& text, platform::Rgb color) {
  QPainter p(&image_);
  p.setPen(QColor::fromRgb(color));
  p.drawText(ToPixel(x, y), QString::fromLatin1(text.c_str()));
}

platform::RgbImage QtSurface::Snapshot() const { return FromQImage(image_); }

QImage ToQImage(const platform::RgbImage& image) {
  QImage out(image.width, image.height, QImage::Format_RGB32);
  for (int y = 0; y < image.height; ++y)
    for (int x = 0; x < image.width; ++x) out.setPixel(x, y, 0xFF000000u | image.At(x, y));
  return out;
}

platform::RgbImage FromQImage(const QImage& source) {
  const QImage image = source.convertToFormat(QImage::Format_RGB32);
  platform::RgbImage out(image.width(), image.height());
  // Line by line, eight pixels at a time: a large photograph is tens of
  // millions of pixels. The alpha byte is dropped.
  typedef std::uint32_t Eight __attribute__((vector_size(32)));
  const auto width = static_cast<std::size_t>(image.width());
  for (int y = 0; y < image.height(); ++y) {
    const uchar* line = image.constScanLine(y);
    platform::Rgb* to = out.pixels.data() + static_cast<std::size_t>(y) * width;
    std::memcpy(to, line, width * sizeof(platform::Rgb));
    std::size_t x = 0;
    for (; x + 8 <= width; x += 8) {
      Eight v;
      std::memcpy(&v, to + x, sizeof v);
      v &= 0xFFFFFF;
      std::memcpy(to + x, &v, sizeof v);
    }
    for (; x < width; ++x) to[x] &= 0xFFFFFF;
  }
  return out;
}

}  // namespace keldo::qt
