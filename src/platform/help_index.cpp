#include "platform/help_index.h"

#include "common/text.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <sstream>

namespace keldo::platform {
namespace {

std::string Fold(const std::string& s) { return ToUpper(Trim(s)); }

}  // namespace

std::string HelpFileKey(const std::string& helpFile) {
  const auto cut = helpFile.find_last_of("\\/");
  return Fold(cut == std::string::npos ? helpFile : helpFile.substr(cut + 1));
}

HelpIndex HelpIndex::Load(const std::string& docsFolder) {
  std::ifstream in(docsFolder + "/help/topics.tsv", std::ios::binary);
  std::stringstream text;
  if (in) text << in.rdbuf();
  return FromText(text.str(), docsFolder);
}

HelpIndex HelpIndex::FromText(const std::string& text, const std::string& docsFolder) {
  HelpIndex index;
  index.docs_ = docsFolder;
  std::istringstream lines(text);
  std::string line;
  while (std::getline(lines, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line.empty() || line[0] == '#') continue;
    const auto t1 = line.find('\t');
    const auto t2 = t1 == std::string::npos ? t1 : line.find('\t', t1 + 1);
    if (t2 == std::string::npos) continue;
    index.topics_.push_back({HelpFileKey(line.substr(0, t1)), Fold(line.substr(t1 + 1, t2 - t1 - 1)),
                             line.substr(t2 + 1)});
  }
  return index;
}

std::optional<std::string> HelpIndex::Find(const std::string& helpFile, const std::string& keyword) const {
  const std::string file = HelpFileKey(helpFile);
  const std::string key = Fold(keyword);
  if (key.empty()) return std::nullopt;
  // A topic of the named file wins over a topic for any file.
  for (const bool exactFile : {true, false}) {
    for (const HelpTopic& t : topics_) {
      const bool fileMatches = exactFile ? t.file == file : t.file == "*";
      if (fileMatches && t.keyword == key) return docs_ + "/" + t.page;
    }
  }
  return std::nullopt;
}

std::optional<std::string> HelpIndex::Contents(const std::string& helpFile) const {
  return Find(helpFile, "contents");
}

}  // namespace keldo::platform
