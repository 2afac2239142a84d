#pragma once

#include "FileSharchFunction/SearchSystem/SearchSystem.h"
#include "platform/content/ContentService.h"
#include "platform/foundation/NSObject.h"

#include <atomic>
#include <optional>

namespace searchsystem {

/// The one search that can be running, as the parts of the engine see it: its request, its flags,
/// and its end.
///
/// Ownership: borrows the request until the end. Threads: main, except where stated.
class RunningSearch : public NSObject {
public:
  /// Ends the search after `delay` seconds. The end is reserved for the life of the process, so
  /// that nothing can lose it; while it is scheduled a further call does nothing, so that a search
  /// ends once.
  static void scheduleEnd(double delay) noexcept;

  /// Whether the end of a search is on its way to the host.
  [[nodiscard]] static bool isEndScheduled() noexcept;

  /// Tells the host which files could not be read, releases the engine, so that the next search
  /// gets a new one, and reports the end to the callback of the most recent request.
  static void end() noexcept;

  /// Releases the engine, if there is one. Messages that still arrive for it are ignored.
  static void releaseSharedSearchEngine() noexcept;

  /// Calls a host's callback, if there is one. What it throws is dropped.
  static void callHost(SearchResultCallback callback, CFStringRef path, int32_t state) noexcept;

  /// Whether the request has a condition on EXIF text, on PDF text, on shooting dates. Any thread.
  [[nodiscard]] char isExifSearch() const noexcept {
    return hasContentKeyword(_searchPredicate->searchExifText);
  }
  [[nodiscard]] char isPDFSearch() const noexcept {
    return hasContentKeyword(_searchPredicate->searchPDFText);
  }
  [[nodiscard]] char isTokenDateSearch() const noexcept {
    return _searchPredicate->exifDateStart != nullptr || _searchPredicate->exifDateEnd != nullptr
               ? 1
               : 0;
  }

  /// Whether it has any of these. Any thread.
  [[nodiscard]] bool hasContentCondition() const noexcept {
    return isPDFSearch() != 0 || isExifSearch() != 0 || isTokenDateSearch() != 0;
  }

  /// What reads deep, and knows the kinds of files that are searched; null in a plain search. Any
  /// thread.
  [[nodiscard]] ContentService *contentService() const noexcept {
    return contentService_ ? &*contentService_ : nullptr;
  }

  /// Stops the metadata query, if one runs.
  virtual void stopQuery() noexcept = 0;

  /// The request; null before the start and after the end. It stays while workers of the walk run,
  /// which may read it.
  const SearchPredicate *_searchPredicate = nullptr;
  /// Any thread may read it.
  std::atomic<char> _bCancel{0};
  char _isSearching = 0;
  char _isUseSpotlight = 0;

protected:
  RunningSearch() noexcept = default;
  ~RunningSearch() override {
    if (sSharedSearchEngine == this)
      sSharedSearchEngine = nullptr;
  }

  /// Makes this a deep search if the host wants one. Once, before any worker.
  void chooseDepth() noexcept;

  /// The engine; null when there is none.
  static RunningSearch *sSharedSearchEngine;

private:
  void deliverUnread() noexcept;

  [[nodiscard]] char hasContentKeyword(signed char isWanted) const noexcept {
    return isWanted != 0 && _searchPredicate->contentKeyword != nullptr ? 1 : 0;
  }

  /// Synchronises itself.
  mutable std::optional<ContentService> contentService_;
};

} // namespace searchsystem
