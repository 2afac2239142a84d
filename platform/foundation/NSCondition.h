#pragma once

#include "platform/foundation/NSLock.h"

#include <chrono>
#include <condition_variable>
#include <mutex>

/// What threads sleep on until another has changed something under a lock. A sleep may end early:
/// the sleeper looks again at what it waits for.
/// Threads: any.
class NSCondition {
public:
  using Clock = std::chrono::steady_clock;

  void wait(NSLock &lock) PF_REQUIRES(lock) {
    std::unique_lock held(lock.mutex_, std::adopt_lock);
    condition_.wait(held);
    held.release();
  }

  /// False when `deadline` has passed.
  bool waitUntil(NSLock &lock, Clock::time_point deadline) PF_REQUIRES(lock) {
    std::unique_lock held(lock.mutex_, std::adopt_lock);
    const bool isInTime = condition_.wait_until(held, deadline) == std::cv_status::no_timeout;
    held.release();
    return isInTime;
  }

  /// Wakes one sleeper. Where that may destroy the condition, while the lock is held.
  void signal() noexcept { condition_.notify_one(); }

private:
  std::condition_variable condition_;
};
