#pragma once

#include "platform/foundation/NSLock.h"
#include "platform/foundation/Wakeup.h"

#include <atomic>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
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

/// The folders that a query still has to look at. Each thread keeps those that it meets, and takes
/// up the last first, so that their number stays small; when others have nothing to do, it gives
/// them those that it met first. When no thread has anything to do, all is done.
///
/// Ownership: owns its tasks; those of a thread are the thread's. Threads: any.
class FolderQueue {
public:
  using Tasks = std::vector<FolderTask>;

  /// Offers a task to all threads. Throws `std::bad_alloc`.
  void add(FolderTask task);

  /// To be called by each thread before and after its work; what it has left is given to others.
  void enter() noexcept;
  void leave(Tasks &own) noexcept;

  /// What the thread is to do next: one of its own tasks, else another's, for which it waits if
  /// `mayWait`. None when all is done, or there is nothing to do without waiting.
  [[nodiscard]] std::optional<FolderTask> next(Tasks &own, bool mayWait) noexcept;

  /// Makes all be done.
  void stop() noexcept;

  [[nodiscard]] bool isDone() const noexcept { return isDone_.load(std::memory_order_acquire); }

private:
  struct Sleeper {
    Wakeup wakeup;
    Sleeper *next = nullptr;
  };

  /// Gives the first `count` tasks to others, unless memory is short.
  void share(Tasks &own, std::size_t count) noexcept;
  void wake(std::size_t most) noexcept PF_REQUIRES(lock_);
  void finish() noexcept PF_REQUIRES(lock_);
  [[nodiscard]] std::optional<FolderTask> takeShared() noexcept PF_REQUIRES(lock_);

  std::atomic<bool> isDone_{false};
  /// Some thread waits for a task.
  std::atomic<bool> isWanted_{false};

  NSLock lock_;
  Tasks shared_ PF_GUARDED_BY(lock_);
  std::size_t threads_ PF_GUARDED_BY(lock_) = 0;
  std::size_t waiting_ PF_GUARDED_BY(lock_) = 0;
  Sleeper *firstSleeper_ PF_GUARDED_BY(lock_) = nullptr;
};
