#include "platform/metadata/FolderQueue.h"

#include "platform/metadata/MoveToEnd.h"

#include <utility>

namespace searchsystem {

void FolderQueue::add(FolderTask task) {
  {
    const LockGuard guard(lock_);
    tasks_.push_back(std::move(task));
  }
  call(1);
}

bool FolderQueue::add(Tasks &found) noexcept {
  const std::size_t count = found.size();
  {
    const LockGuard guard(lock_);
    if (!moveToEnd(found, tasks_))
      return false;
  }
  call(count);
  return true;
}

std::optional<FolderTask> FolderQueue::next(Tasks &found) noexcept {
  std::optional<FolderTask> task;
  std::size_t left = 0;
  {
    const LockGuard guard(lock_);
    const bool isNew = !found.empty();
    Tasks &source = moveToEnd(found, tasks_) ? tasks_ : found;
    if (source.empty() || isStopped_)
      return std::nullopt;
    task = std::move(source.back());
    source.pop_back();
    left = isNew ? tasks_.size() : 0;
  }
  call(left);
  return task;
}

void FolderQueue::stop() noexcept {
  const LockGuard guard(lock_);
  isStopped_ = true;
}

void FolderQueue::call(std::size_t count) noexcept {
  if (team_ != nullptr)
    team_->call(count);
}

} // namespace searchsystem
