#include "platform/foundation/SystemCalls.h"

#include <atomic>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

namespace searchsystem {

namespace {

constexpr SystemCalls realCalls{
    .openAt = [](int folder, const char *path, int flags) { return openat(folder, path, flags); },
    .listEntries = getdents64,
    .statusAt =
        [](int folder, const char *path, int flags, struct statx *status) {
          return statx(folder, path, flags, STATX_BASIC_STATS, status);
        },
    .openMountTable = [](int flags) { return open("/proc/self/mountinfo", flags); },
    .fileSystemOf = fstatfs,
    .fileSystemAt = statfs,
    .resolve = [](const char *path) { return realpath(path, nullptr); },
    .makeFolder = mkdir,
    .setMode = chmod,
    .removeFile = unlink,
    .read = read,
    .readAt = pread,
    .startThread = pthread_create,
};

std::atomic<const SystemCalls *> callsInUse{&realCalls};

} // namespace

const SystemCalls &systemCalls() noexcept { return *callsInUse.load(std::memory_order_acquire); }

std::size_t readFully(int file, void *buffer, std::size_t size) noexcept {
  std::size_t count = 0;
  while (count < size) {
    const ssize_t result =
        uninterrupted(&SystemCalls::read, file, static_cast<char *>(buffer) + count, size - count);
    if (result < 0)
      return 0;
    if (result == 0)
      break;
    count += static_cast<std::size_t>(result);
  }
  return count;
}

const SystemCalls &realSystemCalls() noexcept { return realCalls; }

void setSystemCallsForTesting(const SystemCalls *calls) noexcept {
  callsInUse.store(calls != nullptr ? calls : &realCalls, std::memory_order_release);
}

} // namespace searchsystem
