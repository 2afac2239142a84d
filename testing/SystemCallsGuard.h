#pragma once

#include "platform/foundation/SystemCalls.h"

#include <atomic>
#include <dirent.h>

namespace searchsystem {

/// Lets a listing know nothing of the kinds of its entries, as some file systems do.
inline ssize_t listWithoutKinds(int folder, void *buffer, std::size_t size) {
  const ssize_t filled = realSystemCalls().listEntries(folder, buffer, size);
  for (ssize_t at = 0; at < filled;) {
    auto *const entry = reinterpret_cast<dirent64 *>(static_cast<char *>(buffer) + at);
    entry->d_type = DT_UNKNOWN;
    at += entry->d_reclen;
  }
  return filled;
}

/// Puts calls of a test in place of the system's while it lives, and counts all calls.
///
/// A member of the table that is null goes to the system. One guard at a time; it must outlive the
/// threads and searches that make calls.
class SystemCallsGuard {
public:
  struct Counts {
    std::atomic<int> openAt{0}, listEntries{0}, statusAt{0}, openMountTable{0}, fileSystemOf{0},
        fileSystemAt{0}, resolve{0}, makeFolder{0}, setMode{0}, removeFile{0}, createFile{0},
        lockFile{0}, writeAt{0}, setSize{0}, renameFile{0}, read{0}, readAt{0}, startThread{0};
  };

  explicit SystemCallsGuard(const SystemCalls &replaced = {}) {
    put<&SystemCalls::openAt, &Counts::openAt>(replaced);
    put<&SystemCalls::listEntries, &Counts::listEntries>(replaced);
    put<&SystemCalls::statusAt, &Counts::statusAt>(replaced);
    put<&SystemCalls::openMountTable, &Counts::openMountTable>(replaced);
    put<&SystemCalls::fileSystemOf, &Counts::fileSystemOf>(replaced);
    put<&SystemCalls::fileSystemAt, &Counts::fileSystemAt>(replaced);
    put<&SystemCalls::resolve, &Counts::resolve>(replaced);
    put<&SystemCalls::makeFolder, &Counts::makeFolder>(replaced);
    put<&SystemCalls::setMode, &Counts::setMode>(replaced);
    put<&SystemCalls::removeFile, &Counts::removeFile>(replaced);
    put<&SystemCalls::createFile, &Counts::createFile>(replaced);
    put<&SystemCalls::lockFile, &Counts::lockFile>(replaced);
    put<&SystemCalls::writeAt, &Counts::writeAt>(replaced);
    put<&SystemCalls::setSize, &Counts::setSize>(replaced);
    put<&SystemCalls::renameFile, &Counts::renameFile>(replaced);
    put<&SystemCalls::read, &Counts::read>(replaced);
    put<&SystemCalls::readAt, &Counts::readAt>(replaced);
    put<&SystemCalls::startThread, &Counts::startThread>(replaced);
    resetCounts();
    setSystemCallsForTesting(&state().counting);
  }

  ~SystemCallsGuard() { setSystemCallsForTesting(nullptr); }
  SystemCallsGuard(const SystemCallsGuard &) = delete;
  SystemCallsGuard &operator=(const SystemCallsGuard &) = delete;

  /// The calls made since the guard was made, or since `resetCounts`.
  [[nodiscard]] const Counts &counts() const noexcept { return state().counts; }

  void resetCounts() const noexcept {
    Counts &c = state().counts;
    c.openAt = c.listEntries = c.statusAt = c.openMountTable = c.fileSystemOf = 0;
    c.fileSystemAt = c.resolve = c.makeFolder = c.setMode = c.removeFile = 0;
    c.createFile = c.lockFile = c.writeAt = c.setSize = c.renameFile = 0;
    c.read = c.readAt = c.startThread = 0;
  }

private:
  struct State {
    SystemCalls calls, counting;
    Counts counts;
  };

  static State &state() noexcept {
    static State shared;
    return shared;
  }

  template <auto call, auto count> static void put(const SystemCalls &replaced) {
    state().calls.*call = replaced.*call ? replaced.*call : realSystemCalls().*call;
    state().counting.*call = counted<call, count>;
  }

  template <auto call, auto count, typename... Arguments>
  static auto counted(Arguments... arguments) {
    ++(state().counts.*count);
    return (state().calls.*call)(arguments...);
  }
};

} // namespace searchsystem
