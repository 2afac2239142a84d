#include "platform/metadata/FolderGatherer.h"

#include "platform/foundation/DirectoryListing.h"
#include "platform/foundation/NSWorkspace.h"
#include "platform/foundation/PathComponents.h"
#include "platform/metadata/FolderRecord.h"
#include "platform/metadata/SearchScope.h"

#include <algorithm>
#include <utility>

namespace {

void setPath(std::string &path, std::string_view folder, std::string_view name) {
  path.assign(pathWithoutTrailingSlashes(folder));
  path.append("/").append(name);
}

/// A file whose date is asked for only if it matters.
class FileInFolder final : public MetadataCandidate {
public:
  FileInFolder(std::string_view folder, std::string_view fileName, std::string &path) noexcept
      : MetadataCandidate(fileName), folder_(folder), path_(path) {}

  std::optional<double> contentChangeDate() noexcept override {
    if (!isExamined_) {
      isExamined_ = true;
      try {
        setPath(path_, folder_, name);
        status_ = fileStatus(currentFolder, path_.c_str(), FollowLink::No);
      } catch (...) {
        // Without memory for its path the file has no date.
      }
    }
    return status_ ? std::optional(status_->modificationTime) : std::nullopt;
  }

private:
  const std::string_view folder_;
  std::string &path_;
  bool isExamined_ = false;
  std::optional<FileStatus> status_;
};

std::int64_t numberOf(std::uint64_t inode) noexcept { return static_cast<std::int64_t>(inode); }

/// The key of a folder below another.
FolderKey keyBelow(const FolderTask &above, const FolderStatus &status,
                   std::int64_t volume) noexcept {
  const bool isSameVolume = above.device == status.device && above.volume == volume;
  return {volume, isSameVolume ? numberOf(above.inode) : 0, numberOf(status.inode)};
}

} // namespace

FolderGatherer::FolderGatherer(const NSPredicate &predicate, const std::optional<IndexPlace> &place,
                               IndexWriter &writer, const std::atomic<bool> &isStopped)
    : predicate_(predicate), writer_(writer), isStopped_(isStopped) {
  if (!place)
    return;
  IndexFault fault = IndexFault::None;
  index_ = IndexDatabase::openToRead(*place, fault);
  if (fault == IndexFault::Broken)
    writer_.setBroken();
}

void FolderGatherer::process(const FolderTask &task, FolderQueue::Tasks &tasks, Results &results) {
  tasks_ = &tasks;
  results_ = &results;
  switch (task.kind) {
  case FolderTask::Kind::Scope:
    processScope(task.path);
    break;
  case FolderTask::Kind::Listing:
    processListing(task);
    break;
  case FolderTask::Kind::SubFolders:
    processSubFolders(task);
    break;
  }
  if (index_ && index_->fault() != IndexFault::None) {
    if (index_->fault() == IndexFault::Broken)
      writer_.setBroken();
    index_.reset();
  }
}

void FolderGatherer::processScope(const std::string &scope) {
  path_ = resolvedSearchScope(scope);
  if (path_.empty())
    return;
  FolderTask above;
  const std::optional<FolderStatus> status =
      folderStatus(currentFolder, path_.c_str(), std::nullopt);
  if (status) {
    entryPath_ = path_ + "/..";
    const std::optional<FolderStatus> parent =
        folderStatus(currentFolder, entryPath_.c_str(), std::nullopt);
    if (parent && parent->inode != status->inode) {
      above.device = parent->device;
      above.inode = parent->inode;
      above.volume = volumes_.volumeOf(parent->device, entryPath_.c_str());
    }
    const std::optional<std::int64_t> volume = volumes_.volumeOf(status->device, path_.c_str());
    if (index_ && volume && !status->isEncrypted) {
      const FolderKey key = keyBelow(above, *status, *volume);
      const std::optional<std::string_view> record = index_->find(key);
      above.isRecorded = record.has_value();
      if (record) {
        if (const auto names = FolderRecord::unpack(key, status->changeTime, *record)) {
          search(*names, status, true, false);
          return;
        }
      }
    }
  }
  list(above);
}

void FolderGatherer::processListing(const FolderTask &task) {
  path_ = task.path;
  if (!isPackage(lastPathComponent(path_), true))
    list(task);
}

void FolderGatherer::processSubFolders(const FolderTask &task) {
  children_.clear();
  FolderNames::forEach(task.names, [&](std::string_view name) {
    if (isStopped())
      return;
    enter(task.path, name);
    const std::optional<FolderStatus> status =
        folderStatus(currentFolder, path_.c_str(), task.device);
    if (status && !status->isMountRoot)
      children_.push_back({*status, name});
  });
  const auto inodeOf = [](const Child &child) { return numberOf(child.status.inode); };
  std::sort(children_.begin(), children_.end(),
            [&](const Child &a, const Child &b) { return inodeOf(a) < inodeOf(b); });

  auto child = children_.cbegin();
  const auto searchNext = [&](std::optional<std::string_view> record) {
    searchChild(task, *child, record);
    ++child;
  };
  if (index_ && task.volume) {
    index_->selectChildren(*task.volume, numberOf(task.inode));
    while (const std::optional<IndexDatabase::Row> row = index_->nextChild()) {
      if (isStopped())
        return;
      while (child != children_.cend() && inodeOf(*child) < row->inode)
        searchNext(std::nullopt);
      if (child != children_.cend() && inodeOf(*child) == row->inode)
        searchNext(row->record);
      else if (task.areAll)
        writer_.addStale({*task.volume, numberOf(task.inode), row->inode});
    }
  }
  while (child != children_.cend() && !isStopped())
    searchNext(std::nullopt);
}

void FolderGatherer::searchChild(const FolderTask &task, const Child &child,
                                 std::optional<std::string_view> record) {
  enter(task.path, child.name);
  FolderTask above;
  above.kind = FolderTask::Kind::Listing;
  above.device = task.device;
  above.inode = task.inode;
  above.volume = task.volume;
  const std::optional<std::int64_t> volume =
      child.status.device == task.device ? task.volume
                                         : volumes_.volumeOf(child.status.device, path_.c_str());
  if (index_ && volume && !child.status.isEncrypted) {
    const FolderKey key = keyBelow(task, child.status, *volume);
    if (child.status.device != task.device)
      record = index_->find(key);
    above.isRecorded = record.has_value();
    if (record) {
      if (const auto names = FolderRecord::unpack(key, child.status.changeTime, *record)) {
        if (!isPackage(child.name, names->mayHoldContents))
          search(*names, child.status, true, false);
        return;
      }
    }
  }
  above.path = path_;
  tasks_->push_back(std::move(above));
}

std::optional<FolderKey> FolderGatherer::keyForRecord(const FolderStatus &status, int folder,
                                                      FileMoment begin, const FolderTask &above) {
  const std::optional<std::int64_t> volume = volumes_.volumeOf(status.device, folder);
  if (!volume || status.isEncrypted || !isSettled(status.changeTime, begin) || !writer_.isWanted())
    return std::nullopt;
  return keyBelow(above, status, *volume);
}

void FolderGatherer::list(const FolderTask &above) {
  const FileMoment begin = earliestMomentOfChange();
  std::optional<DirectoryListing> listing = DirectoryListing::open(path_);
  if (!listing || !listing->canReachEntries())
    return;
  const std::optional<FolderStatus> status = folderStatus(listing->descriptor(), ".", std::nullopt);
  std::optional<FolderKey> key;
  if (status)
    key = keyForRecord(*status, listing->descriptor(), begin, above);
  bool areAll = true;
  listing_.clear();
  while (const std::optional<DirectoryEntry> entry = listing->next()) {
    if (isStopped())
      return;
    if (entry->name.starts_with('.'))
      continue;
    FileKind kind = entry->kind;
    if (kind == FileKind::Unknown) {
      const std::optional<FileStatus> found =
          fileStatus(listing->descriptor(), entry->name.data(), FollowLink::No);
      if (!found) {
        key.reset();
        continue;
      }
      kind = found->kind;
    }
    listing_.add(kind, entry->name);
    if (listing_.size() >= FolderRecord::mostBytes) {
      key.reset();
      areAll = false;
      search(listing_.names(), status, false, false);
      listing_.clear();
    }
  }
  if (key && !listing->hasBrokenOff())
    writer_.add({*key, static_cast<std::int64_t>(listing_.count()),
                 FolderRecord::pack(*key, status->changeTime, listing_)});
  search(listing_.names(), status, areAll && !listing->hasBrokenOff(), above.isRecorded);
}

void FolderGatherer::search(const FolderNames &names, const std::optional<FolderStatus> &status,
                            bool areAll, bool isRecorded) {
  const auto isNameable = [this](std::string_view name) {
    return pathWithoutTrailingSlashes(path_).size() + 1 + name.size() <= longestPath;
  };
  const auto meetsPredicate = [this](std::string_view name) {
    FileInFolder file(path_, name, entryPath_);
    return predicate_.evaluateWithObject(file);
  };
  FolderNames::forEach(names.files, [&](std::string_view name) {
    if (meetsPredicate(name) && isNameable(name))
      addResult(name);
  });
  FolderNames::forEach(names.links, [&](std::string_view name) {
    if (!meetsPredicate(name) || !isNameable(name))
      return;
    setPath(entryPath_, path_, name);
    const std::optional<FileStatus> target =
        fileStatus(currentFolder, entryPath_.c_str(), FollowLink::Yes);
    if (target && target->kind != FileKind::Folder)
      addResult(name);
  });
  // Without sub-folders there may still be records of such as there were.
  if (names.folders.empty() && !isRecorded)
    return;
  FolderTask task;
  task.kind = FolderTask::Kind::SubFolders;
  task.path = path_;
  task.names = names.folders;
  task.areAll = areAll;
  if (status) {
    task.device = status->device;
    task.inode = status->inode;
    task.volume = volumes_.volumeOf(status->device, path_.c_str());
  }
  tasks_->push_back(std::move(task));
}

void FolderGatherer::addResult(std::string_view name) {
  results_->push_back(NSString::join(pathWithoutTrailingSlashes(path_), "/", name));
}

void FolderGatherer::enter(std::string_view folder, std::string_view name) {
  setPath(path_, folder, name);
}

bool FolderGatherer::isPackage(std::string_view name, bool mayHoldContents) {
  if (extensionOfName(name).empty())
    return false;
  if (hasPackageExtension(name))
    return true;
  if (!mayHoldContents)
    return false;
  const Ref<const NSString> path = NSString::create(path_);
  return isFilePackage(FileItem(*path));
}
