#pragma once

/// What a thread of the pool does. Several threads may run the same at once.
class Runnable {
public:
  virtual void runOnThread() noexcept = 0;

protected:
  ~Runnable() = default;
};

/// The threads beneath all jobs. One that has become idle is used again, the last first, and ends
/// when nothing has come for it in two seconds.
class ThreadPool {
public:
  /// Runs `work`, which is borrowed, on a thread that does nothing else; false when none can be
  /// had. Any thread.
  [[nodiscard]] static bool run(Runnable &work) noexcept;
};
