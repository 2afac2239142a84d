#include "platform/content/TextComparison.h"
#include "readers/documents/NormalisedText.h"
#include "readers/documents/Utf8.h"

#include <gtest/gtest.h>

#include <ostream>
#include <random>
#include <string>
#include <string_view>

namespace searchsystem {

namespace {

using namespace std::string_view_literals;

/// The answer for a text that comes in pieces of one length.
bool holds(TextComparison &comparison, std::string_view text, std::size_t length) {
  comparison.restart();
  for (; !text.empty(); text.remove_prefix(std::min(length, text.size())))
    if (comparison.take(text.substr(0, length)))
      return true;
  return false;
}

struct ComparisonCase {
  const char *name;
  std::string_view text;
  std::string_view keyword;
  bool isFound;
  /// Told to compare the very letters.
  bool isFoundDistinctly;

  friend void PrintTo(const ComparisonCase &row, std::ostream *out) { *out << row.name; }
};

class ComparisonTest : public testing::TestWithParam<ComparisonCase> {};

TEST_P(ComparisonTest, IsTheSameHoweverTheTextIsDivided) {
  const ComparisonCase &row = GetParam();
  for (const bool isDistinct : {false, true}) {
    TextComparison comparison(row.keyword, isDistinct);
    const bool isExpected = isDistinct ? row.isFoundDistinctly : row.isFound;
    for (std::size_t length = 1; length <= row.text.size() + 1; ++length)
      EXPECT_EQ(holds(comparison, row.text, length), isExpected)
          << "in pieces of " << length << (isDistinct ? ", distinct" : "");
  }
}

constexpr ComparisonCase comparisonCases[] = {
    {"Word", "the Harbour wall", "harbour", true, false},
    {"Absent", "the harbour wall", "harbours", false, false},
    {"Empty", "the harbour wall", "", false, false},
    {"NotUTF8", "the harbour wall", "\xFF", false, false},
    {"OnlySoftHyphens", "text", "\u00AD", false, false},
    {"SoftHyphenInKeyword", "harbour", "har\u00ADbour", true, true},
    {"OnlyMarks", "text", "\u200E\uFEFF\x01", false, false},
    {"MarkWithinComposition", "caf\u00E9", "cafe\u200B\u0301", true, true},
    {"BlankBesideMark", "harbour wall", "harbour \u2060 wall", true, true},
    {"BlankByNormalisation", "a \u0308", "a \u00A8", true, true},
    {"Overlapping", "ananas", "nas", true, true},
    {"RestartsInside", "aaaaab", "aab", true, true},
    {"Ligature", "o\uFB03ce office", "O\uFB03CE", true, false},
    {"KeywordDecomposed", "caf\u00E9", "cafe\u0301", true, true},
    {"SharpS", "MASSE", "Ma\u00DFe", true, false},
    {"SharpSInText", "Stra\u00DFe", "STRASSE", true, false},
    {"Greek", "\u039F\u0394\u039F\u03A3", "\u03BF\u03B4\u03BF\u03C2", true, false},
    {"Japanese", "\u6E2F\u306E\u58C1", "\u306E\u58C1", true, true},
    {"OutsideTheBasicPlane", "\U00010400\U00010401", "\U00010428\U00010429", true, false},
    {"WhiteSpaceInKeyword", "harbour wall", "harbour \t\u00A0\n wall", true, true},
    {"AcrossPages", "harbour\fwall", "harbour wall", true, true},
    {"AcrossPagesWithBlanks", "harbour \f wall", "harbour wall", true, true},
    {"AcrossEmptyPages", "harbour\f\f\fwall", "harbour wall", true, true},
    {"PageIsNoLetter", "harbour\fwall", "harbourwall", false, false},
    {"BlankAtPageEnd", "harbour\f", "harbour ", true, true},
    {"DividedWord", "har\001bour", "harbour", true, true},
    {"HyphenatedWord", "sea\001wall", "sea-wall", true, true},
    {"ProperHyphen", "sea\001wall", "sea\u2010wall", true, true},
    {"OtherHyphensDiffer", "sea-wall", "sea\u2010wall", false, false},
    {"HyphenIsNoBlank", "sea\001wall", "sea wall", false, false},
    {"BothAtOnce", "sea\001wall-gar\001den", "seawall-garden", true, true},
    {"EachInItsWay", "a\001b\001c\001d", "a-bc-d", true, true},
    {"TwoInARow", "a\001\001b", "a-b", true, true},
    {"NoneTooMany", "a\001b", "a--b", false, false},
    {"DividedAcrossPages", "har\001\fbour", "harbour", true, true},
    {"DividedAcrossPagesWithBlank", "sea\001 \f wall", "sea-wall", true, true},
    {"PlainHyphenStays", "sea-wall", "seawall", false, false},
    {"OneLetter", "x\fy", "y", true, true},
    {"OneBlank", "x\fy", " ", true, true},
    {"OneHyphen", "x\001y", "-", true, true},
    {"BrokenText", "\xC3\xC3\xA9t\xE2\x82 wall"sv, "\u00C9T", true, false},
    {"SixtyFiveBytesWithHyphen",
     "x0123456789012345678901234567890123456789012345678901234567890123\001y",
     "0123456789012345678901234567890123456789012345678901234567890123-Y", true, false},
};

INSTANTIATE_TEST_SUITE_P(Comparisons, ComparisonTest, testing::ValuesIn(comparisonCases),
                         [](const auto &row) { return row.param.name; });

TEST(TextComparison, FindsWhatTheReaderMakesOfAnyCharacter) {
  const std::u32string_view dropped = U"\x01\x1F\x7F\x9F\xAD\u061C\u200B\u200E\u200F\u202A\u202E"
                                      U"\u2060\u206F\uFEFF\uFFF0\uFFFD\uFFFF\U000E0041\U0010FFFE";
  for (char32_t c = 1; c <= 0x10FFFF; c += c < 0x11000 || c > 0xDFFFF ? 1 : 0x101) {
    if (c >= 0xD800 && c < 0xE000)
      continue;
    std::string keyword = "a", text;
    appendUtf8(keyword, c);
    keyword += 'b';
    TextTraits traits;
    // Soft hyphens stay in a line, in case that they end it.
    if (c == U'\xAD')
      text = "ab";
    else
      text = normalised(keyword, traits);
    TextComparison comparison(keyword, true);
    ASSERT_TRUE(comparison.take(text)) << std::hex << static_cast<std::uint32_t>(c);
    ASSERT_TRUE(dropped.find(c) == dropped.npos || text == "ab")
        << std::hex << static_cast<std::uint32_t>(c);
  }
}

TEST(TextComparison, TakesMarksWithoutEndInLinearTime) {
  std::string text = "a";
  for (int i = 0; i < 300'000; ++i)
    appendUtf8(text, i % 2 == 0 ? U'\u0301' : U'\u0323');
  TextTraits traits;
  const std::string form = normalised(text + "b", traits);
  EXPECT_LT(form.size(), 70) << "thirty marks of two bytes each";
  EXPECT_EQ(form.back(), 'b');
}

/// Whether `text` from `at` on can be read as `keyword`.
bool canBeRead(std::string_view text, std::string_view keyword) {
  if (keyword.empty())
    return true;
  if (text.empty())
    return false;
  if (text.front() == '\x01')
    return canBeRead(text.substr(1), keyword) ||
           (keyword.front() == '-' && canBeRead(text.substr(1), keyword.substr(1)));
  return text.front() == keyword.front() && canBeRead(text.substr(1), keyword.substr(1));
}

TEST(TextComparison, FindsWhatAllWaysToReadTheHyphensGive) {
  std::mt19937 random(1);
  const auto draw = [&](std::string_view letters, std::size_t most) {
    std::string text(random() % most + 1, ' ');
    for (char &c : text)
      c = letters[random() % letters.size()];
    return text;
  };
  int found = 0;
  for (int i = 0; i < 20'000; ++i) {
    const std::string text = draw("aab-\x01\x01", 12), keyword = draw("aab-", 5);
    bool isExpected = false;
    for (std::size_t at = 0; at < text.size(); ++at)
      isExpected |= canBeRead(std::string_view(text).substr(at), keyword);
    TextComparison comparison(keyword, false);
    ASSERT_EQ(holds(comparison, text, random() % 5 + 1), isExpected) << text << " / " << keyword;
    found += isExpected ? 1 : 0;
  }
  EXPECT_GT(found, 5'000);
}

} // namespace

} // namespace searchsystem
