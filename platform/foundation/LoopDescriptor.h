#pragma once

#include "platform/foundation/FileDescriptor.h"

#include <chrono>
#include <memory>
#include <optional>

namespace searchsystem {

/// A descriptor that becomes readable when it is signaled or a deadline passes.
///
/// Ownership: owns its descriptors. Threads: `signal` any, all else one at a time.
class LoopDescriptor {
public:
  /// Null if the system has no descriptors or memory left.
  static std::unique_ptr<LoopDescriptor> create() noexcept;

  [[nodiscard]] int number() const noexcept { return all_.number(); }

  void signal() noexcept;
  void reset() noexcept;

  /// Sets the deadline on the monotonic clock, or removes it.
  void setDeadline(std::optional<std::chrono::nanoseconds> deadline) noexcept;

private:
  LoopDescriptor() noexcept;

  const FileDescriptor all_;
  const FileDescriptor event_;
  const FileDescriptor timer_;
  std::optional<std::chrono::nanoseconds> deadline_;
};

} // namespace searchsystem
