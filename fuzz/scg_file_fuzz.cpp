// Any bytes as a scalogram form file: the reader returns a file or nothing,
// and a file it returns holds a signal of a power of two plus one samples,
// as many columns, octaves * voices rows within the scalogram's limits, and
// writes back to exactly the bytes it came from.
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "timefreq/scg_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace keldo::timefreq;
  const std::vector<std::uint8_t> bytes(data, data + size);
  const auto file = ReadScgFile(bytes);
  if (!file) return 0;
  const std::size_t n = file->signal.size() - 1;
  if (file->signal.size() < 65 || !std::has_single_bit(n) || static_cast<std::size_t>(file->columns) != n) std::abort();
  if (file->octaves < 1 || file->voices < 1 || file->rows != file->octaves * file->voices || file->rows > kMostScales)
    std::abort();
  if (WriteScgFile(*file) != bytes) std::abort();
  return 0;
}
