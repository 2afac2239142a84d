#include "platform/metadata/Volumes.h"

#include "platform/foundation/FileStatus.h"
#include "platform/foundation/SystemCalls.h"
#include "platform/metadata/CheckSum.h"
#include "platform/metadata/FolderStatus.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <linux/magic.h>

namespace searchsystem {

namespace {

constexpr long zfsMagic = 0x2FC12FC1;
constexpr long xfsMagic = 0x58465342;

constexpr std::array<long, 7> reliableTypes{EXT4_SUPER_MAGIC,     xfsMagic, BTRFS_SUPER_MAGIC,
                                            F2FS_SUPER_MAGIC,     zfsMagic, TMPFS_MAGIC,
                                            OVERLAYFS_SUPER_MAGIC};

std::int64_t identityOf(const struct statfs &fileSystem, std::uint64_t device) noexcept {
  static_assert(sizeof fileSystem.f_fsid == sizeof(std::uint64_t));
  std::uint64_t number = 0;
  std::memcpy(&number, &fileSystem.f_fsid, sizeof number);
  // File systems in memory or on top of others may share a number or have none. They do not outlive
  // their device.
  const bool needsDevice =
      number == 0 || fileSystem.f_type == TMPFS_MAGIC || fileSystem.f_type == OVERLAYFS_SUPER_MAGIC;
  const std::uint64_t mixed = mix(static_cast<std::uint64_t>(fileSystem.f_type), number);
  return static_cast<std::int64_t>(mix(mixed, needsDevice ? device : 0));
}

} // namespace

bool isReliableFileSystem(long type) noexcept {
  return std::ranges::find(reliableTypes, type) != reliableTypes.end();
}

const Volumes::Known *Volumes::find(std::uint64_t device) const noexcept {
  const auto known = std::ranges::find(known_, device, &Known::device);
  return known != known_.end() ? &*known : nullptr;
}

std::optional<std::int64_t> Volumes::volumeOf(std::uint64_t device, const char *path) {
  if (const Known *const known = find(device))
    return known->volume;
  const FileDescriptor folder = openToExamine(currentFolder, path);
  if (!folder)
    return std::nullopt;
  // Another folder may have replaced it since `device` was read.
  const std::optional<FileStatus> status = folderStatus(folder.number(), ".");
  return status && status->device == device ? volumeOf(device, folder.number()) : std::nullopt;
}

std::optional<std::int64_t> Volumes::volumeOf(std::uint64_t device, int folder) {
  if (const Known *const known = find(device))
    return known->volume;
  struct statfs fileSystem {};
  if (uninterrupted(&SystemCalls::fileSystemOf, folder, &fileSystem) != 0)
    return std::nullopt;
  std::optional<std::int64_t> volume;
  if (isReliableFileSystem(static_cast<long>(fileSystem.f_type)))
    volume = identityOf(fileSystem, device);
  known_.push_back({device, volume, fileSystem.f_type == OVERLAYFS_SUPER_MAGIC});
  return volume;
}

bool Volumes::isOverlay(std::uint64_t device) const noexcept {
  const Known *const known = find(device);
  return known != nullptr && known->isOverlay;
}

} // namespace searchsystem
