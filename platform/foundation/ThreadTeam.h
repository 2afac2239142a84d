#pragma once

#include "platform/foundation/MainRunLoop.h"
#include "platform/foundation/NSLock.h"
#include "platform/foundation/NSObject.h"
#include "platform/foundation/ThreadPool.h"

#include <cstddef>

/// Threads that share tasks, up to a limit: they come when they are called and leave when there is
/// nothing to do. Where no thread can be had the main thread does the work, bit by bit.
///
/// Ownership: part of its owner, which it keeps alive while any of its threads is at work and gives
/// back on the main thread. The virtual clock stands still meanwhile.
class ThreadTeam : public Work, private Runnable {
public:
  ThreadTeam(const ThreadTeam &) = delete;
  ThreadTeam &operator=(const ThreadTeam &) = delete;

  /// Has up to `count` further threads work. A call is never lost: where all are at work, one of
  /// them looks for tasks again before it leaves. Any thread.
  void call(std::size_t count) noexcept;

protected:
  ThreadTeam(const NSObject &owner, std::size_t mostThreads) noexcept
      : owner_(owner), mostThreads_(mostThreads) {}
  ~ThreadTeam() = default;

private:
  /// Does tasks until none is left. On the main thread it may return before that, and is called
  /// again if it answers true.
  [[nodiscard]] virtual bool work() noexcept = 0;

  /// The last thread is about to leave. It may be called again.
  virtual void allDone() noexcept {}

  void runOnThread() noexcept final;
  void run() final;
  void finished() noexcept final;
  void leaveToMainThread() noexcept;
  /// False when the thread has been called again meanwhile.
  [[nodiscard]] bool leave() noexcept;
  void post() noexcept PF_REQUIRES(lock_);

  const NSObject &owner_;
  const std::size_t mostThreads_;

  NSLock lock_;
  std::size_t atWork_ PF_GUARDED_BY(lock_) = 0;
  bool isCalledAgain_ PF_GUARDED_BY(lock_) = false;
  /// The owner is held, and the clock.
  bool isActive_ PF_GUARDED_BY(lock_) = false;
  bool isPosted_ PF_GUARDED_BY(lock_) = false;
  /// One of those at work is the main thread.
  bool isOnMainThread_ PF_GUARDED_BY(lock_) = false;
};
