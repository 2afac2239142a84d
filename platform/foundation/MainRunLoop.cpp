#include "platform/foundation/MainRunLoop.h"

#include "platform/foundation/LoopDescriptor.h"
#include "platform/foundation/MainLoop.h"
#include "platform/foundation/YieldUntil.h"

#include <algorithm>
#include <cassert>
#include <new>
#include <thread>
#include <unistd.h>
#include <utility>

namespace {

constexpr std::chrono::milliseconds dispatchBudget{8};
constexpr int yieldsBeforeSleep = 3;

int processorCount() noexcept {
  static const int count = static_cast<int>(std::thread::hardware_concurrency());
  return count;
}

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
  alignas(MainRunLoop) static unsigned char memory[sizeof(MainRunLoop)];
  static auto *const loop = ::new (memory) MainRunLoop;
  return *loop;
}

bool MainRunLoop::isMainThread() const noexcept {
  const pid_t bound = mainThread_.load(std::memory_order_relaxed);
  return currentThread() == (bound != 0 ? bound : getpid());
}

void MainRunLoop::bindToCurrentThread() noexcept { mainThread_.store(currentThread()); }

MainRunLoop::Wake MainRunLoop::prepareWake() noexcept {
  Wake wake;
  wake.sleeper = std::exchange(isAsleep_, false);
  if (!std::exchange(isSignaled_, descriptor_ != nullptr))
    wake.descriptor = descriptor_;
  return wake;
}

void MainRunLoop::perform(const Wake &wake) noexcept {
  if (wake.sleeper)
    wakeup_.wake();
  if (wake.descriptor != nullptr)
    wake.descriptor->signal();
}

void MainRunLoop::post(Work &work) noexcept {
  Wake wake;
  {
    const LockGuard guard(lock_);
    incoming_.append(work, ++lastNumber_);
    hasIncoming_.store(true, std::memory_order_relaxed);
    wake = prepareWake();
  }
  perform(wake);
}

void MainRunLoop::postQuietly(Work &work) noexcept {
  if (runningJobs_.load(std::memory_order_relaxed) < 2 * processorCount()) {
    post(work);
    return;
  }
  const LockGuard guard(lock_);
  incoming_.append(work, ++lastNumber_);
  hasIncoming_.store(true, std::memory_order_relaxed);
}

void MainRunLoop::wakeForWork() noexcept {
  Wake wake;
  {
    const LockGuard guard(lock_);
    if (incoming_.isEmpty())
      return;
    wake = prepareWake();
  }
  perform(wake);
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
  Wake wake;
  {
    const LockGuard guard(lock_);
    wake.sleeper = std::exchange(isAsleep_, false);
  }
  perform(wake);
}

void MainRunLoop::takeDueWork() noexcept {
  const LockGuard guard(lock_);
  if (std::exchange(isSignaled_, false))
    descriptor_->reset();
  ready_.append(incoming_);
  hasIncoming_.store(false, std::memory_order_relaxed);
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
  const Clock::time_point end = Clock::now() + dispatchBudget;
  bool hasRun = false;
  while (Work *work = ready_.takeUpTo(last)) {
    hasRun = true;
    try {
      work->run();
    } catch (...) {
      // Nobody could be told, and the work that waits behind must not suffer.
    }
    work->finished();
    if ((run != nullptr && run->isStopped) || Clock::now() >= end)
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

void MainRunLoop::waitForWork(const Run &run, std::optional<Clock::time_point> limit) noexcept {
  const auto isReady = [this] {
    return hasIncoming_.load(std::memory_order_relaxed) ||
           runningJobs_.load(std::memory_order_relaxed) == 0;
  };
  if (yieldUntil(yieldsBeforeSleep, isReady) && hasIncoming_.load(std::memory_order_relaxed))
    return;
  for (;;) {
    std::optional<Clock::time_point> end = limit;
    if (!isVirtual_ && firstTimer_ != nullptr) {
      const Clock::time_point due(firstTimer_->deadline_);
      end = end ? std::min(*end, due) : due;
    }
    {
      const LockGuard guard(lock_);
      isAsleep_ = incoming_.isEmpty() && !run.isStopped && !clockMayJump();
      if (!isAsleep_)
        return;
    }
    if (!wakeup_.sleep(end))
      break;
  }
  const LockGuard guard(lock_);
  isAsleep_ = false;
}

void MainRunLoop::stop() noexcept {
  Wake wake;
  {
    const LockGuard guard(lock_);
    if (innermost_ == nullptr)
      return;
    innermost_->isStopped = true;
    wake = prepareWake();
  }
  perform(wake);
}

int MainRunLoop::descriptor() noexcept {
  assert(isMainThread());
  {
    const LockGuard guard(lock_);
    if (descriptor_ == nullptr)
      descriptor_ = LoopDescriptor::create().release();
    if (descriptor_ == nullptr)
      return -1;
  }
  updateDescriptor();
  const LockGuard guard(lock_);
  return descriptor_->number();
}

void MainRunLoop::updateDescriptor() noexcept {
  Wake wake;
  {
    const LockGuard guard(lock_);
    if (descriptor_ == nullptr)
      return;
    const bool hasRealTimer = !isVirtual_ && firstTimer_ != nullptr;
    descriptor_->setDeadline(hasRealTimer ? std::optional(firstTimer_->deadline_) : std::nullopt);
    if (!ready_.isEmpty() || !incoming_.isEmpty() || clockMayJump())
      wake = prepareWake();
  }
  perform(wake);
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
