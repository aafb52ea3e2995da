#pragma once
// What the two image-coder benchmarks share: the grey photographs that
// bench/codec_images.py writes as PGM files into the folder
// KELDO_CODEC_IMAGES names, the PSNR of a decoded picture, and the program's
// main, which measures nothing when there are no pictures.

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

namespace keldo::bench {

struct GreyImage {
  int width = 0, height = 0;
  std::vector<std::uint8_t> pixels;  // row-major
};

// An 8-bit binary PGM (P5, maxval 255; '#' comments in the head skipped), or
// nothing for any other file.
inline std::optional<GreyImage> ReadPgm(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  const std::vector<char> raw((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  std::size_t at = 0;
  const auto isSpace = [](char c) { return c == ' ' || c == '\n' || c == '\r' || c == '\t'; };
  std::vector<std::string> fields;
  while (fields.size() < 4 && at < raw.size()) {
    if (raw[at] == '#') {
      while (at < raw.size() && raw[at] != '\n') ++at;
    } else if (isSpace(raw[at])) {
      ++at;
    } else {
      std::string field;
      while (at < raw.size() && !isSpace(raw[at])) field += raw[at++];
      fields.push_back(field);
    }
  }
  if (fields.size() < 4 || fields[0] != "P5" || fields[3] != "255") return std::nullopt;
  GreyImage image;
  image.width = std::atoi(fields[1].c_str());
  image.height = std::atoi(fields[2].c_str());
  const std::size_t count = static_cast<std::size_t>(image.width) * static_cast<std::size_t>(image.height);
  if (image.width <= 0 || image.height <= 0 || raw.size() < at + 1 + count) return std::nullopt;
  image.pixels.assign(raw.begin() + static_cast<std::ptrdiff_t>(at + 1),
                      raw.begin() + static_cast<std::ptrdiff_t>(at + 1 + count));
  return image;
}

// The PSNR of decoded bytes against the original (peak 255); infinite for
// an exact copy.
inline double Psnr(const std::vector<std::uint8_t>& original, const std::vector<std::uint8_t>& decoded) {
  double sum = 0.0;
  for (std::size_t i = 0; i < original.size(); ++i) {
    const double d = static_cast<double>(original[i]) - static_cast<double>(decoded[i]);
    sum += d * d;
  }
  const double mse = sum / static_cast<double>(original.size());
  return mse == 0.0 ? INFINITY : 10.0 * std::log10(255.0 * 255.0 / mse);
}

// main: registers the cases of the pictures in KELDO_CODEC_IMAGES through
// `registerCases` (which returns how many it registered) and runs them.
template <typename Register>
int RunCodecBenchmarks(int argc, char** argv, const char* program, Register registerCases) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  const char* folder = std::getenv("KELDO_CODEC_IMAGES");
  if (folder == nullptr || registerCases(std::string(folder)) == 0) {
    std::printf("%s: no images; set KELDO_CODEC_IMAGES to a folder written by bench/codec_images.py\n", program);
    return 0;
  }
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}

}  // namespace keldo::bench
