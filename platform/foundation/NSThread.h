#pragma once

#include "platform/foundation/MainRunLoop.h"
#include "platform/foundation/ThreadPool.h"

/// One job for a thread of its own.
///
/// `main` runs on the new thread; what it throws is dropped. Its last hand-over, if it made one
/// with `performAtExit`, then runs on the main thread, and after it `ended`, which gives back what
/// the job holds. The job counts as alive until then. All of this is part of the job object, so
/// that the end of a job that was started can always be reported.
///
/// Ownership: the starter owns the object and keeps it alive until `ended`.
class ThreadJob : public Work, private Runnable {
public:
  /// A call whose target outlives the job.
  using Action = void (*)(void *target);

  /// Has the main thread call `action` as the last thing of the job that the calling thread runs;
  /// returns at once, and the job must return too. On a thread without a job it performs the
  /// action and waits until that is done.
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
  /// The body has been run, or is left to a thread.
  bool hasThread_ = false;
};

/// Detached threads. To the library each is new, does one job and ends; underneath, one that has
/// become idle may be used again. They block all signals and outlive nothing but their job.
class NSThread {
public:
  /// Starts `job` on a thread of its own, never waiting for a busy one. When no thread can be had
  /// the job becomes work of the main loop. Main thread.
  static void detachNewThread(ThreadJob &job) noexcept;
};
