#pragma once

namespace searchsystem {

/// Work for a thread of the pool. Several threads may run the same object at once.
class Runnable {
public:
  virtual void runOnThread() noexcept = 0;

protected:
  ~Runnable() = default;
};

/// The threads beneath all jobs. Idle ones are reused, the most recent first, and end after two
/// seconds without work.
class ThreadPool {
public:
  /// Runs `work`, which is borrowed, on its own thread; false if none is available. Any
  /// thread.
  [[nodiscard]] static bool run(Runnable &work) noexcept;
};

} // namespace searchsystem
