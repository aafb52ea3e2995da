#pragma once
// The photograph of the lossless and region tests: tests/data/camera_crop.pgm,
// made by tests/data/make_camera_crop.py (a 128 by 128 block of
// scikit-image's camera picture).

#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "wavelet/image_transform.h"

namespace keldo::wavelet::testing {

// The plane of the PGM's bytes, row by row (x along a row). Empty when the
// file is missing or not the 128 by 128 picture.
inline ImagePlane CameraCrop() {
  std::ifstream file(std::string(KELDO_TEST_DATA) + "/camera_crop.pgm", std::ios::binary);
  const std::vector<char> bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  const std::string head = "P5\n128 128\n255\n";
  if (bytes.size() != head.size() + 128 * 128 || std::string(bytes.begin(), bytes.begin() + 15) != head) return {};
  ImagePlane plane(128, 128);
  for (std::size_t i = 0; i < plane.v.size(); ++i)
    plane.v[i] = static_cast<float>(static_cast<std::uint8_t>(bytes[head.size() + i]));
  return plane;
}

}  // namespace keldo::wavelet::testing
