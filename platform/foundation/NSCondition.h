#pragma once

#include "platform/foundation/NSLock.h"

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace searchsystem {

/// Lets threads sleep until another has changed something under a lock. A sleep may end early:
/// check the condition again. Threads: any.
class NSCondition {
public:
  using Clock = std::chrono::steady_clock;

  void wait(NSLock &lock) PF_REQUIRES(lock) {
    std::unique_lock held(lock.mutex_, std::adopt_lock);
    condition_.wait(held);
    held.release();
  }

  /// False if `deadline` has passed.
  bool waitUntil(NSLock &lock, Clock::time_point deadline) PF_REQUIRES(lock) {
    std::unique_lock held(lock.mutex_, std::adopt_lock);
    const bool isInTime = condition_.wait_until(held, deadline) == std::cv_status::no_timeout;
    held.release();
    return isInTime;
  }

  /// Wakes one sleeper. Hold the lock if the sleeper may destroy the condition.
  void signal() noexcept { condition_.notify_one(); }

private:
  std::condition_variable condition_;
};

} // namespace searchsystem
