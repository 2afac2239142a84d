#pragma once

#include "platform/foundation/DirectoryListing.h"
#include "platform/foundation/FileDescriptor.h"
#include "platform/foundation/FileStatus.h"
#include "platform/foundation/NSString.h"

#include <optional>
#include <string_view>

namespace searchsystem {

/// One item of the file system, named by its path or by an entry of an open listing; both give the
/// same answers. It makes no system call for what the listing shows, and reads its status once.
///
/// Ownership: borrows the path, or the listing and the entry's name. Threads: one at a time.
class FileItem {
public:
  /// `listedKind` is what a listing has shown, which is not asked for again.
  explicit FileItem(const NSString &path, FileKind listedKind = FileKind::Unknown) noexcept;
  FileItem(DirectoryListing &listing, const DirectoryEntry &entry) noexcept
      : listing_(&listing), folder_(listing.descriptor()), path_(entry.name.data()),
        name_(entry.name), listedKind_(entry.kind), isNameable_(listing.canNameEntry(entry.name)) {}

  /// The last component of the path.
  [[nodiscard]] std::string_view name() const noexcept { return name_; }

  /// Whether a listing shows that the item is not a folder. A link is not one.
  [[nodiscard]] bool isListedAsNoFolder() const noexcept {
    return listedKind_ != FileKind::Unknown && listedKind_ != FileKind::Folder;
  }

  /// What a listing shows.
  [[nodiscard]] FileKind listedKind() const noexcept { return listedKind_; }

  /// Whether a listing shows that the item is a folder to search: not a link, accessible, and not
  /// the root of a mounted file system.
  [[nodiscard]] bool isListedAsPlainFolder() noexcept;

  /// Whether the item exists, links followed, as a folder or as something else.
  enum class Existence { None, Folder, File };
  [[nodiscard]] Existence existence() noexcept;

  /// The item's own status, links not followed; none on failure.
  [[nodiscard]] const std::optional<FileStatus> &status() noexcept;

  /// Whether the item is a folder with something at `path`, which begins with a slash.
  /// Throws `std::bad_alloc`.
  [[nodiscard]] bool holds(std::string_view path) const;

  /// Opens the item for reading if it is a regular file or a link to one; none otherwise and on
  /// failure. Never opens anything else.
  [[nodiscard]] FileDescriptor openRegularFile() noexcept;

  /// Whether the item is a regular file that begins with a Mac bookmark's header.
  [[nodiscard]] bool isBookmarkFile() noexcept;

private:
  /// Opens an item listed as a regular file and reads its status from the open file.
  [[nodiscard]] FileDescriptor openAndExamine() noexcept;

  DirectoryListing *const listing_;
  const int folder_;
  const char *const path_;
  const std::string_view name_;
  const FileKind listedKind_;
  const bool isNameable_;
  std::optional<bool> isPlainFolder_;
  bool isExamined_ = false;
  std::optional<FileStatus> status_;
};

} // namespace searchsystem
