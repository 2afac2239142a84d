#include "platform/metadata/FolderGatherer.h"

#include "platform/foundation/DirectoryListing.h"
#include "platform/foundation/MountPoints.h"
#include "platform/foundation/NSWorkspace.h"
#include "platform/foundation/PathComponents.h"
#include "platform/foundation/ResolvedPath.h"
#include "platform/foundation/TryTwice.h"
#include "platform/metadata/CheckSum.h"
#include "platform/metadata/FolderPath.h"
#include "platform/metadata/FolderRecord.h"
#include "platform/metadata/FolderStatus.h"
#include "platform/metadata/NameScan.h"
#include "platform/metadata/ProcessRights.h"

#include <chrono>
#include <utility>

namespace searchsystem {

namespace {

/// Whether the folder at `path`, of that name, is a package.
bool isPackage(std::string_view path, std::string_view name, bool mayHoldContents) {
  if (!mayHoldContents || extensionOfName(name).empty())
    return false;
  return isFilePackage(FileItem(*NSString::create(path)));
}

/// The files of a folder, one after the other. Their status is read only if it matters.
class FileInFolder final : public MetadataCandidate {
public:
  FileInFolder(int folder, std::string_view below, std::string &path) noexcept
      : folder_(folder), path_(path), prefix_(below.empty() ? 0 : below.size() + 1) {
    path_.assign(below).append(prefix_ == 0 ? "" : "/");
  }

  void begin(std::string_view fileName) noexcept {
    name = fileName;
    isExamined_ = false;
  }

  std::optional<double> contentChangeDate() noexcept override {
    if (!std::exchange(isExamined_, true))
      status_ = examine(FollowLink::No);
    return status_ ? std::optional(status_->modificationTime) : std::nullopt;
  }

  /// Whether it is there and no folder, if it is a link that to which it leads.
  [[nodiscard]] bool exists() noexcept {
    const bool isKnown = isExamined_ && (!status_ || status_->kind != FileKind::Link);
    const std::optional<FileStatus> status = isKnown ? status_ : examine(FollowLink::Yes);
    return status && status->kind != FileKind::Folder;
  }

private:
  [[nodiscard]] std::optional<FileStatus> examine(FollowLink follow) noexcept {
    std::optional<FileStatus> status;
    if (prefix_ != 0 && ++count_ == manyFiles) {
      path_.resize(prefix_ - 1);
      opened_ = openToExamine(folder_, path_.c_str());
      if (opened_) {
        folder_ = opened_.number();
        prefix_ = 0;
      }
    }
    // Only a path that is too long for a result needs memory here.
    tryTwice([&] {
      path_.resize(prefix_);
      path_.append(name);
      status = fileStatus(folder_, path_.c_str(), follow);
    });
    return status;
  }

  /// To open the folder costs as much as the longer way to some files.
  static constexpr int manyFiles = 5;

  int folder_;
  FileDescriptor opened_;
  std::string &path_;
  std::size_t prefix_;
  int count_ = 0;
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

/// For `FolderRecord::Facts::owner`; 0 if that cannot be known.
std::uint64_t ownerOf(std::int64_t volume) noexcept {
  const std::uint64_t rights = ProcessRights::number();
  return rights == 0 ? 0
                     : std::max<std::uint64_t>(mix(rights, static_cast<std::uint64_t>(volume)), 1);
}

/// A number that no other listing of the same folder has.
std::uint32_t numberForListing() noexcept {
  static std::atomic<std::uint32_t> next(
      static_cast<std::uint32_t>(std::chrono::steady_clock::now().time_since_epoch().count()));
  return ++next;
}

/// A record that no query has found true for longer is renewed.
constexpr int daysOfAYoungRecord = 30;

} // namespace

FolderGatherer::FolderGatherer(const Common &common) noexcept
    : common_(common), textInName_(common.predicate.textInName()), today_(today()) {}

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
    if (!isMountRoot(name) && !isPackage(path_, name, true))
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
      if (!isStopped()) {
        row.resultsBegin = chunk->results.size();
        const bool isDone = tryTwice([&] {
          chunk->results.resize(row.resultsBegin);
          searchRow(*stream, *chunk, row);
        });
        if (!isDone)
          row.outcome = RecordStream::Row::Outcome::Open;
        row.resultsEnd = chunk->results.size();
      }
    if (!isStopped() && stream->merge(std::move(chunk), tasks, results))
      offerNext();
  } catch (...) {
    if (!isStopped())
      stream->giveUp(tasks);
  }
}

void FolderGatherer::searchRow(const RecordStream &stream, RecordStream::Chunk &chunk,
                               RecordStream::Row &row) {
  using Outcome = RecordStream::Row::Outcome;
  const std::string_view path = chunk.path(row);
  const FolderRecord &record = row.record;
  if (!record.isWhole(path)) {
    common_.writer.setBroken();
    return;
  }
  std::string_view below = path.substr(stream.scopePath().size());
  const bool isScope = below.empty();
  row.outcome = Outcome::MayNotBeSearched;
  if (FolderPath::isHidden(below))
    return;
  below.remove_prefix(isScope ? 0 : 1);
  const std::optional<FileStatus> status =
      folderStatus(stream.scopeFolder(), isScope ? "." : below.data());
  if (!status)
    row.outcome = Outcome::Gone;
  if (!status || (status->isMountRoot && !isScope))
    return;
  const FolderRecord::Facts &facts = record.facts();
  const bool isOnly = facts.part == 0 && facts.isLastPart;
  const bool counts =
      isTrue(facts, *status, volumes_.volumeOf(status->device, isScope ? "/" : path.data()));
  if (!isScope && isPackage(path, lastPathComponent(path),
                            !counts || !isOnly || record.names().mayHoldContents))
    return;
  row.outcome = Outcome::Open;
  if (counts) {
    search({path, stream.scopeFolder(), below, false}, record.names(), chunk.results);
    if (today_ - facts.day >= daysOfAYoungRecord)
      renew(path, record);
  } else if (facts.part == 0) {
    path_.assign(isScope && path.empty() ? "/" : path);
    const std::optional<std::string_view> folders = list(true, chunk.results);
    row.outcome = Outcome::MayNotBeSearched;
    if (!folders)
      return;
    row.listedFolders = std::make_unique<std::string>(*folders);
  } else {
    return;
  }
  row.outcome = Outcome::Searched;
}

bool FolderGatherer::canProve(const FileStatus &status) const noexcept {
  // Times of whole seconds prove nothing: copies of a disk, or two changes, may have the same.
  return status.changeTime.nanoseconds != 0 && !status.isEncrypted &&
         (status.links > 1 || !volumes_.isOverlay(status.device));
}

bool FolderGatherer::isTrue(const FolderRecord::Facts &facts, const FileStatus &status,
                            std::optional<std::int64_t> volume) const noexcept {
  const bool mayCount = facts.kind == FolderRecord::Kind::Names && volume && canProve(status);
  return mayCount && facts.inode == status.inode && facts.changeTime == status.changeTime &&
         facts.owner == ownerOf(*volume);
}

void FolderGatherer::renew(std::string_view path, const FolderRecord &record) noexcept {
  FolderRecord::Facts facts = record.facts();
  facts.day = today_;
  common_.writer.add(path, facts, record.names());
}

void FolderGatherer::listWithSubFolders(FolderQueue::Tasks &tasks, Results &results) {
  const std::optional<std::string_view> folders = list(false, results);
  if (!folders)
    return;
  const std::string_view above = pathWithoutTrailingSlashes(path_);
  FolderNames::forEach(*folders, [&](std::string_view name) {
    FolderTask task;
    task.path.reserve(above.size() + 1 + name.size());
    task.path.append(above).append("/").append(name);
    tasks.push_back(std::move(task));
  });
}

std::optional<std::string_view> FolderGatherer::list(bool isRecorded, Results &results) {
  const FileMoment begin = earliestMomentOfChange();
  std::optional<DirectoryListing> listing = DirectoryListing::open(path_);
  if (!listing || !listing->canReachEntries())
    return std::nullopt;
  const std::optional<FileStatus> status = fileStatus(listing->descriptor());
  const std::optional<std::int64_t> volume =
      status ? volumes_.volumeOf(status->device, listing->descriptor()) : std::nullopt;
  const std::string_view path = pathWithoutTrailingSlashes(path_);
  const Place place{path, listing->descriptor(), "", true};
  FolderRecord::Facts facts{.isLastPart = false, .day = today_, .listing = numberForListing()};
  bool isLasting = volume && canProve(*status) &&
                   isSettled(status->changeTime, begin, longestTick) && common_.writer.isWanted();
  if (isLasting) {
    facts.owner = ownerOf(*volume);
    facts.inode = status->inode;
    facts.changeTime = status->changeTime;
    isLasting = facts.owner != 0;
  }
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
    if (listing_.sizeOfFiles() < FolderRecord::bytesInPart)
      continue;
    const FolderNames names = listing_.files();
    search(place, names, results);
    facts.entries = static_cast<std::uint32_t>(listing_.countOfFiles());
    if (isLasting)
      common_.writer.add(path, facts, names);
    isLasting = isLasting && ++facts.part < FolderRecord::mostParts;
    listing_.clearFiles();
  }
  isLasting = isLasting && !listing->hasBrokenOff() &&
              listing_.sizeOfFolders() <= FolderRecord::mostBytesOfFolders;
  const FolderNames names = listing_.names();
  search(place, names, results);
  facts.isLastPart = true;
  facts.entries = static_cast<std::uint32_t>(listing_.count());
  if (isLasting)
    common_.writer.add(path, facts, names);
  else if (volume && !isRecorded)
    // It leads to those below it.
    common_.writer.add(
        path, {.kind = FolderRecord::Kind::PathOnly, .day = today_, .listing = facts.listing}, {});
  return names.folders;
}

void FolderGatherer::search(const Place &place, const FolderNames &names, Results &results) {
  FileInFolder file(place.folder, place.below, entryPath_);
  const auto look = [&](std::string_view name, bool isProved) {
    file.begin(name);
    if (!isStopped() && common_.predicate.evaluateWithObject(file) &&
        place.path.size() + 1 + name.size() <= longestPath && (isProved || file.exists()))
      results.push_back(NSString::join(place.path, "/", name));
  };
  forEachName(names, textInName_, [&](std::string_view name) { look(name, place.isListed); });
  FolderNames::forEach(names.links, [&](std::string_view name) { look(name, false); });
}

bool FolderGatherer::isMountRoot(std::string_view name) const noexcept {
  const std::shared_ptr<const MountPoints> mounts = MountPoints::recent();
  if (mounts && !mounts->haveName(name))
    return false;
  const std::optional<FileStatus> status = folderStatus(currentFolder, path_.c_str());
  return !status || status->isMountRoot;
}

} // namespace searchsystem
