#include "FileSharchFunction/SearchSystem/SearchEngine.h"

#include "platform/foundation/DirectoryListing.h"
#include "platform/foundation/NSArray.h"
#include "platform/foundation/PathComponents.h"
#include "platform/foundation/TryTwice.h"

namespace {

/// So many files wait together to be handed over at most.
constexpr std::size_t mostFound = 64;

/// For how long a file that is found may wait while others are tested.
constexpr std::chrono::milliseconds longestDelay{2};

bool hasText(const NSString *text) noexcept { return text != nullptr && text->length() != 0; }

bool isNameOfDocument(std::string_view name) noexcept {
  return equalIgnoringASCIICase(extensionOfName(name), "pdf");
}

} // namespace

bool SearchEngine::hasContentKeyword() const noexcept {
  return hasText(_searchPredicate->contentKeyword);
}

SearchEngine::FolderSearch::FolderSearch(SearchEngine &searchEngine, const NSString *searchedFolder,
                                         int filterType, Conditions conditionsOnFile,
                                         TakePath poolOfSubFolders)
    : engine(searchEngine), record(*searchEngine._searchPredicate),
      test(searchEngine.entryTest_ ? *searchEngine.entryTest_ : throw std::bad_alloc()),
      folder(searchedFolder), type(filterType), conditions(conditionsOnFile),
      pool(poolOfSubFolders) {
  message.SearchState = 1;
  if (record.fileList == nullptr && folder != nullptr)
    if (std::optional<DirectoryListing> opened = DirectoryListing::open(folder->view()))
      listing.emplace(*std::move(opened));
}

void SearchEngine::FolderSearch::addFound(const Ref<const NSString> &path) {
  if (engine.hasContentCondition()) {
    foundAnswers.push_back(answers);
    if (found.empty())
      foundAt = Clock::now();
  }
  try {
    found.push_back(path);
  } catch (...) {
    foundAnswers.resize(found.size());
    throw;
  }
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
  std::optional<FolderSearch> search;
  // Without memory for that the folder is passed over.
  if (!tryTwice([&] { search.emplace(*this, folder, type, conditions, pool); }))
    return;
  if (search->record.fileList != nullptr)
    searchList(*search);
  else
    searchEntries(*search);
}

void SearchEngine::searchList(FolderSearch &search) noexcept {
  const NSArray &list = *search.record.fileList;
  for (std::size_t i = 0; i < list.count() && _bCancel == 0; ++i) {
    const auto *const path = dynamic_cast<const NSString *>(list.objectAtIndex(i));
    if (path == nullptr)
      continue;
    SearchItem item(*path);
    searchItem(search, item);
    handOver(search);
  }
}

void SearchEngine::searchEntries(FolderSearch &search) noexcept {
  while (search.listing && _bCancel == 0) {
    const std::optional<DirectoryEntry> entry = search.listing->next();
    if (!entry)
      break;
    SearchItem item(*search.folder, *search.listing, *entry);
    searchItem(search, item);
    if (!canLookAhead(search))
      handOver(search);
  }
  handOver(search);
}

bool SearchEngine::canLookAhead(const FolderSearch &search) const noexcept {
  if (search.found.empty())
    return true;
  const std::optional<std::string_view> next = search.listing->nextRegularFile();
  if (!next || search.found.size() >= mostFound)
    return false;
  // The text of a document may take any time, the beginning of a photograph hardly any.
  return !hasContentCondition() || ((isPDFSearch() == 0 || !isNameOfDocument(*next)) &&
                                    Clock::now() - search.foundAt < longestDelay);
}

void SearchEngine::handOver(FolderSearch &search) noexcept {
  if (search.found.empty())
    return;
  _returnCount += static_cast<int>(search.found.size());
  performOnMainThreadAndWait([&] { return distributeFound(search); });
}

void SearchEngine::searchItem(FolderSearch &search, SearchItem &item) noexcept {
  // Where memory is short the item is passed over, and the next may fare better.
  tryTwice([&] {
    switch (search.test.kindOf(item.file, search.type)) {
    case EntryTest::Kind::Nothing:
      break;
    case EntryTest::Kind::SubFolder:
      queueSubFolder(search, item.path());
      break;
    case EntryTest::Kind::File:
      if ((this->*search.conditions)(search, item))
        search.addFound(item.path());
      break;
    }
  });
}

void SearchEngine::queueSubFolder(FolderSearch &search, const Ref<const NSString> &path) noexcept {
  if (MainRunLoop::shared().isMainThread()) {
    (this->*search.pool)(path.get());
    return;
  }
  tryTwice([&] {
    performOnMainThread([engine = Ref<SearchEngine>(this), pool = search.pool, path] {
      ((*engine).*pool)(path.get());
    });
  });
}

bool SearchEngine::meetsAll(FolderSearch &search, SearchItem &item) const {
  if (!search.test.meetsAll(item.file))
    return false;
  if (!hasContentCondition())
    return true;
  search.answers = {};
  // Unlike the distribution, which tests again, the walk passes over an empty keyword.
  return meetsContentConditions(item, search.record.searchPDFText != 0 && hasContentKeyword(),
                                search.answers);
}

bool SearchEngine::meetsAny(FolderSearch &search, SearchItem &item) const {
  return search.test.meetsAny(item.file) || meetsAnyContentCondition(item);
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
