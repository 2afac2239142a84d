#pragma once

#include "FileSharchFunction/SearchSystem/EntryTest.h"
#include "FileSharchFunction/SearchSystem/FolderAhead.h"
#include "platform/foundation/NSLock.h"
#include "platform/foundation/NSObject.h"
#include "platform/foundation/NSThread.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <deque>

/// Reads the folders at the front of the walk's queue before a worker is started on them, where
/// nothing but listings and dates decide. A worker whose folder has been read has no more to do
/// than to hand over what was met, on the main thread, so that threads and main thread need not
/// wait for each other at every folder.
///
/// No more than some hundreds of folders are read ahead, and few are left open: those which hold
/// more matches than are kept.
///
/// Ownership: part of its owner, which is kept alive while anything is read, also when nobody waits
/// for that any more. Threads: main, but for what is said otherwise.
class ReadAhead {
public:
  using Pool = std::deque<Ref<const NSString>>;

  /// Nothing more is read once `isCancelled`. Throws `std::bad_alloc`.
  ReadAhead(const NSObject &owner, const std::atomic<char> &isCancelled)
      : owner_(owner), isCancelled_(isCancelled) {}

  /// Begins to read ahead for a search of files of the class `type`, or, with null, does not. The
  /// test is the owner's.
  void begin(const EntryTest *test, int type) noexcept;

  /// Takes in what has come to the front of the queue.
  void follow(const Pool &pool) noexcept;

  /// What there is of the first folder of the queue; null if it is not read ahead.
  [[nodiscard]] Ref<FolderAhead> first() const noexcept {
    return window_.empty() ? nullptr : window_.front();
  }

  /// The first folder has been taken from the queue, and its worker started.
  void removeFirst() noexcept;

  /// Gives what has been met to the worker of a folder that has been read. Any thread.
  [[nodiscard]] FolderFindings take(FolderAhead &folder) noexcept;

private:
  /// A thread that reads for a while.
  class Reader final : public ThreadJob {
  public:
    [[nodiscard]] bool isFree() const noexcept { return !owner_; }
    void start(ReadAhead &readAhead) noexcept;

  private:
    void main() override;
    void ended() noexcept override;

    ReadAhead *readAhead_ = nullptr;
    Ref<const NSObject> owner_;
  };

  static constexpr std::size_t mostAtOnce = 8;
  using Claim = std::array<Ref<FolderAhead>, mostAtOnce>;

  void startReaders() noexcept;
  /// How many further readers would have something to do.
  [[nodiscard]] std::size_t mayRead() noexcept PF_REQUIRES(lock_);
  /// Any thread.
  void readSome() noexcept;
  [[nodiscard]] std::size_t claim(Claim &claimed, std::size_t most) noexcept;
  void read(FolderAhead &folder) noexcept;
  void readEntry(FolderAhead &folder, const DirectoryEntry &entry) const;

  const NSObject &owner_;
  const std::atomic<char> &isCancelled_;
  const EntryTest *test_ = nullptr;
  int type_ = 0;
  /// Of the first folders of the queue, in its order.
  std::deque<Ref<FolderAhead>> window_;
  std::array<Reader, 5> readers_;

  NSLock lock_;
  /// Those that no reader has claimed.
  std::deque<Ref<FolderAhead>> unread_ PF_GUARDED_BY(lock_);
  /// Folders that were left in the middle and wait for their worker.
  std::atomic<int> openFolders_{0};
};
