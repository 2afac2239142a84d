#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <optional>

/// What one thread sleeps on until another wakes it. A wake-up that comes before the sleep is not
/// lost: the sleep then ends at once. Several before one sleep count as one.
///
/// It costs nothing to wake a thread that is awake. The object may be destroyed as soon as its
/// sleeper has returned, also while the waker is still on its way out.
/// Threads: one sleeps at a time, any may wake.
class Wakeup {
public:
  using Clock = std::chrono::steady_clock;

  /// Sleeps until woken, or until `deadline` has passed, and then returns false.
  bool sleep(std::optional<Clock::time_point> deadline = std::nullopt) noexcept;

  void wake() noexcept;

  /// Whether a sleep would end at once. For the thread that sleeps.
  [[nodiscard]] bool isWoken() const noexcept {
    return state_.load(std::memory_order_acquire) == Woken;
  }

private:
  enum State : std::uint32_t { Awake, Asleep, Woken };
  std::atomic<std::uint32_t> state_{Awake};
};
