#include "platform/metadata/IndexPlace.h"

#include "platform/foundation/FileStatus.h"
#include "platform/foundation/NeverDestroyed.h"
#include "platform/foundation/PathComponents.h"
#include "platform/foundation/SystemCalls.h"
#include "platform/metadata/Volumes.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace searchsystem {

namespace {

/// A database that an older version kept.
constexpr std::array<const char *, 4> oldFiles{"folders-1.sqlite", "folders-1.sqlite-wal",
                                               "folders-1.sqlite-shm", "folders-1.sqlite-journal"};

constexpr std::uint64_t mostBytesLeftFree = std::uint64_t{256} << 20;
constexpr std::uint64_t partLeftFree = 20;

constexpr unsigned others = S_IRWXG | S_IRWXO;

std::optional<std::string> cacheFolderOfEnvironment() {
  const char *const cache = secure_getenv("XDG_CACHE_HOME");
  if (cache != nullptr && *cache == '/')
    return cache;
  const char *const home = secure_getenv("HOME");
  if (home != nullptr && *home == '/')
    return std::string(home) + "/.cache";
  return std::nullopt;
}

std::optional<std::string> &cacheFolderInUse() {
  static NeverDestroyed<std::optional<std::string>> folder(cacheFolderOfEnvironment());
  return folder.get();
}

/// Gets the status of `path`; on failure false, and the reason in `errno`.
bool examine(const std::string &path, FollowLink follow, struct statx &status) noexcept {
  const int flags = AT_NO_AUTOMOUNT | (follow == FollowLink::No ? AT_SYMLINK_NOFOLLOW : 0);
  return uninterrupted(&SystemCalls::statusAt, currentFolder, path.c_str(), flags, &status) == 0;
}

bool isUsersFolder(const struct statx &status) noexcept {
  return S_ISDIR(status.stx_mode) && status.stx_uid == geteuid();
}

/// Whether the folder at `path`, links followed, is the user's and on a local disk.
bool canHoldIndex(const std::string &path) noexcept {
  struct statx status {};
  struct statfs fileSystem {};
  return examine(path, FollowLink::Yes, status) && isUsersFolder(status) &&
         uninterrupted(&SystemCalls::fileSystemAt, path.c_str(), &fileSystem) == 0 &&
         isReliableFileSystem(static_cast<long>(fileSystem.f_type));
}

/// Removes a file; false if something of that name is left.
bool remove(const std::string &path) noexcept {
  return uninterrupted(&SystemCalls::removeFile, path.c_str()) == 0 || errno == ENOENT ||
         errno == ENOTDIR;
}

/// Makes a folder for the user alone, unless something has that name.
bool makeFolderAt(const std::string &path) noexcept {
  return uninterrupted(&SystemCalls::makeFolder, path.c_str(), S_IRWXU) == 0 || errno == EEXIST;
}

} // namespace

IndexPlace::IndexPlace(const std::string &cacheFolder)
    : cacheFolder_(pathWithoutTrailingSlashes(cacheFolder)),
      folder_(cacheFolder_ + "/SearchSystem"), file_(folder_ + "/folders-2.index") {}

std::optional<IndexPlace> IndexPlace::current() {
  const std::optional<std::string> &cacheFolder = cacheFolderInUse();
  if (!cacheFolder)
    return std::nullopt;
  return IndexPlace(*cacheFolder);
}

void IndexPlace::setCacheFolderForTesting(std::optional<std::string> cacheFolder) {
  cacheFolderInUse() = cacheFolder ? std::move(cacheFolder) : cacheFolderOfEnvironment();
}

IndexPlace::Finding IndexPlace::look() const noexcept {
  struct statx folder {};
  if (!examine(folder_, FollowLink::No, folder))
    return errno == ENOENT ? Finding::Nothing : Finding::Impossible;
  if (!isUsersFolder(folder) || !canHoldIndex(cacheFolder_))
    return Finding::Impossible;
  struct statx file {};
  if (!examine(file_, FollowLink::No, file))
    return errno == ENOENT ? Finding::Nothing : Finding::Impossible;
  if (!S_ISREG(file.stx_mode))
    return Finding::Impossible;
  const bool isOursAlone = file.stx_uid == folder.stx_uid && file.stx_nlink == 1 &&
                           ((folder.stx_mode | file.stx_mode) & others) == 0;
  return isOursAlone ? Finding::Usable : Finding::Untrusted;
}

bool IndexPlace::makeFolder() const {
  const auto canHold = [&] { return canHoldIndex(cacheFolder_); };
  const std::string above = cacheFolder_.substr(0, cacheFolder_.rfind('/'));
  if (!canHold() && !(canHoldIndex(above) && makeFolderAt(cacheFolder_) && canHold()))
    return false;
  struct statx folder {};
  return makeFolderAt(folder_) && examine(folder_, FollowLink::No, folder) &&
         isUsersFolder(folder) &&
         uninterrupted(&SystemCalls::setMode, folder_.c_str(), S_IRWXU) == 0;
}

std::int64_t IndexPlace::sizeOnDisk() const noexcept {
  struct statx file {};
  return examine(file_, FollowLink::No, file) && S_ISREG(file.stx_mode)
             ? static_cast<std::int64_t>(file.stx_size)
             : 0;
}

bool IndexPlace::removeFiles() const {
  bool isGone = remove(file_);
  isGone &= remove(newFile());
  isGone &= remove(partsFile());
  return removeOldFiles() && isGone;
}

bool IndexPlace::removeOldFiles() const {
  bool areGone = true;
  for (const char *const name : oldFiles)
    areGone &= remove(file(name));
  return areGone;
}

FileDescriptor openOwnFile(const std::string &path, int flags) noexcept {
  const int safely = flags | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  FileDescriptor file(
      (flags & O_CREAT) != 0
          ? uninterrupted(&SystemCalls::createFile, path.c_str(), safely, S_IRUSR | S_IWUSR)
          : uninterrupted(&SystemCalls::openAt, currentFolder, path.c_str(), safely));
  struct statx status {};
  const bool isOurs =
      file &&
      uninterrupted(&SystemCalls::statusAt, file.number(), "", AT_EMPTY_PATH, &status) == 0 &&
      S_ISREG(status.stx_mode) && status.stx_uid == geteuid() && status.stx_nlink == 1 &&
      (status.stx_mode & others) == 0;
  return isOurs ? std::move(file) : FileDescriptor();
}

bool hasRoomFor(std::uint64_t bytes, int file) noexcept {
  struct statfs disk {};
  if (uninterrupted(&SystemCalls::fileSystemOf, file, &disk) != 0 || disk.f_bsize <= 0)
    return false;
  const auto block = static_cast<std::uint64_t>(disk.f_bsize);
  const std::uint64_t toStayFree =
      std::min(disk.f_blocks / partLeftFree * block, mostBytesLeftFree);
  return disk.f_bavail >= (toStayFree + bytes) / block + 1;
}

} // namespace searchsystem
