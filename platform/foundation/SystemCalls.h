#pragma once

#include <cerrno>
#include <cstddef>
#include <pthread.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/types.h>
#include <type_traits>

/// The calls to the operating system that can fail, in one table, so that a test can make any of
/// them fail. Each answers as the call it is named for, with `errno` set on failure.
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
  /// realpath(3), which allocates what it answers.
  char *(*resolve)(const char *path) = nullptr;
  /// mkdir(2), chmod(2) and unlink(2).
  int (*makeFolder)(const char *path, mode_t mode) = nullptr;
  int (*setMode)(const char *path, mode_t mode) = nullptr;
  int (*removeFile)(const char *path) = nullptr;
  ssize_t (*read)(int file, void *buffer, std::size_t size) = nullptr;
  /// pread(2).
  ssize_t (*readAt)(int file, void *buffer, std::size_t size, off_t offset) = nullptr;
  /// pthread_create(3): the error is the result.
  int (*startThread)(pthread_t *thread, const pthread_attr_t *attributes, void *(*body)(void *),
                     void *argument) = nullptr;
};

/// The table in use: the real calls, unless a test put another in their place. Any thread.
const SystemCalls &systemCalls() noexcept;

/// Makes one of the calls, once more whenever a signal has interrupted it. The library's threads
/// block all signals, but the main thread is the host's, which may handle some without having its
/// calls restarted; and it is there that the files of a query are tested. POSIX lets a signal
/// interrupt an open and a read, on a slow device or a network, and file systems that are programs
/// answer other calls so as well. To make one of these twice does no harm; it would with close(2),
/// which is never made again. Any thread.
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

/// Reads until `size` bytes are there or the file ends; how many there are, 0 after a failure. Any
/// thread.
[[nodiscard]] std::size_t readFully(int file, void *buffer, std::size_t size) noexcept;

/// The real calls, for a table that forwards to them.
const SystemCalls &realSystemCalls() noexcept;

/// Puts `calls` in place of the real ones; null puts those back. The table must outlive its use.
void setSystemCallsForTesting(const SystemCalls *calls) noexcept;
