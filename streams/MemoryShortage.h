#pragma once

#include <atomic>

/// Counts how often memory was too short for a reader, which fails then as it does on a damaged
/// file. Whoever has to know whether a second try may do better compares the count before and
/// after; what other threads have met counts as well.
///
/// Threads: any.
class MemoryShortage {
public:
  static void note() noexcept { count_.fetch_add(1, std::memory_order_relaxed); }
  [[nodiscard]] static unsigned count() noexcept { return count_.load(std::memory_order_relaxed); }

private:
  static inline std::atomic<unsigned> count_{0};
};
