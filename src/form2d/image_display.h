#pragma once
// How a graph of two variables becomes a square picture: the colour of each
// sample from its colour method, intensity method and threshold, at most
// 257 by 257 samples per drawing however large the grid, and the painting
// of those colours into the large (256) or a small (128) picture. The form
// keeps the state; these routines turn it into pixels.

#include <cstdint>
#include <vector>

#include "platform/image.h"

namespace keldo::form2d {

// Colour methods and intensity methods; the values are the letters a form
// file keeps.
enum ColorMethod : char { kColor = 'C', kGrey = 'G', kGreyPlusMinus = 'T' };
enum Intensity : char { kLinear = 'S', kLog = 'L', kLinLog = 'W' };

// One graph's samples and how it is shown.
struct ImageGraph {
  const float* data = nullptr;  // rows of `rowLength` samples, row 0 at the bottom
  std::size_t rowLength = 0;
  int n = 0;                    // the grid has n+1 by n+1 samples
  float max = 0.0f;             // largest magnitude; 0 stands for 1
  float left = 0.0f, right = 0.0f, step = 0.0f;
  float viewXLeft = 0.0f, viewXRight = 0.0f, viewYLow = 0.0f, viewYHigh = 0.0f;
  ColorMethod colorMethod = kGrey;
  Intensity intensity = kLinear;
  float threshold = 0.0f;
  int linReg = 0;      // side of the low-pass block of the lin-log method
  int drawWidths = 1;  // zoom magnification, a power of two

  float At(int i, int j) const { return data[static_cast<std::size_t>(i) * rowLength + static_cast<std::size_t>(j)]; }
};

// Packed colours: red + 256 green + 65536 blue; 0 is black, never painted.
struct PixelMatrix {
  int side = 0;  // n + 6
  std::vector<std::int32_t> cells;
  void Reset(int n);
  std::int32_t At(int i, int j) const;
  void Set(int i, int j, std::int32_t c) {
    cells[static_cast<std::size_t>(i) * static_cast<std::size_t>(side) + static_cast<std::size_t>(j)] = c;
  }
};

// The rows and columns of the view window on the grid: first, last, and the
// stride that keeps a drawing within 257 samples each way.
struct ViewRange {
  int i0 = 0, i1 = 0, si = 1;
  int j0 = 0, j1 = 0, sj = 1;
};
// The range FillImageMatrix visits: rounded to the nearest index, ties to
// even, kept within 0..n, strides at least 1.
ViewRange FillRange(const ImageGraph& g);

// The colours of the samples of the view window, strided; every other cell 0.
void FillImageMatrix(const ImageGraph& g, PixelMatrix& pixels);

// A packed colour as 0x00RRGGBB.
platform::Rgb ToRgb(std::int32_t packed);

// 65, 129, 257, 513 and 1025 give one less; 2048 gives 2049; others stand.
int AdjustValue(int points);

// The picture of a graph just filed, over its whole domain: `side` is 256
// or 128, the picture has side+1 pixels each way. Grids of at least `side`
// points fold several samples onto a pixel; smaller ones are enlarged.
void PaintWholeGraph(const PixelMatrix& pixels, int adjusted, int side, platform::RgbImage& picture);

// The picture of a graph's view window, zoomed by its draw width. `limit`
// is the highest index the window may reach (n for the large picture, n+1
// for a small one).
void PaintViewedGraph(const ImageGraph& g, const PixelMatrix& pixels, int side, int limit, platform::RgbImage& picture);

}  // namespace keldo::form2d
