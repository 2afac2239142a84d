#pragma once

#include "platform/foundation/DirectoryListing.h"
#include "platform/foundation/NSObject.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/NSThread.h"
#include "platform/foundation/Ref.h"

#include <atomic>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

/// What has been met in a folder, in the order of its listing, and the rest of that, if it has been
/// left in the middle.
struct FolderFindings {
  std::vector<Ref<const NSString>> subFolders;
  std::vector<Ref<const NSString>> files;
  std::optional<DirectoryListing> rest;
};

/// A folder of the queue that is read before its turn, or waited for when that has come.
///
/// Threads: who reads it has the findings to itself until `setRead`; then whoever has been resumed.
class FolderAhead final : public NSObject {
public:
  /// Throws `std::bad_alloc`.
  static Ref<FolderAhead> create(Ref<const NSString> path) {
    return Ref<FolderAhead>::adopt(new FolderAhead(std::move(path)));
  }

  [[nodiscard]] const NSString &path() const noexcept { return *path_; }

  /// Resumes the job, which was detached as one that waits, as soon as the folder has been read.
  /// Once; main thread.
  void resumeWhenRead(ThreadJob &job) noexcept {
    waiting_ = &job;
    if (state_.exchange(Awaited, std::memory_order_acq_rel) == Read)
      job.resume();
  }

  [[nodiscard]] bool isAwaited() const noexcept {
    return state_.load(std::memory_order_relaxed) == Awaited;
  }

  /// Once, by who has read it.
  void setRead() noexcept {
    if (state_.exchange(Read, std::memory_order_acq_rel) == Awaited)
      waiting_->resume();
  }

  FolderFindings findings;

private:
  explicit FolderAhead(Ref<const NSString> path) noexcept : path_(std::move(path)) {}

  enum State : std::uint8_t { Unread, Awaited, Read };

  const Ref<const NSString> path_;
  std::atomic<State> state_{Unread};
  ThreadJob *waiting_ = nullptr;
};
