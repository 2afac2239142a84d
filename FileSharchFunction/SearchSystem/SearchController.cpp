#include "FileSharchFunction/SearchSystem/SearchController.h"

#include "FileSharchFunction/SearchSystem/HostCallback.h"
#include "FileSharchFunction/SearchSystem/SearchEngine.h"
#include "platform/foundation/NeverDestroyed.h"
#include "platform/foundation/Perform.h"

#include <cassert>
#include <utility>

namespace {

constexpr double delayOfRefusal = 0.1;

/// The end of the one search that can be running, reserved for the life of the process.
class EndPerform final : public TimedWork {
public:
  void schedule(SearchEngine *engine, double delay) noexcept {
    if (isScheduled())
      return;
    engine_ = Ref<SearchEngine>(engine);
    MainRunLoop::shared().schedule(*this, performDelay(delay));
  }

private:
  void fire() override {
    const SearchEngine *const engine = engine_.get();
    engine_ = nullptr;
    SearchController::endSearchProcess(engine);
  }
  void finished() noexcept override {}

  Ref<SearchEngine> engine_;
};

EndPerform &endPerform() noexcept {
  static NeverDestroyed<EndPerform> perform;
  return perform.get();
}

} // namespace

void SearchController::startUpSearchProcess(SearchPredicate *predicate) noexcept {
  assert(MainRunLoop::shared().isMainThread());
  if (predicate == nullptr)
    return;
  SearchEngine *const engine = SearchEngine::sharedSearchEngine();
  gSearchPredicate = predicate;
  if (engine != nullptr)
    engine->startFileSearch(predicate);
  else
    scheduleEndSearchProcess(nullptr, delayOfRefusal);
}

void SearchController::CancelSearchProcess() noexcept {
  assert(MainRunLoop::shared().isMainThread());
  if (SearchEngine *const engine = SearchEngine::sharedSearchEngine())
    engine->setSearchCancel(1);
}

void SearchController::scheduleEndSearchProcess(SearchEngine *engine, double delay) noexcept {
  endPerform().schedule(engine, delay);
}

bool SearchController::isEndScheduled() noexcept { return endPerform().isScheduled(); }

void SearchController::endSearchProcess(const SearchEngine * /*engine*/) noexcept {
  SearchEngine::releaseSharedSearchEngine();
  if (gSearchPredicate != nullptr)
    callHost(gSearchPredicate->resultCallback, nullptr, 0);
}
