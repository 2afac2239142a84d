#include "platform/metadata/IndexWriter.h"

#include <utility>

namespace searchsystem {

namespace {

/// Beyond this, records are put aside on the disk.
constexpr std::size_t bytesAtOnce = std::size_t{1} << 20;

/// How much is collected while the disk is slow. What exceeds it is dropped.
constexpr std::size_t mostBytes = std::size_t{8} << 20;

} // namespace

IndexWriter::IndexWriter(std::optional<IndexPlace> place) noexcept
    : place_(std::move(place)), isDisabled_(!place_) {}

bool IndexWriter::isWanted() const noexcept {
  const LockGuard guard(lock_);
  return !isDisabled_ && collected_.size() < mostBytes;
}

void IndexWriter::add(std::string_view path, const FolderRecord::Facts &facts,
                      const FolderNames &names) noexcept {
  {
    const LockGuard guard(lock_);
    if (isDisabled_ || collected_.size() >= mostBytes)
      return;
    try {
      collected_.add(path, facts, names);
    } catch (...) {
      // The next query lists the folder again.
    }
    if (collected_.size() < bytesAtOnce)
      return;
  }
  write(false);
}

void IndexWriter::addGone(std::string_view path) noexcept {
  add(path, {.kind = FolderRecord::Kind::Gone, .day = today()}, {});
}

void IndexWriter::setBroken() noexcept {
  const LockGuard guard(lock_);
  isBroken_ = true;
}

void IndexWriter::write(bool isLast) noexcept {
  RecordBatch batch;
  bool isBroken = false;
  {
    const LockGuard guard(lock_);
    if (isDisabled_ || isWriting_ || (collected_.isEmpty() && !isBroken_ && !update_))
      return;
    isWriting_ = true;
    isBroken = isBroken_;
    std::swap(batch, collected_);
  }
  bool isWritten = false;
  try {
    isWritten = tryToWrite(batch, isLast, isBroken);
  } catch (...) {
    // Memory is short: the index stays as it is.
  }
  if (isLast || !isWritten)
    update_.reset();
  const LockGuard guard(lock_);
  isWriting_ = false;
  isDisabled_ = isDisabled_ || isLast || !isWritten;
}

bool IndexWriter::tryToWrite(RecordBatch &batch, bool isLast, bool isBroken) {
  if (!update_)
    update_ = IndexUpdate::begin(*place_);
  if (!update_)
    return false;
  batch.sort();
  return isLast ? update_->finish(batch, isBroken) : update_->putAside(batch);
}

} // namespace searchsystem
