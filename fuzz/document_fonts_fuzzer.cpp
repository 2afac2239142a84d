// Makes them a part of a font, which the first byte chooses: a program of one of three kinds, a map
// to text or to identifiers, the dictionary; and shows all codes with it.

#include "testing/TextOf.h"

#include <cstdint>
#include <iterator>
#include <string>
#include <utility>

namespace {

using namespace searchsystem;

std::string allCodes() {
  std::string codes;
  for (int i = 0; i < 512; ++i)
    for (const int byte : {i >> 8, i & 0xFF})
      codes.append({"0123456789ABCDEF"[byte >> 4], "0123456789ABCDEF"[byte & 15]});
  return codes;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  if (size == 0)
    return 0;
  static const std::string codes = allCodes();
  const std::string descriptor = "/FontDescriptor << /FontFile 10 0 R >>";
  const std::string program = "/FontDescriptor << /FontFile2 10 0 R >>";
  const std::string composite = "/Subtype /Type0 /DescendantFonts [<< /CIDSystemInfo << /Registry "
                                "(Adobe) /Ordering (A) >> ";
  const std::string fonts[] = {
      "/Subtype /Type1 " + descriptor,
      "/Subtype /TrueType " + program,
      composite + program + " >>]",
      composite + program + " /CIDToGIDMap 10 0 R >>]",
      "/Subtype /Type1 /ToUnicode 10 0 R",
      composite + ">>] /ToUnicode 10 0 R",
      composite + ">>] /Encoding 10 0 R",
      composite + ">>] /Encoding /Map",
      "",
  };
  const std::size_t kind = data[0] % std::size(fonts);
  std::string bytes(reinterpret_cast<const char *>(data + 1), size - 1);
  OnePage page;
  page.font = kind + 1 == std::size(fonts) ? bytes : fonts[kind];
  page.content = "BT /G 9 Tf 9 400 Td <" + codes + "> Tj ET";
  const MapTable maps({{"Map", bytes}, {"Adobe-A-UCS2", bytes}});
  page.streams = {{10, "/Length1 100", std::move(bytes)}};
  (void)textOf(page.file(), maps);
  return 0;
}
