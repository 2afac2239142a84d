#pragma once

#include <mutex>

namespace searchsystem {

#if defined(__clang__)
#define PF_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define PF_THREAD_ANNOTATION(x)
#endif

#define PF_GUARDED_BY(lock) PF_THREAD_ANNOTATION(guarded_by(lock))
#define PF_REQUIRES(lock) PF_THREAD_ANNOTATION(requires_capability(lock))

/// A non-recursive lock. Clang checks the fields declared as guarded by it.
class PF_THREAD_ANNOTATION(capability("mutex")) NSLock {
public:
  void lock() PF_THREAD_ANNOTATION(acquire_capability()) { mutex_.lock(); }
  void unlock() PF_THREAD_ANNOTATION(release_capability()) { mutex_.unlock(); }

private:
  friend class NSCondition;
  std::mutex mutex_;
};

/// Holds a lock as long as it lives.
class PF_THREAD_ANNOTATION(scoped_lockable) LockGuard {
public:
  explicit LockGuard(NSLock &lock) PF_THREAD_ANNOTATION(acquire_capability(lock)) : lock_(lock) {
    lock_.lock();
  }
  ~LockGuard() PF_THREAD_ANNOTATION(release_capability()) { lock_.unlock(); }
  LockGuard(const LockGuard &) = delete;
  LockGuard &operator=(const LockGuard &) = delete;

private:
  NSLock &lock_;
};

} // namespace searchsystem
