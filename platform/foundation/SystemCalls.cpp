#include "platform/foundation/SystemCalls.h"

#include <atomic>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr SystemCalls realCalls{
    .openAt = [](int folder, const char *path, int flags) { return openat(folder, path, flags); },
    .listEntries = [](int folder, void *buffer,
                      std::size_t size) { return getdents64(folder, buffer, size); },
    .statusAt =
        [](int folder, const char *path, int flags, struct statx *status) {
          return statx(folder, path, flags, STATX_BASIC_STATS, status);
        },
    .openMountTable = [](int flags) { return open("/proc/self/mountinfo", flags); },
    .fileSystemOf = [](int file, struct statfs *fileSystem) { return fstatfs(file, fileSystem); },
    .fileSystemAt = [](const char *path,
                       struct statfs *fileSystem) { return statfs(path, fileSystem); },
    .resolve = [](const char *path) { return realpath(path, nullptr); },
    .makeFolder = [](const char *path, mode_t mode) { return mkdir(path, mode); },
    .setMode = [](const char *path, mode_t mode) { return chmod(path, mode); },
    .removeFile = [](const char *path) { return unlink(path); },
    .read = [](int file, void *buffer, std::size_t size) { return ::read(file, buffer, size); },
    .readAt = [](int file, void *buffer, std::size_t size,
                 off_t offset) { return pread(file, buffer, size, offset); },
    .startThread =
        [](pthread_t *thread, const pthread_attr_t *attributes, void *(*body)(void *),
           void *argument) { return pthread_create(thread, attributes, body, argument); },
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
