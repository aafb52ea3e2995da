#pragma once
// Differences between two grey images of bytes: a picture and its
// reconstruction. An image is read as At(x, y) = bytes[y * width + x]; the
// measures run over a rectangle of pixels x1..x2, y1..y2 (inclusive) that
// the caller has clipped to both images.

#include <cstdint>

namespace keldo::analysis {

struct ByteImage {
  const std::uint8_t* bytes = nullptr;
  int width = 0;
  int At(int x, int y) const { return bytes[static_cast<long long>(y) * width + x]; }
};

struct PixelRect {
  int x1 = 0, y1 = 0, x2 = -1, y2 = -1;
  bool Empty() const { return x2 < x1 || y2 < y1; }
  long long Count() const { return Empty() ? 0 : static_cast<long long>(x2 - x1 + 1) * (y2 - y1 + 1); }
};

// The largest |left - right| over the rectangle; 0 for an empty one.
int ComputeSupNormError(const ByteImage& left, const ByteImage& right, const PixelRect& r);
// The mean of (left - right)^2 over the rectangle; 0 for an empty one.
double ComputeMSError(const ByteImage& left, const ByteImage& right, const PixelRect& r);
// The mean of left^2 over the rectangle: the signal's power; 0 for an
// empty one.
double MeanSquareOf(const ByteImage& image, const PixelRect& r);

// PSNR = 10 log10(255^2 / MeanSquare) in decibels. False, with psnr
// untouched, when MeanSquare is 0 (identical images) or not a number: the
// logarithm fails there.
bool PSNRVal(double meanSquare, double& psnr);
// 10 log10(signal / noise) in decibels; false, snr untouched, when either is
// 0 or the quotient is not finite.
bool SNRValue(double signal, double noise, double& snr);

}  // namespace keldo::analysis
