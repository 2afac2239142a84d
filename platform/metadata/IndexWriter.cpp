#include "platform/metadata/IndexWriter.h"

#include "platform/metadata/FolderKey.h"

#include <algorithm>
#include <utility>

namespace {

/// So many bytes of records are written in some ten milliseconds.
constexpr std::size_t bytesAtOnce = std::size_t{1} << 20;

/// What is collected while a disk is slow to write. More is not kept.
constexpr std::size_t mostBytes = std::size_t{8} << 20;

/// Brings both into order. Of several records of a folder one is enough, and of folders that are
/// gone the topmost.
void sort(std::vector<IndexRecord> &records, std::vector<std::string> &gone) {
  std::sort(records.begin(), records.end(),
            [](const IndexRecord &a, const IndexRecord &b) { return a.key < b.key; });
  records.erase(
      std::unique(records.begin(), records.end(),
                  [](const IndexRecord &a, const IndexRecord &b) { return a.key == b.key; }),
      records.end());
  std::sort(gone.begin(), gone.end());
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
  Batch batch;
  {
    const LockGuard guard(lock_);
    if (isDisabled_ || collected_.bytes >= mostBytes)
      return;
    try {
      const std::size_t size = sizeof record + record.key.size() + record.bytes.size();
      collected_.records.push_back(std::move(record));
      collected_.bytes += size;
    } catch (...) {
      // The folder will be listed again.
    }
    if (collected_.bytes < bytesAtOnce || isWriting_)
      return;
    isWriting_ = true;
    std::swap(batch, collected_);
  }
  write(std::move(batch), false);
}

void IndexWriter::addGone(std::string_view key) noexcept {
  const LockGuard guard(lock_);
  if (isDisabled_ || collected_.bytes >= mostBytes)
    return;
  try {
    collected_.gone.emplace_back(key);
    collected_.bytes += sizeof(std::string) + key.size();
  } catch (...) {
    // It is met again by the next query.
  }
}

void IndexWriter::setBroken() noexcept {
  const LockGuard guard(lock_);
  isBroken_ = true;
}

void IndexWriter::finish() noexcept {
  Batch batch;
  {
    const LockGuard guard(lock_);
    if (isDisabled_ || isWriting_ || (collected_.bytes == 0 && !isBroken_))
      return;
    isWriting_ = true;
    std::swap(batch, collected_);
  }
  write(std::move(batch), true);
}

void IndexWriter::write(Batch batch, bool isLast) noexcept {
  IndexFault fault = IndexFault::Unavailable;
  try {
    sort(batch.records, batch.gone);
    fault = tryToWrite(batch);
    if (fault == IndexFault::Broken) {
      setBroken();
      fault = tryToWrite(batch);
    }
  } catch (...) {
    // Memory is short, or the index cannot be reached: it stays as it is.
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
