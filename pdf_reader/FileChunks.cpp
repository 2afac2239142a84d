#include "pdf_reader/FileChunks.h"

#include <algorithm>

namespace searchsystem {

FileChunks::FileChunks(long fileSize)
    : chunks_(std::min<std::size_t>(static_cast<std::size_t>(fileSize) / chunkSize + 1, 32)),
      bytes_(std::make_unique_for_overwrite<char[]>(chunks_.size() * chunkSize)) {}

const char *FileChunks::find(std::size_t number) noexcept {
  const auto holds = [number](const Chunk &chunk) {
    return chunk.lastUse != 0 && chunk.number == number;
  };
  if (!holds(chunks_[current_])) {
    const auto found = std::find_if(chunks_.begin(), chunks_.end(), holds);
    if (found == chunks_.end())
      return nullptr;
    found->lastUse = ++uses_;
    current_ = static_cast<std::size_t>(found - chunks_.begin());
  }
  return bytes_.get() + current_ * chunkSize;
}

char *FileChunks::replaceOldest(std::size_t number) noexcept {
  const auto oldest =
      std::min_element(chunks_.begin(), chunks_.end(),
                       [](const Chunk &a, const Chunk &b) { return a.lastUse < b.lastUse; });
  *oldest = {number};
  current_ = static_cast<std::size_t>(oldest - chunks_.begin());
  return bytes_.get() + current_ * chunkSize;
}

} // namespace searchsystem
