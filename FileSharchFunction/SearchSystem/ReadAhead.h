#pragma once

#include "FileSharchFunction/SearchSystem/FolderAhead.h"
#include "FileSharchFunction/SearchSystem/RequestFilter.h"
#include "platform/foundation/DirectoryListing.h"
#include "platform/foundation/NSLock.h"
#include "platform/foundation/NSObject.h"
#include "platform/foundation/ThreadTeam.h"

#include <atomic>
#include <deque>

/// Reads the folders at the front of the walk's queue before a worker is started on them, where
/// nothing but listings and dates decide. A worker whose folder has been read has no more to do
/// than to hand over what was met, on the main thread, so that threads and main thread need not
/// wait for each other at every folder. Without that the searches of `bench/walk.py` take 1.5 to
/// 2.8 times as long.
///
/// Ownership: part of its owner, which is kept alive while anything is read, also when nobody waits
/// for that any more. Threads: main, but for what is said otherwise.
class ReadAhead final : private ThreadTeam {
public:
  using Paths = std::deque<Ref<const NSString>>;

  /// Nothing more is read once `isCancelled`. Throws `std::bad_alloc`.
  ReadAhead(const NSObject &owner, const std::atomic<char> &isCancelled);

  /// Begins to read ahead for a search of files of the class `type`, or, with null, does not. The
  /// test is the owner's.
  void begin(const RequestFilter *filter, int type) noexcept;

  /// Takes in what has come to the front of the queue.
  void follow(const Paths &paths) noexcept;

  /// What there is of the first folder of the queue; null if it is not read ahead.
  [[nodiscard]] Ref<FolderAhead> first() const noexcept {
    return window_.empty() ? nullptr : window_.front();
  }

  /// The first folder has been taken from the queue, and its worker started.
  void removeFirst() noexcept {
    if (!window_.empty())
      window_.pop_front();
  }

  /// Wakes the main thread for whatever has been read.
  void postHeldBack() noexcept;

private:
  [[nodiscard]] bool work() noexcept override;
  [[nodiscard]] Ref<FolderAhead> takeUnread() noexcept;
  void read(FolderAhead &folder) noexcept;
  void readEntry(const FolderAhead &folder, DirectoryListing &listing, const DirectoryEntry &entry,
                 FolderFindings &findings) const;
  void handOver(FolderAhead &folder, FolderFindings &findings) noexcept;

  const std::atomic<char> &isCancelled_;
  const RequestFilter *filter_ = nullptr;
  int type_ = 0;
  /// Of the first folders of the queue, in its order.
  std::deque<Ref<FolderAhead>> window_;

  NSLock lock_;
  /// Those that no thread has taken.
  std::deque<Ref<FolderAhead>> unread_ PF_GUARDED_BY(lock_);
  /// What waits for folders that have been read, but need not be told yet.
  WorkQueue heldBack_ PF_GUARDED_BY(lock_);
};
