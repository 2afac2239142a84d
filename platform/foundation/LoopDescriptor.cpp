#include "platform/foundation/LoopDescriptor.h"

#include <cstdint>
#include <new>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/timerfd.h>
#include <unistd.h>

namespace {

bool watch(int all, int descriptor) noexcept {
  epoll_event event{};
  event.events = EPOLLIN;
  return epoll_ctl(all, EPOLL_CTL_ADD, descriptor, &event) == 0;
}

void closeIfOpen(int descriptor) noexcept {
  if (descriptor >= 0)
    close(descriptor);
}

} // namespace

std::unique_ptr<LoopDescriptor> LoopDescriptor::create() noexcept {
  const int all = epoll_create1(EPOLL_CLOEXEC);
  const int event = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  const int timer = timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK);
  if (all >= 0 && event >= 0 && timer >= 0 && watch(all, event) && watch(all, timer))
    if (auto *made = new (std::nothrow) LoopDescriptor(all, event, timer))
      return std::unique_ptr<LoopDescriptor>(made);
  closeIfOpen(all);
  closeIfOpen(event);
  closeIfOpen(timer);
  return nullptr;
}

LoopDescriptor::~LoopDescriptor() {
  close(all_);
  close(event_);
  close(timer_);
}

void LoopDescriptor::signal() noexcept {
  const std::uint64_t one = 1;
  [[maybe_unused]] const ssize_t written = write(event_, &one, sizeof one);
}

void LoopDescriptor::reset() noexcept {
  std::uint64_t count = 0;
  [[maybe_unused]] const ssize_t taken = read(event_, &count, sizeof count);
}

void LoopDescriptor::setDeadline(std::optional<std::chrono::nanoseconds> deadline) noexcept {
  if (deadline == deadline_)
    return;
  deadline_ = deadline;
  itimerspec timer{};
  if (deadline) {
    // A deadline of zero would switch the timer off.
    const std::int64_t nanoseconds = deadline->count() > 0 ? deadline->count() : 1;
    timer.it_value.tv_sec = nanoseconds / 1'000'000'000;
    timer.it_value.tv_nsec = nanoseconds % 1'000'000'000;
  }
  timerfd_settime(timer_, TFD_TIMER_ABSTIME, &timer, nullptr);
}
