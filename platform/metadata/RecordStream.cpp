#include "platform/metadata/RecordStream.h"

#include "platform/foundation/FileStatus.h"
#include "platform/foundation/PathComponents.h"
#include "platform/metadata/FolderKey.h"
#include "platform/metadata/FolderStatus.h"

#include <new>
#include <utility>

namespace searchsystem {

namespace {

/// Searching a chunk takes a quarter of a millisecond, so threads rarely wait for each other.
constexpr std::size_t rowsInChunk = 64;
constexpr std::size_t bytesInChunk = std::size_t{64} << 10;

/// How far the other threads may run ahead of one that waits for a disk.
constexpr std::size_t mostChunksAhead = 64;

} // namespace

std::shared_ptr<RecordStream> RecordStream::open(const std::string &scope, const IndexPlace &place,
                                                 IndexWriter &writer) {
  IndexFault fault = IndexFault::None;
  std::unique_ptr<IndexDatabase> index = IndexDatabase::openToRead(place, fault);
  if (index) {
    const std::string key = FolderKey::ofPath(scope);
    index->selectTree(key);
    const std::optional<RecordGroup::Record> first = index->next();
    fault = index->fault();
    if (first && first->key == key) {
      std::shared_ptr<RecordStream> stream(new RecordStream(scope, std::move(index), writer));
      stream->scopeFolder_ = openToExamine(scope.c_str());
      if (!stream->scopeFolder_)
        return nullptr;
      stream->nextRecord_ = first;
      return stream;
    }
  }
  if (fault == IndexFault::Broken)
    writer.setBroken();
  return nullptr;
}

RecordStream::RecordStream(const std::string &scope, std::unique_ptr<IndexDatabase> index,
                           IndexWriter &writer)
    : scopeKey_(FolderKey::ofPath(scope)), scopePrefix_(pathWithoutTrailingSlashes(scope)),
      writer_(writer), index_(std::move(index)) {}

std::unique_ptr<RecordStream::Chunk> RecordStream::read() {
  {
    const LockGuard guard(lock_);
    if (isGivenUp_)
      return nullptr;
  }
  auto chunk = std::make_unique<Chunk>();
  chunk->bytes.reserve(bytesInChunk);
  chunk->rows.reserve(rowsInChunk);
  while (nextRecord_ && chunk->rows.size() < rowsInChunk && chunk->bytes.size() < bytesInChunk) {
    chunk->rows.push_back({.keyBegin = chunk->bytes.size(),
                           .keySize = nextRecord_->key.size(),
                           .recordSize = nextRecord_->bytes.size()});
    chunk->bytes.append(nextRecord_->key).append(nextRecord_->bytes);
    nextRecord_ = index_->next();
  }
  if (!nextRecord_) {
    chunk->isLast = true;
    if (index_->fault() == IndexFault::Broken)
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
    for (Row &row : next->rows)
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

void RecordStream::mergeRow(const Chunk &chunk, Row &row, FolderQueue::Tasks &tasks,
                            Results &results) {
  const std::string_view key = chunk.key(row);
  if (key == scopeKey_) {
    // Without the scope nothing can be merged.
    if (row.hasFailed)
      throw std::bad_alloc();
    mergeFolder(key, row, results);
    isBegun_ = true;
    return;
  }
  while (!way_.empty() && !FolderKey::isBelow(key, wayKey_))
    leaveFolder(tasks);
  if (way_.empty())
    return;
  const std::string_view name = key.substr(wayKey_.size() + 1);
  // A folder in between may not be searched, or has no record and is listed from the disk.
  if (name.find('\0') != std::string_view::npos)
    return;
  if (!isExpected(name, tasks)) {
    // If the folder exists after all, another task searches it.
    if (row.isGone)
      writer_.addGone(key);
    return;
  }
  const std::size_t above = way_.size() - 1;
  if (row.hasFailed)
    addTask(name, tasks);
  else
    mergeFolder(key, row, results);
  way_[above].skipName();
}

void RecordStream::mergeFolder(std::string_view key, Row &row, Results &results) {
  if (!row.isSearched)
    return;
  way_.reserve(way_.size() + 1);
  wayKey_.reserve(key.size());
  results.insert(results.end(), std::make_move_iterator(row.results.begin()),
                 std::make_move_iterator(row.results.end()));
  way_.push_back({key.size(), std::move(row.folders)});
  wayKey_ = key;
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
  wayKey_.resize(way_.empty() ? 0 : way_.back().keySize);
}

void RecordStream::addRest(FolderQueue::Tasks &tasks) {
  if (!isBegun_)
    tasks.push_back({.kind = FolderTask::Kind::ScopeListing,
                     .path = scopePrefix_.empty() ? "/" : scopePrefix_});
  isBegun_ = true;
  while (!way_.empty())
    leaveFolder(tasks);
}

void RecordStream::addTask(std::string_view name, FolderQueue::Tasks &tasks) {
  FolderTask task;
  FolderKey::appendPath(task.path, wayKey_);
  task.path.append("/").append(name);
  tasks.push_back(std::move(task));
}

} // namespace searchsystem
