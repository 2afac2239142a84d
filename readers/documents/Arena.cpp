#include "readers/documents/Arena.h"

#include <algorithm>
#include <cstring>

namespace searchsystem {

std::string_view Arena::copy(std::string_view bytes) {
  if (bytes.empty())
    return {};
  char *const room = static_cast<char *>(allocate(bytes.size()));
  std::memcpy(room, bytes.data(), bytes.size());
  return {room, bytes.size()};
}

void Arena::clear() noexcept {
  if (blocks_.empty())
    return;
  blocks_.resize(1);
  used_ = blocks_.front().size;
  next_ = blocks_.front().bytes.get();
  end_ = next_ + used_;
}

void Arena::addBlock(std::size_t size) {
  const std::size_t usual = blocks_.empty() ? firstBlock : std::min(largestBlock, used_);
  const std::size_t wanted = std::max(size, usual);
  if (wanted > most - used_)
    throw std::bad_alloc();
  Block block{std::unique_ptr<char[]>(new char[wanted]), wanted};
  next_ = block.bytes.get();
  end_ = next_ + wanted;
  blocks_.push_back(std::move(block));
  used_ += wanted;
}

} // namespace searchsystem
