// Writes the seeds of the fuzzers of documents' text and fonts into a folder's sub-folders
// `document_text` and `document_fonts`.

#include "testing/SeedFiles.h"
#include "testing/TextOf.h"

#include <string>

using namespace searchsystem;
using namespace std::string_literals;

int main(int argc, char **argv) {
  searchsystem::OnePage page;
  page.content = "BT /F 9 Tf 50 700 Td (one) Tj 0 -12 Td [(t) 20 (wo)] TJ ET /X Do";
  page.page = "/Annots [11 0 R]";
  page.resources = "/XObject << /X 10 0 R >>";
  page.objects = {{11, "<< /AP << /N 10 0 R >> >>"}};
  page.streams = {{10, "/Subtype /Form /Matrix [1 0 0 1 9 9]", "BT (form) Tj ET"}};
  const Seed seeds[] = {
      // A file, or the content of a page.
      {"document_text/file", "\0"s + page.file()},
      {"document_text/lines", "\1BT /F 9 Tf 12 TL 50 700 Td (exam-) Tj T* (ple) ' 1 2 (x) \" ET"},
      {"document_text/places",
       "\1/F 9 Tf BT 1 0 0 1 9 90 Tm [(a) -250 (b) 700 (c)] TJ 3 Ts (2) Tj ET"},
      {"document_text/marks", "\1/OC /L BDC EMC BT /F 9 Tf /T BDC (x) Tj EMC /S << /ActualText "
                              "<FEFF00AD> >> BDC (-) Tj EMC ET"},
      {"document_text/image", "\1q BI /W 1 /H 1 ID \x80 EI Q BT /F 9 Tf (x) Tj ET"},
      {"document_text/forms", "\1q 2 0 0 2 9 9 cm /F 9 Tf /X Do Q /S gs BT (a) Tj ET"},
      {"document_text/scripts", "\1BT /G 9 Tf 50 500 Td <000100020003010000030004> Tj ET"},
      // Which part of a font.
      {"document_fonts/type_one", "\0/Encoding 256 array dup 65/eacute put dup 8#102 /b put def"s},
      {"document_fonts/true_type", "\1\0\1\0\0\0\1\0\0\0\0\0\0cmap\0\0\0\0\0\0\0\x1C\0\0\0\x40\0\0"
                                   "\0\2\0\1\0\0\0\0\0\x1C\0\3\0\1"
                                   "\0\0\0\x1C\0\6\0\x20\0\0\0A\0\4\0\1\0\2\0\3\0\4"s},
      {"document_fonts/compact", "\2\1\0\4\1\0\1\1\1\5Name\0\1\1\1\12\x1C\0\x1A\x0F\x1C\0\x20\x11"
                                 "\0\0\0\0\0\0\xC8\0\2\1\1\2\3ab"s},
      {"document_fonts/to_unicode",
       "\4"
       "2 beginbfchar <41> <00E9> <42> <D835DC00> endbfchar 1 beginbfrange <43> <45> [<0061>] "
       "endbfrange"},
      {"document_fonts/identifiers",
       "\6/X usecmap /WMode 1 def 2 begincodespacerange <00> <80> <8140> <9FFC> endcodespacerange "
       "1 "
       "begincidrange <20> <7E> 231 endcidrange 1 begincidchar <8141> 9 endcidchar"},
      {"document_fonts/dictionary",
       "\x08/Subtype /Type3 /FontMatrix [.01 0 0 .01 0 0] /FontBBox [0 0 9 9] /FirstChar 9 /Widths "
       "[1 2] /Encoding << /Differences [65 /a65 /f_i /uni0041] >>"},
  };
  return writeSeeds(argc, argv, seeds);
}
