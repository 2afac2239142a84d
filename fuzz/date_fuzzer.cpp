// Reads any bytes as a date, and compares the answer with that of a regular expression and plain
// arithmetic; and as the date of a photograph, whose numbers must be those of its digits.
//
// An input is a time zone (one byte) and the text.

#include "FileSharchFunction/SearchSystem/ExifAnalysis.h"
#include "platform/foundation/NaturalLanguageDate.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <optional>
#include <regex.h>
#include <string>

namespace searchsystem {

namespace {

constexpr std::int64_t secondsFrom1970To2001 = 978307200;

void require(bool holds) {
  if (!holds)
    std::abort();
}

void setTimeZone(std::uint8_t choice) {
  static std::array<char[48], 5> zones{
      "TZ=UTC0", "TZ=CET-1CEST,M3.5.0,M10.5.0/3", "TZ=EST5EDT,M3.2.0,M11.1.0",
      "TZ=<+1030>-10:30<+11>-11,M10.1.0,M4.1.0", "TZ=BRT3BRST,M11.1.0/0,M2.3.0/0"};
  putenv(zones[choice % zones.size()]);
  tzset();
}

/// The texts that are dates, except that their numbers may be out of range.
class DateForm {
public:
  DateForm() {
    require(regcomp(&form_,
                    "^[ \t]*([0-9]{4})([-/])([0-9]{1,2})([-/])([0-9]{1,2})"
                    "((T|[ \t]+)([0-9]{1,2}):([0-9]{1,2})(:([0-9]{1,2})([.,]([0-9]+))?)?"
                    "[ \t]*(Z|([-+])([0-9]{1,2})(:?([0-9]{1,2}))?)?)?[ \t]*$",
                    REG_EXTENDED) == 0);
  }
  DateForm(const DateForm &) = delete;
  ~DateForm() { regfree(&form_); }

  bool takes(const std::string &text) {
    text_ = text;
    return std::strlen(text.c_str()) == text.size() &&
           regexec(&form_, text.c_str(), groups_.size(), groups_.data(), 0) == 0;
  }
  [[nodiscard]] std::string group(std::size_t i) const {
    const auto begin = groups_[i].rm_so;
    return begin < 0 ? "" : text_.substr(static_cast<std::size_t>(begin), groups_[i].rm_eo - begin);
  }
  [[nodiscard]] int number(std::size_t i) const { return std::atoi(group(i).c_str()); }

private:
  regex_t form_{};
  std::string text_;
  std::array<regmatch_t, 19> groups_{};
};

bool isLeapYear(int year) { return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0; }

int daysOfMonth(int year, int month) {
  constexpr std::array days{31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return days[month - 1] + (month == 2 && isLeapYear(year) ? 1 : 0);
}

std::int64_t daysSince1970(int year, int month, int day) {
  const std::int64_t before = year - 1;
  std::int64_t days = before * 365 + before / 4 - before / 100 + before / 400 - 719162;
  for (int i = 1; i < month; ++i)
    days += daysOfMonth(year, i);
  return days + day - 1;
}

std::int64_t offsetAt(std::time_t moment) {
  std::tm fields{};
  return localtime_r(&moment, &fields)->tm_gmtoff;
}

/// When clocks first show the time, which is given as if it were UTC; if they never do, by the
/// offset that held before.
std::int64_t momentOfClock(std::int64_t time) {
  constexpr std::int64_t day = 86400;
  const std::int64_t before = time - offsetAt(time - day);
  const std::int64_t after = time - offsetAt(time + day);
  for (const std::int64_t moment : {std::min(before, after), std::max(before, after)})
    if (moment + offsetAt(moment) == time)
      return moment;
  return before;
}

std::optional<double> plainInterval(const std::string &text) {
  static DateForm form;
  if (!form.takes(text) || form.group(2) != form.group(4))
    return std::nullopt;
  const int year = form.number(1), month = form.number(3), day = form.number(5);
  const bool hasTime = !form.group(6).empty();
  const int hour = hasTime ? form.number(8) : 12;
  const int minute = form.number(9), second = form.number(11);
  const int offsetHours = form.number(16), offsetMinutes = form.number(18);
  if (year == 0 || month < 1 || month > 12 || day < 1 || day > daysOfMonth(year, month) ||
      hour > 23 || minute > 59 || second > 59 || offsetHours > 23 || offsetMinutes > 59)
    return std::nullopt;
  const std::int64_t time =
      daysSince1970(year, month, day) * 86400 + hour * 3600 + minute * 60 + second;
  const int offset = (form.group(15) == "-" ? -1 : 1) * (offsetHours * 3600 + offsetMinutes * 60);
  const std::int64_t moment = form.group(14).empty() ? momentOfClock(time) : time - offset;
  const double fraction = std::strtod(("0." + form.group(13)).c_str(), nullptr);
  return static_cast<double>(moment - secondsFrom1970To2001) + fraction;
}

void testDate(const std::string &text) {
  const std::optional<double> interval = intervalOfNaturalLanguageDate(text);
  require(interval == intervalOfNaturalLanguageDate(text));
  const std::optional<double> expected = plainInterval(text);
  require(interval.has_value() == expected.has_value());
  if (!interval)
    return;
  const double step = std::nextafter(std::abs(*expected), INFINITY) - std::abs(*expected);
  require(std::isfinite(*interval) && std::abs(*interval - *expected) <= step + 1e-14);
}

void testDateOfPhotograph(const std::string &text) {
  std::string taken = text.c_str();
  const auto isDigitAt = [&](std::size_t i) {
    return std::isdigit(static_cast<unsigned char>(text[i])) != 0;
  };
  bool hasForm = taken.size() == 19;
  for (std::size_t i = 0; i < 19 && hasForm; ++i)
    hasForm = isDigitAt(i) || i == 4 || i == 7 || i == 10 || i == 13 || i == 16;
  DateTimeRec date{};
  const int isDate = FS_CheckDate(taken.data(), &date);
  require(isDate == 0 || isDate == 1);
  require(isDate == 1 || (date.year == 0 && date.month == 0 && date.day == 0));
  if (!hasForm)
    return;
  const auto number = [&](std::size_t place, std::size_t size) {
    return std::atoi(text.substr(place, size).c_str());
  };
  require(date.year == number(0, 4) && date.month == number(5, 2) && date.day == number(8, 2) &&
          date.hour == number(11, 2) && date.minute == number(14, 2) &&
          date.second == number(17, 2));
}

} // namespace

} // namespace searchsystem

using namespace searchsystem;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  if (size < 1 || size > 200)
    return 0;
  setTimeZone(data[0]);
  const std::string text(reinterpret_cast<const char *>(data + 1), size - 1);
  testDate(text);
  testDateOfPhotograph(text);
  return 0;
}
