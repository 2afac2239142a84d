#include "platform/foundation/ThreadTeam.h"

#include <utility>

namespace searchsystem {

void ThreadTeam::call(std::size_t count) noexcept {
  for (; count > 0; --count) {
    {
      const LockGuard guard(lock_);
      if (atWork_ == mostThreads_) {
        isCalledAgain_ = true;
        return;
      }
      ++atWork_;
      if (!std::exchange(isActive_, true)) {
        owner_.retain();
        MainRunLoop::shared().beginActivity();
      }
    }
    if (!ThreadPool::run(*this)) {
      leaveToMainThread();
      return;
    }
  }
}

void ThreadTeam::leaveToMainThread() noexcept {
  const LockGuard guard(lock_);
  if (atWork_ > 1) {
    --atWork_;
    isCalledAgain_ = true;
    return;
  }
  isOnMainThread_ = true;
  post();
}

void ThreadTeam::runOnThread() noexcept {
  do
    static_cast<void>(work());
  while (!leave());
}

bool ThreadTeam::leave() noexcept {
  for (bool isDone = false;; isDone = true) {
    {
      const LockGuard guard(lock_);
      if (std::exchange(isCalledAgain_, false))
        return false;
      if (atWork_ > 1 || isDone) {
        if (MainRunLoop::shared().isMainThread())
          isOnMainThread_ = false;
        if (--atWork_ == 0)
          post();
        return true;
      }
    }
    allDone();
  }
}

void ThreadTeam::post() noexcept {
  if (!std::exchange(isPosted_, true))
    MainRunLoop::shared().post(*this);
}

void ThreadTeam::run() {
  {
    const LockGuard guard(lock_);
    if (!std::exchange(isOnMainThread_, false))
      return;
  }
  // A thread may be available by now.
  if (ThreadPool::run(*this))
    return;
  {
    const LockGuard guard(lock_);
    isOnMainThread_ = true;
  }
  if (!work())
    static_cast<void>(leave());
}

void ThreadTeam::finished() noexcept {
  {
    const LockGuard guard(lock_);
    isPosted_ = false;
    if (isOnMainThread_)
      post();
    if (atWork_ > 0)
      return;
    isActive_ = false;
  }
  MainRunLoop::shared().endActivity();
  owner_.release();
}

} // namespace searchsystem
