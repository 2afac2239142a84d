#pragma once

#include "platform/foundation/NSLock.h"
#include "platform/foundation/NSObject.h"
#include "platform/foundation/ThreadTeam.h"
#include "platform/metadata/FolderGatherer.h"

#include <atomic>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

class NSMetadataQuery;

/// What one start of a metadata query sets going: threads that gather, and work of the main thread
/// that makes their results visible, portion by portion, and at last tells the end.
///
/// Ownership: counted. The threads and posted work hold references, which are given back on the
/// main thread; the query is borrowed until `stop`.
/// Threads: main, but for what says otherwise.
class MetadataGathering final : public NSObject, private ThreadTeam {
public:
  /// Throws `std::bad_alloc`.
  static Ref<MetadataGathering> create(NSMetadataQuery &query, Ref<const NSPredicate> predicate,
                                       const std::vector<std::string> &scopes,
                                       std::optional<IndexPlace> place);

  void start() noexcept;

  /// Ends it without a word: what is not visible never will be.
  void stop() noexcept;

  /// How many results are visible. While some are announced, the next becomes visible once all
  /// before it have been read, as long as there is time.
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

  MetadataGathering(NSMetadataQuery &query, Ref<const NSPredicate> predicate,
                    const std::vector<std::string> &scopes, std::optional<IndexPlace> place);
  ~MetadataGathering() override;

  /// Gathers until nothing is left to do, on the main thread a portion only.
  [[nodiscard]] bool work() noexcept override;
  void allDone() noexcept override;
  /// Empties `results`, unless memory stays short. Any thread.
  void handOver(Results &results) noexcept;
  void setComplete() noexcept;
  void postAnnouncement() noexcept PF_REQUIRES(lock_);

  void announce();
  void announced() noexcept;
  /// Where memory is short, what has been gathered stays so, for a few times.
  void takeGathered() noexcept;

  // Constant while threads run.
  const Ref<const NSPredicate> predicate_;
  const std::optional<IndexPlace> place_;

  // These take care of themselves.
  std::atomic<bool> isStopped_{false};
  FolderQueue queue_;
  IndexWriter writer_;
  std::atomic<bool> isWritten_{false};

  NSLock lock_;
  Results gathered_ PF_GUARDED_BY(lock_);
  bool isComplete_ PF_GUARDED_BY(lock_) = false;
  bool isPosted_ PF_GUARDED_BY(lock_) = false;

  // Main thread.
  NSMetadataQuery *query_;
  Results results_;
  std::size_t visible_ = 0;
  std::size_t read_ = 0;
  int failedTakes_ = 0;
  bool isAnnouncing_ = false;
  MainRunLoop::Clock::time_point portionEnd_;
  Announcement announcement_{*this};
};
