#include "platform/headless/simple_images.h"

#include <cctype>
#include <cstdint>

namespace keldo::platform {
namespace {

std::uint32_t Le(const std::string& b, std::size_t at, int width) {
  std::uint32_t v = 0;
  for (int i = width - 1; i >= 0; --i) v = (v << 8) | static_cast<unsigned char>(b[at + i]);
  return v;
}

void PutLe(std::string& out, std::uint32_t v, int width) {
  for (int i = 0; i < width; ++i) out.push_back(static_cast<char>((v >> (8 * i)) & 255));
}

// Reads the next decimal number of a PGM header, skipping blanks and comments.
bool PgmNumber(const std::string& b, std::size_t& pos, long long& value) {
  while (pos < b.size()) {
    if (b[pos] == '#') {
      while (pos < b.size() && b[pos] != '\n') ++pos;
    } else if (std::isspace(static_cast<unsigned char>(b[pos]))) {
      ++pos;
    } else {
      break;
    }
  }
  if (pos >= b.size() || !std::isdigit(static_cast<unsigned char>(b[pos]))) return false;
  value = 0;
  while (pos < b.size() && std::isdigit(static_cast<unsigned char>(b[pos]))) {
    value = value * 10 + (b[pos] - '0');
    if (value > 1000000000) return false;
    ++pos;
  }
  return true;
}

Rgb Grey(int g) { return MakeRgb(g, g, g); }

}  // namespace

std::optional<RgbImage> DecodePgm(const std::string& b) {
  if (b.size() < 2 || b[0] != 'P' || (b[1] != '2' && b[1] != '5')) return std::nullopt;
  const bool raw = b[1] == '5';
  std::size_t pos = 2;
  long long w = 0, h = 0, maxval = 0;
  if (!PgmNumber(b, pos, w) || !PgmNumber(b, pos, h) || !PgmNumber(b, pos, maxval)) return std::nullopt;
  if (w < 1 || h < 1 || w > kMaxImageSide || h > kMaxImageSide || maxval < 1 || maxval > 255)
    return std::nullopt;
  RgbImage img(static_cast<int>(w), static_cast<int>(h));
  const long long count = w * h;
  if (raw) {
    ++pos;  // the single blank after maxval
    if (pos > b.size() || b.size() - pos < static_cast<std::size_t>(count)) return std::nullopt;
    for (long long i = 0; i < count; ++i)
      img.pixels[i] = Grey(static_cast<int>(static_cast<unsigned char>(b[pos + i]) * 255 / maxval));
  } else {
    for (long long i = 0; i < count; ++i) {
      long long v = 0;
      if (!PgmNumber(b, pos, v) || v > maxval) return std::nullopt;
      img.pixels[i] = Grey(static_cast<int>(v * 255 / maxval));
    }
  }
  return img;
}

std::optional<RgbImage> DecodeBmp(const std::string& b) {
  if (b.size() < 54 || b[0] != 'B' || b[1] != 'M') return std::nullopt;
  const std::uint32_t dataOffset = Le(b, 10, 4);
  const std::uint32_t headerSize = Le(b, 14, 4);
  if (headerSize < 40 || 14 + static_cast<std::size_t>(headerSize) > b.size()) return std::nullopt;
  const auto w = static_cast<std::int32_t>(Le(b, 18, 4));
  auto h = static_cast<std::int32_t>(Le(b, 22, 4));
  const std::uint32_t bits = Le(b, 28, 2);
  const std::uint32_t compression = Le(b, 30, 4);
  const bool topDown = h < 0;
  if (topDown) {
    if (h == INT32_MIN) return std::nullopt;
    h = -h;
  }
  if (w < 1 || h < 1 || w > kMaxImageSide || h > kMaxImageSide || compression != 0) return std::nullopt;
  if (bits != 24 && bits != 8) return std::nullopt;
  const std::size_t rowBytes = ((static_cast<std::size_t>(w) * bits + 31) / 32) * 4;
  if (dataOffset > b.size() || (b.size() - dataOffset) / rowBytes < static_cast<std::size_t>(h))
    return std::nullopt;
  std::size_t paletteSize = 0;
  const std::size_t paletteAt = 14 + headerSize;
  if (bits == 8) {
    paletteSize = Le(b, 46, 4);
    if (paletteSize == 0 || paletteSize > 256) paletteSize = 256;
    if (paletteAt + paletteSize * 4 > dataOffset) return std::nullopt;
  }
  RgbImage img(w, h);
  for (int y = 0; y < h; ++y) {
    const std::size_t row = dataOffset + rowBytes * static_cast<std::size_t>(topDown ? y : h - 1 - y);
    for (int x = 0; x < w; ++x) {
      if (bits == 24) {
        const std::size_t p = row + 3 * static_cast<std::size_t>(x);
        img.Set(x, y, MakeRgb(static_cast<unsigned char>(b[p + 2]), static_cast<unsigned char>(b[p + 1]),
                              static_cast<unsigned char>(b[p])));
      } else {
        const std::size_t i = static_cast<unsigned char>(b[row + x]);
        if (i >= paletteSize) return std::nullopt;
        const std::size_t p = paletteAt + 4 * i;
        img.Set(x, y, MakeRgb(static_cast<unsigned char>(b[p + 2]), static_cast<unsigned char>(b[p + 1]),
                              static_cast<unsigned char>(b[p])));
      }
    }
  }
  return img;
}

std::string EncodePgm(const RgbImage& image) {
  std::string out = "P5\n" + std::to_string(image.width) + " " + std::to_string(image.height) + "\n255\n";
  for (Rgb p : image.pixels) out.push_back(static_cast<char>((RedOf(p) + GreenOf(p) + BlueOf(p)) / 3));
  return out;
}

std::string EncodeBmp(const RgbImage& image) {
  const std::size_t rowBytes = ((static_cast<std::size_t>(image.width) * 24 + 31) / 32) * 4;
  const std::size_t dataSize = rowBytes * static_cast<std::size_t>(image.height);
  std::string out = "BM";
  PutLe(out, static_cast<std::uint32_t>(54 + dataSize), 4);
  PutLe(out, 0, 4);
  PutLe(out, 54, 4);
  PutLe(out, 40, 4);
  PutLe(out, static_cast<std::uint32_t>(image.width), 4);
  PutLe(out, static_cast<std::uint32_t>(image.height), 4);
  PutLe(out, 1, 2);
  PutLe(out, 24, 2);
  PutLe(out, 0, 4);
  PutLe(out, static_cast<std::uint32_t>(dataSize), 4);
  PutLe(out, 2835, 4);
  PutLe(out, 2835, 4);
  PutLe(out, 0, 4);
  PutLe(out, 0, 4);
  for (int y = image.height - 1; y >= 0; --y) {
    std::size_t written = 0;
    for (int x = 0; x < image.width; ++x) {
      const Rgb p = image.At(x, y);
      out.push_back(static_cast<char>(BlueOf(p)));
      out.push_back(static_cast<char>(GreenOf(p)));
      out.push_back(static_cast<char>(RedOf(p)));
      written += 3;
    }
    out.append(rowBytes - written, '\0');
  }
  return out;
}

}  // namespace keldo::platform
