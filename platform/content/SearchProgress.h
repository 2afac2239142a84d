#pragma once

#include <atomic>
#include <cstdint>

namespace searchsystem {

/// How far deep searches with a condition on content have come since the process began, for hosts
/// that show it. Threads: any.
struct SearchProgress {
  std::atomic<std::uint64_t> folders{0};
  std::atomic<std::uint64_t> files{0};
  std::atomic<std::uint64_t> unread{0};

  [[nodiscard]] static SearchProgress &shared() noexcept;

  static void count(std::atomic<std::uint64_t> &counter) noexcept {
    counter.fetch_add(1, std::memory_order_relaxed);
  }
};

} // namespace searchsystem
