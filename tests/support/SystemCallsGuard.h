#pragma once

#include "platform/foundation/SystemCalls.h"

#include <atomic>

/// Puts calls of a test in place of the system's while it lives, and counts all calls.
///
/// A member of the table that is null goes to the system. One guard at a time; it must outlive the
/// threads and searches that make calls.
///
///     SystemCallsGuard calls({.statusAt = [](int, const char *, int, struct statx *) {
///       errno = EACCES;
///       return -1;
///     }});
///     ...
///     EXPECT_EQ(calls.counts().statusAt, 1);
class SystemCallsGuard {
public:
  struct Counts {
    std::atomic<int> openAt{0};
    std::atomic<int> listEntries{0};
    std::atomic<int> statusAt{0};
    std::atomic<int> read{0};
    std::atomic<int> startThread{0};
  };

  explicit SystemCallsGuard(const SystemCalls &replaced = {}) {
    state().calls = {
        .openAt = replaced.openAt ? replaced.openAt : realSystemCalls().openAt,
        .listEntries = replaced.listEntries ? replaced.listEntries : realSystemCalls().listEntries,
        .statusAt = replaced.statusAt ? replaced.statusAt : realSystemCalls().statusAt,
        .read = replaced.read ? replaced.read : realSystemCalls().read,
        .startThread = replaced.startThread ? replaced.startThread : realSystemCalls().startThread,
    };
    resetCounts();
    setSystemCallsForTesting(&counting);
  }

  ~SystemCallsGuard() { setSystemCallsForTesting(nullptr); }
  SystemCallsGuard(const SystemCallsGuard &) = delete;
  SystemCallsGuard &operator=(const SystemCallsGuard &) = delete;

  /// The calls made since the guard was made, or since `resetCounts`.
  [[nodiscard]] const Counts &counts() const noexcept { return state().counts; }

  void resetCounts() const noexcept {
    Counts &c = state().counts;
    c.openAt = c.listEntries = c.statusAt = c.read = c.startThread = 0;
  }

private:
  struct State {
    SystemCalls calls;
    Counts counts;
  };

  static State &state() noexcept {
    static State shared;
    return shared;
  }

  static constexpr SystemCalls counting{
      .openAt =
          [](int folder, const char *path, int flags) {
            ++state().counts.openAt;
            return state().calls.openAt(folder, path, flags);
          },
      .listEntries =
          [](int folder, void *buffer, std::size_t size) {
            ++state().counts.listEntries;
            return state().calls.listEntries(folder, buffer, size);
          },
      .statusAt =
          [](int folder, const char *path, int flags, struct statx *status) {
            ++state().counts.statusAt;
            return state().calls.statusAt(folder, path, flags, status);
          },
      .read =
          [](int file, void *buffer, std::size_t size) {
            ++state().counts.read;
            return state().calls.read(file, buffer, size);
          },
      .startThread =
          [](pthread_t *thread, const pthread_attr_t *attributes, void *(*body)(void *),
             void *argument) {
            ++state().counts.startThread;
            return state().calls.startThread(thread, attributes, body, argument);
          },
  };
};
