#include "hosts/ssfind/Calendar.h"

#include <algorithm>
#include <ctime>
#include <iterator>

namespace searchsystem::ssfind {

namespace {

using namespace std::chrono;

LocalTime withDate(LocalTime time, year_month_day date) noexcept {
  const auto timeOfDay = time - floor<days>(time);
  if (!date.ok())
    date = date.year() / date.month() / last;
  return local_days(date) + timeOfDay;
}

} // namespace

std::optional<CalendarUnit> calendarUnitOf(std::string_view name) noexcept {
  constexpr struct {
    std::string_view name;
    CalendarUnit unit;
  } names[] = {{"s", CalendarUnit::Second},      {"sec", CalendarUnit::Second},
               {"second", CalendarUnit::Second}, {"min", CalendarUnit::Minute},
               {"minute", CalendarUnit::Minute}, {"h", CalendarUnit::Hour},
               {"hour", CalendarUnit::Hour},     {"d", CalendarUnit::Day},
               {"day", CalendarUnit::Day},       {"w", CalendarUnit::Week},
               {"week", CalendarUnit::Week},     {"mo", CalendarUnit::Month},
               {"month", CalendarUnit::Month},   {"y", CalendarUnit::Year},
               {"year", CalendarUnit::Year}};
  const bool isPlural = name.size() > 3 && name.ends_with('s');
  const std::string_view singular = name.substr(0, name.size() - (isPlural ? 1 : 0));
  const auto *const found = std::find_if(std::begin(names), std::end(names),
                                         [&](const auto &row) { return row.name == singular; });
  return found != std::end(names) ? std::optional(found->unit) : std::nullopt;
}

LocalTime localTimeAt(UnixTime time) noexcept {
  const std::time_t value = time;
  std::tm fields{};
  if (localtime_r(&value, &fields) == nullptr)
    return LocalTime(seconds(time));
  return LocalTime(seconds(time + fields.tm_gmtoff));
}

LocalTime beginningOf(CalendarUnit unit, LocalTime time) noexcept {
  const auto today = floor<days>(time);
  const year_month_day date(today);
  switch (unit) {
  case CalendarUnit::Second:
    return time;
  case CalendarUnit::Minute:
    return floor<minutes>(time);
  case CalendarUnit::Hour:
    return floor<hours>(time);
  case CalendarUnit::Day:
    return today;
  case CalendarUnit::Week:
    return today - (weekday(today) - Monday);
  case CalendarUnit::Month:
    return local_days(date.year() / date.month() / 1);
  case CalendarUnit::Year:
    break;
  }
  return local_days(date.year() / 1 / 1);
}

LocalTime moved(LocalTime time, CalendarUnit unit, int count) noexcept {
  const year_month_day date(floor<days>(time));
  switch (unit) {
  case CalendarUnit::Second:
    return time + seconds(count);
  case CalendarUnit::Minute:
    return time + minutes(count);
  case CalendarUnit::Hour:
    return time + hours(count);
  case CalendarUnit::Day:
    return time + days(count);
  case CalendarUnit::Week:
    return time + weeks(count);
  case CalendarUnit::Month:
    return withDate(time, date + months(count));
  case CalendarUnit::Year:
    break;
  }
  return withDate(time, date + years(count));
}

} // namespace searchsystem::ssfind
