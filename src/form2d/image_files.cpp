#include "form2d/image_files.h"

#include <cmath>
#include <utility>

#include "common/bytes.h"
#include "common/number_text.h"
#include "common/text.h"
#include "form2d/image_display.h"

namespace keldo::form2d {
namespace {

constexpr int kMaxGraphsInFile = 4;

bool Holdable(long long n) { return n >= kMinFilePoints && n <= kMaxFilePoints; }

}  // namespace

// ------------------------------------------------------------- form files

std::vector<std::uint8_t> WriteKd2(const Kd2Record& r) {
  ByteWriter w;
  w.I16(r.formKind);
  for (float v : {r.plotLeft, r.plotRight, r.plotLow, r.plotHigh, r.formulaLeft, r.formulaRight}) w.F32(v);
  w.I32(static_cast<std::int32_t>(r.graphs.size()));
  w.I32(r.points);
  w.Char(r.view);
  w.I16(r.selected);
  const std::size_t side = static_cast<std::size_t>(r.points) + 1;
  for (const StoredImageGraph& g : r.graphs) {
    for (float v : {g.left, g.right, g.step, g.max, g.viewXLeft, g.viewXRight, g.viewYLow, g.viewYHigh}) w.F32(v);
    w.Char(g.colorMethod);
    w.Char(g.intensity);
    w.F32(g.threshold);
    w.I16(g.drawWidths);
    w.CountedText(g.caption);
    w.CountedText(g.thresholdText);
    // Columns outermost: sample (row b, column a) for a, then b.
    for (std::size_t a = 0; a < side; ++a)
      for (std::size_t b = 0; b < side; ++b) {
        const std::size_t k = b * side + a;
        w.F32(k < g.samples.size() ? g.samples[k] : 0.0f);
      }
  }
  w.CountedText(r.fileName);
  w.I32(kKd2Sections);
  w.I32(static_cast<std::int32_t>(r.history.size()));
  for (const std::string& h : r.history) w.CountedText(h);
  w.CountedText(r.sideBoxKey);
  w.I32(r.cursorCol);
  w.I32(r.cursorRow);
  w.CountedText(r.remarks);
  for (std::size_t g = 0; g < r.graphs.size(); ++g) w.I16(g < r.linReg.size() ? r.linReg[g] : 0);
  return std::move(w.bytes);
}

std::optional<Kd2Record> ReadKd2(const std::vector<std::uint8_t>& bytes) {
  ByteReader in(bytes);
  Kd2Record r;
  r.formKind = in.I16();
  r.plotLeft = in.F32();
  r.plotRight = in.F32();
  r.plotLow = in.F32();
  r.plotHigh = in.F32();
  r.formulaLeft = in.F32();
  r.formulaRight = in.F32();
  const std::int32_t count = in.I32();
  r.points = in.I32();
  r.view = in.Char();
  r.selected = in.I16();
  if (!in.ok() || count < 0 || count > kMaxGraphsInFile || !Holdable(r.points)) return std::nullopt;
  const std::size_t side = static_cast<std::size_t>(r.points) + 1;
  for (int g = 0; g < count; ++g) {
    StoredImageGraph s;
    s.left = in.F32();
    s.right = in.F32();
    s.step = in.F32();
    s.max = in.F32();
    s.viewXLeft = in.F32();
    s.viewXRight = in.F32();
    s.viewYLow = in.F32();
    s.viewYHigh = in.F32();
    s.colorMethod = in.Char();
    s.intensity = in.Char();
    s.threshold = in.F32();
    s.drawWidths = in.I16();
    s.caption = in.CountedText();
    s.thresholdText = in.CountedText();
    if (!in.ok() || !in.Room(static_cast<std::int64_t>(side * side), 4)) return std::nullopt;
    s.samples.assign(side * side, 0.0f);
    for (std::size_t a = 0; a < side; ++a)
      for (std::size_t b = 0; b < side; ++b) s.samples[b * side + a] = in.F32();
    r.graphs.push_back(std::move(s));
  }
  r.fileName = in.CountedText();
  r.sections = in.I32();
  if (!in.ok()) return std::nullopt;
  if (r.sections > 0) {
    const std::int32_t formulas = in.I32();
    if (!in.ok() || !in.Room(formulas, 4)) return std::nullopt;
    for (std::int32_t k = 0; k < formulas && in.ok(); ++k) r.history.push_back(in.CountedText());
  }
  if (r.sections > 1) r.sideBoxKey = in.CountedText();
  if (r.sections > 2) {
    r.cursorCol = in.I32();
    r.cursorRow = in.I32();
    r.remarks = in.CountedText();
  }
  if (r.sections > 3)
    for (int g = 0; g < count; ++g) r.linReg.push_back(in.I16());
  if (!in.ok()) return std::nullopt;
  return r;
}

// -------------------------------------------------------------- data files

// ------------------------------------------------------------------ images

std::vector<std::uint8_t> ImageBytes(const ImageGraph& v) {
  const int n = v.n;
  std::vector<std::uint8_t> out(static_cast<std::size_t>(n) * static_cast<std::size_t>(n), 0);
  const float lo = -v.right;
  for (int r = 0; r < n; ++r) {
    const float y = static_cast<float>(r) * v.step + lo;
    const bool rowIn = y >= v.viewYLow && y <= v.viewYHigh;
    const float* row = v.data + static_cast<std::size_t>(r) * v.rowLength;
    for (int c = 0; c < n; ++c) {
      const float x = static_cast<float>(c) * v.step + lo;
      const float s = row[c];
      if (!rowIn || !(x >= v.viewXLeft && x <= v.viewXRight) || !(std::fabs(s) > v.threshold) || !(s > 0.0f))
        continue;
      // Kept in a byte without a check: values from 256 up wrap around.
      const double level = std::floor(static_cast<double>(std::fabs(s)) + 0.5);
      out[static_cast<std::size_t>(r) * static_cast<std::size_t>(n) + static_cast<std::size_t>(c)] =
          static_cast<std::uint8_t>(static_cast<long long>(std::fmod(level, 256.0)));
    }
  }
  return out;
}

std::vector<std::uint8_t> WritePgm(const std::vector<std::uint8_t>& imageBytes, int points) {
  const std::string side = std::to_string(points);
  const std::string header = "P5\n" + side + " " + side + "\n255\n";
  std::vector<std::uint8_t> out(header.begin(), header.end());
  const auto n = static_cast<std::size_t>(points);
  for (std::size_t line = 0; line < n; ++line) {
    const std::size_t r = n - 1 - line;
    out.insert(out.end(), imageBytes.begin() + static_cast<std::ptrdiff_t>(r * n),
               imageBytes.begin() + static_cast<std::ptrdiff_t>((r + 1) * n));
  }
  return out;
}

std::optional<PgmImage> ReadPgm(const std::vector<std::uint8_t>& bytes) {
  std::size_t pos = 3;
  // Up to five bytes to the stop byte, which is taken too when met.
  const auto field = [&](char stop) {
    std::string text;
    for (int k = 0; k < 5 && pos < bytes.size(); ++k) {
      const char c = static_cast<char>(bytes[pos++]);
      if (c == stop) break;
      text += c;
    }
    return text;
  };
  if (bytes.size() < pos) return std::nullopt;
  std::string width = field(' ');
  field('\n');  // the height: taken to equal the width
  field('\n');  // the maximum
  if (width == "1MB") width = "1024";
  else if (width == "2MB") width = "2048";
  const double value = Val(width);
  if (!(value >= kMinFilePoints && value <= kMaxFilePoints)) return std::nullopt;
  PgmImage image;
  image.points = static_cast<int>(value);
  const auto n = static_cast<std::size_t>(image.points);
  // A file cut short is refused whole, not filled up with black.
  if (pos > bytes.size() || bytes.size() - pos < n * n) return std::nullopt;
  const std::size_t side = n + 1;
  image.samples.assign(side * side, 0.0f);
  for (std::size_t line = 0; line < n; ++line)
    for (std::size_t c = 0; c < n; ++c)
      image.samples[(n - 1 - line) * side + c] = static_cast<float>(bytes[pos + line * n + c]);
  return image;
}

std::optional<LoadedImage> SamplesOfPicture(const platform::RgbImage& picture) {
  const int w = picture.width, h = picture.height;
  if (w != h || picture.pixels.size() != static_cast<std::size_t>(w) * static_cast<std::size_t>(h)) return std::nullopt;
  const int side = AdjustValue(h);
  if (!Holdable(side)) return std::nullopt;
  LoadedImage out;
  out.points = side;
  const int b = h == side ? side - 1 : side;
  const auto stride = static_cast<std::size_t>(side) + 1;
  out.samples.assign(stride * stride, 0.0f);
  // The bitmap's lines: 3w bytes padded to a multiple of four, bottom first.
  const std::size_t lineBytes = (3 * static_cast<std::size_t>(w) + 3) & ~static_cast<std::size_t>(3);
  const std::size_t total = lineBytes * static_cast<std::size_t>(h);
  const std::size_t readLine = 3 * (static_cast<std::size_t>(b) + 1);
  for (int i = 0; i <= b; ++i)
    for (int j = 0; j <= b; ++j) {
      const std::size_t at = static_cast<std::size_t>(i) * readLine + 3 * static_cast<std::size_t>(j);
      if (at >= total) continue;
      const std::size_t line = at / lineBytes, offset = at % lineBytes;
      if (offset >= 3 * static_cast<std::size_t>(w)) continue;  // padding bytes are 0
      const int x = static_cast<int>(offset / 3);
      const int y = h - 1 - static_cast<int>(line);
      const platform::Rgb pixel = picture.At(x, y);
      const int component = static_cast<int>(offset % 3);  // blue, green, red
      const int value = component == 0 ? platform::BlueOf(pixel)
                        : component == 1 ? platform::GreenOf(pixel)
                                         : platform::RedOf(pixel);
      out.samples[static_cast<std::size_t>(i) * stride + static_cast<std::size_t>(j)] = static_cast<float>(value);
    }
  return out;
}

}  // namespace keldo::form2d
