// The image denoisers on two 512 x 512 grey photographs with Gaussian noise
// of sigma 10, 20 and 30: the image processor's SureShrink (hard, the box's
// default, and soft), TAWS (automatic threshold, its boxes' defaults),
// compress-denoise (Arithmetic+Denoise at the box's 0.25 bpp, and with
// "Minimum bit rate" at a budget it never reaches), all on five levels of
// Daub 9/7; the two-dimensional form's wavelet denoise averaged over the
// shifts of "1" (Daubechies 4, five levels, the automatic threshold and the
// hard rule, quantized to 8 bits); and the median and adaptive median
// filters. One iteration is the whole way from the noisy bytes to the
// denoised ones. The counter "psnr" is the PSNR of the result against the
// clean picture (peak 255); "noisy_psnr" that of the noisy input.
//
// The pictures are not kept in the repository: bench/denoise2d_images.py
// writes the clean and noisy PGM files (fixed seeds) from Debian's
// python3-skimage into a folder that KELDO_DENOISE_IMAGES names
// (bench/compare.sh does both). Without them the program measures nothing.
// scikit-image's denoise_wavelet and SciPy's median filter are timed on the
// same files by bench/denoise2d_yardstick.py.

#include "codec_pictures.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "analysis/median_image.h"
#include "wavelet/aswdr.h"
#include "wavelet/aswdr_denoise.h"
#include "wavelet/aswdr_denoise_coder.h"
#include "wavelet/image_denoise.h"
#include "wavelet/image_transform.h"
#include "wavelet/wavelet2d.h"

namespace {

using namespace keldo::wavelet;
using keldo::bench::GreyImage;
using keldo::bench::Psnr;
using keldo::bench::ReadPgm;

constexpr int kLevels = 5;
constexpr int kDaub97 = 1;              // the image processor's "Daub 9/7"
constexpr double kDefaultRate = 0.25;   // txtBitRate
constexpr double kUnreachedRate = 8.0;  // a budget the minimum-rate coder never spends
constexpr int kTawsDescent = 2;         // txtDescentPower2 and txtDescentPower
constexpr int kCoderDepth = 1;          // txtDepth

using Denoiser = std::function<std::vector<std::uint8_t>(const GreyImage&)>;

ImagePlane PlaneOf(const GreyImage& image) {
  ImagePlane p(image.width, image.height);
  for (std::size_t i = 0; i < image.pixels.size(); ++i) p.v[i] = static_cast<float>(image.pixels[i]);
  return p;
}

int Levels(const GreyImage& image) { return std::min(kLevels, LevelLimit(image.width, image.height, kDaub97)); }

std::vector<std::uint8_t> SureShrinkWay(const GreyImage& image, Shrinkage rule) {
  ImagePlane plane = PlaneOf(image);
  const int levels = Levels(image);
  TransformTheImage(plane, levels, kDaub97);
  SureShrinkImageTransform(plane, levels, rule);
  return InvertTheTransformQuant(plane, levels, kDaub97);
}

std::vector<std::uint8_t> TawsWay(const GreyImage& image) {
  const ImagePlane picture = PlaneOf(image);
  const int levels = Levels(image);
  ImagePlane transform = picture;
  TransformTheImage(transform, levels, kDaub97);
  const NoiseThreshold noise = AutoThresholdValue(transform, levels);
  TawsOptions options;
  options.levels = levels;
  options.depth = noise.depth;
  options.descent = kTawsDescent;
  return RoundedMagnitudeBytes(DenoisePictureTAWS(picture, kDaub97, noise.threshold, options));
}

std::vector<std::uint8_t> CompressDenoiseWay(const GreyImage& image, double bpp, bool minBitRate) {
  ImagePlane transform = PlaneOf(image);
  const int levels = Levels(image);
  TransformTheImage(transform, levels, kDaub97);
  AswdrHead head;
  head.budget = BitBudgetOf(image.width, image.height, bpp);
  head.levels = levels;
  head.waveletIndex = kDaub97;
  head.width = head.originalWidth = image.width;
  head.height = head.originalHeight = image.height;
  DenoiseCoding coding;
  coding.noiseThreshold = AutoThresholdValue(transform, levels).threshold;
  coding.depth = kCoderDepth;
  coding.descent = kTawsDescent;
  coding.minBitRate = minBitRate;
  const AswdrEncoded encoded = CompressDenoiseAswdr(transform, head, AswdrCoder::Arithmetic, coding);
  const std::optional<AswdrDecoded> decoded = DecompressDenoiseAswdr(encoded.file, bpp, AswdrCoder::Arithmetic);
  if (!decoded) return {};
  return InvertTheTransformQuant(decoded->quant, levels, kDaub97);
}

// The two-dimensional form's way: the picture in an N + 1 grid (the last row
// and column repeating their neighbours), the threshold of
// TheAutoThresholdValue with the boxes "Avg" ticked and a descent above 0,
// cycle spinning over the shifts 0..1 of both axes, Quantize (8-bit).
std::vector<std::uint8_t> AveragedFormWay(const GreyImage& image) {
  const int n = image.width;
  const std::size_t stride = static_cast<std::size_t>(n) + 1;
  std::vector<float> grid(stride * stride);
  for (int i = 0; i <= n; ++i)
    for (int j = 0; j <= n; ++j)
      grid[static_cast<std::size_t>(i) * stride + static_cast<std::size_t>(j)] =
          image.pixels[static_cast<std::size_t>(std::min(i, n - 1)) * static_cast<std::size_t>(n) +
                       static_cast<std::size_t>(std::min(j, n - 1))];
  CycleSpinSetup s;
  s.choice = {1, 1, false};  // Daubechies 4
  s.levels = kLevels;
  std::vector<float> one = grid;
  Transform2D(s.choice, false, n, {one.data(), stride}, 1);
  const double sigma = DiagonalBandSigma(n, {one.data(), stride});
  s.threshold = AutoDenoiseThreshold(sigma, n, 1, true, false);
  s.first = 0;
  s.last = 1;
  std::vector<float> out;
  CycleSpinDenoise(n, grid.data(), stride, s, out, nullptr);
  std::vector<std::uint8_t> bytes(static_cast<std::size_t>(n) * static_cast<std::size_t>(n));
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < n; ++j) {
      const float v = out[static_cast<std::size_t>(i) * stride + static_cast<std::size_t>(j)];
      bytes[static_cast<std::size_t>(i) * static_cast<std::size_t>(n) + static_cast<std::size_t>(j)] =
          static_cast<std::uint8_t>(v >= 255.0f ? 255.0f : v < 0.0f ? 0.0f : std::nearbyint(v));
    }
  return bytes;
}

std::vector<std::uint8_t> MedianWay(const GreyImage& image, keldo::analysis::MedianRule rule) {
  return keldo::analysis::MedianFilterBytes(image.pixels.data(), static_cast<std::size_t>(image.width), image.height,
                                            image.width, rule);
}

struct Case {
  GreyImage clean, noisy;
};

void BM_Denoise2D(benchmark::State& state, const Case& c, const Denoiser& denoise) {
  std::vector<std::uint8_t> out;
  for (auto _ : state) {
    out = denoise(c.noisy);
    benchmark::DoNotOptimize(out.data());
  }
  state.counters["psnr"] = out.size() == c.clean.pixels.size() ? Psnr(c.clean.pixels, out) : 0.0;
  state.counters["noisy_psnr"] = Psnr(c.clean.pixels, c.noisy.pixels);
}

int RegisterCases(const std::string& folder) {
  static std::vector<Case> cases;
  cases.reserve(6);
  const std::pair<const char*, Denoiser> methods[] = {
      {"SureShrink", [](const GreyImage& g) { return SureShrinkWay(g, Shrinkage::Hard); }},
      {"SureShrinkSoft", [](const GreyImage& g) { return SureShrinkWay(g, Shrinkage::Soft); }},
      {"TAWS", TawsWay},
      {"CompressDenoise", [](const GreyImage& g) { return CompressDenoiseWay(g, kDefaultRate, false); }},
      {"CompressDenoiseMinRate", [](const GreyImage& g) { return CompressDenoiseWay(g, kUnreachedRate, true); }},
      {"Form2DAveraged", AveragedFormWay},
      {"Median", [](const GreyImage& g) { return MedianWay(g, keldo::analysis::MedianRule::Plain); }},
      {"AdaptiveMedian", [](const GreyImage& g) { return MedianWay(g, keldo::analysis::MedianRule::Adaptive); }},
  };
  int registered = 0;
  for (const char* image : {"camera", "astronaut"}) {
    const std::optional<GreyImage> clean = ReadPgm(folder + "/" + image + ".pgm");
    if (!clean) continue;
    for (int sigma : {10, 20, 30}) {
      const std::string tag = std::string(image) + "_s" + std::to_string(sigma);
      const std::optional<GreyImage> noisy = ReadPgm(folder + "/" + tag + ".pgm");
      if (!noisy || noisy->width != clean->width || noisy->height != clean->height) continue;
      cases.push_back({*clean, *noisy});
      const Case& c = cases.back();
      for (const auto& [name, denoise] : methods) {
        const std::string full = "BM_Denoise2D/" + std::string(image) + "/s" + std::to_string(sigma) + "/" + name + "/ours";
        benchmark::RegisterBenchmark(full.c_str(), BM_Denoise2D, c, denoise)->Unit(benchmark::kMillisecond);
        ++registered;
      }
    }
  }
  return registered;
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  const char* folder = std::getenv("KELDO_DENOISE_IMAGES");
  if (folder == nullptr || RegisterCases(folder) == 0) {
    std::printf("bench_denoise2d: no images; set KELDO_DENOISE_IMAGES to a folder written by bench/denoise2d_images.py\n");
    return 0;
  }
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
