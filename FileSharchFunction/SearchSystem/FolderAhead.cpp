#include "FileSharchFunction/SearchSystem/FolderAhead.h"

#include "platform/foundation/TryTwice.h"

#include <iterator>

namespace searchsystem {

namespace {

using Paths = std::vector<Ref<const NSString>>;

void moveToEnd(Paths &from, Paths &to) noexcept {
  if (to.empty())
    to.swap(from);
  tryTwice([&] {
    to.insert(to.end(), std::make_move_iterator(from.begin()), std::make_move_iterator(from.end()));
  });
  from.clear();
}

} // namespace

void FolderAhead::await(Work &work) noexcept {
  const LockGuard guard(lock_);
  if (findings_.isLast || !findings_.subFolders.empty() || !findings_.files.empty())
    MainRunLoop::shared().post(work);
  else
    waiting_.store(&work, std::memory_order_relaxed);
}

FolderFindings FolderAhead::take() noexcept {
  const LockGuard guard(lock_);
  return std::exchange(findings_, {});
}

Work *FolderAhead::add(FolderFindings &findings) noexcept {
  const LockGuard guard(lock_);
  moveToEnd(findings.subFolders, findings_.subFolders);
  moveToEnd(findings.files, findings_.files);
  findings_.isLast = findings.isLast;
  return waiting_.exchange(nullptr, std::memory_order_relaxed);
}

} // namespace searchsystem
