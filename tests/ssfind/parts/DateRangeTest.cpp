#include "hosts/ssfind/DateRange.h"

#include "hosts/ssfind/OptionParser.h"
#include "tests/support/TimeZone.h"

#include <cmath>
#include <gtest/gtest.h>

namespace searchsystem {

namespace {

using namespace ssfind;

constexpr double secondsFrom1970To2001 = 978307200, open = INFINITY;
constexpr std::int64_t now = 1711879200;
constexpr const char *berlin = "CET-1CEST,M3.5.0,M10.5.0/3",
                     *clockSetAtMidnight = "BRT3BRST,M11.1.0/0,M2.3.0/0";

/// Ends lie just before a moment, to leave out what was modified then.
bool isJustBefore(double date, double moment) {
  const double time = moment - secondsFrom1970To2001;
  // Further away than this, doubles are coarser than a microsecond.
  const bool isFar = std::abs(time) > 4e9;
  return date == (isFar ? std::nextafter(time, -INFINITY) : time - 0.5e-6);
}

TEST(DateRangeTest, LiesJustBeforeItsMoments) {
  const struct {
    const char *name, *zone, *text;
    /// The first moment, and the first after the range, in seconds since 1970.
    double first, next;
  } rows[] = {{"December", "UTC", "2023-12", 1701388800, 1704067200},
              {"FromTo", "UTC", "2023-06..2024-05", 1685577600, 1717200000},
              {"From", "UTC", "2024-05-17..", 1715904000, open},
              {"To", "UTC", "..2024-05-17", open, 1715990400},
              {"DayOf25Hours", berlin, "2024-10-27", 1729980000, 1730070000},
              {"FromTheDoubledHour", berlin, "2024-10-27T02:00..", 1729987200, open},
              {"ToTheDoubledHour", berlin, "..2024-10-27T01:59", open, 1729987200},
              {"DoubledMinute", berlin, "2024-10-27T02:30", 1729989000, 1729992660},
              {"SkippedStart", berlin, "2024-03-31T02:30..", 1711846800, open},
              {"SkippedMidnight", clockSetAtMidnight, "2018-11-04", 1541300400, 1541383200},
              {"FirstYear", "UTC", "0001", -62135596800, -62104060800},
              {"LastYear", "UTC", "9999", 253370764800, 253402300800},
              {"Slashes", "UTC", "2024/05/17", 1715904000, 1715990400},
              {"SlashedMonth", "UTC", "2024/05", 1714521600, 1717200000},
              {"EightDigits", "UTC", "20240517", 1715904000, 1715990400},
              {"EightDigitsAndTime", "UTC", "20240517T10:30", 1715941800, 1715941860},
              {"BlankBeforeTime", "UTC", "2024-05-17 10:30", 1715941800, 1715941860},
              {"UTC", berlin, "2024-05-17T10:30Z", 1715941800, 1715941860},
              {"Offset", "UTC", "2024-05-17 10:30:05 +0200", 1715934605, 1715934606},
              {"OffsetBehindUTC", berlin, "2024-05-17T10:30-03:30", 1715954400, 1715954460},
              {"Fraction", "UTC", "2024-05-17T10:30:05.25Z", 1715941805.25, 1715941805.26},
              {"Epoch", berlin, "@1715941800", 1715941800, 1715941801},
              {"EpochOfFind", berlin, "@1715941800.5000000000..", 1715941800.5, open},
              {"BeforeTheEpoch", "UTC", "@-1", -1, 0},
              // Now is Sunday, 2024-03-31 12:00 in Berlin, whose clocks were set at two o'clock.
              {"Today", berlin, "today", 1711839600, 1711922400},
              {"Yesterday", berlin, "Yesterday", 1711753200, 1711839600},
              {"DaysAgo", berlin, "3 days ago", 1711580400, 1711666800},
              {"HourAgo", berlin, "1 hour ago", 1711875600, 1711879200},
              {"ThisWeek", berlin, "this week", 1711321200, 1711922400},
              {"LastWeek", berlin, "last  week", 1710716400, 1711321200},
              {"LastMonth", berlin, "last month", 1706742000, 1709247600},
              {"MonthsAgo", berlin, "13 months ago", 1675206000, 1677625200},
              {"TheYearBefore", berlin, "last year", 1672527600, 1704063600},
              {"Length", berlin, "3d", now - 3 * 86400, open},
              {"LengthInWords", berlin, "2 weeks", now - 14 * 86400, open},
              {"MonthsBack", berlin, "1mo", 1709204400, open},
              {"BeforeALength", berlin, "..36h", open, now - 36 * 3600},
              {"BetweenLengths", berlin, "2w .. 1 day", now - 14 * 86400, now - 86400},
              {"ToNow", berlin, "yesterday..now", 1711753200, now}};
  for (const auto &row : rows) {
    SCOPED_TRACE(row.name);
    const TimeZone zone(row.zone);
    const auto parsed = parseDateRange(row.text, now);
    ASSERT_TRUE(std::holds_alternative<DateRange>(parsed)) << std::get<TextError>(parsed).message;
    const auto [start, end] = std::get<DateRange>(parsed);
    EXPECT_TRUE(row.first == open ? start < -1e11 : isJustBefore(start, row.first)) << start;
    EXPECT_TRUE(row.next == open ? end > 1e12 - 1 : isJustBefore(end, row.next)) << end;
  }
}

TEST(DateRangeTest, MistakesArePointedAt) {
  const std::string forms = "a date is written as 2024, 2024-05, 2024-05-17, 2024-05-17 10:30, "
                            "today, last week, 3d or 3 days ago";
  const struct {
    std::string text, message;
    /// The mark below the text.
    std::string mark;
  } rows[] = {
      {"20245", "unexpected text; " + forms, "    ^"},
      {"", "expected four digits for the year", "^"},
      {"..2024-13", "there is no month 13", "       ^"},
      {"2023-02-29", "there is no day 29 in this month", "        ^"},
      {"2024-05-17T10:30:60", "there is no second 60", "                 ^"},
      {"2024...2025", "expected four digits for the year", "      ^"},
      {"2024-05..2024-04", "the range ends before it starts", "         ^"},
      {"..yesterdya", "unknown word; " + forms, "  ^"},
      {"last decade", "a unit is s, min, h, d, w, mo or y, or such a word", "     ^"},
      {"5m", "m may mean min (minutes) or mo (months)", " ^"},
      {"3 days  agoo", "unexpected text; " + forms, "        ^"},
      {"12345d", "the number has at most four digits", "^"},
      {"2024-05-17 10:30+2", "expected two digits for the offset of hours", "                  ^"},
      {"@x", "expected the seconds since 1970", " ^"},
      {"3d..2w", "the range ends before it starts", "    ^"},
      {"2024-05-1\xC3\xA9", "expected two digits for the day", "         ^"}};
  for (const auto &row : rows) {
    const char *const arguments[] = {"ssfind", "-m", row.text.c_str()};
    const auto parsed = parseOptions(3, arguments);
    ASSERT_TRUE(std::holds_alternative<UsageError>(parsed)) << row.text;
    EXPECT_EQ(std::get<UsageError>(parsed).text, "ssfind: --modified: " + row.message + "\n  " +
                                                     row.text + "\n  " + row.mark +
                                                     "\nTry 'ssfind --help'.\n");
  }
}

} // namespace

} // namespace searchsystem
