#include "platform/metadata/MetadataGathering.h"

#include "platform/foundation/FreeElsewhere.h"
#include "platform/foundation/NSNotificationCenter.h"
#include "platform/foundation/ProcessorCount.h"
#include "platform/metadata/MoveToEnd.h"
#include "platform/metadata/NSMetadataQueryNotifications.h"

#include <algorithm>
#include <cassert>
#include <chrono>
#include <iterator>
#include <utility>

namespace searchsystem {

namespace {

using Clock = MainRunLoop::Clock;

/// May exceed the number of processors: on a slow disk several threads wait at once.
constexpr int fewestThreads = 4;
constexpr int mostThreads = 8;

constexpr std::chrono::milliseconds portionTime{5};

/// How long a thread may keep results to itself, unless there are many.
constexpr std::chrono::milliseconds longestDelay{2};
constexpr std::size_t manyResults = 256;

/// How often memory for results is requested before they are lost.
constexpr int mostTries = 4;

} // namespace

MetadataGathering::MetadataGathering(NSObject &query, Ref<const NSPredicate> predicate,
                                     FolderQueue::Tasks scopes, std::optional<IndexPlace> place)
    : ThreadTeam(*this, static_cast<std::size_t>(
                            std::clamp(processorCount(), fewestThreads, mostThreads))),
      predicate_(std::move(predicate)), place_(std::move(place)), queue_(this, std::move(scopes)),
      writer_(place_), query_(&query) {}

Ref<MetadataGathering> MetadataGathering::create(NSObject &query, Ref<const NSPredicate> predicate,
                                                 FolderQueue::Tasks scopes,
                                                 std::optional<IndexPlace> place) {
  return Ref<MetadataGathering>::adopt(
      new MetadataGathering(query, std::move(predicate), std::move(scopes), std::move(place)));
}

MetadataGathering::~MetadataGathering() {
  takeGathered();
  freeElsewhere(results_);
}

void MetadataGathering::stop() noexcept {
  assert(MainRunLoop::shared().isMainThread());
  query_ = nullptr;
  isStopped_.store(true);
  queue_.stop();
  takeGathered();
  Results dropped;
  tryTwice([&] {
    const auto begin = results_.begin() + static_cast<std::ptrdiff_t>(visible_);
    dropped.assign(std::make_move_iterator(begin), std::make_move_iterator(results_.end()));
  });
  results_.resize(visible_);
  freeElsewhere(dropped);
}

bool MetadataGathering::work() noexcept {
  const bool isOnMainThread = MainRunLoop::shared().isMainThread();
  const Clock::time_point begin = Clock::now();
  FolderQueue::Tasks tasks;
  Results results;
  Clock::time_point lastHandOver;
  FolderGatherer gatherer({*predicate_, place_, writer_, queue_, isStopped_});
  while (const std::optional<FolderTask> task = queue_.next(tasks)) {
    gatherer.process(*task, tasks, results);
    const Clock::time_point now = results.empty() && !isOnMainThread ? begin : Clock::now();
    if (!results.empty() && (results.size() >= manyResults || now - lastHandOver >= longestDelay)) {
      handOver(results);
      lastHandOver = now;
    }
    if (isOnMainThread && now - begin >= portionTime && queue_.add(tasks)) {
      handOver(results);
      return true;
    }
  }
  handOver(results);
  return false;
}

void MetadataGathering::allDone() noexcept {
  {
    const LockGuard guard(lock_);
    if (std::exchange(isComplete_, true))
      return;
    postAnnouncement();
  }
  if (!MainRunLoop::shared().isMainThread())
    writer_.finish();
}

void MetadataGathering::handOver(Results &results) noexcept {
  if (results.empty() || isStopped_.load(std::memory_order_relaxed))
    return;
  const LockGuard guard(lock_);
  // What finds no memory is handed over with the next results, if any.
  moveToEnd(results, gathered_, mostTries);
  postAnnouncement();
}

void MetadataGathering::postAnnouncement() noexcept {
  if (isPosted_)
    return;
  isPosted_ = true;
  retain();
  MainRunLoop::shared().post(announcement_);
}

void MetadataGathering::takeGathered() noexcept {
  const LockGuard guard(lock_);
  moveToEnd(gathered_, results_, mostTries);
  // If memory stays short the results are lost, so that the query can end.
  gathered_.clear();
}

void MetadataGathering::announce() {
  if (query_ == nullptr)
    return;
  takeGathered();
  // A handler may release the last reference to the query.
  const Ref<NSObject> query(query_);
  NSNotificationCenter &center = NSNotificationCenter::defaultCenter();
  if (visible_ < results_.size()) {
    ++visible_;
    portionEnd_ = Clock::now() + portionTime;
    isAnnouncing_ = true;
    center.postNotification(NSMetadataQueryGatheringProgressNotification, query.get());
    return;
  }
  {
    const LockGuard guard(lock_);
    if (!isComplete_ || !gathered_.empty())
      return;
  }
  query_ = nullptr;
  center.postNotification(NSMetadataQueryDidFinishGatheringNotification, query.get());
}

void MetadataGathering::announced() noexcept {
  isAnnouncing_ = false;
  {
    const LockGuard guard(lock_);
    const bool hasMore = visible_ < results_.size() || !gathered_.empty() || isComplete_;
    if (query_ != nullptr && hasMore) {
      MainRunLoop::shared().post(announcement_);
      return;
    }
    isPosted_ = false;
  }
  release();
}

std::size_t MetadataGathering::visibleCount() noexcept {
  if (isAnnouncing_ && read_ == visible_ && visible_ < results_.size() &&
      Clock::now() < portionEnd_)
    ++visible_;
  return visible_;
}

const Ref<const NSString> &MetadataGathering::pathAtIndex(std::size_t index) noexcept {
  assert(index < visible_);
  read_ = std::max(read_, index + 1);
  return results_[index];
}

} // namespace searchsystem
