#pragma once

namespace searchsystem {

/// Counts how often memory was too short for a reader on the calling thread. The reader fails then
/// as it does on a damaged file; who has to know whether another try may do better compares the
/// count before and after.
///
/// Threads: any; each has a count of its own.
class MemoryShortage {
public:
  static void note() noexcept { ++count_; }
  [[nodiscard]] static unsigned count() noexcept { return count_; }

private:
  static inline constinit thread_local unsigned count_ = 0;
};

} // namespace searchsystem
