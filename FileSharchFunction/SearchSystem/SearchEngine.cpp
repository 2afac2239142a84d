#include "FileSharchFunction/SearchSystem/SearchEngine.h"

#include "FileSharchFunction/SearchSystem/EntryFilters.h"
#include "FileSharchFunction/SearchSystem/LocaleEncoding.h"
#include "platform/foundation/Gestalt.h"
#include "platform/foundation/MountPoints.h"
#include "platform/foundation/NSClass.h"
#include "platform/foundation/TryTwice.h"

namespace searchsystem {

namespace {

constexpr std::int32_t lastVersionWithoutIndex = 0x1040;
constexpr double delayOfEmptyRequest = 0.1;

constexpr std::string_view queryProgress = NSMetadataQueryGatheringProgressNotification;
constexpr std::string_view queryFinish = NSMetadataQueryDidFinishGatheringNotification;

} // namespace

SearchEngine *SearchEngine::create() { return new SearchEngine; }

SearchEngine *SearchEngine::sharedSearchEngine() noexcept {
  if (sSharedSearchEngine == nullptr)
    tryTwice([] { sSharedSearchEngine = create(); });
  return static_cast<SearchEngine *>(sSharedSearchEngine);
}

char SearchEngine::isAvailableSpotlight() noexcept {
  std::int32_t version = 0;
  Gestalt(gestaltSystemVersion, &version);
  return version > lastVersionWithoutIndex && gbSpotlight != 0 ? 1 : 0;
}

SearchEngine::SearchEngine() : listFolder_(NSString::create("")) {
  // Reads the environment, which no worker may do.
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
    center.addObserver(this, handle<&SearchEngine::stopSpotlight>, queryFinish);
    center.addObserver(this, handle<&SearchEngine::getSpotlightResult>, queryProgress);
  } catch (...) {
    // An engine that was not made must not be notified.
    center.removeObserver(this, queryFinish);
    throw;
  }
}

SearchEngine::~SearchEngine() {
  NSNotificationCenter &center = NSNotificationCenter::defaultCenter();
  center.removeObserver(this, queryFinish);
  center.removeObserver(this, queryProgress);
  if (!_metaQuery)
    return;
  _metaQuery->stopQuery();
  _metaQuery->setDelegate(nullptr);
}

void SearchEngine::startFileSearch(const SearchPredicate *predicate) noexcept {
  if (_isSearching != 0 || isEndScheduled()) {
    setSearchCancel(1);
    return;
  }
  _searchPredicate = predicate;
  _bCancel = 0;
  _isCheckSubFolder = predicate->checkSubFolder;
  if (checkSearchParam() == 0) {
    scheduleEnd(delayOfEmptyRequest);
    return;
  }
  chooseDepth();
  MountPoints::forget();
  // The index knows no content, and a deep search for it is the walk's alone.
  const bool mustWalk =
      predicate->fileList != nullptr || (contentService() != nullptr && hasContentCondition());
  _isUseSpotlight = !mustWalk && isAvailableSpotlight() != 0 ? 1 : 0;
  if (_isUseSpotlight != 0)
    spotlightSearch();
  else
    manuallyFileSearch();
}

void SearchEngine::setSearchCancel(char flag) noexcept {
  _bCancel = flag;
  if (flag != 0 && contentService() != nullptr)
    contentService()->cancel();
  _dirPool.wake();
  if (flag != 0 && _isSearchSpotlight != 0)
    distribution_.stopQuery();
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

std::uint32_t SearchEngine::getSearchEncoding() const noexcept {
  return encodingForLocale(GetCurrentLocaleID());
}

void SearchEngine::searchResultDistribution(const ResultMessage *message) noexcept {
  distribution_.take(message);
}

char SearchEngine::checkDuplicatePath(const NSString *path) noexcept {
  return distribution_.checkDuplicatePath(path);
}

char SearchEngine::isAlias(const NSString *path) const noexcept {
  if (path == nullptr)
    return 0;
  FileItem item(*path);
  return EntryFilters::isAlias(item);
}

char SearchEngine::defaultFilter(const NSString *path, int type, char *isFolder) const {
  FileItem item(*path);
  const ContentService *const service = contentService();
  return EntryFilters::defaultFilter(item, type, isFolder,
                                     service != nullptr ? &service->kinds() : nullptr);
}

char SearchEngine::fileModDateSearch(const NSString *path, const NSDate *startDate,
                                     const NSDate *endDate) const noexcept {
  FileItem item(*path);
  return EntryFilters::fileModDateSearch(item, startDate, endDate);
}

char SearchEngine::keyWordSearch(const NSString *text, const NSString *keyword,
                                 char isDistinct) const {
  if (text == nullptr || keyword == nullptr)
    return 0;
  return text->rangeOfString(*keyword, EntryFilters::keywordOptions(isDistinct)).length != 0 ? 1
                                                                                             : 0;
}

void SearchEngine::exifSearch(const NSString *path, char *outKeywordResult,
                              char *outTokenDateResult) const {
  *outKeywordResult = *outTokenDateResult = 0;
  if (path == nullptr)
    return;
  SearchItem item(*path);
  const ExifAnswers answers = ContentConditions(*this).readExif(item);
  *outKeywordResult = answers.hasKeyword ? 1 : 0;
  *outTokenDateResult = answers.hasDate ? 1 : 0;
}

char SearchEngine::PDFSearch(const NSString *path) const {
  if (path == nullptr)
    return 0;
  SearchItem item(*path);
  return ContentConditions(*this).hasTextInPDF(item) ? 1 : 0;
}

} // namespace searchsystem
