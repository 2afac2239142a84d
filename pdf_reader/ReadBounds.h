#pragma once

#include <algorithm>
#include <limits>

namespace searchsystem {

/// How many bytes may still be read for some purpose. Threads: one at a time.
class ReadBound {
public:
  /// `times` the size of the file, and `more` bytes.
  ReadBound(long fileSize, long times, long more) noexcept
      : left_(times * std::clamp(fileSize, 0L, std::numeric_limits<long>::max() / 64) + more) {}

  /// Counts bytes as read; false if they exceed the bound.
  bool take(long bytes) noexcept {
    const bool isAllowed = bytes <= left_;
    left_ -= isAllowed ? bytes : 0;
    return isAllowed;
  }

  /// Counts bytes that were read, even if they exceed the bound.
  void note(long bytes) noexcept { left_ = std::max(left_ - bytes, 0L); }

  [[nodiscard]] bool isSpent() const noexcept { return left_ == 0; }

private:
  long left_;
};

/// Bounds on reading: a damaged document may ask for the same bytes again and again. Sound
/// documents stay far below.
struct ReadBounds {
  explicit ReadBounds(long fileSize = 0) noexcept
      : file(fileSize, 32, 4L << 20), nodes(fileSize, 4, 1L << 17),
        contents(fileSize, 8, 1L << 17) {}

  /// All bytes read from the file: past it reads fail.
  ReadBound file;
  /// All bytes that parses of pages and of the mark read: past it they skip what others have read.
  ReadBound nodes;
  /// Bytes of contents that are read again: past it the keyword counts as absent.
  ReadBound contents;
};

} // namespace searchsystem
