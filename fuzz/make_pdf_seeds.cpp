// Writes the seeds of the fuzzers of the PDF reader: make_pdf_seeds fuzz/seeds

#include "testing/DocumentWriter.h"
#include "testing/SeedFiles.h"

#include <string>
#include <vector>

using namespace searchsystem;

int main(int argc, char **argv) {
  std::vector<Seed> seeds;
  // The byte before a document chooses encoding, keyword and case.
  const auto addDocument = [&seeds](const std::string &name, char choice,
                                    const std::string &bytes) {
    seeds.emplace_back("pdf_document/" + name, choice + bytes);
  };
  using Style = DocumentWriter::Style;

  DocumentWriter two;
  two.filler(520).book({two.showing({"one", "a"}), two.showing({"b", "xyzzy"})});
  addDocument("two_pages", '\0', two.section().text);

  DocumentWriter carriage(Style{"\r", true});
  carriage.filler(520).book({carriage.showing({"ABAB"})});
  addDocument("carriage_returns", '\x04', carriage.section().text);

  DocumentWriter blanks(Style{" \r\n", false});
  blanks.pages({5, 3}).page(3, {4}).content(4, "BT\r\n0 -14 Td \r\n<61> Tj \r\nET \r\n");
  blanks.filler(200).page(5, {6}).content(6, "BT\n1 g \n<62> Tj % c\n/F1 12 Tf <6162> Tj \nET");
  addDocument("blanks", '\x10', blanks.filler(300).section().text);

  DocumentWriter japanese;
  japanese.filler(520).pages({5, 3}).page(3, {4}).shown(4, {"\x82\xA0", "b\x82"});
  addDocument("japanese", '\x09', japanese.page(5, {6}).shown(6, {"\xA0 b"}).section().text);

  DocumentWriter other;
  other.filler(520).book({other.showing({"\x85\x40"}), other.showing({"\xFC\xFC"})});
  addDocument("other_japanese", '\x09', other.section().text);

  DocumentWriter graphics;
  graphics.filler(520).pages({3}).page(3, {4, 5, 6}).content(4, "q BT <6162> Tj ET Q");
  graphics.content(5, "BT\n[ <61> 3 <62> ] TJ\nET\nBT\n<6162>\nTj\nET").content(6, "BT (ab) Tj ET");
  addDocument("operators", '\0', graphics.section().text);

  DocumentWriter chain;
  chain.raw("1 0 obj /Pages 2 0 R endobj\n");
  const std::size_t first = chain.text.size();
  chain.raw("xref\n1 1\n0000000009 00000 n\n").trailer(1, 8, 1'000'000);
  chain.filler(520).object(2, "/Kids [ 3 0 R ]\n/Count 1").page(3, {4}).shown(4, {"ab"});
  const std::size_t second = chain.table();
  chain.text.replace(chain.text.find("1000000"), 7, "0000" + std::to_string(second));
  addDocument("chain", '\0', chain.trailer(0, 0, first).text);

  DocumentWriter mark;
  mark.filler(520).book({"% VORDA_PFINF_TYPE\nq"});
  addDocument("mark", '\0', mark.section().text);

  DocumentWriter odd;
  odd.filler(520).object(1, "/Pages\n2 0 R").object(2, "/Kids\n[ 3 0 R 3 0 R 9 9 R ] /Count -1");
  odd.object(3, "/Contents [ 3 0 R [ 4 0 R ] 5 0 R ]").content(4, "BT endobj");
  addDocument("odd", '\0', odd.section().text);

  seeds.emplace_back("pdf_lines/tokens", "1 0 obj << /Kids [ 3 0 R ] >>\r\n%c\r%%x %\n<6162> Tj\n");
  seeds.emplace_back("pdf_lines/edge",
                     std::string(1018, 'a') + " b% %c \r\n ab <<\n [ 1 0 R 2 0 R ] >> ab");
  seeds.emplace_back("pdf_lines/token_of_blocks", "%" + std::string(2100, '4') + "%%ab\n");
  seeds.emplace_back("pdf_lines/blanks", "a\t b" + std::string(1022, ' ') + "\n\r c%");
  return writeSeeds(argc, argv, seeds);
}
