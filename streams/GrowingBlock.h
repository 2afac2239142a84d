#pragma once

#include <cstddef>

namespace searchsystem {

/// A heap block that grows in small steps and seldom moves: it reserves more than was requested, so
/// that on average a byte is copied a bounded number of times however small the steps are.
///
/// Ownership: owns its bytes. One pointer wide; its room is stored before the bytes.
/// Threads: one at a time.
class GrowingBlock {
public:
  GrowingBlock() noexcept = default;
  GrowingBlock(GrowingBlock &&other) noexcept;
  GrowingBlock &operator=(GrowingBlock &&other) noexcept;
  GrowingBlock(const GrowingBlock &) = delete;
  GrowingBlock &operator=(const GrowingBlock &) = delete;
  ~GrowingBlock() {
    if (bytes_ != nullptr)
      free();
  }

  /// The bytes, aligned for any type; null before the first `grow`.
  [[nodiscard]] char *bytes() const noexcept { return bytes_; }

  /// Makes `capacity` bytes usable: keeps the first `kept` and zeroes the rest. `kept` is at most
  /// `capacity` and the previous capacity. If the bytes move, `former` receives the old block, so
  /// that they can still be read there. False, and nothing changed, if memory is short.
  [[nodiscard]] bool grow(std::size_t kept, std::size_t capacity, GrowingBlock &former) noexcept;

  /// Frees the bytes; the block is as after construction.
  void free() noexcept;

private:
  char *bytes_ = nullptr;
};

} // namespace searchsystem
