#include "pdf_reader/CObjectList.h"
#include "pdf_reader/CPDFCatalog.h"
#include "pdf_reader/CPDFContents.h"
#include "pdf_reader/CPDFKids.h"
#include "pdf_reader/CPDFPages.h"
#include "pdf_reader/CPDFStrmObjVorda.h"
#include "pdf_reader/CPDFTrailer.h"
#include "pdf_reader/CPDFXRefTable.h"
#include "testing/TextStream.h"
#include "tests/pdf_reader/Tokens.h"

#include <algorithm>
#include <climits>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace searchsystem {

namespace {

/// Hands the lines of a text to a section as a parse does. Gives the last result, with a dot when
/// the section has ended, and the tokens left.
std::string parseLines(CPDFSection &section, const std::string &lines) {
  CParamArray tokens;
  char goOn = 1;
  int result = 1;
  section.ReleaseParse();
  std::istringstream stream(lines);
  for (std::string line; std::getline(stream, line);) {
    CParamArray added;
    fill(added, line);
    tokens.AddParam(&added);
    result = section.ParseLine(&tokens, &goOn, nullptr);
    if (result != 1 || goOn == 0)
      break;
  }
  return std::to_string(result) + (goOn == 0 ? "." : "") + " " + joined(tokens);
}

std::string textOf(const tagOBJECTRECORD &record) {
  std::string text = std::to_string(record.number) + " " + std::to_string(record.generation);
  return text + " " + std::string(record.flag == 0 ? 0 : 1, static_cast<char>(record.flag));
}

/// The records that `get` gives for 0, 1 and so on, up to the first that is null.
template <class Get> std::string recordsOf(const Get &get) {
  std::string text;
  for (int i = 0; get(i) != nullptr; ++i)
    text += textOf(*get(i)) + ";";
  return text;
}

std::string textOf(const CPDFContents &contents) {
  auto size = static_cast<unsigned long>(contents.GetTextLength());
  std::string text(size, '?');
  contents.GetTextString(reinterpret_cast<unsigned char *>(text.data()), &size);
  return text.substr(0, size);
}

TEST(Section, NullArgumentsFail) {
  std::tuple<CPDFSection, CPDFXRefTable, CPDFTrailer, CPDFCatalog, CPDFPages, CPDFKids,
             CPDFContents, CPDFStrmObjVorda>
      sections;
  const auto check = [](CPDFSection &section) {
    CParamArray tokens;
    char goOn = 1;
    EXPECT_EQ(section.ParseLine(nullptr, &goOn, nullptr), 0);
    EXPECT_EQ(section.ParseLine(&tokens, nullptr, nullptr), 0);
    EXPECT_EQ(section.ParseLine(&tokens, &goOn, nullptr), 1);
    EXPECT_EQ(section.Parse(nullptr), 0);
    EXPECT_EQ(section.Release(), 1);
    EXPECT_EQ(section.ReleaseParse(), 1);
  };
  std::apply([&](auto &...section) { (check(section), ...); }, sections);
}

TEST(Section, ReadsOverOneObject) {
  CPDFSection section;
  EXPECT_EQ(parseLines(section, "1 0 obj << >> endobj 2 0 obj"), "1. 2|0|obj");
  EXPECT_EQ(parseLines(section, "endobj 1 0 obj obj"), "1 ");
}

/// Collects the groups that a parse hands over.
class Groups : public CPDFSection {
public:
  int ParseLine(CParamArray *tokens, char * /*goOn*/, void * /*context*/) override {
    text += joined(*tokens) + "/";
    return tokens->Release();
  }
  std::string text;
};

TEST(Section, JoinsWhatTheEdgeOfABlockCuts) {
  const std::string rest(2000, 'r');
  // An edge of a block stands at the bar.
  const struct {
    const char *name, *text, *groups;
  } rows[] = {{"token", "a b|c d\ne\n", "a|bc|d/e/"},
              {"before the line end", "a b|\nc\n", "a|b/c/"},
              {"after the line end", "a b\n|c\n", "a|b/c/"},
              {"inside CR LF", "a b\r|\nc\n", "a|b/c/"},
              {"between tokens", "a |b\nc\n", "a|b/c/"},
              {"between blanks", "a | b\nc\n", "a|b/c/"},
              {"behind the last token", "a |\nc\n", "a|c/"},
              {"and more empty lines", "a |\n\n% x\nc\n", "a|c/"},
              {"before a comment", "a |% x\nc\n", "a|c/"},
              {"inside a comment", "a % x|y\nc\n", "a|y/c/"},
              {"inside a comment alone", "% x|y\nc\n", "y/c/"},
              {"after a percent sign", "a %|x\nc\n", "a|c/"},
              {"after one of a token", "a b%|x\nc\n", "a|b/c/"},
              {"inside a doubled one", "a b%|%x\nc\n", "a|b%%x/c/"},
              {"after a doubled one", "a b%%|%x\nc\n", "a|b%%/c/"},
              {"after one that ends the line", "a %|\nc\n", "a|%/c/"}};
  for (const auto &row : rows) {
    const std::string text = row.text;
    const std::size_t edge = text.find('|');
    // The edge is met at the end of the first block, and of the third by a token that fills one.
    for (const std::size_t blocks : {1, 3}) {
      const std::string lead(blocks * 1024 - edge - 1, 'l');
      TextStream stream(lead + "\n" + text.substr(0, edge) + text.substr(edge + 1) + rest);
      Groups groups;
      EXPECT_EQ(groups.Parse(&stream), 1);
      EXPECT_EQ(groups.text, lead + "/" + row.groups + rest + "/") << row.name << " " << blocks;
    }
  }
}

TEST(Section, HandsOverALineAtTheEndOfTheFileButNotWhatWaitsThere) {
  for (const auto &[tail, groups] : {std::pair("a b", "a|b/"), {"a %", "a|%/"}, {"a", "a/"}}) {
    TextStream stream(tail);
    Groups section;
    EXPECT_EQ(section.Parse(&stream), 1);
    EXPECT_EQ(section.text, groups);
    EXPECT_EQ(section.Parse(&stream), 1) << "at the end";
    EXPECT_EQ(section.text, groups);
  }
  TextStream stream(std::string(1022, ' ') + "a \n");
  Groups section;
  EXPECT_EQ(section.Parse(&stream), 1);
  EXPECT_EQ(section.text, "");
}

TEST(Section, LooksForAKeywordBackwardsInBlocks) {
  const struct {
    const char *name;
    std::size_t size, keyword;
    long found;
    int result;
  } rows[] = {
      {"at the end", 5000, 4993, 4993, 1},     {"in an early block", 5000, 3000, 3000, 1},
      {"cut by an edge", 5000, 3970, 3970, 1}, {"too near to the beginning", 5000, 3, -1, 0},
      {"in half a block", 400, 300, -1, 0},    {"rounds without progress", 1017, 3, -1, 1},
      {"after a full block", 2034, 3, -1, 1}};
  const auto *const keyword = reinterpret_cast<const unsigned char *>("trailer");
  for (const auto &row : rows) {
    std::string text(row.size, '\n');
    text.replace(row.keyword, 7, "trailer");
    TextStream stream(text);
    long found = 0;
    EXPECT_EQ(CPDFSection::FindKeyWordRev(&stream, stream.GetSize(), keyword, &found), row.result)
        << row.name;
    EXPECT_EQ(found, row.found) << row.name;
  }
  long found = 0;
  TextStream stream("x");
  EXPECT_EQ(CPDFSection::FindKeyWordRev(&stream, 0, keyword, &found), 1);
  EXPECT_EQ(CPDFSection::FindKeyWordRev(&stream, 1, nullptr, &found), 0);
}

TEST(XRefTable, ReadsSubsections) {
  const struct {
    const char *name, *lines, *result;
    std::vector<unsigned long> offsets;
  } rows[] = {{"entries", "xref\n0 2\n9 0 f\n17 0 n", "1 ", {9, 17, 0}},
              {"anything before", "1 2 3 xref\n1 1\n17 0 n", "1 ", {0, 17}},
              {"entry on two lines", "xref\n1 1\n17 0\nn", "1 ", {0, 17}},
              {"header not alone", "xref\n0 1 x", "1 0|1|x", {0}},
              {"two subsections", "xref\n0 1\n9 0 f\n2 1\n5 0 n", "1 ", {9, 0, 5}},
              {"nothing", "xref\n0 0\n1 1", "1. 0|0", {0}},
              {"outside the table", "xref\n8 1", "1. 8|1", {0}},
              {"negative", "xref\n-1 1", "1. -1|1", {0}},
              {"beyond the table", "xref\n7 2\n1 0 n\n2 0 n", "1 ", {0, 0, 0, 0, 0, 0, 0, 1, 2}},
              {"wrapped", "xref\n0 2\n4294967301 0 n\n-1 65536 n", "1 ", {5, 0xFFFFFFFF}}};
  for (const auto &row : rows) {
    CPDFXRefTable table;
    EXPECT_EQ(table.SetTableSize(8), 1);
    EXPECT_EQ(parseLines(table, row.lines), row.result) << row.name;
    for (std::size_t i = 0; i < row.offsets.size(); ++i)
      EXPECT_EQ(table.GetOffset({static_cast<int>(i), 0, 'R'}), row.offsets[i]) << row.name << i;
  }
}

TEST(XRefTable, KeepsEntriesOfAnyNumber) {
  CPDFXRefTable table;
  EXPECT_EQ(table.SetTableSize(2'000'000'000), 1);
  EXPECT_EQ(table.SetRefTable(1'900'000'000, 7, 1, 'n'), 1);
  for (int i = 5000; i >= 0; --i)
    EXPECT_EQ(table.SetRefTable(i, static_cast<unsigned long>(i), 0, 'n'), 1);
  EXPECT_EQ(table.SetRefTable(-1, 7, 0, 'n'), 0);
  EXPECT_EQ(table.SetRefTable(INT_MAX, 7, 0, 'n'), 0);
  EXPECT_EQ(table.GetOffset({1'900'000'000, 1, 'R'}), 7UL);
  EXPECT_EQ(table.GetOffset({1'900'000'000, 0, 'R'}), 0UL) << "other generation";
  for (int i = 0; i <= 5000; ++i)
    EXPECT_EQ(table.GetOffset({i, 0, 'R'}), static_cast<unsigned long>(i));
  EXPECT_EQ(table.SetTableSize(-1), 1);
  EXPECT_EQ(table.GetOffset({1, 0, 'R'}), 0UL);
  EXPECT_EQ(table.SetRefTable(10, 7, 0, 'n'), 1);
  EXPECT_EQ(table.GetOffset({10, 0, 'R'}), 7UL) << "grown";
}

TEST(XRefTable, EndsAtTheTrailer) {
  const struct {
    const char *name, *text;
    long position;
    unsigned long offset;
  } rows[] = {{"dictionary below", "xref\n1 1\n7 0 n\ntrailer\n<<\n", 15, 7},
              {"on its line", "xref\n1 1\n7 0 n\n trailer << /Size 2 >>\n", 16, 7},
              {"part of a word", "xref\n1 1\n7 0 n\ntrailers x\n", 15, 7},
              {"in the middle of a line", "xref\n1 1\n7 0 n\na trailer\n", 25, 7},
              {"entries missing", "xref\n1 2\n7 0 n\ntrailer << >>\n", 15, 7},
              {"section ended before", "xref\n9 1\n7 0 n\ntrailer\n", 23, 0}};
  for (const auto &row : rows) {
    TextStream stream(row.text);
    CPDFXRefTable table;
    table.SetTableSize(8);
    EXPECT_EQ(table.Parse(&stream), 1) << row.name;
    EXPECT_EQ(stream.Tell(), row.position) << row.name;
    EXPECT_EQ(table.GetOffset({1, 0, 'R'}), row.offset) << row.name;
  }
}

TEST(XRefTable, ReadsTheLastEntryWhereverTheEdgeOfABlockStands) {
  for (std::size_t lead = 980; lead < 1024; ++lead) {
    const std::string start = std::string(lead, 'x') + "\nxref\n1 1\n0000000007 00000 n \n";
    TextStream stream(start + "trailer\n<< >>\n");
    CPDFXRefTable table;
    table.SetTableSize(8);
    EXPECT_EQ(table.Parse(&stream), 1);
    EXPECT_EQ(stream.Tell(), static_cast<long>(start.size())) << lead;
    EXPECT_EQ(table.GetOffset({1, 0, 'R'}), 7UL) << lead;
  }
}

TEST(XRefTable, TakesWholeLinesOnlyForHeaders) {
  // Behind "9 9", which would end the section, the edge of a block may stand.
  for (std::size_t lead = 980; lead < 1024; ++lead) {
    const std::string start = std::string(lead, 'x') + "\nxref\n9 9 x\n";
    TextStream stream(start + "trailer\n<< >>\n" + std::string(1000, 'x'));
    CPDFXRefTable table;
    table.SetTableSize(8);
    EXPECT_EQ(table.Parse(&stream), 1);
    EXPECT_EQ(stream.Tell(), static_cast<long>(start.size())) << lead;
  }
}

/// A text of which only the beginning can be read.
class BrokenStream : public TextStream {
public:
  BrokenStream(std::string text, long readable)
      : TextStream(std::move(text)), readable_(readable) {}

  int Read(void *buffer, long count, long *done) override {
    return Tell() + count <= readable_ ? TextStream::Read(buffer, count, done) : 0;
  }

private:
  long readable_;
};

TEST(XRefTable, FailsWithItsStream) {
  std::string entries = "xref\n1 100\n";
  for (int i = 0; i < 100; ++i)
    entries += "0000000007 00000 n \n";
  for (const long readable : {0L, 1024L, 1L << 20}) {
    BrokenStream stream(entries, readable);
    CPDFXRefTable table;
    table.SetTableSize(200);
    const bool isReadable = readable > static_cast<long>(entries.size());
    EXPECT_EQ(table.Parse(&stream), isReadable ? 1 : 0) << readable;
    EXPECT_EQ(table.GetOffset({1, 0, 'R'}), readable > 0 ? 7UL : 0UL) << "read before";
    EXPECT_EQ(table.GetOffset({100, 0, 'R'}), isReadable ? 7UL : 0UL);
  }
}

TEST(Trailer, ReadsItsKeys) {
  const struct {
    const char *name, *lines, *result, *root;
    int size, offset;
  } rows[] = {{"all", "trailer\n<< /Size 5 /Root 1 0 R >>\nstartxref\n99", "1. ", "1 0 R", 5, 99},
              {"root on two lines", "trailer << /Root 3\n1 R", "1 ", "3 1 R", -1, 0},
              {"size at the end", "trailer /Size", "1 /Size", "", -1, 0},
              {"before the keyword", "/Size 5 startxref 7", "1 ", "", -1, 0},
              {"others", "trailer /Prev 9 /ID [ <00> ] %%EOF", "1 ", "", -1, 0},
              {"large", "trailer /Size 99999999999 startxref 4294967297", "1. ", "", INT_MAX, 1}};
  for (const auto &row : rows) {
    CPDFTrailer trailer;
    EXPECT_EQ(parseLines(trailer, row.lines), row.result) << row.name;
    int size = -1;
    tagOBJECTRECORD root;
    EXPECT_EQ(trailer.GetXRefKeySize(&size), row.size == -1 ? 0 : 1) << row.name;
    EXPECT_EQ(size, row.size) << row.name;
    EXPECT_EQ(trailer.GetRootInfo(&root) == 1 ? textOf(root) : "", row.root) << row.name;
    EXPECT_EQ(trailer.GetXRefOffset(), row.offset) << row.name;
    EXPECT_EQ(trailer.GetXRefKeySize(nullptr), 0);
    EXPECT_EQ(trailer.SetRootInfo(nullptr), 0);
  }
}

TEST(Trailer, IsFoundFromBothSides) {
  const std::string lead(1000, 'x');
  const std::string text = lead + "\n a trailer\n  trailer << >>\ntrailer >>\n" + lead;
  TextStream stream(text);
  EXPECT_EQ(CPDFTrailer::Move1stTrailer(&stream), 1);
  EXPECT_EQ(stream.Tell(), static_cast<long>(text.rfind("trailer")));
  for (std::size_t start = 0; start < 1000; start += 1) {
    stream.Seek(static_cast<long>(start), streamSeekBegin);
    EXPECT_EQ(CPDFTrailer::MoveNextTrailer(&stream), 1);
    EXPECT_EQ(stream.Tell(), static_cast<long>(text.find("trailer <<"))) << start;
  }
  stream.Seek(static_cast<long>(text.rfind("trailer")) + 1, streamSeekBegin);
  EXPECT_EQ(CPDFTrailer::MoveNextTrailer(&stream), 1);
  EXPECT_EQ(stream.Tell(), stream.GetSize());
  TextStream none(lead);
  EXPECT_EQ(CPDFTrailer::Move1stTrailer(&none), 0);
}

TEST(ObjectList, TakesTokensInThrees) {
  const struct {
    const char *tokens, *records;
    int result = 1;
  } rows[] = {{"3 0 R", "3 0 R;"},
              {"[ 3 0 R 4 65537 x ]", "3 0 R;4 1 x;"},
              {"[ 3 0 R 4 0 ]", "3 0 R;"},
              {"3 0 R 4 0 R", "3 0 R;4 0 R;"},
              {"[ 3 0", ""},
              {"[ ]", "", 0}};
  for (const auto &row : rows) {
    CParamArray tokens;
    fill(tokens, row.tokens);
    CObjectList list;
    EXPECT_EQ(list.Parse(&tokens), row.result) << row.tokens;
    const std::string records = recordsOf([&](int i) { return list.GetObject(i); });
    EXPECT_EQ(records, row.records) << row.tokens;
    EXPECT_EQ(list.GetCount(), std::count(records.begin(), records.end(), ';'));
    EXPECT_EQ(list.GetObject(-1), nullptr);
  }
  EXPECT_EQ(CObjectList().AddObject(nullptr), 0);
}

TEST(PageTree, ReadsReferences) {
  const struct {
    const char *name, *lines, *result, *pages, *kids, *contents;
  } rows[] = {
      {"one line", "2 0 obj << /Pages 9 1 R /Kids [ 3 0 R 4 0 R ] /Contents 7 0 R >> endobj x",
       "1. x", "9 1 R", "3 0 R;4 0 R;", "7 0 R;"},
      {"before the object", "/Pages 9 1 R /Kids 3 0 R /Contents 7 0 R obj", "1 ", "0 0 ", "", ""},
      {"value on the next line", "obj /Pages\n9 1 R /Kids\n[ 3 0 R ] /Contents\n[ 7 0 R ]", "1 ",
       "9 1 R", "3 0 R;", "7 0 R;"},
      {"array on two lines", "obj /Kids [ 3 0 R\n4 0 R ] /Contents [ 7 0 R\n]", "1 ", "0 0 ", "",
       ""},
  };
  for (const auto &row : rows) {
    CPDFCatalog catalog;
    CPDFPages pages;
    CPDFKids page;
    EXPECT_EQ(parseLines(catalog, row.lines), row.result) << row.name;
    EXPECT_EQ(parseLines(pages, row.lines), row.result) << row.name;
    EXPECT_EQ(parseLines(page, row.lines), row.result) << row.name;
    tagOBJECTRECORD record;
    catalog.GetPagesInfo(&record);
    EXPECT_EQ(textOf(record), row.pages) << row.name;
    EXPECT_EQ(recordsOf([&](int i) { return pages.GetKidsInfo(i); }), row.kids) << row.name;
    const std::string contents = recordsOf([&](int i) { return page.GetContentsInfo(i); });
    EXPECT_EQ(contents, row.contents) << row.name;
    EXPECT_EQ(page.GeContentsCount(), std::count(contents.begin(), contents.end(), ';'));
  }
}

TEST(PageTree, FailsOnTooShortValues) {
  CPDFPages pages;
  CPDFKids page;
  EXPECT_EQ(parseLines(pages, "obj /Kids [ ]").front(), '0');
  EXPECT_EQ(parseLines(page, "obj /Contents [ ]").front(), '0');
  EXPECT_EQ(parseLines(page, "obj /Contents 7\n0 R").front(), '0');
}

TEST(PageTree, CountsKidsAsTheDocumentSays) {
  const std::pair<const char *, unsigned> rows[] = {
      {"obj /Count 12 /Kids [ 3 0 R ]", 12}, {"obj /Count\n3", 3},
      {"obj /Count -1", 0xFFFFFFFF},         {"obj /Count x", 0},
      {"obj /Count 1 /Count 2", 2},          {"/Count 1 obj", 0}};
  for (const auto &[lines, count] : rows) {
    CPDFPages pages;
    parseLines(pages, lines);
    EXPECT_EQ(pages.GetKidsCount(), count) << lines;
    EXPECT_EQ(pages.GetKidsInfo(1), nullptr);
  }
}

TEST(Contents, CollectsShownText) {
  const struct {
    const char *name, *lines, *result, *text;
  } rows[] = {
      {"one line", "BT /F1 12 Tf <414243> Tj ET", "1 ", "ABC"},
      {"several strings", "BT\n<4142> Tj\n<43> Tj <44> Tj\nET", "1 ", "ABCD"},
      {"literal string", "BT <41> Tj (ABC) Tj <42> Tj", "0 (ABC)|Tj|<42>|Tj", "A"},
      {"without a blank", "BT <41>Tj <42> Tj", "1 ", ""},
      {"operator on the next line", "BT <41>\nTj <42> Tj", "1 ", "B"},
      {"more operands", "BT 1 <41> Tj <42> Tj", "1 ", "B"},
      {"array", "BT [ <41> ] TJ <42> TJ <43> Tj", "1 ", "C"},
      {"every operator", "BT 1 Tc 1 Tw 1 Tz 1 TL 1 Tr 1 Ts 1 Tm <41> Tj 1 Td <42> Tj", "1 ", "A"},
      {"NUL in the text", "BT <0041> Tj <41004200> Tj", "1 ", "A"},
      {"scan across ET", "BT x ET y Tj <41> Tj", "1 ", "A"},
      {"after ET", "BT ET\nBT <41> Tj ET", "1 ", "A"},
      {"graphics first", "q BT <41> Tj", "1. q|BT|<41>|Tj", ""},
      {"graphics after ET", "BT <41> Tj ET q", "1. q", "A"},
      {"endobj in the stream", "endobj", "1. endobj", ""},
      {"next object", "BT <41> Tj ET endstream endobj\nBT\n5 0 obj\nstream\nBT <42> Tj", "1 ",
       "AB"},
      {"text goes on over objects", "BT <41> Tj endstream endobj\n5 0 obj stream <42> Tj", "1 ",
       "A"},
  };
  for (const auto &row : rows) {
    CPDFContents contents;
    EXPECT_EQ(parseLines(contents, std::string("4 0 obj << >> stream\n") + row.lines), row.result)
        << row.name;
    EXPECT_EQ(textOf(contents), row.text) << row.name;
  }
}

TEST(Contents, GivesItsTextInPart) {
  CPDFContents contents;
  EXPECT_EQ(contents.GetTextLength(), 0);
  parseLines(contents, "obj stream BT <4142> Tj <43> Tj");
  EXPECT_EQ(contents.GetTextLength(), 4);
  unsigned char text[4] = {};
  unsigned long size = 2;
  EXPECT_EQ(contents.GetTextString(text, &size), 1);
  EXPECT_EQ(std::string(text, text + sizeof text), std::string("AB\0\0", 4));
  EXPECT_EQ(size, 2UL);
  std::string rest(7, '?');
  size = 6;
  EXPECT_EQ(contents.GetTextString(reinterpret_cast<unsigned char *>(rest.data()), &size), 1);
  EXPECT_EQ(rest, std::string("ABC\0\0\0?", 7)) << "zeros behind the text";
  EXPECT_EQ(size, 3UL);
  EXPECT_EQ(contents.GetTextString(nullptr, &size), 0);
  EXPECT_EQ(contents.GetTextString(text, nullptr), 0);
}

TEST(Mark, IsTheFirstLineOfTheData) {
  const struct {
    const char *name, *text;
    int isVorda;
  } rows[] = {
      {"mark", "obj << >>\nstream\n% VORDA_PFINF_TYPE\nq", 1},
      {"longer", "obj stream\n%\tVORDA_PFINF_TYPES\n", 1},
      {"shorter", "obj stream\n% VORDA_PFINF_TYP\n", 0},
      {"without a blank", "obj stream\n%VORDA_PFINF_TYPE\n", 0},
      {"third word", "obj stream\n% VORDA_PFINF_TYPE x\n", 0},
      {"nothing else", "obj stream\n%\nVORDA_PFINF_TYPE\n", 0},
      {"after an operator", "obj stream\nq\n% VORDA_PFINF_TYPE\n", 0},
      {"not in the stream", "obj\n% VORDA_PFINF_TYPE\nstream\n", 0},
      {"in the next stream", "obj stream\nendstream endobj\nobj stream\n% VORDA_PFINF_TYPE\n", 1}};
  for (const auto &row : rows) {
    for (const std::size_t lead : {1, 1000, 1010, 1020, 1030}) {
      TextStream stream(std::string(lead, 'x') + "\n" + row.text);
      CPDFStrmObjVorda mark;
      EXPECT_EQ(mark.Parse(&stream), 1);
      EXPECT_EQ(mark.IsVorda(), row.isVorda) << row.name << " " << lead;
    }
  }
}

} // namespace

} // namespace searchsystem
