// Writes the seeds of the fuzzers of the document reader into a folder's sub-folders
// `document_objects` and `document_filters`.

#include "testing/CompressedDocument.h"
#include "testing/SeedFiles.h"

#include <string>

using namespace searchsystem;
using namespace std::string_literals;

int main(int argc, char **argv) {
  using Writer = CompressedDocument;
  Writer updated;
  updated.book({"(one) Tj"}).table();
  updated.deflatedStream(4, "", "(two) Tj").table("/Prev " + std::to_string(updated.start()));
  Writer hybrid;
  hybrid.objectStream(9, {{3, "<</Type/Page/Contents 4 0 R>>"}}).crossReferenceStream(10);
  const std::string beside = std::to_string(hybrid.start());
  hybrid.forget()
      .object(1, "<</Type/Catalog/Pages 2 0 R>>")
      .object(2, "<</Kids[3 0 R]>>")
      .stream(4, "/Filter/AHx", "6F6E65>")
      .table("/XRefStm " + beside);
  const std::string modern = Writer()
                                 .objectStream(9, {{1, "<</Type/Catalog/Pages 2 0 R>>"},
                                                   {2, "<</Kids[3 0 R]/Rotate 90>>"},
                                                   {3, "<</Type/Page/Contents[4 0 R]>>"}})
                                 .deflatedStream(4, "", "BT (one) Tj ET")
                                 .crossReferenceStream(10)
                                 .text;
  const std::string encrypted =
      Writer()
          .book({"one"})
          .object(
              7,
              "<</Filter/Standard/Length 128/V 2/R 3/P -4/O<77b8fb098022d3ab34237ea5643c08710ea51"
              "23fc5f88bf993a68cca5f12b40f>/U<d60e5ec64d57271aae47c0c3a14699a50122456a91bae5134273"
              "a6db134c87c4>>>")
          .table("/ID[<AB><CD>]/Encrypt 7 0 R")
          .text;
  const std::string deflated = Writer::deflated("<</a[1 0 R(b)]>> 12 0 R (c) Tj 12.5 -7 Td");
  const Seed seeds[] = {
      {"document_objects/table", Writer().book({"(one) Tj", "(two) Tj"}).table().text},
      {"document_objects/no_table", Writer().book({"(one) Tj"}).text},
      {"document_objects/updated", updated.text},
      {"document_objects/hybrid", hybrid.text},
      {"document_objects/modern", modern},
      {"document_objects/no_start", modern.substr(0, modern.find("startxref"))},
      {"document_objects/encrypted", encrypted},
      // Number of filters, three kinds, predictor, columns.
      {"document_filters/hex", "\0\0\0\0\0\0"s + "48656C6C6F>"},
      {"document_filters/base85", "\0\1\0\0\0\0"s + "<~87cURD]i,\"Ebo80~>"},
      {"document_filters/lzw", "\0\2\0\0\0\0"s + "\x80\x0B\x60\x50\x22\x0C\x0C\x85\x01"},
      {"document_filters/flate", "\0\3\0\0\0\0"s + deflated},
      {"document_filters/png", "\0\3\0\0\x67\4"s + deflated},
      {"document_filters/tiff", "\0\3\0\0\x25\2"s + deflated},
      {"document_filters/runs", "\0\4\0\0\0\0"s + "\2abc\xFE"
                                                  "d\x80"},
      {"document_filters/chain", "\1\3\3\0\0\0"s + Writer::deflated(deflated)},
  };
  return writeSeeds(argc, argv, seeds);
}
