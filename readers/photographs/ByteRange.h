#pragma once

#include "readers/photographs/FileWindows.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace searchsystem {

/// A part of a photograph's bytes. Offsets count from its beginning, and nothing outside of it is
/// given out. Cheap to copy; the windows must outlive it.
class ByteRange {
public:
  explicit ByteRange(FileWindows &file) noexcept : file_(&file), begin_(0), size_(file.size()) {}

  [[nodiscard]] std::uint64_t size() const noexcept { return size_; }

  /// As `FileWindows` does.
  [[nodiscard]] std::string_view at(std::uint64_t offset, std::size_t count) const {
    return holds(offset, count) ? file_->at(begin_ + offset, count) : std::string_view();
  }
  /// The header of a part that `passed` bytes before it were no use for: after many of them the
  /// next part is likely to be as long, and nothing behind the header is read.
  [[nodiscard]] std::string_view headerBehind(std::uint64_t passed, std::uint64_t offset,
                                              std::size_t count) const {
    if (!holds(offset, count))
      return {};
    return passed > FileWindows::longestView ? file_->peek(begin_ + offset, count)
                                             : file_->at(begin_ + offset, count);
  }
  [[nodiscard]] std::string read(std::uint64_t offset, std::size_t count) const {
    if (offset >= size_)
      return {};
    return file_->read(begin_ + offset,
                       static_cast<std::size_t>(std::min<std::uint64_t>(count, size_ - offset)));
  }
  /// All of it, or its first bytes.
  [[nodiscard]] std::string read(std::size_t most) const { return read(0, most); }

  [[nodiscard]] bool holds(std::uint64_t offset, std::uint64_t count) const noexcept {
    return offset <= size_ && count <= size_ - offset;
  }
  /// What of these bytes lies inside.
  [[nodiscard]] ByteRange part(std::uint64_t offset, std::uint64_t count) const noexcept {
    ByteRange part = *this;
    part.begin_ += std::min(offset, size_);
    part.size_ = std::min(count, size_ - std::min(offset, size_));
    return part;
  }
  [[nodiscard]] ByteRange from(std::uint64_t offset) const noexcept { return part(offset, size_); }

  [[nodiscard]] ReadBudget &budget() const noexcept { return file_->budget(); }

private:
  FileWindows *file_;
  std::uint64_t begin_;
  std::uint64_t size_;
};

} // namespace searchsystem
