#include "hosts/ssfind/JsonText.h"
#include "hosts/ssfind/TimeText.h"
#include "hosts/ssfind/VisibleText.h"
#include "tests/ssfind/parts/TimeZone.h"

#include <gtest/gtest.h>
#include <limits>

namespace ssfind {
namespace {

TEST(TextTest, NamesAreEscapedForTerminalsAndJson) {
  const struct {
    const char *name;
    std::string bytes;
    const char *visible;
    const char *json;
  } rows[] = {
      {"plain", "a b.jpg", "a b.jpg", R"("a b.jpg")"},
      {"UTF-8", "\xC3\xA9\xF0\x9F\x8C\x8A", "\xC3\xA9\xF0\x9F\x8C\x8A",
       "\"\xC3\xA9\xF0\x9F\x8C\x8A\""},
      {"quote and backslash", R"(a"\n)", R"(a"\\n)", R"("a\"\\n")"},
      {"common controls", "\n\t\r\b\f", R"(\n\t\r\x08\x0c)", R"("\n\t\r\b\f")"},
      {"escape and delete", "\x1b[31m\x7f", R"(\x1b[31m\x7f)", R"("\u001b[31m\u007f")"},
      {"control of two bytes", "\xC2\x9B", R"(\u{9b})", R"("\u009b")"},
      {"right to left",
       "\xE2\x80\xAE"
       "a\xD8\x9C\xE2\x81\xA6",
       R"(\u{202e}a\u{61c}\u{2066})", R"("\u202ea\u061c\u2066")"},
      {"not UTF-8", "a\xFF\n", R"(a\xff\n)", R"({"bytes":"Yf8K"})"},
      {"cut off", "\xE2\x80", R"(\xe2\x80)", R"({"bytes":"4oA="})"},
      {"overlong", "\xC0\xAF", R"(\xc0\xaf)", R"({"bytes":"wK8="})"},
      {"surrogate", "\xED\xA0\x80", R"(\xed\xa0\x80)", R"({"bytes":"7aCA"})"},
      {"beyond Unicode", "\xF4\x90\x80\x80", R"(\xf4\x90\x80\x80)", R"({"bytes":"9JCAgA=="})"},
  };
  for (const auto &row : rows) {
    SCOPED_TRACE(row.name);
    std::string json;
    appendJsonName(json, row.bytes);
    EXPECT_EQ(json, row.json);
    EXPECT_EQ(visible(row.bytes), row.visible);
  }
}

TEST(TextTest, TimesAreLocal) {
  const struct {
    const char *name;
    const char *zone;
    std::timespec time;
    const char *timestamp;
    const char *clock;
  } rows[] = {
      {"summer",
       "CET-1CEST,M3.5.0,M10.5.0/3",
       {1715934600, 123456999},
       "2024-05-17T10:30:00.123456+02:00",
       "2024-05-17 10:30:00"},
      {"west, half an hour",
       "NST3:30",
       {0, 0},
       "1969-12-31T20:30:00.000000-03:30",
       "1969-12-31 20:30:00"},
      {"before 1970",
       "UTC0",
       {-1, 999999999},
       "1969-12-31T23:59:59.999999+00:00",
       "1969-12-31 23:59:59"},
      {"offset with seconds",
       "LMT-0:53:28",
       {0, 0},
       "1970-01-01T00:00:00.000000Z",
       "1970-01-01 00:53:28"},
      {"no calendar", "UTC0", {std::numeric_limits<std::time_t>::max(), 0}, "", ""},
  };
  for (const auto &row : rows) {
    SCOPED_TRACE(row.name);
    const TimeZone zone(row.zone);
    std::string timestamp;
    std::string clock;
    EXPECT_EQ(appendTimestamp(timestamp, row.time), *row.timestamp != '\0');
    EXPECT_EQ(appendClockTime(clock, row.time), *row.clock != '\0');
    EXPECT_EQ(timestamp, row.timestamp);
    EXPECT_EQ(clock, row.clock);
  }
}

} // namespace
} // namespace ssfind
