#include "readers/photographs/PNGFile.h"

#include "readers/photographs/ByteNumbers.h"
#include "readers/photographs/PNGText.h"
#include "readers/photographs/TIFFBlock.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace searchsystem {

namespace {

constexpr std::string_view signature = "\x89PNG\r\n\x1A\n";

} // namespace

bool isPNG(const ByteRange &range) { return range.at(0, signature.size()) == signature; }

void readPNG(const ByteRange &file, PhotographReading &reading) {
  constexpr std::uint64_t checkSize = 4;
  std::uint64_t size = 0;
  for (std::uint64_t at = signature.size();; at += size + checkSize) {
    // Length and kind.
    const std::string_view header = file.headerBehind(size, at, 8);
    if (header.empty())
      return;
    size = bigNumber(header, 4);
    at += header.size();
    const std::string kind(header.substr(4));
    const ByteRange data = file.part(at, size);
    if (kind == "IEND")
      return;
    if (kind == "eXIf")
      readExifBlock(data, reading);
    else if ((kind == "tEXt" || kind == "zTXt" || kind == "iTXt") && reading.budget.spendEntry())
      readPNGText(kind, data.read(ReadBudget::longestPacket), reading);
  }
}

} // namespace searchsystem
