#include "platform/foundation/MainRunLoop.h"

#include "platform/foundation/LoopDescriptor.h"
#include "platform/foundation/MainLoop.h"
#include "platform/foundation/NeverDestroyed.h"

#include <algorithm>
#include <cassert>
#include <unistd.h>
#include <utility>

namespace searchsystem {

namespace {

constexpr std::chrono::milliseconds dispatchBudget{8};

pid_t currentThread() noexcept {
  static thread_local const pid_t thread = gettid();
  return thread;
}

std::chrono::nanoseconds realNow() noexcept { return MainRunLoop::Clock::now().time_since_epoch(); }

} // namespace

void WorkQueue::append(Work &work, std::uint64_t number) noexcept {
  work.next_ = nullptr;
  work.number_ = number;
  (last_ != nullptr ? last_->next_ : first_) = &work;
  last_ = &work;
}

Work *WorkQueue::takeUpTo(std::uint64_t number) noexcept {
  Work *const work = first_;
  if (work == nullptr || work->number_ > number)
    return nullptr;
  first_ = work->next_;
  if (first_ == nullptr)
    last_ = nullptr;
  return work;
}

MainRunLoop &MainRunLoop::shared() noexcept {
  static NeverDestroyed<MainRunLoop> loop;
  return loop.get();
}

bool MainRunLoop::isMainThread() const noexcept {
  const pid_t bound = mainThread_.load(std::memory_order_relaxed);
  return currentThread() == (bound != 0 ? bound : getpid());
}

void MainRunLoop::bindToCurrentThread() noexcept { mainThread_.store(currentThread()); }

void MainRunLoop::signalDescriptor() noexcept {
  if (LoopDescriptor *const descriptor = descriptor_.load())
    if (!isSignaled_.exchange(true))
      descriptor->signal();
}

void MainRunLoop::post(Work &work) noexcept {
  {
    const LockGuard guard(lock_);
    incoming_.append(work, 0);
  }
  hasNews_.signal();
  signalDescriptor();
}

void MainRunLoop::schedule(TimedWork &work, std::chrono::nanoseconds delay) noexcept {
  assert(isMainThread());
  if (work.isScheduled_)
    return;
  work.isScheduled_ = true;
  work.deadline_ = now() + delay;
  TimedWork **place = &firstTimer_;
  while (*place != nullptr && (*place)->deadline_ <= work.deadline_)
    place = &(*place)->nextTimer_;
  work.nextTimer_ = std::exchange(*place, &work);
  updateDescriptor();
}

bool MainRunLoop::clockMayJump() const noexcept {
  return isVirtual_ && firstTimer_ != nullptr && activities_.load() == 0;
}

void MainRunLoop::beginActivity() noexcept { activities_.fetch_add(1); }

void MainRunLoop::endActivity() noexcept {
  assert(isMainThread());
  // The clock may jump now: wake a host that watches the descriptor.
  if (activities_.fetch_sub(1) == 1)
    updateDescriptor();
}

void MainRunLoop::takeDueWork() noexcept {
  // Reset the descriptor before its flag, and the flag before reading the queue: work that arrives
  // in between is found below, and later work signals again.
  if (LoopDescriptor *const descriptor = descriptor_.load()) {
    descriptor->reset();
    isSignaled_.store(false);
  }
  {
    const LockGuard guard(lock_);
    while (Work *const work = incoming_.takeUpTo(0))
      ready_.append(*work, ++lastNumber_);
  }
  if (ready_.isEmpty() && clockMayJump())
    virtualNow_ = std::max(virtualNow_, firstTimer_->deadline_);
  if (firstTimer_ == nullptr)
    return;
  const std::chrono::nanoseconds time = now();
  while (firstTimer_ != nullptr && firstTimer_->deadline_ <= time) {
    TimedWork *const timer = firstTimer_;
    firstTimer_ = timer->nextTimer_;
    ready_.append(*timer, ++lastNumber_);
  }
}

bool MainRunLoop::dispatch(const Run *run) noexcept {
  assert(isMainThread());
  takeDueWork();
  const std::uint64_t last = ready_.lastNumber();
  if (ready_.isEmpty()) {
    // A passed deadline keeps the descriptor readable until it is set again.
    updateDescriptor();
    return false;
  }
  // `run` continues with the next batch anyway.
  const bool isLimited = run == nullptr;
  const Clock::time_point end = isLimited ? Clock::now() + dispatchBudget : Clock::time_point();
  bool hasRun = false;
  while (Work *work = ready_.takeUpTo(last)) {
    hasRun = true;
    try {
      work->run();
    } catch (...) {
      // There is no caller to report to, and later work must still run.
    }
    work->finished();
    if (isLimited ? Clock::now() >= end : run->isStopped.load())
      break;
  }
  updateDescriptor();
  return hasRun;
}

MainRunLoop::RunResult MainRunLoop::run(std::optional<Clock::time_point> limit,
                                        bool untilWorkIsDone) noexcept {
  assert(isMainThread());
  Run run;
  {
    const LockGuard guard(lock_);
    run.outer = std::exchange(innermost_, &run);
  }
  RunResult result = Stopped;
  for (;;) {
    const bool hasRun = dispatch(&run);
    if (run.isStopped)
      break;
    if (hasRun && untilWorkIsDone) {
      result = HandledWork;
      break;
    }
    if (limit && Clock::now() >= *limit) {
      result = TimedOut;
      break;
    }
    if (!hasRun)
      waitForWork(run, limit);
  }
  const LockGuard guard(lock_);
  innermost_ = run.outer;
  return result;
}

std::optional<std::chrono::nanoseconds> MainRunLoop::nextDeadline() const noexcept {
  return isVirtual_ || firstTimer_ == nullptr ? std::nullopt
                                              : std::optional(firstTimer_->deadline_);
}

void MainRunLoop::waitForWork(const Run &run, std::optional<Clock::time_point> limit) noexcept {
  std::optional<Clock::time_point> end = limit;
  if (const std::optional<std::chrono::nanoseconds> next = nextDeadline()) {
    const Clock::time_point due(*next);
    end = end ? std::min(*end, due) : due;
  }
  const LockGuard guard(lock_);
  while (incoming_.isEmpty() && !run.isStopped && !clockMayJump()) {
    if (!end)
      hasNews_.wait(lock_);
    else if (!hasNews_.waitUntil(lock_, *end))
      return;
  }
}

void MainRunLoop::stop() noexcept {
  {
    const LockGuard guard(lock_);
    if (innermost_ == nullptr)
      return;
    innermost_->isStopped = true;
  }
  hasNews_.signal();
}

int MainRunLoop::descriptor() noexcept {
  assert(isMainThread());
  if (descriptor_.load() == nullptr)
    descriptor_.store(LoopDescriptor::create().release());
  if (descriptor_.load() == nullptr)
    return -1;
  updateDescriptor();
  return descriptor_.load()->number();
}

void MainRunLoop::updateDescriptor() noexcept {
  LoopDescriptor *const descriptor = descriptor_.load();
  if (descriptor == nullptr)
    return;
  descriptor->setDeadline(nextDeadline());
  const auto hasIncoming = [this] {
    const LockGuard guard(lock_);
    return !incoming_.isEmpty();
  };
  if (!ready_.isEmpty() || clockMayJump() || hasIncoming())
    signalDescriptor();
}

void MainRunLoop::useVirtualClock(bool isVirtual) noexcept {
  assert(isMainThread());
  if (isVirtual == isVirtual_)
    return;
  const std::chrono::nanoseconds before = now();
  virtualNow_ = before;
  isVirtual_ = isVirtual;
  const std::chrono::nanoseconds shift = now() - before;
  for (TimedWork *timer = firstTimer_; timer != nullptr; timer = timer->nextTimer_)
    timer->deadline_ += shift;
  updateDescriptor();
}

std::chrono::nanoseconds MainRunLoop::now() const noexcept {
  return isVirtual_ ? virtualNow_ : realNow();
}

} // namespace searchsystem

using namespace searchsystem;

void PFMainLoopBindToCurrentThread(void) { MainRunLoop::shared().bindToCurrentThread(); }

int PFMainLoopGetDescriptor(void) { return MainRunLoop::shared().descriptor(); }

int PFMainLoopDispatch(void) { return MainRunLoop::shared().dispatch() ? 1 : 0; }

void PFMainLoopSetClock(int clock) {
  MainRunLoop::shared().useVirtualClock(clock == PFMainLoopClockVirtual);
}

double PFMainLoopGetTime(void) {
  return std::chrono::duration<double>(MainRunLoop::shared().now()).count();
}
