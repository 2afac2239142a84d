#include "platform/content/WorkerSlots.h"

#include <algorithm>
#include <thread>

namespace searchsystem {

namespace {

constexpr int mostPlaces = 5;

} // namespace

WorkerSlots::WorkerSlots() noexcept
    : free_(std::clamp(static_cast<int>(std::thread::hardware_concurrency()), 1, mostPlaces)) {}

bool WorkerSlots::acquire(const std::atomic<bool> &isCancelled) noexcept {
  const LockGuard guard(lock_);
  if (isCancelled.load())
    return false;
  if (free_ > 0) {
    --free_;
    return true;
  }
  Waiter self;
  Waiter **last = &first_;
  while (*last != nullptr)
    last = &(*last)->next;
  *last = &self;
  while (!self.hasPlace && !isCancelled.load())
    self.condition.wait(lock_);
  if (!self.hasPlace)
    remove(self);
  return self.hasPlace;
}

void WorkerSlots::release() noexcept {
  const LockGuard guard(lock_);
  if (first_ == nullptr) {
    ++free_;
    return;
  }
  Waiter &next = *first_;
  first_ = next.next;
  next.hasPlace = true;
  next.condition.signal();
}

void WorkerSlots::wakeAll() noexcept {
  const LockGuard guard(lock_);
  for (Waiter *waiter = first_; waiter != nullptr; waiter = waiter->next)
    waiter->condition.signal();
}

void WorkerSlots::remove(Waiter &waiter) noexcept {
  Waiter **at = &first_;
  while (*at != &waiter)
    at = &(*at)->next;
  *at = waiter.next;
}

} // namespace searchsystem
