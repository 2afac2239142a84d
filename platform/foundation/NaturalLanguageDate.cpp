#include "platform/foundation/NaturalLanguageDate.h"

#include "platform/foundation/LocalTime.h"

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace searchsystem {

namespace {

/// Parses a text from its beginning. A failed call consumes nothing.
class Scanner {
public:
  explicit Scanner(std::string_view text) noexcept : rest_(text) { skipBlanks(); }

  /// Whether there were any blanks.
  bool skipBlanks() noexcept {
    const bool hadBlank = isBlank(next());
    while (isBlank(next()))
      rest_.remove_prefix(1);
    return hadBlank;
  }

  [[nodiscard]] bool isAtEnd() const noexcept { return rest_.empty(); }

  [[nodiscard]] char next() const noexcept { return rest_.empty() ? '\0' : rest_.front(); }

  [[nodiscard]] bool isAtDigit() const noexcept { return isDigit(next()); }

  bool take(char c) noexcept {
    if (rest_.empty() || rest_.front() != c)
      return false;
    rest_.remove_prefix(1);
    return true;
  }

  /// A number of at least `fewest` and at most `most` digits.
  std::optional<unsigned> takeNumber(std::size_t fewest, std::size_t most) noexcept {
    unsigned number = 0;
    std::size_t count = 0;
    while (count < most && count < rest_.size() && isDigit(rest_[count]))
      number = number * 10 + static_cast<unsigned>(rest_[count++] - '0');
    if (count < fewest)
      return std::nullopt;
    rest_.remove_prefix(count);
    return number;
  }

  /// The digits after a decimal sign, as a fraction.
  std::optional<double> takeFraction() noexcept {
    if (!isAtDigit())
      return std::nullopt;
    double fraction = 0;
    for (double unit = 0.1; isAtDigit(); unit /= 10, rest_.remove_prefix(1))
      fraction += unit * (next() - '0');
    return fraction;
  }

private:
  static bool isBlank(char c) noexcept { return c == ' ' || c == '\t'; }
  static bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }

  std::string_view rest_;
};

/// Two digits below `limit`.
std::optional<unsigned> takeBelow(Scanner &scanner, unsigned limit) noexcept {
  const std::optional<unsigned> number = scanner.takeNumber(1, 2);
  return number && *number < limit ? number : std::nullopt;
}

std::optional<std::chrono::local_days> takeDate(Scanner &scanner) noexcept {
  const auto year = scanner.takeNumber(4, 4);
  const char separator = scanner.next();
  if (!year || *year == 0 || (separator != '/' && separator != '-') || !scanner.take(separator))
    return std::nullopt;
  const auto month = scanner.takeNumber(1, 2);
  if (!month || !scanner.take(separator))
    return std::nullopt;
  const auto day = scanner.takeNumber(1, 2);
  if (!day)
    return std::nullopt;
  const std::chrono::year_month_day date{std::chrono::year(static_cast<int>(*year)),
                                         std::chrono::month(*month), std::chrono::day(*day)};
  return date.ok() ? std::optional(std::chrono::local_days(date)) : std::nullopt;
}

struct TimeOfDay {
  std::chrono::seconds sinceMidnight;
  double fraction;
};

std::optional<TimeOfDay> takeTime(Scanner &scanner) noexcept {
  const auto hour = takeBelow(scanner, 24);
  if (!hour || !scanner.take(':'))
    return std::nullopt;
  const auto minute = takeBelow(scanner, 60);
  if (!minute)
    return std::nullopt;
  std::optional<unsigned> second = 0;
  std::optional<double> fraction = 0;
  if (scanner.take(':')) {
    second = takeBelow(scanner, 60);
    if (second && (scanner.take('.') || scanner.take(',')))
      fraction = scanner.takeFraction();
  }
  if (!second || !fraction)
    return std::nullopt;
  return TimeOfDay{std::chrono::hours(*hour) + std::chrono::minutes(*minute) +
                       std::chrono::seconds(*second),
                   *fraction};
}

/// The offset of a local time from UTC.
std::optional<std::chrono::seconds> takeOffset(Scanner &scanner) noexcept {
  if (scanner.take('Z'))
    return std::chrono::seconds(0);
  const int sign = scanner.next() == '-' ? -1 : 1;
  if (!scanner.take('-') && !scanner.take('+'))
    return std::nullopt;
  const auto hours = takeBelow(scanner, 24);
  std::optional<unsigned> minutes = 0;
  if (scanner.take(':') || scanner.isAtDigit())
    minutes = takeBelow(scanner, 60);
  if (!hours || !minutes)
    return std::nullopt;
  return sign * (std::chrono::hours(*hours) + std::chrono::minutes(*minutes));
}

/// A skipped time moves forward by the gap; a doubled one means the first.
std::int64_t momentOfLocalTime(std::chrono::local_seconds time) noexcept {
  const auto [byOldOffset, byNewOffset, change] = PFLocalTimeMake(time.time_since_epoch().count());
  return byOldOffset >= change && byNewOffset >= change ? byNewOffset : byOldOffset;
}

} // namespace

std::optional<double> intervalOfNaturalLanguageDate(std::string_view text) noexcept {
  Scanner scanner(text);
  const auto date = takeDate(scanner);
  if (!date)
    return std::nullopt;
  TimeOfDay time{std::chrono::hours(12), 0};
  std::optional<std::chrono::seconds> offset;
  const bool hasSeparator = scanner.take('T') || (scanner.skipBlanks() && !scanner.isAtEnd());
  if (hasSeparator) {
    const auto taken = takeTime(scanner);
    if (!taken)
      return std::nullopt;
    time = *taken;
    scanner.skipBlanks();
    if (!scanner.isAtEnd() && !(offset = takeOffset(scanner)))
      return std::nullopt;
    scanner.skipBlanks();
  }
  if (!scanner.isAtEnd())
    return std::nullopt;
  const std::chrono::local_seconds local = *date + time.sinceMidnight;
  const std::int64_t moment =
      offset ? (local.time_since_epoch() - *offset).count() : momentOfLocalTime(local);
  return static_cast<double>(moment - PFSecondsFrom1970To2001) + time.fraction;
}

} // namespace searchsystem
