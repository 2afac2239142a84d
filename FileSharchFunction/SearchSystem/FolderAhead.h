#pragma once

#include "platform/foundation/MainRunLoop.h"
#include "platform/foundation/NSLock.h"
#include "platform/foundation/NSObject.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/Ref.h"

#include <atomic>
#include <utility>
#include <vector>

/// What has been met in a folder, in the order of its listing.
struct FolderFindings {
  std::vector<Ref<const NSString>> subFolders;
  std::vector<Ref<const NSString>> files;
  /// Nothing more is to come.
  bool isLast = false;

  [[nodiscard]] bool isEmpty() const noexcept { return subFolders.empty() && files.empty(); }
};

/// A folder of the walk's queue that is read before its turn. The reader adds what it meets, the
/// main thread takes it.
class FolderAhead final : public NSObject {
public:
  /// Throws `std::bad_alloc`.
  static Ref<FolderAhead> create(Ref<const NSString> path) {
    return Ref<FolderAhead>::adopt(new FolderAhead(std::move(path)));
  }

  [[nodiscard]] const NSString &path() const noexcept { return *path_; }

  /// Has `work` posted as soon as there is something to take. Main thread, one at a time.
  void await(Work &work) noexcept;

  [[nodiscard]] bool isAwaited() const noexcept {
    return waiting_.load(std::memory_order_relaxed) != nullptr;
  }

  /// All that has been met since the last time. Main thread.
  [[nodiscard]] FolderFindings take() noexcept;

  /// Adds what the reader has met, and empties it; where memory for the last stays short, some of
  /// it is lost. What waits for it is returned, to be posted; null if nothing does.
  [[nodiscard]] Work *add(FolderFindings &findings) noexcept;

private:
  explicit FolderAhead(Ref<const NSString> path) noexcept : path_(std::move(path)) {}

  const Ref<const NSString> path_;
  NSLock lock_;
  FolderFindings findings_ PF_GUARDED_BY(lock_);
  /// Changed under the lock.
  std::atomic<Work *> waiting_{nullptr};
};
