#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace searchsystem {

/// The chunks of a file that were used last: all of a small file.
///
/// Ownership: owns its memory. Threads: one at a time.
class FileChunks {
public:
  static constexpr std::size_t chunkSize = 1 << 15;

  FileChunks() noexcept = default;

  /// Has room for the chunks of a file of `fileSize` bytes, or for 32. Throws `std::bad_alloc`.
  explicit FileChunks(long fileSize);

  /// The chunk of a number; null when it is not in memory.
  [[nodiscard]] const char *find(std::size_t number) noexcept;

  /// Room for the chunk of a number, in place of the one unused for longest. `keep` makes it valid.
  [[nodiscard]] char *replaceOldest(std::size_t number) noexcept;
  void keep() noexcept { chunks_[current_].lastUse = ++uses_; }

private:
  struct Chunk {
    std::size_t number = 0;
    std::uint64_t lastUse = 0; ///< 0 for one that holds nothing
  };

  std::vector<Chunk> chunks_;
  std::unique_ptr<char[]> bytes_;
  std::size_t current_ = 0;
  std::uint64_t uses_ = 0;
};

} // namespace searchsystem
