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
                                 Body body) noexcept {
  engine_ = Ref<SearchEngine>(&engine);
  folder_ = std::move(folder);
  body_ = body;
  NSThread::detachNewThread(*this);
}

void SearchEngine::Worker::main() { ((*engine_).*body_)(folder_.get()); }

void SearchEngine::Worker::ended() noexcept {
  folder_ = nullptr;
  // This object is part of the engine, and may go with it here.
  const Ref<SearchEngine> engine = std::move(engine_);
}

void SearchEngine::WorkerAhead::start(SearchEngine &engine, Ref<FolderAhead> folder) noexcept {
  engine_ = Ref<SearchEngine>(&engine);
  folder_ = std::move(folder);
  MainRunLoop::shared().beginActivity();
  folder_->await(*this);
}

void SearchEngine::WorkerAhead::run() {
  if (isUsedUp()) {
    findings_ = folder_->take();
    queued_ = told_ = 0;
  }
  queueSubFolders();
  if (told_ < findings_.files.size())
    tellFile();
  if (isUsedUp() && findings_.isLast)
    engine_->manualSearchPool(nullptr);
}

void SearchEngine::WorkerAhead::queueSubFolders() noexcept {
  for (std::size_t i = 0; i < mostQueuedAtOnce && queued_ < findings_.subFolders.size(); ++i)
    engine_->manualSearchPool(findings_.subFolders[queued_++].get());
}

void SearchEngine::WorkerAhead::tellFile() noexcept {
  // What has been met ahead of a cancel, but not told, is not told any more.
  if (engine_->_bCancel != 0) {
    told_ = findings_.files.size();
    return;
  }
  ++engine_->_returnCount;
  ResultMessage message;
  message.ResultData = std::move(findings_.files[told_++]);
  message.SearchState = 1;
  engine_->searchResultDistribution(&message);
}

void SearchEngine::WorkerAhead::finished() noexcept {
  if (!isUsedUp()) {
    MainRunLoop::shared().post(*this);
    return;
  }
  if (!findings_.isLast) {
    folder_->await(*this);
    return;
  }
  findings_ = {};
  queued_ = told_ = 0;
  folder_ = nullptr;
  MainRunLoop::shared().endActivity();
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

bool SearchEngine::startWorkerAhead(const Ref<FolderAhead> &folder) noexcept {
  const auto worker = std::find_if(workersAhead_.begin(), workersAhead_.end(),
                                   [](const WorkerAhead &candidate) { return candidate.isFree(); });
  if (worker == workersAhead_.end())
    return false;
  worker->start(*this, folder);
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
  if (pool.empty() || _bCancel != 0 || threadCount >= mostWorkers)
    return;
  const Ref<FolderAhead> folder = ahead != nullptr ? ahead->first() : nullptr;
  if (folder ? startWorkerAhead(folder) : startWorker(workers, pool.front(), body)) {
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
    if (startWorker(workers_, listFolder_, &SearchEngine::manualSearchThread))
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
