#include "qt/qt_imaging.h"

#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QImageWriter>

#include "platform/headless/simple_images.h"
#include "qt/qt_surface.h"

namespace keldo::qt {
namespace {

QString Q(const std::string& s) { return QString::fromStdString(s); }

// Bitmaps are read and written by the program's own codec.
bool IsBitmap(const std::string& path) {
  const QString suffix = QFileInfo(Q(path)).suffix().toLower();
  return suffix == "bmp" || suffix == "dib";
}

}  // namespace

std::optional<platform::RgbImage> QtImaging::Load(const std::string& path) {
  if (IsBitmap(path)) {
    QFile file(Q(path));
    if (!file.open(QIODevice::ReadOnly)) return std::nullopt;
    const QByteArray bytes = file.readAll();
    if (auto image = platform::DecodeBmp(std::string(bytes.constData(), static_cast<std::size_t>(bytes.size()))))
      return image;
  }
  QImageReader reader(Q(path));
  // At most 128 MB of decoded picture (32 million pixels): well beyond any
  // picture a form can hold, and a file that claims more is refused before
  // the plugin fills a buffer for it.
  reader.setAllocationLimit(128);
  // A header that announces more than any form can hold is refused before
  // any pixel is decoded.
  const QSize size = reader.size();
  if (size.isValid() && (size.width() > platform::kMaxImageSide || size.height() > platform::kMaxImageSide))
    return std::nullopt;
  const QImage image = reader.read();
  if (image.isNull()) return std::nullopt;
  // Some formats tell their size only by decoding: the cap holds after it too.
  if (image.width() > platform::kMaxImageSide || image.height() > platform::kMaxImageSide) return std::nullopt;
  return FromQImage(image);
}

bool QtImaging::Save(const std::string& path, const platform::RgbImage& image,
                     const platform::ImageSaveOptions& options) {
  if (IsBitmap(path)) {
    const std::string bytes = platform::EncodeBmp(image);
    QFile file(Q(path));
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) &&
           file.write(bytes.data(), static_cast<qint64>(bytes.size())) == static_cast<qint64>(bytes.size());
  }
  QImageWriter writer(Q(path));
  writer.setQuality(options.jpegQuality);
  if (options.tiffCompression) writer.setCompression(1);
  writer.setProgressiveScanWrite(options.progressive);
  QImage picture = ToQImage(image);
  if (options.greyScale) picture = picture.convertToFormat(QImage::Format_Grayscale8);
  return writer.write(picture);
}

}  // namespace keldo::qt
