#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>

/// How much of a document is read at most: a damaged one may ask for its bytes to be read again and
/// again. Whole documents stay far below all of it.
///
/// Threads: one at a time.
class ReadBounds {
public:
  enum class Kind : std::uint8_t {
    /// Bytes of the file, whatever for: past them each reading fails.
    file,
    /// What parses of pages and of marks look at: past it they leave out what others have read.
    nodes,
    /// What is read of contents more than once: past it, contents that ask for more have no text.
    contents
  };

  explicit ReadBounds(long fileSize = 0) noexcept
      : left_{bound(fileSize, 32, 4L << 20), bound(fileSize, 4, 1L << 17),
              bound(fileSize, 8, 1L << 17)} {}

  /// Whether so much may be read, which then counts as read.
  bool take(Kind kind, long bytes) noexcept {
    long &left = left_[static_cast<std::size_t>(kind)];
    if (left < bytes)
      return false;
    left -= bytes;
    return true;
  }

  /// Counts what was read, be it too much.
  void note(Kind kind, long bytes) noexcept {
    long &left = left_[static_cast<std::size_t>(kind)];
    left = std::max(left - bytes, 0L);
  }

  [[nodiscard]] bool isWorn(Kind kind) const noexcept {
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
