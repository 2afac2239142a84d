#include "platform/metadata/FolderStatus.h"

#include "platform/foundation/FileStatus.h"
#include "platform/foundation/SystemCalls.h"

#include <ctime>
#include <fcntl.h>
#include <sys/sysmacros.h>

namespace {

/// More than a tick of any system, to be on the safe side.
constexpr std::int64_t marginInNanoseconds = 20'000'000;

} // namespace

std::optional<FolderStatus> folderStatus(int folder, const char *path) noexcept {
  struct statx status {};
  if (systemCalls().statusAt(folder, path, AT_NO_AUTOMOUNT | AT_SYMLINK_NOFOLLOW, &status) != 0 ||
      !S_ISDIR(status.stx_mode))
    return std::nullopt;
  FolderStatus result;
  result.device = makedev(status.stx_dev_major, status.stx_dev_minor);
  result.inode = status.stx_ino;
  result.changeTime = {status.stx_ctime.tv_sec, status.stx_ctime.tv_nsec};
  result.isEncrypted = (status.stx_attributes & STATX_ATTR_ENCRYPTED) != 0;
  if ((status.stx_attributes_mask & STATX_ATTR_MOUNT_ROOT) != 0) {
    result.isMountRoot = (status.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0;
  } else if (const std::optional<FileStatus> told = fileStatus(folder, path, FollowLink::No)) {
    // A kernel that does not tell mount points takes a look at the folder above.
    result.isMountRoot = told->isMountRoot;
  }
  return result;
}

FileMoment earliestMomentOfChange() noexcept {
  // Files are marked by this clock, or by a finer one that never lags behind it.
  timespec now{};
  clock_gettime(CLOCK_REALTIME_COARSE, &now);
  return {now.tv_sec, static_cast<std::uint32_t>(now.tv_nsec)};
}

bool isSettled(FileMoment changeTime, FileMoment begin) noexcept {
  // A moment without a fraction may come from a file system that keeps whole seconds.
  if (changeTime.nanoseconds == 0)
    return changeTime.seconds < begin.seconds;
  if (changeTime.seconds < begin.seconds - 1)
    return true;
  const std::int64_t seconds = begin.seconds - changeTime.seconds;
  return seconds >= 0 && seconds * 1'000'000'000 + begin.nanoseconds - changeTime.nanoseconds >=
                             marginInNanoseconds;
}
