#pragma once

/// Calls `attempt` until it does not throw, `most` times at most, since memory that was short may
/// be there again. Whether it has succeeded. What it has done when it throws must not count.
template <class Attempt> bool tryTimes(int most, Attempt attempt) noexcept {
  for (int i = 0; i < most; ++i) {
    try {
      attempt();
      return true;
    } catch (...) {
      continue;
    }
  }
  return false;
}

template <class Attempt> bool tryTwice(Attempt attempt) noexcept { return tryTimes(2, attempt); }
