#include "hosts/ssfind/FormatTemplate.h"
#include "hosts/ssfind/JsonText.h"
#include "hosts/ssfind/ProgressText.h"
#include "hosts/ssfind/TimeText.h"
#include "hosts/ssfind/VisibleText.h"
#include "tests/support/TimeZone.h"

#include <gtest/gtest.h>
#include <limits>

namespace searchsystem {

namespace {

using namespace ssfind;

TEST(TextTest, NamesAreEscapedForTerminalsAndJson) {
  const struct {
    const char *name;
    std::string bytes;
    const char *visible, *json;
  } rows[] = {
      {"UTF-8", "\u00e9\U0001f30a", "\u00e9\U0001f30a", "\"\u00e9\U0001f30a\""},
      {"quote and backslash", R"(a"\n)", R"(a"\\n)", R"("a\"\\n")"},
      {"common controls", "\n\t\r\b\f", R"(\n\t\r\x08\x0c)", R"("\n\t\r\b\f")"},
      {"escape and delete", "\x1b[31m\x7f", R"(\x1b[31m\x7f)", R"("\u001b[31m\u007f")"},
      {"right to left", "\xE2\x80\xAE\xD8\x9C", R"(\u{202e}\u{61c})", R"("\u202e\u061c")"},
      {"not UTF-8", "a\xFF\n", R"(a\xff\n)", R"({"bytes":"Yf8K"})"},
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

TEST(TextTest, FormatsOfTheUser) {
  const auto shown = [](const char *text, bool isForTerminal = false) {
    const auto format = FormatTemplate::parse(text);
    if (const auto *error = std::get_if<TextError>(&format))
      return std::to_string(error->column) + ": " + error->message;
    std::string out;
    const MatchDetails details{EntryStatus{7, {0, 0}}, {}};
    std::get<FormatTemplate>(format).append(out, "a/b\n", details, isForTerminal);
    return out;
  };
  const TimeZone zone("UTC");
  EXPECT_EQ(shown("{name}|{path}|{size}|{modified}|{taken}"), "b\n|a/b\n|7|1970-01-01 00:00:00|-");
  EXPECT_EQ(shown(R"({{{name}}}\t\\n)", true), "{b\\n}\t\\n");
  EXPECT_EQ(shown("a{page}"),
            "1: in braces are path, name, size, modified or taken; {{ is a brace");
  EXPECT_EQ(shown("{"), "0: in braces are path, name, size, modified or taken; {{ is a brace");
  EXPECT_EQ(shown("a}"), "1: this brace closes nothing; }} is a brace");
  EXPECT_EQ(shown("a\\"), R"(1: a backslash begins \t, \n, \0 or \\)");
}

TEST(TextTest, ProgressSaysWhatIsKnown) {
  EXPECT_EQ(ProgressText().text(3, {0, 0, 0}), "searching… 3 found");
  EXPECT_EQ(ProgressText().text(0, {2, 90, 1}),
            "searching… 0 found, 90 files read (1 could not be) in 2 folders");
  EXPECT_EQ((ProgressText{500, 10}).text(1, {0, 90, 0}),
            "searching… 1 found, 80 of 500 files read");
}

TEST(TextTest, TimesAreLocal) {
  const auto timestamp = [](const char *name, std::timespec time) {
    const TimeZone zone(name);
    std::string text;
    const bool isShown = appendTimestamp(text, time);
    EXPECT_EQ(isShown, !text.empty());
    return text;
  };
  EXPECT_EQ(timestamp("NST3:30", {-1, 999999999}), "1969-12-31T20:29:59.999999-03:30");
  EXPECT_EQ(timestamp("LMT-0:53:28", {0, 0}), "1970-01-01T00:00:00.000000Z") << "uneven offset";
  EXPECT_EQ(timestamp("UTC0", {std::numeric_limits<std::time_t>::max(), 0}), "") << "no calendar";
}

} // namespace

} // namespace searchsystem
