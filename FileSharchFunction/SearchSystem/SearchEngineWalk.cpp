#include "FileSharchFunction/SearchSystem/SearchEngine.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace {

constexpr int mostWorkers = 5;

} // namespace

void SearchEngine::Worker::start(SearchEngine &engine, Ref<const NSString> folder,
                                 Body body) noexcept {
  engine_ = Ref<SearchEngine>(&engine);
  folder_ = std::move(folder);
  body_ = body;
  NSThread::detachNewThread(*this);
}

SearchEngine::Worker *SearchEngine::Worker::current() noexcept {
  return static_cast<Worker *>(ThreadJob::current());
}

void SearchEngine::Worker::main() { ((*engine_).*body_)(folder_.get()); }

void SearchEngine::Worker::ended() noexcept {
  folder_ = nullptr;
  // This object is part of the engine, and may go with it here.
  const Ref<SearchEngine> engine = std::move(engine_);
}

bool SearchEngine::startWorker(Workers &workers, const Ref<const NSString> &path,
                               Worker::Body body) noexcept {
  const auto worker = std::find_if(workers.begin(), workers.end(),
                                   [](const Worker &candidate) { return candidate.isFree(); });
  if (worker == workers.end())
    return false;
  worker->start(*this, path, body);
  return true;
}

void SearchEngine::addToPool(const NSString *path, Pool &pool, int &threadCount, Workers &workers,
                             Worker::Body body) noexcept {
  if (path == nullptr) {
    --threadCount;
  } else {
    try {
      pool.emplace_back(path);
    } catch (...) {
      // Without memory for its place in the queue the path is passed over.
    }
  }
  if (!pool.empty() && _bCancel == 0 && threadCount < mostWorkers &&
      startWorker(workers, pool.front(), body)) {
    pool.pop_front();
    ++threadCount;
  }
}

void SearchEngine::manuallyFileSearch() noexcept {
  _isSearching = 1;
  _threadCount = 0;
  _dirPool.clear();
  manualSearchPool(_searchPredicate->searchFolder);
}

void SearchEngine::manualSearchPool(const NSString *folder) noexcept {
  assert(MainRunLoop::shared().isMainThread());
  if (_searchPredicate == nullptr)
    return;
  if (_searchPredicate->fileList != nullptr && _threadCount <= 0) {
    if (startWorker(workers_, listFolder_, &SearchEngine::manualSearchThread))
      ++_threadCount;
  } else {
    addToPool(folder, _dirPool, _threadCount, workers_, &SearchEngine::manualSearchThread);
  }
  if (_threadCount <= 0)
    walkEnd_.schedule(delayOfProducerEnd);
}

void SearchEngine::reportProducerEnd() noexcept {
  const ResultMessage end;
  searchResultDistribution(&end);
}

void SearchEngine::manualSearchThread(const NSString *folder) noexcept {
  int type = 3;
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

void SearchEngine::PDFSearchPool(const NSString *path) noexcept {
  assert(MainRunLoop::shared().isMainThread());
  if (_searchPredicate == nullptr)
    return;
  if (_pdfPool.empty() && _pdfThreadCount <= 0) {
    pdfKeyword_ = Ref<const NSString>(_searchPredicate->contentKeyword);
    isPDFDistinct_ = _searchPredicate->isDistinct;
  }
  addToPool(path, _pdfPool, _pdfThreadCount, pdfWorkers_, &SearchEngine::PDFSearchThread);
  if (_pdfThreadCount <= 0)
    pdfPoolEnd_.schedule(delayOfProducerEnd);
}

void SearchEngine::PDFSearchThread(const NSString *path) noexcept {
  try {
    static_cast<void>(hasTextInPDF(path, pdfKeyword_.get(), isPDFDistinct_));
  } catch (...) {
    // The answer is not used, only the end is reported.
  }
  endWorker<&SearchEngine::PDFSearchPool>();
}
