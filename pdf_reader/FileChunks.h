#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace searchsystem {

/// The most recently used chunks of a file: all chunks of a small one.
///
/// Ownership: owns its memory. Threads: one at a time.
class FileChunks {
public:
  static constexpr std::size_t chunkSize = 1 << 15;

  FileChunks() noexcept = default;

  /// Room for all chunks of a file of `fileSize` bytes, at most 32. Throws `std::bad_alloc`.
  explicit FileChunks(long fileSize);

  /// The chunk of that number; null if it is not in memory.
  [[nodiscard]] const char *find(std::size_t number) noexcept;

  /// Memory for the chunk of that number, of the least recently used one. `keep` makes it valid.
  [[nodiscard]] char *replaceOldest(std::size_t number) noexcept;
  void keep() noexcept { chunks_[current_].lastUse = ++uses_; }

private:
  struct Chunk {
    std::size_t number = 0;
    std::uint64_t lastUse = 0; ///< 0 if empty
  };

  std::vector<Chunk> chunks_;
  std::unique_ptr<char[]> bytes_;
  std::size_t current_ = 0;
  std::uint64_t uses_ = 0;
};

} // namespace searchsystem
