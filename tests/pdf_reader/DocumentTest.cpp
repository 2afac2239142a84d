#include "pdf_reader/CPDFContents.h"
#include "pdf_reader/CPDFFile.h"
#include "platform/foundation/NSString.h"
#include "testing/DocumentWriter.h"
#include "testing/TemporaryTree.h"
#include "testing/TextStream.h"

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

namespace searchsystem {

namespace {

using Style = DocumentWriter::Style;

constexpr unsigned long macRoman = 0, macJapanese = 1, isoLatin1 = 0x0201;

/// A document that tells how much of it was read.
class CountedDocument : public CPDFFile {
public:
  int Read(void *buffer, long count, long *done) override {
    bytesRead += static_cast<std::size_t>(count);
    return CPDFFile::Read(buffer, count, done);
  }
  std::size_t bytesRead = 0;
};

class Document : public testing::Test {
protected:
  /// "closed" when the document does not open, else whether the keyword is found.
  std::string search(const std::string &text, const std::string &keyword,
                     bool isCaseSensitive = true, unsigned long encoding = macRoman) {
    // A file that is emptied and written anew goes to the disk at once, a new one does not.
    std::filesystem::remove(tree_.path("document.pdf"));
    const std::string path = tree_.file("document.pdf", text);
    CountedDocument document;
    if (document.Open(path.c_str()) != 1)
      return "closed";
    const auto string = NSString::create(keyword);
    const int found = document.FindText(string.get(), isCaseSensitive, encoding);
    EXPECT_EQ(document.FindText(string.get(), isCaseSensitive, encoding), found) << "asked again";
    bytesRead_ = document.bytesRead / 2;
    return found == 1 ? "found" : "absent";
  }

  TemporaryTree tree_;
  std::size_t bytesRead_ = 0;
};

/// Makes a document large enough to be opened at all.
DocumentWriter &padded(DocumentWriter &pdf) { return pdf.filler(600); }

TEST_F(Document, IsSearchedInEveryLayout) {
  using Write = std::function<void(DocumentWriter &)>;
  const auto twoPages = [](auto &pdf) -> auto & {
    padded(pdf).pages({3, 5}).page(3, {4}).shown(4, {"first", "page"});
    return pdf.page(5, {6, 7}).shown(6, {"second"}).shown(7, {"third"});
  };
  const auto twoOf = [](auto &pdf, const std::string &first, const std::string &second) -> auto & {
    return padded(pdf).book({first, pdf.showing({second})});
  };
  const Write whole = [&](auto &pdf) { twoPages(pdf).section(); };
  const Write graphicsFirst = [&](auto &pdf) {
    twoOf(pdf, "q" + pdf.end() + pdf.showing({"no"}), "yes").section();
  };
  const struct {
    const char *name, *keyword, *answer;
    Write write;
  } rows[] = {
      {"one section", "third", "found", whole},
      {"other case", "Third", "absent", whole},
      {"not there", "fourth", "absent", whole},
      {"over two strings", "firstpage", "found", whole},
      {"over two pages", "pagesecond", "found", whole},
      {"empty keyword", "", "absent", whole},
      {"update that does not repeat all", "newer", "absent",
       [&](auto &pdf) {
         whole(pdf), pdf.content(4, "q").content(6, "q").shown(7, {"newer"}).section();
       }},
      {"update that does", "newer", "found",
       [&](auto &pdf) {
         whole(pdf), twoPages(pdf).content(4, "q").content(6, "q").shown(7, {"newer"}).section();
       }},
      {"sections in a chain", "linked", "found",
       [](auto &pdf) {
         // As in a document for the web: the last trailer names the first section, whose trailer
         // names the one that stands before the last trailer.
         pdf.raw("1 0 obj /Pages 2 0 R endobj" + pdf.end());
         const std::size_t first = pdf.text.size();
         pdf.raw("xref" + pdf.end() + "1 1" + pdf.end() + "0000000009 00000 n" + pdf.end());
         pdf.trailer(1, 8, 1'000'000'000);
         padded(pdf).object(2, "/Kids [ 3 0 R ]" + pdf.end() + "/Count 1").page(3, {4});
         const std::string second = std::to_string(pdf.shown(4, {"linked"}).table());
         pdf.text.replace(pdf.text.find("1000000000"), 10,
                          std::string(10 - second.size(), '0') + second);
         pdf.trailer(0, 0, first);
       }},
      {"chain that comes back", "third", "found",
       [&](auto &pdf) {
         const std::size_t start = twoPages(pdf).table();
         pdf.trailer(1, -1, start).raw("x" + pdf.end()).trailer(0, 0, start);
       }},
      {"no trailer", "first", "closed", twoPages},
      {"no size", "first", "closed", [&](auto &pdf) { twoPages(pdf).section(1, 0); }},
      {"no root", "first", "closed", [&](auto &pdf) { twoPages(pdf).section(0); }},
      {"size too small", "first", "found", [&](auto &pdf) { twoPages(pdf).section(1, 3); }},
      {"root absent reads what is first", "first", "found",
       [&](auto &pdf) { twoPages(pdf).section(9); }},
      {"content absent reads what is first", "x", "found",
       [](auto &pdf) { padded(pdf).pages({3}).page(3, {9}).shown(4, {"x"}).section(); }},
      {"too small", "x", "closed", [](auto &pdf) { pdf.pages({3}).raw("trailer" + pdf.end()); }},
      {"literal string ends the search", "behind", "absent",
       [&](auto &pdf) { twoOf(pdf, "BT" + pdf.end() + "(a) Tj", "behind").section(); }},
      {"graphics first", "no", "absent", graphicsFirst},
      {"and the next page", "yes", "found", graphicsFirst},
      {"pages below pages", "deep", "absent",
       [](auto &pdf) {
         padded(pdf).pages({3}).object(3, "/Kids [ 4 0 R ]" + pdf.end() + "/Count 1");
         pdf.content(5, "q").page(4, {6}).shown(6, {"deep"}).section();
       }},
      {"fewer kids than counted", "x", "found",
       [](auto &pdf) {
         padded(pdf).book({pdf.showing({"x"})}).object(2, "/Kids [ 3 0 R ] /Count 2").section();
       }},
      {"more kids than counted", "x", "absent",
       [&](auto &pdf) {
         twoOf(pdf, "q", "x").object(2, "/Kids [ 3 0 R 5 0 R ] /Count 1").section();
       }},
      {"page without content", "x", "absent",
       [&](auto &pdf) { twoOf(pdf, "", "x").page(3, {}).section(); }},
  };
  for (const std::string lineEnd : {"\n", "\r", "\r\n"})
    for (const bool hasTrailerOnOneLine : {false, true})
      for (const auto &row : rows) {
        DocumentWriter pdf(Style{lineEnd, hasTrailerOnOneLine});
        row.write(pdf);
        EXPECT_EQ(search(pdf.text, row.keyword), row.answer)
            << row.name << ", " << testing::PrintToString(lineEnd) << hasTrailerOnOneLine;
      }
}

TEST_F(Document, MustBeginAsOne) {
  const std::string text = documentShowing({"x"});
  EXPECT_EQ(search("%PDF-" + text.substr(5), "x"), "found");
  EXPECT_EQ(search("%pdf-" + text.substr(5), "x"), "closed");
  EXPECT_EQ(search(" " + text, "x"), "closed");
  EXPECT_EQ(search("", "x"), "closed");
}

TEST_F(Document, IsReadAlikeWhereverTheEdgesOfBlocksStand) {
  for (std::size_t shift = 0; shift <= 1100; ++shift) {
    DocumentWriter pdf(Style{shift % 3 == 0 ? "\r\n" : "\n", shift % 2 == 0});
    const std::string pad(shift, 'p');
    padded(pdf).object(1, pad + " << /Pages 2 0 R >>");
    pdf.object(2, pad + pdf.end() + "/Kids [ 3 0 R 5 0 R ]" + pdf.end() + "/Count 2");
    pdf.object(3, pad + pdf.end() + "/Contents [ 4 0 R ]").content(4, "q");
    pdf.page(5, {6}).object(6, pad + pdf.end() + "stream" + pdf.end() +
                                   pdf.showing({"some", "text"}) + pdf.end() + "endstream");
    pdf.raw(pad + pdf.end()).section();
    ASSERT_EQ(search(pdf.text, "sometext"), "found") << shift;
    ASSERT_EQ(search(pdf.text, "sometexts"), "absent") << shift;
  }
}

/// What a document shows, and whether a keyword is found in it.
struct Shown {
  const char *name;
  std::vector<std::string> texts;
  const char *keyword;
  unsigned long encoding;
  const char *answer;
};

TEST_F(Document, IsReadInItsEncoding) {
  const Shown rows[] = {
      {"Mac Roman", {"caf\x8E"}, "caf\u00e9", macRoman, "found"},
      {"Latin-1", {"caf\xE9"}, "caf\u00e9", isoLatin1, "found"},
      {"Mac Japanese", {"\x82\xA0\x83\x41"}, "\u3042\u30a2", macJapanese, "found"},
      {"character over two strings", {"\x82", "\xA0"}, "\u3042", macJapanese, "found"},
      {"trail byte is no letter", {"\x83\x41"}, "A", macJapanese, "absent"},
      {"only in the other Shift-JIS", {"\x85\x40 x"}, "x", macJapanese, "found"},
      {"in neither", {"\xFC\xFC x"}, "x", macJapanese, "absent"},
      {"one bad byte hides all", {"x", "\x82"}, "x", macJapanese, "absent"},
      {"unknown encoding", {"x"}, "x", 0x7777, "absent"},
      {"no encoding", {"x"}, "x", 1UL << 40, "absent"},
      {"UTF-16", {"ab"}, "\u6162", 0x0100, "found"}};
  for (const Shown &row : rows)
    EXPECT_EQ(search(documentShowing(row.texts), row.keyword, true, row.encoding), row.answer)
        << row.name;
  EXPECT_EQ(search(documentShowing({"CAF\x83"}), "caf\u00e9", false), "found") << "other case";
}

/// A document of these pages, written in this order, with their contents in the objects behind
/// them.
std::string pagesInOrder(const std::vector<int> &order, const std::vector<int> &kids,
                         const std::function<std::string(int)> &textOf,
                         const std::string &behindLines = "") {
  DocumentWriter pdf(Style{behindLines + "\n", false});
  padded(pdf).pages(kids);
  for (const int page : order)
    pdf.page(page, {page + 1}).content(page + 1, pdf.showing({textOf(page), "of it"}));
  return pdf.section().text;
}

std::vector<int> pageNumbers(std::size_t count) {
  std::vector<int> numbers(count);
  std::generate(numbers.begin(), numbers.end(), [page = 1]() mutable { return page += 2; });
  return numbers;
}

TEST_F(Document, IsNotReadOnceForEachPage) {
  const auto plain = [](int page) { return "page " + std::to_string(page); };
  const auto japanese = [](int page) { return "\x82\xA0 " + std::to_string(page); };
  const auto other = [](int page) { return page % 100 == 1 ? "\x85\x40" : "\x82\xA0 x"; };
  const auto unreadable = [](int page) { return page % 10 == 1 ? "\xFC\xFC" : "\x82\xA0 x"; };
  const std::vector<int> pages = pageNumbers(600), reverse(pages.rbegin(), pages.rend());
  std::vector<int> shuffled = reverse;
  std::shuffle(shuffled.begin(), shuffled.end(), std::mt19937(20010101));
  const struct {
    const char *name;
    std::string text;
    std::size_t readings;
  } rows[] = {{"in order", pagesInOrder(pages, pages, plain), 8},
              {"from the last", pagesInOrder(reverse, pages, plain), 12},
              {"in any order", pagesInOrder(shuffled, pages, plain), 12},
              {"Japanese", pagesInOrder(shuffled, pages, japanese), 12},
              {"in the second encoding here and there", pagesInOrder(pages, pages, other), 16},
              {"unreadable here and there", pagesInOrder(shuffled, pages, unreadable), 16},
              {"blanks at the ends of lines", pagesInOrder(shuffled, pages, plain, " "), 24}};
  for (const auto &row : rows) {
    EXPECT_EQ(search(row.text, "absent", true, macJapanese), "absent") << row.name;
    EXPECT_LT(bytesRead_, row.readings * row.text.size()) << row.name;
  }
}

TEST_F(Document, IsAnsweredAsIfEachPageWereReadForItself) {
  // The last page is parsed first, so that the others are known by what follows them.
  const Shown rows[] = {
      {"first page alone", {"one ", "two "}, "one", macRoman, "found"},
      {"from one page into the next", {"a b", "c d"}, "of itc", macRoman, "found"},
      {"not from the last to the first", {"a b", "c d"}, "of ita", macRoman, "absent"},
      {"bad byte hides the pages before", {"one", "\xFC\xFC", "two"}, "one", macJapanese, "absent"},
      {"and not those behind", {"one", "\xFC\xFC", "two"}, "two", macJapanese, "found"},
      {"encoding of each parse", {"\x85\x40", "\x82\xA0"}, "\u3042", macJapanese, "found"}};
  for (const Shown &row : rows) {
    const std::vector<int> order = pageNumbers(row.texts.size());
    const auto textOf = [&](int page) { return row.texts[static_cast<std::size_t>(page / 2 - 1)]; };
    std::vector<int> kids = order;
    do
      EXPECT_EQ(search(pagesInOrder(order, kids, textOf), row.keyword, true, row.encoding),
                row.answer)
          << row.name << ", kids " << DocumentWriter::references(kids);
    while (std::next_permutation(kids.begin(), kids.end()));
  }
}

TEST_F(Document, LosesNoWordWhereAnotherParseHasItsEdges) {
  // The content of page 3 stands behind that of page 5, whose parse runs on through it. The former
  // has an edge in the blank behind Td, so that to it three words wait for the operator Tj.
  for (std::size_t pad = 900; pad < 1024; ++pad) {
    DocumentWriter pdf;
    padded(pdf).pages({3, 5}).page(3, {4}).page(5, {6}).shown(6, {"second"});
    pdf.content(4, "BT\n" + std::string(pad, 'x') + "\n72 720 Td \n<776F7264> Tj\nET").section();
    ASSERT_EQ(search(pdf.text, "word"), "found") << pad;
  }
}

TEST_F(Document, LosesNoWordToBlanksAtTheEndsOfLines) {
  const auto wordOf = [](int page, int row) {
    std::string word = "w" + std::to_string(page) + "n" + std::to_string(row);
    return word + std::string(12 - word.size(), 'x');
  };
  DocumentWriter pdf;
  const std::vector<int> pages = pageNumbers(60);
  padded(pdf).pages(pages);
  for (const int page : pages) {
    std::string content = "BT\n";
    for (int row = 0; row < 40; ++row)
      content += "72 " + std::to_string(700 - row) + " Td  \n" +
                 DocumentWriter::hex(wordOf(page, row)) + " Tj\n";
    pdf.page(page, {page + 1}).content(page + 1, content + (page == 61 ? "ET\nQ" : "ET"));
  }
  std::vector<std::string> texts;
  for (const int page : pages) {
    TextStream stream(pdf.text);
    stream.Seek(static_cast<long>(pdf.offsets().at(page + 1)), streamSeekBegin);
    CPDFContents contents;
    EXPECT_EQ(contents.Parse(&stream), 1);
    auto size = static_cast<unsigned long>(contents.GetTextLength());
    texts.emplace_back(size, '\0');
    contents.GetTextString(reinterpret_cast<unsigned char *>(texts.back().data()), &size);
  }
  const std::string path = tree_.file("blanks.pdf", pdf.section().text);
  CPDFFile document;
  ASSERT_EQ(document.Open(path.c_str()), 1);
  int missed = 0;
  for (const int page : pages)
    for (int row = 0; row < 40; ++row) {
      const auto word = NSString::create(wordOf(page, row));
      const bool isShown = std::any_of(texts.begin(), texts.end(), [&](const std::string &text) {
        return text.find(wordOf(page, row)) != std::string::npos;
      });
      ASSERT_EQ(document.FindText(word.get(), 1, macRoman), isShown ? 1 : 0) << wordOf(page, row);
      missed += isShown ? 0 : 1;
    }
  EXPECT_LT(missed, 10) << "by a parse and by those that run on through its text";
}

TEST_F(Document, IsReadAsItWasWhenItWasOpened) {
  const std::string text = documentShowing({"before"});
  const std::string path = tree_.file("growing.pdf", text);
  DocumentWriter update;
  update.text = text;
  CPDFFile document;
  ASSERT_EQ(document.Open(path.c_str()), 1);
  const auto before = NSString::create("before"), after = NSString::create("after");
  EXPECT_EQ(document.FindText(before.get(), 1, macRoman), 1);
  tree_.file("growing.pdf", update.shown(4, {"after"}).section().text);
  EXPECT_EQ(document.GetSize(), static_cast<long>(text.size()));
  EXPECT_EQ(document.FindText(before.get(), 1, macRoman), 1) << "has met its end";
  EXPECT_EQ(document.FindText(after.get(), 1, macRoman), 0);
}

TEST_F(Document, KeepsItsAnswerHoweverManyPagesItHas) {
  const auto textOf = [](int page) { return "page " + std::to_string(page); };
  const std::vector<int> pages = pageNumbers(4000), reverse(pages.rbegin(), pages.rend());
  const std::string text = pagesInOrder(reverse, pages, textOf);
  for (const char *const keyword : {"page 3of", "of itpage 5of", "of itpage 7999of"})
    EXPECT_EQ(search(text, keyword), "found") << keyword;
}

std::string repeated(const std::string &part, std::size_t count) {
  std::string all;
  while (count-- > 0)
    all += part;
  return all;
}

TEST_F(Document, CannotMakeTheReaderReadForEver) {
  const auto starts = [](int count, const std::string &body) {
    // Every object begins one byte further inside the same text.
    DocumentWriter pdf;
    std::string kids;
    std::string table = "xref\n0 " + std::to_string(count) + "\n";
    for (int i = 0; i < count; ++i) {
      kids += " " + std::to_string(i) + " 0 R";
      table += std::to_string(i > 9 ? 600 + i : 0) + " 0 n\n";
    }
    pdf.filler(600).filler(static_cast<std::size_t>(count)).raw("\n3 0 obj /Pages 4 0 R\n");
    pdf.raw(std::string("/Count ") + std::to_string(count) + "\n" + body);
    pdf.raw("/Kids [" + kids + " ]\nendobj\n");
    const std::size_t start = pdf.text.size();
    return pdf.raw(table).trailer(11, count, start).text;
  };
  const std::string tokens = repeated(repeated("x ", 96) + "\n", 2061),
                    letters = repeated("x\n", 1 << 17);
  const auto oneLine = [](const std::string &part) {
    DocumentWriter pdf;
    const std::string line = repeated(part, (1 << 20) / part.size() + 1);
    pdf.object(1, "/Pages 2 0 R").object(2, "/Count 1 /Kids [ 3 0 R ]" + line);
    return pdf.page(3, {4}).shown(4, {"x"}).section().text;
  };
  const struct {
    const char *name;
    std::string text;
    std::size_t readings;
  } rows[] = {
      {"kids inside one object without an end", starts(2000, ""), 32},
      {"contents inside one", starts(2000, "/Contents [ 12 0 R 13 0 R 14 0 R ]\n"), 32},
      {"tokens of one letter", starts(300, tokens), 32},
      {"kids before lines of one letter", starts(2000, letters), 16},
      {"and comments at every edge", starts(2000, letters + std::string(2000, '%') + "x\n"), 24},
      {"brackets without an end", oneLine(" /Kids ["), 8},
      {"one token", oneLine("x"), 8},
      {"one comment", oneLine("%"), 8},
      {"blanks", oneLine(" "), 8}};
  for (const auto &row : rows) {
    EXPECT_NE(search(row.text, "absent"), "found") << row.name;
    EXPECT_LE(bytesRead_,
              row.readings * row.text.size() + (row.readings == 32 ? 4 << 20 : 0) + 4096)
        << row.name << " " << bytesRead_ / row.text.size();
  }
}

TEST_F(Document, MayBeLargeAndInAnyOrder) {
  std::vector<int> order = pageNumbers(500);
  std::shuffle(order.begin(), order.end(), std::mt19937(1));
  DocumentWriter pdf;
  for (const int page : order)
    pdf.page(page, {page + 1}).content(page + 1, "q\n" + std::string(4000, 'q'));
  pdf.pages(order).page(2001, {2002}).shown(2002, {"needle"});
  pdf.object(2, "/Kids " + DocumentWriter::references(order) + "\n/Kids [ 2001 0 R ] /Count 501");
  pdf.section();
  EXPECT_EQ(search(pdf.text, "needle"), "found");
}

TEST_F(Document, SurvivesEveryDamage) {
  DocumentWriter pdf;
  pdf.filler(520).pages({3, 5}).page(3, {4}).shown(4, {"one"}).page(5, {6}).shown(6, {"two"});
  pdf.section();
  for (std::size_t i = 0; i < pdf.text.size(); ++i) {
    search(pdf.text.substr(0, i), "two", false, macJapanese);
    std::string damaged = pdf.text;
    damaged[i] = static_cast<char>(damaged[i] ^ (1 << i % 8));
    search(damaged, "two", false, macJapanese);
    damaged[i] = "\n %<"[i % 4];
    search(damaged, "two", false, macJapanese);
  }
}

TEST_F(Document, BearsTheMarkInItsFirstPage) {
  const char *const mark = "% VORDA_PFINF_TYPE\nq";
  const struct {
    const char *name, *first, *second, *onSecondPage;
    int isVorda;
  } rows[] = {{"first content", mark, "q", "q", 1},
              {"second content", "q", mark, "q", 1},
              {"second page", "q", "q", mark, 0},
              {"none", "q", "BT ET", "q", 0}};
  for (const auto &row : rows) {
    DocumentWriter pdf;
    padded(pdf).pages({3, 6}).page(3, {4, 5}).page(6, {7});
    pdf.content(4, row.first).content(5, row.second).content(7, row.onSecondPage).section();
    CPDFFile document;
    ASSERT_EQ(document.Open(tree_.file("mark.pdf", pdf.text).c_str()), 1);
    EXPECT_EQ(document.IsVordaPDF(), row.isVorda) << row.name;
  }
}

TEST_F(Document, IsReadNoFurtherOnceItIsStopped) {
  const std::string path = tree_.file("good.pdf", documentShowing({"x"}));
  const auto keyword = NSString::create("x");
  std::atomic<char> isStopped{0};
  CPDFFile document;
  document.StopWhen(&isStopped);
  ASSERT_EQ(document.Open(path.c_str()), 1);
  EXPECT_EQ(document.FindText(keyword.get(), 1, macRoman), 1);
  isStopped = 1;
  EXPECT_EQ(document.FindText(keyword.get(), 1, macRoman), 0);
  EXPECT_EQ(document.Open(path.c_str()), 0);
  isStopped = 0;
  EXPECT_EQ(document.Open(path.c_str()), 1);
}

TEST_F(Document, OpensAndCloses) {
  const std::string path = tree_.file("good.pdf", documentShowing({"x"}));
  const std::string bad = tree_.file("bad.pdf", "%PDF-1.4"), folder = tree_.path();
  const auto keyword = NSString::create("x");
  CPDFFile document;
  EXPECT_EQ(document.Close(), 1) << "never opened";
  EXPECT_EQ(document.FindText(keyword.get(), 1, macRoman), 0);
  EXPECT_EQ(document.IsVordaPDF(), 0);
  EXPECT_EQ(document.Open(path.c_str()), 1);
  EXPECT_EQ(document.FindText(nullptr, 1, macRoman), 0);
  EXPECT_EQ(document.FindText(keyword.get(), 1, macRoman), 1);
  EXPECT_EQ(document.Close(), 1);
  EXPECT_EQ(document.FindText(keyword.get(), 1, macRoman), 0) << "closed";
  EXPECT_EQ(document.Open(path.c_str()), 1) << "again";
  for (const char *const failing :
       {bad.c_str(), "/does/not/exist", "", folder.c_str(), static_cast<const char *>(nullptr)}) {
    EXPECT_EQ(document.Open(failing), 0);
    EXPECT_EQ(document.GetSize(), 0) << "released";
  }
}

} // namespace

} // namespace searchsystem
