#pragma once
// Finds the help page for a keyword. The index is the text file
// docs/help/topics.tsv: one topic a line, "FILE<TAB>KEYWORD<TAB>PAGE", where
// FILE is a help file name as the forms use it ("KELDOX.HLP") or "*" for any,
// and PAGE a path under docs/. Keywords match without regard to case and
// surrounding blanks; the keyword "contents" names a file's contents page.

#include <optional>
#include <string>
#include <vector>

namespace keldo::platform {

struct HelpTopic {
  std::string file;
  std::string keyword;
  std::string page;
};

class HelpIndex {
 public:
  // Reads docsFolder/help/topics.tsv; a missing or unreadable index is empty.
  static HelpIndex Load(const std::string& docsFolder);
  static HelpIndex FromText(const std::string& text, const std::string& docsFolder);

  // Full path of the page, or nothing when no topic matches.
  std::optional<std::string> Find(const std::string& helpFile, const std::string& keyword) const;
  std::optional<std::string> Contents(const std::string& helpFile) const;
  const std::vector<HelpTopic>& Topics() const { return topics_; }

 private:
  std::string docs_;
  std::vector<HelpTopic> topics_;
};

// The last backslash- or slash-separated part of a help file name, upper-cased.
std::string HelpFileKey(const std::string& helpFile);

}  // namespace keldo::platform
