#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace searchsystem {

/// The chunks of a file that were used last: all of a small file.
///
/// Ownership: owns its memory. Threads: one at a time.
class FileChunks {
public:
  static constexpr std::size_t chunkSize = 1 << 15;

  /// The chunk of a number; null when it is not in memory.
  [[nodiscard]] const char *find(std::size_t number) noexcept;

  /// Room for the chunk of a number, in place of the one unused for longest. `keep` makes it valid.
  /// Null when memory is short.
  [[nodiscard]] char *replaceOldest(std::size_t number) noexcept;
  void keep() noexcept;

  void clear() noexcept;

private:
  struct Chunk {
    std::size_t number = 0;
    std::uint64_t lastUse = 0; ///< 0 for one that holds nothing
    std::unique_ptr<char[]> bytes;
  };

  std::array<Chunk, 32> chunks_;
  Chunk *current_ = nullptr;
  std::uint64_t uses_ = 0;
};

} // namespace searchsystem
