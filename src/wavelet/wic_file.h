#pragma once
// The compressed files of the workshop's bit-plane coders: .wic, written by
// the workshop, and .wc2, the two-dimensional form's compressed image type,
// which adds a wavelet byte (and a region value) after the count.
// Little-endian, no magic number, in this order:
//
//   code         1 byte   the coding code + 1
//   count        int32    stages 0-2: the number of symbols; stages 3 and 4:
//                         the bytes of the significance stream
//   .wc2 only    1 byte   WaveletByte; above 9 a region: the wavelet is its
//                         value mod 10 and an int32 RoiValue follows
//   streams               by stage (below)
//   N            int32    the image's side
//   scan mode    1 byte   1..4
//   levels       1 byte
//   exponent     1 byte   the starting threshold is 2^exponent
//   passes       1 byte   P, the last pass reached
//   pass counts           P + 1 entries: an int16 v >= 0 is v; a v < 0 is
//                         followed by an int16 w and the entry is
//                         w * 32000 - v
//
// The stage of a code: a code above 100 less 100 when below 190, otherwise
// less 200. Streams by stage:
//   0  count symbol characters ("0", "1", "+", "-"); an int32 R and R
//      refinement characters ("0", "1")
//   1  the symbols four a byte, the first in the low two bits ("0" 0, "1" 1,
//      "+" 2, "-" 3, padded with "0"); an int32 R and R bytes of refinement
//      bits, eight a byte, the first bit lowest (padded with "0")
//   2  an int32 H and H bytes of the prefix-coded symbols; an int32 R and R
//      refinement bytes
//   3, 4  count bytes of the arithmetic significance stream; an int32 R and
//      R bytes of the arithmetic refinement stream
// Any other stage has no streams: the trailer follows the count.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace keldo::wavelet {

struct WicFile {
  int code = 1;  // the full coding code: 1..4, 101..104, 201..204 (0 is read, never written)
  bool wc2 = false;
  int waveletByte = 1;        // .wc2 only
  std::int32_t roiValue = 0;  // .wc2 with waveletByte above 9
  std::int32_t count = 0;     // as stored (stages 3 and 4: the significance bytes)
  // Stages 0 and 1: the streams as characters.
  std::string symbols;
  std::string refinement;
  // Stages 2 to 4: the coded streams as they stand in the file.
  std::vector<std::uint8_t> significance;
  std::vector<std::uint8_t> refinementBytes;
  std::int32_t n = 0;
  int scanMode = 1;
  int levels = 0;
  int exponent = 0;
  int passes = 0;
  std::vector<std::int32_t> passCounts;  // passes + 1 entries

  bool HasRegion() const { return wc2 && waveletByte > 9; }
  int Wavelet() const { return waveletByte % 10; }
};

int StageOfCode(int code);

// The stage 1 packing and its reverse: four symbols a byte from the lowest
// bits up, and refinement bits eight a byte from the lowest up. Unpacking
// gives every symbol or bit the bytes hold; a character other than the
// alphabet's packs as "0".
std::vector<std::uint8_t> PackSymbols(const std::string& symbols);
std::string UnpackSymbols(const std::vector<std::uint8_t>& bytes, std::size_t count);
std::vector<std::uint8_t> PackRefinement(const std::string& bits);
std::string UnpackRefinement(const std::vector<std::uint8_t>& bytes);

// The pass counts as the file holds them, and back: a value up to 32000 is
// one int16; a larger one -(value mod 32000) then value div 32000. (A larger
// value that is a whole multiple of 32000 thus writes a first int16 of 0,
// which a reader takes as a plain 0, reading the second as the next entry.)
void WritePassCounts(std::vector<std::uint8_t>& out, const std::vector<std::int32_t>& counts);

// The file's bytes. Stage 0 writes `symbols` and `refinement` as they are,
// stage 1 packs them, stages 2 to 4 write the coded streams (stages 3 and 4
// take `count` from the significance stream's length).
std::vector<std::uint8_t> WriteWicFile(const WicFile& file);
// The file read back; nothing for bytes that end early, a negative length,
// a side that is not a power of two from 64 to 1024, a scan mode outside
// 1..4, levels outside 1..(log2 N - 2), or more than 33 passes. Bytes after
// the last pass count are left unread.
std::optional<WicFile> ReadWicFile(const std::vector<std::uint8_t>& bytes, bool wc2);

}  // namespace keldo::wavelet
