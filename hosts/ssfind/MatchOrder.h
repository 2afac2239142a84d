#pragma once

#include "hosts/ssfind/MatchDetails.h"
#include "hosts/ssfind/Options.h"

#include <string>
#include <vector>

namespace searchsystem::ssfind {

/// A match that waits for others.
struct CollectedMatch {
  /// As it is printed.
  std::string path;
  MatchDetails details;
};

/// Puts matches into an order, or its reverse; equal ones stay ordered by path. Matches without
/// what they are ordered by are the last, in reverse, too.
void sortMatches(std::vector<CollectedMatch> &matches, Order order, bool isReversed);

} // namespace searchsystem::ssfind
