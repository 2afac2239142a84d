#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// The names of the folders at which file systems are mounted, whatever folder those are in. A
/// folder whose name is none of them is no mount root, so that its status need not be asked for.
///
/// Ownership: a snapshot, shared by those who use it. Threads: any.
class MountPoints {
public:
  /// The mounts as of the last few milliseconds; null when the system does not tell them or memory
  /// is short.
  [[nodiscard]] static std::shared_ptr<const MountPoints> recent() noexcept;

  /// Has the next call read the table anew.
  static void forgetForTesting() noexcept;

  /// The mount points that `table` names, a text in the form of /proc/self/mountinfo (proc(5)).
  /// Throws `std::bad_alloc`.
  explicit MountPoints(std::string_view table);

  /// Whether a file system is mounted at a folder of that name.
  [[nodiscard]] bool haveName(std::string_view name) const noexcept;

private:
  std::vector<std::string> names_;
};
