#include "streams/GrowingBlock.h"

#include "streams/MemoryShortage.h"

#include <cstdint>
#include <cstring>
#include <new>
#include <utility>

namespace searchsystem {

namespace {

/// Precedes the bytes.
struct alignas(std::max_align_t) Head {
  std::size_t room;
};

Head *headOf(char *bytes) noexcept {
  return std::launder(reinterpret_cast<Head *>(bytes - sizeof(Head)));
}

char *allocate(std::size_t room) noexcept {
  if (room > PTRDIFF_MAX - sizeof(Head))
    return nullptr;
  char *const memory = new (std::nothrow) char[sizeof(Head) + room];
  if (memory == nullptr) {
    MemoryShortage::note();
    return nullptr;
  }
  new (memory) Head{room};
  return memory + sizeof(Head);
}

/// Allocates `capacity` bytes, and more if the block has grown before: one that never grows takes
/// no more than it needs. Spare bytes of a large block take only addresses until they are used,
/// while moving it takes new memory for all of them; hence the larger factor.
char *allocateWithSpare(std::size_t room, std::size_t capacity) noexcept {
  constexpr std::size_t large = 1 << 20;
  for (std::size_t factor = room < large ? 2 : 4; factor > 1; factor /= 2) {
    if (room > SIZE_MAX / factor || room * factor <= capacity)
      continue;
    if (char *const bytes = allocate(room * factor))
      return bytes;
  }
  return allocate(capacity);
}

} // namespace

GrowingBlock::GrowingBlock(GrowingBlock &&other) noexcept
    : bytes_(std::exchange(other.bytes_, nullptr)) {}

GrowingBlock &GrowingBlock::operator=(GrowingBlock &&other) noexcept {
  std::swap(bytes_, other.bytes_);
  return *this;
}

bool GrowingBlock::grow(std::size_t kept, std::size_t capacity, GrowingBlock &former) noexcept {
  const std::size_t room = bytes_ == nullptr ? 0 : headOf(bytes_)->room;
  if (bytes_ == nullptr || room < capacity) {
    char *const bytes = allocateWithSpare(room, capacity);
    if (bytes == nullptr)
      return false;
    if (bytes_ != nullptr)
      std::memcpy(bytes, bytes_, kept);
    former.free();
    former.bytes_ = std::exchange(bytes_, bytes);
  }
  std::memset(bytes_ + kept, 0, capacity - kept);
  return true;
}

void GrowingBlock::free() noexcept {
  if (bytes_ != nullptr)
    delete[](bytes_ - sizeof(Head));
  bytes_ = nullptr;
}

} // namespace searchsystem
