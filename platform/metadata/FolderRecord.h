#pragma once

#include "platform/metadata/FolderListing.h"
#include "platform/metadata/FolderStatus.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// Where the record of a folder stands in the index: under the folder above it, as far as that is
/// on the same file system (else under 0), so that those of its sub-folders stand together. Moving
/// a folder leaves the records of all that is below it in place.
struct FolderKey {
  std::int64_t volume = 0;
  std::int64_t parent = 0;
  std::int64_t inode = 0;

  friend auto operator<=>(const FolderKey &, const FolderKey &) = default;
};

/// A folder's listing, as the index keeps it: the moment at which the folder had last been changed,
/// the names, and a check sum over all of it and the key. What was damaged, was made for another
/// folder, or by a user with other rights, who may see other folders, is no record.
namespace FolderRecord {

/// Larger listings are not kept.
constexpr std::size_t mostBytes = std::size_t{2} << 20;

/// Throws `std::bad_alloc`.
[[nodiscard]] std::string pack(const FolderKey &key, FileMoment changeTime,
                               const FolderListing &listing);

/// The names, which point into `record`; none unless that is a record of the folder with this key
/// as it was when it was last changed at `changeTime`.
[[nodiscard]] std::optional<FolderNames> unpack(const FolderKey &key, FileMoment changeTime,
                                                std::string_view record) noexcept;

} // namespace FolderRecord

/// What tells the rights of the process from those of others: its user, groups and powers over
/// files. Main thread, before any record is packed or unpacked.
void learnRightsOfProcess();
