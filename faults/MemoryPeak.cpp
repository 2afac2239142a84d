#include "faults/MemoryPeak.h"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <malloc.h>

namespace searchsystem {

namespace {

std::atomic<std::size_t> used{0};
std::atomic<std::size_t> peak{0};
std::size_t usedBefore = 0;

[[maybe_unused]] void *add(void *block) noexcept {
  if (block == nullptr)
    return nullptr;
  const std::size_t now = used += malloc_usable_size(block);
  if (now > peak)
    peak = now;
  return block;
}

[[maybe_unused]] void remove(void *block) noexcept {
  if (block != nullptr)
    used -= malloc_usable_size(block);
}

} // namespace

void MemoryPeak::begin() {
  usedBefore = used;
  peak = usedBefore;
}

std::size_t MemoryPeak::bytes() { return peak - usedBefore; }

} // namespace searchsystem

#ifndef MEMORY_IS_SANITIZED

using namespace searchsystem;

// The names beneath are the C library's own. `new` comes here as well.
extern "C" {

void *__libc_malloc(std::size_t size);
void *__libc_calloc(std::size_t count, std::size_t size);
void *__libc_realloc(void *block, std::size_t size);
void *__libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void *block);

void *malloc(std::size_t size) { return add(__libc_malloc(size)); }
void *calloc(std::size_t count, std::size_t size) { return add(__libc_calloc(count, size)); }
void *realloc(void *block, std::size_t size) {
  const std::size_t before = block == nullptr ? 0 : malloc_usable_size(block);
  void *const grown = __libc_realloc(block, size);
  if (grown != nullptr || size == 0)
    used -= before;
  // While a block grows, both may be there.
  return add(grown);
}
void *aligned_alloc(std::size_t alignment, std::size_t size) {
  return add(__libc_memalign(alignment, size));
}
int posix_memalign(void **block, std::size_t alignment, std::size_t size) {
  *block = add(__libc_memalign(alignment, size));
  return *block == nullptr ? ENOMEM : 0;
}
void free(void *block) {
  remove(block);
  __libc_free(block);
}
}

#endif
