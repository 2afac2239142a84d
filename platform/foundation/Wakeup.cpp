#include "platform/foundation/Wakeup.h"

#include <algorithm>
#include <cerrno>
#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

/// futex(2), for a word that only threads of this process look at.
long futex(std::atomic<std::uint32_t> &word, int operation, std::uint32_t value,
           const timespec *deadline) noexcept {
  return syscall(SYS_futex, reinterpret_cast<std::uint32_t *>(&word),
                 operation | FUTEX_PRIVATE_FLAG, value, deadline, nullptr, FUTEX_BITSET_MATCH_ANY);
}

timespec timespecOf(Wakeup::Clock::time_point moment) noexcept {
  const std::int64_t nanoseconds = std::max<std::int64_t>(
      std::chrono::duration_cast<std::chrono::nanoseconds>(moment.time_since_epoch()).count(), 0);
  timespec time{};
  time.tv_sec = nanoseconds / 1'000'000'000;
  time.tv_nsec = nanoseconds % 1'000'000'000;
  return time;
}

} // namespace

bool Wakeup::sleep(std::optional<Clock::time_point> deadline) noexcept {
  const timespec end = deadline ? timespecOf(*deadline) : timespec{};
  std::uint32_t expected = Awake;
  if (state_.compare_exchange_strong(expected, Asleep, std::memory_order_acq_rel)) {
    while (state_.load(std::memory_order_acquire) == Asleep) {
      // The wait with a bit set takes its deadline by the monotonic clock, as a moment.
      const long result = futex(state_, FUTEX_WAIT_BITSET, Asleep, deadline ? &end : nullptr);
      if (result != 0 && errno == ETIMEDOUT)
        break;
    }
  }
  return state_.exchange(Awake, std::memory_order_acq_rel) == Woken;
}

void Wakeup::wake() noexcept {
  // Once the state is Woken the sleeper may return and take this object with it. Waking uses its
  // address only, and at worst some other sleeper looks again.
  if (state_.exchange(Woken, std::memory_order_acq_rel) == Asleep)
    futex(state_, FUTEX_WAKE, 1, nullptr);
}
