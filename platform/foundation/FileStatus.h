#pragma once

#include <chrono>
#include <compare>
#include <cstdint>
#include <optional>
#include <string_view>

namespace searchsystem {

/// The kind of a file system entry.
enum class FileKind : std::uint8_t { Unknown, Regular, Folder, Link, Other };

/// Whether a status is that of a link or of its target.
enum class FollowLink : bool { No, Yes };

/// A file system's time stamp, since 1970-01-01 00:00 UTC. Nanoseconds are below a second; seconds
/// may have any value, as on a damaged or foreign file system.
struct FileMoment {
  std::int64_t seconds = 0;
  std::uint32_t nanoseconds = 0;

  bool operator==(const FileMoment &) const = default;
  bool operator<=(const FileMoment &other) const noexcept {
    return seconds != other.seconds ? seconds < other.seconds : nanoseconds <= other.nanoseconds;
  }
};

/// The status of one file system entry.
struct FileStatus {
  FileKind kind = FileKind::Unknown;
  /// The root of a mounted file system.
  bool isMountRoot = false;
  /// The names in an encrypted folder depend on whether its key is available.
  bool isEncrypted = false;
  /// Seconds since 2001-01-01 00:00 UTC, in whole microseconds.
  double modificationTime = 0;
  std::uint64_t size = 0;
  /// The entry's file system, and its number there.
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  std::uint32_t links = 0;
  /// When content or status last changed. Programs cannot set it.
  FileMoment changeTime;
  /// The last change is old enough that any change after this status alters the change time.
  bool isSettled = false;
};

/// Whether both describe one regular file, unchanged from the first to the second.
[[nodiscard]] bool isSameUnchangedFile(const FileStatus &first, const FileStatus &second) noexcept;

/// No later than the time stamp of any future change. Any thread.
[[nodiscard]] FileMoment earliestMomentOfChange() noexcept;

/// Whether a file read after `begin` and last changed at `changeTime` will get another time stamp
/// when it changes again. File clocks are coarse, and two changes within a tick look the same:
/// `changeTime` must be earlier by `margin`, and in an earlier second if it has no fraction, since
/// some file systems store none. `begin` comes from `earliestMomentOfChange`; `changeTime` may have
/// any value.
[[nodiscard]] bool isSettled(FileMoment changeTime, FileMoment begin,
                             std::chrono::nanoseconds margin) noexcept;

/// The pseudo-descriptor of the current folder.
extern const int currentFolder;

/// The status of `path`, relative to the open folder `folder`; none on failure.
/// `path` ends with a NUL. Any thread.
[[nodiscard]] std::optional<FileStatus> fileStatus(int folder, const char *path,
                                                   FollowLink follow) noexcept;

/// The status of an open file; none on failure. Any thread.
[[nodiscard]] std::optional<FileStatus> fileStatus(int file) noexcept;

/// The longest path that the system accepts, in bytes without the NUL.
extern const std::size_t longestPath;

} // namespace searchsystem
