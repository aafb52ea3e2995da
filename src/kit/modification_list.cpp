#include "kit/modification_list.h"

#include <string_view>
#include <utility>

namespace keldo {
namespace {

constexpr std::string_view kBase = "B";
constexpr std::string_view kThresholdPrefix = "T:";
constexpr std::string_view kFormulaPrefix = "G:";
constexpr std::string_view kLineEnd = "\r\n";

// The kind a stored entry's first two characters name; false for neither.
bool KindOfStored(const std::string& stored, ModificationList::Kind& kind) {
  const std::string_view prefix = std::string_view(stored).substr(0, kThresholdPrefix.size());
  if (prefix == kThresholdPrefix) {
    kind = ModificationList::Kind::Threshold;
    return true;
  }
  if (prefix == kFormulaPrefix) {
    kind = ModificationList::Kind::Formula;
    return true;
  }
  return false;
}

std::string_view PrefixOf(ModificationList::Kind kind) {
  return kind == ModificationList::Kind::Threshold ? kThresholdPrefix : kFormulaPrefix;
}

}  // namespace

void ModificationList::Reset() {
  entries_.clear();
  report_.clear();
}

void ModificationList::AddThreshold(const std::string& text) { Add(Kind::Threshold, text); }

void ModificationList::AddFormula(const std::string& text) { Add(Kind::Formula, text); }

// The entry's number counts "B" as 0, so the first change is 1.
void ModificationList::Add(Kind kind, const std::string& text) {
  entries_.push_back({kind, text});
  report_ += std::to_string(entries_.size());
  if (kind == Kind::Threshold) {
    report_ += ". Threshold";
    report_ += kLineEnd;
    report_ += "Value: ";
  } else {
    report_ += ". Formula";
    report_ += kLineEnd;
  }
  report_ += text;
  report_ += kLineEnd;
}

// The report is left alone: a form file stores it beside the list.
bool ModificationList::SetStored(const std::vector<std::string>& stored) {
  std::vector<Entry> entries;
  entries.reserve(stored.size());
  for (const std::string& s : stored) {
    Kind kind;
    if (!KindOfStored(s, kind)) return false;
    entries.push_back({kind, s.substr(kThresholdPrefix.size())});
  }
  entries_ = std::move(entries);
  return true;
}

std::vector<std::string> ModificationList::Stored() const {
  std::vector<std::string> stored;
  stored.reserve(entries_.size());
  for (const Entry& e : entries_) stored.push_back(std::string(PrefixOf(e.kind)) + e.text);
  return stored;
}

std::vector<std::string> ModificationList::All() const {
  std::vector<std::string> all{std::string(kBase)};
  const std::vector<std::string> stored = Stored();
  all.insert(all.end(), stored.begin(), stored.end());
  return all;
}

}  // namespace keldo
