#pragma once

#include <optional>
#include <string_view>

namespace searchsystem {

/// The date and time in a text, in seconds since 2001-01-01 00:00 UTC; none for a text of another
/// form, or a date or time that does not exist (a 30th of February, hour 24, second 60).
///
/// The forms are those of ISO 8601 with hyphens and colons, or slashes for the hyphens and blanks
/// for the T: year, month and day, optionally followed by hour and minute, the second, its
/// fraction, and Z or the offset from UTC. The year has four digits, other numbers one or two. A
/// date alone means noon. Without an offset the time is local: one skipped when clocks are set
/// forward moves forward by the gap, a doubled one means the first. Surrounding blanks are ignored.
/// Any thread.
[[nodiscard]] std::optional<double> intervalOfNaturalLanguageDate(std::string_view text) noexcept;

} // namespace searchsystem
