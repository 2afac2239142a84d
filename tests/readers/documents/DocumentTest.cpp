#include "readers/documents/Document.h"

#include "testing/CompressedDocument.h"
#include "tests/readers/documents/PagesOf.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>

namespace searchsystem {
namespace {

using Writer = CompressedDocument;

std::string replaced(std::string text, const std::string &from, const std::string &to) {
  const std::size_t place = text.find(from);
  EXPECT_NE(place, std::string::npos) << from;
  return text.replace(place, from.size(), to);
}

std::string everywhere(std::string text, const std::string &from, const std::string &to) {
  for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
    text.replace(at, from.size(), to);
  return text;
}

std::string classic() { return Writer().book({"one", "two"}).table().text; }

std::string behindJunk() {
  Writer pdf;
  pdf.text.insert(0, "junk\n");
  return pdf.book({"one", "two"}).table().text;
}

std::string plainClassic() {
  return Writer()
      .object(1, "<< /Type /Catalog /Pages 2 0 R >>")
      .object(2, "<< /Type /Pages /Kids [3 0 R] /Count 1 >>")
      .object(3, "<< /Type /Page /Contents 4 0 R >>")
      .stream(4, "", "one")
      .table()
      .text;
}

std::string modern() {
  return Writer()
      .objectStream(9, {{1, "<</Type/Catalog/Pages 2 0 R>>"},
                        {2, "<</Type/Pages/Kids[3 0 R 5 0 R]/Count 2>>"},
                        {3, "<</Type/Page/Contents 4 0 R>>"},
                        {5, "<</Type/Page/Contents[6 0 R 4 0 R]>>"}})
      .deflatedStream(4, "", "one")
      .deflatedStream(6, "", "two")
      .crossReferenceStream(10)
      .text;
}

// The pages' numbers are in the table that the oldest readers know, the rest in the stream beside
// it.
std::string hybrid() {
  Writer pdf;
  pdf.objectStream(9, {{3, "<</Type/Page/Contents 4 0 R>>"}});
  pdf.crossReferenceStream(10);
  const std::size_t beside = pdf.start();
  pdf.forget()
      .object(1, "<< /Type /Catalog /Pages 2 0 R >>")
      .object(2, "<< /Type /Pages /Kids [3 0 R] /Count 1 >>")
      .deflatedStream(4, "", "one")
      .table("/XRefStm " + std::to_string(beside));
  return replaced(pdf.text, "\n4 1\n", "\n3 1\n0000000000 00000 f \n4 1\n");
}

std::string updated(bool byStream) {
  Writer pdf;
  pdf.book({"one", "two"}).table();
  const std::string previous = "/Prev " + std::to_string(pdf.start());
  pdf.forget();
  if (byStream)
    pdf.objectStream(20, {{3, "<</Type/Page/Contents 21 0 R>>"}})
        .deflatedStream(21, "", "new")
        .crossReferenceStream(22, previous);
  else
    pdf.deflatedStream(4, "", "new").table(previous);
  return pdf.text;
}

std::string withTree(const std::string &root,
                     const std::vector<std::pair<int, std::string>> &nodes) {
  Writer pdf;
  pdf.object(1, "<< /Type /Catalog /Pages " + root + " >>");
  for (const auto &[number, body] : nodes)
    pdf.object(number, body);
  for (const auto &[number, text] : {std::pair{11, "a"}, {12, "b"}, {13, "c"}})
    pdf.stream(number, "", text);
  return pdf.table().text;
}

std::string withStream(const std::string &entries, const std::string &behind) {
  return Writer()
      .object(1, "<< /Type /Catalog /Pages 2 0 R >>")
      .object(2, "<< /Type /Pages /Kids [3 0 R] /Count 1 >>")
      .object(3, "<< /Type /Page /Contents 4 0 R >>")
      .object(5, "3")
      .object(6, "/AHx")
      .object(4, "<< " + entries + " >>" + behind)
      .table()
      .text;
}

struct Row {
  std::string name;
  std::string file;
  std::string pages;
};

void PrintTo(const Row &row, std::ostream *out) { *out << row.name; }

class DocumentTest : public testing::TestWithParam<Row> {};

TEST_P(DocumentTest, GivesPages) { EXPECT_EQ(pagesOf(GetParam().file), GetParam().pages); }

const auto nameOf = [](const auto &tested) { return tested.param.name; };

INSTANTIATE_TEST_SUITE_P(
    CrossReferences, DocumentTest,
    testing::Values(
        Row{"Table", classic(), "one|two|"}, Row{"Stream", modern(), "one|twoone|"},
        Row{"Hybrid", hybrid(), "one|"}, Row{"UpdateByTable", updated(false), "new|two|"},
        Row{"UpdateByStream", updated(true), "new|two|"},
        Row{"CycleOfUpdates", Writer().book({"one"}).table("/Prev 9").text, "one|"},
        Row{"PreviousOneOutside", Writer().book({"one"}).table("/Prev 99999").text, "one|"},
        Row{"LongLinesOfEntries", everywhere(classic(), "n \n", "n  \r\n"), "one|two|"},
        Row{"ShortLinesOfEntries", everywhere(classic(), "n \n", "n\n"), "one|two|"},
        Row{"CountsThatLie", everywhere(classic(), " 1\n0", " 7\n0"), "one|two|"},
        Row{"FirstNumberOne",
            replaced(everywhere(classic(), "\n1 1\n0", "\n0"), "xref\n0 1", "xref\n1 2"),
            "one|two|"},
        Row{"NumbersOfOthers", replaced(classic(), "xref\n0 1\n", "xref\n7 1\n"), "one|two|"},
        Row{"NoTable", replaced(classic(), "xref\n0 1", "xrof\n0 1"), "one|two|"},
        Row{"NoStart", replaced(classic(), "startxref", "start"), "one|two|"},
        Row{"NoTrailer", classic().substr(0, classic().find("trailer")), "one|two|"},
        Row{"NoEnd", modern().substr(0, modern().find("10 0 obj")), "one|twoone|"},
        Row{"StartIsOff", replaced(classic(), "startxref\n", "startxref\n1"), "one|two|"},
        Row{"StartBehindBlanks", replaced(classic(), "xref\n0", " \n xref\n0"), "one|two|"},
        Row{"ShiftedOffsets", replaced(classic(), "\n1 0 obj", "\n%some more\n1 0 obj"),
            "one|two|"},
        Row{"JunkInFrontOfOffsets", "junk\n" + classic(), "one|two|"},
        Row{"JunkInFrontInOffsets", behindJunk(), "one|two|"},
        Row{"JunkBehind", classic() + std::string(5000, '\n') + "<html>", "one|two|"},
        Row{"LastOfEqualNumbersWins", Writer().book({"one"}).stream(4, "", "new").text, "new|"},
        Row{"ScanPassesOverDocumentsInStreams",
            Writer()
                .book({"one"})
                .stream(
                    8, "",
                    "4 0 obj <</Length 3>>stream\nbad\nendstream endobj\ntrailer <</Root 9 0 R>>")
                .text,
            "one|"},
        Row{"Empty", "", "damaged"}, Row{"Text", "This is not a document.", "damaged"},
        Row{"HeaderOnly", "%PDF-1.7\n", "damaged"}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Objects, DocumentTest,
    testing::Values(
        Row{"GluedHeader", everywhere(classic(), " obj\n", " obj"), "one|two|"},
        Row{"NoEndOfObject", everywhere(classic(), "endobj", ""), "one|two|"},
        Row{"BlanksInHeader", everywhere(classic(), " 0 obj", "  0\r\nobj"), "one|two|"},
        Row{"ReferenceToNothing", replaced(plainClassic(), "4 0 R", "8 0 R"), "|"},
        Row{"ReferenceToItself",
            withTree("2 0 R", {{2, "<</Kids [3 0 R]>>"}, {3, "<</Contents 4 0 R>>"}, {4, "4 0 R"}}),
            "|"},
        Row{"LengthElsewhere", withStream("/Length 5 0 R", "stream\none\nendstream"), "one|"},
        Row{"LengthTooSmall", withStream("/Length 1", "stream\none\nendstream"), "one|"},
        Row{"LengthTooLarge", withStream("/Length 99", "stream\none\nendstream"), "one|"},
        Row{"LengthHuge", withStream("/Length 99999999999999999", "stream\none\nendstream"),
            "one|"},
        Row{"LengthNegative", withStream("/Length -3", "stream\none\nendstream"), "one|"},
        Row{"LengthMissing", withStream("", "stream\none\nendstream"), "one|"},
        Row{"LengthOfItself", withStream("/Length 4 0 R", "stream\none\nendstream"), "one|"},
        Row{"EndOfStreamMissing", withStream("/Length 3", "stream\none"), "one|"},
        Row{"EndAndLengthMissing", withStream("", "stream\none"), "one|"},
        Row{"EndOfStreamGlued", withStream("/Length 3", "stream\noneendstream"), "one|"},
        Row{"DataBehindCR", withStream("/Length 3", "stream\rone\rendstream"), "one|"},
        Row{"DataBehindBlanks", withStream("/Length 3", "stream  \r\none\r\nendstream"), "one|"},
        Row{"FilterAlone", withStream("/Filter/AHx/Length 6", "stream\n6F6E65\nendstream"), "one|"},
        Row{"FiltersElsewhere", withStream("/Filter[6 0 R]/Length 6", "stream\n6F6E65\nendstream"),
            "one|"},
        Row{"Image", withStream("/Filter[/DCTDecode]/Length 3", "stream\none\nendstream"), "|"}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Pages, DocumentTest,
    testing::Values(
        Row{"Levels",
            withTree("2 0 R", {{2, "<</Kids[3 0 R 6 0 R]>>"},
                               {3, "<</Kids[4 0 R 5 0 R]>>"},
                               {4, "<</Contents 11 0 R>>"},
                               {5, "<</Contents 12 0 R>>"},
                               {6, "<</Contents 13 0 R>>"}}),
            "a|b|c|"},
        Row{"Cycle",
            withTree("2 0 R", {{2, "<</Kids[3 0 R 2 0 R 4 0 R 3 0 R]>>"},
                               {3, "<</Contents 11 0 R>>"},
                               {4, "<</Kids[2 0 R 5 0 R]>>"},
                               {5, "<</Contents 12 0 R>>"}}),
            "a|b|"},
        Row{"CountsAndTypesThatLie",
            withTree("2 0 R", {{2, "<</Type/Page/Count 0/Type/Pages/Kids[3 0 R 99 0 R null]>>"},
                               {3, "<</Type/Pages/Contents 11 0 R>>"}}),
            "a|"},
        Row{"DirectKids", withTree("<</Kids[<</Contents 11 0 R>> <</Contents 12 0 R>>]>>", {}),
            "a|b|"},
        Row{"PageAsRoot", withTree("2 0 R", {{2, "<</Type/Page/Contents 11 0 R>>"}}), "a|"},
        Row{"NoTree",
            withTree("2 0 R", {{3, "<</Type/Page/Contents 11 0 R>>"},
                               {4, "<</Type/Page/Contents 12 0 R>>"}}),
            "a|b|"},
        Row{"NoCatalog",
            Writer().object(3, "<</Type/Page/Contents 4 0 R>>").stream(4, "", "one").text, "one|"}),
    nameOf);

TEST(DocumentPageTest, Inherits) {
  const std::string file = withTree(
      "2 0 R", {{2, "<</Kids[3 0 R 4 0 R]/MediaBox[0 0 9 9]/Rotate -90/Resources<</A 1>>>>"},
                {3, "<</Contents 11 0 R>>"},
                {4, "<</Contents 11 0 R/Resources 5 0 R/Rotate 450/MediaBox[0 0 7 7]>>"},
                {5, "<</A 2>>"}});
  MemorySource source(file);
  const auto opened = Document::open(source);
  std::string met;
  std::get<0>(opened)->forEachPage([&](const Page &page) {
    met += std::to_string(page.resources.get("A").integer()) + " " + std::to_string(page.rotation) +
           " " + std::to_string(page.mediaBox.array().back().integer()) + "; ";
    return true;
  });
  EXPECT_EQ(met, "1 270 9; 2 90 7; ");
}

// A file that is too large to be read at once gives the same, and only a part of it is read.
TEST(DocumentWindowTest, ReadsWhatIsNeeded) {
  class CountingSource final : public ByteSource {
  public:
    explicit CountingSource(std::string_view bytes) : source_(bytes) {}
    [[nodiscard]] std::uint64_t size() const noexcept override { return source_.size(); }
    [[nodiscard]] std::size_t read(std::uint64_t offset, char *room,
                                   std::size_t count) noexcept override {
      const std::size_t done = source_.read(offset, room, count);
      total += done;
      return done;
    }
    std::size_t total = 0;

  private:
    MemorySource source_;
  };
  const std::string image(std::size_t{8} << 20, 'x');
  const std::string long1(100000, '1');
  const std::string long2(100000, '2');
  for (const bool isBroken : {false, true}) {
    Writer pdf;
    pdf.stream(8, "/Filter /DCTDecode", image).book({long1, long2}).objectStream(9, {{10, "1"}});
    pdf.stream(11, "", image).object(12, "(" + std::string(200000, 'y') + ")");
    pdf.crossReferenceStream(13);
    std::string text = pdf.text;
    if (isBroken)
      text = replaced(text, "startxref", "");
    CountingSource source(text);
    EXPECT_EQ(pagesOf(source), long1 + "|" + long2 + "|");
    EXPECT_TRUE(isBroken || source.total < std::size_t{1} << 20) << source.total;
  }
}

// Less than a kilobyte of this inflates to gigabytes.
TEST(DocumentLimitTest, ABombIsTooLarge) {
  const std::string bomb = Writer::deflated(
      Writer::deflated(Writer::deflated(std::string(std::size_t{300} << 20, '\0'))));
  const std::string file = Writer()
                               .object(1, "<</Pages 2 0 R>>")
                               .object(2, "<</Kids[3 0 R]>>")
                               .object(3, "<</Contents 4 0 R>>")
                               .stream(4, "/Filter[/Fl/Fl/Fl]", bomb)
                               .table()
                               .text;
  EXPECT_LT(file.size(), 1500U);
  MemorySource source(file);
  const auto opened = Document::open(source);
  Document &document = *std::get<0>(opened);
  std::uint64_t size = 0;
  document.forEachPage([&](const Page &page) {
    const Object content = document.get(page.dictionary, "Contents");
    return document.decode(*content.stream(), [&](std::string_view piece) {
      size += piece.size();
      return true;
    });
  });
  EXPECT_TRUE(document.hasMetLimit());
  EXPECT_LE(size, Document::mostInflated);
}

// Objects that overlap, chains of lengths, a stream for each number: no time that grows faster than
// the file.
TEST(DocumentLimitTest, TimeIsLinear) {
  std::string strings = "%PDF-1.7\n", lengths = strings, streams = strings;
  for (int i = 1; i < 30000; ++i) {
    const std::string number = std::to_string(i);
    strings += number + " 0 obj (";
    streams += number + " 0 obj<</Type/Page/Contents " + number + " 0 R>>stream\n";
    lengths += number + " 0 obj<</Type/Page/Contents " + number + " 0 R/Length " +
               std::to_string(i + 1) + " 0 R>>stream\n";
  }
  for (const std::string &file : {strings, lengths, streams})
    static_cast<void>(pagesOf(file));
}

TEST(DocumentDamageTest, AnyTruncationAndAnyByteIsSafe) {
  for (const std::string &file : {plainClassic(), modern(), hybrid(), updated(true)}) {
    for (std::size_t i = 0; i < file.size(); ++i) {
      static_cast<void>(pagesOf(std::string_view(file).substr(0, i)));
      for (const int bits : {0xFF, 0x01, 0x10}) {
        std::string changed = file;
        changed[i] = static_cast<char>(changed[i] ^ bits);
        static_cast<void>(pagesOf(changed));
      }
    }
  }
}

} // namespace
} // namespace searchsystem
