#pragma once

/// Calls `attempt`, and once more if it throws, since memory that was short a moment ago may be
/// there again. Whether it has come to its end. What it has done when it throws must not count.
template <class Attempt> bool tryTwice(Attempt attempt) noexcept {
  for (int i = 0; i < 2; ++i) {
    try {
      attempt();
      return true;
    } catch (...) {
      continue;
    }
  }
  return false;
}
