#include "platform/metadata/FolderStatus.h"

#include "platform/foundation/SystemCalls.h"

#include <fcntl.h>

namespace searchsystem {

std::optional<FileStatus> folderStatus(int folder, const char *path) noexcept {
  const std::optional<FileStatus> status = fileStatus(folder, path, FollowLink::No);
  return status && status->kind == FileKind::Folder ? status : std::nullopt;
}

FileDescriptor openToExamine(int folder, const char *path) noexcept {
  return FileDescriptor(uninterrupted(&SystemCalls::openAt, folder, path,
                                      O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

} // namespace searchsystem
