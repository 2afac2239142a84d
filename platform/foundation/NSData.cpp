#include "platform/foundation/NSData.h"

#include <limits>
#include <new>
#include <utility>

namespace searchsystem {

namespace {

constexpr std::size_t largestKept = std::size_t{128} * 1024;

/// A free block of memory.
struct Spare {
  void *memory = nullptr;
  std::size_t size = 0;
  bool isUsable = true;

  ~Spare() {
    isUsable = false;
    ::operator delete(std::exchange(memory, nullptr));
  }
};

thread_local Spare spare;

/// Precedes every object: the size of its memory.
struct alignas(std::max_align_t) Header {
  std::size_t size;
};

} // namespace

Ref<NSData> NSData::withCapacity(std::size_t capacity) {
  constexpr std::size_t overhead = sizeof(Header) + sizeof(NSData);
  if (capacity > std::numeric_limits<std::size_t>::max() - overhead)
    throw std::bad_alloc();
  std::size_t size = overhead + capacity;
  void *memory = nullptr;
  if (spare.size >= size) {
    memory = std::exchange(spare.memory, nullptr);
    size = std::exchange(spare.size, 0);
  } else {
    memory = ::operator new(size);
  }
  auto *const header = ::new (memory) Header{size};
  return Ref<NSData>::adopt(::new (static_cast<void *>(header + 1)) NSData);
}

void NSData::operator delete(void *memory) noexcept {
  Header *const header = static_cast<Header *>(memory) - 1;
  const std::size_t size = header->size;
  if (!spare.isUsable || size > largestKept || size <= spare.size) {
    ::operator delete(header);
    return;
  }
  ::operator delete(std::exchange(spare.memory, header));
  spare.size = size;
}

} // namespace searchsystem
