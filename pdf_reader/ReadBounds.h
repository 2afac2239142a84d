#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace searchsystem {

/// Bounds on reading: a damaged document may ask for the same bytes again and again. Sound
/// documents stay far below.
///
/// Threads: one at a time.
class ReadBounds {
public:
  enum class Kind : std::uint8_t {
    /// All bytes read from the file: past it reads fail.
    file,
    /// What parses of pages and of the mark read: past it they skip what others have read.
    nodes,
    /// What is read of contents more than once: past it contents count as without the keyword.
    contents
  };

  explicit ReadBounds(long fileSize = 0) noexcept
      : left_{bound(fileSize, 32, 4L << 20), bound(fileSize, 4, 1L << 17),
              bound(fileSize, 8, 1L << 17)} {}

  /// Counts bytes as read; false if the bound does not allow them.
  bool take(Kind kind, long bytes) noexcept {
    long &left = left_[static_cast<std::size_t>(kind)];
    if (left < bytes)
      return false;
    left -= bytes;
    return true;
  }

  /// Counts bytes that were read, even beyond the bound.
  void note(Kind kind, long bytes) noexcept {
    long &left = left_[static_cast<std::size_t>(kind)];
    left = std::max(left - bytes, 0L);
  }

  [[nodiscard]] bool isSpent(Kind kind) const noexcept {
    return left_[static_cast<std::size_t>(kind)] == 0;
  }

private:
  static constexpr long bound(long fileSize, long times, long besides) noexcept {
    constexpr long most = std::numeric_limits<long>::max();
    const long size = std::max(fileSize, 0L);
    return size > (most - besides) / times ? most : times * size + besides;
  }

  std::array<long, 3> left_;
};

} // namespace searchsystem
