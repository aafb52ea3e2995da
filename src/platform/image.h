#pragma once
// A picture in memory: width by height pixels, row 0 at the top.

#include <cstdint>
#include <vector>

#include "platform/color.h"

namespace keldo::platform {

struct RgbImage {
  int width = 0;
  int height = 0;
  std::vector<Rgb> pixels;  // row by row, width * height entries

  RgbImage() = default;
  RgbImage(int w, int h, Rgb fill = kWhite)
      : width(w), height(h), pixels(static_cast<std::size_t>(w) * static_cast<std::size_t>(h), fill) {}
  bool Empty() const { return width <= 0 || height <= 0; }
  Rgb At(int x, int y) const { return pixels[static_cast<std::size_t>(y) * width + x]; }
  void Set(int x, int y, Rgb c) {
    if (x >= 0 && y >= 0 && x < width && y < height) pixels[static_cast<std::size_t>(y) * width + x] = c;
  }
};

}  // namespace keldo::platform
