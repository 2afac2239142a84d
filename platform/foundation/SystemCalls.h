#pragma once

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <pthread.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/types.h>
#include <type_traits>

namespace searchsystem {

/// The system calls that can fail, in one table, so that a test can make any of them fail. Each
/// returns what its namesake does, with `errno` set on failure.
struct SystemCalls {
  int (*openAt)(int folder, const char *path, int flags) = nullptr;
  /// getdents64(2).
  ssize_t (*listEntries)(int folder, void *buffer, std::size_t size) = nullptr;
  /// statx(2), asked for the basic fields.
  int (*statusAt)(int folder, const char *path, int flags, struct statx *status) = nullptr;
  /// open(2) of the table of mounted file systems, proc(5).
  int (*openMountTable)(int flags) = nullptr;
  /// fstatfs(2) and statfs(2).
  int (*fileSystemOf)(int file, struct statfs *fileSystem) = nullptr;
  int (*fileSystemAt)(const char *path, struct statfs *fileSystem) = nullptr;
  /// realpath(3), which allocates its result.
  char *(*resolve)(const char *path) = nullptr;
  /// mkdir(2), chmod(2) and unlink(2).
  int (*makeFolder)(const char *path, mode_t mode) = nullptr;
  int (*setMode)(const char *path, mode_t mode) = nullptr;
  int (*removeFile)(const char *path) = nullptr;
  /// open(2) with O_CREAT, flock(2), pwrite(2), ftruncate(2) and rename(2).
  int (*createFile)(const char *path, int flags, mode_t mode) = nullptr;
  int (*lockFile)(int file, int operation) = nullptr;
  ssize_t (*writeAt)(int file, const void *buffer, std::size_t size, off_t offset) = nullptr;
  int (*setSize)(int file, off_t size) = nullptr;
  int (*renameFile)(const char *from, const char *to) = nullptr;
  ssize_t (*read)(int file, void *buffer, std::size_t size) = nullptr;
  /// pread(2).
  ssize_t (*readAt)(int file, void *buffer, std::size_t size, off_t offset) = nullptr;
  /// pthread_create(3): the error is the result.
  int (*startThread)(pthread_t *thread, const pthread_attr_t *attributes, void *(*body)(void *),
                     void *argument) = nullptr;
};

/// The table in use: the real calls, unless a test has replaced them. Any thread.
const SystemCalls &systemCalls() noexcept;

/// Makes one of the calls, and repeats it after EINTR. The library's threads block all signals, but
/// the main thread, where the files of a query are tested, is the host's, which may handle some
/// without restarting calls. POSIX lets a signal interrupt an open or a read on a slow device or a
/// network, and user-space file systems do so with other calls. Repeating these is harmless;
/// close(2) is never repeated. Any thread.
template <class Result, class... Parameters>
Result uninterrupted(Result (*SystemCalls::*call)(Parameters...),
                     std::type_identity_t<Parameters>... arguments) noexcept {
  Result failure{};
  if constexpr (std::is_signed_v<Result>)
    failure = -1;
  for (;;) {
    const Result result = (systemCalls().*call)(arguments...);
    if (result != failure || errno != EINTR)
      return result;
  }
}

/// Reads until the buffer is full or the file ends; the number of bytes read, 0 on failure. Any
/// thread.
[[nodiscard]] std::size_t readFully(int file, void *buffer, std::size_t size) noexcept;

/// The same from an offset of the file on; false also where it ends before the buffer is full. Any
/// thread.
[[nodiscard]] bool readFullyAt(int file, void *buffer, std::size_t size,
                               std::uint64_t offset) noexcept;

/// Writes all bytes at an offset of the file; false on failure, when some may be written. Any
/// thread.
[[nodiscard]] bool writeFullyAt(int file, const void *bytes, std::size_t size,
                                std::uint64_t offset) noexcept;

/// The real calls, to forward to. Any thread.
const SystemCalls &realSystemCalls() noexcept;

/// Replaces the real calls by `calls`; null restores them. The table must outlive its use.
void setSystemCallsForTesting(const SystemCalls *calls) noexcept;

} // namespace searchsystem
