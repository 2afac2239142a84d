#pragma once

#include "platform/foundation/FileItem.h"
#include "platform/foundation/NSData.h"
#include "platform/foundation/Ref.h"

#include <atomic>
#include <bitset>
#include <cstddef>
#include <optional>
#include <string_view>

/// The first bytes of a file, as many as its size tells, but `mostBytes` at most. The size is the
/// item's own; of a link to a file it is that of the link. They are read in steps, each when one of
/// its bytes is first asked for, and none twice.
///
/// Ownership: owns the open file and the bytes. Threads: one at a time.
class FileBeginning {
public:
  /// No segment of a JPEG file is longer, but for its marker.
  static constexpr std::size_t mostBytes = 65535;
  static constexpr std::size_t stepSize = 1024;

  /// Opens the item, and reads nothing. None when it is no regular file and no link to one, is
  /// empty, cannot be opened, or memory is short. Once `*isStopped` is not 0, which any thread may
  /// set, nothing is opened and every read fails; the flag, which may be null, has to live as long.
  static std::optional<FileBeginning> open(FileItem &item,
                                           const std::atomic<char> *isStopped) noexcept;

  FileBeginning(FileBeginning &&other) noexcept;
  FileBeginning &operator=(FileBeginning &&) = delete;
  ~FileBeginning();

  /// How many bytes there are at most: fewer where a file turns out to be shorter than its size,
  /// and none when a read has failed.
  [[nodiscard]] std::size_t size() const noexcept { return size_; }

  /// The bytes from `offset` on, `size` of them or as many as there are. Valid as long as this.
  [[nodiscard]] std::string_view part(std::size_t offset, std::size_t size) noexcept {
    if (offset >= size_)
      return {};
    if (size > size_ - offset || !isRead(offset, size))
      size = readPart(offset, size);
    return {data_->mutableBytes() + offset, size};
  }

  /// The bytes from `offset` to the end of its step; none only where there is no byte.
  [[nodiscard]] std::string_view restOfStep(std::size_t offset) noexcept {
    return part(offset, stepSize - offset % stepSize);
  }

  /// All of the bytes; null when there are none.
  [[nodiscard]] Ref<const NSData> all() &&noexcept;

private:
  static constexpr std::size_t mostSteps = (mostBytes + stepSize - 1) / stepSize;

  FileBeginning(int file, std::size_t size, Ref<NSData> data,
                const std::atomic<char> *isStopped) noexcept;

  /// Whether bytes have been read; may deny it where they lie in several steps.
  [[nodiscard]] bool isRead(std::size_t offset, std::size_t size) const noexcept {
    return offset / stepSize == (offset + size - 1) / stepSize && isRead_[offset / stepSize];
  }
  /// Reads what is missing of a part; how many bytes of it there are.
  std::size_t readPart(std::size_t offset, std::size_t size) noexcept;
  /// Reads the steps from one to before the other.
  void readSteps(std::size_t begin, std::size_t end) noexcept;

  int file_;
  std::size_t size_;
  Ref<NSData> data_;
  std::bitset<mostSteps> isRead_;
  const std::atomic<char> *isStopped_;
};
