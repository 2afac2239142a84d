#pragma once

#include "platform/foundation/MainLoop.h"

namespace searchsystem {

/// Has the main run loop follow the virtual clock while it lives.
class VirtualClock {
public:
  VirtualClock() { PFMainLoopSetClock(PFMainLoopClockVirtual); }
  ~VirtualClock() { PFMainLoopSetClock(PFMainLoopClockReal); }
  VirtualClock(const VirtualClock &) = delete;
  VirtualClock &operator=(const VirtualClock &) = delete;

  /// The time of the virtual clock in seconds, of use for differences only.
  [[nodiscard]] static double now() { return PFMainLoopGetTime(); }
};

} // namespace searchsystem
