#include "FileSharchFunction/SearchSystem/SearchController.h"

#include "FileSharchFunction/SearchSystem/SearchEngine.h"

#include <cassert>

using namespace searchsystem;

signed char gbSpotlight = 1;
SearchPredicate *gSearchPredicate = nullptr;

void useSpotlight(signed char isAllowed) { gbSpotlight = isAllowed; }

int32_t SS_SearchStart(SearchPredicate *predicate) {
  SearchController::startUpSearchProcess(predicate);
  return 1;
}

int32_t SS_SearchCancel(void) {
  SearchController::CancelSearchProcess();
  return 1;
}

void SearchController::startUpSearchProcess(SearchPredicate *predicate) noexcept {
  constexpr double delayOfRefusal = 0.1;
  assert(MainRunLoop::shared().isMainThread());
  if (predicate == nullptr)
    return;
  SearchEngine *const engine = SearchEngine::sharedSearchEngine();
  gSearchPredicate = predicate;
  if (engine != nullptr)
    engine->startFileSearch(predicate);
  else
    RunningSearch::scheduleEnd(delayOfRefusal);
}

void SearchController::CancelSearchProcess() noexcept {
  assert(MainRunLoop::shared().isMainThread());
  if (SearchEngine *const engine = SearchEngine::sharedSearchEngine())
    engine->setSearchCancel(1);
}

void SearchController::endSearchProcess(const SearchEngine * /*engine*/) noexcept {
  RunningSearch::end();
}
