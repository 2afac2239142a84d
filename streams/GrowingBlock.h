#pragma once

#include <cstddef>
#include <memory>

namespace searchsystem {

/// A heap block that grows in small steps and seldom moves: it reserves more than was requested, so
/// that on average a byte is copied a bounded number of times however small the steps are.
///
/// Ownership: owns its bytes. Threads: one at a time.
class GrowingBlock {
public:
  /// The bytes, aligned for any type; null before the first `grow`.
  [[nodiscard]] char *bytes() const noexcept { return bytes_.get(); }

  /// Makes `capacity` bytes usable: keeps the first `kept` and zeroes the rest. `kept` is at most
  /// `capacity` and the previous capacity. If the bytes move, `former` receives the old block, so
  /// that they can still be read there. False, and nothing changed, if memory is short.
  [[nodiscard]] bool grow(std::size_t kept, std::size_t capacity, GrowingBlock &former) noexcept;

private:
  std::unique_ptr<char[]> bytes_;
  std::size_t room_ = 0;
};

} // namespace searchsystem
