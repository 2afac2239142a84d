#pragma once

#include "platform/foundation/MainRunLoop.h"
#include "platform/foundation/NSLock.h"
#include "platform/foundation/NSObject.h"
#include "platform/foundation/ThreadPool.h"

#include <cstddef>

namespace searchsystem {

/// Threads that share tasks, up to a limit: they join when called and leave when no task is left.
/// If no thread is available, the main thread does the work in pieces.
///
/// Ownership: part of its owner, which it retains while any of its threads works and releases on
/// the main thread. Meanwhile the virtual clock does not advance.
class ThreadTeam : public Work, private Runnable {
public:
  ThreadTeam(const ThreadTeam &) = delete;
  ThreadTeam &operator=(const ThreadTeam &) = delete;

  /// Makes up to `count` further threads join. No call is lost: if all are working, one of them
  /// looks for tasks again before it leaves. Any thread.
  void call(std::size_t count) noexcept;

protected:
  ThreadTeam(const NSObject &owner, std::size_t mostThreads) noexcept
      : owner_(owner), mostThreads_(mostThreads) {}
  ~ThreadTeam() = default;

private:
  /// Does tasks until none is left. On the main thread it may return earlier, and is called again
  /// if it returns true.
  [[nodiscard]] virtual bool work() noexcept = 0;

  /// The last thread is about to leave. May be called again.
  virtual void allDone() noexcept {}

  void runOnThread() noexcept final;
  void run() final;
  void finished() noexcept final;
  void leaveToMainThread() noexcept;
  /// False if the thread has been called again meanwhile.
  [[nodiscard]] bool leave() noexcept;
  void post() noexcept PF_REQUIRES(lock_);

  const NSObject &owner_;
  const std::size_t mostThreads_;

  NSLock lock_;
  std::size_t atWork_ PF_GUARDED_BY(lock_) = 0;
  bool isCalledAgain_ PF_GUARDED_BY(lock_) = false;
  /// The owner is retained and the clock stopped.
  bool isActive_ PF_GUARDED_BY(lock_) = false;
  bool isPosted_ PF_GUARDED_BY(lock_) = false;
  /// The main thread is one of the workers.
  bool isOnMainThread_ PF_GUARDED_BY(lock_) = false;
};

} // namespace searchsystem
