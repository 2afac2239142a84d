#include "platform/foundation/LocalTime.h"

#include <ctime>

namespace {

/// The seconds by which local clocks are ahead of UTC.
std::int64_t offsetAt(std::int64_t moment) noexcept {
  const std::time_t time = moment;
  std::tm fields{};
  return localtime_r(&time, &fields) != nullptr ? fields.tm_gmtoff : 0;
}

} // namespace

// mktime would look at the zone's file each time, and which of two times it takes is not stated.
std::int64_t momentOfLocalTime(std::chrono::local_seconds time) noexcept {
  // Further away from UTC than any zone has been, and too short for clocks to be set twice.
  constexpr std::int64_t reach = std::int64_t{18} * 3600;
  const std::int64_t asUTC = time.time_since_epoch().count();
  std::int64_t before = asUTC - reach;
  std::int64_t after = asUTC + reach;
  const std::int64_t oldOffset = offsetAt(before);
  const std::int64_t newOffset = offsetAt(after);
  const std::int64_t byOldOffset = asUTC - oldOffset;
  if (oldOffset == newOffset)
    return byOldOffset;
  while (after - before > 1) {
    const std::int64_t middle = before + (after - before) / 2;
    (offsetAt(middle) == oldOffset ? before : after) = middle;
  }
  const std::int64_t change = after;
  const std::int64_t byNewOffset = asUTC - newOffset;
  return byOldOffset >= change && byNewOffset >= change ? byNewOffset : byOldOffset;
}
