#pragma once

#include "platform/foundation/FileDescriptor.h"
#include "platform/foundation/FileItem.h"
#include "platform/foundation/NSData.h"
#include "platform/foundation/Ref.h"

#include <atomic>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace searchsystem {

/// The first bytes of a file, up to its size, but `mostBytes` at most. The size is the item's own:
/// for a link to a file, the link's. Bytes are read in steps, each when one of its bytes is first
/// requested, and none twice.
///
/// Ownership: owns the bytes, and the open file unless it is lent. Threads: one at a time.
class FileBeginning {
public:
  /// Holds the longest segment of a JPEG file, without its marker.
  static constexpr std::size_t mostBytes = 65535;
  static constexpr std::size_t stepSize = 1024;

  /// Opens the item without reading. None if it is neither a regular file nor a link to one, is
  /// empty, cannot be opened, or memory is short. Once any thread has set `*isStopped`, nothing is
  /// opened and every read fails; the flag may be null and must outlive the object.
  static std::optional<FileBeginning> open(FileItem &item,
                                           const std::atomic<char> *isStopped) noexcept;

  /// The same of a file of that size that is open already, and must stay so.
  static std::optional<FileBeginning> ofOpenFile(int file, std::uint64_t size,
                                                 const std::atomic<char> *isStopped) noexcept;

  /// The number of bytes; it shrinks if the file proves shorter, and to 0 after a failed read.
  [[nodiscard]] std::size_t size() const noexcept { return size_; }

  /// Up to `size` bytes from `offset` on. Valid as long as this object.
  [[nodiscard]] std::string_view part(std::size_t offset, std::size_t size) noexcept {
    if (offset >= size_)
      return {};
    if (size > size_ - offset || !isRead(offset, size))
      size = readPart(offset, size);
    return {data_->mutableBytes() + offset, size};
  }

  /// The bytes from `offset` to the end of its step; empty only if there are none.
  [[nodiscard]] std::string_view restOfStep(std::size_t offset) noexcept {
    return part(offset, stepSize - offset % stepSize);
  }

  /// All bytes; null if there are none.
  [[nodiscard]] Ref<const NSData> all() &&noexcept;

private:
  static constexpr std::size_t mostSteps = (mostBytes + stepSize - 1) / stepSize;

  FileBeginning(int file, std::size_t size, Ref<NSData> data,
                const std::atomic<char> *isStopped) noexcept
      : file_(file), size_(size), data_(std::move(data)), isStopped_(isStopped) {}

  /// Whether the bytes have been read; may be false for ones in several steps.
  [[nodiscard]] bool isRead(std::size_t offset, std::size_t size) const noexcept {
    return offset / stepSize == (offset + size - 1) / stepSize && isRead_[offset / stepSize];
  }
  /// Reads the missing steps of a part; returns the part's size.
  std::size_t readPart(std::size_t offset, std::size_t size) noexcept;
  /// Reads the steps from `begin` to before `end`.
  void readSteps(std::size_t begin, std::size_t end) noexcept;

  int file_;
  FileDescriptor ownFile_;
  std::size_t size_;
  Ref<NSData> data_;
  std::bitset<mostSteps> isRead_;
  const std::atomic<char> *isStopped_;
};

} // namespace searchsystem
