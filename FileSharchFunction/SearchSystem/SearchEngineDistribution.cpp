#include "FileSharchFunction/SearchSystem/HostCallback.h"
#include "FileSharchFunction/SearchSystem/SearchController.h"
#include "FileSharchFunction/SearchSystem/SearchEngine.h"
#include "platform/foundation/TryTwice.h"

#include <cassert>
#include <utility>

namespace {

constexpr double delayOfEnd = 0.5;

} // namespace

void SearchEngine::searchResultDistribution(const ResultMessage *message) noexcept {
  assert(MainRunLoop::shared().isMainThread());
  if (message == nullptr)
    return;
  if (isDistributing_) {
    defer({*message});
    return;
  }
  // The host's callback may run the main loop, and that the end process.
  const Ref<SearchEngine> self(this);
  isDistributing_ = true;
  distribute(*message);
  for (std::size_t next = 0; next < deferred_.size(); ++next) {
    const Deferred deferred = std::move(deferred_[next]);
    if (deferred.message)
      distribute(*deferred.message);
    else if (_isSearchSpotlight != 0)
      stopSpotlight(nullptr);
  }
  deferred_.clear();
  isDistributing_ = false;
}

bool SearchEngine::distributeFound(FolderSearch &search) noexcept {
  const std::size_t number = search.handedOver++;
  search.message.ResultData = std::move(search.found[number]);
  const bool isOutermost = !isDistributing_;
  if (isOutermost && number < search.foundAnswers.size())
    knownAnswers_ = &search.foundAnswers[number];
  searchResultDistribution(&search.message);
  if (isOutermost)
    knownAnswers_ = nullptr;
  const std::size_t left = search.found.size() - search.handedOver;
  if (left > 0 && _bCancel == 0)
    return true;
  _returnCount -= static_cast<int>(left);
  search.found.clear();
  search.foundAnswers.clear();
  search.handedOver = 0;
  return false;
}

void SearchEngine::defer(Deferred deferred) noexcept {
  const bool isResult = deferred.message && deferred.message->ResultData;
  const bool isKept = tryTwice([&] {
    if (isResult && deferred_.capacity() - deferred_.size() <= reservedDeferrals)
      deferred_.reserve(deferred_.capacity() * 2);
    deferred_.push_back(std::move(deferred));
  });
  // A result that is lost is none that the end waits for.
  if (!isKept && isResult)
    --_returnCount;
}

void SearchEngine::distribute(const ResultMessage &message) noexcept {
  if (_searchPredicate == nullptr)
    return;
  int state = message.SearchState;
  {
    const LockGuard guard(_lock);
    if (const NSString *const path = message.ResultData.get()) {
      ++_getCount;
      if (shouldDeliver(path))
        deliver(path);
    }
  }
  if (_searchPredicate == nullptr)
    return;
  const bool hasTwoProducers =
      _isUseSpotlight != 0 && _searchPredicate->isAndSearch == 0 && hasContentCondition();
  if (hasTwoProducers) {
    if (state == 0)
      ++_endCount;
    if (_endCount <= 1)
      return;
  }
  if (_isEndWait != 0)
    state = 0;
  if (state == 0 && _returnCount != _getCount) {
    _isEndWait = 1;
    state = 1;
  }
  if (state != 0)
    return;
  _isSearching = 0;
  SearchController::scheduleEndSearchProcess(this, delayOfEnd);
}

bool SearchEngine::shouldDeliver(const NSString *path) {
  if (_searchPredicate->isAndSearch == 0)
    return _isUseSpotlight == 0 || isExifSearch() == 0 || checkDuplicatePath(path) != 0;
  if (!hasContentCondition())
    return true;
  // What cannot be tested for lack of memory does not meet its conditions.
  bool meets = false;
  tryTwice([&] {
    SearchItem item(*path);
    ContentAnswers answers;
    if (knownAnswers_ != nullptr && knownAnswers_->file && item.file.status() &&
        isSameUnchangedFile(*knownAnswers_->file, *item.file.status()))
      answers = *knownAnswers_;
    meets = meetsContentConditions(item, isPDFSearch() != 0, answers);
  });
  return meets;
}

void SearchEngine::deliver(const NSString *path) noexcept {
  callHost(_searchPredicate->resultCallback, path, 1);
  try {
    _resultPoolArray.add(Ref<const NSString>(path));
  } catch (...) {
    // It has been delivered; only a later duplicate would go unnoticed.
  }
}

char SearchEngine::checkDuplicatePath(const NSString *path) noexcept {
  try {
    return _resultPoolArray.contains(*path) ? 0 : 1;
  } catch (...) {
    return 1;
  }
}
