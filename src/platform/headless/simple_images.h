#pragma once
// Decoders and encoders for the two picture formats the system reads and
// writes by itself: PGM (plain P2 and raw P5, 8-bit) and BMP (uncompressed
// 8-bit paletted and 24-bit). Decoders take any bytes and return nothing for
// what they cannot read; pictures are capped at kMaxSide pixels a side.

#include <optional>
#include <string>

#include "platform/image.h"

namespace keldo::platform {

constexpr int kMaxImageSide = 16384;

std::optional<RgbImage> DecodePgm(const std::string& bytes);
std::optional<RgbImage> DecodeBmp(const std::string& bytes);
// Grey levels are the mean of red, green and blue.
std::string EncodePgm(const RgbImage& image);
std::string EncodeBmp(const RgbImage& image);

}  // namespace keldo::platform
