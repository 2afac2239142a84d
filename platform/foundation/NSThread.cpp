#include "platform/foundation/NSThread.h"

#include "platform/foundation/Perform.h"

#include <cassert>
#include <utility>

namespace searchsystem {

namespace {

thread_local ThreadJob *currentJob = nullptr;

} // namespace

void ThreadJob::performAtExit(Action action, void *target) noexcept {
  if (currentJob == nullptr) {
    performOnMainThreadAndWait([&] {
      action(target);
      return false;
    });
    return;
  }
  currentJob->exitAction_ = action;
  currentJob->target_ = target;
}

void ThreadJob::execute() noexcept {
  ThreadJob *const outer = std::exchange(currentJob, this);
  try {
    main();
  } catch (...) {
    // A failed job ends like any other.
  }
  currentJob = outer;
}

void ThreadJob::runOnThread() noexcept {
  execute();
  MainRunLoop::shared().post(*this);
}

void ThreadJob::run() {
  if (!hasThread_)
    execute();
  else if (const Action action = std::exchange(exitAction_, nullptr))
    action(target_);
}

void ThreadJob::finished() noexcept {
  MainRunLoop &loop = MainRunLoop::shared();
  if (!std::exchange(hasThread_, true)) {
    // The body has just run here. Post the end, so that everything it posted runs first.
    loop.post(*this);
    return;
  }
  loop.endActivity();
  ended();
}

void NSThread::detachNewThread(ThreadJob &job) noexcept {
  MainRunLoop &loop = MainRunLoop::shared();
  assert(loop.isMainThread());
  loop.beginActivity();
  job.hasThread_ = true;
  if (ThreadPool::run(job))
    return;
  job.hasThread_ = false;
  loop.post(job);
}

} // namespace searchsystem
