// Any bytes as a lossless file of the image processor (.awg): the decoder
// returns a plane or nothing, a plane of the size its head states, with
// finite values whose magnitudes stay below twice the start threshold.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "wavelet/aswdr.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace keldo::wavelet;
  const std::vector<std::uint8_t> bytes(data, data + size);
  // Small planes only: the lossless decoder walks every position in each of
  // up to 65 passes, whatever the stream holds.
  const std::optional<AswdrHead> head = ReadAwgHead(bytes);
  if (!head || static_cast<long long>(head->width) * head->height > 64 * 64) return 0;
  const auto decoded = DecompressAswdrLossless(bytes);
  if (!decoded) std::abort();  // the head was read above
  if (decoded->quant.width != head->width || decoded->quant.height != head->height ||
      decoded->quant.v.size() != static_cast<std::size_t>(head->width) * static_cast<std::size_t>(head->height))
    std::abort();
  // Each value is a sum of distinct halvings of the start threshold 2^E.
  const double bound = std::ldexp(1.0, head->exponent + 1);
  for (float v : decoded->quant.v)
    if (!std::isfinite(v) || std::fabs(static_cast<double>(v)) >= bound) std::abort();
  return 0;
}
