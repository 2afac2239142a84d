#include "hosts/ssfind/LocalTime.h"

#include <algorithm>
#include <ctime>

namespace ssfind {

namespace {

/// The seconds by which local clocks are ahead of UTC.
Moment offsetAt(Moment moment) noexcept {
  const std::time_t time = moment;
  std::tm fields{};
  return localtime_r(&time, &fields) != nullptr ? fields.tm_gmtoff : 0;
}

/// The days around a local time, in which clocks are set at most once.
struct Surroundings {
  /// What the time would be with the offset from before and from after the clocks are set.
  Moment byOldOffset;
  Moment byNewOffset;
  /// When the clocks are set; nothing to go by when both offsets are the same.
  Moment change;
};

Surroundings surroundingsOf(LocalTime time) noexcept {
  // Further away from UTC than any zone has been.
  constexpr Moment reach = Moment{18} * 3600;
  const Moment asUTC = time.time_since_epoch().count();
  Moment before = asUTC - reach;
  Moment after = asUTC + reach;
  const Moment oldOffset = offsetAt(before);
  const Moment newOffset = offsetAt(after);
  while (oldOffset != newOffset && after - before > 1) {
    const Moment middle = before + (after - before) / 2;
    (offsetAt(middle) == oldOffset ? before : after) = middle;
  }
  return {asUTC - oldOffset, asUTC - newOffset, after};
}

} // namespace

Moment firstMomentFrom(LocalTime time) noexcept {
  const auto [byOldOffset, byNewOffset, change] = surroundingsOf(time);
  return byOldOffset < change ? byOldOffset : std::max(change, byNewOffset);
}

Moment endOfMomentsBefore(LocalTime time) noexcept {
  const auto [byOldOffset, byNewOffset, change] = surroundingsOf(time);
  return byNewOffset > change ? byNewOffset : std::min(change, byOldOffset);
}

} // namespace ssfind
