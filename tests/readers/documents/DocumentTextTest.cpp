#include "readers/documents/DocumentText.h"

#include "testing/TextOf.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace searchsystem {
namespace {

struct ContentRow {
  const char *name;
  std::string content, text;
};

std::string textOfContent(const std::string &content) {
  OnePage page;
  page.content = content;
  return textOf(page.file());
}

void expectContents(const std::vector<ContentRow> &rows) {
  for (const ContentRow &row : rows)
    EXPECT_EQ(textOfContent("BT /F 10 Tf 50 700 Td " + row.content + " ET"), row.text + "|")
        << row.name;
}

TEST(DocumentText, OperatorsThatShowText) {
  expectContents({
      {"Tj", "(one) Tj", "one"},
      {"TJ", "[(on) -30 (e) 40 <74776f>] TJ", "onetwo"},
      {"apostrophe", "12 TL (one) Tj (two) '", "one two"},
      {"quotation mark", "12 TL (one) Tj 0 0 (two) \"", "one two"},
      {"T*", "12 TL (one) Tj T* (two) Tj", "one two"},
      {"TD sets the leading", "(one) Tj 0 -12 TD (two) Tj T* (three) Tj", "one two three"},
      {"invisible", "3 Tr (seen by none) Tj", "seen by none"},
      {"escapes", R"((a\(b\)\101\
c) Tj)",
       "a(b)Ac"},
      {"without a font of that name", "/None 10 Tf (lost) Tj /F 10 Tf (found) Tj", "found"},
      {"what is no operator, what lacks operands", "Tj TJ Td 1 frobnicate (one) Tj Q Q EMC", "one"},
      {"beside the page", "(on) Tj 0 1000 Td (beside) Tj", "on"},
  });
}

TEST(DocumentText, WhereWordsEnd) {
  expectContents({
      {"kerning", "[(ke) 60 (rn) -90 (ing)] TJ", "kerning"},
      {"blank by a gap", "[(two) -250 (words)] TJ", "two words"},
      {"blank by a blank", "(two ) Tj (words) Tj", "two words"},
      {"both are one", "[(two ) -250 ( words)] TJ", "two words"},
      {"the next string touches", "(to) Tj 8.34 0 Td (gether) Tj", "together"},
      {"the next string stands off", "(to) Tj 12 0 Td (gether) Tj", "to gether"},
      {"letters set apart", "4 Tc (wide) Tj", "wide"},
      {"two letters set apart instead of a blank",
       "(an) Tj 11.12 0 Td 2.97 Tc (ya) Tj 0 Tc 13.53 0 Td (re) Tj [(bo) 0 (d)] TJ", "any arebod"},
      {"letters set apart and put down again", "4 Tc (wi) Tj 17.44 0 Td (de) Tj", "wide"},
      {"scaled", "50 Tz (to) Tj 4.17 0 Td (gether) Tj", "together"},
      {"a blank without width", "-2.15 Tw -0.25 Tc (ev e) Tj", "eve"},
      {"a blank that is taken back", "[(sup ) 278 (port)] TJ", "support"},
      {"the same word in another size", "20 0 0 20 50 700 Tm (a) Tj 1 0 0 1 161 700 Tm (b) Tj",
       "ab"},
      {"superscript", "(x) Tj 3 Ts /F 7 Tf (2) Tj", "x2"},
      {"shown twice to look bold", "(bold) Tj 0.3 0 Td (bold) Tj", "bold"},
      {"shown twice, one behind the other", "(no) Tj 11.1 0 Td (no) Tj", "nono"},
  });
}

TEST(DocumentText, WhereLinesEnd) {
  expectContents({
      {"a blank", "(one) Tj 0 -12 Td (two) Tj", "one two"},
      {"a hyphen", "(exam-) Tj 0 -12 Td (ple) Tj", "exam~ple"},
      {"a hyphen at the end of the page", "(exam-) Tj", "exam~"},
      {"a hyphen within the line", "(well-known) Tj", "well-known"},
      {"a hyphen that is a dash", "(this -) Tj 0 -12 Td (that) Tj", "this - that"},
      {"a soft hyphen by itself",
       "(a) Tj 0 -12 Td /S << /ActualText (\\255) >> BDC (-) Tj EMC 0 -12 Td (b) Tj", "a b"},
      {"up to the next column", "(one) Tj 200 60 Td (two) Tj", "one two"},
      {"text turned aside", "(one) Tj 0 1 -1 0 60 710 Tm (two) Tj", "one two"},
      {"down a turned page", "0 1 -1 0 60 100 Tm (exam-) Tj 0 1 -1 0 72 100 Tm (ple) Tj",
       "exam~ple"},
  });
}

TEST(DocumentText, NotesInTheMarginFollowTheirText) {
  const std::string lines =
      "11 TL (The first line of the column ends) Tj T* (and the second one does) Tj T* (so) Tj ";
  const std::string text = "The first line of the column ends and the second one does so ";
  expectContents({
      {"on the line", lines + "190 0 Td (note) Tj -190 -11 Td (that) Tj 0 -50 Td (next) Tj",
       text + "that note next"},
      {"to the left, lower, of two lines",
       lines + "-40 -3 Td (two) Tj 0 -11 Td (notes) Tj 40 3 Td (that) Tj", text + "that two notes"},
      {"the next column", lines + "250 22 Td (other) Tj 0 -100 Td (column) Tj",
       text + "other column"},
      {"the columns of a table",
       "(A title of some length) Tj 0 -20 Td (one) Tj 200 0 Td (1) Tj -200 -11 Td (two) Tj 200 0 "
       "Td "
       "(2) Tj",
       "A title of some length one 1 two 2"},
  });
}

TEST(DocumentText, StateThatOperatorsKeep) {
  EXPECT_EQ(textOfContent("q 2 0 0 2 0 0 cm BT /F 10 Tf 9 9 Td (one) Tj ET Q q BT (lost) Tj ET Q "
                          "BT /F 10 Tf 9 400 Td (two) Tj ET"),
            "one two|");
  EXPECT_EQ(textOfContent("/F 10 Tf 1 0 0 1 0 90 cm BT (up-) Tj ET 1 0 0 1 0 -12 cm BT (on) Tj ET"),
            "up~on|");
}

TEST(DocumentText, SeveralStreamsAreOne) {
  OnePage page;
  page.page = "/Contents [10 0 R 99 0 R 11 0 R 12 0 R]";
  page.streams = {
      {10, "", "BT /F 10 Tf 9 400 Td [(one"}, {11, "", ")] TJ 0 -12 Td"}, {12, "", "(two) Tj ET"}};
  EXPECT_EQ(textOf(page.file()), "one two|");
}

TEST(DocumentText, InlineImagesArePassedOver) {
  const std::string before = "/F 10 Tf BT (one) Tj ET BI /W 9 /H 1 /CS /G /BPC 8 ID ";
  const std::string behind = " EI BT 0 20 Td (two) Tj ET";
  const std::string images[] = {
      "123456789",
      "(12 EI\x80\x01 ",
      std::string("\0\xFF<<EI(\0[ ", 11),
      std::string(20'000, '('),
      std::string(20'000, ' '),
      "",
  };
  for (const std::string &image : images)
    EXPECT_EQ(textOfContent(before + image + behind), "one two|") << image.size();
  EXPECT_EQ(textOfContent(before + "without an end"), "one|");
}

TEST(DocumentText, MarkedContent) {
  expectContents({
      {"other text", "/Span << /ActualText (c\\157ck) >> BDC (ck-k) Tj EMC (s) Tj", "cocks"},
      {"in UTF-16", "/Span << /ActualText <FEFF00E9> >> BDC (e') Tj EMC", "\u00E9"},
      {"nothing for something", "(a) Tj /Span << /ActualText () >> BDC (x) Tj EMC (b) Tj", "ab"},
      {"for what is no text", "(a) Tj /Figure << /ActualText (b) >> BDC EMC", "ab"},
      {"the outer one of two",
       "/S << /ActualText (out) >> BDC /S << /ActualText (in) >> BDC (x) Tj EMC (y) Tj EMC", "out"},
      {"a line end within", "/S << /ActualText (\\255) >> BDC (-) Tj EMC (a) Tj", "a"},
      {"without an end", "/S << /ActualText (out) >> BDC (x) Tj", "out"},
      {"no other text", "/P << /MCID 0 >> BDC (in) Tj EMC /Artifact BMC (side) Tj EMC", "inside"},
  });
  OnePage page;
  page.content = "/F 9 Tf BT /Span /P0 BDC (x) Tj EMC ET";
  page.resources = "/Properties << /P0 << /ActualText (named) >> >>";
  EXPECT_EQ(textOf(page.file()), "named|");
}

TEST(DocumentText, OptionalContent) {
  struct Row {
    const char *name, *configuration, *group;
    bool isShown;
  };
  const Row rows[] = {
      {"on by default", "", "10 0 R", true},
      {"off", "/OFF [10 0 R]", "10 0 R", false},
      {"another is off", "/OFF [11 0 R]", "10 0 R", true},
      {"all are off", "/BaseState /OFF", "10 0 R", false},
      {"all but this", "/BaseState /OFF /ON [10 0 R]", "10 0 R", true},
      {"any of two", "/OFF [10 0 R]", "<</Type/OCMD/OCGs[10 0 R 11 0 R]>>", true},
      {"all of two", "/OFF [10 0 R]", "<</Type/OCMD/OCGs[10 0 R 11 0 R]/P/AllOn>>", false},
      {"none of two", "/OFF [10 0 R]", "<</Type/OCMD/OCGs[10 0 R 11 0 R]/P/AllOff>>", false},
      {"not all of two", "/OFF [10 0 R]", "<</Type/OCMD/OCGs[10 0 R 11 0 R]/P/AnyOff>>", true},
      {"not this one", "/OFF [10 0 R]", "<</Type/OCMD/VE[/Not 10 0 R]>>", true},
      {"not one of both", "/OFF [10 0 R]", "<</Type/OCMD/VE[/Not[/Or 10 0 R 11 0 R]]>>", false},
  };
  for (const Row &row : rows) {
    OnePage page;
    page.catalog =
        "/OCProperties << /OCGs [10 0 R 11 0 R] /D << " + std::string(row.configuration) + " >> >>";
    page.resources = "/Properties << /L " + std::string(row.group) + " >> /XObject << /X 12 0 R >>";
    page.objects = {{10, "<< /Type /OCG >>"}, {11, "<< /Type /OCG >>"}};
    page.streams = {{12, "/Subtype /Form /OC " + std::string(row.group), "BT (form) Tj ET"}};
    page.content = "/F 9 Tf /OC /L BDC BT (layer ) Tj ET EMC /X Do BT 0 20 Td (end) Tj ET";
    EXPECT_EQ(textOf(page.file()), row.isShown ? "layer form end|" : "end|") << row.name;
  }
}

TEST(DocumentText, Forms) {
  OnePage page;
  page.resources = "/XObject << /A 10 0 R /B 11 0 R /I 12 0 R /N 13 0 R >>";
  page.content = "BT /F 9 Tf (page) Tj ET /A Do /I Do /N Do /N Do /None Do";
  page.streams = {
      {10, "/Subtype /Form /Matrix [1 0 0 1 0 100] /Resources << /XObject << /B 11 0 R >> >>",
       "q q BT (a) Tj ET /B Do"},
      {11,
       "/Subtype /Form /Resources << /XObject << /A 10 0 R /B 11 0 R >> /Font << /H 5 0 R >> >>",
       "BT /H 9 Tf 0 20 Td (b) Tj ET /A Do /B Do"},
      {12, "/Subtype /Image /Width 1 /Height 1", "BT (image) Tj ET"},
      {13, "/Subtype /Form", "0 0 m 9 9 l S"},
  };
  EXPECT_EQ(textOf(page.file()), "page a b|");
}

TEST(DocumentText, FormsThatDrawEachOtherEndlessly) {
  OnePage page;
  page.resources = "/XObject << /X 10 0 R >>";
  page.content = "BT /F 9 Tf (start) Tj ET /X Do";
  for (int i = 10; i < 28; ++i) {
    std::string content = "BT /F 9 Tf (a) Tj ET ";
    for (int j = 0; j < 100; ++j)
      content += "/X Do ";
    page.streams.push_back({i,
                            "/Subtype /Form /Resources << /XObject << /X " + std::to_string(i + 1) +
                                " 0 R >> /Font << /F 5 0 R >> >>",
                            content});
  }
  EXPECT_EQ(textOf(page.file()).substr(0, 6), "4start");
}

TEST(DocumentText, Annotations) {
  OnePage page;
  page.page = "/Annots [10 0 R 11 0 R 12 0 R 13 0 R 99 0 R]";
  page.objects = {
      {10, "<< /Subtype /Widget /AP << /N 20 0 R >> >>"},
      {11, "<< /Subtype /Widget /AS /On /AP << /N << /On 21 0 R /Off 22 0 R >> >> >>"},
      {12, "<< /Subtype /FreeText /F 2 /AP << /N 22 0 R >> >>"},
      {13, "<< /Subtype /Text /Contents (comment) >>"},
  };
  const std::string entries = "/Subtype /Form /Resources << /Font << /H 5 0 R >> >>";
  page.streams = {{20, entries, "/Tx BMC BT /H 9 Tf (field) Tj ET EMC"},
                  {21, entries, "BT /H 9 Tf (checked) Tj ET"},
                  {22, entries, "BT /H 9 Tf (hidden) Tj ET"}};
  page.content = "BT /F 9 Tf (page-) Tj ET";
  EXPECT_EQ(textOf(page.file()), "page~field checked|");
}

TEST(DocumentText, PagesInOrder) {
  CompressedDocument pdf;
  pdf.object(1, "<< /Type /Catalog /Pages 2 0 R >>")
      .object(2, "<< /Type /Pages /Kids [6 0 R 4 0 R] /Resources << /Font << /F << /Type /Font "
                 "/Subtype /Type1 /BaseFont /Courier >> >> >> >>")
      .object(6, "<< /Type /Pages /Kids [3 0 R 5 0 R] /Parent 2 0 R >>");
  for (const int page : {3, 4, 5}) {
    const std::string number = std::to_string(page);
    pdf.object(page, "<< /Type /Page /Contents 1" + number + " 0 R >>")
        .deflatedStream(10 + page, "", page == 5 ? "" : "BT /F 9 Tf (page " + number + ") Tj ET");
  }
  EXPECT_EQ(textOf(pdf.table().text), "page 3||page 4|");
}

TEST(DocumentText, TheFormOfTexts) {
  struct Row {
    const char *name, *actualText, *text;
  };
  const Row rows[] = {
      {"blanks", "  a \t\n\r b\u00A0\u2003c\u3000d  ", "a b c d"},
      {"compatibility", "\uFB01\u210C\u2460\uFF21", "fiH1A"},
      {"composed", "e\u0301 A\u030A", "\u00E9 \u00C5"},
      {"in the order of marks", "q\u0307\u0323", "q\u0323\u0307"},
      {"soft hyphens", "\u00ADex\u00ADam\u00ADple", "example"},
      {"marks of ours, controls, directions",
       "a\x01"
       "b\x0C"
       "c\u200Ed\uFEFF",
       "ab cd"},
      {"not folded", "\u00C4\u00DF", "\u00C4\u00DF"},
      {"no valid UTF-8", "a\xC3 \xFF", "a"},
  };
  for (const Row &row : rows) {
    OnePage page;
    page.content = "/F 9 Tf BT /S << /ActualText (\xEF\xBB\xBF" + std::string(row.actualText) +
                   ") >> BDC (x) Tj EMC ET";
    EXPECT_EQ(textOf(page.file()).substr(0, std::string(row.text).size()), row.text) << row.name;
  }
}

TEST(DocumentText, WhatIsNoText) {
  const auto reason = [](UnreadReason value) { return std::to_string(static_cast<int>(value)); };
  EXPECT_EQ(textOfContent("0 0 m 100 100 l S BT /F 9 Tf ( ) Tj ET"),
            reason(UnreadReason::noText) + "|");
  EXPECT_EQ(textOf(CompressedDocument().book({}).table().text), reason(UnreadReason::damaged));
  EXPECT_EQ(textOf("no document"), reason(UnreadReason::damaged));
}

TEST(DocumentText, TooMuchText) {
  // 1,000 pages with the same content of some 40 KB.
  std::string content = "BT /F 9 Tf 12 TL ";
  for (int i = 0; i < 1000; ++i)
    content += "(" + std::string(38, 'a') + ") ' ";
  CompressedDocument pdf;
  std::string kids;
  for (int i = 0; i < 1000; ++i) {
    kids += std::to_string(10 + i) + " 0 R ";
    pdf.object(10 + i, "<< /Type /Page /Contents 4 0 R >>");
  }
  pdf.object(1, "<< /Type /Catalog /Pages 2 0 R >>")
      .object(2, "<< /Type /Pages /Resources << /Font << /F << /Subtype /Type1 /BaseFont /Courier "
                 ">> >> >> /Kids [" +
                     kids + "] >>")
      .stream(4, "", content + "ET");
  const std::string text = textOf(pdf.table().text);
  EXPECT_EQ(text[0], '4');
  EXPECT_GT(text.size(), 31U << 20);
  EXPECT_LE(text.size(), (32U << 20) + 1);
}

TEST(DocumentText, StopsWhereTheSinkDoes) {
  class OnePiece : public TextSink {
  public:
    bool take(std::string_view) override { return ++pieces > 1; }
    int pieces = 0;
  };
  std::string content = "BT /F 9 Tf 12 TL ";
  for (int i = 0; i < 20'000; ++i)
    content += "(0123456789) ' ";
  OnePage page;
  page.content = content;
  const std::string file = page.file();
  MemorySource source(file);
  OnePiece sink;
  EXPECT_EQ(readDocumentText(source, MapTable(), sink), UnreadReason::none);
  EXPECT_EQ(sink.pieces, 1);
}

} // namespace
} // namespace searchsystem
