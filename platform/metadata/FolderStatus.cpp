#include "platform/metadata/FolderStatus.h"

namespace {

/// More than a tick of any system, to be on the safe side.
constexpr std::uint32_t marginInNanoseconds = 20'000'000;

} // namespace

std::optional<FileStatus> folderStatus(int folder, const char *path) noexcept {
  const std::optional<FileStatus> status = fileStatus(folder, path, FollowLink::No);
  return status && status->kind == FileKind::Folder ? status : std::nullopt;
}

bool isSettled(FileMoment changeTime, FileMoment begin) noexcept {
  // A moment without a fraction may come from a file system that keeps whole seconds.
  if (changeTime.nanoseconds == 0)
    return changeTime.seconds < begin.seconds;
  FileMoment latest = begin;
  if (latest.nanoseconds < marginInNanoseconds) {
    --latest.seconds;
    latest.nanoseconds += 1'000'000'000;
  }
  latest.nanoseconds -= marginInNanoseconds;
  return changeTime <= latest;
}
