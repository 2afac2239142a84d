#include "hosts/ssfind/DateRange.h"

#include "hosts/ssfind/LocalTime.h"
#include "platform/foundation/LocalTime.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>

namespace searchsystem::ssfind {

namespace {

constexpr double distantPast = -1e12;
constexpr double distantFuture = 1e12;

/// A date in the text: its first second, and the first second after it.
struct Period {
  LocalTime first;
  LocalTime next;
};

class Parser {
public:
  explicit Parser(std::string_view text) : text_(text) {}

  [[nodiscard]] bool isAtEnd() const { return position_ == text_.size(); }
  [[nodiscard]] std::size_t position() const { return position_; }
  [[nodiscard]] TextError error() && { return std::move(error_); }

  bool take(std::string_view token) {
    const bool isNext = text_.substr(position_).starts_with(token);
    position_ += isNext ? token.size() : 0;
    return isNext;
  }

  std::optional<Period> period();
  std::nullopt_t fail(std::size_t column, std::string message) {
    error_ = {std::move(message), column};
    return std::nullopt;
  }

private:
  std::optional<unsigned> number(std::size_t digits, const std::string &unit);
  std::optional<unsigned> number(std::size_t digits, unsigned least, unsigned most,
                                 const std::string &unit);
  std::optional<Period> timeOfDay(LocalTime day);

  std::string_view text_;
  std::size_t position_ = 0;
  TextError error_{};
};

std::optional<unsigned> Parser::number(std::size_t digits, const std::string &unit) {
  unsigned value = 0;
  for (std::size_t i = 0; i < digits; ++i, ++position_) {
    if (isAtEnd() || text_[position_] < '0' || text_[position_] > '9')
      return fail(position_,
                  (digits == 4 ? "expected four digits for the " : "expected two digits for the ") +
                      unit);
    value = value * 10 + static_cast<unsigned>(text_[position_] - '0');
  }
  return value;
}

std::optional<unsigned> Parser::number(std::size_t digits, unsigned least, unsigned most,
                                       const std::string &unit) {
  const std::size_t column = position_;
  const std::optional<unsigned> value = number(digits, unit);
  if (value && (*value < least || *value > most))
    return fail(column, "there is no " + unit + ' ' + std::to_string(*value));
  return value;
}

std::optional<Period> Parser::period() {
  using namespace std::chrono;
  const std::optional<unsigned> yearNumber = number(4, 1, 9999, "year");
  if (!yearNumber)
    return std::nullopt;
  const year inYear(static_cast<int>(*yearNumber));
  const auto firstSecond = [](year_month_day date) { return LocalTime(local_days(date)); };
  if (!take("-"))
    return Period{firstSecond(inYear / 1 / 1), firstSecond((inYear + years(1)) / 1 / 1)};

  const std::optional<unsigned> monthNumber = number(2, 1, 12, "month");
  if (!monthNumber)
    return std::nullopt;
  const year_month inMonth = inYear / month(*monthNumber);
  if (!take("-"))
    return Period{firstSecond(inMonth / 1), firstSecond((inMonth + months(1)) / 1)};

  const std::size_t dayColumn = position_;
  const std::optional<unsigned> dayNumber = number(2, "day");
  if (!dayNumber)
    return std::nullopt;
  const year_month_day date = inMonth / day(*dayNumber);
  if (!date.ok())
    return fail(dayColumn, "there is no day " + std::to_string(*dayNumber) + " in this month");
  if (!take("T"))
    return Period{firstSecond(date), firstSecond(date) + days(1)};
  return timeOfDay(firstSecond(date));
}

std::optional<Period> Parser::timeOfDay(LocalTime day) {
  using namespace std::chrono;
  const std::optional<unsigned> hour = number(2, 0, 23, "hour");
  if (!hour)
    return std::nullopt;
  if (!take(":"))
    return fail(position_, "expected ':' and the minute");
  const std::optional<unsigned> minute = number(2, 0, 59, "minute");
  if (!minute)
    return std::nullopt;
  const LocalTime atMinute = day + hours(*hour) + minutes(*minute);
  if (!take(":"))
    return Period{atMinute, atMinute + minutes(1)};
  const std::optional<unsigned> second = number(2, 0, 59, "second");
  if (!second)
    return std::nullopt;
  return Period{atMinute + seconds(*second), atMinute + seconds(*second + 1)};
}

double justBefore(UnixTime second) {
  const auto time = static_cast<double>(second - PFSecondsFrom1970To2001);
  // Some thousand years from 2001 a double is too coarse for half a microsecond.
  return std::min(time - 0.5e-6, std::nextafter(time, -std::numeric_limits<double>::infinity()));
}

} // namespace

std::variant<DateRange, TextError> parseDateRange(std::string_view text) {
  Parser parser(text);
  std::optional<Period> from;
  std::optional<Period> to;
  bool isRange = parser.take("..");
  if (!isRange) {
    from = to = parser.period();
    if (!from)
      return std::move(parser).error();
    isRange = parser.take("..");
    if (isRange)
      to.reset();
  }
  const std::size_t endColumn = parser.position();
  if (isRange && (!parser.isAtEnd() || !from)) {
    to = parser.period();
    if (!to)
      return std::move(parser).error();
  }
  if (!parser.isAtEnd())
    return TextError{"unexpected text; a date is written as 2024, 2024-05, 2024-05-17 or "
                     "2024-05-17T10:30",
                     parser.position()};
  if (from && to && to->next <= from->first)
    return TextError{"the range ends before it starts", endColumn};
  return DateRange{from ? justBefore(firstTimeFrom(from->first)) : distantPast,
                   to ? justBefore(endOfTimesBefore(to->next)) : distantFuture};
}

} // namespace searchsystem::ssfind
