#pragma once

#include "platform/foundation/NSCondition.h"
#include "platform/foundation/NSLock.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <optional>
#include <sys/types.h>

namespace searchsystem {

class LoopDescriptor;
template <class T> class NeverDestroyed;

/// One piece of work for the main thread. The loop neither allocates nor copies it, so that posting
/// reserved work cannot fail.
class Work {
public:
  Work(const Work &) = delete;
  Work &operator=(const Work &) = delete;

  /// Does the work. Main thread. Exceptions are dropped.
  virtual void run() = 0;

  /// Called once after `run`, on the main thread; the loop does not use the object afterwards.
  virtual void finished() noexcept = 0;

protected:
  Work() noexcept = default;
  ~Work() = default;

private:
  friend class WorkQueue;
  friend class MainRunLoop;
  Work *next_ = nullptr;
  std::uint64_t number_ = 0;
};

/// A first-in-first-out list of work, linked through its elements.
class WorkQueue {
public:
  [[nodiscard]] bool isEmpty() const noexcept { return first_ == nullptr; }
  [[nodiscard]] std::uint64_t lastNumber() const noexcept { return last_ ? last_->number_ : 0; }
  void append(Work &work, std::uint64_t number) noexcept;
  /// Removes and returns the first element if its number is at most `number`; else null.
  [[nodiscard]] Work *takeUpTo(std::uint64_t number) noexcept;

private:
  Work *first_ = nullptr;
  Work *last_ = nullptr;
};

/// Work that becomes due at a given time. It can be scheduled again once it has begun to run.
class TimedWork : public Work {
public:
  [[nodiscard]] bool isScheduled() const noexcept { return isScheduled_; }

protected:
  TimedWork() noexcept = default;
  ~TimedWork() = default;

  virtual void fire() = 0;

private:
  friend class MainRunLoop;
  void run() final {
    isScheduled_ = false;
    fire();
  }

  std::chrono::nanoseconds deadline_{};
  TimedWork *nextTimer_ = nullptr;
  bool isScheduled_ = false;
};

/// The main thread's queue of work and its timers. Hosts in C use it through `MainLoop.h`, the
/// library through `Perform.h`.
///
/// Ownership: one per process, never destroyed; does not own posted work.
/// Threads: `post`, `stop`, `isMainThread` and `beginActivity` any; all else main.
class MainRunLoop {
public:
  using Clock = std::chrono::steady_clock;
  /// By their numbers in CoreFoundation.h.
  enum RunResult { Stopped = 2, TimedOut = 3, HandledWork = 4 };

  static MainRunLoop &shared() noexcept;

  [[nodiscard]] bool isMainThread() const noexcept;
  void bindToCurrentThread() noexcept;

  /// Appends `work`, which must live until it has finished. Any thread.
  void post(Work &work) noexcept;

  /// Makes `work` due after `delay`; work that is already scheduled keeps its time.
  void schedule(TimedWork &work, std::chrono::nanoseconds delay) noexcept;

  /// Between these two calls the virtual clock does not advance, because results are pending.
  /// beginActivity: any thread; endActivity: main thread.
  void beginActivity() noexcept;
  void endActivity() noexcept;

  /// Runs what is due now, for 8 ms at most. Returns whether anything was.
  bool dispatch() noexcept { return dispatch(nullptr); }

  /// Runs the loop until it is stopped, the real clock passes `limit`, or, if `untilWorkIsDone`,
  /// some work has run.
  RunResult run(std::optional<Clock::time_point> limit, bool untilWorkIsDone) noexcept;

  /// Ends the innermost `run`, if any.
  void stop() noexcept;

  [[nodiscard]] int descriptor() noexcept;
  void useVirtualClock(bool isVirtual) noexcept;
  [[nodiscard]] std::chrono::nanoseconds now() const noexcept;

private:
  struct Run {
    std::atomic<bool> isStopped{false};
    Run *outer = nullptr;
  };

  friend class NeverDestroyed<MainRunLoop>;
  MainRunLoop() noexcept = default;

  void signalDescriptor() noexcept;
  /// When the next timer is due; none on the virtual clock.
  [[nodiscard]] std::optional<std::chrono::nanoseconds> nextDeadline() const noexcept;
  bool dispatch(const Run *run) noexcept;
  void takeDueWork() noexcept;
  [[nodiscard]] bool clockMayJump() const noexcept;
  void waitForWork(const Run &run, std::optional<Clock::time_point> limit) noexcept;
  void updateDescriptor() noexcept;

  std::atomic<pid_t> mainThread_{0};

  std::atomic<bool> isSignaled_{false};
  /// Created when a host first requests it, and kept.
  std::atomic<LoopDescriptor *> descriptor_{nullptr};
  std::atomic<int> activities_{0};

  NSLock lock_;
  NSCondition hasNews_;
  /// Work that the main thread has not taken yet.
  WorkQueue incoming_ PF_GUARDED_BY(lock_);
  Run *innermost_ PF_GUARDED_BY(lock_) = nullptr;

  // Main thread only.
  WorkQueue ready_;
  std::uint64_t lastNumber_ = 0;
  TimedWork *firstTimer_ = nullptr;
  bool isVirtual_ = false;
  std::chrono::nanoseconds virtualNow_{};
};

} // namespace searchsystem
