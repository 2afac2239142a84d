#pragma once

#include "platform/foundation/FileStatus.h"
#include "platform/foundation/MountPoints.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string_view>

/// One name of a folder.
struct DirectoryEntry {
  /// Ended by a NUL; valid until the listing moves on.
  std::string_view name;
  /// As far as the listing knows it; `Unknown` where it does not.
  FileKind kind = FileKind::Unknown;
};

/// An open folder whose names are read one by one, without "." and "..", in the file system's
/// order. However large the folder, it takes the same memory.
///
/// Ownership: owns the descriptor. Threads: one at a time.
class DirectoryListing {
public:
  /// None when the folder cannot be listed. Throws `std::bad_alloc`.
  static std::optional<DirectoryListing> open(std::string_view path);

  DirectoryListing(DirectoryListing &&other) noexcept;
  DirectoryListing &operator=(DirectoryListing &&) = delete;
  ~DirectoryListing();

  /// The next name; none at the end, and where the system refuses to go on.
  [[nodiscard]] std::optional<DirectoryEntry> next() noexcept;

  /// The name that `next` would answer with at once, without asking the system, if it is known to
  /// be that of a regular file. Valid as that is.
  [[nodiscard]] std::optional<std::string_view> nextRegularFile() const noexcept;

  /// Whether the system has refused to go on, so that names may be missing.
  [[nodiscard]] bool hasBrokenOff() const noexcept { return hasBrokenOff_; }

  /// Whether the folder's entries can be reached at all: one that can be read but not entered tells
  /// their names and no more.
  [[nodiscard]] bool canReachEntries() const noexcept { return canReachEntries_; }

  /// Whether the path of an entry with that name is short enough for the system to take it.
  [[nodiscard]] bool canNameEntry(std::string_view name) const noexcept {
    return pathLength_ + 1 + name.size() <= longestPath;
  }

  /// Whether a file system may be mounted at an entry of that name.
  [[nodiscard]] bool mayBeMountPoint(std::string_view name) noexcept;

  /// The folder, for calls that take a path relative to it. It stays the listing's.
  [[nodiscard]] int descriptor() const noexcept { return descriptor_; }

private:
  DirectoryListing(int descriptor, std::size_t pathLength, bool canReachEntries,
                   std::unique_ptr<std::byte[]> buffer) noexcept;

  int descriptor_;
  std::size_t pathLength_;
  bool canReachEntries_;
  std::unique_ptr<std::byte[]> buffer_;
  std::size_t position_ = 0;
  std::size_t filled_ = 0;
  /// Asked for once, when the first folder among the entries is met.
  std::optional<std::shared_ptr<const MountPoints>> mountPoints_;
  bool hasBrokenOff_ = false;
};
