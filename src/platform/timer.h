#pragma once
// Timers that tick on the event loop: each tick runs on the one thread,
// between other events, never during a command. A tick may stop its own
// timer or start others.

#include <functional>

namespace keldo::platform {

class Timers {
 public:
  virtual ~Timers() = default;
  // Calls `tick` every `intervalMs` milliseconds (at least 1) until Stop;
  // returns the timer's id, above 0.
  virtual int Start(int intervalMs, std::function<void()> tick) = 0;
  // Switches the timer off; an id that is not running is ignored.
  virtual void Stop(int id) = 0;
};

}  // namespace keldo::platform
