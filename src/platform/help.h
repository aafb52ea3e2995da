#pragma once
// The help viewer. A help file is named as the forms name it ("KELDOX.HLP");
// the viewer finds the page for a keyword in that file's topics.

#include <string>

namespace keldo::platform {

class Help {
 public:
  virtual ~Help() = default;
  // Opens the page for `keyword`; false when the help cannot be shown.
  virtual bool ShowTopic(const std::string& helpFile, const std::string& keyword) = 0;
  virtual bool ShowContents(const std::string& helpFile) = 0;
};

}  // namespace keldo::platform
