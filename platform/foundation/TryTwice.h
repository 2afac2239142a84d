#pragma once

namespace searchsystem {

/// Calls `attempt` until it does not throw, at most `most` times: memory that was short may be
/// available again. Returns whether it succeeded. An attempt that throws must leave no effect.
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

} // namespace searchsystem
