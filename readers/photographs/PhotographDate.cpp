#include "readers/photographs/PhotographDate.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace searchsystem {

namespace {

constexpr bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }

/// Takes up to `most` digits; none if there is not one.
std::optional<int> takeNumber(std::string_view &text, std::size_t most) noexcept {
  std::size_t length = 0;
  int number = 0;
  for (; length < std::min(most, text.size()) && isDigit(text[length]); ++length)
    number = number * 10 + (text[length] - '0');
  text.remove_prefix(length);
  return length == 0 ? std::nullopt : std::optional(number);
}

bool skip(std::string_view &text, std::string_view characters) noexcept {
  if (text.empty() || characters.find(text[0]) == std::string_view::npos)
    return false;
  text.remove_prefix(1);
  return true;
}

void skipBlanks(std::string_view &text) noexcept {
  while (skip(text, " \t"))
    ;
}

constexpr bool isLeapYear(int year) noexcept {
  return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

constexpr int daysOf(int year, int month) noexcept {
  constexpr std::array<int, 12> days{31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return month == 2 && isLeapYear(year) ? 29 : days[static_cast<std::size_t>(month - 1)];
}

/// Takes the parts of a time that there are, up to the first one that is none.
void takeTime(std::string_view text, PhotographDate &date) noexcept {
  struct Part {
    int &value;
    int end;
  };
  for (const Part part : {Part{date.hour, 24}, Part{date.minute, 60}, Part{date.second, 60}}) {
    const auto number = takeNumber(text, 2);
    if (!number || *number >= part.end)
      return;
    part.value = *number;
    skip(text, ":");
  }
}

/// Month and day, where zero and blanks stand for none. False if there can be no such day.
bool takeDay(std::string_view &text, PhotographDate &date) noexcept {
  constexpr std::string_view separators = ":-/.";
  skip(text, separators);
  const int month = takeNumber(text, 2).value_or(0);
  if (month == 0)
    return true;
  if (month > 12)
    return false;
  date.month = month;
  skip(text, separators);
  const int day = takeNumber(text, 2).value_or(0);
  if (day == 0)
    return true;
  date.day = day;
  if (day > daysOf(date.year, month))
    return false;
  skipBlanks(text);
  skip(text, "T:");
  takeTime(text, date);
  return true;
}

} // namespace

std::optional<PhotographDate> parsePhotographDate(std::string_view text) noexcept {
  skipBlanks(text);
  const std::size_t length = text.size();
  const int year = takeNumber(text, 4).value_or(0);
  if (year == 0 || length - text.size() != 4)
    return std::nullopt;
  PhotographDate date{.year = year};
  return takeDay(text, date) ? std::optional(date) : std::nullopt;
}

std::optional<PhotographDate> parseLetterDate(std::string_view text) noexcept {
  if (const auto date = parsePhotographDate(text))
    return date;
  // The name of the day may be missing.
  text.remove_prefix(std::min(text.find(',') + 1, text.size()));
  skipBlanks(text);
  PhotographDate date;
  date.day = takeNumber(text, 2).value_or(0);
  skipBlanks(text);
  constexpr std::array<std::string_view, 12> months{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                    "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  const auto *const month = std::find_if(
      months.begin(), months.end(), [&](std::string_view name) { return text.starts_with(name); });
  if (month == months.end())
    return std::nullopt;
  date.month = static_cast<int>(month - months.begin()) + 1;
  text.remove_prefix(std::min(text.find(' '), text.size()));
  skipBlanks(text);
  date.year = takeNumber(text, 4).value_or(0);
  if (date.year == 0 || date.day == 0 || date.day > daysOf(date.year, date.month))
    return std::nullopt;
  skipBlanks(text);
  takeTime(text, date);
  return date;
}

} // namespace searchsystem
