#include "FileSharchFunction/SearchSystem/RunningSearch.h"

#include "platform/foundation/NeverDestroyed.h"
#include "platform/foundation/Perform.h"
#include "platform/foundation/Ref.h"

#include <utility>

namespace searchsystem {

namespace {

class EndPerform final : public TimedWork {
  void fire() override { RunningSearch::end(); }
  void finished() noexcept override {}
};

EndPerform &endPerform() noexcept {
  static NeverDestroyed<EndPerform> perform;
  return perform.get();
}

} // namespace

RunningSearch *RunningSearch::sSharedSearchEngine = nullptr;

void RunningSearch::scheduleEnd(double delay) noexcept {
  if (!isEndScheduled())
    MainRunLoop::shared().schedule(endPerform(), performDelay(delay));
}

bool RunningSearch::isEndScheduled() noexcept { return endPerform().isScheduled(); }

void RunningSearch::chooseDepth() noexcept {
  if (ContentSettings::current().isDeep)
    contentService_.emplace();
}

void RunningSearch::deliverUnread() noexcept {
  if (!contentService_)
    return;
  const Ref<RunningSearch> self(this);
  // A start from the host's callback counts as one during the search.
  _isSearching = 1;
  contentService_->deliverUnread();
}

void RunningSearch::end() noexcept {
  if (sSharedSearchEngine != nullptr)
    sSharedSearchEngine->deliverUnread();
  releaseSharedSearchEngine();
  if (gSearchPredicate != nullptr)
    callHost(gSearchPredicate->resultCallback, nullptr, 0);
}

void RunningSearch::releaseSharedSearchEngine() noexcept {
  RunningSearch *const engine = std::exchange(sSharedSearchEngine, nullptr);
  if (engine == nullptr)
    return;
  engine->_searchPredicate = nullptr;
  engine->release();
}

void RunningSearch::callHost(SearchResultCallback callback, CFStringRef path,
                             int32_t state) noexcept {
  if (callback == nullptr)
    return;
  try {
    callback(path, state);
  } catch (...) {
    return;
  }
}

} // namespace searchsystem
