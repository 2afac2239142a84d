#include "platform/foundation/NaturalLanguageDate.h"

#include "platform/foundation/LocalTime.h"

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace searchsystem {

namespace {

/// Parses a text from its beginning. Once something that must follow is missing, it has failed.
class Scanner {
public:
  explicit Scanner(std::string_view text) noexcept : rest_(text) {}

  [[nodiscard]] bool hasFailed() const noexcept { return hasFailed_; }
  [[nodiscard]] bool isAtEnd() const noexcept { return rest_.empty(); }
  [[nodiscard]] bool isAtDigit() const noexcept {
    return !rest_.empty() && rest_.front() >= '0' && rest_.front() <= '9';
  }

  bool take(char c) noexcept {
    if (!rest_.starts_with(c))
      return false;
    rest_.remove_prefix(1);
    return true;
  }

  /// Whether there were any blanks.
  bool takeBlanks() noexcept {
    const std::size_t size = rest_.size();
    while (take(' ') || take('\t')) {
    }
    return rest_.size() != size;
  }

  void require(bool holds) noexcept { hasFailed_ |= !holds; }

  /// A number of at least `fewest` and at most `most` digits, below `limit`.
  unsigned number(int fewest, int most, unsigned limit) noexcept {
    unsigned number = 0;
    int count = 0;
    for (; count < most && isAtDigit(); ++count)
      number = number * 10 + takeDigit();
    require(count >= fewest && number < limit);
    return number;
  }

  /// The digits after a decimal sign.
  double fraction() noexcept {
    require(isAtDigit());
    double fraction = 0;
    for (double unit = 0.1; isAtDigit(); unit /= 10)
      fraction += unit * takeDigit();
    return fraction;
  }

private:
  unsigned takeDigit() noexcept {
    const auto digit = static_cast<unsigned>(rest_.front() - '0');
    rest_.remove_prefix(1);
    return digit;
  }

  std::string_view rest_;
  bool hasFailed_ = false;
};

std::chrono::local_days takeDate(Scanner &scanner) noexcept {
  const auto year = static_cast<int>(scanner.number(4, 4, 10000));
  const char separator = scanner.take('-') ? '-' : '/';
  scanner.require(separator == '-' || scanner.take('/'));
  const std::chrono::month month(scanner.number(1, 2, 13));
  scanner.require(scanner.take(separator));
  const std::chrono::day day(scanner.number(1, 2, 32));
  const std::chrono::year_month_day date{std::chrono::year(year), month, day};
  scanner.require(year != 0 && date.ok());
  return std::chrono::local_days(date);
}

/// Hours and minutes; an offset from UTC may lack the minutes or the colon.
std::chrono::seconds takeHoursAndMinutes(Scanner &scanner, bool isOffset) noexcept {
  const std::chrono::hours hours(scanner.number(1, 2, 24));
  if (!scanner.take(':')) {
    scanner.require(isOffset);
    if (!scanner.isAtDigit())
      return hours;
  }
  return hours + std::chrono::minutes(scanner.number(1, 2, 60));
}

std::optional<std::chrono::seconds> takeOffset(Scanner &scanner) noexcept {
  if (scanner.isAtEnd())
    return std::nullopt;
  if (scanner.take('Z'))
    return std::chrono::seconds(0);
  if (scanner.take('-'))
    return -takeHoursAndMinutes(scanner, true);
  scanner.require(scanner.take('+'));
  return takeHoursAndMinutes(scanner, true);
}

/// A skipped time moves forward by the gap; a doubled one means the first.
std::int64_t universalTime(std::chrono::local_seconds time) noexcept {
  const auto [byOldOffset, byNewOffset, change] = PFLocalTimeMake(time.time_since_epoch().count());
  return byOldOffset >= change && byNewOffset >= change ? byNewOffset : byOldOffset;
}

} // namespace

std::optional<double> intervalOfNaturalLanguageDate(std::string_view text) noexcept {
  Scanner scanner(text);
  scanner.takeBlanks();
  std::chrono::local_seconds local = takeDate(scanner);
  std::chrono::seconds timeOfDay = std::chrono::hours(12);
  double fraction = 0;
  std::optional<std::chrono::seconds> offset;
  if (scanner.take('T') || (scanner.takeBlanks() && !scanner.isAtEnd())) {
    timeOfDay = takeHoursAndMinutes(scanner, false);
    if (scanner.take(':')) {
      timeOfDay += std::chrono::seconds(scanner.number(1, 2, 60));
      if (scanner.take('.') || scanner.take(','))
        fraction = scanner.fraction();
    }
    scanner.takeBlanks();
    offset = takeOffset(scanner);
    scanner.takeBlanks();
  }
  if (scanner.hasFailed() || !scanner.isAtEnd())
    return std::nullopt;
  local += timeOfDay;
  const std::int64_t time =
      offset ? (local.time_since_epoch() - *offset).count() : universalTime(local);
  return static_cast<double>(time - PFSecondsFrom1970To2001) + fraction;
}

} // namespace searchsystem
