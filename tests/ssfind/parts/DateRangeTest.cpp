#include "hosts/ssfind/DateRange.h"

#include "hosts/ssfind/OptionParser.h"
#include "tests/ssfind/parts/TimeZone.h"

#include <cmath>
#include <gtest/gtest.h>

namespace ssfind {
namespace {

constexpr double secondsFrom1970To2001 = 978307200;
constexpr double open = INFINITY;

// Rules that need no table of zones.
constexpr const char *berlin = "CET-1CEST,M3.5.0,M10.5.0/3";
constexpr const char *clockSetAtMidnight = "BRT3BRST,M11.1.0/0,M2.3.0/0";

struct GoodRange {
  const char *name;
  const char *zone;
  const char *text;
  /// The first moment, and the first after the range, in seconds since 1970.
  double first;
  double next;
};

const GoodRange goodRanges[] = {
    {"Year", "UTC", "2024", 1704067200, 1735689600},
    {"LocalYear", berlin, "2024", 1704063600, 1735686000},
    {"LeapMonth", "UTC", "2024-02", 1706745600, 1709251200},
    {"December", "UTC", "2023-12", 1701388800, 1704067200},
    {"LeapDay", "UTC", "2024-02-29", 1709164800, 1709251200},
    {"Minute", berlin, "2024-05-17T10:30", 1715934600, 1715934660},
    {"LastMinuteOfYear", "UTC", "2023-12-31T23:59", 1704067140, 1704067200},
    {"Second", "UTC", "2024-05-17T10:30:59", 1715941859, 1715941860},
    {"FromTo", "UTC", "2023-06..2024-05", 1685577600, 1717200000},
    {"FromToTheSame", "UTC", "2024..2024", 1704067200, 1735689600},
    {"EndInsideStart", "UTC", "2024..2024-01", 1704067200, 1706745600},
    {"From", "UTC", "2024-05-17..", 1715904000, open},
    {"To", "UTC", "..2024-05-17", open, 1715990400},
    {"Before1970", "UTC", "1969-12-31", -86400, 0},
    {"DayOf23Hours", berlin, "2024-03-31", 1711839600, 1711922400},
    {"DayOf25Hours", berlin, "2024-10-27", 1729980000, 1730070000},
    {"DoubledMinute", berlin, "2024-10-27T02:30", 1729989000, 1729992660},
    {"UpToTheDoubledHour", berlin, "2024-10-27T01:59", 1729987140, 1729987200},
    {"FromTheDoubledHour", berlin, "2024-10-27T02:00..", 1729987200, open},
    {"SkippedStart", berlin, "2024-03-31T02:30..", 1711846800, open},
    {"SkippedEnd", berlin, "..2024-03-31T02:30", open, 1711846800},
    {"SkippedMidnight", clockSetAtMidnight, "2018-11-04", 1541300400, 1541383200},
    {"FarFromUTC", "LINT-14", "2024-01-01T00:00", 1704016800, 1704016860},
    {"FirstYear", "UTC", "0001", -62135596800, -62104060800},
    {"LastYear", "UTC", "9999", 253370764800, 253402300800},
};

class GoodRangeTest : public testing::TestWithParam<GoodRange> {};

TEST_P(GoodRangeTest, LiesJustBeforeItsMoments) {
  const TimeZone zone(GetParam().zone);
  const auto parsed = parseDateRange(GetParam().text);
  ASSERT_TRUE(std::holds_alternative<DateRange>(parsed)) << std::get<TextError>(parsed).message;
  const auto [start, end] = std::get<DateRange>(parsed);
  const auto expectJustBefore = [](double date, double moment) {
    const double time = moment - secondsFrom1970To2001;
    // Further away than this, doubles are coarser than a microsecond.
    const bool isFar = std::abs(time) > 4e9;
    EXPECT_LT(date, time);
    EXPECT_EQ(date, isFar ? std::nextafter(time, -INFINITY) : time - 0.5e-6);
  };
  if (GetParam().first == open)
    EXPECT_LT(start, -1e11);
  else
    expectJustBefore(start, GetParam().first);
  if (GetParam().next == open)
    EXPECT_GT(end, 1e12 - 1);
  else
    expectJustBefore(end, GetParam().next);
}

const auto nameOfRow = [](const auto &row) { return std::string(row.param.name); };
INSTANTIATE_TEST_SUITE_P(DateRange, GoodRangeTest, testing::ValuesIn(goodRanges), nameOfRow);

struct BadRange {
  const char *name;
  const char *text;
  const char *message;
  /// The mark below the text.
  const char *mark;
};

constexpr const char *form =
    "unexpected text; a date is written as 2024, 2024-05, 2024-05-17 or 2024-05-17T10:30";

const BadRange badRanges[] = {
    {"Empty", "", "expected four digits for the year", "^"},
    {"NoEnds", "..", "expected four digits for the year", "  ^"},
    {"ShortYear", "24", "expected four digits for the year", "  ^"},
    {"YearZero", "0000", "there is no year 0", "^"},
    {"LongYear", "20245", form, "    ^"},
    {"Word", "today", "expected four digits for the year", "^"},
    {"Slashes", "2024/05", form, "    ^"},
    {"ShortMonth", "2024-5", "expected two digits for the month", "      ^"},
    {"Month0", "2024-00", "there is no month 0", "     ^"},
    {"Month13", "..2024-13", "there is no month 13", "       ^"},
    {"Day0", "2024-05-00", "there is no day 0 in this month", "        ^"},
    {"NoLeapDay", "2023-02-29", "there is no day 29 in this month", "        ^"},
    {"TimeOfMonth", "2024-05T10:30", form, "       ^"},
    {"Hour24", "2024-05-17T24:00", "there is no hour 24", "           ^"},
    {"HourOnly", "2024-05-17T10", "expected ':' and the minute", "             ^"},
    {"Minute60", "2024-05-17T10:60", "there is no minute 60", "              ^"},
    {"Second60", "2024-05-17T10:30:60", "there is no second 60", "                 ^"},
    {"OneDot", "2024.2025", form, "    ^"},
    {"ThreeDots", "2024...2025", "expected four digits for the year", "      ^"},
    {"ThreeDates", "2024..2025..2026", form, "          ^"},
    {"Reversed", "2024-05..2024-04", "the range ends before it starts", "         ^"},
    {"NotAscii", "2024-05-1\xC3\xA9", "expected two digits for the day", "         ^"},
};

class BadRangeTest : public testing::TestWithParam<BadRange> {};

TEST_P(BadRangeTest, IsPointedAt) {
  const char *const arguments[] = {"ssfind", "-m", GetParam().text};
  const auto parsed = parseOptions(3, arguments);
  ASSERT_TRUE(std::holds_alternative<UsageError>(parsed));
  std::string text = GetParam().text;
  EXPECT_EQ(std::get<UsageError>(parsed).text, std::string("ssfind: --modified: ") +
                                                   GetParam().message + "\n  " + text + "\n  " +
                                                   GetParam().mark + '\n');
}

INSTANTIATE_TEST_SUITE_P(DateRange, BadRangeTest, testing::ValuesIn(badRanges), nameOfRow);

} // namespace
} // namespace ssfind
