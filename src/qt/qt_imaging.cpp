#include "qt/qt_imaging.h"

#include <cstdint>

#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QImageWriter>

#include "platform/headless/simple_images.h"
#include "qt/qt_surface.h"

namespace keldo::qt {
namespace {

QString Q(const std::string& s) { return QString::fromStdString(s); }

QString Suffix(const std::string& path) { return QFileInfo(Q(path)).suffix().toLower(); }

// Bitmaps are read and written by the program's own codec.
bool IsBitmap(const std::string& path) {
  const QString suffix = Suffix(path);
  return suffix == "bmp" || suffix == "dib";
}

bool IsJpeg(const std::string& path) {
  const QString suffix = Suffix(path);
  return suffix == "jpg" || suffix == "jpeg";
}

QByteArray FileBytes(const std::string& path) {
  QFile file(Q(path));
  return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

unsigned Byte(const QByteArray& b, qsizetype at) { return static_cast<unsigned char>(b[at]); }

std::uint32_t Le32(const QByteArray& b, qsizetype at) {
  return Byte(b, at) | Byte(b, at + 1) << 8 | Byte(b, at + 2) << 16 | static_cast<std::uint32_t>(Byte(b, at + 3)) << 24;
}

// An uncompressed bitmap whose file ends before the pixel rows its header
// announces. The plugins read such files in part and report success.
bool BitmapCutShort(const QByteArray& b) {
  // Headers older than the 40-byte one, and run-length coded pixels, have
  // no size to check here.
  if (b.size() < 34 || Le32(b, 14) < 40) return false;
  const std::uint32_t compression = Le32(b, 30);
  if (compression != 0 && compression != 3) return false;
  const auto width = static_cast<std::int32_t>(Le32(b, 18));
  const auto height = static_cast<std::int32_t>(Le32(b, 22));
  const unsigned bits = Byte(b, 28) | Byte(b, 29) << 8;
  if (width <= 0 || height == 0 || height == INT32_MIN || bits == 0 || bits > 32) return false;
  const std::uint64_t rowBytes = (static_cast<std::uint64_t>(width) * bits + 31) / 32 * 4;
  const std::uint64_t needed = Le32(b, 10) + rowBytes * static_cast<std::uint64_t>(height < 0 ? -height : height);
  return static_cast<std::uint64_t>(b.size()) < needed;
}

// A JPEG whose main picture has no end marker: the segments are walked
// from the start marker, each scan's coded bytes skipped to the next marker
// (a 0xFF byte not followed by 0x00 or a restart marker), so that a marker
// inside a thumbnail's segment does not count. The plugin fills a missing
// end of the picture with grey and reports success.
bool JpegCutShort(const QByteArray& b) {
  const qsizetype size = b.size();
  if (size < 2 || Byte(b, 0) != 0xFF || Byte(b, 1) != 0xD8) return false;
  qsizetype pos = 2;
  while (pos + 1 < size) {
    if (Byte(b, pos) != 0xFF) return false;  // not a marker: the plugin judges
    while (pos + 1 < size && Byte(b, pos + 1) == 0xFF) ++pos;
    if (pos + 1 >= size) return true;
    const unsigned marker = Byte(b, pos + 1);
    if (marker == 0xD9) return false;  // the end of the picture
    if (marker == 0x01 || (marker >= 0xD0 && marker <= 0xD7)) {
      pos += 2;
      continue;
    }
    if (pos + 3 >= size) return true;
    pos += 2 + static_cast<qsizetype>(Byte(b, pos + 2) << 8 | Byte(b, pos + 3));
    if (pos > size) return true;
    if (marker != 0xDA) continue;
    // The coded bytes of a scan.
    while (pos + 1 < size) {
      const unsigned next = Byte(b, pos + 1);
      if (Byte(b, pos) == 0xFF && next != 0x00 && !(next >= 0xD0 && next <= 0xD7)) break;
      ++pos;
    }
  }
  return true;
}

}  // namespace

std::optional<platform::RgbImage> QtImaging::Load(const std::string& path) {
  if (IsBitmap(path)) {
    QFile file(Q(path));
    if (!file.open(QIODevice::ReadOnly)) return std::nullopt;
    const QByteArray bytes = file.readAll();
    if (auto image = platform::DecodeBmp(std::string(bytes.constData(), static_cast<std::size_t>(bytes.size()))))
      return image;
    // Other bitmaps go to the plugin, but not one cut short.
    if (BitmapCutShort(bytes)) return std::nullopt;
  } else if (IsJpeg(path) && JpegCutShort(FileBytes(path))) {
    return std::nullopt;
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
