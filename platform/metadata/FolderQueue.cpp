#include "platform/metadata/FolderQueue.h"

#include "platform/foundation/MainRunLoop.h"

#include <iterator>
#include <utility>

namespace {

/// How often memory for what a thread leaves to others is asked for before it is lost.
constexpr int mostAttempts = 4;

} // namespace

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
  for (int attempt = 0; attempt < mostAttempts && !own.empty(); ++attempt)
    share(own, own.size());
  const LockGuard guard(lock_);
  --threads_;
  if (shared_.empty() && threads_ == waiting_ && threads_ > 0)
    finish();
}

std::optional<FolderTask> FolderQueue::next(Tasks &own, bool mayWait) noexcept {
  if (isDone())
    return std::nullopt;
  if (!own.empty()) {
    // What was met first has the most below it.
    if (own.size() > 1 && isWanted_.load(std::memory_order_relaxed))
      share(own, (own.size() + 1) / 2);
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

void FolderQueue::share(Tasks &own, std::size_t count) noexcept {
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
