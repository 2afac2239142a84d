#include "FileSharchFunction/SearchSystem/Distribution.h"

#include "platform/foundation/MainRunLoop.h"
#include "platform/foundation/TryTwice.h"

#include <cassert>
#include <utility>

namespace searchsystem {

namespace {

constexpr double delayOfEnd = 0.5;

} // namespace

Distribution::Distribution(RunningSearch &search) : search_(search), content_(search) {
  deferred_.reserve(reservedDeferrals);
}

void Distribution::take(const ResultMessage *message, const ContentAnswers *known) noexcept {
  assert(MainRunLoop::shared().isMainThread());
  if (message == nullptr)
    return;
  if (isDistributing_) {
    defer({*message, known != nullptr ? *known : ContentAnswers()});
    return;
  }
  // The host's callback may run the main loop, and so end the search.
  const Ref<RunningSearch> search(&search_);
  isDistributing_ = true;
  distribute(*message, known);
  for (std::size_t next = 0; next < deferred_.size(); ++next) {
    const Deferred deferred = std::move(deferred_[next]);
    if (deferred.message)
      distribute(*deferred.message, &deferred.known);
    else
      search_.stopQuery();
  }
  deferred_.clear();
  isDistributing_ = false;
}

void Distribution::takeFound(Ref<const NSString> path) noexcept {
  announce(1);
  const ResultMessage message{std::move(path), 1};
  take(&message);
}

void Distribution::takeEnd() noexcept {
  const ResultMessage end;
  take(&end);
}

void Distribution::stopQuery() noexcept {
  if (isDistributing_)
    defer({});
  else
    search_.stopQuery();
}

void Distribution::defer(Deferred deferred) noexcept {
  const bool isResult = deferred.message && deferred.message->ResultData;
  const bool isKept = tryTwice([&] {
    if (isResult && deferred_.capacity() - deferred_.size() <= reservedDeferrals)
      deferred_.reserve(deferred_.capacity() * 2);
    deferred_.push_back(std::move(deferred));
  });
  // The end does not wait for a result that is lost.
  if (!isKept && isResult)
    announce(-1);
}

void Distribution::distribute(const ResultMessage &message, const ContentAnswers *known) noexcept {
  if (search_._searchPredicate == nullptr)
    return;
  int state = message.SearchState;
  {
    const LockGuard guard(_lock);
    if (const NSString *const path = message.ResultData.get()) {
      ++_getCount;
      if (shouldDeliver(path, known))
        deliver(path);
    }
  }
  if (search_._searchPredicate == nullptr)
    return;
  const bool hasTwoProducers = search_._isUseSpotlight != 0 &&
                               search_._searchPredicate->isAndSearch == 0 &&
                               search_.hasContentCondition();
  if (hasTwoProducers) {
    if (state == 0)
      ++_endCount;
    if (_endCount <= 1)
      return;
  }
  if (_isEndWait != 0)
    state = 0;
  if (state != 0)
    return;
  if (_returnCount != _getCount) {
    _isEndWait = 1;
    return;
  }
  search_._isSearching = 0;
  RunningSearch::scheduleEnd(delayOfEnd);
}

bool Distribution::shouldDeliver(const NSString *path, const ContentAnswers *known) noexcept {
  if (search_._searchPredicate->isAndSearch == 0)
    return search_._isUseSpotlight == 0 || search_.isExifSearch() == 0 ||
           checkDuplicatePath(path) != 0;
  if (!search_.hasContentCondition())
    return true;
  // What cannot be tested for lack of memory does not meet its conditions.
  bool meets = false;
  tryTwice([&] {
    SearchItem item(*path);
    ContentAnswers answers;
    // The main thread has nothing read deep.
    const bool holds = search_.contentService() != nullptr ||
                       (known != nullptr && known->file && item.file.status() &&
                        isSameUnchangedFile(*known->file, *item.file.status()));
    if (known != nullptr && holds)
      answers = *known;
    meets = content_.meets(item, {.mustMeetAll = true, .testsPDF = search_.isPDFSearch() != 0},
                           answers);
  });
  return meets;
}

void Distribution::deliver(const NSString *path) noexcept {
  RunningSearch::callHost(search_._searchPredicate->resultCallback, path, 1);
  try {
    _resultPoolArray.add(Ref<const NSString>(path));
  } catch (...) {
    // It has been delivered; only a later duplicate goes unnoticed.
  }
}

char Distribution::checkDuplicatePath(const NSString *path) noexcept {
  try {
    return _resultPoolArray.contains(*path) ? 0 : 1;
  } catch (...) {
    return 1;
  }
}

} // namespace searchsystem
