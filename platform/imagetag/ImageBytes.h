#pragma once

#include "platform/foundation/FileBeginning.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace searchsystem {

/// A range of an image's bytes, in memory or at the beginning of a file, which is read only as far
/// as needed.
///
/// Ownership: borrows the bytes, or the file. Threads: one at a time.
class ImageBytes {
public:
  explicit ImageBytes(std::string_view bytes) noexcept : bytes_(bytes), size_(bytes.size()) {}
  explicit ImageBytes(FileBeginning &file) noexcept : file_(&file), size_(file.size()) {}

  /// The range's offset in the image.
  [[nodiscard]] std::size_t begin() const noexcept { return begin_; }

  /// The number of bytes; a truncated or unreadable file may have fewer.
  [[nodiscard]] std::size_t size() const noexcept { return size_; }

  /// Up to `size` bytes from `offset` on, as a range.
  [[nodiscard]] ImageBytes range(std::size_t offset, std::size_t size) const noexcept {
    ImageBytes bytes = *this;
    offset = std::min(offset, size_);
    bytes.begin_ += offset;
    bytes.size_ = std::min(size, size_ - offset);
    return bytes;
  }

  /// Up to `size` bytes from `offset` on.
  [[nodiscard]] std::string_view part(std::size_t offset, std::size_t size) const noexcept {
    const ImageBytes wanted = range(offset, size);
    return file_ != nullptr ? file_->part(wanted.begin_, wanted.size_)
                            : bytes_.substr(wanted.begin_, wanted.size_);
  }

  /// The contiguous bytes from `offset` on; empty only if there are none.
  [[nodiscard]] std::string_view run(std::size_t offset) const noexcept {
    if (file_ == nullptr || offset >= size_)
      return part(offset, size_);
    return file_->restOfStep(begin_ + offset).substr(0, size_ - offset);
  }

private:
  FileBeginning *file_ = nullptr;
  std::string_view bytes_;
  std::size_t begin_ = 0;
  std::size_t size_;
};

} // namespace searchsystem
