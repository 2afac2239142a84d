#include "hosts/ssfind/HiddenFolders.h"

#include "hosts/ssfind/Interrupt.h"
#include "hosts/ssfind/Mounts.h"
#include "hosts/ssfind/Place.h"
#include "platform/foundation/FilePackage.h"

#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <string_view>
#include <sys/stat.h>
#include <unordered_set>

namespace searchsystem::ssfind {

namespace {

struct Closer {
  void operator()(DIR *directory) const noexcept { closedir(directory); }
};
using Directory = std::unique_ptr<DIR, Closer>;

class Walk {
public:
  Walk(const Folder &root, const Restrictions &restrictions)
      : place_(root), restrictions_(restrictions) {
    for (const Mount &mount : currentMounts())
      mounts_.insert(mount.path);
  }

  std::vector<Folder> below(const std::string &folder) {
    std::vector<std::string> waiting{folder};
    while (!waiting.empty() && !wasInterrupted()) {
      const std::string next = std::move(waiting.back());
      waiting.pop_back();
      list(next, waiting);
    }
    return std::move(found_);
  }

private:
  void list(const std::string &folder, std::vector<std::string> &waiting) {
    const Directory directory(opendir(folder.c_str()));
    while (directory && !wasInterrupted()) {
      const dirent *const entry = readdir(directory.get());
      if (entry == nullptr)
        return;
      const std::string_view name = entry->d_name;
      if (name == "." || name == ".." || !isFolder(dirfd(directory.get()), *entry))
        continue;
      std::string path = folder == "/" ? folder : folder + '/';
      path += name;
      if (!isSearched(path))
        continue;
      if (name.starts_with('.'))
        add(path);
      waiting.push_back(std::move(path));
    }
  }

  static bool isFolder(int directory, const dirent &entry) {
    if (entry.d_type != DT_UNKNOWN)
      return entry.d_type == DT_DIR;
    struct stat status {};
    return fstatat(directory, entry.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
           S_ISDIR(status.st_mode);
  }

  [[nodiscard]] bool isSearched(const std::string &path) const {
    const bool isTooDeep = restrictions_.depth && place_.depthOf(path) >= restrictions_.depth;
    const bool mayBePackage = path.find('.', path.rfind('/') + 2) != path.npos;
    return !isTooDeep && !mounts_.contains(path) &&
           !restrictions_.excluded.containFolder(place_.below(path)) &&
           (!mayBePackage || PFFileIsPackage(path.c_str()) == 0);
  }

  void add(const std::string &path) {
    std::string shown;
    place_.show(path, shown);
    found_.push_back({path, std::move(shown)});
  }

  const Place place_;
  const Restrictions &restrictions_;
  std::unordered_set<std::string> mounts_;
  std::vector<Folder> found_;
};

} // namespace

std::vector<Folder> hiddenFoldersBelow(const Folder &folder, const Folder &root,
                                       const Restrictions &restrictions) {
  return Walk(root, restrictions).below(folder.path);
}

} // namespace searchsystem::ssfind
