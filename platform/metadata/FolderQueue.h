#pragma once

#include "platform/foundation/NSLock.h"
#include "platform/foundation/ThreadTeam.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

class RecordStream;

/// Something that is to be done by whoever comes to it.
struct FolderTask {
  enum class Kind {
    /// A folder that is to be searched, whatever it is.
    Scope,
    /// The same, with the names read from the disk.
    ScopeListing,
    /// A folder that is to be searched if it may be, with its names read from the disk.
    Listing,
    /// The next records of a stream.
    Records,
  };

  Kind kind = Kind::Listing;
  std::string path;
  std::shared_ptr<RecordStream> stream;
};

/// The folders that a query still has to look at. The last is taken up first, so that their number
/// stays small.
///
/// Ownership: owns its tasks, borrows the threads that do them. Threads: any.
class FolderQueue {
public:
  using Tasks = std::vector<FolderTask>;

  /// With null there is one thread only, which comes by itself. Nobody is called for `tasks` before
  /// `start`.
  explicit FolderQueue(ThreadTeam *team, Tasks tasks = {}) noexcept
      : team_(team), tasks_(std::move(tasks)) {}

  void start() noexcept;

  /// Throws `std::bad_alloc`.
  void add(FolderTask task);

  /// Takes over all tasks in `found`; false, and none, where there is no memory for them.
  bool add(Tasks &found) noexcept;

  /// The same, and what the thread is to do next: where memory is short it is one of `found`. None
  /// when there is nothing to do, and after `stop`.
  [[nodiscard]] std::optional<FolderTask> next(Tasks &found) noexcept;

  void stop() noexcept;

private:
  bool takeOver(Tasks &found) noexcept PF_REQUIRES(lock_);
  void call(std::size_t count) noexcept;

  ThreadTeam *const team_;
  NSLock lock_;
  Tasks tasks_ PF_GUARDED_BY(lock_);
  bool isStopped_ PF_GUARDED_BY(lock_) = false;
};
