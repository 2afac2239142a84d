#pragma once

#include <chrono>
#include <compare>
#include <cstdint>
#include <optional>
#include <string_view>

/// What kind of thing a file system entry is.
enum class FileKind : std::uint8_t { Unknown, Regular, Folder, Link, Other };

/// Whether a status is that of a link itself or of what it leads to.
enum class FollowLink : bool { No, Yes };

/// A moment as the file system counts it, since 1970-01-01 00:00 UTC. Nanoseconds are below a
/// second; seconds may be anything, since a damaged or foreign file system tells anything.
struct FileMoment {
  std::int64_t seconds = 0;
  std::uint32_t nanoseconds = 0;

  friend bool operator==(const FileMoment &, const FileMoment &) = default;
  friend bool operator<=(const FileMoment &a, const FileMoment &b) noexcept {
    return a.seconds != b.seconds ? a.seconds < b.seconds : a.nanoseconds <= b.nanoseconds;
  }
};

/// What the file system says about one entry.
struct FileStatus {
  FileKind kind = FileKind::Unknown;
  /// The root of a mounted file system.
  bool isMountRoot = false;
  /// The names in an encrypted folder depend on whether its key is there.
  bool isEncrypted = false;
  /// Seconds since 2001-01-01 00:00 UTC, in whole microseconds.
  double modificationTime = 0;
  std::uint64_t size = 0;
  /// The file system that the entry is on, and its number there.
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  /// When content or status changed last. Nobody can set it at will.
  FileMoment changeTime;
  /// That was so long ago that a change after this status was taken shows in the change time.
  bool isSettled = false;
};

/// Whether both are of one regular file that has not changed from the first to the second.
[[nodiscard]] bool isSameUnchangedFile(const FileStatus &first, const FileStatus &second) noexcept;

/// No later than the time stamp of any future change. Any thread.
[[nodiscard]] FileMoment earliestMomentOfChange() noexcept;

/// Whether what is read after `begin`, and was changed last at `changeTime`, will have another time
/// stamp once it changes again. Clocks of files tick slowly, and two changes within a tick look the
/// same: `changeTime` must be earlier by `margin`, and at least lie in an earlier second if it has
/// no fraction, since some file systems keep none. `begin` comes from `earliestMomentOfChange`,
/// `changeTime` may be anything.
[[nodiscard]] bool isSettled(FileMoment changeTime, FileMoment begin,
                             std::chrono::nanoseconds margin) noexcept;

/// A descriptor that stands for the current folder.
extern const int currentFolder;

/// The status of `path`, relative to the open folder `folder`; none when it cannot be had.
/// `path` ends with a NUL. Any thread.
[[nodiscard]] std::optional<FileStatus> fileStatus(int folder, const char *path,
                                                   FollowLink follow) noexcept;

/// The status of an open file; none when it cannot be had. Any thread.
[[nodiscard]] std::optional<FileStatus> fileStatus(int file) noexcept;

/// The longest path that the system takes, in bytes without the NUL.
extern const std::size_t longestPath;
