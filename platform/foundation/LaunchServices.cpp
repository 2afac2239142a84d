#include "platform/foundation/LaunchServices.h"

namespace searchsystem {

std::optional<std::uint32_t> LSCopyItemInfo(FileItem &item) noexcept {
  if (item.isListedAsPlainFolder())
    return 0;
  const std::optional<FileStatus> &status = item.status();
  if (!status)
    return std::nullopt;
  std::uint32_t flags = 0;
  if (status->kind == FileKind::Link)
    flags |= kLSItemInfoIsSymlink;
  if (status->isMountRoot)
    flags |= kLSItemInfoIsVolume;
  if (item.isBookmarkFile())
    flags |= kLSItemInfoIsAliasFile;
  return flags;
}

} // namespace searchsystem
