#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace searchsystem {

/// The names, without paths, of the folders where file systems are mounted. A folder with another
/// name is not a mount root, and its status need not be read.
///
/// Ownership: a snapshot, shared by those who use it. Threads: any.
class MountPoints {
public:
  /// The mounts as of the last few milliseconds; null if they cannot be read or memory is short.
  [[nodiscard]] static std::shared_ptr<const MountPoints> recent() noexcept;

  /// Makes the next call of `recent` read the table again: a search that starts must see every
  /// mount made before it.
  static void forget() noexcept;

  /// The mount points in `table`, a text in the form of /proc/self/mountinfo (proc(5)).
  /// Throws `std::bad_alloc`.
  explicit MountPoints(std::string_view table);

  /// Whether a file system is mounted at any folder of that name.
  [[nodiscard]] bool haveName(std::string_view name) const noexcept;

private:
  std::vector<std::string> names_;
};

} // namespace searchsystem
