#include "form1d/graph_files.h"

#include <bit>
#include <cstring>
#include <fstream>
#include <iterator>

#include "common/bytes.h"
#include "common/number_text.h"
#include "common/text.h"

namespace keldo::form1d {
namespace {

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

}  // namespace keldo::form1d
