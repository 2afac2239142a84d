#include "platform/foundation/NSThread.h"

#include "platform/foundation/ThreadPool.h"

#include <cassert>
#include <utility>

namespace {

thread_local ThreadJob *currentJob = nullptr;

} // namespace

void ThreadJob::performAtExit(Action action, void *target) noexcept {
  if (currentJob == nullptr) {
    performOnMainThreadAndWait([&] { action(target); });
    return;
  }
  currentJob->exitAction_ = action;
  currentJob->target_ = target;
}

bool ThreadJob::performAndGoOn(Turn turn, void *target) noexcept {
  if (currentJob == nullptr) {
    bool goesOn = true;
    while (goesOn)
      performOnMainThreadAndWait([&] { goesOn = turn(target); });
    return true;
  }
  currentJob->turn_ = turn;
  currentJob->target_ = target;
  currentJob->isPaused_ = true;
  return false;
}

ThreadJob *ThreadJob::current() noexcept { return currentJob; }

void ThreadJob::execute() noexcept {
  ThreadJob *const outer = std::exchange(currentJob, this);
  try {
    main();
  } catch (...) {
    // The job has failed; that it is over is reported all the same.
  }
  currentJob = outer;
}

void ThreadJob::run() {
  if (!hasThread_) {
    execute();
  } else if (const Turn turn = std::exchange(turn_, nullptr)) {
    if (turn(target_))
      turn_ = turn;
  } else if (const Action action = std::exchange(exitAction_, nullptr)) {
    action(target_);
  }
}

void ThreadJob::finished() noexcept {
  MainRunLoop &loop = MainRunLoop::shared();
  if (!std::exchange(hasThread_, true)) {
    // The body has just run here. As with a thread, its end comes after all that it has posted.
    loop.post(*this);
    return;
  }
  if (turn_ != nullptr) {
    loop.post(*this);
    return;
  }
  if (std::exchange(isPaused_, false)) {
    loop.jobStarted();
    resume();
    return;
  }
  loop.endActivity();
  ended();
}

bool ThreadJob::executeOnThread() noexcept {
  execute();
  const bool hasPaused = isPaused_;
  MainRunLoop &loop = MainRunLoop::shared();
  loop.jobFinished();
  if (hasPaused)
    loop.post(*this);
  else
    loop.postQuietly(*this);
  return hasPaused;
}

void ThreadJob::resume() noexcept {
  const Demand demanded = demand();
  hasThread_ = demanded == Demand::Thread;
  if (hasThread_ && ThreadPool::add(*this))
    return;
  executeOnMainThread(demanded == Demand::MainThreadQuietly);
}

void ThreadJob::executeOnMainThread(bool isQuiet) noexcept {
  hasThread_ = false;
  MainRunLoop &loop = MainRunLoop::shared();
  loop.jobFinished();
  if (isQuiet)
    loop.postQuietly(*this);
  else
    loop.post(*this);
}

void NSThread::detachNewThread(ThreadJob &job) noexcept {
  detachWaitingThread(job);
  job.resume();
}

void NSThread::detachWaitingThread(ThreadJob &) noexcept {
  MainRunLoop &loop = MainRunLoop::shared();
  assert(loop.isMainThread());
  loop.beginActivity();
  loop.jobStarted();
}
