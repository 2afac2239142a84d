#pragma once

#include <optional>
#include <string_view>

/// The moment that a text names, in seconds since 2001-01-01 00:00 UTC; none for a text of another
/// form, or a date or time that does not exist (a 30th of February, hour 24, second 60).
///
/// The forms are those of ISO 8601 with hyphens and colons, in which slashes may stand for the
/// hyphens and blanks for the T: a date of year, month and day, if wanted followed by hour and
/// minute, the second, its fraction, and Z or the offset from UTC. The year has four digits, all
/// else may have one or two. A date alone is its noon. Without an offset it is local time: one that
/// clocks skip when they are set forward moves forward by as much, a doubled one is the first.
/// Blanks around the text do not count. Any thread.
[[nodiscard]] std::optional<double> intervalOfNaturalLanguageDate(std::string_view text) noexcept;
