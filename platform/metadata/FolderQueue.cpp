#include "platform/metadata/FolderQueue.h"

#include "platform/foundation/MainRunLoop.h"

#include <iterator>
#include <utility>

void FolderQueue::add(FolderTask task) {
  const LockGuard guard(lock_);
  shared_.push_back(std::move(task));
  wake(1);
}

void FolderQueue::enter() noexcept {
  const LockGuard guard(lock_);
  ++threads_;
}

void FolderQueue::leave(Tasks &own) noexcept {
  if (!own.empty())
    share(own);
  const LockGuard guard(lock_);
  --threads_;
  if (shared_.empty() && threads_ == waiting_ && threads_ > 0)
    finish();
}

std::optional<FolderTask> FolderQueue::next(Tasks &own, bool mayWait) noexcept {
  if (isDone())
    return std::nullopt;
  if (!own.empty()) {
    if (own.size() > 1 && isWanted_.load(std::memory_order_relaxed))
      share(own);
    FolderTask task = std::move(own.back());
    own.pop_back();
    return task;
  }
  for (;;) {
    Sleeper self;
    {
      const LockGuard guard(lock_);
      if (isDone())
        return std::nullopt;
      if (!shared_.empty())
        return takeShared();
      if (waiting_ + 1 == threads_) {
        finish();
        return std::nullopt;
      }
      if (!mayWait)
        return std::nullopt;
      ++waiting_;
      self.next = std::exchange(firstSleeper_, &self);
      isWanted_.store(true, std::memory_order_relaxed);
    }
    MainRunLoop::shared().wakeForWork();
    self.wakeup.sleep();
  }
}

std::optional<FolderTask> FolderQueue::takeShared() noexcept {
  FolderTask task = std::move(shared_.back());
  shared_.pop_back();
  return task;
}

void FolderQueue::share(Tasks &own) noexcept {
  // What was met first has the most below it.
  const std::size_t count = (own.size() + 1) / 2;
  const auto end = own.begin() + static_cast<std::ptrdiff_t>(count);
  const LockGuard guard(lock_);
  try {
    shared_.insert(shared_.end(), std::make_move_iterator(own.begin()),
                   std::make_move_iterator(end));
  } catch (...) {
    return;
  }
  own.erase(own.begin(), end);
  wake(count);
}

void FolderQueue::wake(std::size_t most) noexcept {
  for (; most > 0 && firstSleeper_ != nullptr; --most) {
    Sleeper *const sleeper = std::exchange(firstSleeper_, firstSleeper_->next);
    --waiting_;
    sleeper->wakeup.wake();
  }
  isWanted_.store(firstSleeper_ != nullptr, std::memory_order_relaxed);
}

void FolderQueue::finish() noexcept {
  isDone_.store(true, std::memory_order_release);
  wake(waiting_);
}

void FolderQueue::stop() noexcept {
  const LockGuard guard(lock_);
  finish();
}
