#include "platform/foundation/YieldUntil.h"

#include <atomic>
#include <chrono>
#include <sched.h>

namespace {

using Clock = std::chrono::steady_clock;

/// A yield that takes longer has given the processor to another program.
constexpr std::chrono::microseconds longestMoment{400};
constexpr std::chrono::milliseconds abstinence{200};

/// Until when nothing is to be yielded, on the monotonic clock.
std::atomic<Clock::rep> busyUntil{0};

} // namespace

bool yieldProcessor() noexcept {
  const Clock::time_point before = Clock::now();
  if (before.time_since_epoch().count() < busyUntil.load(std::memory_order_relaxed))
    return false;
  sched_yield();
  const Clock::time_point after = Clock::now();
  if (after - before > longestMoment)
    busyUntil.store((after + abstinence).time_since_epoch().count(), std::memory_order_relaxed);
  return true;
}
