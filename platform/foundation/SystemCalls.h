#pragma once

#include <cstddef>
#include <pthread.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/types.h>

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
  /// fstatfs(2).
  int (*fileSystemOf)(int file, struct statfs *fileSystem) = nullptr;
  ssize_t (*read)(int file, void *buffer, std::size_t size) = nullptr;
  /// pthread_create(3): the error is the result.
  int (*startThread)(pthread_t *thread, const pthread_attr_t *attributes, void *(*body)(void *),
                     void *argument) = nullptr;
};

/// The table in use: the real calls, unless a test put another in their place. Any thread.
const SystemCalls &systemCalls() noexcept;

/// The real calls, for a table that forwards to them.
const SystemCalls &realSystemCalls() noexcept;

/// Puts `calls` in place of the real ones; null puts those back. The table must outlive its use.
void setSystemCallsForTesting(const SystemCalls *calls) noexcept;
