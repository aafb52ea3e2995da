#include "analysis/image_errors.h"

#include <cmath>
#include <cstdlib>

namespace keldo::analysis {

int ComputeSupNormError(const ByteImage& left, const ByteImage& right, const PixelRect& r) {
  int largest = 0;
  for (int y = r.y1; y <= r.y2; ++y)
    for (int x = r.x1; x <= r.x2; ++x) {
      const int d = std::abs(left.At(x, y) - right.At(x, y));
      if (d > largest) largest = d;
    }
  return largest;
}

double ComputeMSError(const ByteImage& left, const ByteImage& right, const PixelRect& r) {
  if (r.Empty()) return 0.0;
  // Whole numbers up to 255^2 each: the sum is exact in 64 bits.
  long long sum = 0;
  for (int y = r.y1; y <= r.y2; ++y)
    for (int x = r.x1; x <= r.x2; ++x) {
      const long long d = left.At(x, y) - right.At(x, y);
      sum += d * d;
    }
  return static_cast<double>(sum) / static_cast<double>(r.Count());
}

double MeanSquareOf(const ByteImage& image, const PixelRect& r) {
  if (r.Empty()) return 0.0;
  long long sum = 0;
  for (int y = r.y1; y <= r.y2; ++y)
    for (int x = r.x1; x <= r.x2; ++x) {
      const long long v = image.At(x, y);
      sum += v * v;
    }
  return static_cast<double>(sum) / static_cast<double>(r.Count());
}

bool PSNRVal(double meanSquare, double& psnr) {
  if (!(meanSquare > 0.0) || !std::isfinite(meanSquare)) return false;
  psnr = 10.0 * std::log10(255.0 * 255.0 / meanSquare);
  return true;
}

bool SNRValue(double signal, double noise, double& snr) {
  if (!(signal > 0.0) || !(noise > 0.0)) return false;
  const double q = 10.0 * std::log10(signal / noise);
  if (!std::isfinite(q)) return false;
  snr = q;
  return true;
}

}  // namespace keldo::analysis
