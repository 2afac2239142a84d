#include "FileSharchFunction/SearchSystem/SearchEngine.h"

#include "platform/foundation/TryTwice.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace {

constexpr int mostWorkers = 5;

/// The class of all files that can be found.
constexpr int typeOfAll = 3;

/// The main thread puts so many sub-folders into its queue in a fraction of a millisecond.
constexpr std::size_t mostQueuedAtOnce = 256;

} // namespace

void SearchEngine::Worker::start(SearchEngine &engine, Ref<const NSString> folder,
                                 Ref<FolderAhead> ahead, Body body) noexcept {
  engine_ = Ref<SearchEngine>(&engine);
  folder_ = std::move(folder);
  ahead_ = std::move(ahead);
  body_ = body;
  if (ahead_) {
    NSThread::detachWaitingThread(*this);
    ahead_->resumeWhenRead(*this);
  } else {
    NSThread::detachNewThread(*this);
  }
}

SearchEngine::Worker *SearchEngine::Worker::current() noexcept {
  return static_cast<Worker *>(ThreadJob::current());
}

void SearchEngine::Worker::main() { ((*engine_).*body_)(folder_.get()); }

ThreadJob::Demand SearchEngine::Worker::demand() const noexcept {
  if (!ahead_)
    return Demand::Thread;
  if (search)
    return search->listing ? Demand::Thread : Demand::MainThread;
  const FolderFindings &findings = ahead_->findings;
  if (findings.rest || findings.subFolders.size() > mostQueuedAtOnce)
    return Demand::Thread;
  return findings.files.empty() ? Demand::MainThreadQuietly : Demand::MainThread;
}

void SearchEngine::Worker::ended() noexcept {
  folder_ = nullptr;
  ahead_ = nullptr;
  // This object is part of the engine, and may go with it here.
  const Ref<SearchEngine> engine = std::move(engine_);
}

bool SearchEngine::startWorker(Workers &workers, const Ref<const NSString> &path,
                               Ref<FolderAhead> ahead, Worker::Body body) noexcept {
  const auto worker = std::find_if(workers.begin(), workers.end(),
                                   [](const Worker &candidate) { return candidate.isFree(); });
  if (worker == workers.end())
    return false;
  worker->start(*this, path, std::move(ahead), body);
  return true;
}

void SearchEngine::addToPool(const NSString *path, Pool &pool, int &threadCount, Workers &workers,
                             Worker::Body body, ReadAhead *ahead) noexcept {
  if (path == nullptr) {
    --threadCount;
  } else {
    // Without memory for its place in the queue the path is passed over.
    tryTwice([&] { pool.emplace_back(path); });
  }
  if (ahead != nullptr)
    ahead->follow(pool);
  if (!pool.empty() && _bCancel == 0 && threadCount < mostWorkers &&
      startWorker(workers, pool.front(), ahead != nullptr ? ahead->first() : nullptr, body)) {
    pool.pop_front();
    if (ahead != nullptr)
      ahead->removeFirst();
    ++threadCount;
  }
}

void SearchEngine::makeEntryTest() noexcept {
  // Where that fails the next event of the queue tries again.
  if (!entryTest_)
    tryTwice([&] { entryTest_.emplace(*_searchPredicate); });
}

void SearchEngine::manuallyFileSearch() noexcept {
  _isSearching = 1;
  _threadCount = 0;
  _dirPool.clear();
  makeEntryTest();
  const bool decidesAlone = entryTest_ && !hasContentCondition() && !_searchPredicate->fileList;
  readAhead_.begin(decidesAlone ? &*entryTest_ : nullptr, typeOfAll);
  manualSearchPool(_searchPredicate->searchFolder);
}

void SearchEngine::manualSearchPool(const NSString *folder) noexcept {
  assert(MainRunLoop::shared().isMainThread());
  if (_searchPredicate == nullptr)
    return;
  makeEntryTest();
  if (_searchPredicate->fileList != nullptr && _threadCount <= 0) {
    if (startWorker(workers_, listFolder_, nullptr, &SearchEngine::manualSearchThread))
      ++_threadCount;
  } else {
    addToPool(folder, _dirPool, _threadCount, workers_, &SearchEngine::manualSearchThread,
              &readAhead_);
  }
  if (_threadCount <= 0)
    walkEnd_.schedule(delayOfProducerEnd);
}

void SearchEngine::reportProducerEnd() noexcept {
  const ResultMessage end;
  searchResultDistribution(&end);
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

void SearchEngine::PDFSearchPool(const NSString *path) noexcept {
  assert(MainRunLoop::shared().isMainThread());
  if (_searchPredicate == nullptr)
    return;
  if (_pdfPool.empty() && _pdfThreadCount <= 0) {
    pdfKeyword_ = Ref<const NSString>(_searchPredicate->contentKeyword);
    isPDFDistinct_ = _searchPredicate->isDistinct;
  }
  addToPool(path, _pdfPool, _pdfThreadCount, pdfWorkers_, &SearchEngine::PDFSearchThread, nullptr);
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
