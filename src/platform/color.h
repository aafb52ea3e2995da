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

// The standard sixteen-entry colour table: entries 0 to 7 are the dark
// colours (black, blue, green, cyan, red, magenta, yellow, white), 8 to 15
// their bright forms. Any other entry gives black.
constexpr Rgb StandardColour(int entry) {
  constexpr Rgb kTable[16] = {MakeRgb(0, 0, 0),       MakeRgb(0, 0, 128),     MakeRgb(0, 128, 0),
                              MakeRgb(0, 128, 128),   MakeRgb(128, 0, 0),     MakeRgb(128, 0, 128),
                              MakeRgb(128, 128, 0),   MakeRgb(192, 192, 192), MakeRgb(128, 128, 128),
                              MakeRgb(0, 0, 255),     MakeRgb(0, 255, 0),     MakeRgb(0, 255, 255),
                              MakeRgb(255, 0, 0),     MakeRgb(255, 0, 255),   MakeRgb(255, 255, 0),
                              MakeRgb(255, 255, 255)};
  return entry >= 0 && entry < 16 ? kTable[entry] : kTable[0];
}

}  // namespace keldo::platform
