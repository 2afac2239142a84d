#include "FileSharchFunction/SearchSystem/SearchEngine.h"

#include <cassert>

void SearchEngine::startContentWalk() noexcept {
  _isExifSearch = _isSearching = 1;
  _threadCount = 0;
  _dirPool.clear();
  readAhead_.begin(nullptr, 0);
  spotligtExifPDFSearchPool(_searchPredicate->searchFolder);
}

void SearchEngine::spotligtExifPDFSearchPool(const NSString *folder) noexcept {
  assert(MainRunLoop::shared().isMainThread());
  if (_searchPredicate == nullptr)
    return;
  makeEntryTest();
  addToPool(folder, _dirPool, _threadCount, workers_, &SearchEngine::spotligtExifPDFSearchThread,
            nullptr);
  if (_threadCount > 0)
    return;
  _isExifSearch = 0;
  walkEnd_.schedule(delayOfProducerEnd);
}

void SearchEngine::spotligtExifPDFSearchThread(const NSString *folder) noexcept {
  const bool wantsImages = isExifSearch() != 0 || isTokenDateSearch() != 0;
  const bool wantsDocuments = isPDFSearch() != 0;
  int type = 3;
  if (wantsImages != wantsDocuments)
    type = wantsImages ? 0 : 1;
  exifSearchWithSpotlight(folder, type);
  endWorker<&SearchEngine::spotligtExifPDFSearchPool>();
}
