#include "FileSharchFunction/SearchSystem/SearchController.h"
#include "FileSharchFunction/SearchSystem/SearchEngine.h"

namespace {

constexpr double delayOfRefusal = 0.1;

} // namespace

// No metadata query is part of the library yet, so that a search that asks for one is refused, as
// on any system that lacks the classes.
void SearchEngine::spotlightSearch() noexcept {
  SearchController::scheduleEndSearchProcess(this, delayOfRefusal);
}

void SearchEngine::getSpotlightResult(const NSNotification * /*notification*/) noexcept {}

void SearchEngine::stopSpotlight(const NSNotification * /*notification*/) noexcept {
  _isSearchSpotlight = 0;
  if (_isStopSpotligth != 0)
    return;
  _isStopSpotligth = 1;
  const ResultMessage end;
  searchResultDistribution(&end);
}
