#pragma once

#include "hosts/ssfind/LocalTime.h"
#include "hosts/ssfind/TextError.h"

#include <string_view>
#include <variant>

namespace searchsystem::ssfind {

/// A range of dates as the library takes it: seconds since 2001-01-01 00:00 UTC.
///
/// The start lies half a microsecond before the first second of the range, the end half a
/// microsecond before the first second after it. File times are whole microseconds, so none equals
/// an end, and whether the ends count makes no difference. An open end is in the distant past or
/// future.
struct DateRange {
  double start;
  double end;
};

/// Reads FROM..TO, FROM.., ..TO, or a single date, in local time.
///
/// A date is a year, month, day, minute, second or part of one, from the year 1 to 9999, and means
/// all of it, so that TO includes its last second: 2024, 2024-05, 2024-05-17, 2024/05/17, 20240517,
/// 2024-05-17T10:30, 2024-05-17 10:30:15.25, these two also with Z or an offset such as +02:00, and
/// @SECONDS since 1970. Or it is one by the calendar, where weeks begin on Monday: today,
/// yesterday, this week, last month, 3 days ago. A length of time (3d, 2 weeks) is the time so long
/// before `now`; alone it means all since then.
///
/// Where daylight saving skips a time, it means the end of the gap; where it doubles one, FROM
/// means the first and TO the second.
[[nodiscard]] std::variant<DateRange, TextError> parseDateRange(std::string_view text,
                                                                UnixTime now);

} // namespace searchsystem::ssfind
