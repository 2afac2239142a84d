#pragma once

#include "platform/foundation/FileStatus.h"
#include "platform/metadata/FolderListing.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace searchsystem {

/// Identifies a folder, also after it has been moved.
struct FolderIdentity {
  std::int64_t volume = 0;
  std::uint64_t inode = 0;
};

/// A folder's listing as the index stores it: the time when the folder was last changed, the names,
/// and a check sum over both, the folder's identity and the user's rights. So a record that was
/// damaged, or made for another folder or by a user who may see other folders, does not count.
namespace FolderRecord {

/// Larger listings are not stored.
constexpr std::size_t mostBytes = std::size_t{2} << 20;

/// Throws `std::bad_alloc`.
[[nodiscard]] std::string pack(const FolderIdentity &folder, FileMoment changeTime,
                               const FolderNames &names);

/// The names, which point into `record`; none unless that is a record of this folder, made when its
/// last change was at `changeTime`.
[[nodiscard]] std::optional<FolderNames> unpack(const FolderIdentity &folder, FileMoment changeTime,
                                                std::string_view record) noexcept;

} // namespace FolderRecord

/// Reads the rights of the process: its user, groups and powers over files. Main thread, before any
/// record is packed or unpacked.
void learnRightsOfProcess();

} // namespace searchsystem
