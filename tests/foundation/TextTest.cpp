#include "platform/foundation/FoldedText.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/PathComponents.h"
#include "platform/foundation/PatternEnds.h"
#include "platform/foundation/TextPattern.h"

#include <gtest/gtest.h>
#include <random>

namespace searchsystem {

namespace {

using namespace std::string_literals;

constexpr unsigned exact = 0, anyCase = NSCaseInsensitiveSearch, literal = NSLiteralSearch,
                   literalAnyCase = anyCase | literal;
/// Location and length of a range.
using Found = std::pair<std::size_t, std::size_t>;
constexpr Found none{0, 0};

Found find(const std::string &sought, const std::string &text, unsigned options) {
  const NSRange range = TextPattern(sought, options).find(text);
  return {range.location, range.length};
}

// Characters in both forms, and combining marks.
const auto acute = "\u0301"s, dotBelow = "\u0323"s;
const auto composedE = "\u00e9"s, decomposedE = "e\u0301"s;

TEST(TextPattern, FindsByTheRulesOfEachKindOfSearch) {
  const struct {
    const char *name;
    std::string text, sought;
    std::vector<unsigned> options;
    Found range;
  } rows[] = {
      {"first of two", "abcabd", "abd", {exact, literal, anyCase, literalAnyCase}, {3, 3}},
      {"other case", "xABC", "aBc", {anyCase, literalAnyCase}, {1, 3}},
      {"sharp s as ss", "Stra\u00dfe", "SS", {anyCase, literalAnyCase}, {4, 2}},
      {"half a sharp s", "\u00df", "s", {anyCase, literalAnyCase}, none},

      {"decomposed in composed", "a" + composedE, decomposedE, {exact, anyCase}, {1, 2}},
      {"composed in decomposed", "a" + decomposedE, composedE, {exact, anyCase}, {1, 3}},
      {"base of composed", composedE, "e", {exact, anyCase, literal}, none},
      {"base of decomposed, literally", decomposedE, "e", {literal, literalAnyCase}, {0, 1}},
      {"order of marks", "q\u0323\u0307", "q\u0307\u0323", {exact}, {0, 5}},
      {"other of two marks without a base", acute + dotBelow, acute, {exact, anyCase}, none},
      {"Hangul from its parts", "\ud55c\uae00", "\u1112\u1161\u11ab", {exact, anyCase}, {0, 3}},

      {"stray byte", "a\xff b", "\xff", {exact, anyCase, literal, literalAnyCase}, {1, 1}},
      {"lead byte of a character", composedE, "\xc3", {exact, literal, anyCase}, none},
      {"cut-off character", "\xe2\x82x", "\xe2\x82", {exact, literal, anyCase}, {0, 2}},
  };
  for (const auto &row : rows)
    for (const unsigned options : row.options)
      EXPECT_EQ(find(row.sought, row.text, options), row.range)
          << row.name << ", options " << options;
}

/// The slow and plain search: folds every part of the text that begins and ends between characters.
Found findByTrying(const std::vector<std::string> &pieces, const std::string &sought,
                   unsigned options) {
  const bool foldCase = (options & NSCaseInsensitiveSearch) != 0;
  const bool decompose = (options & NSLiteralSearch) == 0;
  const auto fold = [&](const std::string &text) {
    std::vector<std::int32_t> folded;
    for (const FoldedText::Unit &unit : FoldedText(text, foldCase, decompose).units)
      folded.push_back(unit.codePoint);
    return folded;
  };
  const auto isInside = [&](std::size_t i) {
    return decompose && i > 0 && i < pieces.size() && (pieces[i] == acute || pieces[i] == dotBelow);
  };
  std::size_t location = 0;
  for (std::size_t i = 0; i < pieces.size(); location += pieces[i++].size()) {
    std::string part;
    for (std::size_t j = i; !isInside(i) && j < pieces.size(); ++j) {
      part += pieces[j];
      if (!isInside(j + 1) && fold(part) == fold(sought))
        return {location, part.size()};
    }
  }
  return none;
}

TEST(TextPattern, AgreesWithTryingEveryPart) {
  const std::vector<std::string> alphabet{"s",   "S",      "\u00df", "e",     composedE,
                                          acute, dotBelow, "\xff",   "\u0130"};
  std::mt19937 random(20010101);
  for (int round = 0; round < 2000; ++round) {
    std::vector<std::string> pieces(random() % 10);
    std::string text, sought;
    for (std::string &piece : pieces)
      text += piece = alphabet[random() % alphabet.size()];
    for (auto left = random() % 4; left > 0; --left)
      sought += alphabet[random() % alphabet.size()];
    for (const unsigned options : {exact, anyCase, literal, literalAnyCase})
      ASSERT_EQ(find(sought, text, options), findByTrying(pieces, sought, options))
          << testing::PrintToString(text) << " / " << testing::PrintToString(sought) << ", options "
          << options;
  }
}

TEST(PatternEnds, AreMetWhereAPlainLoopMeetsThem) {
  std::mt19937 random(1);
  const PatternEnds ends{'a', 'a' ^ 'A', '\xE9', 0};
  for (int round = 0; round < 1000; ++round) {
    std::string text(2 * PatternEnds::blockSize, ' ');
    for (char &byte : text)
      byte = "aAz\xE9 "[random() % 5];
    const std::size_t last = random() % PatternEnds::blockSize;
    EXPECT_EQ(ends.begins(text.data(), text.data() + last),
              ends.beginsPlainly(text.data(), text.data() + last))
        << text << " " << last;
  }
}

TEST(TextPattern, TakesLinearTimeOnHostileText) {
  constexpr std::size_t size = 500'000;
  const std::string many(size, 'a'), half(size / 2, 'a');
  EXPECT_EQ(find(half + "b", many, anyCase), none);
  std::string sharp, marks = "e";
  for (std::size_t i = 0; i < size / 4; ++i) {
    sharp += "\u00df";
    marks += i % 2 == 0 ? acute : dotBelow;
  }
  EXPECT_EQ(find("s" + sharp, sharp, anyCase), none);
  EXPECT_EQ(find("e", marks, exact), none);
}

TEST(PathComponents, TakeAPathApartAndJoinIt) {
  const struct {
    const char *path, *folder, *last, *extension, *joined;
  } rows[] = {{"/", "/", "/", "", "/n"},
              {"/x", "/", "x", "", "/x/n"},
              {"/a.d/b/", "/a.d", "b", "", "/a.d/b/n"},
              {"/a//b.tar.gz//", "/a", "b.tar.gz", "gz", "/a//b.tar.gz/n"},
              {"/a/.profile", "/a", ".profile", "", "/a/.profile/n"},
              {"/a/.x.JPG", "/a", ".x.JPG", "JPG", "/a/.x.JPG/n"},
              {"/a/..", "/a", "..", "", "/a/../n"},
              {"/\xff/caf\xe9.\xfe", "/\xff", "caf\xe9.\xfe", "\xfe", "/\xff/caf\xe9.\xfe/n"}};
  for (const auto &row : rows) {
    EXPECT_EQ(pathWithoutLastComponent(row.path), row.folder) << row.path;
    EXPECT_EQ(lastPathComponent(row.path), row.last) << row.path;
    EXPECT_EQ(extensionOfName(lastPathComponent(row.path)), row.extension) << row.path;
    const auto joined = NSString::create(row.path)->stringByAppendingPathComponent("n");
    EXPECT_STREQ(joined->UTF8String(), row.joined);
  }
}

} // namespace

} // namespace searchsystem
