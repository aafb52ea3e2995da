#pragma once
// The scalogram form file (.scg): the signal, the scalogram's parameters and
// the modification list, with the settings of the side boxes. It holds no
// image: loading recomputes the scalogram and replays the list.
// Little-endian, no magic number, the fields in this order:
//
//   caption length   int32, then that many bytes (one a character)
//   display flags    int16 twice   restore the display option pair
//   interval left, interval right, dx          3 doubles
//   wavelet          1 byte, the wavelet's number as a character '1'..'5'
//   octaves          int32  1..256
//   width            double
//   voices           int32  1.., octaves * voices at most 256
//   frequency        double
//   signal mean      double
//   rows             int32  nscales, octaves * voices
//   columns          int32  N, the signal's upper bound
//   reference        double  the scalogram's largest value
//   mode             int16  the OpMag index
//   signal flags     int16 twice   restore the signal's dots-or-lines pair
//   view             int16  the OpView index
//   sampling         double
//   display kind     1 byte, one text character ('G' for grey)
//   signal count     int32  the signal's upper bound; then count + 1 doubles
//   list count       int32  the list's upper bound; then for entries 1..count
//                           an int32 length and the characters (entry 0,
//                           "B", is not stored)
//   report length    int32, then the text of txtModReport when above 0
//   information length int32, then the text of txtInformation when above 0
//
// An option flag is kept as stored: not 0 chooses the option.

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace keldo::timefreq {

// How many entries the scalogram's lists have: WavScgType ("1. Mexican hat
// (real)" .. "5. Gabor (complex)"), OpMag and OpView.
inline constexpr int kScalogramWavelets = 5;
inline constexpr std::int16_t kScalogramDisplayModes = 4;
inline constexpr std::int16_t kScalogramViews = 2;
// The scalogram's limits: octaves 1..256, voices 1.., and at most 256 scales.
inline constexpr std::int32_t kMostOctaves = 256;
inline constexpr std::int32_t kMostScales = 256;

struct ScgFile {
  std::string caption;
  std::array<std::int16_t, 2> displayFlags{};
  double left = 0.0, right = 0.0, dx = 0.0;
  char wavelet = '1';  // '1'..'5', the number that starts the WavScgType entry
  std::int32_t octaves = 1;
  double width = 0.0;
  std::int32_t voices = 1;
  double frequency = 0.0;
  double signalMean = 0.0;
  std::int32_t rows = 1;     // octaves * voices
  std::int32_t columns = 0;  // signal.size() - 1
  double reference = 0.0;
  std::int16_t mode = 0;
  std::array<std::int16_t, 2> signalFlags{};
  std::int16_t view = 0;
  double sampling = 0.0;
  char displayKind = 'G';
  std::vector<double> signal;              // sig[0..count]
  std::vector<std::string> modifications;  // entries 1.. of the list ("T:...", "G:...")
  std::string report;
  std::string information;
};

// The file's bytes, the fields as they are. The signal count written is
// signal.size() - 1, and the list count modifications.size().
std::vector<std::uint8_t> WriteScgFile(const ScgFile& file);
// The file read back; nothing for bytes that are not a whole, sensible form
// file: cut short, a length past the end or negative, bytes left over at
// the end; a signal whose upper bound is not a power of two from 64 to
// 65536, or columns other than that bound; octaves outside 1..256, voices
// below 1, more than 256 scales, or rows other than octaves * voices; a
// wavelet other than '1'..'5', a mode or view outside its list.
std::optional<ScgFile> ReadScgFile(const std::vector<std::uint8_t>& bytes);

}  // namespace keldo::timefreq
