#pragma once

#include "platform/foundation/MainRunLoop.h"
#include "platform/foundation/NSLock.h"
#include "platform/foundation/NSObject.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/Ref.h"

#include <atomic>
#include <utility>
#include <vector>

namespace searchsystem {

/// What was found in a folder, in the order of its listing.
struct FolderFindings {
  std::vector<Ref<const NSString>> subFolders;
  std::vector<Ref<const NSString>> files;
  /// No more findings follow.
  bool isLast = false;
};

/// A folder of the walk's queue that is read before its turn. The reader adds what it finds, the
/// main thread takes it.
///
/// Threads: any, except where stated.
class FolderAhead final : public NSObject {
public:
  explicit FolderAhead(Ref<const NSString> path) noexcept : path_(std::move(path)) {}

  [[nodiscard]] const NSString &path() const noexcept { return *path_; }

  /// Posts `work` as soon as there is something to take. Main thread, one at a time.
  void await(Work &work) noexcept;

  [[nodiscard]] bool isAwaited() const noexcept {
    return waiting_.load(std::memory_order_relaxed) != nullptr;
  }

  /// Everything added since the last call. Main thread.
  [[nodiscard]] FolderFindings take() noexcept;

  /// Moves `findings` here; if memory stays short, some are lost. Returns the work that waits for
  /// them, which the caller posts; null if there is none.
  [[nodiscard]] Work *add(FolderFindings &findings) noexcept;

private:
  const Ref<const NSString> path_;
  NSLock lock_;
  FolderFindings findings_ PF_GUARDED_BY(lock_);
  /// Changed under the lock.
  std::atomic<Work *> waiting_{nullptr};
};

} // namespace searchsystem
