#pragma once

#include "platform/foundation/NSLock.h"
#include "platform/foundation/ThreadTeam.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace searchsystem {

class RecordStream;

/// Work that any thread of a query can do.
struct FolderTask {
  enum class Kind {
    /// Searches a folder, even if it is hidden, a package or a mount root.
    Scope,
    /// The same, with the names read from the disk.
    ScopeListing,
    /// Searches a folder if that is allowed, with its names read from the disk.
    Listing,
    /// Searches the next folders of a stream of records.
    Records,
  };

  Kind kind = Kind::Listing;
  std::string path{};
  std::shared_ptr<RecordStream> stream{};
};

/// The folders that a query has yet to search. The last in is the first out, which keeps their
/// number small.
///
/// Ownership: owns its tasks, borrows the team that does them. Threads: any.
class FolderQueue {
public:
  using Tasks = std::vector<FolderTask>;

  /// Without a team, a single thread takes the tasks. Calls no thread for `tasks`.
  explicit FolderQueue(ThreadTeam *team, Tasks tasks = {}) noexcept
      : team_(team), tasks_(std::move(tasks)) {}

  /// Throws `std::bad_alloc`.
  void add(FolderTask task);

  /// Takes all tasks from `found`; if memory is short it takes none and returns false.
  bool add(Tasks &found) noexcept;

  /// Does the same, and returns the task to do next; if memory is short, one of `found`. None when
  /// there is nothing to do, and after `stop`.
  [[nodiscard]] std::optional<FolderTask> next(Tasks &found) noexcept;

  void stop() noexcept;

private:
  void call(std::size_t count) noexcept;

  ThreadTeam *const team_;
  NSLock lock_;
  Tasks tasks_ PF_GUARDED_BY(lock_);
  bool isStopped_ PF_GUARDED_BY(lock_) = false;
};

} // namespace searchsystem
