#include "hosts/ssfind/SearchPlan.h"

#include "hosts/ssfind/Hints.h"
#include "hosts/ssfind/Interrupt.h"
#include "hosts/ssfind/Mounts.h"
#include "hosts/ssfind/PathList.h"
#include "hosts/ssfind/Paths.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>
#include <unordered_set>
#include <utility>

namespace searchsystem::ssfind {

namespace {

/// The path with all links resolved; none, with errno set, if it leads nowhere.
std::optional<std::string> resolved(const std::string &path) {
  char buffer[PATH_MAX];
  if (realpath(path.c_str(), buffer) == nullptr)
    return std::nullopt;
  return buffer;
}

/// 0 if the folder can be listed and its entries reached, else the error number.
int errorOfReading(const std::string &folder) noexcept {
  const int descriptor = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0)
    return errno;
  const int error = faccessat(descriptor, ".", X_OK, AT_EACCESS) == 0 ? 0 : errno;
  close(descriptor);
  return error;
}

class Planner {
public:
  Planner(const Options &options, StandardError &errors) : options_(options), errors_(errors) {
    if (searchesSubfolders())
      mounts_ = currentMounts();
  }

  SearchPlan plan();

private:
  [[nodiscard]] bool searchesSubfolders() const { return options_.conditions.searchesSubfolders; }

  void addFolder(const std::string &typed, std::vector<FolderSearch> &searches);
  void addMounts(FolderSearch &search) const;
  void addLine(const std::string &line);
  /// Whether the path exists.
  bool addListed(const std::string &typed);
  void addListedFile(const std::string &typed);
  [[nodiscard]] bool isCovered(const std::string &path) const;
  [[nodiscard]] bool hasOverlap() const;

  const Options &options_;
  StandardError &errors_;
  std::vector<Mount> mounts_;
  SearchPlan plan_;
  /// The folders that the plan searches, by themselves or as part of another.
  std::unordered_set<std::string> searched_;
  /// The folder of the previous listed file, usually that of the next one too.
  std::string lastParent_;
  std::optional<std::string> lastResolvedParent_;
};

SearchPlan Planner::plan() {
  for (const std::string &folder : options_.folders)
    addFolder(folder, plan_.folders);
  if (options_.list) {
    const auto paths = readPathList(*options_.list, options_.listSeparator, errors_);
    plan_.hasFailures |= !paths && !wasInterrupted();
    if (paths)
      std::for_each(paths->begin(), paths->end(), [&](const auto &line) { addLine(line); });
  }
  plan_.hasOverlap = hasOverlap();
  return std::move(plan_);
}

void Planner::addFolder(const std::string &typed, std::vector<FolderSearch> &searches) {
  std::optional<std::string> path = resolved(typed);
  const int error = path ? errorOfReading(*path) : errno;
  if (error != 0) {
    plan_.hasFailures = true;
    errors_.reportFailure(typed, error,
                          error == ENOENT ? hintForMissingFolder(typed, options_) : "");
    return;
  }
  const bool isNew = !isCovered(*path);
  searched_.insert(*path);
  if (!isNew)
    return;
  FolderSearch search{{std::move(*path), typed}, {}, {}};
  addMounts(search);
  searches.push_back(std::move(search));
}

void Planner::addMounts(FolderSearch &search) const {
  const std::string *outermost = nullptr;
  const std::vector<std::string> paths = mountsBelow(search.folder.path, mounts_);
  for (const std::string &path : paths) {
    if (!isMountedFolder(path))
      continue;
    Folder mount{path, joined(search.folder.shown, pathBelow(path, search.folder.path))};
    if (options_.searchesMounts) {
      search.mounts.push_back(std::move(mount));
    } else if (outermost == nullptr || !isBelow(path, *outermost)) {
      outermost = &path;
      search.skippedMounts.push_back(std::move(mount));
    }
  }
}

bool Planner::isCovered(const std::string &path) const {
  if (searched_.contains(path))
    return true;
  // The search of a folder enters its sub-folders unless they are hidden, packages or mounts. A
  // name without a dot is neither of the first two.
  const std::string_view name = std::string_view(path).substr(path.rfind('/') + 1);
  if (!searchesSubfolders() || mounts_.empty() || name.find('.') != name.npos ||
      options_.restrictions.dependOnFolder())
    return false;
  const bool isMount = std::any_of(mounts_.begin(), mounts_.end(),
                                   [&](const Mount &mount) { return mount.path == path; });
  return !isMount && searched_.contains(std::string(parentOf(path)));
}

void Planner::addLine(const std::string &line) {
  // Lists from other systems end their lines with CR and LF.
  if (!addListed(line) && line.ends_with('\r') && options_.listSeparator == '\n')
    addListed(line.substr(0, line.size() - 1));
}

bool Planner::addListed(const std::string &typed) {
  struct stat status {};
  if (stat(typed.c_str(), &status) != 0)
    return false;
  if (S_ISDIR(status.st_mode))
    addFolder(typed, plan_.listedFolders);
  else
    addListedFile(typed);
  return true;
}

void Planner::addListedFile(const std::string &typed) {
  const std::size_t nameBegin = typed.rfind('/') + 1;
  const std::string parent = nameBegin == 0 ? "." : typed.substr(0, nameBegin);
  if (parent != lastParent_) {
    lastParent_ = parent;
    lastResolvedParent_ = resolved(parent);
  }
  if (lastResolvedParent_)
    plan_.files.add(joined(*lastResolvedParent_, typed.substr(nameBegin)), typed);
}

bool Planner::hasOverlap() const {
  std::vector<std::string_view> folders;
  for (const auto *searches : {&plan_.folders, &plan_.listedFolders})
    for (const FolderSearch &search : *searches)
      folders.push_back(search.folder.path);
  if (!plan_.files.paths().empty() && !folders.empty())
    return true;
  std::sort(folders.begin(), folders.end(), isBeforeInTree);
  return std::adjacent_find(folders.begin(), folders.end(), [](const auto &a, const auto &b) {
           return isBelow(b, a);
         }) != folders.end();
}

} // namespace

void FileList::add(std::string path, std::string_view shown) {
  const auto [place, isNew] = shown_.try_emplace(std::move(path), shown);
  if (isNew)
    paths_.push_back(place->first);
}

std::string_view FileList::shown(std::string_view path) const {
  const auto place = shown_.find(path);
  return place != shown_.end() ? std::string_view(place->second) : path;
}

SearchPlan planSearch(const Options &options, StandardError &errors) {
  return Planner(options, errors).plan();
}

} // namespace searchsystem::ssfind
