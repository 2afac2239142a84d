#include "FileSharchFunction/SearchSystem/SearchSystem.h"

#include "FileSharchFunction/SearchSystem/SearchController.h"

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
