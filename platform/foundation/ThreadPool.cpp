#include "platform/foundation/ThreadPool.h"

#include "platform/foundation/NSThread.h"
#include "platform/foundation/ProcessorTime.h"
#include "platform/foundation/SystemCalls.h"
#include "platform/foundation/YieldUntil.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <pthread.h>
#include <utility>

namespace {

constexpr std::size_t stackSize = std::size_t{1} << 20;

/// How long a thread without a job waits for the next before it ends.
constexpr std::chrono::seconds idleTime{2};

/// How often a watching thread looks at the queue.
constexpr std::chrono::microseconds watchTime{500};

/// Progress of a busy thread between two of these looks that shows that it hardly waits.
constexpr int jobsOfBusyThread = 4;

/// After so many jobs it is judged anew whether most of them pause, and how long they run until
/// then.
constexpr int jobsToCount = 32;
constexpr std::chrono::microseconds shortJob{12};

constexpr int yieldsBeforeSleep = 300;

} // namespace

NSLock ThreadPool::lock;
WorkQueue ThreadPool::jobs;
std::atomic<bool> ThreadPool::hasJobs{false};
int ThreadPool::busyThreads = 0;
int ThreadPool::mostBusyThreads = processorCount();
int ThreadPool::comingThreads = 0;
int ThreadPool::takenJobs = 0;
int ThreadPool::countedJobs = 0;
int ThreadPool::pausedJobs = 0;
std::chrono::nanoseconds ThreadPool::timeOfJobs{};
ThreadPool::Sleeper *ThreadPool::watcher = nullptr;
ThreadPool::Sleeper *ThreadPool::firstSleeper = nullptr;

bool ThreadPool::needsThread() noexcept {
  if (jobs.isEmpty() || comingThreads > 0)
    return false;
  return busyThreads < mostBusyThreads || watcher == nullptr;
}

bool ThreadPool::add(ThreadJob &job) noexcept {
  Sleeper *sleeper = nullptr;
  {
    const LockGuard guard(lock);
    jobs.append(job, 0);
    hasJobs.store(true, std::memory_order_relaxed);
    if (!needsThread())
      return true;
    ++comingThreads;
    sleeper = takeSleeper();
  }
  if (callThread(sleeper))
    return true;
  const LockGuard guard(lock);
  --comingThreads;
  const bool isQueued = !jobs.remove(job);
  hasJobs.store(!jobs.isEmpty(), std::memory_order_relaxed);
  return isQueued;
}

ThreadPool::Sleeper *ThreadPool::takeSleeper() noexcept {
  Sleeper *sleeper = std::exchange(watcher, nullptr);
  if (sleeper == nullptr && firstSleeper != nullptr) {
    sleeper = firstSleeper;
    firstSleeper = sleeper->next;
  }
  if (sleeper != nullptr)
    sleeper->isCalled = true;
  return sleeper;
}

bool ThreadPool::callThread(Sleeper *sleeper) noexcept {
  if (sleeper == nullptr)
    return startThread();
  sleeper->wakeup.wake();
  return true;
}

bool ThreadPool::startThread() noexcept {
  pthread_attr_t attributes;
  if (pthread_attr_init(&attributes) != 0)
    return false;
  pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
  pthread_attr_setstacksize(&attributes, stackSize);

  // A thread inherits the mask of the one that starts it: signals are the host's business.
  sigset_t all;
  sigset_t previous;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &previous);
  const auto body = [](void *) -> void * {
    threadBody();
    return nullptr;
  };
  pthread_t identity{};
  const int error = systemCalls().startThread(&identity, &attributes, body, nullptr);
  pthread_sigmask(SIG_SETMASK, &previous, nullptr);
  pthread_attr_destroy(&attributes);
  return error == 0;
}

void ThreadPool::threadBody() noexcept {
  Sleeper self;
  do {
    while (ThreadJob *const job = takeJob()) {
      const Wakeup::Clock::time_point begin = Wakeup::Clock::now();
      const bool hasPaused = job->executeOnThread();
      if (!jobDone(hasPaused, Wakeup::Clock::now() - begin))
        break;
    }
  } while (restUntilCalled(self));
}

ThreadJob *ThreadPool::takeJob() noexcept {
  yieldUntil(
      yieldsBeforeSleep, [] { return hasJobs.load(std::memory_order_relaxed); },
      MainRunLoop::shared().areJobsWaiting() ? patientPauses : momentaryPauses);
  ThreadJob *job = nullptr;
  Sleeper *sleeper = nullptr;
  {
    const LockGuard guard(lock);
    if (jobs.isEmpty() || busyThreads >= mostBusyThreads)
      return nullptr;
    job = static_cast<ThreadJob *>(jobs.takeUpTo(0));
    hasJobs.store(!jobs.isEmpty(), std::memory_order_relaxed);
    --comingThreads;
    ++busyThreads;
    ++takenJobs;
    if (!needsThread())
      return job;
    ++comingThreads;
    sleeper = takeSleeper();
  }
  if (!callThread(sleeper))
    abandonJobs();
  return job;
}

bool ThreadPool::jobDone(bool hasPaused, std::chrono::nanoseconds time) noexcept {
  const LockGuard guard(lock);
  --busyThreads;
  ++comingThreads;
  noteEndOfJob(hasPaused, time);
  return busyThreads + comingThreads <= mostBusyThreads;
}

void ThreadPool::noteEndOfJob(bool hasPaused, std::chrono::nanoseconds time) noexcept {
  pausedJobs += hasPaused ? 1 : 0;
  timeOfJobs += time;
  if (++countedJobs < jobsToCount)
    return;
  const bool areShort = timeOfJobs < jobsToCount * shortJob;
  timeOfJobs = {};
  MainRunLoop &loop = MainRunLoop::shared();
  loop.setAreJobsWaiting(areShort && pausedJobs >= countedJobs * 3 / 4 &&
                         loop.activities() < processorCount());
  countedJobs = pausedJobs = 0;
}

void ThreadPool::abandonJobs() noexcept {
  WorkQueue abandoned;
  {
    const LockGuard guard(lock);
    --comingThreads;
    abandoned.append(jobs);
    hasJobs.store(false, std::memory_order_relaxed);
  }
  while (Work *const work = abandoned.takeUpTo(0))
    static_cast<ThreadJob &>(*work).executeOnMainThread(false);
}

bool ThreadPool::restUntilCalled(Sleeper &self) noexcept {
  bool watches = false;
  {
    const LockGuard guard(lock);
    if (!jobs.isEmpty() && busyThreads + comingThreads <= mostBusyThreads)
      return true;
    --comingThreads;
    self.isCalled = false;
    watches = watcher == nullptr && (busyThreads > 0 || !jobs.isEmpty());
    if (watches) {
      watcher = &self;
    } else {
      self.next = firstSleeper;
      firstSleeper = &self;
    }
  }
  MainRunLoop::shared().wakeForWork();
  if (!watches)
    return sleepUntilCalled(self);
  watch(self);
  return true;
}

void ThreadPool::watch(Sleeper &self) noexcept {
  for (;;) {
    const auto begin = Wakeup::Clock::now();
    const std::chrono::nanoseconds usedBefore = processorTime();
    if (self.wakeup.sleep(begin + watchTime))
      return;
    const std::chrono::nanoseconds used = processorTime() - usedBefore;
    const std::chrono::nanoseconds had = (Wakeup::Clock::now() - begin) * processorCount();
    const LockGuard guard(lock);
    const bool areProcessorsIdle =
        used < had * 3 / 4 && takenJobs < jobsOfBusyThread * std::max(busyThreads, 1);
    takenJobs = 0;
    if (self.isCalled)
      break;
    if (!areProcessorsIdle && mostBusyThreads > processorCount())
      --mostBusyThreads;
    if (areProcessorsIdle && !jobs.isEmpty())
      mostBusyThreads = std::max(mostBusyThreads, busyThreads) + 1;
    else if (busyThreads > 0 || !jobs.isEmpty())
      continue;
    else
      mostBusyThreads = processorCount();
    watcher = nullptr;
    ++comingThreads;
    return;
  }
  // Somebody is just about to wake this thread, and must find it.
  self.wakeup.sleep();
}

bool ThreadPool::sleepUntilCalled(Sleeper &self) noexcept {
  if (self.wakeup.sleep(Wakeup::Clock::now() + idleTime))
    return true;
  {
    const LockGuard guard(lock);
    if (!self.isCalled) {
      Sleeper **link = &firstSleeper;
      while (*link != &self)
        link = &(*link)->next;
      *link = self.next;
      return false;
    }
  }
  // Somebody is just about to wake this thread, and must find it.
  self.wakeup.sleep();
  return true;
}
