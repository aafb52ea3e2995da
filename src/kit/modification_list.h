#pragma once
// The modification list of a time-frequency form: how its spectrum was
// changed since it was computed, so that a saved form needs only its signal
// and this list. Entry 0 is "B" (the base, as computed); each later entry is
// a two-character kind and its text: "T:" a threshold, "G:" a formula. The
// report text (txtModReport) grows by two lines an entry:
//
//   "<k>. Threshold" / "Value: <text>"      or
//   "<k>. Formula"   / "<text>"
//
// with k the entry's number, the lines ended by "\r\n".

#include <string>
#include <vector>

namespace keldo {

class ModificationList {
 public:
  enum class Kind { Threshold, Formula };
  struct Entry {
    Kind kind;
    std::string text;
  };

  // Back to the one entry "B"; the report is cleared.
  void Reset();
  void AddThreshold(const std::string& text);
  void AddFormula(const std::string& text);
  // Entries 1.. as a form file stores them ("T:0.5", "G:(g1)(g1>2)");
  // false, and the list left as it was, when one is neither kind. The
  // report is not touched: the file keeps it beside the list.
  bool SetStored(const std::vector<std::string>& stored);
  std::vector<std::string> Stored() const;
  // Entries 1.., for replaying in order.
  const std::vector<Entry>& Entries() const { return entries_; }
  // "B" and the stored entries, as a dump lists them.
  std::vector<std::string> All() const;
  const std::string& Report() const { return report_; }
  void SetReport(const std::string& report) { report_ = report; }

 private:
  void Add(Kind kind, const std::string& text);
  std::vector<Entry> entries_;
  std::string report_;
};

}  // namespace keldo
