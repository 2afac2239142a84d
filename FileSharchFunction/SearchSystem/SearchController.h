#pragma once

#include "FileSharchFunction/SearchSystem/SearchSystem.h"

namespace searchsystem {

class SearchEngine;

/// Between the entry points and the engine. It has no instances. Main thread.
class SearchController {
public:
  SearchController() = delete;

  /// Makes `predicate` the most recent request and has the engine search for it. Null is ignored.
  static void startUpSearchProcess(SearchPredicate *predicate) noexcept;

  /// Cancels; if there is no engine, it makes one, which waits for a start.
  static void CancelSearchProcess() noexcept;

  /// As `RunningSearch::end`.
  static void endSearchProcess(const SearchEngine *engine) noexcept;
};

} // namespace searchsystem
