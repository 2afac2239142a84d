#pragma once

#include <thread>

/// How many processors the process may use; at least 1.
inline int processorCount() noexcept {
  static const int count = static_cast<int>(std::thread::hardware_concurrency());
  return count > 0 ? count : 1;
}
