// Any bytes as a PGM and as a BMP file: the decoders return a picture or
// nothing, and a picture they return encodes and decodes to itself.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "platform/headless/simple_images.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  using namespace keldo::platform;
  if (auto img = DecodeBmp(bytes)) {
    if (img->width * img->height <= 1 << 20) {
      auto back = DecodeBmp(EncodeBmp(*img));
      if (!back || back->pixels != img->pixels) std::abort();
    }
  }
  (void)DecodePgm(bytes);
  return 0;
}
