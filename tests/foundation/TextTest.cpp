#include "platform/foundation/FoldedText.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/PathComponents.h"
#include "platform/foundation/TextPattern.h"

#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace std::string_literals;

constexpr unsigned exact = 0;
constexpr unsigned anyCase = NSCaseInsensitiveSearch;
constexpr unsigned literal = NSLiteralSearch;
constexpr unsigned literalAnyCase = NSCaseInsensitiveSearch | NSLiteralSearch;
/// Location and length of a range.
using Found = std::pair<std::size_t, std::size_t>;
constexpr Found none{0, 0};

Found find(const std::string &sought, const std::string &text, unsigned options) {
  const NSRange range = TextPattern(sought, options).find(text);
  return {range.location, range.length};
}

// Characters in both forms, and combining marks.
const auto acute = "\u0301"s, dotAbove = "\u0307"s, dotBelow = "\u0323"s;
const auto composedE = "\u00e9"s, decomposedE = "e\u0301"s, kelvin = "\u212a"s;

TEST(TextPattern, FindsByTheRulesOfEachKindOfSearch) {
  const struct {
    const char *name;
    std::string text, sought;
    std::vector<unsigned> options;
    Found range;
  } rows[] = {
      {"first of two", "abcabd", "abd", {exact, literal, anyCase, literalAnyCase}, {3, 3}},
      {"other case", "xABC", "aBc", {anyCase, literalAnyCase}, {1, 3}},
      {"other case does not count", "ABC", "abc", {exact, literal}, none},
      {"only letters have case", "[@", "{`", {anyCase}, none},
      {"empty sought", "abc", "", {exact, anyCase, literal}, none},
      {"empty text", "", "a", {exact, literalAnyCase}, none},
      {"sharp s as ss", "Stra\u00dfe", "SS", {anyCase, literalAnyCase}, {4, 2}},
      {"ss as sharp s", "MASSE", "\u00df", {anyCase, literalAnyCase}, {2, 2}},
      {"sharp s with case", "ss", "\u00df", {exact, literal}, none},
      {"half a sharp s", "\u00df", "s", {anyCase, literalAnyCase}, none},
      {"behind half a sharp s", "\u00dfs", "s", {anyCase, literalAnyCase}, {2, 1}},
      {"Kelvin sign", "5 " + kelvin, "k", {anyCase, literalAnyCase}, {2, 3}},
      {"Kelvin sign is canonically a K", "5 " + kelvin, "K", {exact}, {2, 3}},
      {"Kelvin sign sought", "5 k", kelvin, {anyCase, literalAnyCase}, {2, 1}},
      {"final sigma", "\u039f\u0394\u039f\u03a3", "\u03bf\u03b4\u03bf\u03c2", {anyCase}, {0, 8}},
      {"dotted I", "\u0130", "i\u0307", {anyCase, literalAnyCase}, {0, 2}},
      {"inside a dotted I", "\u0130", "i", {anyCase, literalAnyCase}, none},
      {"ligature", "\ufb01le", "FILE", {anyCase, literalAnyCase}, {0, 5}},
      {"inside a ligature", "\ufb01", "i", {anyCase, literalAnyCase}, none},

      {"decomposed in composed", "a" + composedE, decomposedE, {exact, anyCase}, {1, 2}},
      {"composed in decomposed", "a" + decomposedE, composedE, {exact, anyCase}, {1, 3}},
      {"other form, literally", composedE, decomposedE, {literal}, none},
      {"base of composed", composedE, "e", {exact, anyCase, literal}, none},
      {"base of decomposed", decomposedE, "e", {exact, anyCase}, none},
      {"base of decomposed, literally", decomposedE, "e", {literal, literalAnyCase}, {0, 1}},
      {"mark of a character", composedE, acute, {exact, anyCase, literal}, none},
      {"order of marks", "q\u0323\u0307", "q\u0307\u0323", {exact}, {0, 5}},
      {"marks on a composed letter", "\u1e61" + dotBelow, "\u1e69", {exact, anyCase}, {0, 5}},
      {"a mark without a base", dotBelow + "a", dotBelow, {exact, anyCase}, {0, 2}},
      {"other of two marks without a base", acute + dotBelow, acute, {exact, anyCase}, none},
      {"Angstrom sign", "\u212b", "\u00c5", {exact, anyCase}, {0, 3}},
      {"Hangul from its parts", "\ud55c\uae00", "\u1112\u1161\u11ab", {exact, anyCase}, {0, 3}},
      {"inside a Hangul syllable", "\ud55c", "\ud558", {exact, anyCase}, none},
      {"inside Hangul parts", "\u1112\u1161\u11ab", "\u1112\u1161", {exact, anyCase}, none},
      {"first of Hangul parts", "\u1112\u1161\u11ab", "\u1112", {exact}, none},

      {"stray byte", "a\xff b", "\xff", {exact, anyCase, literal, literalAnyCase}, {1, 1}},
      {"lead byte of a character", composedE, "\xc3", {exact, literal, anyCase}, none},
      {"last byte of a character", composedE, "\xa9", {exact, literal, anyCase}, none},
      {"cut-off character", "\xe2\x82x", "\xe2\x82", {exact, literal, anyCase}, {0, 2}},
      {"bytes have no case", "\xc9", "\xe9", {anyCase, literalAnyCase}, none},
      {"a byte is no Latin-1", composedE, "\xe9", {exact, anyCase, literal}, none},
      {"surrogate", "x\xed\xa0\x80", "\xed\xa0\x80", {exact, literal, anyCase}, {1, 3}},
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
  const std::vector<std::string> alphabets[] = {
      {"a", "A", "b"}, {"s", "S", "\u00df", "e", composedE, acute, dotBelow, "\xff", "\u0130"}};
  std::mt19937 random(20010101);
  for (const auto &alphabet : alphabets)
    for (int round = 0; round < 1000; ++round) {
      const auto draw = [&](std::size_t most) {
        std::vector<std::string> pieces(random() % (most + 1));
        for (std::string &piece : pieces)
          piece = alphabet[random() % alphabet.size()];
        return pieces;
      };
      const auto pieces = draw(9);
      std::string text, sought;
      for (const auto &piece : pieces)
        text += piece;
      for (const auto &piece : draw(3))
        sought += piece;
      for (const unsigned options : {exact, anyCase, literal, literalAnyCase})
        ASSERT_EQ(find(sought, text, options), findByTrying(pieces, sought, options))
            << testing::PrintToString(text) << " / " << testing::PrintToString(sought)
            << ", options " << options;
    }
}

TEST(TextPattern, FindsEveryCharacterThatFoldsToASCII) {
  int found = 0;
  for (int codePoint = 0x80; codePoint < 0x10000; ++codePoint) {
    const auto byte = [&](int lead, int shift) {
      return static_cast<char>(lead | codePoint >> shift);
    };
    const char last = static_cast<char>(0x80 | (codePoint & 0x3f));
    const char middle = static_cast<char>(0x80 | (codePoint >> 6 & 0x3f));
    const std::string character = codePoint < 0x800 ? std::string{byte(0xc0, 6), last}
                                                    : std::string{byte(0xe0, 12), middle, last};
    for (const unsigned options : {exact, anyCase, literalAnyCase}) {
      std::string folded;
      for (const auto &unit : FoldedText(character, options != exact, options < literal).units)
        folded += unit.codePoint < 0x80 ? static_cast<char>(unit.codePoint) : '\xff';
      if (folded.find('\xff') != folded.npos)
        continue;
      EXPECT_EQ(find(folded, character, options), Found(0, character.size())) << folded;
      ++found;
    }
  }
  EXPECT_GT(found, 20) << "ligatures, Kelvin sign, long s and their like";
}

TEST(TextPattern, TakesLinearTimeOnHostileText) {
  constexpr std::size_t size = 500'000;
  const std::string many(size, 'a');
  const std::string half(size / 2, 'a');
  EXPECT_EQ(find(half + "b", many, anyCase), none);
  EXPECT_EQ(find(half + "\u00e4", many + "\u00df", anyCase), none);
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
    const char *path, *last, *extension, *joined;
  } rows[] = {{"", "", "", "n"},
              {"/", "/", "", "/n"},
              {"///", "/", "", "/n"},
              {"a", "a", "", "a/n"},
              {"/a/b.txt", "b.txt", "txt", "/a/b.txt/n"},
              {"/a.d/b/", "b", "", "/a.d/b/n"},
              {"/a/b.tar.gz//", "b.tar.gz", "gz", "/a/b.tar.gz/n"},
              {"/a/.profile", ".profile", "", "/a/.profile/n"},
              {"/a/.x.JPG", ".x.JPG", "JPG", "/a/.x.JPG/n"},
              {"/a/b.", "b.", "", "/a/b./n"},
              {"/a/..", "..", "", "/a/../n"},
              {"/\xff/caf\xe9.\xfe", "caf\xe9.\xfe", "\xfe", "/\xff/caf\xe9.\xfe/n"}};
  for (const auto &row : rows) {
    EXPECT_EQ(lastPathComponent(row.path), row.last) << row.path;
    EXPECT_EQ(pathExtension(row.path), row.extension) << row.path;
    const auto joined = NSString::create(row.path)->stringByAppendingPathComponent("n");
    EXPECT_STREQ(joined->UTF8String(), row.joined);
    EXPECT_EQ(joined->length(), std::string(row.joined).size());
  }
}

} // namespace
