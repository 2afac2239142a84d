#pragma once

#include <sched.h>

/// Lets other threads run, a bounded number of times, until `isReady` answers true; whether it did.
/// To be called before going to sleep: to fall asleep and be woken costs more than most hand-overs
/// between threads take.
template <class IsReady> bool yieldUntil(int mostTimes, IsReady isReady) noexcept {
  for (int i = 0; i < mostTimes; ++i) {
    if (isReady())
      return true;
    sched_yield();
  }
  return isReady();
}
