#include "platform/metadata/IndexWriter.h"

#include "platform/metadata/FolderKey.h"

#include <algorithm>
#include <utility>

namespace searchsystem {

namespace {

/// Writing this many bytes of records takes about ten milliseconds.
constexpr std::size_t bytesAtOnce = std::size_t{1} << 20;

/// How much is collected while the disk is slow. What exceeds it is dropped.
constexpr std::size_t mostBytes = std::size_t{8} << 20;

/// Sorts both by key. Keeps one record of each folder, and of nested folders that are gone the
/// topmost.
void sort(std::vector<IndexRecord> &records, std::vector<std::string> &gone) {
  std::ranges::sort(records, {}, &IndexRecord::key);
  const auto isSameFolder = [](const auto &a, const auto &b) { return a.key == b.key; };
  records.erase(std::unique(records.begin(), records.end(), isSameFolder), records.end());
  std::ranges::sort(gone);
  std::vector<std::string> topmost;
  for (std::string &key : gone)
    if (topmost.empty() || !FolderKey::isInTree(key, topmost.back()))
      topmost.push_back(std::move(key));
  gone.swap(topmost);
}

} // namespace

IndexWriter::IndexWriter(std::optional<IndexPlace> place) noexcept
    : place_(std::move(place)), isDisabled_(!place_) {}

bool IndexWriter::isWanted() const noexcept {
  const LockGuard guard(lock_);
  return !isDisabled_ && collected_.bytes < mostBytes;
}

void IndexWriter::add(IndexRecord record) noexcept {
  {
    const LockGuard guard(lock_);
    if (isDisabled_ || collected_.bytes >= mostBytes)
      return;
    try {
      const std::size_t size = sizeof record + record.key.size() + record.bytes.size();
      collected_.records.push_back(std::move(record));
      collected_.bytes += size;
    } catch (...) {
      // The next query lists the folder again.
    }
    if (collected_.bytes < bytesAtOnce)
      return;
  }
  write(false);
}

void IndexWriter::addGone(std::string_view key) noexcept {
  const LockGuard guard(lock_);
  if (isDisabled_ || collected_.bytes >= mostBytes)
    return;
  try {
    collected_.gone.emplace_back(key);
    collected_.bytes += sizeof(std::string) + key.size();
  } catch (...) {
    // The next query finds it again.
  }
}

void IndexWriter::setBroken() noexcept {
  const LockGuard guard(lock_);
  isBroken_ = true;
}

void IndexWriter::write(bool isLast) noexcept {
  Batch batch;
  {
    const LockGuard guard(lock_);
    if (isDisabled_ || isWriting_ || (collected_.bytes == 0 && !isBroken_))
      return;
    isWriting_ = true;
    std::swap(batch, collected_);
  }
  IndexFault fault = IndexFault::Unavailable;
  try {
    sort(batch.records, batch.gone);
    fault = tryToWrite(batch);
    if (fault == IndexFault::Broken) {
      setBroken();
      fault = tryToWrite(batch);
    }
  } catch (...) {
    // Memory is short: the index stays as it is.
  }
  if (isLast || fault != IndexFault::None)
    database_.reset();
  const LockGuard guard(lock_);
  isWriting_ = false;
  isDisabled_ = isDisabled_ || isLast || fault != IndexFault::None;
}

IndexFault IndexWriter::tryToWrite(const Batch &batch) {
  bool isBroken = false;
  {
    const LockGuard guard(lock_);
    std::swap(isBroken, isBroken_);
  }
  if (isBroken) {
    database_.reset();
    place_->removeFiles();
  }
  IndexFault fault = IndexFault::None;
  if (!database_)
    database_ = IndexDatabase::openToWrite(*place_, fault);
  if (database_)
    fault = database_->store(batch.records, batch.gone);
  if (fault != IndexFault::None)
    database_.reset();
  return fault;
}

} // namespace searchsystem
