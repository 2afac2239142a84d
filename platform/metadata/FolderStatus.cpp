#include "platform/metadata/FolderStatus.h"

namespace searchsystem {

std::optional<FileStatus> folderStatus(int folder, const char *path) noexcept {
  const std::optional<FileStatus> status = fileStatus(folder, path, FollowLink::No);
  return status && status->kind == FileKind::Folder ? status : std::nullopt;
}

} // namespace searchsystem
