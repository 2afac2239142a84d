#include "hosts/ssfind/LocalTime.h"

#include "platform/foundation/LocalTime.h"

#include <algorithm>

namespace ssfind {

Moment firstMomentFrom(LocalTime time) noexcept {
  const auto [byOldOffset, byNewOffset, change] = PFLocalTimeMake(time.time_since_epoch().count());
  return byOldOffset < change ? byOldOffset : std::max(change, byNewOffset);
}

Moment endOfMomentsBefore(LocalTime time) noexcept {
  const auto [byOldOffset, byNewOffset, change] = PFLocalTimeMake(time.time_since_epoch().count());
  return byNewOffset > change ? byNewOffset : std::min(change, byOldOffset);
}

} // namespace ssfind
