#pragma once
// Colours as 0x00RRGGBB.

#include <cstdint>

namespace keldo::platform {

using Rgb = std::uint32_t;

constexpr Rgb MakeRgb(int r, int g, int b) {
  return (static_cast<Rgb>(r & 255) << 16) | (static_cast<Rgb>(g & 255) << 8) |
         static_cast<Rgb>(b & 255);
}
constexpr int RedOf(Rgb c) { return static_cast<int>((c >> 16) & 255); }
constexpr int GreenOf(Rgb c) { return static_cast<int>((c >> 8) & 255); }
constexpr int BlueOf(Rgb c) { return static_cast<int>(c & 255); }

constexpr Rgb kBlack = MakeRgb(0, 0, 0);
constexpr Rgb kWhite = MakeRgb(255, 255, 255);

}  // namespace keldo::platform
