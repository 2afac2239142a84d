#pragma once

#include "FileSharchFunction/SearchSystem/SearchSystem.h"

class SearchEngine;

/// The thin layer between the entry points and the engine. It has no instances; every method
/// belongs to the main thread.
class SearchController {
public:
  SearchController() = delete;

  /// Makes `predicate` the most recent request and has the engine search for it. Null is ignored.
  static void startUpSearchProcess(SearchPredicate *predicate) noexcept;

  /// Asks the engine to cancel; creates one that sits idle when there is none.
  static void CancelSearchProcess() noexcept;

  /// Has `endSearchProcess` called after `delay` seconds, for the engine, of which a reference is
  /// held until then, or for null when none could be made. While one is scheduled a further call
  /// does nothing, so that a search ends once. It cannot fail.
  static void scheduleEndSearchProcess(SearchEngine *engine, double delay) noexcept;

  /// Whether the end of a search is on its way to the host.
  [[nodiscard]] static bool isEndScheduled() noexcept;

  /// Releases the engine, so that the next search gets a fresh one, and reports the end to the
  /// callback of the most recent request. The engine that finished is not looked at.
  static void endSearchProcess(const SearchEngine *engine) noexcept;
};
