#pragma once

#include "FileSharchFunction/SearchSystem/FileAhead.h"
#include "FileSharchFunction/SearchSystem/FolderAhead.h"
#include "FileSharchFunction/SearchSystem/RequestFilter.h"
#include "platform/foundation/DirectoryListing.h"
#include "platform/foundation/NSLock.h"
#include "platform/foundation/NSObject.h"
#include "platform/foundation/ThreadTeam.h"

#include <atomic>
#include <cstddef>
#include <deque>
#include <span>

namespace searchsystem {

/// Reads the folders at the front of the walk's queue before a worker is started on them, where
/// only listings and dates decide. The worker of such a folder merely hands over what was found, on
/// the main thread, so that threads and main thread need not wait for each other at every folder.
/// Without reading ahead the searches of `bench/walk.py` take 1.5 to 2.8 times as long.
///
/// In a deep search where content decides, it tests the next files of the workers' folders instead,
/// so that one folder of documents keeps all processors busy.
///
/// Ownership: part of its owner, which it keeps alive while anything is read, even if no longer
/// needed. Threads: main, except where stated.
class ReadAhead final : private ThreadTeam {
public:
  using Paths = std::deque<Ref<const NSString>>;

  /// Once `isCancelled`, nothing more is read. Throws `std::bad_alloc`.
  ReadAhead(const NSObject &owner, const std::atomic<char> &isCancelled);

  /// Enables reading ahead, for files of the class `type`. The owner keeps the filter.
  void begin(const RequestFilter &filter, int type) noexcept {
    filter_ = &filter;
    type_ = type;
  }

  /// Starts to read the folders that are now at the front of the queue.
  void follow(const Paths &paths) noexcept;

  /// The first folder of the queue; null if it is not read ahead.
  [[nodiscard]] Ref<FolderAhead> first() const noexcept {
    return window_.empty() ? nullptr : window_.front();
  }

  /// The first folder has been taken from the queue, and its worker started.
  void removeFirst() noexcept {
    if (!window_.empty())
      window_.pop_front();
  }

  /// Has a file tested before its turn, unless its worker takes it first. Any thread.
  void add(const Ref<FileAhead> &file) noexcept;

  /// Posts the workers whose folders have been read. Any thread.
  void postHeldBack() noexcept;

private:
  [[nodiscard]] bool work() noexcept override;
  [[nodiscard]] Ref<FolderAhead> takeUnread() noexcept;
  /// Takes the next file, with others behind it if that pays; how many they are.
  [[nodiscard]] std::size_t takeUntested(std::span<Ref<FileAhead>> files) noexcept;
  void read(FolderAhead &folder) noexcept;
  void readEntry(const FolderAhead &folder, DirectoryListing &listing, const DirectoryEntry &entry,
                 FolderFindings &findings) const;
  void handOver(FolderAhead &folder, FolderFindings &findings) noexcept;

  const std::atomic<char> &isCancelled_;
  const RequestFilter *filter_ = nullptr;
  int type_ = 0;
  /// The first folders of the queue, in its order.
  std::deque<Ref<FolderAhead>> window_;

  NSLock lock_;
  /// Those that no thread has taken.
  std::deque<Ref<FolderAhead>> unread_ PF_GUARDED_BY(lock_);
  /// Files, some of which their workers may have taken.
  std::deque<Ref<FileAhead>> untested_ PF_GUARDED_BY(lock_);
  /// Workers whose folders have been read, but which need not run yet.
  WorkQueue heldBack_ PF_GUARDED_BY(lock_);
};

} // namespace searchsystem
