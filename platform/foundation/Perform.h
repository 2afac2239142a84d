#pragma once

#include "platform/foundation/MainRunLoop.h"
#include "platform/foundation/NSCondition.h"
#include "platform/foundation/NSLock.h"

#include <chrono>
#include <memory>
#include <utility>

namespace searchsystem {

/// Calls handed to the main thread, at once or after a delay. A performed function owns what it
/// needs (a reference to its target, a copy of its argument).

/// A delay in seconds, for the run loop.
inline std::chrono::nanoseconds performDelay(double seconds) noexcept {
  return std::chrono::round<std::chrono::nanoseconds>(std::chrono::duration<double>(seconds));
}

/// Appends `function` to the main thread's work and returns. Throws `std::bad_alloc`, and then
/// nothing has been posted. Any thread.
template <class Function> void performOnMainThread(Function function) {
  class Posted final : public Work {
  public:
    explicit Posted(Function &&f) : function_(std::move(f)) {}

  private:
    void run() override { function_(); }
    void finished() noexcept override { delete this; }
    Function function_;
  };
  MainRunLoop::shared().post(*std::make_unique<Posted>(std::move(function)).release());
}

/// Makes the main thread call `function`, each time in a turn of its loop, and returns once it
/// returns false; on the main thread, calls it at once. Allocates nothing, so that it cannot fail.
/// Any thread.
template <class Function> void performOnMainThreadAndWait(Function function) {
  class Waited final : public Work {
  public:
    explicit Waited(Function &f) noexcept : function_(f) {}
    void wait() noexcept {
      const LockGuard guard(lock_);
      while (!isDone_)
        done_.wait(lock_);
    }

  private:
    void run() override {
      isCalledAgain_ = false;
      isCalledAgain_ = function_();
    }
    void finished() noexcept override {
      if (isCalledAgain_)
        return MainRunLoop::shared().post(*this);
      // The waiter may destroy this object once it can take the lock.
      const LockGuard guard(lock_);
      isDone_ = true;
      done_.signal();
    }

    Function &function_;
    bool isCalledAgain_ = false;
    NSLock lock_;
    NSCondition done_;
    bool isDone_ PF_GUARDED_BY(lock_) = false;
  };
  MainRunLoop &loop = MainRunLoop::shared();
  if (loop.isMainThread()) {
    while (function()) {
    }
    return;
  }
  Waited work(function);
  loop.post(work);
  work.wait();
}

/// A delayed perform that is part of its target, so that scheduling cannot fail. While scheduled,
/// it holds a reference to the target and keeps its time if scheduled again. Main thread.
template <class Target> class ReservedPerform final : public TimedWork {
public:
  ReservedPerform(Target &target, void (Target::*action)()) noexcept
      : target_(target), action_(action) {}

  void schedule(double seconds) noexcept {
    if (isScheduled())
      return;
    target_.retain();
    MainRunLoop::shared().schedule(*this, std::chrono::round<std::chrono::nanoseconds>(
                                              std::chrono::duration<double>(seconds)));
  }

private:
  void fire() override { (target_.*action_)(); }
  void finished() noexcept override { target_.release(); }

  Target &target_;
  void (Target::*const action_)();
};

} // namespace searchsystem
