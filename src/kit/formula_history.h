#pragma once
// The formulas a form steps through with Previous and Next, and the ones it
// plotted. The list itself is shared by all forms of one dimension and kept
// by the frame; each form takes a copy when it becomes active and files new
// formulas into both.

#include <string>
#include <vector>

#include "kit/settings.h"

namespace keldo {

class FormulaHistory {
 public:
  // Takes the shared list as it stands; the position is its current index.
  void Initialize(const FormulaList& shared);
  // Files a plotted formula: a new entry of the shared list when it differs,
  // spaces aside, from the one at the position; and a new entry of the
  // form's history when it differs from the last one there.
  void Update(FormulaList& shared, const std::string& formula);
  // The formula before or after the position, moving to it; after the last
  // one comes an empty text.
  std::string Previous();
  std::string Next();
  // What the form plotted, oldest first.
  const std::vector<std::string>& Plotted() const { return plotted_; }

 private:
  std::vector<std::string> formulas_{""};
  int maxFormNum_ = 0;
  int formPos_ = 1;
  std::vector<std::string> plotted_;
};

}  // namespace keldo
