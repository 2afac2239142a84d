#include "FileSharchFunction/SearchSystem/SearchEngine.h"

#include "platform/foundation/DirectoryListing.h"
#include "platform/foundation/NSArray.h"

namespace {

bool hasText(const NSString *text) noexcept { return text != nullptr && text->length() != 0; }

} // namespace

bool SearchEngine::hasContentKeyword() const noexcept {
  return hasText(_searchPredicate->contentKeyword);
}

SearchEngine::FolderSearch::FolderSearch(const SearchPredicate &request, int filterType)
    : record(request), type(filterType) {
  if (hasText(record.nameKeyword))
    name.emplace(record.nameKeyword->view(), keywordOptions(record.isDistinct));
  message.SearchState = 1;
}

void SearchEngine::andSearch(const NSString *folder, int type) noexcept {
  searchEntries(folder, type, &SearchEngine::meetsAll);
}

void SearchEngine::orSearch(const NSString *folder, int type) noexcept {
  searchEntries(folder, type, &SearchEngine::meetsAny);
}

void SearchEngine::searchEntries(const NSString *folder, int type, Conditions conditions) noexcept {
  try {
    FolderSearch search(*_searchPredicate, type);
    if (const NSArray *const list = search.record.fileList) {
      for (std::size_t i = 0; i < list->count() && _bCancel == 0; ++i) {
        if (const auto *const path = dynamic_cast<const NSString *>(list->objectAtIndex(i))) {
          SearchItem item(*path);
          searchItem(search, item, conditions);
        }
      }
      return;
    }
    if (folder == nullptr)
      return;
    std::optional<DirectoryListing> listing = DirectoryListing::open(folder->view());
    if (!listing)
      return;
    while (const std::optional<DirectoryEntry> entry = listing->next()) {
      if (_bCancel != 0)
        return;
      SearchItem item(*folder, *listing, *entry);
      searchItem(search, item, conditions);
    }
  } catch (...) {
    // Memory is short: what this folder still holds cannot be reported.
  }
}

void SearchEngine::searchItem(FolderSearch &search, SearchItem &item,
                              Conditions conditions) noexcept {
  try {
    char isFolder = 0;
    if (defaultFilter(item, search.type, &isFolder) == 0) {
      if (isFolder != 0 && search.record.checkSubFolder != 0 && isAlias(item) == 0)
        performOnMainThread([engine = Ref<SearchEngine>(this), path = item.path()] {
          engine->manualSearchPool(path.get());
        });
      return;
    }
    if (!(this->*conditions)(search, item))
      return;
    search.message.ResultData = item.path();
    ++_returnCount;
    performOnMainThreadAndWait([&] { searchResultDistribution(&search.message); });
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
  // Unlike the distribution, which tests again, the walk passes over an empty keyword.
  return meetsContentConditions(item.path().get(),
                                record.searchPDFText != 0 && hasContentKeyword());
}

bool SearchEngine::meetsAny(FolderSearch &search, SearchItem &item) const {
  const SearchPredicate &record = search.record;
  if (search.name && search.name->find(item.file.name()).length != 0)
    return true;
  if ((record.modDateStart != nullptr || record.modDateEnd != nullptr) &&
      fileModDateSearch(item, record.modDateStart, record.modDateEnd) != 0)
    return true;
  if (isPDFSearch() != 0 && PDFSearch(item.path().get()) != 0)
    return true;
  if (isExifSearch() == 0 && isTokenDateSearch() == 0)
    return false;
  char hasKeyword = 0;
  char hasDate = 0;
  exifSearch(item.path().get(), &hasKeyword, &hasDate);
  return (record.searchExifText != 0 && hasContentKeyword() && hasKeyword != 0) ||
         (isTokenDateSearch() != 0 && hasDate != 0);
}
