#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace searchsystem {

/// Bytes that are read by offset: a file that was lent, or memory. Not thread-safe.
class ByteSource {
public:
  ByteSource() = default;
  ByteSource(const ByteSource &) = delete;
  ByteSource &operator=(const ByteSource &) = delete;
  virtual ~ByteSource() = default;

  [[nodiscard]] virtual std::uint64_t size() const noexcept = 0;
  /// Reads up to `count` bytes at `offset` and answers how many it has read: fewer only at the end,
  /// or where the file cannot be read.
  [[nodiscard]] virtual std::size_t read(std::uint64_t offset, char *room,
                                         std::size_t count) noexcept = 0;
};

/// A regular file, by a descriptor that stays its lender's. Its size is the one of the beginning.
class FileSource final : public ByteSource {
public:
  explicit FileSource(int descriptor) noexcept;
  FileSource(int descriptor, std::uint64_t size) noexcept : descriptor_(descriptor), size_(size) {}

  [[nodiscard]] std::uint64_t size() const noexcept override { return size_; }
  [[nodiscard]] std::size_t read(std::uint64_t offset, char *room,
                                 std::size_t count) noexcept override;

private:
  int descriptor_;
  std::uint64_t size_;
};

/// Bytes in memory, which stay their owner's.
class MemorySource final : public ByteSource {
public:
  explicit MemorySource(std::string_view bytes) noexcept : bytes_(bytes) {}

  [[nodiscard]] std::uint64_t size() const noexcept override { return bytes_.size(); }
  [[nodiscard]] std::size_t read(std::uint64_t offset, char *room,
                                 std::size_t count) noexcept override;

private:
  std::string_view bytes_;
};

} // namespace searchsystem
