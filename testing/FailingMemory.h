#pragma once

#include <cstdlib>
#include <new>

// Takes the place of the operators that give and free memory; for one file of a program.

namespace searchsystem {

/// Whether a request for `size` bytes fails. To be defined by the file that includes this; any
/// thread.
bool memoryFails(std::size_t size) noexcept;

} // namespace searchsystem

void *operator new(std::size_t size, const std::nothrow_t &) noexcept {
  return searchsystem::memoryFails(size) ? nullptr : std::malloc(size > 0 ? size : 1);
}
void *operator new(std::size_t size) {
  if (void *const block = operator new(size, std::nothrow))
    return block;
  throw std::bad_alloc();
}
void *operator new[](std::size_t size) { return operator new(size); }
void *operator new[](std::size_t size, const std::nothrow_t &how) noexcept {
  return operator new(size, how);
}
void operator delete(void *block) noexcept { std::free(block); }
void operator delete(void *block, std::size_t) noexcept { std::free(block); }
void operator delete[](void *block) noexcept { std::free(block); }
void operator delete[](void *block, std::size_t) noexcept { std::free(block); }
