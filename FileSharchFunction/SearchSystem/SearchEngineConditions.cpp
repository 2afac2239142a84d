#include "FileSharchFunction/SearchSystem/SearchEngine.h"

#include "platform/foundation/DirectoryListing.h"
#include "platform/foundation/NSArray.h"

namespace {

/// So many files wait together to be handed over at most.
constexpr std::size_t mostFound = 64;

bool hasText(const NSString *text) noexcept { return text != nullptr && text->length() != 0; }

} // namespace

bool SearchEngine::hasContentKeyword() const noexcept {
  return hasText(_searchPredicate->contentKeyword);
}

SearchEngine::FolderSearch::FolderSearch(SearchEngine &searchEngine, const NSString *searchedFolder,
                                         int filterType, Conditions conditionsOnFile,
                                         TakePath poolOfSubFolders)
    : engine(searchEngine), record(*searchEngine._searchPredicate), folder(searchedFolder),
      type(filterType), conditions(conditionsOnFile), pool(poolOfSubFolders),
      judgesByListing(record.modDateStart == nullptr && record.modDateEnd == nullptr &&
                      engine.isPDFSearch() == 0 && engine.isExifSearch() == 0 &&
                      engine.isTokenDateSearch() == 0),
      listing(record.fileList == nullptr && folder ? DirectoryListing::open(folder->view())
                                                   : std::nullopt) {
  if (hasText(record.nameKeyword))
    name.emplace(record.nameKeyword->view(), keywordOptions(record.isDistinct));
  message.SearchState = 1;
}

void SearchEngine::andSearch(const NSString *folder, int type) noexcept {
  searchFolder(folder, type, &SearchEngine::meetsAll, &SearchEngine::manualSearchPool);
}

void SearchEngine::orSearch(const NSString *folder, int type) noexcept {
  searchFolder(folder, type, &SearchEngine::meetsAny, &SearchEngine::manualSearchPool);
}

void SearchEngine::exifSearchWithSpotlight(const NSString *folder, int type) noexcept {
  searchFolder(folder, type, &SearchEngine::meetsContent, &SearchEngine::spotligtExifPDFSearchPool);
}

void SearchEngine::searchFolder(const NSString *folder, int type, Conditions conditions,
                                TakePath pool) noexcept {
  std::optional<FolderSearch> own;
  Worker *const worker = Worker::current();
  std::optional<FolderSearch> &search = worker != nullptr ? worker->search : own;
  try {
    if (!search)
      search.emplace(*this, folder, type, conditions, pool);
    if (!searchEntries(*search))
      return;
  } catch (...) {
    // Memory is short: what this folder still holds cannot be reported.
  }
  search.reset();
}

bool SearchEngine::searchEntries(FolderSearch &search) {
  if (const NSArray *const list = search.record.fileList) {
    while (search.nextInList < list->count() && _bCancel == 0) {
      const auto *const path =
          dynamic_cast<const NSString *>(list->objectAtIndex(search.nextInList++));
      if (path == nullptr)
        continue;
      SearchItem item(*path);
      searchItem(search, item);
      if (!handOver(search))
        return false;
    }
    return true;
  }
  while (search.listing && _bCancel == 0) {
    const std::optional<DirectoryEntry> entry = search.listing->next();
    if (!entry)
      break;
    SearchItem item(*search.folder, *search.listing, *entry);
    searchItem(search, item);
    if (!canLookAhead(search) && !handOver(search))
      return false;
  }
  return handOver(search);
}

bool SearchEngine::canLookAhead(const FolderSearch &search) const noexcept {
  return search.judgesByListing && search.found.size() < mostFound &&
         search.listing->isNextRegularFile();
}

bool SearchEngine::handOver(FolderSearch &search) noexcept {
  if (search.found.empty())
    return true;
  _returnCount += static_cast<int>(search.found.size());
  return ThreadJob::performAndGoOn(
      [](void *target) {
        auto &paused = *static_cast<FolderSearch *>(target);
        return paused.engine.distributeFound(paused);
      },
      &search);
}

void SearchEngine::searchItem(FolderSearch &search, SearchItem &item) noexcept {
  try {
    char isFolder = 0;
    if (defaultFilter(item, search.type, &isFolder) == 0) {
      if (isFolder != 0 && search.record.checkSubFolder != 0 && isAlias(item) == 0)
        performOnMainThread([engine = Ref<SearchEngine>(this), pool = search.pool,
                             path = item.path()] { ((*engine).*pool)(path.get()); });
    } else if ((this->*search.conditions)(search, item)) {
      search.found.push_back(item.path());
    }
  } catch (...) {
    // Memory is short: this item is passed over, and the next may fare better.
  }
}

bool SearchEngine::meetsAll(FolderSearch &search, SearchItem &item) const {
  const SearchPredicate &record = search.record;
  if (search.name && search.name->find(item.file.name()).length == 0)
    return false;
  if (fileModDateSearch(item, record.modDateStart, record.modDateEnd) == 0)
    return false;
  if (isPDFSearch() == 0 && isExifSearch() == 0 && isTokenDateSearch() == 0)
    return true;
  search.answers = {};
  // Unlike the distribution, which tests again, the walk passes over an empty keyword.
  return meetsContentConditions(item, record.searchPDFText != 0 && hasContentKeyword(),
                                search.answers);
}

bool SearchEngine::meetsAny(FolderSearch &search, SearchItem &item) const {
  const SearchPredicate &record = search.record;
  if (search.name && search.name->find(item.file.name()).length != 0)
    return true;
  if ((record.modDateStart != nullptr || record.modDateEnd != nullptr) &&
      fileModDateSearch(item, record.modDateStart, record.modDateEnd) != 0)
    return true;
  return meetsAnyContentCondition(item);
}

bool SearchEngine::meetsContent(FolderSearch &search, SearchItem &item) const {
  if (search.record.isAndSearch == 0)
    return meetsAnyContentCondition(item);
  search.answers = {};
  return meetsContentConditions(item, isPDFSearch() != 0, search.answers);
}

bool SearchEngine::meetsAnyContentCondition(SearchItem &item) const {
  if (isPDFSearch() != 0 && PDFSearch(item.path().get()) != 0)
    return true;
  if (isExifSearch() == 0 && isTokenDateSearch() == 0)
    return false;
  char hasKeyword = 0;
  char hasDate = 0;
  exifSearch(item.file, &hasKeyword, &hasDate);
  return hasKeyword != 0 || hasDate != 0;
}
