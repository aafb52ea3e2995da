#pragma once
// The picture of the image processor: grey bytes on a grid whose sides are
// raised to multiples of 32 for the coders, with the size it had before.
//
// The subscripts: x runs down the picture (the rows of a file), y across
// it (the bytes of a row). ImageWidth is the padded count of rows and
// ImageHeight the padded count of bytes a row; a PGM file's first number
// (its bytes a row) is thus OriginalHeight and its second OriginalWidth.
// The padding repeats the last real byte of each row, and the padded rows
// repeat the last real row.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/image.h"

namespace keldo::imageproc {

struct ProcessorImage {
  int width = 0, height = 0;                  // ImageWidth, ImageHeight: multiples of 32
  int originalWidth = 0, originalHeight = 0;  // before the padding
  std::vector<std::uint8_t> bytes;            // At(x, y) = bytes[y * width + x]
  std::uint8_t At(int x, int y) const { return bytes[static_cast<std::size_t>(y) * width + x]; }
  bool Empty() const { return width <= 0 || height <= 0; }
};

// v raised to the next multiple of 32 (v itself when it is one).
int PaddedSide(int v);

// The largest side the processor takes, in either direction.
inline constexpr int kLargestSide = 8192;

// A PGM file read as the processor reads it: three bytes skipped (the magic
// number and its line end); up to five characters up to a blank, the first
// number ("1MB" reading as 1024); up to five up to a line feed, the second;
// the rest of the line after it skipped (the "255" line); then the rows,
// OriginalWidth of them, OriginalHeight bytes each. Nothing when the
// numbers are not whole numbers from 1 to kLargestSide or the bytes end
// before the rows do.
std::optional<ProcessorImage> ReadProcessorPgm(const std::vector<std::uint8_t>& file);

// A picture from the imaging service: each pixel's grey level, the mean of
// its three components rounded down, at x = its row and y = its column.
std::optional<ProcessorImage> ProcessorImageOfPicture(const platform::RgbImage& picture);

// The original part of a grid of bytes as a PGM file: "P5", a line feed,
// OriginalHeight and OriginalWidth, a line feed, "255", a line feed, then the
// rows (x) of OriginalHeight bytes (y) each, so that ReadProcessorPgm reads it
// back.
std::vector<std::uint8_t> ProcessorPgmBytes(const ProcessorImage& image);

// The original part as a picture, row x of the picture being x.
platform::RgbImage PictureOf(const ProcessorImage& image);

}  // namespace keldo::imageproc
