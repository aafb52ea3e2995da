#include "form1d/graph_files.h"

#include <bit>
#include <cstring>
#include <fstream>
#include <iterator>

#include "common/number_text.h"
#include "common/text.h"

namespace keldo::form1d {
namespace {

class ByteWriter {
 public:
  void I16(std::int16_t v) { Raw(static_cast<std::uint16_t>(v), 2); }
  void I32(std::int32_t v) { Raw(static_cast<std::uint32_t>(v), 4); }
  void F64(double v) { Raw(std::bit_cast<std::uint64_t>(v), 8); }
  void Chars(const std::string& s) { bytes.insert(bytes.end(), s.begin(), s.end()); }
  void Char(char c) { bytes.push_back(static_cast<std::uint8_t>(c)); }
  // A length and, when it is above 0, the text.
  void CountedText(const std::string& s) {
    I32(static_cast<std::int32_t>(s.size()));
    Chars(s);
  }
  std::vector<std::uint8_t> bytes;

 private:
  void Raw(std::uint64_t v, int size) {
    for (int k = 0; k < size; ++k) bytes.push_back(static_cast<std::uint8_t>(v >> (8 * k)));
  }
};

// Reads little-endian values; every read past the end fails and the reader
// stays failed, so that a caller may check once after a group.
class ByteReader {
 public:
  explicit ByteReader(const std::vector<std::uint8_t>& bytes) : bytes_(bytes) {}
  bool ok() const { return ok_; }
  std::size_t Left() const { return bytes_.size() - pos_; }
  std::int16_t I16() { return static_cast<std::int16_t>(Raw(2)); }
  std::int32_t I32() { return static_cast<std::int32_t>(Raw(4)); }
  double F64() { return std::bit_cast<double>(Raw(8)); }
  char Char() { return static_cast<char>(Raw(1)); }
  std::string Chars(std::int64_t n) {
    if (n < 0 || static_cast<std::uint64_t>(n) > Left()) {
      ok_ = false;
      return {};
    }
    std::string s(bytes_.begin() + static_cast<std::ptrdiff_t>(pos_),
                  bytes_.begin() + static_cast<std::ptrdiff_t>(pos_ + static_cast<std::size_t>(n)));
    pos_ += static_cast<std::size_t>(n);
    return s;
  }
  std::string CountedText() {
    const std::int32_t n = I32();
    if (!ok_) return {};
    return n > 0 ? Chars(n) : std::string();
  }
  // Fails unless `count` records of `size` bytes each are still there.
  bool Room(std::int64_t count, std::int64_t size) {
    if (count < 0 || (count > 0 && static_cast<std::uint64_t>(count) > Left() / static_cast<std::uint64_t>(size)))
      ok_ = false;
    return ok_;
  }
  void Values(std::vector<double>& out, std::size_t count) {
    out.resize(count);
    for (double& v : out) v = F64();
  }

 private:
  std::uint64_t Raw(int size) {
    if (!ok_ || Left() < static_cast<std::size_t>(size)) {
      ok_ = false;
      pos_ = bytes_.size();
      return 0;
    }
    std::uint64_t v = 0;
    for (int k = 0; k < size; ++k) v |= static_cast<std::uint64_t>(bytes_[pos_ + static_cast<std::size_t>(k)]) << (8 * k);
    pos_ += static_cast<std::size_t>(size);
    return v;
  }
  const std::vector<std::uint8_t>& bytes_;
  std::size_t pos_ = 0;
  bool ok_ = true;
};

void WriteValues(ByteWriter& w, const std::vector<double>& values, int points) {
  for (int i = 0; i <= points; ++i)
    w.F64(static_cast<std::size_t>(i) < values.size() ? values[static_cast<std::size_t>(i)] : 0.0);
}

}  // namespace

bool IsPointCount(long long n) { return n >= 64 && n <= 65536 && (n & (n - 1)) == 0; }

std::vector<std::uint8_t> WriteFormFile(const FormFileRecord& r) {
  ByteWriter w;
  w.I16(r.formKind);
  for (double v : {r.winLeft, r.winRight, r.winBottom, r.winTop, r.intervalLeft, r.intervalRight}) w.F64(v);
  w.I32(static_cast<std::int32_t>(r.graphs.size()));
  w.I32(r.points);
  for (const StoredGraph& g : r.graphs) {
    w.F64(g.a);
    w.F64(g.b);
    w.F64(g.h);
    WriteValues(w, g.values, r.points);
  }
  w.CountedText(r.fileName);
  w.I32(kFormFileVersion);
  w.I32(static_cast<std::int32_t>(r.history.size()));
  for (const std::string& h : r.history) w.CountedText(h);
  w.CountedText(r.sideBoxKey);
  w.Char(r.dots);
  w.Char(r.background);
  w.I32(r.tracePosition);
  w.CountedText(r.caption);
  w.CountedText(r.remarks);
  w.Char(r.grid);
  w.CountedText(r.printerText);
  for (std::int16_t v : r.printLabels) w.I16(v);
  w.Char(r.colour);
  return std::move(w.bytes);
}

std::optional<FormFileRecord> ReadFormFile(const std::vector<std::uint8_t>& bytes) {
  ByteReader in(bytes);
  FormFileRecord r;
  r.formKind = in.I16();
  r.winLeft = in.F64();
  r.winRight = in.F64();
  r.winBottom = in.F64();
  r.winTop = in.F64();
  r.intervalLeft = in.F64();
  r.intervalRight = in.F64();
  const std::int32_t count = in.I32();
  r.points = in.I32();
  if (!in.ok() || !IsPointCount(r.points)) return std::nullopt;
  const std::int64_t recordBytes = 8 * (3 + static_cast<std::int64_t>(r.points) + 1);
  if (!in.Room(count, recordBytes)) return std::nullopt;
  r.graphs.resize(static_cast<std::size_t>(count));
  for (StoredGraph& g : r.graphs) {
    g.a = in.F64();
    g.b = in.F64();
    g.h = in.F64();
    in.Values(g.values, static_cast<std::size_t>(r.points) + 1);
  }
  r.fileName = in.CountedText();
  r.version = in.I32();
  if (!in.ok()) return std::nullopt;
  if (r.version > 0) {
    const std::int32_t entries = in.I32();
    if (!in.Room(entries, 4)) return std::nullopt;
    for (std::int32_t k = 0; k < entries && in.ok(); ++k) r.history.push_back(in.CountedText());
  }
  if (r.version > 1) r.sideBoxKey = in.CountedText();
  if (r.version > 2) {
    r.dots = in.Char();
    r.background = in.Char();
    r.tracePosition = in.I32();
    r.caption = in.CountedText();
    r.remarks = in.CountedText();
  }
  if (r.version > 3) r.grid = in.Char();
  if (r.version > 4) {
    r.printerText = in.CountedText();
    for (std::int16_t& v : r.printLabels) v = in.I16();
    r.colour = in.Char();
  }
  if (!in.ok()) return std::nullopt;
  return r;
}

DataFileType DataFileTypeOf(const std::string& name) {
  const std::string tail = ToUpper(name.size() >= 3 ? name.substr(name.size() - 3) : name);
  if (tail == "KB1") return DataFileType::Kb1;
  if (tail == "KDT") return DataFileType::Kdt;
  return DataFileType::Other;
}

std::vector<std::uint8_t> WriteKb1(const StoredGraph& graph, int points) {
  ByteWriter w;
  w.I32(points);
  w.F64(graph.a);
  w.F64(graph.b);
  w.F64(graph.h);
  WriteValues(w, graph.values, points);
  return std::move(w.bytes);
}

std::optional<DataFileRecord> ReadDataFile(const std::vector<std::uint8_t>& bytes, DataFileType type) {
  if (type == DataFileType::Other) return std::nullopt;
  ByteReader in(bytes);
  DataFileRecord r;
  if (type == DataFileType::Kdt) {
    in.I16();
    r.points = in.I16();
  } else {
    r.points = in.I32();
  }
  if (!in.ok() || !IsPointCount(r.points)) return std::nullopt;
  r.graph.a = in.F64();
  r.graph.b = in.F64();
  r.graph.h = type == DataFileType::Kb1 ? in.F64() : (r.graph.b - r.graph.a) / r.points;
  if (!in.Room(static_cast<std::int64_t>(r.points) + 1, 8)) return std::nullopt;
  in.Values(r.graph.values, static_cast<std::size_t>(r.points) + 1);
  if (!in.ok()) return std::nullopt;
  return r;
}

std::string GraphClipboardText(int points, double a, double b, const double* values) {
  // The fields first, then one text of the measured length filled in place.
  std::vector<std::string> fields;
  fields.reserve(static_cast<std::size_t>(points) + 4);
  fields.push_back(PlainNumber(points));
  fields.push_back(PlainNumber(a));
  fields.push_back(PlainNumber(b));
  for (int i = 0; i <= points; ++i) fields.push_back(PlainNumber(values[i]));
  std::size_t length = 0;
  for (const std::string& f : fields) length += f.size() + 2;
  std::string text(length, '\0');
  char* out = text.data();
  for (const std::string& f : fields) {
    std::memcpy(out, f.data(), f.size());
    out += f.size();
    *out++ = '\r';
    *out++ = '\n';
  }
  return text;
}

std::string GraphClipboardTextSlow(int points, double a, double b, const double* values) {
  std::string text = PlainNumber(points) + "\r\n";
  text += PlainNumber(a) + "\r\n";
  text += PlainNumber(b) + "\r\n";
  for (int i = 0; i <= points; ++i) text += PlainNumber(values[i]) + "\r\n";
  return text;
}

bool CheckWindowsClipboard(const std::string& text) {
  if (text.size() < 5) return false;
  const std::size_t end = text.find_first_of("\r\n");
  const std::string first = Trim(text.substr(0, end));
  static const char* kCounts[] = {"64",   "128",  "256",   "512",   "1024", "2048",
                                  "4096", "8192", "16384", "32768", "65536"};
  for (const char* c : kCounts)
    if (first == c) return true;
  return false;
}

std::vector<std::string> ClipboardFields(const std::string& text) {
  std::vector<std::string> fields;
  std::size_t start = 0;
  while (true) {
    if (start < text.size() && text[start] == '\n' && !fields.empty()) ++start;
    const std::size_t cr = text.find('\r', start);
    if (cr == std::string::npos) {
      fields.push_back(text.substr(start));
      return fields;
    }
    fields.push_back(text.substr(start, cr - start));
    start = cr + 1;
  }
}

bool ReadFileBytes(const std::string& path, std::vector<std::uint8_t>& bytes) {
  std::ifstream file(path, std::ios::binary);
  if (!file) return false;
  bytes.assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
  return !file.bad();
}

bool WriteFileBytes(const std::string& path, const std::vector<std::uint8_t>& bytes) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  if (!file) return false;
  file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  return static_cast<bool>(file);
}

}  // namespace keldo::form1d
