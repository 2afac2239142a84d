#include "platform/foundation/FileStatus.h"

#include "platform/foundation/NSDate.h"
#include "platform/foundation/SystemCalls.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <sys/sysmacros.h>

namespace searchsystem {

const int currentFolder = AT_FDCWD;
const std::size_t longestPath = PATH_MAX - 1;

namespace {

/// More than the lag and the tick of any file system's clock.
constexpr std::chrono::seconds settlingTime{3};

FileKind kindOfMode(unsigned mode) noexcept {
  if (S_ISREG(mode))
    return FileKind::Regular;
  if (S_ISDIR(mode))
    return FileKind::Folder;
  return S_ISLNK(mode) ? FileKind::Link : FileKind::Other;
}

std::uint64_t deviceOf(const struct statx &status) noexcept {
  return makedev(status.stx_dev_major, status.stx_dev_minor);
}

/// For kernels that do not report mount roots: whether a folder and its parent are on different
/// devices.
bool isOnOtherDeviceThanParent(int folder, const char *path, std::uint64_t device) noexcept {
  std::array<char, PATH_MAX> parentPath{};
  const int length = std::snprintf(parentPath.data(), parentPath.size(), "%s/..", path);
  struct statx parent {};
  return length > 0 && static_cast<std::size_t>(length) < parentPath.size() &&
         uninterrupted(&SystemCalls::statusAt, folder, parentPath.data(), AT_NO_AUTOMOUNT,
                       &parent) == 0 &&
         deviceOf(parent) != device;
}

std::optional<FileStatus> statusOf(int folder, const char *path, int flags) noexcept {
  struct statx status {};
  if (uninterrupted(&SystemCalls::statusAt, folder, path, flags, &status) != 0)
    return std::nullopt;
  FileStatus result;
  result.kind = kindOfMode(status.stx_mode);
  result.modificationTime =
      NSDate::intervalOfFileTime(status.stx_mtime.tv_sec, status.stx_mtime.tv_nsec);
  result.size = status.stx_size;
  result.device = deviceOf(status);
  result.inode = status.stx_ino;
  result.links = status.stx_nlink;
  result.changeTime = {status.stx_ctime.tv_sec, status.stx_ctime.tv_nsec};
  result.isSettled = isSettled(result.changeTime, earliestMomentOfChange(), settlingTime);
  result.isEncrypted = (status.stx_attributes & STATX_ATTR_ENCRYPTED) != 0;
  if ((status.stx_attributes_mask & STATX_ATTR_MOUNT_ROOT) != 0)
    result.isMountRoot = (status.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0;
  else if (result.kind == FileKind::Folder)
    result.isMountRoot = isOnOtherDeviceThanParent(folder, path, result.device);
  return result;
}

} // namespace

FileMoment earliestMomentOfChange() noexcept {
  // Time stamps come from this clock, or from a finer one that never lags behind it.
  timespec now{};
  clock_gettime(CLOCK_REALTIME_COARSE, &now);
  return {now.tv_sec, static_cast<std::uint32_t>(now.tv_nsec)};
}

bool isSettled(FileMoment changeTime, FileMoment begin, std::chrono::nanoseconds margin) noexcept {
  using namespace std::chrono;
  if (changeTime.nanoseconds == 0) {
    begin.nanoseconds = 0;
    margin = std::max<nanoseconds>(margin, seconds(1));
  }
  const nanoseconds latest = seconds(begin.seconds) + nanoseconds(begin.nanoseconds) - margin;
  const auto second = floor<seconds>(latest);
  return changeTime <=
         FileMoment{second.count(), static_cast<std::uint32_t>((latest - second).count())};
}

std::optional<FileStatus> fileStatus(int folder, const char *path, FollowLink follow) noexcept {
  return statusOf(folder, path,
                  AT_NO_AUTOMOUNT | (follow == FollowLink::No ? AT_SYMLINK_NOFOLLOW : 0));
}

std::optional<FileStatus> fileStatus(int file) noexcept {
  return statusOf(file, "", AT_EMPTY_PATH);
}

bool isSameUnchangedFile(const FileStatus &first, const FileStatus &second) noexcept {
  return first.kind == FileKind::Regular && second.kind == FileKind::Regular && first.isSettled &&
         first.device == second.device && first.inode == second.inode &&
         first.size == second.size && first.changeTime == second.changeTime;
}

} // namespace searchsystem
