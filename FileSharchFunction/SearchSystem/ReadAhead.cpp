#include "FileSharchFunction/SearchSystem/ReadAhead.h"

#include "FileSharchFunction/SearchSystem/SearchItem.h"
#include "platform/foundation/MainRunLoop.h"
#include "platform/foundation/TryTwice.h"

#include <algorithm>
#include <utility>

namespace {

constexpr std::size_t mostFoldersAhead = 256;

/// When so few are left to read, the main thread is to take what has been read.
constexpr std::size_t fewFolders = 64;

/// After so many folders a reader lets other jobs have its thread.
constexpr std::size_t foldersInARow = 64;

constexpr int mostOpenFolders = 4;

/// What is kept of a folder at most before its worker comes to it, and while it waits.
constexpr std::size_t mostKept = 1024;
constexpr std::size_t mostKeptWhileAwaited = 64;

} // namespace

void ReadAhead::Reader::start(ReadAhead &readAhead) noexcept {
  readAhead_ = &readAhead;
  owner_ = Ref<const NSObject>(&readAhead.owner_);
  NSThread::detachNewThread(*this);
}

void ReadAhead::Reader::main() { readAhead_->readSome(); }

void ReadAhead::Reader::ended() noexcept {
  // This object is part of the owner, and may go with it here.
  const Ref<const NSObject> owner = std::move(owner_);
  readAhead_->startReaders();
}

void ReadAhead::begin(const EntryTest *test, int type) noexcept {
  test_ = test;
  type_ = type;
  window_.clear();
  const LockGuard guard(lock_);
  unread_.clear();
}

void ReadAhead::follow(const Pool &pool) noexcept {
  if (test_ == nullptr || isCancelled_.load() != 0 ||
      window_.size() >= std::min(pool.size(), mostFoldersAhead))
    return;
  try {
    while (window_.size() < std::min(pool.size(), mostFoldersAhead)) {
      const Ref<FolderAhead> folder = FolderAhead::create(pool[window_.size()]);
      window_.push_back(folder);
      try {
        const LockGuard guard(lock_);
        unread_.push_back(folder);
      } catch (...) {
        window_.pop_back();
        throw;
      }
    }
  } catch (...) {
    // Without memory for it a folder is read by its worker.
  }
  startReaders();
}

void ReadAhead::removeFirst() noexcept {
  if (window_.empty())
    return;
  window_.pop_front();
  // Readers leave a folder alone that nobody waits for while too many are open.
  if (readers_.front().isFree())
    startReaders();
}

FolderFindings ReadAhead::take(FolderAhead &folder) noexcept {
  if (folder.findings.rest)
    openFolders_.fetch_sub(1);
  return std::move(folder.findings);
}

std::size_t ReadAhead::mayRead() noexcept {
  if (unread_.empty() || (openFolders_.load() >= mostOpenFolders && !unread_.front()->isAwaited()))
    return 0;
  return unread_.size();
}

void ReadAhead::startReaders() noexcept {
  std::size_t wanted = 0;
  {
    const LockGuard guard(lock_);
    wanted = mayRead();
  }
  for (Reader &reader : readers_) {
    if (wanted == 0)
      return;
    --wanted;
    if (reader.isFree())
      reader.start(*this);
  }
}

void ReadAhead::readSome() noexcept {
  const bool isOnMainThread = MainRunLoop::shared().isMainThread();
  const std::size_t most = isOnMainThread ? 1 : foldersInARow;
  Claim claimed;
  for (std::size_t count = 0; count < most;) {
    const std::size_t size = claim(claimed, std::min(most - count, mostAtOnce));
    if (size == 0)
      return;
    for (std::size_t i = 0; i < size; ++i) {
      read(*claimed[i]);
      claimed[i] = nullptr;
    }
    count += size;
  }
}

std::size_t ReadAhead::claim(Claim &claimed, std::size_t most) noexcept {
  std::size_t count = 0;
  bool areFew = false;
  {
    const LockGuard guard(lock_);
    const std::size_t left = mayRead();
    areFew = left < fewFolders;
    // Others shall find something too.
    const std::size_t share = std::max<std::size_t>(left / 4, 1);
    for (const std::size_t end = std::min({left, most, share}); count < end; ++count) {
      claimed[count] = std::move(unread_.front());
      unread_.pop_front();
    }
  }
  if (areFew)
    MainRunLoop::shared().wakeForWork();
  return count;
}

void ReadAhead::read(FolderAhead &folder) noexcept {
  FolderFindings &findings = folder.findings;
  const auto isCancelled = [&] { return isCancelled_.load(std::memory_order_relaxed) != 0; };
  tryTwice([&] {
    if (isCancelled())
      return;
    if (std::optional<DirectoryListing> listing = DirectoryListing::open(folder.path().view()))
      findings.rest.emplace(*std::move(listing));
  });
  while (findings.rest) {
    const std::size_t kept = findings.files.size() + findings.subFolders.size();
    if (kept >= mostKept || (kept >= mostKeptWhileAwaited && folder.isAwaited())) {
      openFolders_.fetch_add(1);
      break;
    }
    const std::optional<DirectoryEntry> entry =
        isCancelled() ? std::nullopt : findings.rest->next();
    if (entry)
      // Where memory is short the entry is passed over, and the next may fare better.
      tryTwice([&] { readEntry(folder, *entry); });
    else
      findings.rest.reset();
  }
  folder.setRead();
}

void ReadAhead::readEntry(FolderAhead &folder, const DirectoryEntry &entry) const {
  FolderFindings &findings = folder.findings;
  SearchItem item(folder.path(), *findings.rest, entry);
  switch (test_->kindOf(item.file, type_)) {
  case EntryTest::Kind::Nothing:
    break;
  case EntryTest::Kind::SubFolder:
    findings.subFolders.push_back(item.path());
    break;
  case EntryTest::Kind::File:
    if (test_->wantsAll() ? test_->meetsAll(item.file) : test_->meetsAny(item.file))
      findings.files.push_back(item.path());
    break;
  }
}
