#pragma once

#include "platform/foundation/FileDescriptor.h"
#include "platform/foundation/FileStatus.h"
#include "platform/foundation/MountPoints.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string_view>

namespace searchsystem {

/// One name of a folder.
struct DirectoryEntry {
  /// Ended by a NUL; valid until the next call of `next`.
  std::string_view name;
  /// `Unknown` if the listing does not say.
  FileKind kind = FileKind::Unknown;
};

/// An open folder whose names are read one by one, without "." and "..", in the file system's
/// order. Its memory does not grow with the folder.
///
/// Ownership: owns the descriptor. Threads: one at a time.
class DirectoryListing {
public:
  /// None if the folder cannot be listed. Throws `std::bad_alloc`.
  static std::optional<DirectoryListing> open(std::string_view path);

  /// The next name; none at the end and on failure.
  [[nodiscard]] std::optional<DirectoryEntry> next() noexcept;

  /// The name that `next` would return, if that needs no system call and is known to be a regular
  /// file's. Valid as long as that name.
  [[nodiscard]] std::optional<std::string_view> nextRegularFile() const noexcept;

  /// Whether a name ends in `ending`, in any case of ASCII letters; also where they cannot all be
  /// read. Reads all names, and then begins anew.
  [[nodiscard]] bool mayHoldNameEndingIn(std::string_view ending) noexcept;

  /// Whether reading has failed, so that names may be missing.
  [[nodiscard]] bool hasBrokenOff() const noexcept { return hasBrokenOff_; }

  /// Whether the folder's entries can be reached at all: a folder that can be read but not entered
  /// gives only names.
  [[nodiscard]] bool canReachEntries() const noexcept { return canReachEntries_; }

  /// Whether the path of an entry with that name is short enough for the system.
  [[nodiscard]] bool canNameEntry(std::string_view name) const noexcept {
    return pathLength_ + 1 + name.size() <= longestPath;
  }

  /// Whether a file system may be mounted at an entry of that name.
  [[nodiscard]] bool mayBeMountPoint(std::string_view name) noexcept;

  /// The folder, for calls with a path relative to it. Owned by the listing.
  [[nodiscard]] int descriptor() const noexcept { return descriptor_.number(); }

private:
  DirectoryListing() noexcept = default;

  /// Reads names into the buffer; false at the end and on failure.
  [[nodiscard]] bool fill() noexcept;
  /// The next entry in the buffer, which must hold one.
  [[nodiscard]] DirectoryEntry takeEntry() noexcept;

  FileDescriptor descriptor_;
  std::size_t pathLength_ = 0;
  bool canReachEntries_ = true;
  std::unique_ptr<std::byte[]> buffer_;
  std::size_t position_ = 0;
  std::size_t filled_ = 0;
  /// Read when the first folder among the entries is met.
  std::optional<std::shared_ptr<const MountPoints>> mountPoints_;
  bool hasBrokenOff_ = false;
};

} // namespace searchsystem
