#pragma once

#include "hosts/ssfind/LocalTime.h"

#include <optional>
#include <string_view>

namespace searchsystem::ssfind {

/// A length of time by calendar and clock.
enum class CalendarUnit { Second, Minute, Hour, Day, Week, Month, Year };

/// A unit by its names: d, day or days; months are mo, month or months, since m may mean minutes.
[[nodiscard]] std::optional<CalendarUnit> calendarUnitOf(std::string_view name) noexcept;

/// What local clocks show at a time.
[[nodiscard]] LocalTime localTimeAt(UnixTime time) noexcept;

/// When the unit begins that holds `time`. Weeks begin on Monday.
[[nodiscard]] LocalTime beginningOf(CalendarUnit unit, LocalTime time) noexcept;

/// `count` units after `time`, or before it if negative; at most some thousand years. Days of a
/// month that it does not have become its last day.
[[nodiscard]] LocalTime moved(LocalTime time, CalendarUnit unit, int count) noexcept;

} // namespace searchsystem::ssfind
