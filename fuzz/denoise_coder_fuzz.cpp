// Any bytes as a compress-denoise file of the image processor, binary
// (.bcd) and arithmetic (.acd), decoded at a few rates: the decoder returns
// a picture or nothing, and a picture it returns has the size its head
// states, with finite values, zero wherever it decoded zero.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "wavelet/aswdr_denoise_coder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace keldo::wavelet;
  const std::vector<std::uint8_t> bytes(data, data + size);
  // Small pictures only: the head's sizes are 16-bit, and a large one reads
  // a long stream of zeros.
  const std::optional<AswdrHead> head = ReadAswdrHead(bytes);
  if (!head || static_cast<long long>(head->width) * head->height > 128 * 128) return 0;
  for (AswdrCoder coder : {AswdrCoder::Binary, AswdrCoder::Arithmetic})
    for (double bpp : {0.0, 0.5, 8.0}) {
      const auto decoded = DecompressDenoiseAswdr(bytes, bpp, coder);
      if (!decoded) continue;
      const std::size_t n = static_cast<std::size_t>(head->width) * static_cast<std::size_t>(head->height);
      if (decoded->quant.width != head->width || decoded->quant.height != head->height ||
          decoded->quant.v.size() != n || decoded->quantBeforeRefinement.v.size() != n)
        std::abort();
      for (std::size_t i = 0; i < n; ++i) {
        if (!std::isfinite(decoded->quant.v[i])) std::abort();
        if ((decoded->quant.v[i] == 0.0f) != (decoded->quantBeforeRefinement.v[i] == 0.0f)) std::abort();
      }
    }
  return 0;
}
