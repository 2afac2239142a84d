#pragma once

#include "platform/foundation/FileStatus.h"
#include "platform/metadata/FolderListing.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// What tells one folder from all others, wherever it is moved to.
struct FolderIdentity {
  std::int64_t volume = 0;
  std::uint64_t inode = 0;
};

/// A folder's listing, as the index keeps it: the moment at which the folder had last been changed,
/// the names, and a check sum over all of it and the folder's identity. What was damaged, was made
/// for another folder, or by a user with other rights, who may see other folders, is no record.
namespace FolderRecord {

/// Larger listings are not kept.
constexpr std::size_t mostBytes = std::size_t{2} << 20;

/// Throws `std::bad_alloc`.
[[nodiscard]] std::string pack(const FolderIdentity &folder, FileMoment changeTime,
                               const FolderNames &names);

/// The names, which point into `record`; none unless that is a record of this folder as it was when
/// it was last changed at `changeTime`.
[[nodiscard]] std::optional<FolderNames> unpack(const FolderIdentity &folder, FileMoment changeTime,
                                                std::string_view record) noexcept;

} // namespace FolderRecord

/// What tells the rights of the process from those of others: its user, groups and powers over
/// files. Main thread, before any record is packed or unpacked.
void learnRightsOfProcess();
