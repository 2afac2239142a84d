#include "platform/foundation/StringEncoding.h"
#include "platform/foundation/NSString.h"

#include <gtest/gtest.h>

namespace searchsystem {

namespace {

using namespace std::string_literals;
using enum StringEncoding;

std::string decoded(std::string_view bytes, StringEncoding encoding) {
  return decodeText(bytes, encoding).value_or("none");
}

std::string encoded(std::string_view text, StringEncoding encoding) {
  return encodeText(text, static_cast<std::uint32_t>(encoding)).value_or("none");
}

/// What the bytes from `first` on stand for, one character each, given as one text.
struct Characters {
  int first;
  std::string text;
};

std::string asciiUpTo(int last) {
  std::string text;
  for (int byte = 0; byte <= last; ++byte)
    text.push_back(static_cast<char>(byte));
  return text;
}

std::vector<Characters> japaneseSingleBytes() {
  std::string tilde = asciiUpTo(0x7f).substr(0x5d), halfWidth;
  for (char32_t c = 0xff61; c <= 0xff9f; ++c)
    halfWidth +=
        {'\xef', static_cast<char>(0x80 | (c >> 6 & 0x3f)), static_cast<char>(0x80 | (c & 0x3f))};
  return {{0, asciiUpTo(0x5b)}, {0x5c, "\u00a5"}, {0x5d, tilde}, {0xa1, halfWidth}};
}

TEST(StringEncoding, GivesEachSingleByteItsCharacter) {
  std::string latin1;
  for (int c = 0x80; c <= 0xff; ++c)
    latin1 += {static_cast<char>(0xc0 | c >> 6), static_cast<char>(0x80 | (c & 0x3f))};
  std::vector<Characters> macJapanese = japaneseSingleBytes();
  macJapanese.insert(macJapanese.end(),
                     {{0x80, "\\"}, {0xa0, "\u00a0"}, {0xfd, "\u00a9\u2122\u2026"}});
  const struct {
    const char *name;
    StringEncoding encoding;
    std::vector<Characters> characters;
  } rows[] = {
      {"ASCII", ASCII, {{0, asciiUpTo(0x7f)}}},
      {"ISO Latin-1", ISOLatin1, {{0, asciiUpTo(0x7f)}, {0x80, latin1}}},
      {"Mac Roman",
       MacRoman,
       {{0, asciiUpTo(0x7f)},
        {0x80, "ÄÅÇÉÑÖÜáàâäãåçéèêëíìîïñóòôöõúùûü†°¢£§•¶ß®©™´¨≠ÆØ∞±≤≥¥µ∂∑∏π∫ªºΩæø"},
        {0xc0, "¿¡¬√ƒ≈∆«»…\u00a0ÀÃÕŒœ–—“”‘’÷◊ÿŸ⁄€‹›ﬁﬂ‡·‚„‰ÂÊÁËÈÍÎÏÌÓÔ\uf8ffÒÚÛÙıˆ˜¯˘˙˚¸˝˛ˇ"}}},
      {"Mac Japanese", MacJapanese, macJapanese},
      {"Shift-JIS X0213", ShiftJIS_X0213, japaneseSingleBytes()},
  };
  for (const auto &row : rows) {
    std::vector<std::string> expected(256, "none");
    for (const auto &[first, text] : row.characters) {
      std::size_t byte = static_cast<std::size_t>(first) - 1;
      for (const char c : text)
        if ((c & 0xc0) != 0x80)
          expected.at(++byte) = c;
        else
          expected.at(byte) += c;
    }
    for (std::size_t i = 0; i < expected.size(); ++i) {
      const std::string byte(1, static_cast<char>(i));
      EXPECT_EQ(decoded(byte, row.encoding), expected[i]) << row.name << ' ' << i;
      // The ellipsis has two bytes in Shift-JIS, too, and these are used.
      if (expected[i] != "none" && expected[i] != "\u2026") {
        EXPECT_EQ(encoded(expected[i], row.encoding), byte) << row.name << ' ' << i;
      }
    }
  }
}

TEST(StringEncoding, ReadsJapaneseOfTwoBytes) {
  const struct {
    const char *name;
    StringEncoding encoding;
    std::string bytes, text;
  } rows[] = {{"kanji beside ASCII", MacJapanese, "a\x8e\xca\x90^~", "a写真~"},
              {"second byte of a backslash", MacJapanese, "\x83\x5c\x83\x5c", "ソソ"},
              {"dashes", MacJapanese, "\x81\x5c\x81\x60\x81\x7c", "\u2014\u301c\u2212"},
              {"ellipsis", MacJapanese, "\x81\x63", "\u2026"},
              {"the last row", MacJapanese, "\xea\xa4", "熙"},
              {"cut off", MacJapanese, "a\x8e", "none"},
              {"no second byte", MacJapanese, "\x8e\x20", "none"},
              {"a circled digit", MacJapanese, "\x87\x40", "none"},
              {"a circled digit", ShiftJIS_X0213, "\x87\x40~", "\u2460~"},
              {"letter and mark", ShiftJIS_X0213, "\x82\xa9\x82\xf5", "\u304b\u304b\u309a"},
              {"the second plane", ShiftJIS_X0213, "\xf0\x40", "\U00020089"},
              {"Mac's copyright", ShiftJIS_X0213, "\xfd", "none"}};
  for (const auto &row : rows) {
    EXPECT_EQ(decoded(row.bytes, row.encoding), row.text) << row.name;
    if (row.text != "none") {
      EXPECT_EQ(encoded(row.text, row.encoding), row.bytes) << row.name;
    }
  }
  EXPECT_EQ(encoded("한", MacJapanese), "none");
  EXPECT_EQ(encoded("\xff", ShiftJIS_X0213), "none");
}

TEST(StringEncoding, MakesStringsOfData) {
  const struct {
    const char *name;
    NSStringEncoding encoding;
    std::string data, text;
  } rows[] = {
      {"ASCII", NSASCIIStringEncoding, "a b\0"s, "a b\0"s},
      {"beyond ASCII", NSASCIIStringEncoding, "a\x80", "none"},
      {"UTF-8", NSUTF8StringEncoding, "\u00e9", "\u00e9"},
      {"not UTF-8", NSUTF8StringEncoding, "\xe9", "none"},
      {"default, UTF-8", NSDefaultCStringEncoding, "\u00e9", "\u00e9"},
      {"default, Latin-1", NSDefaultCStringEncoding, "\xe9", "\u00e9"},
      {"little-endian", NSUnicodeStringEncoding, "\xff\xfe\x41\0\0\0"s, "A\0"s},
      {"big-endian", NSUnicodeStringEncoding, "\xfe\xff\0\x41"s, "A"},
      {"no mark", NSUnicodeStringEncoding, "\0\x41"s, "A"},
      {"only a mark", NSUnicodeStringEncoding, "\xfe\xff", ""},
      {"surrogates", NSUnicodeStringEncoding, "\xff\xfe\x3d\xd8\x00\xde"s, "\U0001f600"},
      {"half a pair", NSUnicodeStringEncoding, "\xff\xfe\x3d\xd8\x41\0"s, "none"},
      {"half a pair at the end", NSUnicodeStringEncoding, "\xff\xfe\x3d\xd8"s, "none"},
      {"low before high", NSUnicodeStringEncoding, "\xff\xfe\x00\xde\x3d\xd8"s, "none"},
      {"half a unit", NSUnicodeStringEncoding, "\xff\xfe\x41"s, "none"},
      {"JIS", NSISO2022JPStringEncoding, "a\x1b$B<L??\x1b(B~", "a写真~"},
      {"JIS, not shifted back, padded", NSISO2022JPStringEncoding, "\x1b$B<L\0\0"s, "写\0\0"s},
      {"JIS, cut off", NSISO2022JPStringEncoding, "\x1b$B<", "none"},
      {"JIS, eight bits", NSISO2022JPStringEncoding, "\xbc\xcc", "none"},
      {"unknown", static_cast<NSStringEncoding>(99), "a", "none"},
  };
  for (const auto &row : rows) {
    const auto string = NSString::initWithData(row.data, row.encoding);
    EXPECT_EQ(string ? string->view() : "none", row.text) << row.name;
  }
}

} // namespace

} // namespace searchsystem
