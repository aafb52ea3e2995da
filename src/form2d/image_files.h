#pragma once
// The files of the two-dimensional form as bytes: the form file (.kd2), the
// binary data file of one graph (.kb2), the PGM image it reads and writes
// itself, and the rule by which a picture loaded through the imaging
// service becomes samples. Plain little-endian values, no header magic. The
// readers take any bytes: a short or malformed file gives nothing, never a
// crash, and no reader accepts a side it could not hold.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "form2d/image_display.h"
#include "kit/kb2_file.h"
#include "platform/image.h"

namespace keldo::form2d {

// The largest side a file may give: AdjustValue turns an image of height
// 2048 into 2049 points.
constexpr int kMaxFilePoints = kKb2MaxPoints;
// The smallest: a grid of at least two intervals.
constexpr int kMinFilePoints = kKb2MinPoints;

// One graph of a form file. Samples are (N+1) by (N+1), row-major: row i
// (y), column j (x), as the form holds them; the file stores them
// transposed.
struct StoredImageGraph {
  float left = 0, right = 0, step = 0, max = 0;
  float viewXLeft = 0, viewXRight = 0, viewYLow = 0, viewYHigh = 0;
  char colorMethod = 'G', intensity = 'L';
  float threshold = 0;
  std::int16_t drawWidths = 1;
  std::string caption;
  std::string thresholdText;
  std::vector<float> samples;
};

// A .kd2 file's fields in their order. The sections after the graphs are
// read only when the section count has them.
struct Kd2Record {
  std::int16_t formKind = 2;
  float plotLeft = 0, plotRight = 0, plotLow = 0, plotHigh = 0;
  float formulaLeft = 0, formulaRight = 0;
  std::int32_t points = 0;
  char view = 'S';
  std::int16_t selected = 0;
  std::vector<StoredImageGraph> graphs;
  std::string fileName;
  std::int32_t sections = 4;
  std::vector<std::string> history;  // section 1
  std::string sideBoxKey;            // section 2
  std::int32_t cursorCol = 0, cursorRow = 0;  // section 3
  std::string remarks;
  std::vector<std::int16_t> linReg;  // section 4, one per graph
};

constexpr std::int32_t kKd2Sections = 4;

// Writes every section, with the count 4.
std::vector<std::uint8_t> WriteKd2(const Kd2Record& record);
// Nothing when the bytes end before the fields and sections they announce,
// when a count or length is negative or beyond what is left, or when the
// side or the graph count cannot be held.
std::optional<Kd2Record> ReadKd2(const std::vector<std::uint8_t>& bytes);

// The .kb2 data file is the kit's (kit/kb2_file.h): the workshop reads and
// writes it too.

// What an image file holds of a graph: N by N bytes, bottom row (row 0)
// first. A byte is 0 unless the point lies in the view window (inclusive)
// and its sample v has |v| above the threshold and v above 0; it is then
// floor(|v| + 0.5) kept modulo 256. Row and column N are not written.
std::vector<std::uint8_t> ImageBytes(const ImageGraph& graph);

// The PGM this program writes: "P5", N, blank, N, "255", then the rows top
// first.
std::vector<std::uint8_t> WritePgm(const std::vector<std::uint8_t>& imageBytes, int points);
// The program's narrow PGM reader: 3 bytes skipped, the width text (up to 5
// bytes, to a blank), height and maximum texts (up to 5 bytes each, to a
// line feed) ignored; "1MB" and "2MB" stand for 1024 and 2048. The samples
// are N by N bytes, line k from the top becoming row N-1-k; row and column
// N stay 0. Nothing for a width that is not a number the form can hold, or
// for a file that ends before its N by N bytes.
struct PgmImage {
  int points = 0;
  std::vector<float> samples;  // (N+1) by (N+1), row-major
};
std::optional<PgmImage> ReadPgm(const std::vector<std::uint8_t>& bytes);

// A picture the imaging service loaded, as the form's samples. The picture
// is passed on as the 24-bit bottom-up bitmap that the service would have
// written for it; H = AdjustValue(height) is the side, and (b+1) lines of
// 3(b+1) bytes are read from the pixel bytes without skipping line padding,
// b being N-1 when the height is H and N otherwise. A sample is the first
// byte of its pixel, the blue one. Bytes past the end read as 0.
struct LoadedImage {
  int points = 0;
  std::vector<float> samples;  // (points+1) by (points+1), row-major
};
// Nothing for a picture that is not square or whose side is out of range.
std::optional<LoadedImage> SamplesOfPicture(const platform::RgbImage& picture);

}  // namespace keldo::form2d
