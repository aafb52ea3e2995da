// Any bytes as a spectrogram form file: the reader returns a file or
// nothing, and a file it returns writes back to exactly the bytes it came
// from, with a signal of a power of two plus one samples.
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "timefreq/spg_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace keldo::timefreq;
  const std::vector<std::uint8_t> bytes(data, data + size);
  const auto file = ReadSpgFile(bytes);
  if (!file) return 0;
  if (file->signal.size() < 65 || !std::has_single_bit(file->signal.size() - 1)) std::abort();
  if (WriteSpgFile(*file) != bytes) std::abort();
  return 0;
}
