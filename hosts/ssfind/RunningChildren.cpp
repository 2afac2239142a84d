#include "hosts/ssfind/RunningChildren.h"

#include <array>
#include <atomic>
#include <csignal>

namespace searchsystem::ssfind {

namespace {

/// 0 is a free place.
std::array<std::atomic<pid_t>, runningChildren::most> targets;
static_assert(std::atomic<pid_t>::is_always_lock_free);

void replace(pid_t old, pid_t other) noexcept {
  for (std::atomic<pid_t> &place : targets) {
    pid_t expected = old;
    if (place.compare_exchange_strong(expected, other))
      return;
  }
}

} // namespace

void runningChildren::add(pid_t target) noexcept { replace(0, target); }

void runningChildren::remove(pid_t target) noexcept { replace(target, 0); }

void runningChildren::sendToAll(int signal) noexcept {
  for (const std::atomic<pid_t> &place : targets)
    if (const pid_t target = place.load(); target != 0)
      kill(target, signal);
}

} // namespace searchsystem::ssfind
