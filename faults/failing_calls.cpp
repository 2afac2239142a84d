// Searches while the n-th allocation, or the n-th call to the system, fails; for every n of a small
// search, on every way through the library.
//
//     failing_calls [--quick] [WAY]

#include "faults/Allocations.h"
#include "faults/Process.h"
#include "faults/Searches.h"
#include "faults/Verdict.h"
#include "platform/foundation/SystemCalls.h"
#include "platform/metadata/IndexPlace.h"
#include "platform/metadata/MetadataIndex.h"
#include "testing/VirtualClock.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <iterator>
#include <mutex>
#include <unistd.h>

namespace searchsystem {

namespace {

enum Call : std::uint8_t {
  Open,
  List,
  Status,
  MountTable,
  FileSystem,
  FileSystemAt,
  Resolve,
  MakeFolder,
  SetMode,
  RemoveFile,
  CreateFile,
  LockFile,
  WriteAt,
  SetSize,
  RenameFile,
  Read,
  Thread
};

struct CallFaults {
  Call call;
  const char *name;
  /// The first is the one that is tried when time is short, beside an interruption. -1 stands for a
  /// read or write of less than was asked for.
  std::vector<int> errors;
};

constexpr int shortCall = -1;

const std::array<CallFaults, 17> callFaults{{
    {Open, "open", {EMFILE, EINTR, ENFILE, EACCES, ENOENT, ENOMEM, EIO, ELOOP, ENOTDIR, ESTALE}},
    {List, "list", {EIO, EINTR, ENOENT, ENOMEM, ESTALE}},
    {Status, "status", {EACCES, EINTR, ENOENT, EIO, ENOMEM, ELOOP, ENAMETOOLONG, ESTALE}},
    {MountTable, "open of the mount table", {EMFILE, EINTR, EACCES, ENOENT, ENOMEM}},
    {FileSystem, "file system", {EIO, ENOSYS, ENOMEM, EINTR}},
    {FileSystemAt, "file system of the cache folder", {EIO, EINTR, ENOSYS, ENOMEM}},
    {Resolve, "resolve", {EACCES, EINTR, ENOENT, ENOMEM, ELOOP, EIO}},
    {MakeFolder, "make folder", {EACCES, EINTR, ENOSPC, EROFS, EEXIST}},
    {SetMode, "set mode", {EPERM, EINTR, EROFS, ENOENT}},
    {RemoveFile, "remove file", {EACCES, EINTR, EROFS, EBUSY}},
    {CreateFile, "create file", {EACCES, EINTR, EMFILE, ENOSPC, EROFS}},
    {LockFile, "lock file", {EWOULDBLOCK, EINTR, ENOLCK}},
    {WriteAt, "write", {ENOSPC, EINTR, shortCall, EDQUOT, EIO}},
    {SetSize, "set size", {EIO, EINTR, EROFS}},
    {RenameFile, "rename file", {ENOSPC, EINTR, EACCES, EIO}},
    {Read, "read", {EIO, EINTR, shortCall, EISDIR, ESTALE}},
    {Thread, "thread", {EAGAIN, ENOMEM, EPERM}},
}};

/// The call that fails, and its subject.
struct Failing {
  Shortage shortage;
  Call call{};
  int error = 0;
  std::mutex lock;
  std::string path;

  bool fails(Call made) noexcept { return made == call && shortage.fails(); }

  void noteFile(int file) { note(pathOf(file)); }

  void noteEntry(int folder, const char *name) {
    if (*name == '/' || folder == AT_FDCWD)
      note(name);
    else
      note(*name == '\0' ? pathOf(folder) : pathOf(folder) + "/" + name);
  }

private:
  static std::string pathOf(int file) {
    char target[PATH_MAX] = {};
    const std::string link = "/proc/self/fd/" + std::to_string(file);
    return readlink(link.c_str(), target, sizeof target - 1) > 0 ? target : "";
  }

  void note(std::string of) {
    while (of.ends_with("/."))
      of.resize(of.size() - 2);
    const std::lock_guard guard(lock);
    path = std::move(of);
  }
} failing;

/// The system's calls, one of which fails. All folders were last changed an hour before they were,
/// so that the index trusts its new records at once.
SystemCalls faultyCalls() {
  SystemCalls calls = realSystemCalls();
  calls.openAt = [](int folder, const char *path, int flags) {
    if (!failing.fails(Open))
      return realSystemCalls().openAt(folder, path, flags);
    failing.noteEntry(folder, path);
    return errno = failing.error, -1;
  };
  calls.listEntries = [](int folder, void *buffer, std::size_t size) -> ssize_t {
    if (!failing.fails(List))
      return realSystemCalls().listEntries(folder, buffer, size);
    failing.noteFile(folder);
    return errno = failing.error, -1;
  };
  calls.statusAt = [](int folder, const char *path, int flags, struct statx *status) {
    if (failing.fails(Status)) {
      failing.noteEntry(folder, path);
      return errno = failing.error, -1;
    }
    const int result = realSystemCalls().statusAt(folder, path, flags, status);
    status->stx_ctime.tv_sec -= 3600;
    return result;
  };
  calls.openMountTable = [](int flags) {
    return failing.fails(MountTable) ? (errno = failing.error, -1)
                                     : realSystemCalls().openMountTable(flags);
  };
  calls.fileSystemOf = [](int file, struct statfs *fileSystem) {
    return failing.fails(FileSystem) ? (errno = failing.error, -1)
                                     : realSystemCalls().fileSystemOf(file, fileSystem);
  };
  calls.fileSystemAt = [](const char *path, struct statfs *fileSystem) {
    return failing.fails(FileSystemAt) ? (errno = failing.error, -1)
                                       : realSystemCalls().fileSystemAt(path, fileSystem);
  };
  calls.resolve = [](const char *path) -> char * {
    if (!failing.fails(Resolve))
      return realSystemCalls().resolve(path);
    failing.noteEntry(AT_FDCWD, path);
    return errno = failing.error, nullptr;
  };
  calls.makeFolder = [](const char *path, mode_t mode) {
    return failing.fails(MakeFolder) ? (errno = failing.error, -1)
                                     : realSystemCalls().makeFolder(path, mode);
  };
  calls.setMode = [](const char *path, mode_t mode) {
    return failing.fails(SetMode) ? (errno = failing.error, -1)
                                  : realSystemCalls().setMode(path, mode);
  };
  calls.removeFile = [](const char *path) {
    return failing.fails(RemoveFile) ? (errno = failing.error, -1)
                                     : realSystemCalls().removeFile(path);
  };
  calls.createFile = [](const char *path, int flags, mode_t mode) {
    return failing.fails(CreateFile) ? (errno = failing.error, -1)
                                     : realSystemCalls().createFile(path, flags, mode);
  };
  calls.lockFile = [](int file, int operation) {
    return failing.fails(LockFile) ? (errno = failing.error, -1)
                                   : realSystemCalls().lockFile(file, operation);
  };
  calls.writeAt = [](int file, const void *bytes, std::size_t size, off_t offset) -> ssize_t {
    if (!failing.fails(WriteAt))
      return realSystemCalls().writeAt(file, bytes, size, offset);
    if (failing.error == shortCall)
      return realSystemCalls().writeAt(file, bytes, std::min<std::size_t>(size, 1), offset);
    return errno = failing.error, -1;
  };
  calls.setSize = [](int file, off_t size) {
    return failing.fails(SetSize) ? (errno = failing.error, -1)
                                  : realSystemCalls().setSize(file, size);
  };
  calls.renameFile = [](const char *from, const char *to) {
    return failing.fails(RenameFile) ? (errno = failing.error, -1)
                                     : realSystemCalls().renameFile(from, to);
  };
  calls.read = [](int file, void *buffer, std::size_t size) -> ssize_t {
    if (!failing.fails(Read))
      return realSystemCalls().read(file, buffer, size);
    if (failing.error == shortCall)
      return realSystemCalls().read(file, buffer, std::min<std::size_t>(size, 1));
    failing.noteFile(file);
    return errno = failing.error, -1;
  };
  calls.readAt = [](int file, void *buffer, std::size_t size, off_t offset) -> ssize_t {
    if (!failing.fails(Read))
      return realSystemCalls().readAt(file, buffer, size, offset);
    if (failing.error == shortCall)
      return realSystemCalls().readAt(file, buffer, std::min<std::size_t>(size, 1), offset);
    failing.noteFile(file);
    return errno = failing.error, -1;
  };
  calls.startThread = [](pthread_t *thread, const pthread_attr_t *attributes, void *(*body)(void *),
                         void *argument) {
    return failing.fails(Thread)
               ? failing.error
               : realSystemCalls().startThread(thread, attributes, body, argument);
  };
  return calls;
}

Paths without(const Paths &all, const Paths &some) {
  Paths rest;
  std::set_difference(all.begin(), all.end(), some.begin(), some.end(), std::back_inserter(rest));
  return rest;
}

/// Whether a failed call on `failed` may affect `result`.
bool isAbout(const std::string &failed, const std::string &result) {
  if (failed.empty())
    return false;
  const std::string target = std::filesystem::canonical(result);
  return result == failed || target == failed || result.starts_with(failed + "/");
}

class FailingCalls {
public:
  explicit FailingCalls(bool isQuick) : isQuick_(isQuick) {
    makeSmallTree(tree_);
    addDeepFiles(tree_);
    IndexPlace::setCacheFolderForTesting(cache_.path());
    setSystemCallsForTesting(&calls_);
  }
  ~FailingCalls() { setSystemCallsForTesting(nullptr); }
  FailingCalls(const FailingCalls &) = delete;
  FailingCalls &operator=(const FailingCalls &) = delete;

  void run(const Way &way) {
    useIndex(way.usesIndex);
    searchDeep(way.isDeep);
    const std::unique_ptr<Record> record = makeRecord(way, tree_.path(), Host::take);
    record_ = record.get();
    for (const bool isWarm : {false, true}) {
      if (isWarm && !way.usesIndex)
        break;
      isWarm_ = isWarm;
      way_ = std::string(way.name) + (isWarm ? ", known" : "");
      doing = way_;
      all_ = searchCleanly();
      check(relative(all_, tree_.path()) == way.found,
            "without a fault it finds " + relative(all_, tree_.path()));
      check(relative(Host::unread(), tree_.path()) == way.unread,
            "without a fault it cannot read " + relative(Host::unread(), tree_.path()));
      searchCleanly();
      descriptors_ = Holdings::now().descriptors;
      failAllocations();
      for (const CallFaults &faults : callFaults)
        for (const int error : faults.errors)
          if (!isQuick_ || error == faults.errors.front() || error == EINTR)
            failCalls(faults, error, way);
    }
  }

  [[nodiscard]] int searches() const { return searches_; }

private:
  Paths search() {
    ++searches_;
    return Host::search(*record_);
  }

  Paths searchCleanly() {
    if (!isWarm_)
      PFMetadataIndexClear();
    return search();
  }

  void judgeHoldings() {
    const int descriptors = Holdings::now().descriptors;
    check(areDescendantsGone(), "processes left behind");
    if (!check(descriptors == descriptors_, std::to_string(descriptors - descriptors_) +
                                                " descriptors left open:" + openDescriptors()))
      descriptors_ = descriptors;
  }

  /// What a search without a fault finds afterwards.
  void judgeHealth() {
    const Paths found = searchCleanly();
    check(found == all_, "afterwards it finds " + relative(found, tree_.path()));
  }

  void failAllocations() {
    int count = 0;
    for (const bool lasts : {false, true}) {
      bool hasFailed = true;
      for (int number = 1; hasFailed; ++number) {
        doing = way_ + ", allocation " + std::to_string(number) + (lasts ? " and all after" : "");
        if (!isWarm_)
          PFMetadataIndexClear();
        Allocations::shortage.begin(number, lasts);
        Paths found = search();
        hasFailed = Allocations::shortage.end();
        // Without memory a duplicate may go unnoticed.
        found.erase(std::unique(found.begin(), found.end()), found.end());
        check(without(found, all_).empty(),
              "finds what it should not: " + relative(found, tree_.path()));
        const Paths lost = without(all_, found);
        check((hasFailed && lasts) || lost.empty(), "has lost " + relative(lost, tree_.path()));
        count += hasFailed ? 1 : 0;
        judgeHoldings();
        judgeHealth();
      }
    }
    std::printf("%s: %d failed allocations\n", way_.c_str(), count);
    std::fflush(stdout);
  }

  void failCalls(const CallFaults &faults, int error, const Way &way) {
    failing.call = faults.call;
    failing.error = error;
    const std::string what = error == shortCall ? "short" : strerrorname_np(error);
    for (const bool lasts : {false, true}) {
      // Nobody sends signals without a pause.
      if (lasts && error == EINTR)
        break;
      bool hasFailed = true;
      for (int number = 1; hasFailed; ++number) {
        doing = way_ + ", " + faults.name + " " + std::to_string(number) + " " + what +
                (lasts ? " and all after" : "");
        if (!isWarm_)
          PFMetadataIndexClear();
        failing.path.clear();
        failing.shortage.begin(number, lasts);
        const Paths found = search();
        hasFailed = failing.shortage.end();
        judgeResults(found, faults.call, lasts, way.wanted);
        judgeHoldings();
        if (isWarm_)
          judgeHealth();
      }
    }
    judgeHealth();
  }

  void judgeResults(const Paths &found, Call call, bool lasts, const Wanted &wanted) {
    // A file without a date passes a test of dates.
    const bool mayPass =
        call == Status && failing.error != EINTR && wanted.modifiedFrom != -Wanted::open;
    for (const std::string &path : without(found, all_))
      check(mayPass && (lasts || isAbout(failing.path, path)), "finds what it should not: " + path);
    const bool mayBeLost =
        failing.error != EINTR && failing.error != shortCall &&
        (call == Open || call == List || call == Status || call == Resolve || call == Read);
    // Without a thread of its own a worker has nothing read deep, and says so.
    const Paths told = call == Thread ? Host::unread() : Paths();
    for (const std::string &path : without(without(all_, found), told))
      check(mayBeLost && (lasts || isAbout(failing.path, path)),
            "has lost " + path + ", though what failed was about " + failing.path);
  }

  const bool isQuick_;
  TemporaryTree tree_;
  const TemporaryTree cache_;
  const VirtualClock clock_;
  const SystemCalls calls_ = faultyCalls();
  Record *record_ = nullptr;
  std::string way_;
  bool isWarm_ = false;
  Paths all_;
  int descriptors_ = 0;
  int searches_ = 0;
};

} // namespace

} // namespace searchsystem

using namespace searchsystem;

int main(int argc, char **argv) {
  bool isQuick = false;
  std::string chosen;
  for (int i = 1; i < argc; ++i)
    if (std::string_view(argv[i]) == "--quick")
      isQuick = true;
    else
      chosen = argv[i];
  Allocations::watchSQLite();
  adoptDescendants();
  const int threadsBefore = threadsAtRest();
  int searches = 0;
  {
    FailingCalls faults(isQuick);
    for (const Way &way : allWays())
      if (chosen.empty() || chosen == way.name)
        faults.run(way);
    searches = faults.searches();
  }
  doing = "at the end";
  const int left = threadsAfterRest(threadsBefore) - threadsBefore;
  check(left <= 0, std::to_string(left) + " threads left behind");
  return verdict(std::to_string(searches) + " searches");
}
