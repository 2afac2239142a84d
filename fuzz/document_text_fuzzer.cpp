// Reads them as a document, or, as the first byte says, as the content of a page with fonts and
// forms. The text has to be in the form that is promised.

#include "readers/documents/TextOutput.h"
#include "testing/TextOf.h"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>

namespace {

using namespace searchsystem;

void check(std::string_view text) {
  int missing = 0;
  bool wasBlank = false;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    const bool continues = (byte & 0xC0) == 0x80;
    if (continues != (missing > 0) || byte > 0xF4)
      std::abort();
    missing = continues ? missing - 1 : byte >= 0xF0 ? 3 : byte >= 0xE0 ? 2 : byte >= 0xC0 ? 1 : 0;
    if ((byte < 0x20 && c != TextOutput::hyphenAtLineEnd && c != TextOutput::pageEnd) ||
        (c == ' ' && wasBlank))
      std::abort();
    wasBlank = c == ' ';
  }
  if (missing != 0)
    std::abort();
}

std::string withContent(std::string content) {
  OnePage page;
  page.content = std::move(content);
  page.font = "/Subtype /Type0 /Encoding /Identity-V /ToUnicode 11 0 R /DescendantFonts [<< /W [1 "
              "[300 1000] 9 99 700] >>]";
  page.resources = "/XObject << /X 10 0 R >> /Properties << /L 12 0 R /T << /ActualText (other) >> "
                   ">> /ExtGState << /S << /Font [5 0 R 9] >> >>";
  page.catalog = "/OCProperties << /D << /OFF [12 0 R] >> >>";
  page.objects = {{12, "<< /Type /OCG >>"}};
  page.streams = {{10, "/Subtype /Form /Matrix [0 1 -1 0 300 300]", "BT (form-) Tj ET /X Do"},
                  {11, "",
                   "3 beginbfrange <0001> <00FF> <05D0> <0100> <01FF> <0301> <2020> <2FFF> "
                   "<00AD0066> endbfrange"}};
  return page.file();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  if (size == 0)
    return 0;
  std::string bytes(reinterpret_cast<const char *>(data + 1), size - 1);
  const std::string file = data[0] % 2 == 0 ? std::move(bytes) : withContent(std::move(bytes));
  MemorySource source(file);
  StringSink sink;
  const UnreadReason reason = readDocumentText(source, MapTable(), sink);
  check(sink.text);
  if (reason == UnreadReason::noText &&
      sink.text.find_first_not_of(TextOutput::pageEnd) != std::string::npos)
    std::abort();
  return 0;
}
