#include "hosts/ssfind/DateRange.h"

#include "hosts/ssfind/Calendar.h"
#include "platform/foundation/LocalTime.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <optional>
#include <tuple>
#include <utility>

namespace searchsystem::ssfind {

namespace {

constexpr double distantPast = -1e12;
constexpr double distantFuture = 1e12;
constexpr int microsecondsInSecond = 1'000'000;

constexpr const char *forms =
    "a date is written as 2024, 2024-05, 2024-05-17, 2024-05-17 10:30, today, last week, 3d or "
    "3 days ago";

struct Moment {
  UnixTime second;
  /// Within that second.
  int microsecond = 0;

  bool operator==(const Moment &) const = default;
  bool operator<=(const Moment &other) const {
    return std::tie(second, microsecond) <= std::tie(other.second, other.microsecond);
  }

  [[nodiscard]] Moment plus(int microseconds) const {
    const int sum = microsecond + microseconds;
    return {second + sum / microsecondsInSecond, sum % microsecondsInSecond};
  }
};

/// A part of a second, in microseconds; its last digit stands for `length`.
struct Fraction {
  int microseconds;
  int length;
};

/// A date in the text: its first moment, and the first moment after it, which are one for a time
/// so long before now.
struct Period {
  Moment first;
  Moment next;

  [[nodiscard]] bool isMoment() const { return first == next; }
};

/// All of the time from `first` until `next` by local clocks.
Period between(LocalTime first, LocalTime next) {
  return {{firstTimeFrom(first)}, {endOfTimesBefore(next)}};
}

/// The unit of the calendar that lies `count` units before the one that holds `now`.
Period unitBefore(LocalTime now, CalendarUnit unit, int count) {
  const LocalTime first = moved(beginningOf(unit, now), unit, -count);
  return between(first, moved(first, unit, 1));
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }
char lowerCase(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }
bool isLetter(char c) { return lowerCase(c) >= 'a' && lowerCase(c) <= 'z'; }

class Parser {
public:
  Parser(std::string_view text, UnixTime now) : text_(text), now_(now) {}

  [[nodiscard]] bool isAtEnd() const { return position_ == text_.size(); }
  [[nodiscard]] std::size_t position() const { return position_; }
  [[nodiscard]] TextError error() && { return std::move(error_); }

  bool take(std::string_view token) {
    const bool isNext = text_.substr(position_).starts_with(token);
    position_ += isNext ? token.size() : 0;
    return isNext;
  }
  void skipBlanks() {
    while (take(" ")) {
    }
  }

  std::optional<Period> period();

private:
  std::nullopt_t fail(std::size_t column, std::string message) {
    error_ = {std::move(message), column};
    return std::nullopt;
  }
  [[nodiscard]] char peek(std::size_t ahead = 0) const {
    return position_ + ahead < text_.size() ? text_[position_ + ahead] : '\0';
  }
  [[nodiscard]] std::size_t digitCount() const;
  std::string word();

  std::optional<unsigned> number(std::size_t digits, const std::string &unit);
  std::optional<unsigned> number(std::size_t digits, unsigned least, unsigned most,
                                 const std::string &unit);
  std::optional<Period> calendarDate();
  std::optional<Period> timeOfDay(LocalTime day);
  std::optional<Period> withZone(LocalTime first, std::chrono::seconds length);
  /// The part of a second that is written next, if one is.
  std::optional<Fraction> fraction();
  std::optional<Period> secondsSince1970();
  std::optional<Period> words();
  std::optional<Period> amount(std::size_t digits);
  std::optional<CalendarUnit> unit();

  std::string_view text_;
  const UnixTime now_;
  std::size_t position_ = 0;
  TextError error_{};
};

std::size_t Parser::digitCount() const {
  std::size_t count = 0;
  while (isDigit(peek(count)))
    ++count;
  return count;
}

/// The letters that are next, in lower case.
std::string Parser::word() {
  std::string word;
  for (; isLetter(peek()); ++position_)
    word += lowerCase(peek());
  return word;
}

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
  skipBlanks();
  if (take("@"))
    return secondsSince1970();
  if (isLetter(peek()))
    return words();
  const std::size_t digits = digitCount();
  std::size_t behind = digits;
  while (digits != 0 && peek(behind) == ' ')
    ++behind;
  const bool isCompactDate = digits == 8 && peek(digits) == 'T';
  return isLetter(peek(behind)) && digits != 0 && !isCompactDate ? amount(digits) : calendarDate();
}

std::optional<Period> Parser::calendarDate() {
  using namespace std::chrono;
  const bool isCompact = digitCount() == 8;
  const std::optional<unsigned> yearNumber = number(4, 1, 9999, "year");
  if (!yearNumber)
    return std::nullopt;
  const year inYear(static_cast<int>(*yearNumber));
  const auto firstSecond = [](year_month_day date) { return LocalTime(local_days(date)); };
  const std::string_view separator = isCompact ? "" : peek() == '/' ? "/" : "-";
  if (!take(separator))
    return between(firstSecond(inYear / 1 / 1), firstSecond((inYear + years(1)) / 1 / 1));

  const std::optional<unsigned> monthNumber = number(2, 1, 12, "month");
  if (!monthNumber)
    return std::nullopt;
  const year_month inMonth = inYear / month(*monthNumber);
  if (!take(separator))
    return between(firstSecond(inMonth / 1), firstSecond((inMonth + months(1)) / 1));

  const std::size_t dayColumn = position_;
  const std::optional<unsigned> dayNumber = number(2, "day");
  if (!dayNumber)
    return std::nullopt;
  const year_month_day date = inMonth / day(*dayNumber);
  if (!date.ok())
    return fail(dayColumn, "there is no day " + std::to_string(*dayNumber) + " in this month");
  const bool hasTime = peek() == 'T' || (peek() == ' ' && isDigit(peek(1)));
  if (!hasTime)
    return between(firstSecond(date), firstSecond(date) + days(1));
  ++position_;
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
    return withZone(atMinute, minutes(1));
  const std::optional<unsigned> second = number(2, 0, 59, "second");
  if (!second)
    return std::nullopt;
  const LocalTime atSecond = atMinute + seconds(*second);
  const std::optional<Fraction> part = fraction();
  std::optional<Period> period = withZone(atSecond, seconds(1));
  if (period && part) {
    period->first = period->first.plus(part->microseconds);
    // A doubled second ends an hour after its first.
    period->next = Moment{period->next.second - 1}.plus(part->microseconds + part->length);
  }
  return period;
}

std::optional<Fraction> Parser::fraction() {
  if (peek() != '.' || !isDigit(peek(1)))
    return std::nullopt;
  take(".");
  Fraction fraction{0, microsecondsInSecond};
  for (; isDigit(peek()); ++position_) {
    fraction.microseconds += (peek() - '0') * (fraction.length / 10);
    fraction.length = std::max(fraction.length / 10, 1);
  }
  return fraction;
}

std::optional<Period> Parser::withZone(LocalTime first, std::chrono::seconds length) {
  using namespace std::chrono;
  const bool isApart = peek() == ' ' && (peek(1) == '+' || peek(1) == '-');
  position_ += isApart ? 1 : 0;
  const bool isAhead = peek() == '+';
  const bool isUTC = take("Z") || take("z");
  if (!isUTC && !take("+") && !take("-"))
    return between(first, first + length);
  seconds offset{};
  if (!isUTC) {
    const std::optional<unsigned> offsetHours = number(2, 0, 23, "offset of hours");
    if (!offsetHours)
      return std::nullopt;
    take(":");
    const std::optional<unsigned> offsetMinutes = number(2, 0, 59, "offset of minutes");
    if (!offsetMinutes)
      return std::nullopt;
    offset = hours(*offsetHours) + minutes(*offsetMinutes);
  }
  const seconds time = first.time_since_epoch() - (isAhead ? offset : -offset);
  return Period{{time.count()}, {(time + length).count()}};
}

std::optional<Period> Parser::secondsSince1970() {
  constexpr std::size_t mostDigits = 12;
  const std::size_t column = position_;
  const bool isNegative = take("-");
  const std::size_t digits = digitCount();
  if (digits == 0 || digits > mostDigits)
    return fail(column, "expected the seconds since 1970");
  UnixTime second = 0;
  for (std::size_t i = 0; i < digits; ++i, ++position_)
    second = second * 10 + (peek() - '0');
  if (isNegative)
    return Period{{-second}, {-second + 1}};
  const Fraction part = fraction().value_or(Fraction{0, microsecondsInSecond});
  return Period{Moment{second}.plus(part.microseconds),
                Moment{second}.plus(part.microseconds + part.length)};
}

std::optional<Period> Parser::words() {
  const std::size_t column = position_;
  const std::string first = word();
  const LocalTime now = localTimeAt(now_);
  if (first == "now")
    return Period{{now_}, {now_}};
  if (first == "today" || first == "yesterday")
    return unitBefore(now, CalendarUnit::Day, first == "today" ? 0 : 1);
  if (first != "this" && first != "last")
    return fail(column, std::string("unknown word; ") + forms);
  skipBlanks();
  const std::optional<CalendarUnit> which = unit();
  return which ? std::optional(unitBefore(now, *which, first == "this" ? 0 : 1)) : std::nullopt;
}

/// As in 3d, or 3 days ago.
std::optional<Period> Parser::amount(std::size_t digits) {
  constexpr std::size_t mostDigits = 4;
  const std::size_t column = position_;
  int count = 0;
  for (std::size_t i = 0; i < digits; ++i, ++position_)
    count = digits <= mostDigits ? count * 10 + (peek() - '0') : 0;
  if (digits > mostDigits)
    return fail(column, "the number has at most four digits");
  skipBlanks();
  const std::optional<CalendarUnit> which = unit();
  if (!which)
    return std::nullopt;
  const std::size_t end = position_;
  skipBlanks();
  const bool isByCalendar = word() == "ago";
  if (!isByCalendar)
    position_ = end;
  const LocalTime now = localTimeAt(now_);
  if (isByCalendar)
    return unitBefore(now, *which, count);
  // Not by the clock: an hour is one, also where clocks are set.
  const bool hasFixedLength = *which < CalendarUnit::Month;
  const LocalTime utc{std::chrono::seconds(now_)};
  const UnixTime time = hasFixedLength ? moved(utc, *which, -count).time_since_epoch().count()
                                       : firstTimeFrom(moved(now, *which, -count));
  return Period{{time}, {time}};
}

std::optional<CalendarUnit> Parser::unit() {
  const std::size_t column = position_;
  const std::string name = word();
  if (name == "m")
    return fail(column, "m may mean min (minutes) or mo (months)");
  const std::optional<CalendarUnit> unit = calendarUnitOf(name);
  return unit ? unit : fail(column, "a unit is s, min, h, d, w, mo or y, or such a word");
}

double justBefore(const Moment &moment) {
  constexpr double microsecond = 1e-6;
  const auto second = static_cast<double>(moment.second - PFSecondsFrom1970To2001);
  const double time = second + moment.microsecond * microsecond;
  // Some thousand years from 2001 a double is too coarse for half a microsecond.
  return std::min(time - microsecond / 2,
                  std::nextafter(time, -std::numeric_limits<double>::infinity()));
}

} // namespace

std::variant<DateRange, TextError> parseDateRange(std::string_view text, UnixTime now) {
  Parser parser(text, now);
  std::optional<Period> from;
  std::optional<Period> to;
  bool isRange = parser.take("..");
  if (!isRange) {
    from = parser.period();
    if (!from)
      return std::move(parser).error();
    parser.skipBlanks();
    isRange = parser.take("..");
    if (!isRange && !from->isMoment())
      to = from;
  }
  parser.skipBlanks();
  const std::size_t endColumn = parser.position();
  if (isRange && (!parser.isAtEnd() || !from)) {
    to = parser.period();
    if (!to)
      return std::move(parser).error();
    parser.skipBlanks();
  }
  if (!parser.isAtEnd())
    return TextError{std::string("unexpected text; ") + forms, parser.position()};
  if (from && to && to->next <= from->first)
    return TextError{"the range ends before it starts", endColumn};
  return DateRange{from ? justBefore(from->first) : distantPast,
                   to ? justBefore(to->next) : distantFuture};
}

} // namespace searchsystem::ssfind
