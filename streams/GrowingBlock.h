#pragma once

#include <cstddef>

/// A heap block that grows in small steps as seen from outside, and seldom moves: behind the bytes
/// that were asked for it keeps room for more, so that a byte is copied a bounded number of times
/// on average however small the steps are.
///
/// Ownership: owns its bytes. One pointer wide; what it knows about its room lies before the bytes.
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

  /// The bytes, aligned for any type; null when nothing was ever asked for.
  [[nodiscard]] char *bytes() const noexcept { return bytes_; }

  /// Makes `capacity` bytes usable: the first `kept` stay, those from there on become zero.
  /// `kept` is at most `capacity` and at most what was usable before. A block that the bytes had to
  /// leave is handed to `former`, so that they can still be read from it.
  /// False when memory is short; then nothing has changed.
  [[nodiscard]] bool grow(std::size_t kept, std::size_t capacity, GrowingBlock &former) noexcept;

  /// Gives the bytes back; the block is as it was when made.
  void free() noexcept;

private:
  char *bytes_ = nullptr;
};
