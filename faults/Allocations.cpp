#include "faults/Allocations.h"

#include <cerrno>
#include <cstddef>
#include <sqlite3.h>

namespace searchsystem {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define SANITIZER_HAS_MALLOC 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define SANITIZER_HAS_MALLOC 1
#endif
#endif

Shortage Allocations::shortage;

namespace {

thread_local int exemptions = 0;

bool fails() noexcept { return exemptions == 0 && Allocations::shortage.fails(); }

sqlite3_mem_methods real;

} // namespace

Allocations::Exempt::Exempt() noexcept { ++exemptions; }
Allocations::Exempt::~Exempt() { --exemptions; }

void Allocations::watchSQLite() {
#ifdef SANITIZER_HAS_MALLOC
  sqlite3_config(SQLITE_CONFIG_GETMALLOC, &real);
  sqlite3_mem_methods failing = real;
  failing.xMalloc = [](int size) { return fails() ? nullptr : real.xMalloc(size); };
  failing.xRealloc = [](void *block, int size) {
    return fails() ? nullptr : real.xRealloc(block, size);
  };
  sqlite3_config(SQLITE_CONFIG_MALLOC, &failing);
#else
  static_cast<void>(real);
#endif
}

#ifdef SANITIZER_HAS_MALLOC
bool memoryFails(std::size_t /*size*/) noexcept { return fails(); }
#endif

} // namespace searchsystem

#ifdef SANITIZER_HAS_MALLOC
#include "testing/FailingMemory.h"
#else

using searchsystem::fails;

// The names beneath are the C library's own.
extern "C" {

void *__libc_malloc(std::size_t size);
void *__libc_calloc(std::size_t count, std::size_t size);
void *__libc_realloc(void *block, std::size_t size);

void *malloc(std::size_t size) { return fails() ? (errno = ENOMEM, nullptr) : __libc_malloc(size); }
void *calloc(std::size_t count, std::size_t size) {
  return fails() ? (errno = ENOMEM, nullptr) : __libc_calloc(count, size);
}
void *realloc(void *block, std::size_t size) {
  return fails() ? (errno = ENOMEM, nullptr) : __libc_realloc(block, size);
}
}

#endif
