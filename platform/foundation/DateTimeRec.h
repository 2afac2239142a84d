#pragma once

#include <cstdint>

namespace searchsystem {

/// A date by calendar and clock.
struct DateTimeRec {
  std::int16_t year;
  std::int16_t month;
  std::int16_t day;
  std::int16_t hour;
  std::int16_t minute;
  std::int16_t second;
  std::int16_t dayOfWeek;
};

} // namespace searchsystem
