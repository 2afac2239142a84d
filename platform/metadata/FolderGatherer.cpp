#include "platform/metadata/FolderGatherer.h"

#include "platform/foundation/DirectoryListing.h"
#include "platform/foundation/MountPoints.h"
#include "platform/foundation/NSWorkspace.h"
#include "platform/foundation/PathComponents.h"
#include "platform/foundation/ResolvedPath.h"
#include "platform/foundation/TryTwice.h"
#include "platform/metadata/FolderKey.h"
#include "platform/metadata/FolderRecord.h"
#include "platform/metadata/FolderStatus.h"

#include <utility>

namespace searchsystem {

namespace {

void setPath(std::string &path, std::string_view folder, std::string_view name) {
  path.assign(pathWithoutTrailingSlashes(folder));
  path.append("/").append(name);
}

/// A file whose date is read only if it matters.
class FileInFolder final : public MetadataCandidate {
public:
  FileInFolder(std::string_view folder, std::string_view fileName, std::string &path) noexcept
      : MetadataCandidate(fileName), folder_(folder), path_(path) {}

  std::optional<double> contentChangeDate() noexcept override {
    // Only a path that is too long for a result needs memory here.
    if (!std::exchange(isExamined_, true))
      tryTwice([&] {
        setPath(path_, folder_, name);
        status_ = fileStatus(currentFolder, path_.c_str(), FollowLink::No);
      });
    return status_ ? std::optional(status_->modificationTime) : std::nullopt;
  }

private:
  const std::string_view folder_;
  std::string &path_;
  bool isExamined_ = false;
  std::optional<FileStatus> status_;
};

std::string resolvedFolder(const std::string &path) {
  const std::optional<FileStatus> status = fileStatus(currentFolder, path.c_str(), FollowLink::Yes);
  if (!status || status->kind != FileKind::Folder)
    return {};
  return resolvedPath(path).value_or(std::string());
}

/// The folder that a search scope names, links resolved. If it does not exist, the path is tried
/// without the blanks around it. Empty if there is no such folder.
std::string resolvedScope(const std::string &scope) {
  std::string folder = resolvedFolder(scope);
  constexpr const char *blanks = " \t";
  const std::size_t begin = scope.find_first_not_of(blanks);
  if (!folder.empty() || begin == std::string::npos)
    return folder;
  return resolvedFolder(scope.substr(begin, scope.find_last_not_of(blanks) + 1 - begin));
}

} // namespace

void FolderGatherer::process(const FolderTask &task, FolderQueue::Tasks &tasks,
                             Results &results) noexcept {
  const std::size_t tasksBefore = tasks.size();
  const std::size_t resultsBefore = results.size();
  tryTwice([&] {
    tasks.resize(tasksBefore);
    results.resize(resultsBefore);
    tryToProcess(task, tasks, results);
  });
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
  path_ = resolvedScope(scope);
  if (path_.empty())
    return;
  // If memory is short, the search does without records.
  std::shared_ptr<RecordStream> stream;
  if (common_.place)
    tryTwice([&] { stream = RecordStream::open(path_, *common_.place, common_.writer); });
  if (stream)
    processRecords(stream, tasks, results);
  else
    listWithSubFolders(tasks, results);
}

void FolderGatherer::processRecords(const std::shared_ptr<RecordStream> &stream,
                                    FolderQueue::Tasks &tasks, Results &results) noexcept {
  const auto offerNext = [&] {
    common_.queue.add({.kind = FolderTask::Kind::Records, .stream = stream});
  };
  try {
    std::unique_ptr<RecordStream::Chunk> chunk = stream->read();
    if (!chunk)
      return;
    if (!chunk->isLast && stream->mayRead())
      offerNext();
    for (RecordStream::Row &row : chunk->rows)
      if (!isStopped())
        row.hasFailed = !tryTwice([&] {
          row.results.clear();
          searchRow(*stream, *chunk, row);
        });
    if (!isStopped() && stream->merge(std::move(chunk), tasks, results))
      offerNext();
  } catch (...) {
    if (!isStopped())
      stream->giveUp(tasks);
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
  const std::optional<std::int64_t> volume =
      status ? volumes_.volumeOf(status->device, listing->descriptor()) : std::nullopt;
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
  // For a folder whose record would not last only the key is kept, to lead to those below it.
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
  const auto leadsToFile = [&](std::string_view link) {
    setPath(entryPath_, folder, link);
    const std::optional<FileStatus> target =
        fileStatus(currentFolder, entryPath_.c_str(), FollowLink::Yes);
    return target && target->kind != FileKind::Folder;
  };
  for (const bool areLinks : {false, true})
    FolderNames::forEach(areLinks ? names.links : names.files, [&](std::string_view name) {
      FileInFolder file(folder, name, entryPath_);
      if (!isStopped() && common_.predicate.evaluateWithObject(file) &&
          folder.size() + 1 + name.size() <= longestPath && (!areLinks || leadsToFile(name)))
        results.push_back(NSString::join(folder, "/", name));
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
  return isFilePackage(FileItem(*NSString::create(path_)));
}

} // namespace searchsystem
