// Any bytes as a picture file for the image processor: the PGM reader
// returns a picture or nothing, and a picture it returns has sides padded
// to multiples of 32 that hold its original size, and bytes for every
// position; the file written back from it reads back to the same picture.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "imageproc/processor_image.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace keldo::imageproc;
  const std::vector<std::uint8_t> bytes(data, data + size);
  const auto image = ReadProcessorPgm(bytes);
  if (!image) return 0;
  if (image->width % 32 != 0 || image->height % 32 != 0 || image->originalWidth > image->width ||
      image->originalHeight > image->height || image->originalWidth < 1 || image->originalHeight < 1)
    std::abort();
  if (image->bytes.size() != static_cast<std::size_t>(image->width) * static_cast<std::size_t>(image->height))
    std::abort();
  const auto back = ReadProcessorPgm(ProcessorPgmBytes(*image));
  if (!back || back->bytes != image->bytes) std::abort();
  return 0;
}
