#include "FileSharchFunction/SearchSystem/ReadAhead.h"

#include "FileSharchFunction/SearchSystem/SearchItem.h"
#include "platform/content/OpenedPhotograph.h"
#include "platform/foundation/TryTwice.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <utility>

namespace searchsystem {

namespace {

/// As many as there may be workers.
constexpr std::size_t mostThreads = 5;

/// With 64 a walk in a host's own loop takes 14 % longer.
constexpr std::size_t mostFoldersAhead = 256;

/// While at least these are left to read, a folder in which no file was found does not wake the
/// main thread, since nothing waits for it. Otherwise a walk for few matches takes 10 %
/// more time and 12 % more processor time.
constexpr std::size_t fewFolders = 64;

/// While a worker waits, what was found is handed over when it is this much, or includes a file and
/// is this old.
constexpr std::size_t manyFindings = 64;
constexpr std::chrono::milliseconds longestDelay{1};

} // namespace

ReadAhead::ReadAhead(const NSObject &owner, const std::atomic<char> &isCancelled)
    : ThreadTeam(owner, mostThreads), isCancelled_(isCancelled) {}

void ReadAhead::follow(const Paths &paths) noexcept {
  if (filter_ == nullptr || isCancelled_.load() != 0)
    return;
  try {
    while (window_.size() < std::min(paths.size(), mostFoldersAhead)) {
      const auto folder = Ref<FolderAhead>::adopt(new FolderAhead(paths[window_.size()]));
      window_.push_back(folder);
      try {
        const LockGuard guard(lock_);
        unread_.push_back(folder);
      } catch (...) {
        window_.pop_back();
        throw;
      }
      call(1);
    }
  } catch (...) {
    // If memory is short, the folder's worker reads it.
  }
}

bool ReadAhead::work() noexcept {
  const bool isOnMainThread = MainRunLoop::shared().isMainThread();
  while (const Ref<FolderAhead> folder = takeUnread()) {
    read(*folder);
    if (isOnMainThread)
      return true;
  }
  // The main thread leaves files to their workers: only other threads may have them read deep.
  while (!isOnMainThread) {
    std::array<Ref<FileAhead>, FileAhead::mostTogether> files;
    const std::size_t count = takeUntested(files);
    if (count == 0)
      break;
    FileAhead::test({files.data(), count});
  }
  return false;
}

void ReadAhead::add(const Ref<FileAhead> &file) noexcept {
  try {
    const LockGuard guard(lock_);
    untested_.push_back(file);
  } catch (...) {
    // Without memory for it a file is tested by its worker.
    return;
  }
  call(1);
}

std::size_t ReadAhead::takeUntested(std::span<Ref<FileAhead>> files) noexcept {
  const LockGuard guard(lock_);
  // The others get their share.
  const std::size_t most =
      std::min({files.size(), untested_.size() / mostThreads + 1, mostOpenPhotographs()});
  std::size_t count = 0;
  while (!untested_.empty() && count < most &&
         (count == 0 || (files[0]->isPhotograph() && untested_.front()->isPhotograph()))) {
    Ref<FileAhead> file = std::move(untested_.front());
    untested_.pop_front();
    if (file->take())
      files[count++] = std::move(file);
  }
  return count;
}

Ref<FolderAhead> ReadAhead::takeUnread() noexcept {
  const LockGuard guard(lock_);
  if (unread_.empty())
    return nullptr;
  Ref<FolderAhead> folder = std::move(unread_.front());
  unread_.pop_front();
  return folder;
}

void ReadAhead::read(FolderAhead &folder) noexcept {
  const auto isCancelled = [&] { return isCancelled_.load(std::memory_order_relaxed) != 0; };
  std::optional<DirectoryListing> listing;
  tryTwice([&] {
    if (isCancelled())
      return;
    if (std::optional<DirectoryListing> opened = DirectoryListing::open(folder.path().view()))
      listing.emplace(*std::move(opened));
  });
  using Clock = MainRunLoop::Clock;
  Clock::time_point lastHandOver = Clock::now();
  FolderFindings findings;
  const auto areDue = [&] {
    return findings.files.size() + findings.subFolders.size() >= manyFindings ||
           (!findings.files.empty() && Clock::now() - lastHandOver >= longestDelay);
  };
  while (listing && !isCancelled()) {
    const std::optional<DirectoryEntry> entry = listing->next();
    if (!entry)
      break;
    // If memory is short, the entry is skipped; the next may succeed.
    tryTwice([&] { readEntry(folder, *listing, *entry, findings); });
    if (folder.isAwaited() && areDue()) {
      handOver(folder, findings);
      lastHandOver = Clock::now();
    }
  }
  findings.isLast = true;
  handOver(folder, findings);
}

void ReadAhead::readEntry(const FolderAhead &folder, DirectoryListing &listing,
                          const DirectoryEntry &entry, FolderFindings &findings) const {
  SearchItem item(folder.path(), listing, entry);
  switch (filter_->kindOf(item.file, type_)) {
  case RequestFilter::Kind::Nothing:
    break;
  case RequestFilter::Kind::SubFolder:
    findings.subFolders.push_back(item.path());
    break;
  case RequestFilter::Kind::File:
    if (filter_->wantsAll() ? filter_->meetsAll(item.file) : filter_->meetsAny(item.file))
      findings.files.push_back(item.path());
    break;
  }
}

void ReadAhead::handOver(FolderAhead &folder, FolderFindings &findings) noexcept {
  const bool hasFiles = !findings.files.empty();
  Work *const waiting = folder.add(findings);
  {
    const LockGuard guard(lock_);
    if (waiting != nullptr)
      heldBack_.append(*waiting, 0);
    if (!hasFiles && unread_.size() >= fewFolders)
      return;
  }
  postHeldBack();
}

void ReadAhead::postHeldBack() noexcept {
  WorkQueue due;
  {
    const LockGuard guard(lock_);
    due = std::exchange(heldBack_, {});
  }
  // Posted without the lock, which the main thread takes as soon as it wakes.
  while (Work *const work = due.takeUpTo(0))
    MainRunLoop::shared().post(*work);
}

} // namespace searchsystem
