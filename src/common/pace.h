#pragma once
// Long matrix loops call Pace every fourth row (or after each batch of
// columns in a column pass). A command that wants the event loop served meanwhile
// installs a hook for its own duration; with none installed Pace does
// nothing. There is one thread, so one hook at a time: a scope set inside
// another hides it until it ends.

#include <functional>

namespace keldo {

void Pace();

// Whether row i of a loop ends a stride of four rows.
inline void PaceRow(int i) {
  if ((i & 3) == 3) Pace();
}

class PaceScope {
 public:
  explicit PaceScope(std::function<void()> hook);
  ~PaceScope();
  PaceScope(const PaceScope&) = delete;
  PaceScope& operator=(const PaceScope&) = delete;

 private:
  friend void Pace();
  std::function<void()> hook_;
  PaceScope* outer_;
};

}  // namespace keldo
