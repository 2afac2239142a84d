#include "platform/metadata/IndexPlace.h"

#include "platform/foundation/NeverDestroyed.h"
#include "platform/foundation/PathComponents.h"
#include "platform/metadata/Volumes.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <string_view>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <unistd.h>

namespace {

constexpr std::array<std::string_view, 4> fileSuffixes{"", "-wal", "-shm", "-journal"};

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

enum class Owner { Nobody, Us, Other };

/// Whose folder is at `path`, links followed.
Owner ownerOfFolder(const char *path) noexcept {
  struct stat status {};
  if (stat(path, &status) != 0)
    return errno == ENOENT ? Owner::Nobody : Owner::Other;
  return S_ISDIR(status.st_mode) && status.st_uid == geteuid() ? Owner::Us : Owner::Other;
}

bool isOnLocalDisk(const char *path) noexcept {
  struct statfs fileSystem {};
  return statfs(path, &fileSystem) == 0 &&
         isReliableFileSystem(static_cast<long>(fileSystem.f_type));
}

} // namespace

IndexPlace::IndexPlace(const std::string &cacheFolder)
    : cacheFolder_(pathWithoutTrailingSlashes(cacheFolder)),
      folder_(cacheFolder_ + "/SearchSystem"), file_(folder_ + "/folders-1.sqlite") {}

std::optional<IndexPlace> IndexPlace::current() {
  const std::optional<std::string> &cacheFolder = cacheFolderInUse();
  if (!cacheFolder)
    return std::nullopt;
  return IndexPlace(*cacheFolder);
}

void IndexPlace::setCacheFolderForTesting(std::optional<std::string> cacheFolder) {
  cacheFolderInUse() = cacheFolder ? std::move(cacheFolder) : cacheFolderOfEnvironment();
}

bool IndexPlace::isCacheFolderOurs() const noexcept {
  return ownerOfFolder(cacheFolder_.c_str()) == Owner::Us && isOnLocalDisk(cacheFolder_.c_str());
}

IndexPlace::Finding IndexPlace::look() const noexcept {
  struct stat folder {};
  if (lstat(folder_.c_str(), &folder) != 0)
    return errno == ENOENT ? Finding::Nothing : Finding::Impossible;
  const uid_t user = geteuid();
  if (!S_ISDIR(folder.st_mode) || folder.st_uid != user || !isCacheFolderOurs())
    return Finding::Impossible;
  struct stat file {};
  if (lstat(file_.c_str(), &file) != 0)
    return errno == ENOENT ? Finding::Nothing : Finding::Impossible;
  if (!S_ISREG(file.st_mode))
    return Finding::Impossible;
  constexpr mode_t others = S_IRWXG | S_IRWXO;
  const bool isOursAlone =
      file.st_uid == user && file.st_nlink == 1 && ((folder.st_mode | file.st_mode) & others) == 0;
  return isOursAlone ? Finding::Usable : Finding::Untrusted;
}

bool IndexPlace::makeFolder() const {
  if (ownerOfFolder(cacheFolder_.c_str()) == Owner::Nobody) {
    const std::string above = cacheFolder_.substr(0, cacheFolder_.rfind('/'));
    if (ownerOfFolder(above.c_str()) != Owner::Us || !isOnLocalDisk(above.c_str()) ||
        (mkdir(cacheFolder_.c_str(), S_IRWXU) != 0 && errno != EEXIST))
      return false;
  }
  if (!isCacheFolderOurs() || (mkdir(folder_.c_str(), S_IRWXU) != 0 && errno != EEXIST))
    return false;
  struct stat folder {};
  return lstat(folder_.c_str(), &folder) == 0 && S_ISDIR(folder.st_mode) &&
         folder.st_uid == geteuid() && chmod(folder_.c_str(), S_IRWXU) == 0;
}

std::int64_t IndexPlace::sizeOnDisk() const {
  std::int64_t size = 0;
  for (const std::string_view suffix : fileSuffixes) {
    const std::string path = file_ + std::string(suffix);
    struct stat file {};
    if (lstat(path.c_str(), &file) == 0 && S_ISREG(file.st_mode))
      size += file.st_size;
  }
  return size;
}

bool IndexPlace::removeFiles() const {
  bool isGone = true;
  for (const std::string_view suffix : fileSuffixes) {
    const std::string path = file_ + std::string(suffix);
    isGone &= unlink(path.c_str()) == 0 || errno == ENOENT || errno == ENOTDIR;
  }
  return isGone;
}
