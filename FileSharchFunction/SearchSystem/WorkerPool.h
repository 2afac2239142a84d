#pragma once

#include "FileSharchFunction/SearchSystem/Distribution.h"
#include "FileSharchFunction/SearchSystem/ReadAhead.h"
#include "platform/foundation/NSThread.h"
#include "platform/foundation/Perform.h"

#include <array>

namespace searchsystem {

/// A queue of paths and up to five workers, each with one path and its own thread. Every path that
/// is queued and every worker that ends starts at most one worker on the first of the queue. One
/// second after the last worker the pool reports its end.
///
/// Ownership: part of the engine, which each of its workers and the scheduled end keep alive.
/// Threads: main, except where stated.
class WorkerPool {
public:
  /// Does a worker's work, and ends with adding null to the pool. Worker thread.
  using Body = void (*)(RunningSearch &search, const NSString *path) noexcept;

  /// The engine keeps the count of workers. Throws `std::bad_alloc`.
  WorkerPool(RunningSearch &search, Distribution &distribution, int &threadCount);

  /// Sets what workers do. If `filter` is given, folders are read before their turn, with that
  /// filter, for files of the class `type`.
  void begin(Body body, const RequestFilter *filter = nullptr, int type = 0) noexcept;

  /// Queues `path`, or, with null, counts one worker less; then starts a worker if one may be.
  void add(const NSString *path) noexcept;
  /// Queues `path` and returns at once. Throws `std::bad_alloc`. Any thread.
  void addFromWorker(const Ref<const NSString> &path);
  /// Starts a worker on a path that was not queued, whether or not the search is cancelled.
  void startAtOnce(const Ref<const NSString> &path) noexcept;

  [[nodiscard]] bool isIdle() const noexcept { return paths_.empty() && threadCount_ <= 0; }

  /// Has a file of a worker's folder tested before its turn. Any thread.
  void testAhead(const Ref<FileAhead> &file) noexcept { readAhead_.add(file); }

  /// Wakes the main thread for what has been read ahead.
  void wake() noexcept { readAhead_.postHeldBack(); }

private:
  friend struct SearchEngineProbe;

  class Worker final : public ThreadJob {
  public:
    [[nodiscard]] bool isFree() const noexcept { return search_ == nullptr; }
    void start(WorkerPool &pool, const Ref<const NSString> &path) noexcept;

  private:
    void main() override { pool_->body_(*search_, path_.get()); }
    void ended() noexcept override;

    WorkerPool *pool_ = nullptr;
    Ref<RunningSearch> search_;
    Ref<const NSString> path_;
  };

  /// The worker of a folder that is read ahead, which needs no thread: it hands over what was found
  /// there, each file in a turn of the main loop.
  class WorkerAhead final : public Work {
  public:
    [[nodiscard]] bool isFree() const noexcept { return search_ == nullptr; }
    void start(WorkerPool &pool, Ref<FolderAhead> folder) noexcept;

  private:
    void run() override;
    void finished() noexcept override;
    [[nodiscard]] bool isUsedUp() const noexcept {
      return queued_ == findings_.subFolders.size() && handedOver_ == findings_.files.size();
    }

    WorkerPool *pool_ = nullptr;
    Ref<RunningSearch> search_;
    Ref<FolderAhead> folder_;
    FolderFindings findings_;
    std::size_t queued_ = 0;
    std::size_t handedOver_ = 0;
  };

  /// Starts a free worker, if there is one, and counts it.
  template <class Workers, class Path> bool start(Workers &workers, const Path &path) noexcept;
  void reportEnd() noexcept { distribution_.takeEnd(); }
  void scheduleEndIfDone() noexcept;

  friend class ReservedPerform<WorkerPool>;
  void retain() const noexcept { search_.retain(); }
  void release() const noexcept { search_.release(); }

  /// One more than can run: a worker that reports its end is still in its place when the next is
  /// started.
  static constexpr std::size_t workerCount = 6;

  RunningSearch &search_;
  Distribution &distribution_;
  int &threadCount_;
  ReadAhead::Paths paths_;
  ReadAhead readAhead_;
  /// Constant while workers run.
  Body body_ = nullptr;
  std::array<Worker, workerCount> workers_;
  std::array<WorkerAhead, workerCount> workersAhead_;
  ReservedPerform<WorkerPool> end_{*this, &WorkerPool::reportEnd};
};

} // namespace searchsystem
