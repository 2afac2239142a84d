#include "testing/TextOf.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace searchsystem {
namespace {

std::string bytesOf(std::uint32_t value, int length) {
  std::string bytes;
  for (int shift = (length - 1) * 8; shift >= 0; shift -= 8)
    bytes += static_cast<char>(value >> shift);
  return bytes;
}

/// A program with a cmap table alone: for each platform and encoding a table of format 4, which
/// gives characters from `first` on the glyphs from `glyph` on.
struct CharacterTable {
  std::uint32_t platform, encoding, first, last, glyph;
};

std::string openTypeProgram(const std::vector<CharacterTable> &tables) {
  std::string heads = bytesOf(0, 2) + bytesOf(static_cast<std::uint32_t>(tables.size()), 2), bodies;
  for (const CharacterTable &table : tables) {
    heads += bytesOf(table.platform, 2) + bytesOf(table.encoding, 2) +
             bytesOf(static_cast<std::uint32_t>(4 + 8 * tables.size() + bodies.size()), 4);
    bodies += bytesOf(4, 2) + bytesOf(32, 2) + bytesOf(0, 2) + bytesOf(4, 2) +
              std::string(6, '\0') + bytesOf(table.last, 2) + bytesOf(0xFFFF, 2) + bytesOf(0, 2) +
              bytesOf(table.first, 2) + bytesOf(0xFFFF, 2) + bytesOf(table.glyph - table.first, 2) +
              bytesOf(1, 2) + bytesOf(0, 4);
  }
  const std::string body = heads + bodies + std::string(1000, '\0');
  return bytesOf(0x10000, 4) + bytesOf(1, 2) + std::string(6, '\0') + "cmap" + bytesOf(0, 4) +
         bytesOf(28, 4) + bytesOf(static_cast<std::uint32_t>(body.size()), 4) + body;
}

std::string index(const std::vector<std::string> &items) {
  std::string result = bytesOf(static_cast<std::uint32_t>(items.size()), 2);
  if (items.empty())
    return result;
  result += '\1';
  std::uint32_t offset = 1;
  result += bytesOf(offset, 1);
  for (const std::string &item : items)
    result += bytesOf(offset += static_cast<std::uint32_t>(item.size()), 1);
  for (const std::string &item : items)
    result += item;
  return result;
}

/// Two glyphs, `aacute` by a standard string and `f_i` by one of its own, with the codes 65 and 66.
std::string compactProgram() {
  const auto number = [](std::size_t value) {
    return '\x1C' + bytesOf(static_cast<std::uint32_t>(value), 2);
  };
  const std::string head = std::string("\1\0\4\1", 4) + index({"Name"});
  const auto program = [&](std::size_t charset) {
    const std::string charsetBytes = '\0' + bytesOf(200, 2) + bytesOf(391, 2);
    const std::string encodingBytes = std::string("\0\2AB", 4);
    const std::string top =
        number(charset) + '\x0F' + number(charset + 5) + '\x10' + number(charset + 9) + '\x11';
    return head + index({top}) + index({"f_i"}) + index({}) + charsetBytes + encodingBytes +
           index({"a", "b", "c"});
  };
  const std::size_t charset = program(0).find(std::string("\0\0\xC8\x01\x87", 5));
  return program(charset);
}

struct FontRow {
  const char *name;
  std::string font, shown, text;
  std::vector<std::pair<int, std::string>> objects;
  std::vector<OnePage::StreamObject> streams;
};

const MapTable &maps() {
  static const MapTable table({
      {"90ms-RKSJ-H", "2 begincodespacerange <00> <80> <8140> <9FFC> endcodespacerange "
                      "2 begincidrange <20> <7e> 231 <8140> <817e> 633 endcidrange"},
      {"90ms-RKSJ-V", "/90ms-RKSJ-H usecmap /WMode 1 def 1 begincidchar <8141> 7887 endcidchar"},
      {"Adobe-Japan1-UCS2", "3 beginbfrange <00e7> <0145> <0020> <0279> <0279> <3000> "
                            "<1ecf> <1ecf> [<fe11>] endbfrange"},
      {"UniJIS-UTF16-H", "1 begincodespacerange <0000> <D7FF> endcodespacerange "
                         "1 begincidrange <3042> <3050> 843 endcidrange"},
      {"Loop", "/Loop usecmap 1 begincodespacerange <00> <FF> endcodespacerange"},
  });
  return table;
}

void expectTexts(const std::vector<FontRow> &rows) {
  for (const FontRow &row : rows) {
    OnePage page;
    page.font = row.font;
    page.objects = row.objects;
    page.streams = row.streams;
    page.content = "BT /G 10 Tf 50 700 Td " + row.shown + " Tj ET";
    EXPECT_EQ(textOf(page.file(), maps()), row.text + "|") << row.name;
  }
}

std::string simple(const std::string &rest) { return "/Subtype /Type1 /BaseFont /X " + rest; }

TEST(Fonts, EncodingsOfSimpleFonts) {
  expectTexts({
      {"standard", simple(""), R"((fi: \256 `a' \341))", "fi: fi \u2018a\u2019 \u00C6", {}, {}},
      {"Windows",
       simple("/Encoding /WinAnsiEncoding"),
       R"((\200 'a' \344\255))",
       "\u20AC 'a' \u00E4~",
       {},
       {}},
      {"Macintosh", simple("/Encoding /MacRomanEncoding"), R"((\212 \336))", "\u00E4 fi", {}, {}},
      {"Symbol", "/Subtype /Type1 /BaseFont /Symbol", "(abG)", "\u03B1\u03B2\u0393", {}, {}},
      {"Dingbats",
       "/Subtype /Type1 /BaseFont /ABCDEF+ZapfDingbats",
       "(!4)",
       "\u2701\u2714",
       {},
       {}},
      {"differences",
       simple(
           "/Encoding << /BaseEncoding /WinAnsiEncoding /Differences [65 /eacute /f_f_i /uni0416 "
           "/u1D400 /a.sc /Asmall /zerooldstyle /g12 /uniD800 200 300 /x] >>"),
       "(ABCDEFGHIz)",
       "\u00E9ffi\u0416Aaa0z",
       {},
       {}},
      {"differences by reference",
       simple("/Encoding 10 0 R"),
       "(A)",
       "\u00DF",
       {{10, "<< /Differences [11 0 R 12 0 R] >>"}, {11, "65"}, {12, "/germandbls"}},
       {}},
      {"names of Type 3 that are codes",
       "/Subtype /Type3 /FontMatrix [.01 0 0 .01 0 0] /FontBBox [0 0 70 80] /FirstChar 12 "
       "/LastChar 98 "
       "/Encoding << /Differences [12 /a12 97 /a97 /a98] >>",
       R"((b\014a))",
       "bfia",
       {},
       {}},
      {"names of Type 3 that are codes, with an upper half",
       "/Subtype /Type3 /FontMatrix [.01 0 0 .01 0 0] "
       "/Encoding << /Differences [28 /a28 97 /a97 229 /a229 255 /a255] >>",
       R"((a\034\345\377))",
       "afi\u00E5\u00DF",
       {},
       {}},
      {"names of Type 3 that are hexadecimal codes",
       "/Subtype /Type3 /FontMatrix [.01 0 0 .01 0 0] "
       "/Encoding << /Differences [27 /x1B 106 /x6A 111 /x6F] >>",
       R"((jo\033))",
       "joff",
       {},
       {}},
      {"names of Type 3 that are the characters",
       "/Subtype /Type3 /FontMatrix [.01 0 0 .01 0 0] /Encoding << /Differences [46 /. 97 /a /b] "
       ">>",
       "(ab.)",
       "ab.",
       {},
       {}},
      {"names of Type 3 that are other numbers",
       "/Subtype /Type3 /FontMatrix [.01 0 0 .01 0 0] /Encoding << /Differences [97 /g1 /g2 /a] >>",
       "(abc)",
       "a",
       {},
       {}},
  });
}

TEST(Fonts, MapsToText) {
  const auto mapped = [](const char *name, std::string map, std::string shown, std::string text) {
    return FontRow{name,
                   simple("/Encoding /WinAnsiEncoding /ToUnicode 10 0 R"),
                   std::move(shown),
                   std::move(text),
                   {},
                   {{10, "", std::move(map)}}};
  };
  expectTexts({
      mapped("characters", "2 beginbfchar <41> <00E9> <42> <D835DC00> endbfchar", "(ABC)",
             "\u00E9AC"),
      mapped("several letters", "1 beginbfchar <41> <006600660069> endbfchar", "(A)", "ffi"),
      mapped(
          "a long text", "1 beginbfchar <41> <FDFA0061> endbfchar", "(A)",
          "\u0635\u0644\u0649 \u0627\u0644\u0644\u0647 \u0639\u0644\u064A\u0647 \u0648\u0633\u0644"
          "\u0645a"),
      mapped("ranges", "2 beginbfrange <41> <43> <0061> <61> <62> [<0031> <00320033>] endbfrange",
             "(ABCab)", "abc123"),
      mapped("the last letter counts on", "1 beginbfrange <41> <42> <00780061> endbfrange", "(AB)",
             "xaxb"),
      mapped("codes of two bytes", "1 beginbfchar <0041> <0061> endbfchar", "(A)", "a"),
      mapped("the later of two", "2 beginbfchar <41> <0061> <41> <0062> endbfchar", "(A)", "b"),
      mapped("nothing, so the encoding", "1 beginbfchar <41> <> endbfchar", "(A)", "A"),
      mapped("unfinished", "1 beginbfchar <41> <0061> <42> <00", "(A)", "a"),
      mapped("upside down", "1 beginbfrange <43> <41> <0061> endbfrange", "(B)", "B"),
  });
}

TEST(Fonts, CompositeFonts) {
  const std::string identity =
      "/Subtype /Type0 /Encoding /Identity-H /DescendantFonts [<< /Subtype "
      "/CIDFontType2 /CIDSystemInfo << /Registry (Adobe) /Ordering ";
  expectTexts({
      {"identity with a map",
       identity + "(Identity) >> >>] /ToUnicode 10 0 R",
       "<00010002>",
       "ab",
       {},
       {{10, "", "1 beginbfrange <0001> <0002> <0061> endbfrange"}}},
      {"identity of a known collection", identity + "(Japan1) >> >>]", "<00E800E9>", "!\"", {}, {}},
      {"identity and nothing else", identity + "(Identity) >> >>]", "<00410042>", "3", {}, {}},
      {"predefined, of one and two bytes",
       "/Subtype /Type0 /Encoding /90ms-RKSJ-H /DescendantFonts [<< /CIDSystemInfo << /Registry "
       "(Adobe) /Ordering (Japan1) >> >>]",
       "<41814042>",
       "A B",
       {},
       {}},
      {"predefined, downwards, on another one",
       "/Subtype /Type0 /Encoding /90ms-RKSJ-V /DescendantFonts [<< /CIDSystemInfo << /Registry "
       "(Adobe) /Ordering (Japan1) >> >>]",
       "<41814142>",
       "A\u3001B",
       {},
       {}},
      {"predefined, of characters",
       "/Subtype /Type0 /Encoding /UniJIS-UTF16-H /DescendantFonts [<< >>]",
       "<30423044>",
       "\u3042\u3044",
       {},
       {}},
      {"embedded",
       "/Subtype /Type0 /Encoding 10 0 R /DescendantFonts [<< /CIDSystemInfo << /Registry (Adobe) "
       "/Ordering (Japan1) >> >>]",
       "<01F00102>",
       "!\"",
       {},
       {{10, "/UseCMap /Loop",
         "2 begincodespacerange <00> <7F> <F000> <F0FF> endcodespacerange "
         "2 begincidchar <01> 232 <02> 233 endcidchar"}}},
      {"unknown", "/Subtype /Type0 /Encoding /Unheard-Of-H", "<0041>", "3", {}, {}},
      {"maps that build on themselves",
       "/Subtype /Type0 /Encoding /Loop /DescendantFonts [<< >>] /ToUnicode 10 0 R",
       "<41>",
       "a",
       {},
       {{10, "/UseCMap 10 0 R", "/Loop usecmap 1 beginbfchar <41> <0061> endbfchar"}}},
  });
}

TEST(Fonts, ReadAMapOnce) {
  class CountedMaps final : public CharacterMaps {
  public:
    [[nodiscard]] std::string read(std::string_view name) const override {
      ++reads;
      return maps().read(name);
    }
    mutable int reads = 0;
  } counted;
  OnePage page;
  page.content = "BT 50 700 Td /G 10 Tf <41> Tj /H 10 Tf <42> Tj /I 10 Tf <43> Tj ET";
  page.font = "/Subtype /Type0 /Encoding /90ms-RKSJ-V /DescendantFonts [<< /CIDSystemInfo << "
              "/Registry (Adobe) /Ordering (Japan1) >> >>]";
  page.resources = "/Font << /G 6 0 R /H << " + page.font + " >> /I 10 0 R >>";
  page.objects = {{10, "<< " + page.font + " >>"}};
  EXPECT_EQ(textOf(page.file(), counted), "ABC|");
  EXPECT_EQ(counted.reads, 3);
}

TEST(Fonts, WhatProgramsSay) {
  const std::string typeOne =
      "%!PS-AdobeFont-1.0\n/Encoding 256 array 0 1 255 {1 index exch /.notdef "
      "put} for dup 65/eacute put\ndup 8#102 /germandbls put readonly def "
      "currentfile eexec \x80\x81";
  const auto with = [](const char *key) {
    return "/BaseFont /X /FontDescriptor << " + std::string(key) + " 10 0 R >> ";
  };
  const std::string trueType = "/Subtype /TrueType " + with("/FontFile2");
  const std::string composite =
      "/Subtype /Type0 /Encoding /Identity-H /DescendantFonts [<< " + with("/FontFile2");
  const std::string symbols = openTypeProgram({{3, 0, 0xF041, 0xF050, 3}, {3, 1, 0x61, 0x70, 3}});
  expectTexts({
      {"Type 1",
       "/Subtype /Type1 " + with("/FontFile"),
       "(ABC)",
       "\u00E9\u00DF",
       {},
       {{10, "", typeOne}}},
      {"Type 1 under differences",
       "/Subtype /Type1 /Encoding << /Differences [66 /a] >> " + with("/FontFile"),
       "(AB)",
       "\u00E9a",
       {},
       {{10, "", typeOne}}},
      {"compact",
       "/Subtype /Type1 " + with("/FontFile3"),
       "(ABC)",
       "\u00E1fi",
       {},
       {{10, "", compactProgram()}}},
      {"TrueType, symbols", trueType, "(AB)", "ab", {}, {{10, "", symbols}}},
      {"TrueType, codes of the Macintosh",
       trueType,
       "(AB)",
       "ab",
       {},
       {{10, "", openTypeProgram({{1, 0, 0x41, 0x50, 3}, {0, 3, 0x61, 0x70, 3}})}}},
      {"TrueType that says nothing", trueType, "(AB)", "AB", {}, {{10, "", "none"}}},
      {"composite, by glyph", composite + ">>]", "<00030004>", "ab", {}, {{10, "", symbols}}},
      {"composite, by a table of glyphs",
       composite + "/CIDToGIDMap 11 0 R >>]",
       "<00010000>",
       "ba",
       {},
       {{10, "", symbols}, {11, "", std::string("\0\3\0\4", 4)}}},
  });
}

TEST(Fonts, DamagedProgramsSayLess) {
  const std::string programs[] = {compactProgram(), openTypeProgram({{3, 1, 0x61, 0x70, 3}}),
                                  openTypeProgram({{1, 0, 0, 0xFFFF, 0}, {3, 10, 1, 0xFFFF, 1}})};
  for (const std::string &program : programs) {
    for (std::size_t size = 0; size < std::min<std::size_t>(program.size(), 120); ++size) {
      OnePage page;
      page.font = simple("/FontDescriptor << /FontFile3 10 0 R >>");
      page.streams = {{10, "", program.substr(0, size)}};
      page.content = "BT /G 10 Tf (ABC) Tj /F 9 Tf (end) Tj ET";
      EXPECT_NE(textOf(page.file()).find("end"), std::string::npos) << size;
    }
  }
}

TEST(Fonts, Widths) {
  struct Row {
    const char *name;
    std::string font, shown, text;
  };
  const std::string composite = "/Subtype /Type0 /Encoding /Identity-H /ToUnicode 10 0 R "
                                "/DescendantFonts [<< /DW 500 /W ";
  const Row rows[] = {
      {"given", simple("/FirstChar 97 /Widths [1000 100]"), "(a) Tj 10 0 Td (b) Tj 1 0 Td (a)",
       "aba"},
      {"given as less", simple("/FirstChar 97 /Widths [500]"), "(a) Tj 10 0 Td (b)", "a b"},
      {"missing", simple("/FirstChar 98 /Widths [1] /FontDescriptor << /MissingWidth 1000 >>"),
       "(a) Tj 10 0 Td (b)", "ab"},
      {"of a standard font", "/Subtype /Type1 /BaseFont /Courier", "(i) Tj 6 0 Td (i)", "ii"},
      {"composite", composite + "[97 [1000] 98 99 100] >>]",
       "<0061> Tj 10 0 Td <0062> Tj 1 0 Td <0061>", "aba"},
      {"composite, others", composite + "[] >>]", "<0061> Tj 5 0 Td <0062> Tj 8 0 Td <0063>",
       "ab c"},
      {"of Type 3",
       "/Subtype /Type3 /FontMatrix [.01 0 0 .01 0 0] /FontBBox [0 0 60 80] /FirstChar 97 /Widths "
       "[60 60] "
       "/Encoding << /Differences [97 /a /b] >>",
       "(a) Tj 6 0 Td (b) Tj 8 0 Td (a)", "ab a"},
  };
  for (const Row &row : rows) {
    OnePage page;
    page.font = row.font;
    page.streams = {{10, "", "1 beginbfrange <0061> <007A> <0061> endbfrange"}};
    page.content = "BT /G 10 Tf 50 700 Td " + row.shown + " Tj ET";
    EXPECT_EQ(textOf(page.file()), row.text + "|") << row.name;
  }
}

TEST(Fonts, ScriptsAndAccents) {
  const std::string accents = simple("/Encoding << /Differences [1 /acute /dotlessi /cedilla] >>");
  const std::string hebrew =
      simple("/FirstChar 1 /Widths [500 500 500 500 500 500 500] /Encoding << "
             "/Differences [1 /afii57664 /afii57665 /afii57666 /uniFB4F] >>");
  const std::string han = "/Subtype /Type0 /Encoding /UniJIS-UTF16-H /DescendantFonts [<< >>]";
  expectTexts({
      {"an accent before its letter", accents, R"([(caf\001) 400 (e)] TJ ())", "caf\u00E9", {}, {}},
      {"on a letter without its dot", accents, R"((\001) Tj 1 0 Td (\002))", "\u00ED", {}, {}},
      {"an accent behind its letter", accents, R"([(c) 400 (\003a)] TJ ())", "\u00E7a", {}, {}},
      {"an accent by itself",
       accents,
       R"((a) Tj 20 0 Td (\001) Tj 20 0 Td (b))",
       "a \u0301 b",
       {},
       {}},
      {"from right to left, as it is seen",
       hebrew,
       R"((\003\002\001))",
       "\u05D0\u05D1\u05D2",
       {},
       {}},
      {"numbers and other scripts within",
       hebrew,
       R"((\003\002 1.5 Ab 9 \001))",
       "\u05D0 Ab 9 1.5 \u05D1\u05D2",
       {},
       {}},
      {"within other scripts",
       hebrew,
       R"((see \002 12 \001, so))",
       "see \u05D0 12 \u05D1, so",
       {},
       {}},
      {"letters in their order, each further left",
       hebrew,
       R"((\001) Tj -5 0 Td (\002) Tj -5 0 Td (\003) Tj -8 0 Td (\001))",
       "\u05D0\u05D1\u05D2 \u05D0",
       {},
       {}},
      {"a ligature stays as it is", hebrew, R"((\001\004))", "\u05D0\u05DC\u05D0", {}, {}},
      {"no blank where none is written",
       han,
       "<304230423042> Tj 0 -12 Td <3044>",
       "\u3042\u3042\u3042\u3044",
       {},
       {}},
      {"unless the text is another", han, "<3042> Tj 0 -50 Td <3044>", "\u3042 \u3044", {}, {}},
  });
}

} // namespace
} // namespace searchsystem
