#include "FileSharchFunction/SearchSystem/FileAhead.h"

#include "platform/foundation/TryTwice.h"

namespace searchsystem {

void FileAhead::test() noexcept {
  // Where memory is short the file is passed over, and the next may fare better.
  tryTwice([&] {
    SearchItem item(*path_);
    matches_ = conditions_.meets(item, test_, answers_);
  });
  const LockGuard guard(lock_);
  isTested_.store(true);
  tested_.signal();
}

void FileAhead::wait() noexcept {
  const LockGuard guard(lock_);
  while (!isTested())
    tested_.wait(lock_);
}

} // namespace searchsystem
