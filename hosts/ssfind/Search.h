#pragma once

#include "hosts/ssfind/SearchRequest.h"

#include <chrono>
#include <cstdint>
#include <string_view>

namespace searchsystem::ssfind {

/// Follows a search. All calls come on the main thread; what they throw ends the search.
class SearchFollower {
public:
  enum class Next {
    Continue,
    /// Have takeTurn() called soon.
    TakeTurn,
    /// Cancel the search.
    Stop
  };

  virtual Next found(std::string_view path) = 0;

  /// The content of a file could not be read; `reason` as in `Content.h`. Each at most once in a
  /// search, before its end.
  virtual void unread(std::string_view path, std::int32_t reason) = 0;

  /// Called between portions of the search's work. Matches may still be reported after Stop.
  virtual Next takeTurn() = 0;

  /// How long the search may run until the next turn.
  [[nodiscard]] virtual std::chrono::duration<double> timeToNextTurn() = 0;

protected:
  ~SearchFollower() = default;
};

/// Runs a search from its start until its end has been reported.
void search(SearchRequest &request, SearchFollower &follower);

} // namespace searchsystem::ssfind
