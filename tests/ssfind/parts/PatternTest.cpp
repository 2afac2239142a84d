#include "hosts/ssfind/ExcludedPaths.h"
#include "hosts/ssfind/NamePattern.h"
#include "hosts/ssfind/SizeRange.h"

#include <gtest/gtest.h>

namespace searchsystem {

namespace {

using namespace ssfind;

constexpr NameSyntax text = NameSyntax::Text, glob = NameSyntax::Glob, regex = NameSyntax::Regex;

TEST(PatternTest, Names) {
  const struct {
    NameSyntax syntax;
    const char *pattern;
    std::vector<const char *> matching, others;
  } rows[] = {
      {text, "a*", {"xA*.jpg"}, {"ab"}},
      {text, "", {"a", ""}, {}},
      {text, "stra\u00DFe", {"STRASSE.jpg"}, {"strase"}},
      {text, "caf\u00E9", {"Cafe\u0301.jpg"}, {"cafe"}},
      {glob, "*.jp?g", {".jpeg", "a.b.JPEG", "\n.jpxg"}, {"a.jpg", "a.jpeg.x"}},
      {glob, "[a-c]?", {"b1", "C\u00E9"}, {"d1", "b", "b12"}},
      {glob, "[!a-c^]*", {"d", "]x"}, {"b", "^"}},
      {glob, "[]x-]", {"]", "x", "-"}, {"y", "["}},
      {glob, "{img,dsc}_*.{jpg,tif}", {"IMG_1.jpg", "dsc_.TIF"}, {"img_1.png", "{img,dsc}_1.jpg"}},
      {glob, R"(\*[\]]\{}.+)", {"*]{}.+"}, {"a]{}.+", R"(\*]{}.+)"}},
      {glob, "a,b}", {"a,b}"}, {"a"}},
      {glob, "**", {"a.b", ""}, {}},
      {glob, "\u00C9t?*", {"e\u0301te\u0301"}, {"ete"}},
      {glob, "?", {"\xFF", "\u00E9"}, {"\xFF\xFE"}},
      {regex, "^img_[0-9]{4}\\.", {"IMG_0412.jpg"}, {"IMG_041.jpg", "xIMG_0412.jpg"}},
      {regex, "\u00E4|b.d", {"A\u0308", "xb\ndx"}, {"a"}},
      {regex, "", {"", "a"}, {}},
      {regex, "(?-i:A)", {"A"}, {"a"}},
  };
  for (const auto &row : rows) {
    SCOPED_TRACE(row.pattern);
    const auto parsed = NamePattern::parse(row.pattern, row.syntax, false);
    ASSERT_TRUE(std::holds_alternative<NamePattern>(parsed)) << std::get<TextError>(parsed).message;
    const auto &pattern = std::get<NamePattern>(parsed);
    for (const char *name : row.matching)
      EXPECT_TRUE(pattern.matches(name)) << name;
    for (const char *name : row.others)
      EXPECT_FALSE(pattern.matches(name)) << name;
  }
  for (const NameSyntax syntax : {text, glob, regex})
    EXPECT_FALSE(std::get<NamePattern>(NamePattern::parse("A", syntax, true)).matches("a"));
}

TEST(PatternTest, Exclusions) {
  const struct {
    const char *pattern;
    std::vector<const char *> out, in;
  } rows[] = {
      {"tmp", {"tmp", "tmp/a", "x/TMP/y/a"}, {"tmpx", "x/tmp.jpg"}},
      {"*.jpg", {"a.jpg", "x/a.jpg", "x.jpg/a"}, {"a.jpgx"}},
      {"tmp/", {"tmp/a", "x/tmp/a"}, {"tmp", "x/tmp"}},
      {"/tmp", {"tmp", "tmp/a"}, {"x/tmp"}},
      {"x/*.jpg", {"x/a.jpg"}, {"a.jpg", "y/x/a.jpg", "x/y/a.jpg"}},
      {"x/**/a.jpg", {"x/a.jpg", "x/y/z/a.jpg"}, {"xa.jpg", "y/x/a.jpg"}},
      {"**/a.jpg", {"a.jpg", "x/y/a.jpg"}, {"xa.jpg"}},
      {"x/**", {"x/a", "x/y/a"}, {"x", "y/x/a"}},
      {"x/[!a]", {"x/b"}, {"x/a", "x//"}},
  };
  for (const auto &row : rows) {
    SCOPED_TRACE(row.pattern);
    ExcludedPaths excluded;
    EXPECT_FALSE(excluded.add(row.pattern, false));
    for (const char *path : row.out)
      EXPECT_TRUE(excluded.containFile(path)) << path;
    for (const char *path : row.in)
      EXPECT_FALSE(excluded.containFile(path)) << path;
  }
  ExcludedPaths both;
  EXPECT_FALSE(both.add("tmp/", true) || both.add("b", true));
  EXPECT_TRUE(both.containFolder("x/tmp") && both.containFile("b"));
  EXPECT_FALSE(both.containFolder("TMP"));
}

TEST(PatternTest, Mistakes) {
  const auto mistake = [](NameSyntax syntax, const char *pattern) {
    const auto parsed = NamePattern::parse(pattern, syntax, false);
    const auto *error = std::get_if<TextError>(&parsed);
    return error != nullptr ? std::to_string(error->column) + ' ' + error->message : "none";
  };
  EXPECT_EQ(mistake(glob, "ab[c"), "2 this bracket is not closed");
  EXPECT_EQ(mistake(glob, "a{b,c"), "1 these braces are not closed");
  EXPECT_EQ(mistake(glob, "{a,{b}}"), "3 braces inside braces");
  EXPECT_EQ(mistake(glob, "a\\"), "1 nothing follows the backslash");
  EXPECT_EQ(mistake(glob, "[z-a]"), "1 invalid character class range: z-a");
  EXPECT_EQ(mistake(regex, "a(?=b)"), "1 invalid perl operator: (?=");
  EXPECT_EQ(ExcludedPaths().add("/a{", false)->column, 2U);
  EXPECT_EQ(ExcludedPaths().add("/", false)->message, "this would leave out nothing");
}

TEST(PatternTest, Sizes) {
  constexpr std::uint64_t open = UINT64_MAX;
  const struct {
    const char *text;
    std::uint64_t least, most;
  } rows[] = {{"5M", 5'000'000, 5'000'000},
              {"1.5k..2KiB", 1500, 2048},
              {"+10k", 10'000, open},
              {"-1gb", 0, 1'000'000'000},
              {"1Ti..", 1ULL << 40, open},
              {"..0.5k", 0, 500},
              {"7b", 7, 7},
              {"1.0009k..", 1000, open}};
  for (const auto &row : rows) {
    const auto parsed = parseSizeRange(row.text);
    ASSERT_TRUE(std::holds_alternative<SizeRange>(parsed)) << row.text;
    EXPECT_EQ(std::get<SizeRange>(parsed).least, row.least) << row.text;
    EXPECT_EQ(std::get<SizeRange>(parsed).most, row.most) << row.text;
  }
  const std::pair<const char *, std::size_t> wrong[] = {{"", 0},     {"x", 0},         {"5x", 1},
                                                        {"5..x", 3}, {"99999999T", 0}, {"5kib5", 4},
                                                        {"+5..", 2}, {"2k..1k", 4}};
  for (const auto &[text_, column] : wrong) {
    const auto parsed = parseSizeRange(text_);
    ASSERT_TRUE(std::holds_alternative<TextError>(parsed)) << text_;
    EXPECT_EQ(std::get<TextError>(parsed).column, column) << text_;
  }
}

} // namespace

} // namespace searchsystem
