#pragma once

#include <chrono>
#include <memory>
#include <optional>

/// A descriptor that becomes readable when it is signaled, or when a deadline passes.
///
/// Ownership: owns the descriptors behind it. Threads: `signal` any, all else one at a time.
class LoopDescriptor {
public:
  /// Null when the system has no descriptors left.
  static std::unique_ptr<LoopDescriptor> create() noexcept;

  ~LoopDescriptor();
  LoopDescriptor(const LoopDescriptor &) = delete;
  LoopDescriptor &operator=(const LoopDescriptor &) = delete;

  [[nodiscard]] int number() const noexcept { return all_; }

  void signal() noexcept;
  void reset() noexcept;

  /// Sets or, without a value, removes the deadline on the monotonic clock.
  void setDeadline(std::optional<std::chrono::nanoseconds> deadline) noexcept;

private:
  LoopDescriptor(int all, int event, int timer) noexcept
      : all_(all), event_(event), timer_(timer) {}

  const int all_;
  const int event_;
  const int timer_;
  std::optional<std::chrono::nanoseconds> deadline_;
};
