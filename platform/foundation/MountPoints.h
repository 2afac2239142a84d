#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace searchsystem {

/// The names of the folders at which file systems are mounted, without their paths. A folder with
/// another name is no mount root, which spares reading its status.
///
/// Ownership: a snapshot, shared by those who use it. Threads: any.
class MountPoints {
public:
  /// The mounts as of the last few milliseconds; null if they cannot be read or memory is short.
  [[nodiscard]] static std::shared_ptr<const MountPoints> recent() noexcept;

  /// Makes the next call read the table again.
  static void forgetForTesting() noexcept;

  /// The mount points that `table` names, a text in the form of /proc/self/mountinfo (proc(5)).
  /// Throws `std::bad_alloc`.
  explicit MountPoints(std::string_view table);

  /// Whether a file system is mounted at some folder of that name.
  [[nodiscard]] bool haveName(std::string_view name) const noexcept;

private:
  std::vector<std::string> names_;
};

} // namespace searchsystem
