#pragma once

#include <cstdint>
#include <optional>
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

  /// Whether a file system that was asked for lies on top of others. A folder there that is merged
  /// from several shows the identity and the change time of the topmost alone, and one link: a
  /// change below it, or another layer, does not show.
  [[nodiscard]] bool isOverlay(std::uint64_t device) const noexcept;

private:
  struct Known {
    std::uint64_t device;
    std::optional<std::int64_t> volume;
    bool isOverlay;
  };

  [[nodiscard]] const Known *find(std::uint64_t device) const noexcept;

  std::vector<Known> known_;
};

} // namespace searchsystem
