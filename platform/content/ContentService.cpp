#include "platform/content/ContentService.h"

#include "platform/content/DocumentReading.h"
#include "platform/content/OpenedPhotograph.h"
#include "platform/content/ReaderConnection.h"
#include "platform/content/SearchProgress.h"
#include "platform/content/TextComparison.h"
#include "platform/content/WorkerSlots.h"
#include "platform/foundation/FileDescriptor.h"
#include "platform/foundation/FileItem.h"
#include "platform/foundation/MainRunLoop.h"
#include "platform/foundation/NeverDestroyed.h"
#include "platform/foundation/TryTwice.h"

#include <algorithm>
#include <cassert>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace searchsystem {

namespace {

static_assert(static_cast<int>(UnreadReason::needsPassword) == PFContentNeedsPassword &&
              static_cast<int>(UnreadReason::damaged) == PFContentDamaged &&
              static_cast<int>(UnreadReason::noText) == PFContentNoText &&
              static_cast<int>(UnreadReason::tooLarge) == PFContentTooLarge &&
              static_cast<int>(UnreadReason::tookTooLong) == PFContentTookTooLong &&
              static_cast<int>(UnreadReason::readerCrashed) == PFContentReaderCrashed &&
              static_cast<int>(UnreadReason::cannotBeOpened) == PFContentCannotBeOpened &&
              static_cast<int>(UnreadReason::noReader) == PFContentNoReader);

WorkerSlots &workerSlots() noexcept {
  static NeverDestroyed<WorkerSlots> slots;
  return slots.get();
}

struct ReleaseOfPlace {
  ~ReleaseOfPlace() { workerSlots().release(); }
};

} // namespace

ContentService::ContentService() noexcept
    : kinds_(ContentSettings::current().kinds),
      unreadCallback_(ContentSettings::current().unreadCallback),
      unreadContext_(ContentSettings::current().unreadContext) {
  ReaderConnection::shared().beginUse();
}

ContentService::~ContentService() { ReaderConnection::shared().endUse(); }

ContentAnswer ContentService::documentHolds(const NSString &path, const NSString &keyword,
                                            bool isDistinct) noexcept {
  // Where memory was short the document is read again from its beginning.
  ContentAnswer answer{false, UnreadReason::tooLarge};
  tryTwice([&] { answer = read(path, keyword, isDistinct); });
  if (!answer.holds && answer.reason != UnreadReason::none && !cancellation_.isCancelled())
    noteUnread(path, answer.reason);
  return answer;
}

ContentAnswer ContentService::read(const NSString &path, const NSString &keyword, bool isDistinct) {
  TextComparison comparison(keyword.view(), isDistinct);
  if (comparison.isEmpty())
    return {};
  if (MainRunLoop::shared().isMainThread())
    return {false, UnreadReason::noReader};
  if (!workerSlots().acquire(cancellation_.flag()))
    return {};
  const ReleaseOfPlace place;
  FileItem item(path);
  const FileDescriptor document = item.openRegularFile();
  if (!document)
    return {false, UnreadReason::cannotBeOpened};
  return DocumentReading(cancellation_, comparison).read(document.number());
}

void ContentService::readPhotographs(std::span<PhotographToRead> photographs,
                                     const PhotographQuestion &question,
                                     const PhotographReading::Taker &take) noexcept {
  std::size_t taken = 0;
  const auto takeNext = [&](std::size_t, const PhotographContent &content) {
    const std::size_t place = taken++;
    const bool isAnswered = (question.keyword == nullptr || content.holds) &&
                            (!question.wantsDate || content.date.has_value());
    if (!isAnswered && content.reason != UnreadReason::none && !cancellation_.isCancelled())
      noteUnread(*photographs[place].path, content.reason);
    take(place, content);
  };
  const auto giveUpAll = [&](UnreadReason reason) {
    PhotographContent content;
    content.reason = reason;
    while (taken < photographs.size())
      takeNext(taken, content);
  };
  // Where memory was short the rest is read again.
  const bool hasMemory = tryTwice([&] {
    std::optional<TextComparison> comparison;
    if (question.keyword != nullptr)
      comparison.emplace(question.keyword->view(), question.isDistinct);
    const bool hasKeyword = comparison && !comparison->isEmpty();
    if (hasKeyword || question.wantsDate)
      readPhotographs(photographs.subspan(taken), hasKeyword ? &*comparison : nullptr,
                      std::ref(takeNext));
  });
  giveUpAll(hasMemory ? UnreadReason::none : UnreadReason::tooLarge);
}

void ContentService::readPhotographs(std::span<PhotographToRead> photographs,
                                     TextComparison *comparison,
                                     const PhotographReading::Taker &take) {
  std::size_t next = 0;
  const auto giveUpNext = [&](UnreadReason reason) {
    PhotographContent content;
    content.reason = reason;
    take(next++, content);
  };
  const bool isOnMainThread = MainRunLoop::shared().isMainThread();
  if (isOnMainThread || !workerSlots().acquire(cancellation_.flag())) {
    while (next < photographs.size())
      giveUpNext(isOnMainThread ? UnreadReason::noReader : UnreadReason::none);
    return;
  }
  const ReleaseOfPlace place;
  PhotographReading reading(photographWorkers_, comparison);
  std::vector<OpenPhotograph> files;
  while (next < photographs.size()) {
    files.clear();
    while (files.size() < std::min(photographs.size() - next, PhotographBatch::mostPhotographs)) {
      OpenPhotograph file = openedPhotograph(std::move(photographs[next + files.size()]));
      if (!file.photograph)
        break;
      files.push_back(std::move(file));
    }
    if (files.empty()) {
      giveUpNext(UnreadReason::cannotBeOpened);
      continue;
    }
    // Where descriptors are few, the next may be opened once these are closed.
    reading.read(files, take);
    next += files.size();
  }
}

void ContentService::noteUnread(const NSString &path, UnreadReason reason) noexcept {
  if (unreadCallback_ == nullptr)
    return;
  tryTwice([&] {
    const LockGuard guard(lock_);
    if (unread_.try_emplace(std::string(path.view()), reason).second)
      SearchProgress::count(SearchProgress::shared().unread);
  });
}

void ContentService::cancel() noexcept {
  cancellation_.cancel();
  workerSlots().wakeAll();
}

void ContentService::deliverUnread() noexcept {
  assert(MainRunLoop::shared().isMainThread());
  decltype(unread_) unread;
  {
    const LockGuard guard(lock_);
    unread.swap(unread_);
  }
  for (const auto &file : unread) {
    Ref<const NSString> path;
    if (!tryTwice([&] { path = NSString::create(file.first); }))
      continue;
    try {
      unreadCallback_(path.get(), static_cast<std::int32_t>(file.second), unreadContext_);
    } catch (...) {
      // The next file may fare better.
    }
  }
}

} // namespace searchsystem
