#pragma once

#include "platform/foundation/LocalTime.h"
#include "platform/foundation/NSObject.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/Ref.h"

#include <cstdint>

namespace searchsystem {

/// A point in time, in seconds since 2001-01-01 00:00 UTC.
///
/// Ownership: counted. Threads: any; immutable.
class NSDate final : public NSObject {
public:
  static constexpr std::int64_t secondsFrom1970To2001 = PFSecondsFrom1970To2001;

  /// Throws `std::bad_alloc`.
  static Ref<const NSDate> dateWithTimeIntervalSinceReferenceDate(double seconds);

  /// The date in a text in the forms of `intervalOfNaturalLanguageDate`; null if there is none.
  /// Throws `std::bad_alloc`.
  static Ref<const NSDate> dateWithNaturalLanguageString(const NSString &text);

  /// A file time, rounded down to whole microseconds. `nanoseconds` is 0 to 999,999,999.
  static double intervalOfFileTime(std::int64_t secondsSince1970,
                                   std::uint32_t nanoseconds) noexcept;

  [[nodiscard]] double timeIntervalSinceReferenceDate() const noexcept { return seconds_; }

  /// Ascending if this date is before `other`.
  [[nodiscard]] NSComparisonResult compare(const NSDate &other) const noexcept {
    return compareIntervals(seconds_, other.seconds_);
  }

  /// The same comparison for dates in seconds.
  static NSComparisonResult compareIntervals(double a, double b) noexcept;

private:
  explicit NSDate(double seconds) noexcept : seconds_(seconds) {}
  ~NSDate() override = default;

  const double seconds_;
};

} // namespace searchsystem
