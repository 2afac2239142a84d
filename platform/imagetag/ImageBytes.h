#pragma once

#include "platform/foundation/FileBeginning.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

/// A range of an image's bytes, which are in memory, or at the beginning of a file: of that no more
/// is read than is asked for.
///
/// Ownership: borrows the bytes, or the file. Threads: one at a time.
class ImageBytes {
public:
  explicit ImageBytes(std::string_view bytes) noexcept : bytes_(bytes), size_(bytes.size()) {}
  explicit ImageBytes(FileBeginning &file) noexcept : file_(&file), size_(file.size()) {}

  /// Where in the image the range begins.
  [[nodiscard]] std::size_t begin() const noexcept { return begin_; }

  /// How many bytes there are; of a file that has been cut short, or cannot be read, fewer.
  [[nodiscard]] std::size_t size() const noexcept { return size_; }

  /// The bytes from `offset` on, as a range of its own, `size` of them or up to the end of this
  /// one.
  [[nodiscard]] ImageBytes range(std::size_t offset, std::size_t size) const noexcept {
    ImageBytes bytes = *this;
    offset = std::min(offset, size_);
    bytes.begin_ += offset;
    bytes.size_ = std::min(size, size_ - offset);
    return bytes;
  }

  /// The bytes from `offset` on, `size` of them or as many as there are.
  [[nodiscard]] std::string_view part(std::size_t offset, std::size_t size) const noexcept {
    const ImageBytes wanted = range(offset, size);
    return file_ != nullptr ? file_->part(wanted.begin_, wanted.size_)
                            : bytes_.substr(wanted.begin_, wanted.size_);
  }

  /// The bytes from `offset` on that can be had at once; none only where there is no byte.
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
