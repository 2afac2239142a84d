#pragma once

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace searchsystem {

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
    root_ = std::filesystem::canonical(root_);
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
    return in(relative, [&](int folder, const char *name) {
      const int flags = O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC;
      const int fd = openat(folder, name, flags, 0644);
      const ssize_t written = write(fd, content.data(), content.size());
      return close(fd) == 0 && written == static_cast<ssize_t>(content.size());
    });
  }

  std::string folder(std::string_view relative) {
    return in(relative, [](int folder, const char *name) {
      return mkdirat(folder, name, 0755) == 0 || errno == EEXIST;
    });
  }

  /// A symbolic link that leads to `target`, taken as it is: relative to the link, or absolute.
  std::string link(std::string_view relative, const std::string &target) {
    return in(relative, [&](int folder, const char *name) {
      return symlinkat(target.c_str(), folder, name) == 0;
    });
  }

  std::string fifo(std::string_view relative) {
    return in(relative,
              [](int folder, const char *name) { return mkfifoat(folder, name, 0644) == 0; });
  }

  /// Sets when something was modified, in seconds since 1970; of a link itself, not of its target.
  void setModified(std::string_view relative, std::int64_t seconds, std::uint32_t nanoseconds = 0) {
    in(relative, [&](int folder, const char *name) {
      const timespec time{seconds, static_cast<long>(nanoseconds)}, times[2] = {time, time};
      return utimensat(folder, name, times, AT_SYMLINK_NOFOLLOW) == 0;
    });
  }

  /// Sets the permissions. They do not bind root: a test that relies on them must skip there.
  void setMode(std::string_view relative, mode_t mode) {
    in(relative,
       [&](int folder, const char *name) { return fchmodat(folder, name, mode, 0) == 0; });
  }

private:
  /// Has `act` work in the folder that holds a path's last component, made where it was missing.
  template <typename Act> std::string in(std::string_view relative, const Act &act) const {
    std::string step = root_;
    int folder = open(step.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    std::string_view rest = relative;
    for (auto slash = rest.find('/'); slash != rest.npos; slash = rest.find('/')) {
      // The dot lets an empty step lead to where it started.
      step = "./" + std::string(rest.substr(0, slash));
      rest.remove_prefix(slash + 1);
      mkdirat(folder, step.c_str(), 0755);
      const int next = openat(folder, step.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
      close(folder);
      folder = next;
    }
    const bool isDone = act(folder, std::string(rest).c_str());
    close(folder);
    check(isDone, relative);
    return path(relative);
  }

  static void check(bool isDone, std::string_view what) {
    if (!isDone)
      throw std::system_error(errno, std::generic_category(), std::string(what));
  }

  static void removeTree(int parent, const char *name) noexcept {
    if (unlinkat(parent, name, 0) == 0)
      return;
    [[maybe_unused]] const int isRefused = fchmodat(parent, name, 0700, 0);
    const int fd = openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (DIR *const entries = fd >= 0 ? fdopendir(fd) : nullptr) {
      while (const dirent *const entry = readdir(entries))
        if (const std::string_view entryName = entry->d_name; entryName != "." && entryName != "..")
          removeTree(fd, entry->d_name);
      closedir(entries);
    }
    unlinkat(parent, name, AT_REMOVEDIR);
  }

  std::string root_;
};

} // namespace searchsystem
