#include "platform/foundation/NSDate.h"
#include "platform/foundation/NSString.h"
#include "tests/support/TimeZone.h"

#include <gtest/gtest.h>
#include <optional>

namespace searchsystem {

namespace {

using namespace std::string_literals;

std::optional<double> parsed(const std::string &text) {
  const auto date = NSDate::dateWithNaturalLanguageString(*NSString::create(text));
  return date ? std::optional(date->timeIntervalSinceReferenceDate()) : std::nullopt;
}

TEST(NSDate, ReadsTheFormsOfDates) {
  const TimeZone zone("UTC0");
  constexpr double day = 86400, noon = day / 2;
  const struct {
    const char *text;
    double seconds;
  } read[] = {{"0001/01/01 00:00:00", -63'113'904'000}, {"2001/01/02 00:00:01", day + 1},
              {"9999/12/31 23:59:59", 252'423'993'599}, {"2001/01/02", day + noon},
              {"2004/02/29 00:00:00", 1154 * day},      {" 2001-1-2  0:0 ", day},
              {"2001-01-02T00:00:01", day + 1},         {"2001-01-01 00:00:00.5", 0.5},
              {"2001-01-01 09:30:00 +0930", 0},         {"2000-12-31T19:00-05", 0},
              {"2001-01-01T00:00:00,25Z", 0.25}};
  for (const auto &[text, seconds] : read)
    EXPECT_EQ(parsed(text), seconds) << text;
  const struct {
    const char *name;
    std::vector<const char *> texts;
  } refused[] = {
      {"no date", {"", "test"}},
      {"another form", {"2001:01:01 00:00:00", "2001/01-01 00:00:00", "01/01/2001 00:00:00"}},
      {"no such day",
       {"0000/01/01 00:00:00", "2001/00/01 00:00:00", "2001/13/01 00:00:00", "2001/01/00 00:00:00",
        "2001/02/29 00:00:00"}},
      {"no such time",
       {"2001/01/01 24:00:00", "2001/01/01 00:60:00", "2001/01/01 00:00:60", "2001/01/01 00:00:-1",
        "2001/01/01 00:00:99999"}},
      {"not whole", {"2001/01/01 00", "2001/01/01T", "2001/01/01 00:00:00.", "2001/01/0100:00:00"}},
      {"fraction of a minute", {"2001-01-01T00:00,25Z"}},
      {"zone", {"2001/01/01 00:00:00 +25:00", "2001/01/01 00:00:00 +01:", "2001/01/01 00:00:00x"}}};
  for (const auto &[name, texts] : refused)
    for (const char *const text : texts)
      EXPECT_EQ(parsed(text), std::nullopt) << name << ": " << text;
}

TEST(NSDate, TakesLocalTimeWhereClocksAreSet) {
  const struct {
    const char *zone, *text, *utc;
  } rows[] = {{"Europe/Berlin", "2005/07/14 09:05:03", "2005/07/14 07:05:03"},
              {"Europe/Berlin", "2005/03/27 01:59:59", "2005/03/27 00:59:59"},
              {"Europe/Berlin", "2005/03/27 02:30:00", "2005/03/27 01:30:00"},
              {"Europe/Berlin", "2005/03/27 03:00:00", "2005/03/27 01:00:00"},
              {"Europe/Berlin", "2005/10/30 01:59:59", "2005/10/29 23:59:59"},
              {"Europe/Berlin", "2005/10/30 02:30:00", "2005/10/30 00:30:00"},
              {"Europe/Berlin", "2005/10/30 03:00:00", "2005/10/30 02:00:00"},
              {"America/New_York", "2005/10/30 01:30:00", "2005/10/30 05:30:00"},
              {"Australia/Lord_Howe", "2005/10/30 02:15:00", "2005/10/29 15:45:00"},
              {"Pacific/Apia", "2011/12/30 12:00:00", "2011/12/30 22:00:00"},
              {"XYZ-5:30", "2005/07/14 09:05:03", "2005/07/14 03:35:03"}};
  for (const auto &row : rows) {
    const TimeZone zone(row.zone);
    EXPECT_EQ(parsed(row.text), parsed(row.utc + "Z"s).value()) << row.zone << row.text;
  }
}

TEST(NSDate, CutsFileTimesToMicroseconds) {
  constexpr std::int64_t epoch = NSDate::secondsFrom1970To2001;
  EXPECT_EQ(NSDate::intervalOfFileTime(epoch, 1999), 1e-6);
  EXPECT_EQ(NSDate::intervalOfFileTime(epoch - 1, 999'999'999), -1 + 0.999999);
  EXPECT_EQ(NSDate::intervalOfFileTime(-1, 999'000'999), -978'307'201 + 0.999);
}

} // namespace

} // namespace searchsystem
