#include "wavelet/image_shift.h"

#include <algorithm>

#include "wavelet/series.h"

namespace keldo::wavelet {

void ShiftWork::Reserve(int longest) {
  const auto size = static_cast<std::size_t>(std::max(longest, 1));
  if (line.size() < size) line.resize(size);
  if (scratch.size() < size) scratch.resize(size);
}

void ShiftImageVert(int rowShift, const FloatImage& image, ShiftWork& work) {
  const int h = image.height;
  if (h <= 0 || rowShift % h == 0) return;
  work.Reserve(std::max(image.width, h));
  for (int x = 0; x < image.width; ++x) {
    for (int y = 0; y < h; ++y) work.line[static_cast<std::size_t>(y)] = image.Row(y)[x];
    ShiftVector(h, rowShift, work.line.data(), work.scratch.data());
    for (int y = 0; y < h; ++y) image.Row(y)[x] = static_cast<float>(work.line[static_cast<std::size_t>(y)]);
  }
}

void ShiftImageHoriz(int colShift, const FloatImage& image, ShiftWork& work) {
  const int w = image.width;
  if (w <= 0 || colShift % w == 0) return;
  work.Reserve(std::max(w, image.height));
  for (int y = 0; y < image.height; ++y) {
    float* row = image.Row(y);
    std::copy(row, row + w, work.line.begin());
    ShiftVector(w, colShift, work.line.data(), work.scratch.data());
    for (int x = 0; x < w; ++x) row[x] = static_cast<float>(work.line[static_cast<std::size_t>(x)]);
  }
}

void ShiftImage(int colShift, int rowShift, const FloatImage& source, const FloatImage& target, ShiftWork& work) {
  if (source.data != target.data)
    for (int y = 0; y < source.height; ++y) std::copy(source.Row(y), source.Row(y) + source.width, target.Row(y));
  ShiftImageVert(rowShift, target, work);
  ShiftImageHoriz(colShift, target, work);
}

}  // namespace keldo::wavelet
