// The image processor's wavelet bit-plane coders on two 512 x 512 grey
// photographs: the plane of the 8-bit pixels, five levels of the Daub 9/7
// wavelet (fewer if LevelLimit says so), coded at 0.125, 0.25, 0.5 and 1 bit
// per pixel by the binary and the arithmetic ASWDR coder, decoded at the same
// rate and inverted to bytes; beside them the plain WDR coder of the
// workshop (arithmetic, ZigZag scan) on the same transform. One iteration is the whole way: the transform,
// CompressAswdr, DecompressAswdr and InvertTheTransformQuant. The counters
// are the PSNR of the bytes against the pixels (peak 255) and the file's bits
// per pixel.
//
// The pictures are not kept in the repository: bench/codec_images.py writes
// camera.pgm and astronaut.pgm from Debian's python3-skimage into a folder,
// and KELDO_CODEC_IMAGES names it (bench/compare.sh does both). Without them
// the program measures nothing. The yardstick, OpenJPEG's opj_compress -I at
// the ratio 8 / bpp and opj_decompress, is timed by bench/openjpeg_yardstick.py.

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
#include <utility>
#include <vector>

#include "wavelet/aswdr.h"
#include "wavelet/image_transform.h"
#include "wavelet/wdr_files.h"
#include "wavelet/wic_file.h"

namespace {

using namespace keldo::wavelet;
using keldo::bench::GreyImage;
using keldo::bench::Psnr;
using keldo::bench::ReadPgm;

constexpr int kLevels = 5;
constexpr int kDaub97 = 1;  // the image processor's "Daub 9/7"

void BM_Codec(benchmark::State& state, const GreyImage& image, AswdrCoder coder, double bpp) {
  ImagePlane pixels(image.width, image.height);
  for (std::size_t i = 0; i < image.pixels.size(); ++i) pixels.v[i] = static_cast<float>(image.pixels[i]);
  AswdrHead head;
  head.levels = std::min(kLevels, LevelLimit(image.width, image.height, kDaub97));
  head.waveletIndex = kDaub97;
  head.budget = BitBudgetOf(image.width, image.height, bpp);
  head.width = head.originalWidth = image.width;
  head.height = head.originalHeight = image.height;
  std::vector<std::uint8_t> bytes;
  std::size_t fileBytes = 0;
  for (auto _ : state) {
    ImagePlane plane = pixels;
    TransformTheImage(plane, head.levels, kDaub97);
    const AswdrEncoded encoded = CompressAswdr(plane, head, coder);
    const std::optional<AswdrDecoded> decoded = DecompressAswdr(encoded.file, bpp, coder);
    if (!decoded) {
      state.SkipWithError("the decoder refused the coder's file");
      return;
    }
    bytes = InvertTheTransformQuant(decoded->quant, head.levels, kDaub97);
    fileBytes = encoded.file.size();
    benchmark::DoNotOptimize(bytes.data());
  }
  state.counters["psnr"] = Psnr(image.pixels, bytes);
  state.counters["bpp"] = 8.0 * static_cast<double>(fileBytes) / static_cast<double>(image.pixels.size());
}

// The plain difference-reduction coder on the same transform: the
// workshop's WDR, arithmetic with the 0-order model, along the ZigZag scan,
// its .wic file decoded and inverted as the image processor inverts.
void BM_CodecWdr(benchmark::State& state, const GreyImage& image, double bpp) {
  ImagePlane pixels(image.width, image.height);
  for (std::size_t i = 0; i < image.pixels.size(); ++i) pixels.v[i] = static_cast<float>(image.pixels[i]);
  const int levels = std::min(kLevels, LevelLimit(image.width, image.height, kDaub97));
  WdrEncodeOptions options;
  options.levels = levels;
  options.scanMode = 1;
  options.stopKind = WdrStopKind::BitRate;
  options.target = bpp;
  options.stage = WdrEntropyStage::Arithmetic;
  options.model = WdrSourceModel::ZeroOrder;
  std::vector<std::uint8_t> bytes;
  std::size_t fileBytes = 0;
  for (auto _ : state) {
    ImagePlane plane = pixels;
    TransformTheImage(plane, levels, kDaub97);
    const WdrEncodeResult encoded = EncodeTransform(plane.v, image.width, options);
    std::optional<WdrDecodedFile> decoded;
    std::vector<std::uint8_t> file;
    if (encoded.status == WdrEncodeStatus::Ok && encoded.message == 0) {
      file = WriteWicFile(encoded.file);
      decoded = DecodeWicFile(file, false);
    }
    if (!decoded) {
      state.SkipWithError("the coder or the decoder refused");
      return;
    }
    bytes = InvertTheTransformQuant(decoded->plane, levels, kDaub97);
    fileBytes = file.size();
    benchmark::DoNotOptimize(bytes.data());
  }
  state.counters["psnr"] = Psnr(image.pixels, bytes);
  state.counters["bpp"] = 8.0 * static_cast<double>(fileBytes) / static_cast<double>(image.pixels.size());
}

struct CoderCase {
  const char* name;
  AswdrCoder coder;
};
constexpr CoderCase kCoders[] = {{"AswdrBinary", AswdrCoder::Binary}, {"AswdrArithmetic", AswdrCoder::Arithmetic}};
constexpr const char* kImages[] = {"camera", "astronaut"};
constexpr const char* kRates[] = {"0.125", "0.25", "0.5", "1"};

// Registers the cases of every image found; the images live as long as the
// program.
int RegisterCases(const char* folder) {
  static std::vector<GreyImage> images;
  images.reserve(std::size(kImages));
  int registered = 0;
  for (const char* name : kImages) {
    std::optional<GreyImage> image = ReadPgm(std::string(folder) + "/" + name + ".pgm");
    if (!image) continue;
    const GreyImage& kept = images.emplace_back(std::move(*image));
    for (const CoderCase& coder : kCoders)
      for (const char* rate : kRates) {
        const std::string full = std::string("BM_Codec/") + name + "/" + coder.name + "/" + rate + "/ours";
        benchmark::RegisterBenchmark(full.c_str(), BM_Codec, kept, coder.coder, std::atof(rate))
            ->Unit(benchmark::kMillisecond);
        ++registered;
      }
    // The workshop's coder takes square planes only.
    if (kept.width == kept.height)
      for (const char* rate : kRates) {
        const std::string full = std::string("BM_Codec/") + name + "/Wdr/" + rate + "/ours";
        benchmark::RegisterBenchmark(full.c_str(), BM_CodecWdr, kept, std::atof(rate))->Unit(benchmark::kMillisecond);
        ++registered;
      }
  }
  return registered;
}

}  // namespace

int main(int argc, char** argv) {
  return keldo::bench::RunCodecBenchmarks(argc, argv, "bench_codec",
                                          [](const std::string& folder) { return RegisterCases(folder.c_str()); });
}
