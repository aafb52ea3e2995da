#pragma once
// The spectrogram form file (.spg): the signal and the modification list,
// with the settings of the side box. It holds no image: loading recomputes
// the spectrum and replays the list. Little-endian, no magic number, the
// fields in this order:
//
//   caption length  int32, then that many bytes (one a character)
//   interval left, interval right, dt          3 doubles
//   rows             int32   nrows as stored (feeds the side box only)
//   winlen part      int32   the window length is twice this
//   step             int32
//   sampling value   double
//   display maximum  int32   (feeds the side box only)
//   display mode     int16   the OpMag index
//   display choice   int16   the OpMagPhase index
//   flag             1 byte, one text character
//   filter index     int16   the SpecFilter list index
//   df               double
//   signal count     int32   the signal's upper bound; then count + 1 doubles
//   list count       int32   the list's upper bound; then for entries 1..count
//                            an int32 length and the characters (entry 0,
//                            "B", is not stored)
//   report length    int32, then the text of txtModReport when above 0
//   information length int32, then the text of txtInformation when above 0

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace keldo::timefreq {

// How many entries the side box's lists have: OpMag, OpMagPhase, SpecFilter.
inline constexpr std::int16_t kDisplayModes = 4;
inline constexpr std::int16_t kDisplayChoices = 2;
inline constexpr std::int16_t kFilters = 5;

struct SpgFile {
  std::string caption;
  double left = 0.0, right = 0.0, dt = 0.0;
  std::int32_t rows = 0;
  std::int32_t winlenPart = 0;
  std::int32_t step = 0;
  double samplingValue = 0.0;
  std::int32_t displayMaximum = 0;
  std::int16_t displayMode = 0;
  std::int16_t displayChoice = 0;
  char flag = 'N';
  std::int16_t filterIndex = 0;
  double df = 0.0;
  std::vector<double> signal;              // sig[0..count]
  std::vector<std::string> modifications;  // entries 1.. of the list ("T:...", "G:...")
  std::string report;
  std::string information;
};

// The file's bytes. The signal count written is signal.size() - 1, and the
// list count modifications.size().
std::vector<std::uint8_t> WriteSpgFile(const SpgFile& file);
// The file read back; nothing for bytes that are not a whole, sensible form
// file: cut short, a length past the end or negative, a signal whose upper
// bound is not a power of two from 64 to 65536, a window part or step that
// no spectrogram of that signal could have, bytes left over at the end.
// A window part or step fits when twice the part is a power of two from 64
// up to the longest window the signal takes (32 for 64 points, 64 for 128
// and 256, doubling for each further factor of four) and the step is from 1
// up to that length. A display mode, display choice or filter index outside
// its list is refused as well.
std::optional<SpgFile> ReadSpgFile(const std::vector<std::uint8_t>& bytes);

}  // namespace keldo::timefreq
