#include "hosts/ssfind/Mounts.h"

#include "hosts/ssfind/Paths.h"

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <optional>
#include <sys/stat.h>

namespace ssfind {

namespace {

constexpr std::array<std::string_view, 23> kernelFileSystems{
    "binfmt_misc", "bpf",       "cgroup",   "cgroup2", "configfs",  "debugfs",
    "devpts",      "devtmpfs",  "efivarfs", "fusectl", "hugetlbfs", "mqueue",
    "nfsd",        "nsfs",      "proc",     "pstore",  "resctrl",   "rpc_pipefs",
    "securityfs",  "selinuxfs", "smackfs",  "sysfs",   "tracefs"};

bool isOfKernel(const Mount &mount) {
  return std::binary_search(kernelFileSystems.begin(), kernelFileSystems.end(), mount.fileSystem);
}

std::string_view takeField(std::string_view &line) noexcept {
  const std::size_t end = std::min(line.find(' '), line.size());
  const std::string_view field = line.substr(0, end);
  line.remove_prefix(std::min(end + 1, line.size()));
  return field;
}

/// The table writes blanks, line ends and backslashes of a path as \ and three octal digits.
std::string unescaped(std::string_view field) {
  const auto isOctal = [](char c) { return c >= '0' && c <= '7'; };
  std::string text;
  while (!field.empty()) {
    const bool isEscape = field.size() >= 4 && field[0] == '\\' &&
                          std::all_of(field.begin() + 1, field.begin() + 4, isOctal);
    if (isEscape)
      text += static_cast<char>((field[1] - '0') * 64 + (field[2] - '0') * 8 + (field[3] - '0'));
    else
      text += field[0];
    field.remove_prefix(isEscape ? 4 : 1);
  }
  return text;
}

/// The identity of the mount, of its parent, the device and the root stand before the path; options
/// and any number of tags, ended by "-", between it and the kind of file system.
std::optional<Mount> parseLine(std::string_view line) {
  for (int i = 0; i < 4; ++i)
    takeField(line);
  Mount mount;
  mount.path = unescaped(takeField(line));
  while (!line.empty() && takeField(line) != "-") {
  }
  mount.fileSystem = takeField(line);
  if (!mount.path.starts_with('/') || mount.fileSystem.empty())
    return std::nullopt;
  return mount;
}

bool isHidden(std::string_view path) {
  return path.starts_with('.') || path.find("/.") != path.npos;
}

} // namespace

std::vector<Mount> parseMountInfo(std::string_view text) {
  std::vector<Mount> mounts;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    if (std::optional<Mount> mount = parseLine(text.substr(0, end)))
      mounts.push_back(std::move(*mount));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return mounts;
}

std::vector<Mount> currentMounts() {
  std::ifstream table("/proc/self/mountinfo", std::ios::binary);
  return parseMountInfo(std::string(std::istreambuf_iterator<char>(table), {}));
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

} // namespace ssfind
