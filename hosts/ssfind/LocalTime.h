#pragma once

#include <chrono>
#include <cstdint>

namespace ssfind {

/// Calendar and clock without a time zone.
using LocalTime = std::chrono::local_seconds;

/// Seconds since 1970-01-01 00:00 UTC.
using Moment = std::int64_t;

/// The first moment at which local clocks show `time` or a later time.
///
/// A time that daylight saving skips is the end of the gap, a doubled one the first of the two.
[[nodiscard]] Moment firstMomentFrom(LocalTime time) noexcept;

/// The moment after the last at which local clocks show a time before `time`.
///
/// Differs from firstMomentFrom for doubled times only: it is the second of the two, so that what
/// comes before `time` on the clock comes before this moment.
[[nodiscard]] Moment endOfMomentsBefore(LocalTime time) noexcept;

} // namespace ssfind
