#include "FileSharchFunction/SearchSystem/WorkerPool.h"

#include "platform/foundation/TryTwice.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace searchsystem {

namespace {

constexpr int mostWorkers = 5;

constexpr double delayOfEnd = 1.0;

/// The main thread queues this many sub-folders in a fraction of a millisecond.
constexpr std::size_t mostQueuedAtOnce = 256;

} // namespace

WorkerPool::WorkerPool(RunningSearch &search, Distribution &distribution, int &threadCount)
    : search_(search), distribution_(distribution), threadCount_(threadCount),
      readAhead_(search, search._bCancel) {}

void WorkerPool::begin(Body body, const RequestFilter *filter, int type) noexcept {
  body_ = body;
  if (filter != nullptr)
    readAhead_.begin(*filter, type);
}

void WorkerPool::add(const NSString *path) noexcept {
  assert(MainRunLoop::shared().isMainThread());
  if (search_._searchPredicate == nullptr)
    return;
  if (path == nullptr) {
    --threadCount_;
  } else {
    // If memory is short, the path is skipped.
    tryTwice([&] { paths_.emplace_back(path); });
  }
  readAhead_.follow(paths_);
  if (!paths_.empty() && search_._bCancel == 0 && threadCount_ < mostWorkers) {
    const Ref<FolderAhead> folder = readAhead_.first();
    if (folder ? start(workersAhead_, folder) : start(workers_, paths_.front())) {
      paths_.pop_front();
      readAhead_.removeFirst();
    }
  }
  scheduleEndIfDone();
}

void WorkerPool::addFromWorker(const Ref<const NSString> &path) {
  if (MainRunLoop::shared().isMainThread()) {
    add(path.get());
    return;
  }
  performOnMainThread([this, search = Ref<RunningSearch>(&search_), path] { add(path.get()); });
}

void WorkerPool::startAtOnce(const Ref<const NSString> &path) noexcept {
  start(workers_, path);
  scheduleEndIfDone();
}

template <class Workers, class Path>
bool WorkerPool::start(Workers &workers, const Path &path) noexcept {
  const auto worker = std::find_if(workers.begin(), workers.end(),
                                   [](const auto &candidate) { return candidate.isFree(); });
  if (worker == workers.end())
    return false;
  worker->start(*this, path);
  ++threadCount_;
  return true;
}

void WorkerPool::scheduleEndIfDone() noexcept {
  if (threadCount_ <= 0)
    end_.schedule(delayOfEnd);
}

void WorkerPool::Worker::start(WorkerPool &pool, const Ref<const NSString> &path) noexcept {
  pool_ = &pool;
  search_ = Ref<RunningSearch>(&pool.search_);
  path_ = path;
  NSThread::detachNewThread(*this);
}

void WorkerPool::Worker::ended() noexcept {
  path_ = nullptr;
  // This object is part of the engine, which may be destroyed here.
  const Ref<RunningSearch> search = std::move(search_);
}

void WorkerPool::WorkerAhead::start(WorkerPool &pool, Ref<FolderAhead> folder) noexcept {
  pool_ = &pool;
  search_ = Ref<RunningSearch>(&pool.search_);
  folder_ = std::move(folder);
  MainRunLoop::shared().beginActivity();
  folder_->await(*this);
}

void WorkerPool::WorkerAhead::run() {
  if (isUsedUp()) {
    findings_ = folder_->take();
    queued_ = handedOver_ = 0;
  }
  for (std::size_t i = 0; i < mostQueuedAtOnce && queued_ < findings_.subFolders.size(); ++i)
    pool_->add(findings_.subFolders[queued_++].get());
  // What was found before a cancel, but not handed over, is dropped.
  if (search_->_bCancel != 0)
    handedOver_ = findings_.files.size();
  else if (handedOver_ < findings_.files.size())
    pool_->distribution_.takeFound(std::move(findings_.files[handedOver_++]));
  if (isUsedUp() && findings_.isLast)
    pool_->add(nullptr);
}

void WorkerPool::WorkerAhead::finished() noexcept {
  if (!isUsedUp()) {
    MainRunLoop::shared().post(*this);
    return;
  }
  if (!findings_.isLast) {
    folder_->await(*this);
    return;
  }
  findings_ = {};
  queued_ = handedOver_ = 0;
  folder_ = nullptr;
  MainRunLoop::shared().endActivity();
  // This object is part of the engine, which may be destroyed here.
  const Ref<RunningSearch> search = std::move(search_);
}

} // namespace searchsystem
