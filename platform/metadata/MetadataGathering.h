#pragma once

#include "platform/foundation/NSLock.h"
#include "platform/foundation/NSObject.h"
#include "platform/foundation/ThreadTeam.h"
#include "platform/metadata/FolderGatherer.h"

#include <atomic>
#include <cstddef>
#include <optional>

namespace searchsystem {

/// One start of a metadata query: threads that gather, and work on the main thread that makes their
/// results visible, portion by portion, and then reports the end.
///
/// Ownership: counted. The threads and posted work hold references, which they release on the main
/// thread; it borrows the query until the end or `stop`.
/// Threads: main, unless a member says otherwise.
class MetadataGathering final : public NSObject, private ThreadTeam {
public:
  /// Posts its notifications with `query` as their object. Throws `std::bad_alloc`.
  static Ref<MetadataGathering> create(NSObject &query, Ref<const NSPredicate> predicate,
                                       FolderQueue::Tasks scopes, std::optional<IndexPlace> place);

  /// One thread takes the scopes; it calls others for what it finds there.
  void start() noexcept { call(1); }

  /// Ends it without a notification. Results that are not visible yet are dropped.
  void stop() noexcept;

  /// False once the end is being posted, and after `stop`.
  [[nodiscard]] bool isActive() const noexcept { return query_ != nullptr; }

  /// How many results are visible. While a progress notification is being posted, the next becomes
  /// visible when all before it have been read, until the portion's time is up.
  [[nodiscard]] std::size_t visibleCount() noexcept;

  /// The path of a visible result.
  [[nodiscard]] const Ref<const NSString> &pathAtIndex(std::size_t index) noexcept;

private:
  using Results = FolderGatherer::Results;

  /// The main thread's part.
  class Announcement final : public Work {
  public:
    explicit Announcement(MetadataGathering &gathering) noexcept : gathering_(gathering) {}

  private:
    void run() override { gathering_.announce(); }
    void finished() noexcept override { gathering_.announced(); }

    MetadataGathering &gathering_;
  };

  MetadataGathering(NSObject &query, Ref<const NSPredicate> predicate, FolderQueue::Tasks scopes,
                    std::optional<IndexPlace> place);
  ~MetadataGathering() override;

  /// Gathers until nothing is left to do, on the main thread only a portion.
  [[nodiscard]] bool work() noexcept override;
  void allDone() noexcept override;
  /// Empties `results`, unless memory stays short. Any thread.
  void handOver(Results &results) noexcept;
  void postAnnouncement() noexcept PF_REQUIRES(lock_);

  void announce();
  void announced() noexcept;
  /// Makes what has been gathered ready to be announced. If memory stays short it is lost.
  void takeGathered() noexcept;

  // Constant while threads run.
  const Ref<const NSPredicate> predicate_;
  const std::optional<IndexPlace> place_;

  // Synchronize themselves.
  std::atomic<bool> isStopped_{false};
  FolderQueue queue_;
  IndexWriter writer_;

  NSLock lock_;
  Results gathered_ PF_GUARDED_BY(lock_);
  bool isComplete_ PF_GUARDED_BY(lock_) = false;
  bool isPosted_ PF_GUARDED_BY(lock_) = false;

  // Main thread.
  NSObject *query_;
  Results results_;
  std::size_t visible_ = 0;
  std::size_t read_ = 0;
  bool isAnnouncing_ = false;
  MainRunLoop::Clock::time_point portionEnd_;
  Announcement announcement_{*this};
};

} // namespace searchsystem
