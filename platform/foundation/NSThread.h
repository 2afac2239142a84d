#pragma once

#include "platform/foundation/MainRunLoop.h"
#include "platform/foundation/ThreadPool.h"

namespace searchsystem {

/// A job that gets its own thread.
///
/// `main` runs on the new thread; its exceptions are dropped. Then the action set by
/// `performAtExit`, if any, and `ended`, which releases what the job holds, run on the main thread.
/// Until then the job counts as running. Reporting the end allocates nothing, so a
/// started job always reports it.
///
/// Ownership: the starter owns the object and keeps it alive until `ended`.
class ThreadJob : public Work, private Runnable {
public:
  /// A call whose target outlives the job.
  using Action = void (*)(void *target);

  /// Makes the main thread call `action` as the last step of the calling thread's job; returns at
  /// once, and the job must return too. On a thread without a job, performs the action and waits
  /// for it.
  static void performAtExit(Action action, void *target) noexcept;

protected:
  ThreadJob() noexcept = default;
  ~ThreadJob() = default;

  /// The job's body. On its own thread, or on the main thread if none could be started.
  virtual void main() = 0;

  /// The job is over and may be used again. Main thread.
  virtual void ended() noexcept = 0;

private:
  friend class NSThread;

  void runOnThread() noexcept final;
  void execute() noexcept;
  void run() final;
  void finished() noexcept final;

  Action exitAction_ = nullptr;
  void *target_ = nullptr;
  /// A thread runs the body, or it has been run.
  bool hasThread_ = false;
};

/// Detached threads. Each appears new, does one job and ends; the pool may reuse idle ones. They
/// block all signals.
class NSThread {
public:
  /// Starts `job` on its own thread, never waiting for a busy one. If no thread is available,
  /// the job becomes work of the main loop. Main thread.
  static void detachNewThread(ThreadJob &job) noexcept;
};

} // namespace searchsystem
