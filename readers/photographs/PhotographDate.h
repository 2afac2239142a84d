#pragma once

#include <compare>
#include <optional>
#include <string_view>

namespace searchsystem {

/// When a photograph was taken, as the camera's clock said.
struct PhotographDate {
  int year = 1;
  int month = 1;
  int day = 1;
  int hour = 0;
  int minute = 0;
  int second = 0;

  auto operator<=>(const PhotographDate &) const = default;
};

/// Reads a date as photographs have it: `2004:05:06 07:08:09` (Exif 2.32, 4.6.5), the same with
/// other separators, ISO 8601 (XMP standard, part 1, 8.2.1.1), `20040506` and `070809+0200` behind
/// it (IPTC IIM 4.2, 6.2). Fractions and offsets do not matter. Of a date of which only the first
/// parts are there the others are their least ones. None if there is no year, or no such day.
[[nodiscard]] std::optional<PhotographDate> parsePhotographDate(std::string_view text) noexcept;

/// The same, and as in letters: `Thu, 6 May 2004 07:08:09 GMT` (RFC 1123, 5.2.14), which the PNG
/// standard recommends (11.3.4.2).
[[nodiscard]] std::optional<PhotographDate> parseLetterDate(std::string_view text) noexcept;

} // namespace searchsystem
