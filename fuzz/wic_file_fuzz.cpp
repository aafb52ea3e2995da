// Any bytes as a .wic or .wc2 file: the reader returns a file or nothing,
// and a file it returns has a side the coders take, one pass count more
// than its last pass, and writes bytes that read back to the same file
// (but for counts the two-integer form cannot write).
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "wavelet/wic_file.h"

namespace {

bool Same(const keldo::wavelet::WicFile& a, const keldo::wavelet::WicFile& b) {
  return a.code == b.code && a.waveletByte == b.waveletByte && a.roiValue == b.roiValue && a.symbols == b.symbols &&
         a.refinement == b.refinement && a.significance == b.significance && a.refinementBytes == b.refinementBytes &&
         a.n == b.n && a.scanMode == b.scanMode && a.levels == b.levels && a.exponent == b.exponent &&
         a.passes == b.passes && a.passCounts == b.passCounts;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace keldo::wavelet;
  const std::vector<std::uint8_t> bytes(data, data + size);
  for (bool wc2 : {false, true}) {
    const auto file = ReadWicFile(bytes, wc2);
    if (!file) continue;
    if (file->n < 64 || file->n > 1024 || file->passCounts.size() != static_cast<std::size_t>(file->passes) + 1)
      std::abort();
    // Pass counts a whole multiple of 32000 above it, and those whose
    // quotient by 32000 passes 32767, do not survive writing.
    bool slips = false;
    for (std::int32_t v : file->passCounts)
      slips = slips || (v > 32000 && v % 32000 == 0) || v / 32000 > 32767 || v < 0;
    const auto back = ReadWicFile(WriteWicFile(*file), wc2);
    if (!slips && (!back || !Same(*back, *file))) std::abort();
  }
  return 0;
}
