#pragma once

#include "platform/foundation/NSCondition.h"
#include "platform/foundation/NSLock.h"

#include <atomic>

namespace searchsystem {

/// How many documents may be read at once: as many as there are processors, and no more than five.
/// Threads that find all places taken wait for one, in the order in which they came. Any thread.
class WorkerSlots {
public:
  WorkerSlots() noexcept;

  /// Waits for a place; false when `isCancelled` was set before there was one.
  [[nodiscard]] bool acquire(const std::atomic<bool> &isCancelled) noexcept;
  void release() noexcept;

  /// Has those who wait look whether they have been cancelled.
  void wakeAll() noexcept;

private:
  struct Waiter {
    NSCondition condition;
    Waiter *next = nullptr;
    bool hasPlace = false;
  };

  void remove(Waiter &waiter) noexcept PF_REQUIRES(lock_);

  NSLock lock_;
  int free_ PF_GUARDED_BY(lock_);
  Waiter *first_ PF_GUARDED_BY(lock_) = nullptr;
};

} // namespace searchsystem
