#include "platform/foundation/ThreadPool.h"

#include "platform/foundation/NSCondition.h"
#include "platform/foundation/NSLock.h"
#include "platform/foundation/SystemCalls.h"

#include <chrono>
#include <csignal>
#include <cstddef>
#include <pthread.h>

namespace searchsystem {

namespace {

constexpr std::size_t stackSize = std::size_t{1} << 20;

/// How long a thread without work waits for more before it ends.
constexpr std::chrono::seconds idleTime{2};

struct IdleThread {
  Runnable *work = nullptr;
  NSCondition isCalled;
  IdleThread *next = nullptr;
};

NSLock lock;
/// The most recently idle thread comes first.
IdleThread *firstIdle PF_GUARDED_BY(lock) = nullptr;

/// Null after `idleTime` without work.
Runnable *waitForWork() noexcept {
  const NSCondition::Clock::time_point end = NSCondition::Clock::now() + idleTime;
  IdleThread self;
  const LockGuard guard(lock);
  self.next = firstIdle;
  firstIdle = &self;
  while (self.work == nullptr && self.isCalled.waitUntil(lock, end)) {
  }
  // The caller removed it from the list, which the analyzer cannot see.
  if (self.work != nullptr)
    return self.work; // NOLINT(clang-analyzer-core.StackAddressEscape)
  IdleThread **link = &firstIdle;
  while (*link != &self)
    link = &(*link)->next;
  *link = self.next;
  return nullptr;
}

void *threadBody(void *first) {
  for (auto *work = static_cast<Runnable *>(first); work != nullptr; work = waitForWork())
    work->runOnThread();
  return nullptr;
}

bool startThread(Runnable &work) noexcept {
  pthread_attr_t attributes;
  if (pthread_attr_init(&attributes) != 0)
    return false;
  pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
  pthread_attr_setstacksize(&attributes, stackSize);

  // A thread inherits its creator's signal mask; signals are left to the host.
  sigset_t all;
  sigset_t previous;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &previous);
  pthread_t identity{};
  const int error = systemCalls().startThread(&identity, &attributes, threadBody, &work);
  pthread_sigmask(SIG_SETMASK, &previous, nullptr);
  pthread_attr_destroy(&attributes);
  return error == 0;
}

} // namespace

bool ThreadPool::run(Runnable &work) noexcept {
  {
    const LockGuard guard(lock);
    if (IdleThread *const thread = firstIdle) {
      firstIdle = thread->next;
      thread->work = &work;
      thread->isCalled.signal();
      return true;
    }
  }
  return startThread(work);
}

} // namespace searchsystem
