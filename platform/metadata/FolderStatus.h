#pragma once

#include <cstdint>
#include <optional>

/// A moment as the file system counts it, since 1970.
struct FileMoment {
  std::int64_t seconds = 0;
  std::uint32_t nanoseconds = 0;

  friend bool operator==(const FileMoment &, const FileMoment &) = default;
};

/// What a folder is known by, and what tells that its listing is still the same.
struct FolderStatus {
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  /// When the folder, or its listing, was last changed. Nobody can set it at will.
  FileMoment changeTime;
  /// The names in an encrypted folder depend on whether its key is there.
  bool isEncrypted = false;
  /// The root of a mounted file system.
  bool isMountRoot = false;
};

/// The status of the folder at `path`, relative to the open folder `folder`; none when there is
/// none, or only a link to one. `path` ends with a NUL. Any thread.
[[nodiscard]] std::optional<FolderStatus> folderStatus(int folder, const char *path) noexcept;

/// A moment that no change to a file from now on is marked with an earlier one of.
[[nodiscard]] FileMoment earliestMomentOfChange() noexcept;

/// Whether a folder that is listed after `begin`, and was last changed at `changeTime` before that,
/// will bear another moment once it changes again. Moments come from a clock that ticks slowly, so
/// that two changes within one tick look the same.
[[nodiscard]] bool isSettled(FileMoment changeTime, FileMoment begin) noexcept;
