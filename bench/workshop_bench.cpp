// The compression workshop's bit-plane coders on two 512 x 512 grey
// photographs. The transform is the one a two-dimensional form stores for the
// workshop: five levels of "Daub 9/7" of the Other list (lifting code 101) of
// the 8-bit pixels, as single-precision samples. Each coder the workshop
// offers (binary, Huffman, arithmetic with the 0-order model, arithmetic with
// the mixed-order models), lossy, to a bit rate, along the ZigZag scan (the
// form's first choices but the coder):
//
//   BM_Workshop/IMAGE/CODER/RATE/encode/ours   EncodeTransform and the .wic
//                                              file's bytes, at 0.5 and 2 bpp
//   BM_Workshop/IMAGE/CODER/RATE/decode/ours   DecodeWicFile of those bytes
//   BM_Workshop/IMAGE/CODER/RATE/ours          the whole way at 0.25, 0.5 and
//                                              1 bpp: transform, encode,
//                                              decode, inverse transform,
//                                              each pixel rounded and held to
//                                              0..255, as a .wc2 file opens
//
// Counters: the file's bits per pixel ("bpp"), and on the whole-way rows the
// PSNR of the pixels against the photograph (peak 255). bench/compare.sh puts
// OpenJPEG's row of the same image and rate (bench/openjpeg_yardstick.py)
// beside the whole-way rows.
//
// The pictures are written at run time by bench/codec_images.py into the
// folder KELDO_CODEC_IMAGES names (bench/compare.sh does both); without them
// the program measures nothing.

#include "codec_pictures.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include "wavelet/wavelet2d.h"
#include "wavelet/wdr_files.h"
#include "wavelet/wic_file.h"

namespace {

using namespace keldo::wavelet;
using keldo::bench::GreyImage;
using keldo::bench::Psnr;

constexpr int kLevels = 5;

// The two-dimensional form's "Daub 9/7" of the Other list.
WaveletChoice Daub97() {
  WaveletChoice choice;
  choice.family = 4;
  choice.code = 101;
  return choice;
}

// The transform as the workshop reads it from a .kb2 file: n by n, row y at
// y * n. The form's grid has a row and a column more, left untouched.
std::vector<float> TransformOf(const GreyImage& image) {
  const int n = image.width;
  const std::size_t stride = static_cast<std::size_t>(n) + 1;
  std::vector<float> grid(stride * stride, 0.0f);
  for (int y = 0; y < n; ++y)
    for (int x = 0; x < n; ++x)
      grid[static_cast<std::size_t>(y) * stride + x] = image.pixels[static_cast<std::size_t>(y) * n + x];
  Transform2D(Daub97(), false, n, MatrixView{grid.data(), stride}, kLevels);
  std::vector<float> plane(static_cast<std::size_t>(n) * static_cast<std::size_t>(n));
  for (int y = 0; y < n; ++y)
    std::copy_n(grid.begin() + static_cast<std::ptrdiff_t>(static_cast<std::size_t>(y) * stride), n,
                plane.begin() + static_cast<std::ptrdiff_t>(static_cast<std::size_t>(y) * n));
  return plane;
}

// The decoded matrix inverted, each pixel rounded and held to 0..255.
std::vector<std::uint8_t> PixelsOf(const ImagePlane& decoded) {
  const int n = decoded.width;
  const std::size_t stride = static_cast<std::size_t>(n) + 1;
  std::vector<float> grid(stride * stride, 0.0f);
  for (int y = 0; y < n; ++y)
    for (int x = 0; x < n; ++x) grid[static_cast<std::size_t>(y) * stride + x] = decoded.At(x, y);
  InverseTransform2D(Daub97(), false, n, MatrixView{grid.data(), stride}, kLevels);
  std::vector<std::uint8_t> pixels(static_cast<std::size_t>(n) * static_cast<std::size_t>(n));
  for (int y = 0; y < n; ++y)
    for (int x = 0; x < n; ++x)
      pixels[static_cast<std::size_t>(y) * n + x] =
          static_cast<std::uint8_t>(std::clamp(std::nearbyint(grid[static_cast<std::size_t>(y) * stride + x]), 0.0f, 255.0f));
  return pixels;
}

struct CoderCase {
  const char* name;
  WdrEntropyStage stage;
  WdrSourceModel model;
};
constexpr CoderCase kCoders[] = {{"Binary", WdrEntropyStage::Binary, WdrSourceModel::ZeroOrder},
                                 {"Huffman", WdrEntropyStage::Huffman, WdrSourceModel::ZeroOrder},
                                 {"Arithmetic0", WdrEntropyStage::Arithmetic, WdrSourceModel::ZeroOrder},
                                 {"ArithmeticMixed", WdrEntropyStage::Arithmetic, WdrSourceModel::MixedOrders}};
constexpr const char* kImages[] = {"camera", "astronaut"};
constexpr const char* kTimedRates[] = {"0.5", "2"};
constexpr const char* kQualityRates[] = {"0.25", "0.5", "1"};

WdrEncodeOptions OptionsOf(const CoderCase& coder, double bpp) {
  WdrEncodeOptions options;
  options.levels = kLevels;
  options.scanMode = 1;  // ZigZag
  options.stopKind = WdrStopKind::BitRate;
  options.target = bpp;
  options.stage = coder.stage;
  options.model = coder.model;
  return options;
}

// The .wic file's bytes, or nothing when the coder refuses.
std::optional<std::vector<std::uint8_t>> Encode(const std::vector<float>& transform, int n, const WdrEncodeOptions& options) {
  const WdrEncodeResult result = EncodeTransform(transform, n, options);
  if (result.status != WdrEncodeStatus::Ok || result.message != 0) return std::nullopt;
  return WriteWicFile(result.file);
}

double BitsPerPixel(std::size_t bytes, int n) { return 8.0 * static_cast<double>(bytes) / (static_cast<double>(n) * n); }

void BM_WorkshopEncode(benchmark::State& state, const std::vector<float>& transform, int n, CoderCase coder, double bpp) {
  const WdrEncodeOptions options = OptionsOf(coder, bpp);
  std::size_t fileBytes = 0;
  for (auto _ : state) {
    const std::optional<std::vector<std::uint8_t>> bytes = Encode(transform, n, options);
    if (!bytes) {
      state.SkipWithError("the coder refused the transform");
      return;
    }
    fileBytes = bytes->size();
    benchmark::DoNotOptimize(bytes->data());
  }
  state.counters["bpp"] = BitsPerPixel(fileBytes, n);
}

void BM_WorkshopDecode(benchmark::State& state, const std::vector<float>& transform, int n, CoderCase coder, double bpp) {
  const std::optional<std::vector<std::uint8_t>> bytes = Encode(transform, n, OptionsOf(coder, bpp));
  if (!bytes) {
    state.SkipWithError("the coder refused the transform");
    return;
  }
  for (auto _ : state) {
    const std::optional<WdrDecodedFile> decoded = DecodeWicFile(*bytes, false);
    if (!decoded) {
      state.SkipWithError("the decoder refused the coder's file");
      return;
    }
    benchmark::DoNotOptimize(decoded->plane.v.data());
  }
  state.counters["bpp"] = BitsPerPixel(bytes->size(), n);
}

void BM_WorkshopWhole(benchmark::State& state, const GreyImage& image, CoderCase coder, double bpp) {
  const WdrEncodeOptions options = OptionsOf(coder, bpp);
  std::vector<std::uint8_t> pixels;
  std::size_t fileBytes = 0;
  for (auto _ : state) {
    const std::optional<std::vector<std::uint8_t>> bytes = Encode(TransformOf(image), image.width, options);
    std::optional<WdrDecodedFile> decoded;
    if (bytes) decoded = DecodeWicFile(*bytes, false);
    if (!decoded) {
      state.SkipWithError("the coder or the decoder refused");
      return;
    }
    pixels = PixelsOf(decoded->plane);
    fileBytes = bytes->size();
    benchmark::DoNotOptimize(pixels.data());
  }
  state.counters["psnr"] = Psnr(image.pixels, pixels);
  state.counters["bpp"] = BitsPerPixel(fileBytes, image.width);
}

// Registers the cases of every image found; the images and their transforms
// live as long as the program.
int RegisterCases(const char* folder) {
  static std::vector<GreyImage> images;
  static std::vector<std::vector<float>> transforms;
  images.reserve(std::size(kImages));
  transforms.reserve(std::size(kImages));
  int registered = 0;
  for (const char* name : kImages) {
    std::optional<GreyImage> image = keldo::bench::ReadPgm(std::string(folder) + "/" + name + ".pgm");
    if (image && image->width != image->height) image.reset();  // the workshop codes square planes
    if (!image) continue;
    const GreyImage& kept = images.emplace_back(std::move(*image));
    const std::vector<float>& transform = transforms.emplace_back(TransformOf(kept));
    const std::string stem = std::string("BM_Workshop/") + name + "/";
    for (const CoderCase& coder : kCoders) {
      for (const char* rate : kTimedRates) {
        const std::string at = stem + coder.name + "/" + rate;
        benchmark::RegisterBenchmark((at + "/encode/ours").c_str(), BM_WorkshopEncode, transform, kept.width, coder,
                                     std::atof(rate))
            ->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark((at + "/decode/ours").c_str(), BM_WorkshopDecode, transform, kept.width, coder,
                                     std::atof(rate))
            ->Unit(benchmark::kMillisecond);
        registered += 2;
      }
      for (const char* rate : kQualityRates) {
        benchmark::RegisterBenchmark((stem + coder.name + "/" + rate + "/ours").c_str(), BM_WorkshopWhole, kept, coder,
                                     std::atof(rate))
            ->Unit(benchmark::kMillisecond);
        ++registered;
      }
    }
  }
  return registered;
}

}  // namespace

int main(int argc, char** argv) {
  return keldo::bench::RunCodecBenchmarks(argc, argv, "bench_workshop",
                                          [](const std::string& folder) { return RegisterCases(folder.c_str()); });
}
