#pragma once

#include <chrono>
#include <cstdint>

namespace searchsystem::ssfind {

/// Calendar and clock without a time zone.
using LocalTime = std::chrono::local_seconds;

/// Seconds since 1970-01-01 00:00 UTC.
using UnixTime = std::int64_t;

/// When local clocks first show `time` or a later time.
///
/// A time that daylight saving skips means the end of the gap, a doubled one the first of the two.
[[nodiscard]] UnixTime firstTimeFrom(LocalTime time) noexcept;

/// The second after local clocks last show a time before `time`.
///
/// Differs from firstTimeFrom only for doubled times: it is the second of the two, so that every
/// earlier time on the clock lies before it.
[[nodiscard]] UnixTime endOfTimesBefore(LocalTime time) noexcept;

} // namespace searchsystem::ssfind
