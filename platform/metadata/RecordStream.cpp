#include "platform/metadata/RecordStream.h"

#include "platform/foundation/FileStatus.h"
#include "platform/foundation/PathComponents.h"
#include "platform/metadata/FolderPath.h"
#include "platform/metadata/FolderStatus.h"

#include <iterator>
#include <utility>

namespace searchsystem {

namespace {

/// Searching a chunk takes a quarter of a millisecond, so threads rarely wait for each other.
constexpr std::size_t rowsInChunk = 128;
constexpr std::size_t bytesInChunk = std::size_t{64} << 10;

/// How far the other threads may run ahead of one that waits for a disk.
constexpr std::size_t mostChunksAhead = 64;

} // namespace

std::shared_ptr<RecordStream> RecordStream::open(const std::string &scope, const IndexPlace &place,
                                                 IndexWriter &writer) {
  bool isBroken = false;
  std::shared_ptr<RecordStream> stream;
  if (const std::shared_ptr<const IndexFile> file = IndexFile::open(place, isBroken)) {
    std::string path(pathWithoutTrailingSlashes(scope));
    auto index = std::make_unique<IndexMerge>(std::vector{file}, path);
    if (index->next() && index->path() == path)
      stream.reset(new RecordStream(std::move(path), std::move(index), writer));
    else
      isBroken = index->isBroken();
  }
  if (isBroken)
    writer.setBroken();
  if (stream)
    stream->scopeFolder_ = openToExamine(currentFolder, scope.c_str());
  return stream && stream->scopeFolder_ ? stream : nullptr;
}

RecordStream::RecordStream(std::string scopePath, std::unique_ptr<IndexMerge> index,
                           IndexWriter &writer) noexcept
    : scopePath_(std::move(scopePath)), writer_(writer), index_(std::move(index)) {}

std::unique_ptr<RecordStream::Chunk> RecordStream::read() {
  {
    const LockGuard guard(lock_);
    if (isGivenUp_)
      return nullptr;
  }
  auto chunk = std::make_unique<Chunk>();
  chunk->rows.reserve(rowsInChunk);
  for (std::size_t bytes = 0;
       hasRecord_ && chunk->rows.size() < rowsInChunk && bytes < bytesInChunk;) {
    const std::string &path = index_->path();
    const FolderRecord &record = index_->record();
    chunk->rows.push_back(
        {.pathBegin = chunk->paths.size(), .pathSize = path.size(), .record = record});
    chunk->paths.append(path).push_back('\0');
    if (chunk->pieces.empty() || chunk->pieces.back() != index_->piece())
      chunk->pieces.push_back(index_->piece());
    bytes += path.size() + record.size();
    hasRecord_ = index_->next();
  }
  if (!hasRecord_) {
    chunk->isLast = true;
    if (index_->isBroken())
      writer_.setBroken();
    index_.reset();
  }
  const LockGuard guard(lock_);
  chunk->number = readCount_++;
  return chunk;
}

bool RecordStream::mayRead() noexcept {
  const LockGuard guard(lock_);
  isHeldUp_ = readCount_ - mergedCount_ > mostChunksAhead;
  return !isHeldUp_;
}

bool RecordStream::merge(std::unique_ptr<Chunk> chunk, FolderQueue::Tasks &tasks,
                         Results &results) noexcept {
  const LockGuard guard(lock_);
  if (!isGivenUp_) {
    try {
      return mergeInOrder(std::move(chunk), tasks, results);
    } catch (...) {
      // Memory is short: the rest is listed from the disk.
    }
  }
  chunk.reset();
  stopMerging(tasks);
  return false;
}

bool RecordStream::mergeInOrder(std::unique_ptr<Chunk> chunk, FolderQueue::Tasks &tasks,
                                Results &results) {
  const std::size_t number = chunk->number;
  searched_[number] = std::move(chunk);
  while (!searched_.empty() && searched_.begin()->first == mergedCount_) {
    const std::unique_ptr<Chunk> next = std::move(searched_.begin()->second);
    searched_.erase(searched_.begin());
    ++mergedCount_;
    for (const Row &row : next->rows)
      mergeRow(*next, row, tasks, results);
    if (next->isLast)
      addRest(tasks);
  }
  return readCount_ - mergedCount_ <= mostChunksAhead && std::exchange(isHeldUp_, false);
}

void RecordStream::giveUp(FolderQueue::Tasks &tasks) noexcept {
  const LockGuard guard(lock_);
  stopMerging(tasks);
}

void RecordStream::stopMerging(FolderQueue::Tasks &tasks) noexcept {
  isGivenUp_ = true;
  searched_.clear();
  try {
    addRest(tasks);
  } catch (...) {
    // Another thread that returns its chunk frees some memory.
  }
}

void RecordStream::mergeRow(Chunk &chunk, const Row &row, FolderQueue::Tasks &tasks,
                            Results &results) {
  const std::string_view path = chunk.path(row);
  if (path == scopePath_) {
    isBegun_ = isBegun_ || mergeFolder(chunk, row, results);
    return;
  }
  while (!way_.empty() && !FolderPath::isBelow(path, wayPath_))
    leaveFolder(tasks);
  if (row.outcome == Row::Outcome::Gone)
    writer_.addGone(path);
  if (way_.empty())
    return;
  const std::string_view name = path.substr(wayPath_.size() + 1);
  // A folder in between may not be searched, or has no record and is listed from the disk. What is
  // not expected is searched by another task if it exists after all, and what is left open is
  // listed when its turn is over.
  if (name.find('/') == std::string_view::npos && isExpected(name, tasks)) {
    const std::size_t above = way_.size() - 1;
    if (mergeFolder(chunk, row, results))
      way_[above].skipName();
  }
}

bool RecordStream::mergeFolder(Chunk &chunk, const Row &row, Results &results) {
  if (row.outcome != Row::Outcome::Searched)
    return row.outcome != Row::Outcome::Open;
  const FolderRecord::Facts &facts = row.record.facts();
  const bool isPart = !row.listedFolders && !(facts.part == 0 && facts.isLastPart);
  if (isPart && !mergePart(chunk, row))
    return false;
  const std::string_view path = chunk.path(row);
  // The scope's own place in the way shows that it has been begun.
  const bool isOnWay = way_.empty() || !row.folders().empty();
  Folder folder{path.size(), std::string(row.folders())};
  way_.reserve(way_.size() + 1);
  wayPath_.reserve(path.size());
  Results &found = isPart ? parts_.results : chunk.results;
  const auto begin = found.begin() + static_cast<std::ptrdiff_t>(isPart ? 0 : row.resultsBegin);
  const auto end =
      isPart ? found.end() : begin + static_cast<std::ptrdiff_t>(row.resultsEnd - row.resultsBegin);
  results.insert(results.end(), std::make_move_iterator(begin), std::make_move_iterator(end));
  if (isOnWay) {
    way_.push_back(std::move(folder));
    wayPath_ = path;
  }
  return true;
}

bool RecordStream::mergePart(Chunk &chunk, const Row &row) {
  const FolderRecord::Facts &facts = row.record.facts();
  const std::string_view path = chunk.path(row);
  if (facts.part == 0)
    parts_ = {std::string(path), facts.listing, 0, {}};
  if (path != parts_.path || facts.listing != parts_.listing || facts.part != parts_.count)
    return false;
  const auto begin = chunk.results.begin();
  parts_.results.insert(
      parts_.results.end(),
      std::make_move_iterator(begin + static_cast<std::ptrdiff_t>(row.resultsBegin)),
      std::make_move_iterator(begin + static_cast<std::ptrdiff_t>(row.resultsEnd)));
  ++parts_.count;
  return facts.isLastPart;
}

bool RecordStream::isExpected(std::string_view name, FolderQueue::Tasks &tasks) {
  Folder &folder = way_.back();
  for (; !folder.isDone() && folder.name() < name; folder.skipName())
    addTask(folder.name(), tasks);
  return !folder.isDone() && folder.name() == name;
}

void RecordStream::leaveFolder(FolderQueue::Tasks &tasks) {
  for (Folder &folder = way_.back(); !folder.isDone(); folder.skipName())
    addTask(folder.name(), tasks);
  way_.pop_back();
  wayPath_.resize(way_.empty() ? 0 : way_.back().pathSize);
}

void RecordStream::addRest(FolderQueue::Tasks &tasks) {
  if (!isBegun_)
    tasks.push_back(
        {.kind = FolderTask::Kind::ScopeListing, .path = scopePath_.empty() ? "/" : scopePath_});
  isBegun_ = true;
  while (!way_.empty())
    leaveFolder(tasks);
}

void RecordStream::addTask(std::string_view name, FolderQueue::Tasks &tasks) {
  FolderTask task;
  task.path.reserve(wayPath_.size() + 1 + name.size());
  task.path.append(wayPath_).append("/").append(name);
  tasks.push_back(std::move(task));
}

} // namespace searchsystem
