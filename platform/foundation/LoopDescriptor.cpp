#include "platform/foundation/LoopDescriptor.h"

#include <cstdint>
#include <new>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/timerfd.h>
#include <unistd.h>

namespace searchsystem {

namespace {

bool watch(int all, int descriptor) noexcept {
  epoll_event event{};
  event.events = EPOLLIN;
  return epoll_ctl(all, EPOLL_CTL_ADD, descriptor, &event) == 0;
}

} // namespace

LoopDescriptor::LoopDescriptor() noexcept
    : all_(epoll_create1(EPOLL_CLOEXEC)), event_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      timer_(timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK)) {}

std::unique_ptr<LoopDescriptor> LoopDescriptor::create() noexcept {
  std::unique_ptr<LoopDescriptor> made(new (std::nothrow) LoopDescriptor);
  // A call on a descriptor that could not be made fails.
  if (made && watch(made->number(), made->event_.number()) &&
      watch(made->number(), made->timer_.number()))
    return made;
  return nullptr;
}

void LoopDescriptor::signal() noexcept {
  const std::uint64_t one = 1;
  [[maybe_unused]] const ssize_t written = write(event_.number(), &one, sizeof one);
}

void LoopDescriptor::reset() noexcept {
  std::uint64_t count = 0;
  [[maybe_unused]] const ssize_t taken = read(event_.number(), &count, sizeof count);
}

void LoopDescriptor::setDeadline(std::optional<std::chrono::nanoseconds> deadline) noexcept {
  if (deadline == deadline_)
    return;
  deadline_ = deadline;
  itimerspec timer{};
  if (deadline) {
    // Zero would disarm the timer.
    const std::int64_t nanoseconds = deadline->count() > 0 ? deadline->count() : 1;
    timer.it_value.tv_sec = nanoseconds / 1'000'000'000;
    timer.it_value.tv_nsec = nanoseconds % 1'000'000'000;
  }
  timerfd_settime(timer_.number(), TFD_TIMER_ABSTIME, &timer, nullptr);
}

} // namespace searchsystem
