#include "FileSharchFunction/SearchSystem/SearchEngine.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace {

constexpr int mostWorkers = 5;
constexpr double delayOfWalkEnd = 1.0;

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

bool SearchEngine::startWorker(const Ref<const NSString> &folder, Worker::Body body) noexcept {
  const auto worker = std::find_if(workers_.begin(), workers_.end(),
                                   [](const Worker &candidate) { return candidate.isFree(); });
  if (worker == workers_.end())
    return false;
  worker->start(*this, folder, body);
  return true;
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
    if (startWorker(listFolder_, &SearchEngine::manualSearchThread))
      ++_threadCount;
  } else {
    if (folder != nullptr)
      queueFolder(folder);
    else
      --_threadCount;
    if (!_dirPool.empty() && _bCancel == 0 && _threadCount < mostWorkers &&
        startWorker(_dirPool.front(), &SearchEngine::manualSearchThread)) {
      _dirPool.pop_front();
      ++_threadCount;
    }
  }
  if (_threadCount <= 0)
    walkEnd_.schedule(delayOfWalkEnd);
}

void SearchEngine::queueFolder(const NSString *folder) noexcept {
  try {
    _dirPool.emplace_back(folder);
  } catch (...) {
    // Without memory for its place in the queue the folder is passed over.
  }
}

void SearchEngine::walkEnded() {
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
  if (const Worker *const worker = Worker::current(); worker != nullptr && worker->isPaused())
    return;
  ThreadJob::performAtExit(
      [](void *engine) { static_cast<SearchEngine *>(engine)->manualSearchPool(nullptr); }, this);
}
