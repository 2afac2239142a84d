#include "FileSharchFunction/SearchSystem/SearchEngine.h"

#include "FileSharchFunction/SearchSystem/EntryFilters.h"
#include "platform/foundation/TryTwice.h"

#include <cassert>

namespace searchsystem {

void SearchEngine::makeFilter() noexcept {
  const ContentService *const service = contentService();
  tryTwice([&] {
    filter_.emplace(*_searchPredicate, service != nullptr ? &service->kinds() : nullptr);
  });
}

void SearchEngine::manuallyFileSearch() noexcept {
  _isSearching = 1;
  makeFilter();
  const bool decidesAlone = filter_ && !hasContentCondition() && !_searchPredicate->fileList;
  _dirPool.begin(call<&SearchEngine::manualSearchThread>, decidesAlone ? &*filter_ : nullptr,
                 typeOfAll);
  manualSearchPool(_searchPredicate->searchFolder);
}

void SearchEngine::manualSearchPool(const NSString *folder) noexcept {
  if (_searchPredicate != nullptr && _searchPredicate->fileList != nullptr && _threadCount <= 0)
    _dirPool.startAtOnce(listFolder_);
  else
    _dirPool.add(folder);
}

void SearchEngine::manualSearchThread(const NSString *folder) noexcept {
  int type = typeOfAll;
  if (_searchPredicate->isAndSearch != 0) {
    if (isExifSearch() != 0 || isTokenDateSearch() != 0)
      type = isPDFSearch() != 0 ? 2 : 0;
    else if (isPDFSearch() != 0)
      type = 1;
    andSearch(folder, type);
  } else {
    orSearch(folder, type);
  }
  endWorker<&SearchEngine::manualSearchPool>();
}

void SearchEngine::andSearch(const NSString *folder, int type) noexcept {
  scan(folder, type, FolderScan::Wanted::All);
}

void SearchEngine::orSearch(const NSString *folder, int type) noexcept {
  scan(folder, type, FolderScan::Wanted::Any);
}

void SearchEngine::exifSearchWithSpotlight(const NSString *folder, int type) noexcept {
  scan(folder, type, FolderScan::Wanted::Content);
}

void SearchEngine::scan(const NSString *folder, int type, FolderScan::Wanted wanted) noexcept {
  if (filter_)
    FolderScan(*this, *filter_, distribution_, _dirPool, wanted, type).run(folder);
}

void SearchEngine::startContentWalk() noexcept {
  _isExifSearch = _isSearching = 1;
  makeFilter();
  _dirPool.begin(call<&SearchEngine::spotligtExifPDFSearchThread>);
  spotligtExifPDFSearchPool(_searchPredicate->searchFolder);
}

void SearchEngine::spotligtExifPDFSearchPool(const NSString *folder) noexcept {
  _dirPool.add(folder);
  if (_threadCount <= 0)
    _isExifSearch = 0;
}

void SearchEngine::spotligtExifPDFSearchThread(const NSString *folder) noexcept {
  const bool wantsImages = isExifSearch() != 0 || isTokenDateSearch() != 0;
  const bool wantsDocuments = isPDFSearch() != 0;
  int type = typeOfAll;
  if (wantsImages != wantsDocuments)
    type = wantsImages ? 0 : 1;
  exifSearchWithSpotlight(folder, type);
  endWorker<&SearchEngine::spotligtExifPDFSearchPool>();
}

void SearchEngine::PDFSearchPool(const NSString *path) noexcept {
  assert(MainRunLoop::shared().isMainThread());
  if (_searchPredicate == nullptr)
    return;
  if (_pdfPool.isIdle()) {
    pdfKeyword_ = Ref<const NSString>(_searchPredicate->contentKeyword);
    isPDFDistinct_ = _searchPredicate->isDistinct;
    _pdfPool.begin(call<&SearchEngine::PDFSearchThread>);
  }
  _pdfPool.add(path);
}

void SearchEngine::PDFSearchThread(const NSString *path) noexcept {
  try {
    if (path != nullptr)
      static_cast<void>(
          ContentConditions(*this).hasTextInPDF(*path, pdfKeyword_.get(), isPDFDistinct_));
  } catch (...) {
    // Only the end is reported.
  }
  endWorker<&SearchEngine::PDFSearchPool>();
}

} // namespace searchsystem
