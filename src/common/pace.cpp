#include "common/pace.h"

#include <utility>

namespace keldo {
namespace {

PaceScope* current = nullptr;
bool pausing = false;

}  // namespace

PaceScope::PaceScope(std::function<void()> hook) : hook_(std::move(hook)), outer_(current) { current = this; }

PaceScope::~PaceScope() { current = outer_; }

void Pace() {
  // A hook that itself runs a paced loop (through the event loop) must not
  // call itself again.
  if (current == nullptr || pausing || !current->hook_) return;
  pausing = true;
  current->hook_();
  pausing = false;
}

}  // namespace keldo
