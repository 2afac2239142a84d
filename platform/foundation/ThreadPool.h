#pragma once

#include "platform/foundation/MainRunLoop.h"
#include "platform/foundation/NSLock.h"
#include "platform/foundation/Wakeup.h"

#include <atomic>
#include <chrono>

class ThreadJob;

/// The threads that jobs run on. Each takes one job after another from a common queue.
///
/// To put threads to sleep and wake them costs more than a small job does, and so does having more
/// of them at work than there are processors. So a thread that has finished its job takes the next
/// from the queue, and while every processor has a thread at work, no further one is woken: one
/// watches instead, and joins in when it sees after half a millisecond that jobs are waiting and
/// processors idle, because the busy threads wait for a disk. As long as there are jobs in the
/// queue, some thread is on its way to it or watches. While most jobs pause for the main thread
/// after a few microseconds, and are so few that it has a processor to itself, neither side sleeps.
/// A thread that finds nothing to do for a while ends.
///
/// Ownership: borrows the jobs. Threads: any, unless said otherwise; never destroyed.
class ThreadPool {
public:
  /// Queues `job`; false when there is no thread to run it, and then it is not queued. Any
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
  [[nodiscard]] static bool needsThread() noexcept PF_REQUIRES(lock);
  [[nodiscard]] static Sleeper *takeSleeper() noexcept PF_REQUIRES(lock);
  [[nodiscard]] static ThreadJob *takeJob() noexcept;
  /// Whether the thread may take another job: there can be more threads than are needed.
  [[nodiscard]] static bool jobDone(bool hasPaused, std::chrono::nanoseconds time) noexcept;
  static void noteEndOfJob(bool hasPaused, std::chrono::nanoseconds time) noexcept
      PF_REQUIRES(lock);
  static void abandonJobs() noexcept;
  [[nodiscard]] static bool restUntilCalled(Sleeper &self) noexcept;
  static void watch(Sleeper &self) noexcept;
  [[nodiscard]] static bool sleepUntilCalled(Sleeper &self) noexcept;

  static NSLock lock;
  static WorkQueue jobs PF_GUARDED_BY(lock);
  /// For a look without the lock.
  static std::atomic<bool> hasJobs;
  static int busyThreads PF_GUARDED_BY(lock);
  /// As many threads as take jobs from the queue: one for each processor, and more while
  /// processors are idle.
  static int mostBusyThreads PF_GUARDED_BY(lock);
  /// Threads that are awake and about to look into the queue.
  static int comingThreads PF_GUARDED_BY(lock);
  /// How many jobs have been taken since the watching thread last looked.
  static int takenJobs PF_GUARDED_BY(lock);
  /// Of the last few jobs, how many have come to an end or paused, how many have paused, and how
  /// long all of them ran.
  static int countedJobs PF_GUARDED_BY(lock);
  static int pausedJobs PF_GUARDED_BY(lock);
  static std::chrono::nanoseconds timeOfJobs PF_GUARDED_BY(lock);
  static Sleeper *watcher PF_GUARDED_BY(lock);
  /// The one that fell asleep last in front.
  static Sleeper *firstSleeper PF_GUARDED_BY(lock);
};
