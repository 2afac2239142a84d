#include "platform/metadata/FolderGatherer.h"

#include "platform/foundation/DirectoryListing.h"
#include "platform/foundation/MountPoints.h"
#include "platform/foundation/NSWorkspace.h"
#include "platform/foundation/PathComponents.h"
#include "platform/metadata/FolderKey.h"
#include "platform/metadata/FolderRecord.h"
#include "platform/metadata/FolderStatus.h"
#include "platform/metadata/SearchScope.h"

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
        // Only a path that is too long for a result needs memory here.
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

} // namespace

void FolderGatherer::process(const FolderTask &task, FolderQueue::Tasks &tasks,
                             Results &results) noexcept {
  const std::size_t tasksBefore = tasks.size();
  const std::size_t resultsBefore = results.size();
  try {
    tryToProcess(task, tasks, results);
    return;
  } catch (...) {
    tasks.resize(tasksBefore);
    results.resize(resultsBefore);
  }
  try {
    tryToProcess(task, tasks, results);
  } catch (...) {
    // Memory stays short: what has not been met by now cannot be found.
  }
}

void FolderGatherer::tryToProcess(const FolderTask &task, FolderQueue::Tasks &tasks,
                                  Results &results) {
  switch (task.kind) {
  case FolderTask::Kind::Scope:
    processScope(task.path, tasks, results);
    return;
  case FolderTask::Kind::ScopeListing:
    path_ = task.path;
    listWithSubFolders(tasks, results);
    return;
  case FolderTask::Kind::Listing: {
    path_ = task.path;
    const std::string_view name = lastPathComponent(path_);
    if (!isMountRoot(name) && !isPackage(name, true))
      listWithSubFolders(tasks, results);
    return;
  }
  case FolderTask::Kind::Records:
    processRecords(task.stream, tasks, results);
    return;
  }
}

void FolderGatherer::processScope(const std::string &scope, FolderQueue::Tasks &tasks,
                                  Results &results) {
  path_ = resolvedSearchScope(scope);
  if (path_.empty())
    return;
  std::shared_ptr<RecordStream> stream;
  try {
    if (common_.place)
      stream = RecordStream::open(path_, *common_.place, common_.writer);
  } catch (...) {
    // Memory is short: the search does without records.
  }
  if (stream)
    processRecords(stream, tasks, results);
  else
    listWithSubFolders(tasks, results);
}

void FolderGatherer::processRecords(const std::shared_ptr<RecordStream> &stream,
                                    FolderQueue::Tasks &tasks, Results &results) noexcept {
  const auto offerNext = [&] {
    FolderTask next;
    next.kind = FolderTask::Kind::Records;
    next.stream = stream;
    common_.queue.add(std::move(next));
  };
  try {
    std::unique_ptr<RecordStream::Chunk> chunk = stream->read();
    if (!chunk)
      return;
    if (!chunk->isLast && stream->mayRead())
      offerNext();
    for (RecordStream::Row &row : chunk->rows)
      if (!isStopped())
        tryToSearchRow(*stream, *chunk, row);
    if (!isStopped() && stream->merge(std::move(chunk), tasks, results))
      offerNext();
  } catch (...) {
    if (!isStopped())
      stream->giveUp(tasks);
  }
}

void FolderGatherer::tryToSearchRow(const RecordStream &stream, const RecordStream::Chunk &chunk,
                                    RecordStream::Row &row) noexcept {
  try {
    searchRow(stream, chunk, row);
  } catch (...) {
    row.results.clear();
    row.hasFailed = true;
  }
}

void FolderGatherer::searchRow(const RecordStream &stream, const RecordStream::Chunk &chunk,
                               RecordStream::Row &row) {
  const std::string_view key = chunk.key(row);
  const std::string &scope = stream.scopePrefix();
  const bool isScope = key == stream.scopeKey();
  const std::string_view keyBelow = key.substr(stream.scopeKey().size());
  if (FolderKey::isHidden(keyBelow))
    return;
  path_ = scope;
  FolderKey::appendPath(path_, keyBelow);
  if (path_.empty())
    path_ = "/";
  if (path_.size() > longestPath)
    return;
  const std::optional<FileStatus> status =
      isScope ? folderStatus(currentFolder, path_.c_str())
              : folderStatus(stream.scopeFolder(), path_.c_str() + scope.size() + 1);
  row.isGone = !status;
  if (!status || (status->isMountRoot && !isScope))
    return;
  const std::string_view name = key.substr(key.rfind('\0') + 1);
  const std::optional<std::int64_t> volume = volumes_.volumeOf(status->device, path_.c_str());
  std::optional<FolderNames> names;
  if (volume && !status->isEncrypted)
    names = FolderRecord::unpack({*volume, status->inode}, status->changeTime, chunk.record(row));
  if (!isScope && isPackage(name, !names || names->mayHoldContents))
    return;
  if (names)
    search(*names, row.results);
  else
    names = list(true, row.results);
  if (!names)
    return;
  row.folders = names->folders;
  row.isSearched = true;
}

void FolderGatherer::listWithSubFolders(FolderQueue::Tasks &tasks, Results &results) {
  const std::optional<FolderNames> names = list(false, results);
  if (!names)
    return;
  FolderNames::forEach(names->folders, [&](std::string_view name) {
    FolderTask task;
    setPath(task.path, path_, name);
    tasks.push_back(std::move(task));
  });
}

std::optional<FolderNames> FolderGatherer::list(bool isRecorded, Results &results) {
  const FileMoment begin = earliestMomentOfChange();
  std::optional<DirectoryListing> listing = DirectoryListing::open(path_);
  if (!listing || !listing->canReachEntries())
    return std::nullopt;
  const std::optional<FileStatus> status = fileStatus(listing->descriptor());
  std::optional<std::int64_t> volume;
  if (status)
    volume = volumes_.volumeOf(status->device, listing->descriptor());
  bool isLasting =
      volume && !status->isEncrypted && isSettled(status->changeTime, begin, longestTick);
  listing_.clear();
  while (const std::optional<DirectoryEntry> entry = listing->next()) {
    if (isStopped())
      return std::nullopt;
    FileKind kind = entry->kind;
    if (kind == FileKind::Unknown) {
      const std::optional<FileStatus> found =
          fileStatus(listing->descriptor(), entry->name.data(), FollowLink::No);
      if (!found) {
        isLasting = false;
        continue;
      }
      kind = found->kind;
    }
    listing_.add(kind, entry->name);
    if (listing_.sizeOfFiles() >= FolderRecord::mostBytes) {
      isLasting = false;
      search(listing_.names(), results);
      listing_.clearFiles();
    }
  }
  isLasting = isLasting && !listing->hasBrokenOff() && listing_.size() < FolderRecord::mostBytes;
  const FolderNames names = listing_.names();
  if (volume)
    keep(*status, *volume, isLasting, isRecorded, names);
  search(names, results);
  return names;
}

void FolderGatherer::keep(const FileStatus &status, std::int64_t volume, bool isLasting,
                          bool isRecorded, const FolderNames &names) {
  // A folder that cannot be relied on is only noted down, so that the way to those below is known.
  if ((!isLasting && isRecorded) || !common_.writer.isWanted())
    return;
  IndexRecord record;
  record.key = FolderKey::ofPath(path_);
  if (isLasting) {
    record.entries = static_cast<std::uint32_t>(listing_.count());
    record.bytes = FolderRecord::pack({volume, status.inode}, status.changeTime, names);
  }
  common_.writer.add(std::move(record));
}

void FolderGatherer::search(const FolderNames &names, Results &results) {
  const std::string_view folder = pathWithoutTrailingSlashes(path_);
  entryPath_.reserve(longestPath);
  const auto meetsPredicate = [&](std::string_view name) {
    if (isStopped())
      return false;
    FileInFolder file(folder, name, entryPath_);
    return common_.predicate.evaluateWithObject(file) &&
           folder.size() + 1 + name.size() <= longestPath;
  };
  const auto addResult = [&](std::string_view name) {
    results.push_back(NSString::join(folder, "/", name));
  };
  FolderNames::forEach(names.files, [&](std::string_view name) {
    if (meetsPredicate(name))
      addResult(name);
  });
  FolderNames::forEach(names.links, [&](std::string_view name) {
    if (!meetsPredicate(name))
      return;
    setPath(entryPath_, folder, name);
    const std::optional<FileStatus> target =
        fileStatus(currentFolder, entryPath_.c_str(), FollowLink::Yes);
    if (target && target->kind != FileKind::Folder)
      addResult(name);
  });
}

bool FolderGatherer::isMountRoot(std::string_view name) const noexcept {
  const std::shared_ptr<const MountPoints> mounts = MountPoints::recent();
  if (mounts && !mounts->haveName(name))
    return false;
  const std::optional<FileStatus> status = folderStatus(currentFolder, path_.c_str());
  return !status || status->isMountRoot;
}

bool FolderGatherer::isPackage(std::string_view name, bool mayHoldContents) const {
  if (!mayHoldContents || extensionOfName(name).empty())
    return false;
  const Ref<const NSString> path = NSString::create(path_);
  return isFilePackage(FileItem(*path));
}
