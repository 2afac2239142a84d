#pragma once

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

/// A folder of its own under $TMPDIR (else /tmp), gone with everything in it when the object goes,
/// also where the folders inside cannot be read or their paths are too long for the system.
///
/// Each method that makes something takes a path relative to that folder, makes the folders above
/// it, answers with the whole path and throws `std::system_error` when it cannot. Relative paths of
/// any length and of any bytes will do.
class TemporaryTree {
public:
  TemporaryTree() {
    const char *const parent = std::getenv("TMPDIR");
    root_ = std::string(parent != nullptr && *parent != '\0' ? parent : "/tmp") + "/tree-XXXXXX";
    check(mkdtemp(root_.data()) != nullptr, root_);
    if (char *const resolved = realpath(root_.c_str(), nullptr)) {
      root_ = resolved;
      std::free(resolved);
    }
  }

  ~TemporaryTree() { removeTree(AT_FDCWD, root_.c_str()); }
  TemporaryTree(const TemporaryTree &) = delete;
  TemporaryTree &operator=(const TemporaryTree &) = delete;

  /// The whole path of something inside, or without an argument of the folder itself. No links in
  /// what leads to the folder.
  [[nodiscard]] std::string path(std::string_view relative = {}) const {
    return relative.empty() ? root_ : root_ + "/" + std::string(relative);
  }

  /// A regular file with that content; replaces what one of that name held.
  std::string file(std::string_view relative, std::string_view content = {}) {
    const Place place(*this, relative);
    const int fd = openat(place.folder, place.name.c_str(),
                          O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, 0644);
    check(fd >= 0, relative);
    const bool isWritten =
        write(fd, content.data(), content.size()) == static_cast<ssize_t>(content.size());
    close(fd);
    check(isWritten, relative);
    return path(relative);
  }

  std::string folder(std::string_view relative) {
    const Place place(*this, relative);
    check(mkdirat(place.folder, place.name.c_str(), 0755) == 0 || errno == EEXIST, relative);
    return path(relative);
  }

  /// A symbolic link that leads to `target`, taken as it is: relative to the link, or absolute.
  std::string link(std::string_view relative, const std::string &target) {
    const Place place(*this, relative);
    check(symlinkat(target.c_str(), place.folder, place.name.c_str()) == 0, relative);
    return path(relative);
  }

  std::string fifo(std::string_view relative) {
    const Place place(*this, relative);
    check(mkfifoat(place.folder, place.name.c_str(), 0644) == 0, relative);
    return path(relative);
  }

  /// Sets when something was modified, in seconds since 1970; of a link itself, not of its target.
  void setModified(std::string_view relative, std::int64_t seconds, std::uint32_t nanoseconds = 0) {
    const Place place(*this, relative);
    const timespec both{seconds, static_cast<long>(nanoseconds)};
    const timespec times[2] = {both, both};
    check(utimensat(place.folder, place.name.c_str(), times, AT_SYMLINK_NOFOLLOW) == 0, relative);
  }

  /// Sets the permissions. They do not bind root: a test that relies on them must skip there.
  void setMode(std::string_view relative, mode_t mode) {
    const Place place(*this, relative);
    check(fchmodat(place.folder, place.name.c_str(), mode, 0) == 0, relative);
  }

private:
  /// The open folder that holds a path's last component, made where it was missing.
  struct Place {
    Place(const TemporaryTree &tree, std::string_view relative)
        : folder(openFolder(AT_FDCWD, tree.root_)) {
      for (auto slash = relative.find('/'); slash != relative.npos; slash = relative.find('/')) {
        const std::string step(relative.substr(0, slash));
        relative.remove_prefix(slash + 1);
        if (step.empty())
          continue;
        mkdirat(folder, step.c_str(), 0755);
        const int next = openFolder(folder, step);
        close(folder);
        folder = next;
        check(folder >= 0, step);
      }
      name = relative;
    }
    ~Place() { close(folder); }
    Place(const Place &) = delete;
    Place &operator=(const Place &) = delete;

    int folder;
    std::string name;
  };

  static int openFolder(int parent, const std::string &name) {
    return openat(parent, name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  }

  static void check(bool isDone, std::string_view what) {
    if (!isDone)
      throw std::system_error(errno, std::generic_category(), std::string(what));
  }

  static void removeTree(int parent, const char *name) noexcept {
    if (unlinkat(parent, name, 0) == 0)
      return;
    fchmodat(parent, name, 0700, 0);
    const int fd = openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    DIR *const entries = fd >= 0 ? fdopendir(fd) : nullptr;
    if (entries != nullptr) {
      while (const dirent *const entry = readdir(entries)) {
        const std::string_view entryName = entry->d_name;
        if (entryName != "." && entryName != "..")
          removeTree(fd, entry->d_name);
      }
      closedir(entries);
    }
    unlinkat(parent, name, AT_REMOVEDIR);
  }

  std::string root_;
};
