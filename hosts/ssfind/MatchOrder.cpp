#include "hosts/ssfind/MatchOrder.h"

#include <algorithm>
#include <compare>
#include <string_view>
#include <tuple>

namespace searchsystem::ssfind {

namespace {

std::string_view nameOf(const CollectedMatch &match) {
  const std::string_view path = match.path;
  return path.substr(path.rfind('/') + 1);
}

using Time = std::optional<std::timespec>;

/// The newest first.
std::strong_ordering compareTimes(const Time &a, const Time &b) {
  return std::tuple(b->tv_sec, b->tv_nsec) <=> std::tuple(a->tv_sec, a->tv_nsec);
}

bool hasKey(const CollectedMatch &match, Order order) {
  if (order == Order::LargestFirst || order == Order::NewestFirst)
    return match.details.status.has_value();
  return order != Order::LatestShotFirst || match.details.photograph.taken;
}

std::strong_ordering compare(const CollectedMatch &a, const CollectedMatch &b, Order order) {
  switch (order) {
  case Order::ByName:
    return nameOf(a) <=> nameOf(b);
  case Order::LargestFirst:
    return b.details.status->size <=> a.details.status->size;
  case Order::NewestFirst:
    return compareTimes(a.details.modified(), b.details.modified());
  case Order::LatestShotFirst:
    return compareTimes(a.details.photograph.taken, b.details.photograph.taken);
  case Order::AsFound:
  case Order::ByPath:
    break;
  }
  return a.path <=> b.path;
}

} // namespace

void sortMatches(std::vector<CollectedMatch> &matches, Order order, bool isReversed) {
  std::sort(matches.begin(), matches.end(), [&](const CollectedMatch &a, const CollectedMatch &b) {
    const bool hasA = hasKey(a, order), hasB = hasKey(b, order);
    if (hasA != hasB)
      return hasA;
    const std::strong_ordering result = hasA ? compare(a, b, order) : std::strong_ordering::equal;
    if (std::is_neq(result))
      return isReversed ? std::is_gt(result) : std::is_lt(result);
    return a.path < b.path;
  });
}

} // namespace searchsystem::ssfind
