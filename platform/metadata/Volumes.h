#pragma once

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace searchsystem {

/// Whether a file system is one of the local ones known to keep the change times of folders
/// reliably. `type` comes from fstatfs(2).
[[nodiscard]] bool isReliableFileSystem(long type) noexcept;

/// Identifies file systems by more than their device numbers, which change when a disk is mounted
/// again.
///
/// Threads: one at a time.
class Volumes {
public:
  /// The file system of the folder at `path`, if its device is `device`; none where change times
  /// are not reliable. `path` ends with a NUL. Throws `std::bad_alloc`.
  [[nodiscard]] std::optional<std::int64_t> volumeOf(std::uint64_t device, const char *path);

  /// The same for an open folder.
  [[nodiscard]] std::optional<std::int64_t> volumeOf(std::uint64_t device, int folder);

private:
  using Known = std::pair<std::uint64_t, std::optional<std::int64_t>>;

  [[nodiscard]] const Known *find(std::uint64_t device) const noexcept;

  std::vector<Known> known_;
};

} // namespace searchsystem
