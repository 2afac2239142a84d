#include "platform/foundation/YieldUntil.h"

#include "platform/foundation/ProcessorTime.h"

#include <atomic>
#include <chrono>
#include <sched.h>

namespace {

using Clock = std::chrono::steady_clock;

/// What a yield to a thread of ours usually takes, at most.
constexpr std::chrono::microseconds longestMoment{400};
constexpr std::chrono::milliseconds abstinence{200};

/// Until when nothing is to be yielded, on the monotonic clock.
std::atomic<Clock::rep> busyUntil{0};

/// When the time that the processors have spent on us was last asked for, and what it was then.
std::atomic<Clock::rep> askedAt{0};
std::atomic<Clock::rep> usedThen{0};

void askProcessorTime(Clock::time_point now) noexcept {
  askedAt.store(now.time_since_epoch().count(), std::memory_order_relaxed);
  usedThen.store(processorTime().count(), std::memory_order_relaxed);
}

/// Whether we have had less than most of one processor of late.
bool haveOthersRun(Clock::time_point now) noexcept {
  const Clock::rep elapsed =
      now.time_since_epoch().count() - askedAt.load(std::memory_order_relaxed);
  const Clock::rep used = processorTime().count() - usedThen.load(std::memory_order_relaxed);
  return used < elapsed * 3 / 4;
}

} // namespace

bool yieldProcessor() noexcept {
  const Clock::time_point before = Clock::now();
  const Clock::rep moment = before.time_since_epoch().count();
  if (moment < busyUntil.load(std::memory_order_relaxed))
    return false;
  if (moment - askedAt.load(std::memory_order_relaxed) > Clock::duration(longestMoment).count())
    askProcessorTime(before);
  sched_yield();
  const Clock::time_point after = Clock::now();
  if (after - before > longestMoment && haveOthersRun(after))
    busyUntil.store((after + abstinence).time_since_epoch().count(), std::memory_order_relaxed);
  return true;
}
