#include "platform/foundation/MainRunLoop.h"

#include "platform/foundation/LoopDescriptor.h"
#include "platform/foundation/MainLoop.h"
#include "platform/foundation/NeverDestroyed.h"
#include "platform/foundation/ProcessorTime.h"
#include "platform/foundation/YieldUntil.h"

#include <algorithm>
#include <cassert>
#include <unistd.h>
#include <utility>

namespace {

constexpr std::chrono::milliseconds dispatchBudget{8};
constexpr int yieldsBeforeSleep = 3;

/// How long work that was posted quietly may lie while all jobs wait for a disk.
constexpr std::chrono::milliseconds quietTime{2};

pid_t currentThread() noexcept {
  static thread_local const pid_t thread = gettid();
  return thread;
}

std::chrono::nanoseconds realNow() noexcept { return MainRunLoop::Clock::now().time_since_epoch(); }

} // namespace

void WorkQueue::append(Work &work, std::uint64_t number) noexcept {
  work.next_ = nullptr;
  work.number_ = number;
  if (last_ != nullptr)
    last_->next_ = &work;
  else
    first_ = &work;
  last_ = &work;
}

void WorkQueue::prepend(Work &work) noexcept {
  work.next_ = first_;
  work.number_ = 0;
  first_ = &work;
  if (last_ == nullptr)
    last_ = &work;
}

void WorkQueue::append(WorkQueue &other) noexcept {
  if (other.isEmpty())
    return;
  if (last_ != nullptr)
    last_->next_ = other.first_;
  else
    first_ = other.first_;
  last_ = other.last_;
  other.first_ = other.last_ = nullptr;
}

bool WorkQueue::remove(const Work &work) noexcept {
  Work *before = nullptr;
  for (Work *element = first_; element != nullptr; before = element, element = element->next_) {
    if (element != &work)
      continue;
    (before != nullptr ? before->next_ : first_) = element->next_;
    if (last_ == element)
      last_ = before;
    return true;
  }
  return false;
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

void MainRunLoop::pushIncoming(Work &work) noexcept {
  Work *first = incoming_.load(std::memory_order_relaxed);
  do
    work.next_ = first;
  while (!incoming_.compare_exchange_weak(first, &work));
}

void MainRunLoop::wakeSleeper() noexcept {
  if (isAsleep_.load() && isAsleep_.exchange(false))
    wakeup_.wake();
}

void MainRunLoop::wake() noexcept {
  wakeSleeper();
  if (LoopDescriptor *const descriptor = descriptor_.load())
    if (!isSignaled_.exchange(true))
      descriptor->signal();
}

void MainRunLoop::post(Work &work) noexcept {
  pushIncoming(work);
  wake();
}

void MainRunLoop::postQuietly(Work &work) noexcept {
  pushIncoming(work);
  if (!areJobsPlenty())
    wake();
}

bool MainRunLoop::areJobsPlenty() const noexcept {
  return runningJobs_.load(std::memory_order_relaxed) >= 2 * processorCount();
}

void MainRunLoop::wakeForWork() noexcept {
  if (hasIncoming())
    wake();
}

void MainRunLoop::schedule(TimedWork &work, std::chrono::nanoseconds delay) noexcept {
  assert(isMainThread());
  if (work.isScheduled_)
    return;
  work.isScheduled_ = true;
  work.deadline_ = now() + delay;
  TimedWork *before = lastTimer_;
  while (before != nullptr && before->deadline_ > work.deadline_)
    before = before->previousTimer_;
  work.previousTimer_ = before;
  work.nextTimer_ = before != nullptr ? before->nextTimer_ : firstTimer_;
  (before != nullptr ? before->nextTimer_ : firstTimer_) = &work;
  (work.nextTimer_ != nullptr ? work.nextTimer_->previousTimer_ : lastTimer_) = &work;
  updateDescriptor();
}

bool MainRunLoop::clockMayJump() const noexcept {
  return isVirtual_ && firstTimer_ != nullptr && activities_.load() == 0;
}

void MainRunLoop::beginActivity() noexcept { activities_.fetch_add(1); }

void MainRunLoop::endActivity() noexcept {
  if (activities_.fetch_sub(1) != 1)
    return;
  wakeSleeper();
  // The clock may jump now, and a host that watches the descriptor must hear of it.
  if (isMainThread())
    updateDescriptor();
}

void MainRunLoop::takeDueWork() noexcept {
  // The descriptor is reset before its flag, and the flag before the queue is looked at: work that
  // arrives in between is found below, and what arrives later signals anew.
  if (LoopDescriptor *const descriptor = descriptor_.load()) {
    descriptor->reset();
    isSignaled_.store(false);
  }
  if (hasIncoming()) {
    WorkQueue arrived;
    Work *newest = incoming_.exchange(nullptr);
    while (newest != nullptr)
      arrived.prepend(*std::exchange(newest, newest->next_));
    while (Work *const work = arrived.takeUpTo(0))
      ready_.append(*work, ++lastNumber_);
  }
  if (ready_.isEmpty() && clockMayJump())
    virtualNow_ = std::max(virtualNow_, firstTimer_->deadline_);
  if (firstTimer_ == nullptr)
    return;
  const std::chrono::nanoseconds moment = now();
  while (firstTimer_ != nullptr && firstTimer_->deadline_ <= moment) {
    TimedWork *const timer = firstTimer_;
    firstTimer_ = timer->nextTimer_;
    (firstTimer_ != nullptr ? firstTimer_->previousTimer_ : lastTimer_) = nullptr;
    ready_.append(*timer, ++lastNumber_);
  }
}

bool MainRunLoop::dispatch() noexcept { return dispatch(nullptr); }

bool MainRunLoop::dispatch(const Run *run) noexcept {
  assert(isMainThread());
  takeDueWork();
  const std::uint64_t last = ready_.lastNumber();
  if (ready_.isEmpty()) {
    // The descriptor's own deadline may have passed, and stays readable until it is set anew.
    updateDescriptor();
    return false;
  }
  // A run of the loop by itself goes on with the next batch anyway.
  const bool isLimited = run == nullptr;
  const Clock::time_point end = isLimited ? Clock::now() + dispatchBudget : Clock::time_point();
  bool hasRun = false;
  while (Work *work = ready_.takeUpTo(last)) {
    hasRun = true;
    try {
      work->run();
    } catch (...) {
      // Nobody could be told, and the work that waits behind must not suffer.
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
  RunResult result = RunResult::Stopped;
  for (;;) {
    const bool hasRun = dispatch(&run);
    if (run.isStopped)
      break;
    if (hasRun && untilWorkIsDone) {
      result = RunResult::HandledWork;
      break;
    }
    if (limit && Clock::now() >= *limit) {
      result = RunResult::TimedOut;
      break;
    }
    if (!hasRun)
      waitForWork(run, limit);
  }
  const LockGuard guard(lock_);
  innermost_ = run.outer;
  return result;
}

std::optional<std::chrono::nanoseconds> MainRunLoop::nextLook() const noexcept {
  std::optional<std::chrono::nanoseconds> moment;
  if (!isVirtual_ && firstTimer_ != nullptr)
    moment = firstTimer_->deadline_;
  if (areJobsPlenty()) {
    const std::chrono::nanoseconds look = realNow() + quietTime;
    moment = moment ? std::min(*moment, look) : look;
  }
  return moment;
}

void MainRunLoop::waitForWork(const Run &run, std::optional<Clock::time_point> limit) noexcept {
  const auto isWorthLooking = [this] {
    return hasIncoming() || runningJobs_.load(std::memory_order_relaxed) == 0;
  };
  yieldUntil(yieldsBeforeSleep, isWorthLooking, areJobsWaiting() ? patientPauses : momentaryPauses);

  std::optional<Clock::time_point> end = limit;
  if (const std::optional<std::chrono::nanoseconds> next = nextLook()) {
    const Clock::time_point moment(*next);
    end = end ? std::min(*end, moment) : moment;
  }
  // Whoever posts looks at the flag after it has posted, and this looks for work after it has set
  // the flag: one of the two sees the other.
  isAsleep_.store(true);
  while (!hasIncoming() && !run.isStopped && !clockMayJump() && isAsleep_.load())
    if (!wakeup_.sleep(end))
      break;
  isAsleep_.store(false);
}

void MainRunLoop::stop() noexcept {
  {
    const LockGuard guard(lock_);
    if (innermost_ == nullptr)
      return;
    innermost_->isStopped = true;
  }
  wakeSleeper();
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
  descriptor->setDeadline(nextLook());
  if (!ready_.isEmpty() || hasIncoming() || clockMayJump())
    wake();
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

void PFMainLoopBindToCurrentThread(void) { MainRunLoop::shared().bindToCurrentThread(); }

int PFMainLoopGetDescriptor(void) { return MainRunLoop::shared().descriptor(); }

int PFMainLoopDispatch(void) { return MainRunLoop::shared().dispatch() ? 1 : 0; }

void PFMainLoopSetClock(int clock) {
  MainRunLoop::shared().useVirtualClock(clock == PFMainLoopClockVirtual);
}

double PFMainLoopGetTime(void) {
  return std::chrono::duration<double>(MainRunLoop::shared().now()).count();
}
