#include "platform/foundation/SystemCalls.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
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
    .createFile = [](const char *path, int flags,
                     mode_t mode) { return open(path, flags | O_CREAT, mode); },
    .lockFile = flock,
    .writeAt = pwrite,
    .setSize = ftruncate,
    .renameFile = rename,
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

bool readFullyAt(int file, void *buffer, std::size_t size, std::uint64_t offset) noexcept {
  for (auto *at = static_cast<char *>(buffer); size > 0;) {
    const ssize_t count =
        uninterrupted(&SystemCalls::readAt, file, at, size, static_cast<off_t>(offset));
    if (count <= 0)
      return false;
    at += count;
    size -= static_cast<std::size_t>(count);
    offset += static_cast<std::uint64_t>(count);
  }
  return true;
}

bool writeFullyAt(int file, const void *bytes, std::size_t size, std::uint64_t offset) noexcept {
  for (const auto *at = static_cast<const char *>(bytes); size > 0;) {
    const ssize_t count =
        uninterrupted(&SystemCalls::writeAt, file, at, size, static_cast<off_t>(offset));
    if (count <= 0)
      return false;
    at += count;
    size -= static_cast<std::size_t>(count);
    offset += static_cast<std::uint64_t>(count);
  }
  return true;
}

const SystemCalls &realSystemCalls() noexcept { return realCalls; }

void setSystemCallsForTesting(const SystemCalls *calls) noexcept {
  callsInUse.store(calls != nullptr ? calls : &realCalls, std::memory_order_release);
}

} // namespace searchsystem
