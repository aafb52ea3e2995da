#pragma once
// Images and helpers shared by the coder tests: a smooth gradient, a disk
// and noise, made here and transformed by TransformTheImage.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "wavelet/aswdr.h"
#include "wavelet/image_transform.h"

namespace keldo::wavelet::testing {

struct TestImage {
  std::string name;
  ImagePlane image;
};

inline std::vector<TestImage> TestImages(int w, int h) {
  std::vector<TestImage> images;
  ImagePlane gradient(w, h), disk(w, h), noise(w, h);
  std::mt19937 random(static_cast<unsigned>(w * 31 + h));
  std::uniform_int_distribution<int> byte(0, 255);
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) {
      gradient.At(x, y) = static_cast<float>(std::floor(20.0 + 150.0 * x / w + 60.0 * y / h));
      const double r2 = (x - 0.45 * w) * (x - 0.45 * w) + (y - 0.55 * h) * (y - 0.55 * h);
      disk.At(x, y) = r2 < 0.09 * w * h ? 201.0f : 37.0f;
      noise.At(x, y) = static_cast<float>(byte(random));
    }
  images.push_back({"gradient", gradient});
  images.push_back({"disk", disk});
  images.push_back({"noise", noise});
  return images;
}

inline ImagePlane TransformOf(const ImagePlane& image, int levels, int wavelet) {
  ImagePlane t = image;
  TransformTheImage(t, levels, wavelet);
  return t;
}

inline double LargestMagnitude(const ImagePlane& p) {
  double largest = 0.0;
  for (float v : p.v) largest = std::max(largest, std::fabs(static_cast<double>(v)));
  return largest;
}

inline AswdrHead HeadFor(const ImagePlane& plane, double bpp, int levels, int wavelet) {
  AswdrHead head;
  head.budget = BitBudgetOf(plane.width, plane.height, bpp);
  head.levels = levels;
  head.waveletIndex = wavelet;
  head.originalWidth = plane.width - 3;
  head.originalHeight = plane.height - 1;
  return head;
}

inline double MeanSquareError(const ImagePlane& a, const ImagePlane& b) {
  double sum = 0.0;
  for (std::size_t i = 0; i < a.v.size(); ++i) {
    const double d = static_cast<double>(a.v[i]) - static_cast<double>(b.v[i]);
    sum += d * d;
  }
  return sum / static_cast<double>(a.v.size());
}

inline std::size_t DifferingValues(const ImagePlane& a, const ImagePlane& b) {
  std::size_t count = 0;
  for (std::size_t i = 0; i < a.v.size(); ++i) count += a.v[i] != b.v[i] ? 1 : 0;
  return count;
}

// The bits of a stream after the head, each byte read from its top bit.
inline std::string StreamBits(const std::vector<std::uint8_t>& file, std::size_t bits) {
  std::string out;
  for (std::size_t i = 0; i < bits; ++i) out += ((file[kAswdrHeadSize + i / 8] >> (7 - i % 8)) & 1) ? '1' : '0';
  return out;
}

// FNV-1a over bytes, chained through `hash`: a fingerprint of coded files
// and planes, for tests that pin an output against later rewrites.
inline std::uint64_t Fingerprint(const void* data, std::size_t size, std::uint64_t hash = 14695981039346656037ull) {
  const auto* bytes = static_cast<const unsigned char*>(data);
  for (std::size_t i = 0; i < size; ++i) hash = (hash ^ bytes[i]) * 1099511628211ull;
  return hash;
}

inline std::uint64_t Fingerprint(const ImagePlane& plane, std::uint64_t hash) {
  return Fingerprint(plane.v.data(), plane.v.size() * sizeof(float), hash);
}

}  // namespace keldo::wavelet::testing
