#include "platform/foundation/LocalTime.h"

#include <cstdint>
#include <ctime>

namespace {

/// The seconds by which local clocks are ahead of UTC.
std::int64_t offsetAt(std::int64_t moment) noexcept {
  const std::time_t time = moment;
  std::tm fields{};
  return localtime_r(&time, &fields) != nullptr ? fields.tm_gmtoff : 0;
}

} // namespace

// mktime would check the zone's file each time, and its choice between two times is unspecified.
PFLocalTime PFLocalTimeMake(std::int64_t time) {
  // More than any zone's offset, and too short for two changes of clocks.
  constexpr std::int64_t reach = std::int64_t{18} * 3600;
  std::int64_t before = time - reach;
  std::int64_t after = time + reach;
  const std::int64_t oldOffset = offsetAt(before);
  const std::int64_t newOffset = offsetAt(after);
  while (oldOffset != newOffset && after - before > 1) {
    const std::int64_t middle = before + (after - before) / 2;
    (offsetAt(middle) == oldOffset ? before : after) = middle;
  }
  return {time - oldOffset, time - newOffset, after};
}
