#pragma once

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace searchsystem::ssfind {

/// A place at which a file system is mounted.
struct Mount {
  std::string path;
  std::string fileSystem;
};

/// The mounts in a table of the form of fstab(5); other lines are skipped.
[[nodiscard]] std::vector<Mount> mountsOf(std::FILE *table);

/// The mounts of this process; none when they cannot be read.
[[nodiscard]] std::vector<Mount> currentMounts();

/// The places below `folder` where a search of it stops because another file system begins, and
/// further such places below those; each once, a folder before what lies below it.
///
/// Hidden folders are left out, as a search leaves them out. So are the kernel's own file systems,
/// such as proc and sysfs, with everything mounted in them: they hold nobody's files.
[[nodiscard]] std::vector<std::string> mountsBelow(std::string_view folder,
                                                   const std::vector<Mount> &mounts);

/// Whether the path is a folder at which a file system can be seen to be mounted: the table also
/// holds mounts that another one hides, and files.
[[nodiscard]] bool isMountedFolder(const std::string &path) noexcept;

} // namespace searchsystem::ssfind
