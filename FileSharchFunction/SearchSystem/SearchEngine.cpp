#include "FileSharchFunction/SearchSystem/SearchEngine.h"

#include "FileSharchFunction/SearchSystem/LocaleEncoding.h"
#include "FileSharchFunction/SearchSystem/SearchController.h"
#include "platform/foundation/Gestalt.h"
#include "platform/foundation/NSClass.h"
#include "platform/foundation/TryTwice.h"

#include <utility>

namespace {

constexpr std::int32_t lastVersionWithoutIndex = 0x1040;
constexpr double delayOfEmptyRequest = 0.1;

constexpr std::string_view queryProgress = NSMetadataQueryGatheringProgressNotification;
constexpr std::string_view queryFinish = NSMetadataQueryDidFinishGatheringNotification;

} // namespace

SearchEngine *SearchEngine::sSharedSearchEngine = nullptr;

SearchEngine *SearchEngine::create() { return new SearchEngine; }

SearchEngine *SearchEngine::sharedSearchEngine() noexcept {
  if (sSharedSearchEngine == nullptr)
    tryTwice([] { sSharedSearchEngine = create(); });
  return sSharedSearchEngine;
}

void SearchEngine::releaseSharedSearchEngine() noexcept {
  SearchEngine *const engine = std::exchange(sSharedSearchEngine, nullptr);
  if (engine == nullptr)
    return;
  engine->_searchPredicate = nullptr;
  engine->release();
}

char SearchEngine::isAvailableSpotlight() noexcept {
  std::int32_t version = 0;
  Gestalt(gestaltSystemVersion, &version);
  return version > lastVersionWithoutIndex && gbSpotlight != 0 ? 1 : 0;
}

SearchEngine::SearchEngine() : listFolder_(NSString::create("")) {
  deferred_.reserve(reservedDeferrals);
  // Reads the environment, which must not happen on a worker.
  static_cast<void>(getSearchEncoding());
  if (isAvailableSpotlight() != 1)
    return;
  if (const NSClass *const queryClass = NSClass::named("NSMetadataQuery"))
    _metaQuery =
        Ref<NSMetadataQuery>(dynamic_cast<NSMetadataQuery *>(queryClass->newInstance().get()));
  if (!_metaQuery)
    return;
  _metaQuery->setDelegate(this);
  NSNotificationCenter &center = NSNotificationCenter::defaultCenter();
  try {
    center.addObserver(
        this,
        [](void *engine, const NSNotification &notification) {
          static_cast<SearchEngine *>(engine)->stopSpotlight(&notification);
        },
        queryFinish);
    center.addObserver(
        this,
        [](void *engine, const NSNotification &notification) {
          static_cast<SearchEngine *>(engine)->getSpotlightResult(&notification);
        },
        queryProgress);
  } catch (...) {
    // Nobody may be told anything on behalf of an engine that will not be.
    center.removeObserver(this, queryFinish);
    throw;
  }
}

SearchEngine::~SearchEngine() {
  if (sSharedSearchEngine == this)
    sSharedSearchEngine = nullptr;
  NSNotificationCenter &center = NSNotificationCenter::defaultCenter();
  center.removeObserver(this, queryFinish);
  center.removeObserver(this, queryProgress);
  if (!_metaQuery)
    return;
  _metaQuery->stopQuery();
  _metaQuery->setDelegate(nullptr);
}

void SearchEngine::startFileSearch(const SearchPredicate *predicate) noexcept {
  if (_isSearching != 0 || SearchController::isEndScheduled()) {
    setSearchCancel(1);
    return;
  }
  _searchPredicate = predicate;
  _bCancel = 0;
  _resultCheckCount = 0;
  _isCheckSubFolder = predicate->checkSubFolder;
  _isUseSpotlight = isAvailableSpotlight();
  _isSearchSpotlight = _isExifSearch = _isEndWait = _isStopSpotligth = 0;
  _endCount = _getCount = 0;
  _returnCount = 0;
  _resultPoolArray.clear();
  entryTest_.reset();
  if (checkSearchParam() == 0) {
    SearchController::scheduleEndSearchProcess(this, delayOfEmptyRequest);
    return;
  }
  if (predicate->fileList != nullptr)
    _isUseSpotlight = 0;
  if (_isUseSpotlight != 0)
    spotlightSearch();
  else
    manuallyFileSearch();
}

void SearchEngine::setSearchCancel(char flag) noexcept {
  _bCancel = flag;
  readAhead_.postHeldBack();
  if (flag == 0 || _isSearchSpotlight == 0)
    return;
  if (isDistributing_)
    defer({});
  else
    stopSpotlight(nullptr);
}

char SearchEngine::checkSearchParam() const noexcept {
  const SearchPredicate &record = *_searchPredicate;
  const bool hasCondition = record.nameKeyword != nullptr ||
                            (record.contentKeyword != nullptr &&
                             (record.searchExifText != 0 || record.searchPDFText != 0)) ||
                            record.modDateStart != nullptr || record.modDateEnd != nullptr ||
                            record.exifDateStart != nullptr || record.exifDateEnd != nullptr;
  return hasCondition ? 1 : 0;
}

char SearchEngine::isExifSearch() const noexcept {
  return _searchPredicate->searchExifText != 0 && _searchPredicate->contentKeyword != nullptr ? 1
                                                                                              : 0;
}

char SearchEngine::isPDFSearch() const noexcept {
  return _searchPredicate->searchPDFText != 0 && _searchPredicate->contentKeyword != nullptr ? 1
                                                                                             : 0;
}

char SearchEngine::isTokenDateSearch() const noexcept {
  return _searchPredicate->exifDateStart != nullptr || _searchPredicate->exifDateEnd != nullptr ? 1
                                                                                                : 0;
}

bool SearchEngine::hasContentCondition() const noexcept {
  return isPDFSearch() != 0 || isExifSearch() != 0 || isTokenDateSearch() != 0;
}

std::uint32_t SearchEngine::getSearchEncoding() const noexcept {
  return encodingForLocale(GetCurrentLocaleID());
}
