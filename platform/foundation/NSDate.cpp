#include "platform/foundation/NSDate.h"

#include "platform/foundation/NaturalLanguageDate.h"

#include <optional>

namespace searchsystem {

Ref<const NSDate> NSDate::dateWithTimeIntervalSinceReferenceDate(double seconds) {
  return Ref<const NSDate>::adopt(new NSDate(seconds));
}

Ref<const NSDate> NSDate::dateWithNaturalLanguageString(const NSString &text) {
  const std::optional<double> seconds = intervalOfNaturalLanguageDate(text.view());
  return seconds ? dateWithTimeIntervalSinceReferenceDate(*seconds) : nullptr;
}

double NSDate::intervalOfFileTime(std::int64_t secondsSince1970,
                                  std::uint32_t nanoseconds) noexcept {
  const double seconds =
      static_cast<double>(secondsSince1970) - static_cast<double>(secondsFrom1970To2001);
  const std::uint32_t microseconds = nanoseconds / 1000;
  return seconds + microseconds / 1e6;
}

NSComparisonResult NSDate::compareIntervals(double a, double b) noexcept {
  if (a < b)
    return NSOrderedAscending;
  return a > b ? NSOrderedDescending : NSOrderedSame;
}

} // namespace searchsystem
