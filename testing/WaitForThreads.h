#pragma once

#include "platform/foundation/CoreFoundation.h"
#include "testing/PerformAfterDelay.h"

namespace searchsystem {

/// Runs the main loop until no thread of the library is at work: before that its virtual clock,
/// which must be the one in use, does not move on.
inline void waitForThreads() {
  performAfterDelay(1, [] { CFRunLoopStop(CFRunLoopGetMain()); });
  CFRunLoopRun();
}

} // namespace searchsystem
