#pragma once

#include "platform/foundation/MainRunLoop.h"
#include "platform/foundation/NSLock.h"
#include "platform/foundation/Wakeup.h"

#include <atomic>

class ThreadJob;

/// The threads that jobs run on. Each takes one job after another from a common queue.
///
/// A job never waits for a busy thread: as long as there are jobs in the queue, some thread is on
/// its way to it. There need be only one, because a thread that takes a job and leaves others
/// sends for the next before it begins. So a thread that has just finished its job usually takes
/// the next one before a sleeper has been woken for it. A thread that finds nothing to do for a
/// while ends.
///
/// Ownership: borrows the jobs. Threads: any, unless said otherwise; never destroyed.
class ThreadPool {
public:
  /// Queues `job`; false when there is no thread to run it, and then it is not queued. Main
  /// thread.
  static bool add(ThreadJob &job) noexcept;

private:
  struct Sleeper {
    Wakeup wakeup;
    Sleeper *next = nullptr;
    bool isCalled = false;
  };

  static void threadBody() noexcept;
  [[nodiscard]] static bool startThread() noexcept;
  [[nodiscard]] static bool callThread(Sleeper *sleeper) noexcept;
  [[nodiscard]] static Sleeper *takeSleeper() noexcept PF_REQUIRES(lock);
  [[nodiscard]] static ThreadJob *takeJob() noexcept;
  [[nodiscard]] static bool sleepUntilCalled(Sleeper &self) noexcept;

  static NSLock lock;
  static WorkQueue jobs PF_GUARDED_BY(lock);
  /// For a look without the lock.
  static std::atomic<bool> hasJobs;
  /// Threads that are awake and about to look into the queue.
  static int comingThreads PF_GUARDED_BY(lock);
  /// The one that fell asleep last in front.
  static Sleeper *firstSleeper PF_GUARDED_BY(lock);
};
