#pragma once

#include "platform/foundation/MainRunLoop.h"
#include "platform/foundation/Perform.h"

/// One job for a thread of its own.
///
/// `main` runs on the new thread; what it throws is dropped. Its last hand-over, if it made one
/// with `performAtExit`, then runs on the main thread, and after it `ended`, which gives back what
/// the job holds. The job counts as alive until then. All of this is part of the job object, so
/// that the end of a job that was started can always be reported.
///
/// Ownership: the starter owns the object and keeps it alive until `ended`.
class ThreadJob : public Work {
public:
  /// A call whose target outlives the job.
  using Action = void (*)(void *target);

  /// Has the main thread call `action` as the last thing of the job that the calling thread runs;
  /// returns at once, and the job must return too. On a thread without a job it performs the
  /// action and waits until that is done.
  static void performAtExit(Action action, void *target) noexcept;

  /// One of the calls for which a job waits; whether there is to be another.
  using Turn = bool (*)(void *target);

  /// Has the main thread call `turn`, each time in a turn of its loop, until it answers false, and
  /// waits for that. A job waits by pausing: this answers false, `main` must return, and is called
  /// once more afterwards, so that no thread sleeps meanwhile. Without a job all calls have been
  /// made when this answers true.
  [[nodiscard]] static bool performAndGoOn(Turn turn, void *target) noexcept;

  /// The job that the calling thread runs, or null.
  [[nodiscard]] static ThreadJob *current() noexcept;

  /// Whether the job has paused in `performAndGoOn`. From its body.
  [[nodiscard]] bool isPaused() const noexcept { return isPaused_; }

  /// Has a job go on that was detached as one that waits. Once; any thread.
  void resume() noexcept;

protected:
  ThreadJob() noexcept = default;
  ~ThreadJob() = default;

  /// The job's body. On its own thread, or on the main thread if it needs none or none could be
  /// started.
  virtual void main() = 0;

  /// What `main` is going to do.
  enum class Demand {
    /// Something that may take long.
    Thread,
    /// It hands over what has been made ready; at once, or when the main thread comes to it.
    MainThread,
    MainThreadQuietly,
  };

  /// Asked each time before `main` is called. The thread that starts or resumes the job.
  [[nodiscard]] virtual Demand demand() const noexcept { return Demand::Thread; }

  /// The job is over and may be used again. Main thread.
  virtual void ended() noexcept = 0;

private:
  friend class NSThread;
  friend class ThreadPool;

  /// Runs the body on the calling thread and reports its end, or hands over what it has paused
  /// for, which this answers.
  [[nodiscard]] bool executeOnThread() noexcept;
  /// Has the body run as work of the main loop.
  void executeOnMainThread(bool isQuiet) noexcept;
  void execute() noexcept;
  void run() final;
  void finished() noexcept final;

  Action exitAction_ = nullptr;
  Turn turn_ = nullptr;
  void *target_ = nullptr;
  bool hasThread_ = false;
  bool isPaused_ = false;
};

/// Detached threads. To the library each is new, does one job and ends; underneath, one that has
/// become idle may be used again. They block all signals and outlive nothing but their job.
class NSThread {
public:
  /// Starts `job` on a thread of its own, never waiting for a busy one. When no thread can be had
  /// the job becomes work of the main loop. Main thread.
  static void detachNewThread(ThreadJob &job) noexcept;

  /// The same for a job that waits until its `resume` is called. Main thread.
  static void detachWaitingThread(ThreadJob &job) noexcept;
};
