// Any bytes as a compressed file of the image processor's coders, binary
// (.awd) and arithmetic (.awe), decoded at a few rates: the decoder returns
// a picture or nothing, and a picture it returns has the size its head
// states, with values no larger than the coder can give.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "wavelet/aswdr.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace keldo::wavelet;
  const std::vector<std::uint8_t> bytes(data, data + size);
  // Small pictures only, so that a run stays short: the head's sizes are
  // 16-bit, and a large one reads a long stream of zeros.
  const std::optional<AswdrHead> head = ReadAswdrHead(bytes);
  if (!head || static_cast<long long>(head->width) * head->height > 128 * 128) return 0;
  for (AswdrCoder coder : {AswdrCoder::Binary, AswdrCoder::Arithmetic})
    for (double bpp : {0.0, 0.5, 8.0}) {
      const auto decoded = DecompressAswdr(bytes, bpp, coder);
      if (!decoded) continue;
      if (decoded->quant.width != head->width || decoded->quant.height != head->height ||
          decoded->quant.v.size() != static_cast<std::size_t>(head->width) * static_cast<std::size_t>(head->height))
        std::abort();
      for (float v : decoded->quant.v)
        if (!std::isfinite(v)) std::abort();
    }
  return 0;
}
