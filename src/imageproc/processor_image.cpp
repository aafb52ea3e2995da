#include "imageproc/processor_image.h"

#include <algorithm>

namespace keldo::imageproc {
namespace {

// Up to `most` characters of the file up to (not with) `stop`, which is
// passed over; false at the end of the file.
bool ReadField(const std::vector<std::uint8_t>& file, std::size_t& at, int most, char stop, std::string& text) {
  text.clear();
  for (int k = 0; k < most; ++k) {
    if (at >= file.size()) return false;
    const char c = static_cast<char>(file[at++]);
    if (c == stop) return true;
    text += c;
  }
  // The field was cut at its length: the next character should be the stop.
  if (at < file.size() && static_cast<char>(file[at]) == stop) ++at;
  return true;
}

std::optional<int> SideOf(std::string text) {
  if (text == "1MB") text = "1024";
  if (text.empty() || text.size() > 5) return std::nullopt;
  int v = 0;
  for (char c : text) {
    if (c < '0' || c > '9') return std::nullopt;
    v = v * 10 + (c - '0');
  }
  if (v < 1 || v > kLargestSide) return std::nullopt;
  return v;
}

}  // namespace

int PaddedSide(int v) { return v % 32 == 0 ? v : v + 32 - v % 32; }

std::optional<ProcessorImage> ReadProcessorPgm(const std::vector<std::uint8_t>& file) {
  std::size_t at = 3;
  std::string first, second;
  if (file.size() < at || !ReadField(file, at, 5, ' ', first) || !ReadField(file, at, 5, '\n', second))
    return std::nullopt;
  const std::optional<int> h = SideOf(first), w = SideOf(second);
  if (!h || !w) return std::nullopt;
  while (at < file.size() && file[at] != '\n') ++at;
  if (at >= file.size()) return std::nullopt;
  ++at;
  ProcessorImage image;
  image.originalHeight = *h;
  image.originalWidth = *w;
  image.width = PaddedSide(*w);
  image.height = PaddedSide(*h);
  if (file.size() - at < static_cast<std::size_t>(*w) * static_cast<std::size_t>(*h)) return std::nullopt;
  image.bytes.assign(static_cast<std::size_t>(image.width) * static_cast<std::size_t>(image.height), 0);
  for (int x = 0; x < image.width; ++x) {
    const int row = std::min(x, *w - 1);
    for (int y = 0; y < image.height; ++y) {
      const int column = std::min(y, *h - 1);
      image.bytes[static_cast<std::size_t>(y) * image.width + x] =
          file[at + static_cast<std::size_t>(row) * *h + static_cast<std::size_t>(column)];
    }
  }
  return image;
}

std::optional<ProcessorImage> ProcessorImageOfPicture(const platform::RgbImage& picture) {
  if (picture.Empty() || picture.width > kLargestSide || picture.height > kLargestSide ||
      picture.pixels.size() != static_cast<std::size_t>(picture.width) * static_cast<std::size_t>(picture.height))
    return std::nullopt;
  ProcessorImage image;
  image.originalWidth = picture.height;
  image.originalHeight = picture.width;
  image.width = PaddedSide(picture.height);
  image.height = PaddedSide(picture.width);
  image.bytes.assign(static_cast<std::size_t>(image.width) * static_cast<std::size_t>(image.height), 0);
  for (int x = 0; x < image.width; ++x)
    for (int y = 0; y < image.height; ++y) {
      const platform::Rgb p = picture.At(std::min(y, picture.width - 1), std::min(x, picture.height - 1));
      const int grey = (platform::RedOf(p) + platform::GreenOf(p) + platform::BlueOf(p)) / 3;
      image.bytes[static_cast<std::size_t>(y) * image.width + x] = static_cast<std::uint8_t>(grey);
    }
  return image;
}

std::vector<std::uint8_t> ProcessorPgmBytes(const ProcessorImage& image) {
  const std::string head =
      "P5\n" + std::to_string(image.originalHeight) + " " + std::to_string(image.originalWidth) + "\n255\n";
  std::vector<std::uint8_t> out(head.begin(), head.end());
  out.reserve(out.size() + static_cast<std::size_t>(image.originalWidth) * image.originalHeight);
  for (int x = 0; x < image.originalWidth; ++x)
    for (int y = 0; y < image.originalHeight; ++y) out.push_back(image.At(x, y));
  return out;
}

platform::RgbImage PictureOf(const ProcessorImage& image) {
  platform::RgbImage picture(image.originalHeight, image.originalWidth);
  for (int x = 0; x < image.originalWidth; ++x)
    for (int y = 0; y < image.originalHeight; ++y) {
      const int g = image.At(x, y);
      picture.Set(y, x, platform::MakeRgb(g, g, g));
    }
  return picture;
}

}  // namespace keldo::imageproc
