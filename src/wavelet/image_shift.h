#pragma once
// Cyclic shifts of a rectangular float image, as the cycle-spinning
// denoisers use them: the image is moved by a number of columns and rows
// with wrap-around, denoised, and moved back.
//
// Shifting by (c, r) puts source(x, y) at target((x + c) mod W, (y + r) mod H):
// a positive c moves the picture right along its rows, a positive r moves it
// along its columns toward higher row indices. Shifting by (-c, -r) undoes it
// exactly. Each line goes through ShiftVector in double precision; a float
// survives the round trip unchanged.

#include <cstddef>
#include <vector>

namespace keldo::wavelet {

// A float image of `width` columns and `height` rows, row y starting at
// data + y * stride.
struct FloatImage {
  float* data = nullptr;
  int width = 0, height = 0;
  std::size_t stride = 0;
  float* Row(int y) const { return data + static_cast<std::size_t>(y) * stride; }
};

// Work lines for the shifts, sized for the longer side; made once per
// command and reused for every shift.
struct ShiftWork {
  std::vector<double> line, scratch;
  void Reserve(int longest);
};

// Every column of `image` moved cyclically by `rowShift` places.
void ShiftImageVert(int rowShift, const FloatImage& image, ShiftWork& work);
// Every row of `image` moved cyclically by `colShift` places.
void ShiftImageHoriz(int colShift, const FloatImage& image, ShiftWork& work);
// `target` = `source` shifted by (colShift, rowShift): a copy, then
// ShiftImageVert and ShiftImageHoriz. Source and target have the same
// width and height; they may be the same image.
void ShiftImage(int colShift, int rowShift, const FloatImage& source, const FloatImage& target, ShiftWork& work);

}  // namespace keldo::wavelet
