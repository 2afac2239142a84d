#include "hosts/ssfind/LocalTime.h"

#include "platform/foundation/LocalTime.h"

#include <algorithm>

namespace searchsystem::ssfind {

UnixTime firstTimeFrom(LocalTime time) noexcept {
  const auto [byOldOffset, byNewOffset, change] = PFLocalTimeMake(time.time_since_epoch().count());
  return byOldOffset < change ? byOldOffset : std::max(change, byNewOffset);
}

UnixTime endOfTimesBefore(LocalTime time) noexcept {
  const auto [byOldOffset, byNewOffset, change] = PFLocalTimeMake(time.time_since_epoch().count());
  return byNewOffset > change ? byNewOffset : std::min(change, byOldOffset);
}

} // namespace searchsystem::ssfind
