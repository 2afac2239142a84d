#include "pdf_reader/FileChunks.h"

#include "streams/MemoryShortage.h"

#include <algorithm>
#include <new>

namespace searchsystem {

const char *FileChunks::find(std::size_t number) noexcept {
  if (current_ == nullptr || current_->lastUse == 0 || current_->number != number) {
    const auto found = std::find_if(chunks_.begin(), chunks_.end(), [number](const Chunk &chunk) {
      return chunk.lastUse != 0 && chunk.number == number;
    });
    if (found == chunks_.end())
      return nullptr;
    found->lastUse = ++uses_;
    current_ = &*found;
  }
  return current_->bytes.get();
}

char *FileChunks::replaceOldest(std::size_t number) noexcept {
  current_ = &*std::min_element(chunks_.begin(), chunks_.end(), [](const Chunk &a, const Chunk &b) {
    return a.lastUse < b.lastUse;
  });
  if (current_->bytes == nullptr)
    current_->bytes.reset(new (std::nothrow) char[chunkSize]);
  if (current_->bytes == nullptr)
    MemoryShortage::note();
  current_->lastUse = 0;
  current_->number = number;
  return current_->bytes.get();
}

void FileChunks::keep() noexcept { current_->lastUse = ++uses_; }

void FileChunks::clear() noexcept {
  for (Chunk &chunk : chunks_)
    chunk = {};
  current_ = nullptr;
  uses_ = 0;
}

} // namespace searchsystem
