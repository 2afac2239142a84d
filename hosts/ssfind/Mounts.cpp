#include "hosts/ssfind/Mounts.h"

#include "hosts/ssfind/Paths.h"

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <memory>
#include <mntent.h>
#include <sys/stat.h>

namespace searchsystem::ssfind {

namespace {

constexpr std::array<std::string_view, 23> kernelFileSystems{
    "binfmt_misc", "bpf",       "cgroup",   "cgroup2", "configfs",  "debugfs",
    "devpts",      "devtmpfs",  "efivarfs", "fusectl", "hugetlbfs", "mqueue",
    "nfsd",        "nsfs",      "proc",     "pstore",  "resctrl",   "rpc_pipefs",
    "securityfs",  "selinuxfs", "smackfs",  "sysfs",   "tracefs"};

bool isOfKernel(const Mount &mount) {
  return std::binary_search(kernelFileSystems.begin(), kernelFileSystems.end(), mount.fileSystem);
}

bool isHidden(std::string_view path) {
  return path.starts_with('.') || path.find("/.") != path.npos;
}

} // namespace

std::vector<Mount> mountsOf(std::FILE *table) {
  // More than a path with every character escaped; of longer lines the options alone are cut.
  std::vector<char> line(std::size_t{32} << 10);
  std::vector<Mount> mounts;
  mntent entry{};
  while (getmntent_r(table, &entry, line.data(), static_cast<int>(line.size())) != nullptr) {
    // Where the source of a mount is an empty text, all else is read one field too early.
    const bool hasSource = entry.mnt_dir[0] == '/';
    const char *const path = hasSource ? entry.mnt_dir : entry.mnt_fsname;
    const char *const fileSystem = hasSource ? entry.mnt_type : entry.mnt_dir;
    if (path[0] == '/' && fileSystem[0] != '\0')
      mounts.push_back({path, fileSystem});
  }
  return mounts;
}

std::vector<Mount> currentMounts() {
  const std::unique_ptr<std::FILE, decltype(&endmntent)> table(setmntent("/proc/self/mounts", "re"),
                                                               &endmntent);
  return table ? mountsOf(table.get()) : std::vector<Mount>();
}

std::vector<std::string> mountsBelow(std::string_view folder, const std::vector<Mount> &mounts) {
  std::vector<std::string_view> ofKernel;
  for (const Mount &mount : mounts)
    if (isOfKernel(mount) && isBelow(mount.path, folder))
      ofKernel.push_back(mount.path);
  const auto holdsFiles = [&](std::string_view path) {
    return std::none_of(ofKernel.begin(), ofKernel.end(), [&](std::string_view kernel) {
      return path == kernel || isBelow(path, kernel);
    });
  };
  std::vector<std::string> paths;
  for (const Mount &mount : mounts)
    if (isBelow(mount.path, folder) && !isHidden(pathBelow(mount.path, folder)) &&
        holdsFiles(mount.path))
      paths.push_back(mount.path);
  std::sort(paths.begin(), paths.end(), isBeforeInTree);
  paths.erase(std::unique(paths.begin(), paths.end()), paths.end());
  return paths;
}

bool isMountedFolder(const std::string &path) noexcept {
  struct statx status {};
  if (statx(AT_FDCWD, path.c_str(), AT_NO_AUTOMOUNT | AT_SYMLINK_NOFOLLOW | AT_STATX_DONT_SYNC,
            STATX_TYPE, &status) != 0)
    return false;
  const bool isKnown = (status.stx_attributes_mask & STATX_ATTR_MOUNT_ROOT) != 0;
  return S_ISDIR(status.stx_mode) &&
         (!isKnown || (status.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0);
}

} // namespace searchsystem::ssfind
