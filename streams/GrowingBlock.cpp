#include "streams/GrowingBlock.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace searchsystem {

bool GrowingBlock::grow(std::size_t kept, std::size_t capacity, GrowingBlock &former) noexcept {
  if (room_ < capacity) {
    // A block that never grows takes no more than it needs. Spare bytes of a large block take only
    // addresses until they are used, while moving it takes new memory for all of them.
    constexpr std::size_t large = 1 << 20;
    GrowingBlock grown;
    for (std::size_t factor = room_ < large ? 2 : 4; factor > 0 && !grown.bytes_; factor /= 2) {
      grown.room_ = std::max(capacity, room_ * factor);
      grown.bytes_.reset(new (std::nothrow) char[grown.room_]);
    }
    if (!grown.bytes_)
      return false;
    if (bytes_)
      std::memcpy(grown.bytes(), bytes(), kept);
    former = std::exchange(*this, std::move(grown));
  }
  std::memset(bytes() + kept, 0, capacity - kept);
  return true;
}

} // namespace searchsystem
