#pragma once
// The files of the one-dimensional form as bytes: the form file (.kd1), the
// binary data file (.kb1), the older data file (.kdt) and the clipboard text
// of a graph. Plain little-endian values, no header magic. The readers take
// any bytes: a short or malformed file gives nothing, never a crash.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace keldo::form1d {

// The point counts a form can hold: 64, 128, ... 65536.
bool IsPointCount(long long n);

struct StoredGraph {
  double a = 0.0, b = 0.0, h = 0.0;
  std::vector<double> values;  // N+1 values
};

// A form file's fields in their order. Groups after the version are read
// only when the version has them.
struct FormFileRecord {
  std::int16_t formKind = 1;
  double winLeft = 0, winRight = 0, winBottom = 0, winTop = 0;
  double intervalLeft = 0, intervalRight = 0;
  std::int32_t points = 0;
  std::vector<StoredGraph> graphs;
  std::string fileName;
  std::int32_t version = 5;
  std::vector<std::string> history;        // version above 0
  std::string sideBoxKey;                  // above 1
  char dots = 'Y';                         // above 2
  char background = 'B';
  std::int32_t tracePosition = 0;
  std::string caption;
  std::string remarks;
  char grid = 'G';                         // above 3
  std::string printerText;                 // above 4
  std::int16_t printLabels[3] = {0, 0, 0};
  char colour = 'Y';
};

constexpr std::int32_t kFormFileVersion = 5;

// Writes every group, whatever the record's version says, with version 5.
std::vector<std::uint8_t> WriteFormFile(const FormFileRecord& record);
// Nothing when the bytes end before the groups their version has, when a
// count or length is negative or larger than what is left, or when the point
// count is not one of the form's.
std::optional<FormFileRecord> ReadFormFile(const std::vector<std::uint8_t>& bytes);

// A data file: N, then a, b, h (.kb1) or a, b with h = (b - a)/N (.kdt).
struct DataFileRecord {
  std::int32_t points = 0;
  StoredGraph graph;
};

enum class DataFileType { Other = 0, Kb1 = 1, Kdt = 2 };

// The type from the last three characters of a name, upper-cased.
DataFileType DataFileTypeOf(const std::string& name);
std::vector<std::uint8_t> WriteKb1(const StoredGraph& graph, int points);
std::optional<DataFileRecord> ReadDataFile(const std::vector<std::uint8_t>& bytes, DataFileType type);

// The clipboard text of a graph: N, a, b, then values 0 to N, each in the
// plain text form of a double followed by a carriage return and line feed.
std::string GraphClipboardText(int points, double a, double b, const double* values);
// The same text built by appending, field by field.
std::string GraphClipboardTextSlow(int points, double a, double b, const double* values);

// True when the text has at least 5 characters and its first line is a
// point count.
bool CheckWindowsClipboard(const std::string& text);

// The fields of a pasted text, in order, each up to its carriage return.
// The line feed after a carriage return is skipped. A final field without a
// carriage return is kept as it stands.
std::vector<std::string> ClipboardFields(const std::string& text);

}  // namespace keldo::form1d
